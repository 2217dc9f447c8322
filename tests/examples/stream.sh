#!/usr/bin/env bash
# Streams the sample solution through the example host. What comes out must be the solution again,
# byte for byte, with its Tecplot file beside it and no temporary file left; a solution of another
# grid must be refused.
#
#   stream.sh P3DGRID STREAM
set -euo pipefail
p3dgrid=$1
stream=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

"$p3dgrid" sample --quiet case
cd case
before=$(ls)
"$stream" grid.p3d flow.q out.q flow.dat
cmp flow.q out.q
zones=$(grep -c '^ZONE T="ZONE-' flow.dat)
[ "$zones" -eq 3 ] || { echo "3 zones expected, $zones found" >&2; exit 1; }
points=$(grep -vc -e '^ZONE' -e VARIABLES flow.dat)
[ "$points" -eq 14225 ] || { echo "14225 points expected, $points found" >&2; exit 1; }
rm out.q flow.dat
[ "$(ls)" = "$before" ] || { echo "files are left behind:"; ls; exit 1; } >&2

"$stream" upper.p3d flow.q out.q flow.dat | grep -q -- '--- CODE HALTED ---'
[ ! -e out.q ] || { echo "a solution of another grid was streamed" >&2; exit 1; }
