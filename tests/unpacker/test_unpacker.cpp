// The unpacker itself in a folder of its own, with a shell script for the
// application: what it leaves, what it starts and what it says.

#include "testfiles.h"
#include "zipmaker.h"

#include <QtTest>

#include <memory>
#include <unistd.h>

constexpr int kTimeoutMs = 60000;

class TestUnpacker : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        QFile(m_root->path()).setPermissions(QFile::Permissions(0x7777)); // for another user as well
        write("app/App", application("old"), true);
        write("app/lib/a", "old");
        write("app/conf/config.ini", "settings");
        QVERIFY(QFile::copy(QStringLiteral(UNPACKER_PATH), path("app/unzip.exe")));
        makePackage(1);
    }

    void waitsForTheApplication()
    {
        // It runs, and goes on running for a while after the unpacker was started.
        QVERIFY(QFile::remove(path("app/App")) && QFile::copy("/bin/sleep", path("app/App")));
        QProcess old;
        old.start(path("app/App"), {"1000"});
        QVERIFY(old.waitForStarted());
        const QByteArray running = QByteArray::number(old.processId());
        write("app/download/包 1.zip", makeZip({{"App",
                                                 "#!/bin/sh\n[ -e /proc/" + running +
                                                     "/exe ] && set early\n" + application("new").mid(10),
                                                 0100755}}));
        QProcess unpacker;
        unpacker.setProcessEnvironment(withDialogs());
        unpacker.start(path("app/unzip.exe"), arguments());
        QVERIFY(unpacker.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(content("dialogs").contains("正在等待程序退出"), kTimeoutMs);
        QVERIFY(!QFile::exists(path("app/_update")));
        old.kill();
        QVERIFY(old.waitForFinished());
        QVERIFY(unpacker.waitForFinished());
        QCOMPARE(unpacker.exitCode(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(content("started"), "new\n" + path("app").toUtf8() + "\n", kTimeoutMs);
        QCOMPARE(content("app/conf/config.ini"), QByteArray("settings"));
        QVERIFY(!QFile::exists(path("app/download/包 1.zip"))); // no longer needed
        QVERIFY(!QFile::exists(path("app/_update")));
        QCOMPARE(content("dialogs"),
                 QByteArray("--progress\n--pulsate\n--auto-close\n--no-cancel\n--title=升级\n"
                            "--text=正在等待程序退出，请关闭它的所有窗口…\n"
                            "# 正在安装新版本，请不要启动程序或关闭电脑…\n"));
    }

    void leavesPackagesElsewhere()
    {
        QVERIFY(QFile::rename(path("app/download/包 1.zip"), path("p.zip")));
        QCOMPARE(QProcess::execute(path("app/unzip.exe"), {path("p.zip"), "App"}), 0);
        QCOMPARE(content("app/lib/a"), QByteArray("new"));
        QVERIFY(QFile::exists(path("p.zip")));
    }

    void saysWhatWentWrong_data()
    {
        QTest::addColumn<QString>("before"); // run in the folder
        QTest::addColumn<QString>("how");    // prefix of the command
        QTest::addColumn<QString>("says");
        const QString plain = QString("exec");
        QTest::newRow("no package") << "rm \"$1\"" << plain << "未找到升级包";
        QTest::newRow("no archive") << "echo '<html>' > \"$1\"" << plain << "升级包不是ZIP文件";
        QTest::newRow("full disk")
            << "mkdir K; head -c 3000000 /dev/urandom > K/big; zip -qr \"$1\" K; rm -r K"
            << "ulimit -f 2000; exec"
            << "无法写入程序目录";
        // The superuser may write anywhere.
        QTest::newRow("read-only folder")
            << "chmod a-w ." << (geteuid() == 0 ? "exec setpriv --reuid=65534 --clear-groups" : plain)
            << "无法写入程序目录";
    }

    void saysWhatWentWrong()
    {
        QFETCH(QString, before);
        QFETCH(QString, how);
        QFETCH(QString, says);
        QProcess shell;
        shell.setWorkingDirectory(path("app"));
        shell.start(
            "sh", {"-c", before + "; " + how + " ./unzip.exe \"$@\"", "sh", arguments()[0], arguments()[1]});
        QVERIFY(shell.waitForFinished());
        QCOMPARE(shell.exitCode(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path("started")), kTimeoutMs);
        const QString told = content("started");
        const QString said = QString("升级失败，程序仍为原来的版本：") + says;
        QVERIFY2(told.startsWith("old\n" + path("app") + "\n--notice\n" + said), qPrintable(told));
        const QString printed = shell.readAllStandardError();
        QVERIFY(printed.contains(said) && !printed.contains("无法启动程序"));
        QCOMPARE(content("app/App"), application("old"));
        QCOMPARE(content("app/lib/a"), QByteArray("old"));
        QVERIFY(!QFile::exists(path("app/_update")));
    }

    // The installation's test does this at every operation.
    void survivesBeingKilled()
    {
        const int files = 100;
        makePackage(files);
        QProcess unpacker;
        unpacker.start(path("app/unzip.exe"), arguments());
        QVERIFY(unpacker.waitForStarted());
        while (!QFile::exists(path("app/lib/b")) && !unpacker.waitForFinished(0)) {
        }
        unpacker.kill(); // files are being exchanged
        unpacker.waitForFinished();
        // Where the kill came after the last file, this is the new program itself.
        QProcess program;
        program.setWorkingDirectory(path("app"));
        program.start(path("app/App"), QStringList());
        QVERIFY(program.waitForFinished() && program.exitCode() == 0);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path("started")), kTimeoutMs);
        QCOMPARE(content("started"), "new\n" + path("app").toUtf8() + "\n"); // without a notice
        QVERIFY(!QFile::exists(path("app/_update")));
        QCOMPARE(content("app/App"), application("new"));
        QCOMPARE(QDir(path("app/lib")).entryList(QDir::Files).size(), files);
    }

    void removesWhatWasLeft()
    {
        write("app/_update/old/unzip.exe", "x");
        QCOMPARE(QProcess::execute(path("app/unzip.exe"), {"--clean", "App"}), 0);
        QVERIFY(!QFile::exists(path("app/_update")));
        QVERIFY(!QFile::exists(path("started")));
    }

    void doesNothingByItself()
    {
        for (const QStringList &arguments :
             {QStringList(), {path("app/x.zip")}, {path("x.zip"), "lib/App"}, {path("x.zip"), "NUL"}}) {
            QProcess unpacker;
            unpacker.setProcessEnvironment(withDialogs());
            unpacker.start(path("app/unzip.exe"), arguments);
            QVERIFY(unpacker.waitForFinished());
            QCOMPARE(unpacker.exitCode(), 2);
            const QByteArray text("本程序由“检查版本更新”启动，用于解压升级包。\n");
            QCOMPARE(content("dialogs"), "--error\n--no-markup\n--width=400\n--title=升级\n--text=" + text);
            QVERIFY(QFile::remove(path("dialogs")));
            QProcessEnvironment other = withDialogs(); // another program for it
            QVERIFY(QFile::rename(path("bin/zenity"), path("bin/kdialog")));
            other.insert("PATH", path("bin"));
            unpacker.setProcessEnvironment(other);
            unpacker.start(path("app/unzip.exe"), arguments);
            QVERIFY(unpacker.waitForFinished());
            QCOMPARE(content("dialogs"), "--title\n升级\n--error\n" + text);
            QVERIFY(QFile::remove(path("dialogs")) && QFile::remove(path("bin/kdialog")));
        }
        QVERIFY(!QFile::exists(path("started")));
    }

private:
    QString path(const QString &name) const { return m_root->filePath(name); }
    QByteArray content(const QString &name) const { return contentOf(path(name)); }
    void write(const QString &name, const QByteArray &bytes, bool executable = false) const
    {
        QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
        QVERIFY(writeFile(path(name), bytes));
        if (executable)
            QVERIFY(QFile::setPermissions(path(name), QFile::Permissions(0x7755)));
    }

    // An application that writes its version and its arguments to the file
    // "started" beside the folder.
    QByteArray application(const QByteArray &version) const
    {
        const QByteArray file = path("started").toUtf8();
        return "#!/bin/sh\nprintf '%s\\n' " + version + " \"$PWD\" \"$@\" >" + file + ".part && mv " + file +
               ".part " + file + "\n";
    }

    // A display, and a program that shows windows there: it writes down what.
    QProcessEnvironment withDialogs() const
    {
        write("bin/zenity",
              "#!/bin/sh\nfor a; do echo \"$a\"; done >>'" + path("dialogs").toUtf8() +
                  "'\ncase $1 in --progress) exec cat >>'" + path("dialogs").toUtf8() + "' ;; esac\n",
              true);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", ":none");
        environment.insert("PATH", path("bin") + ":" + environment.value("PATH"));
        return environment;
    }

    void makePackage(int files)
    {
        QVector<ZipPart> parts{{"K/App", application("new"), 0100755}, {"K/conf/config.ini", "not these"}};
        for (int i = 0; i < files; ++i)
            parts += {"K/lib/" + QByteArray(1, char('a' + i % 26)) + QByteArray(i / 26, 'x'), "new"};
        write("app/download/包 1.zip", makeZip(parts));
    }

    QStringList arguments() const { return {path("app/download/包 1.zip"), QString("App")}; }

    std::unique_ptr<QTemporaryDir> m_root;
};

QTEST_GUILESS_MAIN(TestUnpacker)
#include "test_unpacker.moc"
