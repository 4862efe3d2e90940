#pragma once

// Reads or writes many registers, at a pace that a small board keeps up with:
// a read waits for the reply to the one before, or until it is clear that none
// comes; writes, which nobody answers, go out one by one. Sends nothing itself.

#include <QHash>
#include <QObject>
#include <QTimer>
#include <QVector>

class RegisterBatch : public QObject
{
    Q_OBJECT

public:
    struct Item
    {
        int row = 0;
        quint32 address = 0;
        QString addressText;
        QString value; // empty: read
    };
    enum Outcome { Answered, Refused, Unanswered, Written };

    explicit RegisterBatch(QObject *parent = nullptr);

    bool isRunning() const { return m_timer.isActive(); }
    void start(const QVector<Item> &items);
    void stop();

    // The row that a reply of that address is for; -1 when none is waited for.
    int waitingRow(quint16 address) const;
    void takeReply(bool good); // for that row

    int done() const { return m_next; }
    int total() const { return m_items.size(); }
    int count(Outcome outcome) const { return m_counts.value(outcome); }

signals:
    void request(const RegisterBatch::Item &item);
    void ended(int row, RegisterBatch::Outcome outcome);
    void progressed();
    void finished();

private:
    void next();
    void timeOut();
    void end(Outcome outcome);

    QVector<Item> m_items;
    QHash<int, int> m_counts;
    int m_next = 0; // the item that is sent next
    bool m_waiting = false;
    QTimer m_timer;
};
