#pragma once

// The commands of a set as rows of a table, which alone holds them.

#include "command.h"

#include <QAbstractTableModel>
#include <QVector>

class CommandModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        Tick, // and number
        Send, // a click sends
        Name,
        Text,
        Format,
        LineEnd,
        Delay,
        Answer,
        AnswerKind,
        Timeout,
        Otherwise,
        Repeats,
        Note,
        ColumnCount
    };

    explicit CommandModel(QObject *parent = nullptr)
        : QAbstractTableModel(parent)
    {
    }

    const QVector<Command> &commands() const { return m_commands; }
    void setCommands(const QVector<Command> &commands); // emits no changed()
    // Before that row; false where there is no room.
    bool insert(int row, const QVector<Command> &commands);
    void remove(int row, int count);
    // The row that a sequence is at; -1 none.
    void setPresentRow(int row);
    void tickAll(bool isTicked);

    // The entries of a column that has a few; empty for others.
    static QStringList choices(int column);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;

    // Rows are dragged to another place.
    Qt::DropActions supportedDropActions() const override { return Qt::MoveAction; }
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

signals:
    void changed(); // by the user

private:
    QVariant value(const Command &command, int column) const;
    bool setValue(Command *command, int column, const QVariant &value) const;

    QVector<Command> m_commands;
    int m_presentRow = -1;
};
