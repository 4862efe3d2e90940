#pragma once

// The color rules as rows of a table, while they are edited. Owns them until they are
// stored.

#include "colorrules.h"

#include <QAbstractTableModel>
#include <QColor>

class RuleModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Pattern, Kind, Range, Color, Fault, ColumnCount };

    // The ground is that of the display, on which the colors are shown.
    RuleModel(const ColorRules &rules, const QColor &ground, QObject *parent);

    void setErrorColor(const QColor &color) { m_errorColor = color; }

    // Without those that have no text.
    ColorRules rules() const;
    const ColorRule &rule(int row) const { return m_rules.at(row); }
    void setRule(int row, const ColorRule &rule);
    // Behind the last row, up to the limit of a file; false where there is no room.
    bool add(const ColorRule &rule);
    // Those that are not among the rules yet; how many they are.
    int addMissing(const ColorRules &rules);
    void remove(int row);
    void move(int row, int to);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

private:
    QString textOf(const ColorRule &rule, int column) const;
    QIcon sampleOf(const ColorRule &rule) const;

    ColorRules m_rules;
    QColor m_ground;
    QColor m_errorColor;
};
