#include "pidcurvelist.h"
#include "pidplot.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTabBar>
#include <QTest>
#include <QTextCodec>
#include <QTimer>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>

namespace {

const auto kPidMode = QStringList{QStringLiteral("--mode"), QStringLiteral("pid")};
const QByteArray kStartCh2 = QByteArray::fromHex("4f52564e020b0000001264");
const QByteArray kStopCh2 = QByteArray::fromHex("4f52564e020b0000001365");

PidPlot *chart(Stage &stage)
{
    return stage.find<PidPlot>("pidPlot");
}

QSharedPointer<QCPGraphDataContainer> points(Stage &stage, int graph)
{
    return chart(stage)->graph(graph)->data();
}

QCPRange valuesOf(Stage &stage, int graph)
{
    bool found = false;
    return points(stage, graph)->valueRange(found);
}

// The value that a curve has now; while it has none, no comparison with it is true.
double latest(Stage &stage, int graph)
{
    const auto data = points(stage, graph);
    return data->isEmpty() ? qQNaN() : (data->constEnd() - 1)->value;
}

QString text(Stage &stage, const char *field)
{
    return stage.find<QLineEdit>(field)->text();
}

bool typeAndReturn(Stage &stage, const char *field, const QString &value)
{
    return UserHand::typeInto(stage.find<QLineEdit>(field), value) && UserHand::press(Qt::Key_Return);
}

bool openPidPort(Stage &stage, const BoardProcess &board)
{
    auto *tabs = stage.find<QTabBar>("toolTabs");
    return UserHand::clickAt(tabs, tabs->tabRect(3).center()) &&
           UserHand::choose(stage.find<QComboBox>("comboPidPort"),
                            board.port() + QStringLiteral(" 虚拟串口")) &&
           UserHand::click(stage.find<QWidget>("btnPidOpen")) &&
           stage.waitForNotice(QStringLiteral("串口[%1]打开成功!").arg(board.port()), Notice::Information);
}

// Plugs a board in and opens its port, chooses channel 2 and starts it at 500
// with an empty chart: what is waited for must come from this board.
bool runLoop(Stage &stage, BoardProcess &board, const QStringList &options = {})
{
    return stage.plugIn(board, kPidMode + options) && openPidPort(stage, board) &&
           UserHand::choose(stage.find<QComboBox>("comboPidChannel"), QStringLiteral("CH2")) &&
           typeAndReturn(stage, "editTarget", QStringLiteral("500")) &&
           UserHand::click(stage.find<QWidget>("btnPidClear")) &&
           UserHand::click(stage.find<QWidget>("btnPidStart"));
}

void turnWheel(PidPlot *plot, int steps)
{
    const QPoint place = plot->rect().center();
    QWheelEvent event(place, plot->mapToGlobal(place), {}, {0, 120 * steps}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(plot, &event);
}

} // namespace

void PidTour::tunesALoop()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(runLoop(stage(), board, {QStringLiteral("--noise"), QStringLiteral("0")}));
    // The board reported its gains when the port was opened: "0.2" where channel 2
    // had been chosen by then, "0.200" otherwise.
    WAIT_EQUAL(text(stage(), "editP").toDouble(), 0.2);
    QCOMPARE(text(stage(), "editPeriod"), QStringLiteral("10"));
    QCOMPARE(stage().find<QPushButton>("btnPidStart")->text(), QStringLiteral("停止"));

    // The step response: from rest to the target, which is plotted beside it.
    WAIT_FOR(latest(stage(), 6) >= 450);
    QVERIFY(points(stage(), 6)->constBegin()->value < 50);
    QCOMPARE(valuesOf(stage(), 1).lower, 500.0);
    QCOMPARE(valuesOf(stage(), 1).upper, 500.0);
    const auto *value = stage().find<QLabel>("curveValue6");
    WAIT_FOR(value->text().toInt() >= 450);

    // More damping and gain, sent with Return and shown as the board took them.
    QVERIFY(typeAndReturn(stage(), "editP", QStringLiteral("2")));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editD"), QStringLiteral("0.25")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSendPid")));
    WAIT_EQUAL(text(stage(), "editD"), QStringLiteral("0.25"));
    QVERIFY(typeAndReturn(stage(), "editPeriod", QStringLiteral("5")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSendPeriod")));
    QVERIFY(typeAndReturn(stage(), "editTarget", QStringLiteral("-300")));
    WAIT_FOR(qAbs(latest(stage(), 6) + 300) < 5);

    // Stopped and closed, nothing moves any more; the exported file holds the run.
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidStart")));
    QCOMPARE(stage().find<QPushButton>("btnPidStart")->text(), QStringLiteral("启动"));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidOpen")));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口[COM6]已关闭!!"), Notice::Information));
    const QCPRange shown = valuesOf(stage(), 6);
    const QString name = stage().file(QStringLiteral("运行.csv"));
    Stage::answerFileDialogs(name);
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidExport")));
    QVERIFY(stage().waitForNotice(QStringLiteral("文件已导出：") + name, Notice::Information));

    const QString content =
        QTextCodec::codecForName("GB18030")->toUnicode(stage().content(QStringLiteral("运行.csv")));
    QVERIFY(
        content.startsWith(QStringLiteral("PID调试数据\n通道 1 数据如下：\n序号,实际值,目标值,差值\n\n\n")));
    const QStringList rows = content.section(QStringLiteral("通道 2 数据如下：\n"), 1)
                                 .section(QStringLiteral("\n\n\n"), 0, 0)
                                 .split(QLatin1Char('\n'));
    QCOMPARE(rows.size() - 1, points(stage(), 1)->size());
    double lowest = 1e9;
    double highest = -1e9;
    bool newTarget = false;
    for (const QString &row : rows.mid(1)) {
        const QStringList cells = row.split(QLatin1Char(','));
        QCOMPARE(cells.size(), 4);
        QCOMPARE(cells[1].toDouble() - cells[2].toDouble(), cells[3].toDouble());
        lowest = qMin(lowest, cells[1].toDouble());
        highest = qMax(highest, cells[1].toDouble());
        newTarget = newTarget || cells[2] == QLatin1String("-300");
    }
    QVERIFY(newTarget);
    QCOMPARE(lowest, shown.lower);
    QCOMPARE(highest, shown.upper);
}

void PidTour::holdsTheViewAndReturns()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(runLoop(stage(), board));
    PidPlot *plot = chart(stage());
    auto *live = stage().find<QPushButton>("btnPidLive");
    WAIT_FOR(points(stage(), 6)->size() > 50);
    QVERIFY(!live->isVisible());

    // The read-out names the shown curves that have values.
    const QPoint place = plot->axisRect()->rect().center();
    QTest::mouseMove(plot->window()->windowHandle(), plot->mapTo(plot->window(), place - QPoint(5, 5)));
    QTest::mouseMove(plot->window()->windowHandle(), plot->mapTo(plot->window(), place));
    WAIT_FOR(QToolTip::text().contains(QStringLiteral("CH2 实际值")));
    QVERIFY(QToolTip::text().contains(QStringLiteral("500")));
    QVERIFY(!QToolTip::text().contains(QStringLiteral("CH1")));

    // Dragged, the chart stands still, points and all.
    QWindow *window = plot->window()->windowHandle();
    const QPoint from = plot->mapTo(plot->window(), place);
    QTest::mousePress(window, Qt::LeftButton, {}, from);
    QTest::mouseMove(window, from + QPoint(40, 10));
    QTest::mouseMove(window, from + QPoint(80, 20));
    QTest::mouseRelease(window, Qt::LeftButton, {}, from + QPoint(80, 20));
    WAIT_FOR(live->isVisible());
    const QCPRange held = plot->xAxis->range();
    const int count = points(stage(), 6)->size();
    auto *value = stage().find<QLabel>("curveValue6");
    const QString before = value->text();
    WAIT_FOR(value->text() != before); // while values go on
    QCOMPARE(plot->xAxis->range(), held);
    QCOMPARE(points(stage(), 6)->size(), count);
    QVERIFY(UserHand::click(live));
    WAIT_FOR(plot->xAxis->range().upper > held.upper && points(stage(), 6)->size() > count);
    QVERIFY(!live->isVisible());

    // A right click turns the wheel to the value axis, which then stays as it
    // was zoomed while time goes on.
    auto *zoom = stage().find<QComboBox>("comboPidZoom");
    QTest::mouseClick(window, Qt::RightButton, {}, from);
    WAIT_EQUAL(zoom->currentText(), QStringLiteral("Y轴缩放"));
    turnWheel(plot, -2);
    const QCPRange fixed = plot->yAxis->range();
    const double right = plot->xAxis->range().upper;
    WAIT_FOR(plot->xAxis->range().upper > right + 0.5);
    QCOMPARE(plot->yAxis->range(), fixed);
    QTest::mouseDClick(window, Qt::LeftButton, {}, from);
    WAIT_FOR(plot->yAxis->range() != fixed);
    QVERIFY(!live->isVisible());
    QTest::mouseClick(window, Qt::RightButton, {}, from);
    WAIT_EQUAL(zoom->currentText(), QStringLiteral("X轴缩放"));
}

void PidTour::choosesCurves()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(runLoop(stage(), board));
    WAIT_FOR(points(stage(), 6)->size() > 10);
    QVERIFY(UserHand::click(stage().find<QWidget>("checkCurve1")));
    QVERIFY(!chart(stage())->graph(1)->visible());

    // A colour from the list, which both clearing and hiding leave alone.
    QTimer look;
    connect(&look, &QTimer::timeout, this, [&look] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        look.stop();
        QAction *red = menu->actions().at(2);
        QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(red).center());
    });
    look.start(20);
    QVERIFY(UserHand::click(stage().find<QWidget>("curveColour6")));
    WAIT_EQUAL(chart(stage())->graph(6)->pen().color(), QColor(0xe5, 0x48, 0x4d));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidStart"))); // stop
    WAIT_EQUAL(stage().find<QPushButton>("btnPidStart")->text(), QStringLiteral("启动"));
    // The board may still have sent a value before it heard of the end.
    WAIT_FOR(UserHand::click(stage().find<QWidget>("btnPidClear")) && points(stage(), 6)->isEmpty());
    QCOMPARE(chart(stage())->graph(6)->pen().color(), QColor(0xe5, 0x48, 0x4d));
    QVERIFY(!chart(stage())->graph(1)->visible());
}

void PidTour::livesWithBadBoards_data()
{
    QTest::addColumn<QString>("fault");
    for (const char *fault : {"garbage", "glued", "cut", "flood", "silence"})
        QTest::newRow(fault) << QString::fromLatin1(fault);
}

void PidTour::livesWithBadBoards()
{
    QFETCH(QString, fault);
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(runLoop(stage(), board, {QStringLiteral("--pid-fault"), fault}));
    WAIT_FOR(valuesOf(stage(), 6).upper >= 300);
    QVERIFY(valuesOf(stage(), 6).upper < 2000 && valuesOf(stage(), 6).lower > -2000); // no false values
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidStart")));
    WAIT_EQUAL(stage().find<QPushButton>("btnPidStart")->text(), QStringLiteral("启动"));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidOpen")));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口[COM6]已关闭!!"), Notice::Information));
}

void PidTour::noticesAResetBoard()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(runLoop(stage(), board, {QStringLiteral("--pid-fault"), QStringLiteral("reset")}));
    WAIT_FOR(points(stage(), 6)->size() > 10);
    // After the crash it says that it stands still, with its first target.
    WAIT_EQUAL(stage().find<QPushButton>("btnPidStart")->text(), QStringLiteral("启动"));
    WAIT_EQUAL(text(stage(), "editTarget"), QStringLiteral("0"));
    const int before = points(stage(), 6)->size();
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidStart")));
    WAIT_FOR(points(stage(), 6)->size() != before);
}

void PidTour::noticesAPulledBoard()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(runLoop(stage(), board, {QStringLiteral("--unplug-after"), QStringLiteral("2500")}));
    QVERIFY(stage().waitForNotice(QStringLiteral("当前串口已拔出，请重新打开!"), Notice::Error));
    QCOMPARE(stage().find<QPushButton>("btnPidOpen")->text(), QStringLiteral("打开串口"));
    QCOMPARE(stage().find<QPushButton>("btnPidStart")->text(), QStringLiteral("启动"));
    QVERIFY(stage().find<QComboBox>("comboPidPort")->isEnabled());
}

void PidTour::leavesAPortThatTheSerialPageHolds()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, kPidMode));
    QVERIFY(stage().openPort(board)); // the serial page's
    auto *tabs = stage().find<QTabBar>("toolTabs");
    QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(3).center()));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboPidPort"), QStringLiteral("COM6 虚拟串口")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnPidOpen")));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口正被其他程序占用，请关闭该程序后重试"), Notice::Error));
    QCOMPARE(stage().find<QPushButton>("btnPidOpen")->text(), QStringLiteral("打开串口"));
}

void PidTour::stopsTheMotorWhenQuitting()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    const QString record = stage().file(QStringLiteral("sent.bin"));
    QVERIFY(runLoop(stage(), board, {QStringLiteral("--record"), record}));
    WAIT_FOR(points(stage(), 6)->size() > 10);
    QVERIFY(stage().content(QStringLiteral("sent.bin")).endsWith(kStartCh2));
    QVERIFY(stage().window().prepareToQuit());
    WAIT_FOR(stage().content(QStringLiteral("sent.bin")).endsWith(kStartCh2 + kStopCh2));
}
