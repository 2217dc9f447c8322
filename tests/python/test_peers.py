"""The real samples as VTK reads them, and VTK data sets and pictures of the package."""

import os
import pathlib

import numpy
import pytest

import p3dgrid
from support import Coding, flow_arrays, grid_arrays, grid_bytes, solution_bytes

SAMPLES = pathlib.Path(os.environ.get("P3DGRID_SAMPLES") or "none")


def vtk_blocks(grid, flow, form):
    """The data set that VTK's reader returns for a grid and its solution."""
    parallel = pytest.importorskip("vtkmodules.vtkIOParallel")
    reader = parallel.vtkMultiBlockPLOT3DReader()
    reader.SetXYZFileName(str(grid))
    if flow:
        reader.SetQFileName(str(flow))
    reader.SetAutoDetectFormat(False)
    reader.SetBinaryFile(form.format != "formatted")
    reader.SetHasByteCount(form.format == "unformatted")
    reader.SetMultiGrid(bool(form.multiblock))
    reader.SetIBlanking(form.iblank)
    reader.SetTwoDimensionalGeometry(form.dimensions == 2)
    reader.SetDoublePrecision(form.precision == "double")
    if form.byte_order == "big":
        reader.SetByteOrderToBigEndian()
    else:
        reader.SetByteOrderToLittleEndian()
    reader.Update()
    output = reader.GetOutput()
    return [output.GetBlock(number) for number in range(output.GetNumberOfBlocks())]


def points_of(data):
    support = pytest.importorskip("vtkmodules.util.numpy_support")
    return support.vtk_to_numpy(data.GetPoints().GetData())


def values_of(data, name):
    support = pytest.importorskip("vtkmodules.util.numpy_support")
    return support.vtk_to_numpy(data.GetPointData().GetArray(name))


@pytest.mark.skipif(not SAMPLES.is_dir(), reason="no samples")
@pytest.mark.parametrize("grid, flow", [
    ("vtk_data/multi-bin.xyz", "vtk_data/multi-bin.q"),
    ("vtk_data/multi-bin.xyz", "vtk_data/multi-bin-oflow.q"),
    ("vtk_data/multi-bin-C.xyz", "vtk_data/multi-bin-C.q"),
    ("vtk_data/multi-bin-2D.xyz", "vtk_data/multi-bin-2D.q"),
    ("vtk_data/multi-ascii.xyz", "vtk_data/multi-ascii.q"),
    ("vtk_data/bluntfinxyz.bin", "vtk_data/bluntfinq.bin"),
    ("turbmodels/nak_a_fine_65.p3d", None),
    ("turbmodels/flatplate_35x25.p3dfmt", None)])
def test_samples_as_vtk_reads_them(grid, flow):
    ours = p3dgrid.read_grid(SAMPLES / grid)
    solution = p3dgrid.read_solution(SAMPLES / flow, ours) if flow else None
    peers = vtk_blocks(SAMPLES / grid, flow and SAMPLES / flow, ours.form)
    assert [peer.GetDimensions() for peer in peers] == ours.extents
    for number, (block, peer) in enumerate(zip(ours, peers)):
        # VTK has text in single precision.
        text = ours.form.format == "formatted"
        as_peer = (lambda a: numpy.ravel(a, "F").astype("f4")) if text else (
            lambda a: numpy.ravel(a, "F"))
        for column, values in zip(points_of(peer).T, (block.x, block.y, block.z)):
            numpy.testing.assert_array_equal(column.astype("f4") if text else column,
                                             as_peer(values))
        if solution:
            read = solution[number]
            density, energy = values_of(peer, "Density"), values_of(peer, "StagnationEnergy")
            momentum = values_of(peer, "Momentum")
            for found, name in zip((density, *momentum.T, energy), read.names, strict=True):
                numpy.testing.assert_array_equal(found.astype("f4") if text else found,
                                                 as_peer(read[name]))


@pytest.fixture
def case(tmp_path):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), True))
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    return p3dgrid.read_grid(tmp_path / "grid"), p3dgrid.read_solution(tmp_path / "flow")


def test_data_sets_of_vtk(case):
    pytest.importorskip("vtkmodules.vtkCommonDataModel")
    grid, flow = case
    data = flow.to_vtk(grid)
    assert data.GetNumberOfBlocks() == 2
    for number, (x, y, z, blanking) in enumerate(grid_arrays(Coding())):
        block = data.GetBlock(number)
        assert block.GetDimensions() == x.shape
        numpy.testing.assert_array_equal(
            points_of(block), numpy.column_stack([a.ravel("F") for a in (x, y, z)]))
        numpy.testing.assert_array_equal(values_of(block, "IBlank"), blanking.ravel("F"))
        visible = [block.IsPointVisible(n) for n in range(x.size)]
        numpy.testing.assert_array_equal(visible, blanking.ravel("F") != 0)
        for name, values in zip(flow[number].names, flow_arrays(Coding())[number]):
            numpy.testing.assert_array_equal(values_of(block, name), values.ravel("F"))
        assert block.GetFieldData().GetArray("mach").GetValue(0) == (0.75, 0.5)[number]


def test_a_solution_of_another_grid_is_not_shown(case):
    grid, flow = case
    other = p3dgrid.Grid(grid.blocks[:1])
    with pytest.raises(ValueError, match="does not belong"):
        flow.to_vtk(other)
    with pytest.raises(ValueError, match="does not belong"):
        flow.plot(other)


def test_pictures(case, tmp_path):
    pyplot = pytest.importorskip("matplotlib.pyplot")
    grid, flow = case
    axes = grid.plot(color="black")
    assert len(axes.collections) >= 6
    axes = flow.plot(grid, "e", k=0)
    axes.figure.savefig(tmp_path / "picture.png")
    assert (tmp_path / "picture.png").stat().st_size > 5000
    pyplot.close("all")


@pytest.mark.parametrize("options", [{}, {"levels": 4}, {"levels": [1000, 1500, 2500]},
                                     {"vmin": 0}], ids=str)
def test_blocks_have_common_levels(case, monkeypatch, options):
    pyplot = pytest.importorskip("matplotlib.pyplot")
    from matplotlib.axes import Axes
    drawn = []
    draw = Axes.contourf
    monkeypatch.setattr(Axes, "contourf", lambda *arguments, **named: drawn.append(
        draw(*arguments, **named)) or drawn[-1])
    grid, flow = case
    flow.plot(grid, "e", **options)
    one, other = drawn
    assert list(one.levels) == list(other.levels)
    values = [block["e"][:, :, 0] for block in flow]
    if "levels" in options and options["levels"] != 4:
        assert list(one.levels) == options["levels"]
    else:
        assert 4 <= len(one.levels) <= 10
        assert one.levels[0] <= min(plane.min() for plane in values)
        assert one.levels[-1] >= max(plane.max() for plane in values)
    assert (one.norm.vmin, one.norm.vmax) == (other.norm.vmin, other.norm.vmax)
    pyplot.close("all")


def test_pictures_leave_out_what_is_no_number(case, tmp_path):
    pyplot = pytest.importorskip("matplotlib.pyplot")
    grid, flow = case
    expected = flow.plot(grid, "e").figure.axes[-1].get_ylim()
    flow[0]["e"][1, 1, 0] = numpy.nan
    assert flow.plot(grid, "e").figure.axes[-1].get_ylim() == expected
    pyplot.close("all")
