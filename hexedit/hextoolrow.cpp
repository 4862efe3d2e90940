#include "hextoolrow.h"

#include "iconfont.h"
#include "skin.h"

#include <QButtonGroup>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVariant>

namespace {

struct Tool
{
    const char *name;
    const char *toolTip;
    int key;
    IconFont::Glyph glyph;
};

// In order of their ids.
constexpr Tool kTools[HexToolRow::toolCount] = {
    {"btnOpenFile", "打开文件 快捷键 Ctrl+O", int(Qt::CTRL) + Qt::Key_O, IconFont::FolderOpen},
    {"btnSaveFile", "保存文件 快捷键 Ctrl+S", int(Qt::CTRL) + Qt::Key_S, IconFont::Save},
    {"btnUndo", "撤销 快捷键 Ctrl+Z", int(Qt::CTRL) + Qt::Key_Z, IconFont::Undo},
    {"btnRedo", "恢复撤销 快捷键 Ctrl+Shift+Z", int(Qt::CTRL) + Qt::SHIFT + Qt::Key_Z, IconFont::Redo},
    {"btnCloseFile", "关闭文件 快捷键 Ctrl+W", int(Qt::CTRL) + Qt::Key_W, IconFont::Close},
};

// A button whose shortcut acts at once. Qt's own presses the button for a tenth
// of a second first, and merges what is typed faster than that into one press.
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

QLabel *makeLabel(QWidget *parent, const char *name)
{
    auto *label = new QLabel(parent);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    return label;
}

} // namespace

HexToolRow::HexToolRow(QWidget *parent)
    : QWidget(parent)
    , m_fold(new QPushButton(QStringLiteral("隐藏配置界面"), this))
    , m_tools(new QButtonGroup(this))
    , m_view(new QPushButton(QStringLiteral("视图"), this))
    , m_address(makeLabel(this, "labelAddress"))
    , m_size(makeLabel(this, "labelSize"))
{
    m_fold->setObjectName(QStringLiteral("btnFold"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    row->addWidget(m_fold);
    for (int id = 0; id < toolCount; ++id)
        addTool(id);
    m_view->setObjectName(QStringLiteral("btnHexView"));
    m_view->setMenu(new QMenu(m_view));
    row->addWidget(m_view);
    row->addStretch();
    row->addWidget(m_address);
    row->addSpacing(8);
    row->addWidget(m_size);
    drawIcons();
}

void HexToolRow::addTool(int id)
{
    const Tool &tool = kTools[id];
    auto *button = new PromptButton(this);
    button->setObjectName(QLatin1String(tool.name));
    button->setProperty("iconOnly", true);
    button->setFocusPolicy(Qt::TabFocus); // a click leaves the caret where it is
    button->setToolTip(QString::fromUtf8(tool.toolTip));
    button->setAccessibleName(button->toolTip().section(QLatin1Char(' '), 0, 0));
    button->setShortcut(tool.key);
    m_tools->addButton(button, id);
    layout()->addWidget(button);
}

QMenu *HexToolRow::viewMenu() const
{
    return m_view->menu();
}

void HexToolRow::showAddress(const QString &text)
{
    m_address->setText(text);
}

void HexToolRow::showSize(const QString &text)
{
    m_size->setText(text);
}

void HexToolRow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::StyleChange && m_tools)
        drawIcons();
    QWidget::changeEvent(event);
}

void HexToolRow::drawIcons()
{
    const auto buttons = m_tools->buttons();
    for (QAbstractButton *button : buttons)
        button->setIcon(IconFont::icon(kTools[m_tools->id(button)].glyph, QColor(Skin::palette().text)));
}
