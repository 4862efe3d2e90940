#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QTest>

// Text and hexadecimal, by hand; the cable comes out and goes back in.
void SerialTour::talksToABoard()
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
