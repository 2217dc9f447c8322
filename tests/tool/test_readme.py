"""The commands of README.md run as they stand there, and so does its host. docs/command.md describes
every option."""

import os
import pathlib
import re
import shlex
import shutil
import subprocess

from restart_support import RestartForm, restart_bytes, sample_solution
from support import COMMAND, ONE_BLOCK, TWO_BLOCKS, Form, ToolTest, grid_bytes, main

SOURCE = pathlib.Path(os.environ.get("P3DGRID_SOURCE", ""))
BUILD = os.environ.get("P3DGRID_BUILD", "")


THIS = "sh tests/tool/test_readme.py"  # marks the blocks that are run here


def fenced(language):
    """The README's code blocks in that language."""
    text = (SOURCE / "README.md").read_text()
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


class Commands(ToolTest):
    def run_block(self, block):
        for line in block.splitlines():
            program, *arguments = shlex.split(line)
            self.assertEqual(program, "build/tools/p3dgrid")
            self.succeed(*arguments)

    def blocks(self):
        for_demo, for_own_file, _ = fenced(THIS)
        return for_demo, for_own_file

    def test_files_of_the_demo(self):
        subprocess.run([SOURCE / "scripts" / "demo", COMMAND, "demo"], cwd=self.folder, check=True,
                       capture_output=True, timeout=60)
        for_demo, _ = self.blocks()
        self.run_block(for_demo)
        self.assertEqual(self.path("demo/copy.txt").read_bytes(),
                         self.path("demo/grid.txt").read_bytes())
        self.assertTrue(self.path("demo/copy-q.txt").is_file())
        self.assertTrue(self.path("demo/pressure.png").is_file())

    def test_own_file(self):
        self.write_grid("wing.xyz", Form("binary", double=True))
        solution = sample_solution([block.extents for block in TWO_BLOCKS])
        self.write("wing.q", restart_bytes(RestartForm(double=True), solution))
        _, for_own_file = self.blocks()
        self.run_block(for_own_file)
        expected = grid_bytes(Form(), TWO_BLOCKS)
        self.assertEqual(self.path("wing.p3d").read_bytes(), expected)
        self.succeed("convert", "wing.txt", "again.p3d", "--to-format", "unformatted")
        self.assertEqual(self.path("again.p3d").read_bytes(), expected)
        ones = [type(block)(block.extents, *block.xyz) for block in TWO_BLOCKS]
        self.assertEqual(self.path("wing.bin").read_bytes(),
                         grid_bytes(Form("binary", iblank=True, order="big"), ones))

        self.succeed("restart", "wing.p3d", "wing-q.txt", "again.q", "--to-format", "unformatted",
                     "--to-precision", "double")
        self.assertEqual(self.path("again.q").read_bytes(),
                         restart_bytes(RestartForm(double=True), solution))

    def test_every_option_is_described(self):
        text = (SOURCE / "docs" / "command.md").read_text()
        for command in ("sample", "info", "convert", "check", "restart", "tecplot", "plot"):
            for option in re.findall(r"^ +(--[a-z-]+)", self.succeed(command, "--help"),
                                     re.MULTILINE):
                self.assertIn(f"`{option}`", text)


class Host(ToolTest):
    def run_checked(self, *command, **options):
        result = subprocess.run([str(word) for word in command], capture_output=True, text=True,
                                cwd=self.folder, timeout=300, **options)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)
        return result.stdout

    def setUp(self):
        super().setUp()
        self.prefix = self.path("prefix")
        self.run_checked("cmake", "--install", BUILD, "--prefix", self.prefix)
        (listing,) = fenced("cmake")
        (program,) = fenced("cpp")
        self.path("CMakeLists.txt").write_text(listing)
        self.path("main.cpp").write_text(program)
        self.path("demo").mkdir()
        self.write_grid("demo/grid.p3d", Form(), ONE_BLOCK)

    def assert_host_reads(self, program):
        """And notices a file that ends early."""
        self.assertIn("first point: 0.1 -1e-30 10\n", self.run_checked(program))
        grid = self.path("demo/grid.p3d")
        grid.write_bytes(grid.read_bytes()[:-5])
        result = subprocess.run([program], cwd=self.folder, capture_output=True, text=True,
                                timeout=60)
        self.assertEqual(result.returncode, 1)
        self.assertNotIn("first point", result.stdout)
        self.assertIn("demo/grid.p3d: ", result.stderr)

    def test_example_with_cmake(self):
        self.run_checked("cmake", "-S", ".", "-B", "build", f"-DCMAKE_PREFIX_PATH={self.prefix}")
        self.run_checked("cmake", "--build", "build")
        self.assert_host_reads("build/host")

    def test_example_without_cmake(self):
        """`c++` is the compiler of the build."""
        if not shutil.which("pkg-config"):
            self.skipTest("no pkg-config")
        *_, command = fenced(THIS)
        compiler = self.path("bin") / "c++"
        compiler.parent.mkdir()
        compiler.write_text('#!/bin/sh\nexec ${CXX:-g++} $CXXFLAGS "$@"\n')
        compiler.chmod(0o755)
        (module,) = self.prefix.rglob("mod_p3dgrid.pc")
        self.run_checked("sh", "-ec", command, env={
            **os.environ, "PATH": f"{compiler.parent}:{os.environ['PATH']}",
            "PKG_CONFIG_PATH": str(module.parent)})
        self.assert_host_reads("./a.out")

    def test_installed_command(self):
        self.assertTrue(self.succeed("--version", command=str(self.prefix / "bin" / "p3dgrid")))


if __name__ == "__main__":
    main()
