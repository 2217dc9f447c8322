"""p3dgrid restart holds one array at a time, with and without --stream."""

import os
import resource
import signal
import struct
import time
import unittest

from restart_support import RestartForm, Solution, encodings, restart_bytes, sample_solution
from support import ONE_BLOCK, SANITIZED, TWO_BLOCKS, Block, ToolTest, main

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]


class SameBytes(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("one", blocks=ONE_BLOCK)
        self.write_grid("two", blocks=TWO_BLOCKS)

    def compare(self, grid, restart, source, target, *more):
        """Converts with and without --stream; both must succeed with the same bytes and notes."""
        options = (grid, restart, "out", *source.options(), *target.options(target=True), *more)
        with self.subTest(source=source, target=target, more=more):
            whole = self.run_tool("restart", *options)
            self.assertEqual(whole.returncode, 0, whole.stderr_text)
            expected = self.path("out").read_bytes()
            self.path("out").unlink()
            streamed = self.run_tool("restart", "--stream", *options)
            self.assertEqual(streamed.returncode, 0, streamed.stderr_text)
            self.assertEqual(self.path("out").read_bytes(), expected)
            self.assertEqual(streamed.stderr_text, whole.stderr_text)
            self.assert_no_leftovers()

    def test_sample_case(self):
        self.succeed("sample", "--quiet", "demo")
        for encoding, double in encodings():
            self.compare("demo/grid.p3d", "demo/flow.q", RestartForm(),
                         RestartForm(1, encoding, double))
            self.compare("demo/upper.p3d", "demo/upper-101.rst", RestartForm(101),
                         RestartForm(102, encoding, double))

    def test_what_temporary_files_of_single_variables_could_not_hold(self):
        self.write("in", restart_bytes(RestartForm(101), sample_solution(ONE)))
        self.compare("one", "in", RestartForm(101), RestartForm(101))
        source = RestartForm(100, double=True)
        self.write("in", restart_bytes(source, sample_solution(TWO)))
        self.compare("two", "in", source, source)
        self.write("in", restart_bytes(RestartForm(3), sample_solution(TWO, 40)))
        self.compare("two", "in", RestartForm(3), RestartForm(3, "formatted"))
        values = [float("nan"), float("inf"), float("-inf"), 1 / 3, 1e300, 1e-300, -0.0, 0.1]
        self.write("in", restart_bytes(RestartForm(double=True), Solution(ONE, [[values] * 5])))
        self.compare("one", "in", RestartForm(double=True), RestartForm(2, "binary", True))
        self.compare("one", "in", RestartForm(double=True), RestartForm(2, "formatted"))

    def test_header_values_and_sections(self):
        sections = [(6, 7), (1, 5)]
        self.write("in", restart_bytes(RestartForm(), sample_solution(TWO, 7, sections=sections)))
        for target in (RestartForm(), RestartForm(1, "binary"), RestartForm(3)):
            self.compare("two", "in", RestartForm(), target, "--sections", "6-7,1-5")
        self.write("in", restart_bytes(RestartForm(), sample_solution(TWO)))
        self.compare("two", "in", RestartForm(), RestartForm(), "--mach", "0.9")


@unittest.skipIf(SANITIZED, "sanitizers take memory of their own")
class BoundedMemory(ToolTest):
    """Arrays of 8 MB, blocks of 24 MB, and files of 96 MB."""
    EXTENTS = struct.pack("=3i", 1000, 1000, 1)
    ARRAY = 8_000_000
    LIMIT = 32 << 20

    def write_zeros(self, name, header, arrays):
        with open(self.path(name), "wb") as file:
            file.write(header)
            file.truncate(len(header) + arrays * self.ARRAY)

    def convert(self, *arguments):
        limit = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_DATA,
                                                          (self.LIMIT, self.LIMIT))}
        self.succeed(*arguments, **limit)
        return self.path("out").stat().st_size

    def test_one_array_of_a_solution(self):
        self.write_zeros("grid", self.EXTENTS, 3)
        header = self.EXTENTS + struct.pack("=i", 12)
        self.write_zeros("in", header, 12)
        size = self.convert("restart", "grid", "in", "out", "--grid-precision", "double",
                            *RestartForm(3, "binary", True, multiblock=False).options())
        self.assertEqual(size, len(header) + 12 * self.ARRAY)

    def test_one_block_of_a_grid(self):
        header = struct.pack("=i", 4) + 4 * self.EXTENTS
        self.write_zeros("in", header, 12)
        size = self.convert("convert", "in", "out", "--grid-format", "binary",
                            "--grid-precision", "double")
        self.assertEqual(size, len(header) + 12 * self.ARRAY)


class Interrupted(ToolTest):
    POINTS = 400_000

    def test_signals(self):
        values = [0.5] * self.POINTS
        extents = (self.POINTS, 1, 1)
        self.write_grid("grid", blocks=[Block(extents, values, values, values)])
        self.write("in", restart_bytes(RestartForm(), sample_solution([extents])))
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                self.write("out", b"before")
                process = self.start("restart", "grid", "in", "out", "--to-format", "formatted")
                deadline = time.monotonic() + 30
                while not any(".tmp" in name for name in os.listdir(self.folder)):
                    self.assertLess(time.monotonic(), deadline, "no temporary file appears")
                    self.assertIsNone(process.poll())
                process.send_signal(number)
                process.communicate(timeout=60)
                self.assertEqual(process.returncode, -number)
                self.assertEqual(self.path("out").read_bytes(), b"before")
                self.assert_no_leftovers()


if __name__ == "__main__":
    main()
