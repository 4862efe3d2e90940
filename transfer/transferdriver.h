#pragma once

// What the owner of a transfer asks of the one that runs over its link, whatever
// the direction and the protocol. From the start until the first report of the
// end, what the link receives is the driver's where usesInput().

#include "transferlog.h"

#include <QStringList>

class TransferDriver
{
public:
    virtual ~TransferDriver() = default;

    // From a successful start until the last report of its end.
    virtual bool isBusy() const = 0;
    // Nothing happens when no transfer is running.
    virtual void stop() = 0;
    virtual bool usesInput() const { return true; }
    // What was received and not used when the transfer ended.
    virtual QByteArray takeUnused() { return {}; }

    // Of the present file, in bytes; size -1 where it is not known.
    virtual qint64 bytesDone() const = 0;
    virtual qint64 fileSize() const = 0;

    // What went wrong in the last transfer, for the user; empty if nothing did.
    virtual QString reason() const = 0;
    // Full names of the files that were not transferred completely.
    virtual QStringList incompleteFiles() const = 0;
    virtual const TransferLog &log() const = 0;
};
