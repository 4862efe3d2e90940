#include "qtfiledialog.h"

#include "dialoganswers.h"
#include "embeddedfiledialog.h"
#include "framelesshelper.h"
#include "iconfont.h"
#include "skin.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QDateTime>
#include <QEvent>
#include <QFileInfo>
#include <QHeaderView>
#include <QLineEdit>
#include <QListView>
#include <QRegularExpression>
#include <QScreen>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

QString &lastFolder()
{
    static QString folder;
    return folder;
}

void rememberFolderOf(const QStringList &files)
{
    if (!files.isEmpty())
        lastFolder() = QFileInfo(files.first()).absolutePath();
}

// A name that is not taken, for what the caller has no name for.
QString nameFor(const QString &filter)
{
    const QString suffix = QtFileDialog::suffixOf(filter);
    return QStringLiteral("数据_") +
           QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss")) +
           (suffix.isEmpty() ? QString() : QLatin1Char('.') + suffix);
}

// Size, type and date as wide as they need, the name has the rest.
void showColumns(QHeaderView *header)
{
    header->setStretchLastSection(false);
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
}

} // namespace

QtFileDialog::QtFileDialog(Mode mode, const QString &caption, const QString &folder, const QString &filter,
                           QWidget *parent)
    : QtFramelessDialog(caption.isEmpty() ? QStringLiteral("文件选择框") : caption, parent)
    , m_dialog(new EmbeddedFileDialog(this))
{
    m_dialog->setAcceptMode(mode == SaveFile ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    m_dialog->setFileMode(mode == OpenFiles  ? QFileDialog::ExistingFiles
                          : mode == OpenFile ? QFileDialog::ExistingFile
                          : mode == Folder   ? QFileDialog::Directory
                                             : QFileDialog::AnyFile);
    m_dialog->setOption(QFileDialog::ShowDirsOnly, mode == Folder);
    if (!filter.isEmpty())
        m_dialog->setNameFilter(filter);
    if (mode == SaveFile) {
        m_dialog->setDefaultSuffix(suffixOf(m_dialog->selectedNameFilter()));
        connect(m_dialog, &QFileDialog::filterSelected, m_dialog,
                [this](const QString &chosen) { m_dialog->setDefaultSuffix(suffixOf(chosen)); });
    }

    // A folder that also names a file proposes that file.
    const QFileInfo proposed(folder);
    if (folder.isEmpty()) {
        if (!lastFolder().isEmpty())
            m_dialog->setDirectory(lastFolder());
    } else if (proposed.isDir()) {
        m_dialog->setDirectory(folder);
    } else {
        const bool bareName = proposed.fileName() == folder;
        m_dialog->setDirectory(bareName && !lastFolder().isEmpty() ? lastFolder() : proposed.path());
        m_dialog->propose(proposed.fileName());
    }
    if (mode == SaveFile && (folder.isEmpty() || proposed.isDir()))
        m_dialog->propose(nameFor(m_dialog->selectedNameFilter()));

    m_dialog->setLabelText(QFileDialog::LookIn, QStringLiteral("文件目录："));
    m_dialog->setLabelText(QFileDialog::FileName,
                           mode == Folder ? QStringLiteral("文件夹：") : QStringLiteral("文件名："));
    m_dialog->setLabelText(QFileDialog::FileType, QStringLiteral("文件类型："));
    m_dialog->setAcceptText(mode == SaveFile ? QStringLiteral("保存") : QStringLiteral("确定"));
    m_dialog->setLabelText(QFileDialog::Reject, QStringLiteral("取消"));
    m_name = m_dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    if (m_name && m_name->completer())
        m_name->completer()->popup()->installEventFilter(this);
    drawIcons();
    if (auto *sidebar = m_dialog->findChild<QListView *>(QStringLiteral("sidebar")))
        sidebar->setIconSize({16, 16});
    if (auto *split = m_dialog->findChild<QSplitter *>(QStringLiteral("splitter")))
        split->setSizes({130, 570}); // the width of "计算机"

    body()->setContentsMargins(4, 4, 4, 4);
    body()->addWidget(m_dialog);
    m_dialog->show();
    if (auto *details = m_dialog->findChild<QTreeView *>(QStringLiteral("treeView")))
        showColumns(details->header());
    m_dialog->applyFilter();
    frame()->setResizable(true);
    setMinimumSize(560, 360);
    resize(720, 440);
    connect(m_dialog, &QFileDialog::finished, this, &QtFileDialog::onFileDialogFinished);
}

QStringList QtFileDialog::selectedFiles() const
{
    return m_dialog->selectedFiles();
}

QString QtFileDialog::selectedFilter() const
{
    return m_dialog->selectedNameFilter();
}

QString QtFileDialog::getOpenFileName(QWidget *parent, const QString &caption, const QString &dir,
                                      const QString &filter, QString *selectedFilter)
{
    return run(OpenFile, parent, caption, dir, filter, selectedFilter).value(0);
}

QStringList QtFileDialog::getOpenFileNames(QWidget *parent, const QString &caption, const QString &dir,
                                           const QString &filter, QString *selectedFilter)
{
    return run(OpenFiles, parent, caption, dir, filter, selectedFilter);
}

QString QtFileDialog::getSaveFileName(QWidget *parent, const QString &caption, const QString &dir,
                                      const QString &filter, QString *selectedFilter)
{
    return run(SaveFile, parent, caption, dir, filter, selectedFilter).value(0);
}

QString QtFileDialog::getFolder(QWidget *parent, const QString &caption, const QString &dir)
{
    return run(Folder, parent, caption, dir, {}, nullptr).value(0);
}

QString QtFileDialog::suffixOf(const QString &filter)
{
    static const QRegularExpression pattern(QStringLiteral("\\*\\.([^\\s*?();]+)"));
    return pattern.match(filter).captured(1);
}

void QtFileDialog::onFileDialogFinished(int result)
{
    done(result);
}

// The list of names that go on like the typed one: Qt places it for the field,
// X11 shows it as if the dialog were in the screen's corner, until it is moved.
bool QtFileDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show || event->type() == QEvent::Move) {
        auto *list = static_cast<QWidget *>(watched);
        QRect place(m_name->mapToGlobal({0, m_name->height()}), list->size());
        if (place.bottom() > screen()->availableGeometry().bottom())
            place.moveBottom(m_name->mapToGlobal({0, 0}).y() - 1);
        list->move(place.topLeft());
    }
    return QtFramelessDialog::eventFilter(watched, event);
}

QStringList QtFileDialog::run(Mode mode, QWidget *parent, const QString &caption, const QString &dir,
                              const QString &filter, QString *selectedFilter)
{
    if (const auto &answer = DialogAnswers::instance().fileNames) {
        const auto answerMode = mode == OpenFile    ? DialogAnswers::FileMode::Open
                                : mode == OpenFiles ? DialogAnswers::FileMode::OpenMany
                                : mode == Folder    ? DialogAnswers::FileMode::Folder
                                                    : DialogAnswers::FileMode::Save;
        if (selectedFilter && DialogAnswers::instance().filter)
            *selectedFilter = DialogAnswers::instance().filter(filter);
        return answer(answerMode, caption, dir, filter);
    }
    QtFileDialog dialog(mode, caption, dir, filter, parent ? parent->window() : nullptr);
    if (selectedFilter && !selectedFilter->isEmpty()) {
        dialog.m_dialog->selectNameFilter(*selectedFilter);
        dialog.m_dialog->applyFilter();
        if (mode == SaveFile)
            dialog.m_dialog->setDefaultSuffix(suffixOf(*selectedFilter));
    }
    if (dialog.exec() != QDialog::Accepted)
        return {};
    const QStringList files = dialog.selectedFiles();
    rememberFolderOf(files);
    if (selectedFilter)
        *selectedFilter = dialog.selectedFilter();
    return files;
}

// Qt's own icons are dark and vanish on a dark skin.
void QtFileDialog::drawIcons()
{
    const struct
    {
        const char *objectName;
        IconFont::Glyph glyph;
    } buttons[] = {
        {"backButton", IconFont::ChevronLeft},  {"forwardButton", IconFont::ChevronRight},
        {"toParentButton", IconFont::ArrowUp},  {"newFolderButton", IconFont::FolderPlus},
        {"listModeButton", IconFont::ViewList}, {"detailModeButton", IconFont::ViewDetail},
    };
    const QColor color(Skin::palette().text);
    for (const auto &button : buttons)
        if (auto *toolButton = m_dialog->findChild<QToolButton *>(QLatin1String(button.objectName)))
            toolButton->setIcon(IconFont::icon(button.glyph, color));
}
