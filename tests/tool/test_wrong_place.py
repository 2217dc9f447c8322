"""Messages of each command for a solution in place of a grid, and the reverse."""

import os
import pathlib
import unittest

from restart_support import RestartForm, encodings, restart_bytes, sample_solution
from support import NATIVE, OTHER, Block, Form, ToolTest, all_forms, grid_bytes, main

SAMPLES = os.environ.get("P3DGRID_SAMPLES", "")
EXTENTS = [(5, 4, 3), (3, 2, 2)]
NO_GRID = "is a restart (flow-solution) file, not a grid: "
NO_RESTART = "is a grid, not a restart (flow-solution) file: "


def blocks(extents):
    counts = [i * j * k for i, j, k in extents]
    return [Block(e, *([n + 0.25 for n in range(points)] for _ in range(3)))
            for e, points in zip(extents, counts)]


class WrongPlaceTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("grid", blocks=blocks(EXTENTS))
        self.write_flow("flow", RestartForm())

    def write_flow(self, name, form, extents=None, variables=5):
        extents = extents or EXTENTS[:1 if form.layout in (101, 102) else 2]
        return self.write(name, restart_bytes(form, sample_solution(extents, variables)))

    def refuse(self, arguments, *says):
        before = sorted(os.listdir(self.folder))
        message = self.fail_with(1, *arguments, says=says)
        self.assertEqual(sorted(os.listdir(self.folder)), before)
        return message

    def can_draw(self):
        result = self.run_tool("plot", "grid", "mesh.png")
        return "without the library cairo" not in result.stderr_text


class Places(WrongPlaceTest):
    def pairs(self):
        """Command lines with a grid and a restart file, and how messages show them."""
        yield "check {0} {1}", "p3dgrid check {0} {1}"
        yield "restart {0} {1} out", "p3dgrid restart {0} {1} OUT"
        yield "tecplot {0} {1} out", "p3dgrid tecplot {0} {1} OUT"
        yield "info {1} --grid {0}", "p3dgrid info {1} --grid {0}"
        if self.can_draw():
            yield "plot {0} {1} out.png", "p3dgrid plot {0} {1} OUT.png"

    def test_solution_alone_in_the_place_of_a_grid(self):
        form = "layout 2, unformatted"
        self.refuse(["convert", "flow", "out"], "flow: " + NO_GRID + form,
                    "; 'p3dgrid restart GRID flow OUT' converts it\n")
        if self.can_draw():
            self.refuse(["plot", "flow", "out.png"], "flow: " + NO_GRID + form,
                        "; 'p3dgrid plot GRID flow OUT.png' draws it\n")

    def test_the_two_in_the_wrong_order(self):
        for typed, meant in self.pairs():
            with self.subTest(typed=typed):
                self.refuse(typed.format("flow", "grid").split(), "flow: " + NO_GRID + "layout 2",
                            f"; grid is the grid: '{meant.format('grid', 'flow')}'\n")

    def test_solution_in_both_places(self):
        self.write_flow("other", RestartForm(1))
        for typed, meant in self.pairs():
            with self.subTest(typed=typed):
                self.refuse(typed.format("flow", "other").split(), "flow: " + NO_GRID + "layout 2",
                            f"; '{meant.format('GRID', 'flow')}' takes it with its grid\n")

    def test_grid_in_both_places(self):
        self.write_grid("other", Form("formatted"), blocks(EXTENTS))
        meant = {"check": "; 'p3dgrid check other' looks for damage in it\n",
                 "restart": "; 'p3dgrid convert other OUT' converts it\n",
                 "info": "; 'p3dgrid info other' shows it\n",
                 "plot": "; 'p3dgrid plot other OUT.png' draws it\n",
                 "tecplot": "; 'p3dgrid tecplot grid RESTART OUT' takes a restart file there\n"}
        for typed, _ in self.pairs():
            with self.subTest(typed=typed):
                self.refuse(typed.format("grid", "other").split(),
                            "other: " + NO_RESTART + "formatted, multi-block, without blanking",
                            meant[typed.split()[0]])

    def test_options_that_make_it_the_other_kind(self):
        for command in ("info", "check"):
            self.refuse([command, "flow", "--grid-iblank", "yes"], "flow: " + NO_GRID,
                        "; --grid-iblank describes a grid\n")
            self.refuse([command, "grid", "--layout", "2"], "grid: " + NO_RESTART,
                        "; --layout describes a restart file\n")

    def test_options_that_are_wrong_besides(self):
        self.refuse(["convert", "flow", "out", "--grid-format", "binary"], "flow: " + NO_GRID)
        self.refuse(["check", "grid", "grid", "--layout", "1", "--restart-format", "binary"],
                    "grid: " + NO_RESTART)


class Forms(WrongPlaceTest):
    def test_every_restart_file_in_the_place_of_a_grid(self):
        for layout in (1, 2, 3, 101):
            for encoding, double in encodings():
                form = RestartForm(layout, encoding, double)
                with self.subTest(form=form):
                    self.write_flow("in", form)
                    self.refuse(["convert", "in", "out"],
                                f"in: {NO_GRID}layout {layout}, {encoding}")

    def test_every_grid_in_the_place_of_a_restart_file(self):
        for form in all_forms():
            extents = EXTENTS if form.multiblock else EXTENTS[:1]
            self.write_grid("in", form, blocks(extents))
            with self.subTest(form=form):
                self.refuse(["check", "grid", "in"], f"in: {NO_RESTART}{form.encoding}")

    def test_layouts_without_extents_take_those_of_the_grid(self):
        for layout, encoding, double in ((100, "formatted", False), (100, "unformatted", True),
                                         (102, "formatted", False)):
            self.write_flow("in", RestartForm(layout, encoding, double))
            self.write_grid("their-grid", blocks=blocks(EXTENTS[:1 if layout == 102 else 2]))
            with self.subTest(layout=layout, encoding=encoding):
                self.refuse(["check", "in", "their-grid"], f"in: {NO_GRID}layout {layout}",
                            "; their-grid is the grid: 'p3dgrid check their-grid in'\n")

    def test_the_other_byte_order(self):
        self.write_flow("in", RestartForm(order=OTHER))
        self.refuse(["convert", "in", "out"], f"in: {NO_GRID}layout 2, unformatted, {OTHER}-endian")


class NoClaim(WrongPlaceTest):
    """Nothing is claimed about files of uncertain kind."""

    def assert_no_claim(self, name, *arguments):
        """Checks the message for that file, on the command line that follows."""
        result = self.run_tool(*arguments)
        for claim in (NO_GRID, NO_RESTART):
            self.assertNotIn(f"{name}: {claim}", result.stderr_text, arguments)

    # Markers show that no part of a file is a whole file of another form.
    def test_damaged_grids(self):
        for form in (Form(), Form(double=True), Form(multiblock=False), Form(iblank=True)):
            content = grid_bytes(form, blocks([(3, 1, 1)]))
            self.write("whole", content)
            for length in range(len(content) - 1):
                self.write("cut", content[:length])
                self.assert_no_claim("cut", "check", "cut", "flow")
                self.assert_no_claim("cut", "check", "cut", "whole")

    def test_damaged_solutions(self):
        self.write_grid("grid", blocks=blocks([(3, 1, 1)]))
        for form in (RestartForm(), RestartForm(1), RestartForm(3, double=True), RestartForm(101)):
            content = restart_bytes(form, sample_solution([(3, 1, 1)]))
            for length in range(len(content) - 1):
                self.write("cut", content[:length])
                self.assert_no_claim("cut", "check", "grid", "cut")
                self.assert_no_claim("cut", "check", "cut", "grid")

    def test_lengths_that_come_out_by_chance(self):
        # Four variables fit the file, but a solution has at least five.
        self.write_flow("in", RestartForm(encoding="binary"), variables=4)
        self.assert_no_claim("in", "convert", "in", "out")

    def test_more_than_one_reading(self):
        self.write_flow("in", RestartForm(102))
        self.assert_no_claim("in", "convert", "in", "out")
        self.write_grid("point", Form("binary", double=True), blocks([(1, 1, 1)]))
        self.assert_no_claim("point", "check", "point", "flow")
        self.assert_no_claim("point", "check", "grid", "point")

    def test_neither(self):
        for content in (b"", b"neither", bytes(range(256))):
            self.write("in", content)
            for arguments in (("convert", "in", "out"), ("check", "in", "flow"),
                              ("check", "grid", "in"), ("check", "in", "in"),
                              ("check", "in", "missing"), ("info", "in", "--layout", "2")):
                self.assert_no_claim("in", *arguments)

    def test_everything_stated_is_believed(self):
        self.assert_no_claim("flow", "convert", "flow", "out", *Form().options("grid"),
                             "--grid-byte-order", NATIVE)


@unittest.skipUnless(SAMPLES, "P3DGRID_SAMPLES names no folder of real files")
class RealFiles(WrongPlaceTest):
    FOLDER = pathlib.Path(SAMPLES) / "vtk_data"

    def test_swapped(self):
        for grid, flow, form in (("multi-bin.xyz", "multi-bin.q", "layout 2, unformatted"),
                                 ("multi-bin.xyz", "multi-bin.f", "layout 3, unformatted"),
                                 ("multi-bin-C.xyz", "multi-bin-C.q", "layout 2, binary"),
                                 ("multi-ascii.xyz", "multi-ascii.q", "layout 2, formatted"),
                                 ("bluntfinxyz.bin", "bluntfinq.bin", "layout 2, binary")):
            with self.subTest(flow=flow):
                grid, flow = self.FOLDER / grid, self.FOLDER / flow
                self.refuse(["check", flow, grid], f"{flow}: {NO_GRID}{form}",
                            f"'p3dgrid check {grid} {flow}'")
                self.refuse(["convert", flow, "out"], f"{flow}: {NO_GRID}{form}")
                self.refuse(["check", grid, grid], f"{grid}: {NO_RESTART}")

    def test_others(self):
        folder = pathlib.Path(SAMPLES)
        for name in ("turbmodels/nak_a_fine_65.p3d", "cfl3d/ramp_embed.fmt",
                     "turbmodels/flatplate_35x25.p3dfmt"):
            self.refuse(["check", "grid", folder / name], f"{name}: {NO_RESTART}")


if __name__ == "__main__":
    main()
