#!/bin/sh
# Builds for Windows what needs no Qt: windows.sh SOURCE_ROOT BUILD_FOLDER
# The unpacker must need nothing but libraries of the system.
set -eu
cmake -S "$1" -B "$2" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$1/cmake/toolchains/mingw-w64.cmake" \
  -DCMAKE_BUILD_TYPE=Release -DKORVEX_WITHOUT_QT=ON -DKORVEX_WERROR=ON
cmake --build "$2"
libraries=$(x86_64-w64-mingw32-objdump -p "$2/bin/unzip.exe" | sed -n 's/.*DLL Name: //p' | sort | tr '\n' ' ')
echo "unzip.exe needs: $libraries"
[ "$libraries" = "COMCTL32.dll GDI32.dll KERNEL32.dll SHELL32.dll USER32.dll msvcrt.dll " ]
