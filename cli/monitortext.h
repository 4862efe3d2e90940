#pragma once

// How "monitor" shows received bytes where it does not pass them on as they are:
// decoded, as hexadecimal digits, with times, or only the lines that match.
//
// A line of text ends with "\n". A line of hexadecimal digits is a packet: the
// bytes up to a pause, which its owner notices.

#include "linetest.h"
#include "textcodec.h"

#include <QByteArray>

#include <optional>

class MonitorText
{
public:
    struct Options
    {
        bool isHex = false;
        bool hasStamps = false;
        int codecIndex = TextCodec::Utf8;
        std::optional<LineMatcher::Pattern> filter;
    };
    // A longer line is filtered in pieces, a longer packet has several lines.
    static constexpr int maxLineBytes = 16 * 1024;
    static constexpr int maxPacketBytes = 1024;

    explicit MonitorText(const Options &options);

    // Text in UTF-8. arrivalMs: since the epoch.
    QByteArray add(const QByteArray &bytes, qint64 arrivalMs);
    // Ends the line: a pause behind a packet, or the end of all.
    QByteArray endLine();

    // Lines that the filter could not be tried on.
    int unjudgedLines() const { return m_filter.unjudgedLines(); }

private:
    QByteArray addHex(const QByteArray &bytes);
    QByteArray addText(const QByteArray &text);
    void append(const char *bytes, int count, QByteArray *out);
    void finishLine(QByteArray *out);

    Options m_options;
    LineTest m_filter;
    StreamDecoder m_decoder;
    qint64 m_arrivalMs = 0;
    QByteArray m_prefix;   // of the line, while it is filtered
    QByteArray m_line;     // the line so far, while it is filtered
    int m_lineBytes = 0;   // received bytes in it
    bool m_isOpen = false; // a line has begun
};
