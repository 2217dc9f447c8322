"""Failures, with their messages and exit status 1 or 2."""

import json
import os
import re
import resource
import struct
import subprocess

from support import (COMMAND, NATIVE, ONE_BLOCK, OTHER, TWO_BLOCKS, Block, Form, ToolTest, all_forms, grid_bytes,
                     main)


def swapped(content):
    """A file of 4-byte values in the other byte order."""
    return b"".join(content[n:n + 4][::-1] for n in range(0, len(content), 4))


class FilesThatCannotBeUsed(ToolTest):
    def cannot_draw(self):
        return "without the library cairo" in self.run_tool("plot", "none", "none.png").stderr_text

    def refuse(self, path, reason, **options):
        self.fail_with(2, "info", path, says=(str(path), reason), **options)
        for encoding in ("formatted", "binary"):
            self.fail_with(2, "info", path, "--grid-format", encoding, says=(str(path), reason),
                           **options)

    def test_missing(self):
        self.refuse("missing", "No such file or directory")
        self.refuse(self.path("m" * 200), "No such file or directory")

    def test_folder(self):
        self.path("folder").mkdir()
        self.refuse("folder", "Is a directory")

    def test_unreadable(self):
        self.write_grid("secret").chmod(0)
        with self.unprivileged() as user:
            self.refuse("secret", "Permission denied", **user)

    def test_empty_name(self):
        for arguments in (("info", ""), ("convert", "", "out"), ("convert", "in", ""),
                          ("sample", "")):
            self.fail_with(2, *arguments, says="name is empty")

    def test_more_memory_than_there_is(self):
        limit = 50_000_000

        def limited():
            resource.setrlimit(resource.RLIMIT_AS, (limit, limit))

        if self.run_tool("--version", preexec_fn=limited).returncode != 0:
            self.skipTest("this build of the command cannot start within the limit")
        points = 2_000_000
        header = struct.pack("=3i", 2000, 1000, 1)
        with open(self.path("large"), "wb") as file:
            file.write(header)
            file.truncate(len(header) + 24 * points)
        with open(self.path("flow"), "wb") as file:
            file.write(header)
            file.truncate(len(header) + 16 + 20 * points)
        grid = ("--grid-format", "binary", "--grid-multiblock", "no", "--grid-precision", "double")
        flow = ("--layout", "2", "--restart-precision", "single")
        for command in (("info", "large"), ("convert", "large", "out"), ("plot", "large", "x.png"),
                        ("tecplot", "large", "flow", "out", *flow)):
            with self.subTest(command=command):
                if "plot" in command and self.cannot_draw():
                    continue
                self.fail_with(2, *command, *grid, says=": not enough memory for this file",
                               preexec_fn=limited)


class NamesWithControlCharacters(ToolTest):
    """They are escaped, so that names cannot control a terminal or look like a line of output."""
    NAME = "a\n  b\x1b[2J\t\x9b"
    SHOWN = r"a\n  b\x1b[2J\t\xc2\x9b"

    def lines(self, status, *arguments):
        """What the command prints on both streams, for each name."""
        result = self.run_tool(*arguments)
        text = result.stdout_text + result.stderr_text
        self.assertEqual(result.returncode, status, text)
        self.assertNotRegex(text, r"[\x00-\x09\x0b-\x1f\x7f-\x9f]")
        return text.splitlines()

    def test_failures(self):
        for content, status, says in ((None, 2, "No such file or directory"), (b"", 1, "is empty"),
                                      (grid_bytes(Form(), TWO_BLOCKS)[:-5], 1, "is cut short"),
                                      (b"no grid", 1, "is no header")):
            if content is not None:
                self.write(self.NAME, content)
            line, = self.lines(status, "info", self.NAME)
            self.assertTrue(line.startswith(f"p3dgrid: {self.SHOWN}: "), line)
            self.assertIn(says, line)
        # The library's message.
        self.write(self.NAME, grid_bytes(Form("formatted"), ONE_BLOCK).replace(b"3.0", b"x"))
        self.assertIn(f"p3dgrid: {self.SHOWN}: line 3: found \"x\", expected a real number",
                      self.lines(1, "info", self.NAME, *Form("formatted").options("grid"))[-1])
        self.write_grid("in")
        line, = self.lines(2, "convert", "in", f"nowhere/{self.NAME}")
        self.assertIn(f"nowhere/{self.SHOWN}: ", line)

    def test_failures_of_several_lines(self):
        self.write(self.NAME, struct.pack("=4i5f", 1, 1, 1, 5, *range(5)))
        for arguments, status, readings in (((), 2, 3), (("--layout", "1"), 1, 2)):
            first, *choices = self.lines(status, "info", self.NAME, *arguments)
            self.assertTrue(first.startswith(f"p3dgrid: {self.SHOWN}: "), first)
            self.assertEqual(len(choices), readings)
            for choice in choices:
                self.assertRegex(choice, r"\A  (grid|layout [23]), binary, ")

    def test_wrong_usage(self):
        line, = self.lines(2, "quality", "grid", self.NAME)
        self.assertIn(self.SHOWN, line)

    def test_results_and_notes(self):
        self.write_grid(self.NAME, Form(double=True))
        self.assertIn(f"file    {self.SHOWN}", self.lines(0, "info", self.NAME))
        self.assertEqual(self.lines(0, "check", self.NAME)[-1].split(": ")[0], self.SHOWN)
        printed = self.lines(0, "convert", self.NAME, self.NAME + "2", "--to-format", "formatted")
        self.assertIn(f"{self.SHOWN}2: 2 blocks", "\n".join(printed))
        note, = (line for line in self.lines(0, "convert", self.NAME, self.NAME + ".txt")
                 if line.startswith("p3dgrid: note: "))
        self.assertIn(f"{self.SHOWN}.txt: is ", note)
        self.assertIn(f"{self.SHOWN}-case/grid.p3d: 3 blocks",
                      "\n".join(self.lines(0, "sample", f"{self.NAME}-case")))

    def test_json_has_its_own_way(self):
        self.write_grid(self.NAME)
        report = self.succeed("info", self.NAME, "--json")
        self.assertEqual(json.loads(report)["file"], self.NAME)
        self.assertGreater(report.count("\n"), 10)


class DamagedFiles(ToolTest):
    def test_cut_at_every_byte(self):
        blocks = [Block((2, 1, 1), [1, 2], [3, 4], [5, 6]), Block((1, 1, 1), [7], [8], [9])]
        for form in (Form(iblank=True), Form("binary", double=True)):
            content = grid_bytes(form, blocks)
            for length in range(len(content)):
                with self.subTest(form=form, length=length):
                    self.write("cut", content[:length])
                    self.fail_with(1, "info", "cut", *form.options("grid"), "--grid-dimensions", "3",
                                   says="cut: ")

    def test_text_that_ends_early(self):
        content = grid_bytes(Form("formatted"), TWO_BLOCKS)
        for length in (0, 1, 5, 20, len(content) // 2, content.rindex(b" ")):
            with self.subTest(length=length):
                self.write("cut", content[:length])
                self.fail_with(1, "info", "cut", "--grid-format", "formatted", says="cut: ")

    def test_text_that_is_no_number(self):
        self.write("grid", b"1\n1 1 1\n1.0\n2.0 x3\n")
        message = self.fail_with(1, "info", "grid", "--grid-format", "formatted",
                                 says=("grid: ", "line 4", "x3"))
        self.assertNotIn("try", message)

    def test_markers_that_disagree(self):
        content = bytearray(grid_bytes(Form(), TWO_BLOCKS))
        content[-4:] = struct.pack("=i", 35)
        self.write("grid", content)
        self.fail_with(1, "info", "grid", says=("grid: record 4", "35", "36"))

    def test_headers_that_cannot_be_true(self):
        for words in ((), (0,), (-1,), (0x7FFFFFFF,), (1, -2, 3, 3), (1, 70000, 70000, 1),
                      (2, 40000, 40000, 1, 40000, 40000, 1)):
            with self.subTest(words=words):
                self.write("grid", struct.pack(f"={len(words)}i", *words))
                self.fail_with(1, "info", "grid", "--grid-format", "binary", says="grid: ")

    def test_extents_of_solutions_that_cannot_be_true(self):
        stated = ("--layout", "2", "--restart-format", "binary", "--restart-precision", "single",
                  "--restart-byte-order", NATIVE, "--restart-multiblock", "yes",
                  "--sections", "1-5")
        no_block = "found block 1 of {}x{}x{} points, expected extents from 0 on, and at most 2^36"
        for extents, says in (((-5, 2, 2), no_block), ((1 << 30,) * 3, no_block),
                              ((70000, 70000, 1), "found a file far too short for that, "
                                                  "expected 4900000000 values")):
            with self.subTest(extents=extents):
                self.write("flow", struct.pack("=4i", 1, *extents) + bytes(2000))
                self.fail_with(1, "info", "flow", *stated,
                               says=("flow: record ", ", byte ", says.format(*extents)))


class FilesOfAnotherForm(ToolTest):
    """Wrong options never succeed, and the message names the option that helps."""

    def refuse(self, stated, says):
        return self.fail_with(1, "info", "grid", *stated.options("grid"), says=("grid: ", says))

    def test_text_as_something_else(self):
        self.write_grid("grid", Form("formatted"))
        self.refuse(Form(), "--grid-format formatted")
        self.refuse(Form("binary"), "--grid-format formatted")
        self.write_grid("grid", Form("formatted", multiblock=False), ONE_BLOCK)
        self.refuse(Form(), "--grid-format formatted --grid-multiblock no")

    def test_something_else_as_text(self):
        for encoding in ("unformatted", "binary"):
            self.write_grid("grid", Form(encoding))
            self.refuse(Form("formatted"), "--grid-format " + encoding)

    def test_text_with_and_without_block_count(self):
        self.write_grid("grid", Form("formatted", multiblock=False), ONE_BLOCK)
        self.refuse(Form("formatted"), "--grid-multiblock no")
        # These can be read completely in a wrong form.
        self.write("grid", b"1\n2, 2, 2\n" + b"1 2 3 4 5 6 7 8\n" * 3)
        self.refuse(Form("formatted", multiblock=False), "--grid-multiblock yes")
        self.write("grid", b"1 1 3\n1 2 3\n" + b"4 5 6 7 8 9\n" * 6)
        self.refuse(Form("formatted"), "--grid-multiblock no")
        self.write("grid", b"1 2*2\n1 1 1\n" + b"4 5 6 7 8 9\n" * 6)
        self.refuse(Form("formatted"), "--grid-multiblock no")

    def test_unusual_headers_of_text_are_not_taken_for_another_form(self):
        values = b"1 2 3\n"
        for content, form in ((b"1\n1\n1\n", Form("formatted", multiblock=False)),
                              (b"\n1 1\n1\n", Form("formatted", multiblock=False)),
                              (b"1\n1\n1 1\n", Form("formatted")),
                              (b"1 block of 1 1 1 points\n3*1\n", Form("formatted")),
                              (b" 1,\r\n 1,1,1\r\n", Form("formatted"))):
            with self.subTest(content=content):
                self.write("grid", content + values)
                self.assertIn("1 block, 1 point", self.succeed(
                    "info", "grid", *form.options("grid")))

    def test_precision_shows_in_files_that_are_cut_or_go_on(self):
        content = grid_bytes(Form(double=True), TWO_BLOCKS)
        for changed in (content[:-1], content[:150], content + b"more"):
            self.write("grid", changed)
            self.refuse(Form(), "--grid-precision double")

    def test_other_byte_order(self):
        for encoding in ("unformatted", "binary"):
            self.write("grid", swapped(grid_bytes(Form(encoding), TWO_BLOCKS)))
            self.fail_with(1, "info", "grid", "--grid-byte-order", NATIVE,
                           says="--grid-byte-order " + OTHER)

    def test_every_form_stated_as_every_other(self):
        # A size for which no file has the length of another form.
        two_blocks = [*ONE_BLOCK, Block((7, 1, 1), *([n + 0.5 for n in range(7)],) * 3)]
        for actual in all_forms():
            if actual.encoding == "formatted":
                continue
            self.write_grid("grid", actual, two_blocks if actual.multiblock else ONE_BLOCK)
            for stated in all_forms():
                same = vars(stated) == vars(actual)
                # The rest of a record is skipped, including blanking values at its end.
                skips = (actual.encoding == stated.encoding == "unformatted" and actual.iblank
                         and (stated.double, stated.multiblock)
                         == (actual.double, actual.multiblock))
                if same or skips:
                    continue
                with self.subTest(actual=actual, stated=stated):
                    options = dict(zip(*[iter(actual.options("grid"))] * 2))
                    wrong = dict(zip(*[iter(stated.options("grid"))] * 2))
                    helpful = " ".join(f"{option} {options[option]}" for option in options
                                       if options[option] != wrong[option])
                    self.refuse(stated, helpful)


class Usage(ToolTest):
    def test_wrong_usage(self):
        self.write_grid("grid")
        for arguments in (
                (), ("nonsense",), ("info",), ("quality", "grid", "more"), ("convert", "grid"),
                ("convert",), ("check",), ("check", "grid", ""), ("check", "a", "b", "c"),
                ("check", "grid", "flow", "--to-format", "binary"),
                ("restart",), ("restart", "grid"), ("restart", "grid", "flow"),
                ("restart", "grid", "flow", "out", "more"),
                ("restart", "grid", "flow", "out", "--to-layout", "4"),
                ("restart", "grid", "flow", "out", "--to-iblank", "yes"),
                ("sample",), ("sample", "a", "b"), ("info", "grid", "--unknown"),
                ("--grid-format", "binary"), ("info", "grid", "--to-format", "binary"),
                ("info", "grid", "--grid-format"), ("info", "grid", "--grid-format", "Text"),
                ("info", "grid", "--grid-format", "1"),
                ("info", "grid", "--grid-precision", "quad"),
                ("info", "grid", "--grid-multiblock", "true"),
                ("info", "grid", "--grid-iblank", ""),
                ("info", "grid", "--grid-format", "binary", "--grid-format", "binary"),
                ("convert", "grid", "out", "--to-format", "x"),
                ("convert", "grid", "out", "--to-precision", "x"),
                ("convert", "grid", "out", "--to-multiblock", "x"),
                ("convert", "grid", "out", "--to-iblank", "x")):
            with self.subTest(arguments=arguments):
                self.fail_with(2, *arguments, says="--help")
                self.assertEqual(os.listdir(self.folder), ["grid"])

    def test_message_names_what_is_wrong(self):
        self.write_grid("grid")
        self.fail_with(2, "info", "grid", "--grid-format", "Text",
                       says=("--grid-format", "Text", "unformatted", "p3dgrid info --help"))

    def test_files_named_like_commands(self):
        for name in ("sample", "info", "convert", "check", "restart"):
            self.write_grid(name)
            self.succeed("info", name)
            self.succeed("sample", name + "s/" + name)
            self.succeed("convert", name, "out")
        self.succeed("convert", "sample", "info")

    def test_quiet_before_and_after_the_command(self):
        self.write_grid("grid")
        self.assertEqual(self.succeed("--quiet", "convert", "grid", "out"), "")
        self.assertEqual(self.succeed("convert", "grid", "out", "--quiet"), "")
        self.assertEqual(self.succeed("convert", "--quiet", "grid", "out"), "")

    def test_quiet_and_verbose_at_once(self):
        self.write_grid("grid")
        for arguments in (("--quiet", "convert", "grid", "out", "--verbose"),
                          ("convert", "grid", "out", "--verbose", "--quiet")):
            self.fail_with(2, *arguments, says=("--quiet", "--verbose"))
        self.assertEqual(os.listdir(self.folder), ["grid"])

    def test_verbose_prints_nothing_more(self):
        self.succeed("sample", "case")
        case = ("case/grid.p3d", "case/flow.q")
        for command in (("sample", "--replace", "case"), ("info", case[0]), ("info", case[1]),
                        ("convert", case[0], "out"), ("restart", *case, "out"),
                        ("check", *case), ("tecplot", *case, "out"),
                        ("plot", *case, "out.png")):
            with self.subTest(command=command):
                said = self.run_tool(*command)
                if "without the library cairo" in said.stderr_text:
                    continue
                self.assertEqual(said.returncode, 0, said.stderr_text)
                self.assertEqual(self.succeed(*command, "--verbose"), said.stdout_text)

    def test_help(self):
        self.assertIn("convert", self.succeed("--help"))
        for command in ("sample", "info", "convert", "check", "restart"):
            with self.subTest(command=command):
                text = self.succeed(command, "--help")
                self.assertIn(f"  p3dgrid {command} ", text)
        read = ("--grid-format", "--grid-precision", "--grid-byte-order", "--grid-multiblock", "--grid-iblank")
        solution = ("--layout", "--restart-format", "--restart-precision", "--restart-byte-order", "--restart-multiblock",
                    "--sections")
        written = ("--to-format", "--to-precision", "--to-byte-order", "--to-multiblock")
        for command, options in (
                ("sample", ("--replace",)), ("info", (*read, *solution, "--grid")),
                ("convert", (*read, *written, "--to-iblank")), ("check", (*read, *solution)),
                ("restart", (*read, *solution, *written, "--to-layout", "--mach", "--alpha",
                             "--reynolds", "--time", "--step", "--step-size"))):
            text = self.succeed(command, "--help")
            for option in options:
                self.assertRegex(text, rf"\n  {option}\s")

    def test_version(self):
        self.assertRegex(self.succeed("--version"), r"\Ap3dgrid \d+\.\d+\.\d+\n\Z")


class StandardOutput(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("grid")

    def test_full_disk(self):
        for arguments in (("info", "grid"), ("--help",), ("--version",), ("sample", "case"),
                          ("convert", "grid", "out")):
            with self.subTest(arguments=arguments), open("/dev/full", "w") as full:
                self.fail_with(2, *arguments, stdout=full,
                               says=("standard output", "No space left on device"))
        # The work was done.
        self.assertEqual(self.path("out").read_bytes(), grid_bytes(Form(), TWO_BLOCKS))

    def test_closed_pipe(self):
        reader, writer = os.pipe()
        os.close(reader)
        self.addCleanup(os.close, writer)
        self.fail_with(2, "info", "grid", stdout=writer, says=("standard output", "Broken pipe"))

    def test_closed_streams(self):
        result = subprocess.run(["sh", "-c", '"$0" info grid >&-', COMMAND], cwd=self.folder,
                                capture_output=True, text=True, timeout=60)
        self.assertEqual(result.returncode, 2)
        self.assertIn("standard output", result.stderr)

    def test_closed_streams_do_not_end_up_in_files(self):
        content = self.path("grid").read_bytes()
        for closed in ("<&-", ">&-", "<&- >&-", "<&- >&- 2>&-"):
            with self.subTest(closed=closed):
                line = f'"$0" convert grid out {closed}'
                result = subprocess.run(["sh", "-c", line, COMMAND],
                                        cwd=self.folder, timeout=60, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
                self.assertEqual(result.returncode, 2 if ">" in closed else 0)
                self.assertEqual(self.path("out").read_bytes(), content)

    def test_failure_of_the_work_comes_before_that_of_the_output(self):
        self.succeed("sample", "case")
        with open("/dev/full", "w") as full:
            result = self.run_tool("check", "case/upper.p3d", "case/flow.q", stdout=full)
        self.assertEqual(result.returncode, 1)
        self.assertRegex(result.stderr_text, r"\Ap3dgrid: case/flow.q: does not belong [^\n]+\n"
                                             r"p3dgrid: standard output: [^\n]+\n\Z")


if __name__ == "__main__":
    main()
