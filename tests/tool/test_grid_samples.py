"""`info` on real grid files, compared with values read by Python."""

import os
import pathlib
import re
import struct
import unittest

from support import ToolTest, main

SAMPLES = os.environ.get("P3DGRID_SAMPLES", "")

FORMATTED = ("--grid-format", "formatted")
GRIDS = [
    ("vtk_data/multi-bin.xyz", ("--grid-precision", "double"), True),
    ("vtk_data/multi-bin-C.xyz", ("--grid-format", "binary", "--grid-precision", "double"), True),
    ("vtk_data/multi-ascii.xyz", FORMATTED, True),
    ("cfl3d/ramp_embed.fmt", FORMATTED, True),
    ("cfl3d/flatplate_grdflat5.fmt", (*FORMATTED, "--grid-multiblock", "no"), False),
    ("cfl3d/flatplateskew_grdflat5.fmt", (*FORMATTED, "--grid-multiblock", "no"), False),
    ("turbmodels/flatplate_35x25.p3dfmt", FORMATTED, True),
    ("turbmodels/nak_a_fine_65.p3d", ("--grid-precision", "double", "--grid-byte-order", "big"),
     True),
]


def numbers_of_text(text):
    numbers = []
    for word in re.split(r"[\s,]+", text.strip()):
        count, star, value = word.rpartition("*")
        numbers += [float(value.replace("D", "E"))] * (int(count) if star else 1)
    return numbers


def payload_of(path):
    """The bytes of the file without its record markers, if it has any, and its byte order."""
    data = path.read_bytes()
    for sign in "<>":
        if struct.unpack_from(sign + "i", data)[0] != 4:
            continue
        payload, at = b"", 0
        while at < len(data):
            length = struct.unpack_from(sign + "i", data, at)[0]
            payload += data[at + 4:at + 4 + length]
            at += length + 8
        return payload, sign
    return data, "<"


def grid_in(path, counted):
    """Extents of the blocks, and the values of each block's points: all x, all y, all z."""
    if "fmt" in path.suffix or "ascii" in path.name:
        numbers = numbers_of_text(path.read_text())
    else:
        data, sign = payload_of(path)
        blocks = struct.unpack_from(sign + "i", data)[0]
        header = struct.unpack_from(f"{sign}{1 + 3 * blocks}i", data)
        numbers = [*header, *struct.unpack(f"{sign}{(len(data) - 4 * len(header)) // 8}d",
                                           data[4 * len(header):])]
    blocks = int(numbers.pop(0)) if counted else 1
    extents = [tuple(int(n) for n in numbers[3 * b:3 * b + 3]) for b in range(blocks)]
    values, at = [], 3 * blocks
    for i, j, k in extents:
        values.append([numbers[at + c * i * j * k:at + (c + 1) * i * j * k] for c in range(3)])
        at += 3 * i * j * k
    assert at == len(numbers), "the file holds other than its extents say"
    return extents, values


@unittest.skipUnless(SAMPLES, "P3DGRID_SAMPLES names no folder of real files")
class RealGrids(ToolTest):
    def check(self, name, options, counted):
        path = pathlib.Path(SAMPLES) / name
        extents, values = grid_in(path, counted)
        output = self.succeed("info", "--quiet", path, *options)
        rows = [[float(word) for word in line.split()] for line in output.splitlines()
                if re.match(r"\s+\d+(\s+[-+.\de]+)+$", line)]
        points = [i * j * k for i, j, k in extents]
        expected = [[b + 1, *extent, points[b]] for b, extent in enumerate(extents)]
        self.assertEqual(rows[:len(extents)], expected)
        boxes = rows[len(extents):]
        self.assertEqual(len(boxes), len(extents))
        for b, box in enumerate(boxes):
            ends = [end(column) for column in values[b] for end in (min, max)]
            self.assertEqual(box[1:], ends)

    def test_every_grid(self):
        for grid in GRIDS:
            with self.subTest(grid[0]):
                self.check(*grid)

    def test_every_grid_without_options(self):
        for name, _, counted in GRIDS:
            with self.subTest(name):
                self.check(name, (), counted)


if __name__ == "__main__":
    main()
