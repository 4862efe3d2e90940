#pragma once

// The multicast groups that a port for datagrams joins, and how datagrams to them
// leave. Folded at first. Remembers what was chosen.

#include "formpanel.h"
#include "multicast.h"

class FieldMemory;
class QCheckBox;
class QLineEdit;
class QSpinBox;

class MulticastGroup : public FormGroup
{
    Q_OBJECT

public:
    explicit MulticastGroup(QWidget *parent = nullptr);

    MulticastSettings settings() const;
    // They count when a port is opened.
    void setLinkOpen(bool isOpen);

    void remember(FieldMemory *memory);
    void load(); // the interface; the memory loads the rest

    QWidget *lastField() const; // in tab order

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildUi();
    void fillInterfaces();
    void chooseInterface(const QString &name);

    QLineEdit *m_groups;
    QComboBox *m_interface; // names of the system as data; an empty one: its choice
    QSpinBox *m_ttl;
    QCheckBox *m_loopsBack;
};
