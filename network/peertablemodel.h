#pragma once

// The statistics of the peers as a table. Follows them when it is asked to, so that
// a flood costs no more than the refreshing.

#include "peerstatistics.h"

#include <QAbstractTableModel>

class PeerTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Name, Since, Received, Sent, LastTime, LastMessage, ColumnCount };
    static constexpr int sortRole = Qt::UserRole;

    explicit PeerTableModel(const PeerStatistics *statistics, QObject *parent = nullptr);

    // Shows what has changed since the last time; costs nothing where nothing has.
    void refresh(int codec);
    // The statistics were cleared.
    void reset();

    const PeerStatistics::Row &row(int index) const { return m_statistics->at(index); }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    // The beginning of a message: as text where it is text, otherwise as hexadecimal.
    static QString preview(const PeerStatistics::Row &row, int codec);

private:
    QString text(const PeerStatistics::Row &row, int column) const;
    static QVariant sortKey(const PeerStatistics::Row &row, int column);

    const PeerStatistics *m_statistics;
    int m_rows = 0; // shown
    quint64 m_changes = 0;
    int m_codec = 0;
};
