"""p3dgrid sample: its files and their grid."""

import math
import os
import struct

from support import ToolTest, main

GRID_FILES = ["grid-iblank.p3d", "grid.p3d", "grid.txt"]
SOLUTION_FILES = ["flow-1.rst", "flow-100.txt", "flow.f", "flow.q"]
UPPER_FILES = ["upper-101.rst", "upper-102.rst", "upper.p3d"]
FILES = sorted([*GRID_FILES, *SOLUTION_FILES, *UPPER_FILES])


class Reader:
    """Reads records of an unformatted single-precision file."""

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
        for name in (*GRID_FILES, *SOLUTION_FILES):
            self.assertIn(f"case/{name}: 3 blocks, 14225 points, ", self.output)
        for name in UPPER_FILES:
            self.assertIn(f"case/{name}: 1 block, 6125 points, ", self.output)
        self.assertEqual([shape for shape, _, _ in self.blocks],
                         [(49, 25, 5), (41, 25, 5), (35, 17, 5)])

    def test_quiet_still_says_what_was_written(self):
        self.assertEqual(self.succeed("sample", "--quiet", "other").count("\n"), len(FILES))

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

    def test_solution_file_of_the_user_is_kept_too(self):
        self.path("mine").mkdir()
        self.write("mine/upper-102.rst", b"mine")
        self.fail_with(2, "sample", "mine", says=("mine/upper-102.rst", "--replace"))
        self.assertEqual(os.listdir(self.path("mine")), ["upper-102.rst"])


def close(found, expected):
    return abs(found - expected) <= 3e-6 * max(1, abs(expected))


def velocity(x, y):
    """Potential flow past a circle of radius 1, from the complex velocity 1 - 1/z^2."""
    conjugate = 1 - 1 / complex(x, y) ** 2
    return conjugate.real, -conjugate.imag


class Flow(ToolTest):
    MACH, GAMMA = 0.2, 1.4

    def setUp(self):
        super().setUp()
        self.succeed("sample", "case")
        self.blocks = read_blocks(self.path("case/grid.p3d").read_bytes())
        self.shapes = [shape for shape, _, _ in self.blocks]

    def reader(self, name):
        return Reader(self.path("case/" + name).read_bytes())

    def gas(self, x, y):
        """Density, velocity and pressure from the isentropic relations."""
        u, v = (self.MACH * component for component in velocity(x, y))
        def total(mach_squared):
            return 1 + (self.GAMMA - 1) / 2 * mach_squared
        # Local Mach number from the energy equation: the speed of sound falls as the speed rises.
        sound_squared = total(self.MACH ** 2) - (self.GAMMA - 1) / 2 * (u * u + v * v)
        ratio = total(self.MACH ** 2) / total((u * u + v * v) / sound_squared)
        density = ratio ** (1 / (self.GAMMA - 1))
        pressure = ratio ** (self.GAMMA / (self.GAMMA - 1)) / self.GAMMA
        return density, u, v, pressure

    def solution(self, x, y):
        density, u, v, pressure = self.gas(x, y)
        return (density, density * u, density * v, 0,
                pressure / (self.GAMMA - 1) + density * (u * u + v * v) / 2)

    def functions(self, x, y):
        density, u, v, pressure = self.gas(x, y)
        return ((pressure - 1 / self.GAMMA) / (self.MACH ** 2 / 2),
                math.hypot(u, v) / math.sqrt(self.GAMMA * pressure / density),
                self.MACH * (complex(x, y) + 1 / complex(x, y)).imag)

    def assert_variables(self, values, points, formula):
        """`values` holds each variable of the formula at all of the points."""
        count = len(values) // len(points)
        self.assertEqual(len(values), count * len(points))
        for n, (x, y, _) in enumerate(points):
            expected = formula(x, y)
            self.assertEqual(len(expected), count)
            for v in range(count):
                self.assertTrue(close(values[v * len(points) + n], expected[v]),
                                (x, y, v, values[v * len(points) + n], expected[v]))

    def assert_body(self, reader, formula, parameters=False):
        for _, points, _ in self.blocks:
            if parameters:
                self.assertEqual(struct.unpack("=4f", reader.record()),
                                 (struct.unpack("=f", struct.pack("=f", 0.2))[0], 0, 0, 100))
            payload = reader.record()
            self.assert_variables(struct.unpack(f"={len(payload) // 4}f", payload), points,
                                  formula)
        self.assertEqual(reader.at, len(reader.content))

    def test_solution(self):
        reader = self.reader("flow.q")
        self.assertEqual(reader.integers(), (3,))
        self.assertEqual(reader.integers(), sum(self.shapes, ()))
        self.assert_body(reader, self.solution, parameters=True)

    def test_functions(self):
        reader = self.reader("flow.f")
        self.assertEqual(reader.integers(), (3,))
        self.assertEqual(reader.integers(), sum(((*shape, 3) for shape in self.shapes), ()))
        self.assert_body(reader, self.functions)

    def test_time_step_layout(self):
        reader = self.reader("flow-1.rst")
        self.assertEqual(struct.unpack("=ifi", reader.record()), (400, 0.25, 3))
        for shape in self.shapes:
            self.assertEqual(reader.integers(), shape)
        self.assert_body(reader, self.solution)

    def with_triplets(self, x, y):
        _, u, v, _ = self.gas(x, y)
        return (u, v, 0, *self.solution(x, y))

    def test_layout_100_as_text(self):
        words = [float(word) for word in self.path("case/flow-100.txt").read_text().split()]
        self.assertEqual(words[:3], [400, 0.25, 3])
        at = 3
        for _, points, _ in self.blocks:
            values = words[at:at + 8 * len(points)]
            self.assert_variables(values, points, self.with_triplets)
            at += len(values)
        self.assertEqual(at, len(words))

    def test_layouts_of_one_block(self):
        self.blocks = self.blocks[:1]
        self.assertEqual(read_blocks(self.path("case/upper.p3d").read_bytes()), self.blocks)
        self.assert_body(self.reader("upper-102.rst"), self.solution)
        reader = self.reader("upper-101.rst")
        self.assertEqual(struct.unpack("=4if", reader.record()), (*self.shapes[0], 400, 0.25))
        payload = reader.record()
        self.assert_variables(struct.unpack(f"={len(payload) // 4}f", payload),
                              self.blocks[0][1], self.with_triplets)
        self.assertEqual(reader.integers(), (999,))
        self.assertEqual(reader.at, len(reader.content))

    def test_flow_does_not_pass_through_the_wall(self):
        for x, y, _ in self.blocks[0][1][:49]:
            _, u, v, _ = self.gas(x, y)
            self.assertAlmostEqual(u * x + v * y, 0, 6)
            self.assertAlmostEqual(self.functions(x, y)[2], 0, 6)

    def test_every_file_is_read_back(self):
        for name, options in (("flow.q", ["--layout", "2"]), ("flow.f", ["--layout", "3"]),
                              ("flow-1.rst", ["--layout", "1"]),
                              ("flow-100.txt", ["--layout", "100", "--restart-format",
                                                "formatted"])):
            self.succeed("info", "case/" + name, *options, "--grid", "case/grid.p3d")
        for layout in (101, 102):
            self.succeed("info", f"case/upper-{layout}.rst", "--layout", layout, "--grid",
                         "case/upper.p3d")


if __name__ == "__main__":
    main()
