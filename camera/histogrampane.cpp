#include "histogrampane.h"

#include "imageviewer.h"
#include "skin.h"

#include <QPainter>

#include <cmath>

namespace {

constexpr int kLines = 6; // of text
constexpr int kTextWidth = 200;
constexpr int kMargin = 4;
constexpr int kGap = 8;

} // namespace

HistogramPane::HistogramPane(const ImageViewer *viewer, QWidget *parent)
    : QWidget(parent)
    , m_viewer(viewer)
{
    setObjectName(QStringLiteral("histogramPane"));
    setAccessibleName(QStringLiteral("直方图"));
    setToolTip(QStringLiteral("红、绿、蓝和亮度的分布，纵轴为像素数的平方根。"
                              "在图像上按住Shift拖动选择区域，双击图像或按Esc取消"));
    setAttribute(Qt::WA_OpaquePaintEvent); // what is below need not be painted at each picture
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(viewer, &ImageViewer::pictureChanged, this, [this](int device) {
        if (device == m_viewer->regionDevice())
            count();
    });
    connect(viewer, &ImageViewer::regionChanged, this, &HistogramPane::count);
}

QSize HistogramPane::sizeHint() const
{
    return {kTextWidth + 160, kLines * fontMetrics().height() + 2 * kMargin};
}

void HistogramPane::showEvent(QShowEvent *)
{
    count();
}

void HistogramPane::count()
{
    if (!isVisible())
        return;
    const QRect marked = m_viewer->region();
    const QImage picture = m_viewer->image(m_viewer->regionDevice()).toImage();
    m_isPart = !marked.isNull();
    m_region = m_isPart ? marked : picture.rect();
    m_histogram = {};
    if (!picture.isNull()) {
        const QImage words = picture.depth() == 32 ? picture : picture.convertToFormat(QImage::Format_RGB32);
        m_histogram =
            PictureHistogram::of(words.constScanLine(m_region.top()) + qsizetype(4) * m_region.left(),
                                 words.bytesPerLine(), m_region.width(), m_region.height());
    }
    update();
}

QStringList HistogramPane::texts() const
{
    if (m_histogram.pixels == 0)
        return {QStringLiteral("还没有图像")};
    const auto size = QStringLiteral("%1 × %2").arg(m_region.width()).arg(m_region.height());
    QString pixels = QStringLiteral("像素数: %1").arg(m_histogram.pixels);
    if (m_histogram.rowStep > 1)
        pixels += QStringLiteral("（每%1行取1行）").arg(m_histogram.rowStep);
    QStringList texts{
        m_isPart ? QStringLiteral("区域 x %1　y %2　%3").arg(m_region.x()).arg(m_region.y()).arg(size)
                 : QStringLiteral("整幅图像 ") + size,
        pixels};
    static const QString names[] = {QStringLiteral("R"), QStringLiteral("G"), QStringLiteral("B"),
                                    QStringLiteral("亮度")};
    for (int channel = 0; channel < PictureHistogram::channels; ++channel)
        texts.append(QStringLiteral("%1 平均: %2")
                         .arg(names[channel])
                         .arg(m_histogram.mean(PictureHistogram::Channel(channel)), 0, 'f', 1));
    return texts;
}

// Each stands out from the grounds of all skins.
QColor HistogramPane::colorOf(int channel)
{
    static constexpr QRgb kColors[] = {0xFFE5484D, 0xFF3C9A3C, 0xFF3D8BFF};
    return channel == PictureHistogram::Luma ? QColor(Skin::palette().text) : QColor(kColors[channel]);
}

void HistogramPane::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(Skin::palette().window));
    const QRect place = rect().adjusted(0, kMargin, -kMargin - kTextWidth - kGap, -kMargin);
    painter.setPen(QColor(Skin::palette().border));
    painter.drawRect(place);
    paintCurves(&painter, place.adjusted(1, 1, -1, -1));
    const int lineHeight = fontMetrics().height();
    QRect line(place.right() + kGap, kMargin, kTextWidth, lineHeight);
    const QStringList shown = texts();
    for (int k = 0; k < shown.size(); ++k, line.translate(0, lineHeight)) {
        QRect text = line;
        if (k >= 2) { // a channel
            painter.fillRect(line.left(), line.center().y() - 1, 10, 3, colorOf(k - 2));
            text.setLeft(line.left() + 16);
        }
        painter.setPen(QColor(Skin::palette().text));
        painter.drawText(text, Qt::AlignLeft | Qt::AlignVCenter, shown.at(k));
    }
}

// Square roots, so that a large even surface leaves something of the rest to be seen.
void HistogramPane::paintCurves(QPainter *painter, const QRect &place) const
{
    const double peak = std::sqrt(static_cast<double>(m_histogram.peak()));
    if (peak <= 0)
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing, false);
    for (int channel = PictureHistogram::channels - 1; channel >= 0; --channel) {
        const auto &bins = m_histogram.counts.at(static_cast<size_t>(channel));
        std::array<QPoint, PictureHistogram::values> points;
        for (size_t value = 0; value < bins.size(); ++value) {
            const double share = std::sqrt(static_cast<double>(bins.at(value))) / peak;
            points.at(value) = {place.left() + static_cast<int>(value) * (place.width() - 1) / 255,
                                place.bottom() - static_cast<int>(std::lround(share * (place.height() - 1)))};
        }
        painter->setPen(colorOf(channel));
        painter->drawPolyline(points.data(), static_cast<int>(points.size()));
    }
    painter->restore();
}
