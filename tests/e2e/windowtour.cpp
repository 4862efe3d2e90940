#include "serialportwidget.h"
#include "settings.h"
#include "tours.h"
#include "userhand.h"

#include <QApplication>
#include <QDir>
#include <QTest>
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
