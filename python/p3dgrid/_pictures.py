"""Pictures of grids and solutions with matplotlib."""

from __future__ import annotations

from typing import Any

import numpy
from matplotlib import pyplot
from matplotlib.colors import LogNorm
from matplotlib.ticker import LogLocator, MaxNLocator

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


def _levels(planes: list[Any], options: dict[str, Any]) -> Any:
    """The levels that `contourf` would choose if all planes were one."""
    levels = options.get("levels")
    if levels is not None and not isinstance(levels, int):
        return levels
    logarithmic = isinstance(options.get("norm"), LogNorm)
    values = numpy.concatenate([plane[numpy.isfinite(plane)] for plane in planes])
    if logarithmic:
        values = values[values > 0]
    if values.size == 0:
        return levels
    locator = options.get("locator")
    if locator is None:
        locator = LogLocator() if logarithmic else MaxNLocator((levels or 7) + 1, min_n_ticks=1)
    return locator.tick_values(values.min(), values.max())


def plot_solution(solution: Solution, grid: Grid, variable: Key, k: int, axes: Any,
                  **options: Any) -> Any:
    if extents_of(grid) != solution.extents:
        raise ValueError("the solution does not belong to the grid: their extents differ")
    if axes is None:
        axes = pyplot.figure().add_subplot()
    planes = [block[variable][:, :, k] for block in solution]
    options["levels"] = _levels(planes, options) if planes else None
    drawn = None
    for block, plane in zip(grid, planes):
        drawn = axes.contourf(block.x[:, :, k], block.y[:, :, k], plane, **options)
    if drawn is not None:
        axes.figure.colorbar(drawn, ax=axes, label=str(variable))
    axes.set(xlabel="x", ylabel="y", aspect="equal")
    return axes
