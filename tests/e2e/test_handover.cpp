// An update from end to end: the window of an old version asks the server, asks
// the user, downloads and quits; the unpacker waits for its process and
// exchanges the files; the new version, which is the real program, runs.

#include "testfiles.h"
#include "updateserver.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace {

// The process that runs this very file; 0 where none does.
pid_t processOf(const QString &program)
{
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &process : processes)
        if (QFile::symLinkTarget("/proc/" + process + "/exe") == program)
            return process.toInt();
    return 0;
}

} // namespace

class TestHandover : public QObject
{
    Q_OBJECT

private slots:
    void updatesTheProgram()
    {
        const QTemporaryDir root;
        const QString folder = root.filePath(QStringLiteral("Orvane 调试助手"));
        const auto in = [&folder](const char *name) {
            return folder + QLatin1Char('/') + QLatin1String(name);
        };
        QProcess shell;
        shell.start(
            "sh",
            {"-ec",
             "mkdir -p \"$0\"; cp \"$1\" \"$0\"/Korvex; cp \"$2\" \"$0\"/unzip.exe; "
             "cd \"$0\"; echo mine > rom.bin; mkdir -p ../new/K/doc; cp \"$3\" ../new/K/Korvex; "
             "cp \"$2\" ../new/K/unzip.exe; echo new > ../new/K/doc/new.txt; cd ../new; zip -qr1 p.zip K",
             folder, OLD_VERSION_PATH, UNPACKER_PATH, KORVEX_PATH});
        QVERIFY(shell.waitForFinished(60000));
        QVERIFY2(shell.exitCode() == 0, shell.readAllStandardError());

        UpdateServer server;
        server.setReply("cv", UpdateServer::version("1.0.2.7", "notes"));
        server.setReply("up", UpdateServer::package("korvex.zip", contentOf(root.filePath("new/p.zip"))));
        qputenv("KORVEX_UPDATE_SERVER", server.address());
        QProcess old;
        old.setProcessChannelMode(QProcess::ForwardedChannels);
        old.start(in("Korvex"), {in("rom.bin")});
        QTRY_VERIFY_WITH_TIMEOUT(old.state() == QProcess::NotRunning, 120000);
        QCOMPARE(old.exitCode(), 0);
        QCOMPARE(contentOf(in("tmp/asked")), QByteArray("文件有未保存的修改，是否保存？\nrom.bin\n"));

        // It is the new file that runs, and it has got as far as a display.
        QTRY_VERIFY_WITH_TIMEOUT(processOf(in("Korvex")) != 0, 60000);
        const pid_t process = processOf(in("Korvex"));
        QVERIFY(contentOf(in("Korvex")) == contentOf(KORVEX_PATH));
        QCOMPARE(contentOf(in("doc/new.txt")), QByteArray("new\n"));
        QCOMPARE(contentOf(in("rom.bin")), QByteArray("mine\n"));
        QTRY_VERIFY_WITH_TIMEOUT(
            contentOf("/proc/" + QString::number(process) + "/maps").contains("libqoffscreen"), 60000);
        QVERIFY(!QFile::exists(in("_update"))); // removed before the new version was started
        QCOMPARE(::kill(process, SIGTERM), 0);
        QTRY_COMPARE_WITH_TIMEOUT(processOf(in("Korvex")), 0, 60000);
    }
};

QTEST_GUILESS_MAIN(TestHandover)
#include "test_handover.moc"
