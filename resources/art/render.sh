#!/bin/sh
# Renders every image of the console from its drawing: first what draw.py draws, then the SVG files that
# lie here in folders named after the collections; last writes the form of the vacuum panel, which shares
# its layout with its pictures. Needs python3 and rsvg-convert.
set -eu
art=$(cd "$(dirname "$0")" && pwd)
resources=$(dirname "$art")
drawn=$(mktemp -d)
trap 'rm -rf "$drawn"' EXIT

render() { # FOLDER: each FOLDER/x.svg becomes resources/x.png in the size the drawing states
    (cd "$1" && find . -name '*.svg') | sort | while read -r source; do
        target=$resources/${source%.svg}.png
        mkdir -p "$(dirname "$target")"
        rsvg-convert "$1/$source" -o "$target"
    done
}

python3 "$art/draw.py" "$drawn"
render "$drawn"
render "$art"

# The console's sign in the sizes that desktops ask for.
icons=$(dirname "$resources")/packaging/icons/hicolor
for size in 16 22 24 32 48 64 128 256; do
    mkdir -p "$icons/${size}x$size/apps"
    rsvg-convert -w $size -h $size "$drawn/po/mirta.svg" -o "$icons/${size}x$size/apps/mirta.png"
done
install -D -m 644 "$drawn/po/mirta.svg" "$icons/scalable/apps/mirta.svg"

python3 "$art/vacuum_form.py" "$(dirname "$resources")/forms/kvs.ui"
