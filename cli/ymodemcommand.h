#pragma once

// "ymodem": files by YModem, with progress on standard error.

#include "portcommand.h"
#include "ymodemfiletransmit.h"

class YmodemCommand : public PortCommand
{
    Q_OBJECT

public:
    explicit YmodemCommand(const Options &options);

protected:
    void prepare() override;
    void handleOpened() override;
    void handleReceived(const QByteArray &, qint64) override {}
    void handleLost() override;
    void handleInterrupt() override;

private:
    void handleStatus(Ymodem::Status status);
    void showProgress(int percent, const QString &name);
    void endProgressLine();

    YmodemFileTransmit m_transmit;
    QString m_shownName;
    int m_shownPercent = 0;
    bool m_isLineOpen = false; // progress that is written over
};
