"""p3dgrid restart: the bytes it writes, and its notes on values that are lost."""

import math
import os
import struct

from restart_support import (LAYOUTS, RestartForm, as_read, encodings, expected_values, pack,
                             restart_bytes, restart_records, sample_solution, talven_records,
                             values_in)
from support import NATIVE, ONE_BLOCK, TWO_BLOCKS, Form, ToolTest, main

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]

# Layout 2 of one block of 2x1x1 points: parameters 1 2 3 4, variables 5 to 9 at the first point and
# 10 more at the second.
LITTLE_ENDIAN_GOLDEN = bytes.fromhex(
    "04000000 01000000 04000000"
    "0c000000 02000000 01000000 01000000 0c000000"
    "10000000 0000803f 00000040 00004040 00008040 10000000"
    "28000000 0000a040 00007041 0000c040 00008041 0000e040 00008841 00000041 00009041"
    "00001041 00009841 28000000")


def readable(form):
    """Single-precision records of layout 100 are written with triplets but read without."""
    return form.layout != 100 or form.double or not form.records


def forms(multiblock=(True,)):
    for layout in LAYOUTS:
        for encoding, double in encodings():
            for count in multiblock if layout in (2, 3) else (True,):
                yield RestartForm(layout, encoding, double, count)


def carried_over(solution, source):
    """The part of a solution that remains when it is read from that form."""
    left = as_read(solution, source)
    if source.layout not in (0, 1, 100, 101):
        left.step = (0, 0.0)
    if source.layout != 2:
        left.parameters = [(0, 0, 0, 0)] * len(solution.extents)
    if source.layout not in (100, 101) or not readable(source):
        left.triplets = [[[0] * len(block[0])] * 3 for block in solution.flow]
    return left


class RestartTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("one", blocks=ONE_BLOCK)
        self.write_grid("two", blocks=TWO_BLOCKS)

    def write_restart(self, name, form, solution, **how):
        return self.write(name, restart_bytes(form, solution, **how))

    def assert_holds(self, content, form, solution):
        """`content` is a file of that form with this solution."""
        if form.records:
            self.assertEqual(content, restart_bytes(form, solution))
        else:
            self.assertEqual(values_in(content), expected_values(form, solution))

    def convert(self, grid, source, target, *more):
        """Converts the file `in`; returns the bytes written and the notes."""
        result = self.run_tool("restart", grid, "in", "out", *source.options(),
                               *target.options(target=True), *more)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        self.assert_no_leftovers()
        return self.path("out").read_bytes(), result.stderr_text


class EveryForm(RestartTest):
    def test_golden_bytes(self):
        if struct.pack("=i", 1) != struct.pack("<i", 1):
            self.skipTest("the bytes are those of a little-endian machine")
        self.write("grid", b"1\n2 1 1\n1 2 3 4 5 6\n")
        self.write("in", b"1\n2 1 1\n1 2 3 4\n5 15 6 16 7 17 8 18 9 19\n")
        self.succeed("restart", "grid", "in", "out", "--grid-format", "formatted",
                     "--restart-format", "formatted", "--to-format", "unformatted")
        self.assertEqual(self.path("out").read_bytes(), LITTLE_ENDIAN_GOLDEN)

    def test_one_block_from_every_form_to_every_form(self):
        solution = sample_solution(ONE)
        for source in filter(readable, forms((True, False))):
            self.write_restart("in", source, solution)
            for target in forms((True, False)):
                with self.subTest(source=source, target=target):
                    content, _ = self.convert("one", source, target)
                    self.assert_holds(content, target, carried_over(solution, source))

    def test_two_blocks_from_every_form_to_every_form(self):
        solution = sample_solution(TWO)
        of_many = [form for form in forms() if form.layout not in (101, 102)]
        for source in filter(readable, of_many):
            self.write_restart("in", source, solution)
            for target in of_many:
                with self.subTest(source=source, target=target):
                    content, _ = self.convert("two", source, target)
                    self.assert_holds(content, target, carried_over(solution, source))

    def test_form_stays_as_read_unless_stated(self):
        solution = sample_solution(ONE)
        for form in filter(readable, forms((True, False))):
            with self.subTest(form=form):
                self.write_restart("in", form, solution)
                self.succeed("restart", "one", "in", "out", *form.options())
                self.assert_holds(self.path("out").read_bytes(), form,
                                  carried_over(solution, form))

    def test_defaults_are_layout_2_unformatted_single_with_block_count(self):
        solution = sample_solution(TWO)
        content = self.write_restart("in", RestartForm(), solution).read_bytes()
        self.succeed("restart", "two", "in", "out")
        self.assertEqual(self.path("out").read_bytes(), content)

    def test_grids_of_every_form(self):
        solution = sample_solution(ONE)
        self.write_restart("in", RestartForm(102), solution)
        for form in (Form("formatted"), Form("binary", double=True, iblank=True),
                     Form(multiblock=False), Form(double=True)):
            with self.subTest(form=form):
                self.write_grid("grid", form, ONE_BLOCK)
                self.succeed("restart", "grid", "in", "out", *form.options("grid"),
                             "--layout", "102", "--to-layout", "1")
                self.assert_holds(self.path("out").read_bytes(), RestartForm(1),
                                  carried_over(solution, RestartForm(102)))


class SectionsOfVariables(RestartTest):
    SEVEN = "1-5,6-7"

    def test_sections_are_kept(self):
        for sections in ([(1, 5), (6, 7)], [(1, 7)], [(1, 2), (3, 3), (4, 7)], [(1, 3)],
                         [(6, 7), (1, 5)]):
            count = max(last for _, last in sections)
            solution = sample_solution(TWO, count, sections=sections)
            text = ",".join(f"{first}-{last}" for first, last in sections)
            for encoding, double in encodings():
                for layout in (1, 2, 100):
                    source = RestartForm(layout, encoding, double)
                    if not readable(source) or layout == 100 and sections[0] != (1, 5):
                        continue
                    with self.subTest(sections=text, source=source):
                        self.write_restart("in", source, solution)
                        content, notes = self.convert("two", source, source, "--sections", text)
                        self.assert_holds(content, source, carried_over(solution, source))
                        self.assertIn("out is read with --sections " + text, notes)

    def test_single_variables_need_no_dash(self):
        solution = sample_solution(TWO, 3, sections=[(1, 1), (2, 2), (3, 3)])
        form = RestartForm(1)
        self.write_restart("in", form, solution)
        content, _ = self.convert("two", form, form, "--sections", "1,2,3")
        self.assert_holds(content, form, carried_over(solution, form))

    def test_leading_record_holds_five(self):
        solution = sample_solution(ONE, 7)
        self.write_restart("in", RestartForm(3), solution)
        for target in (RestartForm(100), RestartForm(101)):
            content, notes = self.convert("one", RestartForm(3), target)
            split = carried_over(solution, RestartForm(3))
            split.sections = [(1, 5), (6, 7)]
            self.assert_holds(content, target, split)
            self.assertIn("out is read with --sections 1-5,6-7", notes)

    def test_function_files_hold_one_record(self):
        solution = sample_solution(TWO, 7, sections=[(1, 5), (6, 7)])
        self.write_restart("in", RestartForm(2), solution)
        content, notes = self.convert("two", RestartForm(2), RestartForm(3), "--sections",
                                      self.SEVEN)
        expected = carried_over(solution, RestartForm(2))
        expected.sections = [(1, 7)]
        self.assert_holds(content, RestartForm(3), expected)
        self.assertNotIn("--sections", notes)

    def test_sections_out_of_order_become_one(self):
        solution = sample_solution(TWO, 7, sections=[(6, 7), (1, 5)])
        self.write_restart("in", RestartForm(1), solution)
        content, _ = self.convert("two", RestartForm(1), RestartForm(3), "--sections", "6-7,1-5")
        expected = carried_over(solution, RestartForm(1))
        expected.sections = [(1, 7)]
        self.assert_holds(content, RestartForm(3), expected)

    def test_function_files_of_any_number(self):
        for count in (1, 2, 12):
            solution = sample_solution(TWO, count)
            for encoding, double in encodings():
                form = RestartForm(3, encoding, double)
                with self.subTest(form=form, count=count):
                    self.write_restart("in", form, solution)
                    self.assert_holds(self.convert("two", form, form)[0], form,
                                      carried_over(solution, form))

    def test_wrong_sections_are_refused(self):
        solution = sample_solution(TWO, 5)
        self.write("out", b"before")
        for encoding, double in encodings():
            for layout in (1, 2):
                form = RestartForm(layout, encoding, double)
                self.write_restart("in", form, solution)
                # Without record markers the distribution over sections makes no difference.
                for sections in ("1-4", "1-6", "1-5,6-7",
                                 *(() if encoding == "binary" else ("1-2,3-5",))):
                    with self.subTest(form=form, sections=sections):
                        self.fail_with(1, "restart", "two", "in", "out", *form.options(),
                                       "--sections", sections, says="in: ")
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()

    def test_sections_that_do_not_go_with_the_file(self):
        self.write_restart("in", RestartForm(3), sample_solution(ONE, 3))
        self.fail_with(1, "restart", "one", "in", "out", "--layout", "3", "--sections", "1-2",
                       says=("in: is not what --layout 3 --sections 1-2 says",
                             "--sections 1-3"))
        self.write_restart("in", RestartForm(101), sample_solution(ONE))
        self.fail_with(1, "restart", "one", "in", "out", "--layout", "101", "--sections", "1-4",
                       says="in: is not what --layout 101 --sections 1-4 says")
        # A form that is stated completely is not checked against others.
        self.fail_with(2, "restart", "one", "in", "out", *RestartForm(101).options(),
                       "--restart-byte-order", NATIVE, "--sections", "1-4",
                       says="in: found the sections 1-4, expected sections that begin with 1-5")

    def test_text_that_is_no_list_of_sections(self):
        self.write_restart("in", RestartForm(), sample_solution(ONE))
        for text in ("", "0-5", "2-5", "5-1", "1-5,5-6", "1-5,7-8", "1-5,", "a", "1-x", "1:5",
                     "-5", "1-5-6", "1-99999999999", ",".join(map(str, range(1, 32)))):
            with self.subTest(text=text):
                self.fail_with(2, "restart", "one", "in", "out", "--sections", text,
                               says=("--sections", "--help"))

    def test_more_behind_the_last_block_is_noted(self):
        self.write_restart("in", RestartForm(1), sample_solution(ONE, 7, sections=[(1, 5), (6, 7)]))
        result = self.run_tool("restart", "one", "in", "out", "--layout", "1",
                               "--sections", "1-5")
        self.assertEqual(result.returncode, 0)
        self.assertIn("follow behind the last record", result.stderr_text)
        self.assertIn("--sections", result.stderr_text)


class HeaderValues(RestartTest):
    def notes(self, source, target, *more):
        self.write_restart("in", source, sample_solution(ONE))
        content, notes = self.convert("one", source, target, *more)
        return content, notes

    def test_what_the_source_does_not_give_is_noted(self):
        cases = ((2, 2, ()), (1, 1, ()), (1, 101, ("triplets",)),
                 (2, 1, ("step count, step size", "--step, --step-size")),
                 (102, 2, ("Mach number, angle of attack, Reynolds number, time",
                           "--mach, --alpha, --reynolds, --time")),
                 (3, 101, ("step count", "triplets")), (101, 102, ()), (2, 3, ()))
        for source, target, says in cases:
            with self.subTest(source=source, target=target):
                _, notes = self.notes(RestartForm(source), RestartForm(target))
                self.assertEqual(notes.count("p3dgrid: note: "), notes.count("\n"))
                if not says:
                    self.assertEqual(notes, "")
                for text in says:
                    self.assertIn(text, notes)
                result = self.run_tool("--quiet", "restart", "one", "in", "out", "--layout",
                                       source, "--to-layout", target)
                self.assertEqual((result.stdout_text, result.stderr_text), ("", ""))

    def test_values_that_are_stated(self):
        solution = as_read(sample_solution(ONE), RestartForm())
        target = RestartForm(2, double=True)
        content, notes = self.notes(RestartForm(1), target, "--mach", "0.3", "--alpha", "-2.5",
                                    "--reynolds", "1e7")
        solution.parameters = [(0.3, -2.5, 1e7, 0)]
        self.assert_holds(content, target, solution)
        self.assertIn("does not give: time (--time)", notes)
        target = RestartForm(1, double=True)
        content, notes = self.notes(RestartForm(2), target, "--step", "12", "--step-size", "0.7")
        solution.step = (12, 0.7)
        self.assert_holds(content, target, solution)
        self.assertEqual(notes, "")

    def test_stated_values_replace_those_read(self):
        solution = sample_solution(TWO)
        form = RestartForm(2, double=True)
        self.write_restart("in", form, solution)
        content, _ = self.convert("two", form, form, "--time", "9.25")
        solution.parameters = [(*block[:3], 9.25) for block in solution.parameters]
        self.assert_holds(content, form, solution)

    def test_values_without_a_place(self):
        self.write_restart("in", RestartForm(), sample_solution(ONE))
        for options in (("--step", "1"), ("--step-size", "1"), ("--to-layout", "1", "--mach", "1"),
                        ("--to-layout", "3", "--time", "1"), ("--to-layout", "102", "--step", "3")):
            with self.subTest(options=options):
                self.fail_with(2, "restart", "one", "in", "out", *options,
                               says=("out: not written: layout ", "has no place for"))
                self.assertFalse(self.path("out").exists())
        for option in ("--mach", "--alpha", "--reynolds", "--time", "--step", "--step-size"):
            self.fail_with(2, "restart", "one", "in", "out", option, "x", says=(option, "--help"))
        self.fail_with(2, "restart", "one", "in", "out", "--to-layout", "1", "--step", "1.5",
                       says="--step")

    def test_lost_digits_are_noted(self):
        lost = "out holds about 7 digits of each variable; --to-precision double keeps more\n"
        text = RestartForm(2, "formatted")
        self.write("in", restart_bytes(text, sample_solution(ONE)))
        for options, noted in ((("--to-format", "binary"), True),
                               (("--to-format", "binary", "--to-precision", "single"), False),
                               (("--to-format", "binary", "--to-precision", "double"), False),
                               ((), False)):
            with self.subTest(options=options):
                result = self.run_tool("restart", "one", "in", "out", *options)
                self.assertEqual(result.returncode, 0)
                self.assertEqual(result.stderr_text, "p3dgrid: note: " + lost if noted else "")
        for target in (RestartForm(), RestartForm(double=True), text):
            self.assertEqual(self.notes(RestartForm(double=True), target)[1], "")


class Talven(RestartTest):
    FORM = RestartForm(0, double=True)

    def convert_talven(self, form, target, *options, **header):
        solution = sample_solution(TWO)
        self.write("in", pack(talven_records(solution, **header), form))
        return solution, *self.convert("two", form, target, *options)

    def test_step_is_kept(self):
        for encoding in ("unformatted", "binary", "formatted"):
            with self.subTest(encoding=encoding):
                target = RestartForm(1, double=True)
                solution, content, notes = self.convert_talven(
                    RestartForm(0, encoding, True), target)
                self.assert_holds(content, target, solution)
                self.assertNotIn("does not give", notes)

    def test_single_precision_without_flow_parameters(self):
        target = RestartForm(1)
        solution, content, _ = self.convert_talven(RestartForm(0), target, equations=2)
        self.assert_holds(content, target, carried_over(solution, RestartForm(0)))

    def test_flow_parameters(self):
        target = RestartForm(2, double=True)
        solution, content, notes = self.convert_talven(
            self.FORM, target, parameters=(1, 3e6, 0.85, 2.5, 4, 5, 6, 7, 8))
        solution.parameters = [(0.85, 2.5, 3e6, 0)] * 2
        self.assert_holds(content, target, solution)
        self.assertIn("does not give: time (--time)", notes)

    def test_older_time_levels_are_left_out(self):
        for integration in (2, 3):
            for encoding in ("unformatted", "binary"):
                target = RestartForm(1, double=True)
                solution, content, _ = self.convert_talven(
                    RestartForm(0, encoding, True), target, integration=integration)
                self.assert_holds(content, target, solution)

    def test_text_holds_no_older_time_levels(self):
        form, target = RestartForm(0, "formatted"), RestartForm(1, double=True)
        for integration in (2, 3):
            solution, content, _ = self.convert_talven(form, target, integration=integration,
                                                       older=0)
            self.assert_holds(content, target, solution)

    def test_older_time_levels_of_text_are_not_taken_for_values(self):
        form = RestartForm(0, "formatted")
        self.write("in", pack(talven_records(sample_solution(TWO), integration=2), form))
        self.fail_with(1, "restart", "two", "in", "out", *form.options(), "--sections", "1-5",
                       "--to-layout", "1", says="in: ")

    def test_single_precision_with_flow_parameters(self):
        for form in (RestartForm(0), RestartForm(0, "binary")):
            target = RestartForm(2, double=True)
            solution, content, _ = self.convert_talven(
                form, target, parameters=(1, 3e6, 0.85, 2.5, 4, 5, 6, 7, 8))
            expected = carried_over(solution, form)
            expected.parameters = [(0.85, 2.5, 3e6, 0)] * 2
            self.assert_holds(content, target, expected)

    def test_wrong_precision_of_flow_parameters(self):
        self.write("in", pack(talven_records(sample_solution(TWO)), self.FORM))
        self.fail_with(1, "restart", "two", "in", "out", "--layout", "0", "--to-layout", "1",
                       "--restart-precision", "single", says="--restart-precision double")

    def test_layout_0_is_never_written(self):
        self.write("in", pack(talven_records(sample_solution(TWO)), self.FORM))
        self.write("out", b"before")
        self.write_restart("solution", RestartForm(2), sample_solution(TWO))
        for file, *options in (("in", *self.FORM.options()),
                               ("in", *self.FORM.options(), "--to-layout", "0"),
                               ("in",), ("solution", "--to-layout", "0")):
            self.fail_with(2, "restart", "two", file, "out", *options,
                           says=("out: not written: ", "layout 0", "--to-layout 1"))
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()


class Triplets(RestartTest):
    def test_single_precision_layout_100_is_written_with_triplets(self):
        solution = sample_solution(TWO)
        self.write_restart("in", RestartForm(1), solution)
        for encoding in ("unformatted", "binary"):
            target = RestartForm(100, encoding)
            content, _ = self.convert("two", RestartForm(1), target)
            self.assert_holds(content, target, carried_over(solution, RestartForm(1)))

    def test_single_precision_layout_100_without_triplets_is_read(self):
        solution = sample_solution(TWO)
        for encoding in ("unformatted", "binary"):
            source = RestartForm(100, encoding)
            self.write_restart("in", source, solution, leading=False)
            content, _ = self.convert("two", source, RestartForm(1))
            self.assert_holds(content, RestartForm(1),
                              carried_over(solution, source))

    def test_triplets_of_layout_100_survive(self):
        solution = sample_solution(TWO)
        for source in (RestartForm(100, double=True), RestartForm(100, "binary", True),
                       RestartForm(100, "formatted")):
            self.write_restart("in", source, solution)
            content, notes = self.convert("two", source, source)
            self.assert_holds(content, source, solution)
            self.assertNotIn("triplets", notes)

    def test_triplets_of_layout_101_survive(self):
        solution = sample_solution(ONE)
        for encoding, double in encodings():
            source = RestartForm(101, encoding, double)
            self.write_restart("in", source, solution)
            target = RestartForm(100, "formatted")
            content, notes = self.convert("one", source, target)
            self.assert_holds(content, target, carried_over(solution, source))
            self.assertNotIn("triplets", notes)


class Extensions(RestartTest):
    CHAINS = (
        # flags, their variables, number of variables, variables in no record
        ((1, 999), [(6, 10)], 10, None),
        ((41, 999), [(6, 8)], 8, None),
        ((1, 41, 999), [(6, 10), (11, 13)], 13, None),
        ((41, 41, 999), [(6, 8), (11, 13)], 13, (9, 10)),
        ((7, 41, 999), [None, (11, 13)], 13, (6, 10)),
        ((7, 999), [None], 5, None),
    )

    def solutions(self):
        for flags, extensions, count, gap in self.CHAINS:
            solution = sample_solution(ONE, count, sections=[(1, 5)], flags=flags,
                                       extensions=extensions)
            yield solution, count, gap

    def test_kept_by_layout_101(self):
        for solution, _, _ in self.solutions():
            for encoding, double in encodings():
                form = RestartForm(101, encoding, double)
                with self.subTest(flags=solution.flags, form=form):
                    self.write_restart("in", form, solution)
                    content, notes = self.convert("one", form, form)
                    self.assert_holds(content, form, carried_over(solution, form))
                    self.assertNotIn("skips", notes)

    def test_a_section_of_other_layouts(self):
        for solution, count, gap in self.solutions():
            for encoding, double in encodings():
                source = RestartForm(101, encoding, double)
                for target in (RestartForm(1), RestartForm(2, "formatted"),
                               RestartForm(102, double=True), RestartForm(100, "binary", True)):
                    with self.subTest(flags=solution.flags, source=source, target=target):
                        self.write_restart("in", source, solution)
                        content, notes = self.convert("one", source, target)
                        expected = carried_over(solution, source)
                        if count > 5:
                            expected.sections = [(1, 5), (6, count)]
                            self.assertIn(f"--sections 1-5,6-{count}", notes)
                        if gap:
                            for number in range(gap[0], gap[1] + 1):
                                expected.flow[0][number - 1] = [0] * 8
                            self.assertIn(f"holds 0 for the variables {gap[0]}-{gap[1]}", notes)
                        self.assert_holds(content, target, expected)

    def test_in_function_files(self):
        solution = sample_solution(ONE, 8, sections=[(1, 5)], flags=(41, 999),
                                   extensions=[(6, 8)])
        self.write_restart("in", RestartForm(101), solution)
        content, _ = self.convert("one", RestartForm(101), RestartForm(3))
        self.assert_holds(content, RestartForm(3),
                          carried_over(sample_solution(ONE, 8), RestartForm(101)))

    def test_besides_further_sections(self):
        form = RestartForm(101)
        solution = sample_solution(ONE, 10, sections=[(1, 5), (6, 7)], flags=(1, 999),
                                   extensions=[(6, 10)])
        self.write_restart("in", form, solution)
        content, _ = self.convert("one", form, form, "--sections", "1-5,6-7")
        self.assert_holds(content, form, carried_over(solution, form))
        self.path("out").unlink()
        for layout in (1, 3):
            self.fail_with(2, "restart", "one", "in", "out", *form.options(), "--sections",
                           "1-5,6-7", "--to-layout", layout,
                           says=f"out: not written: layout {layout} holds each variable once")
        solution = sample_solution(ONE, 7, sections=[(1, 5), (6, 7)])
        self.write_restart("in", form, solution)
        content, _ = self.convert("one", form, form, "--sections", "1-5,6-7")
        self.assert_holds(content, form, carried_over(solution, form))

    def test_chain_without_end(self):
        solution = sample_solution(ONE, flags=(7, 7, 7), extensions=[None] * 3)
        self.write_restart("in", RestartForm(101), solution)
        self.fail_with(1, "restart", "one", "in", "out", "--layout", "101",
                       says=("in: ", "ends with 999"))


class Refused(RestartTest):
    def refuse(self, status, *arguments, says=()):
        self.write("out", b"before")
        message = self.fail_with(status, "restart", *arguments, says=says)
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()
        return message

    def test_more_blocks_than_the_target_holds(self):
        self.write_restart("in", RestartForm(), sample_solution(TWO))
        for layout in (101, 102):
            self.refuse(2, "two", "in", "out", "--to-layout", layout,
                        says=f"out: not written: layout {layout} holds one block")
        self.refuse(2, "two", "in", "out", "--to-multiblock", "no", says="--to-multiblock no")

    def test_fewer_variables_than_the_target_holds(self):
        self.write_restart("in", RestartForm(3), sample_solution(ONE, 3))
        for layout in (2, 100, 101):
            self.refuse(2, "one", "in", "out", "--layout", "3", "--to-layout", layout,
                        says="holds five variables, and there are 3")

    def test_functions_that_differ_by_block(self):
        solution = sample_solution(TWO, 3)
        solution.flow[1].pop()
        form = RestartForm(3)
        self.write_restart("in", form, solution)
        for target in (form, RestartForm(3, "formatted"), RestartForm(3, "binary", True)):
            content, _ = self.convert("two", form, target)
            self.assert_holds(content, target, carried_over(solution, form))
        self.refuse(2, "two", "in", "out", "--layout", "3", "--to-layout", "1",
                    says=("out: not written: layout 1 holds equally many variables in all blocks",
                          "2 to 3"))

    def test_solution_of_another_grid(self):
        self.write_restart("in", RestartForm(), sample_solution(ONE))
        self.refuse(1, "two", "in", "out", says="in: does not belong to two")
        result = self.run_tool("restart", "--quiet", "two", "in", "out")
        self.assertIn(" Number of Grid blocks   : 2\n", result.stdout_text)
        self.write_restart("in", RestartForm(), sample_solution([(2, 2, 2), (1, 3, 1)]))
        self.refuse(1, "two", "in", "out", says="in: does not belong to two")
        result = self.run_tool("restart", "--quiet", "two", "in", "out")
        self.assertIn(" Indecies for block 2 in grid and restart file do not match.\n",
                      result.stdout_text)

    def test_solution_of_another_grid_without_extents(self):
        self.write_restart("in", RestartForm(102), sample_solution([(3, 2, 2)]))
        self.refuse(1, "one", "in", "out", "--layout", "102", "--to-layout", "1", says="in: ")
        self.refuse(1, "two", "in", "out", "--layout", "102", "--to-layout", "1",
                    says="in: holds 1 block, the grid 2")
        form = RestartForm(100, double=True)
        self.write_restart("in", form, sample_solution(ONE))
        self.refuse(1, "two", "in", "out", *form.options(), says="in: holds 1 block, the grid 2")

    def test_own_input(self):
        content = self.write_restart("in", RestartForm(), sample_solution(ONE)).read_bytes()
        grid = self.path("one").read_bytes()
        os.link(self.path("in"), self.path("twin"))
        self.path("link").symlink_to("one")
        for target in ("in", "./in", "twin", "one", "link"):
            self.fail_with(2, "restart", "one", "in", target, says="the file to be read")
        self.assertEqual(self.path("in").read_bytes(), content)
        self.assertEqual(self.path("one").read_bytes(), grid)

    def test_missing_and_unusable_files(self):
        self.write_restart("in", RestartForm(), sample_solution(ONE))
        self.refuse(2, "one", "missing", "out", says="missing: No such file")
        self.refuse(2, "missing", "in", "out", says="missing: No such file")
        self.refuse(2, "one", ".", "out", says="Is a directory")
        os.mkfifo(self.path("pipe"))
        self.refuse(2, "one", "pipe", "out", says="pipe: is not a regular file")
        self.fail_with(2, "restart", "one", "in", "nowhere/out", says="nowhere/out: ")

    def test_damaged_anywhere(self):
        for layout in (1, 2, 3, 100, 101, 102):
            for encoding, double in (("unformatted", True), ("binary", True)):
                form = RestartForm(layout, encoding, double)
                # A truncated binary file may have the length of one with fewer variables.
                stated = ("--sections", "1-5") if encoding == "binary" else ()
                content = restart_bytes(form, sample_solution(ONE))
                for length in range(0, len(content), 7):
                    with self.subTest(form=form, length=length):
                        self.write("in", content[:length])
                        self.refuse(1, "one", "in", "out", *form.options(), *stated, says="in: ")

    def test_text_that_ends_early_or_goes_on(self):
        for layout in LAYOUTS:
            form = RestartForm(layout, "formatted")
            content = restart_bytes(form, sample_solution(ONE))
            for changed in (b"", content[:10], content[:len(content) // 2],
                            content[:content.rindex(b" ")] if layout != 101 else content[:-6],
                            content + b"1.5\n"):
                with self.subTest(layout=layout, length=len(changed)):
                    self.write("in", changed)
                    self.refuse(1, "one", "in", "out", *form.options(), says="in: ")

    def test_headers_that_cannot_be_true(self):
        for words in ((0,), (-1,), (0x7FFFFFFF,), (1, -2, 3, 3), (1, 70000, 70000, 1)):
            self.write("in", struct.pack(f"={len(words)}i", *words) + bytes(41))
            with self.subTest(words=words):
                for layout in (2, 3):
                    self.refuse(1, "one", "in", "out", "--layout", layout, "--restart-format",
                                "binary", says="in")

    def test_write_that_fails(self):
        import resource
        solution = sample_solution([(4000, 1, 1)])
        block = ONE_BLOCK[0]
        self.write_grid("grid", blocks=[type(block)((4000, 1, 1), *([0.5] * 4000,) * 3)])
        self.write_restart("in", RestartForm(), solution)
        self.write("out", b"before")
        for encoding, size in (("unformatted", 20_000), ("formatted", 20_000), ("binary", 10)):
            self.fail_with(2, "restart", "grid", "in", "out", "--to-format", encoding,
                           says=("out: not written: ", "File too large"),
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                                 (size, size)))
            self.assertEqual(self.path("out").read_bytes(), b"before")
            self.assert_no_leftovers()

    def test_long_paths(self):
        self.path("d" * 100).mkdir()
        name = "d" * 100 + "/" + "r" * 100
        content = self.write_restart(name, RestartForm(), sample_solution(ONE)).read_bytes()
        self.succeed("restart", "one", name, name + "-out")
        self.assertEqual(self.path(name + "-out").read_bytes(), content)


class Advice(RestartTest):
    def refuse(self, actual, stated, says):
        self.write_restart("in", actual, sample_solution(TWO))
        return self.fail_with(1, "restart", "two", "in", "out", *stated.options(),
                              "--to-layout", "1", says=("in: ", says))

    def test_option_that_would_help(self):
        self.refuse(RestartForm(double=True), RestartForm(), "--restart-precision double")
        self.refuse(RestartForm(), RestartForm(double=True), "--restart-precision single")
        self.refuse(RestartForm(2, "binary", True), RestartForm(2, "binary"),
                    "--restart-precision double")
        self.refuse(RestartForm(2, "formatted"), RestartForm(), "--restart-format formatted")
        self.refuse(RestartForm(2, "binary"), RestartForm(), "--restart-format binary")
        self.refuse(RestartForm(3), RestartForm(), "--layout 3")
        self.refuse(RestartForm(1, double=True), RestartForm(1), "--restart-precision double")

    def test_form_stated_wrongly_is_never_a_success(self):
        every = [form for form in forms() if form.layout in (1, 2, 3)]
        for actual in every:
            self.write_restart("in", actual, sample_solution(TWO))
            for stated in every:
                if str(actual) == str(stated):
                    continue
                with self.subTest(actual=actual, stated=stated):
                    self.fail_with(1, "restart", "two", "in", "out", *stated.options(),
                                   "--to-layout", "1")

    def test_values_that_are_not_numbers_pass_through(self):
        solution = sample_solution(ONE)
        solution.flow[0][0][:2] = [math.nan, math.inf]
        self.write_restart("in", RestartForm(), solution)
        self.succeed("restart", "one", "in", "out", "--to-format", "formatted")
        self.succeed("restart", "one", "out", "back", "--restart-format", "formatted",
                     "--to-format", "unformatted")
        self.assertEqual(self.path("back").read_bytes(), self.path("in").read_bytes())


if __name__ == "__main__":
    main()
