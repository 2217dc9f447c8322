#!/usr/bin/env bash
# The MPI examples, in C++ and in Python, on grids of several forms: their bounds are those that the
# command prints, whatever the number of ranks.
#
#   bounds.sh P3DGRID BOUNDS MPIEXEC PYTHON
set -euo pipefail
p3dgrid=$1
bounds=$2
mpiexec=$3
python=$4
script=$(realpath "$(dirname "$0")/../../examples/mpi/bounds.py")
export OMPI_ALLOW_RUN_AS_ROOT=1 OMPI_ALLOW_RUN_AS_ROOT_CONFIRM=1
export OMPI_MCA_rmaps_base_oversubscribe=1
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
"$p3dgrid" info grid.p3d --json | "$python" -c '
import json, sys
for variable in json.load(sys.stdin)["variables"]:
    print("{:.6g} to {:.6g}".format(variable["min"]["value"], variable["max"]["value"]))' >expected
[ "$(wc -l <expected)" -eq 3 ] || fail "$(cat expected)"
for grid in grid.p3d grid-iblank.p3d double.bin; do
  for ranks in 1 2 3; do
    "$mpiexec" -n $ranks "$bounds" $grid >said
    cmp -s said expected || fail "$ranks ranks, $grid: $(cat said)"
    "$python" -c 'import mpi4py, numpy' 2>/dev/null || continue
    "$mpiexec" -n $ranks "$python" "$script" $grid "$p3dgrid" >said
    cmp -s said expected || fail "$ranks ranks of Python, $grid: $(cat said)"
  done
done
status=0
"$mpiexec" -n 2 "$bounds" nowhere >said 2>why || status=$?
[ "$status" -eq 1 ] && grep -q '^bounds: nowhere: No such file or directory$' why ||
  fail "status $status: $(cat why)"
