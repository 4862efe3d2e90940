// The frame that the program draws itself: which point grabs which edge, what
// a drag makes of the rectangle, and the same with a real window and mouse.

#include "framegeometry.h"
#include "framelesshelper.h"
#include "qtmainwindow.h"
#include "qttitlebar.h"

#include <QApplication>
#include <QScreen>
#include <QSignalSpy>
#include <QStyleHints>
#include <QTest>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>

namespace {

class Window : public QtMainWindow
{
public:
    Window()
    {
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(1, 1, 1, 1);
        layout->setSpacing(0);
        bar = new QtTitleBar(QtTitleBar::MainWindowButtons, this);
        layout->addWidget(bar);
        layout->addWidget(new QWidget, 1);
        attachTitleBar(bar);
        setGeometry(100, 80, 820, 520);
    }
    QtTitleBar *bar;
};

void drag(QWidget *window, const QPoint &from, const QPoint &delta)
{
    QWindow *handle = window->windowHandle();
    const QPoint start = handle->mapToGlobal(from);
    const auto send = [&](QEvent::Type type, const QPoint &global, Qt::MouseButton button,
                          Qt::MouseButtons held) {
        QMouseEvent event(type, window->mapFromGlobal(global), global, button, held, Qt::NoModifier);
        QCoreApplication::sendEvent(handle, &event);
    };
    send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, start + delta / 2, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseMove, start + delta, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, start + delta, Qt::LeftButton, Qt::NoButton);
}

} // namespace

class FrameTest : public QObject
{
    Q_OBJECT

private slots:
    void edgesOfPoints_data()
    {
        QTest::addColumn<QPoint>("point");
        QTest::addColumn<int>("edges");
        QTest::addColumn<int>("cursor");
        const int left = Qt::LeftEdge, right = Qt::RightEdge, top = Qt::TopEdge, bottom = Qt::BottomEdge;
        QTest::newRow("middle") << QPoint(200, 150) << 0 << int(Qt::ArrowCursor);
        QTest::newRow("left") << QPoint(0, 150) << left << int(Qt::SizeHorCursor);
        QTest::newRow("last pixel of left") << QPoint(4, 150) << left << int(Qt::SizeHorCursor);
        QTest::newRow("first pixel inside") << QPoint(5, 150) << 0 << int(Qt::ArrowCursor);
        QTest::newRow("right") << QPoint(399, 150) << right << int(Qt::SizeHorCursor);
        QTest::newRow("first pixel of right") << QPoint(395, 150) << right << int(Qt::SizeHorCursor);
        QTest::newRow("before right") << QPoint(394, 150) << 0 << int(Qt::ArrowCursor);
        QTest::newRow("top") << QPoint(200, 4) << top << int(Qt::SizeVerCursor);
        QTest::newRow("bottom") << QPoint(200, 295) << bottom << int(Qt::SizeVerCursor);
        QTest::newRow("top left") << QPoint(0, 0) << (left | top) << int(Qt::SizeFDiagCursor);
        QTest::newRow("top left along the top") << QPoint(9, 2) << (left | top) << int(Qt::SizeFDiagCursor);
        QTest::newRow("top right") << QPoint(399, 0) << (right | top) << int(Qt::SizeBDiagCursor);
        QTest::newRow("bottom left") << QPoint(1, 292) << (left | bottom) << int(Qt::SizeBDiagCursor);
        QTest::newRow("bottom right") << QPoint(398, 298) << (right | bottom) << int(Qt::SizeFDiagCursor);
        QTest::newRow("outside") << QPoint(400, 150) << 0 << int(Qt::ArrowCursor);
        QTest::newRow("negative") << QPoint(-1, -1) << 0 << int(Qt::ArrowCursor);
    }
    void edgesOfPoints()
    {
        QFETCH(QPoint, point);
        QFETCH(int, edges);
        QFETCH(int, cursor);
        const Qt::Edges found = FrameGeometry::edgesAt(point, {400, 300}, 5);
        QCOMPARE(int(found), edges);
        QCOMPARE(int(FrameGeometry::cursorFor(found)), cursor);
    }

    void resizedRectangles()
    {
        const QRect start(100, 100, 400, 300);
        const QSize least(200, 150), most(1000, 1000);
        const auto resized = [&](Qt::Edges edges, const QPoint &delta) {
            return FrameGeometry::resized(start, edges, delta, least, most);
        };
        QCOMPARE(resized(Qt::RightEdge, {30, 99}), QRect(100, 100, 430, 300));
        QCOMPARE(resized(Qt::LeftEdge, {30, 99}), QRect(130, 100, 370, 300));
        QCOMPARE(resized(Qt::TopEdge | Qt::LeftEdge, {-10, -20}), QRect(90, 80, 410, 320));
        QCOMPARE(resized(Qt::BottomEdge | Qt::RightEdge, {-10, -20}), QRect(100, 100, 390, 280));
        // At the smallest size the other edge must not be pushed along.
        QCOMPARE(resized(Qt::LeftEdge, {900, 0}), QRect(300, 100, 200, 300));
        QCOMPARE(resized(Qt::TopEdge, {0, 900}), QRect(100, 250, 400, 150));
        QCOMPARE(resized(Qt::RightEdge, {5000, 0}).width(), 1000);
    }

    void placedRectangles()
    {
        const QRect screen(0, 0, 1000, 800);
        QCOMPARE(FrameGeometry::keptInside({950, 790, 100, 50}, screen), QRect(900, 750, 100, 50));
        QCOMPARE(FrameGeometry::keptInside({-20, -5, 100, 50}, screen), QRect(0, 0, 100, 50));
        QCOMPARE(FrameGeometry::keptInside({-5, 10, 2000, 50}, screen).topLeft(), QPoint(0, 10));
        const QRect off = FrameGeometry::pulledOff({500, 400}, screen, {750, 10});
        QCOMPARE(off, QRect(750 - 375, 0, 500, 400));
    }

    void resizesAndMovesByMouse()
    {
#ifdef Q_OS_WIN
        QSKIP("the system does it there");
#endif
        Window window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        QCOMPARE(window.geometry(), QRect(100, 80, 820, 520));

        drag(&window, {818, 300}, {40, 7}); // right edge, over a child
        QCOMPARE(window.geometry(), QRect(100, 80, 860, 520));
        drag(&window, {1, 1}, {-20, -10}); // top left corner, over the title bar
        QCOMPARE(window.geometry(), QRect(80, 70, 880, 530));
        drag(&window, {1, 300}, {500, 0}); // never below 800 x 500
        QCOMPARE(window.geometry(), QRect(160, 70, 800, 530));

        drag(&window, {300, 20}, {35, 25}); // title bar
        QCOMPARE(window.geometry(), QRect(195, 95, 800, 530));
        const int small = QGuiApplication::styleHints()->startDragDistance() - 1;
        drag(&window, {300, 20}, {small, 0});
        QCOMPARE(window.geometry(), QRect(195, 95, 800, 530));
        drag(&window, {300, 200}, {50, 50}); // the middle does neither
        QCOMPARE(window.geometry(), QRect(195, 95, 800, 530));
    }

    void showsResizeCursor()
    {
        Window window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        QTest::mouseMove(window.windowHandle(), {2, 250});
        QVERIFY(QApplication::overrideCursor());
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::SizeHorCursor);
        QTest::mouseMove(window.windowHandle(), {817, 517});
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::SizeFDiagCursor);
        QTest::mouseMove(window.windowHandle(), {400, 250});
        QVERIFY(!QApplication::overrideCursor());
        QTest::mouseMove(window.windowHandle(), {2, 250});
        QVERIFY(QApplication::overrideCursor());
        window.frame()->setResizable(false);
        QVERIFY(!QApplication::overrideCursor());
    }

    void maximisesAndRestores()
    {
        Window window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window, 30000));
        const QRect normal = window.geometry();
        auto *maximize = window.findChild<QToolButton *>(QStringLiteral("btnMaximize"));
        QCOMPARE(maximize->toolTip(), QStringLiteral("最大化"));

        QTest::mouseDClick(window.bar, Qt::LeftButton, {}, {300, 15});
        QTRY_VERIFY_WITH_TIMEOUT(window.frame()->isMaximized(), 30000);
        window.frame()->sltFillWorkArea();
        QCOMPARE(window.geometry(), window.screen()->availableGeometry());
        QCOMPARE(maximize->toolTip(), QStringLiteral("还原"));
        drag(&window, {2, 300}, {60, 0}); // a maximised window has no edges
        QCOMPARE(window.geometry(), window.screen()->availableGeometry());

        QTest::mouseClick(maximize, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!window.frame()->isMaximized(), 30000);
        QCOMPARE(window.geometry(), normal);
        QCOMPARE(maximize->toolTip(), QStringLiteral("最大化"));

        // Pulled off the top it gets its size back under the pointer.
        maximize->click();
        QTRY_VERIFY_WITH_TIMEOUT(window.frame()->isMaximized(), 30000);
        drag(&window, {300, 20}, {40, 60});
        QTRY_VERIFY_WITH_TIMEOUT(!window.frame()->isMaximized(), 30000);
        QCOMPARE(window.size(), normal.size());

        QTest::mouseClick(window.findChild<QToolButton *>(QStringLiteral("btnMinimize")), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(window.isMinimized(), 30000);
    }

    void closeButtonOnlyTells()
    {
        Window window;
        window.show();
        QSignalSpy spy(window.bar, &QtTitleBar::signalCloseWindow);
        QTest::mouseClick(window.findChild<QToolButton *>(QStringLiteral("btnClose")), Qt::LeftButton);
        QCOMPARE(spy.count(), 1);
        QVERIFY(window.isVisible());
    }
};

QTEST_MAIN(FrameTest)
#include "test_frame.moc"
