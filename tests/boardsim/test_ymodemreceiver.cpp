// The boot loader's side of YModem, byte for byte, without a port: what it
// answers to good and to bad senders, and the faults that it can be told to have.

#include "memoryboard.h"
#include "ymodempackets.h"

#include <QTest>

using Boardsim::YmodemReceiver;

namespace {

constexpr int size = 300; // of the file that "H" announces

QByteArray header(const QByteArray &name, const QByteArray &fileSize)
{
    return packet(0, name + '\0' + fileSize + '\0', 128);
}

// What a sender sends: H header of a.bin, D<n> and d<n> block n of 1024 and
// 128 bytes, B blocks 1 and 2, e EOT, Z empty block 0, E both, X five CAN, Y two, x one, g a user's text with
// control characters; with ! a wrong CRC, with ~ a wrong complement, with / the
// first half.
QByteArray wire(QString token)
{
    QString marks;
    while (QStringLiteral("!~/").contains(token.at(0))) {
        marks += token.at(0);
        token.remove(0, 1);
    }
    const int number = token.mid(1).toInt();
    const char letter = char('A' + number);
    const QHash<char, QByteArray> tokens{
        {'H', header("a.bin", QByteArray::number(size))},
        {'D', packet(number, QByteArray(1024, letter), 1024)},
        {'d', packet(number, QByteArray(128, letter), 128)},
        {'e', "\x04"},
        {'Z', packet(0, {}, 128)},
        {'E', '\x04' + packet(0, {}, 128)},
        {'X', "\x18\x18\x18\x18\x18"},
        {'Y', "\x18\x18"},
        {'x', "\x18"},
        {'B', packet(1, QByteArray(128, 'B'), 128) + packet(2, QByteArray(128, 'C'), 128)},
        {'g', QByteArray("reboot\x01\0\n\x02\x18\xff\x06\x15", 14)},
    };
    QByteArray bytes = tokens.value(token.at(0).toLatin1());
    if (marks.contains('!'))
        bytes[bytes.size() - 1] = char(bytes.back() ^ 1);
    if (marks.contains('~'))
        bytes[2] = char(bytes.at(2) ^ 0x80);
    return marks.contains('/') ? bytes.left(bytes.size() / 2) : bytes;
}

} // namespace

class TestYmodemReceiver : public QObject
{
    Q_OBJECT

private slots:
    // What is received > what is answered (hexadecimal, - for nothing), in turn.
    // T: the time is up; T500: it was 500 ms. R: another host. Behind it how the events begin.
    void transcript()
    {
        const QString done("file a.bin 300 bytes|batch end 1 files");
        const std::tuple<QString, QString, QString> rows[] = {
            {"", "H>0643 D1>06 e>0643 Z>06 T1000>43 H>0643 d1>06 d2>06 d3>06 e>0643 Z>06", done + '|' + done},
            {"", "H>0643 H>0643 d1>06 d1>06 d2>06 d2>06 d3>06 e>0643 e>0643 Z>06",
             "repeated block|repeated block|repeated block|file a.bin 300 bytes|repeated EOT|batch end 1 "
             "files"},
            {"", "!H>15 H>0643 !D1>15 ~D1>15 D1>06 e>0643 Z>06", "refused|refused|refused|" + done},
            {"", "H>0643 d1>06 d3>1818 T1000>43", "cancelled: block 3 instead of 2"},
            {"", "H>0643 Z>06 H>0643 D1>06 e>0643 Z>06", "batch end 0 files|" + done},
            {"", "X>- H>0643 x>- d1>06 x>- e>0643 X>- e>- H>0643 X>- D1>- H>0643",
             "file a.bin 128 of 300 bytes|cancelled: by the sender|cancelled: by the sender"},
            {"", "g>- T1000>43 e>- d1>- x>- g>- H>0643 D1>06 e>0643 Z>06", done}, // nothing that concerns it
            {"", "H>0643 T1000>43 /D1>- T1000>15 D1>06 T10000>15 e>0643 Z>06", "refused|refused|" + done},
            {"", "H>0643 d1>06" + QString(" T>15").repeated(10) + " T>1818 T1000>43", // gone
             QString("refused|").repeated(10) + "cancelled"},
            {"", "H>0643 B>0606" + QString(" T>15").repeated(10) + " d3>06 T>15 e>0643 Z>06",
             QString("refused|").repeated(11) + done}, // time-outs are counted from the last block
            {"", "H>0643 Y>- H>0643 D1>06 e>0643 Z>06", "cancelled: by the sender|" + done},
            {"can@1 a@eot", "H>0643 D1>1818 H>0643 D1>06 e>41 T1000>43 H>0643 D1>06 e>0643 Z>06",
             "cancelled: on purpose|cancelled: on purpose|" + done},
            {"lose@0 lose@1*2 lose@eot lose@end", "H>- H>0643 D1>- D1>- D1>06 e>- e>0643 Z>- Z>06",
             "repeated block|repeated block|repeated block|file a.bin 300 bytes|repeated EOT|"
             "batch end 1 files|batch end 0 files"},
            {"lose@start*3", "T>- H>0643 D1>06 e>0643 T>43 Z>06 T>- T>43", done}, // asks for a batch
            {"silence=700@0", "H>- X>- T700>- T1000>43 H>0643 D1>06 E>064306", "silent|" + done},
            {"silence@eot", "H>0643 /D1>- R>43 H>0643 D1>06 E>- X>- R>43 H>0643 D1>06 e>0643 Z>06",
             "cancelled: the host|silent|cancelled: the host|" + done},
            {"only-c@0 nak@every2", "H>43 H>0643 d1>06 d2>15 d2>06 d3>06 e>0643 Z>06",
             "repeated block 0|refused|" + done},
            {"double", "H>060643 D1>0606 e>060643 Z>0606", done},
            {"nak@0 nak@1*2 nak@eot nak@end", "H>15 H>0643 D1>15 D1>15 D1>06 e>15 e>0643 Z>15 Z>06",
             "refused|refused|refused|refused|file a.bin 300 bytes|refused|batch end 1 files"},
            {"noise=9@0 wild-noise=3@eot", "H>409d638f67361e68990643 D1>06 e>b00a9b0643 Z>06", done},
            {"late-c=2500@0 late-c", "T>43 H>06 T2500>43 D1>06 e>06 T500>43 Z>06", done}};
        for (const auto &[faults, steps, events] : rows) {
            for (const bool inOne : {true, false})
                runs(faults, steps, events.split('|'), inOne);
            if (QTest::currentTestFailed())
                return;
        }
    }

    void headers()
    {
        // Name, size, and what it is stored as; nothing: refused.
        const std::tuple<QByteArray, QByteArray, QByteArray> rows[] = {
            {"固件 b.bin", "300 14717 0 0 1 300", "固件 b.bin"},
            {"\xb9\xcc\xbc\xfe\x81\x5c.bin", "1", "固件乗.bin"}, // GB18030, with a backslash in it
            {"../../etc/passwd", "1", "passwd"},
            {"C:\\boot\\..\\a:b\n\x7f", "1", "a_b__"},
            {"..", "1", ""},
            {"a.bin", "-1", ""},
            {"a.bin", "99999999999999999999", ""},
            {"a.bin", "9223372036854775807", "a.bin"}, // nothing is reserved for it
            {QByteArray(128, 'n'), "", ""},            // without an end
        };
        for (const auto &[name, fileSize, stored] : rows) {
            MemoryBoard board;
            YmodemReceiver receiver({}, board);
            receiver.start();
            board.sent.clear();
            const QByteArray block = header(name, fileSize);
            receiver.received(block.size() == 133 ? block : packet(0, name, 128));
            QCOMPARE(board.name.toUtf8(), stored);
            QCOMPARE(board.sent.toHex(), QByteArray(stored.isEmpty() ? "1818" : "0643"));
            receiver.stop();
            QCOMPARE(board.dropped, stored.isEmpty() ? 0 : 1);
            QCOMPARE(board.timer, -1);
        }
    }

private:
    static void runs(const QString &faults, const QString &steps, const QStringList &expected, bool inOne)
    {
        MemoryBoard board;
        YmodemReceiver::Settings settings;
        for (const QString &fault : faults.split(' ', Qt::SkipEmptyParts))
            QVERIFY2(settings.faults.add(fault), qPrintable(fault));
        YmodemReceiver receiver(settings, board);
        receiver.received("before it starts\x01");
        receiver.start();
        for (const QString &step : steps.split(' ')) {
            const QString token = step.section('>', 0, 0);
            board.sent.clear();
            if (token.startsWith('T')) {
                if (token.size() > 1)
                    QCOMPARE(board.timer, token.mid(1).toInt());
                receiver.timeOut();
            } else if (token == "R") {
                receiver.stop();
                receiver.start();
            } else if (inOne) {
                receiver.received(wire(token));
            } else {
                for (const char byte : wire(token))
                    receiver.received(QByteArray(1, byte));
            }
            const QByteArray answer = board.sent.isEmpty() ? QByteArray("-") : board.sent.toHex();
            QVERIFY2(answer == step.section('>', 1).toLatin1(),
                     qPrintable(steps + ": " + step + " not " + answer));
        }
        QCOMPARE(board.events.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i)
            QVERIFY2(board.events.at(i).startsWith(expected.at(i)), qPrintable(board.events.at(i)));
        const QByteArray small = QByteArray(128, 'B') + QByteArray(128, 'C') + QByteArray(44, 'D');
        QCOMPARE(board.kept.size(), expected.filter("file a.bin").size());
        for (const auto &[name, file] : qAsConst(board.kept))
            QVERIFY(file == small || file == QByteArray(300, 'B') ||
                    (expected.first().endsWith("128 of 300 bytes") && file == small.left(128)));
    }
};

QTEST_GUILESS_MAIN(TestYmodemReceiver)
#include "test_ymodemreceiver.moc"
