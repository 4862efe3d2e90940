#pragma once

// One end of a pseudo-terminal, with a link that lets a program find the other
// end as if it were a serial port. Writes and reads without ever blocking.
//
// While no program has the port open nothing can be sent, as on a wire with
// no host at the other end; see hostArrived() and hostLeft().

#include "serialend.h"

#include <QElapsedTimer>
#include <QString>
#include <QTimer>

#include <memory>

class QSocketNotifier;

namespace Boardsim {

class VirtualPort : public SerialEnd
{
    Q_OBJECT

public:
    struct Statistics
    {
        qint64 written = 0;   // bytes that the port has accepted
        qint64 read = 0;      // bytes that came from the host
        qint64 dropped = 0;   // bytes that were to be written when the host left
        qint64 blockedMs = 0; // time during which output waited for room
    };

    // The link is folder/name; the folder is made if need be.
    VirtualPort(const QString &folder, const QString &name, QObject *parent = nullptr);
    ~VirtualPort() override;

    // Makes the pseudo-terminal and its link. On failure false and an English
    // text. A link left behind by a board that was killed is replaced; anything
    // else by that name is not touched.
    bool plug(QString *error);
    // Hangs up (the host sees its port disappear) and removes the link.
    void unplug();
    bool isPlugged() const { return m_master >= 0; }
    bool hasHost() const { return m_hasHost; }
    // The path behind the link, for example "/dev/pts/4".
    QString device() const { return m_device; }

    // Queues bytes. Without a host they are dropped.
    void write(const QByteArray &bytes) override;
    qsizetype queued() const override { return m_output.size() - m_outputAt; }

    // While not reading, the host's bytes stay where they are and the host
    // blocks in the end; stalled, the board does not send either.
    void setReading(bool reading) override;
    void setStalled(bool stalled);

    Statistics statistics() const;

signals:
    void hostArrived();
    void hostLeft();
    // The port has accepted everything that was queued.
    void outputEmpty();

private:
    void watch();
    void readSome();
    void writeSome();
    void dropHost();
    void discardOutput();
    void endWaiting();
    void updateNotifiers();
    bool makeLink(QString *error);
    void removeLink();

    QString m_folder;
    QString m_link;
    QString m_device;
    int m_master = -1;
    bool m_hasHost = false;
    bool m_reading = true;
    bool m_stalled = false;
    QByteArray m_output;
    int m_outputAt = 0;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
    QTimer m_watch;
    QElapsedTimer m_waiting; // valid while output is pending
    qint64 m_waitedNs = 0;
    Statistics m_statistics;
};

} // namespace Boardsim
