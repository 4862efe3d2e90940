#pragma once

// "send": text, bytes or a file, with a checksum and a line end behind them.

#include "framechecksum.h"
#include "portcommand.h"

#include <QTimer>

class QIODevice;

class SendCommand : public PortCommand
{
    Q_OBJECT

public:
    explicit SendCommand(const Options &options);

protected:
    void prepare() override;
    void handleOpened() override;
    void handleReceived(const QByteArray &, qint64) override {}

private:
    void sendNext();
    void finishWhenSent();
    QByteArray nextPiece();

    std::unique_ptr<QIODevice> m_source; // null when all of it was read
    std::optional<FrameChecksum> m_checksum;
    QByteArray m_lineEnd;
    QTimer m_silence; // while the device accepts nothing
    qint64 m_sentBytes = 0;
};
