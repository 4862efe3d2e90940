#include "serial/qtterminalwidget.h"

#include <QTextBlock>

namespace {

constexpr int kHistoryPiece = 256 * 1024; // bytes read back at a time
constexpr int kBlocksPerPiece = 500;

} // namespace

QtTerminalWidget::Reader::Reader(QtTerminalWidget &terminal)
    : m_terminal(terminal)
{
    ++m_terminal.m_readers;
}

QtTerminalWidget::Reader::~Reader()
{
    if (--m_terminal.m_readers == 0 && m_terminal.m_bufferWaits)
        m_terminal.showBuffer();
}

QString QtTerminalWidget::Reader::nextFromHistory()
{
    QByteArray bytes = m_terminal.m_history.read(m_offset, kHistoryPiece, &m_failed);
    m_offset += bytes.size();
    bytes.prepend(m_partial);
    int end = bytes.size();
    if (m_offset < m_terminal.m_history.size()) {
        // A piece ends before the character that it would cut.
        const auto at = [&bytes](int i) { return static_cast<unsigned char>(bytes.at(i)); };
        while (end > 0 && (at(end - 1) & 0xC0) == 0x80)
            --end;
        if (end > 0 && at(end - 1) >= 0xC0)
            --end;
    }
    m_partial = bytes.mid(end);
    return QString::fromUtf8(bytes.constData(), end);
}

QString QtTerminalWidget::Reader::next()
{
    if (m_offset < m_terminal.m_history.size() && !m_failed)
        return nextFromHistory();
    const QTextDocument *document = m_terminal.document();
    QString text;
    while (text.isEmpty()) {
        const QTextBlock first = document->findBlockByNumber(m_block);
        if (!first.isValid())
            break;
        m_block += kBlocksPerPiece;
        const QTextBlock next = document->findBlockByNumber(m_block);
        text = m_terminal.textBetween(first.position(),
                                      next.isValid() ? next.position() : document->characterCount() - 1);
    }
    return text;
}
