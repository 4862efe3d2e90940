#!/bin/sh
# Opens the port in the program's own window with mouse and keyboard, for
# compare_terminals.py. The places are those of the window at its first size.
set -eu
at() { xdotool mousemove --window "$BENCH_WINDOW" "$1" "$2" click 1; sleep 0.1; }
sleep 2 # the first list of ports closes an open port
if [ "$BENCH_HEX" = 1 ]; then at 133 352; fi
at 90 116
xdotool key ctrl+a
xdotool type "$BENCH_PORT"
at 121 286
