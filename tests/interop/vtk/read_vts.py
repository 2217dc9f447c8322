"""Reads with VTK what `p3dgrid vtk` writes, and compares it bit for bit with the values of the grid
and its solution.

    read_vts.py P3DGRID

Ends with status 77 where VTK is not installed.
"""

import itertools
import pathlib
import subprocess
import sys
import tempfile
import unittest

from plot3d_peer import kind_of, numpy, vtk_to_numpy
from vtkmodules.vtkIOXML import vtkXMLMultiBlockDataReader

EXTENTS = [(4, 3, 2), (7, 5, 1), (50, 40, 6)]
NAMES = ["density", "x-momentum", "y-momentum", "z-momentum", "energy"]


def record(*parts):
    content = b"".join(numpy.asarray(part).tobytes() for part in parts)
    marker = numpy.int32(len(content)).tobytes()
    return marker + content + marker


class Written(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_tool(self, *arguments):
        subprocess.run([COMMAND, *arguments], cwd=self.folder, check=True, capture_output=True)

    def write_case(self, kind, iblank):
        """Writes grid, solution and functions; returns the values of each block."""
        chance = numpy.random.default_rng(7)
        extents = numpy.array(EXTENTS, dtype=numpy.int32)
        grid = solution = record(numpy.int32(len(EXTENTS))) + record(extents)
        blocks = []
        for block in EXTENTS:
            points = int(numpy.prod(block))
            xyz = chance.normal(size=(3, points)).astype(kind)
            blanks = chance.integers(-2, 3, points).astype(numpy.int32)
            flow = chance.normal(size=(5, points)).astype(kind)
            grid += record(xyz, *([blanks] if iblank else []))
            solution += record(numpy.zeros(4, kind)) + record(flow)
            blocks.append((xyz, blanks, flow))
        (self.folder / "grid").write_bytes(grid)
        (self.folder / "flow").write_bytes(solution)
        return blocks

    def read(self):
        reader = vtkXMLMultiBlockDataReader()
        reader.SetFileName(str(self.folder / "out.vtm"))
        reader.Update()
        tree = reader.GetOutput()
        return [tree.GetBlock(n) for n in range(tree.GetNumberOfBlocks())]

    def assert_same(self, stored, expected):
        values = vtk_to_numpy(stored)
        self.assertEqual(values.dtype, expected.dtype)
        numpy.testing.assert_array_equal(values.view(numpy.uint8), expected.view(numpy.uint8))

    def check(self, found, expected, names, iblank):
        self.assertEqual([block.GetDimensions() for block in found], EXTENTS)
        for block, (xyz, blanks, flow) in zip(found, expected):
            self.assert_same(block.GetPoints().GetData(), numpy.ascontiguousarray(xyz.T))
            data = block.GetPointData()
            self.assertEqual(data.GetNumberOfArrays(), len(names) + iblank)
            for name, values in zip(names, flow):
                self.assert_same(data.GetArray(name), values)
            if iblank:
                visible = [block.IsPointVisible(p) for p in range(len(blanks))]
                self.assertEqual([bool(v) for v in visible], [bool(b) for b in blanks != 0])

    def test_grids_and_solutions(self):
        for precision, iblank in itertools.product(("single", "double"), (False, True)):
            with self.subTest(precision=precision, iblank=iblank):
                blocks = self.write_case(kind_of(precision), iblank)
                self.run_tool("vtk", "grid", "out.vtm")
                self.check(self.read(), blocks, [], iblank)
                self.run_tool("vtk", "grid", "flow", "out.vtm")
                self.check(self.read(), blocks, NAMES, iblank)

    def test_functions(self):
        blocks = self.write_case(kind_of("double"), False)
        self.run_tool("restart", "grid", "flow", "functions", "--to-layout", "3")
        self.run_tool("vtk", "grid", "functions", "out.vtm")
        self.check(self.read(), blocks, [f"variable {n}" for n in range(1, 6)], False)

    def test_text_is_in_double_precision(self):
        blocks = self.write_case(kind_of("double"), False)
        self.run_tool("convert", "grid", "text", "--to-format", "formatted")
        self.run_tool("vtk", "text", "out.vtm")
        self.check(self.read(), blocks, [], False)


if __name__ == "__main__":
    COMMAND = str(pathlib.Path(sys.argv.pop(1)).resolve())
    unittest.main(verbosity=2)
