// Transfers to the simulated board's own receiver, which does what real ones
// do wrong: what is called finished has arrived byte for byte, and
// everything else ends with a reason.

#include "memoryboard.h"
#include "testfiles.h"
#include "virtualtransfer.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

using Sizes = QVector<int>;

QString nameOf(int index)
{
    return QStringLiteral("固件 %1.bin").arg(index);
}

// The board at the other end of the link in memory, on the same clock.
class VirtualBoard : public MemoryBoard
{
public:
    VirtualBoard(const Boardsim::YmodemReceiver::Settings &settings, VirtualTransfer &run)
        : m_run(run)
        , m_receiver(settings, *this)
    {
    }

    void start() { m_receiver.start(); }
    void step()
    {
        m_run.step();
        if (!m_run.link.sent.isEmpty())
            m_receiver.received(std::exchange(m_run.link.sent, {}));
        if (m_dueMs >= 0 && m_run.nowMs >= m_dueMs) {
            m_dueMs = -1;
            m_receiver.timeOut();
        }
        if (!sent.isEmpty())
            m_run.link.receive(std::exchange(sent, {}));
    }
    void setTimer(int ms) override { m_dueMs = ms < 0 ? -1 : m_run.nowMs + ms; }

private:
    VirtualTransfer &m_run;
    Boardsim::YmodemReceiver m_receiver;
    qint64 m_dueMs = -1;
};

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    // What the board does wrong, and how many of the files arrive all the same.
    void sends()
    {
        const Sizes two{3000, 129};
        const std::tuple<Sizes, QString, int, int> rows[] = {
            {{0, 1, 127, 128, 129, 300, 1024, 1 << 20}, "", Ymodem::Finish, 8},
            {{0, 1, 300}, "first end refused", Ymodem::Finish, 3},
            {two, "lose@0", Ymodem::Finish, 2}, // an answer
            {two, "lose@2", Ymodem::Finish, 2},
            {two, "lose@eot", Ymodem::Finish, 1},
            {two, "double@0", Ymodem::Finish, 2},
            {two, "double@2", Ymodem::Finish, 2},
            {two, "nak@0*2 nak@1*3 nak@3", Ymodem::Finish, 2},
            {two, "noise=7", Ymodem::Finish, 2},
            {two, "late-c=1500@0", Ymodem::Finish, 2},
            {two, "late-c=1500@eot", Ymodem::Finish, 2},
            {two, "only-c@eot", Ymodem::Finish, 1},
            {two, "silence=3000@2", Ymodem::Finish, 2},
            {two, "silence@2", Ymodem::Error, 0},
            {two, "never asks", Ymodem::Timeout, 0},
            {two, "can@0", Ymodem::Abort, 0},
            {two, "can@2", Ymodem::Abort, 0},
            {two, "can@eot", Ymodem::Abort, 0},
            {two, "a@1", Ymodem::Abort, 0},
            {two, "nak@1*1000000", Ymodem::Error, 0}};
        for (const bool isQuick : {false, true})
            for (const auto &[sizes, faults, status, arrived] : rows) {
                QTemporaryDir from;
                QStringList names;
                for (const int size : sizes) {
                    names.append(from.filePath(nameOf(names.size())));
                    QVERIFY(writeFile(names.last(), patternBytes(size)));
                }
                Boardsim::YmodemReceiver::Settings settings;
                settings.encoding = Boardsim::Encoding::Gb18030;
                settings.nakFirstEot = faults.startsWith("first");
                for (const QString &fault : faults.split(' ', Qt::SkipEmptyParts))
                    QVERIFY(settings.faults.add(fault) == fault.contains(QRegularExpression("[@=]")));
                VirtualTransfer run;
                run.driver.setQuick(isQuick);
                VirtualBoard board(settings, run);
                QVERIFY(run.start(names));
                if (status != Ymodem::Timeout)
                    board.start();
                while (run.driver.isBusy() && run.nowMs < 600 * 1000)
                    board.step();
                const QByteArray log = faults.toUtf8() + run.driver.log().text().right(1500).toUtf8() +
                                       board.events.join('\n').toUtf8();
                QVERIFY2(!run.driver.isBusy() && run.status() == status, log);
                QCOMPARE(run.driver.reason().isEmpty(), status == Ymodem::Finish && arrived == sizes.size());
                QCOMPARE(sizes.size() - run.driver.unsentFiles().size(), arrived);
                for (int i = 0; i < arrived; ++i)
                    QVERIFY2(board.kept.value(i) == qMakePair(nameOf(i), patternBytes(sizes.at(i))), log);
            }
    }

    void sendsMoreThanFourGigabytes()
    {
        QTemporaryDir from;
        QFile file(from.filePath("a"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(5LL << 30)); // takes no room
        VirtualTransfer run;
        QSignalSpy progress(&run.driver, &YmodemFileTransmit::transmitProgress);
        QVERIFY(run.start({file.fileName()}));
        run.link.receive("C");
        QVERIFY(run.stepUntil([&] { return run.link.sent.size() == 133; }));
        QCOMPARE(run.link.sent.mid(3, 13), QByteArray("a\0"
                                                      "5368709120\0",
                                                      13));
        run.link.receive("\x06"
                         "C");
        QVERIFY(run.stepUntil([&] { return run.link.sent.size() == 133 + 1029; }));
        QCOMPARE(progress.last().at(0).toInt(), 0);
        QCOMPARE(run.driver.fileSize(), 5368709120LL);
    }

    // A board's start-up text is no silence, however fast it is read.
    void readsAStartUpText()
    {
        QTemporaryDir from;
        QVERIFY(writeFile(from.filePath("a"), "a"));
        for (const auto protocol :
             {YmodemFileTransmit::Protocol::Xmodem, YmodemFileTransmit::Protocol::Ymodem}) {
            VirtualTransfer run;
            run.driver.setQuick(true);
            run.driver.setProtocol(protocol, 1024);
            QByteArray shown;
            connect(&run.driver, &YmodemFileTransmit::passedOn, this,
                    [&](const QByteArray &bytes) { shown += bytes; });
            QVERIFY(run.start({from.filePath("a")}));
            const QByteArray text = QByteArray("boot\n").repeated(2000);
            for (int i = 0; i < text.size(); i += 200) {
                run.link.receive(text.mid(i, 200));
                run.step();
            }
            QVERIFY(run.link.sent.isEmpty());
            run.link.receive("C");
            QVERIFY(run.stepUntil([&] { return run.link.sent.size() == 133; }));
            QCOMPARE(shown, text);
        }
    }
};

QTEST_GUILESS_MAIN(TestFaults)
#include "test_faults.moc"
