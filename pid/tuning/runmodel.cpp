#include "runmodel.h"

#include "csvtext.h"
#include "pidrecorder.h"

#include <QDateTime>
#include <QFont>

#include <algorithm>
#include <cmath>

namespace {

struct Figure
{
    const char *caption;
    const char *definition;
    std::optional<double> StepFigures::*value;
    bool isRanked; // less is better
};

// "响应" is the movement from the value before the step to the steady one.
constexpr Figure kFigures[] = {
    {"死区(s)", "从阶跃到实际值离开原值超过响应幅度的2%（或噪声的5倍）的时间", &StepFigures::deadTime, false},
    {"延迟(s)", "从阶跃到实际值走完响应幅度一半的时间", &StepFigures::delayTime, true},
    {"上升(s)", "实际值从响应幅度的10%到90%的时间", &StepFigures::riseTime, true},
    {"峰值", "沿阶跃方向到达的最大值", &StepFigures::peak, false},
    {"超调(%)", "峰值超过稳态值的部分，占响应幅度的百分比", &StepFigures::overshoot, true},
    {"调节(s)", "从阶跃到实际值不再离开稳态值附近误差带的时间", &StepFigures::settlingTime, true},
    {"稳态误差", "目标值减去最后十分之一时间内的平均值；“—”：还没有稳定", &StepFigures::steadyError, false},
    {"IAE", "误差绝对值的积分（单位·秒）", &StepFigures::iae, true},
    {"ISE", "误差平方的积分（单位²·秒）", &StepFigures::ise, true},
    {"ITAE", "误差绝对值乘以时间的积分（单位·秒²）", &StepFigures::itae, true},
    {"振荡(s)", "振荡的周期；“—”：没有振荡", &StepFigures::period, false},
    {"衰减比", "每个周期后振幅与前一周期之比；1为等幅振荡", &StepFigures::decayRatio, true},
    {"噪声", "最后五分之一时间内去掉趋势后的均方根", &StepFigures::noise, false},
    {"上报(/s)", "每秒上报次数（中位数），即各时间的分辨率", &StepFigures::reportRate, false},
    {"抖动(ms)", "上报间隔与平均间隔之差的平均值", &StepFigures::jitter, false},
};
constexpr int kFigureCount = int(sizeof kFigures / sizeof *kFigures);

const char *const kCaptions[RunModel::FirstFigure] = {"参考", "通道", "时间", "名称", "目标值",
                                                      "P",    "I",    "D",    "周期"};
const char *const kTips[RunModel::FirstFigure] = {"勾选后作为浅色曲线叠加，与当前运行的阶跃对齐",
                                                  "",
                                                  "阶跃或启动的时刻",
                                                  "双击可改名",
                                                  "阶跃前 → 阶跃后",
                                                  "运行开始时的增益；*：运行中改变过",
                                                  "",
                                                  "",
                                                  "开发板上报的周期"};

QString numberText(double value)
{
    const double size = std::abs(value);
    if (size >= 1e6 || (size > 0 && size < 0.0005))
        return QString::number(value, 'g', 4);
    return QString::number(value, 'f', size >= 1000 ? 0 : size >= 100 ? 1 : size >= 10 ? 2 : 3);
}

QString gainText(float value)
{
    return QString::number(double(value), 'g', 6);
}

} // namespace

RunModel::RunModel(PidRecorder *recorder, QObject *parent)
    : QAbstractTableModel(parent)
    , m_recorder(recorder)
    , m_figures(recorder)
{
}

void RunModel::setShowsHidden(bool shows)
{
    m_showsHidden = shows;
}

void RunModel::setBand(double band)
{
    m_figures.setBand(band);
}

void RunModel::refresh(qint64 maxMeasured)
{
    m_isComplete = true;
    QVector<Row> rows;
    const QVector<PidRun> &runs = m_recorder->runs()->runs();
    for (auto run = runs.crbegin(); run != runs.crend(); ++run) {
        // Each step of a ramp begins a run, which is none in the end.
        const bool hasSamples =
            !run->isOpen() || m_recorder->record(run->channel).end() - run->first >= PidRuns::minSamples;
        if (!hasSamples || (run->isHidden && !m_showsHidden))
            continue;
        Row row{run->id, run->channel, {}};
        const bool isMeasured = m_figures.isMeasured(*run);
        const bool isLater = !isMeasured && maxMeasured <= 0;
        const StepFigures figures = isLater ? m_figures.known(run->id) : m_figures.of(*run);
        m_isComplete = m_isComplete && !isLater;
        if (!isMeasured && !isLater)
            maxMeasured -= (run->isOpen() ? m_recorder->record(run->channel).end() : run->end) - run->first;
        for (const Figure &figure : kFigures) {
            std::optional<double> value = figures.*figure.value;
            if (value && figure.value == &StepFigures::jitter)
                *value *= 1000;
            row.figures.append(value);
        }
        rows.append(row);
    }
    const auto sameIds = std::equal(rows.cbegin(), rows.cend(), m_rows.cbegin(), m_rows.cend(),
                                    [](const Row &a, const Row &b) { return a.id == b.id; });
    if (sameIds) {
        m_rows = rows;
        findExtremes();
        if (!m_rows.isEmpty())
            emit dataChanged(index(0, 0), index(m_rows.size() - 1, columnCount() - 1));
        return;
    }
    // The common case is a new run; the selection must survive it.
    const bool isAdded = rows.size() == m_rows.size() + 1 &&
                         std::equal(rows.cbegin() + 1, rows.cend(), m_rows.cbegin(), m_rows.cend(),
                                    [](const Row &a, const Row &b) { return a.id == b.id; });
    if (isAdded) {
        beginInsertRows({}, 0, 0);
        m_rows = rows;
        findExtremes();
        endInsertRows();
        emit dataChanged(index(0, 0), index(m_rows.size() - 1, columnCount() - 1));
    } else {
        beginResetModel();
        m_rows = rows;
        findExtremes();
        endResetModel();
    }
}

int RunModel::rowOf(int id) const
{
    for (int row = 0; row < m_rows.size(); ++row)
        if (m_rows.at(row).id == id)
            return row;
    return -1;
}

int RunModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int RunModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : FirstFigure + kFigureCount;
}

// Among the runs of the channel that have the figure.
void RunModel::findExtremes()
{
    for (QVector<Extremes> &figures : m_extremes)
        figures = QVector<Extremes>(kFigureCount);
    for (const Row &row : qAsConst(m_rows)) {
        for (int figure = 0; figure < kFigureCount; ++figure) {
            const std::optional<double> value = row.figures.at(figure);
            if (!value)
                continue;
            Extremes &extremes = m_extremes.at(size_t(row.channel))[figure];
            extremes.lowest = std::min(extremes.lowest, *value);
            extremes.highest = std::max(extremes.highest, *value);
        }
    }
}

RunModel::Rank RunModel::rank(const Row &row, int figure) const
{
    const std::optional<double> own = row.figures.at(figure);
    if (!own || !kFigures[figure].isRanked)
        return None;
    const Extremes &extremes = m_extremes.at(size_t(row.channel)).at(figure);
    if (extremes.lowest == extremes.highest)
        return None;
    return *own == extremes.lowest ? Best : *own == extremes.highest ? Worst : None;
}

QString RunModel::text(const Row &row, int column) const
{
    if (column >= FirstFigure) {
        const std::optional<double> value = row.figures.at(column - FirstFigure);
        return value ? numberText(*value) : QStringLiteral("—");
    }
    const PidRun *run = m_recorder->runs()->find(row.id);
    if (!run)
        return {};
    switch (column) {
    case Channel:
        return QStringLiteral("CH%1").arg(run->channel + 1);
    case Time:
        return QDateTime::fromMSecsSinceEpoch(run->beginUs / 1000).toString(QStringLiteral("HH:mm:ss.zzz"));
    case Name:
        return run->name;
    case Target:
        return run->isStart ? QStringLiteral("启动 → %1").arg(run->target)
                            : QStringLiteral("%1 → %2").arg(run->before).arg(run->target);
    case P:
        return gainText(run->gains.p) + (run->gainsChanged ? QStringLiteral("*") : QString());
    case I:
        return gainText(run->gains.i);
    case D:
        return gainText(run->gains.d);
    case Period:
        return run->period > 0 ? QString::number(run->period) : QStringLiteral("—");
    default:
        return {};
    }
}

QVariant RunModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    const PidRun *run = m_recorder->runs()->find(row.id);
    const int column = index.column();
    if (!run)
        return {};
    if (column == Reference) {
        if (role == Qt::CheckStateRole)
            return run->isReference ? Qt::Checked : Qt::Unchecked;
        return {};
    }
    const Rank place = column >= FirstFigure ? rank(row, column - FirstFigure) : None;
    switch (role) {
    case Qt::DisplayRole:
        return text(row, column) + (place == Best    ? QStringLiteral(" ★")
                                    : place == Worst ? QStringLiteral(" ▽")
                                                     : QString());
    case Qt::EditRole:
        return run->name;
    case Qt::TextAlignmentRole:
        return int(column >= P ? Qt::AlignRight | Qt::AlignVCenter : Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::ToolTipRole:
        if (place != None)
            return place == Best ? QStringLiteral("本通道各次运行中最好")
                                 : QStringLiteral("本通道各次运行中最差");
        if (column == P && run->gainsChanged)
            return QStringLiteral("运行中增益改变过，这里是开始时的增益");
        return {};
    case Qt::FontRole:
        if (run->isOpen()) {
            QFont font;
            font.setBold(true);
            return font;
        }
        return {};
    default:
        return {};
    }
}

bool RunModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const int id = idAt(index.row());
    if (index.column() == Reference && role == Qt::CheckStateRole)
        m_recorder->runs()->setReference(id, value.toInt() == Qt::Checked);
    else if (index.column() == Name && role == Qt::EditRole)
        m_recorder->runs()->rename(id, value.toString().simplified());
    else
        return false;
    return true;
}

Qt::ItemFlags RunModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (index.column() == Reference)
        flags |= Qt::ItemIsUserCheckable;
    if (index.column() == Name)
        flags |= Qt::ItemIsEditable;
    return flags;
}

QVariant RunModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section >= columnCount())
        return {};
    const bool isFigure = section >= FirstFigure;
    if (role == Qt::DisplayRole)
        return QString::fromUtf8(isFigure ? kFigures[section - FirstFigure].caption : kCaptions[section]);
    if (role == Qt::ToolTipRole)
        return QString::fromUtf8(isFigure ? kFigures[section - FirstFigure].definition : kTips[section]);
    return {};
}

QByteArray RunModel::csv() const
{
    QStringList fields;
    for (int column = Channel; column < columnCount(); ++column)
        fields << headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    QByteArray lines = "\xEF\xBB\xBF" + CsvText::line(fields);
    for (const Row &row : m_rows) {
        fields.clear();
        for (int column = Channel; column < columnCount(); ++column) {
            // A figure that can't be told is an empty field, others have all digits.
            const bool isFigure = column >= FirstFigure;
            const std::optional<double> value =
                isFigure ? row.figures.at(column - FirstFigure) : std::nullopt;
            QString field = !isFigure ? text(row, column)
                            : value   ? QString::number(*value, 'g', 9)
                                      : QString();
            if (field == QLatin1String("—"))
                field.clear();
            fields << field;
        }
        lines += CsvText::line(fields);
    }
    return lines;
}
