// How pictures are shown: fitted, zoomed at the pointer, moved, mirrored, and what
// pixel is under the pointer.

#include "cameraviewmenu.h"
#include "histogrampane.h"
#include "imageviewer.h"
#include "settings.h"

#include <QtTest>
#include <QtWidgets>

class TestImageViewer : public QObject
{
    Q_OBJECT

private slots:
    void zoomsAtThePointer()
    {
        const PicturePlace::Room room{{10, 20, 400, 300}, {160, 130}, {100, 80}};
        PicturePlace place;
        QCOMPARE(place.target(room), QRectF(160, 130, 100, 80));
        const QPointF pointer(200.5, 150.5);
        QCOMPARE(*place.pixelAt(pointer, room), QPoint(40, 20));
        QVector<double> scales;
        for (const int steps : {1, 1, 2, -1, -9, 99}) {
            const QPoint pixel = *place.pixelAt(pointer, room);
            place.zoomAt(pointer, steps, room);
            scales << place.scale(room);
            const QPoint error = *place.pixelAt(pointer, room) - pixel;
            const double allowed = qMax(1.0, 0.5 / scales.last());
            QVERIFY(qAbs(error.x()) <= allowed && qAbs(error.y()) <= allowed);
        }
        QCOMPARE(scales, (QVector<double>{2, 3, 6, 4, 0.125, 32}));
        place.moveBy({-1e6, 1e6}, room); // never out of sight
        QVERIFY(place.target(room).intersects(room.place));
        place.fit();
        QCOMPARE(place.target(room), QRectF(22.5, 20, 375, 300));
        place.zoomAt(pointer, -1, room); // from between two steps
        QCOMPARE(place.scale(room), 3.0);
        place.showNatural();
        QVERIFY(!place.pixelAt({159, 140}, room) && place.pixelAt({160, 130}, room));
    }

    void showsPixelsAsTheyAre()
    {
        QImage image(20, 10, QImage::Format_RGB888);
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 20; ++x)
                image.setPixelColor(x, y, QColor(x * 10, y * 20, 7));
        ImageViewer viewer;
        viewer.resize(200, 120);
        viewer.show();
        QVERIFY(viewer.pixelText({100, 60}).isEmpty());
        viewer.setImage(0, QPixmap::fromImage(image)); // from (90, 55) on
        QCOMPARE(viewer.pixelText({90, 55}), QString("x 0　y 0　R 0　G 0　B 7"));
        QVERIFY(viewer.pixelText({89, 55}).isEmpty());
        viewer.setMirror(ImageViewer::LeftRight);
        QCOMPARE(viewer.pixelText({90, 55}), QString("x 19　y 0　R 190　G 0　B 7"));
        QCOMPARE(viewer.grab().toImage().pixelColor(90, 55), QColor(190, 0, 7));
        viewer.setMirror(ImageViewer::UpDown);
        QCOMPARE(viewer.grab().toImage().pixelColor(90, 55), QColor(0, 180, 7));
        viewer.setMirror(0);
        wheel(&viewer, {95, 60}, 3);
        const QImage large = viewer.grab().toImage();
        int same = 0; // a pixel is a square of one color
        for (int k = 0; k < 4; ++k)
            same += large.pixelColor(95 + k, 60) == large.pixelColor(95, 60) ? 1 : 0;
        QVERIFY(same >= 2);
        const QString before = viewer.pixelText({95, 60});
        drag(&viewer, {95, 60}, {75, 60});
        QCOMPARE(viewer.pixelText({75, 60}), before); // it moves with the pointer
        QTest::mouseDClick(&viewer, Qt::LeftButton, {}, {95, 60});
        QCOMPARE(viewer.pixelText({90, 55}), QString("x 0　y 0　R 0　G 0　B 7"));
        drag(&viewer, {95, 60}, {75, 60}); // shown completely: stays
        QCOMPARE(viewer.pixelText({90, 55}), QString("x 0　y 0　R 0　G 0　B 7"));
        wheel(&viewer, {95, 60}, 3);
        viewer.setImage(0, QPixmap::fromImage(image.copy(0, 0, 4, 4))); // another size
        QCOMPARE(viewer.pixelText({98, 58}), QString("x 0　y 0　R 0　G 0　B 7"));
    }

    // The region is one of the picture, however it is shown; its histogram is the one
    // that is counted.
    void marksARegion()
    {
        QImage image(20, 10, QImage::Format_RGB32);
        image.fill(qRgb(10, 20, 30));
        for (int y = 2; y < 6; ++y)
            for (int x = 4; x < 8; ++x)
                image.setPixel(x, y, qRgb(255, 255, 255));
        QWidget window;
        window.resize(600, 300);
        auto *viewer = new ImageViewer(&window);
        viewer->resize(240, 120);
        auto *pane = new HistogramPane(viewer, &window);
        pane->resize(500, 100);
        pane->move(0, 150);
        window.show();
        QCOMPARE(pane->texts(), QStringList{QStringLiteral("还没有图像")});
        viewer->setFitted(true); // twelve times as large
        viewer->setMirror(ImageViewer::LeftRight);
        viewer->setImage(0, QPixmap::fromImage(image));
        QCOMPARE(pane->texts().at(0), QStringLiteral("整幅图像 20 × 10"));
        QCOMPARE(pane->texts().at(1), QStringLiteral("像素数: 200"));
        QCOMPARE(pane->texts().at(2), QStringLiteral("R 平均: 29.6"));
        drag(viewer, {185, 29}, {149, 65}, Qt::ShiftModifier); // mirrored: from x 4 to 7
        QCOMPARE(viewer->region(), QRect(4, 2, 4, 4));
        QCOMPARE(pane->texts().at(0), QStringLiteral("区域 x 4　y 2　4 × 4"));
        QCOMPARE(pane->texts().at(5), QStringLiteral("亮度 平均: 255.0"));
        const QImage page = viewer->grab().toImage();
        QVERIFY(page.pixelColor(144, 30) != page.pixelColor(142, 30)); // the frame's side
        int dark = 0;
        for (int y = 24; y < 72; ++y)
            dark += page.pixelColor(144, y) == Qt::black ? 1 : 0;
        QVERIFY(dark > 5 && dark < 48);
        viewer->setImage(0, QPixmap::fromImage(image.copy(0, 0, 6, 4))); // of which some is left
        QCOMPARE(viewer->region(), QRect(4, 2, 2, 2));
        viewer->setImage(0, QPixmap::fromImage(image.copy(0, 0, 1, 1)));
        QVERIFY(viewer->region().isNull());
        QCOMPARE(pane->texts().at(0), QStringLiteral("整幅图像 1 × 1"));
        viewer->setImage(0, QPixmap::fromImage(image));
        drag(viewer, {-50, 29}, {900, 900}, Qt::ShiftModifier); // beyond its sides
        QCOMPARE(viewer->region(), QRect(0, 2, 20, 8));
        QTest::keyClick(viewer, Qt::Key_Escape);
        QVERIFY(viewer->region().isNull());
        // Of two pictures the one with the region, else the first.
        viewer->setDisplayCount(2);
        viewer->setImage(1, QPixmap::fromImage(image.copy(4, 2, 4, 4)));
        QCOMPARE(pane->texts().at(0), QStringLiteral("整幅图像 20 × 10"));
        drag(viewer, {130, 20}, {230, 80}, Qt::ShiftModifier);
        QCOMPARE(pane->texts().at(3), QStringLiteral("G 平均: 255.0"));
        viewer->setDisplayCount(1);
        QCOMPARE(pane->texts().at(0), QStringLiteral("整幅图像 20 × 10"));
        drag(viewer, {20, 20}, {90, 80}, Qt::ShiftModifier);
        QTest::mouseDClick(viewer, Qt::LeftButton, {}, {95, 60});
        QVERIFY(viewer->region().isNull());
    }

    void remembersTheChoices()
    {
        Settings::instance() = Settings();
        ImageViewer viewer;
        viewer.resize(200, 120);
        viewer.setImage(0, QPixmap(20, 10));
        CameraViewMenu menu(&viewer);
        menu.findChild<QAction *>(QString("actionFitPicture"))->trigger();
        menu.findChild<QAction *>(QString("actionMirrorUpDown"))->trigger();
        QVERIFY(Settings::instance().cameraPage.zoom == 1 && Settings::instance().cameraPage.mirror == 2);
        QVERIFY(viewer.pixelText({0, 15}).startsWith("x 0　y 9")); // fitted: from (0, 10) on
        menu.findChild<QAction *>(QString("actionFitPicture"))->trigger();
        QVERIFY(viewer.pixelText({0, 15}).isEmpty());
        const QSignalSpy wanted(&menu, &CameraViewMenu::histogramWanted);
        menu.findChild<QAction *>(QString("actionHistogram"))->trigger();
        QVERIFY(Settings::instance().cameraPage.histogram && wanted.last().at(0).toBool());
    }

private:
    static void wheel(QWidget *widget, const QPoint &position, int steps)
    {
        QWheelEvent event(position, widget->mapToGlobal(position), {}, {0, 120 * steps}, Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
    }
    static void drag(QWidget *widget, const QPoint &from, const QPoint &to,
                     Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mousePress(widget, Qt::LeftButton, modifiers, from);
        QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, modifiers);
        QApplication::sendEvent(widget, &move);
        QTest::mouseRelease(widget, Qt::LeftButton, {}, to);
    }
};

QTEST_MAIN(TestImageViewer)
#include "test_imageviewer.moc"
