"""Runs every session in the documentation.

`console` blocks are sessions. Lines that begin with `$ ` are commands. Those of one page run in
order, in one folder that is empty at first, and must succeed. The lines below a command are its
output. A line `...` matches any lines, and a command without lines below it may print anything."""

import itertools
import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

from support import Block, blocks, main, pages

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
    """The program of each part of a command line."""
    words = list(shlex.shlex(command, posix=True, punctuation_chars=True))
    starts = itertools.chain([True], (set(word) <= set("|&;") for word in words))
    return [word for word, first in zip(words, starts) if first]


class Session:
    """A folder in which p3dgrid is on the path."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder) / "page"
        self.bin = pathlib.Path(folder) / "bin"
        self.folder.mkdir()
        self.bin.mkdir()
        (self.bin / "p3dgrid").symlink_to(COMMAND)

    def run(self, block):
        for command, shown in steps(block):
            unknown = set(programs_in(command)) - PROGRAMS
            assert not unknown, f"{block.place}: {command}: {unknown} must not be run here"
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
    """A session reports wrong output and failing commands."""

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

    def test_failing_and_forbidden_commands(self):
        self.assert_refused("$ p3dgrid info missing.p3d\n", "exit status 2")
        self.assert_refused("$ echo one | rm -r page\n", "must not be run")
        self.assert_refused("echo one\n", "does not begin with a command")


if __name__ == "__main__":
    main()
