#include "qttitlebar.h"

#include "iconfont.h"
#include "skin.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QStyleOption>
#include <QToolButton>

namespace {
constexpr int mainHeight = 36;
constexpr int dialogHeight = 32;
constexpr int logoSide = 18;
} // namespace

QtTitleBar::QtTitleBar(ButtonSet buttons, QWidget *parent)
    : QWidget(parent)
    , m_icon(new QLabel(this))
    , m_title(new QLabel(this))
    , m_menus(new QHBoxLayout)
    , m_layout(new QHBoxLayout(this))
{
    setObjectName(QStringLiteral("titleBar"));
    setFixedHeight(buttons == MainWindowButtons ? mainHeight : dialogHeight);
    m_icon->setObjectName(QStringLiteral("titleIcon"));
    m_icon->hide();
    m_title->setObjectName(QStringLiteral("titleText"));
    m_title->setTextFormat(Qt::PlainText);
    // A long caption is cut, it never widens the window.
    m_title->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    m_menus->setSpacing(4);
    m_layout->setContentsMargins(8, 0, 0, 0);
    m_layout->setSpacing(0);
    m_layout->addWidget(m_icon);
    m_layout->addSpacing(6);
    m_layout->addWidget(m_title, 1);
    m_layout->addLayout(m_menus);
    m_layout->addSpacing(8);

    if (buttons == MainWindowButtons) {
        m_minimize = addButton(QStringLiteral("btnMinimize"), QStringLiteral("最小化"));
        m_maximize = addButton(QStringLiteral("btnMaximize"), QStringLiteral("最大化"));
        connect(m_minimize, &QToolButton::clicked, this, &QtTitleBar::signalMinimizeWindow);
        connect(m_maximize, &QToolButton::clicked, this, &QtTitleBar::signalMaximizeWindow);
    }
    m_close = addButton(QStringLiteral("btnClose"), QStringLiteral("关闭"));
    connect(m_close, &QToolButton::clicked, this, &QtTitleBar::signalCloseWindow);
    drawIcons();
}

void QtTitleBar::setTitle(const QString &title)
{
    m_title->setText(title);
}

QString QtTitleBar::title() const
{
    return m_title->text();
}

void QtTitleBar::setIcon(const QIcon &icon)
{
    m_icon->setPixmap(icon.pixmap(logoSide, logoSide));
    m_icon->setVisible(!icon.isNull());
}

void QtTitleBar::addMenuWidget(QWidget *widget)
{
    m_menus->addWidget(widget, 0, Qt::AlignVCenter);
}

void QtTitleBar::setClosable(bool closable)
{
    m_close->setVisible(closable);
}

void QtTitleBar::setMaximized(bool maximized)
{
    m_maximized = maximized;
    if (m_maximize) {
        m_maximize->setToolTip(maximized ? QStringLiteral("还原") : QStringLiteral("最大化"));
        m_maximize->setAccessibleName(m_maximize->toolTip());
    }
    drawIcons();
}

void QtTitleBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::StyleChange && m_close)
        drawIcons();
    QWidget::changeEvent(event);
}

void QtTitleBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
}

// Window buttons are out of the tab order, as in every other window: the
// keyboard reaches them through the window manager.
QToolButton *QtTitleBar::addButton(const QString &objectName, const QString &toolTip)
{
    auto *button = new QToolButton(this);
    button->setObjectName(objectName);
    button->setToolTip(toolTip);
    button->setAccessibleName(toolTip);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAutoRaise(true);
    button->setFixedSize(height() + 8, height());
    m_layout->addWidget(button);
    return button;
}

void QtTitleBar::setIconColor(const QColor &color)
{
    m_iconColor = color;
    drawIcons();
}

void QtTitleBar::drawIcons()
{
    const QColor color = m_iconColor.isValid() ? m_iconColor : QColor(Skin::palette().text);
    if (m_minimize)
        m_minimize->setIcon(IconFont::icon(IconFont::WindowMinimize, color));
    if (m_maximize)
        m_maximize->setIcon(
            IconFont::icon(m_maximized ? IconFont::WindowRestore : IconFont::WindowMaximize, color));
    m_close->setIcon(IconFont::icon(IconFont::WindowClose, color));
}
