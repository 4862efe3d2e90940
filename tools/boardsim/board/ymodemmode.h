#pragma once

#include "boardmode.h"
#include "ymodemreceiver.h"

#include <QFile>
#include <QTimer>

namespace Boardsim {

// A boot loader that takes files by YModem and keeps them in a folder.
class YmodemMode : public BoardMode, private YmodemReceiver::Board
{
    Q_OBJECT

public:
    struct Options
    {
        PayloadOptions payload; // encoding of names, seed of noise
        QString receiveFolder = QStringLiteral("received");
        YmodemReceiver::Settings receiver;
        void addTo(CommandLine &line);
    };

    YmodemMode(const Options &options, VirtualPort &port);

    void start() override { m_receiver.start(); }
    void stop() override { m_receiver.stop(); }
    void received(const QByteArray &bytes) override { m_receiver.received(bytes); }

private:
    void send(const QByteArray &bytes) override;
    void setTimer(int ms) override;
    bool beginFile(const QString &name) override;
    bool storeBytes(const QByteArray &bytes) override;
    void endFile(bool complete) override;
    void report(const QString &text) override { emit happened(text); }

    QString m_folder;
    QFile m_file;
    QTimer m_timer;
    YmodemReceiver m_receiver;
};

} // namespace Boardsim
