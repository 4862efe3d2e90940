#include "qhexedit.h"
#include "qtterminalwidget.h"
#include "serialportwidget.h"
#include "settings.h"
#include "tours.h"
#include "updateserver.h"
#include "userhand.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTabBar>
#include <QTest>
#include <QTextEdit>
#include <QTimer>

namespace {

// Runs the event loop as the program does, and does something in it. True when
// that made the program end.
bool endsProgram(const std::function<bool()> &action)
{
    bool done = false;
    QTimer::singleShot(0, qApp, [&] { done = action(); });
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, [] { QCoreApplication::exit(1); });
    limit.start(kWaitLimitMs);
    return QApplication::exec() == 0 && done;
}

} // namespace

void WindowTour::turnsToToolsAndFoldsThePanel()
{
    auto *pages = find<QStackedWidget>("pageStack");
    for (int i = find<QTabBar>("toolTabs")->count() - 1; i >= 0; --i) {
        QVERIFY(stage().showTool(i));
        QCOMPARE(pages->currentIndex(), i);
    }
    QVERIFY(UserHand::press(Qt::Key_Tab, Qt::ControlModifier));
    QCOMPARE(pages->currentIndex(), 1);
    QVERIFY(UserHand::press(Qt::Key_Backtab, Qt::ControlModifier | Qt::ShiftModifier));
    QCOMPARE(pages->currentIndex(), 0);

    const auto *panel = find("configPanel");
    const int width = stage().terminal()->width();
    QVERIFY(click("btnFold"));
    QVERIFY(!panel->isVisible());
    // The display takes the panel's place and the 8 pixels between.
    WAIT_EQUAL(stage().terminal()->width(), width + 8 + panel->width());
    QVERIFY(click("btnFold"));
    WAIT_EQUAL(stage().terminal()->width(), width);
}

void WindowTour::restoresTheSettings()
{
    QVERIFY(stage().chooseSetting({"主题", "黄色"}));
    QVERIFY(stage().chooseSetting({"编码设置", "UTF-8"}));
    QVERIFY(stage().content("conf/config.ini").contains("Skin=2"));
    QVERIFY(
        answer([this] { return stage().chooseSetting({"恢复默认设置"}); }, "确认恢复默认设置吗?", "btnOk"));
    QCOMPARE(Settings::instance().skin, 0);
    QVERIFY(stage().content("conf/config.ini").contains("Skin=0"));
    QVERIFY(stage().content("conf/config.ini").contains("TextCodec=1"));
}

// Where nothing can unpack it, the program stays open and tells where it lies.
void WindowTour::downloadsAnUpdate()
{
    UpdateServer server;
    server.setReply("cv", UpdateServer::version("1.0.2.7", "修复若干问题"));
    server.setReply("up", UpdateServer::package("korvex.zip", "PK package"));
    qputenv("KORVEX_UPDATE_SERVER", server.address());
    QString notes;
    QVERIFY(UserHand::inDialog(
        [this] { return UserHand::chooseFromMenu(find<QPushButton>("btnHelpMenu"), {"检查版本更新"}); },
        [&](QWidget *dialog) {
            auto *update = dialog->findChild<QPushButton *>("btnUpdate");
            auto *status = dialog->findChild<QLabel *>("labelUpdateStatus");
            const auto comes = [&](const QString &text) {
                return QTest::qWaitFor([&] { return update->isEnabled() && status->text() == text; },
                                       kWaitLimitMs);
            };
            if (!comes("检测到新版本: V1.0.2.7") || !UserHand::click(update) ||
                !comes("未找到解压程序，请手动解压升级包"))
                return false;
            notes = dialog->findChild<QTextEdit *>("textVersionNotes")->toPlainText();
            return UserHand::press(Qt::Key_Escape);
        }));
    qunsetenv("KORVEX_UPDATE_SERVER");
    QVERIFY(notes.contains(stage().file("download/korvex.zip")));
    QCOMPARE(stage().content("download/korvex.zip"), QByteArray("PK package"));
}

// The serial page agrees at once, the editor asks; what the board sends
// meanwhile is in the file.
void WindowTour::savesWhenClosing()
{
    BoardProcess board("COM3", stage().portsFolder());
    QVERIFY(stage().plugIn(board, {"--mode", "log", "--rate", "20"}));
    QVERIFY(stage().chooseSetting({"数据缓存", "自动保存"}));
    QVERIFY(stage().openPort(board));
    WAIT_FOR(stage().receivedShown() > 100);
    QVERIFY(stage().showTool(4));
    QFile file(stage().file("rom.bin"));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("0123") == 4);
    file.close();
    Stage::answerFileDialogs(file.fileName());
    QVERIFY(UserHand::press(Qt::Key_O, Qt::ControlModifier));
    WAIT_EQUAL(textOf("labelSize"), QString("Size: 4"));
    QVERIFY(UserHand::type("41"));

    auto *serial = stage().window().findChild<SerialportWidget *>();
    const auto received = [serial] { return serial->counts().value(1).toLongLong(); };
    qint64 whenAsked = 0;
    QVERIFY(endsProgram([&] {
        return UserHand::inDialog([this] { return stage().chooseSetting({"退出"}); },
                                  [&](QWidget *dialog) {
                                      whenAsked = received();
                                      return QTest::qWaitFor([&] { return received() > whenAsked + 200; },
                                                             kWaitLimitMs) &&
                                             UserHand::click(dialog->findChild<QWidget *>("btnDiscard"));
                                  });
    }));
    const QDir folder(stage().file("save"));
    const QStringList saved = folder.entryList({"recv_*.bin"}, QDir::Files);
    QCOMPARE(saved.size(), 1);
    QCOMPARE(QFileInfo(folder.filePath(saved.first())).size(), received());
    QVERIFY(received() > whenAsked + 200);
}
