#include "sessionlog.h"
#include "textcodec.h"
#include "waitfor.h"

#include <QDateTime>
#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray contentOf(const QString &fileName)
{
    QFile file(fileName);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

// Of 2026-01-02 03:04:05, and so many milliseconds.
qint64 at(int ms)
{
    return (QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5)).toMSecsSinceEpoch() + ms) * 1000;
}

class BytesLink : public Link
{
public:
    void setOpen(bool isOpen, const QString &reason = {})
    {
        setState(isOpen ? State::Open : State::Closed, reason);
    }
    void receive(const QByteArray &bytes, const Peer &from = {}) { emit received(bytes, nowUs(), from); }
    QVector<Peer> peers() const override { return all; }
    QVector<Peer> all;
    qint64 pendingBytes() const override { return 0; }
    void close() override { setOpen(false); }

protected:
    qint64 accept(const QByteArray &bytes, quint64) override { return bytes.size(); }
    void readingChanged() override {}
};

} // namespace

class TestSessionLog : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void writesEachForm_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("received") << int(LogForm::Received)
                                  << QByteArray("ab\r\ncd\nef\x01\n01234567890123456789");
        QTest::newRow("text") << int(LogForm::Text)
                              << QByteArray("# 2026-01-02 03:04:05.000 COM3\n"
                                            "2026-01-02 03:04:05.001 RX ab\r\n"
                                            "2026-01-02 03:04:05.001 RX cd\n"
                                            "2026-01-02 03:04:05.003 TX 10.0.0.1:80 x\n"
                                            "2026-01-02 03:04:05.004 RX \n"
                                            "2026-01-02 03:04:05.004 RX ef\x01\n"
                                            "2026-01-02 03:04:05.050 RX 01234567890123456789\n");
        QTest::newRow("dump")
            << int(LogForm::Dump)
            << QByteArray(
                   "# 2026-01-02 03:04:05.000 COM3\n"
                   "2026-01-02 03:04:05.001 RX 00000000   61 62 0D 0A 63 64                                 "
                   "|ab..cd|\n"
                   "2026-01-02 03:04:05.003 TX 10.0.0.1:80 00000000   78                                     "
                   "         "
                   "  |x|\n"
                   "2026-01-02 03:04:05.004 RX 00000006   0A 65 66 01 0A                                    "
                   "|.ef..|\n"
                   "2026-01-02 03:04:05.050 RX 0000000B   30 31 32 33 34 35 36 37  38 39 30 31 32 33 34 35  "
                   "|0123456789012345|\n"
                   "2026-01-02 03:04:05.050 RX 0000001B   36 37 38 39                                       "
                   "|6789|\n");
    }

    // A line and a row go on in the next record of the same direction.
    void writesEachForm()
    {
        QFETCH(int, kind);
        LogForm form(static_cast<LogForm::Kind>(kind));
        QByteArray bytes = form.add({LogForm::Event, at(0), "COM3", {}});
        bytes += form.add({LogForm::In, at(1), "ab\r\nc", {}});
        bytes += form.add({LogForm::In, at(2), "d", {}});
        bytes += form.add({LogForm::Out, at(3), "x", "10.0.0.1:80"});
        bytes += form.add({LogForm::In, at(4), "\nef\x01\n", {}});
        bytes += form.add({LogForm::In, at(50), "01234567890123456789", {}});
        bytes += form.endRow();
        QTEST(bytes, "expected");
    }

    void beginsFiles()
    {
        const QString dated = "board_20260102_030405";
        LogFiles::Target target{path("board.log"), false, 10, 60000, 0};
        LogFiles files(target);
        write(&files, 8, at(0));
        write(&files, 2, at(59999));
        write(&files, 1, at(59999)); // full
        write(&files, 1, at(119998));
        write(&files, 1, at(119999));  // old
        write(&files, 25, at(120000)); // is not cut
        QCOMPARE(names(), QStringList({dated + ".log 10", dated + "_2.log 2", dated + "_3.log 1",
                                       dated + "_4.log 25"}));
        // Another program, in the same second.
        LogFiles other(target);
        write(&other, 1, at(0));
        QCOMPARE(names().last(), dated + "_5.log 1");
    }

    void goesOnWhereItEnded()
    {
        LogFiles::Target target{path("board.log"), true, 10, 0, 0};
        for (int session = 0; session < 13; ++session) {
            LogFiles files(target);
            write(&files, 5, at(session));
            write(&files, 4, at(session));
        }
        QCOMPARE(names().size(), 13);
        QCOMPARE(names().first(), QString("board.log 9"));
        QVERIFY(names().contains("board_13.log 9"));
        // 14 is next, not 2 or 10.
        LogFiles files(target);
        write(&files, 1, at(20));
        QVERIFY(names().contains("board_13.log 10"));
        write(&files, 1, at(20));
        QVERIFY(names().contains("board_14.log 1"));
    }

    // Files that only look alike are the user's.
    void removesTheOldest()
    {
        for (const char *name :
             {"board_old.log", "board_2.txt", "xboard_2.log", "board_2.log.bak", "board_007.log"})
            put(name, 50);
        put("board_3.log", 30);
        put("board_4.log", 30);
        LogFiles::Target target{path("board.log"), true, 30, 0, 100};
        LogFiles files(target);
        for (int i = 0; i < 10000; ++i)
            write(&files, 30, at(i));
        QCOMPARE(names(), QStringList({"board_007.log 50", "board_10002.log 30", "board_10003.log 30",
                                       "board_10004.log 30", "board_2.log.bak 50", "board_2.txt 50",
                                       "board_old.log 50", "xboard_2.log 50"}));
    }

    void recordsALink()
    {
        BytesLink link;
        SessionLog log;
        log.watch(&link, [] { return QString("COM3"); });
        link.receive("too early");
        log.start(LogForm::Text, {path("board.log"), true}, 1, false);
        link.setOpen(true);
        link.receive("one\ntw");
        link.send("cmd\n");
        const auto board = [](quint64 id) { return Peer{id, QHostAddress("10.0.0.1"), quint16(id)}; };
        link.all = {board(80), board(81)};
        for (const quint64 id : {80, 81, 0})
            emit link.peerJoined(board(id));
        link.receive("hi\n", board(81));
        link.send("to\n", 81);
        for (const quint64 id : {81, 0})
            emit link.peerLeft(board(id), {});
        emit link.dropped(3, {});
        link.setOpen(false, "gone");
        link.setOpen(true);
        link.receive("o\n");
        link.send("x");
        log.stop();
        link.receive("too late");
        WAIT_FOR(log.isFinished());
        QString text = TextCodec::decode(contentOf(path("board.log")), 1);
        text.replace(QRegularExpression("\\d{4}-[-0-9]+ [0-9:.]+ "), QString());
        QCOMPARE(text,
                 QString("# 已打开：COM3\nRX one\nRX tw\nTX cmd\n# 10.0.0.1:80 已连接\n# 10.0.0.1:81 已连接\n"
                         "RX 10.0.0.1:81 hi\nTX 10.0.0.1:81 to\n# 10.0.0.1:81 已断开\n# 3 字节未能发出\n"
                         "# 已断开：gone\n# 已打开：COM3\nRX o\nTX x\n"));
        QCOMPARE(log.status().written, contentOf(path("board.log")).size());
    }

    // A folder that goes, and a disk without room: told once, tried again, nothing of what
    // waited is lost.
    void goesOnAfterAFailure()
    {
        BytesLink link;
        SessionLog log;
        QStringList notices;
        connect(&log, &SessionLog::failed, this, [&](const QString &text) { notices.append(text); });
        connect(&log, &SessionLog::recovered, this, [&](const QString &text) { notices.append(text); });
        log.watch(&link, [] { return QString(); });
        const QString folder = path("logs");
        log.start(LogForm::Received, {folder + "/board.log", true}, 0, true);
        link.receive("first ");
        WAIT_FOR(!notices.isEmpty());
        link.receive("second ");
        QDir().mkpath(folder);
        WAIT_FOR(notices.size() == 2);
        WAIT_FOR(contentOf(folder + "/board.log") == "first second ");
        QVERIFY(QDir(folder).removeRecursively());
        const auto isNoticed = [&] {
            link.receive("x");
            return notices.size() == 3;
        };
        WAIT_FOR(isNoticed());
        QCOMPARE(notices, QStringList({"会话日志无法写入，通信不受影响：文件夹不存在", "会话日志恢复写入",
                                       "会话日志无法写入，通信不受影响：文件夹不存在"}));
        log.stop();
        WAIT_FOR(log.isFinished());
        QVERIFY(log.status().lost > 0);
    }

private:
    QString path(const QString &name) const { return m_folder->filePath(name); }
    void put(const QString &name, int bytes)
    {
        QFile file(path(name));
        file.open(QIODevice::WriteOnly);
        file.write(QByteArray(bytes, 'x'));
    }
    QStringList names() const
    {
        QStringList names;
        for (const QFileInfo &file : QDir(m_folder->path()).entryInfoList(QDir::Files, QDir::Name))
            names.append(QString("%1 %2").arg(file.fileName()).arg(file.size()));
        return names;
    }
    static void write(LogFiles *files, int bytes, qint64 us)
    {
        QCOMPARE(files->prepare(bytes, us / 1000), QString());
        QCOMPARE(files->write(QByteArray(bytes, 'x').constData(), bytes), qint64(bytes));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(TestSessionLog)
#include "test_sessionlog.moc"
