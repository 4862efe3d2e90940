#pragma once

// The list of texts that were sent, below the button that opens it: searched by
// typing, chosen by a click or Enter, removed by Delete.

#include "sendhistory.h"

#include <QFrame>

class QLineEdit;
class QListWidget;
class QPushButton;
class SentTexts;

class HistoryPopup : public QFrame
{
    Q_OBJECT

public:
    explicit HistoryPopup(SentTexts *texts, QWidget *parent = nullptr);

    void showAbove(const QWidget *button);

signals:
    void chosen(const SendHistory::Entry &entry);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fill();
    void choose();
    void removeCurrent();
    void clearAll();

    SentTexts *m_texts;
    QLineEdit *m_search;
    QListWidget *m_list;
    QPushButton *m_clear;
};
