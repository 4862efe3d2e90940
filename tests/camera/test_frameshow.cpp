// Which frames are shown, and as what.

#include "frameshow.h"

#include <QBuffer>
#include <QtTest>

namespace {

// A grey JPEG of 8 x 8 pixels in that many scans: the first has the mean, the others
// the rest of the block, which is empty.
QByteArray progressive(int scans)
{
    return QByteArray::fromHex("ffd8ffdb004300") + QByteArray(64, 1) +
           QByteArray::fromHex("ffc2000b080008000801011100ffc40014000100000000000000000000000000000000"
                               "ffc40014100100000000000000000000000000000000ffda000801010000000000") +
           QByteArray::fromHex("ffda0008010100013f0000").repeated(scans - 1) + QByteArray::fromHex("ffd9");
}

QByteArray jpegFile()
{
    QImage picture(30, 30, QImage::Format_RGB32);
    picture.fill(Qt::green);
    QBuffer buffer;
    picture.save(&buffer, "jpg");
    return buffer.data();
}

} // namespace

class TestFrameShow : public QObject
{
    Q_OBJECT

private slots:
    void decodesFormats_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("side");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("shownSide"); // 0: nothing is shown
        QTest::newRow("jpg file") << 1 << 100 << jpegFile() << 30;
        QTest::newRow("png code, jpg file") << 3 << 100 << jpegFile() << 30;
        QTest::newRow("file, no size announced") << 1 << 0 << jpegFile() << 30;
        QTest::newRow("jpg code, raw") << 1 << 2 << QByteArray(12, 'x') << 2;
        QTest::newRow("png code, raw") << 3 << 2 << QByteArray(12, 'x') << 2;
        QTest::newRow("short and no file") << 1 << 2 << QByteArray(11, 'x') << 0;
        QTest::newRow("corrupt jpg") << 1 << 100 << jpegFile().left(20) + QByteArray(400, 'z') << 0;
        QTest::newRow("jpg of 32 scans") << 1 << 100 << progressive(32) << 8;
        QTest::newRow("jpg of 33 scans") << 1 << 100 << progressive(33) << 0;
        QTest::newRow("drawing") << 1 << 100 << QByteArray("<svg width='9' height='9'/>") << 0;
        for (const int raw : {2, 4, 5, 7})
            QTest::addRow("short data, code %d", raw) << raw << 64 << QByteArray(8, 'x') << 64;
        QTest::newRow("unknown") << 9 << 2 << QByteArray(99, 'x') << 0;
        QTest::newRow("no size") << 4 << 0 << QByteArray(99, 'x') << 0;
        QTest::newRow("largest size") << 4 << 65535 << QByteArray(99, 'x') << 0;
    }

    void decodesFormats()
    {
        QFETCH(int, format);
        QFETCH(int, side);
        QFETCH(QByteArray, bytes);
        const ImageRecord record{quint8(format), quint16(side), quint16(side)};
        const QImage picture = FrameShow::decode({bytes, record, false});
        QTEST(picture.width(), "shownSide");
        QCOMPARE(picture.height(), picture.width());
    }

    // However many frames arrive of one device, the other is shown as well.
    void takesTurns()
    {
        for (const int busy : {0, 1}) {
            FrameShow show;
            const CameraFrameData frame{"1234", ImageRecord{4, 1, 1}, false};
            QList<int> devices;
            connect(&show, &FrameShow::pictureReady, this, [&](int device) {
                devices.append(device);
                show.add(busy, frame);
                if (devices.size() == 2 || devices.size() == 4)
                    show.add(1 - busy, frame);
            });
            show.add(busy, frame);
            QTRY_VERIFY_WITH_TIMEOUT(devices.size() >= 6, 20000);
            QCOMPARE(devices.mid(0, 6), (QList<int>{busy, busy, 1 - busy, busy, 1 - busy, busy}));
        }
    }

    // However fast frames arrive, sixty a second of each device are decoded.
    void keepsThePace()
    {
        for (const int devices : {1, 2}) {
            FrameShow show;
            const CameraFrameData noPicture{"no picture", std::nullopt, false};
            const auto addAll = [&] {
                for (int device = 0; device < devices; ++device)
                    show.add(device, noPicture);
            };
            connect(&show, &FrameShow::undecodable, this, addAll);
            QElapsedTimer clock;
            clock.start();
            addAll();
            QTRY_VERIFY_WITH_TIMEOUT(show.unusable() >= 20 * devices, 20000);
            QVERIFY2(clock.elapsed() >= 19 * 14, qPrintable(QString::number(clock.elapsed())));
        }
    }

    // A large picture is decoded while the event loop turns, which would otherwise turn
    // once or twice.
    void decodesBesideTheWindow()
    {
        FrameShow show;
        QTimer turn;
        int turns = 0;
        int turnsAtPicture = -1;
        connect(&turn, &QTimer::timeout, this, [&turns] { ++turns; });
        connect(&show, &FrameShow::pictureReady, this, [&](int, const QImage &picture) {
            QCOMPARE(picture.format(), QImage::Format_RGB32);
            QCOMPARE(picture.size(), QSize(4096, 4096));
            turnsAtPicture = turns;
        });
        turn.start(0);
        show.add(0, {QByteArray(32 * 1024 * 1024, 'x'), ImageRecord{4, 4096, 4096}, false});
        QTRY_VERIFY_WITH_TIMEOUT(turnsAtPicture >= 0, 20000);
        QVERIFY2(turnsAtPicture > 10, qPrintable(QString::number(turnsAtPicture)));
    }

    // The page may be closed while a frame is in work, or before.
    void endsAtAnyTime()
    {
        for (int turns = 0; turns < 30; ++turns) {
            FrameShow show;
            show.add(0, {QByteArray(8 * 1024 * 1024, 'x'), ImageRecord{7, 2048, 2048}, false});
            show.add(1, {jpegFile(), std::nullopt, false});
            for (int turn = 0; turn < turns % 3; ++turn)
                QCoreApplication::processEvents();
            QVERIFY(show.shown() <= 2); // with an end that leaves nothing behind
        }
        QCoreApplication::processEvents();
    }

    // And a picture that takes long leaves as much time for the rest.
    void showsOnlyTheNewest()
    {
        FrameShow show;
        QList<int> widths;
        QElapsedTimer clock;
        connect(&show, &FrameShow::pictureReady, this, [&](int, const QImage &picture) {
            widths.append(picture.width());
            for (clock.start(); clock.elapsed() < 40;) {
            }
            clock.start();
        });
        const CameraFrameData noPicture{"no picture", std::nullopt, false};
        QList<qint64> pausesMs;
        connect(&show, &FrameShow::undecodable, this, [&] {
            pausesMs.append(clock.restart());
            if (pausesMs.size() == 1)
                QTimer::singleShot(0, &show, [&] { show.add(0, noPicture); });
        });
        for (int side = 1; side <= 5; ++side)
            show.add(1, {QByteArray(75, 'x'), ImageRecord{5, quint16(side), quint16(side)}, false});
        show.add(0, noPicture);
        QTRY_VERIFY_WITH_TIMEOUT(show.unusable() == 2, 20000);
        QVERIFY(pausesMs.at(0) >= 40);
        QCOMPARE(widths, QList<int>{5});
        QVERIFY(show.shown() == 1 && show.skipped() == 4 && !show.findChild<QTimer *>()->isActive());
        show.clearCounts();
        QVERIFY(show.shown() == 0 && show.skipped() == 0 && show.unusable() == 0);
    }
};

QTEST_GUILESS_MAIN(TestFrameShow)
#include "test_frameshow.moc"
