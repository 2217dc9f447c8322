#!/usr/bin/env bash
# Has the example host count the points of the sample grid, between grids that it cannot read: one
# cut short, and one of double precision. Each read must be judged by itself.
#
#   points.sh P3DGRID POINTS
set -euo pipefail
p3dgrid=$1
points=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

"$p3dgrid" sample --quiet case
cd case
"$p3dgrid" convert --quiet grid.p3d double.p3d --to-precision double
head -c 5000 grid.p3d >short.p3d

[ "$("$points" grid.p3d)" = "grid.p3d: 14225 points" ]
status=0
"$points" short.p3d grid.p3d double.p3d upper.p3d >said 2>why || status=$?
[ "$status" -eq 1 ] || { echo "status $status instead of 1" >&2; exit 1; }
grep -qx 'grid.p3d: 14225 points' said
grep -qx 'upper.p3d: [0-9]* points' said
[ "$(wc -l <said)" -eq 2 ] || { echo "two grids expected:"; cat said; exit 1; } >&2
grep -q '^mod_gridvars: short.p3d: .*found the end of the file' why
grep -q '^mod_gridvars: double.p3d: .*found a record of .* bytes, expected one of ' why
[ "$(wc -l <why)" -eq 2 ] || { echo "two failures expected:"; cat why; exit 1; } >&2
