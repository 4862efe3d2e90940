#!/bin/sh
# What a package for Windows gets beside its program: windowslibraries.sh SOURCE_ROOT WORK_FOLDER
# The program loads a library whose name has capitals, and that loads another.
set -eu
rm -rf "$2"
mkdir -p "$2/libs"
cd "$2"
compile=x86_64-w64-mingw32-g++-posix
echo '#include <string>
__declspec(dllexport) std::string deep() { return "deep"; }' >deep.cpp
echo '#include <string>
__declspec(dllimport) std::string deep();
__declspec(dllexport) std::string plot() { return deep(); }' >plot.cpp
echo '#include <string>
__declspec(dllimport) std::string plot();
int main() { return plot().empty(); }' >program.cpp
$compile -shared -o libs/libdeep.dll deep.cpp
$compile -shared -o libs/libQCustomPlot.dll plot.cpp libs/libdeep.dll
$compile -o program.exe program.cpp libs/libQCustomPlot.dll
stdcpp=$($compile -print-file-name=libstdc++-6.dll)
pthread=$($compile -print-file-name=libwinpthread-1.dll)

cat >script.cmake <<END
cmake_minimum_required(VERSION 3.21)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_PLATFORM windows+pe)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_TOOL objdump)
set(CMAKE_GET_RUNTIME_DEPENDENCIES_COMMAND x86_64-w64-mingw32-objdump)
include("$1/packaging/windows/copylibraries.cmake")
korvex_copy_libraries(EXECUTABLES "$2/program.exe"
  FOLDERS "$2/libs" "$(dirname "$stdcpp")" "$(dirname "$pthread")"
  STRIP x86_64-w64-mingw32-strip DESTINATION "$2/package")
END
cmake -P script.cmake
listed=$(ls package | LC_ALL=C sort | tr '\n' ' ')
echo "$listed"
[ "$listed" = "libQCustomPlot.dll libdeep.dll libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll " ]
[ "$(stat -c %s package/libstdc++-6.dll)" -lt 6000000 ]
