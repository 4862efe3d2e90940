#pragma once

// The rules for answers as rows of a table, while they are edited, and how often each has
// matched. Owns them until they are stored.

#include "answerrules.h"

#include <QAbstractTableModel>
#include <QColor>

class LinkAnswers;

class AnswerModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Name, Kind, Pattern, Answer, Hits, Fault, ColumnCount };

    // The answers outlive it.
    AnswerModel(const AnswerRules &rules, const LinkAnswers *answers, QObject *parent);

    void setErrorColor(const QColor &color) { m_errorColor = color; }

    const AnswerRules &rules() const { return m_rules; }
    const AnswerRule &rule(int row) const { return m_rules.at(row); }
    // Keeps the id and whether it is on.
    void setRule(int row, const AnswerRule &rule);
    // Behind the last row, with an id of its own; false where there is no room.
    bool add(AnswerRule rule);
    void remove(int row);
    void move(int row, int to);
    void showHits();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

private:
    QString textOf(const AnswerRule &rule, int column) const;

    AnswerRules m_rules;
    const LinkAnswers *m_answers;
    QColor m_errorColor;
};
