#!/bin/sh
# Runs clang-tidy on the engines: tidy.sh BUILD_FOLDER LIST_OF_SOURCES
set -eu
[ -s "$2" ] || { echo "tidy.sh: no engine sources in $2" >&2; exit 1; }
xargs -P 2 -n 4 clang-tidy --quiet -p "$1" --extra-arg=-Wno-unknown-warning-option <"$2"
