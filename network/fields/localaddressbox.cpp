#include "localaddressbox.h"

#include "formpanel.h"
#include "peeraddress.h"
#include "placeholdertext.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QLineEdit>
#include <QNetworkInterface>
#include <QScrollBar>
#include <QSignalBlocker>

namespace {
const auto kAll = QStringLiteral("所有网络接口");
}

LocalAddressBox::LocalAddressBox(QWidget *parent)
    : QComboBox(parent)
{
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    setCompleter(nullptr);
    lineEdit()->setPlaceholderText(kAll);
    PlaceholderText::keepFaint(lineEdit());
    FormGroup::letShrink(this);
    fill();
    setCurrentIndex(0);
}

void LocalAddressBox::fill()
{
    const QString before = currentText();
    const QSignalBlocker blocker(this);
    clear();
    addItem(kAll);
    // IPv4 first, which most boards speak.
    const QList<QHostAddress> addresses = QNetworkInterface::allAddresses();
    for (const auto protocol : {QAbstractSocket::IPv4Protocol, QAbstractSocket::IPv6Protocol}) {
        for (const QHostAddress &address : addresses) {
            if (address.protocol() == protocol)
                addItem(address.toString());
        }
    }
    setCurrentIndex(findText(before));
    setEditText(before);

    // A long address must not widen the panel; the list shows all of it.
    const QFontMetrics metrics(view()->font());
    int widest = 0;
    for (int i = 0; i < count(); ++i)
        widest = qMax(widest, metrics.horizontalAdvance(itemText(i)));
    view()->setMinimumWidth(widest + view()->verticalScrollBar()->sizeHint().width() + 16);
}

void LocalAddressBox::showPopup()
{
    fill();
    QComboBox::showPopup();
}

QHostAddress LocalAddressBox::address() const
{
    const QString text = PeerAddress::cleaned(currentText());
    const bool all = text.isEmpty() || text == kAll || text == QLatin1String("0.0.0.0");
    return all ? QHostAddress(QHostAddress::Any) : PeerAddress::fromText(text);
}

void LocalAddressBox::setAddress(const QString &text)
{
    const bool all = text == QLatin1String("0.0.0.0");
    setCurrentIndex(all ? 0 : findText(text));
    setEditText(all ? kAll : text);
}
