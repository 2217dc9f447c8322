"""CONTRIBUTING.md and CHANGELOG.md name the labels, build options, files and version of the tree."""

import re
import unittest

from support import FENCED, SOURCE, main

PAGE = (SOURCE / "CONTRIBUTING.md").read_text()
# Also checked on the pages of docs/.
PATH = re.compile(r"`((?:src|include|tests|tools|docs|examples|bench|scripts|cmake|\.ci)/[\w./-]*)`")


def first_column(heading):
    """The names in the first column of the table with that heading."""
    table = PAGE.split(f"| {heading} |")[1].split("\n\n")[0]
    return re.findall(r"^\| `(\w+)` \|", table, re.MULTILINE)


class Contributing(unittest.TestCase):
    def test_labels(self):
        used = set()
        for file in (SOURCE / "tests").rglob("CMakeLists.txt"):
            used |= set(re.findall(r'\bLABELS "?([a-z]+)', file.read_text()))
        self.assertEqual(sorted(first_column("label")), sorted(used))

    def test_build_options(self):
        text = (SOURCE / "CMakeLists.txt").read_text()
        declared = re.findall(r"^option\((\w+)", text, re.MULTILINE)
        declared += re.findall(r"^set\((\w+) .*CACHE (?:STRING|PATH)", text, re.MULTILINE)
        declared = [name for name in declared if "P3DGRID" in name]
        self.assertEqual(sorted(first_column("option of CMake")), sorted(declared))

    def test_paths(self):
        for page in (SOURCE / "CONTRIBUTING.md", *(SOURCE / "docs").glob("*.md")):
            for path in PATH.findall(FENCED.sub("", page.read_text())):
                self.assertTrue((SOURCE / path).exists(), f"{page.name}: {path}")


class Changelog(unittest.TestCase):
    def test_version(self):
        header = (SOURCE / "include" / "mod_p3dgrid" / "version.hpp").read_text()
        version, = re.findall(r'^#define MOD_P3DGRID_VERSION "(.*)"', header, re.MULTILINE)
        newest = re.findall(r"^## \[(\S+)\]", (SOURCE / "CHANGELOG.md").read_text(), re.MULTILINE)[0]
        self.assertIn(newest, (version, "Unreleased"))


if __name__ == "__main__":
    main()
