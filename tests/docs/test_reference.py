"""The reference pages of the public headers are complete and free of warnings."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from support import BUILD, SOURCE, main

DOXYGEN = os.environ.get("DOXYGEN") or shutil.which("doxygen")
SKIPPED = 77


class Reference(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_doxygen(self, *settings):
        """Runs doxygen with the settings of the project, overridden by `settings`."""
        text = (BUILD / "Doxyfile").read_text()
        text += "\n".join([f'\nOUTPUT_DIRECTORY = "{self.folder}"', *settings]) + "\n"
        return subprocess.run([DOXYGEN, "-"], input=text, text=True, capture_output=True,
                              cwd=self.folder, timeout=200)

    def test_pages_are_complete(self):
        result = self.run_doxygen('GENERATE_TAGFILE = "tags"')
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stderr, "")
        described = set(re.findall(r"<name>(?:mod_p3dgrid::)?(\w+)</name>",
                                   (self.folder / "tags").read_text()))
        for header, least in (("MOD_P3DReader.hpp", 13), ("mod_gridvars.hpp", 3),
                              ("mod_p3dgrid/run.hpp", 6)):
            text = (SOURCE / "include" / header).read_text()
            operations = set(re.findall(r"^void (\w+)\(", text, re.MULTILINE))
            self.assertGreaterEqual(len(operations), least, header)
            self.assertEqual(operations - described, set())

    def test_an_undescribed_function_is_refused(self):
        headers = self.folder / "include"
        shutil.copytree(SOURCE / "include", headers)
        with open(headers / "mod_p3dgrid" / "run.hpp", "a") as header:
            header.write("namespace mod_p3dgrid { void forgotten(); }\n")
        result = self.run_doxygen(f'INPUT = "{headers}"')
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("forgotten", result.stderr)


if __name__ == "__main__":
    if not DOXYGEN or not (BUILD / "Doxyfile").exists():
        print("SKIPPED: no doxygen")
        sys.exit(SKIPPED)
    main()
