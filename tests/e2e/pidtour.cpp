#include "pidplot.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTextCodec>
#include <QToolTip>

namespace {

constexpr int kPid = 3; // the tab

QSharedPointer<QCPGraphDataContainer> points(Stage &stage, int graph)
{
    return stage.find<PidPlot>("pidPlot")->graph(graph)->data();
}

// The value that a curve has now; while it has none, no comparison with it is true.
double latest(Stage &stage, int graph)
{
    const auto data = points(stage, graph);
    return data->isEmpty() ? qQNaN() : (data->constEnd() - 1)->value;
}

bool openPort(Stage &stage, const BoardProcess &board)
{
    return stage.showTool(kPid) &&
           UserHand::choose(stage.find<QComboBox>("comboPidPort"), board.port() + " 虚拟串口") &&
           UserHand::click(stage.find<QWidget>("btnPidOpen"));
}

// Opens the board's port and starts channel 2 at 500 with an empty chart.
bool runLoop(Stage &stage, BoardProcess &board, const QStringList &options = {})
{
    return stage.plugIn(board, QStringList{"--mode", "pid"} + options) && openPort(stage, board) &&
           stage.waitForNotice(QString("串口[%1]打开成功!").arg(board.port()), Notice::Information) &&
           UserHand::choose(stage.find<QComboBox>("comboPidChannel"), "CH2") &&
           UserHand::typeInto(stage.find<QWidget>("editTarget"), "500") && UserHand::press(Qt::Key_Return) &&
           UserHand::click(stage.find<QWidget>("btnPidClear")) &&
           UserHand::click(stage.find<QWidget>("btnPidStart"));
}

} // namespace

void PidTour::tunesALoop()
{
    BoardProcess board("COM6", stage().portsFolder());
    QVERIFY(runLoop(stage(), board, {"--noise", "0"}));
    WAIT_EQUAL(find<QLineEdit>("editP")->text().toDouble(), 0.2); // the board's
    WAIT_EQUAL(find<QPushButton>("btnPidStart")->text(), QString("停止"));
    // The step response: from rest to the target, which is plotted beside it.
    WAIT_FOR(latest(stage(), 6) >= 450);
    QVERIFY(points(stage(), 6)->constBegin()->value < 50);
    QCOMPARE(latest(stage(), 1), 500.0);
    WAIT_FOR(textOf("curveValue6").toInt() >= 450);

    QVERIFY(typeInto("editP", "2"));
    QVERIFY(typeInto("editD", "0.25"));
    QVERIFY(click("btnSendPid"));
    WAIT_EQUAL(find<QLineEdit>("editD")->text(), QString("0.25"));
    QVERIFY(typeInto("editTarget", "-300"));
    QVERIFY(UserHand::press(Qt::Key_Return));
    WAIT_FOR(qAbs(latest(stage(), 6) + 300) < 5);
    QVERIFY(click("checkCurve1"));
    QVERIFY(!find<PidPlot>("pidPlot")->graph(1)->visible());

    QVERIFY(click("btnPidStart"));
    WAIT_EQUAL(find<QPushButton>("btnPidStart")->text(), QString("启动"));
    QVERIFY(click("btnPidOpen"));
    QVERIFY(stage().waitForNotice("串口[COM6]已关闭!!", Notice::Information));
    const QString name = stage().file("运行.csv");
    Stage::answerFileDialogs(name);
    QVERIFY(click("btnPidExport"));
    QVERIFY(stage().waitForNotice("文件已导出：" + name, Notice::Information));
    const QString content = QTextCodec::codecForName("GB18030")->toUnicode(stage().content("运行.csv"));
    QVERIFY(content.startsWith("PID调试数据\n通道 1 数据如下：\n序号,实际值,目标值,差值\n\n\n"));
    const QString rows = content.section("通道 2 数据如下：\n", 1).section("\n\n\n", 0, 0);
    WAIT_EQUAL(points(stage(), 1)->size(), rows.count('\n')); // at the next picture
    QVERIFY(rows.contains(",-300,"));
}

void PidTour::holdsTheViewAndReturns()
{
    BoardProcess board("COM6", stage().portsFolder());
    QVERIFY(runLoop(stage(), board));
    auto *plot = find<PidPlot>("pidPlot");
    WAIT_FOR(points(stage(), 6)->size() > 50);
    QVERIFY(!find("btnPidLive")->isVisible());

    // The read-out names the shown curves that have values.
    QWindow *window = plot->window()->windowHandle();
    const QPoint from = plot->mapTo(plot->window(), plot->axisRect()->rect().center());
    QTest::mouseMove(window, from - QPoint(5, 5));
    QTest::mouseMove(window, from);
    WAIT_FOR(QToolTip::text().contains("CH2 实际值"));
    QVERIFY(!QToolTip::text().contains("CH1"));

    // Dragged, the chart stands still, points and all, while values go on.
    QTest::mousePress(window, Qt::LeftButton, {}, from);
    QTest::mouseMove(window, from + QPoint(40, 10));
    QTest::mouseMove(window, from + QPoint(80, 20));
    QTest::mouseRelease(window, Qt::LeftButton, {}, from + QPoint(80, 20));
    WAIT_FOR(find("btnPidLive")->isVisible());
    const QCPRange held = plot->xAxis->range();
    const int count = points(stage(), 6)->size();
    const QString before = textOf("curveValue6");
    WAIT_FOR(textOf("curveValue6") != before);
    QCOMPARE(plot->xAxis->range(), held);
    QCOMPARE(points(stage(), 6)->size(), count);
    QVERIFY(click("btnPidLive"));
    WAIT_FOR(plot->xAxis->range().upper > held.upper && points(stage(), 6)->size() > count);
    QTest::mouseClick(window, Qt::RightButton, {}, from);
    WAIT_EQUAL(find<QComboBox>("comboPidZoom")->currentText(), QString("Y轴缩放"));
}

// Told by the wire, when the window has agreed to end.
void PidTour::stopsTheMotorWhenQuitting()
{
    const QByteArray start = QByteArray::fromHex("4f52564e020b0000001264");
    const QByteArray stop = QByteArray::fromHex("4f52564e020b0000001365");
    BoardProcess board("COM6", stage().portsFolder());
    QVERIFY(runLoop(stage(), board, {"--record", stage().file("sent.bin")}));
    WAIT_FOR(stage().content("sent.bin").endsWith(start));
    QVERIFY(stage().window().prepareToQuit());
    WAIT_FOR(stage().content("sent.bin").endsWith(start + stop));
}
