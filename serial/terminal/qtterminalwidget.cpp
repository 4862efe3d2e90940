#include "qtterminalwidget.h"

#include "apppaths.h"
#include "fonts.h"
#include "loglayout.h"
#include "settings.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QTime>

namespace {

// The display is drawn at most so often (less often while more than a screen
// comes at a time, which nobody can read), and no longer than so at a time.
constexpr int kFlushIntervalMs = 50;
constexpr int kFloodIntervalMs = 200;
constexpr int kFlushBudgetMs = 8;
constexpr int kSliceCharacters = 8 * 1024;
constexpr qint64 kRecordPiece = 256 * 1024; // bytes read back at a time

// Some hundred thousand lines to scroll back in. More would make the document's
// own clean-up (it copies all text now and then) a stall that is felt.
constexpr int kMaxCharacters = 8 * 1024 * 1024;
constexpr int kMaxParagraphs = 200 * 1000;

} // namespace

QtTerminalWidget::QtTerminalWidget(QWidget *parent)
    : QTextBrowser(parent)
    , m_record(AppPaths::tmpFolder(), QStringLiteral("text"))
    , m_maxCharacters(kMaxCharacters)
    , m_maxParagraphs(kMaxParagraphs)
{
    setObjectName(QStringLiteral("recvBrowser"));
    auto *log = new QTextDocument(this);
    log->setUndoRedoEnabled(false);
    log->setDefaultFont(Fonts::monospace());
    log->setDocumentLayout(new LogLayout(log));
    setDocument(log);
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

void QtTerminalWidget::setBounds(int characters, int paragraphs)
{
    m_maxCharacters = characters;
    m_maxParagraphs = paragraphs;
}

// ---- what comes in

void QtTerminalWidget::showReceived(const QByteArray &bytes, const QString &header, bool hexShow)
{
    m_queue.push(bytes, header, hexShow);
    flushSoon();
}

void QtTerminalWidget::showMessage(const QByteArray &bytes, const QString &header, bool hexShow,
                                   const QString &source)
{
    m_queue.pushMessage(bytes, header, hexShow, source);
    flushSoon();
}

void QtTerminalWidget::endSource(const QString &source)
{
    m_queue.endSource(source);
    flushSoon();
}

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

qint64 QtTerminalWidget::queuedBytes() const
{
    return m_queue.bytes();
}

void QtTerminalWidget::flushSlice()
{
    QElapsedTimer spent;
    spent.start();
    const bool wasAtEnd = atEnd();
    const QScrollBar *bar = verticalScrollBar();
    const int lengthBefore = bar->maximum();
    bool logDue = false;
    do {
        const ReceiveQueue::Slice slice = m_queue.take(kSliceCharacters, Settings::instance().textCodec);
        record(slice.text);
        if (logDue && !slice.log)
            showLogView();
        m_receiveBuffer.append(slice.bytes);
        logDue = slice.log;
        if (!slice.log && !slice.text.isEmpty())
            appendText(slice.text);
    } while (!m_queue.isEmpty() && spent.elapsed() < kFlushBudgetMs);
    if (logDue)
        showLogView();
    m_flushInterval = bar->maximum() - lengthBefore > bar->pageStep() ? kFloodIntervalMs : kFlushIntervalMs;
    trimFront();
    followEnd(wasAtEnd);
    m_lastFlush.start();
    if (!m_queue.isEmpty())
        m_flushTimer.start(2); // lets input and painting in between
}

void QtTerminalWidget::flushAll()
{
    while (!m_queue.isEmpty())
        flushSlice();
    m_flushTimer.stop();
}

void QtTerminalWidget::setTerminalText(QString strText)
{
    clearTerminal();
    const QString text = ReceiveBuffer::withPlainLineEnds(strText);
    record(text);
    replaceText(text);
    followEnd(true);
}

void QtTerminalWidget::insertTerminalText(QString strText)
{
    flushAll();
    const bool wasAtEnd = atEnd();
    if (m_directInsert) {
        const QString text = ReceiveBuffer::withPlainLineEnds(strText);
        record(text);
        appendText(text);
    } else {
        // Each line keeps only what follows its last carriage return, as a
        // terminal would show it.
        m_pendingText += strText;
        QStringList lines = m_pendingText.split(QStringLiteral("\r\n"));
        for (QString &line : lines)
            line = line.mid(line.lastIndexOf(QLatin1Char('\r')) + 1);
        const QString text = ReceiveBuffer::withPlainLineEnds(lines.join(QLatin1Char('\n')));
        m_record.clear(); // lines that were shown before may have changed
        record(text);
        replaceText(text);
    }
    trimFront();
    followEnd(wasAtEnd);
}

void QtTerminalWidget::insertRecvData(QByteArray byData, bool hexShow, bool showLog)
{
    QString header;
    if (showLog)
        header = QTime::currentTime().toString(QStringLiteral("\n[hh:mm:ss.zzz]")) +
                 (hexShow ? QStringLiteral(" Hex >\n") : QStringLiteral(" ASCII >\n"));
    const bool idle = m_queue.isEmpty();
    if (hexShow)
        m_queue.push(byData, header, true);
    else
        m_queue.pushLog(byData, header);
    if (idle)
        flushSlice();
    else
        flushSoon();
}

void QtTerminalWidget::clearTerminal()
{
    m_queue.clear();
    m_flushTimer.stop();
    m_pendingText.clear();
    m_receiveBuffer.clear();
    m_bufferShown = false;
    m_record.clear();
    document()->clear();
}

// ---- the record

void QtTerminalWidget::record(const QString &text)
{
    if (text.isEmpty())
        return;
    const bool wasComplete = isRecordComplete();
    const QByteArray bytes = text.toUtf8();
    m_record.append(bytes.constData(), bytes.size());
    if (wasComplete && !isRecordComplete())
        emit recordFailed();
}

bool QtTerminalWidget::isRecordComplete() const
{
    return m_record.state() != ByteSpool::State::Incomplete;
}

QtTerminalWidget::Reader::Reader(const QtTerminalWidget &terminal)
    : m_record(terminal.m_record)
    , m_end(m_record.size())
{
}

QString QtTerminalWidget::Reader::next()
{
    QString text;
    while (text.isEmpty() && m_offset < m_end && !m_failed) {
        const QByteArray bytes = m_record.read(m_offset, qMin(kRecordPiece, m_end - m_offset), &m_failed);
        if (bytes.isEmpty())
            break; // cleared meanwhile
        m_offset += bytes.size();
        text = m_decoder.decode(bytes.constData(), bytes.size(), TextCodec::Utf8);
    }
    return text;
}

// ---- the document

bool QtTerminalWidget::atEnd() const
{
    // Dragging marked text away takes the release with it.
    const bool selecting = m_selecting && (QGuiApplication::mouseButtons() & Qt::LeftButton);
    if (selecting || (m_selected && textCursor().hasSelection()))
        return false;
    const QScrollBar *bar = verticalScrollBar();
    return bar->value() >= bar->maximum();
}

void QtTerminalWidget::followEnd(bool wasAtEnd)
{
    if (wasAtEnd)
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

// ---- what goes out

bool QtTerminalWidget::isEmpty() const
{
    return m_queue.isEmpty() && m_record.size() == 0;
}

// The text between two positions; blocks that continue a paragraph follow
// without a line end.
QString QtTerminalWidget::textBetween(int start, int end) const
{
    QString text;
    text.reserve(qMax(0, end - start));
    for (QTextBlock block = document()->findBlock(start); block.isValid() && block.position() < end;
         block = block.next()) {
        if (block.position() > start && !LogLayout::isContinuation(block))
            text += QLatin1Char('\n');
        const QString line = block.text();
        const int from = qMax(0, start - block.position());
        text += line.midRef(from, qMin(line.size(), end - block.position()) - from);
    }
    // The end of the last paragraph belongs to the text when it is inside.
    const QTextBlock last = document()->findBlock(end);
    if (last.isValid() && last.position() == end && end > start && !LogLayout::isContinuation(last))
        text += QLatin1Char('\n');
    return text;
}

QString QtTerminalWidget::toPlainText()
{
    flushAll();
    return textBetween(0, document()->characterCount() - 1);
}

QMimeData *QtTerminalWidget::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    auto *copied = new QMimeData;
    copied->setText(textBetween(selection.selectionStart(), selection.selectionEnd()));
    return copied;
}

// ---- looks

void QtTerminalWidget::selectColorBrush(const QBrush &brush)
{
    QPalette colours = palette();
    colours.setBrush(QPalette::Base, brush);
    setPalette(colours);
}

void QtTerminalWidget::selectColorText(const QColor &colour)
{
    QPalette colours = palette();
    colours.setColor(QPalette::Text, colour);
    setPalette(colours);
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

// What the user marks must not run away below the pointer.
void QtTerminalWidget::mousePressEvent(QMouseEvent *event)
{
    QTextBrowser::mousePressEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_pressedAtEnd = atEnd();
    m_selecting = true;
}

void QtTerminalWidget::mouseReleaseEvent(QMouseEvent *event)
{
    QTextBrowser::mouseReleaseEvent(event);
    if (event->button() != Qt::LeftButton)
        return;
    m_selecting = false;
    m_selected = textCursor().hasSelection();
    followEnd(m_pressedAtEnd && !m_selected); // a mere click
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
    if (document()->defaultFont() != font())
        document()->setDefaultFont(font());
    returnTo(before);
}

LogLayout *QtTerminalWidget::logLayout() const
{
    return static_cast<LogLayout *>(document()->documentLayout());
}

QtTerminalWidget::Place QtTerminalWidget::place() const
{
    const int top = verticalScrollBar()->value();
    const int position = logLayout()->hitTest(QPointF(0, top), Qt::FuzzyHit);
    return {atEnd(), position, top - qRound(logLayout()->rowTop(position))};
}

void QtTerminalWidget::returnTo(const Place &place)
{
    if (!place.atEnd)
        verticalScrollBar()->setValue(qRound(logLayout()->rowTop(place.position)) +
                                      qMin(place.offset, static_cast<int>(logLayout()->lineHeight())));
    followEnd(place.atEnd);
}
