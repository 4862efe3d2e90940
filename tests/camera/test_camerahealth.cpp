// What the health of a camera link counts, and for whom.

#include "camerastreams.h"

#include <QtTest>

namespace {

const QByteArray kImage = QByteArray::fromHex("4f52564e00140000000210111213141516174e6e");

} // namespace

class TestCameraHealth : public QObject
{
    Q_OBJECT

private:
    CameraHealth m_health;
    CameraStreams m_streams{&m_health};

    void receive(const QString &sender, const QByteArray &bytes)
    {
        CameraStreams::Stream &stream = m_streams.of(sender, false);
        stream.packets.append(bytes, m_health.now());
        m_streams.countLoss(sender, stream);
        for (CameraEvent event; stream.packets.next(&event, 1); m_streams.countLoss(sender, stream))
            if (event.kind == CameraEvent::Image)
                m_health.addFrame(sender, event);
        m_streams.countLoss(sender, stream);
    }

    QString row(int index) const
    {
        const CameraHealthRow row = index < 0 ? m_health.total() : m_health.rows().value(index);
        return QStringLiteral("%1/%2 good %3 wrong %4 cut %5 lost %6")
            .arg(row.sender)
            .arg(row.device)
            .arg(row.good)
            .arg(row.wrongChecksum)
            .arg(row.cutShort)
            .arg(row.lostBytes);
    }

private slots:
    void init()
    {
        m_streams.clear();
        m_health.clear();
        m_health.setNow(0);
    }

    // Nothing that arrives vanishes without a count, and each fault has its place.
    void countsEachFault()
    {
        receive("a", kImage + QByteArray(kImage).replace(12, 1, "?"));
        receive("a", "garbage!");
        receive("a", "mor");
        receive("b", kImage.left(13).replace(4, 1, "\x01"));
        receive("b", kImage + kImage.left(15));
        QCOMPARE(row(0), QStringLiteral("a/0 good 1 wrong 1 cut 0 lost 0"));
        QCOMPARE(row(1), QStringLiteral("b/1 good 0 wrong 0 cut 1 lost 13"));
        m_streams.end("a"); // of which less than a packet was buffered
        QCOMPARE(row(3), QStringLiteral("a/-1 good 0 wrong 0 cut 0 lost 11"));
        m_streams.clear(); // the link closes
        QCOMPARE(row(2), QStringLiteral("b/0 good 1 wrong 0 cut 1 lost 15"));
        QCOMPARE(row(-1), QStringLiteral("/-1 good 2 wrong 1 cut 2 lost 39"));
        const QVector<CameraFault> faults = m_health.faults(); // the newest first
        QCOMPARE(faults.size(), 4);
        QCOMPARE(faults.at(3).kind, CameraFault::WrongChecksum);
        QCOMPARE(faults.at(3).offset, qint64(20));
        QCOMPARE(faults.at(3).head, QByteArray(kImage).replace(12, 1, "?").left(16));
        QCOMPARE(faults.at(2).offset, qint64(0));
        QCOMPARE(faults.at(2).head, kImage.left(13).replace(4, 1, "\x01"));
        QCOMPARE(faults.at(1).kind, CameraFault::UnknownBytes);
        QCOMPARE(faults.at(1).offset, qint64(40));
        QCOMPARE(faults.at(1).bytes, qint64(11));
        QCOMPARE(faults.at(0).offset, qint64(33));
        QCOMPARE(faults.at(0).kind, CameraFault::CutShort);
    }

    void measuresThePace()
    {
        for (const qint64 atMs : {100, 200, 300, 400, 1400}) {
            m_health.setNow(atMs);
            receive("a", kImage);
            m_health.addShown("a", 0);
            if (atMs == 400) {
                m_health.setNow(1100);
                m_health.tick(); // three frames behind the first in one second
            }
        }
        m_health.setNow(2100);
        m_health.tick();
        CameraHealthRow row = m_health.rows().constFirst();
        QCOMPARE(row.received.now, 1.0);
        QCOMPARE(row.received.max, 3.0);
        QCOMPARE(row.shown.max, 3.0);
        QCOMPARE(row.received.min, 1.0);
        QCOMPARE(row.longestGapMs, qint64(1000));
        QCOMPARE(row.lastFrameMs, qint64(1400));
        m_health.pause(); // a closed link has no gaps
        m_health.setNow(90000);
        m_health.tick();
        receive("a", kImage);
        m_health.setNow(92000);
        m_health.tick(); // but a camera that has stopped has
        row = m_health.rows().constFirst();
        QCOMPARE(row.longestGapMs, qint64(2000));
        QCOMPARE(row.received.min, 0.0);
    }

    void staysSmall()
    {
        for (int i = 0; i < 1000; ++i)
            receive(QString::number(i), "garbage-" + kImage);
        QCOMPARE(m_health.rows().size(), int(CameraHealth::maxRows));
        QCOMPARE(m_health.faults().size(), int(CameraHealth::maxFaults));
        QCOMPARE(m_health.total().lostBytes, qint64(28000));
        QCOMPARE(m_health.faults().constFirst().head, ("garbage-" + kImage).left(16));
    }
};

QTEST_GUILESS_MAIN(TestCameraHealth)
#include "test_camerahealth.moc"
