#include "receivedlog.h"

#include "filereason.h"

bool ReceivedLog::open(const QString &fileName, QString *reason)
{
    m_file.setFileName(fileName);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return true;
    *reason = FileReason::of(m_file);
    return false;
}

bool ReceivedLog::write(const QByteArray &bytes, QString *reason)
{
    for (qint64 done = 0; done < bytes.size();) {
        const qint64 count = m_file.write(bytes.constData() + done, bytes.size() - done);
        if (count <= 0) {
            *reason = FileReason::of(m_file);
            m_file.close();
            return false;
        }
        done += count;
    }
    return true;
}
