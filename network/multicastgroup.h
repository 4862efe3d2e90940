#pragma once

// The multicast groups that a port for datagrams joins, and how datagrams to them
// leave. Remembers what was chosen.

#include "formpanel.h"
#include "multicast.h"

class FieldMemory;
class InterfaceBox;
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

private:
    void buildUi();

    QLineEdit *m_groups;
    InterfaceBox *m_interface;
    QSpinBox *m_ttl;
    QCheckBox *m_loopsBack;
};
