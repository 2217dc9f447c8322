#!/usr/bin/env bash
# Converts the sample solution with the example host in Fortran. Its output must equal that of the
# command, and a damaged file, files of two cases and a missing file must end it.
#
#   fortran_host.sh P3DGRID HOST
set -euo pipefail
p3dgrid=$1
host=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

fail() {
  echo "$*" >&2
  exit 1
}

"$p3dgrid" sample --quiet case
cd case
"$host" grid.p3d flow.q out.q >said
printf '%s\n' 'reading grid.p3d' ' Number of grids is 3' 'reading flow.q' ' Number of grids is 3' \
  'points: 14225, free-stream Mach number: .200' 'writing out.q' \
  ' Writing flow variables for grid '{1,2,3} >expected
diff expected said
"$p3dgrid" restart --quiet grid.p3d flow.q expected.q --to-precision double --to-byte-order big
cmp expected.q out.q

# expect STATUS TEXT ARGUMENT...: it must end with that status and say so.
expect() {
  local status=0 expected=$1 text=$2
  shift 2
  "$host" "$@" >said 2>&1 || status=$?
  [ "$status" -eq "$expected" ] || fail "status $status instead of $expected: $*: $(cat said)"
  grep -q -- "$text" said || fail "$* says: $(cat said)"
}
head -c 5000 flow.q >short.q
expect 1 '^fortran_host: short.q: record 4, byte 5000: found ' grid.p3d short.q out.q
expect 0 '--- CODE HALTED ---' upper.p3d flow.q out.q
expect 2 'missing.q: No such file' grid.p3d missing.q out.q
expect 1 'usage: ' grid.p3d
