#pragma once

// What a board does with its port. A mode begins when the board starts to talk
// to a host and ends when the host leaves; it may begin again with the next.

#include "payloadoptions.h"
#include "virtualport.h"

#include <QObject>

namespace Boardsim {

// Each mode has its options: what they are called on the command line and their
// values.
struct NoOptions
{
    void addTo(CommandLine &) {}
};

class BoardMode : public QObject
{
    Q_OBJECT

public:
    // The port must outlive the mode.
    explicit BoardMode(VirtualPort &port)
        : m_port(port)
    {
    }

    virtual void start() {}
    virtual void stop() {}
    virtual void received(const QByteArray &) {}
    virtual void outputEmpty() {}
    // More " name=number", for the statistics of the whole run.
    virtual QString statistics() const { return {}; }

signals:
    // The port has accepted the complete payload.
    void finished();
    // The board asks to be unplugged for that many milliseconds.
    void unplugRequested(int ms);
    // Something that a user or test that follows the board may want to know.
    void happened(const QString &text);

protected:
    VirtualPort &port() { return m_port; }

private:
    VirtualPort &m_port;
};

// Reads and counts incoming bytes.
class SilentMode : public BoardMode
{
    Q_OBJECT

public:
    using Options = NoOptions;
    SilentMode(const Options &, VirtualPort &port)
        : BoardMode(port)
    {
    }
};

} // namespace Boardsim
