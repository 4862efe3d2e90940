// Which frames are shown, and as what.

#include "frameshow.h"

#include <QBuffer>
#include <QtTest>

class TestFrameShow : public QObject
{
    Q_OBJECT

private slots:
    void takesTurns();
    void showsOnlyTheNewest();
};

// However many frames arrive of one device, the other is shown as well.
void TestFrameShow::takesTurns()
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

void TestFrameShow::showsOnlyTheNewest()
{
    FrameShow show;
    QList<QImage> pictures;
    connect(&show, &FrameShow::pictureReady, this,
            [&](int, const QImage &picture) { pictures.append(picture); });
    for (int side = 1; side <= 5; ++side)
        show.add(1, {QByteArray(75, 'x'), ImageRecord{5, quint16(side), quint16(side)}, false});
    show.add(0, {"no picture", std::nullopt, false});
    QTRY_VERIFY_WITH_TIMEOUT(!pictures.isEmpty() && show.unusable() == 1, 20000);
    QCOMPARE(pictures.size(), 1);
    QCOMPARE(pictures.first().width(), 5);
    QVERIFY(show.shown() == 1 && show.skipped() == 4);
    show.clearCounts();
    QVERIFY(show.shown() == 0 && show.skipped() == 0 && show.unusable() == 0);
}

QTEST_GUILESS_MAIN(TestFrameShow)
#include "test_frameshow.moc"
