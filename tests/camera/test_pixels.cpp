// The picture formats and their decoders. Sources and pictures are written out.

#include "pixelformat.h"

#include <QtTest>

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
