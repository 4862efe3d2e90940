// A port for datagrams in multicast groups, with peers on the loopback interface.

#include "udplink.h"
#include "waitfor.h"

#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <QSignalSpy>
#include <QUdpSocket>
#include <QtTest>

namespace {

const QHostAddress kGroup(QStringLiteral("239.255.77.1"));
const QHostAddress kOtherGroup(QStringLiteral("239.255.77.2"));
const QHostAddress kHere(QHostAddress::LocalHost);

QNetworkInterface loopback()
{
    for (const QNetworkInterface &device : QNetworkInterface::allInterfaces()) {
        if (device.flags().testFlag(QNetworkInterface::IsLoopBack))
            return device;
    }
    return {};
}

MulticastSettings to(const QString &text, bool loopsBack = true)
{
    MulticastSettings settings = Multicast::fromText(text);
    settings.interfaceName = loopback().name();
    settings.loopsBack = loopsBack;
    settings.ttl = 7;
    return settings;
}

} // namespace

class TestMulticast : public QObject
{
    Q_OBJECT

private slots:
    void readsGroups()
    {
        const MulticastSettings settings = Multicast::fromText(
            QStringLiteral(" 239.1.2.3，ff02::fb;224.0.0.1 239.1.2.3, 10.0.0.1 239.1.2 x"));
        QCOMPARE(settings.groups, (QVector<QHostAddress>{QHostAddress("239.1.2.3"), QHostAddress("ff02::fb"),
                                                         QHostAddress("224.0.0.1")}));
        QCOMPARE(settings.noGroups, (QStringList{"10.0.0.1", "239.1.2", "x"}));
    }

    void receivesAndSends()
    {
        UdpLink link;
        QByteArrayList got;
        connect(&link, &Link::received, this, [&got](const QByteArray &bytes) { got.append(bytes); });
        QVERIFY(link.open({QHostAddress::Any, 0, to("239.255.77.1 239.255.77.2")}));
        QCOMPARE(link.joined().faults, QStringList());
        QCOMPARE(link.joined().groups, (QStringList{kGroup.toString(), kOtherGroup.toString()}));

        QUdpSocket sender; // is in no group, which would let everybody here hear it
        QVERIFY(sender.bind(QHostAddress(QHostAddress::AnyIPv4)));
        sender.setMulticastInterface(loopback());
        sender.writeDatagram("one", kGroup, link.port());
        sender.writeDatagram("two", kOtherGroup, link.port());
        sender.writeDatagram("three", kHere, link.port());
        WAIT_EQUAL(got, (QByteArrayList{"one", "two", "three"}));

        QUdpSocket member;
        QVERIFY(member.bind(QHostAddress(QHostAddress::AnyIPv4)));
        QVERIFY(member.joinMulticastGroup(kGroup, loopback()));
        link.setDestination(kGroup, member.localPort());
        QCOMPARE(link.send("hello"), qint64(5));
        WAIT_FOR(member.hasPendingDatagrams());
        const QNetworkDatagram datagram = member.receiveDatagram();
        QCOMPARE(datagram.data(), QByteArray("hello"));
        QCOMPARE(datagram.senderPort(), int(link.port()));
        const quint16 port = link.port();
        link.close();
        QVERIFY(member.leaveMulticastGroup(kGroup, loopback()));

        // In the one group no more. The loopback interface itself loops back everything.
        got.clear();
        QVERIFY(link.open({QHostAddress::Any, port, to("239.255.77.2", false)}));
        sender.writeDatagram("gone", kGroup, port);
        sender.writeDatagram("last", kHere, port);
        WAIT_EQUAL(got, QByteArrayList{"last"});
        auto *socket = link.findChild<QUdpSocket *>();
        QCOMPARE(socket->socketOption(QAbstractSocket::MulticastLoopbackOption).toInt(), 0);
        QCOMPARE(socket->socketOption(QAbstractSocket::MulticastTtlOption).toInt(), 7);
    }

    void saysWhyNot_data()
    {
        QTest::addColumn<bool>("isOnOneAddress");
        QTest::addColumn<QString>("groups");
        QTest::addColumn<QString>("device");
        QTest::addColumn<QString>("fault");
        const QString here = loopback().name();
        QTest::newRow("no group") << false << "10.0.0.1" << here << QStringLiteral("10.0.0.1：不是组播地址");
        QTest::newRow("no interface") << false << "239.255.77.1"
                                      << "gone0" << QStringLiteral("网络接口gone0不存在");
        QTest::newRow("one address") << true << "239.255.77.1" << here
                                     << QStringLiteral("239.255.77.1：“本地IP地址”须为“所有网络接口”");
        QTest::newRow("families") << false << "239.255.77.1 ff02::4d" << here
                                  << QStringLiteral("ff02::4d：不能同时加入IPv4和IPv6的组");
#ifdef Q_OS_LINUX // joins 20 groups for one socket, unless set up otherwise
        QString many;
        for (int i = 1; i <= 25; ++i)
            many += QStringLiteral("239.255.78.%1 ").arg(i);
        QTest::newRow("refused") << false << many << here << QStringLiteral("239.255.78.25：系统拒绝加入");
#endif
    }

    void saysWhyNot()
    {
        QFETCH(bool, isOnOneAddress);
        QFETCH(QString, groups);
        QFETCH(QString, device);
        QFETCH(QString, fault);
        MulticastSettings settings = Multicast::fromText(groups);
        settings.interfaceName = device;
        UdpLink link;
        const QSignalSpy received(&link, &Link::received);
        QVERIFY(link.open({isOnOneAddress ? kHere : QHostAddress(QHostAddress::Any), 0, settings}));
        QVERIFY2(link.joined().faults.contains(fault), qPrintable(link.joined().faults.join(';')));
        QUdpSocket().writeDatagram("usable", kHere, link.port());
        WAIT_EQUAL(received.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestMulticast)
#include "test_multicast.moc"
