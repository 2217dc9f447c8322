"""docs/hosting.md: code blocks equal the files that they name, and the list of calls equals the calls
that a host receives. `--update` writes both into the page."""

import os
import re
import subprocess
import tempfile
import unittest

from support import SOURCE, blocks, main, pages, update

PAGE = SOURCE / "docs" / "hosting.md"


def calls():
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.run([os.environ["HOST_CALLS"]], cwd=folder, capture_output=True, text=True,
                              timeout=60, check=True).stdout


class Hosting(unittest.TestCase):
    maxDiff = None

    def test_code_is_that_of_the_files(self):
        """On all pages that show a file."""
        shown = [block for page in pages() for language in ("cpp", "cmake", "f90", "python")
                 for block in blocks(page, language) if block.title]
        for block in shown:
            self.assertEqual(block.text, (SOURCE / block.title).read_text(), block.place)
        self.assertIn("examples/host.cpp", [block.title for block in shown])

    def test_calls_come_as_shown(self):
        shown, = (block for block in blocks(PAGE, "text") if block.title == "calls")
        self.assertEqual(shown.text, calls())

    def test_names_of_the_contract_are_complete(self):
        """The page names every function and variable of the contract and of run.hpp."""
        text = PAGE.read_text()
        for header in ("mod_gridvars.hpp", "mod_p3dgrid/run.hpp"):
            declared = (SOURCE / "include" / header).read_text()
            names = re.findall(r"^(?:void|extern .+?|.*ReadFailure&|.*string) (\w+)[(;]", declared,
                               re.MULTILINE)
            self.assertGreater(len(names), 6)
            for name in names:
                self.assertRegex(text, rf"`{name}\b")


def update_page():
    def text_of(_, title):
        if title == "calls":
            return calls()
        return (SOURCE / title).read_text() if title else None

    update(PAGE, text_of)


if __name__ == "__main__":
    main(update_page)
