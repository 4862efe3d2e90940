#include "runfigures.h"

#include "pidrecorder.h"

namespace {
constexpr int kBefore = 10;          // samples before the step at most
constexpr qint64 kBeforeUs = 200000; // and how old they may be
// A longer run that goes on is measured again when it is so much longer: its samples are
// millions after an hour, and measuring reads them all.
constexpr qint64 kLong = 10000;
constexpr qint64 kShare = 10; // a tenth
} // namespace

RunFigures::RunFigures(const PidRecorder *recorder)
    : m_recorder(recorder)
{
}

void RunFigures::setBand(double band)
{
    if (m_band == band)
        return;
    m_band = band;
    clear();
}

Step RunFigures::stepOf(const PidRun &run) const
{
    Step step;
    step.band = m_band;
    step.to = run.target;
    const SampleStore &record = m_recorder->record(run.channel);
    const qint64 end = run.isOpen() ? record.end() : run.end;
    if (run.first < record.begin() || end <= run.first)
        return step;
    const qint64 stride = 1 + (end - run.first) / maxSamples;
    QVector<PidSample> samples;
    constexpr qint64 kPiece = 10 * qint64(SampleStore::blockSamples);
    // What was before a start belongs to another state of the board.
    const qint64 from = run.isStart ? run.first : qMax(record.begin(), run.first - kBefore);
    for (qint64 piece = from; piece < end; piece += kPiece) {
        record.read(piece, qMin(end, piece + kPiece), m_recorder->file(), &samples);
        for (int k = 0; k < samples.size(); ++k) {
            const PidSample &sample = samples.at(k);
            const bool isBefore = piece + k < run.first;
            if (isBefore ? sample.us < run.beginUs - kBeforeUs : (piece + k - run.first) % stride != 0)
                continue;
            step.samples.append({double(sample.us - run.beginUs) / 1e6, double(sample.actual)});
        }
    }
    step.from = run.isStart && !step.samples.isEmpty() ? step.samples.first().actual : run.before;
    return step;
}

bool RunFigures::isMeasured(const PidRun &run) const
{
    const auto measured = m_measured.constFind(run.id);
    if (measured == m_measured.constEnd())
        return false;
    const SampleStore &record = m_recorder->record(run.channel);
    if (run.first < record.begin())
        return true; // its first samples are dropped by now
    if (!run.isOpen())
        return measured->end == run.end;
    const qint64 end = record.end();
    return measured->end == end ||
           (measured->end >= run.first + kLong && end - measured->end < (end - run.first) / kShare);
}

const StepFigures &RunFigures::of(const PidRun &run)
{
    const bool isKnown = isMeasured(run);
    Measured &measured = m_measured[run.id];
    if (isKnown)
        return measured.figures;
    const qint64 end = run.isOpen() ? m_recorder->record(run.channel).end() : run.end;
    measured.end = end;
    measured.figures = measureStep(stepOf(run));
    const qint64 stride = 1 + (end - run.first) / maxSamples;
    if (measured.figures.reportRate)
        *measured.figures.reportRate *= double(stride);
    return measured.figures;
}
