#include "pidcurvelist.h"

#include "curvecolors.h"
#include "numberlabel.h"
#include "settings.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

namespace {

struct Default
{
    int key;
    const char *label;
    const char *color;
};

constexpr Default kDefaults[PidCurveList::curves] = {
    {0x101, "CH1", "#D9001B"}, {0x102, "CH2", "#bfbf00"}, {0x103, "CH3", "#00ffff"},
    {0x104, "CH4", "#015478"}, {0x105, "CH5", "#c280ff"}, {0x201, "CH1", "#b8741a"},
    {0x202, "CH2", "#70b603"}, {0x203, "CH3", "#02a7f0"}, {0x204, "CH4", "#0000bf"},
    {0x205, "CH5", "#420080"},
};

} // namespace

PidCurveList::PidCurveList(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("pidCurveList"));
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(4);
    grid->setVerticalSpacing(0);
    grid->addWidget(new QLabel(QStringLiteral("目标值"), this), 0, 0);
    grid->addWidget(new QLabel(QStringLiteral("实际值"), this), 1, 0);
    for (int graph = 0; graph < curves; ++graph) {
        Curve &curve = m_curves.at(static_cast<size_t>(graph));
        curve.key = kDefaults[graph].key;
        curve.label = QLatin1String(kDefaults[graph].label);
        addCell(grid, graph, curve);
        setColor(graph, QColor(QLatin1String(kDefaults[graph].color)));
    }
    for (int channel = 0; channel < channels; ++channel)
        grid->setColumnStretch(1 + channel, 1);
}

void PidCurveList::addCell(QGridLayout *grid, int graph, Curve &curve)
{
    curve.shown = new QCheckBox(curve.label, this);
    curve.shown->setObjectName(QStringLiteral("checkCurve%1").arg(graph));
    curve.shown->setChecked(true);
    curve.swatch = new QToolButton(this);
    curve.swatch->setObjectName(QStringLiteral("curveColor%1").arg(graph));
    curve.swatch->setToolTip(QStringLiteral("单击选择颜色"));
    curve.swatch->setAccessibleName(name(graph) + QStringLiteral("的颜色"));
    curve.shown->setAccessibleName(name(graph));
    curve.value = new NumberLabel(this);
    curve.value->setObjectName(QStringLiteral("curveValue%1").arg(graph));
    connect(curve.shown, &QCheckBox::toggled, this,
            [this, graph](bool shown) { emit signalGraphClicked(graph, shown); });
    connect(curve.swatch, &QToolButton::clicked, this, [this, graph] { offerColors(graph); });

    auto *cell = new QHBoxLayout;
    cell->setSpacing(2);
    cell->addWidget(curve.swatch);
    cell->addWidget(curve.shown);
    cell->addWidget(curve.value, 1);
    grid->addLayout(cell, graph / channels, 1 + graph % channels);
}

int PidCurveList::keyOf(int graph)
{
    return graph / 5 * 251 + 257 + graph;
}

const PidCurveList::Curve *PidCurveList::find(int key) const
{
    for (const Curve &curve : m_curves)
        if (curve.key == key)
            return &curve;
    return nullptr;
}

QColor PidCurveList::color(int key) const
{
    const Curve *curve = find(key);
    return curve ? curve->color : QColor(0xff, 0, 0);
}

bool PidCurveList::isShown(int key) const
{
    const Curve *curve = find(key);
    return !curve || curve->shown->isChecked();
}

QString PidCurveList::name(int graph) const
{
    const auto &names = Settings::instance().pid;
    const QString own = names.channelNames.value().value(graph % channels);
    const QString unit = names.channelUnits.value().value(graph % channels);
    return m_curves.at(static_cast<size_t>(graph)).label +
           (own.isEmpty() ? QString() : QLatin1Char(' ') + own) +
           (graph < channels ? QStringLiteral(" 目标值") : QStringLiteral(" 实际值")) +
           (unit.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(unit));
}

void PidCurveList::load()
{
    const auto &stored = Settings::instance().pid;
    for (int graph = 0; graph < curves; ++graph) {
        Curve &curve = m_curves.at(static_cast<size_t>(graph));
        const QColor chosen(stored.curveColors.value().value(graph));
        const QColor color = chosen.isValid() ? chosen : QColor(QLatin1String(kDefaults[graph].color));
        if (color != curve.color)
            setColor(graph, color);
        const QString own = stored.channelNames.value().value(graph % channels);
        curve.shown->setText(own.isEmpty() ? curve.label : own);
        curve.shown->setToolTip(name(graph));
        curve.shown->setAccessibleName(name(graph));
    }
}

void PidCurveList::setLarge(bool large)
{
    for (const Curve &curve : m_curves) {
        QFont larger = font();
        if (large) {
            larger.setPixelSize(QFontInfo(font()).pixelSize() * 2);
            larger.setBold(true);
        }
        curve.value->setFont(larger);
    }
}

void PidCurveList::setValue(int graph, int value)
{
    m_curves.at(static_cast<size_t>(graph)).value->setNumber(QString::number(value));
}

void PidCurveList::clearValues()
{
    for (const Curve &curve : m_curves)
        curve.value->setNumber(QString());
}

void PidCurveList::setColor(int graph, const QColor &color)
{
    Curve &curve = m_curves.at(static_cast<size_t>(graph));
    curve.color = color;
    curve.swatch->setIcon(CurveColors::swatch(color, palette().color(QPalette::Mid)));
    emit colorChanged(graph);
}

void PidCurveList::offerColors(int graph)
{
    QToolButton *swatch = m_curves.at(static_cast<size_t>(graph)).swatch;
    const QColor chosen = CurveColors::choose(swatch, QColor(QLatin1String(kDefaults[graph].color)));
    if (!chosen.isValid())
        return;
    setColor(graph, chosen);
    QStringList colors;
    for (int k = 0; k < curves; ++k) {
        const QString name = m_curves.at(static_cast<size_t>(k)).color.name();
        const QString usual = QColor(QLatin1String(kDefaults[k].color)).name();
        colors << (name == usual ? QString() : name);
    }
    Settings::instance().pid.curveColors.change(colors);
}
