// What a camera sends on disk: streams that play again byte by byte, videos that other
// programs can read, and a disk that refuses.

#include "avifile.h"
#include "camerarecorder.h"
#include "fulldisk.h"
#include "streamplayer.h"
#include "waitfor.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtEndian>

namespace {

quint32 u32(const QByteArray &file, qint64 at)
{
    return qFromLittleEndian<quint32>(file.constData() + at);
}

QByteArray fileOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray jpeg(int side)
{
    QImage picture(side, side, QImage::Format_RGB32);
    picture.fill(Qt::green);
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "jpg");
    return buffer.data();
}

CameraFrameData red(quint16 side)
{
    return {QByteArray("\xFF\0\0", 3).repeated(side * side), ImageRecord{ImageRecord::Rgb888, side, side}};
}

} // namespace

class TestRecording : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QStringList files(const QString &pattern) const
    {
        return QDir(m_folder.path()).entryList({pattern}, QDir::Files, QDir::Name);
    }
    // Of a video, by its index: each picture's bytes.
    static QVector<QByteArray> pictures(const QByteArray &avi)
    {
        QVector<QByteArray> found;
        const qint64 index = avi.lastIndexOf("idx1");
        const quint32 bytes = index < 0 ? 0 : u32(avi, index + 4);
        for (quint32 entry = 0; entry < bytes; entry += 16) {
            const qint64 at = index + 8 + entry;
            const qint64 chunk = 220 + u32(avi, at + 8);
            if (avi.mid(int(chunk), 4) == "00dc" && u32(avi, chunk + 4) == u32(avi, at + 12))
                found += avi.mid(int(chunk) + 8, int(u32(avi, at + 12)));
        }
        return found;
    }

private slots:
    void cleanup() { QVERIFY(m_folder.remove() && QDir().mkpath(m_folder.path())); }

    void writesVideos()
    {
        QFile file(m_folder.filePath("a.avi"));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        const QByteArray first = jpeg(16) + 'x',
                         second = jpeg(16); // of odd and even lengths, or the other way
        const qint64 limit = 224 + 2 * (8 + 1 + second.size()) + 2 + 8 + 2 * 16;
        AviFile avi(&file, {16, 16}, limit);
        QVERIFY(avi.hasRoomFor(first.size()) && avi.add(first, 1000000));
        QVERIFY(avi.hasRoomFor(second.size()) && avi.add(second, 1040000));
        QVERIFY(!avi.hasRoomFor(second.size()));
        QVERIFY(avi.writeHead());
        QCOMPARE(u32(fileOf(file.fileName()), 4) + 8, quint32(file.size())); // as if the program ended here
        QVERIFY(avi.finish());
        const QByteArray bytes = fileOf(file.fileName());
        QVERIFY(bytes.size() <= limit);
        QCOMPARE(u32(bytes, 4) + 8, quint32(bytes.size()));
        QCOMPARE(u32(bytes, 32), 40000U); // us a picture
        QCOMPARE(u32(bytes, 48), 2U);     // pictures
        QCOMPARE(u32(bytes, 64), 16U);    // wide
        QCOMPARE(pictures(bytes), (QVector<QByteArray>{first, second}));
    }

    void recordsFramesOfBothDevices()
    {
        CameraRecorder recorder;
        recorder.start({CameraRecorder::Kind::Video, m_folder.path(), 0}, {});
        recorder.addFrame(0, {jpeg(16), std::nullopt});
        recorder.addFrame(0, {"no picture", std::nullopt});
        recorder.addFrame(1, red(8));
        recorder.addFrame(0, {jpeg(24), std::nullopt}); // another size: in another file
        recorder.stop();
        WAIT_FOR(recorder.isFinished());
        QCOMPARE(recorder.status().items, 3);
        QCOMPARE(recorder.status().undecodable, 1);
        QVERIFY(recorder.status().freeBytes > 0);
        QCOMPARE(files("*.avi").size(), 3);
        QCOMPARE(pictures(fileOf(m_folder.filePath(files("*_1.avi").value(0)))), {jpeg(16)});
        QCOMPARE(pictures(fileOf(m_folder.filePath(files("*_1_2.avi").value(0)))), {jpeg(24)});
        const auto second = pictures(fileOf(m_folder.filePath(files("*_[0-9][0-9][0-9]_2.avi").value(0))));
        QCOMPARE(second.size(), 1);
        QCOMPARE(QImage::fromData(second.value(0), "jpg").size(), QSize(8, 8));
    }

    // Two boards of a server are both the first device.
    void recordsEachSenderInAVideo()
    {
        CameraRecorder recorder;
        recorder.start({CameraRecorder::Kind::Video, m_folder.path(), 0}, {});
        for (int i = 0; i < 6; ++i)
            recorder.addFrame(0, {jpeg(16 + i % 2 * 8), std::nullopt, false, QString::number(i % 2)});
        recorder.stop();
        WAIT_FOR(recorder.isFinished());
        QCOMPARE(files("*.avi").size(), 2);
        for (const QString &name : files("*.avi"))
            QCOMPARE(pictures(fileOf(m_folder.filePath(name))).size(), 3);
    }

    void savesPictures()
    {
        CameraRecorder recorder;
        QSignalSpy saved(&recorder, &CameraRecorder::pictureSaved);
        QVERIFY(!recorder.takePicture(0, m_folder.path())); // there is none
        recorder.start({CameraRecorder::Kind::Pictures, m_folder.path(), 3600000}, {});
        recorder.addFrame(0, red(4));
        recorder.addFrame(0, red(4)); // too soon
        QVERIFY(recorder.takePicture(0, m_folder.path()));
        recorder.stop();
        WAIT_FOR(recorder.isFinished());
        QCOMPARE(recorder.status().items, 1);
        QCOMPARE(saved.count(), 1);
        QCOMPARE(files("*.png").size(), 2);
        QCOMPARE(QImage(saved.value(0).value(0).toString()).pixel(3, 3), 0xFFFF0000);
    }

    void playsWhatWasRecorded()
    {
        CameraRecorder recorder;
        StreamHead head;
        recorder.start({CameraRecorder::Kind::Stream, m_folder.path(), 0}, [&head] { return head; });
        head.isRawJpeg = true; // chosen before anything arrived
        head.valueLength = 3;
        head.formats[1] = {ImageRecord::Yuv422, 640, 480};
        recorder.addBytes("板子 1", QByteArray("a\0b", 3), true);
        recorder.addBytes("板子 1", "c", false);
        recorder.addEnd("板子 1", true);
        recorder.addEnd({}, false);
        recorder.stop();
        WAIT_FOR(recorder.isFinished());
        const QString name = m_folder.filePath(files("*.kvcam").value(0));
        StreamPlayer player;
        QVector<StreamRecord> played;
        connect(&player, &StreamPlayer::played, this,
                [&played](const StreamRecord &record) { played += record; });
        QSignalSpy ended(&player, &StreamPlayer::ended);
        QCOMPARE(player.start(name, true), QString());
        QVERIFY(player.head().isRawJpeg && !player.head().isBigEndian);
        QCOMPARE(player.head().valueLength, 3);
        QCOMPARE(player.head().formats[1].width, 640);
        WAIT_EQUAL(ended.count(), 1);
        QCOMPARE(played.size(), 4);
        QVERIFY(played[0].bytes == QByteArray("a\0b", 3) && played[0].isDatagram);
        QVERIFY(played[1].bytes == "c" && !played[1].isDatagram && played[1].sender == "板子 1");
        QVERIFY(played[2].kind == StreamRecord::Ended && played[3].kind == StreamRecord::Lost);
        QVERIFY(played[0].timeUs <= played[1].timeUs && ended.value(0).value(0).toString().isEmpty());
        // Cut in its last record but one, the rest is played.
        QVERIFY(QFile::resize(name, QFileInfo(name).size() - 20));
        QCOMPARE(player.start(name, false), QString());
        WAIT_EQUAL(ended.count(), 2);
        QCOMPARE(played.size(), 6);
        QVERIFY(!ended.value(1).value(0).toString().isEmpty());
        // Of no other file.
        QVERIFY(QFile::resize(name, 31));
        QVERIFY(!player.start(name, false).isEmpty() && !player.isPlaying());
        QVERIFY(!player.start(m_folder.path(), false).isEmpty());
    }

    void keepsWhatAFullDiskHas()
    {
        CameraRecorder stream, video;
        QSignalSpy failed(&stream, &CameraRecorder::failed);
        const QByteArray bytes(10000, 'x'), picture = jpeg(16);
        {
            const FullDisk full(25000);
            stream.start({CameraRecorder::Kind::Stream, m_folder.path(), 0}, [] { return StreamHead(); });
            video.start({CameraRecorder::Kind::Video, m_folder.path(), 0}, {});
            for (int i = 0; i < 5; ++i)
                stream.addBytes("a", bytes, false);
            for (int i = 0; i < 25000 / picture.size() + 2; ++i)
                video.addFrame(0, {picture, std::nullopt});
            WAIT_FOR(stream.isFinished() && video.isFinished());
        }
        QCOMPARE(failed.count(), 1);
        QCOMPARE(stream.status().items, 2);
        QCOMPARE(stream.status().dropped, 3);
        QVERIFY(!stream.isOn() && !stream.status().reason.isEmpty() && !video.status().reason.isEmpty());
        QCOMPARE(QFileInfo(m_folder.filePath(files("*.kvcam").value(0))).size(), 32 + 2 * (16 + 1 + 10000));
        const QByteArray avi = fileOf(m_folder.filePath(files("*.avi").value(0)));
        QCOMPARE(u32(avi, 48), quint32(video.status().items)); // what its head says is there
        QVERIFY(video.status().items > 10 && u32(avi, 4) + 8 == quint32(avi.size()));
    }

    // However fast that is.
    void recordsWhatIsPlayedAtItsPace()
    {
        CameraRecorder recorder;
        recorder.setPlayedTime(7000000);
        recorder.start({CameraRecorder::Kind::Video, m_folder.path(), 0}, {});
        for (const qint64 us : {7000000, 7100000, 7200000}) {
            recorder.setPlayedTime(us);
            recorder.addFrame(0, {jpeg(16), std::nullopt});
        }
        recorder.stop();
        WAIT_FOR(recorder.isFinished());
        QCOMPARE(u32(fileOf(m_folder.filePath(files("*.avi").value(0))), 32), 100000U);
    }

    void waitsForTheDiskWhilePlaying()
    {
        QFile file(m_folder.filePath("a.kvcam"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(StreamHead().bytes() + StreamRecord().toBytes());
        file.close();
        StreamPlayer player;
        int checks = 0;
        int playedAt = 0;
        player.setThrottle([&checks] { return ++checks < 3; });
        connect(&player, &StreamPlayer::played, this, [&] { playedAt = checks; });
        QCOMPARE(player.start(file.fileName(), true), QString());
        WAIT_EQUAL(playedAt, 3);
    }

    void stopsWhenItsFileIsGone()
    {
        CameraRecorder recorder;
        QSignalSpy failed(&recorder, &CameraRecorder::failed);
        for (const auto kind : {CameraRecorder::Kind::Stream, CameraRecorder::Kind::Video}) {
            recorder.start({kind, m_folder.filePath("out"), 0}, {});
            recorder.addBytes("a", "b", false);
            recorder.addFrame(0, {jpeg(16), std::nullopt});
            WAIT_FOR(recorder.status().items == 1);
            QVERIFY(QDir(m_folder.filePath("out")).removeRecursively());
            WAIT_FOR(recorder.isFinished()); // by itself
            QVERIFY(!recorder.status().reason.isEmpty());
        }
        QCOMPARE(failed.count(), 2);
    }

    void dropsWhatTheDiskCannotFollow()
    {
        RecordingWriter writer(RecordingWriter::Kind::Video, m_folder.path(), "a");
        const CameraFrameData frame = red(2000); // which takes long to encode
        for (int i = 0; i < 50; ++i)
            writer.add({{}, 0, frame, i * 1000LL});
        writer.finish();
        QVERIFY(writer.waitForFinished(300000));
        const RecordingWriter::Status status = writer.status();
        QVERIFY(status.dropped > 0 && status.items > 0);
        QCOMPARE(status.items + status.dropped, 50);
    }
};

QTEST_GUILESS_MAIN(TestRecording)
#include "test_recording.moc"
