"""Reads and writes PLOT3D grids and flow solutions.

    grid = p3dgrid.read_grid("wing.xyz")
    print(grid[0].x.max(), grid.form)
    flow = p3dgrid.read_solution("wing.q", grid)
    print(flow[0]["rho"].min(), flow[0].parameters["mach"])

`open` maps files that are too large for memory. The forms of files are detected.
"""

from ._check import check, detect
from ._errors import Error
from ._files import (GridFile, GridFileBlock, SolutionFile, SolutionFileBlock, StoredArray, open,
                     open_grid, open_solution)
from ._forms import Detection, GridForm, Reading, RestartForm
from ._grid import Block, Grid, read_grid, write_grid
from ._p3dgrid import __version__
from ._solution import Solution, SolutionBlock, read_solution, write_solution

__all__ = [
    "Block", "Detection", "Error", "Grid", "GridFile", "GridFileBlock", "GridForm", "Reading",
    "RestartForm", "Solution", "SolutionBlock", "SolutionFile", "SolutionFileBlock", "StoredArray",
    "__version__", "check", "detect", "open", "open_grid", "open_solution", "read_grid",
    "read_solution", "write_grid", "write_solution"
]
