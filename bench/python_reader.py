"""Reads a grid once with the Python package or with numpy alone, and prints the time.

    python_reader.py p3dgrid|numpy unformatted|binary single|double FILE

The numpy variant is given the form and reads each block in one call, as a short script would. It
does not compare the file with the form.
"""

import sys
import time

import numpy


def read_with_package(form, precision, path):
    import p3dgrid

    def read():
        grid = p3dgrid.read_grid(path, format=form, precision=precision, byte_order="little",
                                 multiblock=True, iblank=False)
        return [array for block in grid for array in (block.x, block.y, block.z)]

    return read


def read_with_numpy(form, precision, path):
    kind = numpy.dtype("<f8" if precision == "double" else "<f4")
    marker = 4 if form == "unformatted" else 0

    def read():
        arrays = []
        with open(path, "rb") as file:
            blocks = int(numpy.fromfile(file, "<i4", 1, offset=marker)[0])
            extents = numpy.fromfile(file, "<i4", 3 * blocks, offset=2 * marker).reshape(-1, 3)
            for block in extents:
                points = int(numpy.prod(block, dtype="i8"))
                values = numpy.fromfile(file, kind, 3 * points, offset=2 * marker)
                arrays += (values[n * points:(n + 1) * points].reshape(block, order="F")
                           for n in range(3))
        return arrays

    return read


def bit_sum(array):
    """The sum of the bits of the values as singles, as in the other programs."""
    singles = array.ravel("F").astype("f4")
    return int(singles.view("i4").sum(dtype="i8"))


def main():
    side, *what = sys.argv[1:]
    read = {"p3dgrid": read_with_package, "numpy": read_with_numpy}[side](*what)
    start = time.perf_counter()
    arrays = read()
    seconds = time.perf_counter() - start
    # Peak memory would include the interpreter.
    print(f"seconds {seconds:.9f}\npeak 0\ncheck {sum(map(bit_sum, arrays))}")


main()
