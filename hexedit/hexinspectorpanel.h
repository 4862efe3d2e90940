#pragma once

// Shows the bytes at the caret as numbers and text, in a strip below the rows.
// A value can be edited in its place: what is typed is put over the bytes.

#include <QByteArray>
#include <QGroupBox>
#include <QVector>

class QComboBox;
class QHexEdit;
class QLabel;
class QLineEdit;

class HexInspectorPanel : public QGroupBox
{
    Q_OBJECT

public:
    explicit HexInspectorPanel(QHexEdit *edit, QWidget *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override; // of the field

private:
    void buildField();
    void showValues();
    QByteArray bytes() const; // at the caret, or the begin of the selection
    bool isBigEndian() const;
    void beginEditing(int index);
    void write();
    void endEditing(); // without writing

    QHexEdit *m_edit;
    QComboBox *m_byteOrder;
    QVector<QLabel *> m_values;
    QLineEdit *m_field; // over the value that is edited
    int m_edited = -1;  // index of that value
    qint64 m_editedAt = 0;
    QByteArray m_before; // the bytes there
};
