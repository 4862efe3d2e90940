#pragma once

// The bottom of the main window: the current notice, the byte counts of the
// page on display and the button that clears them. A click on the notice shows
// the recent ones.

#include "shell/window/noticelog.h"

#include <QTimer>
#include <QWidget>

class QPushButton;
class QtCountLabel;
class StatusLabel;

class QtStatusBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int errorHoldMs = 3000;

    explicit QtStatusBar(QWidget *parent = nullptr);

    // Sent and received bytes as texts; blank where the list is shorter.
    void showCounts(const QStringList &counts);

    const NoticeLog &notices() const { return m_log; }

public slots:
    // Kind 0 is information, 255 an error.
    void showSystemNotify(const QString &text, int kind);
    void sltEndErrorHold();
    void sltShowRecent();

signals:
    void clearCount();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void showCurrent();

    NoticeLog m_log;
    QTimer m_errorHold;
    StatusLabel *m_notice;
    QtCountLabel *m_sent;
    QtCountLabel *m_received;
    QPushButton *m_clear;
};
