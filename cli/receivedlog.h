#pragma once

// A file that gets received bytes as they came. The file always holds the
// beginning of what was received: after an error nothing more is written to it.

#include <QFile>

class ReceivedLog
{
public:
    // Empties the file. False with a reason for the user.
    bool open(const QString &fileName, QString *reason);
    bool isOpen() const { return m_file.isOpen(); }
    // False with a reason when the disk refuses the bytes; the log is closed then.
    bool write(const QByteArray &bytes, QString *reason);

private:
    QFile m_file;
};
