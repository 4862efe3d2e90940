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

struct Seen
{
    QVector<QByteArray> right;
    QVector<QByteArray> wrong;
    QString others; // F, R, W
};

void read(FrameResynchronizer *stream, const QByteArray &bytes, qint64 nowMs, Seen *seen)
{
    stream->append(bytes, nowMs);
    for (CameraEvent event; stream->next(&event, 1);) {
        if (event.kind == CameraEvent::Image)
            (event.checksumRight ? seen->right : seen->wrong).append(event.data);
        else if (event.kind != CameraEvent::ImageBegins)
            seen->others += QString(" .FRW...").at(event.kind);
    }
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
        int damaged = 0;
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
                ++damaged;
            }
            stream += packet;
        }
        QVERIFY(damaged > 0);

        FrameResynchronizer reader;
        reader.setRequiresChecksums(requires);
        Seen seen;
        for (int at = 0; at < stream.size(); at += piece)
            read(&reader, stream.mid(at, piece), 0, &seen);
        int shown = 0;
        for (const QByteArray &data : qAsConst(seen.right)) {
            shown += undamaged.contains(data) ? 1 : 0;
            QVERIFY(all.contains(data)); // a doubled last byte leaves it as it was
        }
        QVERIFY2(shown >= 0.97 * undamaged.size(),
                 qPrintable(QStringLiteral("%1 of %2").arg(shown).arg(undamaged.size())));
        QVERIFY(seen.wrong.size() <= damaged);
    }

    void readsChunks_data()
    {
        QTest::addColumn<QList<QByteArray>>("chunks"); // a second apart
        QTest::addColumn<bool>("requires");
        QTest::addColumn<QString>("seen"); // right images, wrong ones, the others
        QTest::addColumn<QString>("lost"); // bytes, frames
        using Chunks = QList<QByteArray>;
        const QByteArray one = image("first");
        const QByteArray two = image("second");
        const auto flipped = [](QByteArray packet, int at) {
            packet[at] = static_cast<char>(packet.at(at) ^ 4);
            return packet;
        };
        QTest::newRow("garbage before and between")
            << Chunks{"ORgarbageORV" + one + "ORVN\x07xxxxx" + two} << true << "first second"
            << "22 0";
        QTest::newRow("a cut announcement is waited for")
            << Chunks{one + kFormat.left(9), kFormat.mid(9) + kReply} << false << "first FR"
            << "0 0";
        QTest::newRow("damaged ones are reported once")
            << Chunks{flipped(kFormat, 12) + flipped(kReply, 12) + flipped(one, 12) + two} << true
            << "second -fivst"
            << "33 0";
        QTest::newRow("and read where no checksum is asked for")
            << Chunks{flipped(kFormat, 12) + flipped(kReply, 12) + flipped(one, 12) + two} << false
            << "second -fivst FR"
            << "0 0";
        QTest::newRow("a lost byte where no checksum is asked for")
            << Chunks{QByteArray(one).remove(12, 1) + two + kReply} << false << "second R"
            << "16 1";
        QTest::newRow("a new header before the end")
            << Chunks{one.left(14) + two + one} << false << "second first"
            << "14 1";
        QTest::newRow("a short frame, a pause, a reply")
            << Chunks{image(QByteArray(99, 'x')) + one.left(14), kReply + two} << false
            << QString(99, 'x') + " second R"
            << "14 1";
        QTest::newRow("a packet in the data")
            << Chunks{image(QByteArray(50, 'x')), image(two + "behind").left(30),
                      image(two + "behind").mid(30)}
            << false << QString(50, 'x') + ' ' + QString::fromLatin1(two + "behind") << "0 0";
        QTest::newRow("a false length")
            << Chunks{flipped(one, 7), two.repeated(3)} << true << "second second second"
            << "17 1";
        QTest::newRow("another command")
            << Chunks{CameraFrame::build(0, 0x63, "beat") + one} << true << "first"
            << "0 0";
        QTest::newRow("a reply of another length")
            << Chunks{CameraFrame::build(0, CameraFrame::ReadRegister, "12345") + one} << true << "first W"
            << "0 0";
        QTest::newRow("an end in the middle") << Chunks{one + two.left(15)} << true << "first"
                                              << "15 1";
    }

    void readsChunks()
    {
        QFETCH(QList<QByteArray>, chunks);
        QFETCH(bool, requires);
        FrameResynchronizer reader;
        reader.setRequiresChecksums(requires);
        Seen seen;
        for (int i = 0; i < chunks.size(); ++i)
            read(&reader, chunks.at(i), i * 1000, &seen);
        reader.end();
        QStringList text;
        for (const QByteArray &data : qAsConst(seen.right))
            text += QString::fromLatin1(data);
        for (const QByteArray &data : qAsConst(seen.wrong))
            text += '-' + QString::fromLatin1(data);
        if (!seen.others.isEmpty())
            text += seen.others;
        QTEST(text.join(' '), "seen");
        const CameraLoss lost = reader.takeLoss();
        QTEST(QStringLiteral("%1 %2").arg(lost.bytes).arg(lost.frames), "lost");
    }
};

QTEST_GUILESS_MAIN(TestResynchronizer)
#include "test_resynchronizer.moc"
