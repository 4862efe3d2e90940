#include "leftoveroffer.h"

#include "apppaths.h"
#include "eventslices.h"
#include "filereason.h"
#include "leftovers.h"
#include "qtfiledialog.h"
#include "qtmessagebox.h"
#include "safefile.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSaveFile>

namespace {

const struct
{
    const char *stem;
    const char *name;
} kTools[] = {{"serial", "串口调试助手"}, {"network", "网络调试助手"}};

QString toolOf(const QString &stem)
{
    for (const auto &tool : kTools)
        if (stem == QLatin1String(tool.stem))
            return QString::fromUtf8(tool.name);
    return stem;
}

QString describe(const Leftovers::File &file)
{
    return QStringLiteral("%1 %2（%3）")
        .arg(toolOf(file.stem),
             QLocale::c().formattedDataSize(file.size, 1, QLocale::DataSizeTraditionalFormat),
             file.time.toString(QStringLiteral("MM-dd hh:mm:ss")));
}

// Piece by piece, while the window goes on. False with a reason: the file stays.
bool moveTo(const QString &fileName, const QString &target, QString *reason)
{
    constexpr qint64 pieceBytes = 256 * 1024;
    QFile source(fileName);
    QSaveFile copy(target);
    if (!source.open(QIODevice::ReadOnly) || !copy.open(QIODevice::WriteOnly)) {
        *reason = FileReason::of(copy);
        return false;
    }
    EventSlices events;
    while (!source.atEnd()) {
        const QByteArray bytes = source.read(pieceBytes);
        if (bytes.isEmpty() || copy.write(bytes) != bytes.size()) {
            *reason = FileReason::of(copy);
            return false;
        }
        events.runIfDue();
    }
    return SafeFile::commit(copy, reason) && source.remove();
}

// Until it is saved, or the user gives up: it then stays for the next start.
void save(QWidget *window, const Leftovers::File &file)
{
    for (;;) {
        const QString target = QtFileDialog::getSaveFileName(window, QStringLiteral("保存 ") + describe(file),
                                                             QString(), QStringLiteral("数据文件(*.bin)"));
        QString reason;
        if (target.isEmpty() || moveTo(file.fileName, target, &reason))
            return;
        QtMessageBox::warning(window, QStringLiteral("提示"),
                              QStringLiteral("无法写入“%1”：%2").arg(QFileInfo(target).fileName(), reason));
    }
}

} // namespace

namespace LeftoverOffer {

void make(QWidget *window)
{
    QStringList stems;
    for (const auto &tool : kTools)
        stems.append(QLatin1String(tool.stem));
    const QVector<Leftovers::File> files = Leftovers::find(AppPaths::tmpFolder(), stems);
    if (files.isEmpty())
        return;
    QStringList lines;
    for (const Leftovers::File &file : files)
        lines.append(describe(file));
    const QtMessageBox::SaveAnswer answer = QtMessageBox::saveQuestion(
        window, QStringLiteral("询问"),
        QStringLiteral("程序上次异常结束，留有未保存的接收数据：\n%1\n是否保存？取消则下次启动时再问。")
            .arg(lines.join(QLatin1Char('\n'))));
    for (const Leftovers::File &file : files) {
        if (answer == QtMessageBox::Save)
            save(window, file);
        else if (answer == QtMessageBox::Discard)
            QFile::remove(file.fileName);
    }
}

} // namespace LeftoverOffer
