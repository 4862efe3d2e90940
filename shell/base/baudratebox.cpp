#include "baudratebox.h"

#include <QIntValidator>
#include <QKeyEvent>
#include <QSignalBlocker>
#include <QWheelEvent>

BaudRateBox::BaudRateBox(const QString &rates, QWidget *parent)
    : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr); // 250000 must not become 2500000
    setValidator(new QIntValidator(1, maxRate, this));
    addItems(rates.split(QLatin1Char(' ')));
    setToolTip(QStringLiteral("可直接输入任意波特率"));
}

int BaudRateBox::baudRate() const
{
    const int rate = currentText().toInt();
    return rate > 0 && rate <= maxRate ? rate : 0;
}

void BaudRateBox::setBaudRate(int rate)
{
    setCurrentText(QString::number(rate));
}

// The list's own index stays where it was while a text is typed or set.
void BaudRateBox::step(int direction)
{
    const int rate = baudRate();
    int next = 0; // the first entry that is not below the rate
    while (next < count() && itemText(next).toInt() < rate)
        ++next;
    const bool listed = next < count() && itemText(next).toInt() == rate;
    const int target = direction < 0 ? next - 1 : next + (listed ? 1 : 0);
    if (target < 0 || target >= count())
        return;
    setCurrentIndex(target); // shows its text also where the index was the same before
    emit activated(target);
}

void BaudRateBox::showPopup()
{
    const int index = findText(currentText());
    if (index >= 0) {
        const QSignalBlocker blocker(this);
        setCurrentIndex(index);
    }
    QComboBox::showPopup();
}

void BaudRateBox::keyPressEvent(QKeyEvent *event)
{
    const bool up = event->key() == Qt::Key_Up || event->key() == Qt::Key_PageUp;
    const bool down = event->key() == Qt::Key_Down || event->key() == Qt::Key_PageDown;
    if ((event->modifiers() & ~Qt::KeypadModifier) == 0 && (up || down))
        step(up ? -1 : 1);
    else
        QComboBox::keyPressEvent(event);
}

void BaudRateBox::wheelEvent(QWheelEvent *event)
{
    if (event->angleDelta().y() != 0)
        step(event->angleDelta().y() > 0 ? -1 : 1);
    event->accept();
}
