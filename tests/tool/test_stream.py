"""p3dgrid restart --stream: the bytes of a whole conversion, and no remaining temporary files."""

import os
import resource
import signal
import time

from restart_support import RestartForm, encodings, restart_bytes, sample_solution
from support import ONE_BLOCK, TWO_BLOCKS, Block, ToolTest, main

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]


def targets(layouts=(1, 2, 3, 100, 101, 102)):
    for layout in layouts:
        for encoding, double in encodings():
            yield RestartForm(layout, encoding, double)


class StreamTest(ToolTest):
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

    def refuse(self, status, *arguments, says=(), **options):
        self.write("out", b"before")
        self.fail_with(status, "restart", "--stream", *arguments, says=says, **options)
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()


class SameBytes(StreamTest):
    def test_sample_case_in_every_form(self):
        self.succeed("sample", "--quiet", "demo")
        for target in targets((1, 2, 3, 100)):
            self.compare("demo/grid.p3d", "demo/flow.q", RestartForm(), target)
        for target in targets((1, 2, 3, 102)):
            self.compare("demo/upper.p3d", "demo/upper-101.rst", RestartForm(101), target)
        self.compare("demo/grid.p3d", "demo/flow.f", RestartForm(3), RestartForm(1))
        self.compare("demo/grid.p3d", "demo/flow-100.txt", RestartForm(100, "formatted"),
                     RestartForm(2))

    def test_from_every_form(self):
        for source in targets((1, 2, 3, 102)):
            self.write("in", restart_bytes(source, sample_solution(ONE)))
            for target in targets():
                self.compare("one", "in", source, target)
        source = RestartForm(100, double=True)
        self.write("in", restart_bytes(source, sample_solution(TWO)))
        self.compare("two", "in", source, source)

    def test_sections_and_stated_values(self):
        for sections in ([(1, 5), (6, 7)], [(6, 7), (1, 5)], [(1, 3)]):
            count = max(last for _, last in sections)
            self.write("in", restart_bytes(RestartForm(),
                                           sample_solution(TWO, count, sections=sections)))
            text = ",".join(f"{first}-{last}" for first, last in sections)
            for target in targets((1, 2, 3)):
                self.compare("two", "in", RestartForm(), target, "--sections", text)
        self.write("in", restart_bytes(RestartForm(), sample_solution(TWO)))
        self.compare("two", "in", RestartForm(), RestartForm(), "--mach", "0.9")

    def test_extensions(self):
        for flags, extensions, count in (((1, 999), [(6, 10)], 10),
                                         ((41, 41, 999), [(6, 8), (11, 13)], 13),
                                         ((7, 41, 999), [None, (11, 13)], 13)):
            solution = sample_solution(ONE, count, sections=[(1, 5)], flags=flags,
                                       extensions=extensions)
            for encoding, double in encodings():
                source = RestartForm(101, encoding, double)
                self.write("in", restart_bytes(source, solution))
                for layout in (1, 3):
                    self.compare("one", "in", source, RestartForm(layout))

    def test_names_like_those_of_temporary_files(self):
        self.write("v1-000001.tm", restart_bytes(RestartForm(), sample_solution(TWO)))
        self.compare("two", "v1-000001.tm", RestartForm(), RestartForm(1))


class Refused(StreamTest):
    def test_what_would_come_out_differently(self):
        self.write("in", restart_bytes(RestartForm(101), sample_solution(ONE)))
        self.refuse(2, "one", "in", "out", "--layout", "101", says="triplets of layout 101")
        self.write("in", restart_bytes(RestartForm(100), sample_solution(ONE)))
        self.refuse(2, "one", "in", "out", "--layout", "100", "--to-layout", "1",
                    says="single-precision")
        self.write("in", restart_bytes(RestartForm(3), sample_solution(ONE, 16)))
        self.refuse(2, "one", "in", "out", "--layout", "3", says="at most 15 variables")
        self.write("in", b"1\n2 2 2\n1 2 3 4\n39*1 1.0000000596046448\n")
        self.refuse(2, "one", "in", "out", "--restart-format", "formatted",
                    says="double precision")

    def test_damaged_and_foreign_files(self):
        for encoding, double in (("unformatted", False), ("binary", True)):
            form = RestartForm(2, encoding, double)
            content = restart_bytes(form, sample_solution(ONE))
            for length in range(0, len(content), 17):
                self.write("in", content[:length])
                self.refuse(1, "one", "in", "out", *form.options(), says="in: ")
        self.write("in", restart_bytes(RestartForm(), sample_solution(ONE)))
        self.refuse(1, "two", "in", "out", says="in: does not belong to two")

    def test_no_room(self):
        values = [0.5] * 4000
        self.write_grid("grid", blocks=[Block((4000, 1, 1), values, values, values)])
        self.write("in", restart_bytes(RestartForm(), sample_solution([(4000, 1, 1)])))
        for size in (10_000, 40_000):  # in a variable's file; when they are combined
            self.refuse(2, "grid", "in", "out", says=("out: not written", "File too large"),
                        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE,
                                                              (size, size)))


class Interrupted(StreamTest):
    POINTS = 400_000

    def test_signals(self):
        values = [0.5] * self.POINTS
        extents = (self.POINTS, 1, 1)
        self.write_grid("grid", blocks=[Block(extents, values, values, values)])
        self.write("in", restart_bytes(RestartForm(), sample_solution([extents])))
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                self.write("out", b"before")
                process = self.start("restart", "--stream", "grid", "in", "out", "--to-format",
                                     "formatted")
                deadline = time.monotonic() + 30
                while not any(name.endswith("-000002.tmp") for name in os.listdir(self.folder)):
                    self.assertLess(time.monotonic(), deadline, "no temporary file appears")
                    self.assertIsNone(process.poll())
                process.send_signal(number)
                process.communicate(timeout=60)
                self.assertEqual(process.returncode, -number)
                self.assertEqual(self.path("out").read_bytes(), b"before")
                self.assert_no_leftovers()


if __name__ == "__main__":
    main()
