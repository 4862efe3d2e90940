// Register requests and their replies, without a board.

#include "registersession.h"

#include <QSignalSpy>
#include <QtTest>

#define COMPARE_LOG(expected) QCOMPARE(std::exchange(m_log, {}).trimmed(), QStringLiteral(expected))

class TestRegisterSession : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_session = std::make_unique<RegisterSession>();
        m_log.clear();
        m_isConnected = true;
        const auto session = m_session.get();
        connect(session, &RegisterSession::requested, this, [this](const RegisterSession::Request &request) {
            if (!m_isConnected)
                return m_session->stopAll();
            m_log += QString::number(request.address, 16);
            m_log += request.value ? '=' + QString::number(*request.value, 16) + ' ' : QStringLiteral(" ");
        });
        connect(session, &RegisterSession::valueRead, this,
                [this](const QString &text) { m_log += "value " + text + ' '; });
        connect(session, &RegisterSession::unanswered, this,
                [this](quint32 address) { m_log += "unanswered " + QString::number(address, 16) + ' '; });
        connect(session, &RegisterSession::progressed, this, [this] { m_log += QStringLiteral(". "); });
        connect(session, &RegisterSession::finished, this, [this](RegisterSession::Access access) {
            const RegisterSession::Progress at = m_session->progress();
            m_log += QString::asprintf("%d finished %d/%d %d %d %d ", access, at.done, at.total,
                                       at.unanswered, at.refused, at.notSent);
        });
    }

    // The reply has the low 16 bits of the address that was asked for.
    void readsOneRegister()
    {
        m_session->setTarget({1, 4, 1});
        QVERIFY(m_session->read(0x23008));
        reply(0, 0x3008, "01"); // of the other device
        reply(1, 0x3009, "02");
        m_session->advanceSingle();
        reply(1, 0x3008, "03"); // late
        reply(1, 0x3008, "04"); // asked for once
        m_session->advanceSingle();
        COMPARE_LOG("23008 unanswered 23008 value 03");
        m_session->read(0x10);
        reply(1, 0x10, "05", false);
        reply(1, 0x10, "06");
        m_session->write(0x3008, 0);
        COMPARE_LOG("10 3008=0");
        m_session->read(1);
        m_session->stopAll();
        m_session->advanceSingle();
        reply(1, 1, "07");
        COMPARE_LOG("1");
        m_isConnected = false;
        QVERIFY(!m_session->read(1));
    }

    void readsTables()
    {
        fill(RegisterSession::Read, {{"3001", ""},
                                     {"13002", "old"}, // answered as 3002
                                     {"00DD", "old"},
                                     {"4000", "old"},
                                     {"寄存器地址", "x"},
                                     {"1000000", "old"}, // too wide
                                     {" 0xFFFFFF", ""}});
        m_session->setTarget({0, 3, 1});
        QVERIFY(m_session->start(RegisterSession::Read));
        QVERIFY(!m_session->start(RegisterSession::Write));
        m_session->advance();
        reply(1, 0x3001, "99");
        reply(0, 0x3002, "99"); // will be read
        QCOMPARE(rows(), QStringLiteral(" |old |old |old |x |oldN| "));
        reply(0, 0x3001, "07");
        COMPARE_LOG("3001 . .");
        m_session->advance();
        reply(0, 0x3002, "0E");
        m_session->advance();
        m_session->advance(); // no reply
        m_session->advance();
        reply(0, 0x4000, "99", false);
        m_session->advance();
        reply(0, 0xFFFF, "70");
        COMPARE_LOG("13002 . . dd . . 4000 . . ffffff . .");
        m_session->advance();
        QVERIFY(!m_session->isRunning());
        COMPARE_LOG("0 finished 5/5 1 1 1");
        QCOMPARE(rows(), QStringLiteral("07A|0EA|U|R|x |oldN|70A"));
        QVERIFY(m_session->start(RegisterSession::Read));
        QCOMPARE(rows(), QStringLiteral("07 |0E | | |x |oldN|70 "));
    }

    // Values that were read are not overwritten, nor rows that will be read.
    void addsLateReplies()
    {
        fill(RegisterSession::Read, {{"00DD", ""}, {"3001", ""}, {"100DD", ""}});
        m_session->setTarget({1, 3, 1});
        reply(1, 0x3001, "41"); // unsolicited
        QCOMPARE(rows(), QStringLiteral(" |41A| "));
        m_session->start(RegisterSession::Read);
        m_session->advance();
        m_session->advance(); // no reply
        m_session->advance();
        reply(0, 0x00DD, "99");
        reply(1, 0x00DD, "99", false);
        QCOMPARE(rows(), QStringLiteral("U|41 | "));
        reply(1, 0x00DD, "42");
        reply(1, 0x00DD, "99"); // again, as of another board
        reply(1, 0x3001, "43");
        reply(1, 0x3001, "99");
        QCOMPARE(rows(), QStringLiteral("42A|43A| "));
        QCOMPARE(m_session->progress().unanswered, 0);
    }

    // Values too wide, and rows without one, are not sent; no board answers.
    void writesTables()
    {
        fill(RegisterSession::Write, {{"3001", "FF"}, {"3002", "100"}, {"3003", ""}, {"3004", "44"}});
        m_session->start(RegisterSession::Write);
        m_session->advance();
        reply(0, 0x3001, "99");
        m_session->advance();
        m_session->advance();
        COMPARE_LOG("3001=ff . 3004=44 . 1 finished 2/2 0 0 2");
        QCOMPARE(rows(RegisterSession::Write), QStringLiteral("FFW|100N|N|44W"));
        QVERIFY(RegisterSession::fits(0xFFFFFFFF, 4) && RegisterSession::fits(0xFFFFFFFF, 0));
    }

    // Confirmed by the device that was written to, and by its value only.
    void readsBackWrites()
    {
        connect(m_session.get(), &RegisterSession::readBack, this,
                [this](quint32, quint32 written, const RegisterSession::Reply &reply) {
                    m_log += reply.isValue(written) ? QStringLiteral("same ") : "not " + reply.value + ' ';
                });
        m_session->setReadsBack(true);
        for (const char *value : {"5a", "5B"}) {
            m_session->write(0x3008, 0x5A);
            reply(0, 0x3008, "5A"); // of an earlier request
            m_session->advanceSingle();
            reply(1, 0x3008, "5A");
            reply(0, 0x3008, value);
        }
        COMPARE_LOG("3008=5a 3008 same 3008=5a 3008 not 5B");
        fill(RegisterSession::Write, {{"01", "11"}, {"02", "12"}, {"03", "13"}, {"04", "14"}, {"05", "15"}});
        m_session->start(RegisterSession::Write);
        for (int row = 1; row <= 5; ++row) {
            m_session->advance(); // writes
            QCOMPARE(m_session->table(RegisterSession::Write)->outcome(row - 1),
                     RegisterTableModel::NoOutcome);
            if (row == 5) {
                m_session->setTarget({1, 2, 1}); // the other one can't confirm it
                break;
            }
            m_session->advance(); // reads back
            reply(1, quint16(row), "FF");
            if (row < 4)
                reply(0, quint16(row), row == 2 ? "FF" : "011", row != 3, "a:1");
            else if (row == 4)
                m_session->advance(); // no reply
        }
        QCOMPARE(rows(RegisterSession::Write), QStringLiteral("11A|12D|13R|14U|15 "));
        COMPARE_LOG("1=11 . 1 . 2=12 . 2 . 3=13 . 3 . 4=14 . 4 . 5=15 . 1 finished 5/5 1 1 0");
        RegisterTableModel *const table = m_session->table(RegisterSession::Write);
        QCOMPARE(table->index(1, RegisterTableModel::Value).data(Qt::ToolTipRole).toString(),
                 QStringLiteral("回读为FF，与写入的值不同\n应答者：a:1"));
    }

    // The second one's answer must not become the value of a register whose low 16
    // bits are the same.
    void hearsTwoBoards()
    {
        fill(RegisterSession::Read, {{"00DD", ""}, {"100DD", "old"}});
        m_session->setTarget({0, 3, 1});
        m_session->start(RegisterSession::Read);
        m_session->advance();
        reply(0, 0x00DD, "01", true, "a:1");
        m_session->advance();
        m_session->advance(); // no reply
        reply(0, 0x00DD, "02", true, "b:1");
        QCOMPARE(rows(), QStringLiteral("01A|U"));
        QCOMPARE(m_session->table(RegisterSession::Read)->sender(0), QStringLiteral("a:1"));
    }

    // Tries an error again, and then stops or goes on; the rows that the user chose.
    void triesAgain()
    {
        const QDateTime now(QDate(2026, 1, 2), QTime(3, 4, 5, 6));
        m_session->setClock([now] { return now; });
        m_session->setReadsBack(true);
        m_session->setBatch({1, 0, true});
        fill(RegisterSession::Write, {{"01", "11"}, {"02", "12"}, {"x", "1"}, {"03", "13"}, {"04", "14"}});
        QVERIFY(
            m_session->start(RegisterSession::Write, RegisterSession::Transfer, QVector<int>{1, 2, 3, 4}));
        const auto answer = [this](quint16 address, const char *value) {
            m_session->advance(); // writes
            m_session->advance(); // reads back
            reply(0, address, value, true, "a,1");
        };
        answer(2, "FF");
        answer(2, "12");
        answer(3, "FF");
        answer(3, "13F");
        COMPARE_LOG("2=12 . 2 2=12 . 2 . 3=13 . 3 3=13 . 3 . 1 finished 2/3 0 0 0");
        QCOMPARE(m_session->progress().stopReason, RegisterSession::AtError);
        QCOMPARE(rows(RegisterSession::Write), QStringLiteral("11 |12A|1 |13D|14 "));
        const QStringList report = QString::fromUtf8(m_session->report().csv()).split("\r\n");
        const QString time = QStringLiteral("2026-01-02 03:04:05.006");
        QCOMPARE(report.at(0), QString("操作,写入并回读,设备,1,开始,%1,结束,遇错停止").arg(time));
        QCOMPARE(report.mid(2),
                 (QStringList{"2,02,12,12,回读一致,2," + time + ",\"a,1\"",
                              "4,03,13,13F,回读不符,2," + time + ",\"a,1\"", "5,04,14,,未执行,0,,", ""}));

        // A row that can't be sent is an error, too.
        m_session->setReadsBack(false);
        fill(RegisterSession::Write, {{"01", "111"}});
        m_session->start(RegisterSession::Write);
        m_session->advance();
        COMPARE_LOG("1 finished 0/3 0 0 1");
        m_session->setBatch({2, 5, false});
        fill(RegisterSession::Read, {{"01", "old"}, {"02", ""}});
        m_session->start(RegisterSession::Read);
        for (int i = 0; i < 3; ++i) {
            m_session->advance();
            m_session->advance(); // no reply
        }
        m_session->advance();
        m_session->setTarget({1, 2, 1});
        COMPARE_LOG("1 . 1 . 1 . . 2 . 0 finished 2/2 1 0 0");
        QCOMPARE(m_session->progress().stopReason, RegisterSession::TargetChanged);
        QCOMPARE(rows(), QStringLiteral("U| "));
    }

    // With what a board has; no cell changes, also by a late reply.
    void compares()
    {
        fill(RegisterSession::Read, {{"01", "5A"}, {"02", "old"}});
        for (const auto access : {RegisterSession::Write, RegisterSession::Read}) {
            fill(access, {{"01", "5A"}, {"02", "12"}, {"03", ""}, {"04", "14"}});
            m_session->start(access, RegisterSession::Compare);
            for (const char *value : {"05A", "FF", "33", ""}) {
                m_session->advance();
                const auto address = quint16(m_session->progress().done);
                if (address < 4)
                    reply(0, address, value);
            }
            m_session->advance(); // no reply
            m_session->advance();
            QCOMPARE(rows(access), QStringLiteral("5AA|12E|E|14U"));
            reply(0, 4, "41");
            reply(0, 2, "42");
            QCOMPARE(rows(access), QStringLiteral("5AA|12E|E|14E"));
            QVERIFY(m_session->progress().unanswered == 0 && m_session->progress().differing == 3);
            const QModelIndex value = m_session->table(access)->index(1, RegisterTableModel::Value);
            QCOMPARE(value.data(RegisterTableModel::boardRole).toString(), QStringLiteral("FF"));
            QVERIFY(m_session->report().csv().contains("4,04,14,41,不同,1,"));
            m_session->table(access)->setValue(1, QStringLiteral("13")); // which was not compared
            QCOMPARE(rows(access), QStringLiteral("5AA|13 |E|14E"));
        }
    }

    // Where no other device was asked, also what nobody asked for.
    void knowsWhoWasAsked()
    {
        const auto isHeard = [this](int device) { return m_session->addReply({device, 9, false, {}, {}}); };
        QVERIFY(isHeard(0) && !isHeard(1));
        m_session->setTarget({1, 2, 1});
        m_session->read(9);
        m_session->setTarget({0, 2, 1});
        QVERIFY(!isHeard(0) && isHeard(1));
    }

    void stops()
    {
        fill(RegisterSession::Read, {{"01", "old"}, {"02", ""}});
        m_session->stopAll();
        m_session->start(RegisterSession::Read);
        m_session->advance();
        m_session->stop(RegisterSession::Write); // the other one
        COMPARE_LOG("1 .");
        m_session->stop(RegisterSession::Read);
        QVERIFY(!m_session->isRunning());
        COMPARE_LOG("0 finished 1/2 0 0 0");
        reply(0, 1, "11"); // sent before
        QCOMPARE(rows(), QStringLiteral("11A| "));
        m_session->start(RegisterSession::Read); // from the first row
        m_isConnected = false;
        m_session->advance();
        COMPARE_LOG("0 finished 1/2 0 0 0");
        QCOMPARE(rows(), QStringLiteral("11 | "));
        fill(RegisterSession::Write, {{"01", "01"}});
        m_session->start(RegisterSession::Write);
        m_session->advance();
        QCOMPARE(rows(RegisterSession::Write), QStringLiteral("01 "));
    }

    // By its own timers, to the end.
    void paces()
    {
        fill(RegisterSession::Write, {{"01", "01"}, {"02", "02"}});
        fill(RegisterSession::Read, {{"01", ""}, {"02", ""}});
        for (const auto access : {RegisterSession::Write, RegisterSession::Read}) {
            m_session->start(access);
            QTRY_VERIFY_WITH_TIMEOUT(!m_session->isRunning(), 20000);
        }
        COMPARE_LOG("1=1 . 2=2 . 1 finished 2/2 0 0 0 1 . . 2 . . 0 finished 2/2 2 0 0");
        m_session->read(1);
        QTRY_VERIFY_WITH_TIMEOUT(m_log.contains("unanswered"), 20000);
    }

private:
    void fill(RegisterSession::Access access, const QList<QStringList> &rows) // address, value
    {
        RegisterTableModel *const table = m_session->table(access);
        for (int row = 0; row < rows.size(); ++row)
            for (int i = 0; i < 2; ++i)
                table->setData(table->index(row, RegisterTableModel::Address + i), rows.at(row).at(i));
    }
    // The rows with an address: the value and the first letter of the outcome.
    QString rows(RegisterSession::Access access = RegisterSession::Read) const
    {
        QStringList rows;
        const RegisterTableModel *const table = m_session->table(access);
        for (int row = 0; !table->row(row).address.isEmpty(); ++row)
            rows += table->row(row).value + QString(" AWRUNDE").at(table->outcome(row));
        return rows.join(QLatin1Char('|'));
    }
    void reply(int device, quint16 address, const char *value, bool isGood = true, const char *sender = "")
    {
        m_session->addReply({device, address, isGood, value, sender});
    }

    std::unique_ptr<RegisterSession> m_session;
    QString m_log; // what the session has emitted since it was read
    bool m_isConnected = true;
};

QTEST_GUILESS_MAIN(TestRegisterSession)
#include "test_registersession.moc"
