"""docs/architecture.md: no folder includes what the page does not allow, and every name on the page
is one of the tree's."""

import pathlib
import re
import tempfile
import unittest

from support import SOURCE, main

PAGE = SOURCE / "docs" / "architecture.md"
INCLUDE = re.compile(r'^\s*#\s*include\s+([<"])([^">]+)[">]', re.MULTILINE)
EVERYTHING = "everything"


class Rooms:
    """The page's table: what each room may include, and whether system headers too."""

    def __init__(self, text):
        section = text.split("## Who may include whom")[1].split("\n## ")[0]
        self.allowed, self.system = {}, {}
        for room, allowed, system in re.findall(r"^\| `([^`]+)` \|(.*)\|(.*)\|$", section,
                                                re.MULTILINE):
            names = re.findall(r"`([^`]+)`", allowed)
            self.allowed[room] = EVERYTHING if EVERYTHING in allowed else {room, *names}
            self.system[room] = system.strip() == "yes"

    def of(self, path):
        """The room that a file of the tree is in."""
        inside = [room for room in self.allowed if path.startswith(room + "/")]
        return max(inside, key=len, default=None)


def target_of(source, file, bracket, name):
    """The file of the tree that is included; none for a header from elsewhere."""
    folders = [source / "include", source / "src"]
    if bracket == '"':
        above = [source / folder for folder in file.relative_to(source).parents]
        folders = [*above, *folders]
    for folder in folders:
        if (folder / name).is_file():
            return str((folder / name).resolve().relative_to(source.resolve()))
    return None


def wrong_includes(source, rooms):
    """What is included against the rules, as text."""
    wrong = []
    for file in sorted(source.glob("*/**/*.[ch]pp")):
        path = str(file.relative_to(source))
        if path.split("/")[0] not in {room.split("/")[0] for room in rooms.allowed}:
            continue  # build folders and the like
        room = rooms.of(path)
        if room is None:
            wrong.append(f"{path} is in no room of the page")
            continue
        for bracket, name in INCLUDE.findall(file.read_text()):
            if reason := against_the_rules(source, file, rooms, room, bracket, name):
                wrong.append(f"{path} includes {name}: {reason}")
    return wrong


def against_the_rules(source, file, rooms, room, bracket, name):
    allowed = rooms.allowed[room]
    if allowed == EVERYTHING:
        return None
    target = target_of(source, file, bracket, name)
    if target is None:
        if bracket == '"':
            return "there is no such file"
        system = "." in name or "/" in name
        return "a system header" if system and not rooms.system[room] else None
    if rooms.of(target) in allowed:
        return None
    return f"{room} may not include {rooms.of(target)}"


class Includes(unittest.TestCase):
    def setUp(self):
        self.rooms = Rooms(PAGE.read_text())

    def test_the_tree_keeps_to_the_page(self):
        self.assertGreater(len(self.rooms.allowed), 10)
        self.assertEqual(wrong_includes(SOURCE, self.rooms), [])

    def test_nothing_is_allowed_that_no_file_needs(self):
        used = {room: set() for room in self.rooms.allowed}
        for file in SOURCE.glob("*/**/*.[ch]pp"):
            room = self.rooms.of(str(file.relative_to(SOURCE)))
            for bracket, name in INCLUDE.findall(file.read_text()) if room else ():
                if target := target_of(SOURCE, file, bracket, name):
                    used[room].add(self.rooms.of(target))
        for room, allowed in self.rooms.allowed.items():
            if allowed != EVERYTHING:
                self.assertEqual(allowed - used[room] - {room}, set(), room)

    def test_what_is_forbidden_shows(self):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder)
            for path, text in {
                "src/grid/a.cpp": '#include "restart/b.hpp"\n#include <vector>\n#include <unistd.h>',
                "src/restart/b.hpp": '#include "grid/c.hpp"\n  #  include "none.hpp"',
                "src/grid/c.hpp": "", "src/other/d.cpp": "", "build/e.cpp": '#include "none.hpp"',
                "tools/f.cpp": '#include "plot/g.hpp"\n#include <grid/c.hpp>', "tools/plot/g.hpp": "",
            }.items():
                (source / path).parent.mkdir(parents=True, exist_ok=True)
                (source / path).write_text(text + "\n")
            self.assertEqual(wrong_includes(source, self.rooms), [
                "src/grid/a.cpp includes restart/b.hpp: src/grid may not include src/restart",
                "src/grid/a.cpp includes unistd.h: a system header",
                "src/other/d.cpp is in no room of the page",
                "src/restart/b.hpp includes none.hpp: there is no such file",
                "tools/f.cpp includes grid/c.hpp: tools may not include src/grid"])


class Names(unittest.TestCase):
    def test_every_name_is_one_of_the_tree(self):
        code = "".join(file.read_text() for folder in ("include", "src")
                       for file in (SOURCE / folder).rglob("*.[ch]pp"))
        for name in re.findall(r"`([^`]+)`", PAGE.read_text()):
            with self.subTest(name=name):
                if "/" in name:
                    self.assertTrue((SOURCE / name).exists())
                elif not (SOURCE / name).exists() and name not in ("#include", "p3dgrid"):
                    self.assertRegex(code, rf"\b{re.escape(name.split('::')[-1])}\b")


if __name__ == "__main__":
    main()
