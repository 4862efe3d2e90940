#include "skin.h"

#include "settings.h"
#include "skincolors.h"

#include <QApplication>
#include <QFile>

#include <iterator>

namespace {

SkinPalette paletteOf(const SkinColors &colors)
{
    const auto text = [](const char *latin1) { return QString::fromLatin1(latin1); };
    return {text(colors.name),   text(colors.text),   text(colors.accent),
            text(colors.window), text(colors.border), text(colors.secondaryText),
            text(colors.panel),  text(colors.header), QColor(text(colors.outline))};
}

// Until a known skin is chosen: no style sheet, and the light skin's colors,
// which can be read on the platform's own light widgets.
SkinPalette unstyledPalette()
{
    SkinPalette palette = paletteOf(skinColors[1]);
    palette.name.clear();
    return palette;
}

SkinPalette &current()
{
    static SkinPalette palette = unstyledPalette();
    return palette;
}

void choosePalette(int index)
{
    if (index >= 0 && index < int(std::size(skinColors)))
        current() = paletteOf(skinColors[index]);
}

void colorAreas()
{
    Settings &settings = Settings::instance();
    if (settings.recvFollowsSkin) {
        settings.recvBackground.setForThisRun(QColor(current().panel));
        settings.recvTextColor.setForThisRun(QColor(current().text));
    }
    if (settings.sendFollowsSkin) {
        settings.sendBackground.setForThisRun(QColor(current().panel));
        settings.sendTextColor.setForThisRun(QColor(current().text));
    }
}

} // namespace

namespace Skin {

const SkinPalette &palette()
{
    return current();
}

QString styleSheet()
{
    QFile file(QStringLiteral(":/resources/css/%1.css").arg(current().name));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const Settings &settings = Settings::instance();
    QString sheet = QStringLiteral("QtTerminalWidget#recvBrowser {background-color: %1; color:%2; } "
                                   "QtTextEditInput#textEditSend {background-color:%3; color:%4; }")
                        .arg(settings.recvBackground->name(), settings.recvTextColor->name(),
                             settings.sendBackground->name(), settings.sendTextColor->name());
    // The files are stored as GB18030 and hold ASCII only (other characters as
    // CSS escapes), so that reading them as UTF-8 gives the same text.
    sheet += QString::fromUtf8(file.readAll());
    sheet += QStringLiteral("QWidget#widgetSingleSend {background-color:%1; }")
                 .arg(settings.sendBackground->name());
    return sheet;
}

void apply(int index)
{
    choosePalette(index);
    colorAreas();
    Settings::instance().skin.set(index);
    const QString sheet = styleSheet();
    if (sheet.isEmpty() || sheet == qApp->styleSheet())
        return;
    // Exchanged for another sheet, Qt 5.15 polishes each widget once for itself
    // and once for each widget that it lies in. Removed and set, once.
    qApp->setStyleSheet(QString());
    qApp->setStyleSheet(sheet);
}

} // namespace Skin
