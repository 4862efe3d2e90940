#pragma once

// A board: its port, what it does there, when its cable is pulled, and the
// record of what it was sent.

#include "boardbase.h"
#include "boardmode.h"

#include <QFile>
#include <QTimer>

namespace Boardsim {

class Board : public BoardBase
{
    Q_OBJECT

public:
    explicit Board(const Options &options, QObject *parent = nullptr);
    ~Board() override;

    // Opens the record and plugs the port in; on failure false and an English text.
    bool begin(QString *error) override;

    // Also "dropped=.. blocked_ms=..": bytes, and the
    // milliseconds during which output waited for the host.
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
