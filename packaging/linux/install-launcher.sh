#!/bin/sh
# Puts the program into the desktop's menu of the current user, from where it
# lies now; to be run again when the folder was moved.
#   ./install-launcher.sh [remove]
set -eu
folder=$(cd "$(dirname "$0")" && pwd)
data=${XDG_DATA_HOME:-$HOME/.local/share}
entry=$data/applications/korvex.desktop
picture=$data/icons/hicolor/256x256/apps/korvex.png

if [ "${1:-}" = remove ]; then
  rm -f "$entry" "$picture"
  echo "已从菜单中移除。"
  exit 0
fi
case $folder in
  *[\\\"\`\$]* | *"
"*) echo "程序目录的名称含有菜单不支持的字符：$folder" >&2; exit 1 ;;
esac
if [ ! -x "$folder/Korvex" ]; then
  echo "程序不在此目录中：$folder" >&2
  exit 1
fi

mkdir -p "${entry%/*}" "${picture%/*}"
cp "$folder/korvex.png" "$picture"
{
  grep -v -e '^Exec=' -e '^Icon=' "$folder/korvex.desktop"
  printf 'Exec="%s/Korvex"\n' "$(printf %s "$folder" | sed 's/%/%%/g')"
  printf 'Icon=%s\n' "$picture"
} > "$entry.new"
mv "$entry.new" "$entry"
echo "已加入菜单：$entry"
