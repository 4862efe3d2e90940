#pragma once

// Archives for tests, as good or as bad as they are wanted.

#include <QByteArray>
#include <QVector>

struct ZipPart
{
    QByteArray name;
    QByteArray content;
    quint32 unixMode = 0100644;
    bool deflated = true;
};

// What is said about the first part, where it is not the truth.
struct ZipLies
{
    QByteArray headerName; // in the header before it
    quint16 flags = 0;     // in both places
    qint32 method = -1;
    qint64 size = -1;
    quint32 crcError = 0;
    bool sharedBytes = false; // all parts are at the place of the first
    quint32 dosAttributes = 0;
    quint16 madeBy = 0x0314; // Unix
    QByteArray extra;        // behind its names, and as its comment
    QByteArray comment;      // of the archive
};

QByteArray makeZip(const QVector<ZipPart> &parts, const ZipLies &lies = {});
