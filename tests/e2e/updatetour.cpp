#include "stage.h"
#include "tours.h"
#include "updateserver.h"
#include "userhand.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>

// There is a newer version; its package arrives, and since nothing here can
// unpack it, the program stays open and says where it lies.
void UpdateTour::downloadsAPackage()
{
    UpdateServer server;
    server.setReply("cv", UpdateServer::version("1.0.2.7", "修复若干问题"));
    server.setReply("up", UpdateServer::package("korvex.zip", "PK package"));
    qputenv("KORVEX_UPDATE_SERVER", server.address());
    QString status;
    QString notes;
    QVERIFY(UserHand::inDialog(
        [this] {
            return UserHand::chooseFromMenu(stage().find<QPushButton>("btnHelpMenu"),
                                            {QStringLiteral("检查版本更新")});
        },
        [&](QWidget *dialog) {
            auto *update = dialog->findChild<QPushButton *>(QStringLiteral("btnUpdate"));
            auto *label = dialog->findChild<QLabel *>(QStringLiteral("labelUpdateStatus"));
            const auto offered = QStringLiteral("检测到新版本: V1.0.2.7");
            if (!QTest::qWaitFor([&] { return update->isEnabled() && label->text() == offered; }, 30000) ||
                !UserHand::click(update) ||
                !QTest::qWaitFor([&] { return update->isEnabled() && label->text() != offered; }, 30000))
                return false;
            status = label->text();
            notes = dialog->findChild<QTextEdit *>(QStringLiteral("textVersionNotes"))->toPlainText();
            return UserHand::press(Qt::Key_Escape);
        }));
    qunsetenv("KORVEX_UPDATE_SERVER");
    QCOMPARE(status, QStringLiteral("未找到解压程序，请手动解压升级包"));
    QVERIFY(notes.contains(stage().file(QStringLiteral("download/korvex.zip"))));
    QCOMPARE(stage().content(QStringLiteral("download/korvex.zip")), QByteArray("PK package"));
    QVERIFY(stage().window().isVisible());
}
