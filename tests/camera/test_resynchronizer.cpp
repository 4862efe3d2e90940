// Frames out of a stream with damaged, lost and doubled bytes, in pieces of any size.

#include "frameresynchronizer.h"

#include <QSet>
#include <QtTest>

#include <random>

namespace {

QByteArray image(const QByteArray &data)
{
    return CameraFrame::build(0, CameraFrame::ImageData, data);
}

const QByteArray kFormat = QByteArray::fromHex("4f52564e0111000000010502000300a552");
const QByteArray kReply = QByteArray::fromHex("4f52564e0010000000110008305aaf47");

// Images with a wrong checksum behind a "-"; F, R and W for the others.
QList<QByteArray> read(FrameResynchronizer *stream, const QByteArray &bytes, qint64 nowMs = 0)
{
    QList<QByteArray> seen;
    stream->append(bytes, nowMs);
    for (CameraEvent event; stream->next(&event, 1);) {
        if (event.kind == CameraEvent::Image)
            seen += event.checksumRight ? event.data : '-' + event.data;
        else if (event.kind != CameraEvent::ImageBegins)
            seen += QByteArray(1, "..FRW..."[event.kind]);
    }
    return seen;
}

} // namespace

class TestResynchronizer : public QObject
{
    Q_OBJECT

private slots:
    void survivesFaults_data()
    {
        QTest::addColumn<int>("percent");
        QTest::addColumn<int>("frameBytes"); // of data; 0: any length
        QTest::addColumn<int>("piece");
        QTest::addColumn<bool>("requires");
        for (const int percent : {1, 10})
            for (const int frameBytes : {0, 52, 116, 2400})
                for (const int piece : {1, 64, 1460, 65536})
                    for (const bool isRequired : {false, true})
                        QTest::addRow("%d %%, %d bytes, pieces of %d%s", percent, frameBytes, piece,
                                      isRequired ? ", checked" : "")
                            << percent << frameBytes << piece << isRequired;
    }

    // A thousand frames without pauses. In some of them a byte is flipped, dropped or
    // doubled; of 52 and 116 bytes (packets of 64 and 128), one bit makes the length
    // that of several frames.
    void survivesFaults()
    {
        QFETCH(int, percent);
        QFETCH(int, frameBytes);
        QFETCH(int, piece);
        QFETCH(bool, requires);
        std::mt19937 random(static_cast<unsigned>(percent * 7 + frameBytes));
        const auto below = [&](int limit) {
            return static_cast<int>(random() % static_cast<unsigned>(limit));
        };
        QByteArray stream;
        QSet<QByteArray> undamaged;
        QSet<QByteArray> all;
        for (int i = 0; i < 1000; ++i) {
            QByteArray data = QByteArray::number(i);
            while (data.size() < (frameBytes > 0 ? frameBytes : 20 + i * 37 % 3000))
                data.append(static_cast<char>(random()));
            all.insert(data);
            QByteArray packet = image(data);
            if (below(100) >= percent) {
                undamaged.insert(data);
            } else {
                const int at = below(3) == 0 ? below(CameraFrame::bodyAt) : below(packet.size());
                const int kind = below(3);
                if (kind == 0)
                    packet[at] = static_cast<char>(packet.at(at) ^ 1 << below(8));
                else if (kind == 1)
                    packet.remove(at, 1);
                else
                    packet.insert(at, packet.at(at));
            }
            stream += packet;
        }
        FrameResynchronizer reader;
        reader.setRequiresChecksums(requires);
        int shown = 0;
        for (int at = 0; at < stream.size(); at += piece) {
            const QList<QByteArray> seen = read(&reader, stream.mid(at, piece));
            for (const QByteArray &data : seen) {
                shown += undamaged.contains(data) ? 1 : 0;
                QVERIFY(all.contains(data) || data.startsWith('-')); // a doubled last byte changes nothing
            }
        }
        QVERIFY2(shown >= 0.97 * undamaged.size(),
                 qPrintable(QStringLiteral("%1 of %2").arg(shown).arg(undamaged.size())));
    }

    void readsChunks_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks"); // a second apart
        QTest::addColumn<bool>("requires");
        QTest::addColumn<QString>("seen"); // then lost bytes and frames
        using Chunks = QList<QByteArray>;
        const QByteArray one = image("first");
        const QByteArray two = image("second");
        const QByteArray nested = image("(" + image("inside") + ")");
        const auto flipped = [](QByteArray packet) { return packet.replace(12, 1, "?"); };
        const QByteArray three = flipped(kFormat) + flipped(kReply) + flipped(one) + two;
        QTest::newRow("a cut announcement is waited for")
            << Chunks{one + kFormat.left(9), kFormat.mid(9) + kReply} << false << "first F R 0 0";
        QTest::newRow("damaged packets") << Chunks{three} << true << "-fi?st second 33 0";
        QTest::newRow("unchecked") << Chunks{three} << false << "F R -fi?st second 0 0";
        QTest::newRow("a lost byte, unchecked")
            << Chunks{QByteArray(one).remove(12, 1) + two + kReply} << false << "second R 16 1";
        QTest::newRow("a short frame, a pause, a reply")
            << Chunks{image("long" + one) + image("long" + two).left(14), kReply} << false
            << QString::fromLatin1("long" + QByteArray(one).replace('\0', '_')) + " R 14 1";
        QTest::newRow("a packet in the data")
            << Chunks{image(QByteArray(30, 'x')), nested.left(30), nested.mid(30)} << true
            << QString(30, 'x') + ' ' + QString::fromLatin1(nested.mid(10).chopped(2).replace('\0', '_')) +
                   " 0 0";
        QTest::newRow("other packets")
            << Chunks{CameraFrame::build(0, 0x63, "beat") +
                      CameraFrame::build(0, CameraFrame::ReadRegister, "12345") + one}
            << true << "W first 0 0";
        QTest::newRow("an end in the middle") << Chunks{one + two.left(15)} << true << "first 15 1";
    }

    void readsChunks()
    {
        QFETCH(QList<QByteArray>, chunks);
        QFETCH(bool, requires);
        FrameResynchronizer reader;
        reader.setRequiresChecksums(requires);
        QList<QByteArray> seen;
        for (int i = 0; i < chunks.size(); ++i)
            seen += read(&reader, chunks.at(i), i * 1000);
        reader.end();
        const CameraLoss lost = reader.takeLoss();
        seen << QByteArray::number(lost.bytes) << QByteArray::number(lost.frames);
        QTEST(QString::fromLatin1(seen.join(' ').replace('\0', '_')), "seen");
    }
};

QTEST_GUILESS_MAIN(TestResynchronizer)
#include "test_resynchronizer.moc"
