#include "leftovers.h"

#include "runmark.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

namespace Leftovers {

QVector<File> find(const QString &folder, const QStringList &stems)
{
    static const QRegularExpression name(QStringLiteral("^([a-z]+)_(\\d+)(_[A-Za-z]{6}|\\.lock)$"));
    QVector<File> found;
    QHash<QString, bool> ended; // by mark
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Time | QDir::Reversed);
    for (const QFileInfo &file : files) {
        const QRegularExpressionMatch match = name.match(file.fileName());
        if (!match.hasMatch())
            continue;
        const QString mark = match.captured(2);
        if (!ended.contains(mark))
            ended.insert(mark, RunMark::hasEnded(folder, mark));
        if (!ended.value(mark) || match.captured(3) == QLatin1String(".lock")) // removed by asking
            continue;
        if (stems.contains(match.captured(1)) && file.size() > 0)
            found.append({file.filePath(), match.captured(1), file.size(), file.lastModified()});
        else
            QFile::remove(file.filePath());
    }
    return found;
}

} // namespace Leftovers
