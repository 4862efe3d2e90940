// Port names, draining lines, the spool of received bytes, the multi-send list and the bounded
// receive buffer.

#include "bytespool.h"
#include "linedrain.h"
#include "portname.h"
#include "receivebuffer.h"
#include "sendlist.h"
#include "textcodec.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#endif

namespace {

// A read may stop where the file ends and memory begins.
QByteArray readBack(const ByteSpool &spool, qint64 offset, qint64 count)
{
    const QByteArray front = spool.read(offset, count);
    return front + spool.read(offset + front.size(), count - front.size());
}

} // namespace

class TestSerialEngine : public QObject
{
    Q_OBJECT

private slots:
    void namesThePortOfAnEntry();
    void countsPorts();
    void findsVirtualPorts();
    void drainsALine_data();
    void drainsALine();
    void spoolsExactlyWhatCame();
    void keepsBytesWhenTheDiskIsFull();
    void readsListsOfOtherPrograms();
    void writesTheListExactly();
    void keepsWhatOthersWroteIntoTheList();
    void deletesPagesOfTheList();
    void survivesHostileLists();
    void editsLeadToTheWholeText_data();
    void editsLeadToTheWholeText();
    void editsAreSmall();
};

void TestSerialEngine::namesThePortOfAnEntry()
{
    QCOMPARE(PortName::fromEntry("COM12 USB-SERIAL CH340"), QStringLiteral("COM12"));
    QCOMPARE(PortName::fromEntry("bridge (COM7) and COM8"), QStringLiteral("COM7"));
    QCOMPARE(PortName::fromEntry("COM"), QString());
    QCOMPARE(PortName::fromEntry("port 5"), QString());
    QCOMPARE(PortName::fromEntry(""), QString());
    QCOMPARE(PortName::entry("COM3", QString()), QStringLiteral("COM3 "));
#ifndef Q_OS_WIN
    QCOMPARE(PortName::fromEntry("ttyUSB0 FT232R"), QStringLiteral("ttyUSB0"));
    QCOMPARE(PortName::fromEntry("/dev/pts/4"), QStringLiteral("/dev/pts/4"));
    QCOMPARE(PortName::fromEntry("attyUSB0"), QString());
#endif
}

void TestSerialEngine::countsPorts()
{
    QStringList names{"COM10", "ttyUSB12", "COM2", "ttyS0", "COM1", "ttyUSB2", "ttyACM0"};
    std::sort(names.begin(), names.end(), PortName::isBefore);
    QCOMPARE(names, (QStringList{"COM1", "COM2", "COM10", "ttyACM0", "ttyS0", "ttyUSB2", "ttyUSB12"}));
}

// 1000 baud with ten bits: a byte takes 10 ms, the transmitter's buffer 2.56 s.
void TestSerialEngine::drainsALine_data()
{
    using Looks = QVector<QPair<int, int>>; // at so many ms, so many bytes pending
    QTest::addColumn<int>("lineFreeMs");
    QTest::addColumn<Looks>("looks");
    QTest::addColumn<int>("endMs");
    QTest::addColumn<bool>("left");
    QTest::newRow("nothing was written") << 0 << Looks{{0, 0}} << 0 << true;
    QTest::newRow("in the transmitter") << 50 << Looks{{0, 0}, {49, 0}, {51, 0}} << 51 << true;
    QTest::newRow("faster than its baud rate says")
        << 9000 << Looks{{0, 900}, {20, 0}, {2570, 0}, {2581, 0}} << 2581 << true;
    QTest::newRow("slow") << 1000 << Looks{{0, 100}, {500, 50}, {1000, 0}, {1001, 0}} << 1000 << true;
    QTest::newRow("stuck") << 900 << Looks{{0, 90}, {100, 80}, {3600, 80}, {3700, 80}} << 3700 << false;
    QTest::newRow("too much") << 99999
                              << Looks{{0, 9999}, {3000, 9700}, {6000, 9400}, {9000, 9100}, {10001, 9000}}
                              << 10001 << false;
    QTest::newRow("drips") << 100 << Looks{{0, 10}, {2000, 9}, {4000, 8}, {4900, 7}, {5001, 6}} << 5001
                           << false;
}

void TestSerialEngine::drainsALine()
{
    using Looks = QVector<QPair<int, int>>;
    QFETCH(int, lineFreeMs);
    QFETCH(Looks, looks);
    constexpr qint64 ms = 1000 * 1000;
    constexpr qint64 start = 77777 * ms;
    LineDrain drain(start, looks.first().second, LineDrain::byteNs(1000, 10), start + lineFreeMs * ms);
    for (const auto &[at, pending] : looks) {
        const LineDrain::State state = drain.check(start + at * ms, pending);
        if (state == LineDrain::State::Pending)
            continue;
        QTEST(at, "endMs");
        QTEST(state == LineDrain::State::Left, "left");
        return;
    }
    QFAIL("never ends");
}

void TestSerialEngine::findsVirtualPorts()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir folder;
    qputenv("KORVEX_VIRTUAL_PORTS", folder.path().toLocal8Bit());
    QVERIFY(QFile::link("/dev/null", folder.filePath("COM10")));
    QVERIFY(QFile::link("/dev/zero", folder.filePath("COM9")));
    QVERIFY(QFile::link("/dev/null", folder.filePath("other")));
    QVERIFY(QFile::link("/no/such/device", folder.filePath("COM1")));
    QCOMPARE(PortName::virtualPorts(), (QStringList{"COM9", "COM10"}));
    QCOMPARE(PortName::device("COM9"), QStringLiteral("/dev/zero"));
    QCOMPARE(PortName::device("COM77"), QStringLiteral("COM77"));
    qunsetenv("KORVEX_VIRTUAL_PORTS");
    QCOMPARE(PortName::virtualPorts(), QStringList());
    QCOMPARE(PortName::device("COM9"), QStringLiteral("COM9"));
#endif
}

void TestSerialEngine::spoolsExactlyWhatCame()
{
    const QTemporaryDir folder;
    QString name;
    {
        ByteSpool spool(folder.path(), "serial");
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 0); // no file before the first byte
        QByteArray all;
        for (int i = 0; i < 300; ++i) {
            const QByteArray piece(i * 7 % 251, static_cast<char>(i));
            QCOMPARE(spool.append(piece.constData(), piece.size()), ByteSpool::State::OnDisk);
            all += piece;
            if (i % 7 == 0)
                QCOMPARE(spool.flush(), ByteSpool::State::OnDisk);
            if (i % 10 == 0) // reading in between moves no writing
                QCOMPARE(readBack(spool, all.size() / 2, 5), all.mid(all.size() / 2, 5));
        }
        QCOMPARE(spool.size(), qint64(all.size()));
        QCOMPARE(spool.flush(), ByteSpool::State::OnDisk);
        QCOMPARE(spool.read(0, 1 << 20), all);
        QCOMPARE(spool.read(spool.size(), 10), QByteArray());
        // On disk under its name, for whoever looks for it after a crash.
        name = folder.filePath(QDir(folder.path()).entryList({"serial_*"}).value(0));
        QCOMPARE(QFileInfo(name).size(), qint64(all.size()));
        spool.clear();
        QCOMPARE(spool.size(), qint64(0));
    }
    QVERIFY(!QFileInfo::exists(name));

    // A folder that cannot be written: the system's temporary folder serves.
    ByteSpool elsewhere("/no/such/folder", "serial");
    elsewhere.append("abc", 3);
    QCOMPARE(elsewhere.flush(), ByteSpool::State::OnDisk);
    QCOMPARE(elsewhere.read(0, 9), QByteArray("abc"));
}

void TestSerialEngine::keepsBytesWhenTheDiskIsFull()
{
#ifdef Q_OS_UNIX
    const QTemporaryDir folder;
    ByteSpool spool(folder.path(), "serial", 3000);
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    rlimit tight = before;
    tight.rlim_cur = 1000; // the file takes no more than that
    setrlimit(RLIMIT_FSIZE, &tight);
    QByteArray all;
    const QByteArray much(100 * 1000, 'x');
    ByteSpool recovers(folder.path(), "serial");
    QCOMPARE(recovers.append(much.constData(), much.size()), ByteSpool::State::InMemory);
    setrlimit(RLIMIT_FSIZE, &before); // somebody makes room
    QCOMPARE(recovers.append("end", 3), ByteSpool::State::OnDisk);
    QCOMPARE(readBack(recovers, 0, 1 << 20), much + "end");
    setrlimit(RLIMIT_FSIZE, &tight);
    for (int i = 0; i < 15; ++i) {
        const QByteArray piece(300, static_cast<char>('a' + i));
        spool.append(piece.constData(), piece.size());
        spool.flush();
        all += piece;
        const ByteSpool::State expected = all.size() <= 1000   ? ByteSpool::State::OnDisk
                                          : all.size() <= 4000 ? ByteSpool::State::InMemory
                                                               : ByteSpool::State::Incomplete;
        QCOMPARE(spool.state(), expected);
    }
    setrlimit(RLIMIT_FSIZE, &before);
    QCOMPARE(spool.size(), qint64(4000));
    QCOMPARE(readBack(spool, 0, 5000), all.left(4000));
#endif
}

void TestSerialEngine::readsListsOfOtherPrograms()
{
    SendList list;
    list.read("\xEF\xBB\xBF"
              "0#AT+RST\r\n\r\n12#a#b#c\nnonsense\n3#first\n3#second\n-4#x\n1000#y\n999#last\nx#z\n7#");
    QCOMPARE(list.row(0), QStringLiteral("AT+RST"));
    QCOMPARE(list.row(12), QStringLiteral("a#b#c"));
    QCOMPARE(list.row(3), QStringLiteral("second"));
    QCOMPARE(list.row(999), QStringLiteral("last"));
    QCOMPARE(list.row(1000), QString());
    QCOMPARE(list.row(7), QString());
    QCOMPARE(list.pageCount(), 100);

    list.read(TextCodec::encode(QStringLiteral("1#温度\n"), 1));
    QCOMPARE(list.row(1), QStringLiteral("温度"));
    QCOMPARE(list.row(0), QString());
    QCOMPARE(list.pageCount(), 5);
}

void TestSerialEngine::writesTheListExactly()
{
    SendList list;
    QVERIFY(list.setRow(SendList::index(7, 3), "last"));
    QVERIFY(list.setRow(2, QStringLiteral("温#")));
    QVERIFY(!list.setRow(2, QStringLiteral("温#")));
    QVERIFY(list.setRow(0, "x"));
    QVERIFY(list.setRow(0, ""));
    QCOMPARE(list.write(), QByteArray("2#\xe6\xb8\xa9#\n63#last\n"));
    QCOMPARE(list.pageCount(), 7);
    SendList again;
    again.read(list.write());
    QCOMPARE(again.write(), list.write());
}

void TestSerialEngine::keepsWhatOthersWroteIntoTheList()
{
    const QByteArray file("; commands of the boot loader\n0#a\n1#b\n5#f\nnot a row\n2000#far\n");
    SendList list;
    list.read(file);
    QCOMPARE(list.write(), file);
    list.setRow(1, "mine");
    list.setRow(5, QString());
    // Meanwhile, others have changed two rows, added one and deleted one.
    list.merge("; commands of the boot loader\n0#theirs\n1#theirs\n2#new\nnot a row\n2000#far\n");
    QVERIFY(list.isChanged());
    QCOMPARE(list.write(),
             QByteArray("; commands of the boot loader\n0#theirs\n1#mine\n2#new\nnot a row\n2000#far\n"));
    list.setWritten();
    list.merge("1#theirs\n"); // what was written once is no longer one's own
    QCOMPARE(list.write(), QByteArray("1#theirs\n"));
}

void TestSerialEngine::deletesPagesOfTheList()
{
    SendList list;
    list.setRow(SendList::index(1, 9), "one");
    list.setRow(SendList::index(2, 0), "two");
    list.setRow(SendList::index(3, 4), "three");
    list.removePage(2);
    QCOMPARE(list.write(), QByteArray("9#one\n14#three\n"));
    QVERIFY(list.clearPage(1));
    QVERIFY(!list.clearPage(1));
    QCOMPARE(list.write(), QByteArray("14#three\n"));
}

void TestSerialEngine::survivesHostileLists()
{
    SendList list;
    list.read(QByteArray("99999999999999999999#x\n4294967296#y\n# \n") + "5#" +
              QByteArray(10 * 1000 * 1000, 'z'));
    QVERIFY(list.row(5).isEmpty()); // more than a row can hold
    QCOMPARE(list.write().count('\n'), 4);
    QVERIFY(list.write().endsWith("zz\n") && list.write().size() > 10 * 1000 * 1000); // whole
}

void TestSerialEngine::editsLeadToTheWholeText_data()
{
    QTest::addColumn<int>("codec");
    QTest::addColumn<int>("kind"); // 0 log text, 1 random bytes, 2 Chinese without line ends, 3 one letter
    for (int codec = 0; codec < 2; ++codec) {
        for (int kind = 0; kind < 4; ++kind)
            QTest::addRow("codec %d kind %d", codec, kind) << codec << kind;
    }
}

void TestSerialEngine::editsLeadToTheWholeText()
{
    QFETCH(int, codec);
    QFETCH(int, kind);
    QRandomGenerator random(static_cast<quint32>(codec * 10 + kind));
    ReceiveBuffer buffer;
    QByteArray held;
    QString shown;
    for (int round = 0; round < 600; ++round) {
        QByteArray bytes;
        const int size = round % 100 == 0 ? 25000 : random.bounded(200);
        while (bytes.size() < size) {
            if (kind == 0)
                bytes += TextCodec::encode(QStringLiteral("温度 %1\r\n").arg(random.generate()), codec);
            else if (kind == 1)
                bytes += static_cast<char>(random.bounded(256));
            else if (kind == 2)
                bytes += TextCodec::encode(QString(QChar(0x4E00 + random.bounded(2000))), codec);
            else
                bytes += random.bounded(50) == 0 ? '\r' : 'A';
        }
        bytes.truncate(size); // cuts characters and line ends anywhere
        buffer.append(bytes);
        const ReceiveBuffer::Edit edit = buffer.update(codec);
        QVERIFY(edit.frontRemoved + edit.backRemoved <= shown.size());
        shown = edit.frontInserted +
                shown.mid(edit.frontRemoved, shown.size() - edit.frontRemoved - edit.backRemoved) +
                edit.backInserted;

        held = (held + bytes).right(20480);
        QString whole = TextCodec::decode(held, codec);
        whole.replace("\r\n", "\n").replace('\r', '\n');
        for (const ushort end : {ushort(0x2029), ushort(0xFDD0), ushort(0xFDD1)})
            whole.replace(QChar(end), '\n');
        QCOMPARE(shown, whole);
        QCOMPARE(buffer.text(), whole);
    }
}

void TestSerialEngine::editsAreSmall()
{
    for (int codec = 0; codec < 2; ++codec) {
        ReceiveBuffer buffer;
        for (int i = 0; i < 3000; ++i) {
            const QByteArray line = TextCodec::encode(QStringLiteral("第%1行 温度\r\n").arg(i, 6), codec);
            buffer.append(line);
            const ReceiveBuffer::Edit edit = buffer.update(codec);
            if (i > 2000) {
                QVERIFY2(edit.frontRemoved < 60 && edit.frontInserted.size() < 60, "the front is redone");
                QVERIFY2(edit.backRemoved < 10 && edit.backInserted.size() < 60, "the end is redone");
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestSerialEngine)
#include "test_serial_engine.moc"
