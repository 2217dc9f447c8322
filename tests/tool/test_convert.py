"""p3dgrid convert: the bytes it writes."""

import itertools
import re
import struct

from support import (NATIVE, ONE_BLOCK, TWO_BLOCKS, Block, Form, ToolTest, all_forms, grid_bytes,
                     main, values_of)

# A file of one block of 2x1x1 points (1, 3, 5) and (2, 4, 6), both with blanking 1.
LITTLE_ENDIAN_GOLDEN = bytes.fromhex(
    "04000000 01000000 04000000"
    "0c000000 02000000 01000000 01000000 0c000000"
    "20000000 0000803f 00000040 00004040 00008040 0000a040 0000c040 01000000 01000000 20000000")


class Convert(ToolTest):
    def convert(self, *arguments):
        self.succeed("convert", "--quiet", "in", "out", *arguments)
        return self.path("out").read_bytes()

    def assert_holds(self, content, form, blocks, source):
        """`content` is a file of that form with these blocks in the precision of the source."""
        if form.encoding != "formatted":
            self.assertEqual(content, grid_bytes(form, blocks, rounded=source.holds_singles))
            return
        lines = content.decode().splitlines()
        for line in lines:
            self.assertRegex(line, r"\A \S.{0,78}\Z")
        code = "=f" if source.holds_singles else "=d"
        words = [word for line in lines for word in line.replace(",", " ").split()]
        self.assertEqual([struct.pack(code, float(word)) for word in words],
                         [struct.pack(code, value) for value in values_of(form, blocks)])

    def test_golden_bytes(self):
        if struct.pack("=i", 1) != struct.pack("<i", 1):
            self.skipTest("the bytes are those of a little-endian machine")
        self.write("in", b"1\n2 1 1\n1 2 3 4 5 6\n")
        self.assertEqual(self.convert("--grid-format", "formatted", "--to-format", "unformatted",
                                      "--to-iblank", "yes"), LITTLE_ENDIAN_GOLDEN)

    def test_every_form_from_every_form(self):
        for source in all_forms():
            blocks = TWO_BLOCKS if source.multiblock else ONE_BLOCK
            self.write_grid("in", source, blocks)
            for target in all_forms():
                if len(blocks) > 1 and not target.multiblock:
                    continue
                with self.subTest(source=source, target=target):
                    content = self.convert(*source.options("grid"), *target.options("to"))
                    expected = blocks if source.iblank else [
                        Block(block.extents, *block.xyz) for block in blocks]
                    self.assert_holds(content, target, expected, source)

    def test_form_stays_as_read_unless_stated(self):
        for form in all_forms():
            with self.subTest(form=form):
                blocks = TWO_BLOCKS if form.multiblock else ONE_BLOCK
                self.write_grid("in", form, blocks)
                self.assert_holds(self.convert(*form.options("grid")), form, blocks, form)

    def test_each_target_option_changes_nothing_else(self):
        self.write_grid("in", Form(), ONE_BLOCK)
        for option, value, form in (
                ("--to-format", "binary", Form("binary")),
                ("--to-format", "formatted", Form("formatted")),
                ("--to-precision", "double", Form(double=True)),
                ("--to-multiblock", "no", Form(multiblock=False)),
                ("--to-iblank", "yes", Form(iblank=True))):
            with self.subTest(option=option, value=value):
                blocks = [Block(block.extents, *block.xyz) for block in ONE_BLOCK]
                self.assert_holds(self.convert(option, value), form, blocks, Form())

    def test_there_and_back_is_the_same_file(self):
        for double, through in itertools.product((False, True), all_forms()):
            if not through.multiblock or not through.iblank or (double and through.holds_singles):
                continue
            form = Form(double=double, iblank=True)
            with self.subTest(double=double, through=through):
                original = self.write_grid("in", form).read_bytes()
                self.succeed("convert", "--quiet", "in", "middle", *form.options("grid"),
                             *through.options("to"))
                self.succeed("convert", "--quiet", "middle", "out", *through.options("grid"),
                             *form.options("to"))
                self.assertEqual(self.path("out").read_bytes(), original)

    def test_text_has_the_shortest_digits(self):
        block = [Block((3, 1, 1), [0.1, 1 / 3, 1e-30], [1e15, 16777217, 0.5],
                       [1.5e20, -1e-7, 123456.789])]
        for double in (False, True):
            self.write_grid("in", Form(double=double), block)
            text = self.convert("--to-format", "formatted").decode()
            digits = str(1 / 3) if double else "0.33333334"
            self.assertIn(digits, re.split(r"[,\s]+", text))
            self.assertIn("0.1", re.split(r"[,\s]+", text))

    def test_block_count_cannot_be_left_out_of_two_blocks(self):
        self.write_grid("in")
        self.write("out", b"before")
        self.fail_with(2, "convert", "in", "out", "--to-multiblock", "no",
                       says=("out: ", "in holds 2 blocks", "--to-multiblock no"))
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()

    def test_lost_digits_are_noted(self):
        text = Form("formatted")
        cases = (
            (text, ("--to-format", "binary"), True),
            (text, ("--to-format", "unformatted"), True),
            (text, ("--to-format", "binary", "--to-precision", "single"), False),
            (text, ("--to-format", "binary", "--to-precision", "double"), False),
            (text, (), False),
            (Form(double=True), (), False),
            (Form(double=True), ("--to-precision", "single"), False),
            (Form("binary", double=True), ("--to-format", "formatted"), False),
            (Form(), ("--to-precision", "double"), False),
        )
        note = ("p3dgrid: note: coordinates are rounded to about 7 digits; --to-precision double "
                "keeps more\n")
        for form, options, noted in cases:
            with self.subTest(form=form, options=options):
                self.write_grid("in", form)
                stated = ("--grid-format", form.encoding)
                arguments = ["convert", "in", "out", *stated, *options]
                result = self.run_tool(*arguments)
                self.assertEqual(result.returncode, 0)
                self.assertEqual(result.stderr_text, note if noted else "")
                self.assertEqual(self.run_tool(*arguments, "--quiet").stderr_text, "")

    def test_lines_and_quiet(self):
        self.write_grid("in")
        done = (f"out: 2 blocks, 11 points, unformatted, {NATIVE}-endian, single precision, "
                "multi-block, without blanking\n")
        self.assertEqual(self.succeed("convert", "in", "out"), done)
        self.assertEqual(self.succeed("convert", "in", "out", "--verbose"), done)
        self.assertEqual(self.succeed("convert", "in", "out", "--quiet"), "")

    def test_long_paths(self):
        deep = self.folder.joinpath(*["a-folder-with-a-long-name-%02d" % n for n in range(12)])
        deep.mkdir(parents=True)
        source, target = deep / ("in-" + "x" * 200), deep / ("y" * 255)
        self.assertGreater(len(str(source)), 500)
        source.write_bytes(grid_bytes(Form(), TWO_BLOCKS))
        self.succeed("convert", source, target, "--to-format", "binary")
        self.assertEqual(target.read_bytes(), grid_bytes(Form("binary"), TWO_BLOCKS))
        self.assert_no_leftovers(deep)

    def test_names_around_the_length_of_a_library_name(self):
        for length in (39, 40, 41):
            with self.subTest(length=length):
                source, target = "i" * length, "o" * length
                self.write_grid(source)
                self.succeed("convert", source, target)
                self.assertEqual(self.path(target).read_bytes(), grid_bytes(Form(), TWO_BLOCKS))

    def test_names_that_look_odd(self):
        for name in ("ends in blanks  ", " starts with one", "file-1", "ümläut.p3d", "a\nb",
                     "-dash"):
            with self.subTest(name=name):
                self.write_grid(name)
                self.succeed("convert", "--quiet", "--", name, "out of " + name)
                self.assertEqual(self.path("out of " + name).read_bytes(),
                                 grid_bytes(Form(), TWO_BLOCKS))


class Words(ToolTest):
    TEXT = ("text", "ascii")

    def test_text_and_ascii_are_formatted(self):
        self.succeed("sample", "case")
        for word in self.TEXT:
            for command in (("convert", "case/grid.p3d"),
                            ("restart", "case/grid.p3d", "case/flow.q")):
                self.succeed(*command, "expected", "--to-format", "formatted")
                self.succeed(*command, "found", "--to-format", word)
                self.assertEqual(self.path("found").read_bytes(),
                                 self.path("expected").read_bytes())
            self.succeed("check", "expected", "--restart-format", word)
            self.succeed("info", "case/grid.txt", "--grid-format", word)
            self.fail_with(1, "info", "case/grid.p3d", "--grid-format", word,
                           says="not what --grid-format formatted says")

    def test_help_lists_them(self):
        for command, prefix in (("convert", "--to"), ("restart", "--to"), ("check", "--grid"),
                                ("info", "--restart")):
            text = self.succeed(command, "--help")
            words = re.search(rf"^  {prefix}-format (\S+)", text, re.MULTILINE)[1].split("|")
            self.assertLessEqual({*self.TEXT, "formatted"}, set(words))

    def test_other_words(self):
        self.write("in", grid_bytes(Form(), TWO_BLOCKS))
        for word in ("txt", "Text", ""):
            self.fail_with(2, "convert", "in", "out", "--to-format", word, says="--to-format")


if __name__ == "__main__":
    main()
