"""The progress line on standard error."""

import gzip
import os
import pty
import re
import select
import signal
import subprocess
import time

from support import ToolTest, main

POINTS = 2_500_000
LAYER = 10_000
LONG = 2.5  # seconds, more than the command waits before it shows anything
LINE = re.compile(r"reading grid: [0-9.]+ [kM]?B of [0-9.]+ MB \(\d{1,2}%\)")


class ProgressTest(ToolTest):
    def setUp(self):
        super().setUp()
        with open(self.path("grid"), "w") as grid:
            grid.write(f"1\n{POINTS} 1 1\n")
            layer = "".join(f"{n / 7:.7f}\n" for n in range(LAYER))
            for _ in range(3 * POINTS // LAYER):
                grid.write(layer)

    def wait_until_read(self, process, count):
        """Waits until the command has read `count` bytes, a small part of its file."""
        deadline = time.monotonic() + 60
        text = "0"
        while int(text) < count:
            self.assertIsNone(process.poll(), "the command ends too early")
            self.assertLess(time.monotonic(), deadline, "the command does not read")
            with open(f"/proc/{process.pid}/io") as counts:
                text = counts.readline().split()[1]

    def hold_up(self, process, enough, seconds):
        """Slows the command down, for `seconds` or until `enough` holds."""
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline and not enough():
            process.send_signal(signal.SIGSTOP)
            time.sleep(0.25)
            process.send_signal(signal.SIGCONT)
            time.sleep(0.002)
        self.assertIsNone(process.poll(), "the command ends before it is long work")

    def run_slowly(self, stderr, *more, name="grid", enough=lambda: False, seconds=LONG):
        """The command, slowed down until it shows progress."""
        process = self.start("info", name, "--grid-format", "formatted", "--grid-multiblock",
                             "yes", *more, stderr=stderr, stdout=subprocess.DEVNULL)
        self.wait_until_read(process, 1_000_000)
        self.hold_up(process, enough, seconds)
        return process

    def on_terminal(self, *more, name="grid", until=None):
        """What the slowed command prints on a terminal, with normal speed once `until` was
        printed."""
        terminal, stderr = pty.openpty()
        seen = b""

        def look():
            nonlocal seen
            while select.select([terminal], [], [], 0)[0]:
                seen += os.read(terminal, 65536)
            return until is not None and until in seen

        process = self.run_slowly(stderr, *more, name=name, enough=look,
                                  seconds=10 * LONG if until else LONG)
        os.close(stderr)
        while True:
            ready = select.select([terminal], [], [], 60)[0]
            self.assertTrue(ready, "the command does not end")
            try:
                seen += os.read(terminal, 65536)
            except OSError:  # the other end is closed
                break
        os.close(terminal)
        self.assertEqual(process.wait(timeout=60), 0)
        return seen.decode()

    def test_terminal_sees_it_and_finds_it_gone(self):
        seen = self.on_terminal(until=b" left")
        self.assertRegex(seen, LINE)
        self.assertRegex(seen, r"\d [kM]B/s, [0-9:]+ (s|min) left")
        self.assertNotIn("\n", seen)
        self.assertTrue(seen.endswith("\r\x1b[K"), seen[-80:])

    def test_unpacking(self):
        packed = gzip.compress(self.path("grid").read_bytes(), 1)
        self.assertGreater(len(packed), 10_000_000)
        self.write("grid", packed)
        seen = self.on_terminal(until=b"reading grid: ")
        self.assertRegex(seen, rf"reading grid: [\d.]+ [kM]B of {len(packed) / 1e6:.0f} MB \(")

    def test_control_characters_of_a_name_are_escaped(self):
        self.path("grid").rename(self.path("grid\n\x1b[2J"))
        seen = self.on_terminal(name="grid\n\x1b[2J", until=b" MB (")
        self.assertIn(r"reading grid\n\x1b[2J: ", seen)
        self.assertNotIn("\x1b[2J", seen)

    def test_nothing_where_it_is_not_wanted(self):
        self.assertEqual(self.on_terminal("--no-progress"), "")
        self.assertEqual(self.on_terminal("--quiet"), "")

    def test_nothing_without_a_terminal(self):
        process = self.run_slowly(subprocess.PIPE)
        self.assertEqual(process.communicate(timeout=60)[1], "")
        self.assertEqual(process.returncode, 0)

    def test_nothing_for_short_work(self):
        self.write_grid("grid")
        terminal, stderr = pty.openpty()
        self.succeed("info", "grid", stderr=stderr)
        os.close(stderr)
        with self.assertRaises(OSError):
            os.read(terminal, 1)
        os.close(terminal)


if __name__ == "__main__":
    main()
