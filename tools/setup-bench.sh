#!/bin/sh
# Installs what only the comparisons in bench/ need: the programs
# to compare with, and a display to run them on. Debian; run as root.
set -eu

apt-get update
DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    cutecom gtkterm okteta wxhexeditor xvfb openbox xdotool imagemagick libx11-6 python3 socat
