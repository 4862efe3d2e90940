#pragma once

// What can be chosen for file transfers beyond the protocol: following answers at
// once, sending without a protocol at some pace, and where received files go. All
// of it is remembered.

#include "fieldmemory.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QSpinBox;

class TransferOptions : public QWidget
{
    Q_OBJECT

public:
    explicit TransferOptions(QWidget *parent = nullptr);

    void remember();             // from now on, and shows what is remembered
    void load();                 // the settings have other values now
    void setLocked(bool locked); // during a transfer

    bool isQuick() const;
    bool isRaw() const; // without a protocol
    int rawCount() const;
    bool rawCountsLines() const; // or bytes
    int rawMs() const;
    // Asks for one where there is none; empty where that is cancelled.
    QString receiveFolder();
    qint64 maxReceivedBytes() const;

signals:
    void rawChanged(bool isRaw);

private:
    void buildUi();
    void chooseFolder();
    void updateFields();

    FieldMemory m_memory;
    QCheckBox *m_quick;
    QCheckBox *m_raw;
    QSpinBox *m_count;
    QComboBox *m_unit;
    QSpinBox *m_ms;
    QLineEdit *m_folder;
    QPushButton *m_choose;
    QSpinBox *m_max;
    bool m_isLocked = false;
};
