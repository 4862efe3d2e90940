#pragma once

// The recent notices in a popup, newest first, errors marked. Deletes itself
// when it is closed.

#include "shell/window/noticelog.h"

#include <QFrame>

class NoticeList : public QFrame
{
    Q_OBJECT

public:
    static void showAbove(QWidget *anchor, const QVector<Notice> &notices);

private:
    NoticeList(const QVector<Notice> &notices, QWidget *parent);
};
