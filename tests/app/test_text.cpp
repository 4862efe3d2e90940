// Text codec helpers, hexadecimal text, checksums, the byte queue, and files
// with the reasons of their errors.

#include "bytequeue.h"
#include "checksum.h"
#include "codecguess.h"
#include "csvtext.h"
#include "filereason.h"
#include "hextext.h"
#include "safefile.h"
#include "textcodec.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QtTest>

class TestText : public QObject
{
    Q_OBJECT

private slots:
    void rendersBytesInOrder()
    {
        QCOMPARE(HexText::render(QByteArray("\x0A\x1B\xFF\x00\x9c", 5)), QStringLiteral("0A 1B FF 00 9C "));
        QVERIFY(HexText::isDigit('0') && !HexText::isDigit('g'));
    }

    void parsesDigitPairs()
    {
        const std::tuple<QString, QByteArray, int> rows[] = {
            {"01 02 fF", "\x01\x02\xff", 0},
            {"0102AB", "\x01\x02\xab", 0},
            {"09 af AF", "\x09\xaf\xaf", 0},
            {"01 0/", "\x01", 2},
            {"1 2 3 4", "\x12\x34", 0}, // pairs across a space
            {"01 0G 03", "\x01", 4},
            {"01\n02", "\x01", 3},
            {"01 2", "\x01", 1},
            {"01 2-", "\x01", 2},
            {"０１", "", 2}, // full-width digits are no digits
            {"   ", "", 0}};
        for (const auto &[text, bytes, ignored] : rows) {
            const HexText::Parsed parsed = HexText::parse(text);
            QCOMPARE(parsed.bytes, bytes);
            QCOMPARE(parsed.ignored, ignored);
        }
    }

    // Fields with |, records with /.
    void readsQuotedFields()
    {
        const std::tuple<QByteArray, char, QByteArray> files[] = {
            {"a,\"b,c\",\"\"\"d\"\"\"\r\n, \"e\" ,\n", ',', "a|b,c|\"d\"/|e|"},
            {"a;\"two\nlines\"\r\n\nb", ';', "a|two\nlines//b"},
            {"\"a\tb\"\t\"c\"\r\n", '\t', "a\tb|c"},
            {"1,\"stray\n2,\"x\"y\n3,z\"\"\n", ',', "1|\"stray/2|\"x\"y/3|z\"\""},
            {"1,\"" + QByteArray("\n").repeated(21) + "\"", ',',
             "1|\"" + QByteArray("/").repeated(21) + "\""},
            {"1,\"open", ',', "1|\"open"}};
        for (const auto &[content, separator, expected] : files) {
            CsvText::Reader reader(content, separator);
            QByteArrayList records;
            while (!reader.atEnd())
                records += reader.next(9).toList().join('|');
            QCOMPARE(records.join('/'), expected);
        }
        CsvText::Reader reader("\"1\n2\",3,4\r\n5", ',');
        QVERIFY(reader.next(1).size() == 1 && reader.fieldCount() == 3 && reader.line() == 1);
        QVERIFY(reader.next(9).size() == 1 && reader.line() == 3);
        QCOMPARE(CsvText::line({"", "a\"", "b,", "c\n", "曝"}), ",\"a\"\"\",\"b,\",\"c\n\",曝\r\n");
    }

    // The check values that catalogues of CRCs list for "123456789".
    void checksAsTheCataloguesSay()
    {
        const std::tuple<CrcModel, quint32> rows[] = {
            {CrcModels::crc8, 0xF4},
            {CrcModels::crc16Xmodem, 0x31C3},
            {CrcModels::crc16CcittFalse, 0x29B1},
            {CrcModels::crc16Modbus, 0x4B37},
            {CrcModels::crc32, 0xCBF43926},
            {{16, 0x8005, 0xFFFF, false, false, 0x0000}, 0xAEE7}, // CMS
            {{16, 0x1021, 0x0000, true, true, 0x0000}, 0x2189},   // KERMIT
            {{12, 0x80F, 0x000, false, true, 0x000}, 0xDAF},      // UMTS, mirrored at its end only
        };
        for (const auto &[model, check] : rows) {
            Crc crc(model);
            crc.add("lost", 4);
            crc.reset();
            crc.add("1234", 4);
            crc.add("", 0);
            crc.add("56789", 5);
            QCOMPARE(crc.value(), check);
            QCOMPARE(Crc::of(model, "123456789", 9), check);
        }
    }

    void queuesBytes()
    {
        QRandomGenerator random(1);
        ByteQueue queue(10 * 1000);
        QByteArray expected;
        for (int round = 0; round < 2000; ++round) {
            const QByteArray chunk(random.bounded(round < 1000 ? 600 : 400), static_cast<char>(round));
            const int dropped = random.bounded(round < 1000 ? 400 : 900);
            queue.append(chunk);
            expected += chunk;
            QVERIFY(queue.view() == expected);
            queue.drop(dropped);
            expected.remove(0, dropped);
            QCOMPARE(queue.size(), expected.size());
            QVERIFY(queue.view() == expected);
            QVERIFY(expected.size() > 0 || queue.capacity() <= 10 * 1000);
            QVERIFY(queue.capacity() < 1000 * 1000);       // dropped bytes give their room up
            if (round % 50 == 0 && expected.size() > 12) { // small and large ones, with and without a rest
                const int count = round % 100 == 0 ? expected.size() - 12 : expected.size() / 3;
                QCOMPARE(queue.take(10, count, 2), expected.mid(10, count));
                expected.remove(0, count + 12);
                QVERIFY(queue.view() == expected);
            }
        }
    }

    void namesCodecs()
    {
        QCOMPARE(TextCodec::name(0), QByteArray("UTF-8"));
        QCOMPARE(TextCodec::name(1), QByteArray("GB18030"));
        QCOMPARE(TextCodec::encode(QStringLiteral("温"), 0), QByteArray("\xe6\xb8\xa9"));
        QCOMPARE(TextCodec::encode(QStringLiteral("温"), 1), QByteArray("\xce\xc2"));
        QCOMPARE(TextCodec::decode("\xce\xc2", 1) + TextCodec::decode("\xe6\xb8\xa9", 0),
                 QStringLiteral("温温"));
        // Beyond the first plane, and half characters before a line end and at the end.
        QCOMPARE(TextCodec::decode("\x94\x39\xfc\x36\xad\n\x81\x30\x81", 1),
                 QString::fromUcs4(U"\U0001F600\uFFFD\n"));
        QCOMPARE(TextCodec::decode("\x90\x30\x81\x30\xE3\x32\x9A\x35\xE3\x32\x9A\x36", 1),
                 QString::fromUcs4(U"\U00010000\U0010FFFF\uFFFD"));
    }

    // The first and the last of each kind, and what is just beside them; -1: unfinished.
    void measuresCharactersOfGb18030()
    {
        const std::tuple<const char *, int> rows[] = {
            {"00", 1},       {"7f", 1},       {"80", 0},       {"81", -1},     {"fe", -1},
            {"ff", 0},       {"8140", 2},     {"817e", 2},     {"817f", 0},    {"8180", 2},
            {"fefe", 2},     {"81ff", 0},     {"812f", 0},     {"813a", 0},    {"8130", -1},
            {"813080", 0},   {"8130ff", 0},   {"813081", -1},  {"8139fe", -1}, {"81308130", 4},
            {"8139fe39", 4}, {"8130812f", 0}, {"8130813a", 0}, {"fe308130", 4}};
        for (const auto &[hex, length] : rows)
            QVERIFY2(TextCodec::gb18030Length(QByteArray::fromHex(hex), 0) == length, hex);
    }

    void readsFilesOfEitherEncoding()
    {
        const QString text = QStringLiteral("0#温度\n");
        QCOMPARE(TextCodec::decodeFile(text.toUtf8()), text);
        QCOMPARE(TextCodec::decodeFile("\xEF\xBB\xBF" + text.toUtf8()), text);
        QCOMPARE(TextCodec::decodeFile(TextCodec::encode(text, 1)), text);
    }

    void decodesAnyCutOfAStream()
    {
        // Two, three and four bytes to a character, and one beyond the first plane.
        const QString text = QStringLiteral("aé温度ÿ€\U0001F600\U00020000z");
        // Nothing of a broken character vanishes, wherever it is cut.
        const QByteArray broken("a\xe6\xb8:b\xf0\x9f\x98 \xef\xbb\xbf\xc3(", 14);
        StreamDecoder once;
        const QString shown = once.decode(broken.constData(), broken.size(), 0);
        QVERIFY(shown.contains(QChar::ReplacementCharacter));
        const std::tuple<QByteArray, int, QString> rows[] = {
            {TextCodec::encode(text, 0), 0, text}, {TextCodec::encode(text, 1), 1, text}, {broken, 0, shown}};
        for (const auto &[bytes, codec, expected] : rows) {
            for (int cut = 0; cut <= bytes.size(); ++cut) {
                StreamDecoder decoder;
                const QString front = decoder.decode(bytes.constData(), cut, codec);
                QCOMPARE(front + decoder.decode(bytes.constData() + cut, bytes.size() - cut, codec),
                         expected);
            }
            StreamDecoder decoder;
            decoder.decode("\xe6", 1, codec);
            decoder.reset();
            decoder.decode("\xe6", 1, 1 - codec); // another codec starts afresh
            QString single;
            for (const char byte : bytes)
                single += decoder.decode(&byte, 1, codec);
            QCOMPARE(single, expected);
        }
    }

    void saysWhyAFileFails()
    {
        const std::tuple<QString, QIODevice::OpenMode, QString> rows[] = {
            {QCoreApplication::applicationFilePath(), QIODevice::ReadOnly, ""},
            {"/no-such-file", QIODevice::ReadOnly, "文件不存在"},
            {"/no/such/folder/x", QIODevice::WriteOnly, "文件夹不存在"},
            {QDir::tempPath(), QIODevice::WriteOnly, "这是一个文件夹"},
#ifdef Q_OS_LINUX
            {'/' + QString(300, 'x'), QIODevice::WriteOnly, "文件名太长"},
            {"/dev/full", QIODevice::WriteOnly, "磁盘空间不足"},
#endif
        };
        for (const auto &[name, mode, reason] : rows) {
            QFile file(name);
            if (file.open(mode | QIODevice::Unbuffered) && mode == QIODevice::WriteOnly)
                file.write("x");
            QCOMPARE(FileReason::of(file), reason);
        }
    }

    void readsAndReplacesWholeFiles()
    {
        const QTemporaryDir folder;
        const QString name = folder.filePath("new/file");
        QByteArray content;
        QString error;
        QVERIFY(SafeFile::read(name, 3, &content, &error) && content.isNull());
        QVERIFY(SafeFile::write(name, "") && SafeFile::read(name, 3, &content, &error) && !content.isNull());
        QVERIFY(SafeFile::write(name, "abc") && SafeFile::read(name, 3, &content, &error));
        QCOMPARE(content, QByteArray("abc"));
        QVERIFY(!SafeFile::read(name, 2, &content, &error));
        QCOMPARE(error, QStringLiteral("文件过大"));
        QVERIFY(!SafeFile::read(folder.path(), 3, &content, &error));
        QCOMPARE(error, QStringLiteral("不是普通文件"));
        QVERIFY(!SafeFile::write(folder.path(), "x", &error));
        QCOMPARE(error, QStringLiteral("这是一个文件夹"));
        for (QString *reason : {static_cast<QString *>(nullptr), &error}) {
            QSaveFile file(folder.filePath("taken"));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write("x") == 1);
            QDir(folder.path()).mkdir("taken"); // meanwhile
            error = "none";
            QVERIFY(!SafeFile::commit(file, reason));
            QCOMPARE(error, QString(reason ? "这是一个文件夹" : "none"));
            QVERIFY(QDir(folder.path()).rmdir("taken"));
        }
        QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("new"));
    }

    // In chunks that cut characters, and with a broken byte in the middle.
    void guessesTheCodecOfAStream()
    {
        const QString log = QStringLiteral("传感器 3 启动完成，温度 25.3，转速 1500，状态正常\r\n");
        const QString words = QStringLiteral("温度 25.3 转速 1500\r\n"); // valid pairs, too
        const QString traditional = QStringLiteral("感測器啟動完成，溫度正常，開始傳送資料\n");
        QByteArray noise;
        QRandomGenerator random(1);
        for (int i = 0; i < 100; ++i)
            noise += char(random.bounded(256));
        const auto guessed = [](const QByteArray &bytes) {
            CodecGuess guess;
            guess.add(bytes.repeated(3000 / bytes.size() + 1));
            return guess.verdict() ? int(*guess.verdict()) : -1;
        };
        const std::tuple<const char *, QByteArray, int> rows[] = {
            {"log, UTF-8", log.toUtf8(), 0},
            {"log, GB18030", TextCodec::encode(log, 1), 1},
            {"words, UTF-8", words.toUtf8(), 0},
            {"first of a row, GB18030", "\xB0\xA1\xB0\xA1 \xB0\xA1\n", 1},
            {"words, GB18030", TextCodec::encode(words, 1), 1},
            {"signs, GB18030", TextCodec::encode(QStringLiteral("温。、25℃\n"), 1), 1},
            {"four characters", QStringLiteral("温度正常").toUtf8(), 0},
            {"traditional, UTF-8", traditional.toUtf8(), 0},
            {"ASCII", "E (123) wifi: no answer\n", -1},
            {"both", "\xC4\xA3\xC4\xA3 ", -1}, // ģģ or 模模
            {"French", "d\xC3\xA9marr\xC3\xA9\n", -1},
            {"neither", noise, -1},
            {"Cyrillic of one byte", "\xF1\xF2\xE0\xF0\xF2 \xE3\xEE\xF2\xEE\xE2\n", -1}};
        // The first and the last of each length, and what is just beside them.
        QCOMPARE(guessed("\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80"
                         "\xF1\x80\x80\x80\xF4\x8F\xBF\xBF"),
                 0);
        for (const char *wrong : {"\x80", "\xC0\x80", "\xC1\xBF", "\xC3\x7F", "\xC3\xC0", "\xE0\x9F\xBF",
                                  "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80"})
            QVERIFY2(guessed(QByteArray("\xC3\x80").repeated(20) + wrong) == -1, wrong);
        for (const auto &[name, bytes, codec] : rows) {
            const QByteArray once = bytes.repeated(3000 / bytes.size() + 1);
            QByteArray stream = once;
            stream[stream.size() / 2] = char(0xFF);
            CodecGuess guess;
            guess.add(stream.left(200));
            QVERIFY2(!guess.verdict(), name);
            for (int at = 200; at < stream.size(); at += 7)
                guess.add(stream.mid(at, 7));
            QVERIFY2(guess.verdict() ? *guess.verdict() == codec : codec < 0, name);
            guess.add(QByteArray(1, char(0xE6))); // half a character
            guess.cut();
            guess.add(once + noise.repeated(codec < 0 ? 1 : 20));
            QVERIFY2(!guess.verdict(), name); // another kind of stream since
        }
    }
};

QTEST_GUILESS_MAIN(TestText)
#include "test_text.moc"
