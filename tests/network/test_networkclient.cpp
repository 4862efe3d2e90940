// The network page as a client and over UDP, with peers in processes of their own.

#include "interfacebox.h"
#include "networkpagetest.h"

#include "qtmessagetip.h"
#include "stateindicator.h"
#include "tcpreconnector.h"

#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <QTableView>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>

class TestNetworkClient : public NetworkPageTest
{
    Q_OBJECT

private slots:
    void connects()
    {
        for (const QString &address : {QString("127.0.0.1"), QString("[::1] ")}) {
            init();
            BoardProcess board;
            QVERIFY(board.startOnNetwork("tcp-server", to(0, {}, address.contains(':') ? "::1" : address)));
            write("editServerAddress", address);
            open(Client, board.netPort());
            QCOMPARE(m_notices->at(0).at(0).toString(), QStringLiteral("正在与服务器建立连接...."));
            QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Busy);
            WAIT_EQUAL(caption(), QStringLiteral("断开连接"));
            QVERIFY(wasTold(QStringLiteral("[TCP Client]与服务器连接成功！！！"), 0));
            QVERIFY(fieldsAreEnabled(false));
            QVERIFY(child<StateIndicator>("stateIndicator")->isOn());
            QVERIFY(stateText().contains(QString::number(board.netPort())));
            send("ping\n");
            WAIT_EQUAL(shown(), QStringLiteral("[Tcp client  来自服务端消息 ] ping\n"));
            WAIT_EQUAL(child<QLabel>("labelSendCount")->text(), QStringLiteral("发送字节: 5"));
            click("btnOpen");
            QVERIFY(wasTold(QStringLiteral("[ TCP Client ] 已断开连接！"), 0));
            QCOMPARE(caption(), QStringLiteral("建立连接"));
            QVERIFY(fieldsAreEnabled(true));
            QVERIFY(board.waitForEvent("disconnected"));
        }
    }

    void connectsAfterARefusalAndCancels()
    {
        QTcpSocket deaf; // has the port, but does not listen
        QVERIFY(deaf.bind(QHostAddress(QHostAddress::LocalHost), 0, QAbstractSocket::DontShareAddress));
        open(Client, deaf.localPort());
        WAIT_EQUAL(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
        QCOMPARE(stateText(), QStringLiteral("连接失败：对方拒绝连接"));
        QCOMPARE(child<StateIndicator>("stateIndicator")->toolTip(),
                 QStringLiteral("上次错误：") + stateText());
        QCOMPARE(lastNotice(), QStringLiteral("[TCP Client]") + stateText());
        QCOMPARE(m_notices->size(), 2);
        QCOMPARE(caption(), QStringLiteral("建立连接"));
        QVERIFY(child<QWidget>("editServerAddress")->isVisible() && child<QWidget>("editPort")->isVisible());
        QVERIFY(!child<QWidget>("comboLocalAddress")->isVisible() &&
                !child<QWidget>("comboClients")->isVisible());
        QVERIFY(fieldsAreEnabled(true));

        QTcpServer host;
        QVERIFY(host.listen(QHostAddress::LocalHost));
        open(Client, host.serverPort()); // one press is enough
        WAIT_EQUAL(caption(), QStringLiteral("断开连接"));
        click("btnOpen");
        open(Client, deaf.localPort());
        QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Busy);
        click("btnOpen"); // cancels
        QCOMPARE(lastNotice(), QStringLiteral("[ TCP Client ] 已断开连接！"));
        QCOMPARE(stateText(), QStringLiteral("未连接"));
        QVERIFY(fieldsAreEnabled(true));
        open(Client, deaf.localPort());
        m_notices->clear();
        choose(Server); // cancels, too, but no server was closed
        QVERIFY(m_notices->isEmpty());
        QCOMPARE(stateText(), QStringLiteral("未监听"));
        choose(Client);
        write("editPort", "0"); // nothing is opened
        click("btnOpen");
        QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Failed);
        write("editServerAddress", QString());
        write("editPort", "9");
        click("btnOpen");
        QVERIFY(m_notices->isEmpty());
    }

    // The page counts what was handed over and reports what was dropped.
    void deliversBeforeDisconnecting()
    {
        constexpr qint64 total = 12000000;
        for (const bool isDeaf : {false, true}) {
            BoardProcess board;
            QVERIFY(board.startOnNetwork("tcp-server", to(0, {"--act", isDeaf ? "deaf" : "silent"})));
            open(Client, board.netPort());
            WAIT_EQUAL(caption(), QStringLiteral("断开连接"));
            m_page->clearCounts();
            for (int i = 0; i < 12; ++i)
                m_page->sltSendData(QByteArray(total / 12, 'x'));
            const QSignalSpy closed(m_page.get(), &NetworkToolWidget::signalClosed);
            if (isDeaf)
                click("btnOpen");
            for (int i = 0; i < 2; ++i) // the second one drops nothing
                m_page->closeLinks();
            QVERIFY(!m_page->isClosed());
            QCOMPARE(stateText(), QStringLiteral("正在发送剩余数据，再次单击可放弃"));
            m_page->sltSendData("late");
            if (isDeaf) {
                click("btnOpen");
                QCOMPARE(lastNotice(), QStringLiteral("断开时，有%1字节未能发送！").arg(total - sent()));
                QVERIFY(sent() > 0);
            } else {
                WAIT_EQUAL(lastNotice(), QStringLiteral("[ TCP Client ] 已断开连接！"));
                QCOMPARE(sent(), total);
            }
            QVERIFY(m_page->isClosed() && closed.count() == 1);
        }
    }

    void hearsOfTheServersEnd()
    {
        for (const bool isReset : {false, true}) {
            BoardProcess board;
            QVERIFY(board.startOnNetwork(
                "tcp-server", to(0, {"--act", isReset ? "reset" : "half-close", "--total", "200000"})));
            m_notices->clear();
            open(Client, board.netPort());
            WAIT_FOR(wasTold(QStringLiteral("[TCP Client]与服务器已断开连接~~~"), 0));
            QCOMPARE(caption(), QStringLiteral("建立连接"));
            QVERIFY(fieldsAreEnabled(true));
            QCOMPARE(child<StateIndicator>("stateIndicator")->state(), StateIndicator::Off);
            QCOMPARE(stateText(), QStringLiteral("服务器已断开连接"));
            if (!isReset)
                QCOMPARE(received(), qint64(200000));
            // Sending while the link breaks is refused, not lost in silence.
            send("late");
            QCOMPARE(sent(), qint64(0));
            open(Client, board.netPort());
            QVERIFY(board.waitForEvent("connected", 2, 30000));
            m_page->closeLinks();
        }
    }

    void connectsAgain()
    {
        const auto waits = [&] {
            return caption() == QStringLiteral("停止等待") && fieldsAreEnabled(false) &&
                   child<StateIndicator>("stateIndicator")->state() == StateIndicator::Busy &&
                   child<QLabel>("labelWaiting")->text().startsWith(QStringLiteral("正在等待服务器，自"));
        };
        const auto times = [this](const QString &text) {
            return std::count_if(m_notices->begin(), m_notices->end(), [&](const QList<QVariant> &notice) {
                return notice.at(0).toString() == text;
            });
        };
        const QString refused = QStringLiteral("[TCP Client]连接失败：对方拒绝连接");
        click("checkReconnect");
        auto deaf = std::make_unique<QTcpSocket>(); // has the port, but does not listen
        QVERIFY(deaf->bind(QHostAddress(QHostAddress::LocalHost)));
        const quint16 port = open(Client, deaf->localPort());
        WAIT_EQUAL(times(refused), 1); // the first one, as ever
        QVERIFY(waits());
        m_page->reloadSettings(); // changes nothing under it
        QCOMPARE(child<QLineEdit>("editPort")->text(), QString::number(port));
        m_page->findChild<TcpReconnector *>()->attempt();
        WAIT_FOR(m_page->findChild<TcpReconnector *>()->failedAttempts() > 0);
        QVERIFY(waits());
        deaf.reset();

        QTcpServer host;
        QVERIFY(host.listen(QHostAddress::LocalHost, port));
        WAIT_EQUAL(caption(), QStringLiteral("断开连接"));
        QVERIFY(child<QLabel>("labelWaiting")->isHidden() && child<QWidget>("checkReconnect")->isVisible());
        WAIT_FOR(host.hasPendingConnections());
        const std::unique_ptr<QTcpSocket> peer(host.nextPendingConnection());
        host.close();
        peer->abort();
        WAIT_FOR(waits());
        send("late");
        QCOMPARE(QtMessageTip::current()->text(), QStringLiteral("正在等待重新连接，数据未发送"));
        QCOMPARE(sent(), qint64(0));
        QCOMPARE(times(QStringLiteral("正在与服务器建立连接....")), 1);
        QCOMPARE(times(refused), 1);

        // Each way out of it ends it.
        const QSignalSpy closed(m_page.get(), &NetworkToolWidget::signalClosed);
        const std::function<void()> ways[] = {[this] { click("btnOpen"); }, [this] { m_page->closeLinks(); },
                                              [this] { click("checkReconnect"); },
                                              [this] { choose(Server); }};
        for (const bool isTrying : {false, true}) {
            for (const auto &end : ways) {
                WAIT_FOR(waits());
                if (isTrying)
                    m_page->findChild<TcpReconnector *>()->attempt();
                const int before = closed.count();
                end();
                QVERIFY(m_page->isClosed() && closed.count() > before && fieldsAreEnabled(true));
                QVERIFY(child<QLabel>("labelWaiting")->isHidden());
                QVERIFY(!m_page->findChild<TcpReconnector *>()->isReconnecting());
                child<QAbstractButton>("checkReconnect")->setChecked(true);
                open(Client, port);
            }
        }
    }

    void exchangesDatagrams()
    {
        for (const QString &address : {QString("127.0.0.1"), QString("::1")}) {
            init();
            BoardProcess board;
            QVERIFY(board.startOnNetwork("udp", to(0, {}, address)));
            const quint16 port = open(Udp);
            for (const char *field : {"editDestinationAddress", "editDestinationPort"})
                QVERIFY(child<QWidget>(field)->isEnabled());
            write("editDestinationAddress", address);
            write("editDestinationPort", QString::number(board.netPort()));
            send("datagram\r\n");
            const QString from =
                QStringLiteral("[Tcp client  UDP from %1:%2 ] ").arg(address).arg(board.netPort());
            WAIT_EQUAL(shown(), from + "datagram\n");
            send("next");
            WAIT_EQUAL(shown(), from + "datagram\n" + from + "next");
            QCOMPARE(m_page->counts(), (QStringList{"13", "13"}));
            QUdpSocket().writeDatagram(QByteArray(), QHostAddress(address), port);
            WAIT_EQUAL(shown().count("[Tcp client  UDP from "), 3); // a header without bytes
        }
    }

    void repliesToTheLastSender()
    {
        const quint16 port = open(Udp);
        click("btnReplyToLast");
        QCOMPARE(lastNotice(), QStringLiteral("尚未收到数据报，没有可回复的来源"));
        for (const auto address : {QHostAddress::LocalHostIPv6, QHostAddress::LocalHost}) {
            QUdpSocket board;
            QVERIFY(board.bind(QHostAddress(address)));
            board.writeDatagram("question", QHostAddress(address), port);
            WAIT_EQUAL(received(), qint64(address == QHostAddress::LocalHost ? 16 : 8));
            click("btnReplyToLast");
            send("answer");
            WAIT_FOR(board.hasPendingDatagrams());
            QCOMPARE(board.receiveDatagram().data(), QByteArray("answer"));
        }
        click("btnLinkStatistics"); // each has one row for both directions
        QCOMPARE(child<QTableView>("tablePeers")->model()->rowCount(), 2);
        choose(Server);
        QVERIFY(!child<QWidget>("btnReplyToLast")->isVisible());
    }

    void joinsGroups()
    {
        Settings::NetworkPage &kept = Settings::instance().networkPage;
        kept.multicastGroups = QStringLiteral("239.255.77.3 10.0.0.1");
        for (const QNetworkInterface &device : QNetworkInterface::allInterfaces())
            if (device.flags().testFlag(QNetworkInterface::IsLoopBack))
                kept.multicastInterface = device.name();
        m_page->reloadSettings();
        auto *interfaces = m_page->findChild<InterfaceBox *>();
        const QString chosen = interfaces->currentText();
        interfaces->showPopup();
        QVERIFY(interfaces->view()->isVisible() && interfaces->itemText(0) == "自动" &&
                interfaces->count() > 1);
        QVERIFY(interfaces->currentText() == chosen && interfaces->findText(chosen) > 0);
        QVERIFY(interfaces->view()->minimumWidth() > interfaces->fontMetrics().horizontalAdvance(chosen));
        interfaces->hidePopup();
        for (const bool isGone : {false, true}) {
            if (isGone)
                kept.multicastInterface = QStringLiteral("gone0");
            m_page->reloadSettings();
            open(Udp);
            QVERIFY(wasTold(QStringLiteral("未能加入组播：10.0.0.1：不是组播地址") +
                                (isGone ? QStringLiteral("；网络接口gone0不存在") : QString()),
                            255));
            QCOMPARE(stateText().contains(QStringLiteral("，已加入组播239.255.77.3")), !isGone);
            QVERIFY(!child<QWidget>("editMulticastGroups")->isEnabled());
            click("btnOpen");
            QVERIFY(child<QWidget>("editMulticastGroups")->isEnabled());
        }
    }

    void checksTheDestination()
    {
        QVERIFY(open(Udp) > 0);
        const char *const destinations[][2] = {
            {"nonsense", "9"}, {"0.0.0.0", "9"}, {"::", "9"}, {"127.0.0.1", ""}, {"127.0.0.1", "0"}};
        for (const auto &to : destinations) {
            write("editDestinationAddress", to[0]);
            write("editDestinationPort", to[1]);
            send("x");
            QCOMPARE(lastNotice(), *to[1] == '9' ? QStringLiteral("UDP目的地址配置错误！")
                                                 : QStringLiteral("UDP目的端口配置错误！"));
            QCOMPARE(lastKind(), 255);
        }
        QCOMPARE(sent(), qint64(0));
    }
};

QTEST_MAIN(TestNetworkClient)
#include "test_networkclient.moc"
