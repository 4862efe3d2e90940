// Saving and opening sessions between the events: nothing is lost by failing, by stopping
// or by what is recorded meanwhile.

#include "fulldisk.h"
#include "pidrecorder.h"
#include "pidsessionfiles.h"
#include "testfiles.h"
#include "waitfor.h"

#include <QtTest>

class TestPidSessionFiles : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_recorder = std::make_unique<PidRecorder>();
        m_files = std::make_unique<PidSessionFiles>(m_recorder.get());
        connect(m_files.get(), &PidSessionFiles::finished, this,
                [this](const PidSessionFiles::Outcome &outcome) { m_outcome = outcome; });
        m_outcome = {};
        m_recorder->addEvent({PidEvent::Started, 0, 1, false});
        for (int i = 0; i < kSamples; ++i) // more than one slice
            m_recorder->addActual(0, i, i);
        m_recorder->runs()->rename(1, "a");
        writeFile(path(), "old");
    }

    void savesAndOpens()
    {
        const QSignalSpy progress(m_files.get(), &PidSessionFiles::progress);
        PidSessionInfo info;
        info.names[4] = "b";
        m_files->save(path(), info);
        QVERIFY(m_files->isRunning() && !m_recorder->runs()->isEdited());
        QCOMPARE(contentOf(path()), "old");
        m_recorder->addActual(0, 0, kSamples); // too late for the file
        WAIT_FOR(!m_files->isRunning());
        QVERIFY(m_outcome.error.isEmpty() && m_outcome.fileName == path() && progress.count() > 1);
        m_files->open(path());
        QVERIFY(m_files->isRunning() && m_recorder->held() == kSamples + 1);
        WAIT_FOR(!m_files->isRunning());
        QVERIFY(m_outcome.notes.isEmpty() && m_outcome.info.names[4] == "b");
        QCOMPARE(m_recorder->held(), qint64(kSamples));
        QCOMPARE(m_recorder->runs()->runs().first().name, "a");

        m_files->exportTable(path(), info);
        m_files->complete(); // at quitting
        QVERIFY(m_outcome.kind == PidSessionFiles::Kind::Export && m_outcome.error.isEmpty());
        QCOMPARE(contentOf(path()).count('\n'), kSamples + 2);
    }

    void failsWithoutALoss()
    {
        {
            const FullDisk disk(100000);
            m_files->save(path(), {});
            WAIT_FOR(!m_files->isRunning());
        }
        QVERIFY(!m_outcome.error.isEmpty() && m_recorder->runs()->isEdited());
        m_files->save(path(), {});
        m_recorder->runs()->rename(1, "b");
        m_files->cancel();
        QVERIFY(m_outcome.isCancelled && m_recorder->runs()->isEdited());
        m_files->exportTable(m_folder.filePath("none/table.csv"), {});
        QCOMPARE(m_outcome.error, "文件夹不存在");
        for (const QString &name : {path(), m_folder.filePath("missing"), m_folder.path()}) {
            m_outcome = {};
            m_files->open(name);
            QVERIFY(!m_files->isRunning() && !m_outcome.error.isEmpty());
        }
        QCOMPARE(contentOf(path()), "old");

        m_files->save(path(), {});
        m_files->complete();
        m_files->open(path());
        m_files->complete();
        QVERIFY(m_outcome.isCancelled && m_outcome.kind == PidSessionFiles::Kind::Open);
        QVERIFY(m_recorder->held() == kSamples && m_recorder->runs()->runs().size() == 1);
    }

private:
    static constexpr int kSamples = 600000;
    QString path() const { return m_folder.filePath("session"); }

    QTemporaryDir m_folder;
    std::unique_ptr<PidRecorder> m_recorder;
    std::unique_ptr<PidSessionFiles> m_files;
    PidSessionFiles::Outcome m_outcome{};
};

QTEST_GUILESS_MAIN(TestPidSessionFiles)
#include "test_pid_sessionfiles.moc"
