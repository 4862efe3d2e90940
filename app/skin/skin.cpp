#include "skin.h"

#include "settings.h"

#include <QApplication>
#include <QFile>

namespace {

// Until a known skin is chosen: no style sheet, colours that can be read on
// the platform's own light widgets.
SkinPalette &current()
{
    static SkinPalette palette{QString(),
                               QStringLiteral("#333333"),
                               QStringLiteral("#02a1dd"),
                               QStringLiteral("#f0f0f0"),
                               QStringLiteral("#cccccc"),
                               QStringLiteral("#000000"),
                               QStringLiteral("#ffffff"),
                               QStringLiteral("#e1e1e1"),
                               QColor(0x79, 0x79, 0x79)};
    return palette;
}

void choosePalette(int index)
{
    const auto text = [](const char *latin1) { return QString::fromLatin1(latin1); };
    switch (index) {
    case 0:
        current() = {text("default"), text("#f2f2f2"), text("#02a1dd"), text("#1e1e1e"), text("#454443"),
                     text("#AEBFC5"), text("#302f2f"), text("#323232"), QColor(0, 0, 0)};
        break;
    case 1:
        current() = {text("white"),   text("#333333"), text("#02a1dd"),
                     text("#f0f0f0"), text("#cccccc"), text("#000000"),
                     text("#ffffff"), text("#e1e1e1"), QColor(0x79, 0x79, 0x79)};
        break;
    case 2:
        current() = {text("yellow"),  text("#f2f2f2"), text("#feba3b"), text("#263240"), text("#212d3b"),
                     text("#AEBFC5"), text("#263240"), text("#323232"), QColor(0, 0, 0)};
        break;
    default:
        break;
    }
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
