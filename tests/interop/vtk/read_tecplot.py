"""Has VTK read the Tecplot files that the library writes, and compares all it finds.

    read_tecplot.py WRITE_TECPLOT
"""

import sys
import unittest

from plot3d_peer import SKIPPED, numpy, run_tests, vtk_to_numpy

try:
    from vtkmodules.vtkIOGeometry import vtkTecplotReader
except ImportError as error:
    print(f"SKIPPED: no Tecplot reader in VTK for {sys.executable}: {error}")
    sys.exit(SKIPPED)

DIMENSIONS = [(5, 4, 3), (2, 7, 1), (1, 1, 6)]
FLOW = ["U", "V", "W", "P", "RHO"]


def expected(block, rows):
    """The values as VTK holds them, in single precision: (point, row)."""
    points = int(numpy.prod(DIMENSIONS[block]))
    return numpy.array([[(1000.0 * block + 100.0 * r + p) / 7.0 for r in rows]
                        for p in range(points)]).astype(numpy.float32)


class TecplotFiles(unittest.TestCase):
    directory = None

    def check(self, name, arrays):
        reader = vtkTecplotReader()
        reader.SetFileName(str(self.directory / name))
        reader.Update()
        output = reader.GetOutput()
        self.assertEqual(output.GetNumberOfBlocks(), len(DIMENSIONS))
        for b, dimensions in enumerate(DIMENSIONS):
            block = output.GetBlock(b)
            self.assertEqual(block.GetDimensions(), dimensions)
            numpy.testing.assert_array_equal(vtk_to_numpy(block.GetPoints().GetData()),
                                             expected(b, range(3)))
            data = block.GetPointData()
            self.assertEqual([data.GetArrayName(a) for a in range(data.GetNumberOfArrays())],
                             arrays)
            for r, array in enumerate(FLOW):
                numpy.testing.assert_array_equal(vtk_to_numpy(data.GetArray(array)),
                                                 expected(b, [3 + r])[:, 0], array)
            if "IBLANK" in arrays:
                points = int(numpy.prod(dimensions))
                numpy.testing.assert_array_equal(vtk_to_numpy(data.GetArray("IBLANK")),
                                                 [p % 3 for p in range(points)])

    def test_without_blanking(self):
        self.check("plain.dat", FLOW)

    def test_with_blanking(self):
        self.check("blanked.dat", FLOW + ["IBLANK"])


if __name__ == "__main__":
    run_tests(TecplotFiles)
