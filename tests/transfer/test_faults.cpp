// Transfers to the simulated board's own receiver, which does what real ones
// do wrong: what is called finished has arrived byte for byte, and
// everything else ends with a reason.

#include "virtualtransfer.h"
#include "ymodemreceiver.h"

#include <QMap>
#include <QTemporaryDir>
#include <QtTest>

class TestFaults : public QObject
{
    Q_OBJECT

private slots:
    void sends_data();
    void sends();
};

namespace {

using Sizes = QVector<int>;

QByteArray content(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i)
        bytes[i] = static_cast<char>(i * 31 + i / 997);
    return bytes;
}

QString nameOf(int index)
{
    return QStringLiteral("固件 %1.bin").arg(index);
}

// The board at the other end of the link in memory, on the same clock.
class VirtualBoard : public Boardsim::YmodemReceiver::Board
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
        if (!m_answers.isEmpty())
            m_run.link.receive(std::exchange(m_answers, {}));
    }

    void send(const QByteArray &bytes) override { m_answers += bytes; }
    void setTimer(int ms) override { m_dueMs = ms < 0 ? -1 : m_run.nowMs + ms; }
    bool beginFile(const QString &name) override
    {
        m_name = name;
        files[name].clear();
        return true;
    }
    bool storeBytes(const QByteArray &bytes) override
    {
        files[m_name] += bytes;
        return true;
    }
    void endFile(bool complete) override
    {
        if (!complete)
            files.remove(m_name);
    }
    void report(const QString &event) override { events.append(event); }

    QMap<QString, QByteArray> files;
    QStringList events;

private:
    VirtualTransfer &m_run;
    Boardsim::YmodemReceiver m_receiver;
    QByteArray m_answers;
    QString m_name;
    qint64 m_dueMs = -1;
};

} // namespace

void TestFaults::sends_data()
{
    QTest::addColumn<Sizes>("sizes");
    QTest::addColumn<QString>("options"); // of the board: its faults
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("arrived"); // files, of those sent
    const Sizes two{3000, 129};
    QTest::newRow("all sizes") << Sizes{0, 1, 127, 128, 129, 300, 1024, 1 << 20} << "" << 3 << 8;
    QTest::newRow("end refused once") << Sizes{0, 1, 300} << "first end refused" << 3 << 3;
    QTest::newRow("answer to block 0 lost") << two << "lose@0" << 3 << 2;
    QTest::newRow("answer to data lost") << two << "lose@2" << 3 << 2;
    QTest::newRow("answer to the end lost") << two << "lose@eot" << 3 << 1;
    QTest::newRow("ACK of block 0 doubled") << two << "double@0" << 3 << 2;
    QTest::newRow("ACK of data doubled") << two << "double@2" << 3 << 2;
    QTest::newRow("blocks refused") << two << "nak@0*2 nak@1*3 nak@3" << 3 << 2;
    QTest::newRow("noise") << two << "noise=7" << 3 << 2;
    QTest::newRow("late request") << two << "late-c=1500@0" << 3 << 2;
    QTest::newRow("late request for the next file") << two << "late-c=1500@eot" << 3 << 2;
    QTest::newRow("end answered by a request") << two << "only-c@eot" << 3 << 1;
    QTest::newRow("silent for a while") << two << "silence=3000@2" << 3 << 2;
    QTest::newRow("silent indefinitely") << two << "silence@2" << 6 << 0;
    QTest::newRow("never asks") << two << "" << 5 << 0;
    QTest::newRow("cancels at block 0") << two << "can@0" << 4 << 0;
    QTest::newRow("cancels data") << two << "can@2" << 4 << 0;
    QTest::newRow("cancels the end") << two << "can@eot" << 4 << 0;
    QTest::newRow("cancels by hand") << two << "a@1" << 4 << 0;
    QTest::newRow("refuses indefinitely") << two << "nak@1*1000000" << 6 << 0;
}

void TestFaults::sends()
{
    QFETCH(Sizes, sizes);
    QFETCH(QString, options);
    QFETCH(int, status);
    QFETCH(int, arrived);
    QTemporaryDir from;
    QStringList names;
    for (const int size : qAsConst(sizes)) {
        names.append(from.filePath(nameOf(names.size())));
        QFile file(names.last());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content(size)), qint64(size));
    }
    Boardsim::YmodemReceiver::Settings settings;
    settings.encoding = Boardsim::Encoding::Gb18030;
    settings.nakFirstEot = options == "first end refused";
    if (!settings.nakFirstEot)
        for (const QString &fault : options.split(' ', Qt::SkipEmptyParts))
            QVERIFY(settings.faults.add(fault));

    VirtualTransfer run;
    VirtualBoard board(settings, run);
    QVERIFY(run.start(names));
    if (status != Ymodem::Timeout)
        board.start();
    while (run.driver.isBusy() && run.nowMs < 600 * 1000)
        board.step();
    const QByteArray log = run.driver.log().text().right(1500).toUtf8() + board.events.join('\n').toUtf8();
    QVERIFY2(!run.driver.isBusy() && run.status() == status, log);
    QCOMPARE(run.driver.reason().isEmpty(), status == 3 && arrived == sizes.size());
    QCOMPARE(sizes.size() - run.driver.unsentFiles().size(), arrived);
    for (int i = 0; i < arrived; ++i)
        QVERIFY2(board.files.value(nameOf(i), "(none)") == content(sizes.at(i)), log);
}

QTEST_GUILESS_MAIN(TestFaults)
#include "test_faults.moc"
