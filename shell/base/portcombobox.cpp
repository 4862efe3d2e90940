#include "shell/base/portcombobox.h"

#include "shell/base/placeholdertext.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QIcon>
#include <QLineEdit>
#include <QScrollBar>

PortComboBox::PortComboBox(QWidget *parent)
    : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);
    lineEdit()->setPlaceholderText(QStringLiteral("未检测到串口"));
    PlaceholderText::keepFaint(lineEdit());
}

void PortComboBox::setPorts(const QStringList &entries)
{
    const QString before = currentText();
    const bool wasTyped =
        !before.isEmpty() && findText(before, Qt::MatchFixedString | Qt::MatchCaseSensitive) < 0;
    clear();
    for (const QString &entry : entries)
        insertItem(count(), QIcon(), entry);

    const QFontMetrics metrics(view()->font());
    int widest = 0;
    for (const QString &entry : entries)
        widest = qMax(widest, metrics.horizontalAdvance(entry));
    view()->setMinimumWidth(widest + view()->verticalScrollBar()->sizeHint().width());

    if (!selectEntry(before) && wasTyped)
        setEditText(before);
}

bool PortComboBox::selectEntry(const QString &entry)
{
    const int index = findText(entry, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index >= 0)
        setCurrentIndex(index);
    return index >= 0;
}
