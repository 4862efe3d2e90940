#include "app/safefile.h"

#include <QSaveFile>

namespace SafeFile {

bool commit(QSaveFile &file)
{
    if (file.flush() && file.error() == QFileDevice::NoError)
        return file.commit();
    file.cancelWriting();
    return false;
}

bool write(const QString &fileName, const QByteArray &content, QString *error)
{
    QSaveFile file(fileName);
    const bool done = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && commit(file);
    if (!done && error)
        *error = file.errorString();
    return done;
}

} // namespace SafeFile
