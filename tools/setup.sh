#!/bin/sh
# Installs what is missing for building and running the program (Debian 12), and
# with "test" also what its tests need. Uses apt-get, as root or through sudo.
#   tools/setup.sh [test]
set -eu

program="build-essential cmake ninja-build ccache pkg-config git ca-certificates
  qtbase5-dev qtbase5-dev-tools libqt5serialport5-dev libqcustomplot-dev zlib1g-dev
  fonts-noto-cjk"
# Without a screen the program runs on a virtual one.
display="xvfb xauth openbox"
tests="clang libclang-rt-dev clang-format clang-tidy python3 lrzsz socat zip
  g++-mingw-w64-x86-64-posix libz-mingw-w64-dev gcc-arm-none-eabi libnewlib-dev"

wanted="$program $display"
if [ "${1:-}" = test ]; then
  wanted="$wanted $tests"
fi

missing=
for package in $wanted; do
  case "$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)" in
    *" installed") ;;
    *) missing="$missing $package" ;;
  esac
done

if [ -n "$missing" ]; then
  run_as_root=
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "These packages need root or sudo:$missing" >&2; exit 1; }
    run_as_root=sudo
  fi
  echo "== These packages are missing and will be installed:$missing"
  echo "== with: ${run_as_root:+sudo }apt-get install --no-install-recommends; nothing else on this system changes."
  if [ -t 0 ]; then
    echo "== Ctrl+C within 5 seconds to stop."
    sleep 5
  fi
  $run_as_root apt-get update
  # shellcheck disable=SC2086
  $run_as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
else
  echo "== All packages that are needed are installed."
fi

at_least() { # at_least NAME HAVE WANTED
  if ! dpkg --compare-versions "$2" ge "$3"; then
    echo "$1 $3 or later is needed, this system has $2." >&2
    exit 1
  fi
}
at_least CMake "$(cmake --version | sed -n '1s/.* //p')" 3.21
at_least "Qt 5" "$(pkg-config --modversion Qt5SerialPort)" 5.15
at_least QCustomPlot "$(dpkg-query -W -f='${Version}' libqcustomplot-dev)" 2.1
