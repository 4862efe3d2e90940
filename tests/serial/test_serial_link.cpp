// The serial link, the reader behind it and the port watch, against
// pseudo-terminals.

#include "closingport.h"
#include "linepulse.h"
#include "portopening.h"
#include "ptypeer.h"
#include "qserialporcheck.h"
#include "qtserialport.h"
#include "quietreader.h"
#include "readpause.h"
#include "serialports.h"
#include "serialreconnector.h"

#include <QSerialPort>
#include <QSet>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstdarg>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

SerialSettings settingsOf(const QString &device, int baudRate = 921600)
{
    SerialSettings settings;
    settings.name = device;
    settings.baudRate = baudRate;
    return settings;
}

termios lineSettings(const PtyPeer &board)
{
    const int line = open(board.device().toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
    termios settings{};
    tcgetattr(line, &settings);
    close(line);
    return settings;
}

// The program's descriptors of the device.
QSet<int> descriptorsOf(const QString &device)
{
    const QString folder = QStringLiteral("/proc/self/fd/");
    QSet<int> found;
    for (int i = 0; i < 256; ++i)
        if (QFile::symLinkTarget(folder + QString::number(i)) == device)
            found.insert(i);
    return found;
}

} // namespace

// A pseudo-terminal has no modem lines: these are the board's. The library's own
// calls come here.
struct ModemLines
{
    bool isThere = false;
    int raised = TIOCM_CTS | TIOCM_DSR;
    QStringList changes; // "DTR 1"
};
static ModemLines s_lines;

extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *argument = va_arg(arguments, void *);
    va_end(arguments);
    if (s_lines.isThere && request == TIOCMGET) {
        *static_cast<int *>(argument) = s_lines.raised;
        return 0;
    }
    if (s_lines.isThere && (request == TIOCMBIS || request == TIOCMBIC)) {
        const int line = *static_cast<int *>(argument);
        const bool isRaised = request == TIOCMBIS;
        s_lines.raised = isRaised ? s_lines.raised | line : s_lines.raised & ~line;
        s_lines.changes.append(QStringLiteral("%1 %2").arg(line == TIOCM_DTR ? "DTR" : "RTS").arg(isRaised));
        return 0;
    }
    return int(syscall(SYS_ioctl, descriptor, request, argument));
}

class TestSerialLink : public QObject
{
    Q_OBJECT

private slots:
    // By a pseudo-terminal.
    void saysWhatIsRefused()
    {
        PtyPeer peer;
        SerialLink link;
        SerialSettings settings;
        settings.name = peer.device();
        settings.parity = QSerialPort::EvenParity;
        settings.stopBits = QSerialPort::OneAndHalfStop;
        QVERIFY(link.open(settings, SerialLink::Refusal::KeepsOpen));
        QCOMPARE(link.refusedParameters().join('|'), QString("停止位 1.5|偶校验"));
    }

    // Less often while bytes flow in small pieces, and looks at their size now and then.
    void pausesReading()
    {
        PtyPeer peer;
        QSerialPort port(peer.device());
        QVERIFY(port.open(QIODevice::ReadWrite));
        QSocketNotifier *notifier = nullptr;
        for (auto *one : port.findChildren<QSocketNotifier *>())
            notifier = one->type() == QSocketNotifier::Read ? one : notifier;
        ReadPause pause;
        pause.setPort(&port);
        qint64 us = 1000000;
        const auto reads = [&](int count, qint64 bytes, qint64 afterUs) {
            QString seen;
            for (int i = 0; i < count; ++i) {
                notifier->setEnabled(true);
                pause.handleRead(bytes, us += afterUs);
                seen += notifier->isEnabled() ? '-' : 'x';
            }
            return seen;
        };
        pause.setMaxMs(3);
        QCOMPARE(reads(6, 512, 1000), QString("----xx"));
        QTRY_VERIFY(notifier->isEnabled());
        pause.end();
        QCOMPARE(reads(40, 512, 1000), QString("---" + QString(32, 'x') + "-xxxx"));
        pause.end();
        QVERIFY(notifier->isEnabled());
        QCOMPARE(reads(5, 4000, 1000), QString("-----")); // large pieces
        pause.end();
        QCOMPARE(reads(5, 512, 2000), QString("---xx"));
        pause.end();
        QCOMPARE(reads(5, 512, 2001), QString("-----")); // slow
        pause.setPort(&port);
        QCOMPARE(reads(5, 2047, 1000), QString("---xx"));
        pause.setPort(&port);
        QCOMPARE(reads(5, 2048, 1000), QString("-----"));
    }

    void init()
    {
        qRegisterMetaType<Link::State>();
        m_board = std::make_unique<PtyPeer>();
        m_port = std::make_unique<QtSerialPort>();
        m_states = std::make_unique<QSignalSpy>(m_port.get(), &Link::stateChanged);
        m_dropped = std::make_unique<QSignalSpy>(m_port.get(), &Link::dropped);
        m_failed = std::make_unique<QSignalSpy>(m_port.get(), &SerialLink::failed);
    }

    void opensOnePortAtATime()
    {
        m_port->open(m_board->device(), 115200, 8, 0, 0);
        m_port->writeBytes(QByteArray("\x00\xff\n", 3));
        QCOMPARE(m_port->pendingBytes(), qint64(0)); // left without the event loop
        QCOMPARE(m_board->read(3), QByteArray("\x00\xff\n", 3));
        PtyPeer second; // opening it closes the first
        m_port->open(second.device(), 9600, 8, 0, 0);
        QCOMPARE(m_port->portName(), second.device());
        m_port->writeBytes("to second");
        QCOMPARE(second.read(9), QByteArray("to second"));
        QtSerialPort other;
        other.open(m_board->device(), 9600, 8, 0, 0);
        QVERIFY(other.isOpen());
        m_port->close();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Write data failed:"));
        m_port->writeBytes("x");
        QCOMPARE(m_port->state(), Link::State::Closed);
        QCOMPARE(m_port->reason(), QString());
    }

    void saysWhyItCannotBeOpened()
    {
        const QSignalSpy openFailed(m_port.get(), &QtSerialPort::openFailed);
        for (const auto &[name, reason] : {std::pair("COM4711", "串口不存在，请检查设备是否已插好"),
                                           {"/dev/null", "设备不是可用的串口"}}) {
            m_port->open(name, 115200, 8, 0, 0);
            QVERIFY2(m_port->reason().startsWith(reason), qPrintable(m_port->reason()));
        }
        QCOMPARE(openFailed.count(), 2);
        QVERIFY(m_states->isEmpty());
    }

    // A device of that name may need seconds: the window goes on meanwhile.
    void opensBluetoothLater()
    {
        const QTemporaryDir folder;
        const QString device = folder.filePath("rfcomm0");
        const QString broken = folder.filePath("rfcomm1");
        QVERIFY(QFile::link(m_board->device(), device) && QFile::link("/dev/null", broken));
        const QSet<int> heldByPeer = descriptorsOf(m_board->device());
        const QSignalSpy openFailed(m_port.get(), &QtSerialPort::openFailed);
        m_port->setOpensLater(true);
        QVERIFY(m_port->SerialLink::open(settingsOf(device), SerialLink::Refusal::KeepsOpen));
        QCOMPARE(m_port->state(), Link::State::Opening);
        QCOMPARE(m_port->send("too early"), qint64(0));
        QTRY_VERIFY(m_port->isOpen());
        m_port->writeBytes("to board");
        QCOMPARE(m_board->read(8), QByteArray("to board"));
        const QSignalSpy bytes(m_port.get(), &QtSerialPort::bytesRead);
        m_board->write("from board");
        QTRY_COMPARE(bytes.count(), 1);
        m_port->close();
        QTRY_COMPARE(m_port->state(), Link::State::Closed);

        m_port->open(device, 115200, 8, 0, 0);
        m_port->close(); // at once, while the device is still being opened
        QCOMPARE(m_port->state(), Link::State::Closed);
        m_port->open(device, 115200, 8, 0, 0);
        QCOMPARE(m_port->state(), Link::State::Closed);
        QVERIFY(m_port->reason().startsWith("上次打开该串口的操作尚未结束"));
        QCOMPARE(openFailed.count(), 1);
        QTRY_VERIFY(!PortOpening::isOpening(device));
        QCOMPARE(descriptorsOf(m_board->device()), heldByPeer);

        m_port->open(broken, 115200, 8, 0, 0);
        QCOMPARE(m_port->state(), Link::State::Opening);
        QTRY_COMPARE(openFailed.count(), 2);
        QCOMPARE(m_port->reason(), QString("设备不是可用的串口，或不支持所选的参数"));
        m_port->open(device, 115200, 8, 0, 0);
        m_port.reset();
        QTRY_VERIFY(!PortOpening::isOpening(device));
        QCOMPARE(descriptorsOf(m_board->device()), heldByPeer);
    }

    // One and a half stop bits exist on Windows only.
    void opensWithItsSettings()
    {
        SerialSettings settings = settingsOf(m_board->device());
        SerialLink &link = *m_port;
        m_port->open(settings.name, 57600, 8, 2, 0);
        termios line = lineSettings(*m_board);
        QVERIFY((line.c_cflag & CSTOPB) != 0);
        QCOMPARE(cfgetospeed(&line), speed_t(B57600));
        settings.stopBits = QSerialPort::OneStop;
        settings.baudRate = 9600;
        QCOMPARE(link.apply(settings), QStringList());
        line = lineSettings(*m_board);
        QVERIFY((line.c_cflag & CSTOPB) == 0);
        QCOMPARE(cfgetospeed(&line), speed_t(B9600));

        settings.stopBits = QSerialPort::OneAndHalfStop;
        QVERIFY(link.open(settings, SerialLink::Refusal::KeepsOpen));
        QCOMPARE(link.refusedParameters(), QStringList{QStringLiteral("停止位 1.5")});
        settings.baudRate = -1;
        QCOMPARE(link.apply(settings),
                 (QStringList{QStringLiteral("波特率 -1"), QStringLiteral("停止位 1.5")}));
        QVERIFY(link.isOpen());
        settings = settingsOf(m_board->device(), 1200);
        QVERIFY(link.open(settings) && link.refusedParameters().isEmpty());
        link.send(QByteArray(100, 'x'));
        link.close();
        QCOMPARE(link.pendingBytes(), qint64(0));
        QCOMPARE(link.state(), Link::State::Closing); // the last of them is still on the line
    }

    // A line that hung up stays readable and fails at each read: it ends once.
    void endsWithTheDevice()
    {
        QByteArray all;
        connect(m_port.get(), &QtSerialPort::bytesRead, this, [&](const QByteArray &bytes) { all += bytes; });
        const QSignalSpy hangUps(m_port.get(), &QtSerialPort::hungUp);
        m_port->open(m_board->device(), 115200, 8, 0, 0);
        QVERIFY(m_board->write("resetting"));
        QTRY_COMPARE(all, QByteArray("resetting"));
        m_port->setReading(false);
        pollfd line{descriptorsOf(m_board->device()).values().last(), POLLIN, 0};
        QCOMPARE(write(m_board->descriptor(), "last words", 10), ssize_t(10));
        QCOMPARE(poll(&line, 1, 20000), 1);
        QCoreApplication::processEvents(); // into the port's own buffer
        m_port->writeBytes(QByteArray(100000, 'x'));
        m_board->hangUp();
        QTRY_COMPARE(m_states->count(), 2);
        QVERIFY(all.endsWith("last words"));
        QCOMPARE(m_port->state(), Link::State::Closed);
        QVERIFY(m_port->reason().startsWith(QStringLiteral("设备没有响应")));
        QCOMPARE(m_dropped->count(), 1);
        QCOMPARE(hangUps.count(), 1);
        QVERIFY(m_failed->isEmpty());
        QCOMPARE(m_port->send("x"), qint64(0));
        PtyPeer another;
        m_port->open(another.device(), 115200, 8, 0, 0);
        QVERIFY(m_port->isOpen());
        QCOMPARE(m_port->reason(), QString());
    }

    // More than the system takes at once, and a board that reads later: neither
    // may the tail be lost nor the speed of the line change under it.
    void lastBytesLeaveFirst()
    {
        for (const char *const how : {"closed", "destroyed", "program ends"}) {
            init();
            const QByteArray bytes = QByteArray("0123456789abcdef").repeated(20000);
            const auto speed = [this] {
                const termios line = lineSettings(*m_board);
                return cfgetospeed(&line);
            };
            const speed_t before = speed();
            m_port->open(m_board->device(), 921600, 8, 0, 0);
            m_port->writeBytes(bytes);
            QVERIFY(m_port->pendingBytes() > 0);
            if (QString(how) == "closed") {
                m_port->close();
                QCOMPARE(m_port->state(), Link::State::Closing);
                QCOMPARE(m_port->send("no more"), qint64(0));
                m_port->open(m_board->device(), 9600, 8, 0, 0); // not yet
                QVERIFY(m_port->reason().contains(QStringLiteral("仍在发送")));
                QCOMPARE(m_port->state(), Link::State::Closing);
                QVERIFY(m_port->pendingBytes() > 0);
            } else {
                m_port.reset();
            }
            QCOMPARE(speed(), speed_t(B921600));
            QByteArray arrived;
            if (QString(how) == "program ends") { // no event loop runs any more
                std::thread reader([&arrived, line = m_board->descriptor(), size = bytes.size()] {
                    char piece[4096];
                    pollfd readable = {line, POLLIN, 0};
                    while (arrived.size() < size && poll(&readable, 1, 5000) == 1) {
                        const ssize_t count = read(line, piece, sizeof piece);
                        arrived.append(piece, static_cast<int>(qMax<ssize_t>(0, count)));
                    }
                });
                ClosingPort::finishAll();
                reader.join();
            } else {
                arrived = m_board->read(bytes.size(), 20000);
            }
            QCOMPARE(arrived, bytes);
            QTRY_COMPARE(speed(), before);
            if (QString(how) == "closed")
                QTRY_COMPARE(m_port->state(), Link::State::Closed);
            QVERIFY(m_dropped->isEmpty() && m_failed->isEmpty());
        }
    }

    // At once where the device goes meanwhile.
    void dropsWhatNeverLeaves()
    {
        m_port->open(m_board->device(), 921600, 8, 0, 0);
        m_port->writeBytes(QByteArray(300000, 'x'));
        m_port->close();
        m_port->close(); // does nothing
        PtyPeer gone;
        SerialLink other;
        QVERIFY(other.open(settingsOf(gone.device())));
        other.send(QByteArray(300000, 'x'));
        other.close();
        gone.hangUp();
        QTRY_COMPARE(other.state(), Link::State::Closed); // before the one that only waits
        QCOMPARE(m_failed->count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(m_failed->count(), 1, 20000);
        const int arrived = m_board->read(300000, 100).size();
        const qint64 unsent = m_dropped->value(0).value(0).toLongLong();
        QVERIFY2(unsent > 200000 && arrived + unsent <= 300000, qPrintable(QString::number(unsent)));
        QCOMPARE(m_failed->at(0).at(0).toString(),
                 QStringLiteral("串口[%1]有 %2 字节未发出！").arg(m_board->device()).arg(unsent));
        QCOMPARE(m_states->count(), 3);
        m_port->open(m_board->device(), 4000000, 8, 0, 0);
        qint64 sent = 0; // a little more than the system takes
        while (m_port->pendingBytes() == 0)
            sent += m_port->send(QByteArray(1000, 'x'));
        m_port->close();
        QCOMPARE(m_board->read(int(sent)).size(), int(sent));
        QCOMPARE(m_failed->count(), 1);
    }

    // A socket whose other end reads no more stands in for the driver: it refuses
    // to write and is otherwise well.
    void reportsWhatCannotBeWritten()
    {
        signal(SIGPIPE, SIG_IGN);
        const QTemporaryDir folder;
        const QString device = folder.filePath("device");
        QVERIFY(QFile::link(m_board->device(), device));
        for (const bool gone : {false, true}) {
            const QSet<int> before = descriptorsOf(m_board->device());
            m_port->open(device, 115200, 8, 0, 0);
            const QSet<int> opened = descriptorsOf(m_board->device()) - before;
            QCOMPARE(opened.size(), 1);
            int ends[2];
            QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
            QCOMPARE(shutdown(ends[1], SHUT_RD), 0);
            QVERIFY(dup2(ends[0], *opened.begin()) >= 0);
            if (gone)
                QVERIFY(QFile::remove(device));
            m_port->writeBytes("hello");
            QTRY_COMPARE(m_dropped->count(), gone ? 2 : 1);
            QCOMPARE(m_dropped->last().at(0).toLongLong(), qint64(5));
            QCOMPARE(m_port->isOpen(), !gone);
            m_port->close();
            close(ends[0]);
            close(ends[1]);
        }
        QCOMPARE(m_failed->count(), 1);
        QVERIFY(m_failed->at(0).at(0).toString().startsWith(
            QStringLiteral("数据发送失败，5 字节未发出：设备没有响应")));
    }

    // Reported once, and again after something was accepted.
    void limitsWhatIsQueued()
    {
        const QByteArray most(SerialLink::maxPendingBytes, 'x');
        m_port->open(m_board->device(), 115200, 8, 0, 0);
        QCOMPARE(m_port->send(most + 'x'), qint64(0));
        QCOMPARE(m_port->send(most), qint64(most.size()));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(m_port->send(most), qint64(0));
        QCOMPARE(m_failed->count(), 2);
        QCOMPARE(m_failed->at(1).at(0).toString(), QStringLiteral("设备长时间未接收数据，本次数据未发送！"));
        m_port->close();
        m_port->SerialLink::close();
        m_failed->clear();
        m_port->open(m_board->device(), 115200, 8, 0, 0);
        QCOMPARE(m_port->send(most + 'x'), qint64(0));
        QCOMPARE(m_failed->count(), 1);
    }

    // The reader looks at the time of the last arrival when its timer ends, so that
    // a timer that is late ends no packet early.
    void endsAPacketWhenTheLineIsQuiet()
    {
        QuietReader reader(
            m_port.get(), [] { return 0; }, nullptr);
        const auto receive = [this](const QByteArray &bytes) { emit m_port->received(bytes, 0, Peer()); };
        const QSignalSpy packets(&reader, &QuietReader::packetRead);
        qint64 quietUs = 0;
        qint64 lastUs = 0;
        connect(&reader, &QuietReader::quiet, this, [&] {
            quietUs = Link::nowUs() - lastUs;
            reader.endPacket();
        });
        reader.setQuietTime(50);
        const qint64 firstUs = Link::nowUs();
        receive("first ");
        do // until the timer is late
            lastUs = Link::nowUs();
        while (lastUs < firstUs + 51000);
        receive("second");
        QCOMPARE(reader.lastByte(), 'd');
        QTRY_COMPARE(packets.count(), 1);
        QVERIFY(quietUs >= 50000);
        QCOMPARE(packets.at(0).at(0).value<QByteArrayList>().join(), QByteArray("first second"));
        QCOMPARE(reader.lastByte(), '\0');
        reader.setActive(false);
        receive("somebody else's");
        reader.setActive(true);
        reader.append("left over");
        reader.stop();
        QCOMPARE(packets.at(1).at(0).value<QByteArrayList>().join(), QByteArray("left over"));
        QCOMPARE(packets.at(1).at(1).toLongLong(), qint64(9));
        reader.append(QByteArray(64 * 1024 * 1024, 'x')); // as much as a packet holds
        QCOMPARE(packets.count(), 3);
    }

    void pausesWhileTooMuchIsPending()
    {
        m_port->open(m_board->device(), 115200, 8, 0, 0);
        qint64 backlog = 0;
        int packets = 0;
        QByteArray read;
        QuietReader reader(
            m_port.get(), [&] { return backlog; }, nullptr);
        connect(&reader, &QuietReader::pieceRead, this, [&](const QByteArray &bytes) { read += bytes; });
        connect(&reader, &QuietReader::quiet, &reader, &QuietReader::endPacket);
        connect(&reader, &QuietReader::packetRead, this, [&] { ++packets; });

        backlog = 1000LL * 1000 * 1000;
        const QByteArray bytes = QByteArray("0123456789abcdef").repeated(100000);
        const int sent = m_board->writeSome(bytes);
        QVERIFY(!m_port->isReading());
        QVERIFY2(sent >= 1024 * 1024 && sent < bytes.size(), qPrintable(QString::number(sent)));
        QVERIFY(read.size() < 512 * 1024);
        QCOMPARE(packets, 0); // its own pause is no end of a packet
        backlog = 0;
        QVERIFY(m_board->write(bytes.mid(sent)));
        QTRY_COMPARE(read.size(), bytes.size());
        QCOMPARE(read, bytes);
        QTRY_VERIFY(packets > 0);
        backlog = 1000LL * 1000 * 1000;
        m_board->writeSome(bytes);
        QVERIFY(!m_port->isReading());
        reader.stop();
        QVERIFY(m_port->isReading()); // for the next owner of the port
    }

    // There is always more to read.
    void closesUnderAFlood()
    {
        constexpr qint64 kEnough = 4 * 1024 * 1024;
        m_port->open(m_board->device(), 115200, 8, 0, 0);
        pollfd line{descriptorsOf(m_board->device()).values().last(), POLLIN, 0};
        qint64 read = 0;
        const QByteArray more(2048, 'f');
        const auto feed = [&] {
            if (read >= kEnough)
                return;
            QVERIFY(::write(m_board->descriptor(), more.constData(), size_t(more.size())) > 0);
            poll(&line, 1, 5000);
        };
        connect(m_port.get(), &Link::received, this, [&](const QByteArray &bytes) {
            read += bytes.size();
            feed();
        });
        feed();
        m_port->close();
        QVERIFY2(read > 0 && read < kEnough, qPrintable(QString::number(read)));
    }

    void opensAgainWhenTheDeviceIsBack()
    {
        const QTemporaryDir folder;
        qputenv("KORVEX_VIRTUAL_PORTS", folder.path().toLocal8Bit());
        const QString port = folder.filePath("COM3");
        QVERIFY(QFile::link(m_board->device(), port));
        SerialReconnector reconnector(m_port.get());
        QStringList events;
        connect(&reconnector, &SerialReconnector::waitingChanged, this,
                [&](bool isWaiting) { events.append(isWaiting ? "waits" : "ends"); });
        QByteArray received;
        connect(m_port.get(), &Link::received, this, [&](const QByteArray &bytes) { received += bytes; });
        const auto hangUp = [&] {
            m_board->hangUp();
            QFile::remove(port);
        };
        const auto plugIn = [&] {
            m_board = std::make_unique<PtyPeer>();
            QVERIFY(QFile::link(m_board->device(), port));
        };
        QVERIFY(m_port->SerialLink::open(settingsOf("COM3", 57600)));
        reconnector.setEnabled(true);
        for (int i = 0; i < 5; ++i) {
            hangUp();
            QTRY_VERIFY(reconnector.isWaiting());
            QCOMPARE(m_port->send("lost"), qint64(0));
            QCOMPARE(reconnector.portName(), QStringLiteral("COM3"));
            reconnector.setHeld(i == 2); // a transfer
            plugIn();
            if (i == 2) {
                QTest::qWait(0);
                QVERIFY(!m_port->isOpen());
                reconnector.setHeld(false);
            }
            QTRY_VERIFY(m_port->isOpen());
            QVERIFY(!reconnector.isWaiting());
            const termios line = lineSettings(*m_board);
            QCOMPARE(cfgetispeed(&line), speed_t(B57600));
            QVERIFY(m_board->write("again"));
            QTRY_COMPARE(received, QByteArray("again").repeated(i + 1));
            QCOMPARE(descriptorsOf(m_board->device()).size(), 2); // one is the board's
        }
        QCOMPARE(events.join(' '), QStringLiteral("waits ends waits ends waits ends waits ends waits ends"));

        m_port->close(); // by its owner
        QTRY_COMPARE(m_port->state(), Link::State::Closed);
        QVERIFY(!reconnector.isWaiting());
        QVERIFY(m_port->SerialLink::open(settingsOf("COM3")));
        hangUp();
        QTRY_VERIFY(reconnector.isWaiting());
        // Another tool is quicker.
        QSignalSpy reasons(&reconnector, &SerialReconnector::reasonChanged);
        QtSerialPort other;
        other.setTool("PID");
        plugIn();
        QVERIFY(other.SerialLink::open(settingsOf("COM3")));
        QTRY_VERIFY(!reconnector.reason().isEmpty());
        QVERIFY(reconnector.reason().contains("PID") && !m_port->isOpen());
        QCOMPARE(reasons.count(), 1);
        reconnector.setEnabled(false);
        QVERIFY(!reconnector.isWaiting());
        qunsetenv("KORVEX_VIRTUAL_PORTS");
    }

    void knowsADeviceAgain()
    {
        using namespace SerialPorts;
        const Identity numbered{0x10c4, 0xea60, "A1"};
        const Identity other{0x10c4, 0xea60, "B2"};
        const Identity plain{0x1a86, 0x7523, ""};
        const QVector<Port> ports{
            {"COM1", "", {}}, {"COM2", "", other}, {"COM4", "", numbered}, {"COM5", "", plain}};
        QCOMPARE(find("COM1", numbered, ports), QStringLiteral("COM1")); // the system can't tell
        QCOMPARE(find("COM2", {}, ports), QStringLiteral("COM2"));
        QCOMPARE(find("COM2", numbered, ports), QString()); // another device has the name
        QCOMPARE(find("COM3", numbered, ports), QStringLiteral("COM4"));
        QCOMPARE(find("COM3", plain, ports), QString()); // one of several, maybe
        QCOMPARE(find("COM5", plain, ports), QStringLiteral("COM5"));
        QCOMPARE(find(m_board->device(), {}, ports), m_board->device()); // is not listed
    }

    void movesTheModemLines()
    {
        s_lines = {};
        QVERIFY(m_port->SerialLink::open(settingsOf(m_board->device())));
        QVERIFY(!m_port->lines().isKnown);
        m_port->close();
        QTRY_COMPARE(m_port->state(), Link::State::Closed);
        s_lines.isThere = true;
        SerialSettings settings = settingsOf(m_board->device());
        settings.dtr = false;
        settings.rts = true;
        QVERIFY(m_port->SerialLink::open(settings));
        QCOMPARE(s_lines.changes.join(' '), QStringLiteral("DTR 0 RTS 1"));
        const SerialLink::Lines lines = m_port->lines();
        QVERIFY(lines.isKnown && lines.cts && lines.dsr && !lines.dcd && !lines.ri);
        m_port->setDtr(true);
        m_port->setRts(false);
        QVERIFY(m_port->settings().dtr && m_port->settings().rts == false);

        LinePulse pulse(m_port.get());
        QSignalSpy finished(&pulse, &LinePulse::finished);
        s_lines.changes.clear();
        pulse.enterBootLoader();
        pulse.reset(); // one at a time
        QTRY_COMPARE(finished.count(), 1);
        QCOMPARE(s_lines.changes.join(' '), QStringLiteral("RTS 1 DTR 0 DTR 1 RTS 0 DTR 1 RTS 0"));
        QVERIFY(m_port->settings().dtr);
        s_lines.changes.clear();
        pulse.reset();
        QTRY_COMPARE(finished.count(), 2);
        QCOMPARE(s_lines.changes.join(' '), QStringLiteral("RTS 1 DTR 0 RTS 0 DTR 0 DTR 1 RTS 0"));
        pulse.sendBreak();
        QTRY_COMPARE(finished.count(), 3);
        s_lines = {};
    }

    void noticesChangesByCount()
    {
        const QTemporaryDir folder;
        qputenv("KORVEX_VIRTUAL_PORTS", folder.path().toLocal8Bit());
        const int systemPorts = SerialPorts::entries().size();
        QSerialPorCheck check;
        QSignalSpy changes(&check, &QSerialPorCheck::signalSerialChanged);
        check.SltCheckSerialport();
        QCOMPARE(changes.count(), systemPorts > 0 ? 1 : 0);
        changes.clear();

        QVERIFY(QFile::link(m_board->device(), folder.filePath("COM3")));
        check.SltCheckSerialport();
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.last().at(0).toStringList().value(0), QStringLiteral("COM3 虚拟串口"));
        // One port for another between two looks goes unnoticed.
        QVERIFY(QFile::rename(folder.filePath("COM3"), folder.filePath("COM4")));
        check.SltCheckSerialport();
        QCOMPARE(changes.count(), 1);
        QVERIFY(QFile::remove(folder.filePath("COM4")));
        check.SltCheckSerialport();
        QCOMPARE(changes.count(), 2);
        QVERIFY(QFile::link(m_board->device(), folder.filePath("COM5")));
        check.start(); // and automatically, within about a second
        QTRY_COMPARE(changes.count(), 3);
        qunsetenv("KORVEX_VIRTUAL_PORTS");
    }

private:
    std::unique_ptr<PtyPeer> m_board;
    std::unique_ptr<QtSerialPort> m_port;
    std::unique_ptr<QSignalSpy> m_states;
    std::unique_ptr<QSignalSpy> m_dropped;
    std::unique_ptr<QSignalSpy> m_failed;
};

QTEST_GUILESS_MAIN(TestSerialLink)
#include "test_serial_link.moc"
