#!/usr/bin/env python3
"""Measures ways to find the extremes of all variables of a solution with the Python package: time
and peak memory against the number of points.

    python_large.py POINTS... [--folder FOLDER] [--repetitions N]

Needs the package on PYTHONPATH. Files are unformatted, in single precision, with one block, and in
the page cache. A fresh process makes each run; the start of interpreter and cluster is not measured,
but its memory is. Prints medians.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import numpy

MIB = 1 << 20
LAYER = 250_000  # points in a k plane


def read(path):
    import p3dgrid
    flow = p3dgrid.read_solution(path)
    return [(array.min(), array.max()) for array in flow[0]]


def mapped(path):
    import p3dgrid
    return [(array.min(), array.max()) for array in p3dgrid.open(path)[0]]


def lazy(path):
    import dask
    import p3dgrid
    block = p3dgrid.open(path).dask(16 * MIB)[0]
    return dask.compute([(block[n].min(), block[n].max()) for n in range(1, 6)],
                        scheduler="threads", num_workers=2)[0]


def peak():
    """Peak memory of this process in bytes."""
    with open("/proc/self/status", encoding="ascii") as status:
        return next(int(line.split()[1]) * 1024 for line in status if line.startswith("VmHWM"))


def cluster(path):
    import distributed
    import p3dgrid
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, memory_limit=512 * MIB,
                                  dashboard_address=None) as started, \
            distributed.Client(started) as client:
        client.run(lambda: None)
        begin = time.perf_counter()
        block = p3dgrid.open(path).dask(16 * MIB)[0]
        found = client.compute([(block[n].min(), block[n].max()) for n in range(1, 6)], sync=True)
        seconds = time.perf_counter() - begin
        return found, seconds, max(client.run(peak).values())


WAYS = {"read": read, "mapped": mapped, "dask": lazy, "cluster": cluster}


def run(way, path):
    """One run in this process, as JSON."""
    if way == "cluster":
        found, seconds, memory = cluster(path)
    else:
        import dask.array  # noqa: F401 - not measured
        import p3dgrid  # noqa: F401
        begin = time.perf_counter()
        found = WAYS[way](path)
        seconds, memory = time.perf_counter() - begin, peak()
    extremes = [float(value) for pair in found for value in pair]
    print(json.dumps({"seconds": seconds, "memory": memory, "found": extremes}))


def generate(path, points):
    import p3dgrid
    shape = (500, LAYER // 500, points // LAYER)
    chance = numpy.random.default_rng(points)
    arrays = [chance.random(shape[::-1], dtype="f4").T for _ in range(5)]
    p3dgrid.write_solution(path, [arrays], precision="single")
    return [float(value) for array in arrays for value in (array.min(), array.max())]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("points", nargs="+", type=int)
    parser.add_argument("--folder", type=pathlib.Path, default=tempfile.gettempdir())
    parser.add_argument("--repetitions", type=int, default=3)
    chosen = parser.parse_args()
    print(f"{'points':>10}{'file MiB':>10}  {'way':<10}{'seconds':>9}{'peak MiB':>10}")
    for points in chosen.points:
        path = pathlib.Path(chosen.folder) / f"p3dgrid-{os.getpid()}-{points}.q"
        try:
            expected = generate(path, points)
            for way in WAYS:
                runs = []
                for _ in range(chosen.repetitions):
                    done = subprocess.run([sys.executable, __file__, way, path], check=True,
                                          capture_output=True, text=True)
                    runs.append(json.loads(done.stdout))
                    if runs[-1]["found"] != expected:
                        sys.exit(f"{way}: other extremes than those written")
                seconds = statistics.median(one["seconds"] for one in runs)
                memory = max(one["memory"] for one in runs) / MIB
                size = path.stat().st_size / MIB
                print(f"{points:>10}{size:>10.0f}  {way:<10}{seconds:>9.3f}{memory:>10.0f}",
                      flush=True)
        finally:
            path.unlink(missing_ok=True)


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] in WAYS:
        run(*sys.argv[1:])
    else:
        main()
