"""Every command in the documentation is run, or looked up where that would take long.

`console` blocks are sessions: lines that begin with `$ ` are run in order, those of one page in one
folder that is empty at first. What stands below a command is its output; a line `...` stands for
any lines, and nothing for whatever comes. A command must succeed. `sh` blocks hold commands that
take long: the targets, scripts, tests and build options that they name must be there. Those of the
README are run by tests/tool/test_readme.py."""

import itertools
import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

from support import BUILD, SOURCE, Block, blocks, main, pages

COMMAND = os.environ.get("P3DGRID", "")
PROGRAMS = {"p3dgrid", "cat", "cmp", "echo", "head", "ls", "od", "tail"}
ANY_LINES = "..."


def steps(block):
    """The commands of a console block, each with the lines below it."""
    found = []
    for line in block.text.splitlines():
        if line.startswith("$ "):
            found.append((line[2:], []))
        elif found:
            found[-1][1].append(line)
        else:
            raise AssertionError(f"{block.place} does not begin with a command")
    return found


def matches(shown, printed):
    """Whether the lines printed are those shown."""
    if not shown:
        return not printed
    if shown[0] == ANY_LINES:
        return any(matches(shown[1:], printed[n:]) for n in range(len(printed) + 1))
    return bool(printed) and shown[0] == printed[0] and matches(shown[1:], printed[1:])


def programs_in(command):
    """The first word of each part of a command line."""
    words = list(shlex.shlex(command, posix=True, punctuation_chars=True))
    starts = itertools.chain([True], (set(word) <= set("|&;") for word in words))
    return [word for word, first in zip(words, starts) if first]


class Session:
    """A folder with the command in it, as a page's reader has it."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder) / "page"
        self.bin = pathlib.Path(folder) / "bin"
        self.folder.mkdir()
        self.bin.mkdir()
        (self.bin / "p3dgrid").symlink_to(COMMAND)

    def run(self, block):
        for command, shown in steps(block):
            unknown = set(programs_in(command)) - PROGRAMS
            assert not unknown, f"{block.place}: {command}: {unknown} is not to be run here"
            result = subprocess.run(
                ["sh", "-c", command], cwd=self.folder, stdin=subprocess.DEVNULL, text=True,
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=120,
                env={**os.environ, "LC_ALL": "C.UTF-8", "COLUMNS": "100",
                     "PATH": f"{self.bin}:{os.environ['PATH']}"})
            said = f"{block.place}: {command}\n{result.stdout}"
            assert result.returncode == 0, f"exit status {result.returncode}: {said}"
            assert not shown or matches(shown, result.stdout.splitlines()), f"prints {said}"


class ScratchTest(unittest.TestCase):
    def session(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return Session(folder.name)


class Sessions(ScratchTest):
    def test_commands_print_what_the_pages_show(self):
        run = 0
        for page in pages():
            session = self.session()
            for block in blocks(page, "console"):
                with self.subTest(place=block.place):
                    session.run(block)
                    run += 1
        self.assertGreater(run, 0)


class Runner(ScratchTest):
    """That the session above notices what it has to notice."""

    def block(self, text):
        return Block(pathlib.Path("page.md"), re.match(r"(.*?) ?(.*)\n((?:.*\n)*)", f"\n{text}"))

    def assert_refused(self, text, reason):
        with self.assertRaisesRegex(AssertionError, reason):
            self.session().run(self.block(text))

    def test_right_output(self):
        self.session().run(self.block("$ echo one; echo two\none\ntwo\n$ cat /dev/null\n"))
        self.session().run(self.block("$ echo one; echo two; echo three\n...\ntwo\n...\n"))
        self.session().run(self.block("$ p3dgrid sample case\n$ ls case/grid.p3d\ncase/grid.p3d\n"))

    def test_wrong_output(self):
        self.assert_refused("$ echo one\ntwo\n", "prints")
        self.assert_refused("$ echo one; echo two\none\n", "prints")
        self.assert_refused("$ echo one\none\ntwo\n", "prints")
        self.assert_refused("$ echo one; echo two\n...\none\n", "prints")

    def test_failing_and_strange_commands(self):
        self.assert_refused("$ p3dgrid info missing.p3d\n", "exit status 2")
        self.assert_refused("$ echo one | rm -r page\n", "not to be run")
        self.assert_refused("echo one\n", "does not begin with a command")


class LongCommands(unittest.TestCase):
    def test_what_they_name_is_there(self):
        for page in pages():
            if page.name == "README.md":
                continue
            for block in blocks(page, "sh"):
                for line in block.text.replace("\\\n", " ").splitlines():
                    with self.subTest(place=block.place, line=line):
                        self.look_up(shlex.split(line, comments=True))

    def look_up(self, words):
        while words and re.match(r"[A-Z_]+=", words[0]):
            words = words[1:]
        if not words or words[0] in ("cd", "git"):
            return
        look_up = {"make": self.look_up_targets, "ctest": self.look_up_tests,
                   "cmake": self.look_up_options}.get(words[0])
        if look_up:
            look_up(words[1:])
        else:
            self.assertTrue(os.access(SOURCE / words[0], os.X_OK), words[0])

    def look_up_targets(self, words):
        result = subprocess.run(["make", "-n", *words], cwd=SOURCE, capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)

    def look_up_tests(self, words):
        """Of the test program itself no more is asked than that it finds tests."""
        chosen = [word for n, word in enumerate(words)
                  if word in ("-L", "-R") or (n and words[n - 1] in ("-L", "-R"))]
        result = subprocess.run(["ctest", "-N", *chosen], cwd=BUILD, capture_output=True, text=True)
        self.assertRegex(result.stdout, r"Total Tests: [1-9]", result.stderr)

    def look_up_options(self, words):
        declared = (SOURCE / "CMakeLists.txt").read_text()
        for name in re.findall(r"-D((?:MOD_)?P3DGRID_\w+)", " ".join(words)):
            self.assertRegex(declared, rf"(option|set)\({name}\b")
        for name in (word for word in words if (SOURCE / "CMakeLists.txt").exists() and
                     words[words.index(word) - 1] == "--target"):
            result = subprocess.run(["cmake", "--build", BUILD, "--target", "help"],
                                    capture_output=True, text=True)
            self.assertRegex(result.stdout, rf"(?m)^(\.\.\. )?{re.escape(name)}\b")


if __name__ == "__main__":
    main()
