#include "lineset.h"

#include <QtAlgorithms>

#include <algorithm>

namespace {

quint64 bitsBelow(int bit)
{
    return (quint64(1) << bit) - 1;
}

} // namespace

void LineSet::add(qint64 line)
{
    const int word = static_cast<int>(line / kWordBits);
    while (m_words.size() <= word) {
        if (m_words.size() % kGroupWords == 0)
            m_counts.append(m_count);
        m_words.append(0);
    }
    const quint64 bit = quint64(1) << (line % kWordBits);
    m_count += m_words.at(word) & bit ? 0 : 1;
    m_words[word] |= bit;
}

void LineSet::truncate(qint64 line)
{
    m_count = countBelow(line);
    const int words = static_cast<int>(qMin<qint64>(m_words.size(), line / kWordBits + 1));
    m_words.resize(words);
    m_counts.resize((words + kGroupWords - 1) / kGroupWords);
    if (line / kWordBits < words)
        m_words[words - 1] &= bitsBelow(static_cast<int>(line % kWordBits));
}

bool LineSet::contains(qint64 line) const
{
    const qint64 word = line / kWordBits;
    return line >= 0 && word < m_words.size() &&
           (m_words.at(static_cast<int>(word)) >> (line % kWordBits) & 1) != 0;
}

qint64 LineSet::countBelow(qint64 line) const
{
    const qint64 word = line / kWordBits;
    if (line <= 0)
        return 0;
    if (word >= m_words.size())
        return m_count;
    const int last = static_cast<int>(word);
    const int group = last / kGroupWords;
    qint64 count = m_counts.at(group);
    for (int i = group * kGroupWords; i < last; ++i)
        count += qPopulationCount(m_words.at(i));
    return count + qPopulationCount(m_words.at(last) & bitsBelow(static_cast<int>(line % kWordBits)));
}

bool LineSet::isAnyIn(qint64 first, qint64 end) const
{
    return end > first && countBelow(end) > countBelow(first);
}

qint64 LineSet::at(qint64 position) const
{
    const auto behind = std::upper_bound(m_counts.begin(), m_counts.end(), position);
    const int group = static_cast<int>(behind - m_counts.begin()) - 1;
    qint64 before = m_counts.at(group);
    int word = group * kGroupWords;
    for (; before + qPopulationCount(m_words.at(word)) <= position; ++word)
        before += qPopulationCount(m_words.at(word));
    quint64 bits = m_words.at(word);
    for (; before < position; ++before)
        bits &= bits - 1; // without the lowest
    return qint64(word) * kWordBits + qCountTrailingZeroBits(bits);
}
