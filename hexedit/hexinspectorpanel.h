#pragma once

// Shows what the bytes at the caret mean.

#include "shell/base/formpanel.h"

#include <QVector>

class QComboBox;
class QHexEdit;
class QLabel;

class HexInspectorPanel : public FormGroup
{
    Q_OBJECT

public:
    explicit HexInspectorPanel(QHexEdit *edit, QWidget *parent = nullptr);

private:
    void showValues();

    QHexEdit *m_edit;
    QComboBox *m_byteOrder;
    QVector<QLabel *> m_values;
};
