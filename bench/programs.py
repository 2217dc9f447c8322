"""Runs the programs of both sides and reads what they print."""

import dataclasses
import os
import pathlib
import subprocess
import sys
import tempfile
import time

# Debian's VTK and numpy belong to Debian's Python, which need not be the first one on the path.
SYSTEM_PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable

# Large blocks are allocated on the heap, which never shrinks.
KEEP_MEMORY = "glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=9223372036854775807"


class Failure(Exception):
    """A program failed, or the two sides differ."""


@dataclasses.dataclass
class Outcome:
    seconds: float
    peak_kib: int | None
    check: int | None


def run_program(command, warm=False, folder=None):
    """Runs a command that must succeed and print no error. Returns its output."""
    environment = dict(os.environ)
    if warm:
        environment["GLIBC_TUNABLES"] = KEEP_MEMORY
    arguments = [str(argument) for argument in command]
    done = subprocess.run(arguments, env=environment, cwd=folder, capture_output=True,
                          text=True, check=False)
    if done.returncode != 0 or done.stderr:
        raise Failure(f"{' '.join(arguments)}: exit status {done.returncode} {done.stderr.strip()}")
    return done.stdout


def outcome_of(printed):
    """Parses the output of a measured program."""
    values = dict(line.split() for line in printed.splitlines())
    return Outcome(float(values["seconds"]), int(values["peak"]), int(values["check"]))


# Work on a grid: the arguments of the command, in a folder of its own for what it writes.
WORK = {
    "convert": ["convert", "GRID", "out"],
    "extract": ["extract", "GRID", "out", "--i", "1:last:2", "--uneven"],
    "merge": ["merge", "GRID", "GRID", "out"],
    "split": ["split", "GRID", "out", "--at", "i=2"],
    "transform": ["transform", "GRID", "out", "--scale", "2"],
    "swap": ["transform", "GRID", "out", "--swap", "ij"],
    "quality": ["quality", "GRID"],
    "vtk": ["vtk", "GRID", "out.vtm"],
    "info": ["info", "GRID"],
    "plot": ["plot", "GRID", "out.png", "--plane", "k=1"],
    "cut": ["plot", "GRID", "out.png", "--cut", "x=0.5"],
}


class Programs:
    """The programs of a build folder."""

    def __init__(self, build):
        self.ours = build / "p3dgrid_bench_ours"
        self.peer = build / "p3dgrid_bench_peer"
        self.host = build / "p3dgrid_bench_host"
        self.command = build.parent / "tools" / "p3dgrid"
        self.vtk = pathlib.Path(__file__).with_name("vtk_peer.py")
        self.python_reader = pathlib.Path(__file__).with_name("python_reader.py")
        self.package = build.parent / "python"

    def measure(self, program, case, operation, points, paths):
        """Runs one process of one side."""
        warm = case.memory == "warm"
        bytes_per_point = case.array_bytes + case.unfilled_bytes
        memory = bytes_per_point * points // 2**20 * 5 // 4 + 64 if warm else 0
        if case.memory == "huge" and program == self.ours:
            memory = "huge"
        return outcome_of(run_program(
            [program, memory, operation, case.form, case.precision, *paths,
             case.output or "existing"], warm=warm))

    def run_command(self, case, input_path, output):
        """Runs one process of the command. Its memory is not measured."""
        arguments = {"convert": [input_path, output, "--to-format", "unformatted"],
                     "check": [input_path]}[case.operation]
        output.unlink(missing_ok=True)
        start = time.perf_counter()
        run_program([self.command, case.operation, "--quiet", *arguments])
        return Outcome(time.perf_counter() - start, None, None)

    def run_work(self, operation, input_path):
        """Runs one process of the command in an empty folder. Its memory is not measured."""
        grid = input_path.resolve()
        arguments = [grid if word == "GRID" else word for word in WORK[operation]]
        with tempfile.TemporaryDirectory(dir=input_path.parent) as folder:
            start = time.perf_counter()
            run_program([self.command.resolve(), *arguments, "--quiet"], folder=folder)
            return Outcome(time.perf_counter() - start, None, None)

    def run_python(self, side, case, path):
        """Runs a process of Python with the package. Its memory is not measured."""
        os.environ["PYTHONPATH"] = str(self.package)
        outcome = outcome_of(run_program([SYSTEM_PYTHON, "-B", self.python_reader, side, case.form,
                                          case.precision, path]))
        return dataclasses.replace(outcome, peak_kib=None)

    def run_ours(self, case, points, *paths):
        if case.operation == "python-grid-read":
            return self.run_python("p3dgrid", case, paths[0])
        if case.operation.startswith("work-"):
            return self.run_work(case.operation.removeprefix("work-"), paths[0])
        if case.operation in ("convert", "check"):
            return self.run_command(case, *paths)
        if case.operation.startswith("host-"):
            return self.measure(self.host, case, case.operation.removeprefix("host-"), points, paths)
        return self.measure(self.ours, case, case.operation, points, paths)

    def run_peer(self, case, points, *paths):
        if case.peer == "vtk":
            return outcome_of(run_program([SYSTEM_PYTHON, "-B", self.vtk, case.form, case.precision,
                                           paths[0]]))
        if case.peer == "numpy":
            return self.run_python("numpy", case, paths[0])
        if case.peer == "command":
            return self.run_work(case.peer_operation.removeprefix("work-"), paths[0])
        program = self.ours if case.peer == "library" else self.peer
        case = dataclasses.replace(case, precision=case.peer_precision or case.precision)
        return self.measure(program, case, case.peer_operation or case.operation, points, paths)

    def baseline_kib(self):
        """Peak memory of a process that does nothing."""
        return outcome_of(run_program(
            [self.ours, 0, "nothing", "binary", "single", "-", "-", "existing"])).peak_kib
