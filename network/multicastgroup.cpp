#include "multicastgroup.h"

#include "fieldmemory.h"
#include "interfacebox.h"
#include "settings.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

MulticastGroup::MulticastGroup(QWidget *parent)
    : FormGroup(QStringLiteral("组播"), parent)
    , m_groups(new QLineEdit(this))
    , m_interface(new InterfaceBox(this))
    , m_ttl(new QSpinBox(this))
    , m_loopsBack(new QCheckBox(QStringLiteral("环回"), this))
{
    buildUi();
    load();
    connect(m_interface, QOverload<int>::of(&QComboBox::activated), this,
            [this] { Settings::instance().networkPage.multicastInterface.change(m_interface->name()); });
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
    addRow(QStringLiteral("组地址"), m_groups);
    addRow(QStringLiteral("接口"), m_interface);
    QHBoxLayout *line = addLine();
    addTo(line, QStringLiteral("TTL"), m_ttl);
    line->addWidget(m_loopsBack);
}

void MulticastGroup::remember(FieldMemory *memory)
{
    Settings::NetworkPage &page = Settings::instance().networkPage;
    memory->add(m_groups, &page.multicastGroups);
    memory->add(m_ttl, &page.multicastTtl);
    memory->add(m_loopsBack, &page.multicastLoopsBack);
}

void MulticastGroup::load()
{
    m_interface->choose(Settings::instance().networkPage.multicastInterface);
}

MulticastSettings MulticastGroup::settings() const
{
    MulticastSettings settings = Multicast::fromText(m_groups->text());
    settings.interfaceName = m_interface->name();
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
