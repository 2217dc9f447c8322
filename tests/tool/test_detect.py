"""Detection of the form: every form that p3dgrid can write, real files, damaged files."""

import itertools
import json
import os
import pathlib
import random
import struct
import unittest

from restart_support import (RestartForm, pack, restart_bytes, restart_records, sample_solution,
                             talven_records)
from support import (NATIVE, ONE_BLOCK, OTHER, Block, Form, ToolTest, all_forms, grid_bytes, main)

SAMPLES = os.environ.get("P3DGRID_SAMPLES", "")

SHAPES = {
    "two": [(2, 2, 2), (3, 1, 1)],
    "one": [(2, 2, 2)],
    "plane": [(1, 5, 4)],
    "point": [(1, 1, 1)],
    "three": [(7, 3, 2), (1, 1, 1), (4, 5, 3)],
}

TABLES = {
    "1-5": [(1, 5)],
    "1-5,6-7": [(1, 5), (6, 7)],
    "1-3": [(1, 3)],
    "1-2,3-5": [(1, 2), (3, 5)],
    "1-8": [(1, 8)],
}

# Files that other readings fit as well. Without markers, the lengths of blocks of a few points
# fit more than one form.
AMBIGUOUS_GRIDS = {
    "one binary double count blanking, or restart",
    "one binary double no count blanking, or restart",
    "one binary single count no blanking, or restart",
    "one binary single no count no blanking, or restart",
    "point binary double count no blanking",
    "point binary double count no blanking, or restart",
    "point binary double no count no blanking, or restart",
    "point binary single count blanking, or restart",
}
AMBIGUOUS_RESTARTS = {  # and the section tables that stand for {}
    "one 102 binary double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "one 102 binary single {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "one 102 unformatted double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "one 102 unformatted single {}": "1-8",
    "plane 102 binary double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "plane 102 binary single {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "plane 102 unformatted double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "plane 102 unformatted single {}": "1-8",
    "point 100 binary double {}": "1-5 1-5,6-7",
    "point 100 binary single {}": "1-5 1-5,6-7",
    "point 100 formatted single {}": "1-5 1-5,6-7",
    "point 100 unformatted double {}": "1-5 1-5,6-7",
    "point 100 unformatted single {}": "1-5 1-5,6-7",
    "point 101 binary double {}": "1-5 1-5,6-7",
    "point 102 binary double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 102 binary single {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 102 unformatted double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 102 unformatted single {}": "1-8",
    "point 2 binary double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 2 binary double {} no count": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 2 binary single {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 2 binary single {} no count": "1-8",
    "point 3 binary double {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 3 binary double {} no count": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 3 binary single {}": "1-2,3-5 1-3 1-5 1-5,6-7 1-8",
    "point 3 binary single {} no count": "1-2,3-5 1-5 1-5,6-7 1-8",
}


def block_of(extents):
    points = extents[0] * extents[1] * extents[2]
    return Block(extents, *([n + c + 0.25 for n in range(points)] for c in range(3)))


def coded_forms(make):
    """Encodings with the precisions and byte orders that they distinguish."""
    for encoding, double, order in itertools.product(("unformatted", "binary"), (False, True),
                                                     (NATIVE, OTHER)):
        yield make(encoding, double, order)
    yield make("formatted", False, NATIVE)


class DetectTest(ToolTest):
    def found(self, name, *options):
        """The report of `info`, or None and the message if the file is ambiguous."""
        result = self.run_tool("info", name, "--json", *options)
        if result.returncode == 2:
            self.assertEqual(result.stdout_text, "")
            return None, result.stderr_text
        self.assertEqual(result.returncode, 0, result.stderr_text)
        return json.loads(result.stdout_text), result.stderr_text

    def assert_coding(self, form, shown):
        text = form.encoding == "formatted"
        self.assertEqual(shown["format"], form.encoding)
        self.assertEqual(shown["precision"],
                         None if text else "double" if form.double else "single")
        self.assertEqual(shown["byte_order"], None if text else form.order)


class Grids(DetectTest):
    def forms(self):
        for multiblock, iblank in itertools.product((True, False), repeat=2):
            yield from coded_forms(lambda encoding, double, order: Form(
                encoding, double, multiblock, iblank, order))

    def test_every_form_of_every_shape(self):
        asked = set()
        for shape, extents in SHAPES.items():
            for form in self.forms():
                if not form.multiblock and len(extents) > 1:
                    continue
                self.write_grid("grid", form, [block_of(block) for block in extents])
                for options in ((), ("--grid-format", "auto")):
                    case = (f"{shape} {form.encoding} {'double' if form.double else 'single'} "
                            f"{'count' if form.multiblock else 'no count'} "
                            f"{'blanking' if form.iblank else 'no blanking'}"
                            f"{'' if options else ', or restart'}")
                    with self.subTest(case=case, order=form.order):
                        report, message = self.found("grid", *options)
                        if report is None:
                            asked.add(case)
                            self.assert_names(form, message)
                            continue
                        self.assertEqual(report["kind"], "grid")
                        self.assert_coding(form, report["form"])
                        self.assertEqual(report["form"]["multiblock"], form.multiblock)
                        self.assertEqual(report["form"]["iblank"], form.iblank)
                        self.assertEqual([tuple(block["extents"]) for block in report["blocks"]],
                                         extents)
        self.assertEqual(asked, AMBIGUOUS_GRIDS)

    def assert_names(self, form, message):
        text = f"grid, {form.encoding}"
        if form.encoding != "formatted":
            text += f", {form.order}-endian, {'double' if form.double else 'single'} precision"
        text += ", multi-block" if form.multiblock else ", without block count"
        text += ", with blanking" if form.iblank else ", without blanking"
        self.assertIn(text, message)

    def test_reals_are_no_blanking_values(self):
        """A grid in two dimensions, as long as a single-precision block with blanking values."""
        content = struct.pack("=3i", 1, 9, 7) + struct.pack("=126d", *range(126))
        self.write("grid", content)
        report, _ = self.found("grid")
        self.assertEqual(report["blocks"][0]["extents"], [9, 7, 1])
        report, _ = self.found("grid", "--grid-iblank", "yes", "--grid-format", "binary",
                               "--grid-multiblock", "no")
        self.assertEqual(report["blocks"][0]["extents"], [1, 9, 7])
        self.write("grid", content[:-252] + struct.pack("=63i", *range(-1000, 62000, 1000)))
        self.assertTrue(self.found("grid", "--grid-format", "auto")[0]["form"]["iblank"])

    def test_readings_that_fit_stand_on_lines_of_their_own(self):
        self.write("file", struct.pack("=3i", 1, 1, 1) + bytes(28))
        grid = f"grid, binary, {NATIVE}-endian, double precision, without block count, with blanking"
        flow = f"layout 2, binary, {NATIVE}-endian, single precision, without block count"
        self.assertEqual(self.fail_with(2, "info", "file"),
                         "p3dgrid: file: matches several forms; select one with the options "
                         f"after it:\n  {grid} (--grid-format binary)\n"
                         f"  {flow}, sections 1-3 (--layout 2)\n")
        self.assertEqual(self.found("file", "--grid-format", "binary")[0]["kind"], "grid")
        self.assertEqual(self.found("file", "--layout", "2")[0]["kind"], "restart")

    def test_stated_options_narrow(self):
        for form in self.forms():
            self.write_grid("grid", form, ONE_BLOCK)
            options = form.options("grid") + ["--grid-byte-order", form.order]
            for n in range(0, len(options), 2):
                report, message = self.found("grid", *options[n:n + 2])
                if report is None:
                    self.assert_names(form, message)
                else:
                    self.assert_coding(form, report["form"])

    def test_convert_reads_every_form_without_options(self):
        for form in self.forms():
            self.write_grid("grid", form, ONE_BLOCK)
            target = Form("binary", False, True, form.iblank, OTHER)
            self.succeed("convert", "grid", "out", "--quiet", "--to-format", "binary",
                         "--to-multiblock", "yes", "--to-precision", "single",
                         "--to-byte-order", OTHER)
            self.assertEqual(self.path("out").read_bytes(), grid_bytes(target, ONE_BLOCK))


class Restarts(DetectTest):
    def cases(self):
        for (shape, extents), layout, (table, sections), counted in itertools.product(
                SHAPES.items(), (0, 1, 2, 3, 100, 101, 102), TABLES.items(), (True, False)):
            if not counted and (layout not in (2, 3) or len(extents) > 1):
                continue
            if layout in (101, 102) and len(extents) > 1:
                continue
            if layout in (100, 101) and sections[0] != (1, 5):
                continue
            for form in coded_forms(lambda encoding, double, order: RestartForm(
                    layout, encoding, double, counted, order)):
                yield shape, extents, table, form

    def content(self, form, extents, sections):
        solution = sample_solution(extents, sections[-1][1], sections=sections)
        if form.layout == 0:
            return pack(talven_records(solution, equations=1 if form.double or not form.records
                                       else 2), form)
        return restart_bytes(form, solution)

    def test_every_form_of_every_shape(self):
        asked = set()
        for shape, extents, table, form in self.cases():
            sections = TABLES[table]
            self.write("flow", self.content(form, extents, sections))
            self.write_grid("grid", Form(), [block_of(block) for block in extents])
            precision = "double" if form.double else "single"
            count = "" if form.multiblock else " no count"
            case = f"{shape} {form.layout} {form.encoding} {precision} {table}{count}"
            with self.subTest(case=case, order=form.order):
                report, message = self.found("flow", "--grid", "grid")
                if report is None:
                    asked.add(case)
                    self.assertIn(f"layout {form.layout}, {form.encoding}", message)
                    if form.records:
                        self.assertIn(f"{form.order}-endian, {precision} precision", message)
                    continue
                shown = report["form"]
                self.assertEqual(report["kind"], "restart")
                self.assertEqual(shown["layout"], form.layout)
                self.assert_coding(form, shown)
                if form.layout in (2, 3):
                    self.assertEqual(shown["multiblock"], form.multiblock)
                self.assertEqual(shown["sections"], self.visible(form, sections))
        self.assertEqual(asked, {case.format(table) for case, tables in AMBIGUOUS_RESTARTS.items()
                                 for table in tables.split()})

    def visible(self, form, sections):
        """The sections as far as they can be detected: without markers only their sum."""
        last = sections[-1][1]
        if form.encoding == "unformatted":
            return [list(section) for section in sections]
        if form.layout in (100, 101) and last > 5:
            return [[1, 5], [6, last]]
        return [[1, last]]

    def test_without_a_grid(self):
        for shape, extents, table, form in self.cases():
            if form.layout in (100, 102) or shape == "point" or table != "1-5":
                continue
            self.write("flow", self.content(form, extents, TABLES[table]))
            with self.subTest(shape=shape, form=form, order=form.order):
                report, message = self.found("flow")
                if report is None:
                    self.assertIn(f"layout {form.layout}, {form.encoding}", message)
                    continue
                self.assertEqual((report["kind"], report["form"]["layout"]),
                                 ("restart", form.layout))
                self.assert_coding(form, report["form"])

    def test_extensions_of_layout_101(self):
        extents = [(3, 2, 2)]
        for flags, extensions in (((1, 999), [(6, 10)]), ((41, 999), [(6, 8)]),
                                  ((1, 41, 999), [(6, 10), (11, 13)]),
                                  ((41, 41, 999), [(6, 8), (11, 13)]), ((7, 999), [None]),
                                  ((7, 1, 999), [None, (6, 10)])):
            solution = sample_solution(extents, 13, sections=[(1, 5)], flags=flags,
                                       extensions=extensions)
            for form in coded_forms(lambda encoding, double, order: RestartForm(
                    101, encoding, double, order=order)):
                self.write("flow", restart_bytes(form, solution))
                with self.subTest(flags=flags, form=form, order=form.order):
                    report, _ = self.found("flow")
                    self.assertEqual(report["form"]["layout"], 101)
                    self.assert_coding(form, report["form"])

    def test_single_precision_records_of_layout_100_with_triplets(self):
        # Without triplets they are eight variables.
        self.write_grid("grid", blocks=ONE_BLOCK)
        self.write("flow", restart_bytes(RestartForm(100), sample_solution([(2, 2, 2)])))
        for options in ((), ("--sections", "1-5")):
            self.assertIn("triplet 3", self.succeed("info", "flow", "--grid", "grid", *options))
        report = self.succeed("info", "flow", "--grid", "grid", "--sections", "1-8")
        self.assertNotIn("triplet 1", report)

    def test_function_counts_that_differ(self):
        solution = sample_solution(SHAPES["two"], 3)
        solution.flow[1].pop()
        for form in coded_forms(lambda *coding: RestartForm(3, coding[0], coding[1],
                                                            order=coding[2])):
            self.write("flow", pack(restart_records(form, solution), form))
            report, _ = self.found("flow", "--quiet")
            self.assertEqual([block["functions"] for block in report["blocks"]], [3, 2])
            self.assertEqual([variable["max"]["block"] for variable in report["variables"]],
                             [2, 2, 1])


class Text(DetectTest):
    def test_commas_repeats_and_exponents(self):
        for content in (b" 1\n 2, 2*1\n 1.5D0,2*+.5 2. 0 1*-1.5+3\n", b"1\r\n2,1,\r\n1\r\n6*0.\r\n",
                        b"2 2*1 note\n 1 2 3\n 4 5 6, \n", b"1\n+2,1,1\n0,2,,4,,6\n"):
            with self.subTest(content=content):
                self.write("grid", content)
                report, _ = self.found("grid")
                self.assertEqual([block["extents"] for block in report["blocks"]], [[2, 1, 1]])

    def test_a_slash_ends_a_record(self):
        self.write("grid", b"1\n2 1 1\n1 2 /\n")
        self.fail_with(2, "info", "grid", says=("--grid-iblank no", "--grid-iblank yes"))
        report, _ = self.found("grid", "--grid-iblank", "no")
        self.assertEqual(report["blocks"][0]["extents"], [2, 1, 1])

    def test_records_that_begin_with_a_comma(self):
        """A null value stands before it; within a record it ends the value before."""
        for content in (b"1\n2 1 1\n,2,3,4,5,6\n", b"1\n2,1,1,\n,2,3\n,4,5,6\n",
                        b"1\n2 1 1\n,2,3,\n,5,6\n", b"1\n2 1 1\n,\n2,3\n4,5\n,6\n",
                        b"1\n2\n,1\n, 1\n,,3*4\n,\n6\n", b"1\n2 1 1\n,1 /\n"):
            with self.subTest(content=content):
                self.write("grid", content)
                report, _ = self.found("grid", "--grid-iblank", "no")
                self.assertEqual(report["blocks"][0]["extents"], [2, 1, 1])
        for content, says in ((b"1\n2 1 1\n,2,3,4,5\n", "1 value short"),
                              (b"1\n2 1 1\n,2,3,4,5,6,7\n", "1 more value behind the last")):
            self.write("grid", content)
            self.fail_with(1, "info", "grid", "--grid-iblank", "no", says=says)
        for variables in (5, 7):
            flow = ",".join(map(str, range(2 * variables - 1)))
            self.write("flow", f"1\n2 1 1\n,0,0,0\n,{flow}\n".encode())
            report, _ = self.found("flow")
            self.assertEqual(report["form"]["sections"], [[1, variables]])

    def test_carriage_returns_alone(self):
        self.write("grid", b"1\r2 1 1\r1 2 3 4 5 6\r")
        full = Form("formatted").options("grid")
        for options in ((), full[:2], full, ("--grid-format", "unformatted")):
            self.fail_with(1, "info", "grid", *options,
                           says=("has carriage returns alone for line ends", r"tr '\r' '\n'"))
        self.write("grid", self.path("grid").read_bytes().replace(b"\r", b"\n"))
        self.succeed("info", "grid")

    def test_reals_are_no_extents(self):
        self.write("grid", b"1\n2. 1 1\n1 2 3 4 5 6\n")
        self.fail_with(1, "info", "grid", says="grid: ")

    def test_lines_that_end_records(self):
        # The rest of a line is not read.
        self.write("grid", b"1 2 1 1\n1 2 3 4 5 6\n")
        self.fail_with(1, "info", "grid", says="grid: ")


class Damage(DetectTest):
    BLOCKS = [block_of((4, 3, 2)), block_of((2, 2, 5)), block_of((3, 3, 3))]

    def test_cut_at_every_record(self):
        for form in coded_forms(lambda *coding: Form(coding[0], coding[1], True, True, coding[2])):
            content = grid_bytes(form, self.BLOCKS)
            text = form.encoding == "formatted"
            step = len(content) // 40 if text else 4
            # A truncated binary file may have the length of one with fewer values.
            others = {len(grid_bytes(other, self.BLOCKS)) for other in all_forms()}
            # So may one whose extents are its first three numbers.
            others |= {12 + 3 * 4 * 3 * size for size in (12, 16, 24, 28)}
            for length in range(len(content) // 3, len(content) - 1, step):
                if form.encoding == "binary" and (length in others or length % 512 == 0):
                    continue
                with self.subTest(form=form, order=form.order, length=length):
                    self.write("grid", content[:length])
                    message = self.fail_with(1, "info", "grid", "--grid-format", "auto",
                                             says=("grid: ", form.encoding))
                    if not text:
                        self.assertIn(form.order + "-endian", message)
                    if form.encoding == "unformatted":
                        self.assertIn("grid: is cut short: record ", message)
                        self.assertIn(f"{'double' if form.double else 'single'} precision, "
                                      "multi-block, with blanking", message)

    def test_cut_behind_each_record_of_a_solution(self):
        solution = sample_solution(SHAPES["two"], 7, sections=[(1, 5), (6, 7)])
        form = RestartForm(2, order=OTHER)
        content, lengths = b"", []
        for items in restart_records(form, solution):
            lengths.append(len(content))
            content += pack([items], form)
        for n, length in enumerate(lengths[2:-1], 2):
            self.write("flow", content[:length])
            with self.subTest(record=n):
                self.fail_with(1, "info", "flow", "--layout", "2",
                               says=("flow: is cut short: the file ends at byte "
                                     f"{length} behind {n} records of", "layout 2, unformatted, "
                                     f"{OTHER}-endian, single precision, multi-block"))

    def test_garbage(self):
        chance = random.Random(1)
        for content in (b"", b"\0", bytes(4), bytes(5000), b"\xff" * 700, b"hello, world\n" * 50,
                        b"1\n", b"/\n", b",,,,\n", b"9*9\n" * 9, b"\n\n\n",
                        b"999999999999*1\n" * 3, struct.pack("=i", 2**31 - 1) * 9,
                        struct.pack("=4i", 1, 2**31 - 1, 2**31 - 1, 2**31 - 1),
                        *(chance.randbytes(n) for n in range(1, 200, 7)),
                        *(bytes(chance.choices((0, 0, 0, 1, 4, 12), k=n))
                          for n in range(1, 200, 7))):
            with self.subTest(content=content):
                self.write("file", content)
                result = self.run_tool("info", "file")
                self.assertIn(result.returncode, (1, 2))
                self.assertRegex(result.stderr_text, r"\Ap3dgrid: file: [^\n]+\n\Z")


class BytesRead(DetectTest):
    def large(self, encoding):
        """A grid of four blocks whose values are a hole in the file."""
        extents = [(100, 100, 50)] * 4
        form = Form(encoding, double=True)
        size = 24 * 100 * 100 * 50
        with open(self.path("grid"), "wb") as file:
            header = grid_bytes(form, [block_of((1, 1, 1))] * 4)
            marker = struct.pack("=i", size) if encoding == "unformatted" else b""
            head = 12 + 56 if marker else 4 + 48
            words = struct.pack("=12i", *(n for block in extents for n in block))
            file.write(header[:head - len(words) - (4 if marker else 0)] + words
                       + (struct.pack("=i", 48) if marker else b""))
            for _ in extents:
                file.write(marker)
                file.seek(size, os.SEEK_CUR)
                file.write(marker)
            file.truncate(file.tell())
        return self.path("grid").stat().st_size

    def test_few_bytes_of_large_files(self):
        for encoding in ("unformatted", "binary"):
            size = self.large(encoding)
            self.assertGreater(size, 40_000_000)
            report, _ = self.found("grid")
            self.assertEqual(report["form"]["format"], encoding)
            self.assertLess(report["found"]["bytes_read"], 10_000)

    def test_stated_forms_take_no_more_than_the_header(self):
        self.large("unformatted")
        report, _ = self.found("grid", *Form(double=True).options("grid"), "--grid-byte-order",
                               NATIVE)
        self.assertTrue(report["found"]["stated"])
        self.assertLess(report["found"]["bytes_read"], 1000)


@unittest.skipUnless(SAMPLES, "P3DGRID_SAMPLES names no folder of real files")
class RealFiles(DetectTest):
    FILES = {
        "vtk_data/multi-bin.xyz": ("grid", "unformatted", "double", "little", True, 2),
        "vtk_data/multi-bin-C.xyz": ("grid", "binary", "double", "little", True, 2),
        "vtk_data/multi-ascii.xyz": ("grid", "formatted", None, None, True, 2),
        "vtk_data/bluntfinxyz.bin": ("grid", "binary", "single", "big", False, 1),
        "cfl3d/ramp_embed.fmt": ("grid", "formatted", None, None, True, 6),
        "cfl3d/flatplate_grdflat5.fmt": ("grid", "formatted", None, None, False, 1),
        "cfl3d/flatplateskew_grdflat5.fmt": ("grid", "formatted", None, None, False, 1),
        "turbmodels/nak_a_fine_65.p3d": ("grid", "unformatted", "double", "big", True, 2),
        "turbmodels/flatplate_35x25.p3dfmt": ("grid", "formatted", None, None, True, 1),
        "vtk_data/multi-bin.q": (2, "unformatted", "double", "little", True, 2),
        "vtk_data/multi-bin-C.q": (2, "binary", "double", "little", True, 2),
        "vtk_data/multi-ascii.q": (2, "formatted", None, None, True, 2),
        "vtk_data/multi-bin.f": (3, "unformatted", "double", "little", True, 2),
        "vtk_data/bluntfinq.bin": (2, "binary", "single", "big", False, 1),
    }

    def test_every_file(self):
        for name, (kind, *coding, multiblock, blocks) in self.FILES.items():
            with self.subTest(name):
                report, _ = self.found(pathlib.Path(SAMPLES) / name)
                shown = report["form"]
                self.assertEqual(report["kind"], "grid" if kind == "grid" else "restart")
                self.assertEqual(shown.get("layout", kind), kind)
                self.assertEqual([shown["format"], shown["precision"], shown["byte_order"]],
                                 coding)
                self.assertEqual(shown["multiblock"], multiblock)
                self.assertEqual(report["block_count"], blocks)

    def test_solutions_of_their_grids_and_of_others(self):
        folder = pathlib.Path(SAMPLES) / "vtk_data"
        blunt = (folder / "bluntfinxyz.bin", folder / "bluntfinq.bin")
        self.assertTrue(self.succeed("check", *blunt).endswith(" agree\n"))
        self.assertEqual(self.run_tool("check", folder / "multi-bin.xyz", blunt[1]).returncode, 1)
        for grid, flow in itertools.product(("multi-bin.xyz", "multi-bin-C.xyz",
                                             "multi-ascii.xyz"),
                                            ("multi-bin.q", "multi-bin-C.q", "multi-ascii.q",
                                             "multi-bin.f")):
            self.succeed("check", folder / grid, folder / flow)


if __name__ == "__main__":
    main()
