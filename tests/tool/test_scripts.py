"""The scripts that the Makefile calls."""

import os
import pathlib
import re
import subprocess

from support import COMMAND, ToolTest, main

SCRIPTS = pathlib.Path(os.environ.get("P3DGRID_SOURCE", "")) / "scripts"


def packages_for(purpose):
    text = (SCRIPTS / "install-packages").read_text()
    return re.search(rf"^for_{purpose}=\((.*?)\)$", text, re.MULTILINE | re.DOTALL)[1].split()


class Demo(ToolTest):
    def test_demo_runs_again_and_again(self):
        for _ in range(2):
            result = subprocess.run([SCRIPTS / "demo", COMMAND, "demo"], cwd=self.folder,
                                    capture_output=True, text=True, timeout=60)
            self.assertEqual(result.returncode, 0, result.stderr)
            self.assertEqual(result.stdout.count("the same, byte for byte"), 2)
            self.assertIn("examples/plot_tecplot.py demo/flow.dat", result.stdout)
            self.assertIn("demo/grid.p3d and demo/flow.q agree", result.stdout)
            self.assertIn("--- CODE HALTED ---", result.stdout)
        self.assertEqual(self.path("demo/grid.p3d").read_bytes(),
                         self.path("demo/back.p3d").read_bytes())
        self.assertEqual(self.path("demo/flow.q").read_bytes(),
                         self.path("demo/flow-back.q").read_bytes())


class InstallPackages(ToolTest):
    """Replaces the package tools by programs that record how they are called."""

    def stand_in(self, name, script):
        program = self.path("bin") / name
        program.write_text("#!/bin/sh\n" + script)
        program.chmod(0o755)

    def setUp(self):
        super().setUp()
        self.path("bin").mkdir()
        for name in ("bash", "sh", "env", "grep"):
            found = next(pathlib.Path(folder) / name for folder in ("/usr/bin", "/bin")
                         if (pathlib.Path(folder) / name).exists())
            self.path("bin").joinpath(name).symlink_to(found)

    def debian(self, installed, user=0):
        self.stand_in("id", f"echo {user}\n")
        self.stand_in("apt-get", 'echo "$@" >> calls\n')
        self.stand_in("dpkg-query", 'for package; do :; done\ncase " %s " in *" $package "*) '
                      "echo installed;; *) exit 1;; esac\n" % " ".join(installed))

    def install(self, purpose, status=0):
        result = subprocess.run([SCRIPTS / "install-packages", purpose], cwd=self.folder,
                                env={"PATH": str(self.path("bin"))}, capture_output=True,
                                text=True, timeout=60)
        self.assertEqual(result.returncode, status, result.stderr)
        return result.stdout + result.stderr

    def calls(self):
        return self.path("calls").read_text().splitlines() if self.path("calls").exists() else []

    def test_nothing_missing_nothing_done(self):
        self.debian(packages_for("build"))
        self.assertEqual(self.install("build"), "")
        self.assertEqual(self.calls(), [])

    def test_what_is_missing_is_installed(self):
        self.debian(["g++", "make", "pkg-config"])
        missing = " ".join(name for name in packages_for("build")
                           if name not in ("g++", "make", "pkg-config"))
        self.assertIn("cmake", missing)
        self.assertIn(f"Missing packages: {missing}\n", self.install("build"))
        self.assertEqual(self.calls(), [
            "update", f"install --yes --no-install-recommends {missing}"])

    def test_tests_need_more_and_ci_yet_more(self):
        self.debian(packages_for("build"))
        missing = self.install("test").splitlines()[0]
        for package in ("libgtest-dev", "libgmock-dev", "gfortran", "python3-vtk9"):
            self.assertIn(package, missing)
        self.assertNotIn("clang", missing)
        self.assertIn("clang", self.install("ci"))
        for purpose in ("docs", "ci"):
            self.assertIn("doxygen", self.install(purpose).splitlines()[0].split())

    def test_sudo_where_it_is_needed(self):
        self.debian([], user=1000)
        self.assertIn("As root: apt-get install", self.install("build", status=1))
        self.assertEqual(self.calls(), [])
        self.stand_in("sudo", 'echo sudo >> calls\nexec "$@"\n')
        self.install("build")
        self.assertEqual([line.split()[0] for line in self.calls()],
                         ["sudo", "update", "sudo", "install"])

    def test_failing_installation_is_a_failure(self):
        self.debian([])
        self.stand_in("apt-get", "exit 100\n")
        self.install("build", status=100)

    def test_other_systems_get_the_list(self):
        self.assertIn("libcli11-dev", self.install("build"))

    def test_unknown_purpose(self):
        self.debian([])
        self.assertIn("usage", self.install("everything", status=2))
        self.assertEqual(self.calls(), [])


if __name__ == "__main__":
    main()
