#pragma once

// The recent notices in a popup, newest first, errors marked and in the color
// that the skin gives them. Esc or a click elsewhere closes it; it then deletes
// itself.

#include "noticelog.h"

#include <QColor>
#include <QFrame>

class QListWidget;

class NoticeList : public QFrame
{
    Q_OBJECT
    Q_PROPERTY(QColor errorColor READ errorColor WRITE setErrorColor) // set by the skins

public:
    QColor errorColor() const { return m_errorColor; }
    void setErrorColor(const QColor &color);

    static void showAbove(QWidget *anchor, const QVector<PostedNotice> &notices);

private:
    NoticeList(const QVector<PostedNotice> &notices, QWidget *parent);
    void fitInto(int maxWidth);

    QListWidget *m_list;
    QColor m_errorColor;
};
