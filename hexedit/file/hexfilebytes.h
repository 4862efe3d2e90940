#pragma once

// The bytes of a file that is not in memory: reads the block around the place that is
// asked for. Another program may change the file: what can't be read any more is null.

#include "hexbytes.h"

#include <QFile>

class HexFileBytes : public HexBytes
{
public:
    // False where it is no ordinary file or can't be opened, see reason().
    bool open(const QString &fileName);
    QString reason() const; // for the user

    qint64 size() const override { return m_size; } // when it was opened
    const char *span(qint64 address, qint64 *inRow) const override;

private:
    mutable QFile m_file;
    bool m_isOrdinary = true;
    qint64 m_size = 0;
    mutable QByteArray m_block;
    mutable qint64 m_begin = 0; // of the block
    mutable qint64 m_end = 0;
};
