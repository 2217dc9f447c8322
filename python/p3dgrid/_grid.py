"""Grids in memory."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any, Optional, Union

from . import _p3dgrid
from ._arrays import Array, as_blanking, as_reals, precision_of, require_shape
from ._blocks import Blocks
from ._forms import Extents, GridForm
from ._parts import BlockNumbers, Indices, Part, part_of, parts_of, points_of
from ._paths import Path, readable, writable


class Block:
    """One block of a grid: arrays of shape (ni, nj, nk).

    x, y, z  coordinates
    iblank   blanking values; None for a grid without
    """

    def __init__(self, x: Any, y: Any, z: Any, iblank: Any = None) -> None:
        self.x: Array = as_reals("x", x)
        self.y: Array = as_reals("y", y)
        self.z: Array = as_reals("z", z)
        self.iblank: Optional[Array] = None if iblank is None else as_blanking("iblank", iblank)
        for name in ("y", "z", "iblank"):
            array = getattr(self, name)
            if array is not None:
                require_shape(name, array, self.x.shape)

    @property
    def extents(self) -> Extents:
        """Points in the three directions."""
        i, j, k = self.x.shape
        return i, j, k

    def extract(self, i: Indices = None, j: Indices = None, k: Indices = None,
                uneven: bool = False) -> Block:
        """A copy of a range of points.

        i, j, k  text as on the command line, counted from 1: "5", "last", "1:33", "1:last:2"; or a
                 number or a slice, counted from 0; None for all points
        uneven   leave out the last point of a range if its steps miss it, which is refused
                 otherwise
        """
        return self._part(part_of(self.extents, (i, j, k), uneven))

    def _part(self, part: Part) -> Block:
        arrays = (self.x, self.y, self.z, self.iblank)
        return Block(*(None if array is None else points_of(array, part) for array in arrays))

    def __repr__(self) -> str:
        blanking = "" if self.iblank is None else ", with blanking"
        return f"<Block of {'x'.join(map(str, self.extents))} points{blanking}>"


class Grid(Blocks[Block]):
    """A grid: a sequence of blocks.

    blocks  in file order
    form    of the file that it was read from
    reason  what shows that this is its form
    """

    def __init__(self, blocks: Iterable[Any], form: GridForm = GridForm(),
                 reason: str = "") -> None:
        blocks = [block._views() if hasattr(block, "_views") else block for block in blocks]
        self.blocks = [block if isinstance(block, Block) else Block(*block) for block in blocks]
        self.form = form
        self.reason = reason

    def extract(self, blocks: BlockNumbers = None, i: Indices = None, j: Indices = None,
                k: Indices = None, uneven: bool = False) -> Grid:
        """A copy of some blocks, or of a range of points of each.

        blocks   text as on the command line, counted from 1, such as "1,3-5"; or numbers or a
                 slice, counted from 0; None for all blocks
        i, j, k, uneven  as of `Block.extract`
        """
        parts = parts_of(self.extents, blocks, (i, j, k), uneven)
        return Grid([self[number]._part(part) for number, part in parts], self.form)

    def __repr__(self) -> str:
        return f"<Grid of {len(self)} blocks, {self.form}>"

    def to_vtk(self) -> Any:
        """A vtkMultiBlockDataSet of structured grids. Needs VTK."""
        from ._vtk import grid_to_vtk
        return grid_to_vtk(self)

    def plot(self, axes: Any = None, **options: Any) -> Any:
        """Draws the outer faces of the blocks. Needs matplotlib.

        axes     to draw in; three-dimensional ones of a new figure if there are none
        options  for each `plot_wireframe`
        """
        from ._pictures import plot_grid
        return plot_grid(self, axes, **options)


def read_grid(path: Path, **form: Any) -> Grid:
    """Reads a grid file.

    form  known members of its form, as in `GridForm`; the others are detected
    """
    with readable(path) as name:
        read = _p3dgrid.read_grid(name, form)
    return Grid([Block(*arrays) for arrays in read["blocks"]], GridForm(**read["form"]),
                read["reason"])


def write_grid(path: Path, grid: Union[Grid, Block, Iterable[Any]], **form: Any) -> None:
    """Writes a grid file, which appears complete or not at all.

    grid  a Grid, an open file, a Block, or for each block a Block or arrays x, y, z and perhaps
          blanking values; of any strides, order and type of real numbers. One block is copied at a
          time.
    form  members of the form of the file, as in `GridForm`; by default that of the grid, in the
          precision of its coordinates
    """
    if hasattr(grid, "_views"):
        grid = grid._views()
    if isinstance(grid, Block):
        grid = [grid]
    if not isinstance(grid, Grid):
        grid = Grid(grid)
    coordinates = [array for block in grid for array in (block.x, block.y, block.z)]
    blocks = [(block.x, block.y, block.z, block.iblank) for block in grid]
    with writable(path) as name:
        _p3dgrid.write_grid(name, blocks, grid.extents, precision_of(coordinates),
                            grid.form.members(), form)
