#!/bin/sh
# Draws the program icon: a square force plate seen at an angle with a load arrow pressing on
# it, in three colours, at 256 px, and scales it to the smaller sizes. The PNGs are committed;
# run this only to change the design. Needs ImageMagick's convert.
set -eu
out="$(dirname "$0")/../src/resources/icons"
mkdir -p "$out"

top='#3d7ab8'     # plate top
side='#1f3f5f'    # plate edges and outline
arrow='#f08a24'   # the load

png_opts='-strip -define png:exclude-chunks=date,time'

convert -size 256x256 xc:none \
    -stroke "$side" -strokewidth 4 \
    -fill "$side" -draw "polygon 18,166 128,218 238,166 238,186 128,238 18,186" \
    -fill "$top"  -draw "polygon 128,114 238,166 128,218 18,166" \
    -stroke none -fill "$side" -draw "ellipse 128,166 34,16 0,360" \
    -stroke "$side" -strokewidth 4 -fill "$arrow" \
    -draw "polygon 108,12 148,12 148,92 182,92 128,160 74,92 108,92" \
    $png_opts "$out/kxcpl-256.png"

for size in 48 32 16; do
    convert "$out/kxcpl-256.png" -filter Lanczos -resize ${size}x${size} \
        $png_opts "$out/kxcpl-$size.png"
done
