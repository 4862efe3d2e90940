// The ways out of the program: the order of the steps, each taken once.

#include "qtwidgetbase.h"
#include "quitguard.h"

#include <QtTest>
#include <QtWidgets>

namespace {

// Records its steps: "?" asked, "x" closed, "s" saved.
class StepPage : public QtWidgetBase
{
public:
    StepPage(const QString &name, QStringList *steps)
        : m_name(name)
        , m_steps(steps)
    {
    }
    bool mayClose() override
    {
        m_steps->append(m_name + "?");
        if (whileAsked)
            whileAsked();
        return agrees;
    }
    void closeLinks() override
    {
        m_steps->append(m_name + "x");
        if (whileClosing)
            QTimer::singleShot(0, this, whileClosing);
    }
    bool isClosed() const override { return !whileClosing; }
    bool saveBeforeExit() override
    {
        m_steps->append(m_name + "s");
        return saves;
    }

    bool agrees = true;
    bool saves = true;
    std::function<void()> whileAsked;
    std::function<void()> whileClosing; // null: closed at once

private:
    QString m_name;
    QStringList *m_steps;
};

} // namespace

class QuitGuardTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_steps.clear();
        m_a = std::make_unique<StepPage>("a", &m_steps);
        m_b = std::make_unique<StepPage>("b", &m_steps);
        m_guard = std::make_unique<QuitGuard>();
        m_guard->setPages({m_a.get(), m_b.get()});
    }

    void asksThenClosesThenSaves()
    {
        m_b->agrees = false;
        QVERIFY(!m_guard->mayQuit());
        QCOMPARE(steps(), QString("a? b?"));
        m_b->agrees = true;
        // Another way out while a question is open: not asked again, stays open.
        bool nested = true;
        m_b->whileAsked = [&] { nested = m_guard->mayQuit(); };
        m_a->saves = false;
        QVERIFY(!m_guard->mayQuit());
        QVERIFY(!nested);
        QCOMPARE(steps(), QString("a? b? ax bx as"));
        m_a->saves = true;
        QVERIFY(m_guard->mayQuit());
        QCOMPARE(steps(), QString("a? b? ax bx as bs"));
        m_guard->end();
        QVERIFY(m_guard->mayQuit());
        QCOMPARE(steps(), QString());
    }

    // Links that need time are waited for, until the user closes once more.
    void waitsForLinks()
    {
        const QSignalSpy waits(m_guard.get(), &QuitGuard::waiting);
        m_a->whileClosing = [this] {
            m_a->whileClosing = nullptr;
            emit m_a->signalClosed();
            QTimer::singleShot(1, m_b.get(), [this] {
                m_steps += "b is closed";
                m_b->whileClosing = nullptr;
                emit m_b->signalClosed();
            });
        };
        m_b->whileClosing = [] {};
        QVERIFY(m_guard->mayQuit());
        QCOMPARE(steps(), QString("a? b? ax bx b is closed as bs"));
        QCOMPARE(waits.count(), 2);
        QCOMPARE(waits.first().first().toBool(), true);
        m_guard->stay();
        bool second = true;
        m_b->whileClosing = [&] { second = m_guard->mayQuit(); };
        QVERIFY(m_guard->mayQuit());
        QVERIFY(!second);
        QCOMPARE(steps(), QString("a? b? ax bx as bs"));
    }

    // Another program may cancel a log-off: links stay open, the next one asks
    // and saves again, and the end of the event loop saves what came since.
    void logOffMayBeCancelled()
    {
        m_guard->setPages({m_a.get()});
        QVERIFY(m_guard->mayEndSession());
        QVERIFY(m_guard->mayEndSession());
        m_guard->end();
        QCOMPARE(steps(), QString("a? as a? as ax as"));
        m_guard->stay();
        m_a->agrees = false;
        QVERIFY(!m_guard->mayEndSession());
        m_a->agrees = true;
        QVERIFY(m_guard->mayEndSession());
        m_a->agrees = false;
        QVERIFY(!m_guard->mayQuit()); // asks again, and so does the end of the event loop
        m_guard->end();
        m_a->agrees = true;
        QVERIFY(m_guard->mayQuit()); // the user closes the window after all
        QCOMPARE(steps(), QString("a? a? as a? a? a? ax as"));
    }

private:
    QString steps() { return std::exchange(m_steps, {}).join(' '); }

    QStringList m_steps;
    std::unique_ptr<StepPage> m_a, m_b;
    std::unique_ptr<QuitGuard> m_guard;
};

QTEST_MAIN(QuitGuardTest)
#include "test_quitguard.moc"
