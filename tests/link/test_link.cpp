// What every link promises, for each transport against a peer made by hand.

#include "readgate.h"
#include "tcpclientlink.h"
#include "tcpserverlink.h"
#include "udplink.h"
#include "waitfor.h"

#ifdef Q_OS_UNIX
#include "ptypeer.h"
#include "seriallink.h"
#endif

#include <QNetworkDatagram>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>
#include <QtTest>

#include <map>
#include <memory>

namespace {

// A link and its peer.
class Wire
{
public:
    virtual ~Wire() = default;
    virtual Link &link() = 0;
    virtual bool open() = 0;      // until the peer is there
    virtual bool openTaken() = 0; // what cannot be opened; true if it was
    virtual bool isStream() const { return true; }
    virtual bool isSocket() const { return true; }
    bool isConnection() const { return isStream() && isSocket(); }
    virtual int maxTailBytes() const { return 12000000; } // that leave in time while it closes
    virtual QIODevice &peer() = 0;
    // It is with the system when this returns.
    virtual void write(const QByteArray &bytes)
    {
        auto &socket = static_cast<QAbstractSocket &>(peer());
        socket.write(bytes);
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(30000)) {
        }
    }
    virtual QByteArray read() { return peer().readAll(); }
};

template <typename Part> bool openBehindAnother(Part *link)
{
    Part other;
    other.setTool("OTHER");
    return !other.open({QHostAddress::LocalHost, 0}) || link->open({QHostAddress::LocalHost, other.port()});
}

class ServerWire : public Wire
{
public:
    Link &link() override { return m_link; }
    QIODevice &peer() override { return m_peer; }
    bool open() override
    {
        if (!m_link.open({QHostAddress::LocalHost, 0}))
            return false;
        m_peer.abort();
        m_peer.setReadBufferSize(65536);
        m_peer.connectToHost(QHostAddress::LocalHost, m_link.port());
        return m_peer.waitForConnected(30000) &&
               QTest::qWaitFor([this] { return m_link.peers().size() == 1; }, 30000);
    }
    bool openTaken() override { return openBehindAnother(&m_link); }

private:
    TcpServerLink m_link;
    QTcpSocket m_peer;
};

class ClientWire : public Wire
{
public:
    Link &link() override { return m_link; }
    QIODevice &peer() override { return *m_peer; }
    bool open() override
    {
        if (!m_host.isListening() && !m_host.listen(QHostAddress::LocalHost))
            return false;
        if (!m_link.open({QStringLiteral("127.0.0.1"), m_host.serverPort()}))
            return false;
        const bool came =
            QTest::qWaitFor([this] { return m_link.isOpen() && m_host.hasPendingConnections(); }, 30000);
        m_peer = m_host.nextPendingConnection();
        if (came)
            m_peer->setReadBufferSize(65536);
        return came;
    }
    bool openTaken() override
    {
        QTcpSocket deaf; // has the port, but does not listen
        if (!deaf.bind(QHostAddress(QHostAddress::LocalHost), 0, QAbstractSocket::DontShareAddress))
            return true;
        m_link.open({QStringLiteral("127.0.0.1"), deaf.localPort()});
        return !QTest::qWaitFor([this] { return m_link.state() == Link::State::Closed; }, 30000);
    }

private:
    TcpClientLink m_link;
    QTcpServer m_host;
    QTcpSocket *m_peer = nullptr;
};

#ifdef Q_OS_UNIX
class SerialWire : public Wire
{
public:
    Link &link() override { return m_link; }
    QIODevice &peer() override { qFatal("no socket"); }
    bool isSocket() const override { return false; }
    int maxTailBytes() const override { return 300000; }
    bool open() override { return openTo(m_link); }
    bool openTaken() override
    {
        SerialLink other;
        other.setTool("OTHER");
        return !openTo(other) || openTo(m_link);
    }
    void write(const QByteArray &bytes) override
    {
        if (!m_board.write(bytes))
            qFatal("the line is blocked");
    }
    QByteArray read() override { return m_board.read(1, 0); }

private:
    bool openTo(SerialLink &link) const
    {
        SerialSettings settings;
        settings.name = m_board.device();
        settings.baudRate = 921600;
        return link.open(settings);
    }

    PtyPeer m_board;
    SerialLink m_link;
};
#endif

class UdpWire : public Wire
{
public:
    UdpWire() { m_peer.bind(QHostAddress(QHostAddress::LocalHost)); }
    Link &link() override { return m_link; }
    QIODevice &peer() override { return m_peer; }
    bool isStream() const override { return false; }
    bool open() override
    {
        m_link.setDestination(QHostAddress::LocalHost, m_peer.localPort());
        return m_link.open({QHostAddress::LocalHost, 0});
    }
    bool openTaken() override { return openBehindAnother(&m_link); }
    void write(const QByteArray &bytes) override
    {
        for (int at = 0; at < bytes.size(); at += 30000)
            m_peer.writeDatagram(bytes.mid(at, 30000), QHostAddress::LocalHost, m_link.port());
    }
    QByteArray read() override
    {
        QByteArray bytes;
        while (m_peer.hasPendingDatagrams())
            bytes += m_peer.receiveDatagram().data();
        return bytes;
    }

private:
    UdpLink m_link;
    QUdpSocket m_peer;
};

template <typename Part> std::unique_ptr<Wire> make()
{
    return std::make_unique<Part>();
}

const std::map<QByteArray, std::unique_ptr<Wire> (*)()> kWires{{"TCP server", make<ServerWire>},
                                                               {"TCP client", make<ClientWire>},
#ifdef Q_OS_UNIX
                                                               {"serial port", make<SerialWire>},
#endif
                                                               {"UDP", make<UdpWire>}};

// More than a socket's buffer.
const QByteArray kMuch(150000, 'm');

} // namespace

class TestLink : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase_data()
    {
        QTest::addColumn<QByteArray>("transport");
        for (const auto &wire : kWires)
            QTest::newRow(wire.first) << wire.first;
    }

    void init()
    {
        QFETCH_GLOBAL(QByteArray, transport);
        m_wire = kWires.at(transport)();
        m_states.clear();
        m_received.clear();
        m_handedOver = 0;
        m_dropped = 0;
        m_atPeer = 0;
        connect(&link(), &Link::stateChanged, this, [this](Link::State state) { m_states.append(state); });
        connect(&link(), &Link::received, this, [this](const QByteArray &bytes) { m_received += bytes; });
        connect(&link(), &Link::handedOver, this, [this](qint64 bytes) { m_handedOver += bytes; });
        connect(&link(), &Link::dropped, this, [this](qint64 bytes) { m_dropped += bytes; });
    }

    void opensAndCloses()
    {
        QCOMPARE(link().send("early"), qint64(0));
        for (int round = 0; round < 2; ++round) {
            m_states.clear();
            QVERIFY(m_wire->open());
            QVERIFY(!m_wire->isSocket() || !m_wire->open()); // an open socket is not opened again
            QVERIFY(link().isOpen() && link().reason().isEmpty());
            round == 0 || isServer() ? link().close() : link().closePeer(Link::allPeers);
            WAIT_EQUAL(m_states.last(), Link::State::Closed);
            m_states.removeAll(Link::State::Opening);
            QCOMPARE(m_states,
                     (QList<Link::State>{Link::State::Open, Link::State::Closing, Link::State::Closed}));
            QVERIFY(link().reason().isEmpty());
            QCOMPARE(link().send("late"), qint64(0));
            QVERIFY(link().refusal().isEmpty());
        }
        link().close();
        QCOMPARE(m_states.last(), Link::State::Closed);
    }

    void saysWhyItIsNotOpened()
    {
        QVERIFY(!m_wire->openTaken());
        QCOMPARE(link().state(), Link::State::Closed);
        if (link().inherits("TcpClientLink"))
            QCOMPARE(link().reason(), QStringLiteral("对方拒绝连接"));
        else
            QVERIFY2(link().reason().contains("OTHER"), qPrintable(link().reason()));
        QVERIFY(m_wire->open());
        QVERIFY(link().reason().isEmpty());
    }

    void exchangesBytes()
    {
        const QSignalSpy joined(&link(), &Link::peerJoined);
        QVERIFY(m_wire->open());
        QCOMPARE(joined.count(), m_wire->isConnection() ? 1 : 0);
        qint64 arrivalUs = 0;
        Peer sender;
        connect(&link(), &Link::received, this, [&](const QByteArray &, qint64 us, const Peer &from) {
            arrivalUs = us;
            sender = from;
        });
        const qint64 before = Link::nowUs();
        QVERIFY(qAbs(before / 1000 - QDateTime::currentMSecsSinceEpoch()) < 600 * 1000);
        m_wire->write("from the board");
        WAIT_EQUAL(m_received, QByteArray("from the board"));
        QVERIFY(arrivalUs >= before && arrivalUs <= Link::nowUs());
        QCOMPARE(sender.text().isEmpty(), !m_wire->isSocket());
        if (m_wire->isSocket()) {
            QCOMPARE(sender.address, QHostAddress(QHostAddress::LocalHost));
            QCOMPARE(sender.port, static_cast<QAbstractSocket &>(m_wire->peer()).localPort());
        }
        if (!joined.isEmpty())
            QCOMPARE(sender, joined.at(0).at(0).value<Peer>());

        QCOMPARE(link().send("to the board"), qint64(12));
        QByteArray bytes;
        WAIT_EQUAL((bytes += m_wire->read()), QByteArray("to the board"));
        WAIT_EQUAL(m_handedOver, qint64(12));
        QCOMPARE(link().pendingBytes(), qint64(0));
        QCOMPARE(link().send("?", 4711), qint64(0)); // no such peer
        if (isServer())
            QCOMPARE(link().send("!", sender.id), qint64(1));
    }

    // Bytes of another link, sent later, show that those of the paused one have arrived.
    void pausesReading()
    {
        QFETCH_GLOBAL(QByteArray, transport);
        link().setReading(false); // also for a peer that comes later
        QVERIFY(m_wire->open());
        const auto other = kWires.at(transport)();
        QByteArray overOther;
        connect(&other->link(), &Link::received, this, [&](const QByteArray &bytes) { overOther += bytes; });
        QVERIFY(other->open());
        m_wire->write("waits");
        other->write("later");
        WAIT_EQUAL(overOther, QByteArray("later"));
        QCOMPARE(m_received, QByteArray());
        link().readPending();
        QCOMPARE(m_received, QByteArray("waits"));
        QVERIFY(!link().isReading());
        link().setReading(true);
        link().setReading(false);
        m_wire->write(kMuch);
        other->write("again");
        WAIT_EQUAL(overOther, QByteArray("lateragain"));
        QCOMPARE(m_received, QByteArray("waits"));
        link().setReading(true);
        WAIT_EQUAL(m_received, "waits" + kMuch);
    }

    // A gate closes after a quarter of a megabyte, a message counting a kilobyte more,
    // until no more than its limit waits to be shown.
    void waitsForTheDisplay()
    {
        qint64 backlog = 1001;
        int asked = 0;
        ReadGate gate([&] { return ++asked, backlog; });
        const QSignalSpy closed(&gate, &ReadGate::closed);
        gate.setMaxBacklog(1000);
        gate.control(&link());
        QVERIFY(m_wire->open());
        gate.taken(254 * 1024);
        QVERIFY(gate.isOpen() && link().isReading());
        m_wire->write("one more");
        WAIT_FOR(asked > 3);
        gate.taken(254 * 1024);
        QVERIFY(!gate.isOpen() && !link().isReading() && closed.count() == 1);
        UdpLink late;
        gate.control(&late);
        QVERIFY(!late.isReading());
        backlog = 1000;
        WAIT_FOR(gate.isOpen() && link().isReading() && late.isReading());
        gate.taken(254 * 1024);
        QVERIFY(gate.isOpen());
    }

    // Paused or not, and paused again by the first bytes, as a page may do that has too
    // much to show; without a turn of the event loop.
    void readsTheRestBeforeClosing()
    {
        connect(&link(), &Link::received, this, [this] { link().setReading(false); });
        for (const bool reading : {true, false}) {
            m_received.clear();
            QVERIFY(m_wire->open());
            link().setReading(reading);
            m_wire->write(kMuch);
            link().close();
            QCOMPARE(m_received.size(), kMuch.size());
            WAIT_EQUAL(link().state(), Link::State::Closed);
            link().setReading(true);
        }
    }

    void deliversBeforeClosing()
    {
        const QByteArray bytes(m_wire->isStream() ? m_wire->maxTailBytes() : 20000, 'x');
        QVERIFY(m_wire->open());
        QCOMPARE(link().send(bytes), qint64(bytes.size()));
        link().close();
        QCOMPARE(link().state(), m_wire->isStream() ? Link::State::Closing : Link::State::Closed);
        QCOMPARE(link().send("late"), qint64(0));
        QVERIFY(link().peers().isEmpty());
        bool peerWasFirst = false; // it heard the end, and closed
        if (m_wire->isConnection())
            connect(&link(), &Link::stateChanged, this,
                    [&] { peerWasFirst = static_cast<QAbstractSocket &>(m_wire->peer()).state() == 0; });
        letPeerRead();
        WAIT_EQUAL(m_atPeer, qint64(bytes.size()));
        WAIT_EQUAL(link().state(), Link::State::Closed);
        QCOMPARE(peerWasFirst, m_wire->isConnection());
        QCOMPARE(m_handedOver, qint64(bytes.size()));
        QCOMPARE(m_dropped, qint64(0));
    }

    void dropsAtTheSecondClose()
    {
        QVERIFY(m_wire->open());
        if (!m_wire->isStream())
            return; // nothing waits
        const QByteArray bytes(m_wire->maxTailBytes(), 'x');
        QSignalSpy left(&link(), &Link::peerLeft);
        link().send(bytes);
        link().close();
        QCOMPARE(link().state(), Link::State::Closing);
        QCOMPARE(left.count(), 0);
        link().close();
        QCOMPARE(link().state(), Link::State::Closed);
        QVERIFY(m_dropped > 0);
        if (!m_wire->isSocket())
            return; // no peer leaves, and the driver gives back what it has
        QCOMPARE(m_dropped, bytes.size() - m_handedOver);
        QCOMPARE(left.count(), 1);
        QCOMPARE(left.at(0).at(1).toString(), QString());
    }

    void refusesTooMuch()
    {
        QVERIFY(m_wire->open());
        if (!m_wire->isStream()) {
            QCOMPARE(link().send(QByteArray(UdpLink::maxDatagramBytes, 'x')), qint64(65507));
            QCOMPARE(link().send(QByteArray(UdpLink::maxDatagramBytes + 1, 'x')), qint64(0));
            QVERIFY(link().refusal().contains("65507"));
            return;
        }
        QList<bool> blocked;
        connect(&link(), &Link::blocked, this,
                [&](const Peer &, bool isBlocked) { blocked.append(isBlocked); });
        const QByteArray piece(1000000, 'x');
        qint64 queued = 0;
        if (m_wire->isConnection()) { // one that is too large blocks no others while there is much room
            queued = link().send(QByteArray(6000000, 'x'));
            QVERIFY(link().send(QByteArray(12000000, 'x')) == 0 && blocked.isEmpty());
        }
        while (link().send(piece) == piece.size() && queued < 100 * piece.size())
            queued += piece.size();
        QVERIFY(queued <= 17 * 1024 * 1024 && queued > 15000000);
        QVERIFY(!link().refusal().isEmpty());
        QCOMPARE(blocked, QList<bool>{true});
        if (!m_wire->isSocket())
            return link().close(); // a line takes long for so much
        QCOMPARE(link().send("x"), qint64(0));
        letPeerRead();
        WAIT_EQUAL(m_atPeer, queued);
        QCOMPARE(blocked, (QList<bool>{true, false}));
        QCOMPARE(link().send("x"), qint64(1));
        QVERIFY(link().refusal().isEmpty());
    }

    void noticesThatThePeerLeaves()
    {
        QVERIFY(m_wire->open());
        if (!m_wire->isConnection())
            return;
        QString name;
        QList<Peer> left;
        connect(&link(), &Link::peerLeft, this, [&](const Peer &peer) {
            left.append(peer);
            name = link().peerName(peer);
        });
        const QVector<Peer> peers = link().peers();
        QCOMPARE(peers.size(), 1);
        const QString known = link().peerName(peers.at(0));
        link().setReading(false);
        m_wire->write(kMuch.left(60000));
        static_cast<QAbstractSocket &>(m_wire->peer()).disconnectFromHost();
        WAIT_EQUAL(left.size(), 1);
        QCOMPARE(left, peers.toList());
        QCOMPARE(name, known);
        QCOMPARE(m_received.size(), 60000); // although reading was paused
        QVERIFY(link().peers().isEmpty());
        QCOMPARE(link().isOpen(), isServer());
        QCOMPARE(link().reason(), isServer() ? QString() : QStringLiteral("服务器已断开连接"));
    }

private:
    Link &link() { return m_wire->link(); }
    // From now on the peer reads what it gets.
    // Fast enough to see the end before the link gives it up.
    void letPeerRead()
    {
        if (m_wire->isConnection())
            static_cast<QAbstractSocket &>(m_wire->peer()).setReadBufferSize(0);
        auto *poll = new QTimer(&link());
        connect(poll, &QTimer::timeout, this, [this] { m_atPeer += m_wire->read().size(); });
        poll->start(1);
    }
    bool isServer() const { return m_wire->link().inherits("TcpServerLink"); }

    std::unique_ptr<Wire> m_wire;
    QList<Link::State> m_states;
    QByteArray m_received;
    qint64 m_handedOver = 0;
    qint64 m_dropped = 0;
    qint64 m_atPeer = 0;
};

QTEST_GUILESS_MAIN(TestLink)
#include "test_link.moc"
