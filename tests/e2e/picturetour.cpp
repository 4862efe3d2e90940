#include "dialoganswers.h"
#include "pidplot.h"
#include "qtmessagetip.h"
#include "qtterminalwidget.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QTabBar>
#include <QTableView>
#include <QTest>
#include <QToolTip>

namespace {

constexpr int kMovingMs = 10000;       // what has not come to rest by then moves
constexpr QSize kFirstSize(1000, 550); // the window's, at the first start

const char *const kTools[] = {"serial", "camera", "network", "pid", "hexedit"};

// Pictures of the first skin, which is the one of a fresh start, have plain names.
void addSkins()
{
    QTest::addColumn<QString>("suffix");
    QTest::addColumn<QString>("text");
    QTest::newRow("dark") << QString() << QStringLiteral("深色");
    QTest::newRow("light") << QStringLiteral("-light") << QStringLiteral("浅色");
    QTest::newRow("yellow") << QStringLiteral("-yellow") << QStringLiteral("黄色");
}

// Whether the screen shows the window, small things in front of it aside.
bool shows(const QImage &screen, const QImage &window)
{
    if (screen.size() != window.size())
        return false;
    int seen = 0;
    int equal = 0;
    for (int y = 0; y < window.height(); y += 7) {
        for (int x = 0; x < window.width(); x += 7, ++seen)
            equal += (screen.pixel(x, y) | 0xFF000000) == (window.pixel(x, y) | 0xFF000000);
    }
    return equal >= seen * 8 / 10;
}

// What the screen shows at a window's place, menus and tips in front of it
// included, as soon as it has come to rest. A new window takes a while to be
// placed and painted. A page on which something moves does not come to rest:
// then the window must be on the screen.
QPixmap onScreen(QWidget *widget)
{
    QWidget *window = widget->window();
    QPixmap last;
    QElapsedTimer looking;
    looking.start();
    const auto rests = [&] {
        const QPixmap now = window->screen()->grabWindow(window->winId());
        const bool still = !last.isNull() && now.toImage() == last.toImage();
        last = now;
        return (still || looking.hasExpired(kMovingMs)) && shows(now.toImage(), window->grab().toImage());
    };
    const bool rested = QTest::qWaitFor(rests, kWaitLimitMs);
    return rested ? last : QPixmap();
}

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

} // namespace

PictureTour::PictureTour(const QString &folder)
    : m_folder(folder)
{
    QDir().mkpath(folder);
}

void PictureTour::save(const QString &name, const QPixmap &picture) const
{
    QVERIFY(!picture.isNull());
    QVERIFY(picture.save(QStringLiteral("%1/%2.png").arg(m_folder, name)));
}

bool PictureTour::chooseSkin(const QString &skin)
{
    stage().window().resize(kFirstSize);
    return QTest::qWaitFor([this] { return stage().window().size() == kFirstSize; }, kWaitLimitMs) &&
           stage().chooseSetting({QStringLiteral("主题"), skin}) &&
           stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")});
}

void PictureTour::tools_data()
{
    addSkins();
}

void PictureTour::tools()
{
    QFETCH(QString, suffix);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("log"), QStringLiteral("--rate"),
                                   QStringLiteral("15")}));
    // Before any port is open: a change of the list closes the serial page's.
    BoardProcess loops(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(stage().plugIn(loops, {QStringLiteral("--mode"), QStringLiteral("pid")}));
    QVERIFY(stage().openPort(board));
    QVERIFY(
        UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("AT+VERSION\n读取温度")));
    WAIT_FOR(stage().shownText().count(QLatin1Char('\n')) >= 30);
    QVERIFY(runControlLoops(stage(), loops));
    auto *tabs = stage().find<QTabBar>("toolTabs");
    QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(2).center()));
    const QString port = QString::number(Stage::freePort(8000));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), port));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    BoardProcess onNetwork;
    QVERIFY(onNetwork.startOnNetwork("tcp-client",
                                     {"--net-port", port, "--act", "log", "--peers", "3", "--rate", "2"}));
    WAIT_EQUAL(stage().find<QComboBox>("comboClients")->count(), 4); // all three and each
    WAIT_FOR(stage().find<QtTerminalWidget>("recvBrowser")->toPlainText().count(QLatin1Char('\n')) >= 12);
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("查询状态")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnSingleSend")));
    WAIT_EQUAL(stage().find<QLabel>("labelSendCount")->text(), QStringLiteral("发送字节: 36"));
    for (int i = 0; i < tabs->count(); ++i) {
        QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(i).center()));
        save(QStringLiteral("%1%2").arg(QLatin1String(kTools[i]), suffix), onScreen(tabs));
    }
    QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(3).center()));
    auto *plot = stage().find<PidPlot>("pidPlot");
    QWindow *window = plot->window()->windowHandle();
    const QPoint place = plot->mapTo(plot->window(), plot->rect().center() + QPoint(150, -60));
    QTest::mouseMove(window, place - QPoint(3, 0));
    QTest::mouseMove(window, place);
    WAIT_FOR(QToolTip::isVisible());
    save(QStringLiteral("pid-readout%1").arg(suffix), onScreen(tabs));
    for (const char *type : {"png", "pdf"}) {
        Stage::answerFileDialogs(
            QStringLiteral("%1/pid-saved%2.%3").arg(m_folder, suffix, QLatin1String(type)));
        QVERIFY(UserHand::click(stage().find<QWidget>("btnPidPicture")));
    }
    if (suffix.isEmpty()) { // as a window is at the least
        QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(0).center()));
        stage().window().resize(800, 500);
        WAIT_EQUAL(stage().window().size(), QSize(800, 500));
        save(QStringLiteral("serial-small"), onScreen(tabs));
        QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(3).center()));
        save(QStringLiteral("pid-small"), onScreen(tabs));
    }
}

void PictureTour::sendPages()
{
    BoardProcess board(QStringLiteral("COM5"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("shell")}));
    QVERIFY(chooseSkin(QStringLiteral("浅色")));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkTimeStamp")));
    QVERIFY(UserHand::click(stage().find<QWidget>("checkNewline")));
    QVERIFY(stage().openPort(board));
    auto *pages = stage().find<QComboBox>("comboSendPage");
    QVERIFY(UserHand::choose(pages, QStringLiteral("多项发送")));
    const QString commands[] = {QStringLiteral("help"), QStringLiteral("version"), QStringLiteral("led on"),
                                QStringLiteral("adc")};
    int place = 0;
    for (const QString &command : commands) {
        QVERIFY(UserHand::typeInto(
            stage().find<QWidget>(qPrintable(QStringLiteral("multiEdit%1").arg(place))), command));
        const qint64 before = stage().receivedShown();
        QVERIFY(UserHand::click(stage().find<QWidget>(qPrintable(QStringLiteral("multiSend%1").arg(place)))));
        WAIT_FOR(stage().receivedShown() > before);
        ++place;
    }
    save(QStringLiteral("multisend"), onScreen(pages));
    QVERIFY(UserHand::choose(pages, QStringLiteral("单项发送")));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioRecvHex")));
    QVERIFY(UserHand::click(stage().find<QWidget>("radioSendHex")));
    QVERIFY(UserHand::typeInto(stage().find<QWidget>("textEditSend"), QStringLiteral("61 64 63 0D 0A 7")));
    const qint64 before = stage().receivedShown();
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    WAIT_FOR(stage().shownText().contains(QStringLiteral("HEX >")) && stage().receivedShown() > before);
    save(QStringLiteral("hexadecimal"), onScreen(pages));
}

// The other protocols, and what is said when something fails.
void PictureTour::network()
{
    QVERIFY(chooseSkin(QStringLiteral("浅色")));
    QVERIFY(stage().showTool(2));
    auto *protocols = stage().find<QComboBox>("comboNetType");
    QVERIFY(UserHand::choose(protocols, QStringLiteral("UDP")));
    save(QStringLiteral("network-udp"), onScreen(protocols));
    QVERIFY(UserHand::choose(protocols, QStringLiteral("TCP Client")));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), QStringLiteral("1")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    WAIT_EQUAL(stage().find<QLabel>("labelLinkState")->text(), QStringLiteral("连接失败：对方拒绝连接"));
    save(QStringLiteral("network-failed"), onScreen(protocols));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), QStringLiteral("70000")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    save(QStringLiteral("network-tip"), onScreen(protocols));
    stage().window().resize(800, 500);
    WAIT_EQUAL(stage().window().size(), QSize(800, 500));
    save(QStringLiteral("network-small"), onScreen(protocols));
}

void PictureTour::binaryFile_data()
{
    addSkins();
}

void PictureTour::binaryFile()
{
    QFETCH(QString, suffix);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    QByteArray image("KVX1\x01\x00\x02\x06 boot loader, ready\r\n", 30);
    image += QStringLiteral("温度过高").toUtf8() + QByteArray(40, '\0') + QByteArray(60, '\xFF');
    for (int i = 0; i < 3000; ++i)
        image += static_cast<char>(i * i / 7);
    QFile file(stage().file(QStringLiteral("firmware_v1.2.bin")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(image) == image.size());
    file.close();
    DialogAnswers::instance().fileNames = [&file](auto, auto, auto, auto) {
        return QStringList(file.fileName());
    };
    QVERIFY(stage().showTool(4));
    QVERIFY(UserHand::press(Qt::Key_O, Qt::ControlModifier));
    auto *edit = stage().find<QWidget>("hexEdit");
    WAIT_EQUAL(stage().find<QLabel>("labelSize")->text(), QStringLiteral("Size: %1").arg(image.size()));
    QVERIFY(UserHand::type(QStringLiteral("4B56583203")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnChecksum")));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editFind"), QStringLiteral("6C 6F 61 64")));
    QVERIFY(UserHand::press(Qt::Key_Return));
    save(QStringLiteral("hexeditor%1").arg(suffix), onScreen(edit));
    if (!suffix.isEmpty())
        return;
    stage().window().resize(1000, 790);
    WAIT_EQUAL(stage().window().height(), 790);
    save(QStringLiteral("hexeditor-large"), onScreen(edit));
    stage().window().resize(800, 500);
    WAIT_EQUAL(stage().window().size(), QSize(800, 500));
    save(QStringLiteral("hexeditor-small"), onScreen(edit));
}

void PictureTour::camera_data()
{
    addSkins();
}

void PictureTour::camera()
{
    QFETCH(QString, suffix);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    BoardProcess board(QStringLiteral("COM8"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("camera"),
                                   QStringLiteral("--devices"), QStringLiteral("2")}));
    QVERIFY(stage().showTool(1));
    auto *protocols = stage().find<QComboBox>("comboCameraProtocol");
    QVERIFY(UserHand::choose(protocols, QStringLiteral("串口")));
    // The machine may have ports of its own.
    QVERIFY(
        UserHand::choose(stage().find<QComboBox>("comboCameraSerialPort"), QStringLiteral("COM8 虚拟串口")));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboDeviceCount"), QStringLiteral("2")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnCameraOpen")));
    auto *number = stage().find<QLabel>("labelFrameNumber");
    WAIT_FOR(number->text().section(QLatin1Char(' '), -1).toInt() >= 20);
    save(QStringLiteral("camera") + suffix, onScreen(protocols));
    auto *button = stage().find<QPushButton>("btnReadTable");
    stage().find<QScrollArea>("cameraConfigPanel")->ensureWidgetVisible(button);
    QVERIFY(UserHand::click(button));
    auto *table = stage().window().findChild<QDialog *>(QStringLiteral("DataManagerWidget"));
    WAIT_FOR(table->isActiveWindow());
    auto *model = table->findChild<QTableView *>()->model();
    const QStringList addresses{"3008", "3009", "00DD", "300A"};
    for (int row = 0; row < addresses.size(); ++row) {
        model->setData(model->index(row, 0), QString::number(row + 1));
        model->setData(model->index(row, 1), addresses.at(row));
        model->setData(model->index(row, 3), QStringLiteral("曝光时间"));
    }
    QVERIFY(UserHand::click(table->findChild<QPushButton *>(QStringLiteral("btnConfirm"))));
    WAIT_FOR(table->findChild<QLabel *>(QStringLiteral("labelRegisterProgress"))
                 ->text()
                 .startsWith(QStringLiteral("已完成")));
    save(QStringLiteral("registers") + suffix, onScreen(table));
}

void PictureTour::fileSending_data()
{
    addSkins();
}

void PictureTour::fileSending()
{
    QFETCH(QString, suffix);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(stage().plugIn(board,
                           {QStringLiteral("--mode"), QStringLiteral("ymodem"),
                            QStringLiteral("--ask-interval"), QStringLiteral("200"),
                            QStringLiteral("--receive-folder"), stage().file(QStringLiteral("received"))}));
    QStringList names;
    for (const QString &name : {QStringLiteral("启动参数.cfg"), QStringLiteral("firmware_v1.2.bin")}) {
        names.append(stage().file(name));
        QFile file(names.last());
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(names.size() == 1 ? 300 : 1000000));
    }
    DialogAnswers::instance().fileNames = [&names](auto, auto, auto, auto) { return names; };
    auto *pages = stage().find<QComboBox>("comboSendPage");
    QVERIFY(UserHand::choose(pages, QStringLiteral("发送文件")));
    QVERIFY(stage().openPort(board));
    if (suffix.isEmpty())
        save(QStringLiteral("filesend-empty"), onScreen(pages));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpenFiles")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnSendFiles")));
    WAIT_FOR(stage().find<QProgressBar>("progressTransfer")->text().startsWith(QStringLiteral("firmware")));
    WAIT_FOR(stage().find<QProgressBar>("progressTransfer")->value() >= 20); // with time left for a picture
    save(QStringLiteral("filesend%1").arg(suffix), onScreen(pages));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnSendFiles")));
    QVERIFY(stage().waitForNotice(QStringLiteral("传输终止：用户停止了传输"), Notice::Error));
    WAIT_EQUAL(stage().find<QPushButton>("btnSendFiles")->text(), QStringLiteral("发送文件"));
    QVERIFY(
        UserHand::inDialog([this] { return UserHand::click(stage().find<QPushButton>("btnTransferLog")); },
                           [this, &suffix](QWidget *dialog) {
                               save(QStringLiteral("transferlog%1").arg(suffix), onScreen(dialog));
                               return UserHand::press(Qt::Key_Escape);
                           }));
}

void PictureTour::menus_data()
{
    addSkins();
}

void PictureTour::menus()
{
    QFETCH(QString, suffix);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    auto *settings = stage().find<QPushButton>("btnSettings");
    const auto take = [this, suffix](const char *name) {
        return [this, suffix, name] {
            save(QStringLiteral("%1%2").arg(QLatin1String(name), suffix), onScreen(&stage().window()));
        };
    };
    QVERIFY(UserHand::visitMenu(settings, {QStringLiteral("数据缓存"), QStringLiteral("自动保存")},
                                take("menu-settings")));
    QVERIFY(UserHand::visitMenu(stage().find<QPushButton>("btnHelpMenu"), {QStringLiteral("检查版本更新")},
                                take("menu-help")));
}

void PictureTour::dialogs_data()
{
    addSkins();
}

void PictureTour::dialogs()
{
    QFETCH(QString, suffix);
    QFETCH(QString, text);
    QVERIFY(chooseSkin(text));
    const auto visit = [this, &suffix](const char *name, const std::function<bool()> &opens) {
        return UserHand::inDialog(opens, [this, &suffix, name](QWidget *dialog) {
            save(QStringLiteral("%1%2").arg(QLatin1String(name), suffix), onScreen(dialog));
            return UserHand::press(Qt::Key_Escape);
        });
    };
    QVERIFY(visit("messagebox", [this] { return stage().chooseSetting({QStringLiteral("恢复默认设置")}); }));
    QVERIFY(visit("style", [this] { return stage().chooseSetting({QStringLiteral("接收区设置")}); }));
    // A folder as a user may have one.
    QDir folder(stage().rootFolder());
    QVERIFY(folder.mkpath(QStringLiteral("测试数据/固件")) && folder.cd(QStringLiteral("测试数据")));
    for (const QString &name : {QStringLiteral("温度记录.txt"), QStringLiteral("AT指令.txt")}) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("AT\r\n") == 4);
    }
    QVERIFY(QDir::setCurrent(folder.path()));
    QVERIFY(visit("file", [this] { return UserHand::click(stage().find<QWidget>("btnLoadDataFile")); }));
    QVERIFY(QDir::setCurrent(QDir::rootPath())); // the folder goes with the stage
}

void PictureTour::tips()
{
    QVERIFY(chooseSkin(QStringLiteral("浅色")));
    QVERIFY(UserHand::click(stage().find<QWidget>("btnSingleSend")));
    QVERIFY(QtMessageTip::current() && QtMessageTip::current()->isVisible());
    save(QStringLiteral("tip-notice"), onScreen(&stage().window()));

    auto *period = stage().find<QLineEdit>("editAutoInterval");
    QVERIFY(UserHand::typeInto(period, QStringLiteral("5")));
    QVERIFY(UserHand::press(Qt::Key_Return));
    QCOMPARE(QtMessageTip::current()->tipStyle(), QtMessageTip::Bubble);
    save(QStringLiteral("tip-bubble"), onScreen(&stage().window()));
}
