#pragma once

// What the single send adds to the text: line end, escapes, checksum; and the bytes
// that come of it, as they are typed. Shows and keeps the choices; SendText encodes.

#include "fieldmemory.h"
#include "sendtext.h"
#include "settings.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QSpinBox;

class SendFormatBar : public QWidget
{
    Q_OBJECT

public:
    explicit SendFormatBar(QWidget *parent = nullptr);

    // Shows the choices, and keeps what is changed.
    void remember(Settings::SendChoices *choices);
    void load(); // they are others now

    // All but what the panel of the page chooses.
    void writeTo(SendText *format) const;
    // As the panel has it.
    void setNewline(bool isOn);
    // Opens and closes the fields. The bytes stay visible while they are not those of
    // the text alone.
    void setOpen(bool isOpen);
    bool isOpen() const;

    void showBytes(const SendText::Encoded &encoded, bool isPlain);

signals:
    void changed();
    void newlineWanted(bool isOn);
    void enterSendsChanged(bool sends);

private:
    void buildUi();
    void showFields();
    void handleLineEnd(int index);
    void showLineEnd();

    Settings::SendChoices *m_choices = nullptr;
    FieldMemory m_memory;
    bool m_addsNewline = false;
    QWidget *m_fields;
    QWidget *m_sumFields;
    QComboBox *m_lineEnd;
    QCheckBox *m_escapes;
    QCheckBox *m_enterSends;
    QComboBox *m_checksum;
    QComboBox *m_order;
    QSpinBox *m_from;
    QComboBox *m_place;
    QLabel *m_bytes;
};
