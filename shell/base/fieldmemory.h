#pragma once

// Keeps fields as the user left them across starts: shows the remembered values,
// and writes each change. A value that a field can't show leaves it alone.

#include "setting.h"

#include <QObject>

#include <functional>

class QAbstractButton;
class QComboBox;
class QLineEdit;
class QSpinBox;

class FieldMemory : public QObject
{
    Q_OBJECT

public:
    explicit FieldMemory(QObject *parent = nullptr);

    // Each shows the value at once. The settings outlive the memory.
    void add(QAbstractButton *box, Setting<bool> *setting);
    // Two that exclude each other: the second one is checked while it is true.
    void add(QAbstractButton *ifFalse, QAbstractButton *ifTrue, Setting<bool> *setting);
    void add(QComboBox *box, Setting<int> *setting); // the index
    void add(QSpinBox *box, Setting<int> *setting);
    void add(QLineEdit *edit, Setting<QString> *setting); // as far as it is acceptable

    // The settings have other values now.
    void load();

private:
    void addLoader(const std::function<void()> &loader);

    QVector<std::function<void()>> m_loaders;
};
