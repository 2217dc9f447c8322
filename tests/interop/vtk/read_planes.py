"""Compares files of two dimensions that the command wrote with the values that VTK reads from them.

    read_planes.py P3DGRID

The command converts grids and solutions of three dimensions with one k plane. Ends with status 77
where VTK is not installed.
"""

import itertools
import pathlib
import subprocess
import sys
import tempfile
import unittest

from plot3d_peer import blocks_of, kind_of, numpy, reader_of, vtk_to_numpy

EXTENTS = [(4, 3, 1), (2, 5, 1)]


class Planes(unittest.TestCase):
    def convert(self, *arguments):
        subprocess.run([sys.argv[1], *arguments, "--to-dimensions", "2"], cwd=self.folder,
                       check=True, capture_output=True)

    def write_case(self, kind):
        """Writes plain grid and solution in three dimensions; returns the arrays of each block."""
        chance = numpy.random.default_rng(2)
        header = numpy.int32(len(EXTENTS)).tobytes() + numpy.array(EXTENTS, numpy.int32).tobytes()
        grid = solution = header
        blocks = []
        for block in EXTENTS:
            points = numpy.prod(block)
            xyz = chance.random((3, points)).astype(kind)
            xyz[2] = 0
            iblank = chance.integers(0, 2, points, numpy.int32)
            flow = (1 + chance.random((5, points))).astype(kind)
            flow[3] = 0
            grid += xyz.tobytes() + iblank.tobytes()
            solution += chance.random(4).astype(kind).tobytes() + flow.tobytes()
            blocks.append((xyz, iblank, flow))
        (self.folder / "grid").write_bytes(grid)
        (self.folder / "flow").write_bytes(solution)
        return blocks

    def check(self, encoding, precision):
        kind = kind_of(precision)
        written = self.write_case(kind)
        form = ["--to-format", encoding]
        self.convert("convert", "grid", "plane", *form)
        self.convert("restart", "grid", "flow", "plane.q", *form)
        reader = reader_of(self.folder / "plane", encoding, precision, True, True)
        reader.TwoDimensionalGeometryOn()
        reader.SetQFileName(str(self.folder / "plane.q"))
        for block, (xyz, iblank, flow) in zip(blocks_of(reader), written, strict=True):
            points = vtk_to_numpy(block.GetPoints().GetData())
            numpy.testing.assert_array_equal(points, xyz.T)
            data = block.GetPointData()
            numpy.testing.assert_array_equal(vtk_to_numpy(data.GetArray("IBlank")), iblank)
            numpy.testing.assert_array_equal(vtk_to_numpy(data.GetArray("Density")), flow[0])
            numpy.testing.assert_array_equal(vtk_to_numpy(data.GetArray("Momentum")), flow[1:4].T)
            numpy.testing.assert_array_equal(vtk_to_numpy(data.GetArray("StagnationEnergy")),
                                             flow[4])

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_all(self):
        for form in itertools.product(["unformatted", "formatted", "binary"],
                                      ["single", "double"]):
            with self.subTest(form=form):
                self.check(*form)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
