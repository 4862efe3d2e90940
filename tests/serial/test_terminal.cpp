// The receive display: what it shows, what it hands out, and that the user's
// selection and scroll position survive incoming text.

#include "codecbar.h"
#include "freshfolder.h"
#include "korvexresources.h"
#include "loglayout.h"
#include "qtterminalwidget.h"
#include "recordedtext.h"
#include "terminaldocument.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QtTest>

class TestTerminal : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        initKorvexResources();
        m_terminal.reset();
        m_root = std::make_unique<FreshFolder>();
        m_terminal = std::make_unique<QtTerminalWidget>();
        m_terminal->resize(600, 300);
        m_terminal->show();
    }

    void decodesAndInserts()
    {
        Settings::instance().textCodec = 0;
        m_terminal->showReceived("\xe6\xb8\xa9", QString(), false);
        m_terminal->toPlainText();
        Settings::instance().textCodec = 1;
        m_terminal->showReceived("\xce\xc2", QString(), false);
        QCOMPARE(m_terminal->toPlainText(), QStringLiteral("温温"));
        m_terminal->setTerminalText("50%\r100%");
        m_terminal->showReceived("\xce\xc2", QString(), false);
        m_terminal->insertTerminalText("\nend"); // behind what is pending
        QCOMPARE(m_terminal->toPlainText(), QStringLiteral("50%\n100%温\nend"));
        m_terminal->setDirectInsert(false);
        m_terminal->insertTerminalText("10%\r100%\r\nne");
        m_terminal->insertTerminalText("xt\r\n");
        QCOMPARE(m_terminal->toPlainText(), QStringLiteral("100%\nnext\n"));
        QCOMPARE(recordedText(m_terminal->received()), m_terminal->toPlainText());
        m_terminal->clearTerminal();
        m_terminal->setView({LineStamp::Time::None, false, false, false, {true, false}});
        m_terminal->showReceived(QByteArray(3000, 'a'), QString(), false); // in two blocks
        m_terminal->toPlainText();
        m_terminal->showReceived("\rbc", QString(), false);
        QCOMPARE(m_terminal->toPlainText(), "bc" + QString(2998, 'a'));
        QCOMPARE(m_terminal->document()->toPlainText().remove('\n'), "bc" + QString(2998, 'a'));
        m_terminal->setView({});
        m_terminal->clearTerminal();
        m_terminal->insertTerminalText("x");
        QCOMPARE(m_terminal->toPlainText(), QStringLiteral("x"));
    }

    // By itself, a moment later where something was shown just now.
    void showsWhatArrives()
    {
        Settings::instance().textCodec = 0;
        QVERIFY(!m_terminal->testAttribute(Qt::WA_InputMethodEnabled));
        const auto shown = [this] { return m_terminal->document()->toPlainText(); };
        m_terminal->showReceived("a", QString(), false);
        m_terminal->showReceived("b\n", QString(), false);
        QTRY_COMPARE(shown(), QStringLiteral("ab\n"));
        m_terminal->showMessage("\xe6\xb8", QString(), false, "peer");
        m_terminal->endSource("peer");
        m_terminal->showMessage("\xa9\n", QString(), false, "peer"); // of another one
        QTRY_VERIFY(shown().endsWith(QString(QChar::ReplacementCharacter) + '\n'));
        m_terminal->showSent("AT", false, false);
        QTRY_VERIFY(shown().endsWith(QStringLiteral("\nAT\n")));
        m_terminal->insertRecvData("at", false, false);
        m_terminal->insertRecvData("once", false, false);
        QVERIFY(shown().endsWith(QStringLiteral("\natonce")));
    }

    void showsFloodsInSlices()
    {
        QByteArray bytes;
        for (int i = 0; bytes.size() < 3 * 1000 * 1000; ++i)
            bytes += QByteArray::number(i) + " 0123456789 abcdefghij\n";
        for (const bool logMode : {false, true}) {
            m_terminal->showReceived(bytes, QString(), false);
            QVERIFY(m_terminal->queuedBytes() > 0); // came back before all was shown
            QVERIFY(logMode || m_terminal->document()->characterCount() > 1000);
            if (logMode) // what is pending when it is turned on keeps its place
                m_terminal->insertRecvData("end\n", false, false);
            QTRY_COMPARE_WITH_TIMEOUT(m_terminal->queuedBytes(), qint64(0), 60000);
            const QString all = QString::fromLatin1(bytes) + (logMode ? QStringLiteral("end\n") : QString());
            QCOMPARE(m_terminal->toPlainText(), logMode ? all.right(20480) : all);
            QVERIFY(recordedText(m_terminal->received()) == all);
            m_terminal->showReceived(bytes, QString(), false);
            m_terminal->clearTerminal(); // also what is pending
            QCOMPARE(m_terminal->queuedBytes(), qint64(0));
            QVERIFY(m_terminal->received().isEmpty());
            QCOMPARE(m_terminal->toPlainText(), QString());
        }
    }

    void copiesWithoutCuts()
    {
        const QString text = QStringLiteral("first\n") + QString(5000, 'x') + QStringLiteral("\nlast");
        m_terminal->insertTerminalText(text.left(6 + 2048)); // a full block
        m_terminal->insertTerminalText(text.mid(6 + 2048));
        const auto copied = [this](int from, int to) {
            QTextCursor some = m_terminal->textCursor();
            some.setPosition(from);
            some.setPosition(to, QTextCursor::KeepAnchor);
            m_terminal->setTextCursor(some);
            m_terminal->copy();
            return QGuiApplication::clipboard()->text();
        };
        QCOMPARE(copied(3, 6 + 2048 + 1 + 10),
                 text.mid(3, 3 + 2048 + 10)); // ten characters behind the first cut
        QCOMPARE(copied(2, 6), QStringLiteral("rst\n"));
        m_terminal->selectAll();
        m_terminal->copy();
        QCOMPARE(QGuiApplication::clipboard()->text(), text);
        const QSignalSpy clears(m_terminal.get(), &QtTerminalWidget::clearRequested);
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(5, 5), QPoint(5, 5));
        QCoreApplication::sendEvent(m_terminal.get(), &menuKey);
        QWidget *menu = QApplication::activePopupWidget();
        QVERIFY(menu);
        QCOMPARE(menu->actions().size(), 6); // copy, select all and clear, nothing about links
        menu->actions().last()->trigger();
        QCOMPARE(clears.count(), 1);
        menu->close();
    }

    void keepsSelectionAndScrollPosition()
    {
        for (int i = 0; i < 200; ++i)
            m_terminal->insertTerminalText(QStringLiteral("line %1\n").arg(i));
        QTextCursor selection = m_terminal->textCursor();
        selection.setPosition(5);
        selection.setPosition(25, QTextCursor::KeepAnchor);
        m_terminal->setTextCursor(selection);
        m_terminal->verticalScrollBar()->setValue(50);
        m_terminal->showReceived(QByteArray(500, 'a') + '\n', QString(), false);
        m_terminal->toPlainText();
        QCOMPARE(m_terminal->textCursor().selectedText(), selection.selectedText());
        QCOMPARE(m_terminal->verticalScrollBar()->value(), 50);

        // A selection that reaches the very end does not grow.
        m_terminal->selectAll();
        const int end = m_terminal->textCursor().selectionEnd();
        m_terminal->insertTerminalText("more");
        QCOMPARE(m_terminal->textCursor().selectionEnd(), end);
        QCOMPARE(m_terminal->textCursor().selectionStart(), 0);
        // And where nothing is selected, nothing becomes so.
        m_terminal->clearTerminal();
        m_terminal->insertRecvData("two\n", false, false);
        m_terminal->insertRecvData("three\n", false, false);
        QVERIFY(!m_terminal->textCursor().hasSelection());
    }

    void followsOnlyAtTheEnd()
    {
        QScrollBar *bar = m_terminal->verticalScrollBar();
        const auto more = [this] { m_terminal->insertTerminalText("line\nline\n"); };
        m_terminal->insertTerminalText(QStringLiteral("line\n").repeated(100));
        QVERIFY(bar->maximum() > 0);
        m_terminal->resize(500, 150); // a smaller window still shows the end
        QCOMPARE(bar->value(), bar->maximum());
        QTest::keyClick(m_terminal.get(), Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(bar->value(), 0);
        more();
        QCOMPARE(bar->value(), 0);
        QTest::keyClick(m_terminal.get(), Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(bar->value(), bar->maximum());
        more();
        QCOMPARE(bar->value(), bar->maximum());

        // What the mouse holds stays below it, and what it has selected until the
        // end is scrolled to.
        int held = bar->value();
        const QPoint word(10, 40);
        QTest::mousePress(m_terminal->windowHandle(), Qt::LeftButton, Qt::NoModifier, word);
        more();
        QCOMPARE(bar->value(), held);
        QTest::mouseRelease(m_terminal->windowHandle(), Qt::LeftButton, Qt::NoModifier, word);
        QCOMPARE(bar->value(), bar->maximum()); // nothing is selected
        held = bar->value();
        QTest::mouseDClick(m_terminal->viewport(), Qt::LeftButton, Qt::NoModifier, word);
        QTest::mouseRelease(m_terminal->viewport(), Qt::LeftButton, Qt::NoModifier, word);
        QCOMPARE(m_terminal->textCursor().selectedText(), QStringLiteral("line"));
        more();
        QCOMPARE(bar->value(), held);
        bar->setValue(bar->maximum());
        more();
        QCOMPARE(bar->value(), bar->maximum());
    }

    // What the user reads stays in place when rows leave at the front, by the bound
    // of log mode or by the display's own.
    void keepsItsPlaceWhenRowsLeave()
    {
        QByteArray full;
        for (int i = 0; full.size() < 20474; ++i)
            full += QByteArray::number(100000 + i) + '\n';
        for (const bool logMode : {true, false}) {
            init();
            const auto show = [&](const QByteArray &bytes) {
                if (logMode)
                    m_terminal->insertRecvData(bytes, false, false);
                else
                    m_terminal->insertTerminalText(QString::fromLatin1(bytes));
            };
            if (!logMode)
                m_terminal->setLimits(20480, 100000);
            show(full);
            QScrollBar *bar = m_terminal->verticalScrollBar();
            bar->setValue(bar->maximum() / 2);
            const auto lineOnTop = [this] {
                return m_terminal->cursorForPosition(QPoint(5, 10)).block().text();
            };
            const QString top = lineOnTop();
            for (int i = 0; i < 20; ++i)
                show("new line\nnew line\n");
            QCOMPARE(lineOnTop(), top);
            QVERIFY(!m_terminal->toPlainText().startsWith("100000"));
        }
    }

    void recordsWhatTheDisplayDrops()
    {
        m_terminal->setLimits(50 * 1000, 500);
        QString all;
        for (int i = 0; i < 60; ++i) {
            QString piece;
            for (int line = 0; line < 40; ++line)
                piece += QStringLiteral("%1 温度 %2\n").arg(i * 40 + line).arg(QString(line * 3, 'x'));
            piece += QString(2600, QChar(0x6E29)); // a paragraph that is stored in pieces
            all += piece;
            m_terminal->insertTerminalText(piece);
            QVERIFY(m_terminal->document()->characterCount() <= 50 * 1000 + 2048); // by up to a block
            QVERIFY(m_terminal->document()->blockCount() <= 500);
        }
        QVERIFY(m_terminal->document()->characterCount() > 40 * 1000 ||
                m_terminal->document()->blockCount() > 400);
        QVERIFY(all.endsWith(m_terminal->toPlainText()));
        QVERIFY(recordedText(m_terminal->received()) == all);
    }

    // Back and forth, a window of it at a time, with lines that are stored in pieces.
    void walksThroughTheRecord()
    {
        m_terminal->setLimits(1300 * 1000, 5000);
        QString all;
        for (int i = 0; i < 600; ++i)
            all += QString::number(i) + QString(i % 5 ? 10 * (i % 5) : 20000, QChar('a' + i % 26)) + '\n';
        m_terminal->insertTerminalText(all);
        auto *document = static_cast<TerminalDocument *>(m_terminal->document());
        QScrollBar *bar = m_terminal->verticalScrollBar();
        const auto shown = [&] { return document->textBetween(0, document->characterCount() - 1); };
        const auto onTop = [&](int first) {
            const int position = m_terminal->cursorForPosition(QPoint(5, 8)).position();
            return first + document->textBetween(0, position).size();
        };
        bool isRight = true; // what the user reads stays
        const auto walk = [&](QScrollBar::SliderAction action) {
            int first = all.indexOf(shown());
            bar->triggerAction(action);
            const int top = onTop(first);
            QCoreApplication::processEvents();
            const QString text = shown();
            first = all.indexOf(text);
            isRight = isRight && first >= 0 && text.size() < 1303 * 1000 && onTop(first) == top;
            return action == QScrollBar::SliderToMinimum ? first > 0 : !all.endsWith(text);
        };
        for (int i = 0; walk(QScrollBar::SliderToMinimum); ++i)
            QVERIFY(i < 10 && isRight);
        for (int i = 0; walk(QScrollBar::SliderToMaximum); ++i)
            QVERIFY(i < 10 && isRight);
        m_terminal->insertTerminalText("more");
        QVERIFY((all += "more").endsWith(shown()));
        QTest::keyClick(m_terminal.get(), Qt::Key_Home, Qt::ControlModifier);
        QVERIFY(all.startsWith(shown()));
        QCOMPARE(onTop(0), 0);
        QTest::keyClick(m_terminal.get(), Qt::Key_End, Qt::ControlModifier);
        QVERIFY(all.endsWith(shown()));
    }

    // As if the text had been inserted at the new width, and what is on top stays.
    void countsTheRowsOfLongLogs()
    {
        QString text;
        for (int i = 0; i < 12000; ++i)
            text += QString::number(i) + QString(i % 700 == 0 ? 5000 : i % 90, 'x') + '\n';
        const auto rows = [](const QTextDocument *document) {
            QVector<qreal> tops{document->documentLayout()->documentSize().height()};
            for (QTextBlock block = document->firstBlock(); block.isValid(); block = block.next())
                tops += document->documentLayout()->blockBoundingRect(block).top();
            return tops;
        };
        enum { Still, Appended, Dropped, Scrolled };
        for (const int change : {Still, Appended, Dropped, Scrolled}) {
            init();
            m_terminal->setLimits(10 * 1000 * 1000, 100 * 1000);
            m_terminal->insertTerminalText(text);
            QScrollBar *bar = m_terminal->verticalScrollBar();
            bar->setValue(bar->maximum() / 2);
            const auto onTop = [&] { return m_terminal->cursorForPosition(QPoint(5, 8)).block().text(); };
            const QString top = onTop();
            m_terminal->resize(250, 300);
            QCOMPARE(onTop(), top);
            if (change == Dropped)
                m_terminal->setLimits(10 * 1000 * 1000, 11 * 1000);
            if (change == Appended || change == Dropped)
                m_terminal->insertTerminalText("more\n" + QString(200, 'y') + "\nend");
            if (change == Scrolled)
                bar->setValue(0);
            QtTerminalWidget fresh;
            fresh.setLimits(10 * 1000 * 1000, 100 * 1000);
            fresh.resize(250, 300);
            fresh.show();
            const auto *document = static_cast<TerminalDocument *>(m_terminal->document());
            fresh.insertTerminalText(document->textBetween(0, document->characterCount() - 1));
            const QVector<qreal> expected = rows(fresh.document());
            if (change != Scrolled)
                QTRY_COMPARE(rows(document).size(), expected.size());
            QTRY_VERIFY(rows(document) == expected);
            QVERIFY(change == Scrolled || onTop() == top);
        }
    }

    // Hexadecimal rows hold whole bytes and are full up to the last one, at any
    // width, font and place, although the text is stored in pieces; so are rows of
    // text and words too long for one.
    void rowsShowNoCuts()
    {
        for (const QString &text :
             {QStringLiteral("0A 1B FF ").repeated(1000), QString(5000, QChar(0x6E29)), QString(5000, 'x'),
              QStringLiteral("some words of several lengths, 温度 25.3 ").repeated(150),
              'x' + QString::fromUcs4(U"\U0001F600").repeated(3000), // of two code units each
              QString(1000, 'x') + QStringLiteral("\n温度\n\n") + QString(4100, 'y')}) {
            init();
            for (int i = 0; i < text.size(); i += 777)
                m_terminal->insertTerminalText(text.mid(i, 777));
            const auto *layout = static_cast<LogLayout *>(m_terminal->document()->documentLayout());
            for (const int width : {600, 300, 451, 451}) {
                m_terminal->resize(width, 300);
                m_terminal->zoomIn(1);
                const qreal margin = m_terminal->document()->documentMargin();
                const int columns = static_cast<int>(
                    (m_terminal->document()->pageSize().width() - 2 * margin) /
                    QFontMetricsF(m_terminal->document()->defaultFont()).horizontalAdvance('0'));
                QMap<int, QString> rows; // by their number, from what stands where
                for (QTextBlock block = m_terminal->document()->firstBlock(); block.isValid();
                     block = block.next()) {
                    QVERIFY(!block.text().right(1).contains(QChar(0xD83D))); // half a character
                    const qreal top = layout->blockBoundingRect(block).top();
                    for (int i = 0; i < block.layout()->lineCount(); ++i) {
                        const QTextLine line = block.layout()->lineAt(i);
                        const qreal y = top + line.y();
                        QCOMPARE(layout->rowTop(block.position() + line.textStart()), y);
                        rows[qRound((y - margin) / layout->lineHeight())] +=
                            block.text().midRef(line.textStart(), line.textLength());
                    }
                }
                QStringList expected;
                for (const QString &paragraph : text.split('\n')) {
                    int start = 0;
                    do {
                        const int end = RowBreaks::row(paragraph, start, columns).end;
                        expected += paragraph.mid(start, end - start);
                        start = end;
                    } while (start < paragraph.size());
                }
                QCOMPARE(QStringList(rows.values()), expected);
                QCOMPARE(layout->documentSize().height(),
                         expected.size() * layout->lineHeight() + 2 * margin);
            }
            QCOMPARE(m_terminal->toPlainText(), text);
            m_terminal->setLimits(3000, 1000); // rows go at the front as a whole
            m_terminal->insertTerminalText(" ");
            QVERIFY(m_terminal->document()->characterCount() < 3000 + 2048);
            QVERIFY((text + ' ').endsWith(m_terminal->toPlainText()));
        }
    }

    // Seen as ink in the middle of each column of a row.
    void drawsCharactersInTheirColumns()
    {
        m_terminal->resize(1200, 1000);
        const auto *layout = static_cast<LogLayout *>(m_terminal->document()->documentLayout());
        const qreal margin = m_terminal->document()->documentMargin();
        const qreal width = QFontMetricsF(m_terminal->document()->defaultFont()).horizontalAdvance('0');
        const auto ink = [&](int row, int columns) {
            const QImage image = m_terminal->viewport()->grab().toImage();
            const QRgb paper = image.pixel(image.width() - 1, image.height() - 1);
            QString seen(columns, '.');
            const int top = qRound(margin + row * layout->lineHeight());
            for (int i = 0; i < columns; ++i)
                for (qreal x = margin + (i + 0.25) * width; x < margin + (i + 0.75) * width; ++x)
                    for (int y = top + 1; y < top + layout->lineHeight() - 1; ++y)
                        if (image.pixel(qRound(x), y) != paper)
                            seen[i] = '#';
            return seen;
        };
        m_terminal->insertTerminalText(QStringLiteral("M MM\n\nMM M\ne\u0301M"));
        QCOMPARE((QStringList{ink(0, 6), ink(1, 6), ink(2, 6)}), (QStringList{"#.##..", "......", "##.#.."}));
        QCOMPARE(ink(3, 6).mid(3), QStringLiteral("...")); // the accent stands above its letter
        QTextCursor some = m_terminal->textCursor();
        some.setPosition(1);
        some.setPosition(5, QTextCursor::KeepAnchor); // with the end of the line
        m_terminal->setTextCursor(some);
        QCOMPARE((QStringList{ink(0, 6), ink(1, 6)}), (QStringList{"#####.", "......"}));
        m_terminal->selectColorBrush(QColor(Qt::blue));
        m_terminal->selectColorText(Qt::yellow);
        m_terminal->setTerminalText(QString(3000, 'M'));
        m_terminal->verticalScrollBar()->setValue(0);
        const int columns = static_cast<int>((m_terminal->viewport()->width() - 2 * margin) / width);
        for (const int row : {0, 2048 / columns, 2999 / columns - 1}) // also where a block ends
            QCOMPARE(ink(row, columns), QString(columns, '#'));
        const QImage image = m_terminal->viewport()->grab().toImage();
        QCOMPARE(image.pixelColor(image.width() - 1, image.height() - 1), QColor(Qt::blue));
    }

    // A turn of the wheel keeps what stands on top, or the end.
    void zoomingKeepsThePlace()
    {
        m_terminal->insertTerminalText(QStringLiteral("a line\n").repeated(500) +
                                       QStringLiteral("a long line ").repeated(300) +
                                       QStringLiteral("\na line").repeated(500));
        QScrollBar *bar = m_terminal->verticalScrollBar();
        const auto *layout = m_terminal->document()->documentLayout();
        const auto blockOnTop = [&] {
            const int position = layout->hitTest(QPointF(0, bar->value()), Qt::FuzzyHit);
            return m_terminal->document()->findBlock(position).blockNumber();
        };
        const auto zoom = [&](int notches) {
            const QPointF at(50, 50);
            QWheelEvent turn(at, m_terminal->viewport()->mapToGlobal(at.toPoint()), QPoint(),
                             QPoint(0, 120 * notches), Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase,
                             false);
            QCoreApplication::sendEvent(m_terminal->viewport(), &turn);
        };
        layout->blockBoundingRect(m_terminal->document()->firstBlock());
        zoom(1);
        QCOMPARE(m_terminal->document()->firstBlock().layout()->lineCount(),
                 1); // what fits is not counted again
        for (const int notches : {1, 3, -4}) {
            bar->setValue(bar->maximum());
            zoom(notches);
            QCOMPARE(bar->value(), bar->maximum());
            zoom(-notches);
            for (const int block : {250, 750}) {
                bar->setValue(qRound(
                    layout->blockBoundingRect(m_terminal->document()->findBlockByNumber(block)).top()));
                zoom(notches);
                QCOMPARE(blockOnTop(), block);
                zoom(-notches);
                QCOMPARE(blockOnTop(), block);
            }
        }
    }

    void hitsTheCharacterUnderThePointer()
    {
        QString text;
        for (int i = 0; i < 30; ++i)
            text += QStringLiteral("%1 %2温度 end\n").arg(i).arg(QString(i * 20, 'x'));
        m_terminal->insertTerminalText(text + QString(3000, 'y')); // which is stored in two blocks
        const int end = m_terminal->document()->characterCount() - 1;
        m_terminal->verticalScrollBar()->setValue(0);
        auto *layout = m_terminal->document()->documentLayout();
        for (int position = 0; position < end; position += 7) {
            const QTextBlock block = m_terminal->document()->findBlock(position);
            const QRectF rect = layout->blockBoundingRect(block);
            const QTextLine line = block.layout()->lineForTextPosition(position - block.position());
            QVERIFY(line.isValid());
            const QPointF point(line.cursorToX(position - block.position()) + 1,
                                rect.top() + line.position().y() + line.height() / 2);
            QCOMPARE(layout->hitTest(point, Qt::FuzzyHit), position);
        }
        QCOMPARE(layout->hitTest(QPointF(5, -50), Qt::FuzzyHit), 0);
        QCOMPARE(layout->hitTest(QPointF(5, 1e6), Qt::FuzzyHit), end);
        for (const QPointF &outside : {QPointF(5, 1e6), QPointF(500, 10), QPointF(1, 10)})
            QCOMPARE(layout->hitTest(outside, Qt::ExactHit), -1);
    }

    // Once for each opening, of text only; what the user chooses ends it, too.
    void asksForTheCodecOfTheText()
    {
        CodecBar bar;
        connect(m_terminal.get(), &QtTerminalWidget::textReceived, &bar, &CodecBar::watch);
        const QByteArray text = QStringLiteral("温度正常").repeated(100).toUtf8();
        const auto asks = [&](bool hex) {
            m_terminal->showReceived(text, QString(), hex);
            return !bar.isHidden();
        };
        QVERIFY(!asks(true));
        Settings::instance().textCodec = 0;
        QVERIFY(!asks(false));
        bar.begin();
        Settings::instance().textCodec = 1;
        QVERIFY(asks(false));
        bar.findChild<QPushButton *>("btnCodecIgnore")->click();
        QVERIFY(!asks(false));
        bar.begin();
        QVERIFY(asks(false));
        Settings::instance().textCodec = 0;
        bar.reload();
        QVERIFY(bar.isHidden());
        // Characters that the messages of two peers cut don't mix.
        bar.begin();
        Settings::instance().textCodec = 1;
        for (int i = 0; i < 200; ++i)
            m_terminal->showMessage(text.left(10), QString(), false, QString::number(i % 2));
        QVERIFY(!bar.isHidden());
    }

private:
    std::unique_ptr<FreshFolder> m_root;
    std::unique_ptr<QtTerminalWidget> m_terminal;
};

QTEST_MAIN(TestTerminal)
#include "test_terminal.moc"
