// The engines of the camera link. Packets are written out.

#include "checksum.h"
#include "frameassembler.h"
#include "jpegscanner.h"

#include <QtTest>

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

const QByteArray kImage = hex("4f52564e00140000000210111213141516174e6e");
const QByteArray kFormat = hex("4f52564e0111000000010502000300a552"); // device 1: RGB888, 2 x 3
const QByteArray kReply = hex("4f52564e0010000000110008305aaf47");    // device 0: address 3008, value 5A

// One letter for each event; images with their size, in small where the checksum is wrong.
QString events(FrameAssembler &assembler, int valueLength = 1)
{
    QString seen;
    CameraEvent event;
    while (assembler.next(&event, valueLength)) {
        switch (event.kind) {
        case CameraEvent::ImageBegins:
            break;
        case CameraEvent::Image:
            seen += event.checksumRight ? QStringLiteral("I%1 ") : QStringLiteral("i%1 ");
            seen = seen.arg(event.data.size());
            break;
        case CameraEvent::Format:
            seen += QStringLiteral("F%1:%2:%3x%4 ")
                        .arg(event.device)
                        .arg(event.format)
                        .arg(event.width)
                        .arg(event.height);
            break;
        case CameraEvent::Register:
            seen += QStringLiteral("R%1:%2=%3 ")
                        .arg(event.status)
                        .arg(event.address, 0, 16)
                        .arg(QLatin1String(event.data.toHex()));
            break;
        case CameraEvent::WrongLength:
            seen += QStringLiteral("W ");
            break;
        case CameraEvent::NoHeader:
            seen += QStringLiteral("N ");
            break;
        case CameraEvent::ImpossibleLength:
            seen += QStringLiteral("L ");
            break;
        case CameraEvent::Resynchronized:
            seen += QStringLiteral("S ");
            break;
        }
    }
    return seen.trimmed();
}

QByteArray damaged(QByteArray bytes, int at)
{
    bytes[at] = char(bytes.at(at) ^ 1);
    return bytes;
}

// A header with any length and command.
QByteArray header(const char *length, const char *command)
{
    return "ORVN" + QByteArray(1, '\0') + hex(length) + hex(command);
}

} // namespace

class TestCameraLink : public QObject
{
    Q_OBJECT

private slots:
    void buildsRequests();
    void takesChunks_data();
    void takesChunks();
    void takesBytesOneByOne();
    void regainsItsStep_data();
    void regainsItsStep();
    void countsLosses();
    void keepsMemorySmall();
    void findsJpegs_data();
    void findsJpegs();
    void findsJpegsHoweverCut();
    void findsLargeJpegs();
    void givesUpEndlessJpegs();
};

void TestCameraLink::buildsRequests()
{
    QCOMPARE(CameraFrame::readRequest(1, 0x1234, 0x3008, 2), hex("4f52564e01100000001134120830429a"));
    QCOMPARE(CameraFrame::writeRequest(0, 0x3008, 2, 0x5A, 1), hex("4f52564e000f0000001008305afdf2"));
}

void TestCameraLink::takesChunks_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QString>("seen");
    using Chunks = QList<QByteArray>;

    QTest::newRow("whole") << Chunks{kImage} << "I8";
    QTest::newRow("several in a chunk")
        << Chunks{kFormat + kImage + kReply + kImage} << "F1:5:2x3 I8 R0:3008=5a I8";
    QTest::newRow("garbage, then a header in pieces")
        << Chunks{"garbage12", "ORV", kImage.mid(3, 5), kImage.mid(8)} << "N I8";
    QTest::newRow("a header after a used-up half")
        << Chunks{kFormat.left(11), "O", "RVN" + kImage.mid(4)} << "N";
    QTest::newRow("two halves") << Chunks{kImage.left(13), kImage.mid(13)} << "I8";
    QTest::newRow("a header wins") << Chunks{kImage.left(13), kImage} << "I8";
    QTest::newRow("a header inside does not") << Chunks{kImage.left(11), "x" + kImage} << "i8 N";
    QTest::newRow("wrong checksum") << Chunks{damaged(kImage, 12)} << "i8";
    QTest::newRow("garbage drops all") << Chunks{"garbage" + kImage} << "N";
    QTest::newRow("garbage, then a chunk") << Chunks{"garbage", kImage} << "I8";
    QTest::newRow("announcement of 15 bytes") << Chunks{hex("4f52564e010f00000001050200"
                                                            "0300") +
                                                        kImage}
                                              << "F1:5:2x3 I8";
    QTest::newRow("short announcement is dropped")
        << Chunks{kFormat.left(16), kFormat.mid(16) + kImage} << "N";
    QTest::newRow("announcement without room") << Chunks{header("0c000000", "01") + "\1\2" + kImage} << "I8";
    QTest::newRow("unknown command") << Chunks{header("0e000000", "63") + "abcd" + kImage} << "I8";
    QTest::newRow("device 255") << Chunks{"ORVN\xff" + kFormat.mid(5)} << "F1:5:2x3";
    QTest::newRow("reply in pieces") << Chunks{kReply.left(14), kReply.mid(14)} << "R0:3008=5a";
    QTest::newRow("reply too long") << Chunks{hex("4f52564e00110000001100083012340000") + kImage} << "W I8";
    QTest::newRow("length 0") << Chunks{header("00000000", "02") + "ab"} << "L";
    QTest::newRow("length 10") << Chunks{header("0a000000", "02") + kImage} << "i0 I8";
    QTest::newRow("length 11") << Chunks{header("0b000000", "02") + "x" + kImage} << "i0 I8";
    QTest::newRow("length 12") << Chunks{header("0c000000", "02") + "xy" + kImage} << "i0 I8";
    QTest::newRow("length 2^32-1") << Chunks{header("ffffffff", "02") + "ab", kImage} << "L I8";
    QTest::newRow("reply of 2^32-1") << Chunks{header("ffffffff", "11") + "ab"} << "L";
    QTest::newRow("reply of 64 MB") << Chunks{header("00000004", "11") + "ab", kImage} << "W I8";
}

void TestCameraLink::takesChunks()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QString, seen);
    FrameAssembler assembler;
    QStringList all;
    for (const QByteArray &chunk : qAsConst(chunks)) {
        assembler.append(chunk, 0);
        const QString now = events(assembler);
        if (!now.isEmpty())
            all += now;
    }
    QCOMPARE(all.join(QLatin1Char(' ')), seen);
}

void TestCameraLink::takesBytesOneByOne()
{
    FrameAssembler assembler;
    QString seen;
    const QByteArray stream = kImage + kReply + kImage;
    const auto send = [&](const QByteArray &bytes) {
        for (const char byte : bytes) {
            assembler.append(QByteArray(1, byte), 0);
            seen += events(assembler);
        }
    };
    send(stream);
    QCOMPARE(seen, QStringLiteral("I8R0:3008=5aI8"));
    QCOMPARE(assembler.size(), 0);

    // Out of step, by noise of any length or half an announcement, until the next
    // header, which may lie across the place where the noise is dropped.
    for (int noise = 0; noise < 30; ++noise) {
        seen.clear();
        send(QByteArray(noise, 'O') + kImage + kFormat + kImage);
        QCOMPARE(seen.remove('N'), QStringLiteral("I8I8"));
    }
}

void TestCameraLink::regainsItsStep_data()
{
    QTest::addColumn<int>("joinedAt");
    QTest::addColumn<int>("lost");    // a byte after which the next one is missing; 0: none
    QTest::addColumn<bool>("isLong"); // the header there has a length of 60 MB
    QTest::addColumn<int>("piece");
    for (const int piece : {256, 4096, 65536}) {
        for (const int joinedAt : {1, 777, 2501, 5002})
            QTest::addRow("joined at %d, in pieces of %d", joinedAt, piece)
                << joinedAt << 0 << false << piece;
        QTest::addRow("a lost byte, in pieces of %d", piece) << 0 << 500 * 5003 + 321 << false << piece;
        QTest::addRow("a false length, in pieces of %d", piece) << 0 << 500 * 5003 << true << piece;
    }
}

// A thousand frames back to back, thirty in a second. Those that come when a
// second has passed hold something that looks like a header.
void TestCameraLink::regainsItsStep()
{
    QFETCH(int, joinedAt);
    QFETCH(int, lost);
    QFETCH(bool, isLong);
    QFETCH(int, piece);
    constexpr int frameBytes = 5003;
    const auto number = [](int value) { return QByteArray(1, char(value)).append(char(value >> 8)); };
    const auto frame = [&number](const QByteArray &data) {
        const QByteArray packet = "ORVN" + QByteArray(1, '\0') + number(frameBytes) + hex("000002") +
                                  data.leftJustified(frameBytes - 12, 'x');
        return packet + number(Crc::of(CrcModels::crc16Modbus, packet.constData(), packet.size()));
    };
    QByteArray stream = frame({}).repeated(28) +
                        frame("12345" + header("ffffffff", "02") + header("40000000", "63")).repeated(6) +
                        frame({}).repeated(966);
    if (isLong)
        stream.replace(lost + 5, 4, hex("00000003"));
    else if (lost > 0)
        stream.remove(lost, 1);

    FrameAssembler assembler;
    QString seen;
    for (int at = joinedAt; at < stream.size(); at += piece) {
        assembler.append(stream.mid(at, piece), qint64(at) * 33 / frameBytes);
        seen += events(assembler) + ' ';
    }
    // A second, what a piece may hold, and the frames at both ends of the gap.
    const int images = seen.count("I4991");
    QVERIFY2(images >= 1000 - 1000 / 33 - 65536 / frameBytes - 3, qPrintable(QString::number(images)));
    if (piece > 256) // smaller ones begin with a header before long
        QCOMPARE(seen.count('S'), 1);
}

void TestCameraLink::countsLosses()
{
    FrameAssembler assembler;
    const auto loss = [&assembler](const QByteArray &chunk) {
        assembler.append(chunk, 0);
        events(assembler);
        const FrameAssembler::Loss lost = assembler.takeLoss();
        return QStringLiteral("%1/%2").arg(lost.bytes).arg(lost.frames);
    };
    QCOMPARE(loss(kImage + kReply + kFormat), QStringLiteral("0/0"));
    QCOMPARE(loss("some garbage"), QStringLiteral("12/0"));
    QCOMPARE(loss(kImage.left(15)), QStringLiteral("0/0"));
    QCOMPARE(loss(kImage), QStringLiteral("15/1"));
    QCOMPARE(loss(kFormat.left(14)), QStringLiteral("14/0"));
    QCOMPARE(loss(header("ffffffff", "02") + "ab"), QStringLiteral("12/0"));
    QCOMPARE(loss(header("0c000000", "7f") + "ab"), QStringLiteral("0/0")); // for somebody else
    QCOMPARE(loss(header("00100000", "7f") + "ab"), QStringLiteral("12/0"));
    QCOMPARE(loss(header("00100000", "11") + "ab"), QStringLiteral("12/0"));
    QCOMPARE(loss({}), QStringLiteral("0/0"));
}

// What is announced is not allocated before it comes, and a stream of frames
// leaves nothing behind.
void TestCameraLink::keepsMemorySmall()
{
    FrameAssembler assembler;
    assembler.append(header("00000004", "02") + QByteArray(100, 'x'), 0);
    QCOMPARE(events(assembler), QString());
    QVERIFY(assembler.capacity() < 4096);
    assembler.append(kImage.left(11), 0);
    for (int i = 0; i < 10000; ++i) {
        assembler.append(kImage.mid(11) + kImage.left(11), 0);
        QCOMPARE(events(assembler), QStringLiteral("I8"));
    }
    QVERIFY(assembler.capacity() < 64 * 1024);
}

void TestCameraLink::findsJpegs_data()
{
    QTest::addColumn<QList<QByteArray>>("chunks");
    QTest::addColumn<QStringList>("pictures");
    using Chunks = QList<QByteArray>;
    QTest::newRow("one") << Chunks{hex("ffd801ffd9")} << QStringList{"ffd801ffd9"};
    QTest::newRow("two and a beginning") << Chunks{hex("ffd801ffd9ffd802ffd9ffd8"), hex("03ffd9")}
                                         << QStringList{"ffd801ffd9", "ffd802ffd9", "ffd803ffd9"};
    QTest::newRow("garbage before") << Chunks{hex("0102ff"), hex("d805ffd9")} << QStringList{"ffd805ffd9"};
    QTest::newRow("markers cut") << Chunks{hex("ff"), hex("d8ff"), hex("d9")} << QStringList{"ffd8ffd9"};
    QTest::newRow("an end before the start, together")
        << Chunks{hex("ffd9ffd801ffd9")} << QStringList{"ffd801ffd9"};
    QTest::newRow("an end alone") << Chunks{hex("01ffd9"), hex("ffd801ffd9")}
                                  << QStringList{"01ffd9", "ffd801ffd9"};
    QTest::newRow("no end") << Chunks{hex("ffd8010203"), hex("ffff")} << QStringList{};
}

void TestCameraLink::findsJpegs()
{
    QFETCH(QList<QByteArray>, chunks);
    QFETCH(QStringList, pictures);
    JpegScanner scanner;
    QStringList seen;
    QByteArray picture;
    for (const QByteArray &chunk : qAsConst(chunks)) {
        scanner.append(chunk);
        while (scanner.next(&picture))
            seen += QLatin1String(picture.toHex());
    }
    QCOMPARE(seen, pictures);
}

// Two pictures full of half markers behind noise, in chunks of every size.
void TestCameraLink::findsJpegsHoweverCut()
{
    QByteArray picture = hex("ffd8");
    for (int i = 0; i < 1500; ++i)
        picture += i % 7 == 0 ? hex("ff00") : i % 11 == 0 ? hex("ffff00") : hex("d9");
    picture += hex("00ffd9");
    for (int chunk = 1; chunk < 400; ++chunk) {
        const QByteArray stream = hex("0001ff") + picture + picture.left(100) + hex("ffd9");
        JpegScanner scanner;
        QList<QByteArray> seen;
        QByteArray found;
        for (int at = 0; at < stream.size(); at += chunk) {
            scanner.append(stream.mid(at, chunk));
            while (scanner.next(&found))
                seen += found;
        }
        QCOMPARE(seen, (QList<QByteArray>{picture, picture.left(100) + hex("ffd9")}));
    }
}

// Larger than what an empty queue keeps: its memory is given back.
void TestCameraLink::findsLargeJpegs()
{
    JpegScanner scanner;
    QByteArray picture;
    for (int i = 0; i < 2; ++i) {
        scanner.append(hex("ffd8") + QByteArray(5 << 20, 'x') + hex("ffd9"));
        QVERIFY(scanner.next(&picture) && picture.size() == (5 << 20) + 4);
        QVERIFY(!scanner.next(&picture));
        QVERIFY(scanner.capacity() == 0);
    }
}

void TestCameraLink::givesUpEndlessJpegs()
{
    JpegScanner scanner;
    QByteArray picture;
    const QByteArray megabyte(1 << 20, '\xFF');
    scanner.append(hex("ffd8"));
    bool overflow = false;
    for (int i = 0; i < 70; ++i) {
        scanner.append(megabyte);
        QVERIFY(!scanner.next(&picture));
        overflow = overflow || scanner.takeOverflow();
        QVERIFY(scanner.size() <= 64 << 20);
    }
    QVERIFY(overflow && !scanner.takeOverflow());
    scanner.append(hex("ffd801ffd9"));
    QVERIFY(scanner.next(&picture));
}

QTEST_GUILESS_MAIN(TestCameraLink)
#include "test_camera_link.moc"
