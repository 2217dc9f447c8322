#!/usr/bin/python3
"""Prints the range of each coordinate of a grid. Each rank of an MPI job reads its own share of the
points, at the places that `p3dgrid info --index` prints.

    mpirun -n 4 bounds.py GRID [P3DGRID]

P3DGRID is the path of the command. Needs python3-mpi4py and python3-numpy.
"""

import json
import subprocess
import sys

import numpy
from mpi4py import MPI

MOST_BYTES = 8_000_000  # held at a time


def parts_of(ranges, first, last):
    """The part of each byte range that lies between two bytes of the array."""
    for offset, length in ranges:
        begin, end = max(first, 0), min(last, length)
        if begin < end:
            yield offset + begin, end - begin
        first, last = first - length, last - length


def values(file, array, order, rank, ranks):
    """The values of this rank, in pieces."""
    kind = numpy.dtype({"real4": "f4", "real8": "f8"}[array["kind"]]).newbyteorder(order)
    begin, end = (array["count"] * n // ranks * kind.itemsize for n in (rank, rank + 1))
    for first in range(begin, end, MOST_BYTES):
        piece = bytearray(min(MOST_BYTES, end - first))
        at = 0
        for offset, length in parts_of(array["ranges"], first, first + len(piece)):
            file.Read_at(offset, memoryview(piece)[at:at + length])
            at += length
        yield numpy.frombuffer(piece, kind)


def main():
    world = MPI.COMM_WORLD
    report = None
    if world.rank == 0:
        command = [sys.argv[2] if len(sys.argv) > 2 else "p3dgrid", "info", "--index", sys.argv[1]]
        report = json.loads(subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout)
    report = world.bcast(report)
    low, high = numpy.full(3, numpy.inf), numpy.full(3, -numpy.inf)
    file = MPI.File.Open(MPI.COMM_SELF, sys.argv[1])
    for block in report["blocks"]:
        for array in block["arrays"]:
            if array["content"] != "coordinate":
                continue
            axis = array["number"] - 1
            for piece in values(file, array, report["form"]["byte_order"], world.rank, world.size):
                low[axis], high[axis] = min(low[axis], piece.min()), max(high[axis], piece.max())
    file.Close()
    low, high = numpy.minimum.reduce(world.allgather(low)), numpy.maximum.reduce(world.allgather(high))
    if world.rank == 0:
        for ends in zip(low, high):
            print("{:.6g} to {:.6g}".format(*ends))


main()
