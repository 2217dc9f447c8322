"""Pictures of grids and solutions with matplotlib."""

from __future__ import annotations

from typing import Any

from matplotlib import pyplot

from ._grid import Block, Grid
from ._solution import Key, Solution, extents_of


def _faces(block: Block) -> Any:
    """The coordinates of the outer faces."""
    coordinates = (block.x, block.y, block.z)
    for axis, points in enumerate(block.extents):
        for index in {0, points - 1}:
            yield tuple(values.take(index, axis=axis) for values in coordinates)


def plot_grid(grid: Grid, axes: Any, **options: Any) -> Any:
    if axes is None:
        axes = pyplot.figure().add_subplot(projection="3d")
    for number, block in enumerate(grid):
        for x, y, z in _faces(block):
            if min(x.shape) < 1 or x.size < 2:
                continue
            axes.plot_wireframe(x, y, z, **{"color": f"C{number % 10}", "linewidth": 0.5, **options})
    axes.set(xlabel="x", ylabel="y", zlabel="z")
    return axes


def plot_solution(solution: Solution, grid: Grid, variable: Key, k: int, axes: Any,
                  **options: Any) -> Any:
    if extents_of(grid) != solution.extents:
        raise ValueError("the solution does not belong to the grid: their extents differ")
    if axes is None:
        axes = pyplot.figure().add_subplot()
    planes = [block[variable][:, :, k] for block in solution]
    limits = {"vmin": min(plane.min() for plane in planes),
              "vmax": max(plane.max() for plane in planes)}
    drawn = None
    for block, plane in zip(grid, planes):
        drawn = axes.contourf(block.x[:, :, k], block.y[:, :, k], plane, **{**limits, **options})
    if drawn is not None:
        axes.figure.colorbar(drawn, ax=axes, label=str(variable))
    axes.set(xlabel="x", ylabel="y", aspect="equal")
    return axes
