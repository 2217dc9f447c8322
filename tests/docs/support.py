"""What the tests of the documentation share: its pages, and the code blocks in them."""

import os
import pathlib
import re
import sys
import unittest

SOURCE = pathlib.Path(os.environ.get("P3DGRID_SOURCE", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("P3DGRID_BUILD", ""))

FENCED = re.compile(r"^```(\S*) ?(.*)\n((?:.*\n)*?)```$", re.MULTILINE)


class Block:
    """A code block: its language, what stands behind that, and its text."""

    def __init__(self, page, match):
        language, self.title, self.text = match.groups()
        self.language = language
        self.place = f"{page.name}:{match.string.count(chr(10), 0, match.start()) + 1}"


def pages():
    """Every page of the documentation."""
    return [SOURCE / name for name in ("README.md", "CONTRIBUTING.md", "CHANGELOG.md")
            if (SOURCE / name).exists()] + sorted((SOURCE / "docs").glob("*.md"))


def blocks(page, language):
    """The page's code blocks in that language."""
    found = [Block(page, match) for match in FENCED.finditer(page.read_text())]
    return [block for block in found if block.language == language]


def update(page, text_of):
    """Puts `text_of(language, title)` into each of the page's code blocks; None leaves one as it is."""
    def renewed(match):
        language, title, old = match.groups()
        new = text_of(language, title)
        return f"```{language}{' ' if title else ''}{title}\n{old if new is None else new}```"

    page.write_text(FENCED.sub(renewed, page.read_text()))


def main(update_page=None):
    """Runs the tests or, with the argument `--update`, what puts their page up to date."""
    if update_page and sys.argv[1:] == ["--update"]:
        update_page()
    else:
        unittest.main(verbosity=2)
