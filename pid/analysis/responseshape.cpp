#include "responseshape.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr size_t maxDifferences = 16384; // enough for the noise within 1 %

// Where the line between two samples has the given value.
double crossing(const StepSample &a, double valueA, const StepSample &b, double valueB, double value)
{
    if (valueA == valueB)
        return b.seconds;
    const double share = std::clamp((value - valueA) / (valueB - valueA), 0.0, 1.0);
    return a.seconds + share * (b.seconds - a.seconds);
}

} // namespace

ResponseShape::ResponseShape(const Step &step)
{
    copySamples(step);
    if (m_samples.size() < size_t(StepFigures::minSamples))
        return;
    m_noise = differenceNoise();
    findDirection(step);
    smooth();
    findSteady(step.band);
    if (m_hasMoved)
        findTurns();
}

void ResponseShape::copySamples(const Step &step)
{
    m_samples.reserve(size_t(step.samples.size()) + 1);
    double sum = 0;
    double last = 0;
    for (const StepSample &sample : step.samples) {
        if (!std::isfinite(sample.seconds) || !std::isfinite(sample.actual))
            continue;
        if (sample.seconds < 0 && m_samples.empty()) {
            sum += sample.actual;
            ++m_countBefore;
            continue;
        }
        last = std::max(last, sample.seconds);
        m_samples.push_back({last, sample.actual});
        m_low = std::min(m_low, sample.actual);
        m_high = std::max(m_high, sample.actual);
    }
    if (step.before && std::isfinite(*step.before)) {
        m_before = *step.before;
        m_countBefore = 1;
    } else if (m_countBefore > 0) {
        m_before = sum / double(m_countBefore);
    } else if (!m_samples.empty()) {
        m_before = m_samples.front().actual;
    }
    m_isFirstMade = !m_samples.empty() && m_samples.front().seconds > 0;
    if (m_isFirstMade)
        m_samples.insert(m_samples.begin(), {0, m_before});
}

// Of groups of five samples spread over all of them. A tenth, where the response has
// its corners, is left out; 0.6573 is the mean of the rest for normal deviates.
double ResponseShape::differenceNoise() const
{
    const size_t groups = m_samples.size() - 4;
    const size_t count = std::min(groups, maxDifferences);
    std::vector<double> differences(count);
    for (size_t k = 0; k < count; ++k) {
        const StepSample *s = &m_samples[k * groups / count];
        differences[k] =
            std::abs(s[0].actual - 4 * s[1].actual + 6 * s[2].actual - 4 * s[3].actual + s[4].actual);
    }
    const size_t kept = std::max<size_t>(1, count * 9 / 10);
    std::nth_element(differences.begin(), differences.begin() + std::ptrdiff_t(kept - 1), differences.end());
    double sum = 0;
    for (size_t k = 0; k < kept; ++k)
        sum += differences[k];
    return sum / double(kept) / (0.6573 * std::sqrt(70.0));
}

// From the raw samples: which way the value goes and how many samples that takes,
// hence how many may be averaged.
void ResponseShape::findDirection(const Step &step)
{
    const double up = m_high - m_before;
    const double down = m_before - m_low;
    const double range = std::max({up, down, up + down});
    const double end = lineFrom(indexAt(0.9 * m_samples.back().seconds)).mean - m_before;
    if (std::abs(end) > 0.1 * range)
        m_direction = end < 0 ? -1 : 1;
    else if (step.to != step.from)
        m_direction = step.to < step.from ? -1 : 1;
    else
        m_direction = down > up ? -1 : 1;

    const double reach = std::max(0.0, m_direction > 0 ? up : down);
    const auto firstAt = [&](double share) {
        const auto beyond = [&](const StepSample &s) {
            return m_direction * (s.actual - m_before) > share * reach;
        };
        return std::find_if(m_samples.begin(), m_samples.end(), beyond);
    };
    m_rise = size_t(firstAt(0.8) - firstAt(0.2));
    const double wanted = 0.0005 * std::max(range - 6 * m_noise, m_noise);
    const double ratio = wanted > 0 ? m_noise / wanted : 0;
    const double width = ratio < 1e6 ? std::min(ratio * ratio, double(m_rise) / 6) : 0;
    m_halfWidth = size_t(std::max(width - 1, 0.0) / 2);
}

void ResponseShape::smooth()
{
    const size_t count = m_samples.size();
    m_smoothedNoise = m_noise / std::sqrt(2 * double(m_halfWidth) + 1);
    if (m_halfWidth > 0) {
        m_smooth.resize(count);
        double sum = 0; // of what lies within the width, less m_before
        size_t next = 0;
        size_t first = 0;
        for (size_t k = 0; k < count; ++k) {
            const size_t half = std::min(m_halfWidth, count - 1 - k); // stays centred at the end
            for (; next <= k + half; ++next)
                sum += m_samples[next].actual - m_before;
            for (; first + half < k; ++first)
                sum -= m_samples[first].actual - m_before;
            // Before the first sample, too, the value is m_before.
            m_smooth[k] = m_before + sum / double(2 * half + 1);
        }
    }
    // The end is averaged less and would widen the range by its noise.
    const size_t margin = std::min(m_halfWidth, count / 4);
    size_t low = margin;
    size_t high = margin;
    for (size_t k = margin; k < count - margin; ++k) {
        if (value(k) < value(low))
            low = k;
        else if (value(k) > value(high))
            high = k;
    }
    m_peak = m_direction > 0 ? high : low;
    m_range = std::max(m_before, value(high)) - std::min(m_before, value(low));
    m_hasMoved =
        m_range > 9 * m_smoothedNoise + 4 * m_noise / std::sqrt(std::max(1.0, double(m_countBefore)));
}

size_t ResponseShape::indexAt(double seconds) const
{
    const auto before = [](const StepSample &sample, double time) { return sample.seconds < time; };
    return size_t(std::lower_bound(m_samples.begin(), m_samples.end(), seconds, before) - m_samples.begin());
}

ResponseShape::Line ResponseShape::lineFrom(size_t first) const
{
    Line line;
    line.count = m_samples.size() - first;
    const double t0 = m_samples[first].seconds;
    double sumT = 0;
    double sumY = 0;
    for (size_t k = first; k < m_samples.size(); ++k) {
        sumT += m_samples[k].seconds - t0;
        sumY += m_samples[k].actual - m_before;
    }
    const double meanT = sumT / double(line.count);
    const double meanY = sumY / double(line.count);
    double tt = 0;
    double ty = 0;
    double yy = 0;
    for (size_t k = first; k < m_samples.size(); ++k) {
        const double t = m_samples[k].seconds - t0 - meanT;
        const double y = m_samples[k].actual - m_before - meanY;
        tt += t * t;
        ty += t * y;
        yy += y * y;
    }
    line.mean = m_before + meanY;
    line.rise = tt > 0 ? ty / tt * (m_samples.back().seconds - t0) : 0;
    line.rms = std::sqrt(std::max(0.0, yy - (tt > 0 ? ty * ty / tt : 0)) / double(line.count));
    return line;
}

void ResponseShape::findSteady(double band)
{
    const double end = m_samples.back().seconds;
    const size_t first = indexAt(0.8 * end);
    m_lastFifth = lineFrom(first);
    m_steady = lineFrom(indexAt(0.9 * end)).mean;
    const double tolerance = band * m_range;
    const double trendNoise = 4 * m_noise * std::sqrt(12 / double(m_lastFifth.count));
    if (m_lastFifth.count < 4 || std::abs(m_lastFifth.rise) > 0.5 * tolerance + trendNoise)
        return;
    for (size_t k = first; k + m_halfWidth < m_samples.size(); ++k)
        if (std::abs(value(k) - m_steady) > tolerance + 5 * m_smoothedNoise)
            return;
    m_isSteady = true;
}

std::optional<double> ResponseShape::firstBeyond(double distance) const
{
    const double threshold = m_before + m_direction * distance;
    for (size_t k = 0; k < m_samples.size(); ++k) {
        if (m_direction * (value(k) - threshold) <= 0)
            continue;
        if (k == 0)
            return m_samples[0].seconds;
        return crossing(m_samples[k - 1], value(k - 1), m_samples[k], value(k), threshold);
    }
    return std::nullopt;
}

double ResponseShape::lastOutside(double distance) const
{
    for (size_t k = m_samples.size() - std::min(m_halfWidth, m_samples.size()); k-- > 0;) {
        const double off = value(k) - m_steady;
        if (std::abs(off) <= distance)
            continue;
        if (k + 1 == m_samples.size())
            return m_samples[k].seconds;
        return crossing(m_samples[k], value(k), m_samples[k + 1], value(k + 1),
                        m_steady + std::copysign(distance, off));
    }
    return 0;
}

void ResponseShape::findTurns()
{
    const double threshold = std::max(0.005 * m_range, 11 * m_smoothedNoise);
    double sign = m_direction; // of the turn that is looked for: 1 is a top
    size_t extreme = 0;
    for (size_t k = 1; k + m_halfWidth < m_samples.size(); ++k) {
        const double below = sign * (value(extreme) - value(k));
        if (below < 0) {
            extreme = k;
        } else if (below > threshold) {
            // A start in the other direction is no turn of the response.
            if (!m_turns.empty() || m_direction * (value(extreme) - m_before) > threshold)
                m_turns.push_back(extreme);
            sign = -sign;
            extreme = k;
        }
    }
}

// Either way, before neighbors narrow it. A top is lopsided: wider only against noise.
size_t ResponseShape::topWidth() const
{
    return m_halfWidth > 0 ? m_rise / 4 : m_rise / 10;
}

StepSample ResponseShape::peak() const
{
    size_t half = topWidth();
    for (size_t turn : m_turns)
        if (turn != m_peak)
            half = std::min(half, (turn > m_peak ? turn - m_peak : m_peak - turn) / 8);
    return topAt(m_peak, half);
}

bool ResponseShape::peakIsTurn() const
{
    return std::find(m_turns.begin(), m_turns.end(), m_peak) != m_turns.end();
}

std::vector<StepSample> ResponseShape::turns() const
{
    std::vector<StepSample> found;
    for (size_t k = 0; k < m_turns.size(); ++k) {
        size_t half = topWidth();
        if (k > 0)
            half = std::min(half, (m_turns[k] - m_turns[k - 1]) / 8);
        if (k + 1 < m_turns.size())
            half = std::min(half, (m_turns[k + 1] - m_turns[k]) / 8);
        found.push_back(topAt(m_turns[k], half));
    }
    return found;
}

// The top of the parabola through the samples around one that is the highest or
// lowest of its surroundings; the sample itself where they are no parabola.
StepSample ResponseShape::topAt(size_t index, size_t half) const
{
    const StepSample raw{m_samples[index].seconds, value(index)};
    half = std::max<size_t>(half, 1);
    if (index < half || index + half >= m_samples.size())
        return raw;
    if (half == 1 && value(index + 1) == raw.actual)
        return raw; // a limit was reached
    const double scale = m_samples[index + half].seconds - m_samples[index - half].seconds;
    if (scale <= 0)
        return raw;
    // Normal equations of y = a + b x + c x^2, x in [-1, 1], y from the raw value.
    double x1 = 0, x2 = 0, x3 = 0, x4 = 0, y0 = 0, y1 = 0, y2 = 0;
    for (size_t k = index - half; k <= index + half; ++k) {
        const double x = (m_samples[k].seconds - raw.seconds) / scale;
        const double y = m_samples[k].actual - raw.actual;
        x1 += x;
        x2 += x * x;
        x3 += x * x * x;
        x4 += x * x * x * x;
        y0 += y;
        y1 += x * y;
        y2 += x * x * y;
    }
    const double n = double(2 * half + 1);
    const double a11 = x2 - x1 * x1 / n;
    const double a12 = x3 - x1 * x2 / n;
    const double a22 = x4 - x2 * x2 / n;
    const double determinant = a11 * a22 - a12 * a12;
    if (!(determinant > 1e-12))
        return raw;
    const double b1 = y1 - x1 * y0 / n;
    const double b2 = y2 - x2 * y0 / n;
    const double b = (b1 * a22 - b2 * a12) / determinant;
    const double c = (b2 * a11 - b1 * a12) / determinant;
    const double a = (y0 - b * x1 - c * x2) / n;
    const double x = c != 0 ? -b / (2 * c) : 1;
    if (std::abs(x) > 0.5)
        return raw;
    const double rise = a - b * b / (4 * c);
    // A corner, as where a limit is reached.
    if (half > 1 && std::abs(rise) > 4 * m_smoothedNoise + 0.002 * m_range)
        return raw;
    return {raw.seconds + x * scale, raw.actual + rise};
}
