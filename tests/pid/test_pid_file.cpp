// Session files of the PID page.

#include "pidsessionreader.h"
#include "pidsessionwriter.h"

#include <QBuffer>
#include <QtTest>

class TestPidFile : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip()
    {
        PidRecorder recorder;
        qint64 us = 1700000000000000;
        quint32 seed = 1;
        for (int i = 0; i < 100000; ++i) {
            us += 900 + (seed = seed * 1664525 + 1013904223) % 200;
            recorder.params(1).target = i / 1000 * 100;
            if (i % 1000 == 0)
                recorder.addEvent({i ? PidEvent::Target : PidEvent::Started, 1, us, false, {}, i});
            recorder.addActual(1, recorder.params(1).target + int((seed >> 20) % 5) - 2, us);
            recorder.addActual(4, -i, us);
        }
        PidSessionInfo info;
        info.names[1] = "speed";
        info.originUs = 5;
        QBuffer file;
        file.open(QIODevice::ReadWrite);
        PidSessionWriter writer(&recorder, info, &file);
        while (!writer.advance(5000)) {
        }
        QCOMPARE(writer.error(), QString());
        qInfo() << double(file.size()) / 200000;
        file.seek(0);
        PidRecorder back;
        PidSessionReader reader(&file, &back);
        while (!reader.advance(5000)) {
        }
        QCOMPARE(reader.error(), QString());
        QCOMPARE(reader.notes(), QStringList());
        QCOMPARE(back.runs()->runs().size(), recorder.runs()->runs().size());
        QCOMPARE(back.record(1).end(), recorder.record(1).end());
        QCOMPARE(back.events().size(), recorder.events().size());
    }
};

QTEST_GUILESS_MAIN(TestPidFile)
#include "test_pid_file.moc"
