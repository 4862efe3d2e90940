#!/bin/sh
# The figures of downloading a package of 200 MB from the loopback interface:
# the update dialog, and curl for the same file from the same server.
#   tools/with-display.sh bench/update_figures.sh build/release/bin
set -eu
bin=$(cd "$1" && pwd)
work=$(mktemp -d)
head -c 200000000 /dev/urandom >"$work/package"
"$bin/updateserver" --package "$work/package" --name package.tar >"$work/address" &
server=$!
trap 'kill $server; wait; rm -rf "$work"' EXIT
while [ ! -s "$work/address" ]; do sleep 0.05; done
KORVEX_UPDATE_SERVER=$(cat "$work/address")
export KORVEX_UPDATE_SERVER

for run in 1 2 3; do
  curl -s -o "$work/curl" -w 'curl: %{time_total} s, %{speed_download} bytes/s\n' "http://$KORVEX_UPDATE_SERVER/up/Korvex"
  printf 'dialog: '
  "$bin/updateload" "$work/root" 2>/dev/null
  cmp "$work/package" "$work/root/download/package.tar" && echo "the file is equal"
done
