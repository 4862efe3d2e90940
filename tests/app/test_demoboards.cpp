// The simulated boards of a demonstration.

#include "demoboards.h"
#include "settings.h"
#include "testfiles.h"

#include <QDir>
#include <QtTest>

class TestDemoBoards : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QFile::remove(beside("boardsim"));
        QFile::remove(beside("updateserver"));
    }

    // Missing, at an end at once, or crashed: each is reported once.
    void reportsBoardsThatDoNotRun()
    {
        for (const QByteArray &program :
             {QByteArray(), QByteArray("#!/bin/sh\n"), QByteArray("#!/bin/sh\nkill -9 $$\n")}) {
            if (!program.isEmpty())
                QVERIFY(writeFile(beside("boardsim"), program) &&
                        QFile::setPermissions(beside("boardsim"),
                                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
            DemoBoards boards;
            const QSignalSpy failures(&boards, &DemoBoards::failed);
            for (int i = 0; i < 7; ++i)
                QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^.* failed:"));
            boards.start();
            QTRY_COMPARE(failures.count(), 8);
            QTRY_VERIFY(std::none_of(boards.children().begin(), boards.children().end(), isRunning));
            QCOMPARE(failures.count(), 8);
            // They fail in any order.
            QVERIFY(std::any_of(failures.begin(), failures.end(), [](const QVariantList &failure) {
                return failure.at(0).toString().contains("[COM3]");
            }));
        }
    }

    void plugsBoardsInAndTakesThemAway()
    {
        QVERIFY(QFile::link(BOARDSIM_PATH, beside("boardsim")));
        QVERIFY(QFile::link(UPDATESERVER_PATH, beside("updateserver")));
        QString folder;
        int failed = 0;
        {
            DemoBoards boards;
            connect(&boards, &DemoBoards::failed, this, [&failed] { ++failed; });
            boards.start();
            folder = qEnvironmentVariable("KORVEX_VIRTUAL_PORTS");
            QTRY_COMPARE(QDir(folder).entryList(QDir::System, QDir::Name),
                         (QStringList{"COM3", "COM4", "COM5", "COM6", "COM7", "COM8"}));
            QTRY_VERIFY(qEnvironmentVariable("KORVEX_UPDATE_SERVER").startsWith("127.0.0.1:"));
            // In the encoding that the program starts with, or Chinese is garbled.
            QCOMPARE(Settings::instance().textCodec, 1);
            // tools/run builds what is started here.
            const QByteArray presets = contentOf(PRESETS_PATH);
            for (const QProcess *board : boards.findChildren<QProcess *>()) {
                QVERIFY(presets.contains('"' + QFileInfo(board->program()).fileName().toUtf8() + '"'));
                if (board->arguments().contains("log") || board->arguments().contains("shell"))
                    QVERIFY(board->arguments().contains("gb18030"));
            }
        }
        QCOMPARE(failed, 0); // none that was ended here, either
        QVERIFY(!QFileInfo::exists(folder));
    }

private:
    static bool isRunning(const QObject *child)
    {
        const auto *process = qobject_cast<const QProcess *>(child);
        return process && process->state() != QProcess::NotRunning;
    }
    static QString beside(const QString &program)
    {
        return QCoreApplication::applicationDirPath() + QLatin1Char('/') + program;
    }
};

QTEST_GUILESS_MAIN(TestDemoBoards)
#include "test_demoboards.moc"
