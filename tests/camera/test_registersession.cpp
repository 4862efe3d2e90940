// Register requests and their replies, without a board and without waiting.

#include "registersession.h"

#include <QSignalSpy>
#include <QtTest>

class TestRegisterSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<RegisterSession::Access>(); }
    void init();
    void knowsWhatFits();
    void readsOneRegister();
    void dropsWhatCannotBeSent();
    void readsTables();
    void addsLateReplies();
    void writesTables();
    void stopsTables();
    void paces();

private:
    void fill(RegisterSession::Access access, const QList<QStringList> &rows) // address, value
    {
        RegisterTableModel *const table = m_session->table(access);
        for (int row = 0; row < rows.size(); ++row)
            for (int i = 0; i < 2; ++i)
                table->setData(table->index(row, RegisterTableModel::Address + i), rows.at(row).at(i));
    }
    QString value(int row) const { return m_session->table(RegisterSession::Read)->row(row).value; }
    RegisterTableModel::Outcome outcome(int row) const
    {
        return m_session->table(RegisterSession::Read)->outcome(row);
    }
    // Each request as address=value, those of reads without a value.
    QString requests() { return std::exchange(m_requests, {}).join(QLatin1Char(' ')); }

    std::unique_ptr<RegisterSession> m_session;
    QStringList m_requests;
    bool m_isConnected = true;
};

void TestRegisterSession::init()
{
    m_session = std::make_unique<RegisterSession>();
    m_requests.clear();
    m_isConnected = true;
    connect(m_session.get(), &RegisterSession::requested, this,
            [this](const RegisterSession::Request &request) {
                if (!m_isConnected)
                    return m_session->stopAll();
                QString text = QString::number(request.address, 16);
                if (request.value)
                    text += QLatin1Char('=') + QString::number(*request.value, 16);
                m_requests += text;
            });
}

void TestRegisterSession::knowsWhatFits()
{
    QVERIFY(RegisterSession::fits(0xFF, 1) && !RegisterSession::fits(0x100, 1));
    QVERIFY(RegisterSession::fits(0xFFFFFF, 3) && !RegisterSession::fits(0x1000000, 3));
    QVERIFY(RegisterSession::fits(0xFFFFFFFF, 4) && RegisterSession::fits(0xFFFFFFFF, 0));
}

// The reply to a request has the low 16 bits of its address.
void TestRegisterSession::readsOneRegister()
{
    QSignalSpy values(m_session.get(), &RegisterSession::valueRead);
    QSignalSpy unanswered(m_session.get(), &RegisterSession::unanswered);
    m_session->setTarget({1, 4, 1});
    QVERIFY(m_session->read(0x23008));
    QCOMPARE(requests(), QStringLiteral("23008"));
    m_session->addReply({0, 0x3008, true, "01"}); // of the other device
    m_session->addReply({1, 0x3009, true, "02"});
    QVERIFY(values.isEmpty());
    m_session->reportUnanswered();
    QCOMPARE(unanswered.takeFirst().at(0).toUInt(), 0x23008U);
    m_session->addReply({1, 0x3008, true, "03"}); // late
    m_session->addReply({1, 0x3008, true, "04"}); // asked for once
    QCOMPARE(values.size(), 1);
    QCOMPARE(values.takeFirst().at(0).toString(), QStringLiteral("03"));
    m_session->reportUnanswered();
    QVERIFY(unanswered.isEmpty());
    m_session->read(0x10);
    m_session->addReply({1, 0x10, false, "05"});
    m_session->addReply({1, 0x10, true, "06"});
    QVERIFY(values.isEmpty());
    m_session->write(0x3008, 0);
    QCOMPARE(requests(), QStringLiteral("10 3008=0"));
}

void TestRegisterSession::dropsWhatCannotBeSent()
{
    QSignalSpy values(m_session.get(), &RegisterSession::valueRead);
    QSignalSpy unanswered(m_session.get(), &RegisterSession::unanswered);
    QVERIFY(m_session->read(1));
    m_session->stopAll();
    m_session->reportUnanswered();
    m_isConnected = false;
    QVERIFY(!m_session->read(1));
    m_session->addReply({0, 1, true, "01"});
    QVERIFY(values.isEmpty() && unanswered.isEmpty());

    QSignalSpy finished(m_session.get(), &RegisterSession::finished);
    fill(RegisterSession::Read, {{"01", "old"}});
    QVERIFY(m_session->start(RegisterSession::Read));
    m_session->advance();
    QCOMPARE(finished.size(), 1);
    QVERIFY(!m_session->isRunning());
    QCOMPARE(value(0), QStringLiteral("old"));
}

void TestRegisterSession::readsTables()
{
    fill(RegisterSession::Read, {{"3001", ""},
                                 {"13002", "old"}, // answered as 3002
                                 {"00DD", "old"},
                                 {"4000", "old"},
                                 {"寄存器地址", "x"},
                                 {"1000000", "old"},
                                 {" 0x0010", ""}});
    QSignalSpy progressed(m_session.get(), &RegisterSession::progressed);
    QSignalSpy finished(m_session.get(), &RegisterSession::finished);
    m_session->setTarget({0, 3, 1});
    QVERIFY(m_session->start(RegisterSession::Read));
    QVERIFY(!m_session->start(RegisterSession::Write));
    QCOMPARE(outcome(5), RegisterTableModel::NotSent);
    m_session->advance();
    QCOMPARE(requests(), QStringLiteral("3001"));
    m_session->addReply({1, 0x3001, true, "99"});
    m_session->addReply({0, 0x3002, true, "99"}); // will be read
    QCOMPARE(value(0) + value(1), QStringLiteral("old"));
    m_session->addReply({0, 0x3001, true, "07"});
    QCOMPARE(value(0), QStringLiteral("07"));
    QCOMPARE(requests(), QString()); // not before its pause
    m_session->advance();
    QCOMPARE(requests(), QStringLiteral("13002"));
    m_session->setTarget({1, 3, 1}); // for the next request
    m_session->addReply({0, 0x3002, true, "0E"});
    m_session->advance();
    m_session->advance(); // no reply
    m_session->advance();
    m_session->addReply({1, 0x4000, false, "99"});
    m_session->advance();
    m_session->addReply({1, 0x0010, true, "70"});
    QCOMPARE(requests(), QStringLiteral("dd 4000 10"));
    QVERIFY(finished.isEmpty());
    m_session->advance();
    QCOMPARE(finished.size(), 1);
    QCOMPARE(progressed.size(), 10);
    QVERIFY(!m_session->isRunning());
    const RegisterSession::Progress progress = m_session->progress();
    QCOMPARE(
        (QList<int>{progress.done, progress.total, progress.unanswered, progress.refused, progress.notSent}),
        (QList<int>{5, 5, 1, 1, 1}));
    const QStringList values{"07", "0E", "", "", "x", "old", "70"};
    const QList<int> outcomes{RegisterTableModel::Answered,   RegisterTableModel::Answered,
                              RegisterTableModel::Unanswered, RegisterTableModel::Refused,
                              RegisterTableModel::NoOutcome,  RegisterTableModel::NotSent,
                              RegisterTableModel::Answered};
    for (int row = 0; row < values.size(); ++row) {
        QCOMPARE(value(row), values.at(row));
        QCOMPARE(int(outcome(row)), outcomes.at(row));
    }
    QVERIFY(m_session->start(RegisterSession::Read));
    QCOMPARE(outcome(0), RegisterTableModel::NoOutcome);
}

void TestRegisterSession::addsLateReplies()
{
    fill(RegisterSession::Read, {{"00DD", ""}, {"3001", ""}, {"100DD", ""}});
    m_session->setTarget({1, 2, 1});
    m_session->addReply({1, 0x3001, true, "41"}); // nobody asked for it
    QCOMPARE(value(1), QStringLiteral("41"));
    QVERIFY(m_session->start(RegisterSession::Read));
    m_session->advance();
    m_session->advance(); // no reply
    m_session->advance();
    m_session->addReply({1, 0x3001, true, "43"});
    m_session->setTarget({0, 2, 1});
    m_session->addReply({0, 0x00DD, true, "99"}); // the device that is chosen now
    m_session->addReply({1, 0x00DD, false, "99"});
    QCOMPARE(value(0), QString());
    m_session->addReply({1, 0x00DD, true, "42"});
    QCOMPARE(outcome(0), RegisterTableModel::Answered);
    m_session->addReply({1, 0x00DD, true, "99"}); // again, as of another board
    m_session->addReply({1, 0x3001, true, "99"});
    QCOMPARE(value(0) + value(1) + value(2), QStringLiteral("4243"));
    QCOMPARE(m_session->progress().unanswered, 1);
}

// Values too wide, and rows without one, are not sent.
void TestRegisterSession::writesTables()
{
    fill(RegisterSession::Write, {{"3001", "11"}, {"3002", "1234"}, {"3003", ""}, {"3004", "44"}});
    QVERIFY(m_session->start(RegisterSession::Write));
    m_session->advance();
    m_session->addReply({0, 0x3001, true, "99"});
    m_session->advance();
    QCOMPARE(requests(), QStringLiteral("3001=11 3004=44"));
    const RegisterSession::Progress progress = m_session->progress();
    QCOMPARE((QList<int>{progress.done, progress.total, progress.notSent}), (QList<int>{2, 2, 2}));
    const RegisterTableModel *table = m_session->table(RegisterSession::Write);
    QCOMPARE(table->row(0).value, QStringLiteral("11"));
    QCOMPARE(table->outcome(0), RegisterTableModel::Written);
    QCOMPARE(table->outcome(1), RegisterTableModel::NotSent);
    QCOMPARE(table->outcome(3), RegisterTableModel::Written);
}

void TestRegisterSession::stopsTables()
{
    fill(RegisterSession::Read, {{"01", ""}, {"02", ""}});
    QSignalSpy finished(m_session.get(), &RegisterSession::finished);
    m_session->stopAll();
    QVERIFY(finished.isEmpty());
    QVERIFY(m_session->start(RegisterSession::Read));
    m_session->advance();
    m_session->stop(RegisterSession::Write); // the other one
    QVERIFY(m_session->isRunning());
    m_session->stop(RegisterSession::Read);
    QVERIFY(!m_session->isRunning());
    QCOMPARE(finished.size(), 1);
    QCOMPARE(m_session->progress().done, 1);
    m_session->addReply({0, 1, true, "11"}); // sent before
    QCOMPARE(value(0), QStringLiteral("11"));
    QVERIFY(m_session->start(RegisterSession::Read)); // from the first row
    m_session->advance();
    QCOMPARE(requests(), QStringLiteral("1 1"));
}

// By its own timers, to the end.
void TestRegisterSession::paces()
{
    fill(RegisterSession::Write, {{"01", "01"}, {"02", "02"}});
    fill(RegisterSession::Read, {{"01", ""}, {"02", ""}});
    for (const auto access : {RegisterSession::Write, RegisterSession::Read}) {
        QVERIFY(m_session->start(access));
        QTRY_VERIFY_WITH_TIMEOUT(!m_session->isRunning(), 20000);
    }
    QCOMPARE(requests(), QStringLiteral("1=1 2=2 1 2"));
    QCOMPARE(m_session->progress().unanswered, 2);
    QSignalSpy unanswered(m_session.get(), &RegisterSession::unanswered);
    m_session->read(1);
    QTRY_COMPARE_WITH_TIMEOUT(unanswered.size(), 1, 20000);
}

QTEST_GUILESS_MAIN(TestRegisterSession)
#include "test_registersession.moc"
