// Port names, draining lines, the multi-send list, and typed text as bytes.

#include "linedrain.h"
#include "portname.h"
#include "sendhistory.h"
#include "sendlist.h"
#include "sendtext.h"
#include "textcodec.h"

#include <QTemporaryDir>
#include <QtTest>

class TestSerialEngine : public QObject
{
    Q_OBJECT

private slots:
    void namesAndOrdersPorts()
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
        QStringList names{"COM10", "ttyUSB12", "COM2", "ttyS0", "COM1", "ttyUSB2", "ttyACM0"};
        std::sort(names.begin(), names.end(), PortName::isBefore);
        QCOMPARE(names, (QStringList{"COM1", "COM2", "COM10", "ttyACM0", "ttyS0", "ttyUSB2", "ttyUSB12"}));
    }

    void findsVirtualPorts()
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

    // 1000 baud with ten bits: a byte takes 10 ms, the transmitter's buffer 2.56 s.
    void drainsALine()
    {
        QCOMPARE(LineDrain::byteNs(0, 10), qint64(0)); // a speed that is not known
        constexpr qint64 ms = 1000 * 1000;
        constexpr qint64 start = 77777 * ms;
        struct Row
        {
            int lineFreeMs;
            QVector<QPair<int, int>> looks; // at so many ms, so many bytes pending
            int endMs;
            bool left;
        };
        const Row rows[] = {
            {0, {{0, 0}}, 0, true},
            {50, {{0, 0}, {49, 0}, {51, 0}}, 51, true},                      // in the transmitter
            {9000, {{0, 900}, {20, 0}, {2570, 0}, {2581, 0}}, 2581, true},   // faster than its baud rate says
            {1000, {{0, 100}, {500, 50}, {1000, 0}, {1001, 0}}, 1000, true}, // slow
            {900, {{0, 90}, {100, 80}, {3600, 80}, {3700, 80}}, 3700, false}, // stuck
            {99999, {{0, 9999}, {3000, 9700}, {6000, 9400}, {9000, 9100}, {10001, 9000}}, 10001, false},
            {100, {{0, 10}, {2000, 9}, {4000, 8}, {4900, 7}, {5001, 6}}, 5001, false}}; // drips
        for (const Row &row : rows) {
            LineDrain drain(start, row.looks.first().second, LineDrain::byteNs(1000, 10),
                            start + row.lineFreeMs * ms);
            LineDrain::State state = LineDrain::State::Pending;
            int at = -1;
            for (int i = 0; i < row.looks.size() && state == LineDrain::State::Pending; ++i) {
                at = row.looks.at(i).first;
                state = drain.check(start + at * ms, row.looks.at(i).second);
            }
            QCOMPARE(at, row.endMs);
            QCOMPARE(state, row.left ? LineDrain::State::Left : LineDrain::State::TimedOut);
        }
    }

    void readsListsOfOtherPrograms()
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
        const QByteArray longest(32767, 'z');
        list.read("99999999999999999999#x\n4294967296#y\n# \n5#z" + longest + "\n6#" + longest);
        QVERIFY(list.row(5).isEmpty()); // more than a row can hold
        QCOMPARE(list.row(6).size(), longest.size());
        QCOMPARE(list.write().count('\n'), 5);
        QVERIFY(list.write().contains("5#z" + longest + '\n')); // whole
    }

    void writesTheListExactly()
    {
        SendList list;
        QVERIFY(list.setRow(SendList::index(7, 3), "last"));
        QVERIFY(list.setRow(2, QStringLiteral("温#")));
        QVERIFY(!list.setRow(2, QStringLiteral("温#")));
        QVERIFY(list.setRow(0, "x"));
        QVERIFY(list.setRow(0, ""));
        QCOMPARE(list.write(), QByteArray("2#\xe6\xb8\xa9#\n63#last\n"));
        QCOMPARE(list.pageCount(), 7);
        list.removePage(2);
        QCOMPARE(list.write(), QByteArray("2#\xe6\xb8\xa9#\n53#last\n"));
        QVERIFY(list.clearPage(1));
        QVERIFY(!list.clearPage(1));
        QCOMPARE(list.write(), QByteArray("53#last\n"));
    }

    void keepsWhatOthersWroteIntoTheList()
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

    void encodesTypedTextAndReadsFiles()
    {
        using Sum = SendText::Checksum;
        const auto made = [](bool isHex, bool newLine, int codec, SendText::LineEnd lineEnd = SendText::CrLf,
                             bool escapes = false, const Sum &sum = {}) {
            return SendText{isHex, newLine, codec, lineEnd, escapes, sum};
        };
        const Sum modbus{"CRC-16/MODBUS", false, 0, false};
        const std::tuple<QString, SendText, QByteArray, int> rows[] = {
            {"温\r\nb", made(false, false, 0), "\xe6\xb8\xa9\nb", 0},
            {"温\r\nb", made(false, true, 1), "\xce\xc2\nb\r\n", 0},
            {"", made(false, false, 0), "", 0},
            {"", made(false, true, 0), "\r\n", 0},
            {"01 fF", made(true, false, 0), "\x01\xff", 0},
            {"01 02 fF 7", made(true, true, 0), "\x01\x02\xff\r\n", 1},
            {"hello", made(true, true, 0), "", 5}, // not even a new line
            {" ", made(true, true, 0), "", 0},
            {"AT", made(false, true, 0, SendText::Lf), "AT\n", 0},
            {"123456789", made(true, true, 0, SendText::Cr, true, modbus), "\x12\x34\x56\x78\x7b\x10\r", 1},
            {"123456789", made(false, true, 0, SendText::Cr, false, modbus), "123456789\x37\x4b\r", 0},
            {"x123456789", made(false, false, 0, SendText::CrLf, false, {"crc-16/modbus", true, 1, true}),
             "x123456789\x4b\x37", 0},
            {"12", made(false, true, 0, SendText::Lf, false, {"sum8", false, 0, true}), "12\n\x6d", 0},
            {"", made(false, true, 0, SendText::CrLf, false, modbus), "\r\n", 0},
            {"温\\r\\n\\t\\\\\\xfF\\x0d", made(false, false, 1, SendText::CrLf, true),
             "\xce\xc2\r\n\t\\\xff\r", 0}};
        for (const auto &[text, format, bytes, ignored] : rows) {
            QCOMPARE(format.encode(text).bytes, bytes);
            QCOMPARE(format.encode(text).ignored, ignored);
        }
        for (const char *wrong : {"\\q", "\\", "\\x1", "\\xg0"}) {
            const SendText::Encoded encoded =
                made(false, true, 0, SendText::CrLf, true).encode(QLatin1String("a\\0") + wrong);
            QCOMPARE(encoded.wrongEscape, QString(wrong));
            QVERIFY(encoded.bytes.isEmpty());
        }
        SendText format;
        QVERIFY(format.isPlain());
        QCOMPARE(format.maxFileBytes(), 200000);
        QCOMPARE(format.ofFile("\xce\xc2\r\nx"), QStringLiteral("温\r\nx"));
        format.isHex = true;
        QCOMPARE(format.maxFileBytes(), 66666);
        QCOMPARE(format.ofFile(QByteArray("\x01\xfe\x00", 3)), QStringLiteral("01 FE 00 "));
        QCOMPARE(format.ofFile("0x0A,0X0B\r\n; 0c:0"), QStringLiteral("0A 0B 0c 0"));
        int dropped = 0;
        QCOMPARE(SendText::hexOf(QStringLiteral(" 01 zz 温 02"), &dropped), QStringLiteral("01 02"));
        QCOMPARE(dropped, 3);
    }

    // Two copies of the program share the file; each keeps what the other has sent.
    void remembersWhatWasSent()
    {
        SendHistory history;
        for (const char *text : {"one", "two\n\\n", "one", "", "one"})
            history.add({text, false});
        history.add({"0A", true});
        QCOMPARE(history.write(), QByteArray("H 0A\nT one\nT two\\n\\\\n\n"));
        history.setWritten();
        SendHistory other;
        other.merge(history.write());
        QCOMPARE(other.entries(), history.entries());
        other.add({"theirs", false});
        other.remove({"one", false});
        other.merge(history.write());
        QCOMPARE(other.write(), QByteArray("T theirs\nH 0A\nT two\\n\\\\n\n"));
        history.add({"ours", false});
        history.merge(other.write() + "nonsense\nT \n");
        QCOMPARE(history.write(), QByteArray("T ours\nT theirs\nH 0A\nT two\\n\\\\n\n"));
        QVERIFY(!history.add({QString(SendHistory::maxLength + 1, 'x'), false}));
        for (int i = 0; i < 300; ++i)
            history.add({QString::number(i), false});
        QCOMPARE(history.entries().size(), 200);
        QCOMPARE(history.entries().last().text, QString("100"));
    }
};

QTEST_GUILESS_MAIN(TestSerialEngine)
#include "test_serial_engine.moc"
