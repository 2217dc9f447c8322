#!/usr/bin/env bash
# Has the example host convert the sample solution, looks at the values that it has written, and at
# what it says and leaves behind when something is wrong.
#
#   host.sh P3DGRID HOST
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
grep -qx 'reading grid' said
grep -qx 'writing out' said
python3 - flow.q out.q <<'END'
"""Record by record: the first two hold integers, the others singles in one file and doubles in the
other, which is big-endian."""
import struct
import sys

def records(name, order):
    content = open(name, "rb").read()
    while content:
        length, = struct.unpack_from(order + "i", content)
        yield content[4:4 + length]
        assert content[4 + length:8 + length] == content[:4], "markers differ"
        content = content[8 + length:]

ours, written = list(records(sys.argv[1], "=")), list(records(sys.argv[2], ">"))
assert len(ours) == len(written) == 2 + 2 * 3
for n, (before, after) in enumerate(zip(ours, written)):
    kinds = "ii" if n < 2 else "fd"
    values = struct.unpack(f"={len(before) // 4}{kinds[0]}", before)
    assert after == struct.pack(f">{len(values)}{kinds[1]}", *values), f"record {n + 1} differs"
END

# expect STATUS TEXT ARGUMENT...: it must fail, say so on one line, and leave OUT as it was.
expect() {
  local status=0 expected=$1 text=$2
  shift 2
  echo old >kept
  "$host" "$@" >/dev/null 2>said || status=$?
  [ "$status" -eq "$expected" ] || fail "status $status instead of $expected: $*: $(cat said)"
  [ "$(wc -l <said)" -eq 1 ] && grep -q "^host: .*$text" said || fail "$* says: $(cat said)"
  [ "$(cat kept)" = old ] && [ ! -e kept.unfinished ] || fail "$* leaves something behind"
}
head -c 5000 flow.q >short.q
expect 1 'short.q: record 4, byte 5000: found .*, expected ' grid.p3d short.q kept
expect 1 'do not belong together' upper.p3d flow.q kept
expect 2 'missing.q: No such file' grid.p3d missing.q kept
expect 2 'No such file' grid.p3d flow.q nowhere/kept
mkdir folder
expect 2 'cannot write folder' grid.p3d flow.q folder
rmdir folder
# A disk that is full after some kilobytes.
(trap '' XFSZ && ulimit -f 10 && expect 2 'kept.unfinished: File too large' grid.p3d flow.q kept)
