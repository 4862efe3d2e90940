// The serial ports of both kinds and the port watch, against pseudo-terminals.

#include "closingport.h"
#include "ptypeer.h"
#include "qextserialport.h"
#include "qserialporcheck.h"
#include "qtserialport.h"
#include "quietreader.h"
#include "serialports.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

class TestSerialLink : public QObject
{
    Q_OBJECT

private slots:
    void opensReadsAndWrites();
    void mapsStopBits();
    void reopensUnderAnotherName();
    void failsQuietly();
    void pagePortTellsHangUpOnce();
    void lastBytesLeaveFirst_data();
    void lastBytesLeaveFirst();
    void lastBytesLeaveWhenTheProgramEnds();
    void dropsWhatNeverLeaves();
    void reportsWhatCannotBeWritten();
    void pausesWhileTooMuchIsPending();
    void pagePortKeepsWhatItCannotSet();
    void noticesChangesByCount();
};

void TestSerialLink::opensReadsAndWrites()
{
    PtyPeer board;
    QtSerialPort port;
    QCOMPARE(port.portName(), QString());
    const QSignalSpy bytes(&port, &QtSerialPort::bytesRead);
    port.open(board.device(), 115200, 8, 0, 0);
    QVERIFY(port.isOpen());
    QCOMPARE(port.portName(), board.device());
    port.writeBytes(QByteArray("\x00\xff\n", 3));
    QCOMPARE(board.read(3), QByteArray("\x00\xff\n", 3));
    QVERIFY(board.write("hello"));
    QTRY_VERIFY(!bytes.isEmpty());
    QByteArray all;
    for (const auto &arguments : bytes)
        all += arguments.at(0).toByteArray();
    QCOMPARE(all, QByteArray("hello"));
    port.close();
    QVERIFY(!port.isOpen());
}

void TestSerialLink::mapsStopBits()
{
    PtyPeer board;
    QtSerialPort port;
    const auto twoStopBits = [&board] {
        const int line = open(board.device().toLocal8Bit().constData(), O_RDWR | O_NOCTTY);
        termios settings{};
        tcgetattr(line, &settings);
        close(line);
        return (settings.c_cflag & CSTOPB) != 0;
    };
    port.open(board.device(), 9600, 8, 2, 0);
    QVERIFY(port.isOpen());
    QVERIFY(twoStopBits());
    port.open(board.device(), 9600, 8, 0, 0);
    QVERIFY(!twoStopBits());
}

void TestSerialLink::reopensUnderAnotherName()
{
    PtyPeer first;
    PtyPeer second;
    QtSerialPort port;
    port.open(first.device(), 9600, 8, 0, 0);
    port.open(second.device(), 9600, 8, 0, 0);
    QVERIFY(port.isOpen());
    port.writeBytes("to second");
    QCOMPARE(second.read(9), QByteArray("to second"));
    QCOMPARE(first.read(1, 50), QByteArray());
    QtSerialPort other;
    other.open(first.device(), 9600, 8, 0, 0);
    QVERIFY(other.isOpen()); // the first device was let go
}

void TestSerialLink::failsQuietly()
{
    QtSerialPort port;
    const QSignalSpy bytes(&port, &QtSerialPort::bytesRead);
    port.open("COM4711", 115200, 8, 0, 0);
    QVERIFY(!port.isOpen());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("device not open"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^Write data failed:"));
    port.writeBytes("x");
    QCOMPARE(bytes.count(), 0);
}

void TestSerialLink::pagePortTellsHangUpOnce()
{
    PtyPeer board;
    QextSerialPort port(QextSerialPort::EventDriven);
    const QSignalSpy gone(&port, &QextSerialPort::hungUp);
    port.setPortName(board.device());
    QVERIFY(port.open(QIODevice::ReadWrite));
    board.hangUp();
    QTRY_COMPARE(gone.count(), 1);
    QTest::qWait(50); // a line that hung up stays readable: it must not report again
    QCOMPARE(gone.count(), 1);
    port.close();
    QVERIFY(!port.isOpen());
}

void TestSerialLink::lastBytesLeaveFirst_data()
{
    QTest::addColumn<bool>("destroyed");
    QTest::newRow("closed") << false;
    QTest::newRow("destroyed") << true;
}

// More than the system takes at once, and a board that reads later: neither
// may the tail be lost nor the speed of the line change under it.
void TestSerialLink::lastBytesLeaveFirst()
{
    QFETCH(bool, destroyed);
    const QByteArray bytes = QByteArray("0123456789abcdef").repeated(20000);
    PtyPeer board;
    const auto speed = [line = open(board.device().toLocal8Bit().constData(), O_RDWR | O_NOCTTY)] {
        termios settings{};
        tcgetattr(line, &settings);
        return cfgetospeed(&settings);
    };
    const speed_t before = speed();
    auto port = std::make_unique<QtSerialPort>();
    QSignalSpy failures(port.get(), &QtSerialPort::failed);
    port->open(board.device(), 921600, 8, 0, 0);
    port->writeBytes(bytes);
    if (destroyed)
        port.reset();
    else
        port->close();
    QCOMPARE(speed(), speed_t(B921600));
    if (!destroyed) {
        QVERIFY(!port->isOpen());
        port->open(board.device(), 9600, 8, 0, 0); // not yet
        QVERIFY(!port->isOpen());
        QVERIFY(!port->reason().isEmpty());
    }
    QCOMPARE(board.read(bytes.size(), 20000), bytes);
    QTRY_COMPARE(speed(), before);
    QCOMPARE(failures.count(), 0);
}

// No event loop runs any more.
void TestSerialLink::lastBytesLeaveWhenTheProgramEnds()
{
    const QByteArray bytes = QByteArray("0123456789abcdef").repeated(20000);
    PtyPeer board;
    auto port = std::make_unique<QtSerialPort>();
    port->open(board.device(), 921600, 8, 0, 0);
    port->writeBytes(bytes);
    port.reset();
    QByteArray arrived;
    std::thread reader([&arrived, line = board.descriptor(), size = bytes.size()] {
        char piece[4096];
        pollfd readable = {line, POLLIN, 0};
        while (arrived.size() < size && poll(&readable, 1, 5000) == 1) {
            const ssize_t count = read(line, piece, sizeof piece);
            arrived.append(piece, static_cast<int>(qMax<ssize_t>(0, count)));
        }
    });
    ClosingPort::finishAll();
    reader.join();
    QCOMPARE(arrived, bytes);
    QVERIFY(!ClosingPort::isClosing(QString(board.device()).remove(QStringLiteral("/dev/"))));
}

void TestSerialLink::dropsWhatNeverLeaves()
{
    PtyPeer board;
    QtSerialPort port;
    QSignalSpy failures(&port, &QtSerialPort::failed);
    port.open(board.device(), 921600, 8, 0, 0);
    port.writeBytes(QByteArray(300000, 'x'));
    port.close();
    QTRY_COMPARE_WITH_TIMEOUT(failures.count(), 1, 20000);
    const int arrived = board.read(300000, 100).size();
    const QRegularExpression notice(
        QStringLiteral("^串口\\[%1\\]有 (\\d+) 字节未发出！$").arg(board.device()));
    const int unsent = notice.match(failures.at(0).at(0).toString()).captured(1).toInt();
    QVERIFY2(unsent > 200000 && arrived + unsent <= 300000, qPrintable(failures.at(0).at(0).toString()));
    port.open(board.device(), 921600, 8, 0, 0);
    QVERIFY(port.isOpen());
}

// A socket whose other end reads no more stands in for the driver: it refuses
// to write and is otherwise well.
void TestSerialLink::reportsWhatCannotBeWritten()
{
    signal(SIGPIPE, SIG_IGN);
    const QTemporaryDir folder;
    PtyPeer board;
    const QString device = folder.filePath("device");
    QVERIFY(QFile::link(board.device(), device));
    SerialLine line; // of both kinds of ports
    QSignalSpy failures(&line, &SerialLine::writeFailed);
    QSignalSpy hangUps(&line, &SerialLine::hungUp);
    for (const bool gone : {false, true}) {
        line.prepare(device);
        QVERIFY(line.open(QIODevice::ReadWrite));
        int ends[2];
        QCOMPARE(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
        QCOMPARE(shutdown(ends[1], SHUT_RD), 0);
        QVERIFY(dup2(ends[0], line.port().handle()) >= 0);
        if (gone)
            QVERIFY(QFile::remove(device));
        line.write("hello");
        QTRY_COMPARE(gone ? hangUps.count() : failures.count(), 1);
        QVERIFY(line.reason().contains(QStringLiteral("没有响应")));
        line.close();
        close(ends[0]);
        close(ends[1]);
    }
    QCOMPARE(failures.count(), 1);
    QCOMPARE(failures.at(0).at(0).toLongLong(), qint64(5));
}

void TestSerialLink::pausesWhileTooMuchIsPending()
{
    PtyPeer board;
    QextSerialPort port(QextSerialPort::EventDriven);
    port.setPortName(board.device());
    QVERIFY(port.open(QIODevice::ReadWrite));
    qint64 backlog = 0;
    qint64 packets = 0;
    QByteArray read;
    QuietReader reader(
        &port, [&] { return backlog; }, nullptr);
    connect(&port, &QextSerialPort::readyRead, &reader, &QuietReader::handleArrival);
    connect(&reader, &QuietReader::pieceRead, this, [&](const QByteArray &bytes) { read += bytes; });
    connect(&reader, &QuietReader::quiet, &reader, &QuietReader::takePacket);
    connect(&reader, &QuietReader::packetRead, this, [&] { ++packets; });

    backlog = 1000LL * 1000 * 1000;
    const QByteArray bytes = QByteArray("0123456789abcdef").repeated(100000);
    const int sent = board.writeSome(bytes);
    QVERIFY(reader.isPaused());
    QVERIFY2(sent >= 1024 * 1024 && sent < bytes.size(), qPrintable(QString::number(sent)));
    QVERIFY(read.size() < 512 * 1024);
    QCOMPARE(packets, qint64(0)); // its own pause is no end of a packet
    backlog = 0;
    QVERIFY(board.write(bytes.mid(sent)));
    QTRY_COMPARE(read.size(), bytes.size());
    QCOMPARE(read, bytes);
}

void TestSerialLink::pagePortKeepsWhatItCannotSet()
{
    PtyPeer board;
    QextSerialPort port(QextSerialPort::EventDriven);
    port.setPortName(board.device());
    QVERIFY(port.open(QIODevice::ReadWrite));
    QVERIFY(port.setBaudRate(921600));
    QVERIFY(port.setDataBits(8));
    QVERIFY(port.setStopBits(2));
    QVERIFY(!port.setStopBits(3));
    QVERIFY(!port.setParity(5));
    QVERIFY(!port.setDataBits(9));
    QVERIFY(port.isOpen());
    QVERIFY(board.write("still here"));
    QTRY_COMPARE(port.bytesAvailable(), qint64(10));
    QCOMPARE(port.readAll(), QByteArray("still here"));
}

void TestSerialLink::noticesChangesByCount()
{
    const QTemporaryDir folder;
    qputenv("KORVEX_VIRTUAL_PORTS", folder.path().toLocal8Bit());
    const int systemPorts = SerialPorts::entries().size();
    QSerialPorCheck check;
    QSignalSpy changes(&check, &QSerialPorCheck::signalSerialChanged);
    check.SltCheckSerialport();
    QCOMPARE(changes.count(), systemPorts > 0 ? 1 : 0);
    changes.clear();

    PtyPeer board;
    QVERIFY(QFile::link(board.device(), folder.filePath("COM3")));
    check.SltCheckSerialport();
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
    QCOMPARE(changes.last().at(0).toStringList().size(), systemPorts);

    QVERIFY(QFile::link(board.device(), folder.filePath("COM5")));
    check.start(); // and by itself, within about a second
    QTRY_COMPARE(changes.count(), 3);
    qunsetenv("KORVEX_VIRTUAL_PORTS");
}

QTEST_MAIN(TestSerialLink)
#include "test_serial_link.moc"
