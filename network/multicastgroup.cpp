#include "multicastgroup.h"

#include "fieldmemory.h"
#include "settings.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QNetworkInterface>
#include <QScrollBar>
#include <QSpinBox>

namespace {

// Name and first address, as the user tells interfaces apart.
QString entryOf(const QNetworkInterface &device)
{
    const QList<QNetworkAddressEntry> addresses = device.addressEntries();
    return addresses.isEmpty()
               ? device.humanReadableName()
               : QStringLiteral("%1 %2").arg(device.humanReadableName(), addresses.first().ip().toString());
}

} // namespace

MulticastGroup::MulticastGroup(QWidget *parent)
    : FormGroup(QStringLiteral("组播"), parent)
    , m_groups(new QLineEdit(this))
    , m_interface(new QComboBox(this))
    , m_ttl(new QSpinBox(this))
    , m_loopsBack(new QCheckBox(QStringLiteral("环回"), this))
{
    buildUi();
    load();
    connect(m_interface, QOverload<int>::of(&QComboBox::activated), this, [this] {
        Settings::instance().networkPage.multicastInterface.change(m_interface->currentData().toString());
    });
}

void MulticastGroup::buildUi()
{
    setObjectName(QStringLiteral("multicastGroup"));
    m_groups->setObjectName(QStringLiteral("editMulticastGroups"));
    m_interface->setObjectName(QStringLiteral("comboMulticastInterface"));
    m_ttl->setObjectName(QStringLiteral("spinMulticastTtl"));
    m_loopsBack->setObjectName(QStringLiteral("checkMulticastLoopback"));
    m_groups->setPlaceholderText(QStringLiteral("如239.1.2.3，为空则不加入"));
    m_groups->setToolTip(QStringLiteral("打开时加入的组，多个用空格分隔；“本地IP地址”须为“所有网络接口”"));
    m_interface->setToolTip(QStringLiteral("在哪个网络接口上加入和发送"));
    m_ttl->setToolTip(QStringLiteral("组播数据报最多经过的网络数，1为不离开本网"));
    m_loopsBack->setToolTip(QStringLiteral("本机的程序也能收到从这里发送的组播数据报"));
    m_ttl->setRange(0, 255);
    m_interface->addItem(QStringLiteral("自动"), QString());
    letShrink(m_interface);
    m_interface->installEventFilter(this);
    addRow(QStringLiteral("组地址"), m_groups);
    addRow(QStringLiteral("接口"), m_interface);
    QHBoxLayout *line = addLine();
    addTo(line, QStringLiteral("TTL"), m_ttl);
    line->addWidget(m_loopsBack);
    setFoldable();
}

void MulticastGroup::remember(FieldMemory *memory)
{
    Settings::NetworkPage &page = Settings::instance().networkPage;
    memory->add(m_groups, &page.multicastGroups);
    memory->add(m_ttl, &page.multicastTtl);
    memory->add(m_loopsBack, &page.multicastLoopsBack);
    connect(this, &QGroupBox::toggled, memory,
            [&page](bool isUnfolded) { page.showsMulticast.change(isUnfolded); });
}

void MulticastGroup::load()
{
    chooseInterface(Settings::instance().networkPage.multicastInterface);
    setChecked(Settings::instance().networkPage.showsMulticast);
}

// The interfaces as they are when the list opens.
bool MulticastGroup::eventFilter(QObject *watched, QEvent *event)
{
    const bool opens = event->type() == QEvent::MouseButtonPress || event->type() == QEvent::FocusIn;
    if (watched == m_interface && opens && !m_interface->view()->isVisible())
        fillInterfaces();
    return FormGroup::eventFilter(watched, event);
}

void MulticastGroup::fillInterfaces()
{
    const QString chosen = m_interface->currentData().toString();
    m_interface->clear();
    m_interface->addItem(QStringLiteral("自动"), QString());
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface &device : interfaces) {
        if (device.flags().testFlag(QNetworkInterface::IsUp))
            m_interface->addItem(entryOf(device), device.name());
    }
    chooseInterface(chosen);
    // The list shows all of a long entry, which must not widen the panel.
    const QFontMetrics metrics(m_interface->view()->font());
    int widest = 0;
    for (int i = 0; i < m_interface->count(); ++i)
        widest = qMax(widest, metrics.horizontalAdvance(m_interface->itemText(i)));
    const int bar = m_interface->view()->verticalScrollBar()->sizeHint().width();
    m_interface->view()->setMinimumWidth(widest + bar + 16);
}

// One that has vanished stays chosen, and is reported when a port is opened.
void MulticastGroup::chooseInterface(const QString &name)
{
    if (m_interface->findData(name) < 0) {
        const auto device = QNetworkInterface::interfaceFromName(name);
        m_interface->addItem(device.isValid() ? entryOf(device) : QStringLiteral("%1（不存在）").arg(name),
                             name);
    }
    m_interface->setCurrentIndex(m_interface->findData(name));
}

MulticastSettings MulticastGroup::settings() const
{
    MulticastSettings settings = Multicast::fromText(m_groups->text());
    settings.interfaceName = m_interface->currentData().toString();
    settings.ttl = m_ttl->value();
    settings.loopsBack = m_loopsBack->isChecked();
    return settings;
}

QWidget *MulticastGroup::lastField() const
{
    return m_loopsBack;
}

void MulticastGroup::setLinkOpen(bool isOpen)
{
    for (QWidget *field : {static_cast<QWidget *>(m_groups), static_cast<QWidget *>(m_interface),
                           static_cast<QWidget *>(m_ttl), static_cast<QWidget *>(m_loopsBack)})
        field->setEnabled(!isOpen);
}
