// The packets and pictures in the streams of cameras. Packets are written out.

#include "camerastreams.h"

#include <QtTest>

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

const QByteArray kImage = hex("4f52564e00140000000210111213141516174e6e");
const QByteArray kFormat = hex("4f52564e0111000000010502000300a552"); // device 1: RGB888, 2 x 3
const QByteArray kReply = hex("4f52564e0010000000110008305aaf47");    // device 0: address 3008, value 5A

// A letter for each event; images with their size, in small where the checksum is wrong.
QString events(FrameAssembler &assembler)
{
    QString seen;
    for (CameraEvent event; assembler.next(&event, 1);) {
        if (event.kind == CameraEvent::Image)
            seen += (event.checksumRight ? "I" : "i") + QString::number(event.data.size()) + ' ';
        else if (event.kind == CameraEvent::Format)
            seen += QString::asprintf("F%d:%d:%dx%d ", event.device, event.format, event.width, event.height);
        else if (event.kind == CameraEvent::Register)
            seen += QString::asprintf("R%d:%x=%s ", event.status, event.address, event.data.toHex().data());
        else if (event.kind != CameraEvent::ImageBegins)
            seen += QString(" IFRWNLS").at(event.kind) + QStringLiteral(" ");
    }
    return seen;
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
    void buildsRequests()
    {
        QCOMPARE(CameraFrame::readRequest(1, 0x1234, 0x3008, 2), hex("4f52564e01100000001134120830429a"));
        QCOMPARE(CameraFrame::writeRequest(0, 0x3008, 2, 0x5A, 1), hex("4f52564e000f0000001008305afdf2"));
    }

    void readsChunks_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks");
        QTest::addColumn<QString>("seen");
        using Chunks = QList<QByteArray>;
        const auto damaged = [](int at) { return QByteArray(kImage).replace(at, 1, "?"); };
        QTest::newRow("several") << Chunks{kFormat + kImage + kReply + kImage}
                                 << "F1:5:2x3 I8 R0:3008=5a I8 ";
        QTest::newRow("a header after a used-up half")
            << Chunks{kFormat.left(11), "O", "RVN" + kImage.mid(4)} << "N ";
        QTest::newRow("a header wins") << Chunks{kImage.left(13), kImage} << "I8 ";
        QTest::newRow("a header inside does not") << Chunks{kImage.left(11), "x" + kImage} << "i8 N ";
        QTest::newRow("wrong data, wrong checksum")
            << Chunks{damaged(12) + damaged(18) + damaged(19)} << "i8 i8 i8 ";
        QTest::newRow("garbage drops all") << Chunks{"garbage" + kImage, kImage} << "N I8 ";
        QTest::newRow("announcements of 15 and 12 bytes")
            << Chunks{header("0f000000", "01") + hex("0502000300") + header("0c000000", "01") + "xy" + kImage}
            << "F0:5:2x3 I8 ";
        QTest::newRow("a cut announcement") << Chunks{kFormat.left(16), kFormat.mid(16) + kImage} << "N ";
        QTest::newRow("unknown command") << Chunks{header("0e000000", "63") + "abcd" + kImage} << "I8 ";
        QTest::newRow("device 255") << Chunks{"ORVN\xff" + kFormat.mid(5)} << "F1:5:2x3 ";
        QTest::newRow("a reply too long") << Chunks{header("11000000", "11") + "1234567" + kImage} << "W I8 ";
        QTest::newRow("a reply of 64 MB") << Chunks{header("00000004", "11") + "ab", kImage} << "W I8 ";
        QTest::newRow("lengths 10, 11, 12") << Chunks{header("0a000000", "02") + header("0b000000", "02") +
                                                      "x" + header("0c000000", "02") + "xy"}
                                            << "i0 i0 i0 ";
        QTest::newRow("no data") << Chunks{CameraFrame::build(0, CameraFrame::ImageData, "")} << "I0 ";
        QTest::newRow("length 9") << Chunks{header("09000000", "02") + "ab"} << "L ";
        QTest::newRow("above 64 MB") << Chunks{header("01000004", "02") + "ab", kImage} << "L I8 ";
    }

    void readsChunks()
    {
        QFETCH(QList<QByteArray>, chunks);
        FrameAssembler assembler;
        QString seen;
        for (const QByteArray &chunk : qAsConst(chunks)) {
            assembler.append(chunk, 0);
            seen += events(assembler);
        }
        QTEST(seen, "seen");
    }

    // After noise of any length and half an announcement, the next header counts,
    // which may lie across the place where the noise is dropped.
    void readsSingleBytes()
    {
        FrameAssembler assembler;
        for (int noise = 0; noise < 30; ++noise) {
            QString seen;
            for (const char byte : QByteArray(noise, 'O') + kImage + kFormat + kImage + kReply) {
                assembler.append(QByteArray(1, byte), 0);
                seen += events(assembler);
            }
            QCOMPARE(seen.remove("N "), QStringLiteral("I8 I8 R0:3008=5a "));
            QCOMPARE(assembler.size(), 0);
        }
    }

    void resynchronizes_data()
    {
        QTest::addColumn<int>("joinedAt");
        QTest::addColumn<int>("lost"); // this many bytes at frame 500
        QTest::addColumn<QByteArray>("inserted");
        for (const int joinedAt : {1, 777, 5002})
            QTest::addRow("joined at %d", joinedAt) << joinedAt << 0 << QByteArray();
        QTest::newRow("a lost byte") << 0 << 1 << QByteArray();
        QTest::newRow("a false length") << 0 << 9 << header("00000003", "").left(9); // 48 MB
    }

    // A thousand frames without pauses, thirty in a second. Those that arrive when a
    // second has passed hold something that looks like a header.
    void resynchronizes()
    {
        QFETCH(int, joinedAt);
        QFETCH(int, lost);
        QFETCH(QByteArray, inserted);
        constexpr int frameBytes = 5003;
        const auto frame = [](const QByteArray &data) {
            return CameraFrame::build(0, CameraFrame::ImageData, data.leftJustified(frameBytes - 12, 'x'));
        };
        QByteArray stream = frame({}).repeated(28) +
                            frame("12345" + header("ffffffff", "02") + header("40000000", "63")).repeated(6) +
                            frame({}).repeated(966);
        stream.replace(500 * frameBytes, lost, inserted);
        for (const int piece : {256, 4096, 65536}) {
            FrameAssembler assembler;
            QString seen;
            for (int at = joinedAt; at < stream.size(); at += piece) {
                assembler.append(stream.mid(at, piece), qint64(at) * 33 / frameBytes);
                seen += events(assembler);
            }
            // A second, what a piece may hold, and the frames at both ends of the gap.
            const int images = seen.count("I4991");
            QVERIFY2(images >= 1000 - 1000 / 33 - 65536 / frameBytes - 3,
                     qPrintable(QString::number(images)));
            if (piece > 256) // smaller ones begin with a header before long
                QCOMPARE(seen.count('S'), 1);
        }
    }

    void countsLosses()
    {
        FrameAssembler assembler;
        const auto loss = [&assembler](const QByteArray &chunk) {
            assembler.append(chunk, 0);
            events(assembler);
            const CameraLoss lost = assembler.takeLoss();
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
        // An announcement that was searched for ends the search.
        FrameAssembler joined;
        for (const qint64 nowMs : {0, 1000})
            joined.append("x" + kImage.mid(4) + kFormat, nowMs);
        QCOMPARE(events(joined), QStringLiteral("F1:5:2x3 S N "));
        const QByteArray data = "1" + header("40000000", "02") + QByteArray(80, 'x');
        const QByteArray packet = CameraFrame::build(0, CameraFrame::ImageData, data);
        joined.append(packet, 1500);
        QCOMPARE(events(joined), QStringLiteral("I91 "));
        joined.append(packet.left(50), 1600); // over a slow line
        joined.append(packet.mid(50), 4000);
        QCOMPARE(events(joined), QStringLiteral("I91 "));
    }

    // Nothing is allocated for what is only announced, and a stream of frames leaves
    // nothing behind.
    void keepsMemorySmall()
    {
        FrameAssembler assembler;
        assembler.append(header("00000004", "02") + QByteArray(100, 'x'), 0);
        QCOMPARE(events(assembler), QString());
        QVERIFY(assembler.capacity() < 4096);
        assembler.append(kImage.left(11), 0);
        for (int i = 0; i < 10000; ++i) {
            assembler.append(kImage.mid(11) + kImage.left(11), 0);
            QCOMPARE(events(assembler), QStringLiteral("I8 "));
        }
        QVERIFY(assembler.capacity() < 64 * 1024);
    }

    // Of datagrams, the sender that has been silent for longest is forgotten.
    void separatesSenders()
    {
        CameraHealth health;
        CameraStreams streams(&health);
        const auto add = [&](int sender, bool isDatagram) {
            CameraStreams::Stream &stream = streams.of(QString::number(sender), isDatagram);
            stream.packets.append("garbage-" + kImage.left(13), 0);
            events(stream.packets);
            return streams.countLoss(QString(), stream);
        };
        for (int sender = 0; sender < 16; ++sender)
            QCOMPARE(add(sender, true), QStringLiteral("无法识别的数据，已丢弃"));
        QCOMPARE(add(0, true), QString()); // it is known
        QVERIFY(!streams.takeForgotten());
        add(16, true);
        QVERIFY(!streams.contains("1") && streams.contains("0") && streams.contains("2"));
        QVERIFY(streams.takeForgotten() && !streams.takeForgotten());
        add(17, false);
        QVERIFY(streams.contains("2"));
        QCOMPARE(health.total().lostBytes, 19 * 21);
        streams.clear();
        add(1, true);
        QVERIFY(!streams.contains("2") && !streams.takeForgotten());

        CameraStreams::Stream &stream = streams.of("a", false);
        for (const QByteArray &chunk : {kImage.left(13), kImage + kImage.left(13)}) {
            stream.packets.append(chunk, 0);
            events(stream.packets);
        }
        QCOMPARE(streams.countLoss(QString(), stream), QStringLiteral("图像数据不完整，已丢弃"));
        QCOMPARE(health.total().cutShort, 1);
        streams.end("a");
        QCOMPARE(health.total().cutShort, 2);
        QByteArray picture;
        streams.of("b", false).jpeg.append(hex("01ffd801"));
        QVERIFY(!streams.of("b", false).jpeg.next(&picture));
        QCOMPARE(streams.countLoss("b", streams.of("b", false)), QString());
        QCOMPARE(health.total().lostBytes, 20 * 21 + 2 * 13 + 1);
        streams.end("b");
        QCOMPARE(health.total().cutShort, 3);
    }

    void findsJpegs_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks");
        QTest::addColumn<QStringList>("pictures");
        QTest::addColumn<int>("lost");
        using Chunks = QList<QByteArray>;
        QTest::newRow("an end before the start, together")
            << Chunks{hex("ffd9ffd801ffd9")} << QStringList{"ffd801ffd9"} << 2;
        QTest::newRow("an end alone")
            << Chunks{hex("01ffd9"), hex("ffd801ffd9")} << QStringList{"01ffd9", "ffd801ffd9"} << 0;
        QTest::newRow("noise between them")
            << Chunks{hex("ffd801ffd90102ffd802ffd9")} << QStringList{"ffd801ffd9", "ffd802ffd9"} << 2;
        QTest::newRow("no end") << Chunks{hex("ffd8010203"), hex("ffff")} << QStringList{} << 0;
        QByteArray picture = hex("ffd8"); // full of half markers
        for (int i = 0; i < 1500; ++i)
            picture += i % 7 == 0 ? hex("ff00") : i % 11 == 0 ? hex("ffff00") : hex("d9");
        picture += hex("00ffd9");
        for (const int size : {1, 2, 3, 64, 1000}) {
            Chunks chunks;
            const QByteArray stream = hex("0001ff") + picture + picture;
            for (int at = 0; at < stream.size(); at += size)
                chunks.append(stream.mid(at, size));
            QTest::addRow("chunks of %d", size)
                << chunks << QStringList{picture.toHex(), picture.toHex()} << 3;
        }
    }

    void findsJpegs()
    {
        QFETCH(QList<QByteArray>, chunks);
        JpegScanner scanner;
        QStringList pictures;
        QByteArray picture;
        for (const QByteArray &chunk : qAsConst(chunks)) {
            scanner.append(chunk);
            while (scanner.next(&picture))
                pictures += QLatin1String(picture.toHex());
        }
        QTEST(pictures, "pictures");
        QTEST(int(scanner.takeLoss().bytes), "lost");
    }

    // The memory of a large picture is given back, and one without an end is reported
    // once.
    void dropsEndlessJpegs()
    {
        JpegScanner scanner;
        QByteArray picture;
        scanner.append(hex("ffd8") + QByteArray(5 << 20, 'x') + hex("ffd9"));
        QVERIFY(scanner.next(&picture) && picture.size() == (5 << 20) + 4 && !scanner.next(&picture));
        QCOMPARE(scanner.capacity(), 0);
        const QByteArray megabyte(1 << 20, '\xFF');
        for (int i = 0; i < 64; ++i) {
            scanner.append(i == 0 ? hex("ffd8") + megabyte.mid(2) : megabyte);
            QVERIFY(!scanner.next(&picture) && !scanner.takeOverflow());
        }
        scanner.append(megabyte);
        QVERIFY(!scanner.next(&picture) && scanner.takeOverflow() && !scanner.takeOverflow());
        QVERIFY(!scanner.hasStart() && scanner.size() == 1);
        QCOMPARE(scanner.takeLoss().bytes, (65 << 20) - 1);
        QCOMPARE(scanner.takeLoss().bytes, 0);
        scanner.append(hex("ffd801ffd9"));
        QVERIFY(scanner.next(&picture));
    }
};

QTEST_GUILESS_MAIN(TestCameraLink)
#include "test_camera_link.moc"
