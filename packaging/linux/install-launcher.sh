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
cat > "$entry.new" <<END
[Desktop Entry]
Type=Application
Version=1.0
Name=Orvane多功能调试助手
GenericName=嵌入式调试工具
Comment=串口、摄像头、网络、PID调试与二进制文件编辑
Keywords=Korvex;serial;uart;tcp;udp;pid;hex;ymodem;串口;调试;
Exec="$(printf %s "$folder" | sed 's/%/%%/g')/Korvex"
Icon=$picture
Terminal=false
Categories=Development;Debugger;
StartupWMClass=Korvex
END
mv "$entry.new" "$entry"
echo "已加入菜单：$entry"
