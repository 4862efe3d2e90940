#!/bin/sh
# The figures of the PID page: five channels at 1,000 reports a second each
# through a pseudo-terminal into the real window, then the cost of a report with
# few and with many points held, and the parser beside memchr. Needs a display
# (tools/with-display.sh gives one) and a quiet machine.
#   pid_figures.sh build/release/bin [SECONDS]
set -eu
bin=$1
seconds=${2:-60}

ports=$(mktemp -d)
export KORVEX_VIRTUAL_PORTS="$ports"
"$bin/boardsim" --port COM3 --mode pid --report-rate 1000 --delay 0 >"$ports/events" 2>"$ports/statistics" &
board=$!
while [ ! -L "$ports/COM3" ]; do sleep 0.05; done
echo "## 5 channels, 1000 reports/s each, $seconds s"
"$bin/pidload" --port COM3 --seconds "$seconds" 2>/dev/null || true
kill "$board" 2>/dev/null || true
wait "$board" 2>/dev/null || true
sed 's/^/    board: /' "$ports/statistics"
rm -rf "$ports"

echo "## cost of a report (parse and feed the chart), and of the parser alone"
"$bin/pidbench" --benchmark_min_time=1 2>/dev/null
