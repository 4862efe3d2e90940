#pragma once

// The base of every tool page: byte counts, notices, keys, and closing in three
// steps, so that no data is lost:
//   mayClose()        each page asks its questions; nothing changes yet
//   closeLinks()      links close and receive no more; may take time
//   saveBeforeExit()  saves what the user agreed to, with the last bytes received
// A page that refuses a step keeps the program open. A log-off may be cancelled
// by another program, so only the first and the last step run and the links stay
// open.

#include "notice.h"

#include <QStringList>
#include <QWidget>

class QPushButton;

class QtWidgetBase : public QWidget
{
    Q_OBJECT

public:
    explicit QtWidgetBase(QWidget *parent = nullptr);

    // The page's sent and received byte counts as texts, sent first. Empty
    // where a page counts nothing.
    virtual QStringList counts() const;

    // Sets the page's counters to zero.
    virtual void clearCounts();

    // Asks the user about data that closing would lose, and keeps the answers for
    // saveBeforeExit(). False: the user cancelled.
    virtual bool mayClose();

    // Reads what has arrived, stops running work and begins to close the links.
    virtual void closeLinks();
    // The links are closed and nothing is pending. Where closeLinks() needs the
    // event loop for that, the page emits signalClosed() when it is done.
    virtual bool isClosed() const;

    // Saves as the user answered, and asks only about data received after the
    // question. False: saving failed and the user keeps the program open.
    virtual bool saveBeforeExit();

    // The settings were restored: shows what they are now.
    virtual void reloadSettings();

    // Another text codec was chosen: redraws what is decoded when it is drawn.
    virtual void reloadCodec();

signals:
    void signalClosed();
    // For the status bar; kind is one of Notice::Kind.
    void signalNotify(QString text, int kind);
    // The page's byte counts have changed.
    void signalRefresCounts(int pageIndex);
    // What the page's session log is doing, in a few words; empty while there is none.
    void signalLogState(const QString &text, bool isFailing);
    // What the page's automatic answers are doing; empty while they are off.
    void signalAnswerState(const QString &text, bool isFailing);
    // The user wants another text codec; the window sets it for all pages.
    void signalCodecWanted(int codec);

protected:
    // Posts the notice to the status bar.
    void notify(const Notice &notice);

    // F5 presses the button that opens and closes the link, if there is one,
    // Ctrl+B the one that folds the panel, while the page is shown.
    void setPageKeys(QPushButton *open, QPushButton *fold);
};
