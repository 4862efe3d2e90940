#include "fieldmemory.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QSpinBox>

FieldMemory::FieldMemory(QObject *parent)
    : QObject(parent)
{
}

void FieldMemory::addLoader(const std::function<void()> &loader)
{
    m_loaders.append(loader);
    loader();
}

void FieldMemory::load()
{
    for (const auto &loader : qAsConst(m_loaders))
        loader();
}

void FieldMemory::add(QAbstractButton *box, Setting<bool> *setting)
{
    addLoader([box, setting] { box->setChecked(*setting); });
    connect(box, &QAbstractButton::toggled, this, [setting](bool isOn) { setting->change(isOn); });
}

void FieldMemory::add(QAbstractButton *ifFalse, QAbstractButton *ifTrue, Setting<bool> *setting)
{
    addLoader([ifFalse, ifTrue, setting] { (*setting ? ifTrue : ifFalse)->setChecked(true); });
    connect(ifTrue, &QAbstractButton::toggled, this, [setting](bool isOn) { setting->change(isOn); });
}

void FieldMemory::add(QComboBox *box, Setting<int> *setting)
{
    addLoader([box, setting] {
        if (*setting < box->count())
            box->setCurrentIndex(*setting);
    });
    connect(box, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [setting](int index) {
        if (index >= 0)
            setting->change(index);
    });
}

void FieldMemory::add(QSpinBox *box, Setting<int> *setting)
{
    addLoader([box, setting] { box->setValue(*setting); });
    connect(box, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [setting](int value) { setting->change(value); });
}

void FieldMemory::add(QLineEdit *edit, Setting<QString> *setting)
{
    addLoader([edit, setting] {
        QString text = *setting;
        int at = 0;
        if (!edit->validator() || edit->validator()->validate(text, at) == QValidator::Acceptable)
            edit->setText(text);
    });
    connect(edit, &QLineEdit::editingFinished, this, [edit, setting] {
        if (edit->hasAcceptableInput())
            setting->change(edit->text());
    });
}
