#pragma once

// The runs of a session as a table: what each was, its figures, and which of a
// channel's runs is best and worst in a column. Asks PidRuns and RunFigures; owns
// only which rows are shown.

#include "runfigures.h"

#include <QAbstractTableModel>
#include <QVector>

#include <array>
#include <limits>

class PidRecorder;

class RunModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Reference, Channel, Time, Name, Target, P, I, D, Period, FirstFigure };

    // The recorder outlives the model.
    explicit RunModel(PidRecorder *recorder, QObject *parent = nullptr);

    // Both are shown by the next refresh().
    void setShowsHidden(bool shows);
    void setBand(double band);
    RunFigures &figures() { return m_figures; }

    // Runs that came, went or changed, and the figures of open ones. Measures so many
    // samples, so that a long list does not stop the window; until it isComplete(), some
    // figures are missing.
    void refresh(qint64 maxMeasured = 100000);
    bool isComplete() const { return m_isComplete; }
    int idAt(int row) const { return m_rows.value(row).id; }
    int rowOf(int id) const;
    // As shown, all rows: comma-separated, UTF-8 with a byte order mark.
    QByteArray csv() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Row
    {
        int id = 0;
        int channel = 0;
        QVector<std::optional<double>> figures; // by column behind FirstFigure
    };
    enum Rank { None, Best, Worst };
    struct Extremes
    {
        double lowest = std::numeric_limits<double>::infinity();
        double highest = -std::numeric_limits<double>::infinity();
    };

    void findExtremes();

    QString text(const Row &row, int column) const;
    Rank rank(const Row &row, int figure) const;

    PidRecorder *m_recorder;
    RunFigures m_figures;
    QVector<Row> m_rows;                         // the newest first
    std::array<QVector<Extremes>, 5> m_extremes; // by channel and figure
    bool m_showsHidden = false;
    bool m_isComplete = true;
};
