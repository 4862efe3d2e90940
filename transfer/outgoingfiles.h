#pragma once

// The files of a transfer that sends, one after the other: which is open, how much of
// it was read, and which the receiver has confirmed. A file is as long as it was when
// it was opened.

#include <QDateTime>
#include <QFile>
#include <QStringList>

class OutgoingFiles
{
public:
    void setNames(const QStringList &names); // full ones
    void forgetChanges();                    // at the start of a transfer

    int count() const { return m_names.size(); }
    int index() const { return m_next; } // of the file that is opened next
    bool hasNext() const { return m_next < m_names.size(); }
    // False with a reason for the user.
    bool openNext(QString *reason);
    void close() { m_file.close(); }

    // Of the file that was opened last.
    QString name() const { return m_file.fileName(); }
    qint64 size() const { return m_size; }
    qint64 sent() const { return m_sent; }
    // False where the file has become shorter or cannot be read.
    bool read(char *buffer, qint64 count);
    // Compares it with what it was when it was opened.
    void checkForChange();
    QStringList changed() const { return m_changed; } // while they were sent

    // The receiver has accepted the end of the file that was opened last.
    void confirm() { m_confirmed = m_next; }
    QStringList unconfirmed() const { return m_names.mid(m_confirmed); }

private:
    QStringList m_names;
    int m_next = 0;
    int m_confirmed = 0;
    QFile m_file;
    qint64 m_size = 0;
    QDateTime m_time; // of its last change
    qint64 m_sent = 0;
    QStringList m_changed;
};
