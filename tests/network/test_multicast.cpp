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
    void receivesAndSends()
    {
        UdpLink link;
        QByteArrayList got;
        connect(&link, &Link::received, this, [&got](const QByteArray &bytes) { got.append(bytes); });
        QVERIFY(link.open(
            {QHostAddress::Any, 0, to(QStringLiteral(" 239.255.77.1，239.255.77.2;239.255.77.1"))}));
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
        QCOMPARE(member.receiveDatagram().senderPort(), int(link.port()));
        const quint16 port = link.port();
        link.close();
        member.abort();

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

    void saysWhyNot()
    {
        QString tooMany; // Linux joins 20 groups with one socket, unless set up otherwise
        for (int i = 1; i <= 25; ++i)
            tooMany += QStringLiteral("239.255.78.%1 ").arg(i);
        const struct
        {
            bool isOnOneAddress;
            QString groups, fault;
        } rows[] = {
            {true, "239.255.77.1", QStringLiteral("239.255.77.1：“本地IP地址”须为“所有网络接口”")},
            {false, "239.255.77.1 ff02::4d", QStringLiteral("ff02::4d：不能同时加入IPv4和IPv6的组")},
#ifdef Q_OS_LINUX
            {false, tooMany, QStringLiteral("239.255.78.25：系统拒绝加入")},
#endif
        };
        for (const auto &row : rows) {
            UdpLink link;
            const QSignalSpy received(&link, &Link::received);
            QVERIFY(
                link.open({row.isOnOneAddress ? kHere : QHostAddress(QHostAddress::Any), 0, to(row.groups)}));
            QVERIFY2(link.joined().faults.contains(row.fault), qPrintable(link.joined().faults.join(';')));
            QUdpSocket().writeDatagram("usable", kHere, link.port());
            WAIT_EQUAL(received.count(), 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestMulticast)
#include "test_multicast.moc"
