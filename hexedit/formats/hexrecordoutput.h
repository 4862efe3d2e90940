#pragma once

// Writes runs of bytes as records of text, the way an image says: header, data
// in ascending order, count, start addresses, end.

#include "heximage.h"
#include "hexoutput.h"

class HexRecordOutput : public HexOutput
{
public:
    // The image's own runs don't count: `runs` are those of the document now. The
    // record length is cut to what the form allows.
    HexRecordOutput(const HexDocument &document, HexRuns runs, const HexImage &image, int recordLength);
    qint64 size() const override;
    QByteArray next() override;
    bool isComplete() const override { return m_bytes == m_document.size(); }

    // Why runs can't be written, for the user; empty where they can.
    static QString refusal(const HexRuns &runs);

private:
    enum class Stage { Header, Data, Count, SegmentStart, Start, End, Done };

    void appendNext(QByteArray *text); // a record, or nothing but the next stage
    void appendData(QByteArray *text);
    void appendBase(qint64 part, QByteArray *text); // where it is another one than before
    void appendCount(QByteArray *text);
    void appendEnd(QByteArray *text);
    void appendRecord(int type, quint32 address, const QByteArray &bytes, QByteArray *text);
    quint32 linearStart() const;

    const HexDocument &m_document;
    HexRuns m_runs;
    HexImage m_image;
    int m_recordLength;
    int m_addressBytes;
    bool m_hasSegments;
    Stage m_stage = Stage::Header;
    size_t m_header = 0;
    size_t m_run = 0;
    qint64 m_inside = 0;
    qint64 m_base = 0; // the number of the last extended address record
    qint64 m_records = 0;
    qint64 m_bytes = 0;
};
