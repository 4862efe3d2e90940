#include "qtterminalwidget.h"
#include "stage.h"
#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTest>

namespace {

constexpr int kNetwork = 2; // the tab

// A port that nobody has at the moment.
QString freePort()
{
    QTcpServer probe;
    probe.listen();
    return QString::number(probe.serverPort());
}

bool send(Stage &stage, const QString &text)
{
    return UserHand::typeInto(stage.find<QWidget>("textEditSend"), text) &&
           UserHand::click(stage.find<QPushButton>("btnSingleSend"));
}

bool confirm(Stage &stage, const QString &question)
{
    return UserHand::inDialog([&stage] { return UserHand::click(stage.find<QPushButton>("btnDisconnect")); },
                              [&question](QWidget *dialog) {
                                  for (const QLabel *label : dialog->findChildren<QLabel *>()) {
                                      if (label->text() == question)
                                          return UserHand::press(Qt::Key_Return);
                                  }
                                  return false;
                              });
}

} // namespace

void NetworkTour::servesBoards()
{
    QVERIFY(stage().showTool(kNetwork));
    const QString port = freePort();
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), port));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(
        stage().waitForNotice(QStringLiteral("TCP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));
    QVERIFY(!stage().find<QComboBox>("comboNetType")->isEnabled());

    const QStringList options{"--net-port", port, "--period", "60000"};
    BoardProcess first;
    QVERIFY(first.startOnNetwork("tcp-client", options));
    auto *list = stage().find<QComboBox>("comboClients");
    WAIT_EQUAL(list->count(), 2);
    BoardProcess second;
    QVERIFY(second.startOnNetwork("tcp-client", options));
    WAIT_EQUAL(list->count(), 3);
    const QString one = list->itemText(1);
    const QString two = list->itemText(2);
    QVERIFY(stage().waitForNotice(QStringLiteral("新客户端[%1]已连接:").arg(two), Notice::Information));

    QVERIFY(send(stage(), QStringLiteral("all")));
    WAIT_EQUAL(stage().receivedShown(), qint64(6));
    WAIT_EQUAL(stage().sentShown(), qint64(6));
    WAIT_FOR(stage().shownText().contains(QStringLiteral("[Tcp client %1] all").arg(one)));
    WAIT_FOR(stage().shownText().contains(QStringLiteral("[Tcp client %1] all").arg(two)));

    QVERIFY(UserHand::choose(list, two));
    QVERIFY(send(stage(), QStringLiteral("two")));
    WAIT_FOR(stage().shownText().endsWith(QStringLiteral("\n[Tcp client %1] two").arg(two)));
    WAIT_EQUAL(stage().sentShown(), qint64(9));

    QVERIFY(confirm(stage(), QStringLiteral("是否确认断开当前客户端?")));
    WAIT_EQUAL(list->count(), 2);
    QVERIFY(second.waitForEvent("disconnected 0"));
    // Nothing goes to the neighbour of the one that left.
    QVERIFY(send(stage(), QStringLiteral("nobody")));
    QVERIFY(stage().waitForNotice(QStringLiteral("未选择客户端，数据未发送！"), Notice::Error));

    QVERIFY(UserHand::choose(list, QStringLiteral("All Clients")));
    QVERIFY(confirm(stage(), QStringLiteral("是否确认断开所有连接?")));
    WAIT_EQUAL(list->count(), 1);
    QVERIFY(first.waitForEvent("disconnected 0"));

    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(
        stage().waitForNotice(QStringLiteral("TCP服务监听[端口:%1]已关闭!!").arg(port), Notice::Information));
    QVERIFY(stage().find<QComboBox>("comboNetType")->isEnabled());
    QVERIFY(first.stop());
    QCOMPARE(first.statistics().value("read"), qint64(3));
}

void NetworkTour::connectsToABoard()
{
    QVERIFY(stage().showTool(kNetwork));
    BoardProcess board;
    QVERIFY(board.startOnNetwork("tcp-server", {"--address", "::1"}));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboNetType"), QStringLiteral("TCP Client")));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editServerAddress"), QStringLiteral("::1")));
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), QString::number(board.netPort())));
    auto *open = stage().find<QPushButton>("btnOpen");
    QCOMPARE(open->text(), QStringLiteral("建立连接"));
    QVERIFY(UserHand::click(open));
    QVERIFY(stage().waitForNotice(QStringLiteral("[TCP Client]与服务器连接成功！！！"), Notice::Information));
    QCOMPARE(open->text(), QStringLiteral("断开连接"));
    QVERIFY(send(stage(), QStringLiteral("温度?\n")));
    WAIT_EQUAL(stage().shownText(), QStringLiteral("[Tcp client  来自服务端消息 ] 温度?\n"));

    const QString port = QString::number(board.netPort());
    QVERIFY(board.stop());
    QVERIFY(stage().waitForNotice(QStringLiteral("[TCP Client]与服务器已断开连接~~~"), Notice::Information));
    QCOMPARE(open->text(), QStringLiteral("建立连接"));
    // Nobody there: said beside the button. And once somebody is, one click is enough.
    QVERIFY(UserHand::click(open));
    WAIT_EQUAL(stage().find<QLabel>("labelLinkState")->text(), QStringLiteral("连接失败：对方拒绝连接"));
    QVERIFY(board.startOnNetwork("tcp-server", {"--address", "::1", "--net-port", port}));
    QVERIFY(UserHand::click(open));
    QVERIFY(stage().waitForNotice(QStringLiteral("[TCP Client]与服务器连接成功！！！"), Notice::Information));
    QVERIFY(UserHand::click(open));
    QVERIFY(stage().waitForNotice(QStringLiteral("[ TCP Client ] 已断开连接！"), Notice::Information));
}

void NetworkTour::exchangesDatagrams()
{
    QVERIFY(stage().showTool(kNetwork));
    BoardProcess board;
    QVERIFY(board.startOnNetwork("udp", {}));
    QVERIFY(UserHand::choose(stage().find<QComboBox>("comboNetType"), QStringLiteral("UDP")));
    const QString port = freePort();
    QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), port));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(
        stage().waitForNotice(QStringLiteral("UDP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));

    auto *address = stage().find<QLineEdit>("editDestinationAddress");
    auto *destination = stage().find<QLineEdit>("editDestinationPort");
    QVERIFY(UserHand::typeInto(address, QStringLiteral("board")));
    QVERIFY(send(stage(), QStringLiteral("x")));
    QVERIFY(stage().waitForNotice(QStringLiteral("UDP目的地址配置错误！"), Notice::Error));
    QVERIFY(UserHand::typeInto(address, QStringLiteral("127.0.0.1")));
    QVERIFY(UserHand::typeInto(destination, QStringLiteral("70000")));
    QVERIFY(send(stage(), QStringLiteral("x")));
    QVERIFY(stage().waitForNotice(QStringLiteral("UDP目的端口配置错误！"), Notice::Error));
    QVERIFY(UserHand::typeInto(destination, QString::number(board.netPort())));
    QVERIFY(send(stage(), QStringLiteral("datagram")));
    WAIT_EQUAL(stage().shownText(),
               QStringLiteral("[Tcp client  UDP from 127.0.0.1:%1 ] datagram").arg(board.netPort()));
    QVERIFY(UserHand::click(stage().find<QPushButton>("btnOpen")));
    QVERIFY(stage().find<QComboBox>("comboNetType")->isEnabled());
}

void NetworkTour::saysWhatIsWrong()
{
    QVERIFY(stage().showTool(kNetwork));
    QTcpServer holder;
    QVERIFY(holder.listen());
    auto *open = stage().find<QPushButton>("btnOpen");
    for (const QString &port :
         {QString::number(holder.serverPort()), QStringLiteral("0"), QStringLiteral("70000")}) {
        QVERIFY(UserHand::typeInto(stage().find<QLineEdit>("editPort"), port));
        QVERIFY(UserHand::click(open));
        QVERIFY(stage().waitForNotice(
            QStringLiteral("TCP服务监听[端口:%1]失败，请确认该端口是否可用!!").arg(port), Notice::Error));
    }
    QCOMPARE(open->text(), QStringLiteral("开始监听"));
    QVERIFY(send(stage(), QStringLiteral("x")));
    QCOMPARE(stage().sentShown(), qint64(0));
}
