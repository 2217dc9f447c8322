"""Reads grids that the library wrote with VTK's reader, and compares them bit for bit.

    read_grids.py WRITER

WRITER writes one grid in every layout into the directory it is given, with the bit patterns of its
values beside it. Ends with status 77 where VTK is not installed.
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


class ExpectedGrid:
    """What the file beside a grid says of its values."""

    def __init__(self, path, has_iblank):
        numbers = iter([int(line) for line in path.read_text().split()])

        def take(count, kind):
            return numpy.array(list(itertools.islice(numbers, count)), dtype=kind)

        blocks = take(1, numpy.int64)[0]
        self.extents = [tuple(take(3, numpy.int64)) for _ in range(blocks)]
        self.points = []
        self.iblank = []
        for extents in self.extents:
            count = int(numpy.prod(extents))
            self.points.append(take(3 * count, numpy.int32).reshape(3, count).T)
            self.iblank.append(take(count, numpy.int32) if has_iblank else None)


def read_with_vtk(path, encoding, precision, multiblock, iblank):
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
    reader.Update()
    output = reader.GetOutput()
    return [output.GetBlock(b) for b in range(output.GetNumberOfBlocks())]


class EveryLayout(unittest.TestCase):
    """One test for each layout, added below."""

    directory = None

    def check(self, *layout):
        encoding, precision, multiblock, iblank = layout
        name = "_".join([encoding, precision, "multiblock" if multiblock else "single_block",
                         "iblank" if iblank else "plain"])
        expected = ExpectedGrid(self.directory / f"{name}.bits", iblank)
        blocks = read_with_vtk(self.directory / name, *layout)
        self.assertEqual([block.GetDimensions() for block in blocks], expected.extents)
        kind = numpy.float64 if precision == "double" else numpy.float32
        for block, points, blanks in zip(blocks, expected.points, expected.iblank):
            values = vtk_to_numpy(block.GetPoints().GetData())
            self.assertEqual(values.dtype, kind)
            numpy.testing.assert_array_equal(values.astype(numpy.float32).view(numpy.int32), points)
            stored = block.GetPointData().GetArray("IBlank")
            self.assertEqual(stored is not None, iblank)
            if iblank:
                numpy.testing.assert_array_equal(vtk_to_numpy(stored), blanks)


def add_test(*layout):
    encoding, precision, multiblock, iblank = layout
    name = f"test_{encoding}_{precision}_multiblock_{multiblock}_iblank_{iblank}"
    setattr(EveryLayout, name, lambda self: self.check(*layout))


for layout_of_test in itertools.product(["unformatted", "formatted", "binary"],
                                        ["single", "double"], [False, True], [False, True]):
    add_test(*layout_of_test)


def main():
    with tempfile.TemporaryDirectory() as directory:
        subprocess.run([sys.argv[1], directory], check=True)
        EveryLayout.directory = pathlib.Path(directory)
        unittest.main(argv=sys.argv[:1])


if __name__ == "__main__":
    main()
