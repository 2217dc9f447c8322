"""scripts/check-documented-commands: something runs every command line of the pages, and the script
reports those that nothing runs. Commands in the text between backticks exist."""

import os
import pathlib
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

from support import FENCED, SOURCE, main, name_of, pages
from test_contributing import first_column

SCRIPT = SOURCE / "scripts" / "check-documented-commands"
NAMED = re.compile(r"`((?:make |ctest -|scripts/|bench/check)[^`]*)`")


def run_script(source, *arguments):
    """Its exit status and output for the pages of that tree."""
    result = subprocess.run([SCRIPT, *arguments], capture_output=True, text=True, timeout=120,
                            env={**os.environ, "P3DGRID_SOURCE": str(source)})
    return result.returncode, result.stdout + result.stderr


class Tree(unittest.TestCase):
    def test_every_command_is_run(self):
        status, said = run_script(SOURCE, "--list")
        self.assertEqual(status, 0, said)
        for line in ("README.md:.*: make demo\n    this script",
                     "CONTRIBUTING.md:.*: scripts/fuzz 10\n    .ci/run",
                     "README.md:.*: build/tools/p3dgrid .*\n    tests/tool/test_readme.py"):
            self.assertRegex(said, line)

    def test_named_commands_exist(self):
        look_up = {"make": self.look_up_targets, "ctest": self.look_up_tests}
        for page in pages():
            for command in NAMED.findall(FENCED.sub("", page.read_text())):
                with self.subTest(page=name_of(page), command=command):
                    arguments = shlex.split(command)
                    look_up.get(arguments[0], self.look_up_files)(arguments)

    def look_up_targets(self, arguments):
        result = subprocess.run(["make", "-n", *arguments[1:]], cwd=SOURCE, capture_output=True,
                                text=True)
        self.assertEqual(result.returncode, 0, result.stderr)

    def look_up_tests(self, arguments):
        self.assertEqual(arguments[1], "-L")
        self.assertIn(arguments[2], first_column("label"))

    def look_up_files(self, arguments):
        self.assertTrue((SOURCE / arguments[0]).exists(), arguments[0])


@unittest.skipUnless(shutil.which("git"), "no git, which says what belongs to a tree")
class Script(unittest.TestCase):
    """Trees with a single page."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source = pathlib.Path(folder.name)
        subprocess.run(["git", "init", "--quiet"], cwd=self.source, check=True)

    def write(self, name, text):
        (self.source / name).parent.mkdir(exist_ok=True)
        (self.source / name).write_text(text)

    def run_page(self, text):
        self.write("page.md", text)
        return run_script(self.source)

    def assert_refused(self, text, reason):
        status, said = self.run_page(text)
        self.assertEqual(status, 1, said)
        self.assertRegex(said, reason)

    def test_commands_are_run_one_by_one_in_a_copy(self):
        status, said = self.run_page("```sh\necho one > made\ngrep -c \\\n  one made # found\n```\n"
                                     "```sh\nmv page.md moved\n```\n")
        self.assertEqual(status, 0, said)
        self.assertIn("page.md:1: grep -c one made\n    exit status 0", said)
        self.assertEqual(sorted(path.name for path in self.source.iterdir()), [".git", "page.md"])

    def test_stops_at_the_first_failure(self):
        self.assert_refused("```sh\ntrue\necho why; exit 3\necho next\n```\n",
                            r"page.md:1: echo why; exit 3\n    exit status 3 after 0 s\nwhy\n\Z")

    def test_commands_run_by_others_are_skipped(self):
        self.write(".ci/run", "set -e\nfalse a \\\n  b\n")
        self.write("test_page.py", "# runs page.md")
        page = "```sh\nfalse a b\n.ci/run\n```\n```sh test_page.py\nfalse c\n```\n"
        status, said = self.run_page(page + "```sh\necho d\n```\n")
        self.assertEqual((status, said.count("page.md:")), (0, 1), said)
        self.assert_refused(page + "```sh\nfalse a\n```\n", "false a\n    exit status 1")

    def test_commands_that_nothing_runs_are_refused(self):
        self.write("other.py", "# runs other.md")
        for text in ("```bash\nmake\n```\n", "```\nmake\n```\n"):
            self.assert_refused(text, "page.md:1: who runs a block of")
        self.assert_refused("Type\n\n    make all\n", "page.md: not in a block of sh:     make all")
        for test in ("other.py", "none.py"):
            self.assert_refused(f"```sh {test}\nmake\n```\n", f"page.md:1: {test} is no test")


if __name__ == "__main__":
    main()
