// Session files and tables of the PID page: bytes, damage, a record that goes on.

#include "checksum.h"
#include "pidsessionreader.h"
#include "pidsessionwriter.h"
#include "pidtimetable.h"

#include <QBuffer>
#include <QDir>
#include <QtTest>

#include <limits>

namespace {

constexpr qint64 kTime = 1700000000000000;
constexpr qint32 kLow = std::numeric_limits<qint32>::min();
constexpr qint32 kHigh = std::numeric_limits<qint32>::max();

template <class Worker> void finish(Worker *worker)
{
    for (int percent = 0; !worker->advance(500); percent = worker->percent())
        QVERIFY(worker->percent() >= percent && worker->percent() <= 100);
}

template <class Writer> QByteArray written(const PidRecorder &recorder, const PidSessionInfo &info = {})
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    Writer writer(&recorder, info, &buffer);
    finish(&writer);
    return writer.error().isEmpty() ? bytes : QByteArray();
}

// What a file gave, in a text: error or notes, samples of channels 0 and 1, runs.
QString opened(QByteArray bytes, PidRecorder *recorder, PidSessionInfo *info = nullptr)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    PidSessionReader reader(&buffer, recorder);
    finish(&reader);
    if (info)
        *info = reader.info();
    QStringList parts = reader.notes();
    parts += QString("%1+%2").arg(recorder->record(0).end()).arg(recorder->record(1).end());
    for (const PidRun &run : recorder->runs()->runs())
        parts += QString("run %1-%2 %3").arg(run.first).arg(run.end).arg(run.name.left(4));
    return reader.error().isEmpty() ? parts.join('|') : reader.error();
}

QByteArray chunk(const char *type, const QByteArray &payload)
{
    const auto littleEndian = [](quint32 v) {
        return QByteArray::fromHex(QByteArray::number(qbswap(v), 16).rightJustified(8, '0'));
    };
    const QByteArray bytes = type + littleEndian(quint32(payload.size())) + payload;
    return bytes + littleEndian(Crc::of(CrcModels::crc32, bytes.constData(), bytes.size()));
}

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

// Made by another program from the description of the format.
const QByteArray kGolden =
    hex("894b565049440d0a01000000494e464f260000008e80f2818389850601f6fff18183898506015005017602c2b0030000"
        "00000000000000000000b027228752554e532100000001000901028080f9c0c1c48203d00f01d804140000c03f000000"
        "00000000c0016e1af1ee0245564e541c0000000282008080f281838985060000c03f00000000000000c0030002d80405"
        "8b4f77534d504c1f0000000000038080f28183898506e807e807010102da040af4ffffff0ffdffffff1f27650432454e"
        "4420020000000300447bc689");
const QByteArray kHead = kGolden.left(12);
const QByteArray kTwoRuns = chunk("RUNS", hex("02 00000005 0000 000000 000000000000000000000000 0161 "
                                              "00000205 0000 000000 000000000000000000000000 0162"));
// Channel 0, numbers 0 and 1, 4 and 5.
const QByteArray kFirst = chunk("SMPL", hex("000002 00 01 0200 0000"));
const QByteArray kThird = chunk("SMPL", hex("000402 04 01 0200 0000"));

} // namespace

class TestPidFile : public QObject
{
    Q_OBJECT

private slots:
    void bytes()
    {
        PidRecorder recorder;
        recorder.setOrigin(kTime - 5);
        recorder.restoreEvent({PidEvent::Gains, 0, kTime, true, {1.5F, 0, -2}});
        recorder.restoreEvent({PidEvent::Target, 0, kTime + 1, false, {}, 300});
        for (const PidSample &sample :
             {PidSample{kTime, -1, 5}, {kTime + 1000, 300, kHigh}, {kTime + 2000, 300, kLow}})
            recorder.restoreSample(0, sample);
        PidRun run;
        run.first = 1;
        run.beginUs = kTime;
        run.endUs = kTime + 2000;
        run.isStart = run.isReference = true;
        run.before = -1;
        run.target = 300;
        run.period = 10;
        run.gains = {1.5F, 0, -2};
        run.name = "n";
        recorder.runs()->replace({run}); // goes on: ends with the file
        PidSessionInfo info;
        info.names[0] = "v";
        info.units[0] = "°";
        info.madeUs = kTime + 7;
        info.program = "P";
        QCOMPARE(written<PidSessionWriter>(recorder, info).toHex(), kGolden.toHex());

        PidRecorder back;
        PidSessionInfo read;
        QCOMPARE(opened(kGolden, &back, &read), "3+0|run 1-3 n");
        QVERIFY(read.names == info.names && read.madeUs == info.madeUs && read.program == "P");
        QVERIFY(back.hasOrigin() && back.origin() == kTime - 5);
        QCOMPARE(written<PidSessionWriter>(back, read).toHex(), kGolden.toHex());
    }

    // Wherever it is cut or changed, the user learns of it.
    void damage()
    {
        for (int size = 0; size < kGolden.size(); ++size) {
            PidRecorder recorder;
            const QString text = opened(kGolden.left(size), &recorder);
            QVERIFY2(text.contains("不完整") || text.contains("已损坏") || text.contains("不是"),
                     qPrintable(text));
            QCOMPARE(recorder.held(), size < 190 ? 0 : 3);
        }
        for (int bit = 0; bit < 8 * kGolden.size(); ++bit) {
            QByteArray bytes = kGolden;
            bytes[bit / 8] = char(bytes.at(bit / 8) ^ (1 << bit % 8));
            PidRecorder recorder;
            QCOMPARE(opened(bytes, &recorder) == "3+0|run 1-3 n", bit / 8 == 10 || bit / 8 == 11); // reserved
        }
    }

    void forged_data()
    {
        QTest::addColumn<QByteArray>("chunks");
        QTest::addColumn<QString>("outcome");
        const QByteArray end = chunk("END ", hex("0000"));
        const auto row = [end](const char *name, const QByteArray &chunks, const char *outcome) {
            QTest::newRow(name) << kHead + chunks + end << outcome;
        };
        const char *damaged = "文件已损坏，没有可以读出的数据";
        row("nothing", {}, "0+0");
        row("gap", kTwoRuns + kFirst + kThird, "4+0|run 0-3 a|run 2-4 b");
        row("run beyond", kTwoRuns + kFirst, "2+0|run 0-2 a|run 2-2 b");
        row("runs too late", kFirst + kTwoRuns, "1 个数据块已损坏，已跳过|2+0");
        row("samples twice", kFirst + kFirst, "1 个数据块已损坏，已跳过|2+0");
        row("back in time", kFirst + chunk("SMPL", hex("00020100 0100 00")),
            "1 个样本的时间倒退，已改为前一个样本的时间|3+0");
        row("channel of samples", chunk("SMPL", hex("05000200010200 0000")), damaged);
        row("count", chunk("SMPL", hex("0000ffffff7f00")), damaged);
        row("count beyond bytes", chunk("SMPL", hex("0000802000")), damaged);
        row("endless number", chunk("SMPL", hex("00ffffffffffffffffffffff")), damaged);
        row("endless time", chunk("SMPL", hex("000002 00 ffffffffffffffffff7f 0200 0000")), damaged);
        row("time beyond", chunk("SMPL", hex("000002 00 ffffffffffffffff7f 0200 0000")), damaged);
        row("run of targets beyond", chunk("SMPL", hex("000002 00 01 0300 0000")), damaged);
        row("run of no targets", chunk("SMPL", hex("000002 00 01 0000 0000")), damaged);
        row("value beyond", chunk("SMPL", hex("000001 00 0100 8080808020")), damaged);
        row("channel of a run",
            chunk("RUNS", hex("01 05000005 0000 000000 000000000000000000000000 00")) + kFirst,
            "1 次运行无效或超出上限，已去掉|2+0");
        row("events",
            chunk(
                "EVNT",
                hex("04 000500 020000 0000c07f 00000000 00000000 020000 00000000 0000807f 00000000 000000")),
            "3 个事件无效，已去掉|0+0");
        row("target beyond", chunk("EVNT", hex("01 030000 8080808010")), damaged);
        row("short gains", chunk("EVNT", hex("01 020000 0000c0")), damaged);
        row("long name", chunk("RUNS", hex("01 00000005 0000 000000 000000000000000000000000 7f61")),
            damaged);
        row("kind of an event", chunk("EVNT", hex("01 070000")), damaged);
        row("unknown chunk", chunk("MORE", "x") + kFirst, "1 个数据块由更新的程序写入，已跳过|2+0");
        row("dropped at saving", kFirst + chunk("END ", hex("0505")),
            "缺少 3 个样本|保存时有 5 个样本已超出记录上限，未写入文件|2+0");
        row("length", QByteArray("SMPL\xFF\xFF\xFF\x7F"), damaged);
        QByteArray newer = kGolden;
        newer[8] = 2;
        QTest::newRow("version") << newer << "文件的格式版本是 2，本程序只能打开版本 1";
        QTest::newRow("other file") << QByteArray("\x89PNG\r\n\x1A\n and more") << "不是 PID 会话文件";
    }

    void forged()
    {
        QFETCH(QByteArray, chunks);
        PidRecorder recorder;
        QTEST(opened(chunks, &recorder), "outcome");
        QVERIFY(recorder.events().size() <= 1);
    }

    void cleansNames()
    {
        using PidSessionFormat::cleaned;
        QCOMPARE(cleaned(QString::fromUtf8(" a\n\tb\u202E\x7F转速\u2028 ")), QString::fromUtf8("ab转速"));
        QCOMPARE(cleaned(QString(300, 'x')).size(), 200);
        const QString smiles = QString::fromUtf8("😀").repeated(150);
        QCOMPARE(cleaned('x' + smiles), 'x' + smiles.left(198)); // no half of one
    }

    // A board at 1 kHz with noise, whose record drops its oldest blocks and goes on.
    void recordGoesOn()
    {
        PidRecorder recorder;
        record(&recorder, 0, 100000);
        recorder.setLimit(60000);
        const qint64 begin = recorder.record(1).begin();
        const qint64 held = recorder.held();
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        PidSessionInfo info;
        info.originUs = 1; // the record has none
        PidSessionWriter writer(&recorder, info, &buffer);
        for (int i = 0; i < 5; ++i)
            QVERIFY(!writer.advance(4096));
        QVERIFY(writer.percent() > 0 && writer.percent() < 50);
        record(&recorder, 100000, 20000);
        finish(&writer);
        QVERIFY(begin > 0 && writer.leftOut() > 0 && writer.leftOut() < held && writer.error().isEmpty());
        QVERIFY2(bytes.size() < 4 * (held - writer.leftOut()), qPrintable(QString::number(bytes.size())));

        // The run whose step was dropped has no samples, which would give false figures.
        PidRecorder cut;
        record(&cut, 0, 100000);
        cut.setLimit(60000);
        QBuffer cutFile;
        cutFile.open(QIODevice::WriteOnly);
        PidSessionWriter cutWriter(&cut, info, &cutFile);
        finish(&cutWriter);
        PidRecorder cutBack;
        opened(cutFile.data(), &cutBack);
        QVERIFY(cutBack.held() == cut.held());
        const PidRun *cutRun = nullptr;
        for (const PidRun &run : cut.runs()->runs())
            if (run.first < cut.record(run.channel).begin() && run.end > cut.record(run.channel).begin())
                cutRun = &run;
        QVERIFY(cutRun);
        const auto &runs = cutBack.runs()->runs();
        const auto found = std::find_if(runs.begin(), runs.end(),
                                        [&](const PidRun &run) { return run.beginUs == cutRun->beginUs; });
        QVERIFY(found != runs.end() && found->first == found->end && found->end > 0);

        PidRecorder back;
        back.setLimit(20000); // less than the file has
        const QString text = opened(bytes, &back);
        QVERIFY2(text.contains(QString("保存时有 %1 个样本").arg(writer.leftOut())) &&
                     text.contains("最早的"),
                 qPrintable(text));
        QCOMPARE(back.held() + back.dropped(), held - writer.leftOut());
        QVERIFY(!back.hasOrigin());
        // The last run that was in the file begins with the same sample.
        const PidRun &last = back.runs()->runs().last();
        const PidRun *original = recorder.runs()->find(int(last.beginUs - kTime) / 1000000 + 1);
        QVERIFY(original && original->beginUs == last.beginUs && last.first < last.end);
        QVector<PidSample> own, read;
        recorder.record(1).read(original->first, original->first + 100, recorder.file(), &own);
        back.record(1).read(last.first, last.first + 100, back.file(), &read);
        QCOMPARE(read.size(), 100);
        for (int i = 0; i < 100; ++i)
            QVERIFY(own.at(i).us == read.at(i).us && own.at(i).actual == read.at(i).actual &&
                    own.at(i).target == read.at(i).target);

        PidSessionWriter interrupted(&recorder, {}, &buffer);
        interrupted.advance(1);
        recorder.clearRecord();
        finish(&interrupted);
        QCOMPARE(interrupted.error(), "记录已被清空");
    }

#ifdef Q_OS_LINUX // where a file that is open can be cut through another name
    void blockThatCannotBeRead()
    {
        PidRecorder recorder;
        const QString folder = "/proc/self/fd/";
        const QStringList before = QDir(folder).entryList(QDir::Files | QDir::System);
        for (int i = 0; i < PidRecorder::maxInMemory + 10000; ++i)
            recorder.restoreSample(0, {i, 0, 0});
        QStringList files = QDir(folder).entryList(QDir::Files | QDir::System);
        for (const QString &file : before)
            files.removeOne(file);
        QVERIFY(recorder.file().fileBytes() > 0 && files.size() == 1);
        QVERIFY(QFile::resize(folder + files.first(), SampleFile::slotBytes + 5));
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        PidSessionWriter writer(&recorder, {}, &buffer);
        finish(&writer);
        QCOMPARE(writer.error(), "临时文件中的样本无法读回");
        PidTimeTable table(&recorder, {}, &buffer);
        finish(&table);
        QCOMPARE(table.error(), "临时文件中的样本无法读回");
    }
#endif

    void table()
    {
        PidRecorder recorder;
        PidSessionInfo info;
        info.names[2] = "a,\"b\"";
        info.units[2] = "rpm";
        recorder.restoreSample(2, {kTime + 999999, kHigh, kLow});
        recorder.restoreSample(0, {kTime + 1000000, -1, 5});
        recorder.restoreSample(2, {kTime + 1000001, 1, 1});
        recorder.restoreEvent({PidEvent::Started, 0, kTime, false});
        recorder.restoreEvent({PidEvent::Gains, 2, kTime + 1000000, true, {0.1F, 16777216, 1e-7F}});
        recorder.restoreEvent({PidEvent::Period, 4, kTime + 1000002, true, {}, 10});
        recorder.restoreEvent({PidEvent::Target, 4, kTime + 1000003, false, {}, -3});
        recorder.setOrigin(kTime + 1000000);
        const QString first = QDateTime::fromSecsSinceEpoch(kTime / 1000000).toString("yyyy-MM-ddTHH:mm:ss.");
        const QString second =
            QDateTime::fromSecsSinceEpoch(kTime / 1000000 + 1).toString("yyyy-MM-ddTHH:mm:ss.");
        const QStringList rows{
            "\uFEFF时间,秒,通道,名称,单位,类型,来源,实际值,目标值,差值,P,I,D,周期",
            first + "000000,-1.000000,1,,,启动,发送,,,,,,,",
            first + "999999,-0.000001,3,\"a,\"\"b\"\"\",rpm,采样,上报,-2147483648,2147483647,-4294967295,,,,",
            second + "000000,0.000000,3,\"a,\"\"b\"\"\",rpm,增益,上报,,,,0.1,16777216,1e-07,",
            second + "000000,0.000000,1,,,采样,上报,5,-1,6,,,,",
            second + "000001,0.000001,3,\"a,\"\"b\"\"\",rpm,采样,上报,1,1,0,,,,",
            second + "000002,0.000002,5,,,周期,上报,,,,,,,10",
            second + "000003,0.000003,5,,,目标值,发送,,-3,,,,,",
            ""};
        QCOMPARE(QString::fromUtf8(written<PidTimeTable>(recorder, info)).split("\r\n"), rows);
    }

private:
    // Channels 0 and 1; a step of the target each second on channel 1.
    void record(PidRecorder *recorder, int from, int count)
    {
        for (int i = from; i < from + count; ++i) {
            m_seed = m_seed * 1664525 + 1013904223;
            const qint64 us = kTime + i * qint64(1000);
            if (i % 1000 == 0) {
                recorder->params(1).target = i;
                recorder->addEvent({i == 0 ? PidEvent::Started : PidEvent::Target, 1, us, false, {}, i});
            }
            recorder->addActual(1, i / 1000 * 1000 + int(m_seed >> 29), us + int(m_seed >> 20) % 300);
            recorder->addActual(0, int(m_seed >> 29), us);
        }
    }

    quint32 m_seed = 1;
};

QTEST_GUILESS_MAIN(TestPidFile)
#include "test_pid_file.moc"
