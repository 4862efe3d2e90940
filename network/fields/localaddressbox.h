#pragma once

// The choice of a local address: all interfaces, one of this machine's
// addresses, or what is typed. Looks at the interfaces each time its list opens.

#include <QComboBox>

class QHostAddress;

class LocalAddressBox : public QComboBox
{
    Q_OBJECT

public:
    explicit LocalAddressBox(QWidget *parent = nullptr);

    // Any for all interfaces; null where the text is no address.
    QHostAddress address() const;
    void setAddress(const QString &text); // "0.0.0.0" is all interfaces

    void showPopup() override;

private:
    void fill();
};
