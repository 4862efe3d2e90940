#pragma once

// The recent notices in a popup, newest first, errors marked. Esc or a click
// elsewhere closes it; it then deletes itself.

#include "shell/window/noticelog.h"

#include <QFrame>

class NoticeList : public QFrame
{
    Q_OBJECT

public:
    static void showAbove(QWidget *anchor, const QVector<Notice> &notices);

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    NoticeList(const QVector<Notice> &notices, QWidget *parent);
};
