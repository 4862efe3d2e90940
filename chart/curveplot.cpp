#include "curveplot.h"

#include "safefile.h"

#include <QBuffer>
#include <QPageSize>
#include <QPdfWriter>
#include <QScopedValueRollback>

namespace {

constexpr int kFrameMs = 33;
constexpr int kShare = 4;       // pictures take a quarter of the time at most
constexpr int kNamesInARow = 5; // of a picture's legend

// The palette entries of the skins: panel, secondary text, border, and a shade
// between border and panel.
struct Style
{
    const char *name;
    const char *ground;
    const char *text;
    const char *axis;
    const char *grid;
    const char *subGrid;
};

constexpr Style kStyles[] = {
    {"black", "#302f2f", "#AEBFC5", "#AEBFC5", "#5a5958", "#454443"},
    {"white", "#ffffff", "#000000", "#797979", "#cccccc", "#e9e9e9"},
    {"yellow", "#263240", "#AEBFC5", "#AEBFC5", "#4d6075", "#34465a"},
};

QColor color(const char *name)
{
    return QColor(QLatin1String(name));
}

} // namespace

CurvePlot::CurvePlot(QWidget *parent)
    : QCustomPlot(parent)
    , m_cursor(new QCPItemStraightLine(this))
    , m_hint(new QCPItemText(this))
    , m_frame(this)
{
    setMinimumSize(200, 120); // the legend of a saved picture would ask for more
    setUpAxes();
    m_cursor->setVisible(false);
    m_hint->position->setType(QCPItemPosition::ptAxisRectRatio);
    m_hint->position->setCoords(0.5, 0.4);
    m_hint->setPadding({8, 4, 8, 4});
    m_frame.setSingleShot(true);
    m_frame.setTimerType(Qt::PreciseTimer);
    connect(&m_frame, &QTimer::timeout, this, &CurvePlot::drawNew);
    connect(this, &QCustomPlot::mouseDoubleClick, this, &CurvePlot::returnToLive);
    connect(this, &QCustomPlot::afterReplot, this, [this] { ++m_pictures; });
}

void CurvePlot::setUpAxes()
{
    setInteractions(QCP::iRangeDrag | QCP::iRangeZoom);
    axisRect()->setRangeZoom(Qt::Horizontal);
    setNoAntialiasingOnDrag(true);
    for (QCPAxis *axis : {xAxis, yAxis})
        axis->grid()->setSubGridVisible(true);
    connect(xAxis, QOverload<const QCPRange &, const QCPRange &>::of(&QCPAxis::rangeChanged), this,
            [this](const QCPRange &range, const QCPRange &before) {
                if (!m_isFitting)
                    handleKeyRange(range, before);
            });
    connect(yAxis, QOverload<const QCPRange &>::of(&QCPAxis::rangeChanged), this, [this] {
        if (!m_isFitting && m_follow == Live)
            setFollow(ValueFixed);
    });
}

void CurvePlot::setPlotStyle(const QString &style)
{
    for (const Style &known : kStyles) {
        if (style != QLatin1String(known.name))
            continue;
        m_ground = color(known.ground);
        setBackground(m_ground);
        for (HaloGraph *graph : qAsConst(m_graphs))
            graph->setGround(m_ground);
        const QPen pen(color(known.axis));
        const QList<QCPAxis *> axes = axisRect()->axes();
        for (QCPAxis *axis : axes) {
            axis->setBasePen(pen);
            axis->setTickPen(pen);
            axis->setSubTickPen(pen);
            axis->setTickLabelColor(color(known.text));
            axis->setLabelColor(color(known.text));
            axis->grid()->setPen(QPen(color(known.grid)));
            axis->grid()->setZeroLinePen(QPen(color(known.axis)));
            axis->grid()->setSubGridPen(QPen(color(known.subGrid), 1, Qt::DotLine));
        }
        xAxis->grid()->setZeroLinePen(Qt::NoPen);
        m_hint->setColor(color(known.text));
        m_hint->setBrush(color(known.ground));
        m_cursor->setPen(QPen(color(known.text), 1, Qt::DashLine));
        legend->setBrush(Qt::NoBrush);
        legend->setBorderPen(Qt::NoPen);
        legend->setTextColor(color(known.text));
    }
    replot(rpQueuedReplot);
}

HaloGraph *CurvePlot::addCurve()
{
    auto *graph = new HaloGraph(xAxis, yAxis); // the plot's
    graph->setGround(m_ground);
    m_graphs.append(graph);
    return graph;
}

void CurvePlot::removeCurve(int graph)
{
    m_graphs.removeAt(graph);
    removeGraph(graph);
}

void CurvePlot::clearCurves()
{
    clearGraphs();
    m_graphs.clear();
}

void CurvePlot::setHint(const QString &text)
{
    m_hint->setText(text);
    if (m_hint->visible())
        replot(rpQueuedReplot);
}

void CurvePlot::setCurve(int graph, const QColor &color, bool shown, const QString &name)
{
    // Exactly one pixel of the device: a wider polyline takes a thousand times
    // longer where noise fills the height (seconds a picture).
    this->graph(graph)->setPen(QPen(color, 0));
    this->graph(graph)->setVisible(shown);
    this->graph(graph)->setName(name);
    replot(rpQueuedReplot);
}

// ---- following

void CurvePlot::handleKeyRange(const QCPRange &range, const QCPRange &before)
{
    Q_UNUSED(range)
    Q_UNUSED(before)
    setFollow(Held);
}

void CurvePlot::setRanges(const QCPRange &keys, const QCPRange &values)
{
    const QScopedValueRollback<bool> fitting(m_isFitting, true);
    xAxis->setRange(keys);
    yAxis->setRange(values);
}

void CurvePlot::setFollow(Follow follow)
{
    if (m_follow == follow)
        return;
    prepareFollow(follow);
    m_follow = follow;
    emit followChanged(follow);
}

void CurvePlot::returnToLive()
{
    setFollow(Live);
    requestPicture();
}

// Points arrive much faster than the eye can follow.
void CurvePlot::requestPicture()
{
    if (m_frame.isActive())
        return;
    const qint64 period = qMax<qint64>(kFrameMs, kShare * m_pictureMs);
    const qint64 since = m_sinceDrawn.isValid() ? m_sinceDrawn.elapsed() : period;
    m_frame.start(static_cast<int>(qMax<qint64>(0, period - since)));
}

void CurvePlot::drawNew()
{
    m_sinceDrawn.start();
    if (m_follow != Held) {
        addNewPoints();
        {
            const QScopedValueRollback<bool> fitting(m_isFitting, true);
            fitAxes();
        }
        for (int i = 0; i < graphCount(); ++i)
            graph(i)->setAntialiased(graph(i)->dataCount() < m_maxSmooth);
        replot();
    }
    m_pictureMs = m_sinceDrawn.elapsed();
    emit drawn();
}

// ---- reading out

QString CurvePlot::readOutTable(const QString &title, const QVector<ReadOutRow> &rows)
{
    QString text;
    for (const ReadOutRow &row : rows)
        text += QStringLiteral("<tr><td style=\"color:%1\">■&nbsp;</td><td>%2&nbsp;&nbsp;</td>"
                               "<td align=\"right\">%3</td></tr>")
                    .arg(row.color.name(), row.name, row.value);
    if (text.isEmpty())
        return {};
    return QStringLiteral("<table><tr><td colspan=\"3\">%1</td></tr>%2</table>").arg(title, text);
}

void CurvePlot::setCursorAt(double key)
{
    m_cursor->point1->setCoords(key, 0);
    m_cursor->point2->setCoords(key, 1);
    m_cursor->setVisible(true);
    replot(rpQueuedReplot);
}

void CurvePlot::hideCursor()
{
    if (!m_cursor->visible())
        return;
    m_cursor->setVisible(false);
    replot(rpQueuedReplot);
}

void CurvePlot::leaveEvent(QEvent *event)
{
    hideCursor();
    QCustomPlot::leaveEvent(event);
}

// Where a pixel of the screen is a fraction of ours, QCustomPlot leaves the last
// row and column unpainted, although it declares itself opaque.
void CurvePlot::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(rect().adjusted(-1, -1, 1, 1), m_ground);
    QCustomPlot::paintEvent(event);
}

// ---- pictures

bool CurvePlot::writePicture(QIODevice *device, Format format)
{
    hideCursor();
    // A legend in a row of its own, where it hides nothing, for this picture only.
    auto *row = new QCPLayoutGrid;
    plotLayout()->addElement(1, 0, row);
    plotLayout()->setRowStretchFactor(1, 0.001);
    auto *names = new QCPLegend;
    row->addElement(0, 0, names);
    names->setLayer(legend->layer());
    names->setFillOrder(QCPLayoutGrid::foColumnsFirst);
    names->setWrap(kNamesInARow);
    names->setBrush(Qt::NoBrush);
    names->setBorderPen(Qt::NoPen);
    names->setTextColor(legend->textColor());
    names->setFont(font());
    for (int i = 0; i < graphCount(); ++i)
        if (graph(i)->visible())
            names->addItem(new QCPPlottableLegendItem(names, graph(i)));

    const bool written =
        format == Pdf ? writePdf(device) : toPixmap(width(), height(), 2.0).save(device, "PNG");

    plotLayout()->remove(row);
    plotLayout()->simplify();
    replot(rpQueuedReplot);
    return written;
}

bool CurvePlot::savePicture(const QString &fileName, QString *error)
{
    const bool pdf = fileName.endsWith(QLatin1String(".pdf"), Qt::CaseInsensitive);
    QBuffer picture;
    if (picture.open(QIODevice::WriteOnly) && writePicture(&picture, pdf ? Pdf : Png))
        return SafeFile::write(fileName, picture.data(), error);
    *error = QStringLiteral("无法生成图片");
    return false;
}

bool CurvePlot::writePdf(QIODevice *device)
{
    constexpr int dotsPerInch = 96;
    QPdfWriter writer(device);
    writer.setResolution(dotsPerInch);
    writer.setPageSize(QPageSize(QSizeF(size()) / dotsPerInch, QPageSize::Inch));
    writer.setPageMargins({0, 0, 0, 0});
    QCPPainter painter;
    if (!painter.begin(&writer))
        return false;
    painter.setMode(QCPPainter::pmVectorized);
    toPainter(&painter, width(), height());
    return painter.end();
}
