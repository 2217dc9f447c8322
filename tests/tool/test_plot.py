"""p3dgrid plot: the contents of pictures, by their pixels."""

import functools
import math
import pathlib
import struct
import zlib

from restart_support import RestartForm, Solution, restart_bytes
from support import Block, Form, ToolTest, main

WHITE = (255, 255, 255)
NAMES = "rho (density), x-momentum, y-momentum, z-momentum, energy, u, v, w, p (pressure), mach"
GREY = (0xb4, 0xb4, 0xb4)
GAMMA = 1.4


class Picture:
    """A PNG file of 8-bit red, green and blue, as rows of pixels."""

    def __init__(self, path):
        content = pathlib.Path(path).read_bytes()
        assert content[:8] == b"\x89PNG\r\n\x1a\n"
        at, packed = 8, b""
        while at < len(content):
            length, kind = struct.unpack(">I4s", content[at:at + 8])
            data = content[at + 8:at + 8 + length]
            if kind == b"IHDR":
                self.width, self.height, depth, colours = struct.unpack(">IIBB", data[:10])
                assert (depth, colours) == (8, 2)
            if kind == b"IDAT":
                packed += data
            at += 12 + length
        self.packed = packed

    @functools.cached_property
    def rows(self):
        raw = zlib.decompress(self.packed)
        stride, rows, above = 3 * self.width, [], bytearray(3 * self.width)
        for y in range(self.height):
            start = y * (stride + 1)
            kind, line = raw[start], bytearray(raw[start + 1:start + 1 + stride])
            for n in range(stride):
                left = line[n - 3] if n >= 3 else 0
                corner = above[n - 3] if n >= 3 else 0
                line[n] = (line[n] + self.predicted(kind, left, above[n], corner)) & 255
            rows.append(line)
            above = line
        return rows

    @staticmethod
    def predicted(kind, left, up, corner):
        if kind == 4:
            estimate = left + up - corner
            return min((abs(estimate - left), 0, left), (abs(estimate - up), 1, up),
                       (abs(estimate - corner), 2, corner))[2]
        return (0, left, up, (left + up) // 2)[kind]

    def pixel(self, x, y):
        return tuple(self.rows[y][3 * x:3 * x + 3])

    def inner(self):
        """Corners of the area inside the frame of a flat view. The frame has the longest dark
        lines."""
        def dark(pixel):
            return max(pixel) < 0x50
        middle = self.height // 2
        columns = [x for x in range(self.width) if dark(self.pixel(x, middle)) and
                   dark(self.pixel(x, middle + 40)) and dark(self.pixel(x, middle - 40))]
        left, right = columns[0], next(x for x in columns if x > columns[0] + 100)
        across = (left + right) // 2
        rows = [y for y in range(self.height) if all(
            dark(self.pixel(x, y)) for x in range(left + 2, right - 2, 7))]
        return left + 1, rows[0] + 1, right, rows[-1]

    def share(self, across, up):
        """The pixel at these shares of the width and height of the frame."""
        left, top, right, bottom = self.inner()
        return self.pixel(round(left + across * (right - left)), round(bottom - up * (bottom - top)))


def plane(columns=5, rows=5, iblank=None, at=lambda i, j: (i, j, 0)):
    """One block of one plane with unit spacing."""
    points = [at(i, j) for j in range(rows) for i in range(columns)]
    return Block((columns, rows, 1), *zip(*points), iblank)


def light(pixel):
    red, green, blue = pixel
    return 0.2126 * red + 0.7152 * green + 0.0722 * blue


class PlotTest(ToolTest):
    def write_flow(self, blocks, *variables, **form):
        """A solution of one block, or of identical blocks."""
        flow = [[list(v) for v in variables] for _ in blocks]
        solution = Solution([block.extents for block in blocks], flow)
        self.write("flow", restart_bytes(RestartForm(**form), solution))

    def plot(self, *arguments):
        """Draws a small picture; returns its summary line and the picture."""
        said = self.succeed("plot", *arguments, "--width", "600")
        self.assert_no_leftovers()
        out = next(str(word) for word in arguments if str(word).endswith(".png"))
        line = said.splitlines()[-1]
        self.assertTrue(line.startswith(out + ": "), line)
        return line[len(out) + 2:], Picture(self.path(out))


class Mesh(PlotTest):
    def test_lines_where_points_are(self):
        self.write_grid("grid", blocks=[plane(3, 3)])
        said, picture = self.plot("grid", "out.png")
        self.assertEqual(said, "mesh")
        self.assertLessEqual(picture.width, 601)
        left, top, right, bottom = picture.inner()
        self.assertEqual(right - left, bottom - top)  # true proportions
        middle_x, middle_y = (left + right) // 2, (top + bottom) // 2
        self.assertTrue(any(picture.pixel(middle_x + x, middle_y + y) != WHITE
                            for x in (-1, 0, 1) for y in (-1, 0, 1)))
        for across, up in ((0.25, 0.25), (0.75, 0.25), (0.25, 0.75), (0.01, 0.5), (0.5, 0.99)):
            self.assertEqual(picture.share(across, up), WHITE)

    def test_true_proportions(self):
        self.write_grid("grid", blocks=[plane(9, 3)])
        left, top, right, bottom = self.plot("grid", "out.png")[1].inner()
        padding = 2 * 0.8 * 600 / 62
        self.assertAlmostEqual((right - left - padding) / (bottom - top - padding), 4, delta=0.15)

    def test_what_is_too_thin_to_see_is_enlarged(self):
        for name, at in (("y", lambda i, j: (1000 * i, 7 + 1e-3 * j, 0)),
                         ("z", lambda i, j: (1000 * i, 0, 1e-3 * j))):
            with self.subTest(name):
                self.write_grid("grid", blocks=[plane(at=at)])
                said, picture = self.plot("grid", "out.png")
                self.assertEqual(said, f"mesh, {name} enlarged 200000 times")
                left, top, right, bottom = picture.inner()
                padding = 2 * 0.8 * 600 / 62
                self.assertAlmostEqual((right - left - padding) / (bottom - top - padding), 5,
                                       delta=0.5)
                self.assertEqual(picture.share(0.6, 0.6), WHITE)
        self.write_grid("grid", blocks=[plane(at=lambda i, j: (1e-3 * j, i, 3))])
        self.assertEqual(self.plot("grid", "out.png")[0], "mesh, x enlarged 200 times")
        # A thickness of one hundredth is not enlarged, nor is a plate without thickness.
        self.write_grid("grid", blocks=[plane(at=lambda i, j: (100 * i, 1.01 * j, 0))])
        self.assertEqual(self.plot("grid", "out.png")[0], "mesh")
        points = [(i, j, k / 1000) for k in range(2) for j in range(3) for i in range(3)]
        self.write_grid("grid", blocks=[Block((3, 3, 2), *zip(*points))])
        self.assertEqual(self.plot("grid", "out.png")[0], "mesh, drawn without z, from 0 to 0.001")
        points = [(i, j / 1000, k / 2000) for k in range(2) for j in range(3) for i in range(3)]
        self.write_grid("grid", blocks=[Block((3, 3, 2), *zip(*points))])
        said, picture = self.plot("grid", "out.png")
        self.assertEqual(said, "mesh, y and z enlarged 200 times")
        blue = sum(picture.pixel(x, y)[2] > picture.pixel(x, y)[0] + 20
                   for y in range(picture.height) for x in range(picture.width))
        self.assertGreater(blue, 1000)

    def test_blanked_points_are_left_out(self):
        used = [1] * 25
        used[0] = 0  # a corner
        self.write_grid("grid", Form(iblank=True), [plane(iblank=used)])
        first_line = (0.16, 0.05)  # between the first two points of the lowest line
        last_line = (0.84, 0.05)
        for options, drawn in ((("--grid-iblank", "no"), True), ((), False)):
            with self.subTest(options=options):
                picture = self.plot("grid", "out.png", *options)[1]
                self.assertEqual(self.has_ink(picture, *first_line), drawn)
                self.assertTrue(self.has_ink(picture, *last_line))

    @staticmethod
    def has_ink(picture, across, up):
        left, top, right, bottom = picture.inner()
        x = round(left + across * (right - left))
        y = round(bottom - up * (bottom - top))
        return any(picture.pixel(x, y + d) != WHITE for d in range(-12, 22) if y + d < bottom)

    def test_planes_and_blocks(self):
        solid = Block((3, 4, 2), *zip(*[(i, j, k) for k in range(2) for j in range(4)
                                        for i in range(3)]))
        self.write_grid("grid", blocks=[solid, plane()])
        self.assertEqual(self.plot("grid", "a.png")[0], "mesh")
        self.assertEqual(self.plot("grid", "b.png", "--plane", "k=1")[0], "mesh, plane k=1")
        self.assertEqual(self.plot("grid", "c.png", "--plane", "i=last", "--block", "1")[0],
                         "mesh, plane i=last, block 1")
        said = self.run_tool("plot", "grid", "d.png", "--plane", "k=2")
        self.assertEqual(said.returncode, 0)
        self.assertIn("note: grid: 1 block of 2 without a surface k=2\n", said.stderr_text)
        for wrong, says in ((("--plane", "k=3"), "there is no surface k=3"),
                            (("--block", "3"), "holds 2 blocks; there is no --block 3"),
                            (("--plane", "i=1", "--block", "2"), "there is no surface i=1")):
            with self.subTest(wrong=wrong):
                self.fail_with(2, "plot", "grid", "e.png", *wrong, says=says)
                self.assertFalse(self.path("e.png").exists())
                self.assert_no_leftovers()

    def test_any_view(self):
        self.write_grid("grid", blocks=[plane()])
        for view in (("0", "0"), ("90", "0"), ("-60", "90"), ("200", "-35")):
            with self.subTest(view=view):
                self.plot("grid", "out.png", "--view", *view)

    def test_far_from_the_origin(self):
        """Lines are drawn completely on their surfaces, and long labels stay on the page."""
        def block(*origin):
            points = [(k, j, i) for k in range(5) for j in range(9) for i in range(9)]
            return Block((9, 9, 5), *([first + 8 * point[2 - c] for point in points]
                                      for c, first in enumerate(origin)))
        drawn = []
        for origin in ((0, 0, 0), (8e6, 1e7, -4e6)):
            self.write_grid("grid", blocks=[block(*origin)])
            _, picture = self.plot("grid", "out.png")
            edges = [picture.pixel(x, y) for y in range(picture.height)
                     for x in (*range(5), *range(picture.width - 5, picture.width))]
            self.assertEqual(set(edges), {WHITE})
            blue = sum(picture.pixel(x, y)[2] > picture.pixel(x, y)[0] + 40
                       for y in range(picture.height) for x in range(picture.width))
            drawn.append(blue / picture.width)
        self.assertGreater(drawn[1], 0.7 * drawn[0])

    def test_blocks_that_are_lines_and_points(self):
        for extents in ((5, 1, 1), (1, 5, 1), (1, 1, 5)):
            line = Block(extents, range(5), [0, 0, math.nan, 0, 0], [0] * 5)
            point = Block((1, 1, 1), [2], [1], [0])
            self.write_grid("grid", blocks=[line, plane(2, 2, at=lambda i, j: (i, 3 + j, 0)), point])
            said, picture = self.plot("grid", "out.png")
            self.assertTrue(said.startswith("mesh, cells left out"))
            for across, up, drawn in ((0.15, 0.05, True), (0.5, 0.05, False), (0.85, 0.05, True),
                                      (0.5, 0.27, True), (0.85, 0.5, False)):
                self.assertEqual(self.has_ink(picture, across, up), drawn, (across, up))
        self.fail_with(2, "plot", "grid", "out.png", "--plane", "k=1", "--block", "1",
                       says="there is no surface k=1")
        line = Block((5, 1, 1), range(5), [0, 1, 1, 1, 0], [0] * 5)
        self.write_grid("grid", blocks=[line])
        self.write_flow([line], *[[0, 2, 2, 2, 4]] * 5)
        said, picture = self.plot("grid", "flow", "out.png")
        self.assertEqual(said, "variable 1, from 0 to 4")
        colours = {picture.pixel(x, y) for x in range(*picture.inner()[::2]) for y in
                   range(*picture.inner()[1::2])}
        self.assertGreater(len(colours), 4)  # paper, and more than one for the values

    def test_points_that_are_nowhere(self):
        """A remark names them; blanked points need none."""
        block = plane(at=lambda i, j: (math.nan if (i, j) == (2, 2) else i, j, 0))
        says = ", cells left out where a point is infinite or no number"
        self.write_grid("grid", blocks=[block])
        said, picture = self.plot("grid", "out.png")
        self.assertEqual(said, "mesh" + says)
        self.write_flow([block], *[range(1, 26)] * 5)
        self.assertEqual(self.plot("grid", "flow", "out.png")[0], "variable 1, from 1 to 25" + says)
        block.iblank[12] = 0
        self.write_grid("grid", Form(iblank=True), blocks=[block])
        said, without = self.plot("grid", "out.png")
        self.assertEqual(said, "mesh")
        self.assertNotEqual(picture.rows[20:60], without.rows[20:60])  # the words below the title

    def test_odd_places(self):
        """Grids without a common scale, and values that are not finite."""
        nan, inf = math.nan, math.inf
        flat = {
            "far": lambda i, j: (i, j, 1e30), "far in plane": lambda i, j: (1e30 + i, j, 0),
            "huge": lambda i, j: (1e38 * i / 5, -1e38 * j / 5, 0), "tiny": lambda i, j: (1e-40 * i, 1e-40 * j, 0),
            "line": lambda i, j: (0, 0, i), "sliver": lambda i, j: (1000 * i, 1e-3 * j, 0),
            "holes": lambda i, j: (nan if i == 0 else i, inf if j == 4 else j, 0),
            "twisted": lambda i, j: (i * (-1) ** j, j, 0),
        }
        for name, at in flat.items():
            with self.subTest(name=name):
                self.write_grid("grid", blocks=[plane(at=at)])
                self.plot("grid", "out.png")
        for name, at, says in (("point", lambda i, j: (1, 2, 3), "at one place"),
                               ("nothing", lambda i, j: (nan, 0, 0), "not finite")):
            with self.subTest(name=name):
                self.write_grid("grid", blocks=[plane(at=at)])
                self.fail_with(1, "plot", "grid", "out.png", says=says)


class Contour(PlotTest):
    def test_colours_follow_the_values(self):
        block = plane()
        self.write_grid("grid", blocks=[block])
        self.write_flow([block], block.xyz[0], *[[1] * 25] * 4)
        said, picture = self.plot("grid", "flow", "out.png", "--variable", "1")
        self.assertEqual(said, "variable 1, from 0 to 4")
        row = [picture.share(x / 20, 0.5) for x in range(2, 19)]
        lights = [light(pixel) for pixel in row]
        self.assertEqual(lights, sorted(lights))
        self.assertGreater(lights[-1] - lights[0], 100)
        self.assertGreater(len(set(row)), 8)
        # The same for the whole height.
        self.assertEqual(len({picture.share(0.53, y / 10) for y in range(2, 9)}), 1)

    def test_no_number_is_grey_and_blanked_is_nothing(self):
        used = [1] * 25
        used[24] = 0  # upper right
        block = plane(iblank=used)
        self.write_grid("grid", Form(iblank=True), [block])
        values = list(range(25))
        values[0] = math.nan  # lower left
        self.write_flow([block], values, *[[1] * 25] * 4)
        said, picture = self.plot("grid", "flow", "out.png", "--grid-iblank", "yes",
                                  "--variable", "rho")
        self.assertEqual(said, "rho, from 1 to 23, infinite or no number in places")
        self.assertEqual(picture.share(0.15, 0.15), GREY)
        self.assertEqual(picture.share(0.85, 0.85), WHITE)
        self.assertNotIn(picture.share(0.5, 0.5), (GREY, WHITE))

    def test_derived_variables(self):
        block = plane()
        self.write_grid("grid", blocks=[block])
        rho = [1 + 0.1 * n for n in range(25)]
        momentum = [[0.3 * n for n in range(25)], [-0.1 * n for n in range(25)], [0.5] * 25]
        energy = [20 + 0.5 * n * n for n in range(25)]
        self.write_flow([block], rho, *momentum, energy)

        def pressure(n, gamma):
            square = sum(m[n] ** 2 for m in momentum)
            return (gamma - 1) * (energy[n] - square / (2 * rho[n]))

        def mach(n, gamma):
            speed = math.sqrt(sum(m[n] ** 2 for m in momentum)) / rho[n]
            return speed / math.sqrt(gamma * pressure(n, gamma) / rho[n])

        expected = {"rho": lambda n, g: rho[n], "u": lambda n, g: momentum[0][n] / rho[n],
                    "v": lambda n, g: momentum[1][n] / rho[n],
                    "w": lambda n, g: momentum[2][n] / rho[n], "p": pressure, "mach": mach}
        for name, formula in expected.items():
            for gamma in (1.4, 1.25):
                with self.subTest(variable=name, gamma=gamma):
                    values = [formula(n, gamma) for n in range(25)]
                    said = self.plot("grid", "flow", "out.png", "--variable", name, "--gamma",
                                     gamma)[0]
                    low, high = said.removeprefix(name + ", from ").split(" to ")
                    self.assertAlmostEqual(float(low) / min(values, key=float), 1, delta=2e-4) \
                        if min(values) else self.assertEqual(float(low), 0)
                    self.assertAlmostEqual(float(high), max(values),
                                           delta=2e-4 * abs(max(values)) + 1e-7)

    def test_other_names_of_variables(self):
        self.write_grid("grid", blocks=[plane()])
        self.write_flow([plane()], *[[n * value for n in range(1, 26)] for value in (1, 2, 3, 4, 90)])

        def shown(name):
            said = self.plot("grid", "flow", "out.png", "--variable", name)[0]
            return said, self.path("out.png").read_bytes()

        self.assertEqual(shown("density"), shown("rho"))
        self.assertEqual(shown("pressure"), shown("p"))
        for number, name in enumerate(("x-momentum", "y-momentum", "z-momentum", "energy"), 2):
            by_name, by_number = shown(name), shown(number)
            self.assertEqual(by_name[0], by_number[0].replace(f"variable {number}", name))
            self.assertEqual(by_name[1], by_number[1])

    def test_every_layout_shows_its_variables(self):
        block = plane()
        self.write_grid("grid", blocks=[block])
        ones = [1] * 25
        for layout in (1, 2, 3, 100, 101, 102):
            for encoding, double in (("unformatted", False), ("binary", True), ("formatted", False)):
                if layout == 100 and encoding == "unformatted":
                    continue  # is read without triplets, and here it has them
                form = {"layout": layout, "encoding": encoding, "double": double}
                with self.subTest(**form):
                    self.write_flow([block], ones, ones, ones, ones, range(25), **form)
                    said = self.plot("grid", "flow", "out.png", "--variable", "5",
                                     *RestartForm(**form).options())[0]
                    self.assertEqual(said, "variable 5, from 0 to 24")

    def test_every_block_has_its_own_values(self):
        blocks = [plane(), plane(at=lambda i, j: (i + 10, j, 0))]
        self.write_grid("grid", blocks=blocks)
        ones = [1] * 25
        flow = [[[n + 100 * b for n in range(25)], ones, ones, ones, ones] for b in range(2)]
        self.write("flow", restart_bytes(
            RestartForm(), Solution([block.extents for block in blocks], flow)))
        for options, said in (((), "variable 1, from 0 to 124"),
                              (("--block", "1"), "variable 1, block 1, from 0 to 24"),
                              (("--block", "2"), "variable 1, block 2, from 100 to 124")):
            self.assertEqual(self.plot("grid", "flow", "out.png", *options)[0], said)

    def test_planes_are_cut_where_they_are(self):
        extents = (3, 4, 5)
        points = [(i, j, k) for k in range(5) for j in range(4) for i in range(3)]
        block = Block(extents, *zip(*points))
        self.write_grid("grid", blocks=[block])
        ones = [1] * 60
        self.write_flow([block], [100 * i + 10 * j + k for i, j, k in points], *[ones] * 4)
        for option, said in (("i=2", "from 100 to 134"), ("j=last", "from 30 to 234"),
                             ("k=3", "from 2 to 232"), ("k=5", "from 4 to 234")):
            self.assertEqual(self.plot("grid", "flow", "out.png", "--plane", option)[0],
                             f"variable 1, plane {option}, {said}")

    def test_one_value_everywhere(self):
        block = plane()
        self.write_grid("grid", blocks=[block])
        for value in (0, 0.7, -3e30):
            self.write_flow([block], *[[value] * 25] * 5)
            said, picture = self.plot("grid", "flow", "out.png")
            self.assertEqual(said, f"variable 1, {value:.5g} everywhere")
            self.assertEqual(len({picture.share(x / 10, 0.5) for x in range(2, 9)}), 1)

    def test_values_that_hardly_differ(self):
        block = plane()
        self.write_grid("grid", blocks=[block])
        self.write_flow([block], *[[1 + n / 2**19 for n in range(25)]] * 5)
        self.assertEqual(self.plot("grid", "flow", "out.png")[0],
                         "variable 1, from 1 to 1.00005")


def brick(counts, at=lambda i, j, k: (i, j, k), iblank=None):
    """One block with unit spacing."""
    points = [at(i, j, k) for k in range(counts[2]) for j in range(counts[1])
              for i in range(counts[0])]
    return Block(counts, *zip(*points), iblank)


class Parts(PlotTest):
    """A box, several planes, cuts, and the quality of cells."""

    def test_box(self):
        # The cell at the origin is one of 100 x 100.
        self.write_grid("grid", blocks=[plane(101, 101)])
        said, picture = self.plot("grid", "out.png", "--box", "0:1,0:2")
        left, top, right, bottom = picture.inner()
        padding = 2 * 0.8 * 600 / 62
        self.assertAlmostEqual((bottom - top - padding) / (right - left - padding), 2, delta=0.1)
        self.assertEqual(picture.share(0.5, 0.25), WHITE)  # inside a cell
        # Missing surfaces are not shown.
        self.assertEqual(self.plot("grid", "out.png", "--box", "-50:1,-50:2")[1].rows,
                         picture.rows)
        self.fail_with(1, "plot", "grid", "out.png", "--box", "-9:-8,0:1",
                       says="outside the box")

    def test_values_are_those_in_the_box(self):
        self.write_grid("grid", blocks=[plane(11, 11)])
        self.write_flow([plane(11, 11)], [n % 11 for n in range(121)], layout=3)
        said, _ = self.plot("grid", "flow", "out.png", "--box", "2.4:4.6,0:10")
        self.assertEqual(said, "variable 1, from 2 to 5")

    def test_box_ends_surfaces_of_any_view(self):
        """Cells extend beyond the box; the drawing does not."""
        self.write_grid("grid", blocks=[brick((3, 3, 3), lambda i, j, k: (4 * i, 4 * j, 4 * k))])
        self.write_flow([brick((3, 3, 3))], [1] * 27, layout=3)
        view = ("--view", "-60", "25", "--plane", "k=1")
        picture = self.plot("grid", "flow", "out.png", "--box", "3:5,3:5,-1:1", *view)[1]
        self.write_grid("exact", blocks=[plane(3, 3, at=lambda i, j: (3 + i, 3 + j, 0))])
        self.write_flow([plane(3, 3)], [1] * 9, layout=3)
        wanted = self.plot("exact", "flow", "exact.png", *view)[1]

        def coloured(picture):
            return sum(max(picture.pixel(x, y)) - min(picture.pixel(x, y)) > 40
                       for y in range(picture.height) for x in range(picture.width))
        self.assertAlmostEqual(coloured(picture) / coloured(wanted), 1, delta=0.02)

    def test_box_cuts_values_and_lines(self):
        """Planes through the middle of a box, once cut from larger cells. A small block gives both
        pictures the same range of values."""
        small = brick((2, 2, 2), lambda i, j, k: (4.9 + i / 20, 4.9 + j / 20, 4.9 + k / 20))
        pictures = {}
        for name, size, box in (("large", 4, ("--box", "3:5,3:5,3:5")), ("exact", 1, ())):
            block = brick((3, 3, 3), lambda i, j, k, size=size: (
                4 + size * (i - 1), 4 + size * (j - 1), 4 + size * (k - 1)))
            self.write_grid("grid", blocks=[block, small])
            values = [x + 2 * y + 4 * z for x, y, z in zip(*block.xyz)]
            self.write("flow", restart_bytes(RestartForm(3), Solution(
                [(3, 3, 3), (2, 2, 2)], [[values], [[0, 56] * 4]])))
            view = ("--view", "-60", "25", *box, "--plane")
            pictures[name] = (self.plot("grid", "flow", "out.png", *view, "i=2,j=2,k=2")[1],
                              self.plot("grid", "out.png", *view, "k=2")[1])

        def differing(number, differ):
            one, other = pictures["large"][number], pictures["exact"][number]
            self.assertEqual((one.width, one.height), (other.width, other.height))
            return sum(differ(one.pixel(x, y), other.pixel(x, y))
                       for y in range(one.height) for x in range(one.width))
        self.assertLess(differing(0, lambda a, b: max(map(abs, map(int.__sub__, a, b))) > 60), 1500)
        self.assertEqual(differing(1, lambda a, b: a != WHITE and b == WHITE), 0)

    def test_lines_that_pass_a_corner_of_the_box(self):
        self.write_grid("grid", blocks=[plane(3, 3, at=lambda i, j: (8 * (i - j), 8 * (i + j), 0))])
        view = ("--view", "-60", "25", "--plane", "k=1")
        picture = self.plot("grid", "out.png", "--box", "1:3,3.2:5.2,-1:1", *view)[1]
        self.write_grid("grid", blocks=[plane(3, 3, at=lambda i, j: (1 + i, 3.2 + j, 0))])
        exact = self.plot("grid", "out.png", *view)[1]
        self.assertEqual((picture.width, picture.height), (exact.width, exact.height))
        self.assertEqual([(x, y) for y in range(exact.height) for x in range(exact.width)
                          if exact.pixel(x, y) == WHITE != picture.pixel(x, y)], [])

    def test_several_planes(self):
        self.write_grid("grid", blocks=[brick((3, 3, 3))])
        self.assertEqual(self.plot("grid", "out.png", "--plane", "k=1,i=last")[0],
                         "mesh, plane k=1,i=last")
        # Planes one above the other are not drawn flat: the frame is that of a box.
        flat = self.plot("grid", "flat.png", "--plane", "k=1")[1]
        both = self.plot("grid", "both.png", "--plane", "k=1,k=3")[1]
        self.assertNotEqual(flat.rows, both.rows)
        for text in ("k=1,", "k=1,x=2", "k"):
            self.fail_with(2, "plot", "grid", "out.png", "--plane", text, says="is no grid plane")

    def test_cut_interpolates(self):
        """A variable that is linear in space has its exact values on a cut."""
        def at(i, j, k):
            return (i + 0.2 * j, j + 0.1 * k, k)

        block = brick((5, 4, 4), at)
        self.write_grid("grid", blocks=[block])
        x, y, z = block.xyz
        self.write_flow([block], [10 * a for a in x], [b + 2 * c for b, c in zip(y, z)], layout=3)
        self.assertEqual(self.plot("grid", "flow", "out.png", "--cut", "x=2.25")[0],
                         "variable 1, cut x=2.25, 22.5 everywhere")
        # y + 2z is largest at the last corner, which has x = 4.6, and smallest at the first one.
        said, picture = self.plot("grid", "flow", "out.png", "--cut", "x=2.25", "--variable", "2")
        self.assertEqual(said, "variable 2, cut x=2.25, from 0 to 9.3")
        self.assertNotEqual(picture.share(0.5, 0.5), WHITE)

    def test_cut_fills_its_area(self):
        self.write_grid("grid", blocks=[brick((4, 4, 4))])
        self.write_flow([brick((4, 4, 4))], [1] * 64, layout=3)
        picture = self.plot("grid", "flow", "out.png", "--cut", "z=1.5")[1]
        shares = [n / 20 for n in range(2, 19)]
        self.assertEqual(len({picture.share(a, u) for a in shares for u in shares}), 1)
        # A blanked point removes its eight cells, four of them at this pixel.
        used = [1] * 64
        used[1 + 4 + 16] = 0
        self.write_grid("grid", Form(iblank=True), [brick((4, 4, 4), iblank=used)])
        picture = self.plot("grid", "flow", "out.png", "--cut", "z=1.5")[1]
        self.assertEqual([picture.share(a, u) == WHITE
                          for a, u in ((0.2, 0.2), (0.5, 0.5), (0.8, 0.5), (0.8, 0.8))],
                         [True, True, False, False])

        # A point that is no number does the same.
        self.write_grid("grid", blocks=[brick((4, 4, 4), lambda i, j, k: (
            math.nan if (i, j, k) == (1, 1, 1) else i, j, k))])
        self.assertEqual(self.plot("grid", "flow", "out.png", "--cut", "z=1.5")[1].rows,
                         picture.rows)

    def test_cut_that_crosses_edges_of_two_directions(self):
        block = brick((4, 4, 4), lambda i, j, k: (i + 1.5 * k, j, k))
        self.write_grid("grid", blocks=[block])
        self.write_flow([block], block.xyz[2], [1] * 64, layout=3)
        cut = ("--cut", "x=2.75", "--variable")
        self.assertEqual(self.plot("grid", "flow", "out.png", *cut, "1")[0],
                         "variable 1, cut x=2.75, from 0 to 1.8333")
        picture = self.plot("grid", "flow", "out.png", *cut, "2")[1]
        shares = [n / 20 for n in range(2, 19)]
        self.assertEqual(len({picture.share(a, u) for a in shares for u in shares}), 1)

    def test_cut_has_an_outline(self):
        self.write_grid("grid", blocks=[brick((4, 4, 4))])
        self.write_flow([brick((4, 4, 4))], [1] * 64, layout=3)
        picture = self.plot("grid", "flow", "out.png", "--cut", "z=1.5")[1]
        left, top, right, bottom = picture.inner()
        x, y = (left + right) // 2, (top + bottom) // 2
        lines = ([picture.pixel(n, y) for n in range(left, x)],
                 [picture.pixel(n, y) for n in range(right - 1, x, -1)],
                 [picture.pixel(x, n) for n in range(top, y)],
                 [picture.pixel(x, n) for n in range(bottom - 1, y, -1)])
        (outline,) = {next(pixel for pixel in line if pixel != WHITE) for line in lines}
        self.assertEqual(len(set(outline)), 1)  # a grey, and the field has a colour
        self.assertGreater(len(set(picture.pixel(x, y))), 1)

    def test_cut_at_the_ends_of_a_block(self):
        self.write_grid("grid", blocks=[brick((3, 3, 3))])
        self.write_flow([brick((3, 3, 3))], [n // 9 for n in range(27)], layout=3)
        for place, value in (("0", 0), ("1", 1), ("2", 2)):
            said, picture = self.plot("grid", "flow", "out.png", "--cut", f"z={place}")
            self.assertEqual(said, f"variable 1, cut z={place}, {value} everywhere")
            self.assertNotEqual(picture.share(0.3, 0.3), WHITE)

    def test_cuts_that_miss(self):
        self.write_grid("grid", blocks=[brick((3, 3, 3)), plane(3, 3)])
        self.fail_with(2, "plot", "grid", "out.png", "--cut", "x=7",
                       says="grid: there is no surface x=7 to show; 'p3dgrid info' shows where")
        self.assertEqual(self.plot("grid", "out.png", "--cut", "x=0.5,y=1.5")[0],
                         "mesh, cut x=0.5,y=1.5")
        for text in ("x", "x=", "i=1", "x=nan", "x=1,"):
            self.fail_with(2, "plot", "grid", "out.png", "--cut", text, says="is no plane such as")

    def test_quality(self):
        # A shear by 45 degrees: each corner deviates by 45 degrees.
        self.write_grid("grid", blocks=[plane(at=lambda i, j: (i + j, j, 0))])
        said, picture = self.plot("grid", "out.png", "--quality", "skewness")
        self.assertEqual(said, "skewness, 0.5 everywhere")
        # Spacings 1, 3, 9: each edge is three times as long as the one before.
        self.write_grid("grid", blocks=[plane(4, at=lambda i, j: ((3 ** i - 1) / 2, j, 0))])
        self.assertEqual(self.plot("grid", "out.png", "--quality", "stretching")[0],
                         "stretching, 3 everywhere")
        # One cell differs from the others.
        self.write_grid("grid", blocks=[plane(at=lambda i, j: (i + (i == j == 4), j, 0))])
        said, picture = self.plot("grid", "out.png", "--quality", "skewness")
        self.assertEqual(said, "skewness, from 0 to 0.5")
        self.assertNotEqual(picture.share(0.7, 0.9), picture.share(0.1, 0.1))

    def test_quality_on_a_cut(self):
        """A cell that the cut crosses shows the worst of all its faces and edges."""
        # The shear is in the planes of z, the growing steps are along z.
        self.write_grid("grid", blocks=[brick((3, 3, 4), lambda i, j, k: (i + j, j, (3 ** k - 1) / 2))])
        self.assertEqual(self.plot("grid", "out.png", "--quality", "skewness", "--cut", "z=2")[0],
                         "skewness, cut z=2, 0.5 everywhere")
        self.assertEqual(self.plot("grid", "out.png", "--quality", "stretching", "--cut", "y=0.5")[0],
                         "stretching, cut y=0.5, 3 everywhere")
        # A point that is moved along y skews the cells around it, of which the cut crosses some.
        def at(i, j, k):
            return i, j + (i == j == k == 4), k
        self.write_grid("grid", blocks=[brick((5, 5, 5), at)])
        said, picture = self.plot("grid", "out.png", "--quality", "skewness", "--cut", "x=3.5")
        self.assertEqual(said, "skewness, cut x=3.5, from 0 to 0.5")
        self.assertNotEqual(picture.share(0.85, 0.9), picture.share(0.1, 0.1))
        self.assertEqual(self.plot("grid", "out.png", "--quality", "skewness", "--cut", "x=2.5")[0],
                         "skewness, cut x=2.5, 0 everywhere")

    def test_quality_of_cells_without_edges(self):
        self.write_grid("grid", blocks=[plane(at=lambda i, j: (max(i, 1), j, 0))])
        self.assertEqual(self.plot("grid", "out.png", "--quality", "skewness")[0],
                         "skewness, 0 everywhere, cells with an edge of length 0 in grey")
        self.write_flow([plane()], range(25), layout=3)
        self.fail_with(2, "plot", "grid", "flow", "out.png", "--quality", "skewness",
                       says="--quality shows the grid alone")

    def test_nearly_flat(self):
        self.write_grid("grid", blocks=[plane(at=lambda i, j: (i, j, 0.01 * (i % 2)))])
        said, picture = self.plot("grid", "out.png")
        self.assertEqual(said, "mesh, drawn without z, from 0 to 0.01")
        left, top, right, bottom = picture.inner()
        self.assertEqual(right - left, bottom - top)


class Refusals(PlotTest):
    def setUp(self):
        super().setUp()
        self.block = plane()
        self.write_grid("grid", blocks=[self.block])
        self.write_flow([self.block], *[range(1, 26)] * 5)

    def test_solution_is_not_taken_for_the_picture(self):
        before = self.path("flow").read_bytes()
        self.fail_with(2, "plot", "grid", "flow", says="must end in .png")
        self.assertEqual(self.path("flow").read_bytes(), before)
        self.write_grid("grid.png", blocks=[self.block])
        self.fail_with(2, "plot", "grid.png", "grid.png", says="grid.png")

    def test_wrong_usage(self):
        for arguments, says in (
                (("grid",), "OUT.png is required"),
                (("grid", "out.png", "--variable", "p"), "--variable applies to a restart file"),
                (("grid", "out.png", "--layout", "3"), "--layout applies to a restart file"),
                (("grid", "flow", "out.png", "--variable", "q"), NAMES),
                (("grid", "flow", "out.png", "--variable", "0"), NAMES),
                (("grid", "flow", "out.png", "--variable", ""), NAMES),
                (("grid", "flow", "out.png", "--variable", "6"), "--variable 1 to 5"),
                (("grid", "out.png", "--plane", "l=1"), "k=1"),
                (("grid", "out.png", "--plane", "k=0"), "k=1"),
                (("grid", "out.png", "--block", "0"), "--block"),
                (("grid", "out.png", "--width", "10"), "--width"),
                (("grid", "out.png", "--gamma", "0.5"), "--gamma"),
                (("grid", "out.png", "--gamma", "nan"), "--gamma")):
            with self.subTest(arguments=arguments):
                self.fail_with(2, "plot", *arguments, says=says)
                self.assertFalse(self.path("out.png").exists())

    def test_names_belong_to_solution_files(self):
        self.write_flow([self.block], *[range(1, 26)] * 3, layout=3)
        for name in ("p", "density", "energy"):
            self.fail_with(2, "plot", "grid", "flow", "out.png", "--layout", "3", "--variable", name,
                           says=("layout 2", "--variable 1 to 3"))

    def test_other_grid(self):
        self.write_grid("grid", blocks=[plane(4, 5)])
        self.fail_with(1, "plot", "grid", "flow", "out.png", says="does not belong to")
        self.assertFalse(self.path("out.png").exists())

    def test_nothing_to_see(self):
        self.write_flow([self.block], *[[math.nan] * 25] * 5)
        self.fail_with(1, "plot", "grid", "flow", "out.png", says="no number")

    def test_folder_that_takes_no_files(self):
        self.path("closed").mkdir(mode=0o555)
        with self.unprivileged() as options:
            self.fail_with(2, "plot", self.path("grid"), "closed/out.png", says="closed/out.png",
                           **options)

    def test_odd_file_names(self):
        for name in ("a" * 200, "b\n\x01c", "d\udcff\udcc3e", "\u00fc\u03b3\U0001d11e"):
            self.path("grid").rename(self.path(name))
            self.plot(name, "out.png")
            self.path(name).rename(self.path("grid"))


if __name__ == "__main__":
    main()
