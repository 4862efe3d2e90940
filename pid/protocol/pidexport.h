#pragma once

// The text of exported curves: one table for each channel, as spreadsheets read
// it, in GB18030. Made in pieces, since curves can be long.

#include <QByteArray>
#include <QVector>

#include <functional>

class PidExport
{
public:
    // The points of one channel. An actual value is taken at the target's index;
    // past the end of the actual values it is the last one.
    struct Channel
    {
        int points = 0; // of the target curve
        std::function<double(int)> target;
        std::function<double(int)> actual;
    };

    explicit PidExport(QVector<Channel> channels);

    // Goes on by at most that many rows. True when the text is complete.
    bool advance(int rows);
    const QByteArray &text() const { return m_text; }

private:
    void beginChannel();

    const QVector<Channel> m_channels;
    QByteArray m_text;
    int m_channel = 0;
    int m_row = 0; // the next one of the channel
};
