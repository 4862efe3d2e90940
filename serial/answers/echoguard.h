#pragma once

// Knows an answer again that comes back from its receiver, as from a line that echoes,
// so that nobody answers himself. Times are microseconds of the caller's clock.

#include <QByteArray>
#include <QHash>

#include <deque>

class EchoGuard
{
public:
    static constexpr qint64 maxAgeUs = 300LL * 1000; // and the time of the bytes on a slow line
    static constexpr qint64 perByteUs = 2000;
    static constexpr int maxAnswers = 16; // of a source

    void sent(quint64 source, const QByteArray &answer, qint64 timeUs);
    // Whether the bytes [begin, end) of the recent ones, which the source sent by then,
    // lie in an answer that it got. What is missing at either end may lie outside.
    bool isEcho(quint64 source, qint64 timeUs, const QByteArray &recent, int begin, int end);
    void forget(quint64 source) { m_sent.remove(source); }
    void forgetAll() { m_sent.clear(); }

private:
    struct Sent
    {
        QByteArray bytes;
        qint64 untilUs;
    };
    QHash<quint64, std::deque<Sent>> m_sent;
};
