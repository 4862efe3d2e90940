// What is counted for each peer, and what its row says.

#include "peerstatistics.h"
#include "peertablemodel.h"

#include <QtTest>

namespace {

Peer peerAt(quint64 id, int number)
{
    return {id, QHostAddress(0x0a000000U + quint32(number)), quint16(5000)};
}

} // namespace

class TestPeers : public QObject
{
    Q_OBJECT

private slots:
    void countsEachConnection()
    {
        PeerStatistics statistics;
        for (const int id : {1, 2})
            statistics.joined(peerAt(id, 1), QString::number(id), 10);
        statistics.received(peerAt(1, 1), "abc", 20);
        statistics.received(peerAt(1, 1), "de", 30);
        statistics.sent(peerAt(2, 1), 7, 40);
        statistics.left(peerAt(1, 1), 50);
        statistics.received(peerAt(1, 1), "late", 60); // of no connection
        QCOMPARE(statistics.size(), 2);
        QCOMPARE(statistics.at(0).received, qint64(5));
        QCOMPARE(statistics.at(0).leftUs, qint64(50));
        QCOMPARE(statistics.at(1).sent, qint64(7));
        statistics.joined(peerAt(3, 1), "3", 70); // the same board again
        QCOMPARE(statistics.size(), 3);
        statistics.received(peerAt(0, 9), "datagram", 80);
        statistics.clear(); // but for connections
        QCOMPARE(statistics.size(), 2);
        QCOMPARE(statistics.at(0).name + statistics.at(1).name, QString("23"));
    }

    void keepsARowForEachOfManySenders()
    {
        PeerStatistics statistics;
        const int max = PeerStatistics::maxRows;
        for (int i = 0; i < max; ++i)
            statistics.received(peerAt(0, i), "four", i + 1);
        statistics.received(peerAt(0, 0), "again", max + 1);
        QCOMPARE(statistics.rest().rows, qint64(0));
        for (int i = max; i < 3 * max; ++i) {
            statistics.received(peerAt(0, i), "four", i + 2);
            statistics.sent(peerAt(0, 0), 1, i + 2); // is never silent
        }
        QCOMPARE(statistics.size(), max);
        QCOMPARE(statistics.rest().rows, qint64(2 * max));
        QCOMPARE(statistics.at(0).sent, qint64(2 * max));
        QCOMPARE(statistics.rest().received, qint64(2 * max * 4));
    }

    void sparesConnections()
    {
        PeerStatistics statistics;
        const int max = PeerStatistics::maxRows;
        for (int id = 1; id <= max + 1; ++id)
            statistics.joined(peerAt(quint64(id), id), QString::number(id), id);
        statistics.received(peerAt(quint64(max) + 1, max + 1), "uncounted", 1);
        QCOMPARE(statistics.size(), max);
        QCOMPARE(statistics.rest().rows, qint64(1));
        QCOMPARE(statistics.rest().received, qint64(9));
        statistics.left(peerAt(5, 5), 9999);
        statistics.joined(peerAt(5000, 1), "new", 10000);
        QCOMPARE(statistics.at(4).name, QString("new"));
        QCOMPARE(statistics.at(3).name, QString("4"));
    }

    void previews()
    {
        const QString degrees = QStringLiteral("温");
        const QPair<QByteArray, QString> rows[] = {
            {degrees.toUtf8() + " 23.4\r\n", degrees + " 23.4"},
            {QByteArray("\0\x01\xff", 3), "00 01 FF "},
            {QByteArray(100, '\xff'), QString("FF ").repeated(20) + QChar(0x2026)},
            // The cut goes through a character.
            {"x" + degrees.repeated(30).toUtf8(), "x" + degrees.repeated(21) + QChar(0x2026)}};
        for (const auto &[bytes, expected] : rows) {
            PeerStatistics statistics;
            statistics.received(peerAt(0, 1), bytes, 1);
            QCOMPARE(PeerTableModel::preview(statistics.at(0), 0), expected);
        }
    }
};

QTEST_GUILESS_MAIN(TestPeers)
#include "test_peers.moc"
