#include "interfacebox.h"

#include "formpanel.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QNetworkInterface>
#include <QScrollBar>

namespace {

// Name and first address, by which users tell interfaces apart.
QString entryOf(const QNetworkInterface &device)
{
    const QList<QNetworkAddressEntry> addresses = device.addressEntries();
    return addresses.isEmpty()
               ? device.humanReadableName()
               : QStringLiteral("%1 %2").arg(device.humanReadableName(), addresses.first().ip().toString());
}

} // namespace

InterfaceBox::InterfaceBox(QWidget *parent)
    : QComboBox(parent)
{
    addItem(QStringLiteral("自动"), QString());
    FormGroup::letShrink(this);
}

QString InterfaceBox::name() const
{
    return currentData().toString();
}

void InterfaceBox::choose(const QString &name)
{
    if (findData(name) < 0) {
        const auto device = QNetworkInterface::interfaceFromName(name);
        addItem(device.isValid() ? entryOf(device) : QStringLiteral("%1（不存在）").arg(name), name);
    }
    setCurrentIndex(findData(name));
}

void InterfaceBox::showPopup()
{
    fill();
    QComboBox::showPopup();
}

void InterfaceBox::fill()
{
    const QString chosen = name();
    clear();
    addItem(QStringLiteral("自动"), QString());
    const QList<QNetworkInterface> devices = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &device : devices) {
        if (device.flags().testFlag(QNetworkInterface::IsUp))
            addItem(entryOf(device), device.name());
    }
    choose(chosen);
    // The list shows all of a long entry, which must not widen the panel.
    const QFontMetrics metrics(view()->font());
    int widest = 0;
    for (int i = 0; i < count(); ++i)
        widest = qMax(widest, metrics.horizontalAdvance(itemText(i)));
    view()->setMinimumWidth(widest + view()->verticalScrollBar()->sizeHint().width() + 16);
}
