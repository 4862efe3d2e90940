#!/bin/sh
# One load run: a board in a second process feeds the real window.
#   serial_load.sh BIN_FOLDER "boardsim options" "serialload options"
# Needs a display.
set -eu
bin=$1
ports=$(mktemp -d)
export KORVEX_VIRTUAL_PORTS="$ports"
# shellcheck disable=SC2086
"$bin/boardsim" --port COM3 $2 2>"$ports/boardsim.log" &
board=$!
while [ ! -L "$ports/COM3" ]; do sleep 0.05; done
# shellcheck disable=SC2086
"$bin/serialload" --port COM3 $3
kill "$board" 2>/dev/null || true
wait "$board" 2>/dev/null || true
sed 's/^/    board: /' "$ports/boardsim.log"
rm -rf "$ports"
