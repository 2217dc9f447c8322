#!/usr/bin/env bash
# Has the example describe and convert the sample case, and gives it damaged, missing and ambiguous
# files and files of the wrong kind. Each failure must be noticed and leave nothing behind.
#
#   grids.sh P3DGRID GRIDS
set -euo pipefail
p3dgrid=$1
grids=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

fail() {
  echo "$*" >&2
  exit 1
}

"$p3dgrid" sample --quiet case
cd case
"$p3dgrid" convert --quiet grid.p3d double.bin --to-precision double --to-format binary \
  --to-byte-order big
for grid in grid.p3d grid.txt grid-iblank.p3d double.bin; do
  "$grids" $grid flow.q out.txt >said
  grep -q "^$grid: 14225 points, " said || fail "$grid: $(cat said)"
  grep -qx 'flow.q: layout 2, unformatted, .*' said || fail "$grid: $(cat said)"
  [ "$(grep -c '^  x from ' said)" -eq 3 ] || fail "$grid: $(cat said)"
  [ "$(grep -c '^  variable from ' said)" -eq 15 ] || fail "$grid: $(cat said)"
  "$p3dgrid" check --quiet out.txt flow.q
  rm out.txt
done
"$grids" upper.p3d upper-102.rst out.txt >said  # its extents are in the grid alone
grep -qx 'upper-102.rst: layout 102, .*' said || fail "$(cat said)"

# expect TEXT GRID SOLUTION OUT: the status is 1, standard error has one line with TEXT, and OUT is
# as it was.
expect() {
  local status=0 text=$1
  shift
  echo old >kept
  "$grids" "$@" >said 2>why || status=$?
  [ "$status" -eq 1 ] || fail "status $status instead of 1: $*: $(cat why)"
  [ "$(wc -l <why)" -eq 1 ] && grep -q "^grids: .*$text" why || fail "$* says: $(cat why)"
  [ "$(cat kept)" = old ] || fail "$* overwrites its output"
}
head -c 5000 grid.p3d >short.p3d
head -c 5000 flow.q >short.q
head -c 5000 grid.txt >short.txt
printf '\1\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0' >two.bin
head -c 24 /dev/zero >>two.bin
echo 'neither numbers nor a header' >words
: >empty
expect 'short.p3d: ' short.p3d flow.q kept
expect 'short.q: ' grid.p3d short.q kept
expect 'short.txt: ' short.txt flow.q kept
expect 'missing.p3d: No such file or directory$' missing.p3d flow.q kept
expect 'missing.q: No such file or directory$' grid.p3d missing.q kept
expect 'two.bin: matches several forms: grid, binary, .*; grid, binary, ' two.bin flow.q kept
expect 'flow.q: is a restart (flow-solution) file, not a grid: layout 2' flow.q flow.q kept
expect 'grid.p3d: is a grid, not a restart (flow-solution) file: ' grid.p3d grid.p3d kept
expect 'flow.q: does not belong to its grid: ' upper.p3d flow.q kept
expect 'words: ' words flow.q kept
expect 'empty: is empty$' empty flow.q kept
expect 'nowhere/out: .*No such file or directory$' grid.p3d flow.q nowhere/out
# A disk that is full after some kilobytes.
status=0
(trap '' XFSZ && ulimit -f 10 && exec "$grids" grid.p3d flow.q full.txt) >said 2>why || status=$?
[ "$status" -eq 1 ] && grep -qx 'grids: full.txt: .*File too large' why ||
  fail "status $status on a full disk: $(cat why)"
