#pragma once

// All samples of one channel in the order of their arrival, numbered from 0. Times
// do not decrease. Old blocks go to a file and are dropped by the owner. Extremes of
// groups stay in memory, so that a chart of any span costs what its pixels cost.

#include "pidsample.h"

#include <QVector>

#include <deque>
#include <vector>

class SampleFile;

class SampleStore
{
public:
    static constexpr int blockSamples = 4096;
    static constexpr int groupSamples = 128;

    struct Point
    {
        qint64 us;
        qint32 value;
    };
    struct Curves
    {
        QVector<Point> targets;
        QVector<Point> actuals;
    };

    // A time before that of the last sample becomes that one. True when a block is full.
    bool append(PidSample sample);
    void clear(SampleFile *file);

    qint64 begin() const { return m_begin; } // the first that is held
    qint64 end() const { return m_end; }
    bool isEmpty() const { return m_begin == m_end; }
    const PidSample &last() const { return m_blocks.back().samples.last(); }
    qint64 firstUs() const { return m_blocks.front().groups.front().us; } // not of an empty store
    qint64 inMemory() const { return m_inMemory; }

    // The number of the first sample at a time or behind it; end() where there is none.
    qint64 numberAt(qint64 us, const SampleFile &file) const;
    // Replaces `samples` by those from one number to before another, as far as they are
    // held. False where some could not be read back; they are then missing.
    bool read(qint64 from, qint64 to, const SampleFile &file, QVector<PidSample> *samples) const;
    // The samples from one time to another, and one more on each side: all of them,
    // or, where they are many, the extremes within each of so many columns.
    Curves thinned(qint64 fromUs, qint64 toUs, int columns, const SampleFile &file) const;

    // Moves the oldest full block that is in memory to the file. False where there is
    // none or the disk refuses.
    bool moveOldest(SampleFile *file);
    // Drops the oldest block, if it is full. The number of samples.
    int dropOldest(SampleFile *file);

private:
    struct Extremes
    {
        qint64 us; // of the first sample
        qint32 minTarget, maxTarget, minActual, maxActual;

        void add(const Extremes &other);
        static Extremes of(const PidSample &sample);
    };
    struct Block
    {
        QVector<PidSample> samples; // none once they are in the file
        int slot = -1;
        int size = 0;
        std::vector<Extremes> groups;
        Extremes all{};
        qint64 lastUs = 0;
    };
    class Thinner;

    qint64 firstOf(size_t block) const { return m_begin + qint64(block) * blockSamples; }
    bool load(const Block &block, const SampleFile &file, QVector<PidSample> *samples) const;
    void addUnits(qint64 from, qint64 to, qint64 perColumn, const SampleFile &file, Thinner *thinner) const;

    std::deque<Block> m_blocks; // all but the last one are full
    qint64 m_begin = 0;
    qint64 m_end = 0;
    qint64 m_inMemory = 0; // samples
    size_t m_moved = 0;    // blocks from the front that are in the file
};
