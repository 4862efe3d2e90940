#pragma once

// Bytes that can be read at any place: a document's, or a file's that is not in memory.

#include "hexdocument.h"

class HexBytes
{
public:
    HexBytes() = default;
    virtual ~HexBytes() = default;
    Q_DISABLE_COPY_MOVE(HexBytes)

    virtual qint64 size() const = 0;
    // The bytes at a place before the end, and how many follow in a row; valid until the
    // next call. Null where they can't be read.
    virtual const char *span(qint64 address, qint64 *inRow) const = 0;

    // A byte that only stands in for one that is not there.
    virtual bool isAbsent(qint64) const { return false; }

    // At most `count`, fewer at the end or where they can't be read.
    QByteArray read(qint64 address, int count) const;
};

class HexDocumentBytes : public HexBytes
{
public:
    explicit HexDocumentBytes(HexDocument document)
        : m_document(std::move(document))
    {
    }
    qint64 size() const override { return m_document.size(); }
    const char *span(qint64 address, qint64 *inRow) const override { return m_document.span(address, inRow); }

private:
    HexDocument m_document;
};
