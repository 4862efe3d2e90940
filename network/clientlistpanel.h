#pragma once

// The server's peers: whom sending goes to, and the button that disconnects.
// Holds names only.

#include "formpanel.h"

class QComboBox;
class QPushButton;

class ClientListPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit ClientListPanel(QWidget *parent = nullptr);

    void add(const QString &name);
    // True when it was the chosen one; then none is chosen, so that nothing
    // goes to another peer unasked.
    bool remove(const QString &name);

    int count() const; // of entries, the one for all included
    void chooseAll();
    bool choose(const QString &name); // false where there is no such peer
    bool allChosen() const;
    QString chosen() const; // empty for none and for all

    QWidget *lastField() const; // in tab order

signals:
    void disconnectClicked();
    void statisticsClicked();

private:
    QComboBox *m_list;
    QPushButton *m_disconnect;
    QPushButton *m_statistics;
};
