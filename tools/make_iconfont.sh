#!/bin/sh
# Builds resources/fonts/iconfont.ttf from the icon package, which npm fetches
# into a temporary folder. Needs npm and python3-fonttools.
set -eu

package=@mdi/svg@7.4.47
root=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cd "$work"
npm pack --silent "$package" >/dev/null
tar -xzf ./*.tgz
# The distribution's interpreter: fontTools comes as a package of it.
/usr/bin/python3 "$root/tools/make_iconfont.py" "$work/package" \
    "$root/resources/fonts/icons.txt" "$root/resources/fonts/iconfont.ttf"
tr -d "\r" <"$work/package/LICENSE" >"$root/resources/fonts/MDI-LICENSE.txt"
