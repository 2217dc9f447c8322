"""All pages: links have targets, in the tree and in an installation; lines are short."""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from support import BUILD, FENCED, SOURCE, main, pages

LONGEST_LINE = 100


def anchors(page):
    """The anchors of the headings of the page."""
    headings = re.findall(r"^#+ (.*)$", FENCED.sub("", page.read_text()), re.MULTILINE)
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


def broken_links(page):
    text = FENCED.sub("", page.read_text())
    broken = []
    for target in re.findall(r"\]\(([^)]+)\)", text):
        path, _, anchor = target.partition("#")
        if "://" in target:
            continue
        file = page.parent / path if path else page
        if not file.exists() or (anchor and anchor not in anchors(file)):
            broken.append(target)
    return broken


def long_lines(page):
    """Lines of tables and of code blocks, which may be output, do not count."""
    return [line for line in FENCED.sub("", page.read_text()).splitlines()
            if len(line) > LONGEST_LINE and not line.startswith("|")]


class Pages(unittest.TestCase):
    def test_links_have_targets(self):
        for page in pages():
            self.assertEqual(broken_links(page), [], page)

    def test_lines_are_short(self):
        for page in pages():
            self.assertEqual(long_lines(page), [], page)

    def test_code_blocks_end(self):
        for page in pages():
            self.assertNotIn("```", FENCED.sub("", page.read_text()), page)

    def test_every_page_can_be_reached(self):
        """From the README, by links."""
        seen, ahead = set(), [(SOURCE / "README.md").resolve()]
        while ahead:
            page = ahead.pop()
            if page in seen:
                continue
            seen.add(page)
            for target in re.findall(r"\]\(([^)#]+\.md)[^)]*\)", page.read_text()):
                ahead.append((page.parent / target).resolve())
        self.assertEqual([page.name for page in pages() if page.resolve() not in seen], [])

    def test_defects_are_reported(self):
        with tempfile.TemporaryDirectory() as folder:
            page = pathlib.Path(folder) / "page.md"
            page.write_text("# One heading\n[a](#one-heading) [b](#two) [c](none.md)\n" + "x" * 101 +
                            "\n```text\n" + "y" * 101 + "\n```\n")
            self.assertEqual(broken_links(page), ["#two", "none.md"])
            self.assertEqual(long_lines(page), ["x" * 101])


class Installed(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.run_cmake("--install", BUILD, "--prefix", "/usr",
                       env={**os.environ, "DESTDIR": str(self.folder / "Unspecified")})

    def run_cmake(self, *arguments, **options):
        result = subprocess.run(["cmake", *arguments], capture_output=True, text=True, timeout=240,
                                **options)
        self.assertEqual(result.returncode, 0, result.stderr)

    def test_links_have_targets(self):
        """Links stay within the installed files."""
        installed = list(self.folder.rglob("*.md"))
        self.assertEqual(sorted(page.name for page in installed),
                         sorted(page.name for page in pages()))
        for page in installed:
            self.assertEqual(broken_links(page), [], page)

    @unittest.skipUnless(shutil.which("strip") and shutil.which("gzip"), "no strip or no gzip")
    def test_debian_package_carries_the_license(self):
        license = (SOURCE / "LICENSE").read_text()
        share = self.folder / "Unspecified" / "usr" / "share"
        documents = share / "doc"
        self.assertEqual((documents / "mod_p3dgrid" / "LICENSE").read_text(), license)
        (share / "man" / "man1").mkdir(parents=True, exist_ok=True)
        (share / "man" / "man1" / "p3dgrid.1").touch()
        self.run_cmake(f"-DCPACK_TEMPORARY_INSTALL_DIRECTORY={self.folder}",
                       "-DCPACK_COMPONENTS_ALL=Unspecified",
                       "-DCPACK_DEBIAN_UNSPECIFIED_PACKAGE_NAME=p3dgrid", "-P",
                       SOURCE / "cmake" / "debian_files.cmake")
        self.assertTrue((documents / "p3dgrid" / "copyright").read_text().endswith(license))


if __name__ == "__main__":
    main()
