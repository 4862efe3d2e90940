// The frame that the program draws itself: which point grabs which edge, what
// a drag makes of the rectangle, and the same with a real window and mouse.

#include "framegeometry.h"
#include "framelesshelper.h"
#include "qtmainwindow.h"
#include "qttitlebar.h"

#include <QtTest>
#include <QtWidgets>

class Window : public QtMainWindow
{
public:
    using QtMainWindow::attachTitleBar;
};

class FrameTest : public QObject
{
    Q_OBJECT

private slots:
    void edgesOfPoints()
    {
        // Points of 400 x 300.
        const std::tuple<QPoint, Qt::Edges, Qt::CursorShape> rows[] = {
            {{4, 150}, Qt::LeftEdge, Qt::SizeHorCursor},
            {{5, 150}, {}, Qt::ArrowCursor},
            {{395, 150}, Qt::RightEdge, Qt::SizeHorCursor},
            {{394, 150}, {}, Qt::ArrowCursor},
            {{200, 4}, Qt::TopEdge, Qt::SizeVerCursor},
            {{200, 295}, Qt::BottomEdge, Qt::SizeVerCursor},
            {{200, 0}, Qt::TopEdge, Qt::SizeVerCursor},
            {{389, 2}, Qt::TopEdge, Qt::SizeVerCursor},
            {{390, 2}, Qt::RightEdge | Qt::TopEdge, Qt::SizeBDiagCursor},
            {{9, 2}, Qt::LeftEdge | Qt::TopEdge, Qt::SizeFDiagCursor}, // reaches along the top
            {{10, 2}, Qt::TopEdge, Qt::SizeVerCursor},
            {{1, 292}, Qt::LeftEdge | Qt::BottomEdge, Qt::SizeBDiagCursor},
            {{398, 298}, Qt::RightEdge | Qt::BottomEdge, Qt::SizeFDiagCursor},
            {{400, 150}, {}, Qt::ArrowCursor}};
        for (const auto &[point, edges, cursor] : rows) {
            const Qt::Edges found = FrameGeometry::edgesAt(point, {400, 300}, 5);
            QCOMPARE(int(found), int(edges));
            QCOMPARE(FrameGeometry::cursorFor(found), cursor);
        }
    }

    void rectangles()
    {
        const auto resized = [](Qt::Edges edges, const QPoint &delta) {
            return FrameGeometry::resized({100, 100, 400, 300}, edges, delta, {200, 150}, {1000, 1000});
        };
        QCOMPARE(resized(Qt::RightEdge, {30, 99}), QRect(100, 100, 430, 300));
        QCOMPARE(resized(Qt::TopEdge | Qt::LeftEdge, {-10, -20}), QRect(90, 80, 410, 320));
        // At the smallest size the other edge must not be pushed along.
        QCOMPARE(resized(Qt::LeftEdge, {900, 0}), QRect(300, 100, 200, 300));
        QCOMPARE(resized(Qt::TopEdge, {0, 900}), QRect(100, 250, 400, 150));
        QCOMPARE(resized(Qt::BottomEdge | Qt::RightEdge, {5000, -10}), QRect(100, 100, 1000, 290));

        const QRect screen(0, 0, 1000, 800);
        QCOMPARE(FrameGeometry::keptInside({950, 790, 100, 50}, screen), QRect(900, 750, 100, 50));
        QCOMPARE(FrameGeometry::keptInside({-20, -5, 100, 50}, screen), QRect(0, 0, 100, 50));
        QCOMPARE(FrameGeometry::keptInside({-5, 10, 2000, 50}, screen).topLeft(), QPoint(0, 10));
        QCOMPARE(FrameGeometry::pulledOff({500, 400}, screen, {750, 10}), QRect(375, 0, 500, 400));
    }

    void init()
    {
        m_window = std::make_unique<Window>();
        auto *layout = new QVBoxLayout(m_window.get());
        layout->setContentsMargins(1, 1, 1, 1);
        layout->setSpacing(0);
        m_bar = new QtTitleBar(QtTitleBar::MainWindowButtons, m_window.get());
        layout->addWidget(m_bar);
        layout->addWidget(new QWidget, 1);
        m_window->attachTitleBar(m_bar);
        m_window->setGeometry(100, 80, 820, 520);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get(), 30000));
    }

#ifndef Q_OS_WIN // where the system moves and resizes the window
    void resizesAndMovesByMouse()
    {
        QCOMPARE(dragged({818, 300}, {40, 7}), QRect(100, 80, 860, 520)); // right edge, over a child
        QCOMPARE(dragged({1, 1}, {-20, -10}), QRect(80, 70, 880, 530));   // corner, over the title bar
        QCOMPARE(dragged({1, 300}, {500, 0}), QRect(160, 70, 800, 530));  // never below 800 x 500
        const QRect moved(195, 95, 800, 530);
        QCOMPARE(dragged({300, 20}, {35, 25}), moved); // title bar
        QCOMPARE(dragged({300, 20}, {QGuiApplication::styleHints()->startDragDistance() - 1, 0}), moved);
        QCOMPARE(dragged({300, 200}, {50, 50}), moved); // the middle does neither
    }
#endif

    void showsTheCursorOfAnEdge()
    {
        const auto cursor = [this](const QPoint &point) {
            QTest::mouseMove(m_window->windowHandle(), point);
            return QApplication::overrideCursor() ? QApplication::overrideCursor()->shape() : Qt::ArrowCursor;
        };
        QCOMPARE(cursor({2, 250}), Qt::SizeHorCursor);
        QCOMPARE(cursor({817, 517}), Qt::SizeFDiagCursor);
        QCOMPARE(cursor({400, 250}), Qt::ArrowCursor);
        QCOMPARE(cursor({2, 250}), Qt::SizeHorCursor);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(m_window->windowHandle(), &leave);
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(cursor({2, 249}), Qt::SizeHorCursor);
        m_window->frame()->setResizable(false);
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(cursor({2, 251}), Qt::ArrowCursor);
    }

    void maximizesAndRestores()
    {
        const QRect normal = m_window->geometry();
        auto *maximize = button("btnMaximize");
        QTest::mouseDClick(m_bar, Qt::LeftButton, {}, {300, 15});
        QTRY_VERIFY_WITH_TIMEOUT(m_window->frame()->isMaximized(), 30000);
        m_window->frame()->sltFillWorkArea();
        const QRect screen = m_window->screen()->availableGeometry();
        QCOMPARE(m_window->geometry(), screen);
        QCOMPARE(maximize->toolTip(), QString("还原"));
        QCOMPARE(maximize->accessibleName(), QString("还原"));
        QCOMPARE(dragged({2, 300}, {60, 0}), screen); // it has no edges
        maximize->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_window->geometry(), normal, 30000);
        QCOMPARE(maximize->toolTip(), QString("最大化"));
        // Pulled off the top it gets its size back under the pointer.
        maximize->click();
        QTRY_VERIFY_WITH_TIMEOUT(m_window->frame()->isMaximized(), 30000);
        dragged({300, 20}, {40, 60});
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->frame()->isMaximized(), 30000);
        QCOMPARE(m_window->size(), normal.size());
        QCOMPARE(m_window->windowHandle()->windowState(), Qt::WindowNoState);
        m_window->resize(850, 560);
        m_window->showMaximized(); // as a window manager does
        QTRY_COMPARE(maximize->toolTip(), QString("还原"));
        dragged({300, 20}, {40, 60});
        QCOMPARE(m_window->size(), QSize(850, 560));

        m_bar->setStyleSheet("QtTitleBar {background-color: #112233;}");
        QCOMPARE(m_window->grab().toImage().pixelColor(300, 3), QColor("#112233"));
        const int width = m_bar->minimumSizeHint().width();
        m_bar->setTitle(QString(1000, 'x'));
        QCOMPARE(m_bar->minimumSizeHint().width(), width);

        const QSignalSpy closing(m_bar, &QtTitleBar::signalCloseWindow);
        button("btnClose")->click(); // leaves the decision to its window
        QVERIFY(closing.count() == 1 && m_window->isVisible());
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {},
                          button("btnMinimize")->mapTo(m_window.get(), {9, 9}));
        QTRY_VERIFY_WITH_TIMEOUT(m_window->isMinimized(), 30000);
    }

private:
    QToolButton *button(const char *name)
    {
        return m_window->findChild<QToolButton *>(name);
    }

    QRect dragged(const QPoint &from, const QPoint &delta)
    {
        QWindow *handle = m_window->windowHandle();
        const QPoint start = handle->mapToGlobal(from);
        const auto send = [&](QEvent::Type type, const QPoint &global, Qt::MouseButton button) {
            QMouseEvent event(type, m_window->mapFromGlobal(global), global, button,
                              type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(handle, &event);
        };
        send(QEvent::MouseButtonPress, start, Qt::LeftButton);
        send(QEvent::MouseMove, start + delta / 2, Qt::NoButton);
        send(QEvent::MouseMove, start + delta, Qt::NoButton);
        send(QEvent::MouseButtonRelease, start + delta, Qt::LeftButton);
        return m_window->geometry();
    }

    std::unique_ptr<Window> m_window;
    QtTitleBar *m_bar = nullptr;
};

QTEST_MAIN(FrameTest)
#include "test_frame.moc"
