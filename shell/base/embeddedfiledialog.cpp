#include "shell/base/embeddedfiledialog.h"

#include "shell/base/qtmessagebox.h"

#include <QDir>
#include <QFileInfo>

EmbeddedFileDialog::EmbeddedFileDialog(QWidget *parent)
    : QFileDialog(parent)
{
    setWindowFlags(Qt::Widget);
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::DontConfirmOverwrite);
    setSizeGripEnabled(false);
}

void EmbeddedFileDialog::accept()
{
    if (acceptMode() == AcceptSave ? mayOverwrite() : allExist())
        QFileDialog::accept();
}

bool EmbeddedFileDialog::mayOverwrite()
{
    const QStringList files = selectedFiles();
    const QFileInfo target(files.value(0));
    if (files.isEmpty() || !target.exists() || target.isDir())
        return true;
    return QtMessageBox::question(this, QStringLiteral("询问"),
                                  QStringLiteral("文件已存在，是否覆盖?\n%1").arg(target.fileName())) == 1;
}

bool EmbeddedFileDialog::allExist()
{
    const QStringList files = selectedFiles();
    for (const QString &file : files) {
        if (QFileInfo::exists(file))
            continue;
        QtMessageBox::warning(
            this, QStringLiteral("告警"),
            QStringLiteral("文件不存在，请重新选择!\n%1").arg(QDir::toNativeSeparators(file)));
        return false;
    }
    return true;
}
