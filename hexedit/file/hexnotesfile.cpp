#include "hexnotesfile.h"

#include "safefile.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>

namespace {
constexpr qint64 kMaxBytes = 16 << 20;
}

HexNotesFile::HexNotesFile(const QString &fileName, const QString &folder)
    : m_beside(fileName + QStringLiteral(".kvnotes"))
{
    const QString path = QFileInfo(fileName).canonicalFilePath();
    const QByteArray name =
        QCryptographicHash::hash((path.isEmpty() ? fileName : path).toUtf8(), QCryptographicHash::Sha1);
    m_inFolder = QStringLiteral("%1/%2.json").arg(folder, QString::fromLatin1(name.toHex()));
}

bool HexNotesFile::isBeside() const
{
    return QFileInfo::exists(m_beside);
}

QByteArray HexNotesFile::read(QString *reason) const
{
    QByteArray content;
    SafeFile::read(isBeside() ? m_beside : m_inFolder, kMaxBytes, &content, reason);
    return content;
}

bool HexNotesFile::write(const QByteArray &content, bool beside, QString *reason) const
{
    const QString &place = beside ? m_beside : m_inFolder;
    const QString &other = beside ? m_inFolder : m_beside;
    if (!content.isEmpty() && !SafeFile::write(place, content, reason))
        return false;
    const bool isGone = (!QFileInfo::exists(other) || QFile::remove(other)) &&
                        (!content.isEmpty() || !QFileInfo::exists(place) || QFile::remove(place));
    if (!isGone)
        *reason = QStringLiteral("旧的文件无法删除");
    return isGone;
}
