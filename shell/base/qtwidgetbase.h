#pragma once

// What every tool page is: a widget that can be asked for its byte counts and
// told to forget them.

#include <QStringList>
#include <QWidget>

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

    // Asked once before the program ends, while window and settings are
    // alive. False keeps the program open: the user wanted to save and could
    // not, or changed their mind.
    virtual bool prepareToClose();

    // The settings were restored: shows what they are now.
    virtual void reloadSettings();

    // Another text codec was chosen: what is decoded when it is drawn is drawn anew.
    virtual void reloadCodec();
};
