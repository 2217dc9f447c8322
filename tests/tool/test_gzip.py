"""Files compressed with gzip are read as what they hold, and written where the name asks for it."""

import contextlib
import gzip
import hashlib
import json
import os
import random
import re
import resource
import shutil
import signal
import struct
import time

from support import NATIVE, TWO_BLOCKS, Form, ToolTest, grid_bytes, main

GRID = grid_bytes(Form(), TWO_BLOCKS)


class GzipTest(ToolTest):
    def setUp(self):
        super().setUp()
        self.path("temporary").mkdir()

    def environment(self, temporary="temporary"):
        return {**os.environ, "TMPDIR": str(self.path(temporary))}

    def run_tool(self, *arguments, **options):
        options.setdefault("env", self.environment())
        return super().run_tool(*arguments, **options)

    def assert_no_leftovers(self, folder=None):
        super().assert_no_leftovers(folder)
        self.assertEqual(os.listdir(self.path("temporary")), [])


class SameAsUnpacked(GzipTest):
    """Each command on two folders: in one the same files under the same names are compressed."""

    def setUp(self):
        super().setUp()
        self.succeed("sample", "plain")
        shutil.copytree(self.path("plain"), self.path("packed"))
        for file in self.path("packed").iterdir():
            file.write_bytes(gzip.compress(file.read_bytes(), 1))

    def in_both(self, *arguments, status=0):
        results = {}
        for folder in ("plain", "packed"):
            before = set(os.listdir(self.path(folder)))
            result = self.run_tool(*arguments, cwd=self.path(folder))
            self.assertEqual(result.returncode, status, result.stderr_text)
            outputs = {}
            for name in sorted(set(os.listdir(self.path(folder))) - before):
                content = self.path(f"{folder}/{name}").read_bytes()
                outputs[name] = hashlib.sha256(content).hexdigest()
                self.path(f"{folder}/{name}").unlink()
            said = re.sub(r"\.p3dgrid-[0-9a-f-]+\.tmp", "TEMPORARY", result.stdout_text)
            results[folder] = said, result.stderr_text, outputs
            self.assert_no_leftovers()
        self.assertEqual(results["packed"], results["plain"])
        self.assertNotIn("/proc", results["packed"][0] + results["packed"][1])
        return results["plain"]

    def test_info(self):
        without_extents = {"upper-102.rst": 2, "flow-100.txt": 1}
        for name in os.listdir(self.path("plain")):
            status = without_extents.get(name, 0)
            self.in_both("info", name, status=status)
            self.in_both("info", "--json", name, status=status)
        self.in_both("info", "upper-102.rst", "--grid", "upper.p3d")
        self.in_both("info", "--json", "flow.q", "--grid", "grid.p3d")

    def test_check(self):
        for name in ("grid.p3d", "grid.txt", "flow.f"):
            self.in_both("check", name)
        self.in_both("check", "grid.p3d", "flow.q")

    def test_conversions(self):
        for command in (("convert", "grid.p3d", "out", "--to-format", "text"),
                        ("convert", "grid.txt", "out"),
                        ("restart", "grid.p3d", "flow.q", "out", "--to-layout", "1"),
                        ("tecplot", "grid-iblank.p3d", "flow.q", "out")):
            with self.subTest(command=command):
                self.assertEqual(list(self.in_both(*command)[2]), ["out"])

    def test_pictures(self):
        probe = self.run_tool("plot", "grid.p3d", "probe.png", cwd=self.path("plain"))
        if "cannot draw" in probe.stderr_text:
            self.skipTest("the command draws no pictures")
        self.path("plain/probe.png").unlink()
        self.in_both("plot", "grid.p3d", "out.png")
        self.in_both("plot", "grid.p3d", "flow.q", "out.png", "--variable", "p")

    def test_failures(self):
        for status, *command in (
                (1, "check", "upper.p3d", "flow.q"), (1, "convert", "flow.q", "out"),
                (1, "check", "flow.q", "grid.p3d"), (2, "check", "upper-102.rst"),
                (1, "info", "grid.p3d", "--grid-format", "binary"),
                (2, "convert", "grid.p3d", "./grid.p3d"),
                (2, "convert", "grid.p3d", "out", "--to-multiblock", "no"),
                (2, "plot", "grid.p3d", "out.png", "--block", "9")):
            with self.subTest(command=command):
                self.assertNotEqual(self.in_both(*command, status=status)[1], "")


class Reading(GzipTest):
    def test_control_characters_of_a_name_are_escaped(self):
        name = "grid\n\x1b[2J1"
        self.write(name, gzip.compress(GRID))
        shown = r"grid\n\x1b[2J1"
        self.assertTrue(self.succeed("check", name).startswith(shown + ": no damage"))
        self.assertIn(shown, self.fail_with(1, "check", name, "--grid-format", "binary"))
        self.assertEqual(json.loads(self.succeed("info", "--json", name))["file"], name)

    def test_members_one_after_the_other(self):
        for at in (0, 1, 20, len(GRID) - 1, len(GRID)):
            self.write("in", gzip.compress(GRID[:at]) + gzip.compress(GRID[at:]))
            self.succeed("convert", "in", "out")
            self.assertEqual(self.path("out").read_bytes(), GRID)

    def test_more_than_the_buffer(self):
        values = random.Random(1).randbytes(300_000) + bytes(3_000_000)
        content = struct.pack("=3i", len(values) // 12, 1, 1) + values
        self.write("in", gzip.compress(content))
        self.succeed("convert", "in", "out", *Form("binary", multiblock=False).options("grid"),
                     "--grid-byte-order", NATIVE)
        self.assertEqual(self.path("out").stat().st_size, len(content))

    def test_contents_compressed_twice(self):
        self.write("in", gzip.compress(gzip.compress(GRID)))
        self.fail_with(1, "check", "in", says=("in: ", "gunzip"))

    def test_place_of_the_copy(self):
        self.write("in", gzip.compress(GRID))
        elsewhere = {"env": self.environment("missing")}
        self.succeed("convert", "in", "out", **elsewhere)
        self.fail_with(2, "check", "in", says=(
            "in: cannot be unpacked in " + str(self.path("missing")), "No such file"), **elsewhere)
        self.fail_with(2, "convert", "in", "nowhere/out", says="in: cannot be unpacked in nowhere: ")

    def test_unreadable(self):
        self.write("secret", gzip.compress(GRID)).chmod(0)
        with self.unprivileged() as user:
            self.fail_with(2, "info", "secret", says=("secret: ", "Permission denied"), **user)


class Damage(GzipTest):
    def refuse(self, content, *says, status=1):
        self.write("in", content)
        for command in (("check", "in"), ("convert", "in", "out")):
            self.fail_with(status, *command, says=("in: ", *says))
            self.assert_no_leftovers()
        self.assertFalse(self.path("out").exists())

    def test_cut_short(self):
        packed = gzip.compress(GRID)
        for end in (3, 9, 10, 11, len(packed) // 2, len(packed) - 8, len(packed) - 1):
            self.refuse(packed[:end], f"is cut short at byte {end}, inside compressed data")
        self.refuse(packed + packed[:20], f"is cut short at byte {len(packed) + 20}")

    def test_wrong_sum_and_length(self):
        packed = bytearray(gzip.compress(GRID))
        for at, says in ((-5, "incorrect data check"), (-1, "incorrect length check")):
            damaged = packed.copy()
            damaged[at] ^= 1
            self.refuse(bytes(damaged), "compressed data are damaged at byte ", says)

    def test_wrong_data(self):
        packed = gzip.compress(GRID)
        self.refuse(packed[:10] + b"\xff" + packed[11:],
                    "compressed data are damaged at byte 11: invalid block type")

    def test_something_else_behind(self):
        packed = gzip.compress(GRID)
        self.refuse(packed + b"more", f"damaged at byte {len(packed) + 2}: incorrect header check")

    def test_contents(self):
        self.write("in", gzip.compress(GRID[:-6]))
        self.write("plain", GRID[:-6])
        self.assertEqual(self.fail_with(1, "check", "in"),
                         self.fail_with(1, "check", "plain").replace("plain: ", "in: "))

    def test_no_room(self):
        self.write("in", gzip.compress(bytes(1_000_000)))
        for command, folder in ((("check", "in"), str(self.path("temporary"))),
                                (("convert", "in", "out"), ".")):
            self.fail_with(2, *command, says=f"in: cannot be unpacked in {folder}: File too large",
                           preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                                 (100_000, 100_000)))
            self.assert_no_leftovers()


class Interrupted(GzipTest):
    def wait_for(self, process, condition):
        deadline = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), deadline)
            self.assertIsNone(process.poll(), "the command ends too early")
            time.sleep(0.001)

    def test_signals_while_unpacking(self):
        self.write("in", gzip.compress(bytes(4_000_000), 1) * 250)
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGKILL):
            with self.subTest(signal=number):
                process = self.start("check", "in", env=self.environment())
                self.wait_for(process, lambda: self.has_copy(process))
                self.assert_no_leftovers()
                process.send_signal(number)
                process.communicate(timeout=60)
                self.assertEqual(process.returncode, -number)
                self.assert_no_leftovers()

    def test_signals_while_compressing(self):
        points = 2_000_000
        self.write("in", struct.pack("=3i", points, 1, 1) + random.Random(3).randbytes(12 * points))
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                process = self.start("convert", "in", "out.gz", "--grid-byte-order", NATIVE,
                                     *Form("binary", multiblock=False).options("grid"))
                self.wait_for(process, lambda: sum(".tmp" in name
                                                   for name in os.listdir(self.folder)) == 2)
                process.send_signal(number)
                process.communicate(timeout=60)
                self.assertEqual(process.returncode, -number)
                self.assert_no_leftovers()
                self.assertFalse(self.path("out.gz").exists())

    def test_killed_while_working(self):
        self.write("flow", gzip.compress(GRID))
        os.mkfifo(self.path("pipe"))
        # The pipe keeps the command waiting after the other file is unpacked.
        process = self.start("info", "flow", "--grid", "pipe", *Form().options("grid"),
                             "--grid-byte-order", NATIVE, env=self.environment())
        self.wait_for(process, lambda: self.has_copy(process))
        time.sleep(0.1)
        self.assert_no_leftovers()
        self.assertIsNone(process.poll(), "the command does not wait for the pipe")
        process.kill()
        process.communicate(timeout=60)
        self.assert_no_leftovers()

    def has_copy(self, process):
        """Whether the process holds a file without a name."""
        folder = f"/proc/{process.pid}/fd"
        for number in os.listdir(folder):
            with contextlib.suppress(FileNotFoundError):  # closed in the meantime
                if os.readlink(f"{folder}/{number}").endswith(" (deleted)"):
                    return True
        return False


class Writing(GzipTest):
    def test_every_command(self):
        self.succeed("sample", "case")
        for *command, name in (("convert", "case/grid.p3d", "out"),
                               ("convert", "case/grid.p3d", "--to-format", "text", "out"),
                               ("restart", "case/grid.p3d", "case/flow.q", "out"),
                               ("restart", "--stream", "case/grid.p3d", "case/flow.q", "out"),
                               ("tecplot", "case/grid.p3d", "case/flow.q", "out")):
            said = self.succeed(*command, name)
            for ending in (".gz", ".GZ"):
                with self.subTest(command=command, ending=ending):
                    self.assertEqual(self.succeed(*command, name + ending),
                                     said.replace("out: ", f"out{ending}: "))
                    packed = self.path(name + ending).read_bytes()
                    self.assertEqual(gzip.decompress(packed), self.path(name).read_bytes())
                    self.succeed(*command, name + ending)
                    self.assertEqual(self.path(name + ending).read_bytes(), packed)
                    self.assert_no_leftovers()

    def test_from_compressed_to_compressed(self):
        self.write("in.gz", gzip.compress(GRID))
        self.succeed("convert", "in.gz", "out.gz")
        self.assertEqual(gzip.decompress(self.path("out.gz").read_bytes()), GRID)

    def test_own_input(self):
        packed = gzip.compress(GRID)
        self.write("in.gz", packed)
        self.fail_with(2, "convert", "in.gz", "./in.gz", says="./in.gz: is the file to be read")
        self.assertEqual(self.path("in.gz").read_bytes(), packed)

    def test_existing_file_keeps_its_permissions(self):
        self.write("in", GRID)
        self.write("real", b"before").chmod(0o640)
        self.path("out.gz").symlink_to("real")
        self.succeed("convert", "in", "out.gz", umask=0o022)
        self.assertTrue(self.path("out.gz").is_symlink())
        self.assertEqual(self.path("real").stat().st_mode & 0o777, 0o640)
        self.assertEqual(gzip.decompress(self.path("real").read_bytes()), GRID)

    def test_pictures_are_compressed_already(self):
        self.write("in", GRID)
        self.fail_with(2, "plot", "in", "out.png.gz", says="must end in .png")

    def test_no_room(self):
        # Random bytes do not get shorter, so that there is room for the file but not for this.
        points = 50_000
        content = (struct.pack("=3i", points, 1, 1) +
                   random.Random(2).randbytes(12 * points).replace(b"\x7f", b"\x11")
                   .replace(b"\xff", b"\x12"))
        self.write("in", content)
        self.write("out.gz", b"before")
        limits = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                           (len(content), len(content)))}
        self.assertGreater(len(gzip.compress(random.Random(2).randbytes(12 * points), 6)),
                           12 * points)
        form = (*Form("binary", multiblock=False).options("grid"), "--grid-byte-order", NATIVE)
        self.succeed("convert", "in", "out", *form, **limits)
        self.fail_with(2, "convert", "in", "out.gz", *form,
                       says="out.gz: not written: File too large", **limits)
        self.assertEqual(self.path("out.gz").read_bytes(), b"before")
        self.assert_no_leftovers()


if __name__ == "__main__":
    main()
