"""p3dgrid info on generated grids."""

import os
import re
import struct

from support import NATIVE, ONE_BLOCK, TWO_BLOCKS, Block, Form, ToolTest, all_forms, grid_bytes, main


# So many points that the lengths fit only one form.
LARGER_BLOCKS = [Block((7, 3, 2), *([n + 0.5 for n in range(42)],) * 3),
                 Block((4, 1, 6), *([n - 0.5 for n in range(24)],) * 3)]


def rows(output):
    """The rows of the tables, as lists of words."""
    return [line.split() for line in output.splitlines() if re.match(r"\s+(\d+|all)\s", line)]


class Info(ToolTest):
    def info(self, *arguments):
        return self.succeed("info", "--quiet", *arguments)

    def test_every_form(self):
        for form in all_forms():
            with self.subTest(form=form):
                blocks = TWO_BLOCKS if form.multiblock else ONE_BLOCK
                self.write_grid("grid", form, blocks)
                output = self.info("grid", *form.options("grid"))
                table = rows(output)
                third = "0.33333334" if form.holds_singles else "0.3333333333333333"
                extents = [["1", "2", "2", "2", "8"]]
                boxes = [["1", "0.1", "7.25", "-1e-30", third, "10", "1.5e+20"]]
                if form.multiblock:
                    extents += [["2", "3", "1", "1", "3"], ["all", "11"]]
                    boxes += [["2", "8", "10", "-3", "-2", "0", "0.7"],
                              ["all", "0.1", "10", "-3", third, "0", "1.5e+20"]]
                else:
                    extents += [["all", "8"]]
                    boxes += [["all", *boxes[0][1:]]]
                if form.iblank:
                    counts = [["2", "4", "1", "1"]]
                    counts += [["1", "2", "0", "0"], ["3", "6", "1", "1"]] if form.multiblock \
                        else counts
                    extents = [row + count for row, count in zip(extents, counts)]
                self.assertEqual(table, extents + boxes)
                self.assertIn("read as " + form.encoding, output)
                if form.encoding != "formatted":
                    self.assertIn(f", {'double' if form.double else 'single'} precision", output)
                self.assertIn("holds   2 blocks, 11 points" if form.multiblock
                              else "holds   1 block, 8 points", output)

    def test_what_is_stated_and_what_is_found_are_shown_alike(self):
        for form in all_forms():
            blocks = LARGER_BLOCKS if form.multiblock else LARGER_BLOCKS[:1]
            self.write_grid("grid", form, blocks)
            found = self.info("grid")
            stated = self.info("grid", *form.options("grid"), "--grid-byte-order", NATIVE)
            self.assertIn("\nbecause as stated\n", stated)
            self.assertEqual(re.sub("because .*", "", found), re.sub("because .*", "", stated))

    def test_columns_are_aligned(self):
        self.write_grid("grid")
        lines = self.info("grid").splitlines()
        for header in ("  block  i", "  block  x min"):
            first = next(n for n, line in enumerate(lines) if line.startswith(header))
            self.assertEqual(len({len(line) for line in lines[first:first + 4]}), 1, lines)

    def test_description_comes_alone(self):
        self.write_grid("grid")
        described = self.succeed("info", "grid")
        self.assertTrue(described.startswith("file    grid\n"), described)
        for arguments in (("--quiet", "info", "grid"), ("info", "grid", "--verbose"),
                          ("--verbose", "info", "grid")):
            self.assertEqual(self.succeed(*arguments), described)

    def test_block_without_points(self):
        self.write_grid("grid", blocks=[Block((0, 4, 4), [], [], []), *ONE_BLOCK])
        table = rows(self.info("grid"))
        self.assertEqual(table[0], ["1", "0", "4", "4", "0"])
        self.assertEqual(table[2], ["all", "8"])
        self.assertEqual(table[3], ["1"] + ["-"] * 6)
        self.assertEqual(table[5][:3], ["all", "0.1", "7.25"])

    def test_points_that_are_not_finite_are_counted_and_left_out_of_the_box(self):
        nan, inf = float("nan"), float("inf")
        self.write_grid("grid", blocks=[Block((4, 1, 1), [1, nan, 3, 4], [1, 2, 3, 4],
                                              [5, 5, inf, 5])])
        output = self.info("grid")
        self.assertIn("not finite", output)
        self.assertEqual(rows(output)[-1], ["all", "1", "4", "1", "4", "5", "5", "2"])

    def test_list_directed_text_of_other_programs(self):
        self.write("grid", b"1\r\n2, 2*1\r\n 1.5D0,2*+.5 2. 0 1*-1.5+3")
        self.assertEqual(rows(self.info("grid", "--grid-format", "formatted"))[-1],
                         ["all", "0.5", "1.5", "0.5", "2", "-1500", "0"])

    def test_blanking_of_an_unformatted_file_may_be_left_out_and_is_noted(self):
        self.write_grid("grid", Form(iblank=True))
        result = self.run_tool("info", "grid", "--grid-iblank", "no")
        self.assertEqual(result.returncode, 0)
        self.assertIn("note: grid: holds blanking values", result.stderr_text)
        self.assertIn("--grid-iblank yes", result.stderr_text)
        self.assertEqual(rows(result.stdout_text)[-1][:3], ["all", "0.1", "10"])

    def test_bytes_behind_the_grid_are_no_failure(self):
        self.write("grid", grid_bytes(Form(), TWO_BLOCKS) + struct.pack("=3i", 4, 7, 4))
        self.assertEqual(rows(self.info("grid"))[2], ["all", "11"])

    def test_grid_from_a_pipe(self):
        os.mkfifo(self.path("pipe"))
        self.fail_with(2, "info", "pipe", says="pipe: is not a regular file")
        process = self.start("info", "--quiet", "pipe", *Form().options("grid"),
                             "--grid-byte-order", NATIVE)
        self.feed(process, "pipe", grid_bytes(Form(), TWO_BLOCKS))
        output, errors = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 0, errors)
        self.assertEqual(rows(output)[2], ["all", "11"])


if __name__ == "__main__":
    main()
