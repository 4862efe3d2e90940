#pragma once

// Samples and events of all channels as one table of comma-separated values (RFC 4180),
// a row each in the order of time:
//
//   时间    local, with microseconds: 2026-11-22T23:43:47.123456
//   秒      since the origin, or the first row where there is none
//   通道    1 to 5, its 名称 and 单位
//   类型    采样, 启动, 停止, 增益, 目标值 or 周期; 来源 is 上报 (by the board) or 发送
//   实际值, 目标值, 差值    whole numbers; the difference is actual minus target
//   P, I, D, 周期           of events; the fewest digits that are read back as the same number
//
// What does not apply is empty. UTF-8 with a byte order mark, which spreadsheets and
// scripts of every system recognize; GB18030 is read well on Chinese Windows only, and
// cannot be distinguished from other encodings.
//
// Written piece by piece, as the record held it when the table was made.

#include "pidrecordrange.h"
#include "pidsessioninfo.h"

#include <QByteArray>

class QIODevice;

class PidTimeTable
{
public:
    // The device is open for writing; both must outlive this. Of the information, names
    // and units are used.
    PidTimeTable(const PidRecorder *recorder, const PidSessionInfo &info, QIODevice *device);

    // Writes up to so many rows. True when all are written, or error() has a reason.
    bool advance(int maxRows);
    int percent() const;
    // In the user's language.
    const QString &error() const { return m_error; }
    // Samples that the record dropped before they were written.
    qint64 leftOut() const { return m_range.leftOut(); }

private:
    bool addRow(); // false at the end
    void addSample(int channel, const PidSample &sample);
    void addEvent(const PidEvent &event);
    void addTime(qint64 us);
    void addNumber(qint64 value);

    QIODevice *m_device;
    PidRecordRange m_range;
    const std::deque<PidEvent> m_events;
    size_t m_event = 0; // the next one
    std::optional<qint64> m_originUs;
    std::array<QByteArray, PidRecorder::channels> m_channels; // number, name and unit, quoted
    QByteArray m_piece;                                       // not written yet
    qint64 m_second = -1;                                     // of the text below
    QByteArray m_secondText;
    bool m_isComplete = false;
    QString m_error;
};
