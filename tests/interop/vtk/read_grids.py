"""Reads grids that the library wrote with VTK's reader, and compares them bit for bit.

    read_grids.py WRITER

WRITER writes one grid in every layout into the directory it is given, with the bit patterns of its
values beside it. Ends with status 77 where VTK is not installed.
"""

import itertools
import unittest

from plot3d_peer import ExpectedGrid, blocks_of, kind_of, numpy, reader_of, run_tests, vtk_to_numpy


class EveryLayout(unittest.TestCase):
    """One test for each layout, added below."""

    directory = None

    def check(self, *layout):
        encoding, precision, multiblock, iblank = layout
        name = "_".join([encoding, precision, "multiblock" if multiblock else "single_block",
                         "iblank" if iblank else "plain"])
        expected = ExpectedGrid(self.directory / f"{name}.bits", iblank)
        blocks = blocks_of(reader_of(self.directory / name, *layout))
        self.assertEqual([block.GetDimensions() for block in blocks], expected.extents)
        for block, points, blanks in zip(blocks, expected.points, expected.iblank):
            values = vtk_to_numpy(block.GetPoints().GetData())
            self.assertEqual(values.dtype, kind_of(precision))
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

if __name__ == "__main__":
    run_tests(EveryLayout)
