#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSerialPort>
#include <QSettings>
#include <QTest>

namespace {

bool configurationIsEnabled(Stage &stage, bool enabled)
{
    for (const char *name : {"comboPort", "comboBaudRate", "comboParity", "comboDataBits", "comboStopBits"}) {
        if (stage.find<QComboBox>(name)->isEnabled() != enabled)
            return false;
    }
    return true;
}

const auto kUnplugged = QStringLiteral("当前串口已拔出，请重新打开!");

} // namespace

void PortTour::opensAndCloses()
{
    BoardProcess board(QStringLiteral("COM12"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("silent")}));
    QVERIFY(!stage().isOpenShown() && configurationIsEnabled(stage(), true));

    QVERIFY(stage().openPort(board));
    QVERIFY(configurationIsEnabled(stage(), false));
    QVERIFY(board.waitForEvent(QStringLiteral("host arrived")));

    QVERIFY(stage().closePort());
    QVERIFY(stage().waitForNotice(QStringLiteral("串口[COM12]已关闭!!"), Notice::Information));
    QVERIFY(configurationIsEnabled(stage(), true));
    QVERIFY(board.waitForEvent(QStringLiteral("host left")));
}

void PortTour::remembersTheParameters()
{
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("silent")}));
    // As after a first start: 115200 baud, 8 data bits, no parity, 1 stop bit.
    QCOMPARE(stage().find<QComboBox>("comboBaudRate")->currentText(), QStringLiteral("115200"));
    QCOMPARE(stage().find<QComboBox>("comboDataBits")->currentText(), QStringLiteral("8"));
    QCOMPARE(stage().find<QComboBox>("comboParity")->currentText(), QStringLiteral("无校验"));
    QCOMPARE(stage().find<QComboBox>("comboStopBits")->currentText(), QStringLiteral("1"));

    QVERIFY(
        UserHand::typeInto(stage().find<QComboBox>("comboBaudRate")->lineEdit(), QStringLiteral("250000")));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboStopBits"), QStringLiteral("2")));
    QVERIFY(stage().openPort(board));

    const QSettings stored(stage().file(QStringLiteral("conf/config.ini")), QSettings::IniFormat);
    QCOMPARE(stored.value(QStringLiteral("Serialport/BaudRate")).toInt(), 250000);
    QCOMPARE(stored.value(QStringLiteral("Serialport/DataBit")).toInt(), 8);
    QCOMPARE(stored.value(QStringLiteral("Serialport/StopBit")).toInt(), 2); // the third entry
    QCOMPARE(stored.value(QStringLiteral("Serialport/Parity")).toInt(), 0);
}

void PortTour::staysOpenWithRefusedParameters()
{
    // A pseudo-terminal has 8 data bits and nothing else.
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("silent")}));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboPort"), QStringLiteral("COM3 虚拟串口")));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboDataBits"), QStringLiteral("7")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口[COM3]不支持以下参数：数据位 7"), Notice::Error));
    QVERIFY(stage().isOpenShown());
    QVERIFY(board.waitForEvent(QStringLiteral("host arrived")));
}

void PortTour::saysWhatCannotBeOpened()
{
    auto *open = stage().find<QPushButton>("btnOpen");
    auto *text = stage().find<QComboBox>("comboPort")->lineEdit();
    QVERIFY(UserHand::typeInto(text, QString()));
    QVERIFY(UserHand::click(open));
    QVERIFY(stage().waitForNotice(QStringLiteral("当前系统未检测到任何串口，请重试!!!"), Notice::Error));

    QVERIFY(UserHand::typeInto(text, QStringLiteral("LPT1 打印机")));
    QVERIFY(UserHand::click(open));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口[LPT1 打印机]打开失败!!!"), Notice::Error));

    QVERIFY(UserHand::typeInto(text, QStringLiteral("COM77")));
    QVERIFY(UserHand::click(open));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口不存在，请检查设备是否已插好"), Notice::Error));
    QVERIFY(!stage().isOpenShown());
}

void PortTour::opensATypedDevice()
{
    // A board that is not in the list, by the path of its terminal.
    BoardProcess board(QStringLiteral("COM3"));
    QVERIFY(board.start({QStringLiteral("--mode"), QStringLiteral("silent")}));
    const QString device = QFileInfo(board.link()).symLinkTarget();
    QVERIFY(UserHand::typeInto(stage().find<QComboBox>("comboPort")->lineEdit(), device));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口[%1]打开成功!").arg(device), Notice::Information));
    QVERIFY(board.waitForEvent(QStringLiteral("host arrived")));
}

void PortTour::leavesAPortThatIsHeld()
{
    BoardProcess board(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("silent")}));
    QSerialPort holder(QFileInfo(board.link()).symLinkTarget());
    QVERIFY(holder.open(QIODevice::ReadWrite));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboPort"), QStringLiteral("COM4 虚拟串口")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(stage().waitForNotice(QStringLiteral("串口正被其他程序占用，请关闭该程序后重试"), Notice::Error));
    QVERIFY(!stage().isOpenShown());

    holder.close();
    QVERIFY(stage().openPort(board));
}

void PortTour::noticesUnplugging()
{
    BoardProcess board(QStringLiteral("COM5"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("shell")}));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(stage().openPort(board));

    // Long enough for the once-a-second look at the ports to see it gone.
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("unplug 3000\n")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnSingleSend")));
    QVERIFY(stage().waitForNotice(kUnplugged, Notice::Error));
    QVERIFY(!stage().isOpenShown() && configurationIsEnabled(stage(), true));
    auto *ports = stage().find<QComboBox>("comboPort");
    WAIT_FOR(ports->findText(QStringLiteral("COM5 虚拟串口")) < 0);

    QVERIFY(board.waitForEvent(QStringLiteral("plugged"), 2));
    WAIT_FOR(ports->findText(QStringLiteral("COM5 虚拟串口")) >= 0);
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("version\n")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnSingleSend")));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("boardsim 1.0, 模拟开发板\n"));
}

void PortTour::closesWhenAnotherPortComes()
{
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("silent")}));
    QVERIFY(stage().openPort(board));
    BoardProcess other(QStringLiteral("COM4"), stage().portsFolder());
    QVERIFY(stage().plugIn(other, {QStringLiteral("--mode"), QStringLiteral("silent")}));
    QVERIFY(stage().waitForNotice(kUnplugged, Notice::Error));
    QVERIFY(!stage().isOpenShown());
    // The choice is still there, and opens again.
    QCOMPARE(stage().find<QComboBox>("comboPort")->currentText(), QStringLiteral("COM3 虚拟串口"));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(stage().isOpenShown());
}
