#pragma once

// Shows what the bytes at the caret mean, in a strip that fits below them.

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
