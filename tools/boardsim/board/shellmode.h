#pragma once

#include "boardmode.h"

#include <QTimer>

namespace Boardsim {

// Answers lines (ended by CR, LF or both) like the command line of a board:
// help, version, led on|off, adc, stall <ms>, flood <bytes>, unplug <ms>.
class ShellMode : public BoardMode
{
    Q_OBJECT

public:
    using Options = PayloadOptions;

    ShellMode(const Options &options, VirtualPort &port);

    void stop() override;
    void received(const QByteArray &bytes) override;
    void outputEmpty() override;

private:
    void execute(const QString &line);
    void answer(const QString &text);

    Encoding m_encoding;
    quint32 m_seed;
    QByteArray m_line;
    quint32 m_samples = 0;  // readings of the converter so far
    Payload m_payload;      // of the flood that is going on
    qint64 m_floodLeft = 0; // bytes
    QTimer m_stall;
};

} // namespace Boardsim
