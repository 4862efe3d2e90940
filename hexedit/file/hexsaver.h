#pragma once

// Puts bytes in a file's place by way of a temporary file beside it: write,
// remove the old one, copy, remove the temporary one. At no moment are the
// old and the new bytes both missing from the disk. Shows nothing.

#include <QFile>
#include <QStringList>
#include <functional>

class HexSaver
{
public:
    struct Outcome
    {
        bool saved = false;
        bool inPlace = false; // the file has the new bytes, saved or not
        // For the user: why it is not saved, and then where the old and the new
        // bytes are and what to do; where it is saved, what was lost all the same.
        QString reason;
        QString consequence;
    };

    // Called often while the copy is made, with the bytes copied since the last
    // time, and while the disk is waited for.
    std::function<void(qint64 bytes)> pause;

    // What a test can make fail.
    std::function<bool(const QString &fileName)> flush; // to the disk
    std::function<qint64(const QString &folder)> freeBytes;
    std::function<bool(const QString &from, const QString &to)> copy;

    HexSaver();
    Q_DISABLE_COPY_MOVE(HexSaver)

    // `write` puts `size` bytes into the device, false when it couldn't.
    Outcome save(const QString &fileName, qint64 size, const std::function<bool(QIODevice &)> &write) const;

    // Behind all links; the name itself where there is no such file yet.
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
    bool flushMeanwhile(const QString &fileName) const;
    bool copySlices(const QString &from, const QString &to) const;
    QString refusal(const QString &target, qint64 size) const;
};
