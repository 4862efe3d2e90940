#include "peersdialog.h"

#include "framelesshelper.h"
#include "peertablemodel.h"
#include "settings.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

PeersDialog::PeersDialog(PeerStatistics *statistics, QWidget *parent)
    : QtFramelessDialog(QStringLiteral("对端统计"), parent)
    , m_statistics(statistics)
    , m_model(new PeerTableModel(statistics, this))
    , m_sorted(new QSortFilterProxyModel(this))
    , m_view(new QTableView(this))
    , m_rest(new QLabel(this))
    , m_reply(new QPushButton(QStringLiteral("回复该对端"), this))
    , m_copy(new QPushButton(QStringLiteral("复制地址"), this))
    , m_disconnect(new QPushButton(QStringLiteral("断开"), this))
    , m_clear(new QPushButton(QStringLiteral("清除"), this))
    , m_timer(this)
{
    setObjectName(QStringLiteral("PeersDialog"));
    setWindowModality(Qt::NonModal);
    frame()->setResizable(true);
    m_sorted->setSourceModel(m_model);
    m_sorted->setSortRole(PeerTableModel::sortRole);
    buildUi();
    connectParts();
    resize(760, 360);
    showChoice();
}

void PeersDialog::buildUi()
{
    m_view->setObjectName(QStringLiteral("tablePeers"));
    m_view->setAccessibleName(title());
    m_view->setModel(m_sorted);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setSelectionMode(QAbstractItemView::SingleSelection);
    m_view->setContextMenuPolicy(Qt::CustomContextMenu);
    m_view->setWordWrap(false);
    m_view->verticalHeader()->setDefaultSectionSize(26);
    m_view->verticalHeader()->setVisible(false);
    QHeaderView *const header = m_view->horizontalHeader();
    header->setStretchLastSection(true);
    header->setSortIndicator(-1, Qt::AscendingOrder); // as they came, until a column is clicked
    m_view->setSortingEnabled(true);
    const int widths[] = {190, 80, 100, 100, 100};
    for (int column = 0; column < PeerTableModel::LastMessage; ++column)
        m_view->setColumnWidth(column, widths[column]);
    m_rest->setObjectName(QStringLiteral("labelOtherPeers"));
    m_rest->setProperty("kind", QStringLiteral("hint"));
    m_rest->setWordWrap(true);
    m_rest->hide();

    m_reply->setObjectName(QStringLiteral("btnReplyToPeer"));
    m_copy->setObjectName(QStringLiteral("btnCopyPeer"));
    m_disconnect->setObjectName(QStringLiteral("btnDisconnectPeer"));
    m_clear->setObjectName(QStringLiteral("btnClearPeers"));
    m_clear->setToolTip(QStringLiteral("删除已断开的和UDP的对端，其余的从0重新计数"));
    auto *row = new QHBoxLayout;
    row->setSpacing(8);
    for (QPushButton *button : {m_reply, m_copy, m_disconnect, m_clear}) {
        button->setAutoDefault(false);
        if (button == m_clear)
            row->addStretch();
        row->addWidget(button);
    }
    body()->addWidget(m_view, 1);
    body()->addWidget(m_rest);
    body()->addLayout(row);
}

void PeersDialog::connectParts()
{
    connect(&m_timer, &QTimer::timeout, this, &PeersDialog::refresh);
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &PeersDialog::choose);
    connect(m_view, &QTableView::customContextMenuRequested, this, [this](const QPoint &place) {
        QMenu menu(this);
        for (QPushButton *button : {m_reply, m_copy, m_disconnect}) {
            QAction *const action = menu.addAction(button->text(), button, &QPushButton::click);
            action->setEnabled(button->isEnabled());
        }
        menu.exec(m_view->viewport()->mapToGlobal(place));
    });
    connect(m_reply, &QPushButton::clicked, this,
            [this] { emit replyRequested(Peer(m_chosen.peer), QString(m_chosen.name)); });
    connect(m_copy, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_chosen.peer.text()); });
    connect(m_disconnect, &QPushButton::clicked, this,
            [this] { emit disconnectRequested(Peer(m_chosen.peer)); });
    connect(m_clear, &QPushButton::clicked, this, &PeersDialog::clear);
}

void PeersDialog::showEvent(QShowEvent *event)
{
    refresh();
    m_timer.start(refreshMs);
    QtFramelessDialog::showEvent(event);
}

void PeersDialog::hideEvent(QHideEvent *event)
{
    m_timer.stop();
    QtFramelessDialog::hideEvent(event);
}

void PeersDialog::refresh()
{
    m_model->refresh(Settings::instance().textCodec);
    // A row may have become another peer's.
    const int index = chosenRow();
    if (index >= 0 && !(m_statistics->at(index).peer == m_chosen.peer &&
                        m_statistics->at(index).sinceUs == m_chosen.sinceUs))
        m_view->clearSelection();
    else
        choose();
    const PeerStatistics::Rest &rest = m_statistics->rest();
    m_rest->setVisible(rest.rows > 0);
    if (rest.rows > 0)
        m_rest->setText(QStringLiteral("最多列出%1个对端。另有%2个未列出：接收%3字节，发送%4字节")
                            .arg(PeerStatistics::maxRows)
                            .arg(rest.rows)
                            .arg(rest.received)
                            .arg(rest.sent));
}

int PeersDialog::chosenRow() const
{
    const QModelIndexList chosen = m_view->selectionModel()->selectedRows();
    return chosen.isEmpty() ? -1 : m_sorted->mapToSource(chosen.first()).row();
}

void PeersDialog::choose()
{
    const int index = chosenRow();
    m_chosen = index >= 0 ? m_statistics->at(index) : PeerStatistics::Row();
    showChoice();
}

void PeersDialog::showChoice()
{
    const bool isChosen = m_chosen.sinceUs > 0;
    const bool isClient = m_chosen.peer.id != 0 && m_chosen.leftUs == 0;
    m_copy->setEnabled(isChosen);
    m_disconnect->setEnabled(isClient);
    m_reply->setEnabled(isClient || m_chosen.isDatagram);
    const QString none = QStringLiteral("请先选择一个对端");
    m_copy->setToolTip(isChosen ? QStringLiteral("复制IP地址和端口") : none);
    m_disconnect->setToolTip(isClient    ? QStringLiteral("断开该客户端")
                             : !isChosen ? none
                                         : QStringLiteral("只能断开已连接的客户端"));
    m_reply->setToolTip(m_reply->isEnabled() ? QStringLiteral("之后的数据只发送给该对端")
                        : !isChosen          ? none
                                             : QStringLiteral("该对端已断开，或不需要选择"));
}

void PeersDialog::clear()
{
    m_statistics->clear();
    m_model->reset();
    refresh();
}
