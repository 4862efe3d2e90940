#pragma once

// Puts what a document is written as in a file's place by way of a temporary file beside it:
// write, remove the old one, copy, remove the temporary one, a slice at a time.
// At no moment are the old and the new bytes both missing from the disk. Owns
// the open files and the thread that waits for the disk; shows nothing.

#include "fileaccess.h"
#include "hexoutput.h"

#include <QFile>
#include <QStringList>
#include <QThread>
#include <functional>
#include <memory>

class HexSaver
{
public:
    struct Outcome
    {
        bool saved = false;
        bool inPlace = false; // the file has the new bytes, saved or not
        // For the user: why it is not saved (empty where it was stopped), and
        // then where the old and the new bytes are and what to do; where it is
        // saved, what was lost all the same.
        QString reason;
        QString consequence;
    };

    // What a test can make fail.
    struct Disk
    {
        std::function<bool(const QString &fileName)> flush; // called in a thread of its own
        std::function<qint64(const QString &folder)> freeBytes;
    };
    static Disk realDisk();

    // The document of the output must keep still until the end.
    HexSaver(const QString &fileName, std::unique_ptr<HexOutput> output, const Disk &disk = realDisk());
    ~HexSaver(); // as stop(), where it may be stopped
    Q_DISABLE_COPY_MOVE(HexSaver)

    enum class State { Running, Waiting, Done };
    State step();
    int permille() const;
    const Outcome &outcome() const { return m_outcome; } // at the end

    // Not after the old file was removed.
    bool mayStop() const { return m_stage < Stage::Copy; }
    void stop(); // the old file stays

    // Behind all links; the name itself where there is no such file yet.
    // Why nothing can be saved there, as far as it shows without trying; for the
    // user. Empty where it may be possible, or without a name.
    static QString readOnlyReason(const QString &fileName);
    static QString targetOf(const QString &fileName);

    // The given name's temporary file.
    static QString temporaryOf(const QString &fileName);

    // What saves that failed have left beside a file: new bytes first, then the
    // last of the old ones. Empty where nothing lies there.
    static QStringList leftoversOf(const QString &fileName);

    // Before other bytes than the file's are saved there: gives new bytes that a
    // failed save has left a name that is not written over.
    static void setLeftoverAside(const QString &fileName);

private:
    enum class Stage { Begin, Write, FlushTemporary, Copy, FlushCopy, Done };

    QString refusal() const;
    void begin();
    void writeSlice();
    void replaceOld();
    void copySlice();
    void putCopyInPlace();
    void fail(const QString &reason, const QString &consequence);
    void failWriting();
    void failCopying();
    void startFlush(const QString &fileName, Stage next);
    bool isFlushing();

    Stage m_stage = Stage::Begin;
    Outcome m_outcome;
    std::unique_ptr<HexOutput> m_output;
    Disk m_disk;
    QString m_target;
    QFile m_temporary;
    QFile m_part; // the copy until it is complete
    FileAccess m_access;
    bool m_replaces = false;
    qint64 m_written = 0;
    qint64 m_copied = 0;
    std::unique_ptr<QThread> m_flush;
    bool m_flushed = false;
};
