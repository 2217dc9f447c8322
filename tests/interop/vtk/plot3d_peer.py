"""VTK's reader of PLOT3D files, and the bit patterns that its results are compared with.

Importing this ends the program with status 77 where VTK is not installed.
"""

import itertools
import pathlib
import subprocess
import sys
import tempfile
import unittest

SKIPPED = 77

try:
    import numpy
    from vtkmodules.util.numpy_support import vtk_to_numpy
    from vtkmodules.vtkIOParallel import vtkMultiBlockPLOT3DReader
except ImportError as error:
    print(f"SKIPPED: no VTK for {sys.executable}: {error}")
    sys.exit(SKIPPED)


class Bits:
    """The integers of a file of bit patterns, one after another."""

    def __init__(self, path):
        self.numbers = iter([int(line) for line in path.read_text().split()])

    def take(self, count, kind):
        taken = numpy.array(list(itertools.islice(self.numbers, int(count))), dtype=kind)
        assert len(taken) == count, "a file of bit patterns is too short"
        return taken


class ExpectedGrid:
    """What the file beside a grid says of its values."""

    def __init__(self, path, has_iblank):
        bits = Bits(path)
        blocks = bits.take(1, numpy.int64)[0]
        self.extents = [tuple(bits.take(3, numpy.int64)) for _ in range(blocks)]
        self.points = []
        self.iblank = []
        for extents in self.extents:
            count = int(numpy.prod(extents))
            self.points.append(bits.take(3 * count, numpy.int32).reshape(3, count).T)
            self.iblank.append(bits.take(count, numpy.int32) if has_iblank else None)


def reader_of(path, encoding, precision, multiblock, iblank):
    """A reader of the grid at path, told all of the layout and left nothing to guess."""
    reader = vtkMultiBlockPLOT3DReader()
    reader.SetXYZFileName(str(path))
    reader.SetAutoDetectFormat(False)
    reader.SetByteOrderToLittleEndian()
    reader.SetBinaryFile(encoding != "formatted")
    reader.SetHasByteCount(encoding == "unformatted")
    reader.SetDoublePrecision(precision == "double")
    reader.SetMultiGrid(multiblock)
    reader.SetIBlanking(iblank)
    reader.SetTwoDimensionalGeometry(False)
    reader.SetForceRead(False)
    return reader


def blocks_of(reader):
    reader.Update()
    output = reader.GetOutput()
    return [output.GetBlock(b) for b in range(output.GetNumberOfBlocks())]


def kind_of(precision):
    return numpy.float64 if precision == "double" else numpy.float32


def run_tests(case):
    """Has the program that the command names write its files, and runs the tests on them."""
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run([sys.argv[1], directory], check=True)
        case.directory = pathlib.Path(directory)
        unittest.main(argv=sys.argv[:1])
