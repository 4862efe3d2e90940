#include "serial/receivequeue.h"

#include "app/hextext.h"
#include "serial/receivebuffer.h"

void ReceiveQueue::push(const QByteArray &bytes, const QString &header, bool hex)
{
    m_chunks.push_back({bytes, header, hex, 0});
}

qint64 ReceiveQueue::bytes() const
{
    qint64 sum = 0;
    for (const Chunk &chunk : m_chunks)
        sum += chunk.bytes.size() - chunk.taken;
    return sum;
}

QString ReceiveQueue::takeText(const char *bytes, int count, int codecIndex)
{
    QString text = m_decoder.decode(bytes, count, codecIndex);
    if (m_afterCarriageReturn && text.startsWith(QLatin1Char('\n')))
        text.remove(0, 1);
    if (count > 0)
        m_afterCarriageReturn = bytes[count - 1] == '\r';
    return ReceiveBuffer::withPlainLineEnds(text);
}

QString ReceiveQueue::take(int characters, int codecIndex)
{
    QString text;
    while (!m_chunks.empty() && text.size() < characters) {
        Chunk &chunk = m_chunks.front();
        if (chunk.taken == 0)
            text += chunk.header;
        const int count = qMin(characters, chunk.bytes.size() - chunk.taken);
        const char *bytes = chunk.bytes.constData() + chunk.taken;
        if (chunk.hex) {
            text += HexText::render(bytes, count);
            m_decoder.reset();
            m_afterCarriageReturn = false;
        } else {
            text += takeText(bytes, count, codecIndex);
        }
        chunk.taken += count;
        if (chunk.taken == chunk.bytes.size())
            m_chunks.pop_front();
    }
    return text;
}

void ReceiveQueue::clear()
{
    m_chunks.clear();
    m_decoder.reset();
    m_afterCarriageReturn = false;
}
