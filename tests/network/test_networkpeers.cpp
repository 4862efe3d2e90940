// The network page with peers at the other end, in processes of their own:
// well-behaved ones, and those that flood, drip, reset, vanish or never read.

#include "tests/network/networkpagetest.h"

#include "network/tcpserver.h"
#include "serial/bytespool.h"
#include "shell/base/dialoganswers.h"
#include "shell/base/stateindicator.h"

#include <QNetworkDatagram>
#include <QTcpServer>
#include <QUdpSocket>

class TestNetworkPeers : public NetworkPageTest
{
    Q_OBJECT

private slots:
    void serves_data();
    void serves();
    void disconnectsOneAndAll();
    void losesTheChosenPeer();
    void takesWhatPeersDo_data();
    void takesWhatPeersDo();
    void takesAFloodWhole_data();
    void takesAFloodWhole();
    void tellsOfAPeerThatNeverReads();
    void closesInABurst_data();
    void closesInABurst();
    void connects_data();
    void connects();
    void connectsAfterARefusal_data();
    void connectsAfterARefusal();
    void cancelsConnecting();
    void hearsOfTheServersEnd_data();
    void hearsOfTheServersEnd();
    void exchangesDatagrams_data();
    void exchangesDatagrams();
    void takesDatagramsOfAllSizes();
    void sendsBroadcasts();
    void checksTheDestination_data();
    void checksTheDestination();

private:
    QStringList to(quint16 port, const QString &address, const QStringList &more) const
    {
        return QStringList{"--address", address, "--net-port", QString::number(port), "--delay", "0"} + more;
    }
    void answer(int result)
    {
        m_questions.clear();
        DialogAnswers::instance().message = [this, result](const QString &title, const QString &text, int) {
            m_questions.append(title + '|' + text);
            return result;
        };
    }
    QStringList m_questions;
};

static void addFamilies()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("IPv4") << "127.0.0.1";
    QTest::newRow("IPv6") << "::1";
}

void TestNetworkPeers::serves_data()
{
    addFamilies();
}

void TestNetworkPeers::serves()
{
    QFETCH(QString, address);
    const quint16 port = open(Server);
    BoardProcess board;
    QVERIFY(board.startOnNetwork("tcp-client", to(port, address, {"--peers", "2"})));
    WAIT_EQUAL(clients().size(), 3);
    QCOMPARE(clients().at(0), QString("All Clients"));
    for (const QString &name : clients().mid(1)) {
        QVERIFY(
            QRegularExpression('^' + QRegularExpression::escape(address) + " \\d+$").match(name).hasMatch());
        QVERIFY(wasTold(QStringLiteral("新客户端[%1]已连接:").arg(name), 0));
    }
    send("hello");
    QCOMPARE(sent(), qint64(10)); // to both
    WAIT_EQUAL(received(), qint64(10));
    for (const QString &name : clients().mid(1))
        QCOMPARE(shown().count(QStringLiteral("[Tcp client %1] hello").arg(name)), 1);

    child<QComboBox>("comboClients")->setCurrentIndex(2);
    send("you");
    QCOMPARE(sent(), qint64(13));
    WAIT_EQUAL(received(), qint64(13));
    QVERIFY(shown().endsWith(QStringLiteral("\n[Tcp client %1] you").arg(clients().at(2))));

    const QStringList names = clients().mid(1);
    QVERIFY(board.stop());
    WAIT_EQUAL(clients().size(), 1);
    for (const QString &name : names)
        QVERIFY(wasTold(QStringLiteral("客户端[%1]已断开连接:").arg(name), 0));
    QCOMPARE(board.statistics().value("read"), qint64(13));
}

void TestNetworkPeers::disconnectsOneAndAll()
{
    const quint16 port = open(Server);
    BoardProcess board;
    QVERIFY(board.startOnNetwork("tcp-client", to(port, "127.0.0.1", {"--peers", "3", "--period", "60000"})));
    WAIT_EQUAL(clients().size(), 4);
    child<QComboBox>("comboClients")->setCurrentIndex(2);
    const QString chosen = clients().at(2);
    answer(0);
    click("btnDisconnect");
    QCOMPARE(m_questions, QStringList(QStringLiteral("询问|是否确认断开当前客户端?")));
    QCOMPARE(clients().size(), 4);
    answer(1);
    click("btnDisconnect");
    QCOMPARE(clients().size(), 3);
    QVERIFY(!clients().contains(chosen));
    QVERIFY(board.waitForEvent("disconnected 2"));

    child<QComboBox>("comboClients")->setCurrentIndex(0);
    click("btnDisconnect");
    QCOMPARE(m_questions.last(), QStringLiteral("询问|是否确认断开所有连接?"));
    QCOMPARE(clients(), QStringList("All Clients"));
    QVERIFY(board.waitForEvent("disconnected 0"));
    QCOMPARE(caption(), QStringLiteral("停止监听"));
    click("btnDisconnect");
    QCOMPARE(m_questions.size(), 2);
}

void TestNetworkPeers::losesTheChosenPeer()
{
    const quint16 port = open(Server);
    BoardProcess leaving;
    QVERIFY(leaving.startOnNetwork("tcp-client", to(port, "127.0.0.1", {})));
    WAIT_EQUAL(clients().size(), 2);
    BoardProcess staying;
    QVERIFY(staying.startOnNetwork("tcp-client", to(port, "127.0.0.1", {})));
    WAIT_EQUAL(clients().size(), 3);
    child<QComboBox>("comboClients")->setCurrentIndex(1);
    send("x");
    click("checkAutoSend");
    QVERIFY(leaving.stop());
    WAIT_EQUAL(clients().size(), 2);
    // None is chosen, and nothing goes to the neighbour.
    QCOMPARE(child<QComboBox>("comboClients")->currentIndex(), -1);
    QVERIFY(!child<QAbstractButton>("checkAutoSend")->isChecked());
    QVERIFY(m_notices->last().at(1).toInt() == 255);
    const qint64 before = sent();
    send("y");
    QCOMPARE(sent(), before);
    QCOMPARE(lastNotice(), QStringLiteral("未选择客户端，数据未发送！"));
    QVERIFY(staying.stop());
    QCOMPARE(staying.statistics().value("read"), qint64(0));
}

void TestNetworkPeers::takesWhatPeersDo_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("total");
    QTest::newRow("drip") << QStringList{"--act", "drip", "--period", "2", "--total", "200"} << 200;
    QTest::newRow("half-close") << QStringList{"--act", "half-close", "--total", "500000"} << 500000;
    QTest::newRow("talk") << QStringList{"--act", "talk", "--peers", "5", "--period", "3", "--total", "1000"}
                          << 5000;
}

// All bytes come, in hexadecimal and as text, and in order.
void TestNetworkPeers::takesWhatPeersDo()
{
    QFETCH(QStringList, options);
    QFETCH(int, total);
    const quint16 port = open(Server);
    BoardProcess board;
    QVERIFY(board.startOnNetwork("tcp-client", to(port, "127.0.0.1", options)));
    WAIT_EQUAL(received(), qint64(total));
    if (options.contains("half-close"))
        WAIT_EQUAL(clients().size(), 1);
    if (!options.contains("--peers")) {
        const QByteArray bytes = m_page->spool().read(0, total);
        QVERIFY(bytes.startsWith("00000000 "));
        // Line n begins with its number.
        const QList<QByteArray> lines = bytes.split('\n');
        for (int n = 0; n + 1 < lines.size(); ++n)
            QCOMPARE(lines.at(n).left(8).toInt(), n);
    }
    if (options.contains("drip")) { // byte by byte, and yet no character is broken
        QVERIFY(shown().count("[Tcp client ") > 1);
        QVERIFY(!shown().contains(QChar(0xFFFD)));
        QVERIFY(shown().contains(QRegularExpression(QStringLiteral("[温电转]"))));
    }
    QVERIFY(board.stop());
}

void TestNetworkPeers::takesAFloodWhole_data()
{
    QTest::addColumn<QStringList>("ticked");
    QTest::newRow("text") << QStringList();
    QTest::newRow("hexadecimal") << QStringList{"radioRecvHex"};
    QTest::newRow("not shown") << QStringList{"checkStopShow"};
}

void TestNetworkPeers::takesAFloodWhole()
{
    QFETCH(QStringList, ticked);
    for (const QString &name : ticked)
        click(qPrintable(name));
    const quint16 port = open(Server);
    BoardProcess board;
    const qint64 total = 6000000;
    QVERIFY(board.startOnNetwork(
        "tcp-client", to(port, "127.0.0.1", {"--act", "flood", "--total", QString::number(total)})));
    qint64 mostQueued = 0;
    const auto *terminal = child<QtTerminalWidget>("recvBrowser");
    const auto all = [&] {
        mostQueued = qMax(mostQueued, terminal->queuedBytes());
        return received() == total && terminal->queuedBytes() == 0;
    };
    QTRY_VERIFY_WITH_TIMEOUT(all(), 60000);
    QVERIFY(mostQueued < 3000000); // held up instead of hoarded
    QCOMPARE(m_page->spool().size(), total);
}

void TestNetworkPeers::tellsOfAPeerThatNeverReads()
{
    const quint16 port = open(Server);
    BoardProcess deaf;
    QVERIFY(deaf.startOnNetwork("tcp-client", to(port, "127.0.0.1", {"--act", "deaf"})));
    WAIT_EQUAL(clients().size(), 2);
    BoardProcess hearing;
    QVERIFY(hearing.startOnNetwork("tcp-client", to(port, "127.0.0.1", {"--act", "silent"})));
    WAIT_EQUAL(clients().size(), 3);
    const QString blocked =
        QStringLiteral("客户端[%1]长时间未接收数据，已暂停向其发送！").arg(clients().at(1));
    const QByteArray piece(1000000, 'x');
    int pieces = 0;
    for (; pieces < 100 && !wasTold(blocked, 255); ++pieces) {
        const qint64 before = sent();
        m_page->sltSendData(piece);
        QVERIFY(sent() > before);
        QCoreApplication::processEvents();
    }
    QVERIFY(wasTold(blocked, 255));
    const qint64 before = sent();
    m_page->sltSendData(piece);
    QCOMPARE(sent(), before + piece.size()); // to the other one alone
    ++pieces;
    // When the deaf one is gone there is one left, which has got everything.
    QVERIFY(deaf.stop());
    WAIT_EQUAL(clients().size(), 2);
    const auto *server = m_page->findChild<TcpServer *>();
    WAIT_FOR(server->findChildren<QTcpSocket *>().size() == 1 &&
             server->findChild<QTcpSocket *>()->bytesToWrite() == 0);
    click("btnOpen");
    QVERIFY(hearing.waitForEvent("disconnected"));
    QVERIFY(hearing.stop());
    QCOMPARE(hearing.statistics().value("read"), qint64(pieces) * piece.size());
}

void TestNetworkPeers::closesInABurst_data()
{
    QTest::addColumn<QString>("act");
    QTest::addColumn<QString>("end");
    for (const char *act : {"flood", "vanish", "reset"}) {
        for (const char *end : {"close", "destroy"})
            QTest::addRow("%s, %s", act, end) << act << end;
    }
}

void TestNetworkPeers::closesInABurst()
{
    QFETCH(QString, act);
    QFETCH(QString, end);
    const quint16 port = open(Server);
    BoardProcess board;
    QVERIFY(board.startOnNetwork(
        "tcp-client", to(port, "127.0.0.1", {"--act", act, "--peers", "20", "--total", "2000000"})));
    WAIT_FOR(wasTold(lastNotice(), 0) && (act == "vanish" ? m_notices->count() > 20 : received() > 100000));
    if (end == "destroy") {
        m_page.reset();
        return;
    }
    if (act == "flood")
        QVERIFY(clients().size() > 1);
    click("btnOpen");
    QCOMPARE(clients(), QStringList("All Clients"));
    QVERIFY(fieldsAreEnabled(true));
    QCOMPARE(m_page->spool().size(), received());
    QVERIFY(open(Server, port) == port); // and listens again at once
}

void TestNetworkPeers::connects_data()
{
    addFamilies();
    QTest::newRow("name") << "localhost";
}

void TestNetworkPeers::connects()
{
    QFETCH(QString, address);
    BoardProcess board;
    QVERIFY(board.startOnNetwork("tcp-server", to(0, address == "localhost" ? "127.0.0.1" : address, {})));
    write("editServerAddress", address);
    open(Client, board.netPort());
    QCOMPARE(m_notices->at(0).at(0).toString(), QStringLiteral("正在与服务器建立连接...."));
    QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Busy);
    WAIT_EQUAL(caption(), QStringLiteral("断开连接"));
    QVERIFY(wasTold(QStringLiteral("[TCP Client]与服务器连接成功！！！"), 0));
    QVERIFY(fieldsAreEnabled(false));
    QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
    send("ping\n");
    WAIT_EQUAL(shown(), QStringLiteral("[Tcp client  来自服务端消息 ] ping\n"));
    QCOMPARE(m_page->counts(), (QStringList{"5", "5"}));
    click("btnOpen");
    QVERIFY(wasTold(QStringLiteral("[ TCP Client ] 已断开连接！"), 0));
    QCOMPARE(caption(), QStringLiteral("建立连接"));
    QVERIFY(fieldsAreEnabled(true));
    QVERIFY(board.waitForEvent("disconnected"));
}

void TestNetworkPeers::connectsAfterARefusal_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("state");
    QTest::newRow("refused") << "127.0.0.1" << QStringLiteral("连接失败: 对方拒绝连接");
    QTest::newRow("no such host") << "no-such-host.invalid" << QStringLiteral("连接失败: 找不到该主机");
    QTest::newRow("nonsense") << "a b c" << QString();
    QTest::newRow("unreachable") << "255.255.255.255" << QString();
}

void TestNetworkPeers::connectsAfterARefusal()
{
    QFETCH(QString, address);
    QFETCH(QString, state);
    write("editServerAddress", address);
    open(Client, freePort());
    WAIT_EQUAL(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
    QVERIFY(stateText().startsWith(QStringLiteral("连接失败: ")));
    if (!state.isEmpty())
        QCOMPARE(stateText(), state);
    QCOMPARE(child<StateIndicator>("stateIndicator")->toolTip(), QStringLiteral("上次错误: ") + stateText());
    QCOMPARE(lastNotice(), QStringLiteral("正在与服务器建立连接....")); // nothing else is posted
    QCOMPARE(caption(), QStringLiteral("建立连接"));
    QVERIFY(fieldsAreEnabled(true));

    QTcpServer host;
    QVERIFY(host.listen(QHostAddress::LocalHost));
    write("editServerAddress", "127.0.0.1");
    open(Client, host.serverPort()); // one press is enough
    WAIT_EQUAL(caption(), QStringLiteral("断开连接"));
}

void TestNetworkPeers::cancelsConnecting()
{
    // Documentation addresses answer nobody; where the system says at once that
    // there is no way, there is nothing to cancel.
    write("editServerAddress", "192.0.2.1");
    open(Client, 9);
    click("btnOpen");
    QCOMPARE(lastNotice(), QStringLiteral("[ TCP Client ] 已断开连接！"));
    QVERIFY(fieldsAreEnabled(true));
    for (const char *port : {"0", "70000", ""}) { // nothing is opened
        m_notices->clear();
        write("editPort", port);
        click("btnOpen");
        QVERIFY(m_notices->isEmpty());
        QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
    }
    write("editServerAddress", QString());
    write("editPort", "9");
    click("btnOpen");
    QVERIFY(m_notices->isEmpty());
}

void TestNetworkPeers::hearsOfTheServersEnd_data()
{
    QTest::addColumn<QString>("act");
    QTest::newRow("half-close") << "half-close";
    QTest::newRow("reset") << "reset";
    QTest::newRow("vanish") << "vanish";
}

void TestNetworkPeers::hearsOfTheServersEnd()
{
    QFETCH(QString, act);
    BoardProcess board;
    QVERIFY(board.startOnNetwork("tcp-server", to(0, "127.0.0.1", {"--act", act, "--total", "200000"})));
    open(Client, board.netPort());
    WAIT_FOR(wasTold(QStringLiteral("[TCP Client]与服务器已断开连接~~~"), 0));
    QCOMPARE(caption(), QStringLiteral("建立连接"));
    QVERIFY(fieldsAreEnabled(true));
    QVERIFY(!child<StateIndicator>("stateIndicator")->isOn());
    QVERIFY(!stateText().isEmpty());
    if (act == "half-close")
        QCOMPARE(received(), qint64(200000));
    // Sending while the link breaks is refused, not lost in silence.
    send("late");
    QCOMPARE(sent(), qint64(0));
    open(Client, board.netPort());
    QVERIFY(board.waitForEvent("connected", 2, 30000));
}

void TestNetworkPeers::exchangesDatagrams_data()
{
    addFamilies();
}

void TestNetworkPeers::exchangesDatagrams()
{
    QFETCH(QString, address);
    BoardProcess board;
    QVERIFY(board.startOnNetwork("udp", to(0, address, {})));
    QVERIFY(open(Udp) > 0);
    write("editDestinationAddress", address);
    write("editDestinationPort", QString::number(board.netPort()));
    send("datagram\r\n");
    const QString from = QStringLiteral("[Tcp client  UDP from %1:%2 ] ").arg(address).arg(board.netPort());
    WAIT_EQUAL(shown(), from + "datagram\n");
    send("next");
    WAIT_EQUAL(shown(), from + "datagram\n" + from + "next");
    QCOMPARE(m_page->counts(), (QStringList{"13", "13"}));
    QVERIFY(board.stop());
    QCOMPARE(board.statistics().value("datagrams"), qint64(2));
}

void TestNetworkPeers::takesDatagramsOfAllSizes()
{
    const quint16 port = open(Udp);
    QUdpSocket peer;
    QVERIFY(peer.bind(QHostAddress::LocalHost));
    const QString from = QStringLiteral("[Tcp client  UDP from 127.0.0.1:%1 ] ").arg(peer.localPort());
    QCOMPARE(peer.writeDatagram(QByteArray(), QHostAddress::LocalHost, port), qint64(0));
    WAIT_EQUAL(shown(), from);
    QCOMPARE(peer.writeDatagram(QByteArray(65507, 'x'), QHostAddress::LocalHost, port), qint64(65507));
    WAIT_EQUAL(received(), qint64(65507));
    QCOMPARE(shown(), from + '\n' + from + QString(65507, 'x'));

    write("editDestinationPort", QString::number(peer.localPort()));
    m_page->sltSendData(QByteArray(65507, 'y'));
    WAIT_FOR(peer.hasPendingDatagrams());
    QCOMPARE(peer.receiveDatagram().data(), QByteArray(65507, 'y'));
    QCOMPARE(sent(), qint64(65507));
    m_page->sltSendData(QByteArray(65508, 'y'));
    QCOMPARE(m_notices->last().at(1).toInt(), 255);
    QCOMPARE(sent(), qint64(65507));
}

void TestNetworkPeers::sendsBroadcasts()
{
    QUdpSocket peer;
    QVERIFY(peer.bind(QHostAddress::AnyIPv4));
    QVERIFY(open(Udp) > 0);
    write("editDestinationAddress", "127.255.255.255"); // of the loopback network
    write("editDestinationPort", QString::number(peer.localPort()));
    send("everybody");
    QCOMPARE(sent(), qint64(9));
    WAIT_FOR(peer.hasPendingDatagrams());
    QCOMPARE(peer.receiveDatagram().data(), QByteArray("everybody"));
}

void TestNetworkPeers::checksTheDestination_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QString>("notice");
    for (const char *address : {"", "nonsense", "1.2.3", "0.0.0.0", "::", "256.1.1.1"})
        QTest::addRow("address '%s'", address) << address << "9" << QStringLiteral("UDP目的地址配置错误！");
    for (const char *port : {"", "0", "65536", "70000", "x"})
        QTest::addRow("port '%s'", port) << "127.0.0.1" << port << QStringLiteral("UDP目的端口配置错误！");
}

void TestNetworkPeers::checksTheDestination()
{
    QFETCH(QString, address);
    QFETCH(QString, port);
    QFETCH(QString, notice);
    QVERIFY(open(Udp) > 0);
    write("editDestinationAddress", address);
    write("editDestinationPort", port);
    send("x");
    QCOMPARE(lastNotice(), notice);
    QCOMPARE(m_notices->last().at(1).toInt(), 255);
    QCOMPARE(sent(), qint64(0));
}

QTEST_MAIN(TestNetworkPeers)
#include "test_networkpeers.moc"
