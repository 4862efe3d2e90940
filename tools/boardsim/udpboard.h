#pragma once

// A board that speaks datagrams: returns them to their senders, counts them,
// or sends the payload in datagrams at a rate.

#include "tools/boardsim/boardbase.h"
#include "tools/boardsim/options.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>
#include <QUdpSocket>

namespace Boardsim {

class UdpBoard : public BoardBase
{
    Q_OBJECT

public:
    explicit UdpBoard(const Options &options, QObject *parent = nullptr);

    bool begin(QString *error) override;
    // Also "datagrams=..": that came or went.
    QString statistics() const override;

private:
    void readSome();
    void sendDue();

    Options m_options;
    QFile m_record;
    Payload m_payload;
    QUdpSocket m_socket;
    QTimer m_pace;
    QElapsedTimer m_clock;
    qint64 m_written = 0;
    qint64 m_read = 0;
    qint64 m_datagrams = 0;
};

} // namespace Boardsim
