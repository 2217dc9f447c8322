"""docs/formats.md: the library and a Fortran program write and read every byte and number of the
page. `--update` writes the examples into the page."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from format_examples import EXAMPLES, TEXTS, bytes_of, hex_block, text_rows
from support import SOURCE, blocks, main, update

PAGE = SOURCE / "docs" / "formats.md"
PAGE_FILES = os.environ.get("PAGE_FILES", "")
FORTRAN = os.environ.get("FC") or shutil.which("gfortran")
DIRECTORY = pathlib.Path(__file__).parent


def page_files(*arguments, folder):
    return subprocess.run([PAGE_FILES, *arguments], cwd=folder, capture_output=True, text=True,
                          timeout=60)


def write(example, folder):
    """The bytes that the library writes."""
    result = page_files(f"write-{example.kind}", example.name, *example.to_write, folder=folder)
    assert result.returncode == 0, result.stderr
    return (folder / example.name).read_bytes()


def values_in(output):
    pairs = (line.split(":") for line in output.splitlines())
    return {name: [float(number) for number in numbers.split()] for name, numbers in pairs}


class FormatsTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def shown(self, language="hex"):
        return {block.title: block.text for block in blocks(PAGE, language)}

    def read(self, example, name=None):
        """The values that the library reads from the file."""
        result = page_files(f"read-{example.kind}", name or example.name, *example.to_read,
                            folder=self.folder)
        self.assertEqual(result.returncode, 0, result.stderr)
        return values_in(result.stdout)

    def assert_holds(self, example, found):
        expected = example.expected()
        self.assertTrue(expected)
        self.assertEqual({key: found.get(key) for key in expected}, expected)


class Forms(unittest.TestCase):
    def test_messages_are_those_of_detection(self):
        literal = r'"(?:[^"\\]|\\.)*"'
        source = (SOURCE / "src" / "detect" / "foreign.cpp").read_text()
        messages = {"".join(part[1:-1] for part in re.findall(literal, match)).replace("\\\\", "\\")
                    for match in re.findall(rf"return ((?:{literal}\s*)+);", source)} - {""}
        rows = re.findall(r"^\| .* \| named only: (.*) \|$", PAGE.read_text(), re.MULTILINE)
        self.assertEqual(set(rows), messages)
        self.assertGreaterEqual(len(rows), 3)


class Bytes(FormatsTest):
    def test_every_example_is_on_the_page(self):
        names = [example.name for example in EXAMPLES + TEXTS]
        self.assertEqual(sorted(self.shown()), sorted(names))

    def test_records_are_as_shown(self):
        shown = self.shown()
        for example in EXAMPLES:
            with self.subTest(example=example.name):
                self.assertEqual(shown[example.name], hex_block(example.rows()))
                self.assertEqual(bytes_of(shown[example.name]), example.content())

    def test_the_library_writes_them(self):
        shown = self.shown()
        written = [example for example in EXAMPLES if example.writable]
        self.assertEqual({example.name for example in EXAMPLES if example not in written},
                         {"layout-0.rst", "split.p3d"})
        for example in written + TEXTS:
            with self.subTest(example=example.name):
                self.assertEqual(write(example, self.folder), bytes_of(shown[example.name]))

    def test_the_library_reads_them(self):
        shown = self.shown()
        for example in EXAMPLES + TEXTS:
            with self.subTest(example=example.name):
                (self.folder / example.name).write_bytes(bytes_of(shown[example.name]))
                self.assert_holds(example, self.read(example))

    def test_a_changed_byte_shows(self):
        example = EXAMPLES[0]
        content = bytearray(bytes_of(self.shown()[example.name]))
        content[-6] ^= 0x80
        (self.folder / example.name).write_bytes(content)
        self.assertNotEqual(self.read(example), {**self.read(example), **example.expected()})


class Text(FormatsTest):
    def test_text_and_its_bytes_are_the_same(self):
        shown = self.shown()
        for name, text in self.shown("text").items():
            if name in shown:
                self.assertEqual(bytes_of(shown[name]).decode(), text)
                self.assertEqual(shown[name], hex_block(text_rows(text.encode())))

    def test_typed_text(self):
        (self.folder / "typed.txt").write_text(self.shown("text")["typed.txt"])
        self.assert_holds(TEXTS[0], self.read(TEXTS[0], "typed.txt"))

    def test_numbers(self):
        """Each text replaces the first values of a block of five points."""
        table = PAGE.read_text().split("\n### Numbers\n")[1].split("\n#")[0]
        rows = re.findall(r"^\| (`.*`) \| (.+) \|$", table, re.MULTILINE)
        self.assertGreater(len(rows), 10)
        for texts, meaning in rows:
            for text in re.findall(r"`([^`]+)`", texts):
                with self.subTest(text=text):
                    self.assertEqual(self.first_values(text, meaning), meaning)

    def first_values(self, text, meaning):
        (self.folder / "number.txt").write_text(f"1\n5 1 1\n{text} 7 7 7 7\n5*7 5*7\n")
        result = page_files("read-grid", "number.txt", "1", "4", "0", "1", folder=self.folder)
        if result.returncode == 1:
            return "a failed read"
        values = values_in(result.stdout)["x of block 1"]
        return ", ".join(f"{value:g}" for value in values[:len(meaning.split(","))])


class Fortran(FormatsTest):
    """The same values, written and read by a Fortran program."""

    def setUp(self):
        super().setUp()
        if not FORTRAN:
            self.skipTest("no Fortran compiler")
        shown = self.shown()
        for name in ("grid.txt", "layout-2.txt"):
            (self.folder / name).write_bytes(bytes_of(shown[name]))
        (self.folder / "typed.txt").write_text(self.shown("text")["typed.txt"])

    def run_peer(self, *flags):
        for command in ([FORTRAN, *flags, str(DIRECTORY / "page_files.f90"), "-o", "peer"],
                        ["./peer"]):
            result = subprocess.run(command, cwd=self.folder, capture_output=True, text=True,
                                    timeout=120)
            self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout

    def assert_written(self, examples):
        for example in examples:
            with self.subTest(example=example.name):
                written = (self.folder / f"f-{example.name}").read_bytes()
                self.assertEqual(written, bytes_of(self.shown()[example.name]))

    def test_bytes_and_text(self):
        self.assertEqual(self.run_peer().split(), ["grid.txt", "typed.txt", "layout-2.txt"])
        self.assert_written(example for example in EXAMPLES if not example.limit)

    def test_sub_records(self):
        split, = (example for example in EXAMPLES if example.limit)
        self.run_peer(f"-fmax-subrecord-length={split.limit}")
        self.assert_written([split])


def update_page():
    """Writes the examples into the page."""
    with tempfile.TemporaryDirectory() as folder:
        texts = {example.name: write(example, pathlib.Path(folder)) for example in TEXTS}
    shown = {("hex", example.name): hex_block(example.rows()) for example in EXAMPLES}
    shown |= {("hex", name): hex_block(text_rows(text)) for name, text in texts.items()}
    shown |= {("text", name): text.decode() for name, text in texts.items()}
    update(PAGE, lambda *block: shown.get(block))


if __name__ == "__main__":
    main(update_page)
