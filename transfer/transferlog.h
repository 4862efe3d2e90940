#pragma once

// The protocol log of one transfer: what was sent and what came back, with the
// time since the start. Long transfers keep their beginning and their end.
// Reads no clock; the time is handed in.

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <deque>

class TransferLog
{
public:
    static constexpr int keptAtStart = 1000; // lines
    static constexpr int keptAtEnd = 20000;

    void clear();
    bool isEmpty() const { return m_start.isEmpty(); }

    void note(qint64 ms, const QString &text);
    void sent(qint64 ms, const QByteArray &packet);
    // As it is read: one byte, or (a part of) a packet's rest.
    void received(qint64 ms, const QByteArray &bytes);

    // One line each, "[  1.234 s] ..."; a gap is named.
    QString text() const;

private:
    void add(qint64 ms, const QString &what);

    QStringList m_start;
    std::deque<QString> m_end;
    qint64 m_omitted = 0;
};
