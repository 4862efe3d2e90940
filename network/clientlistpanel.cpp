#include "clientlistpanel.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QPushButton>

ClientListPanel::ClientListPanel(QWidget *parent)
    : FormGroup(QStringLiteral("客户端列表"), parent)
    , m_list(new QComboBox(this))
    , m_disconnect(new QPushButton(QStringLiteral("断开"), this))
    , m_statistics(new QPushButton(QStringLiteral("统计"), this))
{
    m_list->setObjectName(QStringLiteral("comboClients"));
    m_list->addItem(QStringLiteral("All Clients"));
    m_list->setAccessibleName(QStringLiteral("客户端"));
    m_list->setPlaceholderText(QStringLiteral("请选择客户端"));
    m_list->setToolTip(QStringLiteral("数据发送到所选的客户端"));
    letShrink(m_list);
    m_disconnect->setObjectName(QStringLiteral("btnDisconnect"));
    m_disconnect->setToolTip(QStringLiteral("断开所选的客户端"));
    QHBoxLayout *line = addLine();
    line->addWidget(m_list, 1);
    line->addWidget(m_disconnect);
    line->addWidget(m_statistics);
    m_statistics->setObjectName(QStringLiteral("btnClientStatistics"));
    m_statistics->setToolTip(QStringLiteral("打开对端统计：收发字节数和最近的消息"));
    connect(m_statistics, &QPushButton::clicked, this, &ClientListPanel::statisticsClicked);
    connect(m_disconnect, &QPushButton::clicked, this, &ClientListPanel::disconnectClicked);
}

void ClientListPanel::add(const QString &name)
{
    if (m_list->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive) < 0)
        m_list->addItem(name);
}

bool ClientListPanel::remove(const QString &name)
{
    const int index = m_list->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 1)
        return false;
    const bool wasChosen = m_list->currentIndex() == index;
    if (wasChosen)
        m_list->setCurrentIndex(-1);
    m_list->removeItem(index);
    return wasChosen;
}

int ClientListPanel::count() const
{
    return m_list->count();
}

void ClientListPanel::chooseAll()
{
    m_list->setCurrentIndex(0);
}

bool ClientListPanel::choose(const QString &name)
{
    const int index = m_list->findText(name, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 1)
        return false;
    m_list->setCurrentIndex(index);
    return true;
}

bool ClientListPanel::allChosen() const
{
    return m_list->currentIndex() == 0;
}

QString ClientListPanel::chosen() const
{
    return m_list->currentIndex() > 0 ? m_list->currentText() : QString();
}

QWidget *ClientListPanel::lastField() const
{
    return m_statistics;
}
