"""What is left of a command that a signal ends: OUT as it was or whole, and nothing in the way of
the next run."""

import os
import pathlib
import signal
import sys
import time

sys.path.append(os.environ["P3DGRID_TOOL_TESTS"])
from support import Block, Form, ToolTest, grid_bytes, main  # noqa: E402

END_AT_CALL = os.environ.get("END_AT_CALL", "")
LEFTOVER = r"\A\.p3dgrid-[0-9]+-[0-9a-f]{8}\.tmp\Z"

COMMANDS = {
    "convert": ("convert", "grid.p3d", "out", "--to-format", "formatted"),
    "restart": ("restart", "grid.p3d", "flow.q", "out", "--to-format", "binary"),
    "restart --stream": ("restart", "--stream", "grid.p3d", "flow.q", "out",
                         "--to-format", "binary"),
    "tecplot": ("tecplot", "grid.p3d", "flow.q", "out"),
}


class Interrupted(ToolTest):
    def setUp(self):
        super().setUp()
        self.succeed("sample", ".")
        self.inputs = set(os.listdir(self.folder))
        self.runs = 0

    def leftovers(self):
        return set(os.listdir(self.folder)) - self.inputs - {"out"}

    def clean(self, before):
        """The folder as it was before any run."""
        for name in self.leftovers():
            self.path(name).unlink()
        self.path("out").unlink(missing_ok=True)
        if before is not None:
            self.write("out", before)

    def whole(self, command):
        self.clean(None)
        self.succeed("--quiet", *command)
        return self.path("out").read_bytes()

    def assert_old_or_whole(self, before, whole):
        out = self.path("out").read_bytes() if self.path("out").exists() else None
        self.assertIn(out, (before, whole), "OUT is neither what it was nor complete")

    def assert_next_run_works(self, command, whole):
        """Leftovers are nobody's business: the next run neither uses nor touches them."""
        leftovers = {name: self.path(name).read_bytes() for name in self.leftovers()}
        self.succeed("--quiet", *command)
        self.assertEqual(self.path("out").read_bytes(), whole)
        self.assertEqual({name: self.path(name).read_bytes() for name in self.leftovers()},
                         leftovers)

    def run_preloaded(self, command, **plan):
        """Runs a command whose system calls the preloaded library changes as planned."""
        if not END_AT_CALL:
            self.skipTest("needs the library that ends a process at a system call")
        environment = {**os.environ, "LD_PRELOAD": END_AT_CALL, **plan}
        # The sanitizers want to be the first that is loaded.
        environment["ASAN_OPTIONS"] = "verify_asan_link_order=0:detect_leaks=0"
        return self.run_tool("--quiet", *command, env=environment)

    def end_at(self, number, with_signal, command):
        """Runs a command that ends at that system call; its status, 0 if it has no such call."""
        self.runs += 1
        return self.run_preloaded(command, END_AT=str(number),
                                  END_WITH=str(int(with_signal))).returncode

    def end_at_every_call(self, with_signal, check, names=tuple(COMMANDS)):
        for name in names:
            command = COMMANDS[name]
            whole = self.whole(command)
            for before in (None, b"before") if name == "convert" else (b"before",):
                number = 0
                status = -with_signal
                while status == -with_signal:
                    number += 1
                    self.clean(before)
                    status = self.end_at(number, with_signal, command)
                    with self.subTest(command=name, before=before, call=number):
                        self.assertIn(status, (0, -with_signal))
                        self.assert_old_or_whole(before, whole)
                        check(command, whole)
                self.assertGreater(number, 4, "the command is not ended at all")
        print(f"{signal.Signals(with_signal).name}: {self.runs} runs")

    def test_killed_at_every_change_of_a_file(self):
        def check(command, whole):
            for name in self.leftovers():
                self.assertRegex(name, LEFTOVER)
            if self.leftovers():
                self.assert_next_run_works(command, whole)
        self.end_at_every_call(signal.SIGKILL, check)

    def test_ended_at_every_change_of_a_file(self):
        def check(*_):
            self.assertEqual(self.leftovers(), set())
        self.end_at_every_call(signal.SIGTERM, check)
        self.end_at_every_call(signal.SIGINT, check, ["restart --stream"])
        self.end_at_every_call(signal.SIGHUP, check, ["convert"])

    def test_forcing_to_the_disk_is_tried_again_when_it_is_interrupted(self):
        for name, command in COMMANDS.items():
            whole = self.whole(command)
            self.clean(b"before")
            result = self.run_preloaded(command, INTERRUPTED_FSYNCS="3")
            with self.subTest(command=name):
                self.assertEqual((result.returncode, result.stderr_text), (0, ""))
                self.assertEqual(self.path("out").read_bytes(), whole)

    def test_killed_at_any_time(self):
        points = 100_000
        values = [n / 7 for n in range(points)]
        self.write("large", grid_bytes(Form(), [Block((points, 1, 1), values, values, values)]))
        self.inputs.add("large")
        command = ("convert", "large", "out", "--to-format", "formatted")
        began = time.monotonic()
        whole = self.whole(command)
        duration = time.monotonic() - began
        times = 20
        for number in range(times):
            self.clean(b"before")
            process = self.start("--quiet", *command)
            time.sleep(duration * number / times)
            process.kill()
            process.communicate()
            self.assert_old_or_whole(b"before", whole)
            for name in self.leftovers():
                self.assertRegex(name, LEFTOVER)
        self.assert_next_run_works(command, whole)

    def test_samples_are_whole_or_missing(self):
        self.succeed("sample", "whole")
        whole = {path.name: path.read_bytes() for path in self.path("whole").iterdir()}
        for number in range(1, 40, 3):
            folder = f"cut-{number}"
            self.end_at(number, signal.SIGKILL, ("sample", folder))
            for path in pathlib.Path(self.folder, folder).glob("[!.]*"):
                self.assertEqual(path.read_bytes(), whole[path.name])
            self.succeed("sample", folder, "--replace")
            for name, content in whole.items():
                self.assertEqual(self.path(folder).joinpath(name).read_bytes(), content)


if __name__ == "__main__":
    main()
