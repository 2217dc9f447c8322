"""Input files: generated once for each number of points, and kept."""

import os
import pathlib

from programs import SYSTEM_PYTHON, run_program


class Data:
    """The folder of the files with this number of points."""

    def __init__(self, folder, points, programs):
        self.folder = folder / str(points)
        self.points = points
        self.programs = programs
        self.folder.mkdir(parents=True, exist_ok=True)

    def output(self, side):
        return self.folder / f"output.{side}"

    def path(self, name):
        """The file of that name, generated if missing and read into the page cache."""
        path = self.folder / name
        if not path.exists():
            unfinished = path.with_name(name + ".unfinished")
            run_program(self.command(name, unfinished))
            flush(unfinished)
            unfinished.rename(path)
        with path.open("rb") as file:
            while file.read(1 << 20):
                pass
        return path

    def command(self, name, path):
        """The command that generates a file."""
        if name == "source":
            return [self.programs.ours, "source", path, self.points]
        if name == "smooth":
            return [SYSTEM_PYTHON, "-B", pathlib.Path(__file__).with_name("smooth_grid.py"), path,
                    self.points]
        kind, form, *precision = name.split(".")
        source = self.path("source")
        if form == "fixed":
            return [self.programs.peer, 0, f"fixed-{kind}", "formatted", "single", source, path,
                    "new"]
        if form == "free":
            return [self.programs.ours, 0, f"{kind}-write", "formatted", "single", source, path,
                    "new"]
        return [self.programs.peer, 0, f"{kind}-write", form, precision[0], source, path, "new"]


def flush(path):
    """Flushes a file to the disk."""
    descriptor = os.open(path, os.O_RDONLY)
    try:
        os.fsync(descriptor)
    finally:
        os.close(descriptor)
