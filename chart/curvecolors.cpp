#include "curvecolors.h"

#include "contrast.h"

#include <QMenu>
#include <QPainter>
#include <QPointer>

#include <cmath>

namespace {

// Each stands out from light and from dark backgrounds.
const struct
{
    const char *color;
    const char *name;
} kOffered[] = {
    {"#e5484d", "红色"}, {"#e07b00", "橙色"}, {"#a38a00", "黄色"}, {"#3c9a3c", "绿色"},
    {"#0a9a9a", "青色"}, {"#3d8bff", "蓝色"}, {"#a066ff", "紫色"}, {"#8a8a8a", "灰色"},
};

// Both have a contrast of 3 to 1 to each ground of the skins.
constexpr double kLuminances[] = {0.27, 0.205};
constexpr double kGoldenAngle = 137.508; // degrees; neighbors are far apart
constexpr double kFirstHue = 210;
constexpr double kSaturations[] = {0.85, 0.85, 0.5};

// Of a hue, by its luminance, which grows with the lightness.
QColor colorOf(double hue, double saturation, double luminance)
{
    double dark = 0;
    double light = 1;
    for (int i = 0; i < 12; ++i) {
        const double middle = (dark + light) / 2;
        const bool isTooDark = Contrast::luminance(QColor::fromHslF(hue, saturation, middle)) < luminance;
        (isTooDark ? dark : light) = middle;
    }
    return QColor::fromHslF(hue, saturation, light);
}

} // namespace

QColor CurveColors::ofCurve(int index)
{
    const double hue = std::fmod(kFirstHue + index * kGoldenAngle, 360) / 360;
    return colorOf(hue, kSaturations[index % 3], kLuminances[index % 2]);
}

QIcon CurveColors::swatch(const QColor &color, const QColor &outline)
{
    QPixmap pixmap(14, 14);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(outline);
    painter.setBrush(color);
    painter.drawRect(0, 3, 13, 7);
    return QIcon(pixmap);
}

QColor CurveColors::choose(QWidget *swatch, const QColor &own)
{
    const QPointer<QMenu> menu(new QMenu(swatch->parentWidget())); // the window may be closed meanwhile
    const QColor outline = swatch->palette().color(QPalette::Mid);
    const auto offer = [&](const QColor &color, const QString &name) {
        menu->addAction(CurveColors::swatch(color, outline), name)->setData(color);
    };
    offer(own, QStringLiteral("默认颜色"));
    menu->addSeparator();
    for (const auto &entry : kOffered)
        offer(QColor(QLatin1String(entry.color)), QString::fromUtf8(entry.name));
    const QAction *chosen = menu->exec(swatch->mapToGlobal(QPoint(0, 0)));
    const QColor color = menu && chosen ? chosen->data().value<QColor>() : QColor();
    delete menu;
    return color;
}
