"""extract: parts of grids and solutions, in memory and from files."""

import os
import pathlib
import subprocess

import numpy
import pytest

import p3dgrid
from support import (CODINGS, PARAMETERS, Coding, extents_in, flow_arrays, grid_arrays, grid_bytes,
                     solution_bytes, split, triplet_solution_bytes)

COMMAND = pathlib.Path(os.environ["P3DGRID_BUILD"]) / "tools" / "p3dgrid"


@pytest.fixture(name="case", params=CODINGS, ids=str)
def case_of_files(request, tmp_path):
    """A coding, and the paths of a grid and its solution: blocks of 4x3x2 and 2x5x1 points."""
    coding = request.param
    (tmp_path / "grid").write_bytes(grid_bytes(coding, True))
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    return coding, tmp_path / "grid", tmp_path / "flow"


def opened(call, path, coding, **form):
    members = {name: value for name, value in coding.members().items() if value is not None}
    return call(path, **members, **form)


def both(case):
    """The grid and the solution in memory, then as open files."""
    coding, grid, flow = case
    form = {"multiblock": True, "layout": 2}
    yield (opened(p3dgrid.read_grid, grid, coding, iblank=True),
           opened(p3dgrid.read_solution, flow, coding, **form))
    yield (opened(p3dgrid.open_grid, grid, coding, iblank=True),
           opened(p3dgrid.open_solution, flow, coding, **form))


def require_parts(grid, flow, coding, selected):
    """Blocks hold the points of numpy's slices, in Fortran order."""
    assert isinstance(grid, p3dgrid.Grid) and isinstance(flow, p3dgrid.Solution)
    assert len(grid) == len(flow) == len(selected)
    for block, values, (number, part) in zip(grid, flow, selected, strict=True):
        arrays = (block.x, block.y, block.z, block.iblank, *values)
        expected = (*grid_arrays(coding)[number], *flow_arrays(coding)[number])
        for array, whole in zip(arrays, expected, strict=True):
            numpy.testing.assert_array_equal(array, whole[part])
            assert array.flags.f_contiguous and array.flags.writeable
        assert list(values.parameters.values())[:4] == list(PARAMETERS[number])
        assert values.names == p3dgrid.SolutionBlock([]).names


def test_everything_is_the_identity(case):
    everything = [(0, ...), (1, ...)]
    for grid, flow in both(case):
        for all_points in ({}, {"i": "1:last", "j": "1:last:1", "k": slice(None)}):
            require_parts(grid.extract(**all_points), flow.extract(**all_points), case[0],
                          everything)
            assert grid.extract().form == grid.form and flow.extract().form == flow.form
            assert flow.extract().header == flow.header


@pytest.mark.parametrize("ranges", [
    {"i": "2:last:2", "j": "1:3:2", "k": "1"},
    {"i": slice(1, None, 2), "j": slice(0, 3, 2), "k": 0},
    {"i": slice(-3, 4, 2), "j": "1:last:2", "k": numpy.int64(0)}], ids=str)
def test_ranges_of_the_first_block(case, ranges):
    part = numpy.s_[1:4:2, ::2, :1]
    for grid, flow in both(case):
        for blocks in ("1", "1-1", 0, [0], (-2,), numpy.array([0]), slice(0, 1)):
            require_parts(grid.extract(blocks, **ranges), flow.extract(blocks, **ranges), case[0],
                          [(0, part)])
        block, values = grid[0].extract(**ranges), flow[0].extract(**ranges)
        require_parts(p3dgrid.Grid([block]), p3dgrid.Solution([values]), case[0], [(0, part)])


def test_blocks_come_in_the_order_asked_for(case):
    for grid, flow in both(case):
        for blocks in ("2,1-2", [1, 0, -1]):
            require_parts(grid.extract(blocks), flow.extract(blocks), case[0],
                          [(1, ...), (0, ...), (1, ...)])
        assert len(grid.extract([])) == 0


def test_steps_that_miss_the_last_point(case):
    for grid, flow in both(case):
        for i in ("1:last:2", slice(0, 4, 2), slice(None, None, 2)):
            for call in (grid.extract, grid[0].extract, flow.extract, flow[0].extract):
                with pytest.raises(p3dgrid.Error, match="misses its last point"):
                    call(i=i)
            require_parts(grid.extract(0, i=i, uneven=True), flow.extract(0, i=i, uneven=True),
                          case[0], [(0, numpy.s_[::2])])


@pytest.mark.parametrize("asked, message", [
    ({"i": "5"}, "blocks[0]: i='5' is not within the 4 points of the block"),
    ({"i": "1:5"}, "blocks[0]: i='1:5' is not within the 4 points of the block"),
    ({"j": 3}, "blocks[0]: j=3 is not within the 3 points of the block"),
    ({"j": -4}, "blocks[0]: j=-4 is not within the 3 points of the block"),
    ({"k": slice(0, 3)}, "blocks[0]: k=slice(0, 3, None) is not within the 2 points of the block"),
    ({"j": "4:last"}, "blocks[0]: j='4:last' is not within the 3 points of the block"),
    ({"k": slice(1, 1)}, "blocks[0]: k=slice(1, 1, None) selects no points"),
    ({"k": slice(0, 0)}, "blocks[0]: k=slice(0, 0, None) selects no points"),
    ({"i": slice(9, 9)}, "blocks[0]: i=slice(9, 9, None) is not within the 4 points of the block"),
    ({"i": slice(3, 1)}, "blocks[0]: i=slice(3, 1, None) selects no points"),
    ({"i": slice(None, None, -1)},
     "blocks[0]: i=slice(None, None, -1): found a step of -1, expected at least 1"),
    ({"i": "3:1"}, "blocks[0]: i='3:1' is no index range such as '5', 'last', '1:33' or "
                   "'1:last:2', counted from 1"),
    ({"i": "0"}, "blocks[0]: i='0' is no index range such as '5', 'last', '1:33' or '1:last:2', "
                 "counted from 1"),
    ({"i": 1.5}, "blocks[0]: i=1.5: expected a text, a number or a slice"),
    ({"i": slice(0, 1.5)},
     "blocks[0]: i=slice(0, 1.5, None): expected a text, a number or a slice"),
    ({"i": "1:4:2"}, "blocks[0]: i='1:4:2' misses its last point: steps of 2 reach index 2, "
                     "counted from 0, and it is 3; uneven=True leaves it out"),
    ({"blocks": "3"}, "blocks='3': there are only 2 blocks"),
    ({"blocks": [0, 2]}, "blocks=[0, 2]: there are only 2 blocks"),
    ({"blocks": -3}, "blocks=-3: there are only 2 blocks"),
    ({"blocks": "2-1"}, "blocks='2-1' is no list of blocks such as '1,3-5', counted from 1"),
    ({"blocks": "0"}, "blocks='0' is no list of blocks such as '1,3-5', counted from 1"),
    ({"blocks": "1,"}, "blocks='1,' is no list of blocks such as '1,3-5', counted from 1"),
    ({"blocks": 0.5}, "blocks=0.5: expected a text, numbers or a slice")], ids=str)
def test_wrong_arguments(tmp_path, asked, message):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), False))
    for grid in (p3dgrid.read_grid(tmp_path / "grid"), p3dgrid.open(tmp_path / "grid")):
        with pytest.raises(p3dgrid.Error) as caught:
            grid.extract(**asked)
        assert (str(caught.value), caught.value.kind) == (message, "argument")


def test_a_huge_index_is_not_within_a_block(tmp_path):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), False))
    grid = p3dgrid.read_grid(tmp_path / "grid")
    for i in ("2147483647", 1 << 40, slice(1 << 40, None), slice(None, 1 << 40)):
        with pytest.raises(p3dgrid.Error, match="not within the 4 points"):
            grid[0].extract(i=i)
    assert grid[0].extract(i=slice(0, None, 1 << 40), uneven=True).extents == (1, 3, 2)
    file = p3dgrid.open(tmp_path / "grid")
    assert file[0].extract(i=slice(0, None, 1 << 40), uneven=True).extents == (1, 3, 2)


@pytest.mark.parametrize("options", [
    ["--i", "1:last:3", "--j", "last", "--blocks", "1,1"],
    ["--i", "1:last:2", "--uneven"],
    ["--blocks", "2", "--j", "2:4:2"]], ids=" ".join)
def test_files_are_those_of_the_command(case, tmp_path, options):
    _, grid, flow = case
    if not COMMAND.exists():
        pytest.skip("the command is not built")
    done = subprocess.run([COMMAND, "extract", grid, tmp_path / "grid-c", "--restart", flow,
                           tmp_path / "flow-c", *options], capture_output=True, text=True)
    assert done.returncode == 0, done.stderr
    given = {name[2:]: value for name, value in zip(options, [*options[1:], ""])
             if name.startswith("--")}
    given["uneven"] = "uneven" in given
    for number, (in_memory, values) in enumerate(both(case)):
        p3dgrid.write_grid(tmp_path / f"grid-{number}", in_memory.extract(**given))
        p3dgrid.write_solution(tmp_path / f"flow-{number}", values.extract(**given))
        for kind in ("grid", "flow"):
            written = (tmp_path / f"{kind}-{number}").read_bytes()
            assert written == (tmp_path / f"{kind}-c").read_bytes()


def test_arrays_that_record_markers_interrupt(tmp_path):
    coding = Coding()
    (tmp_path / "grid").write_bytes(split(grid_bytes(coding, True), coding.sign, 50))
    grid = p3dgrid.open(tmp_path / "grid").extract("1", i="2:last:2", j=2)
    for array, whole in zip((grid[0].x, grid[0].y, grid[0].z, grid[0].iblank),
                            grid_arrays(coding)[0]):
        numpy.testing.assert_array_equal(array, whole[1::2, 2:3])


def test_headers_flags_and_triplets_stay(tmp_path):
    coding = Coding(precision="double")
    flow, triplets = flow_arrays(coding), flow_arrays(coding, 3)
    (tmp_path / "flow").write_bytes(triplet_solution_bytes(coding, flow, triplets))
    for call in (p3dgrid.read_solution, p3dgrid.open_solution):
        part = call(tmp_path / "flow", extents_in(coding), layout=100).extract(1, i="2")
        assert part.header == {"step_count": 17, "step_size": 0.5}
        for array, whole in zip(part[0].triplets, triplets[1], strict=True):
            numpy.testing.assert_array_equal(array, whole[1:2])
    whole = p3dgrid.Solution(flow, flags=[1, 999])
    assert whole.extract("1").flags == [1, 999]


def test_an_extract_does_not_share_memory():
    x = numpy.zeros((3, 2, 1), order="F")
    block = p3dgrid.Block(x, x, x)
    block.extract().x[:] = 1
    assert not x.any()
