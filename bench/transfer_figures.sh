#!/bin/sh
# The figures of sending a file of 1 MB by YModem, over lines of several speeds
# (0: one that takes no time): sb of lrzsz to rb (not at 0), sb to the simulated
# board, the serial page to the simulated board with a step every 10 ms and
# following answers at once, and sb to the serial page. Rates of sb are its own account,
# from its first answer to its last. Needs a display (tools/with-display.sh gives
# one) and a quiet machine; 115200 baud takes a minute and a half for each.
#   transfer_figures.sh build/release/bin [BAUD ...]
set -eu
bin=$(cd "$1" && pwd)
shift
[ $# -gt 0 ] || set -- 0 115200 921600
work=$(mktemp -d)
export KORVEX_VIRTUAL_PORTS="$work/ports"
pids=
end_all() {
  # shellcheck disable=SC2086
  [ -z "$pids" ] || kill $pids 2>/dev/null || true
  wait
  pids=
  rm -rf "$work/received"
}
trap 'end_all; rm -rf "$work"' EXIT
mkdir "$work/ports"
head -c 1000000 /dev/urandom >"$work/firmware.bin"

# A program in the background whose port is there when this returns.
start() { # link, command ...
  link=$work/ports/$1
  shift
  "$@" >>"$work/log" 2>&1 &
  pids="$pids $!"
  while [ ! -L "$link" ]; do sleep 0.05; done
}

relay() { start COM3 "$bin/serialrelay" --folder "$work/ports" --port COM3 --baud "$@"; }

board() {
  start COM4 "$bin/boardsim" --port COM4 --mode ymodem --ask-interval 200 --receive-folder "$work/received"
}

send_by_sb() { # seconds at most
  (cd "$work" && timeout "${1:-300}" sb -k firmware.bin) <"$work/ports/COM3" >"$work/ports/COM3" 2>"$work/sb.log"
}

compare() {
  if cmp -s "$work/firmware.bin" "$work/received/firmware.bin"; then echo equal; else echo DIFFERENT; fi
}

report_sb() { # title, baud rate
  rate=$(tr '\r' '\n' <"$work/sb.log" | sed -n 's/.*BPS: *\([0-9]*\).*/\1/p' | head -1)
  awk -v title="$1" -v rate="${rate:-0}" -v baud="$2" -v same="$(compare)" 'BEGIN {
    line = baud ? sprintf(", %.1f %% of the line", rate * 1000 / baud) : ""
    printf "    %s: %.2f s, %d bytes/s%s, file %s\n", title, rate ? 1e6 / rate : 0, rate, line, same
  }'
}

# rb forgets what has come while it writes its ACK, so that a sender at the end
# of a line that takes no time loses blocks to it. Its port must still be open
# when it ends, or its last ACK is lost as well.
sb_to_rb() { # baud rate
  relay "$1" --far-port COM4
  mkdir -p "$work/received"
  exec 3<>"$work/ports/COM4"
  # It may wait for an ACK that got lost when rb ended.
  send_by_sb $((20 + 12000000 / $1)) &
  sender=$!
  sleep 0.5
  (cd "$work/received" && timeout 300 rb -q) <&3 >&3 2>>"$work/log" || true
  wait "$sender" || true
  exec 3>&-
  report_sb "sb to rb" "$1"
  end_all
}

for baud in "$@"; do
  echo "## $baud baud"

  if [ "$baud" -gt 0 ]; then
    sb_to_rb "$baud"
  fi

  board
  relay "$baud" --far-device "$work/ports/COM4"
  send_by_sb || true
  report_sb "sb to boardsim" "$baud"
  end_all

  set_baud=$baud
  [ "$baud" -gt 0 ] || set_baud=921600
  page() { # options
    "$bin/transferload" --port COM3 --file "$work/firmware.bin" --baud "$set_baud" --line "$baud" "$@" \
      2>>"$work/log" | tail -1
  }
  for option in "" --quick; do
    board
    relay "$baud" --far-device "$work/ports/COM4"
    # shellcheck disable=SC2086
    result=$(page $option) || true
    echo "    serial page to boardsim ${option:-10 ms a step}: $result, file $(compare)"
    end_all
  done

  relay "$baud" --far-port COM4
  mkdir -p "$work/received"
  (cd "$work" && timeout 300 sb -q -k firmware.bin) <"$work/ports/COM4" >"$work/ports/COM4" 2>>"$work/log" &
  sender=$!
  result=$(page --receive "$work/received") || true
  wait "$sender" || true
  echo "    sb to serial page: $result, file $(compare)"
  end_all
done
