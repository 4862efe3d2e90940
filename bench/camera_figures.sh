#!/bin/bash
# The figures of the camera page. Needs a display (tools/with-display.sh gives
# one) and a quiet machine; takes about a minute and a half, less with the names
# of some figures: decoder chunks rgb565 jpeg flood.
#   camera_figures.sh build/release/bin [FIGURE ...]
set -eu
bin=$1
shift
[ $# -gt 0 ] || set -- decoder chunks rgb565 jpeg flood
folder=$(mktemp -d)
children=()
finish() {
  for child in "${children[@]}"; do kill "$child" 2>/dev/null || true; done
  rm -rf "$folder"
}
trap finish EXIT

load() { # title, options of cameraload, options of boardsim
  echo "## $1"
  "$bin/cameraload" $2 >"$folder/page" 2>/dev/null &
  local page=$!
  children+=("$page")
  until grep -q '^port' "$folder/page"; do sleep 0.1; done
  "$bin/boardsim" --mode tcp-client --net-port "$(sed -n 's/^port //p' "$folder/page")" --act camera \
    --width 640 --height 480 $3 >/dev/null 2>&1 &
  local board=$!
  children+=("$board")
  wait "$page" || true
  kill "$board" 2>/dev/null || true
  wait "$board" 2>/dev/null || true
  sed '/^port/d; s/^/    /' "$folder/page"
}

for figure in "$@"; do
  case $figure in
    decoder)
      echo "## decoding RGB565 beside memcpy of the same output"
      "$bin/camerabench" --benchmark_filter='copyPixels|decode' --benchmark_min_time=0.3 2>/dev/null
      ;;
    chunks)
      echo "## frames of 2 MB in chunks of 1, 64, 1460 and 65536 bytes"
      "$bin/camerabench" --benchmark_filter='assemble|scanJpeg' --benchmark_min_time=0.3 2>/dev/null
      ;;
    rgb565) load "640x480 RGB565 at 30 a second" "--frames 300" "--format 4 --fps 30 --frames 300 --test-pattern" ;;
    jpeg)
      "$bin/camerapicture" "$folder" 640 480
      load "640x480 JPEG at 30 a second" "--frames 300" "--format 1 --fps 30 --frames 300 --picture-folder $folder"
      ;;
    flood) load "640x480 RGB565 as fast as TCP takes it, 10 s" "--seconds 10" "--format 4 --fps 0" ;;
  esac
done
