#include "hexaddressmap.h"

#include <algorithm>
#include <utility>

HexAddressMap::HexAddressMap(qint64 firstAddress)
    : m_runs{{firstAddress, 0, 0}}
{
}

HexAddressMap::HexAddressMap(HexRuns runs)
    : m_runs(std::move(runs))
    , m_isFixed(true)
{
    if (m_runs.empty())
        m_runs.push_back({0, 0, 0});
}

HexRun HexAddressMap::run(size_t index, qint64 size) const
{
    HexRun run = m_runs[index];
    run.length = (index + 1 < m_runs.size() ? m_runs[index + 1].offset : size) - run.offset;
    return run;
}

HexRuns HexAddressMap::runs(qint64 size) const
{
    HexRuns all = m_runs;
    all.back() = run(all.size() - 1, size);
    return all;
}

size_t HexAddressMap::runOf(qint64 offset) const
{
    const auto next = std::upper_bound(m_runs.begin(), m_runs.end(), offset,
                                       [](qint64 wanted, const HexRun &run) { return wanted < run.offset; });
    return static_cast<size_t>(std::max<std::ptrdiff_t>(next - m_runs.begin(), 1)) - 1;
}

qint64 HexAddressMap::endOf(qint64 offset, qint64 size) const
{
    const HexRun here = run(runOf(offset), size);
    return here.offset + here.length;
}

qint64 HexAddressMap::addressOf(qint64 offset) const
{
    const HexRun &run = m_runs[runOf(offset)];
    return run.address + offset - run.offset;
}

std::optional<qint64> HexAddressMap::offsetOf(qint64 address, qint64 size) const
{
    const auto next = std::upper_bound(m_runs.begin(), m_runs.end(), address,
                                       [](qint64 wanted, const HexRun &run) { return wanted < run.address; });
    if (next == m_runs.begin())
        return std::nullopt;
    const HexRun here = run(static_cast<size_t>(next - m_runs.begin()) - 1, size);
    const qint64 inside = address - here.address;
    const bool isEnd = next == m_runs.end() && inside == here.length;
    if (inside >= here.length && !isEnd)
        return std::nullopt;
    return here.offset + inside;
}
