#pragma once

// Lists the texts that stand in the bytes: in which encodings, how long at least.

#include "fieldmemory.h"

#include <QWidget>

class HexHitList;
class QCheckBox;
class QHexEdit;
class QPushButton;
class QSpinBox;

class HexStringsPanel : public QWidget
{
    Q_OBJECT

public:
    explicit HexStringsPanel(QHexEdit *edit, QWidget *parent = nullptr);

    void clear(); // another file is open

private:
    void search();
    void update();
    void storeEncodings();

    QHexEdit *m_edit;
    FieldMemory m_memory;
    QVector<QCheckBox *> m_encodings;
    QSpinBox *m_minLength;
    QPushButton *m_search;
    HexHitList *m_list;
};
