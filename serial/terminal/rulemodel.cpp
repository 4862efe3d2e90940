#include "rulemodel.h"

#include "contrast.h"
#include "sharedrules.h"

#include <QIcon>
#include <QPainter>
#include <QPixmap>

namespace {

constexpr QSize kSample(52, 18);

QString kindOf(const LineMatcher::Pattern &pattern)
{
    QStringList kinds{pattern.isExpression ? QStringLiteral("正则") : QStringLiteral("文本")};
    if (pattern.caseSensitive)
        kinds += QStringLiteral("大小写");
    if (pattern.wholeWord)
        kinds += QStringLiteral("全字");
    return kinds.join(QStringLiteral("、"));
}

QString faultOf(const LineMatcher::Pattern &pattern)
{
    if (pattern.text.isEmpty())
        return QStringLiteral("请输入内容");
    if (SharedRules::instance().coloring().hasGivenUp(pattern))
        return QStringLiteral("过于复杂，本次运行已停用");
    return LineMatcher(pattern).fault();
}

} // namespace

RuleModel::RuleModel(const ColorRules &rules, const QColor &ground, QObject *parent)
    : QAbstractTableModel(parent)
    , m_rules(rules)
    , m_ground(ground)
{
}

ColorRules RuleModel::rules() const
{
    ColorRules rules;
    for (const ColorRule &rule : m_rules)
        if (!rule.pattern.text.isEmpty())
            rules.append(rule);
    return rules;
}

void RuleModel::setRule(int row, const ColorRule &rule)
{
    m_rules[row] = rule;
    emit dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

bool RuleModel::add(const ColorRule &rule)
{
    const int row = m_rules.size();
    if (row >= ColorRuleFile::maxRules)
        return false;
    beginInsertRows({}, row, row);
    m_rules.append(rule);
    endInsertRows();
    return true;
}

int RuleModel::addMissing(const ColorRules &rules)
{
    int added = 0;
    for (const ColorRule &rule : rules)
        if (!m_rules.contains(rule) && add(rule))
            ++added;
    return added;
}

void RuleModel::remove(int row)
{
    beginRemoveRows({}, row, row);
    m_rules.remove(row);
    endRemoveRows();
}

void RuleModel::move(int row, int to)
{
    beginMoveRows({}, row, row, {}, to > row ? to + 1 : to);
    m_rules.move(row, to);
    endMoveRows();
}

int RuleModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rules.size();
}

int RuleModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RuleModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static const QStringList titles{QStringLiteral("内容"), QStringLiteral("方式"), QStringLiteral("范围"),
                                    QStringLiteral("颜色"), QStringLiteral("问题")};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    return titles.value(section);
}

Qt::ItemFlags RuleModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    return index.column() == Pattern ? flags | Qt::ItemIsUserCheckable : flags;
}

QString RuleModel::textOf(const ColorRule &rule, int column) const
{
    switch (column) {
    case Pattern:
        return rule.pattern.text;
    case Kind:
        return kindOf(rule.pattern);
    case Range:
        return rule.isForLine ? QStringLiteral("整行") : QStringLiteral("匹配的文字");
    case Fault:
        return faultOf(rule.pattern);
    default:
        return QString();
    }
}

// As the display shows it.
QIcon RuleModel::sampleOf(const ColorRule &rule) const
{
    QPixmap sample(kSample);
    sample.fill(m_ground);
    QPainter painter(&sample);
    painter.setPen(Contrast::readableOn(m_ground, QColor(QRgb(rule.color))));
    painter.drawText(sample.rect(), Qt::AlignCenter, QStringLiteral("示例"));
    QIcon icon(sample);
    icon.addPixmap(sample, QIcon::Selected); // not tinted
    return icon;
}

QVariant RuleModel::data(const QModelIndex &index, int role) const
{
    const ColorRule &rule = m_rules.at(index.row());
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return textOf(rule, column);
    case Qt::ToolTipRole: // what may be cut; no markup of the user's
        return column == Pattern || column == Fault
                   ? QVariant(QStringLiteral("<p>%1</p>").arg(textOf(rule, column).toHtmlEscaped()))
                   : QVariant();
    case Qt::CheckStateRole:
        return column == Pattern ? QVariant(rule.isOn ? Qt::Checked : Qt::Unchecked) : QVariant();
    case Qt::DecorationRole:
        return column == Color ? QVariant(sampleOf(rule)) : QVariant();
    case Qt::AccessibleTextRole:
        return column == Color ? QColor(QRgb(rule.color)).name() : textOf(rule, column);
    case Qt::ForegroundRole:
        return column == Fault && m_errorColor.isValid() ? QVariant(m_errorColor) : QVariant();
    default:
        return QVariant();
    }
}

bool RuleModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::CheckStateRole || index.column() != Pattern)
        return false;
    ColorRule rule = m_rules.at(index.row());
    rule.isOn = value.toInt() == Qt::Checked;
    setRule(index.row(), rule);
    return true;
}
