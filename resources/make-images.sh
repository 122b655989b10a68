#!/bin/sh
# SPDX-License-Identifier: GPL-3.0-or-later
# Renders the PNG images and icons from their SVG sources. Needs rsvg-convert (Debian: librsvg2-bin).
set -eu
cd "$(dirname "$0")"

for svg in images/svg/*.svg; do
    name=$(basename "$svg" .svg)
    rsvg-convert --zoom 1 "$svg" -o "images/$name.png"
    rsvg-convert --zoom 2 "$svg" -o "images/$name@2x.png"
done

for size in 16 22 24 32 48 64 128 256 512; do
    folder=icons/hicolor/${size}x${size}/apps
    source=icons/hicolor/scalable/apps/brimwellpro.svg
    [ "$size" -gt 24 ] || source=icons/brimwellpro-small.svg
    mkdir -p "$folder"
    rsvg-convert -w "$size" -h "$size" "$source" -o "$folder/brimwellpro.png"
done
