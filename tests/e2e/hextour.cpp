#include "qhexedit.h"
#include "qtmessagetip.h"
#include "tours.h"
#include "userhand.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTest>

namespace {

constexpr int kHexEdit = 4; // the tab

// Makes the file and opens it by the shortcut.
bool openFile(Stage &stage, const QString &name, const QByteArray &bytes)
{
    QFile file(stage.file(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return false;
    file.close();
    Stage::answerFileDialogs(stage.file(name));
    const auto isOpen = [&] {
        return stage.find<QPushButton>("btnStopWork")->isHidden() &&
               stage.find<QHexEdit>("hexEdit")->size() == bytes.size();
    };
    return stage.showTool(kHexEdit) && UserHand::press(Qt::Key_O, Qt::ControlModifier) &&
           QTest::qWaitFor(isOpen, kWaitLimitMs);
}

} // namespace

void HexTour::editsAndSaves()
{
    const QString name("固件.bin");
    QVERIFY(openFile(stage(), name, "0123456789abcdef0123456789abcdef"));
    auto *edit = find<QHexEdit>("hexEdit");
    QVERIFY(UserHand::press(Qt::Key_Down));
    QVERIFY(UserHand::type("5a"));
    QCOMPARE(textOf("labelAddress"), QString("Address: 17"));
    QVERIFY(UserHand::press(Qt::Key_Tab)); // the text column
    QVERIFY(UserHand::press(Qt::Key_Insert));
    QVERIFY(UserHand::type("two"));
    QCOMPARE(edit->size(), qint64(35));
    QVERIFY(UserHand::press(Qt::Key_Z, Qt::ControlModifier));
    QCOMPARE(edit->size(), qint64(32));
    QVERIFY(UserHand::press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier));

    QVERIFY(UserHand::press(Qt::Key_F, Qt::ControlModifier));
    QVERIFY(UserHand::type("64 65\n"));
    WAIT_EQUAL(edit->selectionBegin(), qint64(32)); // the next one
    QVERIFY(typeInto("editReplace", "44 45"));
    QVERIFY(click("btnReplaceAll"));
    WAIT_FOR(QtMessageTip::current() && QtMessageTip::current()->text() == QString("已替换2处"));
    QVERIFY(UserHand::press(Qt::Key_S, Qt::ControlModifier));
    WAIT_EQUAL(stage().content(name), QByteArray("0123456789abcDEfZtwo123456789abcDEf"));

    // Shortcuts are this tab's.
    QVERIFY(stage().showTool(0));
    QVERIFY(UserHand::press(Qt::Key_Z, Qt::ControlModifier));
    QVERIFY(UserHand::press(Qt::Key_W, Qt::ControlModifier));
    QVERIFY(stage().showTool(kHexEdit));
    QCOMPARE(edit->size(), qint64(35));
    QVERIFY(!edit->isModified());
}

void HexTour::asksBeforeEditsAreLost()
{
    QVERIFY(openFile(stage(), "rom.bin", "0123"));
    QVERIFY(UserHand::type("41"));
    auto *edit = find<QHexEdit>("hexEdit");
    const auto closeFile = [] { return UserHand::press(Qt::Key_W, Qt::ControlModifier); };
    const QString question("文件有未保存的修改，是否保存？\nrom.bin");
    QVERIFY(UserHand::inDialog([this] { return click("btnClose"); }, // the window's
                               [](QWidget *) { return UserHand::press(Qt::Key_Escape); }));
    QVERIFY(answer(closeFile, question, "btnCancel"));
    QVERIFY(edit->isModified());
    QVERIFY(answer(closeFile, question, "btnOk"));
    WAIT_EQUAL(edit->size(), qint64(0));
    QCOMPARE(stage().content("rom.bin"), QByteArray("A123"));
}
