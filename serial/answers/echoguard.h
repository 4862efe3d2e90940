#pragma once

// Knows an answer again that comes back from its receiver, as from a line that echoes,
// so that the program does not answer itself. Times are microseconds of the caller's clock.

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
    // Bytes of a source with their numbers in its stream.
    struct Received
    {
        QByteArray bytes;
        qint64 first = 0;
    };
    // Whether the bytes numbered [begin, end), received by then, lie in an answer that the
    // source got. The rest of the answer may be outside of what was received. An answer
    // has one echo.
    bool isEcho(quint64 source, qint64 timeUs, const Received &received, qint64 begin, qint64 end);
    void forget(quint64 source) { m_sent.remove(source); }
    void forgetAll() { m_sent.clear(); }

private:
    struct Sent
    {
        QByteArray bytes;
        qint64 untilUs;
        qint64 echoAt = -1; // the number of the first byte of its echo
    };
    QHash<quint64, std::deque<Sent>> m_sent;
};
