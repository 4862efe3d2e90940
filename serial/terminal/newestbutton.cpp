#include "newestbutton.h"

#include <QAbstractScrollArea>

NewestButton::NewestButton(QAbstractScrollArea *display)
    : QPushButton(display)
    , m_display(display)
{
    setObjectName(QStringLiteral("btnNewest"));
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::PointingHandCursor);
    setToolTip(QStringLiteral("跟随新内容（Ctrl+End）"));
    hide();
}

void NewestButton::follow(qint64 rows, bool isAway)
{
    if (!isAway)
        m_rowsSeen = rows;
    setVisible(isAway);
    if (!isAway)
        return;
    const qint64 added = rows - m_rowsSeen;
    setText(added > 0 ? QStringLiteral("回到最新（%1行新内容）").arg(added) : QStringLiteral("回到最新"));
    adjustSize();
    const QRect area = m_display->viewport()->geometry();
    move(area.center().x() - width() / 2, area.bottom() - height() - 6);
}
