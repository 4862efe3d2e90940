// The program itself, at pseudo-terminals, sockets and pipes.

#include "clirun.h"
#include "freeport.h"
#include "ptypeer.h"
#include "testfiles.h"
#include "waitfor.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

class TestCli : public QObject
{
    Q_OBJECT

private slots:
    void endsWithAStatus_data()
    {
        QTest::addColumn<QString>("arguments"); // @: a port, %: a free TCP port
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        const std::tuple<const char *, int, const char *> rows[] = {
            {"", 2, "缺少命令"},
            {"dance", 2, "未知命令：dance"},
            {"monitor", 2, "缺少端口"},
            {"monitor @ --loud", 2, "未知选项：--loud"},
            {"monitor @ --baud 0", 2, "波特率无效"},
            {"monitor @ --baud=fast", 2, "波特率无效"},
            {"monitor @ --duration nan", 2, "时间无效"},
            {"monitor @ --hex=1", 2, "选项没有值：--hex"},
            {"monitor @ --log=", 2, "文件名无效"},
            {"monitor -- -x", 1, "串口不存在"},
            {"ports -x", 2, "未知选项：-x"},
            {"monitor @ --duration", 2, "缺少值"},
            {"monitor @ --codec latin1", 2, "编码无效"},
            {"monitor @ --filter (a", 2, "缺少右括号"},
            {"monitor @ @", 2, "多余的参数"},
            {"monitor tcp://localhost", 2, "地址无效"},
            {"monitor tcp://localhost:65536", 2, "地址无效"},
            {"monitor /dev/nothing", 1, "串口不存在"},
            {"monitor tcp://127.0.0.1:%", 1, "拒绝连接"},
            {"monitor @ --log /nowhere/log", 1, "文件夹不存在"},
            {"monitor @ --duration 0.05", 0, ""},
            {"monitor /dev/nothing --reconnect --duration 0.3", 3, "没有打开"},
            {"send @", 2, "--text"},
            {"send @ --text a --hex 41", 2, "--text"},
            {"send @ --text a --text b", 2, "选项重复"},
            {"send @ --hex 123", 2, "十六进制数据无效"},
            {"send @ --text a --checksum md5", 2, "校验无效"},
            {"send @ --file /nowhere/file", 1, "文件夹不存在"},
            {"expect @", 2, "缺少--text或--regex"},
            {"expect @ --text= --timeout 1", 2, "为空"},
            {"expect @ --text a --regex b", 2, "选项重复：--regex"},
            {"expect @ --text a --timeout 0.05", 3, "超时"},
            {"expect /dev/nothing --text a --reconnect --timeout 0.3", 3, "等待/dev/nothing"},
            {"ymodem @", 2, "缺少要发送的文件"},
            {"ymodem @ /nowhere/file", 1, "文件不存在"},
            {"ports --json", 0, ""},
            {"--help", 0, ""},
        };
        for (const auto &[arguments, status, message] : rows)
            QTest::newRow(arguments) << arguments << status << QString::fromUtf8(message);
    }

    void endsWithAStatus()
    {
        QFETCH(QString, arguments);
        QFETCH(int, status);
        QFETCH(QString, message);
        PtyPeer board;
        arguments.replace('@', board.device()).replace('%', QString::number(freePort()));
        CliRun run(arguments.split(' ', Qt::SkipEmptyParts));
        QCOMPARE(run.status(), status);
        QVERIFY(run.told(message));
    }

    void leavesNothingBehind()
    {
        QTemporaryDir home;
        QVERIFY(QFile::copy(CLI_PATH, home.filePath("program")));
        QProcess run;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HOME", home.path());
        run.setProcessEnvironment(environment);
        run.setWorkingDirectory(home.path());
        for (const char *option : {"--help", "--version", "ports"}) {
            run.start(home.filePath("program"), {option});
            QVERIFY(run.waitForFinished());
            const QByteArray output = run.readAllStandardOutput();
            QVERIFY(!output.isEmpty());
            if (qstrcmp(option, "--help") == 0) // which commands have an option
                QVERIFY(output.contains("或gb18030（monitor send expect）\n") &&
                        output.contains("默认115200；数据位8，停止位1，无校验\n"));
        }
        QCOMPARE(QDir(home.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList("program"));
    }

    void passesBytesOn()
    {
        const QByteArray sent = patternBytes(300000);
        QTemporaryDir folder;
        PtyPeer board;
        CliRun run({"monitor", board.device(), "--log", folder.filePath("log")});
        run.write("typed\n");
        QCOMPARE(board.read(6), QByteArray("typed\n"));
        run.closeWriteChannel(); // the end of the input ends nothing
        QVERIFY(board.write(sent));
        WAIT_EQUAL(run.output().size(), sent.size());
        run.interrupt();
        QCOMPARE(run.status(), 0);
        QVERIFY(run.output() == sent);
        QVERIFY(contentOf(folder.filePath("log")) == sent);
        QVERIFY(!run.readAllStandardError().contains("写入"));
    }

    // A row ends where the line is quiet, and where the port goes.
    void showsBytes()
    {
        PtyPeer board;
        CliRun run({"monitor", board.device(), "--hex"});
        for (const QByteArray bytes : {"ab", "c", "de"}) {
            QVERIFY(board.write(bytes));
            QVERIFY(run.printed(bytes.toHex(' ').toUpper() + '\n'));
        }
        QVERIFY(board.write("f") && run.printed("66"));
        board.hangUp();
        QCOMPARE(run.status(), 4);
        QCOMPARE(run.output(), QByteArray("61 62\n63\n64 65\n66\n"));
    }

    void talksToAServer()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        const QString port = QString("tcp://localhost:%1").arg(server.serverPort());
        CliRun run({"monitor", port, "--codec", "gb18030", "--eol", "crlf"});
        WAIT_FOR(server.hasPendingConnections());
        QTcpSocket *board = server.nextPendingConnection();
        run.write("温度\n");
        WAIT_EQUAL(board->bytesAvailable(), 6);
        QCOMPARE(board->readAll(), QByteArray("\xCE\xC2\xB6\xC8\r\n"));
        board->write("\xB6\xC8");
        QVERIFY(run.printed("度"));
        board->close();
        QCOMPARE(run.status(), 4);
    }

    void sends_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QByteArray>("wire");
        const QPair<QStringList, QByteArray> rows[] = {
            {{"--text", "AT"}, "AT\r\n"},
            {{"--text", "-1", "--eol=cr"}, "-1\r"},
            {{"--text", QStringLiteral("温"), "--codec", "gb18030", "--eol", "none"}, "\xCE\xC2"},
            {{"--hex", "00 ff 0A"}, QByteArray("\0\xFF\n", 3)},
            {{"--text", "123456789", "--checksum", "sum8"}, "123456789\xDD\r\n"},
            {{"--text", "123456789", "--checksum", "xor8", "--eol", "none"}, "1234567891"},
            {{"--text", "123456789", "--checksum", "crc-8", "--eol", "lf"}, "123456789\xF4\n"},
            {{"--hex", "010300000001", "--checksum", "CRC-16/MODBUS"},
             QByteArray::fromHex("010300000001840a")},
            {{"--text", "123456789", "--checksum", "crc-16/xmodem", "--eol", "none"}, "123456789\x31\xC3"},
            {{"--text", "123456789", "--checksum", "crc-16/ccitt-false", "--eol", "none"},
             "123456789\x29\xB1"},
            {{"--text", "123456789", "--checksum", "crc-32", "--eol", "none"}, "123456789\x26\x39\xF4\xCB"},
        };
        for (const auto &[arguments, wire] : rows)
            QTest::newRow(qPrintable(arguments.join(' '))) << arguments << wire;
    }

    void sends()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QByteArray, wire);
        PtyPeer board;
        CliRun run(QStringList{"send", board.device()} + arguments);
        QCOMPARE(board.read(wire.size()), wire);
        QCOMPARE(run.status(), 0);
        QCOMPARE(board.read(1, 0), QByteArray());
    }

    void sendsAFileAsFastAsItIsRead()
    {
        QTemporaryDir folder;
        const QByteArray content = patternBytes(1000000);
        QVERIFY(writeFile(folder.filePath("file"), content));
        const QStringList arguments{"--file", folder.filePath("file"), "--timeout"};
        PtyPeer board;
        CliRun run(QStringList{"send", board.device()} + arguments + QStringList{"30"});
        QVERIFY(board.read(content.size(), 60000) == content);
        QCOMPARE(run.status(), 0);

        CliRun unread(QStringList{"send", board.device()} + arguments + QStringList{"0.3"});
        QCOMPARE(unread.status(), 3);
        QVERIFY(unread.told("字节未发出"));
        CliRun pulled(QStringList{"send", board.device()} + arguments + QStringList{"30"});
        QVERIFY(!board.read(5000).isEmpty());
        board.hangUp();
        QCOMPARE(pulled.status(), 4);
        QVERIFY(pulled.told("字节未发出"));
    }

    void waitsForALine()
    {
        PtyPeer board;
        CliRun run({"expect", board.device(), "--send", "boot", "--text", "login:", "--timeout", "30"});
        QCOMPARE(board.read(6), QByteArray("boot\r\n"));
        QVERIFY(board.write("booting\r\nhost login: ")); // a prompt has no end
        QCOMPARE(run.status(), 0);
        QCOMPARE(run.output(), QByteArray("host login: \n"));
        CliRun other({"expect", board.device(), "--regex", QStringLiteral("温.$"), "--codec", "gb18030"});
        QVERIFY(board.write("\xCE\xC2\xB6\xC8\r\n"));
        QCOMPARE(other.status(), 0);
        QCOMPARE(other.output(), QByteArray("温度\n"));
    }

    void comesBackWithThePort()
    {
        QTemporaryDir ports;
        const QString port = ports.filePath("COM9");
        auto board = std::make_unique<PtyPeer>();
        qputenv("KORVEX_VIRTUAL_PORTS", ports.path().toLocal8Bit());
        CliRun run({"monitor", "COM9", "--reconnect"});
        QVERIFY(run.told("等待COM9"));
        QVERIFY(QFile::link(board->device(), port));
        QVERIFY(board->write("one"));
        QVERIFY(run.printed("one"));
        QVERIFY(QFile::remove(port));
        board->hangUp();
        QVERIFY(run.told("COM9已断开"));
        run.write("kept");
        PtyPeer again;
        QVERIFY(QFile::link(again.device(), port));
        QCOMPARE(again.read(4), QByteArray("kept"));
        run.interrupt();
        QCOMPARE(run.status(), 0);

        CliRun once({"monitor", "COM9"});
        QVERIFY(again.write("two"));
        QVERIFY(once.printed("two"));
        again.hangUp();
        QCOMPARE(once.status(), 4);
    }

    void sharesNoPort()
    {
        PtyPeer board;
        CliRun first({"monitor", board.device()});
        QVERIFY(board.write("x"));
        QVERIFY(first.printed("x"));
        CliRun refused({"monitor", board.device()});
        QCOMPARE(refused.status(), 1);
        QVERIFY(refused.told("占用"));
        CliRun waiting({"monitor", board.device(), "--reconnect"});
        QVERIFY(waiting.told("占用"));
        first.interrupt();
        QCOMPARE(first.status(), 0);
        QVERIFY(board.write("y"));
        QVERIFY(waiting.printed("y"));
    }

    void endsWithItsReader()
    {
        int pipe[2];
        QVERIFY(::pipe2(pipe, O_CLOEXEC) == 0);
        PtyPeer board;
        // A reader that reads nothing holds the device back, but not Ctrl+C.
        CliRun run({"monitor", board.device()}, pipe[1]);
        QVERIFY(board.write("x"));
        char byte = 0;
        QCOMPARE(::read(pipe[0], &byte, 1), ssize_t(1));
        QVERIFY(board.writeSome(QByteArray(200000, 'x')) < 200000);
        run.interrupt();
        QCOMPARE(run.status(), 0);
        CliRun next({"monitor", board.device()}, pipe[1]);
        ::close(pipe[0]);
        ::close(pipe[1]);
        QVERIFY(board.write("x"));
        QCOMPARE(next.status(), 0);
    }

    void goesOnWithAFullDisk()
    {
        PtyPeer board;
        CliRun run({"monitor", board.device(), "--log", "/dev/full"});
        QVERIFY(board.write("x"));
        QVERIFY(run.told("磁盘空间不足"));
        QVERIFY(board.write("y"));
        QVERIFY(run.printed("xy"));
        run.interrupt();
        QCOMPARE(run.status(), 0);
        QVERIFY(!run.readAllStandardError().contains("磁盘"));
    }

    void transfersFiles()
    {
        QTemporaryDir from;
        QTemporaryDir to;
        const QByteArray content = patternBytes(20000);
        QVERIFY(writeFile(from.filePath("firmware.bin"), content));
        PtyPeer line;
        PtyPeer terminal;
        QProcess rb;
        rb.setWorkingDirectory(to.path());
        rb.start("sh", {"-c", "exec rb --binary <\"$1\"", "sh", terminal.device()});
        QVERIFY(rb.waitForStarted());
        QTimer cable;
        bool busy = false;
        connect(&cable, &QTimer::timeout, this, [&] {
            if (std::exchange(busy, true))
                return; // writing runs the event loop
            terminal.write(line.read(0));
            line.write(rb.readAllStandardOutput());
            busy = false;
        });
        cable.start(1);
        CliRun run({"ymodem", line.device(), from.filePath("firmware.bin")});
        QCOMPARE(run.status(), 0);
        QStringList shown;
        for (const QString &text : QString::fromUtf8(run.readAllStandardError()).split('\n'))
            shown += text.startsWith("firmware.bin ") ? text.section(' ', 1) : QString();
        QCOMPARE(shown.join(' ').trimmed(),
                 QString("5% 1024/20000字节 10% 2048/20000字节 20% 4096/20000字节 30% 6144/20000字节 "
                         "40% 8192/20000字节 51% 10240/20000字节 61% 12288/20000字节 71% 14336/20000字节 "
                         "81% 16384/20000字节 92% 18432/20000字节 100% 20000/20000字节"));
        WAIT_EQUAL(rb.state(), QProcess::NotRunning);
        QVERIFY(contentOf(to.filePath("firmware.bin")) == content);

        CliRun cancelled({"ymodem", line.device(), from.filePath("firmware.bin"), "--quiet"});
        cable.stop();
        QVERIFY(line.write("C"));
        QVERIFY(line.read(133).startsWith('\x01'));
        cancelled.interrupt();
        QCOMPARE(cancelled.status(), 1);
        QVERIFY(cancelled.told("未完成：" + from.filePath("firmware.bin")));
        QCOMPARE(line.read(5), QByteArray(5, '\x18'));
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
