#pragma once

// PORT of a command line: a serial port by its name or a TCP server as
// "tcp://host:port", and the link to it.

#include "serialsettings.h"
#include "tcpclientlink.h"

#include <QString>

#include <memory>
#include <optional>

class Port
{
public:
    static constexpr int defaultBaudRate = 115200;

    Port() { m_serial.baudRate = defaultBaudRate; }

    // None where a text that begins as an address is none.
    static std::optional<Port> fromText(const QString &text);

    QString name() const { return m_name; } // for the user
    bool isSerial() const { return m_server.port == 0; }
    // Whether there can be such a port.
    bool isNameUsable() const { return !isSerial() || !m_serial.name.isEmpty(); }
    void setBaudRate(int baudRate) { m_serial.baudRate = baudRate; }
    int baudRate() const { return m_serial.baudRate; }

    std::unique_ptr<Link> makeLink() const;
    // Begins to open a link made here; false with its reason() where that fails at
    // once.
    bool open(Link *link) const;

private:
    QString m_name;
    SerialSettings m_serial;
    TcpClientLink::Settings m_server;
};
