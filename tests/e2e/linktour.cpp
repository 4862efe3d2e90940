#include "imageviewer.h"
#include "qtterminalwidget.h"
#include "sharedrules.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QLabel>
#include <QTest>

namespace {

constexpr int kCamera = 1; // the tabs
constexpr int kNetwork = 2;

// A color bar in the viewer as the screen has it; bars are as wide as an
// eighth of the picture, which is centered at that place.
QColor onScreen(ImageViewer *viewer, int centerX, int pictureWidth, int bar)
{
    const int x = centerX - pictureWidth / 2 + pictureWidth * (2 * bar + 1) / 16;
    return viewer->grab().toImage().pixelColor(x, viewer->height() / 2);
}

} // namespace

// Text and hexadecimal, by hand; the cable comes out and goes back in.
void LinkTour::talksToABoard()
{
    BoardProcess board("COM5", stage().portsFolder());
    const auto record = stage().file("record");
    QVERIFY(stage().plugIn(board, {"--mode", "shell", "--encoding", "gb18030", "--record", record}));
    QVERIFY(stage().chooseSetting({"编码设置", "GB18030"}));
    QVERIFY(stage().openPort(board));
    QVERIFY(click("checkNewline"));
    QVERIFY(typeInto("textEditSend", "led on"));
    QVERIFY(click("btnSingleSend"));
    WAIT_EQUAL(stage().shownText(), QString("LED 已打开\n"));
    QVERIFY(typeInto("textEditSend", "温度"));
    QVERIFY(UserHand::press(Qt::Key_Return, Qt::ControlModifier));
    WAIT_EQUAL(stage().content("record"), QByteArray("led on\r\n\xCE\xC2\xB6\xC8\r\n"));
    WAIT_EQUAL(stage().shownText().count('\n'), 2); // an unknown command

    QVERIFY(click("radioSendHex"));
    QVERIFY(click("radioRecvHex"));
    QVERIFY(click("btnClearRecv"));
    QVERIFY(click("btnClearCount"));
    QVERIFY(typeInto("textEditSend", "6C 65 64 20 6F 66 66"));
    QVERIFY(click("btnSingleSend"));
    WAIT_EQUAL(stage().sentShown(), qint64(9));
    WAIT_EQUAL(stage().receivedShown(), qint64(12));
    WAIT_EQUAL(stage().shownText(), QString("4C 45 44 20 D2 D1 B9 D8 B1 D5 0D 0A "));

    // Long enough for the list of ports to change.
    QVERIFY(click("radioSendText"));
    QVERIFY(typeInto("textEditSend", "unplug 3000"));
    QVERIFY(click("btnSingleSend"));
    QVERIFY(stage().waitForNotice("当前串口已拔出，请重新打开!", Notice::Error));
    WAIT_FOR(!stage().isOpenShown() && find<QComboBox>("comboPort")->findText("COM5 虚拟串口") < 0);
    WAIT_FOR(find<QComboBox>("comboPort")->findText("COM5 虚拟串口") >= 0);
    QVERIFY(stage().openPort(board));
    QVERIFY(stage().closePort());
    QVERIFY(stage().waitForNotice("串口[COM5]已关闭!!", Notice::Information));
}

// Searches and filters a log that goes on.
void LinkTour::findsInARunningLog()
{
    QVERIFY(stage().showTool(0));
    BoardProcess board("COM6", stage().portsFolder());
    QVERIFY(stage().plugIn(board, {"--mode", "burst", "--bytes-per-second", "20000"}));
    QVERIFY(click("radioRecvText"));
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::press(Qt::Key_F, Qt::ControlModifier));
    QVERIFY(typeInto("editLogFind", "speed"));
    const auto matches = [this] { return find<QLabel>("labelLogFind")->text().section('/', 1).toInt(); };
    WAIT_FOR(matches() > 20);
    const int before = matches();
    WAIT_FOR(matches() > before);
    QVERIFY(click("checkLogFilter"));
    const auto shown = [this] { return stage().terminal()->document()->toPlainText().split('\n'); };
    WAIT_FOR(shown().size() > 20);
    for (const QString &line : shown())
        QVERIFY2(line.contains("speed"), qPrintable(line));
    QVERIFY(UserHand::press(Qt::Key_Escape));
    WAIT_FOR(shown().filter("speed").size() < shown().size() - 20);

    SharedRules::instance().store({{{"speed", false, false, false}, 0xFF00FF, false, true}}, false);
    const auto isColored = [this] {
        const QImage image = stage().terminal()->viewport()->grab().toImage();
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixelColor(x, y).green() < image.pixelColor(x, y).blue() - 60)
                    return true;
        return false;
    };
    QVERIFY(!isColored());
    QVERIFY(UserHand::press(Qt::Key_H, Qt::ControlModifier | Qt::ShiftModifier));
    WAIT_FOR(isColored());
    QVERIFY(UserHand::press(Qt::Key_H, Qt::ControlModifier | Qt::ShiftModifier));
    WAIT_FOR(!isColored());
    QVERIFY(stage().closePort());
}

void LinkTour::servesBoards()
{
    QVERIFY(stage().showTool(kNetwork));
    const QString port = QString::number(Stage::freePort());
    QVERIFY(typeInto("editPort", port));
    QVERIFY(click("btnOpen"));
    QVERIFY(stage().waitForNotice(QString("TCP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));
    auto *list = find<QComboBox>("comboClients");
    const QStringList options{"--net-port", port, "--period", "60000"};
    BoardProcess first;
    BoardProcess second;
    QVERIFY(first.startOnNetwork("tcp-client", options));
    WAIT_EQUAL(list->count(), 2);
    QVERIFY(second.startOnNetwork("tcp-client", options));
    WAIT_EQUAL(list->count(), 3);
    const QString one = list->itemText(1);
    const QString two = list->itemText(2);

    const auto send = [this](const QString &text) {
        return typeInto("textEditSend", text) && click("btnSingleSend");
    };
    QVERIFY(send("all"));
    WAIT_EQUAL(stage().sentShown(), qint64(6));
    WAIT_EQUAL(stage().receivedShown(), qint64(6));
    WAIT_FOR(stage().shownText().contains(QString("[Tcp client %1] all").arg(one)));
    WAIT_FOR(stage().shownText().contains(QString("[Tcp client %1] all").arg(two)));
    QVERIFY(UserHand::choose(list, two));
    QVERIFY(send("two"));
    WAIT_FOR(stage().shownText().endsWith(QString("\n[Tcp client %1] two").arg(two)));

    const auto disconnectChosen = [this] { return click("btnDisconnect"); };
    QVERIFY(answer(disconnectChosen, "是否确认断开当前客户端?", "btnOk"));
    WAIT_EQUAL(list->count(), 2);
    QVERIFY(second.waitForEvent("disconnected 0"));
    // Nothing goes to the neighbour of the one that left.
    QVERIFY(send("nobody"));
    QVERIFY(stage().waitForNotice("未选择客户端，数据未发送！", Notice::Error));
    QVERIFY(UserHand::choose(list, "All Clients"));
    QVERIFY(answer(disconnectChosen, "是否确认断开所有连接?", "btnOk"));
    QVERIFY(first.waitForEvent("disconnected 0"));
    QVERIFY(click("btnOpen"));
    QVERIFY(stage().waitForNotice(QString("TCP服务监听[端口:%1]已关闭!!").arg(port), Notice::Information));
    QVERIFY(first.stop());
    QCOMPARE(first.statistics().value("read"), qint64(3));
}

void LinkTour::showsTwoCameras()
{
    QVERIFY(stage().showTool(kCamera));
    const QString port = QString::number(Stage::freePort());
    QVERIFY(typeInto("editCameraPort", port));
    QVERIFY(click("btnCameraOpen"));
    QVERIFY(stage().waitForNotice(QString("TCP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));
    QVERIFY(choose("comboDeviceCount", "2"));
    const QStringList common{"--act",    "camera", "--test-pattern", "--width", "160",
                             "--height", "120",    "--net-port",     port};
    BoardProcess first;
    BoardProcess second;
    QVERIFY(first.startOnNetwork("tcp-client", common + QStringList{"--format", "4"}));
    QVERIFY(
        second.startOnNetwork("tcp-client", common + QStringList{"--format", "5", "--first-device", "1"}));
    auto *viewer = find<ImageViewer>("imageViewer");
    const int width = viewer->width();
    // Bars: white, yellow, cyan, green, magenta, red, blue, black; RGB565 has fewer shades.
    WAIT_EQUAL(onScreen(viewer, width / 4, 160, 1), QColor(0xf8, 0xfc, 0));
    WAIT_EQUAL(onScreen(viewer, width / 4, 160, 6), QColor(0, 0, 0xf8));
    WAIT_EQUAL(onScreen(viewer, width * 3 / 4, 160, 1), QColor(0xff, 0xff, 0));
    WAIT_EQUAL(onScreen(viewer, width * 3 / 4, 160, 5), QColor(0xff, 0, 0));
}
