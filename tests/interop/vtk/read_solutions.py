"""Reads solution and function files that the library wrote with VTK's reader, and compares them bit
for bit.

    read_solutions.py WRITER

WRITER writes, for every way of holding reals, a grid with a solution file (.q) and a function file
(.f) into the directory it is given, with the bit patterns of their values beside them. Ends with
status 77 where VTK is not installed.
"""

import itertools
import unittest

from plot3d_peer import (Bits, ExpectedGrid, blocks_of, kind_of, numpy, reader_of, run_tests,
                         vtk_to_numpy)

HEADER_INTEGERS = 10
HEADER_REALS = 9
SOLUTION_VARIABLES = 5
FUNCTIONS = 7


class ExpectedSolution:
    """What the file beside a solution or function file says of its values, per block."""

    def __init__(self, path, extents, variables):
        bits = Bits(path)
        bits.take(HEADER_INTEGERS, numpy.int64)
        self.extents = [tuple(bits.take(3, numpy.int64)) for _ in extents]
        self.counts = list(bits.take(len(extents), numpy.int64))
        bits.take(HEADER_REALS, numpy.int64)
        self.parameters = bits.take(4 * len(extents), numpy.int64).reshape(len(extents), 4)
        points = [int(numpy.prod(block)) for block in extents]
        flow = bits.take(variables * sum(points), numpy.int64).reshape(variables, sum(points))
        self.flow = numpy.split(flow, numpy.cumsum(points)[:-1], axis=1)


def bits_of(array):
    return numpy.ascontiguousarray(array, dtype=numpy.float64).view(numpy.int64)


class EveryLayout(unittest.TestCase):
    """One test for each layout, added below."""

    directory = None

    def read(self, *layout):
        """The blocks as VTK has them, and what is expected of the solution and of the functions."""
        encoding, precision, multiblock = layout
        name = f"{encoding}_{precision}_{'multiblock' if multiblock else 'single_block'}"
        path = self.directory / name
        extents = ExpectedGrid(path.with_suffix(".bits"), False).extents
        reader = reader_of(path, *layout, False)
        reader.SetQFileName(f"{path}.q")
        reader.SetFunctionFileName(f"{path}.f")
        solution = ExpectedSolution(path.with_suffix(".q.bits"), extents, SOLUTION_VARIABLES)
        functions = ExpectedSolution(path.with_suffix(".f.bits"), extents, FUNCTIONS)
        blocks = blocks_of(reader)
        self.assertEqual([block.GetDimensions() for block in blocks], extents)
        self.assertEqual(len(extents), 3 if multiblock else 1)
        return blocks, solution, functions

    def expect_columns(self, block, name, layout, expected):
        """The array of that name holds these columns.

        Text has singles in as few digits as tell them apart, so that what VTK reads from it in
        double precision must be rounded to be them.
        """
        encoding, precision, _ = layout
        array = block.GetPointData().GetArray(name)
        self.assertIsNotNone(array, name)
        values = vtk_to_numpy(array)
        self.assertEqual(values.dtype, kind_of(precision))
        if encoding == "formatted":
            values = values.astype(numpy.float32)
        columns = values.reshape(len(values), -1).T
        numpy.testing.assert_array_equal(bits_of(columns), expected, name)

    def check(self, *layout):
        blocks, solution, functions = self.read(*layout)
        for block, flow, parameters, values in zip(blocks, solution.flow, solution.parameters,
                                                   functions.flow):
            self.expect_columns(block, "Density", layout, flow[0:1])
            self.expect_columns(block, "Momentum", layout, flow[1:4])
            self.expect_columns(block, "StagnationEnergy", layout, flow[4:5])
            properties = vtk_to_numpy(block.GetFieldData().GetArray("Properties"))
            numpy.testing.assert_array_equal(bits_of(properties[:4]), parameters)
            for n in range(FUNCTIONS):
                self.expect_columns(block, f"Function{n}", layout, values[n:n + 1])
            self.assertFalse(block.GetPointData().HasArray(f"Function{FUNCTIONS}"))


def add_test(*layout):
    encoding, precision, multiblock = layout
    name = f"test_{encoding}_{precision}_multiblock_{multiblock}"
    setattr(EveryLayout, name, lambda self: self.check(*layout))


for layout_of_test in itertools.product(["unformatted", "formatted", "binary"],
                                        ["single", "double"], [False, True]):
    add_test(*layout_of_test)

if __name__ == "__main__":
    run_tests(EveryLayout)
