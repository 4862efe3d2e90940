#pragma once

// Goes to an address that the user types.

#include "formpanel.h"

class QComboBox;
class QHexEdit;
class QLineEdit;

class HexJumpPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexJumpPanel(QHexEdit *edit, QWidget *parent = nullptr);

public slots:
    void begin(); // typing an address
    void jump();

protected:
    void keyPressEvent(QKeyEvent *event) override; // Esc leads back to the bytes

private:
    QHexEdit *m_edit;
    QLineEdit *m_address;
    QComboBox *m_base;
};
