#pragma once

// Shows the bytes at the caret as numbers and text, in a strip below the rows.

#include <QGroupBox>
#include <QVector>

class QComboBox;
class QHexEdit;
class QLabel;

class HexInspectorPanel : public QGroupBox
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
