// Finding in the receive display, as a user does it with the bar.

#include "findbar.h"
#include "logfind.h"
#include "qtterminalwidget.h"
#include "repaints.h"
#include "terminaldocument.h"

#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSpinBox>
#include <QTest>

class TestLogFind : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_terminal = std::make_unique<QtTerminalWidget>();
        m_bar = std::make_unique<FindBar>();
        m_find = new LogFind(m_terminal.get(), m_bar.get());
        m_terminal->setLimits(1 << 20, 3000);
        m_terminal->resize(600, 300);
        m_terminal->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_terminal.get()));
    }

    // The display holds the last three thousand of ten thousand lines.
    void leadsToLinesThatWereDropped()
    {
        auto *newest = m_terminal->findChild<QPushButton *>("btnNewest");
        QVERIFY(newest->isHidden());
        feed(0, 10000);
        QVERIFY(!m_terminal->toPlainText().contains("line 12 "));
        m_find->open();
        type("line 12 ");
        QTRY_COMPARE(state(), QString("1/1"));
        QCOMPARE(m_terminal->textCursor().selectedText(), QString("line 12 "));
        QVERIFY(newest->isVisible());
        const int held = bar()->value();

        // What arrives stays out of sight, and is handed out.
        feed(10000, 10010);
        QVERIFY(!m_terminal->document()->toPlainText().contains("line 10009 "));
        QVERIFY(m_terminal->toPlainText().endsWith("line 10009 end\n"));
        QCOMPARE(m_terminal->toPlainText().count('\n'), 2999);
        QCOMPARE(bar()->value(), held);
        QCOMPARE(newest->text(), QString("回到最新（10行新内容）"));

        m_terminal->showReceived("pending\n", QString(), false);
        QTest::mouseClick(newest, Qt::LeftButton);
        QVERIFY(m_terminal->document()->toPlainText().endsWith("pending\n") && newest->isHidden());
        QTest::keyClick(m_terminal.get(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(m_terminal->document()->firstBlock().text(), QString("line 0 end"));
        QVERIFY(bar()->value() == 0 && newest->isVisible());
        m_terminal->clearTerminal();
        QVERIFY(newest->isHidden());
        feed(10010, 10011);
        QVERIFY(m_terminal->document()->toPlainText().endsWith("line 10010 end\n"));
        QCOMPARE(bar()->value(), bar()->maximum());
    }

    void countsOnAndGoesRound()
    {
        feed(0, 5000);
        m_find->open();
        type("99 end");
        QTRY_COMPARE(state().section('/', 1), QString("50"));
        const QString unnumbered = state();
        QTest::keyClick(m_bar.get(), Qt::Key_Return);
        const QString first = state();
        QVERIFY(first != unnumbered);
        feed(5000, 5100);
        QTRY_COMPARE(state().section('/', 1), QString("51"));
        QCOMPARE(state().section('/', 0, 0), first.section('/', 0, 0));
        while (!state().startsWith("51/"))
            m_find->next();
        m_find->next();
        QCOMPARE(state(), QString("1/51"));
        QCOMPARE(m_terminal->textCursor().block().text(), QString("line 99 end"));
        QTest::keyClick(m_bar.get(), Qt::Key_Enter, Qt::ShiftModifier);
        QCOMPARE(state(), QString("51/51"));
        type("(");
        QTRY_COMPARE(state(), QString("无结果"));
        type("99 end");
        QTRY_VERIFY(!state().startsWith("–"));
        m_terminal->clearTerminal();
        QTRY_COMPARE(state(), QString("无结果"));
        feed(90, 110);
        QTRY_COMPARE(state(), QString("–/1"));
        m_find->next();
        QCOMPARE(state(), QString("1/1"));
        m_terminal->clearTerminal();
        feed(0, 300);
        m_terminal->goToOldest();
        type("12 end"); // is shown before the search has come there
        const QTextCursor found = m_terminal->textCursor();
        QCOMPARE(found.selectedText() + '|' + found.block().text(), QString("12 end|line 12 end"));
    }

    // On the scroll bar, each at its place among the lines.
    void marksMatchesOnTheBar()
    {
        m_find->open();
        for (const int count : {10, 400}) { // several marks for a line, and several lines for a mark
            m_terminal->clearTerminal();
            type(QString());
            feed(0, count);
            QPixmap expected = bar()->grab();
            QPainter painter(&expected);
            const int marks = bar()->height() / 2;
            for (int i = 0; i < marks; ++i) {
                const int begin = (count + 1) * i / marks; // with the last line, which is empty
                const int end = qMax(begin + 1, (count + 1) * (i + 1) / marks);
                if ((end + 2) / 10 > (begin + 2) / 10)
                    painter.fillRect(bar()->width() - 4, 2 * i, 4, 2, QColor(255, 170, 0));
            }
            type("7 end");
            QTRY_VERIFY(state().endsWith(QString("/%1").arg(count / 10)));
            m_terminal->goToNewest();
            QCOMPARE(bar()->grab().toImage(), expected.toImage());
        }
        m_bar->findChild<QCheckBox *>("checkLogFilter")->setChecked(true); // beside it, the lines' numbers
        QTRY_COMPARE(m_terminal->document()->blockCount(), 40);
        auto *margin = m_terminal->findChild<LogMargin *>();
        bar()->setValue(0);
        const QImage before = margin->grab().toImage();
        int darkest = 255;
        for (int i = 0; i < before.width() * before.height(); ++i)
            darkest = qMin(darkest, before.pixelColor(i % before.width(), i / before.width()).lightness());
        QVERIFY(darkest > 80 && darkest < 110); // faint
        QVERIFY(repaints(margin, [this] { bar()->setValue(100); }));
        const int kept = before.height() - 100;
        QCOMPARE(margin->grab().toImage().copy(0, 0, before.width(), kept),
                 before.copy(0, 100, before.width(), kept));
    }

    void showsMatchingLinesOnly()
    {
        feed(0, 5000);
        m_find->open();
        type("99 end");
        m_bar->findChild<QCheckBox *>("checkLogFilter")->setChecked(true);
        QTRY_COMPARE(m_terminal->document()->blockCount(), 50);
        QCOMPARE(m_terminal->document()->firstBlock().text(), QString("line 99 end"));
        feed(5000, 5100);
        QTRY_COMPARE(m_terminal->document()->lastBlock().text(), QString("line 5099 end"));
        QCOMPARE(bar()->value(), bar()->maximum());
        QCOMPARE(m_terminal->toPlainText().count('\n'), 2999); // all lines, up to the limits

        m_bar->findChild<QSpinBox *>()->setValue(1);
        QTRY_COMPARE(m_terminal->document()->blockCount(), 152);
        QCOMPARE(m_terminal->document()->firstBlock().text(), QString("line 98 end"));
        feed(5100, 5102);
        QTRY_COMPARE(m_terminal->document()->lastBlock().text(), QString("line 5100 end"));
        m_bar->findChild<QSpinBox *>()->setValue(0);
        m_bar->findChild<QCheckBox *>("checkLogFilterInverted")->setChecked(true);
        QTRY_COMPARE(m_terminal->document()->lastBlock().text(), QString("line 5101 end"));
        QVERIFY(!m_terminal->document()->toPlainText().contains("99 end"));
        m_bar->findChild<QCheckBox *>("checkLogFilterInverted")->setChecked(false);

        QTRY_COMPARE(m_terminal->document()->blockCount(), 51);
        m_terminal->goToOldest();
        QTest::mouseDClick(m_terminal->viewport(), Qt::LeftButton, {}, {20, 10});
        QCOMPARE(m_terminal->textCursor().block().text(), QString("line 99 end"));
        QCOMPARE(m_terminal->textCursor().block().next().text(), QString("line 100 end"));

        m_bar->findChild<QCheckBox *>("checkLogFilter")->setChecked(true);
        m_terminal->clearTerminal();
        QTRY_VERIFY(m_terminal->document()->isEmpty());
        feed(95, 105);
        QTRY_COMPARE(m_terminal->document()->toPlainText(), QString("line 99 end"));
        QTest::keyClick(m_bar.get(), Qt::Key_Escape);
        QCOMPARE(m_terminal->document()->blockCount(), 11);
    }

    // Of a flood, only the newest lines are paragraphs; all of them are handed out.
    void copiesWhatScrolledByUnseen()
    {
        feed(0, 2500);
        QVERIFY(m_terminal->document()->blockCount() < 1000);
        QCOMPARE(bar()->value(), bar()->maximum());
        QCOMPARE(m_terminal->toPlainText().count('\n'), 2500);
        m_terminal->selectAll();
        m_terminal->copy();
        const QString copied = QGuiApplication::clipboard()->text();
        QVERIFY(copied.startsWith("line 0 end\n") && copied.endsWith("line 2499 end\n"));
    }

    void showsAndCopiesTimes()
    {
        feed(0, 3);
        const int before = m_terminal->viewport()->width();
        auto *margin = m_terminal->findChild<LogMargin *>();
        QVERIFY(!margin->isVisible());
        m_terminal->setView({LineStamp::Time::Clock, true, false, false, {}});
        QVERIFY(margin->isVisible() && m_terminal->viewport()->width() == before - margin->width());
        QCOMPARE(m_terminal->toPlainText(), QString("line 0 end\nline 1 end\nline 2 end\n"));
        QTextCursor cursor(m_terminal->document()->findBlockByNumber(1));
        cursor.movePosition(QTextCursor::NextBlock, QTextCursor::KeepAnchor);
        m_terminal->setTextCursor(cursor);
        m_terminal->copy();
        const QString copied = QGuiApplication::clipboard()->text();
        QVERIFY2(QRegularExpression("^\\[\\d\\d:\\d\\d:\\d\\d\\.\\d{3}\\] line 1 end\\n$")
                     .match(copied)
                     .hasMatch(),
                 qPrintable(copied));
        m_terminal->setView({LineStamp::Time::SincePrevious, true, false, false, {}});
        m_terminal->copy();
        QVERIFY(QGuiApplication::clipboard()->text().startsWith("[+0.0"));
        m_terminal->setView({LineStamp::Time::None, true, false, false, {}});
        m_terminal->copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), QString("line 1 end\n"));
        QCOMPARE(m_terminal->viewport()->width(), before);
    }

    // Paragraphs of several blocks stay whole, whichever is the last one left.
    void dropsWholeParagraphs()
    {
        QString all;
        for (int i = 0; i < 40; ++i)
            all += QString::number(i) + (i % 3 == 0 ? QString(5000, 'x') : " end") + '\n';
        for (int limit = 3; limit < 60; ++limit) {
            TerminalDocument document(QFont(), nullptr);
            document.append(all);
            document.setLimits(1 << 20, limit);
            document.dropNewest();
            const QString left = document.text();
            QVERIFY2(all.startsWith(left + '\n') || left == all, qPrintable(QString::number(limit)));
            QCOMPARE(document.paragraphs(), left.count('\n') + 1);
        }
    }

private:
    void feed(int first, int end)
    {
        QByteArray bytes;
        for (int i = first; i < end; ++i)
            bytes += "line " + QByteArray::number(i) + " end\n";
        m_terminal->showReceived(bytes, QString(), false);
        while (m_terminal->queuedBytes() > 0)
            m_terminal->flushSlice();
    }
    void type(const QString &text) { m_bar->findChild<QLineEdit *>()->setText(text); }
    QString state() const { return m_bar->findChild<QLabel *>()->text(); }
    QScrollBar *bar() const { return m_terminal->verticalScrollBar(); }

    std::unique_ptr<QtTerminalWidget> m_terminal;
    std::unique_ptr<FindBar> m_bar;
    LogFind *m_find = nullptr;
};

QTEST_MAIN(TestLogFind)
#include "test_logfind.moc"
