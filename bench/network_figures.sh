#!/bin/bash
# The figures of the network page. Needs a display (tools/with-display.sh gives
# one) and a quiet machine; takes about three minutes, less with the names
# of some figures: peers text hexadecimal hidden sink deaf udp.
#   network_figures.sh build/release/bin [FIGURE ...]
set -eu
bin=$1
shift
[ $# -gt 0 ] || set -- peers sink text hexadecimal hidden deaf udp
page_program=networkload
folder=$(mktemp -d)
children=()
finish() {
  for child in "${children[@]}"; do kill "$child" 2>/dev/null || true; done
  rm -rf "$folder"
}
trap finish EXIT

# Starts the page; $port is then what it has opened.
page() { # options of networkload
  "$bin/$page_program" "$@" >"$folder/page" 2>/dev/null &
  page=$!
  children+=("$page")
  until grep -q '^port' "$folder/page"; do sleep 0.1; done
  port=$(sed -n 's/^port //p' "$folder/page")
}
board() { # name, options of boardsim
  local name=$1
  shift
  "$bin/boardsim" "$@" >"$folder/$name" 2>"$folder/$name.end" &
  children+=("$!")
  last=$!
}
ended() { # process, name: what the board counted
  kill "$1" 2>/dev/null || true
  wait "$1" || true
  sed "s/^/    $2: /" "$folder/$2.end"
}
results() {
  wait "$page" || true
  sed -n '/^port/!s/^/    /p' "$folder/page"
}

flood() { # title, options of networkload
  [ -z "$1" ] || echo "## one peer as fast as it can, for 10 s, $1"
  page $2
  board flood --mode tcp-client --net-port "$port" --act flood --encoding ascii --duration 10000
  results
  ended "$last" flood
}

for figure in "$@"; do
  case $figure in
    peers)
      echo "## 1000 peers, 100 bytes ten times a second each, for 20 s; 1 KB to all of them at both ends"
      page --peers 1000 --expect 20000000 --check --broadcast 1024
      board peers --mode tcp-client --net-port "$port" --act talk --peers 1000 --message-bytes 100 --period 100 \
        --total 20000 --encoding ascii --delay 3000
      results
      ended "$last" peers
      ;;
    sink)
      echo "## the same flood into one thread that only waits and reads"
      page_program=epollsink
      flood "" ""
      page_program=networkload
      ;;
    text) flood "text" "" ;;
    hexadecimal) flood "hexadecimal" "--hex" ;;
    hidden) flood "not shown" "--stop-show" ;;
    deaf)
      echo "## 100 KB to all every 20 ms for 20 s; one of three peers never reads"
      page --peers 3 --auto-send 20 --seconds 20
      board deaf --mode tcp-client --net-port "$port" --act deaf
      deaf=$last
      board hearing --mode tcp-client --net-port "$port" --act silent --peers 2
      results
      ended "$deaf" deaf
      ended "$last" hearing
      ;;
    udp)
      for rate in 20000 50000 100000; do
        echo "## 100000 datagrams of 64 bytes, $rate a second"
        page --udp --expect 6400000
        board udp --mode udp --act flood --to-port "$port" --message-bytes 64 --total 6400000 --rate "$rate" \
          --delay 1000
        # The kernel's count of what found no room; the port's line goes with it.
        drops=
        while kill -0 "$page" 2>/dev/null; do
          now=$(awk -v port="$(printf ':%04X' "$port")" 'index($2, port) { print $NF }' /proc/net/udp /proc/net/udp6)
          drops=${now:-$drops}
          sleep 0.1
        done
        results
        echo "    dropped by the system: $drops datagrams"
        ended "$last" udp
      done
      ;;
  esac
done
