#include "fonts.h"

#include <QApplication>
#include <QFontDatabase>

namespace {

// The first of the families that is installed; empty when none is.
QString firstInstalled(std::initializer_list<const char *> candidates, const QStringList &installed)
{
    for (const char *candidate : candidates) {
        const QString family = QString::fromUtf8(candidate);
        if (installed.contains(family, Qt::CaseInsensitive))
            return family;
    }
    return {};
}

} // namespace

namespace Fonts {

QString uiFamily()
{
    static const QString family = [] {
        const QFontDatabase fonts;
        const QStringList installed = fonts.families();
        // A Chinese Windows lists its fonts under their Chinese names only.
        const QString known =
            firstInstalled({"Microsoft YaHei", "微软雅黑", "Noto Sans CJK SC", "Source Han Sans SC",
                            "PingFang SC", "WenQuanYi Micro Hei", "WenQuanYi Zen Hei", "SimHei", "黑体"},
                           installed);
        if (!known.isEmpty())
            return known;
        const QStringList chinese = fonts.families(QFontDatabase::SimplifiedChinese);
        return chinese.isEmpty() ? QStringLiteral("Microsoft YaHei") : chinese.first();
    }();
    return family;
}

QFont monospace()
{
    static const QString family =
        firstInstalled({"Cascadia Mono", "Consolas", "Noto Sans Mono CJK SC"}, QFontDatabase().families());
    QFont font = family.isEmpty() ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : QFont(family);
    font.setPointSize(QApplication::font().pointSize());
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
    return font;
}

} // namespace Fonts
