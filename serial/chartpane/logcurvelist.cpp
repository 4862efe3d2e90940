#include "logcurvelist.h"

#include "curvecolors.h"
#include "numberlabel.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QLocale>
#include <QPointer>
#include <QToolButton>

LogCurveList::LogCurveList(QWidget *parent)
    : QScrollArea(parent)
{
    setObjectName(QStringLiteral("logCurveList"));
    setAccessibleName(QStringLiteral("曲线列表"));
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    clear();
}

void LogCurveList::clear()
{
    m_curves.clear();
    auto *content = new QWidget; // the area's, which deletes the one before
    m_grid = new QGridLayout(content);
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setHorizontalSpacing(4);
    m_grid->setVerticalSpacing(0);
    m_grid->setColumnStretch(1, 1);
    m_grid->setColumnStretch(2, 1);
    m_grid->setRowStretch(1000, 1);
    setWidget(content);
}

void LogCurveList::setNames(const QStringList &names)
{
    while (m_curves.size() < names.size()) {
        add(names.at(m_curves.size()));
        emit curveChanged(m_curves.size() - 1);
    }
}

void LogCurveList::add(const QString &name)
{
    const int row = m_curves.size();
    Curve curve;
    curve.color = CurveColors::ofCurve(row);
    curve.swatch = new QToolButton(widget());
    curve.swatch->setToolTip(QStringLiteral("单击选择颜色"));
    curve.swatch->setAccessibleName(name + QStringLiteral("的颜色"));
    QString plain = name;
    curve.shown = new QCheckBox(plain.replace(QLatin1Char('&'), QLatin1String("&&")), widget());
    curve.shown->setObjectName(QStringLiteral("checkLogCurve%1").arg(row));
    curve.shown->setAccessibleName(name);
    curve.shown->setToolTip(name.toHtmlEscaped());
    curve.shown->setChecked(true);
    curve.shown->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    curve.value = new NumberLabel(widget());
    curve.value->setTextFormat(Qt::PlainText);
    curve.value->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_curves.append(curve);
    paintSwatch(curve);
    m_grid->addWidget(curve.swatch, row, 0);
    m_grid->addWidget(curve.shown, row, 1);
    m_grid->addWidget(curve.value, row, 2);
    connect(curve.shown, &QCheckBox::toggled, this, [this, row] { emit curveChanged(row); });
    connect(curve.swatch, &QToolButton::clicked, this, [this, row] {
        const QPointer<LogCurveList> self(this);
        const QColor chosen = CurveColors::choose(m_curves.at(row).swatch, CurveColors::ofCurve(row));
        if (self && chosen.isValid() && row < m_curves.size())
            setColor(row, chosen);
    });
}

void LogCurveList::setColor(int curve, const QColor &color)
{
    m_curves[curve].color = color;
    paintSwatch(m_curves.at(curve));
    emit curveChanged(curve);
}

void LogCurveList::paintSwatch(const Curve &curve)
{
    curve.swatch->setIcon(CurveColors::swatch(curve.color, palette().color(QPalette::Mid)));
}

bool LogCurveList::event(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        for (const Curve &curve : qAsConst(m_curves))
            paintSwatch(curve);
    return QScrollArea::event(event);
}

void LogCurveList::setValue(int curve, double value)
{
    m_curves.at(curve).value->setNumber(QString::number(value, 'g', QLocale::FloatingPointShortest));
}

bool LogCurveList::isShown(int curve) const
{
    return m_curves.at(curve).shown->isChecked();
}

QString LogCurveList::name(int curve) const
{
    return m_curves.at(curve).shown->accessibleName();
}
