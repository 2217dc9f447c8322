"""`extract`, `merge`, `quality` and `vtk` on real grids, compared with values read by Python."""

import itertools
import json
import math
import pathlib
import re
import struct
import unittest

from support import NATIVE, Block, Form, ToolTest, grid_bytes, main
from test_grid_samples import GRIDS, SAMPLES, grid_in

AIRFOIL = "turbmodels/nak_a_fine_65.p3d"
BINARY = Form("binary", double=True)
AS_BINARY = ("--to-format", "binary", "--to-precision", "double", "--to-byte-order", NATIVE,
             "--to-multiblock", "yes", "--quiet")


def blocks_of(name, counted=True):
    extents, values = grid_in(pathlib.Path(SAMPLES) / name, counted)
    return [Block(extent, *xyz) for extent, xyz in zip(extents, values)]


def every_second_point(block):
    ni, nj, nk = block.extents
    places = [range(0, n, 2) for n in block.extents]
    points = [i + ni * (j + nj * k) for k in places[2] for j in places[1] for i in places[0]]
    return Block(tuple(map(len, places)), *([values[p] for p in points] for values in block.xyz))


def lines_of(block, direction):
    """The points of each grid line in a direction, with the indices of the first, from 0."""
    ni, nj, _ = block.extents
    steps = (1, ni, ni * nj)
    points = list(zip(*block.xyz))
    others = [range(1 if d == direction else n) for d, n in enumerate(block.extents)]
    for index in itertools.product(*others):
        start = sum(map(int.__mul__, index, steps))
        yield index, [points[start + n * steps[direction]]
                      for n in range(block.extents[direction])]


def largest_stretching(block):
    """The largest ratio of adjacent edges that are longer than 0."""
    ratios = []
    for direction in range(3):
        for _, line in lines_of(block, direction):
            edges = [math.dist(one, other) for one, other in itertools.pairwise(line)]
            ratios += [max(pair) / min(pair) for pair in itertools.pairwise(edges) if min(pair)]
    return max(ratios)


def angle(corner, one, other):
    """In degrees; 90 if an edge has no length."""
    u, v = ([a - b for a, b in zip(end, corner)] for end in (one, other))
    lengths = math.hypot(*u) * math.hypot(*v)
    cosine = sum(map(float.__mul__, u, v)) / lengths if lengths else 0
    return math.degrees(math.acos(min(max(cosine, -1), 1)))


def largest_skewness(block):
    """The largest deviation of a corner of a quadrilateral from 90 degrees, divided by 90."""
    ni, nj, _ = block.extents
    steps = (1, ni, ni * nj)
    points = list(zip(*block.xyz))
    worst = 0
    for a, b in ((0, 1), (0, 2), (1, 2)):
        ends = [n - (d in (a, b)) for d, n in enumerate(block.extents)]
        for index in itertools.product(*map(range, ends)):
            start = sum(map(int.__mul__, index, steps))
            ring = [points[start + step] for step in (0, steps[a], steps[a] + steps[b], steps[b])]
            for c in range(4):
                deviation = abs(angle(ring[c], ring[c - 1], ring[(c + 1) % 4]) - 90) / 90
                worst = max(worst, deviation)
    return worst


@unittest.skipUnless(SAMPLES, "P3DGRID_SAMPLES names no folder of real files")
class RealGrids(ToolTest):
    def test_every_second_point(self):
        steps = itertools.chain(*((f"--{d}", "1:last:2") for d in "ijk"))
        options = (*steps, "--uneven", *AS_BINARY)
        for name, _, counted in GRIDS:
            with self.subTest(name):
                self.succeed("extract", pathlib.Path(SAMPLES) / name, "coarse", *options)
                coarse = [every_second_point(block) for block in blocks_of(name, counted)]
                self.assertEqual(self.path("coarse").read_bytes(), grid_bytes(BINARY, coarse))

    def test_merged_blocks_are_those_of_the_inputs(self):
        self.succeed("merge", *(pathlib.Path(SAMPLES) / name for name, _, _ in GRIDS), "all",
                     *AS_BINARY)
        blocks = [blocks_of(name, counted) for name, _, counted in GRIDS]
        self.assertEqual(self.path("all").read_bytes(),
                         grid_bytes(BINARY, list(itertools.chain(*blocks))))
        end = 0
        for (name, _, _), own in zip(GRIDS, blocks):
            first, end = end + 1, end + len(own)
            with self.subTest(name):
                self.succeed("extract", "all", "part", "--blocks", f"{first}-{end}", "--quiet")
                self.assertEqual(self.path("part").read_bytes(), grid_bytes(BINARY, own))

    def test_quality(self):
        for name in (AIRFOIL, "vtk_data/multi-bin.xyz", "cfl3d/ramp_embed.fmt"):
            report = json.loads(self.succeed("quality", pathlib.Path(SAMPLES) / name, "--json"))
            for b, block in enumerate(blocks_of(name)):
                with self.subTest(name, block=b + 1):
                    found = report["blocks"][b]
                    self.assertEqual(found["extents"], list(block.extents))
                    self.assertEqual(found["cells"], math.prod(n - 1 for n in block.extents))
                    self.assertAlmostEqual(found["stretching"]["value"], largest_stretching(block))
                    self.assertAlmostEqual(found["skewness"]["value"], largest_skewness(block),
                                           places=6)
                    self.assertEqual((found["handedness"], found["negative_volumes"]["count"]),
                                     ("right", 0))

    def test_sides_of_the_airfoil_meet(self):
        report = json.loads(self.succeed("quality", pathlib.Path(SAMPLES) / AIRFOIL, "--json"))
        one, other = (set(zip(*block.xyz)) for block in blocks_of(AIRFOIL))
        common = {(c["faces"][0]["face"], c["faces"][1]["face"]): c["points"]
                  for c in report["connections"]}
        self.assertEqual(common, {("j=1", "j=1"): 50, ("j=last", "j=1"): 50})
        # The two parts of block 1 both end in the 2 points of the trailing edge.
        self.assertEqual(len(one & other), sum(common.values()) - 2)

    def test_vtk(self):
        for name, _, counted in GRIDS:
            self.succeed("vtk", pathlib.Path(SAMPLES) / name, "out.vtm")
            for b, block in enumerate(blocks_of(name, counted)):
                with self.subTest(name, block=b + 1):
                    xml, data = self.path(f"out-{b + 1}.vts").read_bytes().split(b"\n_", 1)
                    extent = " ".join(f"0 {n - 1}" for n in block.extents)
                    self.assertIn(f'<Piece Extent="{extent}">', xml.decode())
                    (real,) = re.findall(r'type="Float(\d+)" Name="Points"', xml.decode())
                    points = list(itertools.chain(*zip(*block.xyz)))
                    kind = {"32": "f", "64": "d"}[real]
                    payload = struct.pack(f"={len(points)}{kind}", *points)
                    self.assertEqual(data[:8], struct.pack("=Q", len(payload)))
                    self.assertEqual(data[8:8 + len(payload)], payload)


if __name__ == "__main__":
    main()
