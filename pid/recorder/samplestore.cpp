#include "samplestore.h"

#include "samplefile.h"

#include <algorithm>

static_assert(SampleFile::slotBytes == SampleStore::blockSamples * sizeof(PidSample));

namespace {
constexpr int kExact = 4; // samples a column that are shown as they are
// A column takes its extremes from at least so many units, so that few pixels err.
constexpr int kUnitsPerColumn = 8;
} // namespace

void SampleStore::Extremes::add(const Extremes &other)
{
    minTarget = std::min(minTarget, other.minTarget);
    maxTarget = std::max(maxTarget, other.maxTarget);
    minActual = std::min(minActual, other.minActual);
    maxActual = std::max(maxActual, other.maxActual);
}

SampleStore::Extremes SampleStore::Extremes::of(const PidSample &sample)
{
    return {sample.us, sample.target, sample.target, sample.actual, sample.actual};
}

// Reduces what it gets, in the order of time, to the extremes of columns.
class SampleStore::Thinner
{
public:
    Thinner(qint64 fromUs, qint64 columnUs, Curves *curves)
        : m_fromUs(fromUs)
        , m_columnUs(std::max<qint64>(1, columnUs))
        , m_curves(curves)
    {
    }

    void add(const Extremes &unit)
    {
        const qint64 column = (unit.us - m_fromUs) / m_columnUs;
        if (m_hasColumn && column == m_column) {
            m_extremes.add(unit);
            return;
        }
        finish();
        m_column = column;
        m_extremes = unit;
        m_hasColumn = true;
    }
    void finish()
    {
        if (!m_hasColumn)
            return;
        add(m_extremes.minTarget, m_extremes.maxTarget, &m_curves->targets);
        add(m_extremes.minActual, m_extremes.maxActual, &m_curves->actuals);
        m_hasColumn = false;
    }

private:
    void add(qint32 low, qint32 high, QVector<Point> *points) const
    {
        // The nearer one first: the line to it is the shorter one.
        if (!points->isEmpty() &&
            qAbs(double(points->last().value) - high) < qAbs(double(points->last().value) - low))
            std::swap(low, high);
        points->append({m_extremes.us, low});
        if (high != low)
            points->append({m_extremes.us, high});
    }

    const qint64 m_fromUs;
    const qint64 m_columnUs;
    Curves *m_curves;
    bool m_hasColumn = false;
    qint64 m_column = 0;
    Extremes m_extremes{};
};

bool SampleStore::append(PidSample sample)
{
    if (!isEmpty())
        sample.us = std::max(sample.us, m_blocks.back().lastUs);
    if (m_blocks.empty() || m_blocks.back().size == blockSamples) {
        m_blocks.emplace_back();
        m_blocks.back().samples.reserve(blockSamples);
        m_blocks.back().groups.reserve(blockSamples / groupSamples);
        m_blocks.back().all = Extremes::of(sample);
    }
    Block &block = m_blocks.back();
    const Extremes own = Extremes::of(sample);
    block.all.add(own);
    if (block.size % groupSamples == 0)
        block.groups.push_back(own);
    else
        block.groups.back().add(own);
    block.samples.append(sample);
    block.lastUs = sample.us;
    ++m_end;
    ++m_inMemory;
    return ++block.size == blockSamples;
}

void SampleStore::clear(SampleFile *file)
{
    for (const Block &block : m_blocks)
        if (block.slot >= 0)
            file->release(block.slot);
    *this = SampleStore();
}

bool SampleStore::moveOldest(SampleFile *file)
{
    if (m_moved >= m_blocks.size() || m_blocks[m_moved].size < blockSamples || m_moved + 1 == m_blocks.size())
        return false;
    Block &block = m_blocks[m_moved];
    block.slot = file->write(reinterpret_cast<const char *>(block.samples.constData()));
    if (block.slot < 0)
        return false;
    block.samples = {};
    m_inMemory -= blockSamples;
    ++m_moved;
    return true;
}

int SampleStore::dropOldest(SampleFile *file)
{
    if (m_blocks.size() < 2)
        return 0;
    const Block &block = m_blocks.front();
    if (block.slot >= 0) {
        file->release(block.slot);
        --m_moved;
    } else {
        m_inMemory -= blockSamples;
    }
    m_blocks.pop_front();
    m_begin += blockSamples;
    return blockSamples;
}

bool SampleStore::load(const Block &block, const SampleFile &file, QVector<PidSample> *samples) const
{
    if (block.slot < 0) {
        *samples = block.samples;
        return true;
    }
    samples->resize(blockSamples);
    return file.read(block.slot, reinterpret_cast<char *>(samples->data()));
}

bool SampleStore::read(qint64 from, qint64 to, const SampleFile &file, QVector<PidSample> *samples) const
{
    samples->clear();
    from = std::max(from, m_begin);
    to = std::min(to, m_end);
    if (from >= to)
        return true;
    samples->reserve(int(to - from));
    bool isComplete = true;
    QVector<PidSample> block;
    for (qint64 at = from; at < to;) {
        const auto index = size_t((at - m_begin) / blockSamples);
        const qint64 first = firstOf(index);
        const qint64 end = std::min(to, first + m_blocks[index].size);
        if (load(m_blocks[index], file, &block))
            std::copy(block.cbegin() + int(at - first), block.cbegin() + int(end - first),
                      std::back_inserter(*samples));
        else
            isComplete = false;
        at = end;
    }
    return isComplete;
}

qint64 SampleStore::numberAt(qint64 us, const SampleFile &file) const
{
    const auto block = std::lower_bound(m_blocks.begin(), m_blocks.end(), us,
                                        [](const Block &b, qint64 time) { return b.lastUs < time; });
    if (block == m_blocks.end())
        return m_end;
    const qint64 first = firstOf(size_t(block - m_blocks.begin()));
    // The group that begins before the time, and after which none does.
    auto group = std::lower_bound(block->groups.begin(), block->groups.end(), us,
                                  [](const Extremes &g, qint64 time) { return g.us < time; });
    if (group == block->groups.begin())
        return first;
    --group;
    const int from = int(group - block->groups.begin()) * groupSamples;
    const int to = std::min(from + groupSamples, block->size);
    QVector<PidSample> samples;
    if (!load(*block, file, &samples))
        return first + from;
    const auto at = std::lower_bound(samples.cbegin() + from, samples.cbegin() + to, us,
                                     [](const PidSample &s, qint64 time) { return s.us < time; });
    return first + (at - samples.cbegin());
}

SampleStore::Curves SampleStore::thinned(qint64 fromUs, qint64 toUs, int columns,
                                         const SampleFile &file) const
{
    Curves curves;
    const qint64 from = std::max(m_begin, numberAt(fromUs, file) - 1);
    const qint64 to = std::min(m_end, numberAt(toUs, file) + 1);
    if (from >= to)
        return curves;
    const qint64 count = to - from;
    if (count <= qint64(kExact) * columns) {
        QVector<PidSample> samples;
        read(from, to, file, &samples);
        for (const PidSample &sample : qAsConst(samples)) {
            curves.targets.append({sample.us, sample.target});
            curves.actuals.append({sample.us, sample.actual});
        }
        return curves;
    }
    Thinner thinner(fromUs, (toUs - fromUs) / columns, &curves);
    addUnits(from, to, count / columns, file, &thinner);
    thinner.finish();
    if (to == m_end) { // the true end
        curves.targets.append({last().us, last().target});
        curves.actuals.append({last().us, last().actual});
    }
    return curves;
}

// Samples, groups or blocks, as many samples as a column has.
void SampleStore::addUnits(qint64 from, qint64 to, qint64 perColumn, const SampleFile &file,
                           Thinner *thinner) const
{
    const bool byBlock = perColumn >= qint64(kUnitsPerColumn) * blockSamples;
    const bool byGroup = perColumn >= qint64(kUnitsPerColumn) * groupSamples;
    QVector<PidSample> samples;
    for (qint64 at = from; at < to;) {
        const auto index = size_t((at - m_begin) / blockSamples);
        const Block &block = m_blocks[index];
        const qint64 first = firstOf(index);
        const qint64 end = std::min(to, first + block.size);
        if (byBlock) {
            thinner->add(block.all);
        } else if (byGroup || !load(block, file, &samples)) {
            for (auto group = size_t((at - first) / groupSamples);
                 group < block.groups.size() && qint64(group) * groupSamples < end - first; ++group)
                thinner->add(block.groups[group]);
        } else {
            for (qint64 k = at - first; k < end - first; ++k)
                thinner->add(Extremes::of(samples.at(int(k))));
        }
        at = end;
    }
}
