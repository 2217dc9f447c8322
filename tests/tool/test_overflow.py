"""OVERFLOW solutions, triplets of layout 100 in single precision, and files whose values show their
byte order: read, described and converted."""

import itertools
import json
import os
import pathlib
import struct
import unittest

from restart_support import RestartForm, restart_bytes, sample_solution
from support import NATIVE, OTHER, SIGNS, Block, Form, ToolTest, grid_bytes, main

SAMPLES = os.environ.get("P3DGRID_SAMPLES", "")
EXTENTS = ((3, 2, 2), (2, 2, 2))
NAMES = ("mach", "alpha", "reynolds", "time", "GAMINF", "BETA", "TINF", "IGAM", "HTINF", "HT1",
         "HT2")


def points(extents):
    return extents[0] * extents[1] * extents[2]


def grid(extents):
    """A grid of blocks with these extents."""
    blocks = []
    for block in extents:
        numbers = [n / 4 for n in range(points(block))]
        blocks.append(Block(block, numbers, numbers, numbers))
    return blocks


class Overflow:
    """An OVERFLOW solution with or without an integer among its parameters."""

    def __init__(self, real="d", order=NATIVE, blocks=2, variables=6, species=0, integer=True):
        self.sign = SIGNS[order]
        self.real = real
        self.extents = EXTENTS[:blocks]
        self.counts = (variables, species)
        self.integer = integer
        self.parameters = [n + 0.5 for n in range(14 + max(2, species))]
        self.parameters[7] = 3
        self.flow = [[[100 * v + p + 0.25 for p in range(points(block))] for v in range(variables)]
                     for block in self.extents]

    def record(self, codes, *values):
        content = struct.pack(self.sign + codes, *values)
        marker = struct.pack(self.sign + "i", len(content))
        return marker + content + marker

    def bytes(self):
        numbers = [n for block in self.extents for n in block] + list(self.counts)
        file = self.record("i", len(self.extents)) if len(self.extents) > 1 else b""
        file += self.record(f"{len(numbers)}i", *numbers)
        after = len(self.parameters) - 8
        for variables in self.flow:
            values = [value for variable in variables for value in variable]
            igam = "i" if self.integer else self.real
            file += self.record(f"7{self.real}{igam}{after}{self.real}", *self.parameters)
            file += self.record(f"{len(values)}{self.real}", *values)
        return file


class Solutions(ToolTest):
    def write_case(self, case):
        self.write("grid", grid_bytes(Form(), grid(case.extents)))
        self.write("flow", case.bytes())

    def test_every_version_is_described(self):
        for real, order, blocks, variables, species, integer in itertools.product(
                "fd", (NATIVE, OTHER), (1, 2), (5, 7), (0, 3), (True, False)):
            case = Overflow(real, order, blocks, variables, species, integer)
            with self.subTest(case=vars(case)):
                self.write_case(case)
                report = json.loads(self.succeed("info", "flow", "--json"))
                self.assertEqual(report["form"]["layout"], "overflow")
                self.assertEqual(report["form"]["byte_order"], order)
                self.assertEqual(report["header"], {"species": species})
                self.assertEqual(len(report["variables"]), variables)
                found = report["blocks"][-1]["parameters"]
                self.assertEqual(list(found.values())[:4], case.parameters[:4])
                for name, value in zip(NAMES, case.parameters):
                    self.assertEqual(found[name], value)
                self.assertEqual(found["DTVREF"], case.parameters[-1])
                self.succeed("check", "flow")
                self.succeed("check", "grid", "flow")

    def test_parameters_have_names_in_text(self):
        self.write_case(Overflow())
        report = self.succeed("info", "flow")
        for word in ("layout overflow", "(OVERFLOW solution)", "Mach number", "IGAM", "DTVREF",
                     "species", "density"):
            self.assertIn(word, report)

    def test_layout_3_gets_all_variables(self):
        case = Overflow()
        self.write_case(case)
        self.succeed("restart", "grid", "flow", "out", "--to-layout", "3", "--to-format", "binary")
        values = [value for block in case.flow for variable in block for value in variable]
        expected = struct.pack("=i8i", 2, *[n for block in EXTENTS for n in (*block, 6)])
        self.assertEqual(self.path("out").read_bytes(),
                         expected + struct.pack(f"={len(values)}d", *values))

    def test_layout_2_gets_five_variables_and_four_parameters(self):
        case = Overflow()
        self.write_case(case)
        result = self.run_tool("restart", "grid", "flow", "out", "--to-layout", "2", "--to-format",
                               "binary")
        self.assertEqual(result.returncode, 0, result.stderr_text)
        self.assertIn("out leaves out the variables 6-6 and the flow parameters from the fifth on",
                      result.stderr_text)
        expected = struct.pack("=i6i", 2, *[n for block in EXTENTS for n in block])
        for block in case.flow:
            values = [value for variable in block[:5] for value in variable]
            expected += struct.pack("=4d", *case.parameters[:4])
            expected += struct.pack(f"={len(values)}d", *values)
        self.assertEqual(self.path("out").read_bytes(), expected)

    def test_none_are_written(self):
        self.write_case(Overflow())
        self.fail_with(2, "restart", "grid", "flow", "out",
                       says="files of layout overflow can be read, but not written")
        self.fail_with(2, "info", "flow", "--layout", "overflow", "--restart-format", "binary",
                       says="layout overflow has no files that are binary; they are unformatted")

    def test_grids_of_other_extents_are_noticed(self):
        self.write_case(Overflow())
        self.write("grid", grid_bytes(Form(), grid(((3, 2, 2), (2, 2, 3)))))
        self.fail_with(1, "check", "grid", "flow", says="its block 2 is 2x2x2, the grid's 2x2x3")

    def test_damage_is_located(self):
        case = Overflow()
        content = case.bytes()
        self.write("flow", content[:-100])
        self.fail_with(1, "check", "flow", says="taken as layout overflow")

    @unittest.skipUnless(SAMPLES, "no real samples")
    def test_real_sample(self):
        folder = pathlib.Path(SAMPLES) / "vtk_data"
        pair = str(folder / "multi-bin.xyz"), str(folder / "multi-bin-oflow.q")
        self.succeed("check", *pair)
        self.succeed("restart", *pair, "out", "--to-layout", "2")
        self.assertEqual(self.path("out").read_bytes(), (folder / "multi-bin.q").read_bytes())
        report = json.loads(self.succeed("info", pair[1], "--json"))
        self.assertEqual(report["blocks"][0]["parameters"]["mach"], 2.950000047683716)


class Triplets(ToolTest):
    def test_layout_100_in_single_precision_is_read_again(self):
        extents = (EXTENTS[0],)
        self.write("grid", grid_bytes(Form(), grid(extents)))
        for encoding, options in itertools.product(("unformatted", "binary"),
                                                   ((), ("--layout", "100"))):
            form = RestartForm(100, encoding)
            content = restart_bytes(form, sample_solution(extents))
            self.write("flow", content)
            stated = form.options() if not options and encoding == "binary" else options
            self.assertIn("triplet 3", self.succeed("info", "flow", *stated, "--grid", "grid"))
            self.succeed("restart", "grid", "flow", "out", *stated)
            self.assertEqual(self.path("out").read_bytes(), content)


class Values(ToolTest):
    def test_show_the_byte_order(self):
        self.write("grid", grid_bytes(Form(), grid(((1, 1, 1),))))
        for order in (NATIVE, OTHER):
            self.write("flow", struct.pack(f"{SIGNS[order]}5f", 1, 0.5, 0, -0.25, 2.5))
            report = self.succeed("info", "flow", "--layout", "102", "--grid", "grid")
            self.assertIn("its reals are plausible in this byte order only", report)
            self.assertIn(f"{order}-endian", report)
            stated = OTHER if order == NATIVE else NATIVE
            report = self.succeed("info", "flow", "--layout", "102", "--grid", "grid",
                                  "--restart-byte-order", stated)
            self.assertIn(f"{stated}-endian", report)
            self.assertNotIn("plausible", report)


if __name__ == "__main__":
    main()
