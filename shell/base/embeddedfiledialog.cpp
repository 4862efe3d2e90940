#include "embeddedfiledialog.h"

#include "qtmessagebox.h"

#include <QAction>
#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>
#include <QLineEdit>
#include <QListView>
#include <QShortcut>
#include <QStandardPaths>
#include <QUrl>

EmbeddedFileDialog::EmbeddedFileDialog(QWidget *parent)
    : QFileDialog(parent)
{
    setWindowFlags(Qt::Widget);
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::DontConfirmOverwrite);
    setSizeGripEnabled(false);
    takeOverDeleting();
    showPlaces();
    connect(this, &QFileDialog::filterSelected, this, &EmbeddedFileDialog::applyFilter);
}

void EmbeddedFileDialog::setAcceptText(const QString &text)
{
    m_acceptText = text;
    const auto restore = [this] { setLabelText(Accept, m_acceptText); };
    restore();
    // After Qt's own slots.
    connect(this, &QFileDialog::currentChanged, this, restore, Qt::QueuedConnection);
    connect(this, &QFileDialog::directoryEntered, this, restore, Qt::QueuedConnection);
    if (auto *name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit")))
        connect(name, &QLineEdit::textChanged, this, restore, Qt::QueuedConnection);
}

void EmbeddedFileDialog::applyFilter()
{
    auto *model = findChild<QFileSystemModel *>();
    if (model && model->nameFilters().contains(QStringLiteral("*.*")))
        model->setNameFilters({QStringLiteral("*")});
}

void EmbeddedFileDialog::propose(const QString &name)
{
    m_proposal = name;
    selectFile(name);
}

void EmbeddedFileDialog::accept()
{
    auto *name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    const QFileInfo typed(directory(), name ? name->text() : QString());
    if (acceptMode() == AcceptSave && name && !name->text().isEmpty() && typed.isDir()) {
        setDirectory(typed.absoluteFilePath()); // Qt would add the suffix to it
        name->setText(m_proposal);
        return;
    }
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
                                  QStringLiteral("文件已存在，是否覆盖？\n%1").arg(target.fileName())) == 1;
}

bool EmbeddedFileDialog::allExist()
{
    const QStringList files = selectedFiles();
    for (const QString &file : files) {
        if (QFileInfo::exists(file))
            continue;
        QtMessageBox::warning(
            this, QStringLiteral("告警"),
            QStringLiteral("文件不存在，请重新选择！\n%1").arg(QDir::toNativeSeparators(file)));
        return false;
    }
    return true;
}

// The context menu and the Delete key, which Qt answers with a box of its own.
void EmbeddedFileDialog::takeOverDeleting()
{
    if (auto *action = findChild<QAction *>(QStringLiteral("qt_delete_action"))) {
        disconnect(action, nullptr, this, nullptr);
        connect(action, &QAction::triggered, this, &EmbeddedFileDialog::deleteSelected);
    }
    const auto shortcuts = findChildren<QShortcut *>();
    for (QShortcut *shortcut : shortcuts) {
        if (shortcut->key() != QKeySequence(Qt::Key_Delete))
            continue;
        disconnect(shortcut, nullptr, this, nullptr);
        connect(shortcut, &QShortcut::activated, this, &EmbeddedFileDialog::deleteSelected);
    }
}

void EmbeddedFileDialog::deleteSelected()
{
    auto *model = findChild<QFileSystemModel *>();
    auto *list = findChild<QListView *>(QStringLiteral("listView")); // the details have its selection
    if (!model || model->isReadOnly() || !list)
        return;
    constexpr int maxNames = 8;
    QStringList names;
    QList<QPersistentModelIndex> chosen;
    const QModelIndexList rows = list->selectionModel()->selectedRows();
    for (const QModelIndex &row : rows) {
        chosen.append(row);
        if (names.size() < maxNames)
            names.append(model->fileName(row) +
                         (model->isDir(row) ? QStringLiteral("（文件夹及其全部内容）") : QString()));
    }
    if (chosen.isEmpty())
        return;
    if (chosen.size() > maxNames)
        names.append(QStringLiteral("等%1项").arg(chosen.size()));
    if (QtMessageBox::question(
            this, QStringLiteral("询问"),
            QStringLiteral("确定删除吗？删除后不能恢复。\n%1").arg(names.join(QLatin1Char('\n')))) != 1)
        return;
    for (const QPersistentModelIndex &index : qAsConst(chosen)) {
        const QString name = model->fileName(index);
        if (index.isValid() && !model->remove(index))
            QtMessageBox::warning(this, QStringLiteral("告警"),
                                  QStringLiteral("无法删除，可能没有权限：\n%1").arg(name));
    }
}

void EmbeddedFileDialog::showPlaces()
{
    QList<QUrl> places{QUrl(QStringLiteral("file:"))}; // the computer
    for (const auto location :
         {QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation, QStandardPaths::DocumentsLocation}) {
        const QString folder = QStandardPaths::writableLocation(location);
        const QUrl place = QUrl::fromLocalFile(folder);
        if (QFileInfo(folder).isDir() && !places.contains(place))
            places.append(place);
    }
    setSidebarUrls(places);
}
