"""The table of measured pairs.

Conditions of a fair comparison:

- Both sides read the same file or write the same values, and the values read are compared. The
  clock runs from before the file is opened until it is closed. It includes the header, the
  allocation of the results and, in double precision, of a staging array. The Fortran side reads
  the whole staging array before it rounds, the library rounds piece by piece.
- Input files are in the page cache. Output files are flushed to the disk between two runs, outside
  the measured time, so that no run waits for pages of the previous one.
- Fresh memory: a process measures once. The system allocates and clears its arrays page by page,
  at the same cost for both sides. This is the case of a program that reads one file.
- Huge pages: fresh memory for which the library requests huge pages. The Fortran side cannot and
  uses ordinary ones.
- Warm memory: before the clock starts, the process has allocated and freed more memory than the
  operation needs. On both sides the C library never returns memory to the system, so the operation
  reuses resident pages. This is the case of a solver that reads file after file.
- Existing: the output file of the previous run is overwritten. New: it was deleted before.
- The Fortran side uses array sections: `read (u) (xyz(l, s:e), l=1, 3)`. It discards values into a
  scalar, which is the simple way, or into a scrap array, which is the fast way.
- Text is measured with fewer points: its cost per value is constant, and plain Fortran is slow.
- A host in Fortran is compared with plain Fortran, and with the same operation called from C++:
  the module must not cost more than 5 %.
- The command is compared with the library's read, or read and write, of the same files, with all
  points. Its time is that of the process. `convert` flushes its output to the disk, and so does the
  library's side of that pair.
- Work on a grid is compared with `convert` of the same file to the same form. Both write new files
  and flush them to the disk, except for `quality` and `info`, which write nothing. `merge` reads
  and writes the file twice.
- The Python package is compared with the front, with a script that uses numpy alone, and with VTK.
  All of them are given the form of the file. The start of the interpreter is not measured.
- The front is compared with the module's operation, both in the library. The front reads doubles
  into doubles, and the module as many singles into singles: from a ratio of 0.5 on the front takes
  no longer per byte.
"""

import dataclasses

SINGLE, DOUBLE = 4, 8


@dataclasses.dataclass(frozen=True)
class Case:
    """A pair: one operation of the library or the command and what it is compared with."""

    name: str
    operation: str
    form: str = "unformatted"
    precision: str = "single"
    input: str = "source"
    peer: str = "fortran"  # or "vtk", "numpy"; "library", "command" if the case measures the command
    peer_operation: str = ""
    peer_precision: str = ""  # unless that of the case
    peer_input: str = ""
    memory: str = "fresh"
    output: str = ""  # existing or new, for writes
    values: int = 3  # read or written per point, for the time per value
    array_bytes: int = 0  # per point: results, arrays to write, staging that is filled
    unfilled_bytes: int = 0  # per point: staging that is allocated, but filled by the peer alone
    text: bool = False


def binary_reads():
    for values, kind in ((3, "grid"), (5, "restart")):
        for form in ("unformatted", "binary"):
            for precision in ("single", "double"):
                if (kind, form, precision) == ("restart", "binary", "double"):
                    continue
                unfilled = values * DOUBLE if precision == "double" else 0
                for memory in ("fresh", "huge", "warm"):
                    yield Case(f"{kind}-read/{form}/{precision}/{memory}", f"{kind}-read", form,
                               precision, f"{kind}.{form}.{precision}", memory=memory,
                               values=values, array_bytes=values * SINGLE,
                               unfilled_bytes=unfilled)


def variable_reads():
    for way in ("scalar", "sections"):
        for memory in ("fresh", "huge", "warm"):
            # The result, and a staging array.
            yield Case(f"variable-read/unformatted/single/{memory}/against-{way}",
                       "variable-read", input="restart.unformatted.single",
                       peer_operation=f"variable-read-{way}", memory=memory, values=5,
                       array_bytes=SINGLE + SINGLE)


def binary_writes():
    for values, kind in ((3, "grid"), (5, "restart")):
        for precision in ("single", "double"):
            unfilled = values * DOUBLE if precision == "double" else 0
            for output in ("existing", "new"):
                for memory in ("fresh", "warm"):
                    yield Case(f"{kind}-write/unformatted/{precision}/{output}/{memory}",
                               f"{kind}-write", "unformatted", precision, memory=memory,
                               output=output, values=values,
                               array_bytes=SINGLE * (3 if kind == "grid" else 8),
                               unfilled_bytes=unfilled)


def text():
    for values, kind in ((3, "grid"), (5, "restart")):
        for width in ("fixed", "free"):
            yield Case(f"{kind}-read/text-{width}", f"{kind}-read", "formatted",
                       input=f"{kind}.{width}", values=values, array_bytes=values * SINGLE,
                       text=True)
    for width in ("fixed", "free"):
        yield Case(f"variable-read/text-{width}", "variable-read", "formatted",
                   input=f"restart.{width}", peer_operation="variable-read-scalar", values=5,
                   array_bytes=SINGLE + DOUBLE, text=True)
    yield Case("grid-write/text", "grid-write", "formatted", output="existing", values=3,
               array_bytes=3 * SINGLE, text=True)
    yield Case("restart-write/text", "restart-write", "formatted", output="existing", values=5,
               array_bytes=8 * SINGLE, text=True)
    yield Case("tecplot-write/text", "tecplot-write", "formatted", output="existing", values=8,
               array_bytes=8 * DOUBLE, text=True)


def visualisation():
    for precision in ("single", "double"):
        yield Case(f"grid-read/unformatted/{precision}/fresh/against-vtk", "grid-read",
                   "unformatted", precision, f"grid.unformatted.{precision}", peer="vtk",
                   array_bytes=3 * SINGLE)
    yield Case("grid-read/text-free/against-vtk", "grid-read", "formatted", input="grid.free",
               peer="vtk", array_bytes=3 * SINGLE, text=True)


def command():
    yield Case("command-convert/text-free", "convert", "formatted", input="grid.free",
               peer="library", peer_operation="grid-convert", output="new")
    yield Case("command-check/text-free", "check", "formatted", input="grid.free", peer="library",
               peer_operation="grid-read")


def work_on_grids():
    for form, name in (("unformatted", "smooth"), ("formatted", "grid.free")):
        for operation in ("extract", "merge", "split", "transform", "swap", "quality", "vtk", "info",
                          "plot", "cut"):
            yield Case(f"work-{operation}/{form}/against-convert", f"work-{operation}", form,
                       "double", name, peer="command", peer_operation="work-convert",
                       text=form == "formatted")


def front():
    for values, kind in ((3, "grid"), (5, "restart")):
        for form in ("unformatted", "binary"):
            for precision in ("single", "double"):
                for memory in ("fresh", "warm"):
                    yield Case(f"front-{kind}-read/{form}/{precision}/{memory}/against-module",
                               f"front-{kind}-read", form, precision,
                               f"{kind}.{form}.{precision}", peer="library",
                               peer_operation=f"{kind}-read", peer_precision="single",
                               peer_input=f"{kind}.{form}.single", memory=memory, values=values,
                               array_bytes=values * (DOUBLE if precision == "double" else SINGLE))
        yield Case(f"front-{kind}-read/text-free/against-module", f"front-{kind}-read", "formatted",
                   input=f"{kind}.free", peer="library", peer_operation=f"{kind}-read",
                   values=values, array_bytes=values * DOUBLE, text=True)


def python():
    for form in ("unformatted", "binary"):
        for precision in ("single", "double"):
            for peer in ("library", "numpy", "vtk"):
                name = "front" if peer == "library" else peer
                yield Case(f"python-grid-read/{form}/{precision}/against-{name}",
                           "python-grid-read", form, precision, f"grid.{form}.{precision}",
                           peer=peer, peer_operation="front-grid-read",
                           array_bytes=3 * (DOUBLE if precision == "double" else SINGLE))


def fortran_hosts():
    """A host in Fortran that uses the module, compared with plain Fortran and a host in C++."""
    for peer, name in (("fortran", "fortran"), ("library", "cpp")):
        for values, kind in ((3, "grid"), (5, "restart")):
            for precision in ("single", "double"):
                unfilled = values * DOUBLE if precision == "double" else 0
                for memory in ("fresh", "warm"):
                    yield Case(f"host-{kind}-read/unformatted/{precision}/{memory}/against-{name}",
                               f"host-{kind}-read", "unformatted", precision,
                               f"{kind}.unformatted.{precision}", peer=peer,
                               peer_operation=f"{kind}-read", memory=memory, values=values,
                               array_bytes=values * SINGLE, unfilled_bytes=unfilled)
                yield Case(f"host-{kind}-write/unformatted/{precision}/existing/against-{name}",
                           f"host-{kind}-write", "unformatted", precision, peer=peer,
                           peer_operation=f"{kind}-write", output="existing", values=values,
                           array_bytes=SINGLE * (3 if kind == "grid" else 8),
                           unfilled_bytes=unfilled)


CASES = [*binary_reads(), *variable_reads(), *binary_writes(), *text(), *visualisation(),
         *command(), *work_on_grids(), *front(), *python(), *fortran_hosts()]
