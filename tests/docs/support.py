"""What the tests of the documentation share: its pages, and the code blocks in them."""

import os
import pathlib
import re
import sys
import unittest

SOURCE = pathlib.Path(os.environ.get("P3DGRID_SOURCE", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("P3DGRID_BUILD", ""))
FOLDERS = ("bench", "cmake", "docs", "examples", "include", "scripts", "src", "tests", "tools")

FENCED = re.compile(r"^```(\S*) ?(.*)\n((?:.*\n)*?)```$", re.MULTILINE)


def name_of(page):
    """The page's path in the tree."""
    return str(page.relative_to(SOURCE) if page.is_relative_to(SOURCE) else page)


class Block:
    """A code block: its language, what stands behind that, and its text."""

    def __init__(self, page, match):
        language, self.title, self.text = match.groups()
        self.language = language
        self.place = f"{name_of(page)}:{match.string.count(chr(10), 0, match.start()) + 1}"


def pages():
    """Every page of the tree; what was built or installed in it does not count."""
    found = [page for folder in FOLDERS for page in (SOURCE / folder).rglob("*.md")]
    return sorted([*SOURCE.glob("*.md"), *found])


def all_blocks(page):
    """The page's code blocks."""
    return [Block(page, match) for match in FENCED.finditer(page.read_text())]


def blocks(page, language):
    """Those in that language."""
    return [block for block in all_blocks(page) if block.language == language]


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
