#include "portcombobox.h"

#include "placeholdertext.h"

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
    // A long entry shows its beginning, which is the port's name.
    const auto showBeginning = [this] { lineEdit()->setCursorPosition(0); };
    connect(this, QOverload<int>::of(&QComboBox::currentIndexChanged), lineEdit(), showBeginning);
    connect(lineEdit(), &QLineEdit::editingFinished, lineEdit(), showBeginning);
    connect(this, QOverload<int>::of(&QComboBox::activated), this, [this] { m_vanished.clear(); });
}

void PortComboBox::setPorts(const QStringList &entries)
{
    const QString before = currentText();
    const bool wasTyped =
        !before.isEmpty() && findText(before, Qt::MatchFixedString | Qt::MatchCaseSensitive) < 0;
    if (!isEnabled() || before != m_instead) // another is open, or chosen
        m_vanished.clear();
    clear();
    for (const QString &entry : entries)
        insertItem(count(), QIcon(), entry);

    const QFontMetrics metrics(view()->font());
    int widest = 0;
    for (const QString &entry : entries)
        widest = qMax(widest, metrics.horizontalAdvance(entry));
    view()->setMinimumWidth(widest + view()->verticalScrollBar()->sizeHint().width());

    const QString wanted = m_vanished.isEmpty() ? before : m_vanished;
    m_vanished.clear();
    if (selectEntry(wanted))
        return;
    if (wasTyped) {
        setEditText(before);
    } else {
        m_vanished = wanted;
        m_instead = currentText();
    }
}

bool PortComboBox::selectEntry(const QString &entry)
{
    const int index = findText(entry, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index >= 0)
        setCurrentIndex(index);
    return index >= 0;
}
