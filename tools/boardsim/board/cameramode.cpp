#include "cameramode.h"

namespace Boardsim {

CameraMode::CameraMode(const Options &options, VirtualPort &virtualPort)
    : BoardMode(virtualPort)
    , m_stream(options, {[this](const QByteArray &bytes) { port().write(bytes); },
                         [this] { return qint64(port().queued()); }})
{
    connect(&m_stream, &CameraStream::finished, this, &CameraMode::finished);
}

QString CameraMode::statistics() const
{
    return QStringLiteral(" frames=%1").arg(m_stream.framesSent());
}

} // namespace Boardsim
