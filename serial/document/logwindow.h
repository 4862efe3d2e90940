#pragma once

// Which rows of a receive display's record its document holds. Rows are the
// lines of the record, or those of a filter, by their numbers there. At first
// the document holds the newest lines, up to its limits, and takes what is shown
// as it comes. When older rows are shown it is detached: new text is in the record
// only, until the newest row is in the document again.

#include "linefilter.h"
#include "receivedtext.h"

class QTextBlock;
class TerminalDocument;

class LogWindow
{
public:
    // Both outlive this.
    LogWindow(TerminalDocument *document, ReceivedText *received);

    bool isDetached() const { return m_isDetached; }
    // The document takes what is shown as it comes.
    bool takesChanges() const { return !m_isDetached && !m_filter; }
    // The document holds just what was shown, by a change in place of all.
    void replaced() { m_isPartial = false; }
    void clear(); // as the record

    qint64 rowCount() const;
    qint64 firstRow() const;
    qint64 lastRow() const;
    qint64 rowOf(const QTextBlock &block) const;
    qint64 rowOf(qint64 line) const; // the next one where it is filtered out
    qint64 lineOf(qint64 row) const;
    QTextBlock blockOf(qint64 row) const; // its first one; not valid where it isn't in the document
    // Characters of the row in the document's first block that are not there any more.
    int droppedOf(const QTextBlock &block) const;

    // Rows in place of all others: the newest, from one on, or around one.
    // False, and as before, where they can't be read back.
    bool showNewest(int rows = 0); // so many; as many as are brought in at a time
    bool showFrom(qint64 row);
    void showAround(qint64 row);
    // More rows before or behind those in the document. showOlder() drops others
    // at the end where there are too many, and returns how many rows of the layout
    // came in front. showNewer() drops none, see TerminalDocument::dropOldest().
    int showOlder();
    void showNewer();

    bool isFiltered() const { return m_filter != nullptr; }
    const LineFilter *filter() const { return m_filter; }
    // The filter outlives this or is taken away with nullptr. Some rows are to be
    // shown then.
    void setFilter(const LineFilter *filter) { m_filter = filter; }
    // Takes the rows that the filter has more. Too many to append stay out of a
    // display that does not follow the end. False: the newest are to be shown.
    bool appendFiltered(bool follows);

    // All text that the limits allow, filtered or not.
    QString text() const;

private:
    int step() const { return m_filter ? 500 : 2000; } // rows brought in at a time
    LineStore::Extract extract(qint64 first) const;

    TerminalDocument *m_document;
    ReceivedText *m_received;
    const LineFilter *m_filter = nullptr;
    bool m_isDetached = false;
    qint64 m_lastRow = 0;     // in the document, while it does not take changes
    bool m_isPartial = false; // the document holds less than the limits allow
};
