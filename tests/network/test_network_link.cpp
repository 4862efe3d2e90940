// The TCP server and its sockets without a page: names, sending, dropping, time
// limits. What every link promises is tested in tests/link.

#include "peeraddress.h"
#include "socketerror.h"
#include "tcpclient.h"
#include "tcpclientlink.h"
#include "tcpreconnector.h"
#include "tcpserver.h"
#include "waitfor.h"

#include <QDir>
#include <QtTest>

#ifdef Q_OS_LINUX
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

class TestNetworkLink : public QObject
{
    Q_OBJECT

private slots:
    void readsAddressesAndNamesErrors()
    {
        for (const char *text : {"192.168.1.7", " [::1]", "\u200b1.2.3.4\n", "255.255.255.255", "fe80::1%1"})
            QVERIFY2(!PeerAddress::fromText(text).isNull(), text);
        for (const char *text :
             {"", "8000", "192.168.1", "1.2.3.256", "board.local", "1.2.3.4:80", ":", "::g", "[::1"})
            QVERIFY2(PeerAddress::fromText(text).isNull(), text);
        QCOMPARE(PeerAddress::fromText(" ::1 "), QHostAddress(QHostAddress::LocalHostIPv6));

        const QPair<const char *, int> ports[] = {{"1", 1}, {" 65535 ", 65535}, {"0", 0},   {"65536", 0},
                                                  {"", 0},  {"-1", 0},          {"80a", 0}, {"8 0", 0}};
        for (const auto &pair : ports)
            QCOMPARE(int(PeerAddress::portFromText(pair.first)), pair.second);

        QCOMPARE(socketErrorText(QAbstractSocket::HostNotFoundError, {}), QStringLiteral("找不到该主机"));
        QCOMPARE(openErrorText(QAbstractSocket::SocketAccessError, {}, "OTHER"),
                 QStringLiteral("没有权限使用该端口"));
        QCOMPARE(openErrorText(QAbstractSocket::AddressInUseError, {}, {}), QStringLiteral("端口已被占用"));
    }

    void sendsAndDrops()
    {
        QList<int> counts; // as they are when somebody leaves
        TcpServer server;
        QCOMPARE(server.SltSendMsgToAllClient("nobody"), qint64(0));
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QSignalSpy came(&server, &TcpServer::signalClientConnected);
        const QSignalSpy left(&server, &TcpServer::signalClientDisconnected);
        QTcpSocket peers[3];
        for (QTcpSocket &peer : peers)
            peer.connectToHost(QHostAddress::LocalHost, server.serverPort());
        WAIT_EQUAL(came.count(), 3);
        const QString first = came.at(0).at(0).toString();
        const QString second = came.at(1).at(0).toString();
        QCOMPARE(server.SltSendMsgToAllClient("all "), qint64(12));
        QCOMPARE(server.SltSendMsgToClient(second, "two"), qint64(3));
        QCOMPARE(server.SltSendMsgToClient("10.0.0.1 7", "?"), qint64(0));
        QByteArrayList got{{}, {}, {}};
        const auto read = [&] {
            for (int i = 0; i < 3; ++i)
                got[i] += peers[i].readAll();
            QByteArrayList sorted = got;
            std::sort(sorted.begin(), sorted.end());
            return sorted;
        };
        WAIT_EQUAL(read(), (QByteArrayList{"all ", "all ", "all two"}));

        connect(&server, &TcpServer::signalClientDisconnected, this,
                [&] { counts.append(server.clientCount()); });
        server.closeClient("10.0.0.1 7");
        QCOMPARE(left.count(), 0);
        server.closeClient(first);
        QCOMPARE(left.count(), 1);
        QCOMPARE(left.at(0).at(0).toString(), first);
        server.closeClient(QString());
        QCOMPARE(left.count(), 3);
        QCOMPARE(counts, (QList<int>{2, 1, 0}));
        QCOMPARE(server.clientCount(), 0);
        QVERIFY(server.isListening());

        // What the base class does when accepting fails, a vanished peer's fault included.
        server.pauseAccepting();
        emit server.acceptError(QAbstractSocket::NetworkError);
        QTcpSocket late;
        late.connectToHost(QHostAddress::LocalHost, server.serverPort());
        WAIT_EQUAL(server.clientCount(), 1);
        for (const QTimer *timer : server.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly))
            WAIT_FOR(!timer->isActive());
    }

    void waitsLongerEachTime()
    {
        RetryDelay delay;
        for (const int expected : {500, 1000, 2000, 4000, 8000, 8000})
            QCOMPARE(delay.failed(0), expected);
        delay.opened(1000);
        QCOMPARE(delay.failed(3999), 8000); // accepted and closed at once
        delay.opened(5000);
        QCOMPARE(delay.failed(8000), 500);
        QCOMPARE(delay.failed(20000), 1000); // the connection before does not count twice
    }

    void reconnectsWithoutAnEnd()
    {
        const auto openFiles = [] { return QDir("/proc/self/fd").entryList(QDir::Files).size(); };
        TcpClientLink link;
        TcpReconnector reconnector(&link);
        reconnector.setEnabled(true);
        connect(&link, &Link::stateChanged, &reconnector, &TcpReconnector::attempt, Qt::QueuedConnection);
        QTcpServer host;
        QVERIFY(host.listen(QHostAddress::LocalHost));
        int connections = 0;
        int filesAtFirst = 0;
        connect(&host, &QTcpServer::newConnection, this, [&] {
            QTcpSocket *const peer = host.nextPendingConnection();
            connect(peer, &QTcpSocket::disconnected, peer, &QObject::deleteLater);
            if (++connections == 10)
                filesAtFirst = openFiles();
            if (connections < 200)
                connections % 2 ? peer->abort() : peer->close();
        });
        QVERIFY(link.open({QStringLiteral("127.0.0.1"), host.serverPort()}));
        WAIT_FOR(connections == 200 && link.isOpen());
        QVERIFY(openFiles() <= filesAtFirst + 4);
        link.close();
        QVERIFY(!reconnector.isReconnecting());

        // An attempt that nobody answers.
        QVERIFY(link.open({QStringLiteral("127.0.0.1"), host.serverPort()}));
        link.timeOut();
        QCOMPARE(link.reason(), QStringLiteral("连接超时"));
        QCOMPARE(link.state(), Link::State::Closed);
        WAIT_FOR(link.isOpen());
    }

    void givesUpAPeerThatDoesNotRead()
    {
        constexpr qint64 total = 12000000;
        TcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QSignalSpy left(&server, &TcpServer::signalClientDisconnected);
        qint64 undelivered = 0;
        connect(&server, &TcpServer::left, this,
                [&](const TcpClient *client) { undelivered = client->undelivered(); });
        QTcpSocket peer;
        peer.setReadBufferSize(65536);
        peer.connectToHost(QHostAddress::LocalHost, server.serverPort());
        WAIT_EQUAL(server.clientCount(), 1);
        QCOMPARE(server.SltSendMsgToAllClient(QByteArray(total, 'x')), total);
        server.closeClient(QString());
        QCOMPARE(server.clientCount(), 0);
        QCOMPARE(left.count(), 0);
        TcpClient *const client = server.clients().at(0);
#ifdef Q_OS_LINUX
        const auto option = [client](int name) {
            int value = 0;
            socklen_t size = sizeof value;
            ::getsockopt(int(client->socketDescriptor()), IPPROTO_TCP, name, &value, &size);
            return value;
        };
        QCOMPARE(option(TCP_NODELAY), 1);
        QCOMPARE(option(TCP_KEEPIDLE) + option(TCP_KEEPINTVL) * option(TCP_KEEPCNT), 60); // s
#endif
        int ticks = 0; // of half a second each
        for (; ticks < 20 && left.count() == 0; ++ticks)
            client->checkProgress();
        QCOMPARE(left.count(), 1);
        QCOMPARE(ticks, 6);
        QVERIFY(undelivered > 0);
    }

    // A peer that sends to a closed connection makes the system drop what it holds.
    void deliversWhatTheSystemHolds()
    {
        for (const int total : {30000, 600000}) { // all with the system; a part still queued
            TcpServer server;
            QVERIFY(server.listen(QHostAddress::LocalHost));
            qint64 handedOver = 0;
            connect(&server, &TcpServer::joined, this, [&](TcpClient *client) {
                client->setSocketOption(QAbstractSocket::SendBufferSizeSocketOption, 200000);
                connect(client, &TcpClient::bytesWritten, this, [&](qint64 bytes) { handedOver += bytes; });
            });
            QTcpSocket peer;
            peer.setReadBufferSize(1600);
            QVERIFY(peer.bind(QHostAddress(QHostAddress::LocalHost)));
            peer.setSocketOption(QAbstractSocket::ReceiveBufferSizeSocketOption, 4096);
            peer.connectToHost(QHostAddress::LocalHost, server.serverPort());
            WAIT_EQUAL(server.clientCount(), 1);
            server.SltSendMsgToAllClient(QByteArray(total, 'x'));
            if (total == 30000)
                WAIT_EQUAL(handedOver, qint64(total));
            server.closeClient(QString());
            int read = 0;
            bool talked = false;
            QTimer slow;
            connect(&slow, &QTimer::timeout, this, [&] {
                if (read >= total - 30000 && !std::exchange(talked, true))
                    peer.write("more");
                read += peer.isOpen() ? peer.readAll().size() : 0;
                peer.setReadBufferSize(read < total - 300000 ? 50000 : 1600);
            });
            slow.start(10);
            WAIT_EQUAL(read, total);
        }
    }
};

QTEST_GUILESS_MAIN(TestNetworkLink)
#include "test_network_link.moc"
