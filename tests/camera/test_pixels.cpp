// The picture formats and their decoders. Sources and pictures are written out.

#include "picturehistogram.h"
#include "pixelformat.h"

#include <QtTest>

#include <vector>

class TestPixels : public QObject
{
    Q_OBJECT

private slots:
    // Pictures 3 pixels wide and 2 high, unless the name says otherwise, in rows of 10
    // bytes.
    void decodes_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<bool>("isBigEndian");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QByteArray>("source");
        QTest::addColumn<QByteArray>("output");
        const auto add = [](const char *name, int code, bool isBigEndian, const char *source,
                            const char *output, QSize size = {3, 2}) {
            QTest::newRow(name) << code << isBigEndian << size << QByteArray::fromHex(source)
                                << QByteArray::fromHex(output).toHex(' ');
        };
        // RGB565: output row 0 has the source pixels 6 5 4, row 1 has 9 8 7.
        add("565", 4, false, "0000 0000 0000 0000 e007 1f00 00f8 1234 5678 ffff",
            "f80000 0000f8 00fc00 2e  f8fcf8 7808b0 308090 2e");
        add("565, all of it sent", 2, false, "0000 0000 0000 0000 e007 1f00",
            "000000 0000f8 00fc00 2e  000000 000000 000000 2e");
        add("565, odd bytes", 4, false, "0000 0000 0000 0000 e007 1f",
            "000000 0000f8 00fc00 2e  000000 000000 000000 2e");
        add("565 big", 4, true, "0000 0000 0000 0000 07e0 001f 1234",
            "1044a0 0000f8 00fc00 2e  000000 000000 000000 2e");
        add("565 big, odd bytes", 4, true, "0000 0000 0000 0000 07e0 ff",
            "000000 f8e000 00fc00 2e  000000 000000 000000 2e");
        add("888, 1 wide", 5, false, "616263 6465", "616263 2e2e2e2e2e2e2e  646500 2e2e2e2e2e2e2e", {1, 2});
        // YUV422: white, black and an odd light blue; two reds and a third.
        add("422", 7, false, "ff80 0080 1dff  4c55 1eff 8080",
            "ffffff 000000 1d00fe 2e  fe0000 d00000 808080 2e");
        add("422 big", 7, true, "80ff 8000 ff1d  554c ff1e",
            "ffffff 000000 1d00fe 2e  fe0000 d00000 000000 2e");
        add("422, half a pair", 7, false, "ff80 0080 1dff  4c55",
            "ffffff 000000 1d00fe 2e  4c5b00 000000 000000 2e");
        add("422, no V", 7, false, "ff80 0080 1dff  4c55 1e",
            "ffffff 000000 1d00fe 2e  4c5b00 1e2d00 000000 2e");
        add("422, Y only", 7, false, "ff80 0080 1dff  4c",
            "ffffff 000000 1d00fe 2e  4c4c4c 000000 000000 2e");
        add("422 big, no second Y", 7, true, "80ff 8000 ff1d  554c ff",
            "ffffff 000000 1d00fe 2e  fe0000 000000 000000 2e");
        // What the user chooses: pixels 0 1 2 are row 0, whatever the byte order.
        add("gray", 257, true, "00 7fff 10", "000000 7f7f7f ffffff 2e  101010 000000 000000 2e");
        add("YUYV", 258, true, "ff80 0080 1dff  4c55 1eff 8080",
            "ffffff 000000 1d00fe 2e  fe0000 d00000 808080 2e");
        add("UYVY", 259, false, "80ff 8000 ff1d  554c ff1e",
            "ffffff 000000 1d00fe 2e  fe0000 d00000 000000 2e");
        add("565 little rows", 260, true, "00f8 e007 1f00  ffff 1084 ff",
            "ff0000 00ff00 0000ff 2e  ffffff 848284 000000 2e");
        add("565 big rows", 261, false, "f800 07e0 001f  ffff",
            "ff0000 00ff00 0000ff 2e  ffffff 000000 000000 2e");
        add("888 rows", 262, true, "616263 646566 676869",
            "616263 646566 676869 2e  000000 000000 000000 2e");
        add("BGR, too much", 263, false, "616263 646566 676869  010203 040506 070809 99",
            "636261 666564 696867 2e  030201 060504 090807 2e");
        add("BGR, cut", 263, false, "616263 6465", "636261 000000 000000 2e  000000 000000 000000 2e");
        add("422, nothing", 7, true, "", "000000 000000 000000 2e  000000 000000 000000 2e");
    }

    void decodes()
    {
        QFETCH(int, code);
        QFETCH(bool, isBigEndian);
        QFETCH(QSize, size);
        QFETCH(QByteArray, source);
        QByteArray output(size.height() * 10, '.');
        PixelFormat::find(code)->decode({reinterpret_cast<const uchar *>(source.constData()), source.size(),
                                         size.width(), size.height(), isBigEndian},
                                        reinterpret_cast<uchar *>(output.data()), 10);
        QTEST(output.toHex(' '), "output");
    }

    // The number of a choice is kept by the settings.
    void readsAsChosen_data()
    {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QString>("name");
        const QStringList names{"RGB565",
                                "GRAY8",
                                "YUV422 YUYV",
                                "YUV422 UYVY",
                                QStringLiteral("RGB565 小端"),
                                QStringLiteral("RGB565 大端"),
                                "RGB888",
                                "BGR888",
                                "JPEG",
                                "PNG",
                                "BMP",
                                "RGB565"};
        for (int choice = 0; choice < names.size(); ++choice)
            QTest::addRow("%d", choice) << choice << names.at(choice);
    }

    void readsAsChosen()
    {
        QFETCH(int, choice);
        const ImageRecord record = ImageRecord{4, 7, 9}.readAs(choice);
        QTEST(ImageRecord::formatName(record.format), "name");
        QVERIFY(record.width == 7 && record.height == 9);
    }

    // The pixel's bytes are those that make it: a picture in which only they are not 0
    // is black but for this pixel, and for its neighbor in a pair.
    void knowsWhereAPixelComesFrom()
    {
        for (const PixelFormat &format : PixelFormat::all()) {
            for (int pixel = 0; format.decode && pixel < 12; ++pixel) {
                QByteArray bytes(40, '\0');
                const auto source = [&bytes] {
                    return PixelDecoder::Source{reinterpret_cast<const uchar *>(bytes.constData()),
                                                bytes.size(), 4, 3};
                };
                const PixelDecoder::PixelBytes from = format.bytesOf(source(), pixel % 4, pixel / 4);
                for (int k = 0; k < (from.isYuv ? 1 : from.count); ++k)
                    bytes[int(from.at[size_t(k)])] = '\xFF';
                QByteArray all(36, '.');
                QByteArray none(36, '.');
                format.decode(source(), reinterpret_cast<uchar *>(all.data()), 12);
                bytes.fill('\0');
                format.decode(source(), reinterpret_cast<uchar *>(none.data()), 12);
                for (int at = 0; at < 12; ++at)
                    QVERIFY2((all.mid(at * 3, 3) != none.mid(at * 3, 3)) == (at == pixel),
                             qPrintable(format.name));
            }
        }
    }

    void tellsRawValues_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QPoint>("pixel");
        QTest::addColumn<QString>("text");
        QTest::newRow("565, mirrored and a row below") << 4 << QPoint(0, 0) << "0C 0D";
        QTest::newRow("565, half of it there") << 4 << QPoint(2, 1) << "0E --";
        QTest::newRow("565, beyond the data") << 4 << QPoint(0, 1) << QString();
        QTest::newRow("YUYV") << 258 << QPoint(1, 0) << "Y 02 U 01 V 03";
        QTest::newRow("UYVY") << 259 << QPoint(1, 0) << "Y 03 U 00 V 02";
        QTest::newRow("end of an odd row") << 258 << QPoint(2, 1) << "Y 0A U 0B V --";
        QTest::newRow("file") << 264 << QPoint(0, 0) << QString();
    }

    void tellsRawValues()
    {
        QFETCH(int, code);
        QFETCH(QPoint, pixel);
        QByteArray bytes;
        for (int k = 0; k < 15; ++k)
            bytes.append(char(k));
        QTEST(PixelFormat::find(code)->rawText(
                  {reinterpret_cast<const uchar *>(bytes.constData()), bytes.size(), 3, 2}, pixel.x(),
                  pixel.y()),
              "text");
    }

    // Every value of every channel, in rows with a margin; of many rows every so many.
    void countsValues()
    {
        std::vector<quint32> words(258 * 4, 0xFFFFFFFF);
        for (int y = 0; y < 4; ++y)
            for (quint32 x = 0; x < 256; ++x)
                words[size_t(y) * 258 + x] = 0xFF000000 | x << 16 | (255 - x) << 8 | x / 2;
        const auto *rows = reinterpret_cast<const uchar *>(words.data());
        PictureHistogram histogram = PictureHistogram::of(rows, 258 * 4, 256, 4);
        QVERIFY(histogram.pixels == 1024 && histogram.counted() == 1024 && histogram.rowStep == 1);
        QVERIFY(histogram.counts[PictureHistogram::Red][255] == 4 &&
                histogram.counts[PictureHistogram::Blue][127] == 8);
        QCOMPARE(histogram.mean(PictureHistogram::Green), 127.5);
        QCOMPARE(histogram.mean(PictureHistogram::Blue), 63.5);
        histogram = PictureHistogram::of(rows, 258 * 4, 1, 1); // 0, 255, 0
        QCOMPARE(histogram.counts[PictureHistogram::Luma][149], 1U);
        QCOMPARE(PictureHistogram::of(rows, 0, 1, 1).mean(PictureHistogram::Luma), 149.0);
        histogram = PictureHistogram::of(rows, 0, 256, 1000 * 1000); // the same row, that often
        QVERIFY(histogram.pixels == 256000000 && histogram.counted() <= PictureHistogram::maxPixels);
        QVERIFY(histogram.rowStep > 1 && histogram.counted() > 0);
        QCOMPARE(histogram.mean(PictureHistogram::Green), 127.5);
        QCOMPARE(PictureHistogram::of(nullptr, 0, 0, 0).mean(PictureHistogram::Red), 0.0);
    }

    void limitsSizes()
    {
        QCOMPARE(PixelDecoder::imageBytes(0, 240) + PixelDecoder::imageBytes(320, 0), 0U);
        QCOMPARE(PixelDecoder::imageBytes(4096, 5461), 67104768U);
        QCOMPARE(PixelDecoder::imageBytes(4096, 5462), 0U); // 64 MB and 8 KB
        QCOMPARE(PixelDecoder::imageBytes(65535, 65535), 0U);
    }
};

QTEST_GUILESS_MAIN(TestPixels)
#include "test_pixels.moc"
