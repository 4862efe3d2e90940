#pragma once

// Waits for a line in received bytes. A line ends with "\n"; "\r" before that is
// not part of it. A line without end, a prompt, is judged when its owner finds
// that the device is quiet, and while it grows.

#include "linetest.h"

#include <QByteArray>

#include <optional>

class ExpectedLine
{
public:
    // Of a line without end, only so much is kept.
    static constexpr int maxOpenBytes = 64 * 1024;

    // codecIndex: of TextCodec.
    ExpectedLine(const LineMatcher::Pattern &pattern, int codecIndex);

    // The first line that matches, as it came; what follows it is not judged.
    std::optional<QByteArray> add(const QByteArray &bytes);
    // The line without end, where it matches.
    std::optional<QByteArray> openLine();

    // Lines that the expression could not be tried on completely.
    int unjudgedLines() const { return m_test.unjudgedLines(); }

private:
    bool matches(const QByteArray &line);

    LineTest m_test;
    int m_codecIndex;
    QByteArray m_open;
    int m_unseen = 0; // bytes of it that were not judged
};
