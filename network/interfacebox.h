#pragma once

// The choice of a network interface of this machine, or of none. Looks at the
// interfaces each time its list opens.

#include <QComboBox>

class InterfaceBox : public QComboBox
{
    Q_OBJECT

public:
    explicit InterfaceBox(QWidget *parent = nullptr);

    QString name() const; // the system's; empty: it chooses
    // One that has vanished can be chosen, too.
    void choose(const QString &name);

    void showPopup() override;

private:
    void fill();
};
