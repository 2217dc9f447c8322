"""p3dgrid check: its reports on generated and real grids and restart files."""

import itertools
import math
import os
import pathlib
import resource
import struct
import unittest

from restart_support import (RestartForm, encodings, pack, restart_bytes, sample_solution,
                             talven_records)
from support import (NATIVE, ONE_BLOCK, OTHER, SANITIZED, SIGNS, TWO_BLOCKS, Block, Form, ToolTest,
                     all_forms, grid_bytes, main)

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]
SAMPLES = os.environ.get("P3DGRID_SAMPLES", "")

COUNTS_DIFFER = """
 Number of blocks in Grid do not match the Restart file
 Number of Grid blocks   : 2
 Number of Restart blocks: 1

   --- CODE HALTED ---
"""

SECOND_BLOCK_DIFFERS = """
 Indecies for block 2 in grid and restart file do not match.
               i     j     k  
 Grid   :      3     1     1
 Restart:      3     1     2

   --- CODE HALTED ---
"""


class CheckTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("grid")

    def write_restart(self, name, form, extents):
        return self.write(name, restart_bytes(form, sample_solution(extents)))

    def agree(self, *arguments, grid="grid", restart="flow"):
        for quiet in ((), ("--quiet",)):
            self.assertEqual(self.succeed("check", grid, restart, *arguments, *quiet),
                             f"{grid} and {restart} agree\n")

    def differ(self, report, *arguments, grid="grid", restart="flow"):
        for option in ((), ("--quiet",), ("--verbose",)):
            result = self.run_tool("check", grid, restart, *arguments, *option)
            self.assertEqual(result.returncode, 1)
            self.assertEqual(result.stdout_text, report)
            self.assertRegex(result.stderr_text, rf"\Ap3dgrid: {restart}: does not belong to "
                                                 rf"{grid}[^\n]*\n\Z")
        return result.stderr_text


class Headers(CheckTest):
    def test_every_form_agrees_with_its_grid(self):
        for layout in (1, 2, 3):
            for encoding, double in encodings():
                form = RestartForm(layout, encoding, double)
                self.write_restart("flow", form, TWO)
                with self.subTest(form=form):
                    self.agree(*form.options())

    def test_every_grid_agrees(self):
        self.write_restart("flow", RestartForm(), TWO)
        for form in all_forms():
            if not form.multiblock:
                continue
            with self.subTest(form=form):
                self.write_grid("grid", form)
                self.agree(*form.options("grid"))

    def test_defaults(self):
        self.write_restart("flow", RestartForm(), TWO)
        self.agree()

    def test_layout_0(self):
        self.write("flow", pack(talven_records(sample_solution(TWO)), RestartForm(0, double=True)))
        self.agree("--layout", "0", "--restart-precision", "double")
        self.agree("--layout", "0")
        self.agree()
        self.fail_with(1, "check", "grid", "flow", "--layout", "0", "--restart-precision",
                       "single", says=("flow: ", "--restart-precision double"))

    def test_block_counts_differ(self):
        for layout in (1, 2, 3):
            self.write_restart("flow", RestartForm(layout), ONE)
            message = self.differ(COUNTS_DIFFER, "--layout", str(layout))
            self.assertNotIn("--", message)

    def test_extents_differ(self):
        for layout in (1, 2, 3):
            self.write_restart("flow", RestartForm(layout), [(2, 2, 2), (3, 1, 2)])
            self.differ(SECOND_BLOCK_DIFFERS, "--layout", str(layout))

    def test_the_whole_files_are_looked_at(self):
        content = restart_bytes(RestartForm(), sample_solution(TWO))
        self.write("flow", content[:60])
        self.fail_with(1, "check", "grid", "flow", says=("flow: is cut short", "record 3 of 6"))
        self.write("flow", content)
        self.write("grid", self.path("grid").read_bytes()[:-1])
        self.fail_with(1, "check", "grid", "flow", says=("grid: is cut short", "record 4 of 4"))

    def test_function_file_after_one_of_fewer_blocks(self):
        # The counts of variables are read twice in a run, into the same array.
        self.write_restart("flow", RestartForm(3), TWO * 40)
        self.write_grid("grid", blocks=TWO_BLOCKS * 40)
        self.agree("--layout", "3")

    def test_without_block_counts(self):
        self.write_grid("grid", Form(multiblock=False), ONE_BLOCK)
        for layout in (1, 2, 3):
            form = RestartForm(layout, multiblock=False)
            self.write_restart("flow", form, ONE)
            self.agree(*form.options(), "--grid-multiblock", "no")
        self.write_restart("flow", RestartForm(1), TWO)
        self.fail_with(1, "check", "grid", "flow", "--layout", "1", "--grid-multiblock", "no",
                       says="flow: does not belong to grid: it holds 2 blocks, the grid 1")

    def test_block_count_in_one_of_the_two(self):
        for grid_count in (True, False):
            self.write_grid("grid", Form(multiblock=grid_count), ONE_BLOCK)
            form = RestartForm(multiblock=not grid_count)
            options = [*form.options(), "--grid-multiblock", "yes" if grid_count else "no"]
            self.write_restart("flow", form, ONE)
            self.assertTrue(self.succeed("check", "grid", "flow", *options).endswith(
                "grid and flow agree\n"))
            self.write_restart("flow", form, [(2, 2, 3)])
            self.fail_with(1, "check", "grid", "flow", *options,
                           says="flow: does not belong to grid: its block 1 is 2x2x3, the grid's "
                                "2x2x2")
        self.write_restart("flow", RestartForm(), TWO)
        self.fail_with(1, "check", "grid", "flow", "--grid-multiblock", "no",
                       says="it holds 2 blocks, the grid 1")

    def test_layouts_without_extents_agree_by_their_lengths(self):
        for layout in (100, 101, 102):
            for double in (False, True):
                form = RestartForm(layout, double=double)
                self.write_grid("grid", blocks=ONE_BLOCK)
                self.write("flow", restart_bytes(form, sample_solution(ONE),
                                                 leading=layout == 101 or layout == 100 and double))
                if layout == 102 and double:
                    self.fail_with(2, "check", "grid", "flow",
                                   says=("--restart-precision single", "--sections 1-10",
                                         "--restart-precision double", "--sections 1-5"))
                    self.agree("--sections", "1-5")
                else:
                    self.agree()
                self.write_grid("grid")
                self.assertEqual(self.run_tool("check", "grid", "flow").returncode, 1)


class Alone(CheckTest):
    def test_sound_files(self):
        for form in all_forms():
            self.write_grid("grid", form, ONE_BLOCK)
            self.assertRegex(self.succeed("check", "grid", "--grid-format", "auto"),
                             r"\Agrid: no damage found; grid, [^\n]*; 1 block, 8 points\n\Z")
        for layout in (1, 2, 3, 101):
            for encoding, double in encodings():
                self.write_restart("flow", RestartForm(layout, encoding, double), [(7, 3, 2)])
                self.assertIn(f"no damage found; layout {layout}, {encoding}",
                              self.succeed("check", "flow"))

    def test_what_has_been_stated_is_compared(self):
        stated = (*Form(double=True).options("grid"), "--grid-byte-order", NATIVE)
        self.fail_with(1, "check", "grid", *stated, says=("grid: ", "--grid-precision single"))

    def test_a_marker_that_is_wrong(self):
        content = self.path("grid").read_bytes()
        # After the record of block 1 and before that of block 2.
        for offset, says in ((44 + 4 + 96, "record 3 of 4 at byte 44: its marker at byte 144 says "
                                           "7 where 96 is expected"),
                             (44 + 104, "record 4 of 4 at byte 148 holds 7 bytes by its marker "
                                        "where 36 are expected")):
            self.write("grid", content[:offset] + struct.pack("=i", 7) + content[offset + 4:])
            self.fail_with(1, "check", "grid", says="grid: " + says)

    def test_bytes_behind_the_last_record(self):
        content = self.path("grid").read_bytes()
        self.write("grid", content + bytes(8))
        self.fail_with(1, "check", "grid", says=("grid: 8 bytes follow behind the last record",
                                                 f"from byte {len(content)} on"))

    def test_a_line_that_is_no_number(self):
        self.write("grid", b"1\n1 1 2\n1 2\n3 x4\n5 6\n")
        self.fail_with(1, "check", "grid", says=("grid: record 3 of 3: line 4 holds \"x4\"",
                                                 "a number is expected"))

    def test_text_that_goes_on(self):
        self.write("grid", b"1\n1 1 3\n1 2 3 4 5 6 7 8 9\n10\n")
        self.fail_with(1, "check", "grid", says=("grid: ", "line 4"))

    def test_values_are_what_a_reader_takes(self):
        """Blanking values are integers, and a NUL byte is not part of a number."""
        for value in ("1.5", "1e0", "99999999999"):
            self.write("grid", f"1\n1 1 2\n1 2 3 4 5 6\n1 {value}\n".encode())
            self.fail_with(1, "check", "grid", "--grid-iblank", "yes",
                           says=f'record 3 of 3: line 4 holds "{value}" where ')
        self.write("grid", b"1\n1 1 2\n1 2 3\0 4 5 6\n")
        self.fail_with(1, "check", "grid", "--grid-format", "formatted",
                       says='line 3 holds "3?" where a number is expected')
        self.write("grid", b"1\n1 1 2\n1 2 3 4 5 6\n2*1\n")
        self.assertIn("with blanking", self.succeed("check", "grid"))

    def test_long_words_are_numbers(self):
        """The words are those that Fortran accepts; a word without an end is not one."""
        for digits in (5000, 100_000):
            one = "0" * digits + "1"
            self.write("grid", f"1\n{one} 1 1\n{one}.5 {one} {one}e-3\n".encode())
            self.assertIn("1 block, 1 point", self.succeed("check", "grid"))
            self.succeed("convert", "grid", "out", "--to-format", "binary")
            self.assertEqual(self.path("out").read_bytes()[16:],
                             struct.pack("=3f", 1.5, 1, 0.001))
        self.write("grid", b"1\n1 1 1\n" + b"1" * 2_000_000)
        self.fail_with(1, "check", "grid", says='1..." where a number is expected')
        self.fail_with(1, "convert", "grid", "out", *Form("formatted").options("grid"),
                       says="a word of more than 1048576 characters")

    def test_words_behind_the_last_value(self):
        for end, says in ((b"end of grid\n", '"end" on line 4'), (b"\n\n* \n", '"*" on line 6'),
                          (b"a\nb\n", '"a" on line 4')):
            self.write("text", b"1\n1 1 2\n1 2 3 4 5 6\n" + end)
            self.fail_with(1, "check", "text", says=("text: ", says, "behind the last record"))
        self.write("text", b"1\n1 1 2\n1 2 3 4 5 6\nend of grid\n")
        result = self.run_tool("info", "text")
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: text: words follow behind the last record, \"end\" on line 4, and are "
                      "left out", result.stderr_text)

    def test_the_nearest_reading_is_named(self):
        """Damage is reported for the form with the smallest difference in length."""
        content = grid_bytes(Form(double=True, iblank=True), TWO_BLOCKS)
        self.write("grid", content[:44] + struct.pack("=i", 225) + content[48:])
        message = self.fail_with(1, "check", "grid", says=(
            "record 3 of 4 at byte 44 holds 225 bytes by its marker where 224 are expected",
            "double precision, multi-block, with blanking"))
        self.assertNotIn("; or as", message)
        self.write("grid", grid_bytes(Form("binary"), TWO_BLOCKS) + b"12345")
        self.fail_with(1, "check", "grid", says=("holds 165 bytes where 160 are expected",
                                                 "grid, binary, "))

    def test_a_short_solution_beside_its_grid(self):
        self.write_grid("grid", Form(), ONE_BLOCK)
        form = RestartForm(2, "binary", True)
        content = restart_bytes(form, sample_solution(ONE))
        self.write("flow", content[:-1])
        self.fail_with(1, "check", "grid", "flow", says=(
            f"flow: is cut short: the file holds {len(content) - 1} bytes where {len(content)} are "
            "expected; taken as layout 2, binary"))

    def test_text_of_one_value_a_line(self):
        """A solution takes more records of such a grid, but no more lines."""
        values = [f"{n}.5" for n in range(81)]
        values[40] = "****"
        self.write("grid", ("1\n3 3 3\n" + "\n".join(values) + "\n").encode())
        self.fail_with(1, "check", "grid", says=(
            'record 3 of 3: line 43 holds "****" where a number is expected; taken as grid'))
        self.write("grid", ("1\n3 3 3\n" + "\n".join(values[41:]) + "\n").encode())
        self.fail_with(1, "check", "grid", says=(
            "is cut short: record 3 of 3: the text ends at line 42, 41 values short; taken as grid"))

    def test_damage_in_the_header(self):
        content = self.path("grid").read_bytes()
        for damaged, says in (
                (content[:12], "is cut short: the file ends at byte 12 behind record 1, where 24 "
                               "bytes are expected for the extents of 2 blocks"),
                (content[:30], "is cut short: record 2 at byte 12: its marker at byte 12 announces "
                               "24 bytes, and the file ends at byte 30"),
                (struct.pack("=i", 5) + content[4:], "record 1 at byte 0: its marker at byte 0 says "
                                                     "5 where 4 is expected, as at byte 8"),
                (content[:8] + struct.pack("=i", 5) + content[12:],
                 "record 1 at byte 0: its marker at byte 8 says 5 where 4 is expected, as at byte 0"),
                (content[:4] + struct.pack("=i", 1) + content[8:],
                 "record 2 at byte 12 holds 24 bytes by its marker where 12 are expected for the "
                 "extents of 1 block"),
                (content[:28] + struct.pack("=i", -3) + content[32:],
                 "record 2 at byte 12 gives block 2 the extents -3 1 1, which a file of 192 bytes "
                 "cannot hold")):
            self.write("damaged", damaged)
            self.fail_with(1, "check", "damaged", says=("damaged: " + says,
                                                        f"taken as unformatted, {NATIVE}-endian"))

    def test_files_without_a_header_are_told_by_their_beginning(self):
        for content, says in ((b"# a wing\n1\n", 'line 1 is "# a wing"'),
                              (b"\x1f\x8b\x07" + bytes(99), "gunzip"),
                              (b"\xef\xbb\xbf1\n", "first bytes are ef bb bf 31 0a"),
                              (bytes(4096), "first bytes are 00 00 00 00 00 00 00 00")):
            self.write("file", content)
            self.fail_with(1, "check", "file", says=("its beginning is no header", says))

    def test_blocks_that_a_text_has_no_lines_for(self):
        self.write("grid", b" 5000000\n 15000000*0\n")
        self.fail_with(1, "check", "grid", says=(
            "line 1 announces 5000000 blocks, and a text of 21 bytes has no lines for them"))
        self.write("grid", b"2\n6*0\n\n")
        self.fail_with(1, "check", "grid", says=(
            "record 4 of 4: the text ends at line 3, a line for a record without values is "
            "missing"))
        self.write("grid", b"2\n6*0\n\n\n")
        self.assertIn("2 blocks, 0 points", self.succeed("check", "grid", "--grid-iblank", "no"))

    def test_layouts_that_need_their_grid(self):
        self.write_restart("flow", RestartForm(100, double=True), ONE)
        self.fail_with(2, "check", "flow", "--layout", "100",
                       says=("flow: is layout 100", "p3dgrid check GRID flow"))
        self.fail_with(2, "check", "flow",
                       says=("--grid GRID", "(--layout 100", "(--layout 102"))
        self.write_restart("flow", RestartForm(102), ONE)
        self.fail_with(2, "check", "flow", says=("flow: ", "GRID"))


class Foreign(CheckTest):
    """Forms of other programs, which are recognised and named."""

    def records(self, *contents, marker="i"):
        return b"".join(struct.pack("=" + marker, len(content)) + content +
                        struct.pack("=" + marker, len(content)) for content in contents)

    def planar_with_blanking(self, order, third, extents=(9, 7)):
        """One block in single precision after its block count: x, y and 32 more bits per point."""
        sign, points = SIGNS[order], extents[0] * extents[1]
        xy = struct.pack(f"{sign}{2 * points}f", *(n / 4 for n in range(2 * points)))
        return struct.pack(sign + "3i", 1, *extents) + xy + third

    def test_two_dimensions_as_long_as_three(self):
        """With blanking values they are as long as a block 1 x ni x nj of three coordinates."""
        for order, blanking in itertools.product((NATIVE, OTHER), ([0, 1, -2], [0] * 62 + [1])):
            third = struct.pack(SIGNS[order] + "63i", *(blanking * 63)[:63])
            self.write("file", self.planar_with_blanking(order, third))
            full = [*Form("binary", multiblock=False).options("grid"), "--grid-byte-order", order]
            for options in ([], full[:2]):
                self.assertIn("read as two-dimensional, binary",
                              self.succeed("info", "file", *options))
            for options in (full[4:6], ["--grid-format", "unformatted"], full):
                self.fail_with(1, "info", "file", *options, says="it is that of a file read with ")

    def test_planes_of_three_dimensions(self):
        for order in (NATIVE, OTHER):
            for z in ([0.5] * 63, [0.0] * 62 + [1.0], [0.0] * 63, [math.nan] * 63, [-math.nan] * 63):
                third = struct.pack(SIGNS[order] + "63f", *z)
                self.write("file", self.planar_with_blanking(order, third))
                self.assertIn("without block count", self.succeed("check", "file"))

    def test_zeros_are_coordinates(self):
        content = self.planar_with_blanking(NATIVE, bytes(4 * 6300), (90, 70))
        self.write("file", content)
        self.assertIn("without block count", self.succeed("check", "file"))
        self.assertIn("two-dimensional", self.succeed("check", "file", "--grid-iblank", "yes"))
        self.write("file", content[:-4 * 2000] + struct.pack("=2000i", *[1] * 2000))
        self.assertIn("two-dimensional", self.succeed("check", "file"))

    def test_named_whatever_is_stated(self):
        header = struct.pack("=i", 1), struct.pack("=3i", 5, 4, 2)
        full = [*Form().options("grid"), "--grid-byte-order", NATIVE]
        says = "has the values of a block in several"
        self.write("file", self.records(*header, *[bytes(4 * 40)] * 3))
        for options in (full[:2], full[2:4], ["--grid-format", "binary"]):
            self.fail_with(1, "info", "file", *options, says="file: " + says)
        self.fail_with(1, "info", "file", *full, says="; it " + says)
        self.fail_with(1, "info", "file", "--layout", "2", says="file: " + says)
        self.fail_with(1, "check", "grid", "file", "--restart-format", "unformatted",
                       says="file: " + says)
        # Wrong options for the other file are reported first.
        self.fail_with(1, "info", "grid", "--grid-format", "binary",
                       says="it is that of a file read with --grid-format unformatted")

    def test_other_records(self):
        header = struct.pack("=i", 1), struct.pack("=3i", 5, 4, 2)
        for pieces, size in ((2, 4 * 60), (3, 4 * 40), (3, 8 * 40)):
            self.write("file", self.records(*header, *[bytes(size)] * pieces))
            self.fail_with(1, "info", "file", says="file: has the values of a block in several")
        for marker in "iq":
            self.write("file", self.records(struct.pack("=q", 1), struct.pack("=3q", 5, 4, 2),
                                            bytes(8 * 120), marker=marker))
            self.fail_with(1, "info", "file", says="file: has integers of 64 bits")

    def test_wide_markers_are_no_blocks_without_points(self):
        """They can be read as four blocks, three of them empty."""
        for first in (0.0, 0.5, 1.0):
            xyz = struct.pack("=3d", first, 0.25, 0.75)
            self.write("file", self.records(struct.pack("=i", 1), struct.pack("=3i", 1, 1, 1), xyz,
                                            marker="q"))
            self.assertIn("unformatted, 8-byte markers, ", self.succeed("check", "file"))


class Bounded(CheckTest):
    """Memory and time do not depend on the sizes in damaged headers."""

    def limited(self, *arguments):
        """Runs the command with at most 64 MiB of additional memory and two seconds."""
        def limit():
            resource.setrlimit(resource.RLIMIT_DATA, (80 << 20, 80 << 20))
            resource.setrlimit(resource.RLIMIT_CPU, (2, 2))
        return self.run_tool(*arguments, preexec_fn=limit)

    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def test_files_that_were_never_filled(self):
        for order in (NATIVE, OTHER):
            sign = SIGNS[order]
            extents = struct.pack(sign + "12i", *[250, 250, 274] * 4)
            size = 12 * 250 * 250 * 274
            with open(self.path("grid"), "wb") as file:
                for record in (struct.pack(sign + "i", 4), extents):
                    marker = struct.pack(sign + "i", len(record))
                    file.write(marker + record + marker)
                for _ in range(4):
                    file.write(struct.pack(sign + "i", size))
                    file.seek(size, os.SEEK_CUR)
                    file.write(struct.pack(sign + "i", size))
            result = self.limited("check", "grid")
            self.assertEqual(result.returncode, 0, result.stderr_text)
            self.assertIn("4 blocks, 68500000 points", result.stdout_text)

    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def test_counts_and_zeros(self):
        for count, size in ((5_000_000, 64 << 20), (67_108_864, 823 << 20), (1, 1 << 30),
                            (1 << 20, 1 << 30)):
            with open(self.path("file"), "wb") as file:
                file.write(struct.pack("=i", count))
                file.truncate(size)
            result = self.limited("check", "file")
            self.assertIn(result.returncode, (1, 2), result.stderr_text)
            self.assertRegex(result.stderr_text, r"\Ap3dgrid: file: ")


    @unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
    def test_chains_and_lines_without_end(self):
        one = struct.pack("=ici", -1, b"x", 1)  # a sub-record that another follows
        for content in (one * (16 << 20), b"1 " * (64 << 20),
                        b"30000000\n90000000*1\n" + b"\n" * (64 << 20)):
            with self.subTest(content[:20]):
                self.write("file", content)
                result = self.limited("check", "file")
                self.assertIn(result.returncode, (1, 2), result.stderr_text)
                self.assertRegex(result.stderr_text, r"\Ap3dgrid: file: ")


    @unittest.skipIf(SANITIZED, "sanitizers take memory and time of their own")
    def test_text_beyond_what_is_read_to_find_it_out(self):
        lines = 1 << 16
        piece = b"1234.5678 1234.5678 1234.5678\n" * lines
        pieces = 140
        points = lines * pieces
        with open(self.path("grid"), "wb") as file:
            file.write(b"1\n%d 1 1\n" % points)
            for _ in range(pieces):
                file.write(piece)
        result = self.limited("check", "grid")
        self.assertEqual(result.returncode, 2, result.stderr_text)
        self.assertIn("matches several forms", result.stderr_text)
        shown = self.succeed("info", "grid", "--grid-iblank", "no")
        self.assertIn("compared up to line ", shown)
        self.succeed("check", "grid", "--grid-iblank", "no")
        with open(self.path("grid"), "ab") as file:
            file.write(b"more\n7\n")
        self.fail_with(1, "check", "grid", "--grid-iblank", "no", says="more values follow")


class Failures(CheckTest):
    def test_damaged_restart_header(self):
        content = restart_bytes(RestartForm(), sample_solution(TWO))
        for length in range(0, 44):
            with self.subTest(length=length):
                self.write("flow", content[:length])
                self.fail_with(1, "check", "grid", "flow", says="flow: ")

    def test_damaged_grid_header(self):
        self.write_restart("flow", RestartForm(), TWO)
        content = self.path("grid").read_bytes()
        for length in range(0, 44):
            with self.subTest(length=length):
                self.write("grid", content[:length])
                self.fail_with(1, "check", "grid", "flow", says="grid: ")

    def test_files_that_cannot_be_used(self):
        self.write_restart("flow", RestartForm(), TWO)
        self.fail_with(2, "check", "grid", "missing", says="missing: No such file")
        self.fail_with(2, "check", "missing", "flow", says="missing: No such file")
        self.fail_with(2, "check", "grid", ".", says="Is a directory")
        os.mkfifo(self.path("pipe"))
        self.fail_with(2, "check", "grid", "pipe", says="pipe: is not a regular file")

    def test_files_of_another_form(self):
        stated = ("--restart-format", "unformatted", "--layout", "2")
        self.write_restart("flow", RestartForm(2, "formatted"), TWO)
        self.fail_with(1, "check", "grid", "flow", *stated,
                       says=("flow: ", "--restart-format formatted"))
        self.write_restart("flow", RestartForm(2, "binary"), TWO)
        self.fail_with(1, "check", "grid", "flow", *stated,
                       says=("flow: ", "--restart-format binary"))
        self.write_restart("flow", RestartForm(3), TWO)
        self.fail_with(1, "check", "grid", "flow", *stated, says=("flow: ", "--layout 3"))
        self.write_restart("flow", RestartForm(), TWO)
        self.write_grid("grid", Form("formatted"))
        self.fail_with(1, "check", "grid", "flow", "--grid-format", "binary",
                       says=("grid: ", "--grid-format formatted"))

    def test_long_paths(self):
        self.path("d" * 100).mkdir()
        name = "d" * 100 + "/" + "r" * 100
        self.write_restart(name, RestartForm(), TWO)
        self.agree(restart=name)

    def test_full_disk(self):
        self.write_restart("flow", RestartForm(), ONE)
        with open("/dev/full", "w") as full:
            result = self.run_tool("check", "grid", "flow", stdout=full)
        self.assertEqual(result.returncode, 1)
        self.assertIn("standard output", result.stderr_text)


@unittest.skipUnless(SAMPLES, "P3DGRID_SAMPLES names no folder of real files")
class RealFiles(CheckTest):
    FOLDER = pathlib.Path(SAMPLES) / "vtk_data"
    GRIDS = {
        "multi-bin.xyz": ["--grid-precision", "double"],
        "multi-bin-C.xyz": ["--grid-format", "binary", "--grid-precision", "double"],
        "multi-ascii.xyz": ["--grid-format", "formatted"],
    }
    SOLUTIONS = {
        "multi-bin.q": ["--restart-precision", "double"],
        "multi-bin.f": ["--layout", "3", "--restart-precision", "double"],
        "multi-bin-C.q": ["--restart-format", "binary", "--restart-precision", "double"],
        "multi-ascii.q": ["--restart-format", "formatted"],
    }

    def test_accepted_with_their_grids(self):
        for grid, of_grid in self.GRIDS.items():
            for solution, of_solution in self.SOLUTIONS.items():
                with self.subTest(grid=grid, solution=solution):
                    output = self.succeed("check", self.FOLDER / grid, self.FOLDER / solution,
                                          *of_grid, *of_solution)
                    self.assertTrue(output.endswith(" agree\n"))

    def test_refused_with_any_other_grid(self):
        self.write_grid("two-blocks")
        points = [0.5] * 8 * 12 * 12
        self.write_grid("one-block", blocks=[Block((8, 12, 12), points, points, points)])
        other = pathlib.Path(SAMPLES) / "turbmodels" / "flatplate_35x25.p3dfmt"
        for grid, of_grid in (("two-blocks", []), ("one-block", []),
                              (other, ["--grid-format", "formatted"])):
            for solution, of_solution in self.SOLUTIONS.items():
                with self.subTest(grid=grid, solution=solution):
                    result = self.run_tool("check", grid, self.FOLDER / solution, *of_grid,
                                           *of_solution)
                    self.assertEqual(result.returncode, 1)
                    self.assertIn("CODE HALTED", result.stdout_text)


if __name__ == "__main__":
    main()
