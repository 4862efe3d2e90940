// The network page as a server, with peers in processes of their own:
// well-behaved ones, and those that flood, drip, reset, vanish or never read.

#include "networkpagetest.h"

#include "bytespool.h"
#include "tcpserver.h"

#include <QTableView>
#include <QTcpSocket>

class TestNetworkServer : public NetworkPageTest
{
    Q_OBJECT

private slots:
    void serves()
    {
        for (const QString &address : {QString("127.0.0.1"), QString("::1")}) {
            init();
            const quint16 port = open(Server);
            BoardProcess board;
            QVERIFY(board.startOnNetwork("tcp-client", to(port, {"--peers", "2"}, address)));
            WAIT_EQUAL(clients().size(), 3);
            QCOMPARE(clients().at(0), QString("All Clients"));
            const QStringList names = clients().mid(1);
            send("hello");
            WAIT_EQUAL(received(), qint64(10)); // from both
            QCOMPARE(sent(), qint64(10));
            for (const QString &name : names) {
                QVERIFY(QRegularExpression(QStringLiteral("^%1 \\d+$").arg(address)).match(name).hasMatch());
                QVERIFY(wasTold(QStringLiteral("新客户端[%1]已连接:").arg(name), 0));
                QCOMPARE(shown().count(QStringLiteral("[Tcp client %1] hello").arg(name)), 1);
            }
            child<QComboBox>("comboClients")->setCurrentIndex(1);
            send("you");
            WAIT_EQUAL(received(), qint64(13));
            QCOMPARE(sent(), qint64(13));
            QVERIFY(shown().endsWith(QStringLiteral("\n[Tcp client %1] you").arg(names.at(0))));
            QVERIFY(board.stop());
            WAIT_EQUAL(clients().size(), 1);
            for (const QString &name : names)
                QVERIFY(wasTold(QStringLiteral("客户端[%1]已断开连接:").arg(name), 0));
            QCOMPARE(board.statistics().value("read"), qint64(13));
        }
    }

    void disconnectsOneAndAll()
    {
        const quint16 port = open(Server);
        BoardProcess board;
        QVERIFY(board.startOnNetwork("tcp-client", to(port, {"--peers", "3", "--period", "60000"})));
        WAIT_EQUAL(clients().size(), 4);
        child<QComboBox>("comboClients")->setCurrentIndex(2);
        const QString chosen = clients().at(2);
        Questions questions(0);
        click("btnDisconnect");
        QCOMPARE(questions.asked, QStringList(QStringLiteral("是否确认断开当前客户端?")));
        QCOMPARE(clients().size(), 4);
        questions.answer = 1;
        click("btnDisconnect");
        QCOMPARE(clients().size(), 3);
        QVERIFY(!clients().contains(chosen));
        QVERIFY(board.waitForEvent("disconnected 2"));

        child<QComboBox>("comboClients")->setCurrentIndex(0);
        click("btnDisconnect");
        QCOMPARE(questions.asked.last(), QStringLiteral("是否确认断开所有连接?"));
        QCOMPARE(clients(), QStringList("All Clients"));
        QVERIFY(board.waitForEvent("disconnected 0"));
        QCOMPARE(caption(), QStringLiteral("停止监听"));
        click("btnDisconnect");
        QCOMPARE(questions.asked.size(), 3);
        emit m_page->findChild<TcpServer *>()->acceptError(QAbstractSocket::SocketResourceError);
        QCOMPARE(lastNotice(), QStringLiteral("无法接受新的客户端：系统资源不足"));
    }

    void countsAndChoosesByTheTable()
    {
        const quint16 port = open(Server);
        BoardProcess board;
        QVERIFY(board.startOnNetwork("tcp-client", to(port, {"--peers", "2", "--period", "60000"})));
        WAIT_EQUAL(clients().size(), 3);
        send("hello");
        WAIT_EQUAL(received(), qint64(10));
        click("btnClientStatistics");
        const auto *table = child<QTableView>("tablePeers");
        QCOMPARE(table->model()->rowCount(), 2);
        const auto cell = [table](int row, int column) {
            return table->model()->index(row, column).data().toString();
        };
        QCOMPARE(cell(1, 0), clients().at(2));
        for (const int column : {2, 3})
            QCOMPARE(cell(1, column), QString("5"));
        QCOMPARE(cell(1, 5), QString("hello"));
        child<QTableView>("tablePeers")->selectRow(1);
        click("btnReplyToPeer");
        send("you");
        WAIT_EQUAL(cell(1, 2), QString("8")); // by itself
        QCOMPARE(cell(0, 3), QString("5"));
        const Questions questions(1);
        click("btnDisconnectPeer");
        QVERIFY(questions.asked.value(0).contains(cell(1, 0).section(QStringLiteral("（"), 0, 0)));
        WAIT_FOR(cell(1, 0).contains(QStringLiteral("已断开")));
        WAIT_FOR(!child<QWidget>("btnReplyToPeer")->isEnabled());
        click("btnClearPeers");
        QCOMPARE(table->model()->rowCount(), 1);
        QCOMPARE(cell(0, 2), QString("0"));
        m_page.reset(); // with the table open
    }

    void losesTheChosenPeer()
    {
        const quint16 port = open(Server);
        BoardProcess leaving;
        QVERIFY(leaving.startOnNetwork("tcp-client", to(port)));
        WAIT_EQUAL(clients().size(), 2);
        BoardProcess staying;
        QVERIFY(staying.startOnNetwork("tcp-client", to(port)));
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
        click("btnDisconnect");
        QCOMPARE(lastNotice(), QStringLiteral("请先选择需要断开的客户端！"));
        QVERIFY(staying.stop());
        QCOMPARE(staying.statistics().value("read"), qint64(0));
    }

    void takesAFloodWhole()
    {
        const quint16 port = open(Server);
        BoardProcess board;
        const qint64 total = 6000000;
        QVERIFY(board.startOnNetwork("tcp-client",
                                     to(port, {"--act", "flood", "--total", QString::number(total)})));
        qint64 maxQueued = 0;
        const auto *terminal = child<QtTerminalWidget>("recvBrowser");
        const auto all = [&] {
            maxQueued = qMax(maxQueued, terminal->queuedBytes());
            return received() == total && terminal->queuedBytes() == 0;
        };
        QTRY_VERIFY_WITH_TIMEOUT(all(), 60000);
        QVERIFY(maxQueued < 3000000); // throttled
        QCOMPARE(m_page->spool().size(), total);
        const QList<QByteArray> lines = m_page->spool().read(0, total).split('\n');
        int n = 0; // each begins with its number, until they begin again
        while (n < 40000 && lines.at(n).left(8).toInt() == n)
            ++n;
        QCOMPARE(n, 40000);
    }

    void tellsOfAPeerThatNeverReads()
    {
        const quint16 port = open(Server);
        BoardProcess deaf;
        QVERIFY(deaf.startOnNetwork("tcp-client", to(port, {"--act", "deaf"})));
        WAIT_EQUAL(clients().size(), 2);
        BoardProcess hearing;
        QVERIFY(hearing.startOnNetwork("tcp-client", to(port, {"--act", "silent"})));
        WAIT_EQUAL(clients().size(), 3);
        const QString blocked =
            QStringLiteral("客户端[%1]长时间未接收数据，已暂停向其发送！").arg(clients().at(1));
        const QByteArray piece(1000000, 'x');
        int pieces = 0;
        for (; pieces < 100 && !wasTold(blocked, 255); ++pieces) {
            m_page->sltSendData(piece);
            QCoreApplication::processEvents();
        }
        QVERIFY(wasTold(blocked, 255));
        m_page->sltSendData(piece); // to the other one alone
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
        // The page counts what was handed over and reports what was dropped.
        QVERIFY(sent() < qint64(pieces + 16) * piece.size());
        const auto told = [&blocked](const QList<QVariant> &notice) {
            const QString text = notice.at(0).toString();
            return text.contains(QStringLiteral("字节未能发送！")) &&
                   text.startsWith(blocked.section(']', 0, 0) + ']');
        };
        QCOMPARE(std::count_if(m_notices->begin(), m_notices->end(), told), 1);
    }

    // While the question is open, the peer leaves and another one gets its name.
    void sparesANewcomer()
    {
        const quint16 port = open(Server);
        QList<QTcpSocket *> peers;
        const auto connectPeer = [&] {
            const int before = clients().size();
            peers.append(new QTcpSocket(m_page.get()));
            peers.last()->connectToHost(QHostAddress::LocalHost, port);
            return QTest::qWaitFor([&] { return clients().size() > before; }, 30000);
        };
        QVERIFY(connectPeer());
        const QString name = clients().at(1);
        child<QComboBox>("comboClients")->setCurrentIndex(1);
        DialogAnswers::instance().message = [&](auto...) {
            peers.takeFirst()->abort();
            [&] { WAIT_EQUAL(clients().size(), 1); }();
            for (int i = 0; i < 50 && !clients().contains(name); ++i)
                [&] { QVERIFY(connectPeer()); }();
            return 1;
        };
        click("btnDisconnect");
        QVERIFY(clients().contains(name));
    }

    void closesInABurst()
    {
        for (const bool destroyed : {false, true})
            for (const QString &act : {QString("flood"), QString("vanish"), QString("reset")}) {
                init();
                const quint16 port = open(Server);
                BoardProcess board;
                QVERIFY(board.startOnNetwork(
                    "tcp-client", to(port, {"--act", act, "--peers", "20", "--total", "2000000"})));
                WAIT_FOR(wasTold(lastNotice(), 0) &&
                         (act == "vanish" ? m_notices->count() > 20 : received() > 100000));
                if (destroyed) {
                    m_page.reset();
                    continue;
                }
                if (act == "flood")
                    QVERIFY(clients().size() > 1);
                click("btnOpen");
                QCOMPARE(clients(), QStringList("All Clients"));
                QVERIFY(fieldsAreEnabled(true));
                QCOMPARE(m_page->spool().size(), received());
                QVERIFY(open(Server, port) == port); // and listens again at once
            }
    }
};

QTEST_MAIN(TestNetworkServer)
#include "test_networkserver.moc"
