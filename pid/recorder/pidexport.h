#pragma once

// The text of exported samples: one table for each channel, as spreadsheets read
// it, in GB18030. Built in pieces, since there may be many samples.

#include "pidrecorder.h"

#include <QByteArray>

class PidExport
{
public:
    explicit PidExport(const PidRecorder::Channels &channels);

    // Adds at most that many rows. True when the text is complete.
    bool advance(int maxRows);
    const QByteArray &text() const { return m_text; }

private:
    void beginChannel();

    const PidRecorder::Channels m_channels;
    QByteArray m_text;
    size_t m_channel = 0;
    int m_row = 0; // the next one of the channel
};
