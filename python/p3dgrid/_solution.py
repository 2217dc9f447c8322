"""Solutions in memory."""

from __future__ import annotations

import os
from collections.abc import Container, Iterable, Iterator, Mapping, Sequence
from typing import Any, Optional, Union

from . import _p3dgrid
from ._arrays import Array, as_reals, precision_of, require_shape
from ._blocks import Blocks
from ._errors import refuse
from ._forms import Extents, RestartForm, as_extents
from ._parts import BlockNumbers, Indices, Part, part_of, parts_of, points_of
from ._paths import Path, readable, writable

NAMES = ("rho", "rhou", "rhov", "rhow", "e")  # of the variables of a PLOT3D solution
_PARAMETERS = ("mach", "alpha", "reynolds", "time")

Key = Union[int, str]


def names_in(layout: Union[int, str]) -> tuple[str, ...]:
    """The names that a layout defines for its first variables."""
    return NAMES if layout in (2, "overflow") else ()


def number_of(key: Key, names: Sequence[str]) -> int:
    """The number of a variable."""
    if isinstance(key, str):
        if key not in names:
            raise KeyError(f"{key}: the variables have {', '.join(names) or 'numbers only'}")
        return names.index(key) + 1
    return key


def holds(key: Key, names: Sequence[str], numbers: Container[int]) -> bool:
    """Whether a block with variables of these numbers has one for the key."""
    known = key in names or not isinstance(key, str)
    return known and number_of(key, names) in numbers


class SolutionBlock:
    """The flow in one block: variables by number, from 1, or by name, as in `block["rho"]`.

    variables   arrays of shape (ni, nj, nk) by number; no entry for one that the file lacks
    parameters  of the flow, by name: mach, alpha, reynolds, time and others
    triplets    layouts 100 and 101: three arrays; else none
    """

    def __init__(self, variables: Union[Mapping[int, Any], Iterable[Any]],
                 parameters: Union[Mapping[str, float], Sequence[float]] = (),
                 triplets: Iterable[Any] = (), names: Sequence[str] = NAMES) -> None:
        if not isinstance(variables, Mapping):
            variables = dict(enumerate(variables, 1))
        self.variables: dict[int, Array] = {
            number: as_reals(f"variable {number}", values)
            for number, values in variables.items() if values is not None}
        if not isinstance(parameters, Mapping):
            if len(parameters) > len(_PARAMETERS):
                raise refuse("", f"{len(parameters)} flow parameters without names; at most "
                             f"{len(_PARAMETERS)} are known: {', '.join(_PARAMETERS)}")
            parameters = dict(zip(_PARAMETERS, parameters))
        self.parameters: dict[str, float] = dict(parameters)
        self.triplets: list[Array] = [as_reals("triplets", values) for values in triplets]
        self.names = tuple(names)
        for number, array in self.variables.items():
            require_shape(f"variable {number}", array, self.extents)
        for array in self.triplets:
            require_shape("triplets", array, self.extents)

    @property
    def extents(self) -> Extents:
        """Points in the three directions."""
        for array in (*self.variables.values(), *self.triplets):
            i, j, k = array.shape
            return i, j, k
        return 0, 0, 0

    def extract(self, i: Indices = None, j: Indices = None, k: Indices = None,
                uneven: bool = False) -> SolutionBlock:
        """A copy of a range of points; see `Block.extract`."""
        return self._part(part_of(self.extents, (i, j, k), uneven))

    def _part(self, part: Part) -> SolutionBlock:
        variables = {number: points_of(array, part) for number, array in self.variables.items()}
        triplets = [points_of(array, part) for array in self.triplets]
        return SolutionBlock(variables, self.parameters, triplets, self.names)

    def __getitem__(self, key: Key) -> Array:
        return self.variables[number_of(key, self.names)]

    def __contains__(self, key: Key) -> bool:
        return holds(key, self.names, self.variables)

    def __iter__(self) -> Iterator[Array]:
        return iter(self.variables.values())

    def __len__(self) -> int:
        return len(self.variables)

    def __repr__(self) -> str:
        return f"<SolutionBlock of {'x'.join(map(str, self.extents))} points, {len(self)} variables>"


class Solution(Blocks[SolutionBlock]):
    """A solution: a sequence of blocks.

    blocks  in file order
    form    of the file that it was read from
    header  values of its header by name, such as step_count
    flags   layout 101: the flags after the block
    reason  what shows that this is its form
    """

    def __init__(self, blocks: Iterable[Any], form: RestartForm = RestartForm(),
                 header: Optional[Mapping[str, float]] = None, flags: Iterable[int] = (),
                 reason: str = "") -> None:
        blocks = [block._views() if hasattr(block, "_views") else block for block in blocks]
        self.blocks = [block if isinstance(block, SolutionBlock) else SolutionBlock(block)
                       for block in blocks]
        self.form = form
        self.header: dict[str, float] = dict(header or {})
        self.flags = list(flags)
        self.reason = reason

    def extract(self, blocks: BlockNumbers = None, i: Indices = None, j: Indices = None,
                k: Indices = None, uneven: bool = False) -> Solution:
        """A copy of some blocks, or of a range of points of each; see `Grid.extract`."""
        parts = parts_of(self.extents, blocks, (i, j, k), uneven)
        taken = [self[number]._part(part) for number, part in parts]
        return Solution(taken, self.form, self.header, self.flags)

    def __repr__(self) -> str:
        return f"<Solution of {len(self)} blocks, {self.form}>"

    def to_vtk(self, grid: Any) -> Any:
        """A vtkMultiBlockDataSet of structured grids with the variables as point data. Needs VTK.

        grid  the Grid of this solution
        """
        from ._vtk import solution_to_vtk
        return solution_to_vtk(self, grid)

    def plot(self, grid: Any, variable: Key = 1, k: int = 0, axes: Any = None,
             **options: Any) -> Any:
        """Draws contours of a variable on a k plane, counted from 0, of every block. Needs
        matplotlib.

        grid     the Grid of this solution
        axes     to draw in; those of a new figure if there are none
        options  for each `contourf`
        """
        from ._pictures import plot_solution
        return plot_solution(self, grid, variable, k, axes, **options)


def extents_of(grid: Any) -> Optional[list[Extents]]:
    """The extents of a grid: a Grid, an open file, a path or the extents themselves."""
    if grid is None:
        return None
    if isinstance(grid, (str, bytes, os.PathLike)):
        with readable(grid) as name:
            return as_extents(_p3dgrid.grid_summary(name, {})["extents"])
    return as_extents(getattr(grid, "extents", grid))


def parameters_of(read: Mapping[str, Any]) -> dict[str, float]:
    names = [*_PARAMETERS, *read["parameter_names"][len(_PARAMETERS):]]
    return dict(zip(names, read["parameters"]))


def block_of(read: Mapping[str, Any], layout: Union[int, str]) -> SolutionBlock:
    return SolutionBlock(read["variables"], parameters_of(read), read["triplets"],
                         names_in(layout))


def read_solution(path: Path, grid: Any = None, **form: Any) -> Solution:
    """Reads a solution, or another restart file.

    grid  its Grid, the path of one, or extents. Layouts without extents need it; the extents of
          other layouts must agree with it.
    form  known members of its form, as in `RestartForm`; the others are detected
    """
    with readable(path) as name:
        read = _p3dgrid.read_solution(name, form, extents_of(grid))
    known = RestartForm(**read["form"])
    blocks = [block_of(block, known.layout) for block in read["blocks"]]
    return Solution(blocks, known, read["header"], read["flags"], read["reason"])


def _parameters_to_write(parameters: Mapping[str, float]) -> list[float]:
    """The values in the order of the file; 0 for those that are not given. Further ones follow all
    of these in OVERFLOW solutions, and are not written."""
    further = [name for name in parameters if name not in _PARAMETERS]
    if further and not all(name in parameters for name in _PARAMETERS):
        raise refuse("", f"no flow parameter is called {further[0]!r}; there are "
                     + ", ".join(_PARAMETERS))
    return [parameters.get(name, 0.0) for name in _PARAMETERS]


def write_solution(path: Path, solution: Union[Solution, SolutionBlock, Iterable[Any]],
                   **form: Any) -> None:
    """Writes a solution, which appears complete or not at all.

    solution  a Solution, an open file, a SolutionBlock, or for each block a SolutionBlock or its
              arrays, the first for variable 1; of any strides, order and type of real numbers. One
              array is copied at a time.
    form      members of the form of the file, as in `RestartForm`; by default that of the solution,
              in the precision of its variables
    """
    if hasattr(solution, "_views"):
        solution = solution._views()
    if isinstance(solution, SolutionBlock):
        solution = [solution]
    if not isinstance(solution, Solution):
        solution = Solution(solution)
    blocks = []
    for block in solution:
        most = max(block.variables, default=0)
        if min(block.variables, default=1) < 1:
            raise refuse("", "numbers of variables begin with 1")
        blocks.append({"variables": [block.variables.get(n) for n in range(1, most + 1)],
                       "triplets": block.triplets,
                       "parameters": _parameters_to_write(block.parameters)})
    arrays = [array for block in solution for array in (*block, *block.triplets)]
    with writable(path) as name:
        _p3dgrid.write_solution(name, blocks, solution.extents, precision_of(arrays),
                                solution.header, solution.flags, solution.form.members(), form)
