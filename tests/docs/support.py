"""Shared by the tests of the documentation: pages and their code blocks."""

import os
import pathlib
import re
import sys
import unittest

SOURCE = pathlib.Path(os.environ.get("P3DGRID_SOURCE", pathlib.Path(__file__).parents[2]))
BUILD = pathlib.Path(os.environ.get("P3DGRID_BUILD", ""))
FOLDERS = ("bench", "cmake", "docs", "examples", "include", "mpi", "python", "scripts", "src",
           "tests", "tools")

FENCED = re.compile(r"^```(\S*) ?(.*)\n((?:.*\n)*?)```$", re.MULTILINE)


def name_of(page):
    """The page's path in the tree."""
    return str(page.relative_to(SOURCE) if page.is_relative_to(SOURCE) else page)


class Block:
    """A code block: its language, the title after the language, its text."""

    def __init__(self, page, match):
        language, self.title, self.text = match.groups()
        self.language = language
        self.place = f"{name_of(page)}:{match.string.count(chr(10), 0, match.start()) + 1}"


def pages():
    """Every page of the tree, except in build and installation folders."""
    found = [page for folder in FOLDERS for page in (SOURCE / folder).rglob("*.md")]
    return sorted([*SOURCE.glob("*.md"), *found])


def all_blocks(page):
    """The page's code blocks."""
    return [Block(page, match) for match in FENCED.finditer(page.read_text())]


def blocks(page, language):
    """The code blocks of the page in that language."""
    return [block for block in all_blocks(page) if block.language == language]


def update(page, text_of):
    """Replaces each code block by `text_of(language, title)`; None leaves it unchanged."""
    def renewed(match):
        language, title, old = match.groups()
        new = text_of(language, title)
        return f"```{language}{' ' if title else ''}{title}\n{old if new is None else new}```"

    page.write_text(FENCED.sub(renewed, page.read_text()))


def main(update_page=None):
    """Runs the tests or, with the argument `--update`, updates their page."""
    if update_page and sys.argv[1:] == ["--update"]:
        update_page()
    else:
        unittest.main(verbosity=2)
