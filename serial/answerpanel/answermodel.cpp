#include "answermodel.h"

#include "linkanswers.h"
#include "settings.h"

#include <QUuid>

AnswerModel::AnswerModel(const AnswerRules &rules, const LinkAnswers *answers, QObject *parent)
    : QAbstractTableModel(parent)
    , m_rules(rules)
    , m_answers(answers)
{
}

void AnswerModel::setRule(int row, const AnswerRule &rule)
{
    AnswerRule &own = m_rules[row];
    const QString id = own.id;
    const bool isOn = own.isOn;
    own = rule;
    own.id = id;
    own.isOn = isOn;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

bool AnswerModel::add(AnswerRule rule)
{
    const int row = m_rules.size();
    if (row >= AnswerRuleFile::maxRules)
        return false;
    rule.id = QUuid::createUuid().toString(QUuid::Id128);
    beginInsertRows({}, row, row);
    m_rules.append(rule);
    endInsertRows();
    return true;
}

void AnswerModel::remove(int row)
{
    beginRemoveRows({}, row, row);
    m_rules.remove(row);
    endRemoveRows();
}

void AnswerModel::move(int row, int to)
{
    beginMoveRows({}, row, row, {}, to > row ? to + 1 : to);
    m_rules.move(row, to);
    endMoveRows();
}

void AnswerModel::showHits()
{
    if (!m_rules.isEmpty())
        emit dataChanged(index(0, Hits), index(m_rules.size() - 1, Fault));
}

int AnswerModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rules.size();
}

int AnswerModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant AnswerModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const QStringList titles{QStringLiteral("名称"), QStringLiteral("方式"), QStringLiteral("匹配"),
                                    QStringLiteral("应答"), QStringLiteral("命中"), QStringLiteral("问题")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return titles.value(section);
}

Qt::ItemFlags AnswerModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.column() == Name ? flags | Qt::ItemIsUserCheckable : flags;
}

QString AnswerModel::textOf(const AnswerRule &rule, int column) const
{
    static const QStringList kinds{QStringLiteral("文本"), QStringLiteral("十六进制"),
                                   QStringLiteral("正则")};
    switch (column) {
    case Name:
        return rule.name;
    case Kind:
        return kinds.at(rule.kind);
    case Pattern:
        return rule.pattern;
    case Answer:
        return rule.answer;
    case Hits:
        return QString::number(m_answers->hitsOf(rule.id));
    case Fault:
        return m_answers->hasGivenUp(rule.id) ? QStringLiteral("过于复杂，已停用")
                                              : AnswerMatcher::faultOf(rule, Settings::instance().textCodec);
    default:
        return QString();
    }
}

QVariant AnswerModel::data(const QModelIndex &index, int role) const
{
    const AnswerRule &rule = m_rules.at(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return textOf(rule, column);
    case Qt::ToolTipRole: // what may be cut; no markup of the user's
        return QStringLiteral("<p>%1</p>").arg(textOf(rule, column).toHtmlEscaped());
    case Qt::CheckStateRole:
        return column == Name ? QVariant(rule.isOn ? Qt::Checked : Qt::Unchecked) : QVariant();
    case Qt::TextAlignmentRole:
        return column == Hits ? QVariant(int(Qt::AlignRight) | int(Qt::AlignVCenter)) : QVariant();
    case Qt::ForegroundRole:
        return column == Fault && m_errorColor.isValid() ? QVariant(m_errorColor) : QVariant();
    default:
        return QVariant();
    }
}

bool AnswerModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != Name)
        return false;
    m_rules[index.row()].isOn = value.toInt() == Qt::Checked;
    emit dataChanged(index, index);
    return true;
}
