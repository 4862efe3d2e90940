// A serial line of a given speed between two programs that know only
// pseudo-terminals, which take no time: bytes go through at ten bits each, both
// ways at once, and a sender that is faster is throttled as by a driver's buffer.
// The near end is a virtual port; the far end is another one or a device.
//
//   serialrelay --folder DIR --port COM3 --far-port COM4 --baud 115200
//   serialrelay --folder DIR --port COM3 --far-device DIR/COM4 --baud 0
//
// Baud rate 0 takes no time. Says on standard output when its ports are plugged
// in and when a program opens or closes them. Ends on a signal, with its
// starter, or when the device hangs up.

#include "hostdevice.h"
#include "pacedline.h"
#include "processend.h"
#include "virtualport.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <chrono>
#include <cstdio>
#include <thread>
#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

using namespace Boardsim;

namespace {

// How finely a busy line is looked after.
constexpr qint64 maxNapNs = 250000;
constexpr qint64 minNapNs = 20000;

class Direction
{
public:
    Direction(int baudRate, SerialEnd &from, SerialEnd &to, const QElapsedTimer &clock)
        : m_line(baudRate)
        , m_from(from)
        , m_to(to)
    {
        QObject::connect(&from, &SerialEnd::received, &to, [this, &clock](const QByteArray &bytes) {
            m_line.append(bytes, clock.nsecsElapsed());
            m_from.setReading(m_line.room() > 0);
        });
    }

    bool isIdle() const { return m_line.isEmpty(); }
    qint64 doneNs() const { return m_line.doneNs(); }

    void advance(qint64 nowNs)
    {
        if (m_line.isEmpty())
            return;
        if (m_to.queued() > 0) {
            m_line.hold(nowNs);
            return;
        }
        const QByteArray bytes = m_line.take(nowNs);
        if (bytes.isEmpty())
            return;
        m_to.write(bytes);
        m_from.setReading(m_line.room() > 0);
    }

private:
    PacedLine m_line;
    SerialEnd &m_from;
    SerialEnd &m_to;
};

[[noreturn]] void fail(const QString &message)
{
    std::fprintf(stderr, "serialrelay: %s\n", qPrintable(message));
    std::exit(1);
}

// Plugs a port in and tells of its doings.
void plug(VirtualPort *port, const QString &name)
{
    QString error;
    const auto report = [name](const char *what) {
        std::printf("%s %s\n", what, qPrintable(name));
        std::fflush(stdout);
    };
    QObject::connect(port, &VirtualPort::hostArrived, port, [report] { report("host arrived"); });
    QObject::connect(port, &VirtualPort::hostLeft, port, [report] { report("host left"); });
    if (!port->plug(&error))
        fail(error);
    report("plugged");
}

void relay(int baudRate, SerialEnd &near, SerialEnd &far, const bool &ended)
{
    QElapsedTimer clock;
    clock.start();
    Direction outward(baudRate, near, far, clock);
    Direction inward(baudRate, far, near, clock);
    while (!ended) {
        const bool idle = outward.isIdle() && inward.isIdle();
        QCoreApplication::processEvents(idle ? QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents
                                             : QEventLoop::AllEvents);
        qint64 now = clock.nsecsElapsed();
        outward.advance(now);
        inward.advance(now);
        QCoreApplication::processEvents(); // what is to be written goes out
        now = clock.nsecsElapsed();
        qint64 nap = maxNapNs;
        for (const Direction *direction : {&outward, &inward}) {
            if (!direction->isIdle())
                nap = qMin(nap, direction->doneNs() - now);
        }
        if (!outward.isIdle() || !inward.isIdle())
            std::this_thread::sleep_for(std::chrono::nanoseconds(qMax(nap, minNapNs)));
    }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    for (const char *name : {"folder", "port", "far-port", "far-device", "baud"})
        parser.addOption({QLatin1String(name), QString(), QStringLiteral("value")});
    parser.process(application);
    const QString folder = parser.value(QStringLiteral("folder"));
    const QString port = parser.value(QStringLiteral("port"));
    const QString farPort = parser.value(QStringLiteral("far-port"));
    const QString farDevice = parser.value(QStringLiteral("far-device"));
    bool ok = false;
    const int baudRate = parser.value(QStringLiteral("baud")).toInt(&ok);
    if (!ok || baudRate < 0 || folder.isEmpty() || port.isEmpty() || farPort.isEmpty() == farDevice.isEmpty())
        fail(QStringLiteral("takes --folder, --port, --baud and either --far-port or --far-device"));
#ifdef Q_OS_LINUX
    ::prctl(PR_SET_TIMERSLACK, 1UL); // naps end when they should
#endif

    bool ended = false;
    ProcessEnd end;
    QObject::connect(&end, &ProcessEnd::requested, &application, [&ended] { ended = true; });
    HostDevice device;
    QObject::connect(&device, &HostDevice::hungUp, &application, [&ended] { ended = true; });
    VirtualPort near(folder, port);
    VirtualPort far(folder, farPort);
    QString error;
    if (farDevice.isEmpty())
        plug(&far, farPort);
    else if (!device.open(farDevice, &error))
        fail(error);
    plug(&near, port);
    relay(baudRate, near, farDevice.isEmpty() ? static_cast<SerialEnd &>(far) : device, ended);
    return 0;
}
