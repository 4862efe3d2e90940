#pragma once

// Asks what to do with bytes: fill them, insert some, or an operation. Shows the
// fields that it needs and accepts only what can be done.

#include "hextransform.h"
#include "qtframelessdialog.h"

#include <QVector>

class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QSpinBox;

class HexOperationDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    enum class Purpose { Fill, Insert, Operate };
    // fillByte: proposed for filling and inserting.
    HexOperationDialog(Purpose purpose, int fillByte, QWidget *parent);

    const HexOperation &operation() const { return m_operation; }
    int count() const; // of bytes to insert

public slots:
    void accept() override; // stays open where a field is wrong

private:
    struct Row
    {
        QLabel *caption;
        QWidget *field;
    };

    void buildFields(int fillByte);
    void buildButtons();
    void add(const char *name, const QString &caption, QWidget *field);
    void showFields();
    void show(QWidget *field, bool shown);
    HexOperation::Kind kind() const;
    bool readOperand();
    bool readAddend();

    Purpose m_purpose;
    QGridLayout *m_grid;
    QComboBox *m_kind;
    QSpinBox *m_count;
    QLineEdit *m_operand;
    QComboBox *m_unit;
    QSpinBox *m_bits;
    QComboBox *m_byteOrder;
    QVector<Row> m_rows;
    HexOperation m_operation;
};
