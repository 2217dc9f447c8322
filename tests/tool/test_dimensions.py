"""Files of two dimensions, in every command that reads and writes files."""

import itertools
import json
import os
import pathlib
import struct

from support import NATIVE, OTHER, SIGNS, Form, ToolTest, main, record

# Blocks of 9 x 7 and 3 x 5 points; all values are exact in single precision.
BLOCKS = ((9, 7), (3, 5))


def points(block):
    return block[0] * block[1]


def packed(form, payloads):
    """Records of integers (i) and reals (r), each a list of (kind, values)."""
    if form.encoding == "formatted":
        return "".join(" ".join(str(value) for _, values in payload for value in values) + "\n"
                       for payload in payloads).encode()
    codes = {"i": "i", "r": "d" if form.double else "f"}
    return b"".join(record(b"".join(
        struct.pack(f"{SIGNS[form.order]}{len(values)}{codes[kind]}", *values)
        for kind, values in payload), form.encoding, form.order) for payload in payloads)


def header(form, blocks, axes, counts=()):
    extents = [extent for block in blocks for extent in (*block, *[1] * (axes - 2), *counts)]
    return [[("i", [len(blocks)])], [("i", extents)]][0 if form.multiblock else 1:]


def grid(form, blocks=BLOCKS, axes=2, z=0.0):
    payloads = header(form, blocks, axes)
    for block in blocks:
        n = points(block)
        values = [p / 4 + 0.5 for p in range(n)] + [-p / 8 - 1 for p in range(n)] + [z] * n * (axes - 2)
        blanking = [("i", [p % 3 - 1 for p in range(n)])] if form.iblank else []
        payloads.append([("r", values), *blanking])
    return packed(form, payloads)


def solution(form, blocks=BLOCKS, axes=2, third=0.0):
    payloads = header(form, blocks, axes)
    for block in blocks:
        payloads.append([("r", [0.5, 2.0, 1000.0, 0.25])])
        momenta = [third] * points(block) if axes == 3 else []
        flow = [[v + p / 16 for p in range(points(block))] for v in range(1, 5)]
        payloads.append([("r", [*flow[0], *flow[1], *flow[2], *momenta, *flow[3]])])
    return packed(form, payloads)


def functions(form, blocks=BLOCKS, axes=2):
    payloads = header(form, blocks, axes, (3,))
    for block in blocks:
        payloads.append([("r", [v + p / 16 for v in range(3) for p in range(points(block))])])
    return packed(form, payloads)


def forms():
    for encoding, double, multiblock, order in itertools.product(
            ("unformatted", "binary", "formatted"), (False, True), (True, False), (NATIVE, OTHER)):
        if encoding != "formatted" or (order == NATIVE and not double):
            yield Form(encoding, double, multiblock, False, order)


def blocks_of(form):
    return BLOCKS if form.multiblock else BLOCKS[:1]


class Planes(ToolTest):
    def report(self, name, *options):
        return json.loads(self.succeed("info", name, "--json", *options))

    def numbers(self, name):
        return [float(word) for word in self.path(name).read_text().split()]

    def assert_same(self, form, name, content):
        if form.encoding != "formatted":
            self.assertEqual(self.path(name).read_bytes(), content)
        else:
            self.assertEqual(self.numbers(name), [float(word) for word in content.split()])


class Grids(Planes):
    def test_every_form_is_found_and_stays_as_read(self):
        for form, iblank in itertools.product(forms(), (False, True)):
            form.iblank = iblank
            with self.subTest(form=form, order=form.order):
                content = grid(form, blocks_of(form))
                self.write("grid", content)
                report = self.report("grid")
                self.assertEqual(report["form"]["dimensions"], 2)
                self.assertEqual(report["form"]["multiblock"], form.multiblock)
                self.assertEqual([block["extents"] for block in report["blocks"]],
                                 [[*block, 1] for block in blocks_of(form)])
                self.succeed("convert", "grid", "out", "--quiet")
                self.assert_same(form, "out", content)
                self.succeed("check", "out")

    def test_to_three_and_back(self):
        for form, iblank in itertools.product(forms(), (False, True)):
            form.iblank = iblank
            with self.subTest(form=form):
                self.write("grid", grid(form, blocks_of(form)))
                self.succeed("convert", "grid", "three", "--quiet", "--to-dimensions", "3")
                self.assert_same(form, "three", grid(form, blocks_of(form), 3))
                self.succeed("convert", "three", "two", "--quiet", "--to-dimensions", "2",
                             "--grid-dimensions", "3")
                self.assert_same(form, "two", grid(form, blocks_of(form)))

    def test_what_has_no_place(self):
        form = Form()
        for z, extents, says in ((0.5, [(9, 7)], "no place for z other than 0"),
                                 (float("nan"), [(9, 7)], "no place for z other than 0"),
                                 (0.0, [(3, 1, 3)], "no place for block 1 of 3x1x3 points")):
            self.write("grid", grid(form, extents, 3, z) if len(extents[0]) == 2 else packed(
                form, [[("i", [1])], [("i", extents[0])], [("r", [0.0] * 27)]]))
            self.fail_with(2, "convert", "grid", "out", "--to-dimensions", "2",
                           says=f"out: not written: two dimensions have {says}; --to-dimensions 3")
            self.assertFalse(self.path("out").exists())

    def test_wrong_number_stated(self):
        self.write("grid", grid(Form()))
        self.fail_with(1, "info", "grid", "--grid-dimensions", "3",
                       says="it is that of a file read with --grid-dimensions 2")
        full = [*Form().options("grid"), "--grid-byte-order", NATIVE]
        self.fail_with(1, "convert", "grid", "out", *full,
                       says="it is that of a file read with --grid-dimensions 2")
        self.write("grid", grid(Form(), axes=3))
        self.fail_with(1, "info", "grid", "--grid-dimensions", "2",
                       says="it is that of a file read with --grid-dimensions 3")

    def test_description(self):
        self.write("grid", grid(Form()))
        self.assertIn(f"read as two-dimensional, unformatted, {NATIVE}-endian, single",
                      self.succeed("info", "grid"))

    def test_damage(self):
        content = grid(Form())
        self.write("grid", content[:-20])
        self.fail_with(1, "check", "grid", says="taken as grid, two-dimensional, unformatted")
        self.write("grid", b"".join(grid(Form("formatted")).splitlines(True)[:-1]))
        self.fail_with(1, "check", "grid", says="is cut short")


class Restarts(Planes):
    def test_solutions_and_functions_stay_as_read(self):
        for form, (layout, make) in itertools.product(forms(), ((2, solution), (3, functions))):
            with self.subTest(form=form, layout=layout):
                blocks = blocks_of(form)
                self.write("grid", grid(form, blocks))
                self.write("flow", make(form, blocks))
                report = self.report("flow", "--grid", "grid")
                self.assertEqual(report["form"]["dimensions"], 2)
                self.assertEqual(report["form"]["layout"], layout)
                for more in ([], ["--stream"]):
                    self.succeed("restart", *more, "grid", "flow", "out", "--quiet")
                    self.assert_same(form, "out", make(form, blocks))

    def test_found_without_the_grid(self):
        for form in forms():
            self.write("flow", solution(form, blocks_of(form)))
            with self.subTest(form=form):
                self.assertEqual(self.report("flow")["form"]["dimensions"], 2)

    def test_to_three_and_back(self):
        for form, (layout, make), stream in itertools.product(
                (Form(), Form("binary", True), Form("formatted")), ((2, solution), (3, functions)),
                ([], ["--stream"])):
            self.write("grid", grid(form))
            self.write("flow", make(form))
            self.succeed("restart", *stream, "grid", "flow", "three", "--quiet", "--to-dimensions", "3")
            self.assert_same(form, "three", make(form, axes=3))
            self.succeed("restart", *stream, "grid", "three", "two", "--quiet", "--to-dimensions", "2")
            self.assert_same(form, "two", make(form))

    def test_what_has_no_place(self):
        self.write("grid", grid(Form(), axes=3))
        self.write("flow", solution(Form(), axes=3, third=0.25))
        for more in ([], ["--stream"]):
            self.fail_with(2, "restart", *more, "grid", "flow", "out", "--to-dimensions", "2",
                           says="two dimensions have no place for a third momentum other than 0")
            self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["flow", "grid"])

    def test_layouts_without_files_of_two(self):
        self.write("grid", grid(Form()))
        self.write("flow", solution(Form()))
        says = "only layouts 2 and 3 have files of two dimensions"
        self.fail_with(2, "restart", "grid", "flow", "out", "--to-layout", "1", says=says)
        self.succeed("restart", "grid", "flow", "out", "--quiet", "--to-layout", "1",
                     "--to-dimensions", "3")
        for name in ("out", "flow"):
            self.fail_with(2, "info", name, "--layout", "1", "--restart-dimensions", "2", says=says)

    def test_pairs(self):
        self.write("grid", grid(Form()))
        self.write("plane", grid(Form(), axes=3))
        self.write("other", grid(Form(), ((9, 7), (3, 4))))
        self.write("flow", solution(Form()))
        for name in ("grid", "plane"):
            self.assertIn("agree", self.succeed("check", name, "flow"))
        self.fail_with(1, "check", "other", "flow", says="does not belong to other")

    def test_tecplot(self):
        self.write("grid", grid(Form()))
        self.write("flow", solution(Form()))
        self.succeed("tecplot", "grid", "flow", "out.tec", "--quiet")
        self.assertIn("I=0009 J=0007 K=0001", self.path("out.tec").read_text())


class Samples(Planes):
    def setUp(self):
        super().setUp()
        if "P3DGRID_SAMPLES" not in os.environ:
            self.skipTest("no samples")
        self.samples = pathlib.Path(os.environ["P3DGRID_SAMPLES"])

    def test_pairs(self):
        source = self.samples / "vtk_data"
        if not (source / "multi-bin-2D.xyz").exists():
            self.skipTest("the samples hold no multi-bin-2D")
        for name, dimensions in (("multi-bin-2D", 2), ("multi-ascii", 3)):
            grid_path, flow_path = (source / (name + ending) for ending in (".xyz", ".q"))
            self.assertIn("agree", self.succeed("check", grid_path, flow_path))
            for path in (grid_path, flow_path):
                self.assertEqual(self.report(path)["form"]["dimensions"], dimensions)

    def test_stay_as_read(self):
        """In the file's own precision, as far as single precision holds the values."""
        source = self.samples / "vtk_data" / "multi-bin-2D.xyz"
        if not source.exists():
            self.skipTest("the samples hold no multi-bin-2D")
        self.assertEqual([block["extents"] for block in self.report(source)["blocks"]],
                         [[11, 17, 1]] * 2)
        self.succeed("convert", source, "once", "--quiet")
        self.succeed("convert", "once", "twice", "--quiet")
        self.assertEqual(self.path("once").read_bytes(), self.path("twice").read_bytes())
        self.assertEqual(self.path("once").stat().st_size, source.stat().st_size)

    def test_text(self):
        source = self.samples / "turbmodels"
        if not (source / "flatplate_35x25.p2dfmt").exists():
            self.skipTest("the samples hold no flat plate")
        self.assertEqual(self.report(source / "flatplate_35x25.p2dfmt")["form"]["dimensions"], 2)
        self.assertEqual(self.report(source / "flatplate_35x25.p3dfmt")["form"]["dimensions"], 3)


if __name__ == "__main__":
    main()
