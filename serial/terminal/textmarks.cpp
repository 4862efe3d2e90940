#include "textmarks.h"

#include "contrast.h"

#include <QWidget>

#include <algorithm>
#include <limits>

namespace {

constexpr int kMaxCorrected = 1000; // colors kept

int endOf(const QTextLayout::FormatRange &range)
{
    return range.start + range.length;
}

QColor blended(const QColor &ground, const QColor &above)
{
    const qreal share = above.alphaF();
    const auto mixed = [share](qreal below, qreal color) { return below * (1 - share) + color * share; };
    return QColor::fromRgbF(mixed(ground.redF(), above.redF()), mixed(ground.greenF(), above.greenF()),
                            mixed(ground.blueF(), above.blueF()));
}

} // namespace

TextMarks::TextMarks(LogLayout *layout, const QWidget *display)
    : m_layout(layout)
    , m_display(display)
{
}

void TextMarks::setSource(Source source, const MarksOf &marksOf)
{
    m_sources[source] = marksOf;
    const bool isAny =
        std::any_of(std::begin(m_sources), std::end(m_sources), [](const MarksOf &set) { return bool(set); });
    if (isAny)
        m_layout->setMarks([this](const QTextBlock &block) { return this->marksOf(block); });
    else
        m_layout->setMarks({});
}

TextMarks::Marks TextMarks::joined(const Marks &below, const Marks &above)
{
    if (below.isEmpty() || above.isEmpty())
        return below.isEmpty() ? above : below;
    Marks all;
    auto low = below.begin();
    auto high = above.begin();
    for (int at = 0; low != below.end() || high != above.end();) {
        const bool inLow = low != below.end() && low->start <= at;
        const bool inHigh = high != above.end() && high->start <= at;
        int next = std::numeric_limits<int>::max();
        if (low != below.end())
            next = inLow ? endOf(*low) : low->start;
        if (high != above.end())
            next = qMin(next, inHigh ? endOf(*high) : high->start);
        if (inLow || inHigh) {
            QTextCharFormat format = inLow ? low->format : high->format;
            if (inLow && inHigh)
                format.merge(high->format);
            all.append({at, next - at, format});
        }
        at = next;
        if (inLow && endOf(*low) <= at)
            ++low;
        if (inHigh && endOf(*high) <= at)
            ++high;
    }
    return all;
}

TextMarks::Marks TextMarks::marksOf(const QTextBlock &block) const
{
    Marks all;
    for (const MarksOf &source : m_sources)
        if (source)
            all = joined(all, source(block));
    const QColor base = m_display->palette().color(QPalette::Base);
    for (QTextLayout::FormatRange &mark : all) {
        if (!mark.format.hasProperty(QTextFormat::ForegroundBrush))
            continue;
        const bool hasGround = mark.format.hasProperty(QTextFormat::BackgroundBrush);
        const QColor ground = hasGround ? blended(base, mark.format.background().color()) : base;
        mark.format.setForeground(corrected(mark.format.foreground().color(), ground));
    }
    return all;
}

QColor TextMarks::corrected(const QColor &text, const QColor &ground) const
{
    const quint64 key = quint64(text.rgb()) << 32 | ground.rgb();
    const auto known = m_corrected.constFind(key);
    if (known != m_corrected.constEnd())
        return *known;
    if (m_corrected.size() >= kMaxCorrected)
        m_corrected.clear();
    return *m_corrected.insert(key, Contrast::readableOn(ground, text));
}
