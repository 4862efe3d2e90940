#pragma once

// What one tool does during an endurance run, with boards of its own.

#include <QString>
#include <memory>

class MainWindow;

class Duty
{
public:
    virtual ~Duty() = default;

    // Makes the boards; the list of ports does not change after that.
    virtual void prepare() = 0;
    virtual void begin() = 0;
    // Once a second.
    virtual void tick(int second) = 0;
    // The boards fall silent; what is under way may still come.
    virtual void stop() = 0;
    // After that: what was compared, in words, and what is wrong with it.
    virtual QString result() = 0;
    qint64 faults() const { return m_faults; }

protected:
    // "name: received of sent"; a difference is a fault.
    QString compare(const QString &name, qint64 received, qint64 sent)
    {
        m_faults += received != sent;
        return QStringLiteral("%1: received %2 of %3%4\n")
            .arg(name)
            .arg(received)
            .arg(sent)
            .arg(received == sent ? QString() : QStringLiteral("  <-- LOST"));
    }

    qint64 m_faults = 0;
};

// Text for a while, then hexadecimal, then a file by YModem; every minute.
std::unique_ptr<Duty> makeSerialDuty(MainWindow &window, const QString &folder);
// 200 peers on the network page.
std::unique_ptr<Duty> makeNetworkDuty(MainWindow &window);
// Two cameras on one TCP link.
std::unique_ptr<Duty> makeCameraDuty(MainWindow &window);
// Five channels.
std::unique_ptr<Duty> makePidDuty(MainWindow &window);
// A file of 100 MB, edited every second, searched and saved every minute.
std::unique_ptr<Duty> makeHexDuty(MainWindow &window, const QString &folder);
