// The simulated boot loader with a sender that others have written: sb of
// lrzsz, on the board's port.

#include "boardprocess.h"
#include "hostport.h"
#include "testfiles.h"
#include "ymodempackets.h"

#include <QTest>

class TestYmodemPeer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        for (auto file = m_sizes.cbegin(); file != m_sizes.cend(); ++file)
            QVERIFY(writeFile(m_sent.filePath(file.key()), patternBytes(file.value())));
    }

    void receives()
    {
        const std::tuple<QStringList, QStringList, QString> transfers[] = {
            {{}, {}, "batch end 8 files"},
            {{"-k", "-f"}, // names with their folders
             {"--nak-first-eot", "--fault", "nak@0", "--fault", "nak@every3"},
             "refused on purpose"},
            {{"-k"},
             {"--packet-timeout", "200", "--ask-interval", "200", "--fault", "lose@0", "--fault",
              "lose@every30*2"},
             "repeated block"}};
        for (const auto &[senderOptions, boardOptions, event] : transfers) {
            BoardProcess board;
            QVERIFY(board.start(bootLoader(board) + boardOptions));
            QCOMPARE(send(board, senderOptions, m_sizes.keys()), 0);
            QVERIFY2(board.waitForEvent("batch end 8 files"), qPrintable(board.events().join('\n')));
            QVERIFY(board.waitForEvent(event) && board.stop());
            for (auto file = m_sizes.cbegin(); file != m_sizes.cend(); ++file)
                QVERIFY2(contentOf(received(board) + file.key()) == patternBytes(file.value()),
                         qPrintable(file.key()));
        }
    }

    void receivesTheNextBatchAfterCancelling()
    {
        BoardProcess board;
        QVERIFY(board.start(bootLoader(board) + QStringList{"--fault", "can@5"}));
        QVERIFY(send(board, {"-k"}, {"large.bin"}) != 0);
        QVERIFY(board.waitForEvent("cancelled: on purpose"));
        QVERIFY(board.waitForEvent("host left"));
        QVERIFY(!QFile::exists(received(board) + "large.bin")); // a half is of no use
        QCOMPARE(send(board, {"-k"}, {"large.bin"}), 0);
        QVERIFY(board.waitForEvent("file large.bin 102400 bytes"));
    }

    void staysSilent()
    {
        BoardProcess board;
        QVERIFY(
            board.start(bootLoader(board) + QStringList{"--ask-interval", "100", "--fault", "silence@0"}));
        HostPort host(board.link());
        QCOMPARE(host.read(1), QByteArray("C"));
        QVERIFY(host.write(packet(0, QByteArray("a.bin\0001", 7), 128)));
        QVERIFY(board.waitForEvent("silent"));
        QVERIFY(host.read(50, 1000).size() < 50); // and no more
    }

private:
    static QString received(const BoardProcess &board) { return board.folder() + "/received/"; }
    static QStringList bootLoader(const BoardProcess &board)
    {
        return {"--mode", "ymodem", "--delay", "0", "--receive-folder", received(board)};
    }

    // The exit code of the sender, which has its standard input and output on
    // the port; -1 if it does not end.
    int send(const BoardProcess &board, const QStringList &options, const QStringList &names)
    {
        QProcess sender;
        sender.setWorkingDirectory(m_sent.path());
        sender.setStandardInputFile(board.link());
        sender.setStandardOutputFile(board.link(), QIODevice::Append); // a device is not cut
        QStringList files;
        for (const QString &name : names)
            files += options.contains("-f") ? m_sent.filePath(name) : name;
        sender.start("sb", QStringList{"-q"} + options + files);
        return sender.waitForFinished(60000) && sender.exitStatus() == QProcess::NormalExit
                   ? sender.exitCode()
                   : -1;
    }

    QTemporaryDir m_sent;
    const QMap<QString, int> m_sizes{
        {"nothing", 0},     {"one", 1},         {"127.bin", 127},       {"128.bin", 128},
        {"129 b.bin", 129}, {"1024.bin", 1024}, {"固件 升级.bin", 300}, {"large.bin", 102400},
    };
};

QTEST_GUILESS_MAIN(TestYmodemPeer)
#include "test_ymodem_peer.moc"
