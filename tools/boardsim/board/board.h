#pragma once

// A board on a virtual port: the port, its mode, when its cable is pulled, and
// the record of what it was sent.

#include "boardbase.h"
#include "boardmode.h"

#include <QFile>
#include <QTimer>

#include <functional>
#include <memory>

namespace Boardsim {

class Board : public BoardBase
{
    Q_OBJECT

public:
    struct Options
    {
        QString folder; // of the links
        QString port = QStringLiteral("COM3");
        int startDelayMs = 200;   // from the host's arrival
        bool startOnByte = false; // instead of the delay
        int unplugAfterMs = -1;   // from the host's first arrival; -1 never
        int replugAfterMs = -1;   // from the unplugging; -1 never
        QString recordFile;

        void addTo(CommandLine &line);
    };
    using MakeMode = std::function<std::unique_ptr<BoardMode>(VirtualPort &port)>;

    Board(const Options &options, const MakeMode &makeMode, QObject *parent = nullptr);
    ~Board() override;

    // Opens the record and plugs the port in; on failure false and an English text.
    bool begin(QString *error) override;

    // Also "dropped=.. blocked_ms=..": bytes, and the milliseconds during which
    // output was pending because the host did not read.
    QString statistics() const override;

private:
    bool plug(QString *error);
    void unplug(int replugAfterMs);
    void onHostArrived();
    void onHostLeft();
    void onReceived(const QByteArray &bytes);
    void startMode();

    Options m_options;
    QFile m_record;
    VirtualPort m_port;
    std::unique_ptr<BoardMode> m_mode;
    QTimer m_startDelay;
    QTimer m_unplugDelay;
    QTimer m_replugDelay;
    bool m_started = false; // the mode, for the present host
    bool m_unplugArmed;     // --unplug-after has not begun to count
};

} // namespace Boardsim
