#include "hexoutput.h"

#include <algorithm>
#include <utility>

HexPlainOutput::HexPlainOutput(const HexDocument &document)
    : m_document(document)
{
}

QByteArray HexPlainOutput::next()
{
    const QByteArray bytes = m_document.read(m_at, slice);
    m_at += bytes.size();
    return bytes;
}

HexFilledOutput::HexFilledOutput(const HexDocument &document, HexRuns runs, quint8 fill)
    : m_document(document)
    , m_runs(std::move(runs))
    , m_fill(static_cast<char>(fill))
    , m_address(m_runs.empty() ? 0 : m_runs.front().address)
{
}

qint64 HexFilledOutput::fillSize(const HexRuns &runs)
{
    if (runs.empty())
        return 0;
    const HexRun &last = runs.back();
    return last.address - runs.front().address - last.offset;
}

qint64 HexFilledOutput::size() const
{
    return m_document.size() + fillSize(m_runs);
}

QByteArray HexFilledOutput::next()
{
    QByteArray bytes;
    bytes.reserve(slice);
    while (bytes.size() < slice && m_run < m_runs.size()) {
        const HexRun &run = m_runs[m_run];
        const qint64 room = slice - bytes.size();
        const qint64 inside = m_address - run.address;
        if (inside < 0) {
            const int count = static_cast<int>(std::min(room, -inside));
            bytes.append(count, m_fill);
            m_address += count;
        } else {
            const int count = static_cast<int>(std::min(room, run.length - inside));
            bytes += m_document.read(run.offset + inside, count);
            m_address += count;
            m_bytes += count;
            m_run += m_address == run.address + run.length ? 1 : 0;
        }
    }
    return bytes;
}
