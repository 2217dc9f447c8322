#!/usr/bin/python3
"""Draws a Tecplot file that `p3dgrid tecplot` has written of a PLOT3D solution: the speed of the flow
in the first k plane.

    plot_tecplot.py FILE.dat OUT.png

Needs VTK for the Python that is named above (Debian: python3-vtk9). On a machine without a screen
run it under xvfb-run.
"""

import sys

import numpy
import vtk
from vtkmodules.util.numpy_support import numpy_to_vtk, vtk_to_numpy


def zones(path):
    """The zones of the file, with the speed as a further array."""
    reader = vtk.vtkTecplotReader()
    reader.SetFileName(path)
    reader.Update()
    output = reader.GetOutput()
    if output.GetNumberOfBlocks() == 0:
        sys.exit(f"{path}: no zone")
    for b in range(output.GetNumberOfBlocks()):
        zone = output.GetBlock(b)
        data = zone.GetPointData()
        u, v, w = (vtk_to_numpy(data.GetArray(name)) for name in "UVW")
        speed = numpy.sqrt(u ** 2 + v ** 2 + w ** 2)
        array = numpy_to_vtk(speed, deep=True)
        array.SetName("speed")
        data.SetScalars(data.GetArray(data.AddArray(array)))
        yield zone


def first_plane(zone):
    plane = vtk.vtkExtractGrid()
    plane.SetInputData(zone)
    extent = list(zone.GetExtent())
    extent[5] = extent[4]
    plane.SetVOI(extent)
    surface = vtk.vtkDataSetSurfaceFilter()
    surface.SetInputConnection(plane.GetOutputPort())
    surface.Update()
    return surface.GetOutput()


def colours(low, high):
    table = vtk.vtkColorTransferFunction()
    table.SetColorSpaceToDiverging()
    table.AddRGBPoint(low, 0.23, 0.30, 0.75)
    table.AddRGBPoint(high, 0.70, 0.02, 0.15)
    return table


def actor_of(data, table=None, colour=None):
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputData(data)
    if table:
        mapper.SetLookupTable(table)
        mapper.SetUseLookupTableScalarRange(True)
    else:
        mapper.ScalarVisibilityOff()
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.GetProperty().LightingOff()
    if colour:
        actor.GetProperty().SetColor(*colour)
    return actor


def contour_lines(surface, low, high):
    contours = vtk.vtkContourFilter()
    contours.SetInputData(surface)
    contours.GenerateValues(21, low, high)
    contours.Update()
    return contours.GetOutput()


def block_outline(surface):
    edges = vtk.vtkFeatureEdges()
    edges.SetInputData(surface)
    edges.FeatureEdgesOff()
    edges.NonManifoldEdgesOff()
    edges.ManifoldEdgesOff()
    edges.Update()
    return edges.GetOutput()


def colour_bar(table):
    bar = vtk.vtkScalarBarActor()
    bar.SetLookupTable(table)
    bar.SetTitle("speed\n")
    bar.SetNumberOfLabels(6)
    bar.SetLabelFormat("%.2f")
    bar.SetPosition(0.05, 0.12)
    bar.SetWidth(0.8)
    bar.SetHeight(0.76)
    bar.UnconstrainedFontSizeOn()
    for text in (bar.GetTitleTextProperty(), bar.GetLabelTextProperty()):
        text.SetColor(0, 0, 0)
        text.SetFontSize(20)
        text.ItalicOff()
        text.ShadowOff()
        text.BoldOff()
    return bar


def draw(path, picture):
    surfaces = [first_plane(zone) for zone in zones(path)]
    low = min(s.GetScalarRange()[0] for s in surfaces)
    high = max(s.GetScalarRange()[1] for s in surfaces)
    table = colours(low, high)
    renderer, margin = vtk.vtkRenderer(), vtk.vtkRenderer()
    for part, left, right in ((renderer, 0, 0.89), (margin, 0.89, 1)):
        part.SetBackground(1, 1, 1)
        part.SetViewport(left, 0, right, 1)
    for surface in surfaces:
        renderer.AddActor(actor_of(surface, table=table))
        renderer.AddActor(actor_of(contour_lines(surface, low, high), colour=(0.15, 0.15, 0.15)))
        renderer.AddActor(actor_of(block_outline(surface), colour=(0, 0, 0)))
    margin.AddActor2D(colour_bar(table))
    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.SetMultiSamples(8)
    window.SetSize(1400, 800)
    window.AddRenderer(renderer)
    window.AddRenderer(margin)
    camera = renderer.GetActiveCamera()
    camera.ParallelProjectionOn()
    renderer.ResetCamera()
    camera.Zoom(1.5)
    window.Render()
    capture = vtk.vtkWindowToImageFilter()
    capture.SetInput(window)
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(picture)
    writer.SetInputConnection(capture.GetOutputPort())
    writer.Write()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    draw(sys.argv[1], sys.argv[2])
