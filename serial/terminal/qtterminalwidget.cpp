#include "qtterminalwidget.h"

#include "apppaths.h"
#include "fonts.h"
#include "loglayout.h"
#include "selectionkeeper.h"
#include "settings.h"
#include "terminaldocument.h"

#include <QContextMenuEvent>
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

} // namespace

QtTerminalWidget::QtTerminalWidget(QWidget *parent)
    : QTextBrowser(parent)
    , m_received(AppPaths::tmpFolder())
    , m_document(new TerminalDocument(Fonts::monospace(), this))
{
    setObjectName(QStringLiteral("recvBrowser"));
    setDocument(m_document);
    setFont(Fonts::monospace());
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setTextInteractionFlags(Qt::TextSelectableByMouse); // no links in a log
    setAccessibleName(QStringLiteral("接收区"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &QtTerminalWidget::flushSlice);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this](int value) { m_selected = m_selected && value < verticalScrollBar()->maximum(); });
}

QtTerminalWidget::~QtTerminalWidget() = default;

void QtTerminalWidget::setLimits(int characters, int paragraphs)
{
    m_document->setLimits(characters, paragraphs);
}

// ---- incoming

void QtTerminalWidget::showReceived(const QByteArray &bytes, const QString &header, bool hexShow)
{
    m_received.receive(bytes, header, hexShow);
    flushSoon();
}

void QtTerminalWidget::showMessage(const QByteArray &bytes, const QString &header, bool hexShow,
                                   const QString &source)
{
    m_received.receiveMessage(bytes, header, hexShow, source);
    flushSoon();
}

void QtTerminalWidget::endSource(const QString &source)
{
    m_received.endSource(source);
    flushSoon();
}

// The same way in, with a bound on what is shown of text.
void QtTerminalWidget::insertRecvData(QByteArray byData, bool hexShow, bool showLog)
{
    QString header;
    if (showLog)
        header = QTime::currentTime().toString(QStringLiteral("\n[hh:mm:ss.zzz]")) +
                 (hexShow ? QStringLiteral(" Hex >\n") : QStringLiteral(" ASCII >\n"));
    const bool isIdle = !m_received.hasPending();
    m_received.receive(byData, header, hexShow, ReceivedText::Bound::Newest);
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
    m_flushTimer.stop();
    m_received.clear();
    m_document->clear();
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
    do
        apply(m_received.next(kSliceCharacters, codec));
    while (m_received.hasPending() && spent.elapsed() < kFlushBudgetMs);
    apply(m_received.putOff(codec));
    m_flushInterval = bar->maximum() - lengthBefore > bar->pageStep() ? kFloodIntervalMs : kFlushIntervalMs;
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
    const int offset = verticalScrollBar()->value();
    const int rows = m_document->lineCount();
    m_document->dropOldest();
    keepPlace(offset, rows);
    if (follows)
        scrollToEnd();
    const bool isComplete = m_received.isRecordComplete();
    if (std::exchange(m_recordIsComplete, isComplete) && !isComplete)
        emit recordFailed();
}

void QtTerminalWidget::apply(const ReceivedText::Change &change)
{
    switch (change.kind) {
    case ReceivedText::Change::None:
        break;
    case ReceivedText::Change::Append: {
        const SelectionKeeper keeper(this);
        m_document->append(change.text);
        break;
    }
    case ReceivedText::Change::Replace:
        m_document->replace(change.text);
        break;
    case ReceivedText::Change::EditEnds:
        editEnds(change.ends);
        break;
    }
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

// ---- outgoing

QString QtTerminalWidget::toPlainText()
{
    flushAll();
    return m_document->text();
}

QMimeData *QtTerminalWidget::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    auto *copied = new QMimeData;
    copied->setText(m_document->textBetween(selection.selectionStart(), selection.selectionEnd()));
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
    menu->addSeparator();
    // The tab only names the keys; WorkArea has the shortcut.
    menu->addAction(QStringLiteral("清空接收区\tCtrl+L"), this, &QtTerminalWidget::clearRequested);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
}

void QtTerminalWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::MoveToStartOfDocument))
        verticalScrollBar()->triggerAction(QScrollBar::SliderToMinimum);
    else if (event->matches(QKeySequence::MoveToEndOfDocument))
        verticalScrollBar()->triggerAction(QScrollBar::SliderToMaximum);
    else
        QTextBrowser::keyPressEvent(event);
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
    QTextBrowser::resizeEvent(event);
    returnTo(before);
}

void QtTerminalWidget::changeEvent(QEvent *event)
{
    const Place before = place();
    QTextBrowser::changeEvent(event);
    if (event->type() != QEvent::FontChange)
        return;
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
