#pragma once

// What every tool page is: a widget that can be asked for its byte counts and
// told to forget them, and that ends in three steps, so that nothing is lost:
//   mayClose()        all pages ask what they have to ask; nothing changes yet
//   closeLinks()      nothing more comes in; may take time to end
//   saveBeforeExit()  what was agreed is saved, with all that came meanwhile
// A page that refuses a step keeps the program open. When a log-off is
// announced the links stay open, since another program may cancel it: only the
// first and the last step are taken.

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

    // Asks the user about what ending would lose, and keeps the answers for
    // saveBeforeExit(). False: the user changed their mind.
    virtual bool mayClose();

    // Takes in what has arrived, stops what runs and begins to close the links.
    virtual void closeLinks();
    // The links are closed and nothing is pending. Where closeLinks() needs the
    // event loop for that, the page emits signalClosed() when it is done.
    virtual bool isClosed() const;

    // Saves as the user answered, and asks only about what came after the
    // question. False: saving failed and the user wants to stay.
    virtual bool saveBeforeExit();

    // The settings were restored: shows what they are now.
    virtual void reloadSettings();

    // Another text codec was chosen: what is decoded when it is drawn is drawn anew.
    virtual void reloadCodec();

signals:
    void signalClosed();
    // For the status bar; kind is one of Notice::Kind.
    void signalNotify(QString text, int kind);

protected:
    // Posts the notice to the status bar.
    void notify(const Notice &notice);

    // F5 presses the button that opens and closes the link, if there is one,
    // Ctrl+B the one that folds the panel, while the page is shown.
    void setPageKeys(QPushButton *open, QPushButton *fold);
};
