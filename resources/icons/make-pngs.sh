#!/bin/sh
# Renders every SVG of this folder to a PNG of its own size and one of twice that, into resources/.
# Needs rsvg-convert (package librsvg2-bin). Run it after changing a picture; the PNGs are checked in.
set -e
cd "$(dirname "$0")"
for picture in *.svg; do
    name=${picture%.svg}
    rsvg-convert --zoom 1 "$picture" -o "../$name.png"
    rsvg-convert --zoom 2 "$picture" -o "../$name@2x.png"
done
