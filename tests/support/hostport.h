#pragma once

// A terminal device opened the way a program on the host opens a serial port,
// without any library in between, so that a test sees what the system says.

#include <QByteArray>
#include <QString>

class HostPort
{
public:
    // Opens the device in raw mode; see isOpen().
    explicit HostPort(const QString &path);
    ~HostPort();
    HostPort(const HostPort &) = delete;
    HostPort &operator=(const HostPort &) = delete;

    bool isOpen() const { return m_descriptor >= 0; }
    void close();

    // Reads until count bytes have come, the port has hung up, or nothing has
    // come for quietMs.
    QByteArray read(qint64 count, int quietMs = 20000);
    // Reads until what has come ends in the given bytes, or as above.
    QByteArray readUntil(const QByteArray &end, int quietMs = 20000);
    // Writes all, waiting for room up to timeoutMs at a time; false otherwise.
    bool write(const QByteArray &bytes, int timeoutMs = 5000);
    // Whether the system reports the other end as gone within the time.
    bool waitForHangUp(int timeoutMs = 5000);

private:
    QByteArray readSome(qint64 most, int quietMs);
    int m_descriptor = -1;
};
