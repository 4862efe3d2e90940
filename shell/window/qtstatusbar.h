#pragma once

// The bottom of the main window: the current notice, session logs and automatic
// answers, the text codec, the byte counts of the page on display and the button that
// clears them. A notice ends after a while, and with the page that posted it; a click on
// its place shows the recent ones.

#include "noticelog.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

class PageLamp;
class QPushButton;
class QtCountLabel;
class StatusLabel;

class QtStatusBar : public QWidget
{
    Q_OBJECT

public:
    static constexpr int errorHoldMs = 3000;
    static constexpr int errorShownMs = 60000;
    static constexpr int informationShownMs = 15000;

    explicit QtStatusBar(QWidget *parent = nullptr);

    // Sent and received bytes as texts; blank where the list is shorter.
    void showCounts(const QStringList &counts);

    // The codecs to choose from, by their index, and the one in use.
    void setCodecs(const QStringList &names);
    void showCodec(int index);

    // What a page's session log is doing; an empty text: it has none. That of the page
    // on display comes first.
    void showLog(const QObject *page, const QString &text, bool isFailing);
    // The same for its automatic answers.
    void showAnswers(const QObject *page, const QString &text, bool isFailing);

    // The user turned to the page: ends the notices of other pages.
    void showPage(const QObject *page);

    const NoticeLog &notices() const { return m_log; }

public slots:
    // Kind 0 is information, 255 an error.
    void showSystemNotify(const QString &text, int kind);
    void sltEndErrorHold();
    void sltEndNotice();
    void sltShowRecent();

signals:
    void clearCount();
    void codecChosen(int index);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void showCurrent();
    void endForeignNotice();

    NoticeLog m_log;
    QPointer<const QObject> m_page;
    QTimer m_errorHold;
    QTimer m_shown; // times out when the current notice ends
    StatusLabel *m_notice;
    QtCountLabel *m_sent;
    QtCountLabel *m_received;
    PageLamp *m_logLamp;
    PageLamp *m_answerLamp;
    QPushButton *m_codec;
    QPushButton *m_clear;
};
