#pragma once

// "monitor": received bytes to standard output, standard input to the port.

#include "monitortext.h"
#include "portcommand.h"
#include "standardinput.h"

#include <QTimer>

class MonitorCommand : public PortCommand
{
    Q_OBJECT

public:
    explicit MonitorCommand(const Options &options);

protected:
    void prepare() override;
    void handleOpened() override;
    void handleReceived(const QByteArray &bytes, qint64 arrivalUs) override;
    void handleLost() override;
    void handleInterrupt() override { finish(ExitStatus::Done); }

private:
    void show(const QByteArray &text);
    void handleEnd(); // of the time
    void checkPause();
    void handleInput(const QByteArray &bytes);
    void sendInput();
    QByteArray inputForDevice(const QByteArray &bytes);

    bool m_passesOn; // received bytes go to the output as they are
    MonitorText m_text;
    QTimer m_pause; // behind a packet
    qint64 m_arrivalUs = 0;
    QTimer m_end;
    StandardInput m_input;
    StreamDecoder m_inputDecoder;
    QByteArray m_pending; // of the input, for the link
    bool m_isOutputGone = false;
    bool m_hasOpened = false;
    bool m_hasToldUnjudged = false;
};
