// The driver on a link in memory: what goes over the wire, what is reported
// when, and files that are not what they seemed.

#include "ptypeer.h"
#include "testfiles.h"
#include "virtualtransfer.h"
#include "ymodempackets.h"

#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <sys/stat.h>
#include <termios.h>

class TestTransmit : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_run = std::make_unique<VirtualTransfer>();
        m_transmit = &m_run->driver;
    }

    void sendsAFile()
    {
        QSignalSpy progress(m_transmit, &YmodemFileTransmit::transmitProgress);
        const QString name = makeFile("a.bin", QByteArray("\x18hello", 5));
        QVERIFY(start({name}));
        QCOMPARE(answered("C", 133), packet(0, QByteArray("a.bin\0005\0", 8), 128));
        answer("\x06");
        QCOMPARE(answered("C", 133), packet(1, "\x18hell", 128));
        QCOMPARE(answered("\x06", 1), QByteArray("\x04"));
        answer("\x06");
        QCOMPARE(answered("C", 133).mid(3, 128), QByteArray(128, '\0'));
        QVERIFY(m_transmit->isBusy());
        answer("\x06");
        QVERIFY(waitForEnd());

        QCOMPARE(statuses(), (QVector<int>{0, 1, 1, 1, 3, 3}));
        QCOMPARE(m_run->statuses.at(0).at(1).toString(), name);
        QCOMPARE(progress.size(), 1);
        QCOMPARE(progress.at(0), (QList<QVariant>{100, name}));
        QVERIFY(m_transmit->unsentFiles().isEmpty());
        const QString log = m_transmit->log().text().replace(QStringLiteral(" 00"), QString());
        QCOMPARE(log, QStringLiteral(R"([   0.000 s] -- 开始传输 1个文件，端口 COM1，波特率 115200
[   0.020 s] 接收 C
[   0.020 s] -- 文件 %1，5字节
[   0.020 s] 发送 SOH 序号0 数据128字节：61 2E 62 69 6E 35 …
[   0.030 s] 接收 ACK
[   0.040 s] 接收 C
[   0.040 s] 发送 SOH 序号1 数据128字节：18 68 65 6C 6C …
[   0.050 s] 接收 ACK
[   0.050 s] 发送 EOT
[   0.060 s] 接收 ACK
[   0.070 s] 接收 C
[   0.070 s] 发送 SOH 序号0 数据128字节：00 …
[   0.080 s] 接收 ACK
[   0.080 s] -- 传输完成)")
                          .arg(name));
    }

    // The packet is repeated every 5 s after its answer could have been here.
    void givesUpAfterHalfAMinute()
    {
        QVERIFY(start({makeFile("a.bin", "a")}));
        answered("C", 133);
        QVERIFY(waitForEnd(60));
        QStringList times;
        for (const QString &line : m_transmit->log().text().split('\n'))
            if (line.contains(QStringLiteral("发送")))
                times.append(line.mid(1, 8).trimmed());
        QCOMPARE(times.join(' '), "0.020 5.030 10.040 15.050 20.060 25.070 30.080");
        QCOMPARE(m_transmit->reason(), QStringLiteral("接收端没有应答或反复要求重发"));
    }

    void cutsFilesIntoBlocks()
    {
        const std::tuple<int, QVector<int>> rows[] = {{1, {128}},          {128, {128}},
                                                      {129, {1024}},       {1024, {1024}},
                                                      {1025, {1024, 128}}, {2153, {1024, 1024, 128}}};
        for (const auto &[size, blocks] : rows) {
            init();
            const QByteArray bytes = patternBytes(size);
            QVERIFY(start({makeFile("a.bin", bytes)}));
            answered("C", 133);
            answer("\x06");
            for (int i = 0, at = 0; i < blocks.size(); at += blocks[i++])
                QCOMPARE(answered(i == 0 ? "C" : "\x06", 1),
                         packet(i + 1, bytes.mid(at, blocks[i]), blocks[i]));
            QCOMPARE(answered("\x06", 1), QByteArray("\x04"));
        }
    }

    void namesFilesInBlockZero()
    {
        const std::tuple<QString, qint64, QByteArray> rows[] = {
            // a zero is written as |
            {QStringLiteral("/固件/固件.bin"), 7, "\xB9\xCC\xBC\xFE.bin|7|"},
            {QString(122, 'n') + ".hex", 9, QByteArray(121, 'n') + ".hex|9|"},
            {QString(200, 'n') + ".hex", qint64(1) << 40, QByteArray(109, 'n') + ".hex|1099511627776|"},
            // Two bytes a character: 60 fit before the suffix, half a one more does not.
            {QString(70, QChar(0x4EF6)) + ".hex", 9, QByteArray("\xBC\xFE").repeated(60) + ".hex|9|"},
            // Four bytes and two code units a character.
            {QStringLiteral("\U0001F600").repeated(40) + ".hex", 9,
             QByteArray("\x94\x39\xFC\x36").repeated(30) + ".hex|9|"},
            {"a." + QString(200, 'n'), 9, "a." + QByteArray(123, 'n') + "|9|"}}; // no real suffix
        for (const auto &[name, size, header] : rows) {
            QCOMPARE(YmodemFileTransmit::fileHeader(name, size).replace('\0', '|'), header);
            QVERIFY(header.size() <= 128);
        }
    }

    void neverReadsBeyondTheAnnouncedSize()
    {
        const QString name = makeFile("grows.bin", QByteArray(5, 'a'));
        QVERIFY(start({name}));
        answered("C", 133);
        makeFile("grows.bin", QByteArray(3000, 'b'));
        QFile file(name);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(
            file.setFileTime(QDateTime::currentDateTime().addSecs(10), QFileDevice::FileModificationTime));
        answer("\x06");
        QCOMPARE(answered("C", 133).mid(3, 128), QByteArray(5, 'b') + QByteArray(123, '\0'));
        QCOMPARE(answered("\x06", 1), QByteArray("\x04"));
        QVERIFY(endsBatch());
        QCOMPARE(statuses().last(), 3);
        QVERIFY(m_transmit->reason().contains(name)); // some of it may be old, some new
        QVERIFY(start({name}));
        firstBlock(1029);
        answered("\x06", 1029);
        answered("\x06", 1029);
        answered("\x06", 1);
        QVERIFY(endsBatch());
        QCOMPARE(m_transmit->reason(), QString());
    }

    void endsWithAFileThatShrinks()
    {
        const QString name = makeFile("shrinks.bin", QByteArray(100000, 'a'));
        QVERIFY(start({name}));
        firstBlock(1029);
        QVERIFY(QFile::resize(name, 1030));
        // What was read ahead may still go out, never zeros in its place.
        QByteArray begin = answered("\x06", 5);
        for (int blocks = 1; !begin.startsWith('\x18') && blocks < 98; ++blocks) {
            const QByteArray block = begin + sent(1029 - begin.size());
            QCOMPARE(block.mid(3, 1024), QByteArray(1024, 'a'));
            begin = answered("\x06", 5);
        }
        QCOMPARE(begin, QByteArray("\x18\x18\x18\x18\x18"));
        QVERIFY(waitForEnd());
        QCOMPARE(statuses().mid(statuses().size() - 2), (QVector<int>{6, 6}));
        QVERIFY(m_transmit->reason().contains("shrinks.bin"));
        QCOMPARE(m_transmit->unsentFiles(), QStringList{name});
    }

    // Opening a pipe would wait indefinitely.
    void refusesWhatIsNoFile()
    {
        QVERIFY(QDir().mkdir(m_folder->filePath("folder")));
        QCOMPARE(mkfifo(QFile::encodeName(m_folder->filePath("pipe")), 0600), 0);
        for (const auto &[what, reason] : {std::pair("vanished", "文件不存在："),
                                           {"folder", "不能传输文件夹："},
                                           {"pipe", "文件无法读取："}}) {
            m_run->statuses.clear();
            const QString name = m_folder->filePath(what);
            QVERIFY(start({name}));
            QCOMPARE(answered("C", 5), QByteArray("\x18\x18\x18\x18\x18"));
            QVERIFY(waitForEnd());
            QCOMPARE(statuses(), (QVector<int>{6, 6}));
            QCOMPARE(m_transmit->reason(), QString(reason) + name);
        }
    }

    void namesWhatWasNotSent()
    {
        const QStringList names{makeFile("first.bin", "1"), makeFile("second.bin", "2")};
        QVERIFY(start(names));
        firstBlock(133);
        answered("\x06", 1);
        answer("\x06");
        answered("C", 133);
        answer("\x18");
        QVERIFY(waitForEnd());
        QCOMPARE(m_transmit->unsentFiles(), QStringList{names.at(1)});

        QVERIFY(start(names));
        QCOMPARE(m_transmit->unsentFiles(), names);
        firstBlock(133);
        answered("\x06", 1);
        QCOMPARE(answered("C", 133).mid(3, 128), QByteArray(128, '\0')); // no answer to the end of the file
        answer("\x06");
        QVERIFY(waitForEnd());
        QCOMPARE(statuses().last(), 3);
        QCOMPARE(m_transmit->unsentFiles(), QStringList{names.at(1)});
        QVERIFY(m_transmit->log().text().contains(QStringLiteral("未完成：") + names.at(1)));
        QVERIFY(!m_transmit->log().text().contains(QStringLiteral("未完成：") + names.at(0)));
    }

    void stopsAndSendsAgain()
    {
        const QString name = makeFile("a.bin", QByteArray(5000, 'a'));
        QVERIFY(start({name}));
        QVERIFY(!m_transmit->startTransmit(&m_run->link));
        firstBlock(1029);
        m_transmit->stopTransmit();
        m_transmit->stopTransmit();
        QCOMPARE(statuses(), (QVector<int>{0, 1, 4}));
        QVERIFY(m_transmit->isBusy()); // until the last bytes have left
        QCOMPARE(sent(5), QByteArray("\x18\x18\x18\x18\x18"));
        QVERIFY(waitForEnd());

        QVERIFY(m_run->start({name}, 115200, "C")); // which has arrived already
        QVERIFY(m_transmit->reason().isEmpty() && m_transmit->bytesSent() == 0 &&
                m_transmit->fileSize() == 0);
        QCOMPARE(sent(133).mid(3, 6), QByteArray("a.bin\0", 6));
        QVERIFY(runningTimers().value(0) <= 10);
        answer("\x06"); // arrives once, although the link was used before
        m_run->stepUntil([] { return false; }, 1);
        QCOMPARE(m_transmit->log().text().count("ACK"), 1);
        m_transmit->stopTransmit();
        QCOMPARE(statuses(), (QVector<int>{0, 1, 4, 4, 0, 1, 4}));
    }

    void endsWithThePort()
    {
        QVERIFY(start({makeFile("a.bin", QByteArray(5000, 'a'))}));
        answered("C", 133);
        m_run->link.close();
        QVERIFY(waitForEnd());
        QCOMPARE(statuses(), (QVector<int>{0, 6, 6}));
        QCOMPARE(m_transmit->reason(), QStringLiteral("串口已断开"));
    }

    // A board with USB of its own answers long before 1200 baud could have carried
    // a packet. The time that they would have taken must not add up.
    void knowsThatALineCanBeFaster()
    {
        QVERIFY(start({makeFile("a.bin", QByteArray(3000, 'a'))}, 1200));
        firstBlock(1029);
        m_run->step(); // waits for the answer
        answer("\x06");
        QCOMPARE(m_run->link.sent.size(), 1029);
        sent(1029);
        answered("\x06", 1029);
        answered("\x06", 1);
        QVERIFY(endsBatch(5));
        QCOMPARE(statuses().last(), 3);
    }

    // At 1200 baud 133 and 5 bytes have left after 1150 ms.
    void waitsForTheLastBytes()
    {
        QVERIFY(start({makeFile("a.bin", "a")}, 1200));
        answered("C", 133);
        m_transmit->stopTransmit();
        QCOMPARE(runningTimers(), QList<int>{100 + 1149});
        QVERIFY(waitForEnd());
        QVERIFY(start({m_folder->filePath("a.bin")})); // not for those of another transfer
        answered("C", 138);
        QVERIFY(m_run->nowMs < 1000);
    }

    // A receiver that was reset asks as for a first file.
    void noticesARestartedReceiver()
    {
        const QSignalSpy hints(m_transmit, &YmodemFileTransmit::transmitHint);
        QVERIFY(start({makeFile("a.bin", QByteArray(5000, 'a'))}));
        const QByteArray first = firstBlock(1029);
        QCOMPARE(answered("C", 1029), first);
        const QByteArray block = answered("\x06", 1029); // a new count
        QCOMPARE(answered("C", 1029), block);
        QCOMPARE(answered("\x15", 1029), block);
        QCOMPARE(answered("C", 1029), block);
        QCOMPARE(hints.count(), 0);
        for (int i = 0; i < 5; ++i) {
            QCOMPARE(answered("C", 1029), block);
            QCOMPARE(hints.count(), 1); // with the third, and once
        }
        QVERIFY(m_transmit->log().text().contains(hints.at(0).at(0).toString()));
        QVERIFY(m_transmit->isBusy());
        QVERIFY(answered("\x06", 1029) != block); // it may go on all the same
    }

    // Without a link.
    void opensItsPort()
    {
        PtyPeer board;
        m_transmit->setFileList({makeFile("a.bin", "a")});
        m_transmit->setBaudRate(57600);
        m_transmit->setPortName(m_folder->filePath("nothing"));
        QVERIFY(!m_transmit->startTransmit());
        m_run->nowMs += 5000; // the next attempt begins its own record
        QVERIFY(!m_transmit->startTransmit());
        QVERIFY(!m_transmit->isBusy());
        QCOMPARE(m_transmit->reason(), QStringLiteral("串口打开失败"));
        QCOMPARE(m_transmit->log().text(),
                 QStringLiteral("[   0.000 s] -- 开始传输 1个文件，端口 %1，波特率 57600\n"
                                "[   0.000 s] -- 串口打开失败")
                     .arg(m_folder->filePath("nothing")));
        m_transmit->stopTransmit();
        QCOMPARE(m_run->statuses.size(), 0);
        m_transmit->setPortName(board.device());
        QVERIFY(m_transmit->startTransmit());
        QVERIFY(!m_transmit->startTransmit());
        termios line{};
        tcgetattr(board.descriptor(), &line);
        QCOMPARE(cfgetospeed(&line), speed_t(B57600));
        m_transmit->stopTransmit();
        QCOMPARE(board.read(5), QByteArray("\x18\x18\x18\x18\x18"));
        QVERIFY(waitForEnd());
        SerialSettings settings;
        settings.name = board.device();
        SerialLink next;
        QTRY_VERIFY(next.isOpen() || next.open(settings)); // it is free again
    }

    // A board that talks while the page does not read delays its own answers, and is paused;
    // what was not read is the link's owner's.
    void pausesAFlood()
    {
        QVERIFY(start({makeFile("a.bin", "a")}));
        answer(QByteArray(65535, '.'));
        QVERIFY(m_run->link.isReading());
        answer(".");
        answer("and more");
        QVERIFY(!m_run->link.isReading());
        QVERIFY(m_run->stepUntil([this] { return m_run->link.isReading(); }, 1));
        QVERIFY(m_transmit->isBusy());
        answer("...");
        QVERIFY(!m_run->link.isReading());
        m_transmit->stopTransmit();
        QVERIFY(m_run->link.isReading());
        QCOMPARE(m_run->link.sent, QByteArray("\x18\x18\x18\x18\x18"));
        const QByteArray unused = m_transmit->takeUnused();
        QVERIFY2(unused.size() > 65000 && unused.endsWith("and more..."), unused.right(20));
        answer("and more"); // the owner reads this
        QCOMPARE(m_transmit->takeUnused(), QByteArray());
        QVERIFY(waitForEnd());
    }

    void logsBeginningAndEnd()
    {
        TransferLog log;
        for (int i = 0; i < 30000; ++i)
            log.sent(i, QByteArray(1, '\x04'));
        log.received(1234567, "\x06");
        log.received(1234568, "??");
        log.sent(1234569, QByteArray("\x01\x00\xFF", 3) + QByteArray(130, '\0'));
        log.sent(1234570, QByteArray(5, '\x18'));
        const QStringList lines = log.text().split('\n');
        QCOMPARE(lines.size(), 21001);
        QCOMPARE(lines.first(), QStringLiteral("[   0.000 s] 发送 EOT"));
        QCOMPARE(lines.at(1000), QStringLiteral("…… 省略9004行 ……"));
        QCOMPARE(lines.at(20997), QStringLiteral("[1234.567 s] 接收 ACK"));
        QCOMPARE(lines.at(20998), QStringLiteral("[1234.568 s] 接收 3F 3F"));
        QCOMPARE(lines.at(20999), QStringLiteral("[1234.569 s] 发送 SOH 序号0 数据128字节：") +
                                      QStringLiteral("00 ").repeated(16) + QStringLiteral("…"));
        QCOMPARE(lines.at(21000), QStringLiteral("[1234.570 s] 发送 CAN × 5"));
        log.clear();
        log.note(0, "again");
        log.received(1, QByteArray(16, '?'));
        QCOMPARE(log.text(), QStringLiteral("[   0.000 s] -- again\n[   0.001 s] 接收 3F") +
                                 QStringLiteral(" 3F").repeated(15));
    }

private:
    QString makeFile(const QString &name, const QByteArray &content) const
    {
        const QString path = m_folder->filePath(name);
        if (!writeFile(path, content))
            qFatal("cannot make a file");
        return path;
    }

    bool start(const QStringList &files, int baudRate = 115200) { return m_run->start(files, baudRate); }
    void answer(const QByteArray &bytes) { m_run->link.receive(bytes); }
    // What is sent once it is as long as that.
    QByteArray sent(int count)
    {
        m_run->stepUntil([&] { return m_run->link.sent.size() >= count; });
        return std::exchange(m_run->link.sent, {});
    }

    QByteArray answered(const char *bytes, int count)
    {
        answer(bytes);
        return sent(count);
    }
    // Block 0 is accepted, and the first data asked for.
    QByteArray firstBlock(int count)
    {
        answered("C", 133);
        answer("\x06");
        return answered("C", count);
    }
    // The end of the last file is accepted, and so is that of the batch.
    bool endsBatch(int seconds = 20)
    {
        answer("\x06");
        answered("C", 133);
        answer("\x06");
        return waitForEnd(seconds);
    }

    QList<int> runningTimers() const
    {
        QList<int> intervals;
        for (const QTimer *timer : m_transmit->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly))
            if (timer->isActive())
                intervals.append(timer->interval());
        return intervals;
    }

    QVector<int> statuses() const
    {
        QVector<int> list;
        for (const QList<QVariant> &arguments : m_run->statuses)
            list.append(arguments.at(0).value<Ymodem::Status>());
        return list;
    }

    bool waitForEnd(int seconds = 20) { return m_run->stepToEnd(seconds); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<VirtualTransfer> m_run;
    YmodemFileTransmit *m_transmit = nullptr;
};

QTEST_GUILESS_MAIN(TestTransmit)
#include "test_transmit.moc"
