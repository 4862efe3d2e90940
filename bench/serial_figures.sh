#!/bin/sh
# The figures of the serial page, one line each: 20 MB at several rates in
# bursts with pauses of 12 ms, text with time stamps and hexadecimal, then
# 20 MB without a pause. Needs a display (tools/with-display.sh gives one) and
# a quiet machine; the slowest rate takes half an hour for each mode.
#   serial_figures.sh build/release/bin [BYTES_PER_SECOND ...]
set -eu
here=$(dirname "$0")
bin=$1
shift
[ $# -gt 0 ] || set -- 1000000 300000 92000 11500
total=20000000

run() { # title, options of the board, options of the page
  echo "## $1"
  "$here/serial_load.sh" "$bin" "--total $total --delay 500 $2" "--total $total $3" 2>/dev/null |
    grep -E 'received|board:'
}

# What a reader that does nothing else leaves of the writer's time.
ports=$(mktemp -d)
"$bin/boardsim" --folder "$ports" --port COM3 --mode burst --bytes-per-second 1000000 --total $total \
  >"$ports/log" 2>&1 &
board=$!
while [ ! -L "$ports/COM3" ]; do sleep 0.05; done
socat -u "$ports/COM3,rawer" /dev/null &
sink=$!
while ! grep -q finished "$ports/log"; do sleep 0.5; done
kill "$sink" "$board"
wait "$board" || true
echo "## plain sink (socat), 1000000 bytes/s"
sed -n 's/^written/    board: written/p' "$ports/log"
rm -rf "$ports"

for rate in "$@"; do
  run "$rate bytes/s, text with time stamps" "--mode burst --bytes-per-second $rate" "--stamp"
  run "$rate bytes/s, hexadecimal" "--mode burst --bytes-per-second $rate --encoding binary" \
    "--hex --encoding binary"
done
run "without a pause, text with time stamps" "--mode flood" "--stamp"
run "without a pause, hexadecimal" "--mode flood --encoding binary" "--hex --encoding binary"
