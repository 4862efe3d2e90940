#pragma once

// Writes the records of a session log in a thread of its own, so that a slow disk or
// a network drive holds up nothing. What the disk refuses is kept up to a limit and
// tried again.

#include "logfiles.h"
#include "logform.h"

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

class LogWriter
{
public:
    // Bytes that wait for the disk. More are dropped and counted.
    static constexpr qint64 maxWaitingBytes = 64LL * 1024 * 1024;

    struct Status
    {
        QString fileName;   // of the open file
        QString reason;     // why the disk refuses; empty while it does not
        qint64 written = 0; // bytes, all files
        qint64 lost = 0;    // bytes of records that were dropped
        bool isFinished = false;
    };

    LogWriter(LogForm::Kind form, const LogFiles::Target &target);
    // Lets the thread go on with what is queued, on its own where that takes long.
    ~LogWriter();
    LogWriter(const LogWriter &) = delete;
    LogWriter &operator=(const LogWriter &) = delete;

    // False: too much waits already, and this is lost.
    bool add(const LogForm::Record &record);
    // Makes the file although there is nothing to write.
    void openFile();
    // Writes the rest, tries once where the disk refuses, and closes the file.
    void finish();
    // True when that is done; waits so long for it.
    bool waitForFinished(int ms);
    Status status() const;

private:
    class Thread;
    std::shared_ptr<Thread> m_thread; // the other owner is the thread itself
};
