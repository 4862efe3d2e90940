#pragma once

// Goes to an address that the user types, or to one of the last ones.

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
    void keyPressEvent(QKeyEvent *event) override; // Esc leads back to the bytes, Up and Down
                                                   // through the last addresses

private:
    void begin();
    void jump();
    void remember(const QString &address);
    void recall(int steps);

    QHexEdit *m_edit;
    QLineEdit *m_address;
    QComboBox *m_base;
    HexCommand *m_goTo;
    int m_recalled = -1; // index of the last addresses; what is being typed comes before them
    QString m_typed;
};
