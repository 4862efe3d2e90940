#include "iconfont.h"

#include "korvexresources.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>

namespace {

QString family()
{
    static const QString name = [] {
        initKorvexResources();
        const int id = QFontDatabase::addApplicationFont(QStringLiteral(":/resources/fonts/iconfont.ttf"));
        const QStringList families = QFontDatabase::applicationFontFamilies(id);
        return families.isEmpty() ? QString() : families.first();
    }();
    return name;
}

} // namespace

namespace IconFont {

QFont font(int pixelSize)
{
    QFont result(family());
    result.setPixelSize(pixelSize);
    result.setStyleStrategy(QFont::PreferAntialias);
    return result;
}

QPixmap pixmap(Glyph glyph, const QColor &color, int glyphSize, int side)
{
    const qreal ratio = qGuiApp->devicePixelRatio();
    QPixmap result(QSize(side, side) * ratio);
    result.setDevicePixelRatio(ratio);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font(glyphSize));
    painter.setPen(color);
    painter.drawText(QRect(0, 0, side, side), Qt::AlignCenter, QString(QChar(glyph)));
    return result;
}

QIcon icon(Glyph glyph, const QColor &color, int glyphSize, int side)
{
    QIcon result(pixmap(glyph, color, glyphSize, side));
    // The style's own way hardly dims a light icon on a dark ground.
    QColor dimmed = color;
    dimmed.setAlphaF(color.alphaF() * 0.4);
    result.addPixmap(pixmap(glyph, dimmed, glyphSize, side), QIcon::Disabled);
    return result;
}

} // namespace IconFont
