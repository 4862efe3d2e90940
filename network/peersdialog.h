#pragma once

// The table of the peers, beside the window: who is there, since when, how much
// each has sent and got, and its last message. Refreshes while it is shown. Sends
// and disconnects nothing itself.

#include "peerstatistics.h"
#include "qtframelessdialog.h"

#include <QTimer>

class PeerTableModel;
class QLabel;
class QPushButton;
class QSortFilterProxyModel;
class QTableView;

class PeersDialog : public QtFramelessDialog
{
    Q_OBJECT

public:
    static constexpr int refreshMs = 250;

    explicit PeersDialog(PeerStatistics *statistics, QWidget *parent = nullptr);

public slots:
    void refresh();

signals:
    // What is sent next shall go to this peer.
    void replyRequested(const Peer &peer, const QString &name);
    void disconnectRequested(const Peer &peer);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void buildUi();
    void connectParts();
    int chosenRow() const; // of the statistics; -1 where none is chosen
    void choose();
    void showChoice();
    void clear();

    PeerStatistics *m_statistics;
    PeerTableModel *m_model;
    PeerStatistics::Row m_chosen; // as it was last seen; sinceUs is 0 while none is chosen
    QSortFilterProxyModel *m_sorted;
    QTableView *m_view;
    QLabel *m_rest;
    QPushButton *m_reply;
    QPushButton *m_copy;
    QPushButton *m_disconnect;
    QPushButton *m_clear;
    QTimer m_timer;
};
