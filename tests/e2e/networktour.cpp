#include "tours.h"
#include "userhand.h"

#include <QComboBox>
#include <QTest>

constexpr int kNetwork = 2; // the tab

void NetworkTour::servesBoards()
{
    QVERIFY(stage().showTool(kNetwork));
    const QString port = QString::number(Stage::freePort());
    QVERIFY(typeInto("editPort", port));
    QVERIFY(click("btnOpen"));
    QVERIFY(stage().waitForNotice(QString("TCP服务监听[端口:%1]已启动!!").arg(port), Notice::Information));
    auto *list = find<QComboBox>("comboClients");
    const QStringList options{"--net-port", port, "--period", "60000"};
    BoardProcess first;
    BoardProcess second;
    QVERIFY(first.startOnNetwork("tcp-client", options));
    WAIT_EQUAL(list->count(), 2);
    QVERIFY(second.startOnNetwork("tcp-client", options));
    WAIT_EQUAL(list->count(), 3);
    const QString one = list->itemText(1);
    const QString two = list->itemText(2);

    const auto send = [this](const QString &text) {
        return typeInto("textEditSend", text) && click("btnSingleSend");
    };
    QVERIFY(send("all"));
    WAIT_EQUAL(stage().sentShown(), qint64(6));
    WAIT_EQUAL(stage().receivedShown(), qint64(6));
    WAIT_FOR(stage().shownText().contains(QString("[Tcp client %1] all").arg(one)));
    WAIT_FOR(stage().shownText().contains(QString("[Tcp client %1] all").arg(two)));
    QVERIFY(UserHand::choose(list, two));
    QVERIFY(send("two"));
    WAIT_FOR(stage().shownText().endsWith(QString("\n[Tcp client %1] two").arg(two)));

    const auto disconnectChosen = [this] { return click("btnDisconnect"); };
    QVERIFY(answer(disconnectChosen, "是否确认断开当前客户端?", "btnOk"));
    WAIT_EQUAL(list->count(), 2);
    QVERIFY(second.waitForEvent("disconnected 0"));
    // Nothing goes to the neighbour of the one that left.
    QVERIFY(send("nobody"));
    QVERIFY(stage().waitForNotice("未选择客户端，数据未发送！", Notice::Error));
    QVERIFY(UserHand::choose(list, "All Clients"));
    QVERIFY(answer(disconnectChosen, "是否确认断开所有连接?", "btnOk"));
    QVERIFY(first.waitForEvent("disconnected 0"));
    QVERIFY(click("btnOpen"));
    QVERIFY(stage().waitForNotice(QString("TCP服务监听[端口:%1]已关闭!!").arg(port), Notice::Information));
    QVERIFY(first.stop());
    QCOMPARE(first.statistics().value("read"), qint64(3));
}
