#include "dialoganswers.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QDir>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

namespace {

QByteArray content(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 997);
    return bytes;
}

QString makeFile(const Stage &stage, const QString &name, int size)
{
    QFile file(stage.file(name));
    return file.open(QIODevice::WriteOnly) && file.write(content(size)) == size ? file.fileName() : QString();
}

// A boot loader that asks for files; what it gets goes to the folder "received".
QStringList bootLoader(const Stage &stage, const QStringList &faults = {})
{
    QStringList options{QStringLiteral("--mode"),           QStringLiteral("ymodem"),
                        QStringLiteral("--ask-interval"),   QStringLiteral("200"),
                        QStringLiteral("--receive-folder"), stage.file(QStringLiteral("received"))};
    for (const QString &fault : faults)
        options << QStringLiteral("--fault") << fault;
    return options;
}

bool choose(Stage &stage, const QStringList &files)
{
    DialogAnswers::instance().fileNames = [files](auto, auto, auto, auto) { return files; };
    return UserHand::choose(stage.find<QComboBox>("comboSendPage"), QStringLiteral("发送文件")) &&
           UserHand::click(stage.find<QPushButton>("btnOpenFiles"));
}

QString transferText(Stage &stage)
{
    return stage.find<QPlainTextEdit>("textTransfer")->toPlainText();
}

} // namespace

void TransferTour::sendsFiles()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(
        stage().plugIn(board, bootLoader(stage(), {QStringLiteral("lose@2"), QStringLiteral("nak@5*2")})));
    const QStringList names{QStringLiteral("固件 v2.bin"), QStringLiteral("empty.cfg"),
                            QStringLiteral("map.txt")};
    QVERIFY(choose(stage(), {makeFile(stage(), names[0], 30000), makeFile(stage(), names[1], 0),
                             makeFile(stage(), names[2], 129)}));
    auto *send = stage().find<QPushButton>("btnSendFiles");
    QVERIFY(!send->isEnabled()); // without a port
    QVERIFY(stage().openPort(board));
    QVERIFY(UserHand::click(send));
    QCOMPARE(send->text(), QStringLiteral("停止发送"));
    WAIT_EQUAL(send->text(), QStringLiteral("发送文件"));
    QVERIFY2(transferText(stage()).endsWith(QStringLiteral("传输完成")), qPrintable(transferText(stage())));
    QVERIFY(stage().waitForNotice(QStringLiteral("文件传输完成！"), Notice::Information));
    QCOMPARE(stage().content(QStringLiteral("received/") + names[0]), content(30000));
    QCOMPARE(stage().content(QStringLiteral("received/") + names[1]), QByteArray());
    QCOMPARE(stage().content(QStringLiteral("received/") + names[2]), content(129));
    QVERIFY(stage().isOpenShown());
    // The board asks for more, and the page has its port again.
    const qint64 before = stage().receivedShown();
    WAIT_FOR(stage().receivedShown() > before);
}

void TransferTour::stops()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bootLoader(stage())));
    QVERIFY(choose(stage(), {makeFile(stage(), QStringLiteral("long.bin"), 2000000)}));
    QVERIFY(stage().openPort(board));
    auto *send = stage().find<QPushButton>("btnSendFiles");
    QVERIFY(UserHand::click(send));
    WAIT_FOR(stage().find<QProgressBar>("progressTransfer")->value() >= 1);
    QVERIFY(UserHand::click(send));
    WAIT_EQUAL(send->text(), QStringLiteral("发送文件"));
    QVERIFY(transferText(stage()).contains(QStringLiteral("传输终止")));
    QVERIFY(board.waitForEvent(QStringLiteral("cancelled")));
    QVERIFY(stage().isOpenShown());
}

void TransferTour::explainsAFailure()
{
    BoardProcess board(QStringLiteral("COM6"), stage().portsFolder());
    QVERIFY(stage().plugIn(board, bootLoader(stage(), {QStringLiteral("can@3")})));
    QVERIFY(choose(stage(), {makeFile(stage(), QStringLiteral("app.bin"), 9000)}));
    QVERIFY(stage().openPort(board));
    auto *send = stage().find<QPushButton>("btnSendFiles");
    QVERIFY(UserHand::click(send));
    WAIT_EQUAL(send->text(), QStringLiteral("发送文件"));
    QVERIFY(transferText(stage()).contains(QStringLiteral("传输终止\n接收端取消了传输")));
    QString log;
    QVERIFY(UserHand::inDialog(
        [this] { return UserHand::click(stage().find<QPushButton>("btnTransferLog")); },
        [&log](QWidget *dialog) {
            log = dialog->findChild<QPlainTextEdit *>(QStringLiteral("textTransferLog"))->toPlainText();
            return UserHand::press(Qt::Key_Escape);
        }));
    QVERIFY(log.contains(QStringLiteral("发送 STX 序号3 数据1024字节")));
    QVERIFY(log.contains(QStringLiteral("接收 CAN")));
}
