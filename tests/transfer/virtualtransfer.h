#pragma once

// The driver on a link in memory and a clock that only the test moves: minutes
// of a transfer take no time.

#include "ymodemfiletransmit.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <functional>

// What it receives while it is paused waits, as with a real one.
class MemoryLink : public Link
{
public:
    MemoryLink() { setState(State::Open); }
    qint64 pendingBytes() const override { return 0; }
    void close() override { setState(State::Closed); }
    void receive(const QByteArray &bytes)
    {
        m_waiting += bytes;
        readingChanged();
    }

    QByteArray sent;

protected:
    qint64 accept(const QByteArray &bytes, quint64) override
    {
        sent += bytes;
        return bytes.size();
    }
    void readingChanged() override
    {
        if (isReading() && !m_waiting.isEmpty())
            emit received(std::exchange(m_waiting, {}), nowUs(), Peer());
    }

private:
    QByteArray m_waiting;
};

class VirtualTransfer
{
public:
    VirtualTransfer()
        : statuses(&driver, &YmodemFileTransmit::transmitStatus)
    {
        driver.setClock([this] { return nowMs * 1000; });
    }

    bool start(const QStringList &files, int baudRate = 115200, const QByteArray &arrived = {})
    {
        driver.setFileList(files);
        driver.setBaudRate(baudRate);
        m_earlierStatuses = statuses.size();
        return driver.startTransmit(&link, arrived);
    }

    // 10 ms, and what the driver's timers do in them.
    void step()
    {
        nowMs += 10;
        QCoreApplication::sendPostedEvents(&driver);
        if (!driver.isBusy())
            return;
        const bool isEnding = statuses.size() > m_earlierStatuses && status() >= Ymodem::Finish;
        m_endingSteps = isEnding ? m_endingSteps + 1 : 0;
        const auto timers = driver.findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        const auto runs = [](const QTimer *timer) { return timer->isActive(); };
        if (!isEnding && std::any_of(timers.begin(), timers.end(), runs))
            QMetaObject::invokeMethod(&driver, "readTimeOut");
        else if (m_endingSteps > 10)
            QMetaObject::invokeMethod(&driver, "writeTimeOut");
    }
    bool stepUntil(const std::function<bool()> &isDone, int seconds = 20)
    {
        for (const qint64 endMs = nowMs + seconds * 1000; !isDone() && nowMs < endMs;)
            step();
        return isDone();
    }
    bool stepToEnd(int seconds = 20)
    {
        return stepUntil([this] { return !driver.isBusy(); }, seconds);
    }
    int status() const { return statuses.last().at(0).value<Ymodem::Status>(); }

    qint64 nowMs = 0;
    MemoryLink link;
    YmodemFileTransmit driver;
    QSignalSpy statuses;

private:
    int m_earlierStatuses = 0; // of the transfers before
    int m_endingSteps = 0;
};
