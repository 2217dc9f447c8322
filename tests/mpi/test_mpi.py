"""p3dgrid-mpi: the same bytes and the same report as the serial command, for any number of ranks.
The commands of docs/large-data.md run as they stand there."""

import os
import pathlib
import re
import shlex
import shutil
import signal
import struct
import subprocess
import sys
import time

from restart_support import RestartForm, restart_bytes, sample_solution
from support import ONE_BLOCK, OTHER, TWO_BLOCKS, Form, ToolTest, grid_bytes, main

LAUNCHER = os.environ.get("MPIEXEC", "mpirun")
COMMAND = os.environ.get("P3DGRID_MPI", "")
TWO = [block.extents for block in TWO_BLOCKS]
RANKS = (1, 2, 4)
MIB = 1024 * 1024

# Open MPI needs all of these on a small machine, in a container and as root.
ENVIRONMENT = {**os.environ, "OMPI_ALLOW_RUN_AS_ROOT": "1", "OMPI_ALLOW_RUN_AS_ROOT_CONFIRM": "1",
               "OMPI_MCA_rmaps_base_oversubscribe": "1", "OMPI_MCA_btl_vader_single_copy_mechanism":
               "none", "OMPI_MCA_mpi_yield_when_idle": "1"}

# Runs the command and writes its peak memory in bytes to a file for the rank.
MEASURED = """
import os, resource, subprocess, sys
status = subprocess.run(sys.argv[1:]).returncode
with open("peak." + os.environ["OMPI_COMM_WORLD_RANK"], "w") as file:
    file.write(str(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024))
sys.exit(status)
"""


class Mpi(ToolTest):
    def ranks(self, count, *arguments, before=()):
        """Starts the command on this many ranks."""
        command = [LAUNCHER, "-n", str(count), *before, COMMAND, *map(str, arguments)]
        return subprocess.Popen(command, cwd=self.folder, env=ENVIRONMENT, text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                stderr=subprocess.PIPE)

    def run_ranks(self, count, *arguments, **options):
        process = self.ranks(count, *arguments, **options)
        process.stdout_text, process.stderr_text = process.communicate(timeout=120)
        return process

    def succeed_with(self, count, *arguments):
        result = self.run_ranks(count, *arguments)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        return result.stdout_text

    def assert_same_conversion(self, kind, name, *options, ranks=RANKS, grid="grid"):
        """Converts a file with both commands and compares their files and output."""
        serial = ("convert", name) if kind == "grid" else ("restart", grid, name)
        expected = self.succeed(*serial, "out", *options)
        content = self.path("out").read_bytes()
        for count in ranks:
            self.path("out").unlink()
            given = () if kind == "grid" else ("--grid", grid)
            said = self.succeed_with(count, "convert", name, "out", *given, *options)
            self.assertEqual(said, expected)
            self.assertEqual(self.path("out").read_bytes(), content)

    def test_grids_are_converted_like_by_the_serial_command(self):
        targets = {"unformatted": ("--to-format", "binary", "--to-byte-order", "big"),
                   "binary": ("--to-format", "unformatted", "--to-marker-bytes", "8")}
        for encoding, target in targets.items():
            for double in (False, True):
                form = Form(encoding, double, iblank=double, order=OTHER if double else "little")
                self.write_grid("grid", form)
                precision = "single" if double else "double"
                # As the options of both commands state the form, no detection decides it.
                self.assert_same_conversion("grid", "grid", *form.options("grid"), *target,
                                            "--to-precision", precision)

    def test_one_block_without_a_count(self):
        self.write_grid("grid", Form(multiblock=False), ONE_BLOCK)
        self.assert_same_conversion("grid", "grid", "--to-precision", "double", ranks=(2,))

    def test_two_dimensions(self):
        self.write("grid", struct.pack("<3i8f", 1, 2, 2, *range(8)))
        stated = ("grid", "--grid-format", "binary")
        self.assert_same_conversion("grid", *stated, "--to-format", "unformatted", ranks=(2,))
        self.assertEqual(self.succeed_with(2, "info", *stated), self.succeed("info", *stated))

    def test_solutions_of_every_layout(self):
        for layout in (1, 2, 3, 100, 101, 102):
            extents = TWO if layout not in (101, 102) else TWO[:1]
            self.write_grid("grid", blocks=TWO_BLOCKS[:len(extents)])
            form = RestartForm(layout, double=True)
            self.write("flow", restart_bytes(form, sample_solution(extents)))
            self.assert_same_conversion("restart", "flow", *form.options(), "--to-precision",
                                        "single", "--to-byte-order", OTHER, ranks=(2,))
            stated = ("flow", "--grid", "grid", *form.options())
            for json in ((), ("--json",)):
                self.assertEqual(self.succeed_with(2, "info", *stated, *json),
                                 self.succeed("info", *stated, *json))

    def test_variables_behind_flags(self):
        solution = sample_solution(TWO[:1], variables=10, sections=[(1, 5)], flags=(1, 999),
                                   extensions=[(6, 10)])
        self.write_grid("grid", blocks=ONE_BLOCK)
        self.write("flow", restart_bytes(RestartForm(101, double=True), solution))
        self.assert_same_conversion("restart", "flow", "--to-marker-bytes", "8", ranks=(2,))

    def test_sub_records(self):
        """A long record is a chain of shorter ones, which divide values."""
        payload = struct.pack("<24f", *range(24))
        parts = payload[:10], payload[10:61], payload[61:]
        content = struct.pack("<iiiii", 12, 2, 2, 2, 12)
        for n, part in enumerate(parts):
            more, earlier = n + 1 < len(parts), n > 0
            content += struct.pack("<i", -len(part) if more else len(part)) + part
            content += struct.pack("<i", -len(part) if earlier else len(part))
        self.write("grid", content)
        self.assert_same_conversion("grid", "grid", "--to-precision", "double")
        self.assertEqual(self.succeed_with(2, "info", "grid"), self.succeed("info", "grid"))

    def test_reports(self):
        self.write_grid("grid", Form(double=True, iblank=True))
        for count in RANKS:
            for json in ((), ("--json",)):
                self.assertEqual(self.succeed_with(count, "info", "grid", *json),
                                 self.succeed("info", "grid", *json))

    def write_large(self, name, points):
        """A binary grid in single precision of planes of 100 x 100 points; most are 0."""
        extents = (100, 100, points // 10_000)
        with open(self.folder / name, "wb") as file:
            file.write(struct.pack("<3i", *extents))
            for plane in range(0, 3 * extents[2], 7):
                file.seek(12 + 40_000 * plane + 4 * plane)
                file.write(struct.pack("<f", plane + 0.5))
            file.truncate(12 + 12 * points)

    def test_many_pieces(self):
        self.write_large("grid", 9_000_000)
        stated = ("--grid-format", "binary", "--grid-precision", "single", "--grid-byte-order",
                  "little", "--grid-dimensions", "3", "--grid-multiblock", "no", "--grid-iblank",
                  "no", "--grid-marker-bytes", "4")
        self.assert_same_conversion("grid", "grid", *stated, "--to-format", "unformatted",
                                    "--to-precision", "double", ranks=(2, 4))
        self.assertEqual(self.succeed_with(2, "info", "grid", *stated),
                         self.succeed("info", "grid", *stated))

    def test_memory_does_not_grow_with_the_file(self):
        measured = (sys.executable, "-c", MEASURED)
        for points in (3_000_000, 40_000_000):
            self.write_large("grid", points)
            result = self.run_ranks(2, "convert", "grid", "out", "--to-byte-order", "big",
                                    before=measured)
            self.assertEqual(result.returncode, 0, result.stderr_text)
            self.assertEqual(self.path("out").stat().st_size, 12 + 12 * points)
            peaks = [int(self.path(f"peak.{rank}").read_text()) for rank in range(2)]
            self.assertLess(max(peaks), 160 * MIB)

    def test_commands_of_the_page(self):
        text = (pathlib.Path(os.environ["P3DGRID_SOURCE"]) / "docs" / "large-data.md").read_text()
        (block,) = re.findall(r"^```sh tests/mpi/test_mpi.py\n(.*?)^```$", text,
                              re.MULTILINE | re.DOTALL)
        self.succeed("sample", "case")
        shutil.copy(self.path("case/grid.p3d"), self.path("wing.p3d"))
        shutil.copy(self.path("case/flow.q"), self.path("wing.q"))
        for line in block.splitlines():
            launcher, option, count, program, *arguments = shlex.split(line)
            self.assertEqual((launcher, option, program), ("mpirun", "-n", "p3dgrid-mpi"))
            self.succeed_with(count, *arguments)

    def assert_failure(self, result, status, says):
        self.assertEqual(result.returncode, status, result.stderr_text)
        own = [line for line in result.stderr_text.splitlines() if line.startswith("p3dgrid")]
        self.assertEqual(len(own), 1, result.stderr_text)
        self.assertIn(says, own[0])
        self.assert_nothing_left()

    def assert_nothing_left(self):
        self.assertFalse(self.path("out").exists())
        self.assert_no_leftovers()

    def test_failures_are_reported_once(self):
        self.write("cut", grid_bytes(Form(), TWO_BLOCKS)[:-4])
        self.write_grid("text", Form("formatted"))
        self.write_grid("grid")
        for status, says, arguments in (
                (2, "nowhere: No such file", ("nowhere", "out")),
                (1, "cut: ", ("cut", "out")),
                (1, "text: is text", ("text", "out")),
                (2, "out: not written: p3dgrid-mpi writes no text",
                 ("grid", "out", "--to-format", "text")),
                (2, "not expected: ",
                 ("grid", "out", "--to-dimensions", "2"))):
            self.assert_failure(self.run_ranks(2, "convert", *arguments), status, says)

    def test_a_failure_of_one_rank_ends_all(self):
        """Each rank but the first looks for the file in another folder."""
        self.write_grid("grid")
        for count in (2, 4):
            result = self.run_ranks(count, "convert", "grid", "out", before=(
                "/bin/sh", "-c", '[ "$OMPI_COMM_WORLD_RANK" = 0 ] || cd /; exec "$0" "$@"'))
            self.assert_failure(result, 2, "grid: No such file or directory")

    def test_a_full_disk(self):
        self.write_large("grid", 9_000_000)
        for limit, says in ((100, "out: not written: "), (20_000, "out: not written: ")):
            result = self.run_ranks(2, "convert", "grid", "out", "--to-byte-order", "big", before=(
                "/bin/sh", "-c", f'ulimit -f {limit}; exec "$0" "$@"'))
            self.assert_failure(result, 2, says)

    def test_a_rank_that_is_killed_ends_all(self):
        self.write_large("grid", 40_000_000)
        process = self.ranks(2, "convert", "grid", "out", "--to-precision", "double")
        deadline = time.monotonic() + 60
        while not list(self.folder.glob(".p3dgrid-*")):
            self.assertLess(time.monotonic(), deadline)
            self.assertIsNone(process.poll())
            time.sleep(0.01)
        ranks = [int(stat.parent.name) for stat in pathlib.Path("/proc").glob("[0-9]*/stat")
                 if self.parent_of(stat) == process.pid]
        self.assertEqual(len(ranks), 2)
        os.kill(max(ranks), signal.SIGKILL)
        process.communicate(timeout=60)
        self.assertNotEqual(process.returncode, 0)
        self.assert_nothing_left()

    @staticmethod
    def parent_of(stat):
        try:
            return int(stat.read_text().rpartition(")")[2].split()[1])
        except OSError:
            return None


if __name__ == "__main__":
    main()
