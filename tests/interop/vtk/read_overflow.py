"""Compares OVERFLOW solutions as VTK's reader and as the command read them, bit for bit.

    read_overflow.py P3DGRID

The command converts each solution to a function file, whose reals are those of VTK. Ends with
status 77 where VTK is not installed.
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from plot3d_peer import blocks_of, kind_of, numpy, reader_of, vtk_to_numpy

EXTENTS = [(4, 3, 2), (2, 2, 5)]
SPECIES = 2
VARIABLES = 9  # five of the flow, the ratio of specific heats, the species, one of turbulence


def record(*parts):
    content = b"".join(numpy.asarray(part).tobytes() for part in parts)
    marker = numpy.int32(len(content)).tobytes()
    return marker + content + marker


class Overflow(unittest.TestCase):
    def write_case(self, precision):
        """Writes grid and solution; returns parameters and flow of each block."""
        kind = kind_of(precision)
        chance = numpy.random.default_rng(1)
        extents = numpy.array(EXTENTS, dtype=numpy.int32)
        header = record(numpy.int32(len(EXTENTS)))
        grid = header + record(extents)
        solution = header + record(extents, numpy.array([VARIABLES, SPECIES], dtype=numpy.int32))
        blocks = []
        for block in EXTENTS:
            points = numpy.prod(block)
            parameters = chance.random(13 + SPECIES).astype(kind)
            flow = (1 + chance.random((VARIABLES, points))).astype(kind)
            grid += record(chance.random((3, points)).astype(kind))
            solution += record(parameters[:7], numpy.int32(1), parameters[7:]) + record(flow)
            blocks.append((parameters, flow))
        (self.folder / "grid").write_bytes(grid)
        (self.folder / "flow").write_bytes(solution)
        return blocks

    def check(self, precision):
        kind = kind_of(precision)
        written = self.write_case(precision)
        reader = reader_of(self.folder / "grid", "unformatted", precision, True, False)
        reader.SetQFileName(str(self.folder / "flow"))
        subprocess.run([sys.argv[1], "restart", "grid", "flow", "functions", "--to-layout", "3",
                        "--to-format", "binary"], cwd=self.folder, check=True, capture_output=True)
        content = (self.folder / "functions").read_bytes()[4 + 16 * len(EXTENTS):]
        values = numpy.frombuffer(content, dtype=kind)
        for block, (parameters, flow) in zip(blocks_of(reader), written, strict=True):
            data = block.GetPointData()
            arrays = [data.GetArray(n) for n in range(data.GetNumberOfArrays())]
            columns = [vtk_to_numpy(array).reshape(flow.shape[1], -1).T for array in arrays
                       if not array.GetName().endswith(" / rho")]  # VTK adds these quotients
            expected = numpy.concatenate(columns)
            found, values = values[:flow.size], values[flow.size:]
            self.assertEqual(expected.shape, flow.shape)
            self.assertEqual(found.tobytes(), expected.tobytes())
            properties = vtk_to_numpy(block.GetFieldData().GetArray("Properties"))
            in_file = numpy.insert(parameters, 7, 1)
            numpy.testing.assert_array_equal(properties[:len(in_file)], in_file)
        self.assertEqual(len(values), 0)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_single_precision(self):
        self.check("single")

    def test_double_precision(self):
        self.check("double")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
