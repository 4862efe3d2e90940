#pragma once

// The text of a receive display, as a sequence of changes: what was received,
// decoded or in hexadecimal, behind its headers. Owns what is pending, a record
// on disk of all lines shown since the last clearing, and the newest bytes
// shown, which are the limit of the display in log mode. Knows no widget and no
// clock: a display asks for the next slice when it has time for one.
//
// Nothing asks the display for its text: it may drop and replace what it likes.

#include "linestore.h"
#include "linestyles.h"
#include "receivebuffer.h"
#include "receivejournal.h"
#include "receivequeue.h"

class ReceivedText
{
public:
    using Bound = ReceiveQueue::Bound;

    // What a display does to what it shows.
    struct Change
    {
        enum Kind { None, Append, Replace, EditEnds };
        Kind kind = None;
        int removed = 0;          // characters at the end of the last line, before text is appended
        QString text;             // to be appended, or to stand in place of all
        ReceiveBuffer::Edit ends; // of what is shown
    };

    // The record's file is in the folder, see ByteSpool.
    explicit ReceivedText(const QString &folder);

    // What is to be shown, see ReceiveQueue.
    void receive(const ReceiveQueue::Chunk &chunk);

    // How text is shown from now on.
    void setOptions(TerminalText::Options options) { m_queue.setOptions(options); }
    // Escape sequences were shown as they stand.
    bool hasSeenSequences() const { return m_queue.hasSeenSequences(); }

    // Clears the record and makes it again from all that was received since the
    // last clearing, with the codec and the options of now, while slices are
    // asked for. What is received meanwhile follows. False: not all of it is
    // there any more, and nothing changes.
    bool beginAgain();
    bool isMadeAgain() const { return m_journal.isReading(); } // not complete yet

    bool hasPending() const { return !m_queue.isEmpty() || m_journal.isReading(); }
    qint64 pendingBytes() const { return m_queue.bytes(); }
    bool isEmpty() const { return !hasPending() && m_lines.text().size() == 0; }

    // Records about so many characters of what is pending, decoded with the
    // codec of the index. With a bound, the change is put off until what follows
    // needs it or the display asks for it: only the last one can be seen.
    Change next(int characters, int codecIndex);
    Change putOff(int codecIndex);

    // Text that was not received. Lines: "\r\n" ends one, which then keeps only
    // what follows its last carriage return, as on a terminal.
    Change setText(const QString &text);
    Change appendText(const QString &text);
    Change appendLines(const QString &text);

    void clear();

    // False: some of what was shown is missing in the record.
    bool isRecordComplete() const { return m_lines.isComplete(); }
    // All that was shown since the last clearing.
    const LineStore &lines() const { return m_lines; }
    const LineStyles &styles() const { return m_styles; }
    // The display shows something else now: lines of the record.
    void forgetShown() { m_showsNewest = false; }

    // Hands out, piece by piece, what was shown since the last clearing up to
    // the moment at which the reader was made.
    class Reader
    {
    public:
        explicit Reader(const ReceivedText &text);

        QString next();                          // empty at the end
        bool failed() const { return m_failed; } // the file could not be read back

    private:
        const ByteSpool &m_record;
        const qint64 m_end;
        qint64 m_offset = 0;
        StreamDecoder m_decoder;
        bool m_failed = false;
    };

private:
    Change shown(Change::Kind kind, const QString &text);
    void readJournal();
    void record(const ReceiveQueue::Slice &slice);
    void recordStyles(const ReceiveQueue::Slice &slice, qint64 firstLine);
    void clearText();

    ReceiveQueue m_queue;
    ReceiveJournal m_journal;
    LineStore m_lines;
    LineStyles m_styles;
    int m_openLength = 0;       // characters of the record's last line
    ReceiveBuffer m_newest;     // shown as text, with a bound or not
    bool m_isNewestDue = false; // a change was put off
    bool m_showsNewest = false; // the display shows m_newest and nothing else
    QString m_terminalLines;    // see appendLines()
};
