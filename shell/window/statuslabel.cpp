#include "statuslabel.h"

#include "iconfont.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QVariant>

namespace {
constexpr int iconSide = 16;
constexpr int gap = 6;
} // namespace

StatusLabel::StatusLabel(QWidget *parent)
    : QLabel(parent)
{
    setObjectName(QStringLiteral("statusNotice"));
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setProperty("kind", "info");
    setEnabled(false); // nothing to click at
}

void StatusLabel::showIdle()
{
    showNotice(QString(), false);
    setEnabled(true);
    setAccessibleName(QStringLiteral("最近的提示"));
    setToolTip(QStringLiteral("单击查看最近的提示"));
}

void StatusLabel::showNotice(const QString &text, bool isError)
{
    // A notice is one line, even where the name of a file has several.
    m_fullText = text.simplified();
    setEnabled(!m_fullText.isEmpty());
    if (isError != m_isError) {
        m_isError = isError;
        setProperty("kind", isError ? "error" : "info");
        style()->unpolish(this);
        style()->polish(this);
    }
    setAccessibleName(m_fullText);
    update();
}

QSize StatusLabel::minimumSizeHint() const
{
    return {0, fontMetrics().height() + 4};
}

QSize StatusLabel::sizeHint() const
{
    return minimumSizeHint();
}

void StatusLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    if (!isEnabled())
        return;
    const QColor color = palette().color(QPalette::WindowText);
    const QPixmap icon = IconFont::pixmap(m_isError ? IconFont::AlertCircle : IconFont::Information, color,
                                          iconSide - 1, iconSide);
    painter.drawPixmap(gap, (height() - iconSide) / 2, icon);
    const QRect area = rect().adjusted(iconSide + 2 * gap, 0, 0, 0);
    painter.setPen(color);
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(m_fullText, Qt::ElideRight, area.width()));
}

void StatusLabel::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        emit clicked();
}

void StatusLabel::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return)
        emit clicked();
    else
        QLabel::keyPressEvent(event);
}
