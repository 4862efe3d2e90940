#include "filelist.h"

#include <QContextMenuEvent>
#include <QDir>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMimeData>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// Folders and addresses elsewhere are none.
QStringList localFiles(const QMimeData *data)
{
    QStringList names;
    const QList<QUrl> urls = data->urls();
    for (const QUrl &url : urls)
        if (url.isLocalFile() && QFileInfo(url.toLocalFile()).isFile())
            names.append(url.toLocalFile());
    return names;
}

} // namespace

FileList::FileList(QWidget *parent)
    : QListWidget(parent)
    , m_hint(new QLabel(QStringLiteral("单击“打开文件”选择需要发送的文件，或将文件拖到这里"), this))
{
    setObjectName(QStringLiteral("listFiles"));
    setAccessibleName(QStringLiteral("需要发送的文件"));
    setToolTip(QStringLiteral("拖动或按Ctrl+↑、Ctrl+↓调整顺序，按Delete移除"));
    // A long name gives way to the size behind it.
    setTextElideMode(Qt::ElideMiddle);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(ExtendedSelection);
    setDragDropMode(InternalMove);
    m_hint->setProperty("kind", QStringLiteral("hint"));
    m_hint->setWordWrap(true);
    m_hint->setAlignment(Qt::AlignCenter);
    m_hint->setAttribute(Qt::WA_TransparentForMouseEvents); // drops reach the list
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_hint);
}

QStringList FileList::files() const
{
    QStringList names;
    for (int i = 0; i < count(); ++i)
        names.append(item(i)->data(Qt::UserRole).toString());
    return names;
}

QString FileList::selectedFile() const
{
    const auto selected = selectedItems();
    return selected.size() == 1 ? selected.first()->data(Qt::UserRole).toString() : QString();
}

void FileList::addFiles(const QStringList &names)
{
    for (const QString &name : names) {
        if (files().contains(name))
            continue;
        auto *added = new QListWidgetItem(this);
        added->setData(Qt::UserRole, name);
        added->setToolTip(QDir::toNativeSeparators(name));
        added->setFlags(added->flags() & ~Qt::ItemIsDropEnabled); // a drop goes between two
    }
    handleChange();
}

void FileList::clearFiles()
{
    clear();
    handleChange();
}

void FileList::describe()
{
    for (int i = 0; i < count(); ++i) {
        const QFileInfo info(item(i)->data(Qt::UserRole).toString());
        const QString size = info.exists() ? QStringLiteral("%1 字节").arg(QLocale::c().toString(info.size()))
                                           : QStringLiteral("文件不存在");
        item(i)->setText(QStringLiteral("%1  (%2)").arg(info.fileName(), size));
    }
}

void FileList::setLocked(bool locked)
{
    m_isLocked = locked;
    setDragEnabled(!locked);
}

void FileList::handleChange()
{
    describe();
    m_hint->setVisible(count() == 0);
    emit filesChanged();
}

void FileList::removeSelected()
{
    if (m_isLocked)
        return;
    qDeleteAll(selectedItems());
    handleChange();
}

void FileList::moveSelected(int by)
{
    const int row = currentRow();
    const int to = row + by;
    if (m_isLocked || row < 0 || to < 0 || to >= count())
        return;
    insertItem(to, takeItem(row));
    setCurrentRow(to);
    emit filesChanged();
}

// ---- the user

void FileList::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->source() == this)
        QListWidget::dragEnterEvent(event);
    else if (!m_isLocked && event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void FileList::dragMoveEvent(QDragMoveEvent *event)
{
    if (event->source() == this)
        QListWidget::dragMoveEvent(event);
    else if (!m_isLocked && event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void FileList::dropEvent(QDropEvent *event)
{
    if (m_isLocked)
        return event->ignore();
    if (event->source() == this) {
        QListWidget::dropEvent(event);
        emit filesChanged();
        return;
    }
    addFiles(localFiles(event->mimeData()));
    event->acceptProposedAction();
}

void FileList::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Delete)
        return removeSelected();
    const bool isMove = event->modifiers().testFlag(Qt::ControlModifier);
    if (isMove && event->key() == Qt::Key_Up)
        return moveSelected(-1);
    if (isMove && event->key() == Qt::Key_Down)
        return moveSelected(1);
    QListWidget::keyPressEvent(event);
}

void FileList::contextMenuEvent(QContextMenuEvent *event)
{
    if (m_isLocked || selectedItems().isEmpty())
        return;
    QMenu menu(this);
    menu.addAction(QStringLiteral("上移"), this, [this] { moveSelected(-1); })->setEnabled(currentRow() > 0);
    menu.addAction(QStringLiteral("下移"), this, [this] { moveSelected(1); })
        ->setEnabled(currentRow() >= 0 && currentRow() < count() - 1);
    menu.addSeparator();
    menu.addAction(QStringLiteral("移除"), this, &FileList::removeSelected);
    menu.exec(event->globalPos());
}
