// Received bytes on their way to a display, without one: the changes that it is
// asked for, the record, the spool on disk, and where rows break.

#include "bytespool.h"
#include "recordedtext.h"
#include "rowbreaks.h"
#include "textcodec.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#ifdef Q_OS_UNIX
#include "fulldisk.h"
#endif

namespace {

constexpr int kNewest = 20480; // bytes that log mode shows

// A read may stop where the file ends and memory begins.
QByteArray readBack(const ByteSpool &spool, qint64 offset, qint64 count)
{
    const QByteArray front = spool.read(offset, count);
    return front + spool.read(offset + front.size(), count - front.size());
}

// Does what it is asked for with a string.
struct Display
{
    QTemporaryDir folder;
    ReceivedText text{folder.path()};
    QString shown;
    int touched = 0; // characters, by the last change of the ends

    void apply(const ReceivedText::Change &change)
    {
        const ReceiveBuffer::Edit &ends = change.ends;
        if (change.kind == ReceivedText::Change::Append) {
            shown.chop(change.removed);
            shown += change.text;
        } else if (change.kind == ReceivedText::Change::Replace) {
            shown = change.text;
        } else if (change.kind == ReceivedText::Change::EditEnds) {
            const int kept = shown.size() - ends.frontRemoved - ends.backRemoved;
            QVERIFY(kept >= 0);
            shown = ends.frontInserted + shown.mid(ends.frontRemoved, kept) + ends.backInserted;
            touched =
                ends.frontRemoved + ends.backRemoved + ends.frontInserted.size() + ends.backInserted.size();
        }
    }
    QString flush(int codec = TextCodec::Utf8, int slice = 100)
    {
        while (text.hasPending())
            apply(text.next(slice, codec));
        apply(text.putOff(codec));
        return shown;
    }
    void receive(const QByteArray &bytes, const QString &header, bool hex,
                 ReceivedText::Bound bound = ReceivedText::Bound::None)
    {
        text.receive({bytes, header, QString(), ReceiveQueue::Kind::Stream, hex, bound});
    }
    void receiveMessage(const QByteArray &bytes, const QString &header, bool hex, const QString &source)
    {
        text.receive({bytes, header, source, ReceiveQueue::Kind::Message, hex});
    }
    QString recorded() const { return recordedText(text); }
};

} // namespace

class TestReceived : public QObject
{
    Q_OBJECT

private slots:
    void spoolsExactlyWhatCame()
    {
        const QTemporaryDir folder;
        const auto files = [&] { return QDir(folder.path()).entryInfoList(QDir::Files); };
        {
            ByteSpool spool(folder.path(), "serial");
            QCOMPARE(files().size(), 0); // no file before the first byte
            QByteArray all;
            for (int i = 0; i < 300; ++i) {
                const QByteArray piece(i * 7 % 251, static_cast<char>(i));
                QCOMPARE(spool.append(piece.constData(), piece.size()), ByteSpool::State::OnDisk);
                all += piece;
                if (i % 7 == 0)
                    QCOMPARE(spool.flush(), ByteSpool::State::OnDisk);
                QCOMPARE(readBack(spool, all.size() / 2, 5), all.mid(all.size() / 2, 5)); // moves no writing
            }
            const QByteArray large(100 * 1000, 'x'); // past the memory
            spool.append(large.constData(), large.size());
            all += large;
            QCOMPARE(files().value(0).size(), qint64(all.size())); // with a name, for after a crash
            QVERIFY(files().value(0).fileName().startsWith("serial_"));
            QCOMPARE(spool.size(), qint64(all.size()));
            QCOMPARE(spool.read(0, 1 << 20), all);
            QCOMPARE(spool.read(spool.size(), 10), QByteArray());
            spool.clear();
            QCOMPARE(spool.size(), qint64(0));
            QCOMPARE(files().size(), 0); // its room on disk is given back
            spool.append("again", 5);
            spool.flush();
            QCOMPARE(spool.read(0, 9), QByteArray("again"));
            bool failed = true;
            QVERIFY(spool.read(5, 9, &failed).isEmpty() && !failed);
            QVERIFY(QFile::resize(files().value(0).filePath(), 0)); // by somebody else
            QVERIFY(spool.read(0, 9, &failed).isEmpty() && failed);
        }
        QCOMPARE(files().size(), 0);
        ByteSpool elsewhere("/no/such/folder", "serial"); // in the system's temporary folder
        elsewhere.append("abc", 3);
        QCOMPARE(elsewhere.flush(), ByteSpool::State::OnDisk);
        QCOMPARE(elsewhere.read(0, 9), QByteArray("abc"));
    }

    void keepsBytesWhenTheDiskIsFull()
    {
#ifdef Q_OS_UNIX
        const QTemporaryDir folder;
        std::optional<FullDisk> full(1000);
        const QByteArray much(100 * 1000, 'x');
        ByteSpool recovers(folder.path(), "serial");
        QCOMPARE(recovers.append(much.constData(), much.size()), ByteSpool::State::InMemory);
        full.reset();                                                    // somebody makes room
        QCOMPARE(recovers.append("end", 3), ByteSpool::State::InMemory); // tries again now and then
        QCOMPARE(recovers.append(much.constData(), much.size()), ByteSpool::State::OnDisk);
        QCOMPARE(readBack(recovers, 0, 1 << 20), much + "end" + much);
        full.emplace(1000);
        QByteArray all;
        ByteSpool spool(folder.path(), "serial", 3000);
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
        full.reset();
        QCOMPARE(spool.size(), qint64(4000));
        QCOMPARE(readBack(spool, 0, 5000), all.left(4000));
#endif
    }

    void showsChunksBehindHeaders()
    {
        Display display;
        display.receive("one", "[1] ASCII >\n", false);
        display.receive("two\n", "[2] ASCII >\n", false);
        display.receive(QByteArray("\x0A\x1B\xFF"), "[3] HEX >\n", true);
        QCOMPARE(display.text.pendingBytes(), qint64(3 + 12 + 4 + 12 + 3 + 10));
        QCOMPARE(display.flush(), QStringLiteral("[1] ASCII >\none[2] ASCII >\ntwo\n[3] HEX >\n0A 1B FF "));
        QCOMPARE(display.text.pendingBytes(), qint64(0));
        QCOMPARE(display.recorded(), display.shown);
        display.text.clear();
        QVERIFY(display.text.isEmpty());
        QCOMPARE(display.recorded(), QString());
    }

    void joinsWhatAChunkEndCut()
    {
        const QString text = QStringLiteral("温度: 25\r\n湿度: 60\r\rend\n");
        for (int codec = 0; codec < 2; ++codec) {
            const QByteArray bytes = TextCodec::encode(text, codec);
            for (int cut = 1; cut < bytes.size(); ++cut) {
                Display display;
                display.receive(bytes.left(cut), "[1]", false); // also across a header
                display.receive(bytes.mid(cut), QString(), false);
                QCOMPARE(display.flush(codec, cut), QStringLiteral("[1]温度: 25\n湿度: 60\n\nend\n"));
            }
        }
        QCOMPARE(ReceiveBuffer::withPlainLineEnds("a\r\nb\rc\u2029d\uFDD0e\uFDD1"),
                 QString("a\nb\nc\nd\ne\n"));
        // Half a character of the other codec, and of before hexadecimal, is gone.
        Display display;
        display.receive("\xe6\xb8\xa9\xe6", QString(), false);
        display.flush(TextCodec::Utf8);
        display.receive("\xce\xc2\x84", QString(), false);
        display.flush(TextCodec::Gb18030);
        display.receive("\x01", QString(), true);
        display.receive("a", QString(), false);
        QCOMPARE(display.flush(TextCodec::Gb18030), QStringLiteral("温温01 a"));
    }

    void separatesSources()
    {
        Display display;
        ReceivedText &text = display.text;
        display.receiveMessage("\xe6\xb8", "[a] ", false, "a");
        display.receiveMessage("b", "[b] ", false, "b"); // a header begins a line
        display.receiveMessage("\xa9\r", QString(), false, "a");
        display.receiveMessage("\n\xe6", QString(), false, "a");
        text.receive({QByteArray(), QString(), "a", ReceiveQueue::Kind::SourceEnd});
        display.receiveMessage("\xb8", QString(), false, "a"); // no longer the other's half
        display.receiveMessage("\x01", QString(), true, "b");  // so does a change of form
        display.receiveMessage("\xe6", QString(), false, QString());
        const QString broken(QChar::ReplacementCharacter);
        QCOMPARE(display.flush(),
                 QStringLiteral("[a] \n[b] b温\n") + broken + QStringLiteral("\n01 \n") + broken);
        display.receiveMessage("\xe6", QString(), true, "b");
        display.receiveMessage("\xe6\xb8", "[c] ", false, "c");
        display.flush();
        text.clear(); // forgets the line, the form and the halves
        display.shown.clear();
        display.receiveMessage("\xa9", "[c] ", false, "c");
        QCOMPARE(display.flush(), QStringLiteral("[c] ") + broken);
    }

    // Log text, random bytes, Chinese without line ends, and one letter.
    void logModeDecodesTheNewestBytes()
    {
        for (int row = 0; row < 8; ++row) {
            const int codec = row / 4;
            const int kind = row % 4;
            QRandomGenerator random(static_cast<quint32>(row));
            Display display;
            QByteArray held;
            for (int round = 0; round < 150; ++round) {
                QByteArray bytes;
                const int size = round % 50 == 0 ? 25000 : 1 + random.bounded(200);
                while (bytes.size() < size) {
                    if (kind == 0)
                        bytes +=
                            TextCodec::encode(QStringLiteral("温度 %1\r\n").arg(random.generate()), codec);
                    else if (kind == 1)
                        bytes += static_cast<char>(random.bounded(256));
                    else if (kind == 2)
                        bytes += TextCodec::encode(QString(QChar(0x4E00 + random.bounded(2000))), codec);
                    else
                        bytes += random.bounded(50) == 0 ? '\r' : 'A';
                }
                bytes.truncate(size); // cuts characters and line ends anywhere
                display.receive(bytes, QString(), false, ReceivedText::Bound::Newest);
                held = (held + bytes).right(kNewest);
                const QString text = TextCodec::decode(held, codec);
                QCOMPARE(display.flush(codec, 8192), ReceiveBuffer::withPlainLineEnds(text));
                if (kind == 0 && size < 1000) // what stays is not touched
                    QVERIFY2(display.touched < 2 * size + 60, qPrintable(QString::number(display.touched)));
            }
        }
    }

    // It replaces no text when it begins, keeps the order, and the record holds
    // what the bound drops.
    void logModeIsABoundOnly()
    {
        constexpr auto newest = ReceivedText::Bound::Newest;
        Display display;
        ReceivedText &text = display.text;
        display.receive("before\n", QString(), false);
        display.receive("ab", "[1]\n", false, newest);
        display.receive("c\n", "[2]\n", false, newest); // in a line: no header
        display.receive("d", "[3]\n", false, newest);
        QCOMPARE(display.flush(), QStringLiteral("before\n[1]\nabc\n[3]\nd"));
        display.receive("\x01", QString(), true, newest);
        QCOMPARE(display.flush(), QStringLiteral("before\n[1]\nabc\n[3]\nd01 "));
        display.receive("\xe6", QString(), false, newest); // hexadecimal is not among the newest text
        QCOMPARE(display.flush(),
                 QStringLiteral("before\n[1]\nabc\n[3]\nd") + QChar(QChar::ReplacementCharacter));
        display.receive("\xb8\xa9\n", QString(), false, newest);
        display.receive("between\n", QString(), false); // without the bound, behind what has it
        display.receive("e", QString(), false, newest);
        QCOMPARE(display.flush(), QStringLiteral("before\n[1]\nabc\n[3]\nd温\nbetween\ne"));
        QString all = QStringLiteral("before\n[1]\nabc\n[3]\nd01 温\nbetween\ne");
        QCOMPARE(display.recorded(), all);
        const QByteArray flood = QByteArray("0123456789abcde\n").repeated(5000);
        display.receive(flood, QString(), false, newest);
        all += QString::fromLatin1(flood);
        QCOMPARE(display.flush(TextCodec::Utf8, 8192), all.right(kNewest));
        QVERIFY(display.recorded() == all);
        display.receive("in a line\xe6", QString(), false, newest);
        display.flush();
        display.receive("f\xe6", QString(), false, newest);
        text.next(8192, TextCodec::Utf8); // put off
        text.clear();
        QCOMPARE(text.putOff(TextCodec::Utf8).kind, ReceivedText::Change::None);
        display.receive("\xb8", "[4]\n", false, newest);
        QCOMPARE(display.flush(), QStringLiteral("[4]\n") + QChar(QChar::ReplacementCharacter));
        QCOMPARE(display.recorded(), display.shown);
        for (const char *sent : {"AT", "ATI\n"})
            text.receive({sent, QString(), QString(), ReceiveQueue::Kind::Sent, false, newest});
        display.receive("x\n", QString(), false, newest);
        QVERIFY(display.flush().endsWith(QStringLiteral("\nAT\nATI\nx\n")));
    }

    // Cut anywhere, also in a sequence; what is shown, recorded and styled is the same.
    void showsSequencesAsATerminal()
    {
        struct Row
        {
            QByteArray bytes;
            QString shown;
            QString styles; // line:begin+length text/ground flags
        };
        const Row table[] = {
            {"a\x1b[31mred\x1b[0m b\r\n", "ared b\n", "0:1+3 1/-1 0,"},
            {"\x1b[1;38;5;208mx\x1b[48;2;1;2;3my\n\x1b[22mz\x1b[39;49m!", "xy\nz!",
             "0:0+1 208/-1 1,0:1+1 208/16843267 1,1:0+1 208/16843267 0,"},
            {"\x1b[38:2::1:2:3mx\x1b[97;100;3;4;7my", "xy", "0:0+1 16843267/-1 0,0:1+1 15/8 14,"},
            {"line\n10%\r20%\r100%\ndone", "line\n100%\ndone", ""},
            {"long text\rshort\x1b[K\n", "short\n", ""},
            {"\x1b[32mok\x1b[0m 1\rno", "no 1", ""},
            {"gone\r\x1b[2Kx\b\by", "y", ""},
            {"\x1b[1Ga\x1b[4Gb\x1b[2Dc\x1b[9Dd", "d cb", ""},
            {"a\x1b[3Cb", "a   b", ""},
            {"\x1b[31mx\ny\nz\n!", "x\ny\nz\n!", "0:0+1 1/-1 0,1:0+1 1/-1 0,2:0+1 1/-1 0,3:0+1 1/-1 0,"},
            {"\x1b[38;9mx\x1b[90;107my", "xy", "0:1+1 8/15 0,"},
            {"\x1b[31ma\x1b"
             "cb",
             "ab", "0:0+1 1/-1 0,"},
            {"\x1b]0;t\x07"
             "a\x1b\nb",
             "a\x1b\nb", ""},
            {"\xF0\x9F\x98\x80\rx", "x", ""}, // one cell
            {"\x1b]0;title\x07"
             "a\x1bP1;2\x1b\\b\x1b(Bc\x1b[?25ld",
             "abcd", ""},
            {"\x1b[12\nx\x1b[", "\x1b[12\nx", ""}, // not ended: shown
            {"\x1b]never ended\ny", "\x1b]never ended\ny", ""},
            {"温度\r\x1b[33m湿\n", "湿度\n", "0:0+1 3/-1 0,"},
            {"\t\rx\r\r\n\ny", "x\n\ny", ""},
            {"a\vb\x07"
             "c\x1b~d\x1b\x7f",
             "a\vbcd\x1b\x7f", ""},
            {"\x1b]t\x1b[31mx", "\x1b]tx", "0:3+1 1/-1 0,"},
            {"\x1b[38mx\x1b[38;5mx\x1b[38;2;1mx", "xxx", "0:2+1 16842752/-1 0,"},
            {"\x1b[30;40mx\x1b[37;47my\x1b[>4m", "xy", "0:0+1 0/0 0,0:1+1 7/7 0,"},
            {"\x1b[3;4;7mx\x1b[23my\x1b[24mz\x1b[27mw", "xyzw",
             "0:0+1 -1/-1 14,0:1+1 -1/-1 12,0:2+1 -1/-1 8,"},
            {"abc\x1b[2D\x1b[1Kz", " zc", ""},
            {"\x1b[9999Cx", QString(4096, ' ') + 'x', ""},
            {"\x1b[" + QByteArray(63, '0') + "mx\x1b]" + QByteArray(1023, 'a') + '\x07', "x", ""},
            {"\x1b[" + QByteArray(64, '0') + 'm', "\x1b[" + QString(64, '0') + 'm', ""},
            {"\x1b]" + QByteArray(1024, 'a') + '\x07', "\x1b]" + QString(1024, 'a'), ""},
            // Of a line that is too long, the end can be overwritten.
            {"\x1b[31m" + QByteArray(8194, 'x') + "\b\b\b\b\x1b[0mzz\r!", QString(8190, 'x') + "zzxx\n!",
             "0:0+8190 1/-1 0,0:8192+2 1/-1 0,"},
            {QByteArray("\xF0\x9F\x98\x80").repeated(8193) + "\b\bz\n",
             QString::fromUcs4(U"\U0001F600").repeated(8191) + 'z' + QString::fromUcs4(U"\U0001F600") + '\n',
             ""},
        };
        for (const Row &row : table) {
            const QByteArray bytes = row.bytes;
            for (int cut = 0; cut<bytes.size(); cut += bytes.size()> 100 ? bytes.size() / 4 : 1) {
                Display display;
                display.text.setOptions({true, false});
                for (const QByteArray &piece : {bytes.left(cut), bytes.mid(cut)}) {
                    display.receive(piece, QString(), false);
                    display.flush(TextCodec::Utf8, cut % 7 + 1 + bytes.size() / 10);
                    display.text.styles().of(0); // and is kept
                }
                QCOMPARE(display.shown, row.shown);
                QCOMPARE(display.recorded(), row.shown);
                QString styles;
                for (qint64 line = 0; line <= display.text.lines().completeLines(); ++line)
                    for (const StyledRun &run : display.text.styles().of(line))
                        styles += QStringLiteral("%1:%2+%3 %4/%5 %6,")
                                      .arg(line)
                                      .arg(run.begin)
                                      .arg(run.length)
                                      .arg(run.style.text)
                                      .arg(run.style.ground)
                                      .arg(run.style.flags());
                QCOMPARE(styles, row.styles);
            }
        }
    }

    void showsControlCharactersAsSymbols()
    {
        Display display;
        display.text.setOptions({false, true});
        display.receive(QByteArray("a\0\x1b[m\x7f\t\r\nb\rc\nd\r", 15), QString(), false);
        QCOMPARE(display.flush(), QStringLiteral("a<NUL><ESC>[m<DEL>\t<CR><LF>\nb<CR>\nc<LF>\nd<CR>"));
        display.receive("\n", QString(), false); // of the same line end
        QCOMPARE(display.flush(), QStringLiteral("a<NUL><ESC>[m<DEL>\t<CR><LF>\nb<CR>\nc<LF>\nd<CR><LF>\n"));
        display.text.setOptions({true, true});
        display.receive("ab\rc\r\n", QString(), false);
        QVERIFY(display.flush().endsWith(QStringLiteral("\ncb<LF>\n")));
        display.receive("\x1b[12\n", QString(), false);
        QVERIFY(display.flush().endsWith(QStringLiteral("\n<ESC>[12<LF>\n")));
        QCOMPARE(display.text.styles().of(0).size(), 3); // the names have a color
        QCOMPARE(display.text.styles().of(0).first().style.text, 6);
        QCOMPARE(display.recorded(), display.shown);
    }

    // Sent text has lines of its own, and the record can be made again.
    void recordsWhatWasSentAndBeginsAgain()
    {
        Display display;
        ReceivedText &text = display.text;
        const auto send = [&](const QByteArray &bytes, qint64 ms, bool hex) {
            text.receive(
                {bytes, QString(), QString(), ReceiveQueue::Kind::Sent, hex, ReceivedText::Bound::None, ms});
        };
        display.receive("ab\x1b[1mc", QString(), false);
        send("AT\r\n", 1000, false);
        send("\xce\xc2", 1002, true);
        display.receive("d\xce\xc2\n", "[1]\n", false);
        const QString broken(2, QChar::ReplacementCharacter);
        const QString before = QStringLiteral("ab\x1b[1mc\nAT\nCE C2 \n[1]\nd") + broken + '\n';
        QCOMPARE(display.flush(), before);
        QVERIFY(text.hasSeenSequences());
        using Origin = LineStore::Origin;
        const auto origins = [&text] {
            QVector<Origin> found;
            for (const LineStore::Line &line : text.lines().lines(0, 10))
                found.append(line.origin);
            return found;
        };
        const QVector<Origin> expected = {Origin::Received, Origin::Sent, Origin::Sent, Origin::Received,
                                          Origin::Received};
        QCOMPARE(origins(), expected);
        const QVector<LineStore::Line> lines = text.lines().lines(1, 2);
        QCOMPARE(lines.at(0).arrivalMs, qint64(1000));
        QCOMPARE(lines.at(1).arrivalMs, qint64(1002));

        text.setOptions({true, false});
        QVERIFY(text.beginAgain());
        display.shown.clear();
        display.receive("late", QString(), false); // follows
        QVERIFY(text.isMadeAgain());
        QCOMPARE(display.flush(TextCodec::Gb18030), QStringLiteral("abc\nAT\nCE C2 \n[1]\nd温\nlate"));
        QVERIFY(!text.isMadeAgain());
        QCOMPARE(display.recorded(), display.shown);
        QCOMPARE(origins().mid(0, 5), expected);
        QCOMPARE(text.styles().of(0).size(), 1);
        for (const bool atOnce : {true, false}) { // a line that was shown keeps its time
            text.clear();
            int ms = 0;
            for (const char *bytes : {"overwritten", "\r\x1b[Kx\ny\n", "z\n"}) {
                text.receive({bytes, QString(), QString(), ReceiveQueue::Kind::Stream, false,
                              ReceivedText::Bound::None, ++ms});
                if (!atOnce)
                    display.flush(TextCodec::Utf8, 1000);
            }
            display.flush(TextCodec::Utf8, 1000);
            QVector<qint64> arrivals;
            for (const LineStore::Line &line : text.lines().lines(0, 3))
                arrivals += line.arrivalMs;
            QCOMPARE(arrivals, (QVector<qint64>{atOnce ? 2 : 1, 2, 3}));
        }
        for (const char *source : {"p", "q"}) // halves of characters, by their sources
            display.receiveMessage("\xe6", QString(), false, source);
        for (const char *source : {"q", "p"})
            display.receiveMessage("\xb8\xa9\n", QString(), false, source);
        display.flush();
        QVERIFY(text.beginAgain());
        display.shown.clear();
        QCOMPARE(display.flush(), QStringLiteral("x\ny\nz\n温\n温\n"));
        text.clear();
        QVERIFY(text.beginAgain());
        QCOMPARE(display.text.next(100, TextCodec::Utf8).text, QString());
        QVERIFY(text.isEmpty());
    }

    void breaksRowsByColumns()
    {
        const QString planes = QString::fromUcs4(U"\U0001F600");
        // Columns of a row, and the one at which the text before has begun it.
        const std::tuple<QString, int, int, QStringList> table[] = {
            {"abcdef", 4, 0, {"abcd", "ef"}},
            {"ab cdef", 6, 0, {"ab ", "cdef"}},
            {"0A 1B 2C ", 5, 0, {"0A 1B ", "2C "}}, // a space hangs
            {"0A 1B 2C ", 7, 0, {"0A 1B ", "2C "}},
            {"ab温度", 5, 0, {"ab温", "度"}},
            {"a\tb", 8, 0, {"a\t", "b"}},
            {"a\tb", 9, 0, {"a\tb"}},
            {planes + planes, 3, 0, {planes, planes}},
            {"温b", 1, 0, {"温", "b"}},
            {"a\u2028b", 9, 0, {"a\u2028", "b"}},
            {"abc def", 8, 6, {"", "abc def"}},
            {"ab cd", 8, 5, {"ab ", "cd"}},
            {" ab", 8, 8, {" ", "ab"}},
            {"", 8, 0, {""}}};
        for (const auto &[text, columns, from, expected] : table) {
            QStringList found;
            for (const RowBreaks::Row &row : RowBreaks::rows(text, columns, {from, true}))
                found += text.mid(row.start, row.end - row.start);
            QCOMPARE(found, expected);
            const RowBreaks::Row first = RowBreaks::row(text, 0, columns, {from, true});
            if (RowBreaks::maxColumnsOf(text) == text.size() && !text.isEmpty()) {
                const RowBreaks::Row narrow = RowBreaks::narrowRow(text, 0, columns, {from, true});
                QCOMPARE(narrow.end, first.end);
                QCOMPARE(narrow.endColumn, first.endColumn);
            }
            if (from > 0 && found.first().isEmpty()) // a word that the text before has begun goes on
                QCOMPARE(RowBreaks::row(text, 0, columns, {from, false}).end, columns - from);
        }
    }
};

QTEST_GUILESS_MAIN(TestReceived)
#include "test_received.moc"
