#include "commandmodel.h"

#include "commandset.h"

#include <QFont>
#include <QMimeData>
#include <QSet>

#include <utility>

namespace {

const auto kRowsType = QStringLiteral("application/x-korvex-command-rows");

struct ColumnText
{
    const char *title;
    const char *toolTip;
};

const ColumnText kColumns[CommandModel::ColumnCount] = {
    {"序号", "勾选的命令组成序列"},
    {"发送", "单击或按Enter发送该行"},
    {"名称", ""},
    {"数据", "文本可用转义 \\r \\n \\t \\0 \\xHH \\\\"},
    {"格式", ""},
    {"行尾", ""},
    {"延时ms", "发送或收到应答后，到下一条之前"},
    {"等待应答", "收到后才继续；空：不等待"},
    {"应答格式", ""},
    {"超时ms", "等待应答的时间"},
    {"无应答时", ""},
    {"重发次数", "用于“重发”，仍无应答则停止"},
    {"备注", ""},
};

QString firstLine(const QVariant &value)
{
    return value.toString().section(QLatin1Char('\n'), 0, 0);
}

bool setNumber(int *number, const QVariant &value, int minimum, int maximum)
{
    bool isNumber = false;
    const int typed = value.toString().trimmed().toInt(&isNumber);
    if (!isNumber || typed < minimum || typed > maximum)
        return false;
    *number = typed;
    return true;
}

bool setText(QString *text, const QVariant &value, int maxLength)
{
    *text = firstLine(value).left(maxLength);
    return true;
}

} // namespace

QStringList CommandModel::choices(int column)
{
    switch (column) {
    case Format:
        return {QStringLiteral("文本"), QStringLiteral("HEX")};
    case LineEnd:
        return {QStringLiteral("无"), QStringLiteral("CR LF"), QStringLiteral("LF"), QStringLiteral("CR")};
    case AnswerKind:
        return {QStringLiteral("文本"), QStringLiteral("正则")};
    case Otherwise:
        return {QStringLiteral("停止"), QStringLiteral("继续"), QStringLiteral("重发")};
    default:
        return {};
    }
}

QVariant CommandModel::value(const Command &command, int column) const
{
    switch (column) {
    case Name:
        return command.name;
    case Text:
        return command.text;
    case Format:
        return int(command.isHex);
    case LineEnd:
        return int(command.lineEnd);
    case Delay:
        return command.delayMs;
    case Answer:
        return command.answer;
    case AnswerKind:
        return int(command.isExpression);
    case Timeout:
        return command.timeoutMs;
    case Otherwise:
        return int(command.otherwise);
    case Repeats:
        return command.repeats;
    case Note:
        return command.note;
    default:
        return {};
    }
}

bool CommandModel::setValue(Command *command, int column, const QVariant &value) const
{
    const int choice = qBound(0, value.toInt(), qMax(0, choices(column).size() - 1));
    switch (column) {
    case Name:
        return setText(&command->name, value, Command::maxName);
    case Text:
        return setText(&command->text, value, Command::maxText);
    case Format:
        command->isHex = choice == 1;
        return true;
    case LineEnd:
        command->lineEnd = static_cast<Command::LineEnd>(choice);
        return true;
    case Delay:
        return setNumber(&command->delayMs, value, 0, Command::maxMs);
    case Answer:
        return setText(&command->answer, value, Command::maxText);
    case AnswerKind:
        command->isExpression = choice == 1;
        return true;
    case Timeout:
        return setNumber(&command->timeoutMs, value, 1, Command::maxMs);
    case Otherwise:
        command->otherwise = static_cast<Command::Otherwise>(choice);
        return true;
    case Repeats:
        return setNumber(&command->repeats, value, 1, Command::maxRepeats);
    case Note:
        return setText(&command->note, value, Command::maxText);
    default:
        return false;
    }
}

void CommandModel::setCommands(const QVector<Command> &commands)
{
    beginResetModel();
    m_commands = commands;
    m_presentRow = -1;
    endResetModel();
}

bool CommandModel::insert(int row, const QVector<Command> &commands)
{
    if (commands.isEmpty() || m_commands.size() + commands.size() > CommandSet::maxCommands)
        return false;
    beginInsertRows({}, row, row + commands.size() - 1);
    m_commands = m_commands.mid(0, row) + commands + m_commands.mid(row);
    endInsertRows();
    emit changed();
    return true;
}

void CommandModel::remove(int row, int count)
{
    beginRemoveRows({}, row, row + count - 1);
    m_commands.remove(row, count);
    endRemoveRows();
    emit changed();
}

void CommandModel::setPresentRow(int row)
{
    const int former = std::exchange(m_presentRow, row);
    for (const int shown : {former, row})
        if (shown >= 0 && shown < m_commands.size())
            emit dataChanged(index(shown, 0), index(shown, ColumnCount - 1));
}

void CommandModel::tickAll(bool isTicked)
{
    for (Command &command : m_commands)
        command.isTicked = isTicked;
    if (m_commands.isEmpty())
        return;
    emit dataChanged(index(0, Tick), index(m_commands.size() - 1, Tick));
    emit changed();
}

int CommandModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_commands.size();
}

int CommandModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant CommandModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return QString::fromUtf8(kColumns[section].title);
    if (role == Qt::ToolTipRole)
        return QString::fromUtf8(kColumns[section].toolTip);
    return {};
}

Qt::ItemFlags CommandModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    const Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDragEnabled;
    if (index.column() == Tick)
        return flags | Qt::ItemIsUserCheckable;
    return index.column() == Send ? flags : flags | Qt::ItemIsEditable;
}

QVariant CommandModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const Command &command = m_commands.at(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::CheckStateRole:
        return column == Tick ? QVariant(command.isTicked ? Qt::Checked : Qt::Unchecked) : QVariant();
    case Qt::EditRole:
        return value(command, column);
    case Qt::DisplayRole:
        if (column == Tick)
            return QString::number(index.row() + 1);
        if (column == Send)
            return index.row() == m_presentRow ? QStringLiteral("●") : QStringLiteral("▶");
        return choices(column).isEmpty() ? value(command, column)
                                         : choices(column).at(value(command, column).toInt());
    case Qt::ToolTipRole:
        if (column == Text || column == Answer || column == Note)
            return value(command, column).toString().left(1000).toHtmlEscaped();
        return QString::fromUtf8(kColumns[column].toolTip);
    case Qt::TextAlignmentRole:
        return column == Send ? int(Qt::AlignCenter) : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::FontRole:
        if (index.row() == m_presentRow) {
            QFont font;
            font.setBold(true);
            return font;
        }
        return {};
    default:
        return {};
    }
}

bool CommandModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid())
        return false;
    Command command = m_commands.at(index.row());
    if (role == Qt::CheckStateRole && index.column() == Tick)
        command.isTicked = value.toInt() == Qt::Checked;
    else if (role != Qt::EditRole || !setValue(&command, index.column(), value))
        return false;
    if (command == m_commands.at(index.row()))
        return true;
    m_commands[index.row()] = command;
    emit dataChanged(index, index);
    emit changed();
    return true;
}

// ---- dragging

QStringList CommandModel::mimeTypes() const
{
    return {kRowsType};
}

QMimeData *CommandModel::mimeData(const QModelIndexList &indexes) const
{
    QByteArray rows;
    int last = -1;
    for (const QModelIndex &index : indexes) {
        if (index.row() != last)
            rows += QByteArray::number(index.row()) + ' ';
        last = index.row();
    }
    auto *data = new QMimeData;
    data->setData(kRowsType, rows);
    return data;
}

// Moves the rows itself, so that the view has none to remove: false.
bool CommandModel::dropMimeData(const QMimeData *data, Qt::DropAction, int row, int,
                                const QModelIndex &parent)
{
    QSet<int> from;
    for (const QByteArray &number : data->data(kRowsType).split(' '))
        if (!number.isEmpty() && number.toInt() < m_commands.size())
            from.insert(number.toInt());
    const int to = row >= 0 ? row : parent.isValid() ? parent.row() : m_commands.size();
    if (from.isEmpty())
        return false;
    QVector<Command> before;
    QVector<Command> moved;
    QVector<Command> after;
    for (int i = 0; i < m_commands.size(); ++i)
        (from.contains(i) ? moved : i < to ? before : after).append(m_commands.at(i));
    beginResetModel();
    m_commands = before + moved + after;
    endResetModel();
    emit changed();
    return false;
}
