"""p3dgrid sample: the files it writes, and the grid that is in them."""

import math
import os
import struct

from support import ToolTest, main

FILES = ["grid-iblank.p3d", "grid.p3d", "grid.txt"]


class Reader:
    """Takes records off a file of unformatted records in single precision."""

    def __init__(self, content):
        self.content = content
        self.at = 0

    def record(self):
        (length,) = struct.unpack_from("=i", self.content, self.at)
        payload = self.content[self.at + 4:self.at + 4 + length]
        (trailer,) = struct.unpack_from("=i", self.content, self.at + 4 + length)
        assert trailer == length == len(payload)
        self.at += length + 8
        return payload

    def integers(self):
        payload = self.record()
        return struct.unpack(f"={len(payload) // 4}i", payload)


def read_blocks(content, iblank=False):
    """Extents, points (x, y, z) and blanking of each block."""
    reader = Reader(content)
    (count,) = reader.integers()
    extents = reader.integers()
    blocks = []
    for b in range(count):
        shape = extents[3 * b:3 * b + 3]
        points = math.prod(shape)
        payload = reader.record()
        assert len(payload) == points * (16 if iblank else 12)
        values = struct.unpack_from(f"={3 * points}f", payload)
        blanking = struct.unpack_from(f"={points}i", payload, 12 * points) if iblank else None
        blocks.append((shape, list(zip(values[:points], values[points:2 * points],
                                       values[2 * points:])), blanking))
    assert reader.at == len(content)
    return blocks


def triple_product(a, b, c):
    return (a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2])
            + a[2] * (b[0] * c[1] - b[1] * c[0]))


class Sample(ToolTest):
    def setUp(self):
        super().setUp()
        self.output = self.succeed("sample", "case")
        self.blocks = read_blocks(self.path("case/grid.p3d").read_bytes())

    def point(self, block, i, j, k):
        shape, points, _ = self.blocks[block]
        return points[(k * shape[1] + j) * shape[0] + i]

    def test_files_and_what_is_said_of_them(self):
        self.assertEqual(sorted(os.listdir(self.path("case"))), FILES)
        for name in FILES:
            self.assertIn(f"case/{name}: 3 blocks, 14225 points, ", self.output)
        self.assertEqual([shape for shape, _, _ in self.blocks],
                         [(49, 25, 5), (41, 25, 5), (35, 17, 5)])

    def test_quiet_still_says_what_was_written(self):
        self.assertEqual(self.succeed("sample", "--quiet", "other").count("\n"), 3)

    def test_wall_and_outer_ring_are_circles(self):
        for block in (0, 1):
            (i_points, j_points, _), _, _ = self.blocks[block]
            for i in range(i_points):
                self.assertAlmostEqual(math.hypot(*self.point(block, i, 0, 0)[:2]), 1, 6)
                self.assertAlmostEqual(math.hypot(*self.point(block, i, j_points - 1, 4)[:2]), 8, 5)

    def test_upper_and_lower_half_meet_in_the_same_points(self):
        for k in range(5):
            for j in range(25):
                self.assertEqual(self.point(0, 48, j, k), self.point(1, 0, j, k))
                self.assertEqual(self.point(0, 0, j, k), self.point(1, 40, j, k))
        self.assertGreater(self.point(0, 24, 3, 0)[1], 0)
        self.assertLess(self.point(1, 20, 3, 0)[1], 0)

    def test_cells_are_right_handed(self):
        def step(block, at, to):
            return [b - a for a, b in zip(self.point(block, *at), self.point(block, *to))]

        for block, (shape, _, _) in enumerate(self.blocks):
            for i in range(shape[0] - 1):
                for j in range(shape[1] - 1):
                    volume = triple_product(step(block, (i, j, 0), (i + 1, j, 0)),
                                            step(block, (i, j, 0), (i, j + 1, 0)),
                                            step(block, (i, j, 0), (i, j, 1)))
                    self.assertGreater(volume, 0)

    def test_blanking_marks_the_wake_points_inside_the_ring(self):
        blanked = read_blocks(self.path("case/grid-iblank.p3d").read_bytes(), iblank=True)
        for (shape, points, _), (same_shape, same_points, _) in zip(self.blocks, blanked):
            self.assertEqual((shape, points), (same_shape, same_points))
        for _, _, blanking in blanked[:2]:
            self.assertEqual(set(blanking), {1})
        _, points, blanking = blanked[2]
        for (x, y, _), value in zip(points, blanking):
            self.assertEqual(value, 0 if math.hypot(x, y) < 7 else 1)
        self.assertEqual(set(blanking), {0, 1})

    def test_text_holds_the_same_values(self):
        words = iter(self.path("case/grid.txt").read_text().split())
        self.assertEqual(int(next(words)), 3)
        shapes = [tuple(int(next(words)) for _ in range(3)) for _ in range(3)]
        self.assertEqual(shapes, [shape for shape, _, _ in self.blocks])
        for _, points, _ in self.blocks:
            for component in range(3):
                for point in points:
                    self.assertEqual(struct.pack("=f", float(next(words))),
                                     struct.pack("=f", point[component]))
        self.assertIsNone(next(words, None))

    def test_files_that_are_there_are_kept_unless_told(self):
        self.write("case/grid.txt", b"mine")
        self.path("case/grid.p3d").unlink()
        self.fail_with(2, "sample", "case", says=("case/grid-iblank.p3d", "--replace"))
        self.assertEqual(self.path("case/grid.txt").read_bytes(), b"mine")
        self.assertFalse(self.path("case/grid.p3d").exists())
        self.succeed("sample", "case", "--replace")
        self.assertGreater(self.path("case/grid.txt").stat().st_size, 1000)
        self.assertEqual(sorted(os.listdir(self.path("case"))), FILES)

    def test_folders_are_made(self):
        self.succeed("sample", "a/b/c")
        self.assertEqual(sorted(os.listdir(self.path("a/b/c"))), FILES)
        self.succeed("sample", self.path("d" * 200))

    def test_places_that_cannot_be_a_folder(self):
        self.write("file", b"")
        self.fail_with(2, "sample", "file", says="file: ")
        self.fail_with(2, "sample", "file/below", says="file/below: ")
        self.path("closed").mkdir(mode=0o555)
        with self.unprivileged() as user:
            self.fail_with(2, "sample", "closed/case", says=("closed/case", "Permission denied"),
                           **user)
            self.fail_with(2, "sample", "closed", says=("closed/", "Permission denied"), **user)


if __name__ == "__main__":
    main()
