"""How a run of a host in Fortran ends: by its own procedures, by a halt and by a fatal error.

    test_ends.py ENDS
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

ENDS = sys.argv[1]


class Ends(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)

    def run_with(self, argument):
        done = subprocess.run([ENDS, argument], cwd=self.folder, capture_output=True, text=True,
                              check=False)
        self.assertNotIn("after", done.stdout)
        return done.returncode, done.stdout.splitlines(), done.stderr

    def test_stop_in_dispfilereaderror(self):
        status, lines, error = self.run_with("stop-on-failure")
        self.assertEqual(status, 5)
        # Messages of the library are in order with those of the host.
        self.assertEqual(lines[:2], ["before", " Number of grids is 2"])
        self.assertIn("STOP 5", error)

    def test_stop_in_checkallocationerror_flushes_units(self):
        status, lines, _ = self.run_with("stop-on-allocation")
        self.assertEqual((status, lines), (7, ["before", " Number of grids is 2"]))
        self.assertEqual((self.folder / "written").stat().st_size, 4 * 3 + 4 * 8)

    def test_halt(self):
        status, lines, error = self.run_with("halt")
        self.assertEqual((status, error), (0, ""))
        self.assertEqual((lines[0], lines[-1]), ("before", "   --- CODE HALTED ---"))

    def test_halt_with_a_handler_that_stops(self):
        status, lines, _ = self.run_with("handled-halt")
        self.assertEqual((status, lines[-1].rstrip()), (9, "handler: 0"))

    def test_fatal_error_with_a_handler_that_returns(self):
        status, lines, error = self.run_with("fatal")
        reason = "cannot open missing: No such file or directory"
        self.assertEqual((status, lines), (2, ["before", f"handler: 2 {reason}"]))
        self.assertEqual(error, f"mod_p3dgrid: {reason}\n")

    def test_fatal_error_in_closing_a_unit(self):
        status, lines, error = self.run_with("full-disk")
        self.assertEqual((status, lines), (2, ["before", "handler: step 99"]))
        self.assertEqual(error, "mod_p3dgrid: cannot write /dev/full: No space left on device\n")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
