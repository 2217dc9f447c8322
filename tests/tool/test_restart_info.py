"""p3dgrid info on generated and real restart files."""

import math
import os
import pathlib
import re
import struct
import unittest

from restart_support import (RestartForm, encodings, pack, restart_bytes, restart_records,
                             sample_solution, talven_records)
from support import ONE_BLOCK, TWO_BLOCKS, Form, ToolTest, main

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]
SAMPLES = os.environ.get("P3DGRID_SAMPLES", "")
NAMES = ["density", "x-momentum", "y-momentum", "z-momentum", "energy"]


def table(output, header):
    """The rows, as lists of words, of the table whose header begins with these words."""
    lines = output.splitlines()
    first = next(n for n, line in enumerate(lines) if line.split()[:len(header)] == header)
    rows = []
    for line in lines[first + 1:]:
        if not line:
            break
        rows.append(line.split())
    return rows


def value(output, name):
    (found,) = re.findall(rf"^{name} {{2,}}(\S+)$", output, re.MULTILINE)
    return found


class InfoTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("grid")
        self.write_grid("one", blocks=ONE_BLOCK)

    def write_restart(self, form, solution, **how):
        return self.write("flow", restart_bytes(form, solution, **how))

    def info(self, *arguments):
        return self.succeed("info", "--quiet", "flow", *arguments)

    def assert_ranges(self, output, solution, names=()):
        rows = table(output, ["variable"])
        self.assertGreaterEqual(len(rows), len(solution.flow[0]))
        for number, row in enumerate(rows[:len(solution.flow[0])], 1):
            values = [v for block in solution.flow for v in block[number - 1]]
            name = list(names[number - 1:number])
            self.assertEqual(row[:-4], [str(number), *name])
            self.assertEqual([float(word) for word in row[-4:-2]], [min(values), max(values)])
            self.assertEqual(row[-2:], ["0", "0"])


class Contents(InfoTest):
    EXTENTS = [["1", "2", "2", "2", "8"], ["2", "3", "1", "1", "3"]]

    def test_layout_2(self):
        solution = sample_solution(TWO)
        for encoding, double in encodings():
            form = RestartForm(2, encoding, double)
            self.write_restart(form, solution)
            for grid in ((), ("--grid", "grid")):
                with self.subTest(form=form, grid=grid):
                    output = self.info(*form.options(), *grid)
                    self.assertIn("(PLOT3D solution)", output)
                    self.assertIn("holds   2 blocks, 11 points, 5 variables in the sections 1-5\n",
                                  output)
                    self.assertIn("Mach number  angle of attack  Reynolds number  time", output)
                    self.assertEqual(table(output, ["block", "Mach"]),
                                     [["1", "0.7", "-1.1", "2300000", "4.9"],
                                      ["2", "1.7", "-1.1", "2300000", "4.9"]])
                    self.assertEqual(table(output, ["block", "i"]), self.EXTENTS)
                    self.assert_ranges(output, solution, NAMES)

    def test_layout_3(self):
        solution = sample_solution(TWO, 3)
        for encoding, double in encodings():
            form = RestartForm(3, encoding, double)
            self.write_restart(form, solution)
            output = self.info(*form.options(), "--grid", "grid")
            self.assertIn("3 variables in the sections 1-3", output)
            self.assertEqual(table(output, ["block", "i"]), [row + ["3"] for row in self.EXTENTS])
            self.assert_ranges(output, solution)

    def test_functions_that_differ_by_block(self):
        solution = sample_solution(TWO, 3)
        form = RestartForm(3)
        solution.flow[1].pop()
        self.write("flow", pack(restart_records(form, solution), form))
        output = self.info("--layout", "3")
        self.assertEqual(table(output, ["block", "i"]),
                         [self.EXTENTS[0] + ["3"], self.EXTENTS[1] + ["2"]])
        self.assertEqual([row[1:3] for row in table(output, ["variable"])[:3]],
                         [["1000.1", "1102.1"], ["2000.1", "2102.1"], ["3000.1", "3007.1"]])

    def test_step_of_layouts_1_100_and_101(self):
        for layout, extents, grid in ((1, TWO, "grid"), (100, TWO, "grid"), (101, ONE, "one")):
            for encoding, double in encodings():
                form = RestartForm(layout, encoding, double)
                leading = layout != 100 or double or encoding == "formatted"
                self.write_restart(form, sample_solution(extents),
                                   leading=leading and layout != 1)
                for with_grid in ((), ("--grid", grid)):
                    with self.subTest(form=form, grid=with_grid):
                        output = self.info(*form.options(), *with_grid)
                        self.assertEqual(value(output, "step count"), "17")
                        self.assertEqual(value(output, "step size"), "0.3")
                        self.assertNotIn("Mach", output)
                        if layout != 100 or with_grid:
                            self.assertEqual(table(output, ["block", "i"]),
                                             self.EXTENTS[:len(extents)])
                            self.assert_ranges(output, sample_solution(extents))
                        else:
                            self.assertIn("not in the file; --grid GRID", output)
                            self.assertIn("5 variables in the sections 1-5 as stated",
                                          self.info(*form.options(), "--sections", "1-5"))

    def test_layout_102(self):
        solution = sample_solution(ONE)
        self.write_restart(RestartForm(102), solution)
        self.fail_with(2, "info", "flow", "--layout", "102",
                       says=("flow: holds no extents", "--grid GRID",
                             "--restart-precision single", "--restart-precision double"))
        output = self.info("--layout", "102", "--restart-precision", "single")
        self.assertIn("holds   1 block", output)
        self.assertIn("not in the file", output)
        output = self.info("--layout", "102", "--grid", "one")
        self.assertIn("extents those of the grid", output)
        self.assert_ranges(output, solution)

    def test_triplets(self):
        for form, shown in ((RestartForm(101), True), (RestartForm(101, double=True), True),
                            (RestartForm(100, "formatted"), True),
                            (RestartForm(100, double=True), True),
                            (RestartForm(2), False)):
            self.write_restart(form, sample_solution(ONE))
            output = self.info(*form.options(), "--grid", "one")
            rows = [row for row in table(output, ["variable"]) if row[0] == "triplet"]
            # The values are -1000 n + point + 0.1.
            self.assertEqual(rows, [["triplet", str(n), f"-{n - 1}999.9" if n > 1 else "-999.9",
                                     f"-{n - 1}992.9" if n > 1 else "-992.9", "0", "0"]
                                    for n in (1, 2, 3)] if shown else [])

    def test_extensions_of_layout_101(self):
        solution = sample_solution(ONE, 13, sections=[(1, 5)], flags=(41, 41, 999),
                                   extensions=[(6, 8), (11, 13)])
        self.write_restart(RestartForm(101), solution)
        output = self.info("--layout", "101", "--grid", "one")
        self.assertIn("13 variables in the sections 1-5,6-13", output)
        self.assertIn("skips   the variables 9-10\n", output)
        rows = table(output, ["variable"])
        self.assertEqual(rows[8:10], [["9", "-", "-", "0", "0"], ["10", "-", "-", "0", "0"]])
        self.assertEqual(rows[10], ["11", "11000.1", "11007.1", "0", "0"])

    def test_sections(self):
        solution = sample_solution(TWO, 7, sections=[(1, 5), (6, 7)])
        self.write_restart(RestartForm(), solution)
        output = self.info("--sections", "1-5,6-7")
        self.assertIn("7 variables in the sections 1-5,6-7", output)
        self.assert_ranges(output, solution, NAMES)

    def test_values_that_are_not_finite(self):
        solution = sample_solution(ONE)
        solution.flow[0][0][1:4] = [math.nan, math.inf, -math.inf]
        solution.flow[0][2] = [math.nan] * 8
        for form in (RestartForm(), RestartForm(double=True)):
            self.write_restart(form, solution)
            rows = table(self.info(*form.options()), ["variable"])
            self.assertEqual(rows[0], ["1", "density", "1000.1", "1007.1", "1", "2"])
            self.assertEqual(rows[2], ["3", "y-momentum", "-", "-", "8", "0"])


class Talven(InfoTest):
    FORM = RestartForm(0, double=True)

    def test_header_values(self):
        parameters = (11, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5)
        expected = {"file version": "3", "equation set": "1", "flow variables named": "5",
                    "time integration": "2", "ibeta": "6", "step count": "17",
                    "step size": "0.3", "sub-grid-scale model": "11", "Reynolds number": "1.5",
                    "Mach number": "2.5", "angle of attack": "3.5", "side-slip angle": "4.5",
                    "ratio of specific heats": "5.5", "s1": "6.5", "Prandtl number": "7.5",
                    "turbulent Prandtl number": "8.5"}
        self.write("flow", pack(talven_records(sample_solution(TWO), integration=2,
                                               parameters=parameters), self.FORM))
        for grid in ((), ("--grid", "grid")):
            output = self.info(*self.FORM.options(), *grid)
            for name, shown in expected.items():
                pattern = rf"^{re.escape(name)} +(\S+)$"
                self.assertEqual(re.findall(pattern, output, re.MULTILINE), [shown])
            self.assert_ranges(output, sample_solution(TWO))

    def test_flow_parameters_are_always_in_double_precision(self):
        parameters = (11, 1 / 3, *range(2, 9))
        self.write("flow", pack(talven_records(sample_solution(TWO), parameters=parameters),
                                RestartForm(0)))
        output = self.info("--layout", "0")
        self.assertEqual(value(output, "Reynolds number"), str(1 / 3))
        self.assertEqual(value(output, "step size"), "0.3")

    def test_other_equation_sets_have_no_flow_parameters(self):
        self.write("flow", pack(talven_records(sample_solution(TWO), equations=2), self.FORM))
        output = self.info(*self.FORM.options())
        self.assertIn("equation set", output)
        self.assertNotIn("Mach", output)


class GridOrRestart(InfoTest):
    def setUp(self):
        super().setUp()
        self.write_restart(RestartForm(), sample_solution(TWO))

    def test_any_restart_option_decides(self):
        shown = self.info("--layout", "2")
        for options in (("--restart-format", "unformatted"), ("--restart-precision", "single"),
                        ("--restart-multiblock", "yes"), ("--sections", "1-5"),
                        ("--grid", "grid")):
            with self.subTest(options=options):
                self.assertEqual(self.info(*options), shown)
        self.assertIn("x min",
                      self.succeed("info", "--quiet", "grid", "--grid-format", "unformatted"))

    def test_options_of_a_grid_need_one(self):
        self.fail_with(2, "info", "flow", "--layout", "2", "--grid-format", "binary",
                       says=("--grid-format", "--grid names its grid"))
        self.write_grid("grid", Form("formatted"))
        self.info("--layout", "2", "--grid", "grid", "--grid-format", "formatted")

    def test_solution_of_another_grid(self):
        self.fail_with(1, "info", "flow", "--layout", "2", "--grid", "one",
                       says="flow: does not belong to one")
        self.write_restart(RestartForm(102), sample_solution(ONE))
        self.fail_with(1, "info", "flow", "--layout", "102", "--grid", "grid",
                       says=("flow: holds 1 block, the grid 2", "layout 102"))

    def test_damaged(self):
        content = self.path("flow").read_bytes()
        for length in range(0, len(content), 3):
            with self.subTest(length=length):
                self.write("flow", content[:length])
                self.fail_with(1, "info", "flow", "--layout", "2", says="flow: ")

    def test_another_form(self):
        self.write_restart(RestartForm(double=True), sample_solution(TWO))
        self.fail_with(1, "info", "flow", "--restart-precision", "single",
                       says="--restart-precision double")
        self.write_restart(RestartForm(3, "binary", True), sample_solution(TWO))
        self.fail_with(1, "info", "flow", *RestartForm(3).options(),
                       says="--restart-format binary --restart-precision double")
        self.assertIn("layout 3, binary", self.info("--layout", "3"))

    def test_extents_that_cannot_be_true(self):
        words = (1, -2, 3, 3)
        self.write("flow", struct.pack("=4i", *words) + bytes(60))
        self.fail_with(1, "info", "flow", "--layout", "2", "--restart-format", "binary",
                       says="flow: its beginning is no header")

    def test_wrong_usage(self):
        for arguments in (("--layout", "5"), ("--layout",), ("--layout", "two"),
                          ("--restart-format", "words"), ("--restart-precision", "quad"),
                          ("--restart-multiblock", "true"), ("--grid", ""),
                          ("--to-layout", "1")):
            with self.subTest(arguments=arguments):
                self.fail_with(2, "info", "flow", *arguments, says="--help")


@unittest.skipUnless(SAMPLES, "P3DGRID_SAMPLES names no folder of real files")
class RealFiles(InfoTest):
    # Read from the files at their offsets.
    PARAMETERS = ["2.95", "0", "2100000", "1.3911"]

    def info_of(self, name, *options):
        return self.succeed("info", "--quiet", pathlib.Path(SAMPLES) / "vtk_data" / name, *options)

    def assert_solution(self, output, flow):
        self.assertEqual(table(output, ["block", "i"]), [["1", "8", "12", "12", "1152"],
                                                         ["2", "8", "12", "12", "1152"]])
        for row in table(output, ["block", "Mach"]):
            for shown, expected in zip(row[1:], self.PARAMETERS):
                self.assertAlmostEqual(float(shown) / (float(expected) or 1),
                                       1 if float(expected) else 0, 6)
        rows = table(output, ["variable"])
        self.assertEqual(len(rows), len(flow))
        for row, values in zip(rows, flow):
            self.assertEqual([float(word) for word in row[-4:-2]], [min(values), max(values)])

    def binary_flow(self, header, per_block, variables):
        """The values of each variable in a binary or unformatted file."""
        content = (pathlib.Path(SAMPLES) / "vtk_data" / header).read_bytes()
        records = header.endswith("multi-bin.q") or header.endswith(".f")
        marker = 4 if records else 0
        at = (4 + 2 * marker) + (4 * (4 if variables == 2 else 3) * 2 + 2 * marker)
        flow = [[] for _ in range(variables)]
        for _ in range(2):
            at += per_block * 8 + (2 * marker if per_block else 0) + marker
            for values in flow:
                values += struct.unpack_from("<1152d", content, at)
                at += 1152 * 8
            at += marker
        self.assertEqual(at, len(content))
        return flow

    def test_unformatted_and_binary_solution(self):
        for name, options in (("multi-bin.q", ()),
                              ("multi-bin-C.q", ("--restart-format", "binary"))):
            output = self.info_of(name, "--layout", "2", "--restart-precision", "double", *options)
            self.assert_solution(output, self.binary_flow(name, 4, 5))

    def test_function_file(self):
        output = self.info_of("multi-bin.f", "--layout", "3", "--restart-precision", "double")
        rows = table(output, ["variable"])
        flow = self.binary_flow("multi-bin.f", 0, 2)
        self.assertEqual([[float(word) for word in row[1:3]] for row in rows],
                         [[min(values), max(values)] for values in flow])

    def test_text(self):
        words = (pathlib.Path(SAMPLES) / "vtk_data" / "multi-ascii.q").read_text().split()
        values = [float(word) for word in words[7:]]
        flow = [[] for _ in range(5)]
        for b in range(2):
            block = values[b * (4 + 5 * 1152) + 4:]
            for n in range(5):
                flow[n] += block[n * 1152:(n + 1) * 1152]
        self.assert_solution(self.info_of("multi-ascii.q", "--restart-format", "formatted"), flow)

    def test_wrong_precision_is_not_shown_as_values(self):
        path = pathlib.Path(SAMPLES) / "vtk_data" / "multi-bin.q"
        self.fail_with(1, "info", path, "--restart-precision", "single",
                       says="--restart-precision double")


if __name__ == "__main__":
    main()
