#pragma once

// What a save writes of a document, slice by slice. The document must keep
// still until the end.

#include "hexaddressmap.h"
#include "hexdocument.h"

class HexOutput
{
public:
    static constexpr int slice = 1 << 20; // bytes

    HexOutput() = default;
    virtual ~HexOutput() = default;
    Q_DISABLE_COPY_MOVE(HexOutput)

    // Bytes of all slices; of records at least so many.
    virtual qint64 size() const = 0;
    // About a slice, empty at the end.
    virtual QByteArray next() = 0;
    // At the end: all bytes of the document were written.
    virtual bool isComplete() const = 0;
};

// The bytes one after another.
class HexPlainOutput : public HexOutput
{
public:
    explicit HexPlainOutput(const HexDocument &document);
    qint64 size() const override { return m_document.size(); }
    QByteArray next() override;
    bool isComplete() const override { return m_at == m_document.size(); }

private:
    const HexDocument &m_document;
    qint64 m_at = 0;
};

// From the first address to the last one, with a fill byte in the gaps.
class HexFilledOutput : public HexOutput
{
public:
    HexFilledOutput(const HexDocument &document, HexRuns runs, quint8 fill);
    qint64 size() const override;
    QByteArray next() override;
    bool isComplete() const override { return m_bytes == m_document.size(); }

    static qint64 fillSize(const HexRuns &runs);

private:
    const HexDocument &m_document;
    HexRuns m_runs;
    char m_fill;
    size_t m_run = 0;
    qint64 m_address;   // of the next byte
    qint64 m_bytes = 0; // of the document
};
