"""Runs the command, and builds grid files byte by byte."""

import contextlib
import errno
import itertools
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import time
import unittest

COMMAND = os.environ.get("P3DGRID", "")
SANITIZED = "sanitize" in os.environ.get("CXXFLAGS", "")
NOBODY = 65534
NATIVE = sys.byteorder
OTHER = "big" if NATIVE == "little" else "little"
SIGNS = {"little": "<", "big": ">"}  # of struct formats


class Form:
    """The form of a grid file."""

    def __init__(self, encoding="unformatted", double=False, multiblock=True, iblank=False,
                 order=NATIVE):
        self.encoding = encoding
        self.double = double
        self.multiblock = multiblock
        self.iblank = iblank
        self.order = order

    @property
    def holds_singles(self):
        """Whether the reals are in single precision. Text has digits instead."""
        return self.encoding != "formatted" and not self.double

    def options(self, prefix):
        """The options that state this form, all of them, for files read (grid) or written (to)."""
        return [
            f"--{prefix}-format", self.encoding,
            f"--{prefix}-precision", "double" if self.double else "single",
            f"--{prefix}-multiblock", "yes" if self.multiblock else "no",
            f"--{prefix}-iblank", "yes" if self.iblank else "no",
        ]

    def __repr__(self):
        return " ".join(self.options("grid"))


def all_forms():
    for values in itertools.product(
        ("unformatted", "formatted", "binary"), (False, True), (True, False), (False, True)
    ):
        yield Form(*values)


class Block:
    """Extents, then x, y, z and blanking values, each i fastest."""

    def __init__(self, extents, x, y, z, iblank=None):
        points = extents[0] * extents[1] * extents[2]
        self.extents = extents
        self.xyz = (list(x), list(y), list(z))
        self.iblank = list(iblank) if iblank is not None else [1] * points
        assert all(len(values) == points for values in (*self.xyz, self.iblank))


# Some values are not exact in single precision.
TWO_BLOCKS = [
    Block((2, 2, 2), [0.1, 1, 2, 3, 4, 5, 6, 7.25], [-1e-30, 0, 0, 0, 0, 0, 0, 1 / 3],
          [10, 11, 12, 13, 14, 15, 16, 1.5e20], [1, 0, 1, 1, -2, 1, 3, 0]),
    Block((3, 1, 1), [8, 9, 10], [-2, -2.5, -3], [0, 0.7, 0], [0, 1, 1]),
]
ONE_BLOCK = TWO_BLOCKS[:1]


def single(value):
    """The value in single precision."""
    return struct.unpack("=f", struct.pack("=f", value))[0]


def record(payload, encoding="unformatted", order=NATIVE):
    marker = struct.pack(SIGNS[order] + "i", len(payload)) if encoding == "unformatted" else b""
    return marker + payload + marker


def grid_bytes(form, blocks, rounded=False):
    """The file in that form; `rounded` if its values come from a file in single precision."""
    if form.encoding == "formatted":
        return text_bytes(form, blocks)
    parts = []
    sign = SIGNS[form.order]
    if form.multiblock:
        parts.append(record(struct.pack(sign + "i", len(blocks)), form.encoding, form.order))
    extents = [extent for block in blocks for extent in block.extents]
    parts.append(record(struct.pack(f"{sign}{len(extents)}i", *extents), form.encoding,
                        form.order))
    for block in blocks:
        values = [value for component in block.xyz for value in component]
        if rounded:
            values = [single(value) for value in values]
        payload = struct.pack(f"{sign}{len(values)}{'d' if form.double else 'f'}", *values)
        if form.iblank:
            payload += struct.pack(f"{sign}{len(block.iblank)}i", *block.iblank)
        parts.append(record(payload, form.encoding, form.order))
    return b"".join(parts)


def text_bytes(form, blocks):
    """Text with one component per line."""
    lines = [str(len(blocks))] if form.multiblock else []
    lines.append(" ".join(str(extent) for block in blocks for extent in block.extents))
    for block in blocks:
        lines += [" ".join(repr(float(value)) for value in component) for component in block.xyz]
        if form.iblank:
            lines.append(" ".join(str(value) for value in block.iblank))
    return ("\n".join(lines) + "\n").encode()


def values_of(form, blocks):
    """All values of the file in order."""
    values = [len(blocks)] if form.multiblock else []
    values += [extent for block in blocks for extent in block.extents]
    for block in blocks:
        values += [value for component in block.xyz for value in component]
        if form.iblank:
            values += block.iblank
    return values


class ToolTest(unittest.TestCase):
    """Gives each test a folder, and runs the command in it."""

    maxDiff = None

    def setUp(self):
        if not COMMAND:
            self.fail("set P3DGRID to the path of the command")
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def path(self, name):
        return self.folder / name

    def write(self, name, content):
        self.path(name).write_bytes(content)
        return self.path(name)

    def write_grid(self, name, form=None, blocks=None):
        return self.write(name, grid_bytes(form or Form(), blocks or TWO_BLOCKS))

    def start(self, *arguments, **options):
        options.setdefault("cwd", self.folder)
        options.setdefault("stdout", subprocess.PIPE)
        options.setdefault("stderr", subprocess.PIPE)
        options.setdefault("stdin", subprocess.DEVNULL)
        # New memory is filled, so that uninitialised values show.
        options.setdefault("env", {**os.environ, "MALLOC_PERTURB_": "165"})
        command = options.pop("command", COMMAND)
        return subprocess.Popen([command, *map(str, arguments)], text=True, **options)

    def run_tool(self, *arguments, **options):
        process = self.start(*arguments, **options)
        try:
            process.stdout_text, process.stderr_text = process.communicate(timeout=60)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()
            self.fail(f"p3dgrid {arguments} does not end")
        return process

    def feed(self, process, pipe, content):
        """Writes to a named pipe without waiting for a process that has ended."""
        while True:
            try:
                writer = os.open(self.path(pipe), os.O_WRONLY | os.O_NONBLOCK)
                break
            except OSError as error:
                if error.errno != errno.ENXIO:
                    raise
            self.assertIsNone(process.poll(), "the command ends before it reads")
            time.sleep(0.01)
        with os.fdopen(writer, "wb") as stream:
            stream.write(content)

    def succeed(self, *arguments, **options):
        """Runs the command, which must succeed; returns its standard output."""
        result = self.run_tool(*arguments, **options)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        return result.stdout_text

    def fail_with(self, status, *arguments, says=(), **options):
        """Runs the command, which must fail with this status and one line of explanation.

        What a file can be follows it, one line for each; nothing else does.
        """
        result = self.run_tool(*arguments, **options)
        message = result.stderr_text
        self.assertEqual(result.returncode, status, message)
        self.assertRegex(message, r"\Ap3dgrid: ([^\n]+[^\n:]\n|[^\n]+:\n(  [^\n]+\n){2,})\Z")
        for text in (says,) if isinstance(says, str) else says:
            self.assertIn(text, message)
        return message

    def assert_no_leftovers(self, folder=None):
        folder = folder or self.folder
        self.assertEqual([name for name in os.listdir(folder) if ".tmp" in name], [])

    @contextlib.contextmanager
    def unprivileged(self):
        """Options that run the command as a user without root's permissions."""
        if os.geteuid() != 0:
            yield {}
            return
        os.chmod(self.folder, 0o755)
        # A copy, because other users may have no access to the folders above the command.
        with tempfile.TemporaryDirectory() as bin_folder:
            os.chmod(bin_folder, 0o755)
            command = pathlib.Path(bin_folder) / "p3dgrid"
            command.write_bytes(pathlib.Path(COMMAND).read_bytes())
            command.chmod(0o755)
            yield {"command": str(command), "user": NOBODY, "group": NOBODY, "extra_groups": []}


def main():
    unittest.main(verbosity=2)
