#pragma once

// Stands over the lower edge of a receive display while the end is not in view,
// tells how many rows came since, and leads back to the end.

#include <QPushButton>

class QAbstractScrollArea;

class NewestButton : public QPushButton
{
    Q_OBJECT

public:
    explicit NewestButton(QAbstractScrollArea *display);

    // How many rows there are to show, and whether the last ones are out of view.
    void follow(qint64 rows, bool isAway);
    // So many rows are not new.
    void setRowsSeen(qint64 rows) { m_rowsSeen = rows; }

private:
    QAbstractScrollArea *m_display;
    qint64 m_rowsSeen = 0;
};
