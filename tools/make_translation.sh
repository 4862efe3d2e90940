#!/bin/sh
# Builds resources/qm/qt_zh_CN.qm, the one catalogue that turns Qt's own
# dialogs, menus, buttons and error texts Chinese. The qt_zh_CN.qm that comes
# with Qt is a list of references to other files, of no use when compiled in;
# this one holds the texts of qtbase and our additions themselves.
# Needs qttools5-dev-tools and qttranslations5-l10n.
set -eu

folder=$(cd "$(dirname "$0")/../resources/qm" && pwd)
translations=$(qmake -query QT_INSTALL_TRANSLATIONS)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

lrelease -silent -nounfinished "$folder/korvex_additions_zh_CN.ts" -qm "$work/additions.qm"
lconvert -target-language zh_CN -o "$folder/qt_zh_CN.qm" \
    -i "$translations/qtbase_zh_CN.qm" -i "$work/additions.qm"
