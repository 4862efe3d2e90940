// What HexEditWidget is made of, and what it shows of its state.

#include "hexchangebar.h"
#include "hexchecksumpanel.h"
#include "hexeditwidget.h"
#include "hexfindpanel.h"
#include "hexinspectorpanel.h"
#include "hexjumppanel.h"
#include "hexrecentbutton.h"
#include "iconfont.h"
#include "qhexedit.h"
#include "settings.h"
#include "skin.h"

#include <QButtonGroup>
#include <QDir>
#include <QEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>

namespace {

struct ToolButton
{
    const char *name;
    QString toolTip;
    QKeySequence shortcut;
    IconFont::Glyph glyph;
};

// In order of their ids.
const QVector<ToolButton> &toolButtons()
{
    static const QVector<ToolButton> buttons{
        {"btnOpenFile", QStringLiteral("打开文件 快捷键 Ctrl+O"), int(Qt::CTRL) + Qt::Key_O,
         IconFont::FolderOpen},
        {"btnSaveFile", QStringLiteral("保存文件 快捷键 Ctrl+S"), int(Qt::CTRL) + Qt::Key_S, IconFont::Save},
        {"btnUndo", QStringLiteral("撤销 快捷键 Ctrl+Z"), int(Qt::CTRL) + Qt::Key_Z, IconFont::Undo},
        {"btnRedo", QStringLiteral("恢复撤销 快捷键 Ctrl+Shift+Z"), int(Qt::CTRL) + Qt::SHIFT + Qt::Key_Z,
         IconFont::Redo},
        {"btnCloseFile", QStringLiteral("关闭文件 快捷键 Ctrl+W"), int(Qt::CTRL) + Qt::Key_W,
         IconFont::Close},
    };
    return buttons;
}

// A button whose shortcut acts at once. Qt's own presses the button for a tenth
// of a second first, and takes what is typed faster than that for one press.
class PromptButton : public QPushButton
{
public:
    using QPushButton::QPushButton;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::Shortcut)
            return QPushButton::event(event);
        click();
        return true;
    }
};

// A long name is cut in its middle; that it is not saved stays in sight.
class NameLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        style()->drawItemText(&painter, rect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                              fontMetrics().elidedText(text(), Qt::ElideMiddle, width()), foregroundRole());
    }
};

QLabel *addLabel(QWidget *parent, const char *name)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace

void HexEditWidget::buildUi()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(8, 8, 8, 8);
    row->setSpacing(8);
    QWidget *work = buildWorkArea(); // makes the editor that the panel's groups work on
    row->addWidget(buildPanel());
    row->addWidget(work, 1);
    drawIcons();
}

QWidget *HexEditWidget::buildPanel()
{
    m_panel = new FormPanel(this);
    m_panel->setObjectName(QStringLiteral("configPanel"));
    FormGroup *files = m_panel->addGroup(QStringLiteral("文件"));
    m_recent = new HexRecentButton(files);
    m_saveAs = new QPushButton(QStringLiteral("另存为"), files);
    m_saveAs->setObjectName(QStringLiteral("btnSaveAs"));
    m_saveAs->setToolTip(QStringLiteral("保存为另一个文件，之后编辑该文件（Ctrl+Shift+S）"));
    files->addPair(m_recent, m_saveAs);
    m_jump = new HexJumpPanel(m_edit, m_panel);
    m_find = new HexFindPanel(m_edit, m_panel);
    m_checksums = new HexChecksumPanel(m_edit, m_panel);
    for (QWidget *group : std::initializer_list<QWidget *>{m_jump, m_find, m_checksums})
        m_panel->addWidget(group);
    return m_panel;
}

QWidget *HexEditWidget::buildWorkArea()
{
    auto *area = new QWidget; // goes to the page's layout after the panel, and so does the Tab key
    auto *column = new QVBoxLayout(area);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    column->addLayout(buildToolRow(area));
    m_changeBar = new HexChangeBar(area);
    column->addWidget(m_changeBar);
    m_edit = new QHexEdit(area);
    m_edit->setPlaceholderText(QStringLiteral("打开文件，或将文件拖到此处，内容将以十六进制显示"));
    m_edit->setReadOnly(true, QStringLiteral("请先打开文件"));
    column->addWidget(m_edit, 1);
    column->addWidget(new HexInspectorPanel(m_edit, area));
    column->addLayout(buildStateRow(area));
    return area;
}

QLayout *HexEditWidget::buildToolRow(QWidget *area)
{
    m_fold = new QPushButton(QStringLiteral("隐藏配置界面"), area);
    m_fold->setObjectName(QStringLiteral("btnFold"));
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_fold);
    m_buttons = new QButtonGroup(this);
    int id = 0;
    for (const ToolButton &tool : toolButtons()) {
        auto *button = new PromptButton(area);
        button->setObjectName(QLatin1String(tool.name));
        button->setProperty("iconOnly", true);
        button->setFocusPolicy(Qt::TabFocus); // a click leaves the caret where it is
        button->setToolTip(tool.toolTip);
        button->setAccessibleName(tool.toolTip.section(QLatin1Char(' '), 0, 0));
        button->setShortcut(tool.shortcut);
        m_buttons->addButton(button, id++);
        row->addWidget(button);
    }
    row->addStretch();
    m_addressLabel = addLabel(area, "labelAddress");
    m_sizeLabel = addLabel(area, "labelSize");
    row->addWidget(m_addressLabel);
    row->addSpacing(8);
    row->addWidget(m_sizeLabel);
    return row;
}

QLayout *HexEditWidget::buildStateRow(QWidget *area)
{
    m_fileLabel = new NameLabel(area);
    m_fileLabel->setObjectName(QStringLiteral("labelFile"));
    m_fileLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_selectionLabel = addLabel(area, "labelSelection");
    m_selectionLabel->setMinimumWidth(1); // a long path must not widen the window
    m_progress = new QProgressBar(area);
    m_progress->setObjectName(QStringLiteral("progressHex"));
    m_progress->setRange(0, 1000);
    m_progress->setFixedWidth(200);
    m_stop = new QPushButton(QStringLiteral("停止"), area);
    m_stop->setObjectName(QStringLiteral("btnStopWork"));
    m_mode = new QPushButton(area);
    m_mode->setObjectName(QStringLiteral("btnMode"));
    m_mode->setFocusPolicy(Qt::TabFocus);
    m_mode->setToolTip(QStringLiteral("在改写和插入之间切换（Insert键）"));
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(m_fileLabel, 1);
    row->addWidget(m_selectionLabel);
    row->addWidget(m_progress);
    row->addWidget(m_stop);
    row->addWidget(m_mode);
    return row;
}

void HexEditWidget::connectParts()
{
    connect(m_buttons, QOverload<int>::of(&QButtonGroup::buttonClicked), this,
            &HexEditWidget::sltToolBtnsClicked);
    connect(m_edit, &QHexEdit::currentAddressChanged, this, &HexEditWidget::setAddress);
    connect(m_edit, &QHexEdit::currentSizeChanged, this, &HexEditWidget::setSize);
    connect(m_edit, &QHexEdit::stateChanged, this, &HexEditWidget::showState);
    connect(m_mode, &QPushButton::clicked, this, [this] { m_edit->setOverwrite(!m_edit->isOverwrite()); });
    setPageKeys(nullptr, m_fold);
    connect(m_fold, &QPushButton::clicked, this, [this] {
        const bool hide = m_panel->isVisible();
        m_panel->setVisible(!hide);
        m_fold->setText(hide ? QStringLiteral("显示配置界面") : QStringLiteral("隐藏配置界面"));
    });
    connect(m_recent, &HexRecentButton::chosen, this, &HexEditWidget::openFile);
    connect(m_changeBar, &HexChangeBar::reloadWanted, this, &HexEditWidget::reload);
    connect(m_changeBar, &HexChangeBar::keepWanted, this, &HexEditWidget::keepOurs);
    connect(m_saveAs, &QPushButton::clicked, this, &HexEditWidget::saveAs);
    connect(m_stop, &QPushButton::clicked, m_edit->task(), &SlicedTask::stop);
    connect(m_edit->task(), &SlicedTask::started, this, &HexEditWidget::showWork);
    connect(m_edit->task(), &SlicedTask::progressed, m_progress, &QProgressBar::setValue);
    connect(m_edit->task(), &SlicedTask::ended, this, &HexEditWidget::endWork);
    const auto shortcut = [this](const QKeySequence &keys, auto *receiver, auto slot) {
        auto *made = new QShortcut(keys, this);
        connect(made, &QShortcut::activated, receiver, slot);
    };
    shortcut(int(Qt::CTRL) + Qt::SHIFT + Qt::Key_S, this, &HexEditWidget::saveAs);
    shortcut(int(Qt::CTRL) + Qt::Key_F, m_find, &HexFindPanel::begin);
    shortcut(int(Qt::CTRL) + Qt::Key_G, m_jump, &HexJumpPanel::begin);
    shortcut(Qt::Key_F3, m_find, &HexFindPanel::findNext);
    shortcut(int(Qt::SHIFT) + Qt::Key_F3, m_find, &HexFindPanel::findPrevious);
}

QStringList HexEditWidget::counts() const
{
    return {QStringLiteral("Address: %1").arg(m_address), QStringLiteral("Size: %1").arg(m_size)};
}

void HexEditWidget::setSize(qint64 size)
{
    m_size = size;
    m_sizeLabel->setText(counts().at(1));
    emit signalRefresCounts(pageIndex);
}

void HexEditWidget::setAddress(qint64 address)
{
    m_address = address;
    m_addressLabel->setText(counts().at(0));
    emit signalRefresCounts(pageIndex);
}

void HexEditWidget::showState()
{
    const bool open = !m_fileName.isEmpty();
    const QString name = open ? QFileInfo(m_fileName).fileName() : QStringLiteral("未打开文件");
    m_fileLabel->setText(m_edit->isModified() ? name + QStringLiteral(" *（未保存）") : name);
    m_fileLabel->setToolTip(QDir::toNativeSeparators(m_fileName));
    const qint64 selected = m_edit->selectionLength();
    m_selectionLabel->setText(selected > 0 ? QStringLiteral("选中：0x%1起%2字节")
                                                 .arg(QString::number(m_edit->selectionBegin(), 16).toUpper())
                                                 .arg(selected)
                                           : QString());
    m_selectionLabel->setToolTip(QString());
    m_mode->setText(m_edit->isOverwrite() ? QStringLiteral("改写") : QStringLiteral("插入"));
    m_buttons->button(Undo)->setEnabled(m_edit->document().canUndo());
    m_buttons->button(Redo)->setEnabled(m_edit->document().canRedo());
}

void HexEditWidget::reloadCodec()
{
    m_edit->setTextCodec(Settings::instance().textCodec);
}

void HexEditWidget::showWork(const QString &name)
{
    m_progress->setValue(0);
    m_progress->setFormat(name + QStringLiteral(" %p%"));
    m_progress->show();
    m_stop->show();
}

void HexEditWidget::endWork()
{
    m_progress->hide();
    m_stop->hide();
}

void HexEditWidget::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::StyleChange && m_buttons)
        drawIcons();
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_watch.check();
    QtWidgetBase::changeEvent(event);
}

void HexEditWidget::drawIcons()
{
    for (int id = 0; id < toolButtons().size(); ++id)
        m_buttons->button(id)->setIcon(
            IconFont::icon(toolButtons().at(id).glyph, QColor(Skin::palette().text)));
}
