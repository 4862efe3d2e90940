#include "serial/qtterminalwidget.h"

#include "app/apppaths.h"
#include "app/settings.h"
#include "app/startup.h"
#include "serial/loglayout.h"

#include <QContextMenuEvent>
#include <QGuiApplication>
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
