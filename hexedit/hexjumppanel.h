#pragma once

// Goes to an address that the user types.

#include "formpanel.h"

class HexCommand;
class QComboBox;
class QHexEdit;
class QLineEdit;

class HexJumpPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexJumpPanel(QHexEdit *edit, QWidget *parent = nullptr);

    HexCommand *goTo() const { return m_goTo; } // moves the focus to the address

protected:
    void keyPressEvent(QKeyEvent *event) override; // Esc leads back to the bytes

private:
    void begin();
    void jump();

    QHexEdit *m_edit;
    QLineEdit *m_address;
    QComboBox *m_base;
    HexCommand *m_goTo;
};
