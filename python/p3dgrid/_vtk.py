"""Grids and solutions as data sets of VTK."""

from __future__ import annotations

from typing import Any

import numpy
from vtkmodules.util.numpy_support import numpy_to_vtk
from vtkmodules.vtkCommonCore import vtkPoints
from vtkmodules.vtkCommonDataModel import vtkDataSetAttributes, vtkMultiBlockDataSet, vtkStructuredGrid

from ._grid import Block, Grid
from ._solution import Solution, SolutionBlock, extents_of


def _array(name: str, values: Any) -> Any:
    """A copy of values at points, in VTK's order, i fastest."""
    array = numpy_to_vtk(numpy.ravel(values, order="F"), deep=True)
    array.SetName(name)
    return array


def _structured(block: Block) -> Any:
    data = vtkStructuredGrid()
    data.SetDimensions(*block.extents)
    columns = [numpy.ravel(values, order="F") for values in (block.x, block.y, block.z)]
    points = vtkPoints()
    points.SetData(numpy_to_vtk(numpy.column_stack(columns), deep=True))
    data.SetPoints(points)
    if block.iblank is not None:
        data.GetPointData().AddArray(_array("IBlank", block.iblank))
        hidden = numpy.where(block.iblank == 0, vtkDataSetAttributes.HIDDENPOINT, 0)
        ghosts = _array(vtkDataSetAttributes.GhostArrayName(), hidden.astype(numpy.uint8))
        data.GetPointData().AddArray(ghosts)
    return data


def _add_variables(data: Any, block: SolutionBlock) -> None:
    for number, values in block.variables.items():
        name = block.names[number - 1] if number <= len(block.names) else f"variable {number}"
        data.GetPointData().AddArray(_array(name, values))
    for name, value in block.parameters.items():
        data.GetFieldData().AddArray(_array(name, numpy.array([value])))


def grid_to_vtk(grid: Grid) -> Any:
    blocks = vtkMultiBlockDataSet()
    for number, block in enumerate(grid):
        blocks.SetBlock(number, _structured(block))
    return blocks


def solution_to_vtk(solution: Solution, grid: Grid) -> Any:
    if extents_of(grid) != solution.extents:
        raise ValueError("the solution does not belong to the grid: their extents differ")
    blocks = grid_to_vtk(grid)
    for number, block in enumerate(solution):
        _add_variables(blocks.GetBlock(number), block)
    return blocks
