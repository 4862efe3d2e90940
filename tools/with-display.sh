#!/bin/bash
# Runs a command on an X display of its own, with a window manager:
#   tools/with-display.sh COMMAND [ARGUMENTS]
# Both end with the command, whose exit code is handed on.
set -euo pipefail

folder=$(mktemp -d)
children=()
finish() {
  for ((i = ${#children[@]} - 1; i >= 0; i--)); do
    kill "${children[i]}" 2>/dev/null || true
    wait "${children[i]}" 2>/dev/null || true
  done
  rm -rf "$folder"
}
trap finish EXIT
trap 'exit 143' TERM
trap 'exit 130' INT

# Each writes a line into the pipe as soon as it is ready.
mkfifo "$folder/ready"
exec 9<>"$folder/ready"
wait_for() {
  if ! read -r -t 30 answer <&9; then
    echo "with-display.sh: $1 did not start:" >&2
    cat "$folder"/*.log >&2
    exit 1
  fi
}

Xvfb -displayfd 9 -screen 0 1280x800x24 -dpi 96 -nolisten tcp >"$folder/xvfb.log" 2>&1 &
children+=($!)
wait_for Xvfb
export DISPLAY=":$answer"
unset WAYLAND_DISPLAY QT_QPA_PLATFORM QT_SCALE_FACTOR QT_IM_MODULE

openbox --sm-disable --startup "sh -c 'echo ready >$folder/ready'" >"$folder/openbox.log" 2>&1 9>&- &
children+=($!)
wait_for openbox

"$@" 9>&-
