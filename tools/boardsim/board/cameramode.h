#pragma once

#include "boardmode.h"
#include "camerastream.h"

namespace Boardsim {

// A camera on the virtual port.
class CameraMode : public BoardMode
{
    Q_OBJECT

public:
    using Options = CameraOptions;

    CameraMode(const Options &options, VirtualPort &port);

    void start() override { m_stream.start(); }
    void stop() override { m_stream.stop(); }
    void received(const QByteArray &bytes) override { m_stream.receive(bytes); }
    void outputEmpty() override { m_stream.sendDue(); }
    QString statistics() const override;

private:
    CameraStream m_stream;
};

} // namespace Boardsim
