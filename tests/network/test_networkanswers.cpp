// Automatic answers of the network page to real peers, and its rules on disk.

#include "answerpanel.h"
#include "answerrules.h"
#include "networkpagetest.h"

#include <QAction>
#include <QSpinBox>
#include <QTcpSocket>
#include <QUdpSocket>

namespace {

// Faster than any matching.
class FloodedLink : public Link
{
public:
    FloodedLink() { setState(State::Open); }
    void receive(const QByteArray &bytes, quint64 peer)
    {
        emit received(bytes, nowUs(), {peer, QHostAddress(), 0});
    }
    qint64 pendingBytes() const override { return 0; }
    void close() override { setState(State::Closed); }

protected:
    qint64 accept(const QByteArray &bytes, quint64) override { return bytes.size(); }
    void readingChanged() override {}
};

} // namespace

class TestNetworkAnswers : public NetworkPageTest
{
    Q_OBJECT

private:
    void useRules(const AnswerRules &rules)
    {
        QFile file(m_root->filePath(QStringLiteral("conf/net_answers.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(AnswerRuleFile::write(rules));
        file.close();
        click("checkAutoAnswer");
    }
    static AnswerRule rule(const char *pattern, const char *answer, int delayMs = 0)
    {
        AnswerRule made;
        made.id = QString::fromLatin1(pattern);
        made.kind = AnswerRule::Expression;
        made.pattern = QString::fromLatin1(pattern);
        made.answer = QString::fromLatin1(answer);
        made.delayMs = delayMs;
        return made;
    }
    void connectTo(QTcpSocket *socket, quint16 port)
    {
        const int before = clients().size();
        socket->connectToHost(QStringLiteral("127.0.0.1"), port);
        WAIT_EQUAL(clients().size(), before + 1);
    }
    bool wasToldOf(const QString &part) const
    {
        return std::any_of(m_notices->begin(), m_notices->end(), [&](const QList<QVariant> &notice) {
            return notice.at(0).toString().contains(part);
        });
    }
    LinkAnswers *answers() const { return m_page->findChild<AnswerPanel *>()->answers(); }

private slots:
    void answersEachClientAlone()
    {
        const QSignalSpy lamp(m_page.get(), &NetworkToolWidget::signalAnswerState);
        const quint16 port = open(Server);
        QTcpSocket one, other;
        connectTo(&one, port);
        connectTo(&other, port);
        one.write("id=1;");
        WAIT_EQUAL(received(), qint64(5));
        QVERIFY(!answers()->isOn());
        useRules({rule("id=(\\d+);", "you are $1.")});
        one.write("id="); // the two are cut into each other
        WAIT_EQUAL(received(), qint64(8));
        other.write("7;id=22;");
        WAIT_EQUAL(other.bytesAvailable(), qint64(11));
        one.write("11;");
        WAIT_EQUAL(one.bytesAvailable(), qint64(11));
        QCOMPARE(one.readAll(), QByteArray("you are 11."));
        QCOMPARE(other.readAll(), QByteArray("you are 22."));
        WAIT_EQUAL(sent(), qint64(22));
        WAIT_EQUAL(child<QLabel>("labelAnswerState")->text(), QStringLiteral("1条规则，命中2 应答2"));
        QCOMPARE(lamp.last().at(0).toString(), QStringLiteral("应答 2"));
        click("checkAutoAnswer");
        QCOMPARE(lamp.last().at(0).toString(), QString());
    }

    void answersSendersOfDatagrams()
    {
        useRules({rule("^ping(.)$", "pong$1"), rule("ab", "never")});
        const quint16 port = open(Udp);
        QUdpSocket one, other;
        for (QUdpSocket *socket : {&one, &other})
            QVERIFY(socket->bind(QHostAddress(QHostAddress::LocalHost)));
        const QHostAddress page(QHostAddress::LocalHost);
        one.writeDatagram("a", page, port);
        one.writeDatagram("b", page, port); // a message of its own
        one.writeDatagram("ping1", page, port);
        other.writeDatagram("ping2", page, port);
        QByteArray answer(10, '\0');
        for (const auto &[socket, expected] : {std::pair{&one, "pong1"}, std::pair{&other, "pong2"}}) {
            WAIT_FOR(socket->hasPendingDatagrams());
            answer.resize(int(socket->pendingDatagramSize()));
            socket->readDatagram(answer.data(), answer.size());
            QCOMPARE(answer, QByteArray(expected));
        }
        WAIT_EQUAL(answers()->counts().hits, qint64(2));
    }

    void tellsOfAnswersThatCannotLeave()
    {
        useRules({rule("a", "late", 60000), rule("b", "sooner", 50000)});
        const quint16 port = open(Server);
        QTcpSocket one, other;
        connectTo(&one, port);
        connectTo(&other, port);
        one.write("ab");
        other.write("a");
        WAIT_EQUAL(answers()->counts().hits, qint64(3));
        one.disconnectFromHost();
        WAIT_FOR(wasToldOf(QStringLiteral("]已断开，2个应答未发送！")));
        other.write("b");
        WAIT_EQUAL(answers()->counts().hits, qint64(4));
        doubleClick("btnOpen");
        WAIT_FOR(wasToldOf(QStringLiteral("连接已断开，2个应答未发送！")));
        QCOMPARE(answers()->counts().dropped, qint64(4));
        QCOMPARE(sent(), qint64(0));
    }

    // A peer that sends back what it gets, and one that asks too often.
    void stopsEndlessTalk()
    {
        useRules({rule("ping\\n", "$0"), rule("more", "more?")});
        child<QSpinBox>("spinAnswerLimit")->setValue(3);
        const quint16 port = open(Server);
        QTcpSocket echo, asking;
        connectTo(&echo, port);
        connect(&echo, &QTcpSocket::readyRead, &echo, [&echo] { echo.write(echo.readAll()); });
        echo.write("ping\n");
        WAIT_FOR(wasToldOf(QStringLiteral("回显")));
        WAIT_EQUAL(answers()->counts().echoes, qint64(1));
        QCOMPARE(answers()->counts().sent, qint64(1));
        connectTo(&asking, port);
        asking.write(QByteArray("more ").repeated(100));
        WAIT_EQUAL(answers()->counts().hits, qint64(101));
        WAIT_FOR(wasToldOf(QStringLiteral("超过每秒上限")));
        QVERIFY(answers()->counts().dropped >= 100 - 6);
    }

    // A hard expression is switched off; the others answer what stands behind the flood.
    void survivesAFlood()
    {
        AnswerRules rules{rule("(a+)+b", "x"), rule("end$", "done")};
        for (int i = 0; i < 20; ++i)
            rules.append(rule(qPrintable(QStringLiteral("value%1=\\d+").arg(i)), "$0"));
        useRules(rules);
        const quint16 port = open(Server);
        QTcpSocket one;
        connectTo(&one, port);
        const QByteArray flood = (QByteArray(499, 'a') + "!").repeated(1000) + "end";
        one.write(flood);
        WAIT_EQUAL(received(), qint64(flood.size()));
        WAIT_FOR(one.bytesAvailable() == 4);
        WAIT_FOR(answers()->hasGivenUp(QStringLiteral("(a+)+b")));
        QVERIFY(!answers()->hasGivenUp(QStringLiteral("end$")));
    }

    void skipsOnlyTheFloodOfOne()
    {
        FloodedLink link;
        LinkAnswers answers;
        QVector<quint64> answered;
        answers.setLimit(1000);
        answers.setRules({rule("ask", "answer")});
        answers.watch(&link, LinkAnswers::Delivery::Stream, [&](const QByteArray &, const Peer &to) {
            answered.append(to.id);
            return true;
        });
        answers.setOn(true);
        const QSignalSpy told(&answers, &LinkAnswers::notify);
        for (int i = 0; i < 20; ++i) {
            link.receive("ask", quint64(100 + i));
            link.receive(QByteArray(1000'000, '.'), 1);
        }
        QCOMPARE(told.count(), 1);
        QVERIFY(answers.queuedBytes() <= LinkAnswers::maxQueuedBytes);
        WAIT_EQUAL(answered.size(), 20);
        QCOMPARE(answered.last(), quint64(119));
    }

    void tellsOfABrokenFile()
    {
        QFile file(m_root->filePath(QStringLiteral("conf/net_answers.json")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("{") == 1);
        file.close();
        click("checkAutoAnswer");
        QVERIFY(wasToldOf(QStringLiteral("已改名为net_answers_bad1.json")));
        WAIT_EQUAL(child<QLabel>("labelAnswerState")->text(), QStringLiteral("没有可用的规则"));
    }

    void isOffAtTheNextStart()
    {
        QVERIFY(child<QWidget>("answerPanel")->isHidden());
        child<QAction>("actionAutoAnswer")->trigger();
        useRules({rule("a", "b")});
        QVERIFY(answers()->isOn());
        m_page = std::make_unique<NetworkToolWidget>();
        QVERIFY(!child<QWidget>("answerPanel")->isHidden());
        QVERIFY(!answers()->isOn());
        WAIT_EQUAL(answers()->ruleCount(), 1);
    }
};

QTEST_MAIN(TestNetworkAnswers)
#include "test_networkanswers.moc"
