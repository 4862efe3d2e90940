// The scenes of the pictures. Names of pictures are those that the documents use.

#include "dialoganswers.h"
#include "gallery.h"
#include "pidplot.h"
#include "qtmessagetip.h"
#include "qtterminalwidget.h"
#include "sharedrules.h"
#include "userhand.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QToolTip>

namespace {

const char *const kTools[] = {"serial", "camera", "network", "pid", "hexedit"};

// Starts three loops on the PID page, lets them settle and stops them, so that
// the chart comes to rest.
bool runControlLoops(Stage &stage, const BoardProcess &board)
{
    auto *tabs = stage.find<QTabBar>("toolTabs");
    auto *start = stage.find<QPushButton>("btnPidStart");
    const auto idle = QStringLiteral("启动");
    const auto choose = [&stage](int channel) {
        return UserHand::choose(stage.find<QComboBox>("comboPidChannel"),
                                QStringLiteral("CH%1").arg(channel));
    };
    if (!UserHand::clickAt(tabs, tabs->tabRect(3).center()) ||
        !UserHand::choose(stage.find<QComboBox>("comboPidPort"),
                          board.port() + QStringLiteral(" 虚拟串口")) ||
        !UserHand::click(stage.find<QWidget>("btnPidOpen")) ||
        !UserHand::click(stage.find<QWidget>("checkPidFitAll")))
        return false;
    for (const auto &[channel, target] : {std::pair{3, "200"}, std::pair{1, "-150"}, std::pair{2, "400"}}) {
        if (!choose(channel) ||
            !UserHand::typeInto(stage.find<QWidget>("editTarget"), QString::fromLatin1(target)) ||
            !UserHand::press(Qt::Key_Return) || (start->text() != idle && !UserHand::click(start)) ||
            !UserHand::click(start))
            return false;
    }
    auto *plot = stage.find<PidPlot>("pidPlot");
    const auto settled = [plot] { // four seconds after the last start
        bool found = false;
        const QCPRange times = plot->graph(6)->data()->keyRange(found);
        return found && times.size() >= 4;
    };
    if (!QTest::qWaitFor(settled, kWaitLimitMs))
        return false;
    for (int channel : {3, 1, 2})
        if (!choose(channel) || (start->text() == idle && !UserHand::click(start)) || !UserHand::click(start))
            return false;
    return true;
}

void tools(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    BoardProcess board(QStringLiteral("COM3"), stage.portsFolder());
    NEED(stage.plugIn(board, {QStringLiteral("--mode"), QStringLiteral("log"), QStringLiteral("--rate"),
                              QStringLiteral("15")}));
    // Before any port is open: a change of the list closes the serial page's.
    BoardProcess loops(QStringLiteral("COM6"), stage.portsFolder());
    NEED(stage.plugIn(loops, {QStringLiteral("--mode"), QStringLiteral("pid")}));
    NEED(stage.openPort(board));
    NEED(UserHand::typeInto(stage.find<QWidget>("textEditSend"), QStringLiteral("AT+VERSION\n读取温度")));
    NEED_SOON(stage.shownText().count(QLatin1Char('\n')) >= 30);
    NEED(runControlLoops(stage, loops));
    auto *tabs = stage.find<QTabBar>("toolTabs");
    NEED(UserHand::clickAt(tabs, tabs->tabRect(2).center()));
    const QString port = QString::number(Stage::freePort());
    NEED(UserHand::typeInto(stage.find<QLineEdit>("editPort"), port));
    NEED(UserHand::click(stage.find<QPushButton>("btnOpen")));
    BoardProcess onNetwork;
    NEED(onNetwork.startOnNetwork("tcp-client",
                                  {"--net-port", port, "--act", "log", "--peers", "3", "--rate", "2"}));
    NEED_SOON(stage.find<QComboBox>("comboClients")->count() == 4); // all three and each
    NEED_SOON(stage.find<QtTerminalWidget>("recvBrowser")->toPlainText().count(QLatin1Char('\n')) >= 12);
    NEED(UserHand::typeInto(stage.find<QWidget>("textEditSend"), QStringLiteral("查询状态")));
    NEED(UserHand::click(stage.find<QPushButton>("btnSingleSend")));
    NEED_SOON(stage.find<QLabel>("labelSendCount")->text() == QStringLiteral("发送字节: 36"));
    for (int i = 0; i < tabs->count(); ++i) {
        NEED(UserHand::clickAt(tabs, tabs->tabRect(i).center()));
        NEED(gallery.save(QLatin1String(kTools[i]), tabs));
    }
    NEED(UserHand::clickAt(tabs, tabs->tabRect(0).center()));
    stage.terminal()->setView({LineStamp::Time::Clock, false, false, false, {}});
    NEED(UserHand::click(stage.find<QWidget>("btnLogFind")));
    NEED(UserHand::typeInto(stage.find<QWidget>("editLogFind"), QStringLiteral("adc")));
    // Which one is the first below the top depends on how much has come.
    NEED_SOON(stage.find<QLabel>("labelLogFind")->text().section(QLatin1Char('/'), 0, 0).toInt() > 0);
    NEED(gallery.save(QStringLiteral("find"), tabs));
    NEED(UserHand::click(stage.find<QWidget>("checkLogFilter")));
    NEED(gallery.save(QStringLiteral("filter"), tabs));
    NEED(UserHand::click(stage.find<QWidget>("btnLogFindClose")));
    SharedRules::instance().store(commonColorRules(), true);
    stage.terminal()->setView({LineStamp::Time::Clock, false, false, true, {}});
    stage.terminal()->goToNewest();
    stage.terminal()->showSent("version\r\n", false, false);
    NEED(gallery.save(QStringLiteral("colors"), tabs));
    const auto curvesKey = Qt::ControlModifier | Qt::ShiftModifier;
    NEED(UserHand::press(Qt::Key_G, curvesKey));
    NEED_SOON(stage.find<QWidget>("curvePane")->isVisible());
    NEED(UserHand::choose(stage.find<QComboBox>("comboCurveForm"), QStringLiteral("表达式")));
    NEED(UserHand::typeInto(stage.find<QWidget>("editCurveExpression"),
                            QStringLiteral("roll=(?<roll>\\S+) pitch=(?<pitch>\\S+)")));
    NEED(UserHand::press(Qt::Key_Return));
    QTest::qWait(3000); // some more values
    NEED(gallery.save(QStringLiteral("curves"), tabs));
    NEED(UserHand::choose(stage.find<QComboBox>("comboCurveForm"), QStringLiteral("自动识别")));
    NEED(UserHand::press(Qt::Key_G, curvesKey));
    SharedRules::instance().store({}, false);
    stage.terminal()->setView({});
    stage.terminal()->goToNewest();
    NEED(UserHand::clickAt(tabs, tabs->tabRect(3).center()));
    auto *plot = stage.find<PidPlot>("pidPlot");
    QWindow *window = plot->window()->windowHandle();
    const QPoint place = plot->mapTo(plot->window(), plot->rect().center() + QPoint(150, -60));
    QTest::mouseMove(window, place - QPoint(3, 0));
    QTest::mouseMove(window, place);
    NEED_SOON(QToolTip::isVisible());
    NEED(gallery.save(QStringLiteral("pid-readout"), tabs));
    for (const char *type : {"png", "pdf"}) {
        Stage::answerFileDialogs(gallery.path(QStringLiteral("pid-saved"), type));
        NEED(UserHand::click(stage.find<QWidget>("btnPidPicture")));
    }
    if (gallery.isInFirstSkin()) { // at the minimum size
        NEED(UserHand::clickAt(tabs, tabs->tabRect(0).center()));
        NEED(gallery.resize({800, 500}));
        NEED(gallery.save(QStringLiteral("serial-small"), tabs));
        NEED(UserHand::clickAt(tabs, tabs->tabRect(3).center()));
        NEED(gallery.save(QStringLiteral("pid-small"), tabs));
    }
}

void sendPages(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    BoardProcess board(QStringLiteral("COM5"), stage.portsFolder());
    NEED(stage.plugIn(board, {QStringLiteral("--mode"), QStringLiteral("shell")}));
    NEED(UserHand::click(stage.find<QWidget>("checkTimeStamp")));
    NEED(UserHand::click(stage.find<QWidget>("checkNewline")));
    NEED(stage.openPort(board));
    auto *pages = stage.find<QComboBox>("comboSendPage");
    NEED(UserHand::choose(pages, QStringLiteral("多项发送")));
    const QString commands[] = {QStringLiteral("help"), QStringLiteral("version"), QStringLiteral("led on"),
                                QStringLiteral("adc")};
    int place = 0;
    for (const QString &command : commands) {
        NEED(UserHand::typeInto(stage.find<QWidget>(qPrintable(QStringLiteral("multiEdit%1").arg(place))),
                                command));
        const qint64 before = stage.receivedShown();
        NEED(UserHand::click(stage.find<QWidget>(qPrintable(QStringLiteral("multiSend%1").arg(place)))));
        NEED_SOON(stage.receivedShown() > before);
        ++place;
    }
    NEED(gallery.save(QStringLiteral("multisend"), pages));
    NEED(UserHand::choose(pages, QStringLiteral("单项发送")));
    NEED(UserHand::click(stage.find<QWidget>("radioRecvHex")));
    NEED(UserHand::click(stage.find<QWidget>("radioSendHex")));
    NEED(UserHand::typeInto(stage.find<QWidget>("textEditSend"), QStringLiteral("61 64 63 0D 0A 7")));
    const qint64 before = stage.receivedShown();
    NEED(UserHand::click(stage.find<QWidget>("btnSingleSend")));
    NEED_SOON(stage.shownText().contains(QStringLiteral("HEX >")) && stage.receivedShown() > before);
    NEED(gallery.save(QStringLiteral("hexadecimal"), pages));
}

// The other protocols, and what is said when something fails.
void network(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    NEED(stage.showTool(2));
    auto *protocols = stage.find<QComboBox>("comboNetType");
    NEED(UserHand::choose(protocols, QStringLiteral("UDP")));
    NEED(gallery.save(QStringLiteral("network-udp"), protocols));
    NEED(UserHand::choose(protocols, QStringLiteral("TCP Client")));
    NEED(UserHand::typeInto(stage.find<QLineEdit>("editPort"), QStringLiteral("1")));
    NEED(UserHand::click(stage.find<QPushButton>("btnOpen")));
    NEED_SOON(stage.find<QLabel>("labelLinkState")->text() == QStringLiteral("连接失败：对方拒绝连接"));
    NEED(gallery.save(QStringLiteral("network-failed"), protocols));
    NEED(UserHand::typeInto(stage.find<QLineEdit>("editPort"), QStringLiteral("70000")));
    NEED(UserHand::click(stage.find<QPushButton>("btnOpen")));
    NEED(gallery.save(QStringLiteral("network-tip"), protocols));
    NEED(gallery.resize({800, 500}));
    NEED(gallery.save(QStringLiteral("network-small"), protocols));
}

void binaryFile(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    QByteArray image("KVX1\x01\x00\x02\x06 boot loader, ready\r\n", 30);
    image += QStringLiteral("温度过高").toUtf8() + QByteArray(40, '\0') + QByteArray(60, '\xFF');
    for (int i = 0; i < 3000; ++i)
        image += static_cast<char>(i * i / 7);
    QFile file(stage.file(QStringLiteral("firmware_v1.2.bin")));
    NEED(file.open(QIODevice::WriteOnly) && file.write(image) == image.size());
    file.close();
    DialogAnswers::instance().fileNames = [&file](auto, auto, auto, auto) {
        return QStringList(file.fileName());
    };
    NEED(stage.showTool(4));
    NEED(UserHand::press(Qt::Key_O, Qt::ControlModifier));
    auto *edit = stage.find<QWidget>("hexEdit");
    NEED_SOON(stage.find<QLabel>("labelSize")->text() == QStringLiteral("Size: %1").arg(image.size()));
    NEED(UserHand::type(QStringLiteral("4B56583203")));
    NEED(UserHand::click(stage.find<QWidget>("btnChecksum")));
    NEED(UserHand::typeInto(stage.find<QLineEdit>("editFind"), QStringLiteral("6C 6F 61 64")));
    NEED(UserHand::press(Qt::Key_Return));
    NEED(gallery.save(QStringLiteral("hexeditor"), edit));
    if (!gallery.isInFirstSkin())
        return;
    NEED(gallery.resize({1000, 790}));
    NEED(gallery.save(QStringLiteral("hexeditor-large"), edit));
    NEED(gallery.resize({800, 500}));
    NEED(gallery.save(QStringLiteral("hexeditor-small"), edit));
}

void camera(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    BoardProcess board(QStringLiteral("COM8"), stage.portsFolder());
    NEED(stage.plugIn(board, {QStringLiteral("--mode"), QStringLiteral("camera"), QStringLiteral("--devices"),
                              QStringLiteral("2")}));
    NEED(stage.showTool(1));
    auto *protocols = stage.find<QComboBox>("comboCameraProtocol");
    NEED(UserHand::choose(protocols, QStringLiteral("串口")));
    // The machine may have ports of its own.
    NEED(UserHand::choose(stage.find<QComboBox>("comboCameraSerialPort"), QStringLiteral("COM8 虚拟串口")));
    NEED(UserHand::choose(stage.find<QComboBox>("comboDeviceCount"), QStringLiteral("2")));
    NEED(UserHand::click(stage.find<QPushButton>("btnCameraOpen")));
    auto *number = stage.find<QLabel>("labelFrameNumber");
    NEED_SOON(number->text().section(QLatin1Char(' '), -1).toInt() >= 20);
    NEED(gallery.save(QStringLiteral("camera"), protocols));
    auto *button = stage.find<QPushButton>("btnReadTable");
    stage.find<QScrollArea>("cameraConfigPanel")->ensureWidgetVisible(button);
    NEED(UserHand::click(button));
    auto *table = stage.window().findChild<QDialog *>(QStringLiteral("DataManagerWidget"));
    NEED_SOON(table->isActiveWindow());
    auto *model = table->findChild<QTableView *>()->model();
    const QStringList addresses{"3008", "3009", "00DD", "300A"};
    for (int row = 0; row < addresses.size(); ++row) {
        model->setData(model->index(row, 0), QString::number(row + 1));
        model->setData(model->index(row, 1), addresses.at(row));
        model->setData(model->index(row, 3), QStringLiteral("曝光时间"));
    }
    NEED(UserHand::click(table->findChild<QPushButton *>(QStringLiteral("btnConfirm"))));
    NEED_SOON(table->findChild<QLabel *>(QStringLiteral("labelRegisterProgress"))
                  ->text()
                  .startsWith(QStringLiteral("已完成")));
    NEED(gallery.save(QStringLiteral("registers"), table));
}

void fileSending(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    BoardProcess board(QStringLiteral("COM6"), stage.portsFolder());
    NEED(stage.plugIn(board, {QStringLiteral("--mode"), QStringLiteral("ymodem"),
                              QStringLiteral("--ask-interval"), QStringLiteral("200"),
                              QStringLiteral("--receive-folder"), stage.file(QStringLiteral("received"))}));
    QStringList names;
    for (const QString &name : {QStringLiteral("启动参数.cfg"), QStringLiteral("firmware_v1.2.bin")}) {
        names.append(stage.file(name));
        QFile file(names.last());
        NEED(file.open(QIODevice::WriteOnly) && file.resize(names.size() == 1 ? 300 : 1000000));
    }
    DialogAnswers::instance().fileNames = [&names](auto, auto, auto, auto) { return names; };
    auto *pages = stage.find<QComboBox>("comboSendPage");
    NEED(UserHand::choose(pages, QStringLiteral("发送文件")));
    NEED(stage.openPort(board));
    if (gallery.isInFirstSkin())
        NEED(gallery.save(QStringLiteral("filesend-empty"), pages));
    auto *more = stage.find<QPushButton>("btnTransferOptions");
    NEED(UserHand::click(more));
    NEED(gallery.save(QStringLiteral("transferoptions"), pages));
    NEED(UserHand::click(more));
    NEED(UserHand::click(stage.find<QPushButton>("btnOpenFiles")));
    NEED(UserHand::click(stage.find<QPushButton>("btnSendFiles")));
    NEED_SOON(stage.find<QProgressBar>("progressTransfer")->text().startsWith(QStringLiteral("firmware")));
    NEED_SOON(stage.find<QProgressBar>("progressTransfer")->value() >= 20); // with time left for a picture
    NEED(gallery.save(QStringLiteral("filesend"), pages));
    NEED(UserHand::click(stage.find<QPushButton>("btnSendFiles")));
    NEED(stage.waitForNotice(QStringLiteral("传输终止：用户停止了传输"), Notice::Error));
    NEED_SOON(stage.find<QPushButton>("btnSendFiles")->text() == QStringLiteral("发送文件"));
    NEED(UserHand::inDialog([&stage] { return UserHand::click(stage.find<QPushButton>("btnTransferLog")); },
                            [&gallery](QWidget *dialog) {
                                return gallery.save(QStringLiteral("transferlog"), dialog) &&
                                       UserHand::press(Qt::Key_Escape);
                            }));
}

void menus(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    auto *settings = stage.find<QPushButton>("btnSettings");
    bool saved = true;
    const auto take = [&](const char *name) {
        return [&gallery, &saved, name] {
            saved = gallery.save(QLatin1String(name), &gallery.stage().window()) && saved;
        };
    };
    NEED(UserHand::visitMenu(settings, {QStringLiteral("数据缓存"), QStringLiteral("自动保存")},
                             take("menu-settings")));
    NEED(UserHand::visitMenu(stage.find<QPushButton>("btnHelpMenu"), {QStringLiteral("检查版本更新")},
                             take("menu-help")));
    NEED(saved);
}

void dialogs(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    const auto visit = [&gallery](const char *name, const std::function<bool()> &opens) {
        return UserHand::inDialog(opens, [&gallery, name](QWidget *dialog) {
            return gallery.save(QLatin1String(name), dialog) && UserHand::press(Qt::Key_Escape);
        });
    };
    NEED(visit("messagebox", [&stage] { return stage.chooseSetting({QStringLiteral("恢复默认设置")}); }));
    NEED(visit("style", [&stage] { return stage.chooseSetting({QStringLiteral("接收区设置")}); }));
    // A folder as a user may have one.
    QDir folder(stage.rootFolder());
    NEED(folder.mkpath(QStringLiteral("测试数据/固件")) && folder.cd(QStringLiteral("测试数据")));
    for (const QString &name : {QStringLiteral("温度记录.txt"), QStringLiteral("AT指令.txt")}) {
        QFile file(folder.filePath(name));
        NEED(file.open(QIODevice::WriteOnly) && file.write("AT\r\n") == 4);
    }
    NEED(QDir::setCurrent(folder.path()));
    NEED(visit("file", [&stage] { return UserHand::click(stage.find<QWidget>("btnLoadDataFile")); }));
    NEED(QDir::setCurrent(QDir::rootPath())); // the folder goes with the stage
}

void tips(Gallery &gallery)
{
    Stage &stage = gallery.stage();
    NEED(UserHand::click(stage.find<QWidget>("btnSingleSend")));
    NEED(QtMessageTip::current() && QtMessageTip::current()->isVisible());
    NEED(gallery.save(QStringLiteral("tip-notice"), &stage.window()));

    auto *period = stage.find<QLineEdit>("editAutoInterval");
    NEED(UserHand::typeInto(period, QStringLiteral("5")));
    NEED(UserHand::press(Qt::Key_Return));
    QCOMPARE(QtMessageTip::current()->tipStyle(), QtMessageTip::Bubble);
    NEED(gallery.save(QStringLiteral("tip-bubble"), &stage.window()));
}

} // namespace

const QVector<Scene> scenes{
    {"tools", true, tools},   {"sendPages", false, sendPages},  {"network", false, network},
    {"camera", true, camera}, {"binaryFile", true, binaryFile}, {"fileSending", true, fileSending},
    {"menus", true, menus},   {"dialogs", true, dialogs},       {"tips", false, tips},
};
