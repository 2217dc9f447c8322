"""docs/architecture.md: folders include only what the page allows, and every name on the page exists
in the tree."""

import contextlib
import pathlib
import re
import tempfile
import unittest

from support import SOURCE, main

PAGE = SOURCE / "docs" / "architecture.md"
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^">]+)[">]', re.MULTILINE)
EVERYTHING = "everything"


class IncludeRules:
    """The table of the page: what each folder may include, and whether system headers too."""

    def __init__(self, text):
        section = text.split("## Include rules")[1].split("\n## ")[0]
        self.allowed, self.system = {}, {}
        for folder, allowed, system in re.findall(r"^\| `([^`]+)` \|(.*)\|(.*)\|$", section,
                                                  re.MULTILINE):
            names = re.findall(r"`([^`]+)`", allowed)
            self.allowed[folder] = EVERYTHING if EVERYTHING in allowed else {folder, *names}
            self.system[folder] = system.strip() == "yes"

    def of(self, path):
        """The folder of the table that a file is in."""
        inside = [folder for folder in self.allowed if path.startswith(folder + "/")]
        return max(inside, key=len, default=None)


def target_of(source, file, bracket, name):
    """The included file of the tree; None for other headers."""
    folders = [source / "include", source / "src"]
    if bracket == '"':
        above = [source / folder for folder in file.relative_to(source).parents]
        folders = [*above, *folders]
    for folder in folders:
        if (folder / name).is_file():
            return str((folder / name).resolve().relative_to(source.resolve()))
    return None


def wrong_includes(source, rules):
    """The includes that break the rules, as text."""
    wrong = []
    for file in sorted(source.glob("*/**/*.[ch]pp")):
        path = str(file.relative_to(source))
        if path.split("/")[0] not in {folder.split("/")[0] for folder in rules.allowed}:
            continue  # build folders and the like
        folder = rules.of(path)
        if folder is None:
            wrong.append(f"{path} is in no folder of the page")
            continue
        for bracket, name in INCLUDE.findall(file.read_text()):
            if reason := violation(source, file, rules, folder, bracket, name):
                wrong.append(f"{path} includes {name}: {reason}")
    return wrong


def violation(source, file, rules, folder, bracket, name):
    allowed = rules.allowed[folder]
    if allowed == EVERYTHING:
        return None
    target = target_of(source, file, bracket, name)
    if target is None:
        if bracket == '"':
            return "there is no such file"
        system = "." in name or "/" in name
        return "a system header" if system and not rules.system[folder] else None
    if rules.of(target) in allowed:
        return None
    return f"{folder} may not include {rules.of(target)}"


@contextlib.contextmanager
def tree(files):
    """A folder of files, given by path and text."""
    with tempfile.TemporaryDirectory() as folder:
        source = pathlib.Path(folder)
        for path, text in files.items():
            (source / path).parent.mkdir(parents=True, exist_ok=True)
            (source / path).write_text(text + "\n")
        yield source


class Includes(unittest.TestCase):
    def setUp(self):
        self.rules = IncludeRules(PAGE.read_text())

    def test_includes_follow_the_rules(self):
        self.assertGreater(len(self.rules.allowed), 10)
        self.assertEqual(wrong_includes(SOURCE, self.rules), [])

    def test_every_rule_is_used(self):
        used = {folder: set() for folder in self.rules.allowed}
        for file in SOURCE.glob("*/**/*.[ch]pp"):
            folder = self.rules.of(str(file.relative_to(SOURCE)))
            for bracket, name in INCLUDE.findall(file.read_text()) if folder else ():
                if target := target_of(SOURCE, file, bracket, name):
                    used[folder].add(self.rules.of(target))
        for folder, allowed in self.rules.allowed.items():
            if allowed != EVERYTHING:
                self.assertEqual(allowed - used[folder] - {folder}, set(), folder)

    def test_violations_are_reported(self):
        with tree({
            "src/grid/a.cpp": '#include "restart/b.hpp"\n#include <vector>\n#include <unistd.h>',
            "src/restart/b.hpp": '#include "grid/c.hpp"\n  #  include "none.hpp"',
            "src/grid/c.hpp": "", "src/other/d.cpp": "", "build/e.cpp": '#include "none.hpp"',
            "tools/f.cpp": '#include "plot/g.hpp"\n#include <grid/c.hpp>', "tools/plot/g.hpp": "",
        }) as source:
            self.assertEqual(wrong_includes(source, self.rules), [
                "src/grid/a.cpp includes restart/b.hpp: src/grid may not include src/restart",
                "src/grid/a.cpp includes unistd.h: a system header",
                "src/other/d.cpp is in no folder of the page",
                "src/restart/b.hpp includes none.hpp: there is no such file",
                "tools/f.cpp includes grid/c.hpp: tools may not include src/grid"])


# Constructs that are allowed in some places only: the pattern, the folders that are searched, and
# the paths where it is allowed.
RESERVED = [
    # Layout codes. Other code uses the traits of a layout.
    (re.compile(r"(?<!traits_of\()\bLayout::[a-z]|\brsttype [=!]="), ("src", "include", "tools"),
     ("src/format/", "include/", "tools/sample.cpp")),
    # Numbers of text, and byte order.
    (re.compile(r"\bfrom_chars\b|\bstrto[a-z]+\(|\bsto(?:i|l|ll|f|d)\(|\bsscanf\b|\bswap_bytes\b|bswap"),
     ("src", "include"), ("src/recordio/",)),
    # The contents of files.
    (re.compile(r"\bifstream\b|\bfopen\(|\bpread\(|(?<!\w)::read\("), ("src", "include", "tools"),
     ("src/recordio/", "tools/gzip.cpp", "tools/variable_names.cpp", "tools/vtk_file.cpp")),
]


def misplaced(source):
    """Lines that contain what only other files may contain, as text."""
    return [f"{path}:{number}: {line.strip()}"
            for pattern, folders, allowed in RESERVED for folder in folders
            for file in sorted((source / folder).rglob("*.[ch]pp"))
            if not (path := str(file.relative_to(source))).startswith(allowed)
            for number, line in enumerate(file.read_text().splitlines(), 1)
            if pattern.search(line.split("//")[0])]


class Places(unittest.TestCase):
    def test_formats_and_encodings_are_known_in_one_place(self):
        self.assertEqual(misplaced(SOURCE), [])

    def test_violations_are_reported(self):
        with tree({
            "src/grid/a.cpp": "std::from_chars(b, e, value);  // Layout::bare",
            "src/detect/b.cpp": "swap_bytes(&value, 1);",
            "src/format/c.cpp": "Layout::bare",
            "tools/d.cpp": "if (layout == Layout::function) std::ifstream(path);",
            "src/recordio/e.cpp": "::read(0, to, 4);\nswap_bytes(to, 1);",
        }) as source:
            self.assertEqual([line.split(":")[0] for line in misplaced(source)],
                             ["tools/d.cpp", "src/detect/b.cpp", "src/grid/a.cpp", "tools/d.cpp"])

    def test_patterns_name_what_the_record_layer_has(self):
        code = "".join(file.read_text() for file in (SOURCE / "src/recordio").glob("*.[ch]pp"))
        for name in ("from_chars", "swap_bytes", "bswap", "::read("):
            self.assertIn(name, code)


class Names(unittest.TestCase):
    def test_every_name_exists(self):
        code = "".join(file.read_text() for folder in ("include", "src", "tools", "mpi")
                       for file in (SOURCE / folder).rglob("*.[ch]pp"))
        code += (SOURCE / "fortran/mod_p3dgrid.f90").read_text()
        for name in re.findall(r"`([\w:./]+)`", PAGE.read_text()):
            with self.subTest(name=name):
                if "/" in name:
                    self.assertTrue((SOURCE / name).exists())
                elif not (SOURCE / name).exists() and name != "p3dgrid":
                    self.assertRegex(code, rf"\b{re.escape(name.split('::')[-1])}\b")


if __name__ == "__main__":
    main()
