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


class Bytes(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("one", blocks=ONE_BLOCK)
        self.write_grid("two", blocks=TWO_BLOCKS)

    def stream(self, grid, source, target, solution, *more, expected=None):
        """Converts the solution with --stream; the output holds `expected`, or else the same."""
        self.write("in", restart_bytes(source, solution))
        with self.subTest(source=source, target=target, more=more):
            self.succeed("restart", "--stream", "--quiet", grid, "in", "out", *source.options(),
                         *target.options(target=True), *more)
            self.assertEqual(self.path("out").read_bytes(),
                             restart_bytes(target, expected or solution))
            self.assert_no_leftovers()

    def test_every_encoding(self):
        for encoding, double in encodings():
            form = RestartForm(1, encoding, double)
            if form.records:
                self.stream("two", form, form, sample_solution(TWO))

    def test_what_temporary_files_of_single_variables_could_not_hold(self):
        self.stream("one", RestartForm(101), RestartForm(101), sample_solution(ONE))
        triplets = RestartForm(100, double=True)
        self.stream("two", triplets, triplets, sample_solution(TWO))
        self.stream("two", RestartForm(3), RestartForm(3, "binary"), sample_solution(TWO, 40))
        values = [float("nan"), float("inf"), float("-inf"), 1 / 3, 1e300, 1e-300, -0.0, 0.1]
        solution = Solution(ONE, [[values] * 5])
        form = RestartForm(double=True)
        self.stream("one", form, RestartForm(2, "binary", True), solution)
        self.succeed("restart", "--stream", "--quiet", "one", "in", "text", "--to-format", "text")
        self.succeed("restart", "--stream", "--quiet", "one", "text", "back", "--to-format",
                     "unformatted", "--to-precision", "double")
        self.assertEqual(self.path("back").read_bytes(), restart_bytes(form, solution))

    def test_sections_out_of_order(self):
        solution = sample_solution(TWO, 7, sections=[(6, 7), (1, 5)])
        stated = ("--sections", "6-7,1-5")
        self.stream("two", RestartForm(), RestartForm(2, "binary"), solution, *stated)
        one = sample_solution(TWO, 7, sections=[(1, 7)])
        self.stream("two", RestartForm(), RestartForm(3), solution, *stated, expected=one)


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
