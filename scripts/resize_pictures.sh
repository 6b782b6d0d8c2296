#!/bin/sh
# Makes the pictures of docs/resize.md: a satin column and a fill, each
# enlarged to 150 % and reduced to 70 %, re-stitched by the resize engine and
# plainly scaled, drawn flat by fennick's own renderer at one scale (the
# bitmap grows with the design). Needs a release build in build/release.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
bin=$root/build/release
out=$root/docs/resize
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$bin/fennick_make_large" "$work/column.dst" --piece column 60x200
"$bin/fennick_make_large" "$work/fill.dst" --piece fill 200x120
for piece in column fill; do
  for scale in 150 70; do
    size=$((scale * 5))
    "$bin/fennick" resize "$work/$piece.dst" "$work/$piece-$scale.dst" --scale "$scale" > /dev/null
    "$bin/fennick" resize "$work/$piece.dst" "$work/$piece-$scale-plain.dst" --scale "$scale" --plain > /dev/null
    "$bin/fennick" render "$work/$piece-$scale.dst" "$out/$piece-$scale.png" --size "$size" --flat > /dev/null
    "$bin/fennick" render "$work/$piece-$scale-plain.dst" "$out/$piece-$scale-plain.png" --size "$size" --flat > /dev/null
  done
  "$bin/fennick" render "$work/$piece.dst" "$out/$piece-100.png" --size 500 --flat > /dev/null
done
