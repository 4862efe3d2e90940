// The pixel decoders. Sources and pictures are written out.

#include "pixelformat.h"

#include <QtTest>

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

// The output; the bytes beside the rows stay '.'.
QByteArray decoded(PixelDecoder::Decode decode, const QByteArray &source, QSize size, bool isBigEndian,
                   int stride)
{
    QByteArray output(size.height() * stride, '.');
    decode({reinterpret_cast<const uchar *>(source.constData()), source.size(), size.width(), size.height(),
            isBigEndian},
           reinterpret_cast<uchar *>(output.data()), stride);
    return output;
}

QByteArray text(const QByteArray &bytes)
{
    return bytes.toHex(' ').replace("2e", "..");
}

} // namespace

class TestPixels : public QObject
{
    Q_OBJECT

private slots:
    void listsFormats();
    void decodesRgb565_data();
    void decodesRgb565();
    void decodesEveryRgb565();
    void decodesRgb888();
    void decodesYuv422_data();
    void decodesYuv422();
    void limitsSizes();
};

void TestPixels::listsFormats()
{
    QStringList formats;
    for (const PixelFormat &format : PixelFormat::all())
        formats += QStringLiteral("%1 %2 %3%4")
                       .arg(format.code)
                       .arg(format.name)
                       .arg(format.bytesPerPixel)
                       .arg(format.mayBeFile ? "*" : "");
    QCOMPARE(formats, (QStringList{"1 *.jpg 3*", "2 *.bmp 2", "3 *.png 3*", "4 RGB565 2", "5 RGB888 3",
                                   "7 YUV422 2"}));
    QCOMPARE(ImageRecord::formatName(7), QStringLiteral("YUV422"));
    QCOMPARE(ImageRecord::formatName(6), QStringLiteral("*.jpg"));
    QVERIFY(!PixelFormat::find(0));
    QCOMPARE(PixelFormat::find(ImageRecord().format)->name, QLatin1String("RGB565"));
    QVERIFY(ImageRecord().width == 320 && ImageRecord().height == 240);
}

// 3 x 2. Output row 0 takes the source pixels 6 5 4, row 1 takes 9 8 7.
void TestPixels::decodesRgb565_data()
{
    QTest::addColumn<QByteArray>("source");
    QTest::addColumn<bool>("isBigEndian");
    QTest::addColumn<QByteArray>("output");
    const QByteArray source = hex("0000 0000 0000 0000 e007 1f00 00f8 1234 5678 ffff");
    const QByteArray black("00 00 00 00 00 00 00 00 00 .. ..");
    QTest::newRow("little") << source << false
                            << QByteArray(
                                   "f8 00 00 00 00 f8 00 fc 00 .. .. f8 fc f8 78 08 b0 30 80 90 .. ..");
    QTest::newRow("exact payload") << source.left(12) << false
                                   << QByteArray("00 00 00 00 00 f8 00 fc 00 .. .. ") + black;
    QTest::newRow("odd bytes") << source.left(11) << false
                               << QByteArray("00 00 00 00 00 f8 00 fc 00 .. .. ") + black;
    QTest::newRow("nothing") << QByteArray() << true << black + ' ' + black;
    QTest::newRow("big") << hex("0000 0000 0000 0000 07e0 001f f800") << true
                         << QByteArray("f8 00 00 00 00 f8 00 fc 00 .. .. ") + black;
    QTest::newRow("big, odd bytes") << hex("0000 0000 0000 0000 07e0 ff") << true
                                    << QByteArray("00 00 00 f8 e0 00 00 fc 00 .. .. ") + black;
}

void TestPixels::decodesRgb565()
{
    QFETCH(QByteArray, source);
    QFETCH(bool, isBigEndian);
    QTEST(text(decoded(PixelDecoder::rgb565, source, {3, 2}, isBigEndian, 11)), "output");
}

void TestPixels::decodesEveryRgb565()
{
    for (const bool isBigEndian : {false, true}) {
        QByteArray source(65537 * 2, '\0'); // pixels that no output takes
        QByteArray expected(65536 * 3, '\0');
        for (int value = 0; value < 65536; ++value) {
            const char low(static_cast<char>(value));
            const char high(static_cast<char>(value >> 8));
            source.append(isBigEndian ? high : low).append(isBigEndian ? low : high);
            char *const pixel = expected.data() + 3 * (65535 - value);
            pixel[0] = static_cast<char>(high & 0xF8);
            pixel[1] = static_cast<char>(value >> 3 & 0xFC);
            pixel[2] = static_cast<char>(value << 3);
        }
        QCOMPARE(decoded(PixelDecoder::rgb565, source, {65536, 1}, isBigEndian, 65536 * 3), expected);
    }
}

void TestPixels::decodesRgb888()
{
    const QByteArray source("abcdefgh"); // of nine bytes
    QCOMPARE(text(decoded(PixelDecoder::rgb888, source, {1, 2}, false, 5)), "61 62 63 .. .. 64 65 66 .. ..");
    QCOMPARE(text(decoded(PixelDecoder::rgb888, source, {2, 2}, true, 8)),
             "61 62 63 64 65 66 .. .. 67 68 00 00 00 00 .. ..");
}

// 3 x 2: white and black, an odd one of light blue; two reds, and a black one.
void TestPixels::decodesYuv422_data()
{
    QTest::addColumn<QByteArray>("source"); // Y U Y V
    QTest::addColumn<QByteArray>("output");
    const QByteArray first("ff ff ff 00 00 00 1d 00 fe .. ");
    const QByteArray source = hex("ff80 0080 1dff 4c55 1eff");
    QTest::newRow("no third") << source << first + "fe 00 00 d0 00 00 00 00 00 ..";
    QTest::newRow("a third") << source + hex("8080") << first + "fe 00 00 d0 00 00 80 80 80 ..";
    QTest::newRow("no pair") << source.left(8) << first + "4c 5b 00 00 00 00 00 00 00 ..";
    QTest::newRow("nothing") << QByteArray()
                             << QByteArray("00 00 00 00 00 00 00 00 00 .. ").repeated(2).chopped(1);
}

void TestPixels::decodesYuv422()
{
    QFETCH(QByteArray, source);
    QByteArray swapped;
    for (int at = 0; at < source.size(); at += 2)
        swapped.append(source.at(at + 1)).append(source.at(at));
    QTEST(text(decoded(PixelDecoder::yuv422, source, {3, 2}, false, 10)), "output");
    QTEST(text(decoded(PixelDecoder::yuv422, swapped, {3, 2}, true, 10)), "output");
}

void TestPixels::limitsSizes()
{
    QCOMPARE(PixelDecoder::imageBytes(0, 240), 0U);
    QCOMPARE(PixelDecoder::imageBytes(320, 0), 0U);
    QCOMPARE(PixelDecoder::imageBytes(65535, 65535), 0U);
    QCOMPARE(PixelDecoder::imageBytes(4096, 5461), 67104768U);
    QCOMPARE(PixelDecoder::imageBytes(4096, 5462), 0U); // 64 MB and 8 KB
    QCOMPARE(PixelDecoder::imageBytes(640, 480), 921600U);
}

QTEST_GUILESS_MAIN(TestPixels)
#include "test_pixels.moc"
