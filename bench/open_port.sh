#!/bin/sh
# Opens the port, the only one there is, in the program's own window with mouse
# and keyboard, for compare_terminals.py. The places are those of the window at
# its first size.
set -eu
at() { xdotool mousemove --window "$BENCH_WINDOW" "$1" "$2" click 1; sleep 0.1; }
sleep 2 # the first list of ports closes an open port
if [ "$BENCH_HEX" = 1 ]; then at 155 269; fi
at 500 200 # the receive area
xdotool key F5
