#include "qtterminalwidget.h"
#include "serialportwidget.h"
#include "settings.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QStackedWidget>
#include <QTabBar>
#include <QTest>
#include <QTimer>

namespace {

const QStringList kBoard{QStringLiteral("--mode"), QStringLiteral("burst"), QStringLiteral("--total"),
                         QStringLiteral("3000")};
constexpr qint64 kBoardBytes = 3000;
const auto kDataCache = QStringLiteral("数据缓存");

// Runs the event loop as the program does, and does something in it. True when
// that made the program end.
bool endsProgram(const std::function<bool()> &action)
{
    bool done = false;
    QTimer::singleShot(0, qApp, [&] { done = action(); });
    QTimer patience;
    QObject::connect(&patience, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    patience.start(60000);
    return QApplication::exec() == 0 && done;
}

} // namespace

void WindowTour::turnsToTools()
{
    auto *tabs = stage().find<QTabBar>("toolTabs");
    auto *pages = stage().find<QStackedWidget>("pageStack");
    const QStringList names{QStringLiteral("串口调试助手"), QStringLiteral("摄像头调试助手"),
                            QStringLiteral("网络调试助手"), QStringLiteral("PID调试助手"),
                            QStringLiteral("二进制文件编辑器")};
    QCOMPARE(tabs->count(), names.size());
    for (int i = names.size() - 1; i >= 0; --i) {
        QCOMPARE(tabs->tabText(i), names.at(i));
        QVERIFY(UserHand::clickAt(tabs, tabs->tabRect(i).center()));
        QCOMPARE(pages->currentIndex(), i);
    }
    QVERIFY(UserHand::press(Qt::Key_Tab, Qt::ControlModifier));
    QCOMPARE(pages->currentIndex(), 1);
    QVERIFY(UserHand::press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier));
    QCOMPARE(pages->currentIndex(), 0);
}

void WindowTour::foldsThePanel()
{
    auto *fold = stage().find<QPushButton>("btnFold");
    auto *panel = stage().find<QWidget>("configPanel");
    const int width = stage().terminal()->width();
    QVERIFY(UserHand::click(fold));
    QVERIFY(!panel->isVisible());
    QCOMPARE(fold->text(), QStringLiteral("显示配置界面"));
    WAIT_FOR(stage().terminal()->width() > width + 200);
    const int whole = stage().terminal()->width();
    QVERIFY(UserHand::click(fold));
    QVERIFY(panel->isVisible());
    QCOMPARE(fold->text(), QStringLiteral("隐藏配置界面"));
    // As wide as the panel leaves it, with 8 pixels between.
    WAIT_EQUAL(stage().terminal()->width(), whole - 8 - panel->width());
}

void WindowTour::restoresTheSettings()
{
    QVERIFY(stage().chooseSetting({QStringLiteral("主题"), QStringLiteral("黄色")}));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    const auto stored = [this](const char *key) {
        return QSettings(stage().file(QStringLiteral("conf/config.ini")), QSettings::IniFormat)
            .value(QLatin1String(key))
            .toInt();
    };
    QCOMPARE(stored("Common/Skin"), 2);
    QCOMPARE(stored("Common/TextCodec"), 0);
    QVERIFY(UserHand::inDialog([this] { return stage().chooseSetting({QStringLiteral("恢复默认设置")}); },
                               [](QWidget *dialog) {
                                   return dialog->findChild<QLabel *>(QStringLiteral("msgBoxText"))->text() ==
                                              QStringLiteral("确认恢复默认设置吗?") &&
                                          UserHand::press(Qt::Key_Return);
                               }));
    QCOMPARE(Settings::instance().skin, 0);
    QCOMPARE(stored("Common/Skin"), 0);
    QCOMPARE(stored("Common/TextCodec"), 1);
}

void WindowTour::closesWithoutAsking()
{
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, kBoard));
    QVERIFY(stage().chooseSetting({kDataCache, QStringLiteral("关闭时不提醒")}));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), kBoardBytes);
    QVERIFY(endsProgram([this] { return UserHand::click(stage().find<QWidget>("btnClose")); }));
    QVERIFY(!QDir(stage().file(QStringLiteral("save"))).exists());
}

void WindowTour::asksBeforeClosing()
{
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, kBoard));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(stage().chooseSetting({kDataCache, QStringLiteral("关闭时提醒")}));
    QVERIFY(stage().openPort(board));
    WAIT_EQUAL(stage().receivedShown(), kBoardBytes);
    const QString shown = stage().shownText();

    const auto name = QStringLiteral("kept.txt");
    Stage::answerFileDialogs(stage().file(name));
    QVERIFY(endsProgram([this] {
        return UserHand::inDialog(
            [this] { return UserHand::click(stage().find<QWidget>("btnClose")); },
            [](QWidget *dialog) {
                return dialog->findChild<QLabel *>(QStringLiteral("msgBoxText"))->text() ==
                           QStringLiteral("当前有数据未保存，是否保存接收数据?") &&
                       UserHand::click(dialog->findChild<QWidget *>(QStringLiteral("btnOk")));
            });
    }));
    QVERIFY(!shown.isEmpty());
    QCOMPARE(stage().content(name), shown.toUtf8());
}

// The serial page agrees at once, the editor asks; what the board sends
// meanwhile is in the file.
void WindowTour::savesWhenClosing()
{
    BoardProcess board(QStringLiteral("COM3"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, {QStringLiteral("--mode"), QStringLiteral("log"), QStringLiteral("--rate"),
                                   QStringLiteral("20")}));
    QVERIFY(stage().chooseSetting({QStringLiteral("编码设置"), QStringLiteral("UTF-8")}));
    QVERIFY(stage().chooseSetting({kDataCache, QStringLiteral("自动保存")}));
    QVERIFY(stage().openPort(board));
    WAIT_FOR(stage().receivedShown() > 100);

    QVERIFY(stage().showTool(4));
    QFile file(stage().file(QStringLiteral("rom.bin")));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("0123") == 4);
    file.close();
    Stage::answerFileDialogs(file.fileName());
    QVERIFY(UserHand::press(Qt::Key_O, Qt::ControlModifier));
    WAIT_EQUAL(stage().find<QLabel>("labelSize")->text(), QStringLiteral("Size: 4"));
    QVERIFY(UserHand::type(QStringLiteral("41")));

    auto *serial = stage().window().findChild<SerialportWidget *>();
    const auto received = [serial] { return serial->counts().value(1).toLongLong(); };
    qint64 whenAsked = 0;
    QVERIFY(endsProgram([&] {
        return UserHand::inDialog(
            [this] { return stage().chooseSetting({QStringLiteral("退出")}); },
            [&](QWidget *dialog) {
                whenAsked = received();
                return QTest::qWaitFor([&] { return received() > whenAsked + 200; }, kWaitLimitMs) &&
                       UserHand::click(dialog->findChild<QWidget *>(QStringLiteral("btnDiscard")));
            });
    }));
    const QDir folder(stage().file(QStringLiteral("save")));
    const QStringList saved = folder.entryList({QStringLiteral("recv_*.bin")}, QDir::Files);
    QCOMPARE(saved.size(), 1);
    QCOMPARE(QFileInfo(folder.filePath(saved.first())).size(), received());
    QVERIFY(received() > whenAsked + 200);
}
