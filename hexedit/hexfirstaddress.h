#pragma once

// "起始地址…": asks from which address on the bytes of a plain file are shown.

#include "hexcommand.h"

class QHexEdit;

class HexFirstAddress : public HexCommand
{
    Q_OBJECT

public:
    explicit HexFirstAddress(QHexEdit *edit);

private:
    void update();
    void ask();

    QHexEdit *m_edit;
};
