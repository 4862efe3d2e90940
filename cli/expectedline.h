#pragma once

// Waits for a line in received bytes. A line ends with "\n"; "\r" before that is
// not part of it. A line without end, a prompt, is judged when its owner finds
// that the device is quiet, and while it grows. An expression that is slow on long
// lines gets less of them, so that the program still answers.

#include "linetest.h"

#include <QByteArray>

#include <functional>
#include <optional>

class ExpectedLine
{
public:
    // Of a line without end, only so much is kept.
    static constexpr int maxOpenBytes = 64 * 1024;

    // codecIndex: of TextCodec. nowUs: microseconds of a clock that only moves
    // forward.
    ExpectedLine(const LineMatcher::Pattern &pattern, int codecIndex, std::function<qint64()> nowUs);

    // The first line that matches, as it came; what follows it is not judged.
    std::optional<QByteArray> add(const QByteArray &bytes);
    // The line without end, where it matches.
    std::optional<QByteArray> openLine();

    // Lines that the expression could not be tried on completely.
    int unjudgedLines() const { return m_test.unjudgedLines(); }

private:
    bool matches(const QByteArray &line);
    void adapt(qint64 us);

    LineTest m_test;
    int m_codecIndex;
    QByteArray m_open;
    int m_unseen = 0; // bytes of it that were not judged
    std::function<qint64()> m_nowUs;
    int m_maxBytes = maxOpenBytes;
};
