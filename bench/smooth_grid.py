"""Writes a grid of two blocks with smooth coordinates, as grids have them.

    smooth_grid.py FILE POINTS

The file is unformatted, in double precision, and has at most POINTS points.
"""

import sys

import numpy


def record(content):
    marker = numpy.int32(len(content)).tobytes()
    return marker + content + marker


def coordinates(extent, offset):
    """x, y and z of a block whose lines are curved and whose spacing changes."""
    k, j, i = numpy.meshgrid(*3 * [numpy.linspace(0, 1, extent)], indexing="ij")
    return numpy.array([offset + i**1.2 + 0.01 * numpy.sin(6 * j), j + 0.01 * numpy.cos(4 * k),
                        k**1.1 + 0.02 * numpy.sin(5 * i)])


def main():
    path, points = sys.argv[1], int(sys.argv[2])
    extent = max(2, int((points / 2) ** (1 / 3)))
    with open(path, "wb") as file:
        file.write(record(numpy.int32(2).tobytes()))
        file.write(record(numpy.full(6, extent, numpy.int32).tobytes()))
        for offset in (0, 1):
            file.write(record(coordinates(extent, offset).tobytes()))


if __name__ == "__main__":
    main()
