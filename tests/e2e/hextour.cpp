#include "dialoganswers.h"
#include "qhexedit.h"
#include "qtmessagetip.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
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
    return stage.showTool(kHexEdit) && UserHand::press(Qt::Key_O, Qt::ControlModifier) &&
           QTest::qWaitFor([&] { return !stage.find<QHexEdit>("hexEdit")->task()->isRunning(); }, 30000) &&
           stage.find<QHexEdit>("hexEdit")->size() == bytes.size();
}

bool answers(const std::function<bool()> &opens, const QString &question, int key)
{
    return UserHand::inDialog(opens, [&question, key](QWidget *dialog) {
        return dialog->findChild<QLabel *>(QStringLiteral("msgBoxText"))->text() == question &&
               UserHand::press(key);
    });
}

QString tip()
{
    return QtMessageTip::current() && QtMessageTip::current()->isVisible() ? QtMessageTip::current()->text()
                                                                           : QString();
}

} // namespace

void HexTour::editsAndSaves()
{
    const auto name = QStringLiteral("固件.bin");
    QVERIFY(openFile(stage(), name, "0123456789abcdef0123456789abcdef"));
    auto *edit = stage().find<QHexEdit>("hexEdit");
    QCOMPARE(stage().find<QLabel>("labelSize")->text(), QStringLiteral("Size: 32"));
    QVERIFY(UserHand::press(Qt::Key_Down));
    QVERIFY(UserHand::type(QStringLiteral("5a")));
    QCOMPARE(stage().find<QLabel>("labelAddress")->text(), QStringLiteral("Address: 17"));
    QVERIFY(UserHand::press(Qt::Key_Tab)); // the text column
    QVERIFY(UserHand::press(Qt::Key_Insert));
    QVERIFY(UserHand::type(QStringLiteral("two")));
    QCOMPARE(edit->size(), qint64(35));
    QVERIFY(UserHand::press(Qt::Key_Z, Qt::ControlModifier));
    QCOMPARE(edit->size(), qint64(32));
    QVERIFY(UserHand::press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier));
    QVERIFY(UserHand::press(Qt::Key_S, Qt::ControlModifier));
    WAIT_EQUAL(tip(), QStringLiteral("  文件已保存  "));
    QCOMPARE(stage().content(name), QByteArray("0123456789abcdefZtwo123456789abcdef"));
    QVERIFY(!QFile::exists(stage().file(name + QStringLiteral(".~tmp"))));

    // Shortcuts are this tab's.
    QVERIFY(stage().showTool(0));
    QVERIFY(UserHand::press(Qt::Key_Z, Qt::ControlModifier));
    QVERIFY(UserHand::press(Qt::Key_W, Qt::ControlModifier));
    QVERIFY(stage().showTool(kHexEdit));
    QCOMPARE(edit->size(), qint64(35));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnCloseFile")));
    QCOMPARE(stage().find<QLabel>("labelSize")->text(), QStringLiteral("Size: 0"));
    QVERIFY(UserHand::press(Qt::Key_S, Qt::ControlModifier));
    QCOMPARE(tip(), QStringLiteral("请先打开文件"));
    QCOMPARE(stage().content(name).size(), 35);
}

void HexTour::findsAndReplaces()
{
    QByteArray image(3000000, '\0');
    image.replace(2900000, 5, "hello");
    QVERIFY(openFile(stage(), QStringLiteral("dump.img"), image));
    auto *edit = stage().find<QHexEdit>("hexEdit");
    QVERIFY(UserHand::press(Qt::Key_F, Qt::ControlModifier));
    QVERIFY(UserHand::type(QStringLiteral("68 65 6C 6C 6F\n")));
    WAIT_EQUAL(edit->selectionBegin(), qint64(2900000));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editReplace"), QStringLiteral("48 45 4c 4c 4f")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnReplaceAll")));
    WAIT_EQUAL(tip(), QStringLiteral("已替换1处"));
    QCOMPARE(edit->document().read(2900000, 5), QByteArray("HELLO"));
    QVERIFY(UserHand::press(Qt::Key_G, Qt::ControlModifier));
    QVERIFY(UserHand::type(QStringLiteral("0x10\n")));
    QCOMPARE(stage().find<QLabel>("labelAddress")->text(), QStringLiteral("Address: 16"));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnUndo")));
    QVERIFY(!edit->isModified());
}

void HexTour::warnsBeforeEditsAreLost()
{
    QVERIFY(openFile(stage(), QStringLiteral("rom.bin"), "0123"));
    QVERIFY(UserHand::type(QStringLiteral("41")));
    auto *edit = stage().find<QHexEdit>("hexEdit");
    const QString question = QStringLiteral("文件有未保存的修改，是否保存？\nrom.bin");
    for (const Qt::Key stay : {Qt::Key_Escape, Qt::Key_Return})
        QVERIFY(answers([] { return UserHand::press(Qt::Key_W, Qt::ControlModifier); }, question, stay));
    QVERIFY(answers([this] { return UserHand::click(stage().find<QWidget>("btnClose")); }, question,
                    Qt::Key_Escape));
    QCOMPARE(edit->size(), qint64(4));
    QVERIFY(edit->isModified());
    QVERIFY(UserHand::inDialog([] { return UserHand::press(Qt::Key_W, Qt::ControlModifier); },
                               [](QWidget *dialog) {
                                   return UserHand::click(
                                       dialog->findChild<QWidget *>(QStringLiteral("btnOk")));
                               }));
    WAIT_EQUAL(edit->size(), qint64(0));
    QCOMPARE(stage().content(QStringLiteral("rom.bin")), QByteArray("A123"));
}

void HexTour::saysWhatCannotBeOpened()
{
    QVERIFY(stage().showTool(kHexEdit));
    Stage::answerFileDialogs(stage().file(QStringLiteral("missing.bin")));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpenFile")));
    QCOMPARE(tip(), QStringLiteral("打开文件失败! 文件不存在"));
}
