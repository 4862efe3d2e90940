#include "serial/qtterminalwidget.h"

#include "app/apppaths.h"
#include "app/settings.h"
#include "app/startup.h"
#include "serial/loglayout.h"
#include "serial/selectionkeeper.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QTime>

namespace {

// Paragraphs above this length are stored as several blocks: drawing and
// inserting cost by the block.
constexpr int kLongestBlock = 2048;

// The display is drawn at most so often (less often while more than a screen
// comes at a time, which nobody can read), and no longer than so at a time.
constexpr int kFlushIntervalMs = 50;
constexpr int kFloodIntervalMs = 125;
constexpr int kFlushBudgetMs = 8;
constexpr int kSliceCharacters = 8 * 1024;

// Some hundred thousand lines to scroll back in. More would make the document's
// own clean-up (it copies all text now and then) a stall that is felt.
constexpr int kMostCharacters = 8 * 1024 * 1024;
constexpr int kMostParagraphs = 200 * 1000;

} // namespace

QtTerminalWidget::QtTerminalWidget(QWidget *parent)
    : QTextBrowser(parent)
    , m_history(AppPaths::tmpFolder(), QStringLiteral("text"))
    , m_mostCharacters(kMostCharacters)
    , m_mostParagraphs(kMostParagraphs)
{
    setObjectName(QStringLiteral("recvBrowser"));
    auto *log = new QTextDocument(this);
    log->setUndoRedoEnabled(false);
    log->setDefaultFont(Startup::monospaceFont());
    log->setDocumentLayout(new LogLayout(log));
    setDocument(log);
    setFont(Startup::monospaceFont());
    setReadOnly(true);
    setUndoRedoEnabled(false);
    setOpenLinks(false);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, &QtTerminalWidget::flushSlice);
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this,
            [this](int value) { m_selected = m_selected && value < verticalScrollBar()->maximum(); });
}

QtTerminalWidget::~QtTerminalWidget() = default;

void QtTerminalWidget::setBounds(int characters, int paragraphs)
{
    m_mostCharacters = characters;
    m_mostParagraphs = paragraphs;
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
    do {
        const QString text = m_queue.take(kSliceCharacters, Settings::instance().textCodec);
        if (!text.isEmpty())
            appendText(text);
    } while (!m_queue.isEmpty() && spent.elapsed() < kFlushBudgetMs);
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
    replaceText(ReceiveBuffer::withPlainLineEnds(strText));
    followEnd(true);
}

void QtTerminalWidget::insertTerminalText(QString strText)
{
    flushAll();
    const bool wasAtEnd = atEnd();
    if (m_directInsert) {
        appendText(ReceiveBuffer::withPlainLineEnds(strText));
    } else {
        // Each line keeps only what follows its last carriage return, as a
        // terminal would show it.
        m_pendingText += strText;
        QStringList lines = m_pendingText.split(QStringLiteral("\r\n"));
        for (QString &line : lines)
            line = line.mid(line.lastIndexOf(QLatin1Char('\r')) + 1);
        replaceText(ReceiveBuffer::withPlainLineEnds(lines.join(QLatin1Char('\n'))));
    }
    trimFront();
    followEnd(wasAtEnd);
}

void QtTerminalWidget::insertRecvData(QByteArray byData, bool hexShow, bool showLog)
{
    const QString stamp = QTime::currentTime().toString(QStringLiteral("\n[hh:mm:ss.zzz]"));
    if (hexShow) {
        showReceived(byData, showLog ? stamp + QStringLiteral(" Hex >\n") : QString(), true);
        return;
    }
    if (showLog && m_receiveBuffer.atLineStart())
        byData.prepend((stamp + QStringLiteral(" ASCII >\n")).toLatin1());
    const ReceiveBuffer::Edit edit = m_receiveBuffer.append(byData, Settings::instance().textCodec);
    if (m_readers > 0) { // what is being read stays until it was
        m_bufferShown = false;
        m_bufferWaits = true;
        return;
    }
    dropQueue(); // would be replaced together with what is shown
    if (m_bufferShown) {
        const bool wasAtEnd = atEnd();
        applyEdit(edit);
        followEnd(wasAtEnd);
    } else {
        showBuffer();
    }
}

void QtTerminalWidget::showBuffer()
{
    const bool wasAtEnd = atEnd();
    replaceText(m_receiveBuffer.text());
    m_bufferShown = true;
    m_bufferWaits = false;
    followEnd(wasAtEnd);
}

void QtTerminalWidget::dropQueue()
{
    m_queue.clear();
    m_flushTimer.stop();
}

void QtTerminalWidget::clearTerminal()
{
    dropQueue();
    m_pendingText.clear();
    m_receiveBuffer.clear();
    m_bufferShown = false;
    m_bufferWaits = false;
    m_history.clear();
    document()->clear();
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

// Appends text whose line ends are all "\n" as it stands, storing very long
// paragraphs as several blocks.
void QtTerminalWidget::appendText(const QString &text)
{
    m_bufferShown = false;
    QTextBlock block = document()->lastBlock();
    int inBlock = block.length() - 1;

    // Cut at the block length first; the cuts' places are marked afterwards.
    QString stored;
    stored.reserve(text.size() + text.size() / kLongestBlock + 1);
    QVector<int> cuts; // ordinal of the new blocks that continue a paragraph
    int ordinal = 0;
    int start = 0;
    while (start < text.size()) {
        int end = text.indexOf(QLatin1Char('\n'), start);
        const bool lineEnds = end >= 0;
        if (!lineEnds)
            end = text.size();
        while (inBlock + end - start > kLongestBlock) {
            int piece = qMax(0, kLongestBlock - inBlock);
            if (piece > 0 && text.at(start + piece - 1).isHighSurrogate())
                --piece;
            stored += text.midRef(start, piece);
            stored += QLatin1Char('\n');
            cuts.append(++ordinal);
            start += piece;
            inBlock = 0;
        }
        stored += text.midRef(start, end - start);
        inBlock += end - start;
        if (lineEnds) {
            stored += QLatin1Char('\n');
            ++ordinal;
            inBlock = 0;
        }
        start = end + 1;
    }

    const SelectionKeeper keeper(this);
    const int firstNew = block.blockNumber();
    QTextCursor cursor(document());
    cursor.beginEditBlock(); // outside of one, moving a cursor lays out its block
    cursor.setPosition(document()->characterCount() - 1);
    cursor.insertText(stored);
    cursor.endEditBlock();
    for (const int cut : qAsConst(cuts))
        LogLayout::setContinuation(document()->findBlockByNumber(firstNew + cut), true);
}

void QtTerminalWidget::applyEdit(const ReceiveBuffer::Edit &edit)
{
    QTextCursor cursor(document());
    const int offset = verticalScrollBar()->value();
    {
        const SelectionKeeper keeper(this);
        const int end = document()->characterCount() - 1;
        cursor.beginEditBlock();
        cursor.setPosition(end - edit.backRemoved);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        cursor.insertText(edit.backInserted);
        cursor.endEditBlock();
    }
    const int linesAfterBack = document()->lineCount();
    if (edit.frontRemoved > 0 || !edit.frontInserted.isEmpty()) {
        cursor.beginEditBlock();
        cursor.setPosition(0);
        cursor.setPosition(edit.frontRemoved, QTextCursor::KeepAnchor);
        cursor.removeSelectedText();
        cursor.insertText(edit.frontInserted);
        cursor.endEditBlock();
    }
    // Lines that left at the front must not move what the user is reading.
    const int gone = linesAfterBack - document()->lineCount();
    const auto *layout = static_cast<LogLayout *>(document()->documentLayout());
    verticalScrollBar()->setValue(offset - static_cast<int>(gone * layout->lineHeight()));
}

void QtTerminalWidget::replaceText(const QString &text)
{
    m_bufferShown = false;
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.select(QTextCursor::Document);
    cursor.removeSelectedText();
    cursor.insertText(text);
    cursor.endEditBlock();
    LogLayout::setContinuation(document()->firstBlock(), false);
}

// Moves the oldest paragraphs to disk when more is held than the bounds allow.
void QtTerminalWidget::trimFront()
{
    const int characters = document()->characterCount();
    const int paragraphs = document()->blockCount();
    if (m_readers > 0 || (characters <= m_mostCharacters && paragraphs <= m_mostParagraphs))
        return;
    // Somewhat more than needed, so that it isn't done at every slice.
    const int keepCharacters = m_mostCharacters - m_mostCharacters / 64;
    const int keepParagraphs = m_mostParagraphs - m_mostParagraphs / 64;
    QTextBlock first = document()->findBlock(qMax(0, characters - keepCharacters));
    if (first.blockNumber() < paragraphs - keepParagraphs)
        first = document()->findBlockByNumber(paragraphs - keepParagraphs);
    if (first.blockNumber() == 0)
        return;

    const int cut = first.position();
    const QByteArray old = textBetween(0, cut).toUtf8();
    if (m_history.append(old.constData(), old.size()) == ByteSpool::State::Incomplete)
        emit historyLost();

    const int linesGone = first.firstLineNumber();
    const bool continues = LogLayout::isContinuation(first);
    const int offset = verticalScrollBar()->value();
    QTextCursor cursor(document());
    cursor.beginEditBlock();
    cursor.setPosition(cut, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.endEditBlock();
    LogLayout::setContinuation(document()->firstBlock(), continues);
    const auto *layout = static_cast<LogLayout *>(document()->documentLayout());
    verticalScrollBar()->setValue(offset - static_cast<int>(linesGone * layout->lineHeight()));
}

// ---- what goes out

bool QtTerminalWidget::isEmpty() const
{
    return m_queue.isEmpty() && document()->isEmpty() && m_history.size() == 0;
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
    menu->addAction(QStringLiteral("清空接收区"), this, &QtTerminalWidget::clearRequested);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
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
    const bool wasAtEnd = atEnd();
    QTextBrowser::resizeEvent(event);
    followEnd(wasAtEnd);
}

void QtTerminalWidget::changeEvent(QEvent *event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::FontChange && document()->defaultFont() != font())
        document()->setDefaultFont(font());
}
