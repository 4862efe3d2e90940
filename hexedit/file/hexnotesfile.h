#pragma once

// Where the notes of a file are kept: beside it, or in a folder of the program under a
// name that is made of the file's own. Those beside it are read first.

#include <QString>

class HexNotesFile
{
public:
    HexNotesFile(const QString &fileName, const QString &folder);

    // Empty where there are none; `reason` where they can't be read.
    QByteArray read(QString *reason) const;
    bool isBeside() const; // as they are kept now
    // Removes what is kept in the other place. Empty content removes the notes.
    bool write(const QByteArray &content, bool beside, QString *reason) const;

private:
    QString m_beside;
    QString m_inFolder;
};
