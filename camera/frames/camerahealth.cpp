#include "camerahealth.h"

#include <algorithm>

namespace {

// A shorter period says nothing: its first frame may have arrived just before.
constexpr qint64 kMinPeriodMs = 500;

} // namespace

void CameraRate::add(double rate)
{
    now = rate;
    min = isKnown ? qMin(min, rate) : rate;
    max = isKnown ? qMax(max, rate) : rate;
    isKnown = true;
}

CameraHealth::Counted &CameraHealth::of(const QString &sender, int device)
{
    auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const Counted &counted) {
        return counted.row.device == device && counted.row.sender == sender;
    });
    if (found == m_rows.end()) {
        if (m_rows.size() >= maxRows)
            m_rows.erase(
                std::min_element(m_rows.begin(), m_rows.end(), [](const Counted &a, const Counted &b) {
                    return a.lastChange < b.lastChange;
                }));
        Counted added;
        added.row.sender = sender;
        added.row.device = device;
        m_rows.append(added);
        found = m_rows.end() - 1;
    }
    found->lastChange = ++m_changes;
    return *found;
}

void CameraHealth::addFault(const CameraFault &fault)
{
    m_faults.prepend(fault);
    m_faults.front().head.truncate(CameraLoss::headBytes);
    m_faults.front().atMs = m_now;
    if (m_faults.size() > maxFaults)
        m_faults.removeLast();
}

// The first frame begins the period and is not part of it: n frames have n - 1
// distances.
void CameraHealth::countFrame(Counted *counted, bool isGood) const
{
    ++(isGood ? counted->row.good : counted->row.wrongChecksum);
    if (counted->row.lastFrameMs >= 0 && !counted->isPaused)
        counted->row.longestGapMs = qMax(counted->row.longestGapMs, m_now - counted->row.lastFrameMs);
    if (counted->periodStart < 0) {
        counted->periodStart = m_now;
        counted->framesInPeriod = 0;
        counted->picturesInPeriod = -1; // its picture is not part of it either
    } else {
        ++counted->framesInPeriod;
    }
    counted->row.lastFrameMs = m_now;
    counted->isPaused = false;
}

void CameraHealth::addFrame(const QString &sender, const CameraEvent &image)
{
    for (Counted *counted : {&of(sender, image.device), &m_total})
        countFrame(counted, image.checksumRight);
    m_droppedBytes = 0;
    if (!image.checksumRight)
        addFault(
            {CameraFault::WrongChecksum, sender, image.device, image.offset, image.data.size(), image.head});
}

void CameraHealth::addLoss(const QString &sender, const CameraLoss &loss)
{
    if (loss.bytes == 0 && loss.frames == 0)
        return;
    for (Counted *counted : {&of(sender, loss.device), &m_total}) {
        counted->row.lostBytes += loss.bytes;
        counted->row.cutShort += loss.frames;
    }
    if (m_droppedBytes == 0)
        m_firstDropMs = m_now;
    m_lastDropMs = m_now;
    m_droppedBytes += loss.bytes;
    CameraFault *const last = m_faults.isEmpty() ? nullptr : &m_faults.front();
    if (loss.frames == 0 && last && last->kind == CameraFault::UnknownBytes && last->sender == sender &&
        last->offset + last->bytes == loss.offset)
        last->bytes += loss.bytes; // one fault, although it arrived in pieces
    else
        addFault({loss.frames > 0 ? CameraFault::CutShort : CameraFault::UnknownBytes, sender, loss.device,
                  loss.offset, loss.bytes, loss.head});
}

void CameraHealth::addShown(const QString &sender, int device)
{
    for (Counted *counted : {&of(sender, device), &m_total})
        ++counted->picturesInPeriod;
}

void CameraHealth::addSkipped(const QString &sender, int device)
{
    for (Counted *counted : {&of(sender, device), &m_total})
        ++counted->row.skipped;
}

void CameraHealth::addUndecodable(const QString &sender, int device, qint64 offset, const QByteArray &data)
{
    for (Counted *counted : {&of(sender, device), &m_total})
        ++counted->row.undecodable;
    addFault(
        {CameraFault::Undecodable, sender, device, offset, data.size(), data.left(CameraLoss::headBytes)});
}

void CameraHealth::endPeriod(Counted *counted) const
{
    const qint64 period = m_now - counted->periodStart;
    if (counted->periodStart < 0 || period < kMinPeriodMs)
        return;
    counted->row.received.add(static_cast<double>(counted->framesInPeriod) * 1000 /
                              static_cast<double>(period));
    counted->row.shown.add(static_cast<double>(qMax<qint64>(0, counted->picturesInPeriod)) * 1000 /
                           static_cast<double>(period));
    counted->row.longestGapMs = qMax(counted->row.longestGapMs, m_now - counted->row.lastFrameMs);
    counted->periodStart = m_now;
    counted->framesInPeriod = 0;
    counted->picturesInPeriod = 0;
}

bool CameraHealth::lacksFrames() const
{
    return m_droppedBytes >= lacksFramesBytes && m_lastDropMs - m_firstDropMs >= lacksFramesMs &&
           m_now - m_lastDropMs < lacksFramesMs;
}

void CameraHealth::tick()
{
    for (Counted &counted : m_rows)
        endPeriod(&counted);
    endPeriod(&m_total);
}

void CameraHealth::pause()
{
    const auto stop = [](Counted *counted) {
        counted->isPaused = true;
        counted->periodStart = -1;
        counted->row.received.now = 0;
        counted->row.shown.now = 0;
    };
    for (Counted &counted : m_rows)
        stop(&counted);
    stop(&m_total);
    m_droppedBytes = 0;
}

void CameraHealth::clear()
{
    m_rows.clear();
    m_faults.clear();
    m_total = Counted();
    m_droppedBytes = 0;
}

QVector<CameraHealthRow> CameraHealth::rows() const
{
    QVector<CameraHealthRow> rows;
    for (const Counted &counted : m_rows)
        rows.append(counted.row);
    return rows;
}
