#!/bin/bash
# The figures of the binary editor at 16 MB, 256 MB and 1 GB, and those of
# Okteta and wxHexEditor with the same files (tools/setup-bench.sh installs them).
#   tools/with-display.sh bench/hex_figures.sh build/release/bin [MEGABYTES...]
set -eu
bin=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
shift
[ $# -gt 0 ] || set -- 16 256 1024
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for megabytes; do
  file="$work/dump$megabytes.bin"
  head -c "${megabytes}M" /dev/urandom | head -c -8 >"$file"
  printf 'pattern!' >>"$file"
  sync "$file" # or its way to the disk is measured as well
  # A virtual machine gets its memory when it is first touched; whoever came
  # first would pay for that.
  cp "$file" "$work/warm.bin"
  "$bin/hexload" "$work/warm.bin" >"$work/warm.log" 2>&1
  rm "$work/warm.bin"
  cp "$file" "$work/same.bin"
  "$bin/hexload" "$file" "$work/same.bin" 2>/dev/null
  cp "$work/same.bin" "$file"
  cmp "$file" "$work/same.bin" # into the cache
  echo "           cmp:"
  time -p cmp "$file" "$work/same.bin"
  rm "$work/same.bin"
  "$here/editor_figures.py" okteta "$file"
  "$here/editor_figures.py" wxHexEditor "$file"
  rm "$file"
done
