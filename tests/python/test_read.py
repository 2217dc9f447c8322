"""read_grid and read_solution against arrays that numpy has packed."""

import concurrent.futures
import gzip
import os

import numpy
import pytest

import p3dgrid
from support import (CODINGS, PARAMETERS, Coding, extents_in, flow_arrays, grid_arrays, grid_bytes,
                     solution_bytes, split, triplet_solution_bytes)


def require_equal(found, expected, coding):
    """Values, type and layout of an array that has been read."""
    real = "f4" if coding.precision == "single" and coding.format != "formatted" else "f8"
    assert found.dtype == numpy.dtype(real)
    assert found.flags.f_contiguous and found.flags.writeable
    numpy.testing.assert_array_equal(found, expected)


@pytest.mark.parametrize("iblank", [False, True])
@pytest.mark.parametrize("coding", CODINGS, ids=str)
def test_grids_in_every_coding(tmp_path, coding, iblank):
    path = tmp_path / "grid"
    path.write_bytes(grid_bytes(coding, iblank))
    stated = {"iblank": iblank} if coding.format == "formatted" else {}
    grid = p3dgrid.read_grid(path, dimensions=coding.dimensions, **stated)
    assert grid.form == p3dgrid.GridForm(**coding.members(), iblank=iblank)
    assert grid.extents == extents_in(coding)
    for block, (x, y, z, blanking) in zip(grid, grid_arrays(coding), strict=True):
        for found, expected in zip((block.x, block.y, block.z), (x, y, z)):
            require_equal(found, expected, coding)
        if iblank:
            assert block.iblank.dtype == numpy.int32
            numpy.testing.assert_array_equal(block.iblank, blanking)
        else:
            assert block.iblank is None


@pytest.mark.parametrize("coding", CODINGS, ids=str)
def test_solutions_in_every_coding(tmp_path, coding):
    path = tmp_path / "flow"
    path.write_bytes(solution_bytes(coding))
    flow = p3dgrid.read_solution(path, dimensions=coding.dimensions)
    assert flow.form == p3dgrid.RestartForm(**coding.members(), sections=((1, 5),))
    assert flow.extents == extents_in(coding)
    for block, arrays, parameters in zip(flow, flow_arrays(coding), PARAMETERS, strict=True):
        assert list(block.variables) == [1, 2, 3, 4, 5]
        for name, found, expected in zip(("rho", "rhou", "rhov", "rhow", "e"), block, arrays):
            require_equal(found, expected, coding)
            assert block[name] is found
        assert list(block.parameters) == ["mach", "alpha", "reynolds", "time"]
        assert tuple(block.parameters.values()) == parameters


def test_the_arrays_of_a_block_share_one_allocation(tmp_path):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), True))
    block = p3dgrid.read_grid(tmp_path / "grid")[0]
    memory = block.x.base
    assert memory.nbytes == block.x.size * (3 * 4 + 4)
    for array in (block.y, block.z, block.iblank):
        assert array.base is memory
    assert block.y.ctypes.data == block.x.ctypes.data + block.x.nbytes


def test_arrays_outlive_what_they_were_read_with(tmp_path):
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    energy = p3dgrid.read_solution(tmp_path / "flow")[1]["e"]
    numpy.testing.assert_array_equal(energy, flow_arrays(Coding())[1][4])


def test_function_files_have_numbers_only(tmp_path):
    coding = Coding("binary", "double")
    flow = flow_arrays(coding, 3)
    head = [n for block in flow for n in (*block[0].shape, 3)]
    content = coding.record(numpy.array([2])) + coding.record(numpy.array(head))
    content += b"".join(coding.record(*block) for block in flow)
    (tmp_path / "functions").write_bytes(content)
    found = p3dgrid.read_solution(tmp_path / "functions")
    assert found.form.layout == 3 and found.form.sections == ((1, 3),)
    numpy.testing.assert_array_equal(found[1][2], flow[1][1])
    assert "rho" not in found[0] and 3 in found[0] and 4 not in found[0]
    with pytest.raises(KeyError, match="rho"):
        found[0]["rho"]


def test_headers_and_triplets(tmp_path):
    coding = Coding(precision="double")
    flow, triplets = flow_arrays(coding), flow_arrays(coding, 3)
    (tmp_path / "flow").write_bytes(triplet_solution_bytes(coding, flow, triplets))
    with pytest.raises(p3dgrid.Error):
        p3dgrid.read_solution(tmp_path / "flow")
    found = p3dgrid.read_solution(tmp_path / "flow", extents_in(coding), layout=100)
    assert found.header == {"step_count": 17, "step_size": 0.5}
    assert found.form.multiblock is None
    again = p3dgrid.read_solution(tmp_path / "flow", extents_in(coding), **found.form.members())
    assert again.reason == "as stated" and again.form == found.form
    for block, arrays in zip(found, triplets):
        for array, expected in zip(block.triplets, arrays, strict=True):
            numpy.testing.assert_array_equal(array, expected)
    numpy.testing.assert_array_equal(found[1][5], flow[1][4])


def test_a_grid_gives_the_extents(tmp_path):
    coding = Coding(precision="double")
    arrays = flow_arrays(coding)[0]
    (tmp_path / "grid").write_bytes(grid_bytes(coding, False, grid_arrays(coding)[:1]))
    (tmp_path / "flow").write_bytes(coding.record(*arrays))
    grid = p3dgrid.read_grid(tmp_path / "grid")
    for of_grid in (grid, tmp_path / "grid", grid.extents, p3dgrid.open(tmp_path / "grid")):
        flow = p3dgrid.read_solution(tmp_path / "flow", of_grid, layout=102, precision="double")
        numpy.testing.assert_array_equal(flow[0][5], arrays[4])
    with pytest.raises(p3dgrid.Error):
        p3dgrid.read_solution(tmp_path / "flow", [(9, 9, 9)], layout=102)


def test_records_in_parts(tmp_path):
    coding = Coding(precision="double", byte_order="big")
    (tmp_path / "grid").write_bytes(split(grid_bytes(coding, True), ">", 100))
    for block, expected in zip(p3dgrid.read_grid(tmp_path / "grid"), grid_arrays(coding)):
        numpy.testing.assert_array_equal(block.z, expected[2])
        numpy.testing.assert_array_equal(block.iblank, expected[3])


def test_compressed_files(tmp_path):
    path = tmp_path / "grid.gz"
    path.write_bytes(gzip.compress(grid_bytes(Coding(), False)))
    grid = p3dgrid.read_grid(path)
    numpy.testing.assert_array_equal(grid[1].y, grid_arrays(Coding())[1][1])
    path.write_bytes(gzip.compress(grid_bytes(Coding(), False))[:-20])
    with pytest.raises(p3dgrid.Error, match="grid.gz: cannot be unpacked"):
        p3dgrid.read_grid(path)
    path.write_bytes(gzip.compress(grid_bytes(Coding(), False)[:-20]))
    with pytest.raises(p3dgrid.Error, match="^" + str(path)) as caught:
        p3dgrid.read_grid(path)
    assert caught.value.file == str(path)


def test_threads_read_at_the_same_time(tmp_path):
    for number, coding in enumerate(CODINGS):
        (tmp_path / str(number)).write_bytes(solution_bytes(coding))

    def energy_of(number):
        coding = CODINGS[number % len(CODINGS)]
        flow = p3dgrid.read_solution(tmp_path / str(number % len(CODINGS)),
                                     dimensions=coding.dimensions)
        return flow[1]["e"].tolist()

    with concurrent.futures.ThreadPoolExecutor(8) as pool:
        found = list(pool.map(energy_of, range(4 * len(CODINGS))))
    assert found == [flow_arrays(coding)[1][4].tolist() for coding in CODINGS] * 4


def test_names_of_any_bytes(tmp_path):
    path = os.fsencode(tmp_path) + b"/\xff grid"
    with open(path, "wb") as file:
        file.write(grid_bytes(Coding(), False))
    assert p3dgrid.read_grid(path).extents == p3dgrid.read_grid(os.fsdecode(path)).extents


def test_blocks_without_points(tmp_path):
    coding = Coding()
    empty = (numpy.zeros((0, 3, 2)),) * 3
    block = grid_arrays(coding)[0][:3]
    content = grid_bytes(coding, False, [block, empty, block])
    (tmp_path / "grid").write_bytes(content)
    grid = p3dgrid.read_grid(tmp_path / "grid", format="unformatted", precision="single",
                             byte_order="little", iblank=False, multiblock=True)
    assert grid[1].x.shape == (0, 3, 2)
    numpy.testing.assert_array_equal(grid[2].z, block[2])
