#include "app/safefile.h"

#include <QSaveFile>

namespace SafeFile {

bool commit(QSaveFile &file, QString *error)
{
    if (file.flush() && file.error() == QFileDevice::NoError && file.commit())
        return true;
    if (error)
        *error = QStringLiteral("磁盘空间不足或无法写入"); // the system gives none for a cut write
    file.cancelWriting();
    return false;
}

bool write(const QString &fileName, const QByteArray &content, QString *error)
{
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(content) == content.size())
        return commit(file, error);
    if (error)
        *error = file.errorString();
    return false;
}

} // namespace SafeFile
