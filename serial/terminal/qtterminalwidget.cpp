#include "qtterminalwidget.h"

#include "apppaths.h"
#include "fonts.h"
#include "loglayout.h"
#include "matchmarks.h"
#include "newestbutton.h"
#include "rulemarks.h"
#include "selectionkeeper.h"
#include "settings.h"
#include "terminaldocument.h"

#include <QContextMenuEvent>
#include <QDateTime>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QTime>

namespace {

// The shortest time from one flush to the next, longer while more than a screen
// arrives at a time, which cannot be read; and the longest time of one flush.
constexpr int kFlushIntervalMs = 50;
constexpr int kFloodIntervalMs = 200;
constexpr int kFlushBudgetMs = 8;
constexpr int kSliceCharacters = 8 * 1024;

// When more lines than this arrive at a time, only so many of the newest are made
// into paragraphs: the others would scroll by unseen.
constexpr int kUnseenLines = 500;
constexpr int kKeptLines = 200;

const auto kOnlyStream = QStringLiteral("stream"); // of a link with one peer

} // namespace

QtTerminalWidget::QtTerminalWidget(QWidget *parent)
    : QTextBrowser(parent)
    , m_received(AppPaths::tmpFolder())
    , m_document(new TerminalDocument(Fonts::monospace(), this))
    , m_window(m_document, &m_received)
    , m_newest(new NewestButton(this))
    , m_margin(new LogMargin(m_document, m_window, m_received.lines(), this))
    , m_textMarks(m_document->layout(), this)
    , m_baseMarks(&m_textMarks, m_window, m_received, this)
    , m_marks(new MatchMarks(&m_textMarks, m_window, verticalScrollBar()))
{
    setObjectName(QStringLiteral("recvBrowser"));
    setDocument(m_document);
    setFont(Fonts::monospace());
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse); // no links in a log
    setAccessibleName(QStringLiteral("接收区"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(m_newest, &NewestButton::clicked, this, &QtTerminalWidget::goToNewest);
    auto *rules = new RuleMarks(&m_textMarks, m_window, m_received.lines(), this);
    connect(rules, &RuleMarks::gaveUp, this, &QtTerminalWidget::ruleGaveUp);
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &QtTerminalWidget::flushSlice);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, [this](int value) {
        m_selected = m_selected && value < verticalScrollBar()->maximum();
        LogLayout *layout = m_document->layout();
        const int row = static_cast<int>(value / layout->lineHeight());
        const int rows = static_cast<int>(viewport()->height() / layout->lineHeight()) + 1;
        if (!layout->isCounted(row) || !layout->isCounted(row + rows))
            layout->countAll();
        m_margin->update();
    });
    connect(m_document->layout(), &LogLayout::aboutToCount, this, [this] { m_placeToKeep = place(); });
    connect(m_document->layout(), &LogLayout::counted, this, [this] { returnTo(m_placeToKeep); });
    // Queued: the bar has not moved yet.
    connect(verticalScrollBar(), &QScrollBar::actionTriggered, this, &QtTerminalWidget::showMoreRows,
            Qt::QueuedConnection);
}

QtTerminalWidget::~QtTerminalWidget() = default;

void QtTerminalWidget::setLimits(int characters, int paragraphs)
{
    m_document->setLimits(characters, paragraphs);
}

// ---- incoming

void QtTerminalWidget::showReceived(const QByteArray &bytes, const QString &header, bool hexShow)
{
    receive({bytes, header, QString(), ReceiveQueue::Kind::Stream, hexShow});
    flushSoon();
}

void QtTerminalWidget::showMessage(const QByteArray &bytes, const QString &header, bool hexShow,
                                   const QString &source)
{
    receive({bytes, header, source, ReceiveQueue::Kind::Message, hexShow});
    flushSoon();
}

void QtTerminalWidget::endSource(const QString &source)
{
    receive({QByteArray(), QString(), source, ReceiveQueue::Kind::SourceEnd});
    flushSoon();
}

void QtTerminalWidget::showSent(const QByteArray &bytes, bool hexShow, bool isLogMode)
{
    ReceiveQueue::Chunk chunk{bytes, QString(), QString(), ReceiveQueue::Kind::Sent, hexShow};
    chunk.bound = isLogMode ? ReceivedText::Bound::Newest : ReceivedText::Bound::None;
    receive(chunk);
    flushSoon();
}

void QtTerminalWidget::receive(ReceiveQueue::Chunk chunk)
{
    chunk.arrivalMs = QDateTime::currentMSecsSinceEpoch();
    if (!chunk.bytes.isEmpty() && chunk.kind != ReceiveQueue::Kind::Sent)
        m_showsHex = chunk.hex;
    if (!chunk.hex && chunk.kind == ReceiveQueue::Kind::Stream)
        emit textReceived(chunk.bytes, kOnlyStream);
    else if (!chunk.hex && chunk.kind == ReceiveQueue::Kind::Message)
        emit textReceived(chunk.bytes, chunk.source);
    m_received.receive(chunk);
}

// The same way in, with a bound on what is shown of text.
void QtTerminalWidget::insertRecvData(QByteArray byData, bool hexShow, bool showLog)
{
    QString header;
    if (showLog)
        header = QTime::currentTime().toString(QStringLiteral("\n[hh:mm:ss.zzz]")) +
                 (hexShow ? QStringLiteral(" Hex >\n") : QStringLiteral(" ASCII >\n"));
    const bool isIdle = !m_received.hasPending();
    receive({byData, header, QString(), ReceiveQueue::Kind::Stream, hexShow, ReceivedText::Bound::Newest});
    if (isIdle)
        flushSlice();
    else
        flushSoon();
}

void QtTerminalWidget::setTerminalText(QString strText)
{
    clearTerminal();
    showNow(m_received.setText(strText));
    scrollToEnd();
}

void QtTerminalWidget::insertTerminalText(QString strText)
{
    flushAll();
    showNow(m_directInsert ? m_received.appendText(strText) : m_received.appendLines(strText));
}

void QtTerminalWidget::clearTerminal()
{
    m_received.clear();
    clearShown();
}

void QtTerminalWidget::clearShown()
{
    m_flushTimer.stop();
    m_window.clear();
    m_newest->setRowsSeen(0);
    m_document->clear();
    updateNewestButton();
    emit recordChanged();
}

// ---- from text to display

void QtTerminalWidget::flushSoon()
{
    if (m_flushTimer.isActive())
        return;
    const qint64 sinceLast = m_lastFlush.isValid() ? m_lastFlush.elapsed() : m_flushInterval;
    if (sinceLast >= m_flushInterval)
        flushSlice();
    else
        m_flushTimer.start(static_cast<int>(m_flushInterval - sinceLast));
}

void QtTerminalWidget::flushSlice()
{
    QElapsedTimer spent;
    spent.start();
    const bool follows = followsEnd();
    const QScrollBar *bar = verticalScrollBar();
    const int lengthBefore = bar->maximum();
    const int codec = Settings::instance().textCodec;
    QString added;
    do {
        const ReceivedText::Change change = m_received.next(kSliceCharacters, codec);
        if (change.kind == ReceivedText::Change::Append && change.removed <= added.size()) {
            added.chop(change.removed);
            added += change.text;
        } else {
            append(std::exchange(added, QString()));
            apply(change);
        }
    } while (m_received.hasPending() && spent.elapsed() < kFlushBudgetMs);
    // Only what the record holds may be left out.
    const bool isFlood = added.count(QLatin1Char('\n')) > kUnseenLines;
    const bool isUnseen = isFlood && follows && m_window.takesChanges() && m_received.isRecordComplete() &&
                          m_window.showNewest(kKeptLines);
    if (!isUnseen)
        append(added);
    apply(m_received.putOff(codec));
    m_flushInterval =
        isFlood || bar->maximum() - lengthBefore > bar->pageStep() ? kFloodIntervalMs : kFlushIntervalMs;
    finishShowing(follows);
    m_lastFlush.start();
    if (m_received.hasPending())
        m_flushTimer.start(2); // input and painting come in between
}

void QtTerminalWidget::flushAll()
{
    while (m_received.hasPending())
        flushSlice();
    m_flushTimer.stop();
}

void QtTerminalWidget::showNow(const ReceivedText::Change &change)
{
    const bool follows = followsEnd();
    apply(change);
    finishShowing(follows);
}

void QtTerminalWidget::finishShowing(bool follows)
{
    dropOldest();
    if (follows)
        scrollToEnd();
    const bool isComplete = m_received.isRecordComplete();
    if (std::exchange(m_recordIsComplete, isComplete) && !isComplete)
        emit recordFailed();
    if (m_received.hasSeenSequences() && !std::exchange(m_hasSeenSequences, true))
        emit sequencesSeen();
    m_margin->update();
    updateNewestButton();
    emit recordChanged();
}

void QtTerminalWidget::dropOldest()
{
    const int offset = verticalScrollBar()->value();
    const int rows = m_document->lineCount();
    m_document->dropOldest();
    keepPlace(offset, rows);
}

void QtTerminalWidget::apply(const ReceivedText::Change &change)
{
    if (!m_window.takesChanges())
        return; // it is in the record
    switch (change.kind) {
    case ReceivedText::Change::None:
        break;
    case ReceivedText::Change::Append:
        m_document->removeEnd(change.removed);
        append(change.text);
        break;
    case ReceivedText::Change::Replace:
        m_document->replace(change.text);
        m_window.replaced();
        break;
    case ReceivedText::Change::EditEnds:
        editEnds(change.ends);
        break;
    }
}

void QtTerminalWidget::append(const QString &text)
{
    if (text.isEmpty() || !m_window.takesChanges())
        return;
    const SelectionKeeper keeper(this);
    m_document->append(text);
}

void QtTerminalWidget::editEnds(const ReceiveBuffer::Edit &edit)
{
    const int offset = verticalScrollBar()->value();
    {
        const SelectionKeeper keeper(this);
        m_document->replaceEnd(edit.backRemoved, edit.backInserted);
    }
    const int rows = m_document->lineCount();
    m_document->replaceFront(edit.frontRemoved, edit.frontInserted);
    keepPlace(offset, rows);
}

// Rows that left at the front must not move what the user reads.
void QtTerminalWidget::keepPlace(int offset, int rowsBefore)
{
    const int gone = rowsBefore - m_document->lineCount();
    verticalScrollBar()->setValue(offset - static_cast<int>(gone * m_document->layout()->lineHeight()));
}

bool QtTerminalWidget::followsEnd() const
{
    // The mouse holds the text below it. A drag of selected text away ends
    // without a release.
    if (m_window.isDetached())
        return false;
    const bool selecting = m_selecting && (QGuiApplication::mouseButtons() & Qt::LeftButton);
    if (selecting || (m_selected && textCursor().hasSelection()))
        return false;
    const QScrollBar *bar = verticalScrollBar();
    return bar->value() >= bar->maximum();
}

void QtTerminalWidget::scrollToEnd()
{
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

// ---- rows

// More rows where the user has scrolled to the first or the last one.
void QtTerminalWidget::showMoreRows()
{
    QScrollBar *bar = verticalScrollBar();
    const int offset = bar->value();
    if (offset <= bar->minimum()) {
        const int added = m_window.showOlder();
        bar->setValue(offset + static_cast<int>(added * m_document->layout()->lineHeight()));
    } else if (offset >= bar->maximum() && m_window.isDetached()) {
        const SelectionKeeper keeper(this);
        m_window.showNewer();
        dropOldest();
    }
    updateNewestButton();
}

void QtTerminalWidget::setFilter(const LineFilter *filter)
{
    flushAll();
    const bool follows = followsEnd();
    const qint64 line = topPlace().line;
    m_window.setFilter(filter);
    m_margin->setNumbers(filter);
    updateMargin();
    m_newest->setRowsSeen(m_window.rowCount());
    if (follows)
        return filterChanged();
    m_window.showAround(m_window.rowOf(line));
    const QTextBlock block = m_window.blockOf(m_window.rowOf(line));
    if (block.isValid())
        verticalScrollBar()->setValue(qRound(m_document->layout()->rowTop(block.position())));
    updateNewestButton();
}

void QtTerminalWidget::filterChanged()
{
    m_window.showNewest();
    scrollToEnd();
    updateNewestButton();
}

void QtTerminalWidget::filterGrew()
{
    const bool follows = followsEnd();
    const SelectionKeeper keeper(this);
    if (m_window.appendFiltered(follows))
        dropOldest();
    else
        m_window.showNewest(kKeptLines);
    if (follows)
        scrollToEnd();
    updateNewestButton();
}

void QtTerminalWidget::goToNewest()
{
    QTextCursor cursor = textCursor();
    cursor.clearSelection();
    setTextCursor(cursor);
    m_selected = false;
    flushAll();
    if (m_window.isDetached())
        m_window.showNewest();
    scrollToEnd();
    updateNewestButton();
}

void QtTerminalWidget::goToOldest()
{
    if (m_window.firstRow() > 0)
        m_window.showFrom(0);
    verticalScrollBar()->setValue(verticalScrollBar()->minimum());
    updateNewestButton();
}

qint64 QtTerminalWidget::lineAt(const QPointF &point) const
{
    const int position = m_document->layout()->hitTest(point, Qt::FuzzyHit);
    return m_window.lineOf(m_window.rowOf(m_document->findBlock(position)));
}

LineSearch::Place QtTerminalWidget::topPlace() const
{
    return {lineAt(QPointF(0, verticalScrollBar()->value() + m_document->layout()->lineHeight() / 2)), 0};
}

void QtTerminalWidget::showMatch(const LineSearch::Match &match)
{
    const qint64 row = m_window.rowOf(match.place.line);
    if (!m_window.blockOf(row).isValid())
        m_window.showAround(row);
    const QTextBlock block = m_window.blockOf(row);
    if (!block.isValid())
        return;
    m_document->layout()->countAll();
    const int column = qMax(0, match.place.column - m_window.droppedOf(block));
    QTextCursor cursor(m_document);
    cursor.setPosition(TerminalDocument::positionIn(block, column));
    cursor.setPosition(TerminalDocument::positionIn(block, column + match.length), QTextCursor::KeepAnchor);
    const LogLayout *layout = m_document->layout();
    const int top = qRound(layout->rowTop(cursor.selectionStart()));
    QScrollBar *bar = verticalScrollBar();
    const int before = bar->value();
    const bool isInView = top >= before && top + layout->lineHeight() <= before + viewport()->height();
    setTextCursor(cursor); // scrolls to its edge
    bar->setValue(isInView ? before : top - viewport()->height() / 3);
    m_selected = true;
    updateNewestButton();
}

void QtTerminalWidget::markMatches(const LineSearch &search)
{
    m_marks->show(search);
    viewport()->update();
}

// ---- beside the rows

void QtTerminalWidget::setView(const ViewOptions &view)
{
    const bool isOtherText = !(view.text == m_view.text);
    m_view = view;
    LineStamp stamp = m_margin->stamp();
    stamp.time = view.time;
    stamp.hasDirection = view.showsSent;
    m_margin->setStamp(stamp);
    updateMargin();
    if (isOtherText) {
        m_received.setOptions(view.text);
        showAgain();
    }
    m_baseMarks.show(view.text.isOn(), view.showsSent);
    viewport()->update();
}

LineStamp QtTerminalWidget::stamp() const
{
    LineStamp stamp = m_margin->stamp();
    if (stamp.time == LineStamp::Time::None)
        stamp.time = LineStamp::Time::Clock;
    return stamp;
}

bool QtTerminalWidget::showAgain()
{
    if (!m_received.beginAgain())
        return false;
    clearShown();
    emit recordBegunAgain();
    flushSoon();
    return true;
}

void QtTerminalWidget::beginTimes()
{
    LineStamp stamp = m_margin->stamp();
    stamp.openingMs = QDateTime::currentMSecsSinceEpoch();
    m_margin->setStamp(stamp);
}

void QtTerminalWidget::updateMargin()
{
    m_margin->setFont(font());
    setViewportMargins(m_margin->wantedWidth(), 0, 0, 0);
    m_margin->placeBeside(viewport()->geometry());
}

void QtTerminalWidget::updateNewestButton()
{
    const QScrollBar *bar = verticalScrollBar();
    m_newest->follow(m_window.rowCount(), m_window.isDetached() || bar->value() < bar->maximum());
}

// ---- outgoing

QString QtTerminalWidget::toPlainText()
{
    flushAll();
    return m_window.text();
}

QString QtTerminalWidget::selectedText(bool withStamps) const
{
    const QTextCursor selection = textCursor();
    const int start = selection.selectionStart();
    const int end = selection.selectionEnd();
    const bool isAll = start == 0 && end == m_document->characterCount() - 1 && !m_window.isFiltered();
    if (isAll && !withStamps)
        return m_window.text(); // also what is not in the document
    return withStamps ? m_margin->withStamps(start, end, stamp()) : m_document->textBetween(start, end);
}

QMimeData *QtTerminalWidget::createMimeDataFromSelection() const
{
    auto *copied = new QMimeData;
    copied->setText(selectedText(m_view.copiesStamps && !m_margin->stamp().isEmpty()));
    return copied;
}

// ---- looks and input

void QtTerminalWidget::selectColorBrush(const QBrush &brush)
{
    QPalette colors = palette();
    colors.setBrush(QPalette::Base, brush);
    setPalette(colors);
}

void QtTerminalWidget::selectColorText(const QColor &color)
{
    QPalette colors = palette();
    colors.setColor(QPalette::Text, color);
    setPalette(colors);
}

void QtTerminalWidget::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    menu->addAction(QStringLiteral("查找\tCtrl+F"), this, &QtTerminalWidget::findRequested);
    menu->addSeparator();
    // The tab only names the keys; WorkArea has the shortcut.
    menu->addAction(QStringLiteral("清空接收区\tCtrl+L"), this, &QtTerminalWidget::clearRequested);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void QtTerminalWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::MoveToStartOfDocument))
        goToOldest();
    else if (event->matches(QKeySequence::MoveToEndOfDocument))
        goToNewest();
    else
        QTextBrowser::keyPressEvent(event);
}

void QtTerminalWidget::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (m_window.isFiltered())
        emit lineChosen(lineAt(QPointF(0, event->y() + verticalScrollBar()->value())));
    else
        QTextBrowser::mouseDoubleClickEvent(event);
}

// What the user selects stays below the pointer.
void QtTerminalWidget::mousePressEvent(QMouseEvent *event)
{
    QTextBrowser::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAtEnd = followsEnd();
    m_selecting = true;
}

void QtTerminalWidget::mouseReleaseEvent(QMouseEvent *event)
{
    QTextBrowser::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_selecting = false;
    m_selected = textCursor().hasSelection();
    if (m_pressedAtEnd && !m_selected) // a click
        scrollToEnd();
}

void QtTerminalWidget::resizeEvent(QResizeEvent *event)
{
    const Place before = place();
    m_document->layout()->setFocus(before.isAtEnd ? m_document->characterCount() - 1 : before.position);
    QTextBrowser::resizeEvent(event);
    returnTo(before);
    updateMargin();
    updateNewestButton();
}

void QtTerminalWidget::changeEvent(QEvent *event)
{
    const Place before = place();
    m_document->layout()->setFocus(before.isAtEnd ? m_document->characterCount() - 1 : before.position);
    QTextBrowser::changeEvent(event);
    if (event->type() != QEvent::FontChange)
        return;
    updateMargin();
    returnTo(before);
}

QtTerminalWidget::Place QtTerminalWidget::place() const
{
    const LogLayout *layout = m_document->layout();
    const int top = verticalScrollBar()->value();
    const int position = layout->hitTest(QPointF(0, top), Qt::FuzzyHit);
    return {followsEnd(), position, top - qRound(layout->rowTop(position))};
}

void QtTerminalWidget::returnTo(const Place &place)
{
    const LogLayout *layout = m_document->layout();
    if (place.isAtEnd)
        scrollToEnd();
    else
        verticalScrollBar()->setValue(qRound(layout->rowTop(place.position)) +
                                      qMin(place.offset, static_cast<int>(layout->lineHeight())));
}
