"""Runs the programs of both sides and reads what they print."""

import dataclasses
import os
import pathlib
import subprocess
import sys

# Debian's VTK belongs to Debian's Python, which need not be the first one on the path.
VTK_PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable

# Large blocks come from the heap, and the heap never shrinks.
KEEP_MEMORY = "glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=9223372036854775807"


class Failure(Exception):
    """A program failed, or the two sides do not agree."""


@dataclasses.dataclass
class Outcome:
    seconds: float
    peak_kib: int
    check: int


def run_program(command, warm=False):
    """Runs a command that must succeed without a word of complaint; what it prints."""
    environment = dict(os.environ)
    if warm:
        environment["GLIBC_TUNABLES"] = KEEP_MEMORY
    done = subprocess.run([str(word) for word in command], env=environment, capture_output=True,
                          text=True, check=False)
    if done.returncode != 0 or done.stderr:
        raise Failure(f"{' '.join(str(word) for word in command)}: exit status "
                      f"{done.returncode} {done.stderr.strip()}")
    return done.stdout


def outcome_of(printed):
    """The last round's seconds, and what is printed once."""
    said = dict(line.split() for line in printed.splitlines())
    return Outcome(float(said["seconds"]), int(said["peak"]), int(said["check"]))


class Programs:
    """The programs of a build folder."""

    def __init__(self, build):
        self.ours = build / "ours"
        self.peer = build / "peer"
        self.vtk = pathlib.Path(__file__).with_name("vtk_peer.py")

    def measure(self, program, case, operation, input_path, output_path):
        """One process of one side."""
        rounds = 2 if case.memory == "warm" else 1
        return outcome_of(run_program(
            [program, rounds, operation, case.form, case.precision, input_path, output_path,
             case.output or "existing"], warm=case.memory == "warm"))

    def run_ours(self, case, input_path, output_path):
        return self.measure(self.ours, case, case.operation, input_path, output_path)

    def run_peer(self, case, input_path, output_path):
        if case.peer == "vtk":
            return outcome_of(run_program([VTK_PYTHON, "-B", self.vtk, case.form,
                                           case.precision, input_path]))
        return self.measure(self.peer, case, case.peer_operation or case.operation, input_path,
                            output_path)

    def baseline_kib(self):
        """Peak memory of a process that does nothing."""
        return outcome_of(run_program(
            [self.ours, 1, "nothing", "binary", "single", "-", "-", "existing"])).peak_kib
