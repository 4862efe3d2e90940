#pragma once

// The notes of the file that is open: reads them when it is opened, and keeps each change
// at once. The only owner of the notes; the panels show and change them. What another copy
// of the program adds meanwhile is kept as well.

#include "hexnotes.h"
#include "notice.h"

#include <QObject>

#include <optional>

class HexNotesKeeper : public QObject
{
    Q_OBJECT

public:
    explicit HexNotesKeeper(QObject *parent = nullptr);

    const HexNotes &notes() const { return m_notes; }
    bool hasFile() const { return !m_fileName.isEmpty(); }
    void change(const HexNotes &notes);
    bool isBeside() const { return m_isBeside; }
    void setBeside(bool beside);

    void open(const QString &fileName); // empty: no file is open
    // The same bytes have another name from now on.
    void rename(const QString &fileName);

signals:
    void changed();
    void opened(); // after changed()
    void notify(const Notice &notice);

private:
    std::optional<HexNotes> readKept(QString *reason) const;
    void write();

    QString m_fileName;
    HexNotes m_notes;
    HexNotes m_kept; // as they were read or written last
    bool m_isBeside = false;
};
