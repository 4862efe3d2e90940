#pragma once

// The history of a send editor: keeps it in its file, and walks through it for the
// editor, whose own text comes back at the end of the walk.

#include "notice.h"
#include "sendhistory.h"

#include <QObject>
#include <QTimer>

class SentTexts : public QObject
{
    Q_OBJECT

public:
    explicit SentTexts(const QString &fileName, QObject *parent = nullptr);
    ~SentTexts() override;

    const QVector<SendHistory::Entry> &entries() const { return m_history.entries(); }
    void add(const SendHistory::Entry &entry); // was sent
    void remove(const SendHistory::Entry &entry);
    void clear();

    // The next older or newer one of the same kind than what was returned last; the
    // text that the walk began with behind the newest. False where there is none.
    bool step(int direction, bool isHex, QString *text);
    // The text was changed by hand: the next walk begins with it.
    void endWalk() { m_position = -1; }

signals:
    void notify(const Notice &notice);

private:
    void read();
    void save();

    QString m_fileName;
    SendHistory m_history;
    QTimer m_saveTimer;
    int m_position = -1; // of the entry shown; -1: none
    QString m_draft;     // what stood there before
};
