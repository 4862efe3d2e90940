// The record of a PID session: samples in memory and on disk, what a chart gets of
// them, and the runs found between steps. Times are the test's.

#include "pidrecorder.h"

#include <QtTest>

namespace {

PidSample sampleOf(qint64 number)
{
    return {number * 1000, qint32(number / 1000), qint32(number * 7919 % 1000) - 500};
}

bool isSample(const PidSample &sample, qint64 number)
{
    const PidSample expected = sampleOf(number);
    return sample.us == expected.us && sample.target == expected.target && sample.actual == expected.actual;
}

} // namespace

class TestPidRecord : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_recorder = std::make_unique<PidRecorder>(); }

    // Some blocks dropped, some in the file, some in memory.
    void keepsSamplesOnDisk()
    {
        constexpr int block = SampleStore::blockSamples;
        SampleFile file;
        SampleStore store;
        for (qint64 i = 0; i < 6 * block + 10; ++i)
            QCOMPARE(store.append(sampleOf(i)), i % block == block - 1);
        for (int i = 0; i < 4; ++i)
            QVERIFY(store.moveOldest(&file));
        QCOMPARE(store.dropOldest(&file), block);
        QVERIFY(store.moveOldest(&file)); // into the slot that was released
        QCOMPARE(file.fileBytes(), 4 * qint64(SampleFile::slotBytes));
        QCOMPARE(store.inMemory(), block + 10);
        QVERIFY(store.begin() == block && store.end() == 6 * block + 10);
        QVector<PidSample> samples;
        QVERIFY(store.read(0, 1000000, file, &samples));
        QCOMPARE(samples.size(), 5 * block + 10);
        for (int i = 0; i < samples.size(); ++i)
            QVERIFY(isSample(samples.at(i), block + i));
        for (const qint64 number : {block, block + 1, 2 * block - 1, 2 * block, 5 * block + 3, 6 * block + 9})
            for (const qint64 early : {0, 999})
                QCOMPARE(store.numberAt(number * 1000 - early, file), number);
        QCOMPARE(store.numberAt(0, file), qint64(block));
        QCOMPARE(store.numberAt(qint64(7) * block * 1000, file), store.end());
        while (store.moveOldest(&file)) {
        }
        QVERIFY(store.inMemory() <= block + 10); // the last block stays
        QVERIFY(isSample(store.last(), 6 * block + 9));

        SampleFile nowhere("/does/not/exist");
        SampleStore other;
        for (qint64 i = 0; i < 2 * block; ++i)
            other.append(sampleOf(i));
        QVERIFY(!other.moveOldest(&nowhere) && !nowhere.error().isEmpty());
        QVERIFY(other.read(0, block, nowhere, &samples) && isSample(samples.last(), block - 1));
    }

    // The extremes survive at each reduction, and nothing outside is read.
    void thinsForAChart()
    {
        SampleFile file;
        SampleStore store;
        constexpr qint64 count = 400000;
        for (qint64 i = 0; i < count; ++i)
            store.append({i * 1000, i == 123456 ? -9 : 5, i == 200001 ? 70000 : qint32(i % 3)});
        while (store.moveOldest(&file)) {
        }
        for (const auto &[from, to, columns] : {std::tuple<qint64, qint64, int>{200000, 200010, 100},
                                                {199000, 203000, 100},
                                                {100000, 250000, 300},
                                                {0, count, 100},
                                                {0, count, 5},
                                                {-count, 3 * count, 800}}) {
            const SampleStore::Curves curves = store.thinned(from * 1000, to * 1000, columns, file);
            qint32 highest = 0, lowest = 5;
            qint64 us = curves.actuals.first().us;
            for (const SampleStore::Point &point : curves.actuals) {
                highest = qMax(highest, point.value);
                QVERIFY(point.us >= us && point.us >= (from - 4097) * 1000);
                us = point.us;
            }
            for (const SampleStore::Point &point : curves.targets)
                lowest = qMin(lowest, point.value);
            QCOMPARE(highest, 70000);
            QCOMPARE(lowest, from <= 123456 && to > 123456 ? -9 : 5);
            QVERIFY(curves.actuals.size() <= qMax(2 * (columns + 3), 4 * columns));
            if (to >= count)
                QCOMPARE(us, (count - 1) * 1000);
        }
        store.append({5, 0, 0}); // back in time
        QCOMPARE(store.last().us, (count - 1) * 1000);
        QVERIFY(SampleStore().thinned(0, 100, 10, file).actuals.isEmpty());
    }

    void dropsTheOldestBeyondTheLimit()
    {
        const QSignalSpy trimmed(m_recorder.get(), &PidRecorder::recordTrimmed);
        m_recorder->setLimit(20000);
        for (int i = 0; i < 20000; ++i)
            for (const int channel : {0, 3})
                m_recorder->addActual(channel, i, i * 10);
        QCOMPARE(trimmed.count(), 1);
        QVERIFY(m_recorder->held() <= 20000 + 4096 && m_recorder->held() > 10000);
        QCOMPARE(m_recorder->held() + m_recorder->dropped(), 40000);
        QVERIFY(qAbs(m_recorder->record(0).begin() - m_recorder->record(3).begin()) <= 4096);
    }

    // As after opening a file: recording goes on behind what was in it.
    void takesOverARecord()
    {
        PidRecorder other;
        other.setOrigin(7);
        for (int i = 0; i < PidRecorder::maxInMemory + 10000; ++i)
            other.restoreSample(0, sampleOf(i));
        QVERIFY(other.file().fileBytes() > 0);
        for (int i = 0; i < PidRecorder::maxEvents + 5; ++i)
            other.restoreEvent({PidEvent::Started, 0, i, true});
        other.runs()->replace({PidRun()});
        event(PidEvent::Started, 0, 0, false);
        samples(100, 1000, 1);
        const QSignalSpy cleared(m_recorder.get(), &PidRecorder::recordCleared);
        m_recorder->takeOver(&other);
        QVERIFY(cleared.count() == 1 && m_recorder->origin() == 7 && m_recorder->samples()[0].isEmpty());
        QVERIFY(m_recorder->events().size() == PidRecorder::maxEvents && m_recorder->events()[0].us == 5);
        QVERIFY(other.held() == 0 && other.events().empty() && m_recorder->runs()->runs().size() == 1);
        target(300, 3000);
        samples(10, qint64(1) << 40, 1);
        QVector<PidSample> all;
        QVERIFY(m_recorder->record(0).read(0, 1 << 30, m_recorder->file(), &all));
        QVERIFY(all.size() == PidRecorder::maxInMemory + 10010 && isSample(all.at(1), 1));
        QCOMPARE(m_recorder->runs()->newest(0)->first, qint64(PidRecorder::maxInMemory) + 10000);
        m_recorder->setLimit(8192);
        QCOMPARE(m_recorder->held() + m_recorder->dropped(), qint64(all.size()));
    }

    void repeatsNoEvent()
    {
        for (int i = 0; i < 50; ++i)
            event(PidEvent::Target, i < 25 ? 5 : 6, i, true);
        QCOMPARE(m_recorder->events().size(), size_t(2));
        event(PidEvent::Target, 6, 60, false); // what was sent counts each time
        event(PidEvent::Target, 6, 61, false);
        event(PidEvent::Target, 6, 62, true); // and its answer
        QCOMPARE(m_recorder->events().size(), size_t(5));
    }

    void findsRuns()
    {
        m_recorder->params(0).gains = {1, 2, 3};
        target(100, 0); // before anything runs
        samples(10, 0, 10);
        QVERIFY(list().isEmpty());
        event(PidEvent::Started, 0, 11, false);
        QVERIFY(m_recorder->runs()->isRunning(0));
        event(PidEvent::Started, 0, 12, true); // the board's answer
        samples(20, 20, 10);
        target(300, 300);
        event(PidEvent::Target, 300, 305, true); // the answer again
        samples(30, 310, 10);
        m_recorder->params(0).gains.p = 4;
        event(PidEvent::Gains, 0, 700, true);
        samples(10, 710, 10);
        event(PidEvent::Stopped, 0, 900, true);
        QVERIFY(!m_recorder->runs()->isRunning(0));
        samples(10, 910, 10);
        target(0, 1100); // while it stands
        samples(10, 1110, 10);
        QCOMPARE(list(), (QStringList{"1 start 100>100 10+20 P1", "2 step 100>300 30+40 P1 changed"}));
        event(PidEvent::Started, 0, 1300, true);
        event(PidEvent::Started, 0, 1400, true); // a board that started again; no run between
        for (int i = 0; i < 1000; ++i) {         // a ramp
            target(i, 2000 + i);
            samples(1, 2000 + i, 0);
        }
        samples(10, 4000, 10);
        QCOMPARE(list().size(), 3);
        QCOMPARE(list().last(), "1003 step 998>999 1089+11 P4 open");
        m_recorder->runs()->endAll();
        QVERIFY(!m_recorder->runs()->isRunning(0) && !m_recorder->runs()->runs().last().isOpen());
    }

    void limitsRuns()
    {
        event(PidEvent::Started, 0, 0, false);
        samples(5, 0, 1);
        m_recorder->runs()->rename(1, "a");
        for (int i = 1; i <= PidRuns::maxRuns + 10; ++i) {
            target(i, i * 100);
            samples(5, i * 100, 1);
        }
        const PidRuns &runs = *m_recorder->runs();
        QCOMPARE(runs.runs().size(), int(PidRuns::maxRuns));
        QVERIFY(runs.find(1) && !runs.find(2) && runs.isEdited());
        QCOMPARE(runs.newest(0)->target, PidRuns::maxRuns + 10);
        QVERIFY(!runs.newest(1));
        m_recorder->runs()->remove(runs.newest(0)->id); // the open one
        samples(5, 1000000, 1);
        target(-1, 1000100);
        samples(5, 1000100, 1);
        QCOMPARE(runs.newest(0)->target, -1);
    }

private:
    void event(PidEvent::Kind kind, qint32 value, qint64 us, bool isReport)
    {
        m_recorder->addEvent({kind, 0, us, isReport, m_recorder->params(0).gains, value});
    }
    void target(qint32 value, qint64 us)
    {
        m_recorder->params(0).target = value;
        event(PidEvent::Target, value, us, false);
    }
    void samples(int count, qint64 us, qint64 step)
    {
        for (int i = 0; i < count; ++i)
            m_recorder->addActual(0, i, us + i * step);
    }
    // "id kind before>target first+count gains".
    QStringList list() const
    {
        QStringList texts;
        for (const PidRun &run : m_recorder->runs()->runs()) {
            const qint64 end = run.isOpen() ? m_recorder->record(0).end() : run.end;
            texts << QString("%1 %2 %3>%4 %5+%6 P%7%8")
                         .arg(run.id)
                         .arg(run.isStart ? "start" : "step")
                         .arg(run.before)
                         .arg(run.target)
                         .arg(run.first)
                         .arg(end - run.first)
                         .arg(double(run.gains.p))
                         .arg(run.isOpen()       ? " open"
                              : run.gainsChanged ? " changed"
                                                 : "");
        }
        return texts;
    }

    std::unique_ptr<PidRecorder> m_recorder;
};

QTEST_GUILESS_MAIN(TestPidRecord)
#include "test_pid_record.moc"
