"""The installed manual page, completions, examples of the help, and Debian package."""

import gzip
import os
import pathlib
import pty
import re
import select
import shlex
import shutil
import subprocess
import time
import unittest

from support import COMMAND, ToolTest, main

SOURCE = pathlib.Path(os.environ.get("P3DGRID_SOURCE", ""))
BUILD = os.environ.get("P3DGRID_BUILD", "")
OPTION = re.compile(r"^ +(?:-h,)?(--[a-z-]+)(?: ([^ ]\S*))?", re.MULTILINE)


class InstalledTest(ToolTest):
    def run_checked(self, *command, **options):
        result = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                                timeout=240, **options)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout

    def commands(self):
        listed = self.succeed("--help").split("\nSubcommands:\n")[1].split("\n\n")[0]
        return re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE)

    def options_of(self, *command):
        """The options of a command with the values in its help."""
        return dict(OPTION.findall(self.succeed(*command, "--help")))

    def all_options(self):
        found = self.options_of()
        for command in self.commands():
            found.update(self.options_of(command))
        return found


class Help(InstalledTest):
    def test_every_command_is_there(self):
        self.assertEqual(self.commands(),
                         ["sample", "info", "convert", "check", "restart", "extract", "merge", "split",
                          "transform", "quality", "tecplot", "vtk", "plot"])

    def test_examples_run(self):
        """Runs each in the folder of a sample case, whose files replace those of the example."""
        for command in [(), *((name,) for name in self.commands())]:
            text = self.succeed(*command, "--help")
            examples = re.findall(r"^  (p3dgrid .*)$", text.split("xample", 1)[1], re.MULTILINE)
            self.assertTrue(examples, command)
            for number, example in enumerate(examples):
                with self.subTest(example=example):
                    folder = self.path(f"{'-'.join(command) or 'all'}-{number}")
                    folder.mkdir()
                    self.prepare(folder, number, examples)
                    self.succeed(*shlex.split(example)[1:], cwd=folder)

    def prepare(self, folder, number, examples):
        if "demo" in examples[0] and number > 0:
            self.succeed("sample", "demo", cwd=folder)
        self.succeed("sample", "case", cwd=folder)
        case, options = folder / "case", examples[number]
        for file in case.iterdir():
            shutil.copy(file, folder)
        grid = "grid-iblank.p3d" if "iblank yes" in options and "--to-iblank" not in options \
            else "grid.p3d"
        if "--layout 102" in options or "--layout 101" in options:
            grid = "upper.p3d"
        shutil.copy(case / grid, folder / "grid.p3d")
        layout = (re.findall(r" --layout (\d+)", options) or ["1"])[0]
        shutil.copy(case / {"1": "flow-1.rst", "102": "upper-102.rst"}.get(layout, "flow-1.rst"),
                    folder / "flow.rst")
        form = ["--to-format", "binary"]
        form += ["--to-precision", "double"] if "--grid-precision double" in options else []
        form += ["--to-iblank", "yes"] if "--grid-iblank yes" in options else []
        self.succeed("convert", "case/grid.p3d", "grid.bin", *form, cwd=folder)

    def test_version(self):
        self.assertRegex(self.succeed("--version"), r"\Ap3dgrid \d+\.\d+\.\d+\n\Z")


class Installation(InstalledTest):
    def test_everything_arrives_below_destdir(self):
        self.run_checked("cmake", "--install", BUILD, "--prefix", "/opt/p3d",
                         env={**os.environ, "DESTDIR": str(self.folder)})
        prefix = self.path("opt/p3d")
        for name in ("bin/p3dgrid", "share/man/man1/p3dgrid.1", "share/doc/mod_p3dgrid/README.md",
                     "share/doc/mod_p3dgrid/docs/sample-grid.png",
                     "share/bash-completion/completions/p3dgrid",
                     "share/zsh/site-functions/_p3dgrid",
                     "include/mod_p3dgrid/MOD_P3DReader.hpp"):
            self.assertTrue((prefix / name).is_file(), name)
        self.assertEqual([entry.name for entry in self.folder.iterdir()], ["opt"])
        self.succeed("sample", "case", command=str(prefix / "bin/p3dgrid"))

    def test_make_hands_on_where_to(self):
        said = self.run_checked("make", "--dry-run", "install", "PREFIX=/opt/p3d",
                                "DESTDIR=/somewhere", cwd=SOURCE)
        self.assertIn("-DCMAKE_INSTALL_PREFIX=/opt/p3d", said)
        self.assertIn("DESTDIR=/somewhere cmake --install build\n", said)


class ManualPage(InstalledTest):
    def page(self):
        return (pathlib.Path(BUILD) / "tools/p3dgrid.1").read_text().replace("\\-", "-")

    def test_says_what_the_help_says(self):
        page = self.page()
        for command in self.commands():
            self.assertIn(f".SS p3dgrid {command} [OPTIONS] ", page)
            for example in self.succeed(command, "--help").split("xample")[-1].splitlines()[1:]:
                self.assertIn(example.strip() + "\n", page)
        described = set(re.findall(r"--[a-z][a-z-]*", page))
        self.assertEqual(described, set(self.all_options()))
        version = self.succeed("--version").strip()
        self.assertIn(f'"{version}"', page.splitlines()[0])

    def test_values_are_those_of_the_help(self):
        page = re.sub(r"\\f.|[ \"]", "", self.page())
        for option, values in self.all_options().items():
            if "|" in values:
                self.assertIn(option + values, page)

    def test_is_well_formed(self):
        if not shutil.which("groff"):
            self.skipTest("no groff")
        result = subprocess.run(["groff", "-ww", "-man", "-Tutf8", "-z",
                                 pathlib.Path(BUILD) / "tools/p3dgrid.1"],
                                capture_output=True, text=True, timeout=60)
        self.assertEqual((result.returncode, result.stderr), (0, ""))


class BashCompletion(InstalledTest):
    def complete(self, line):
        """The completions that bash offers for the line."""
        words = line.split(" ")
        quoted = " ".join(shlex.quote(word) for word in words)
        script = (f"source {shlex.quote(str(SOURCE / 'tools/completion/p3dgrid.bash'))}\n"
                  f"COMP_WORDS=({quoted}); COMP_CWORD={len(words) - 1}\n"
                  "_p3dgrid 2>/dev/null\nprintf '%s\\n' \"${COMPREPLY[@]}\"")
        path = f"{pathlib.Path(COMMAND).parent}:{os.environ['PATH']}"
        return self.run_checked("bash", "--norc", "-c", script,
                                env={**os.environ, "PATH": path}).split()

    def test_commands(self):
        self.assertEqual(self.complete("p3dgrid "), self.commands())
        self.assertEqual(self.complete("p3dgrid co"), ["convert"])
        self.assertEqual(self.complete("p3dgrid --quiet te"), ["tecplot"])
        self.assertEqual(self.complete("p3dgrid --ver"), ["--version", "--verbose"])

    def test_every_option_of_every_command(self):
        for command in self.commands():
            self.assertEqual(self.complete(f"p3dgrid {command} --"),
                             list(self.options_of(command)))

    def test_every_value(self):
        known = {"--variable": "rho density x-momentum y-momentum z-momentum energy u v w p pressure "
                               "mach".split(),
                 "--plane": ["i=", "j=", "k="]}
        for command in self.commands():
            for option, usage in self.options_of(command).items():
                values = [word for word in usage.split("|") if "|" in usage and word.islower()
                          or word.isdigit()]
                self.assertEqual(self.complete(f"p3dgrid {command} {option} "),
                                 known.get(option, values), (command, option))
        self.assertEqual(self.complete("p3dgrid convert --to-format b"), ["binary"])

    def test_files_are_left_to_the_shell(self):
        self.assertEqual(self.complete("p3dgrid info "), [])
        self.assertEqual(self.complete("p3dgrid tecplot --iblank "), [])


class ZshCompletion(InstalledTest):
    """Tab completion in an interactive shell on a terminal."""

    def setUp(self):
        super().setUp()
        if not shutil.which("zsh"):
            self.skipTest("no zsh")
        pid, self.terminal = pty.fork()
        if pid == 0:
            path = f"{pathlib.Path(COMMAND).parent}:{os.environ['PATH']}"
            os.chdir(self.folder)
            os.execvpe("zsh", ["zsh", "-f", "-i"],
                       {"PATH": path, "TERM": "dumb", "HOME": str(self.folder), "LANG": "C"})
        self.addCleanup(self.finish, pid)
        self.type(f"fpath=({shlex.quote(str(SOURCE / 'tools/completion'))} $fpath); PS1='ready> '\n")
        self.type("autoload -U compinit && compinit -u -D; LISTMAX=1000; echo compi''nit done\n")
        self.wait_for("compinit done")

    def finish(self, pid):
        os.close(self.terminal)
        os.waitpid(pid, 0)

    def type(self, text):
        os.write(self.terminal, text.encode())

    def wait_for(self, *texts):
        seen, end = "", time.monotonic() + 60
        while time.monotonic() < end:
            if select.select([self.terminal], [], [], 0.1)[0]:
                seen += os.read(self.terminal, 65536).decode(errors="replace")
            if all(text in seen for text in texts):
                return seen
        self.fail(f"{texts} not in {seen!r}")

    def test_completes(self):
        for typed, completed in (("p3dgrid conv\t", "p3dgrid convert "),
                                 ("p3dgrid convert --to-f\t", "--to-format "),
                                 ("p3dgrid convert --to-format bin\t", "--to-format binary "),
                                 ("p3dgrid plot --variable ma\t", "--variable mach ")):
            with self.subTest(typed=typed):
                self.type(typed)
                self.wait_for(completed.split()[-1])
                self.type("\x15\n")

    def test_lists(self):
        self.type("p3dgrid \t")
        self.wait_for(*self.commands())
        self.type("\x15\np3dgrid plot --\t")
        self.wait_for(*self.options_of("plot"))


class DebianPackage(InstalledTest):
    def setUp(self):
        super().setUp()
        if not shutil.which("dpkg-shlibdeps"):
            self.skipTest("no dpkg-dev")

    def test_package(self):
        self.run_checked("cpack", "-G", "DEB", "-B", self.folder, cwd=BUILD)
        (package,) = self.folder.glob("p3dgrid_*.deb")
        fields = self.run_checked("dpkg-deb", "--field", package)
        version = self.succeed("--version").split()[1]
        self.assertIn("Package: p3dgrid\n", fields)
        self.assertIn(f"Version: {version}\n", fields)
        self.assertRegex(fields, r"\nDepends: .*libc6")
        self.assertRegex(fields, r"\nDepends: .*zlib1g")
        self.assertNotRegex(fields, r"\nMaintainer: .*@")
        root = self.path("root")
        self.run_checked("dpkg-deb", "--extract", package, root)
        for name in ("usr/bin/p3dgrid", "usr/share/man/man1/p3dgrid.1.gz",
                     "usr/share/bash-completion/completions/p3dgrid",
                     "usr/include/mod_p3dgrid/MOD_P3DReader.hpp",
                     "usr/share/doc/p3dgrid/copyright"):
            self.assertTrue((root / name).is_file(), name)
        self.assertEqual(self.succeed("--version", command=str(root / "usr/bin/p3dgrid")),
                         f"p3dgrid {version}\n")
        self.assertEqual([entry.name for entry in root.iterdir()], ["usr"])
        description = re.findall(r"^ .*", fields, re.MULTILINE)
        self.assertLessEqual(max(map(len, description)), 80)
        self.assert_changelog(root / "usr/share/doc/p3dgrid/changelog.gz", version)

    @unittest.skipUnless(os.path.isdir(os.path.join(BUILD, "python", "p3dgrid")), "no Python package in this build")
    def test_python_package(self):
        self.run_checked("cpack", "-G", "DEB", "-B", self.folder, cwd=BUILD)
        (package,) = self.folder.glob("python3-p3dgrid_*.deb")
        fields = self.run_checked("dpkg-deb", "--field", package)
        self.assertIn("Package: python3-p3dgrid\n", fields)
        self.assertRegex(fields, r"\nDepends: .*libstdc\+\+6.*python3-numpy|"
                                 r"\nDepends: .*python3-numpy.*libstdc\+\+6")
        root = self.path("python root")
        self.run_checked("dpkg-deb", "--extract", package, root)
        version = self.succeed("--version").split()[1]
        folder = root / "usr/lib/python3/dist-packages"
        printed = self.run_checked("/usr/bin/python3", "-B", "-c",
                                   "import p3dgrid; print(p3dgrid.__version__, p3dgrid.__file__)",
                                   env={**os.environ, "PYTHONPATH": str(folder)})
        self.assertEqual(printed, f"{version} {folder}/p3dgrid/__init__.py\n")
        self.assertTrue((root / "usr/share/doc/python3-p3dgrid/copyright").is_file())
        self.assertFalse((root / "usr/bin").exists())

    @unittest.skipUnless(os.path.isdir(os.path.join(BUILD, "mpi")), "no p3dgrid-mpi in this build")
    def test_mpi_package(self):
        self.run_checked("cpack", "-G", "DEB", "-B", self.folder, cwd=BUILD)
        (package,) = self.folder.glob("p3dgrid-mpi_*.deb")
        fields = self.run_checked("dpkg-deb", "--field", package)
        self.assertIn("Package: p3dgrid-mpi\n", fields)
        self.assertRegex(fields, r"\nDepends: .*mpi")
        root = self.path("mpi root")
        self.run_checked("dpkg-deb", "--extract", package, root)
        for name in ("usr/bin/p3dgrid-mpi", "usr/share/man/man1/p3dgrid-mpi.1.gz",
                     "usr/share/doc/p3dgrid-mpi/copyright"):
            self.assertTrue((root / name).is_file(), name)

    def assert_changelog(self, packed, version):
        """It has dpkg's format and names the full changelog."""
        plain = self.path("changelog")
        plain.write_bytes(gzip.decompress(packed.read_bytes()))
        read = self.run_checked("dpkg-parsechangelog", "--file", plain)
        self.assertIn("Source: p3dgrid\n", read)
        self.assertIn(f"Version: {version}\n", read)
        (named,) = re.findall(r"/(\S+CHANGELOG.md)", read)
        self.assertTrue((packed.parents[4] / named).is_file(), named)


if __name__ == "__main__":
    main()
