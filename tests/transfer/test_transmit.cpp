// The driver on a pseudo-terminal: what goes over the wire, what is reported
// when, and files that are not what they seemed.

#include "ptypeer.h"
#include "ymodemfiletransmit.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>
#include <sys/stat.h>

class TestTransmit : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void sendsAFile();
    void namesFilesInBlockZero_data();
    void namesFilesInBlockZero();
    void announcesHugeFiles();
    void neverReadsBeyondTheAnnouncedSize();
    void endsWithAFileThatShrinks();
    void refusesWhatIsNoFile_data();
    void refusesWhatIsNoFile();
    void namesWhatWasNotSent();
    void stopsAndSendsAgain();
    void endsWithThePort();
    void knowsThatALineCanBeFaster();
    void noticesARestartedReceiver();
    void needsAPort();
    void survivesAFlood();
    void logsBeginningAndEnd();

private:
    QString makeFile(const QString &name, const QByteArray &content) const;
    bool start(const QStringList &files, int baudRate = 115200);
    // Sends the answer and reads so many bytes.
    QByteArray answered(const char *answer, int count);
    QVector<int> statuses() const;
    bool waitForEnd()
    {
        return QTest::qWaitFor([this] { return !m_transmit->isBusy(); }, 20000);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<PtyPeer> m_board;
    std::unique_ptr<YmodemFileTransmit> m_transmit;
    std::unique_ptr<QSignalSpy> m_statuses;
};

void TestTransmit::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_board = std::make_unique<PtyPeer>();
    m_transmit = std::make_unique<YmodemFileTransmit>();
    m_statuses = std::make_unique<QSignalSpy>(m_transmit.get(), &YmodemFileTransmit::transmitStatus);
}

void TestTransmit::cleanup()
{
    m_statuses.reset();
    m_transmit.reset();
    m_board.reset();
}

QString TestTransmit::makeFile(const QString &name, const QByteArray &content) const
{
    const QString path = m_folder->filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot make a file");
    return path;
}

bool TestTransmit::start(const QStringList &files, int baudRate)
{
    m_transmit->setFileList(files);
    m_transmit->setPortName(m_board->device());
    m_transmit->setBaudRate(baudRate);
    return m_transmit->startTransmit();
}

QByteArray TestTransmit::answered(const char *answer, int count)
{
    m_board->write(answer);
    return m_board->read(count, 20000);
}

QVector<int> TestTransmit::statuses() const
{
    QVector<int> list;
    for (const QList<QVariant> &arguments : *m_statuses)
        list.append(arguments.at(0).value<Ymodem::Status>());
    return list;
}

void TestTransmit::sendsAFile()
{
    QSignalSpy progress(m_transmit.get(), &YmodemFileTransmit::transmitProgress);
    const QString name = makeFile("a.bin", QByteArray("\x18hello", 5));
    QVERIFY(start({name}));
    const QByteArray zero = answered("C", 133);
    QCOMPARE(zero.size(), 133);
    QCOMPARE(zero.left(3), QByteArray("\x01\x00\xFF", 3));
    QCOMPARE(zero.mid(3, 128), QByteArray("a.bin\0005\0", 8) + QByteArray(120, '\0'));
    QVERIFY(m_board->write("\x06"));
    const QByteArray block = answered("C", 133);
    QCOMPARE(block.left(3), QByteArray("\x01\x01\xFE"));
    QCOMPARE(block.mid(3, 128), QByteArray("\x18hell") + QByteArray(123, '\0'));
    QCOMPARE(answered("\x06", 1), QByteArray("\x04"));
    QVERIFY(m_board->write("\x06"));
    QCOMPARE(answered("C", 133).mid(3, 128), QByteArray(128, '\0'));
    QVERIFY(m_transmit->isBusy());
    QVERIFY(m_board->write("\x06"));
    QVERIFY(waitForEnd());

    QCOMPARE(statuses(), (QVector<int>{0, 1, 1, 1, 3, 3}));
    QCOMPARE(m_statuses->at(0).at(1).toString(), name);
    QCOMPARE(m_statuses->at(1).at(1).toString(), QString());
    QCOMPARE(progress.size(), 1);
    QCOMPARE(progress.at(0), (QList<QVariant>{100, name}));
    QVERIFY(m_transmit->unsentFiles().isEmpty());
}

void TestTransmit::namesFilesInBlockZero_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QByteArray>("header"); // a zero is written as |
    QTest::newRow("spaces") << "/x/two words.bin" << qint64(0) << QByteArray("two words.bin|0|");
    QTest::newRow("Chinese") << QStringLiteral("/固件/固件.bin") << qint64(7)
                             << QByteArray("\xB9\xCC\xBC\xFE.bin|7|");
    QTest::newRow("fits") << QString(121, 'n') + ".hex" << qint64(9) << QByteArray(121, 'n') + ".hex|9|";
    QTest::newRow("cut") << QString(122, 'n') + ".hex" << qint64(9) << QByteArray(121, 'n') + ".hex|9|";
    QTest::newRow("cut for the size")
        << QString(200, 'n') + ".hex" << (qint64(1) << 40) << QByteArray(109, 'n') + ".hex|1099511627776|";
    // Two bytes a character: 60 fit before the suffix, half a one more does not.
    QTest::newRow("cut between characters") << QString(70, QChar(0x4EF6)) + ".hex" << qint64(9)
                                            << QByteArray("\xBC\xFE").repeated(60) + ".hex|9|";
    // Four bytes and two code units a character.
    QTest::newRow("cut between pairs") << QStringLiteral("\U0001F600").repeated(40) + ".hex" << qint64(9)
                                       << QByteArray("\x94\x39\xFC\x36").repeated(30) + ".hex|9|";
    QTest::newRow("no suffix") << QString(200, 'n') << qint64(9) << QByteArray(125, 'n') + "|9|";
    QTest::newRow("no real suffix") << "a." + QString(200, 'n') << qint64(9)
                                    << "a." + QByteArray(123, 'n') + "|9|";
}

void TestTransmit::namesFilesInBlockZero()
{
    QFETCH(QString, name);
    QFETCH(qint64, size);
    QFETCH(QByteArray, header);
    QCOMPARE(YmodemFileTransmit::fileHeader(name, size).replace('\0', '|'), header);
    QVERIFY(header.size() <= 128);
}

void TestTransmit::announcesHugeFiles()
{
    const QString name = makeFile("huge.img", QByteArray());
    QVERIFY(QFile::resize(name, qint64(5) << 30)); // sparse
    QVERIFY(start({name}));
    QCOMPARE(answered("C", 133).mid(3, 20), QByteArray("huge.img\0005368709120\0", 20));
    m_board->write("\x06");
    QCOMPARE(answered("C", 1029).size(), 1029);
    QCOMPARE(answered("\x06", 1029).left(3), QByteArray("\x02\x02\xFD"));
}

void TestTransmit::neverReadsBeyondTheAnnouncedSize()
{
    const QString name = makeFile("grows.bin", QByteArray(5, 'a'));
    QVERIFY(start({name}));
    answered("C", 133);
    makeFile("grows.bin", QByteArray(3000, 'b'));
    m_board->write("\x06");
    QCOMPARE(answered("C", 133).mid(3, 128), QByteArray(5, 'b') + QByteArray(123, '\0'));
    QCOMPARE(answered("\x06", 1), QByteArray("\x04"));
    m_board->write("\x06");
    answered("C", 133);
    m_board->write("\x06");
    QVERIFY(waitForEnd());
    QCOMPARE(statuses().last(), 3);
    QVERIFY(m_transmit->reason().contains(name)); // some of it may be old, some new
}

void TestTransmit::endsWithAFileThatShrinks()
{
    const QString name = makeFile("shrinks.bin", QByteArray(100000, 'a'));
    QVERIFY(start({name}));
    answered("C", 133);
    m_board->write("\x06");
    answered("C", 1029);
    QVERIFY(QFile::resize(name, 1030));
    // What was read ahead may still go out, never zeros in its place.
    QByteArray begin = answered("\x06", 5);
    for (int blocks = 1; !begin.startsWith('\x18') && blocks < 98; ++blocks) {
        const QByteArray block = begin + m_board->read(1029 - begin.size());
        QCOMPARE(block.mid(3, 1024), QByteArray(1024, 'a'));
        begin = answered("\x06", 5);
    }
    QCOMPARE(begin, QByteArray("\x18\x18\x18\x18\x18"));
    QVERIFY(waitForEnd());
    QCOMPARE(statuses().mid(statuses().size() - 2), (QVector<int>{6, 6}));
    QVERIFY(m_transmit->reason().contains("shrinks.bin"));
    QCOMPARE(m_transmit->unsentFiles(), QStringList{name});
}

void TestTransmit::refusesWhatIsNoFile_data()
{
    QTest::addColumn<QString>("what");
    QTest::newRow("vanished") << "vanished";
    QTest::newRow("a folder") << "folder";
    QTest::newRow("a pipe") << "pipe"; // opening it would wait for ever
}

void TestTransmit::refusesWhatIsNoFile()
{
    QFETCH(QString, what);
    const QString name = m_folder->filePath(what);
    if (what == "folder")
        QVERIFY(QDir().mkdir(name));
    else if (what == "pipe")
        QCOMPARE(mkfifo(QFile::encodeName(name), 0600), 0);
    QVERIFY(start({name}));
    QCOMPARE(answered("C", 5), QByteArray("\x18\x18\x18\x18\x18"));
    QVERIFY(waitForEnd());
    QCOMPARE(statuses(), (QVector<int>{6, 6}));
    QCOMPARE(m_statuses->at(0).at(1).toString(), QString());
    QVERIFY(m_transmit->reason().contains(name));
}

void TestTransmit::namesWhatWasNotSent()
{
    const QStringList names{makeFile("first.bin", "1"), makeFile("second.bin", "2")};
    QVERIFY(start(names));
    answered("C", 133);
    m_board->write("\x06");
    answered("C", 133);
    answered("\x06", 1);
    QCOMPARE(answered("C", 133).mid(3, 128), QByteArray(128, '\0')); // no answer to the end of the file
    m_board->write("\x06");
    QVERIFY(waitForEnd());
    QCOMPARE(statuses().last(), 3);
    QCOMPARE(m_transmit->unsentFiles(), QStringList{names.at(1)});
    QVERIFY(m_transmit->log().text().contains(QStringLiteral("未完成：") + names.at(1)));
    QVERIFY(!m_transmit->log().text().contains(QStringLiteral("未完成：") + names.at(0)));
}

void TestTransmit::stopsAndSendsAgain()
{
    m_transmit->stopTransmit(); // nothing runs
    QCOMPARE(m_statuses->size(), 0);
    const QString name = makeFile("a.bin", QByteArray(5000, 'a'));
    QVERIFY(start({name}));
    QVERIFY(!m_transmit->startTransmit());
    answered("C", 133);
    m_transmit->stopTransmit();
    m_transmit->stopTransmit();
    QCOMPARE(statuses(), (QVector<int>{0, 4}));
    QVERIFY(m_transmit->isBusy()); // until the last bytes have left
    QCOMPARE(m_board->read(5), QByteArray("\x18\x18\x18\x18\x18"));
    QVERIFY(waitForEnd());
    QCOMPARE(statuses(), (QVector<int>{0, 4, 4}));

    QVERIFY(start({name}));
    QCOMPARE(answered("C", 133).mid(3, 6), QByteArray("a.bin\0", 6));
    m_board->write("\x18");
    QVERIFY(waitForEnd());
    QCOMPARE(statuses(), (QVector<int>{0, 4, 4, 0, 4, 4}));
}

void TestTransmit::endsWithThePort()
{
    QVERIFY(start({makeFile("a.bin", QByteArray(5000, 'a'))}));
    answered("C", 133);
    m_board->hangUp();
    QVERIFY(waitForEnd());
    QCOMPARE(statuses(), (QVector<int>{0, 6, 6}));
    QCOMPARE(m_transmit->reason(), QStringLiteral("串口已断开"));
}

// A board with USB of its own answers long before 1200 baud could have carried
// a packet. The time that they would have taken must not add up.
void TestTransmit::knowsThatALineCanBeFaster()
{
    QVERIFY(start({makeFile("a.bin", QByteArray(3000, 'a'))}, 1200));
    answered("C", 133);
    m_board->write("\x06");
    answered("C", 1029);
    answered("\x06", 1029);
    answered("\x06", 1029);
    answered("\x06", 1);
    m_board->write("\x06");
    answered("C", 133);
    m_board->write("\x06");
    QVERIFY(QTest::qWaitFor([this] { return !m_transmit->isBusy(); }, 5000));
    QCOMPARE(statuses().last(), 3);
}

// A receiver that was reset asks as for a first file.
void TestTransmit::noticesARestartedReceiver()
{
    const QSignalSpy hints(m_transmit.get(), &YmodemFileTransmit::transmitHint);
    QVERIFY(start({makeFile("a.bin", QByteArray(5000, 'a'))}));
    answered("C", 133);
    m_board->write("\x06");
    const QByteArray block = answered("C", 1029);
    QCOMPARE(answered("C", 1029), block);
    QCOMPARE(answered("\x15", 1029), block);
    QCOMPARE(answered("C", 1029), block);
    QCOMPARE(hints.count(), 0);
    for (int i = 0; i < 5; ++i)
        QCOMPARE(answered("C", 1029), block);
    QTRY_COMPARE(hints.count(), 1);
    QVERIFY(m_transmit->isBusy());
    QVERIFY(answered("\x06", 1029) != block); // it may go on all the same
}

void TestTransmit::needsAPort()
{
    m_transmit->setFileList({makeFile("a.bin", "a")});
    m_transmit->setPortName(m_folder->filePath("nothing"));
    QVERIFY(!m_transmit->startTransmit());
    QVERIFY(!m_transmit->isBusy());
    m_transmit->stopTransmit();
    QCOMPARE(m_statuses->size(), 0);
}

// A board that talks while nobody listens delays its own answers; that is all.
void TestTransmit::survivesAFlood()
{
    QVERIFY(start({makeFile("a.bin", "a")}));
    for (int i = 0; i < 60; ++i)
        QVERIFY(m_board->write(QByteArray(1000, '.')));
    QVERIFY(m_transmit->isBusy());
    m_transmit->stopTransmit();
    QCOMPARE(m_board->read(5), QByteArray("\x18\x18\x18\x18\x18"));
    QVERIFY(waitForEnd());
}

void TestTransmit::logsBeginningAndEnd()
{
    TransferLog log;
    for (int i = 0; i < 30000; ++i)
        log.sent(i, QByteArray(1, '\x04'));
    log.received(1234567, "\x06");
    log.received(1234568, "??");
    log.sent(1234569, QByteArray("\x01\x00\xFF", 3) + QByteArray(130, '\0'));
    const QStringList lines = log.text().split('\n');
    QCOMPARE(lines.size(), 21001);
    QCOMPARE(lines.first(), QStringLiteral("[   0.000 s] 发送 EOT"));
    QCOMPARE(lines.at(1000), QStringLiteral("…… 省略9003行 ……"));
    QCOMPARE(lines.at(20998), QStringLiteral("[1234.567 s] 接收 ACK"));
    QCOMPARE(lines.at(20999), QStringLiteral("[1234.568 s] 接收 3F 3F"));
    QVERIFY(lines.at(21000).startsWith(QStringLiteral("[1234.569 s] 发送 SOH 序号0 数据128字节：00 00")));
}

QTEST_GUILESS_MAIN(TestTransmit)
#include "test_transmit.moc"
