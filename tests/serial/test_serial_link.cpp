// The serial ports of both kinds and the port watch, against pseudo-terminals.

#include "serial/qextserialport.h"
#include "serial/qserialporcheck.h"
#include "serial/qtserialport.h"
#include "serial/serialports.h"
#include "tests/support/ptypeer.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <fcntl.h>
#include <termios.h>
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
    void pagePortSendsBeforeClosing();
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

void TestSerialLink::pagePortSendsBeforeClosing()
{
    PtyPeer board;
    QextSerialPort port(QextSerialPort::EventDriven);
    port.setPortName(board.device());
    QVERIFY(port.open(QIODevice::ReadWrite));
    QCOMPARE(port.write("last words"), qint64(10));
    port.close();
    QCOMPARE(board.read(10), QByteArray("last words"));
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
