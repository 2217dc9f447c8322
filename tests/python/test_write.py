"""write_grid and write_solution against bytes that numpy has packed."""

import gzip
import os
import stat

import numpy
import pytest

import p3dgrid
from support import (CODINGS, EXTENTS, PARAMETERS, Coding, flow_arrays, grid_arrays, grid_bytes,
                     solution_bytes, split)

BINARY = [coding for coding in CODINGS if coding.format != "formatted"]


def stored(coding):
    """The members of a form that differ between codings."""
    return {name: value for name, value in coding.members().items() if value is not None}


@pytest.mark.parametrize("iblank", [False, True])
@pytest.mark.parametrize("coding", BINARY, ids=str)
def test_grids_in_every_coding(tmp_path, coding, iblank):
    blocks = [block if iblank else block[:3] for block in grid_arrays(coding)]
    p3dgrid.write_grid(tmp_path / "grid", blocks, **stored(coding))
    assert (tmp_path / "grid").read_bytes() == grid_bytes(coding, iblank)


@pytest.mark.parametrize("coding", BINARY, ids=str)
def test_solutions_in_every_coding(tmp_path, coding):
    blocks = [p3dgrid.SolutionBlock(arrays, parameters)
              for arrays, parameters in zip(flow_arrays(coding), PARAMETERS)]
    p3dgrid.write_solution(tmp_path / "flow", blocks, **stored(coding))
    assert (tmp_path / "flow").read_bytes() == solution_bytes(coding)


LAYOUTS = {
    "order C": numpy.ascontiguousarray,
    "order F": numpy.asfortranarray,
    "every second value": lambda a: numpy.repeat(a, 2, axis=1)[:, ::2],
    "backwards": lambda a: a[::-1, ::-1, ::-1].copy()[::-1, ::-1, ::-1],
    "transposed": lambda a: a.transpose(2, 0, 1).copy().transpose(1, 2, 0),
    "other byte order": lambda a: a.astype(a.dtype.newbyteorder()),
    "read-only": lambda a: numpy.frombuffer(a.tobytes("F"), a.dtype).reshape(a.shape, order="F"),
    "unaligned": lambda a: numpy.frombuffer(b"?" + a.tobytes("F"), a.dtype, offset=1).reshape(
        a.shape, order="F"),
    "list": lambda a: a.tolist(),
}


@pytest.mark.parametrize("change", LAYOUTS.values(), ids=LAYOUTS)
def test_arrays_of_any_strides_and_order(tmp_path, change):
    coding = Coding(precision="double")
    blocks = [tuple(change(array) for array in block) for block in grid_arrays(coding)]
    p3dgrid.write_grid(tmp_path / "grid", blocks)
    assert (tmp_path / "grid").read_bytes() == grid_bytes(coding, True)
    flow = [[change(array) for array in block] for block in flow_arrays(coding)]
    p3dgrid.write_solution(tmp_path / "flow", [
        p3dgrid.SolutionBlock(arrays, values) for arrays, values in zip(flow, PARAMETERS)])
    assert (tmp_path / "flow").read_bytes() == solution_bytes(coding)


@pytest.mark.parametrize("kinds, precision", [
    (["f4", "f4", "f4"], "single"), (["f2", "f4", ">f4"], "single"), (["f4", "f8", "f4"], "double"),
    (["f4", "i8", "f4"], "double"), (["longdouble"] * 3, "double")])
def test_precision_is_that_of_the_coordinates(tmp_path, kinds, precision):
    arrays = [numpy.full((2, 2, 2), 1.5 + n).astype(kind) for n, kind in enumerate(kinds)]
    p3dgrid.write_grid(tmp_path / "grid", [arrays])
    grid = p3dgrid.read_grid(tmp_path / "grid", iblank=False)
    assert grid.form.precision == precision
    for found, expected in zip((grid[0].x, grid[0].y, grid[0].z), arrays):
        numpy.testing.assert_array_equal(found, expected)


@pytest.mark.parametrize("kind", ["i1", "u2", "i4", ">i4", "i8", "u8", "?"])
def test_blanking_of_any_integers(tmp_path, kind):
    values = numpy.array([0, 1, 1, 0], kind).reshape(2, 2, 1)
    p3dgrid.write_grid(tmp_path / "grid", [(numpy.ones((2, 2, 1)),) * 3 + (values,)])
    content = (tmp_path / "grid").read_bytes()
    assert content[-20:-4] == values.ravel("F").astype("<i4").tobytes()


def test_arrays_of_two_dimensions_are_one_plane(tmp_path):
    plane = numpy.arange(6.0).reshape(2, 3)
    p3dgrid.write_grid(tmp_path / "grid", [(plane, plane, plane)])
    assert p3dgrid.read_grid(tmp_path / "grid", iblank=False).extents == [(2, 3, 1)]


def test_text_keeps_every_bit(tmp_path):
    values = numpy.random.default_rng(1).standard_normal((3, 4, 5))
    p3dgrid.write_grid(tmp_path / "grid", [(values,) * 3], format="formatted")
    words = (tmp_path / "grid").read_text().split()
    assert words[:4] == ["1", "3", "4", "5"]
    numpy.testing.assert_array_equal([float(word) for word in words[4:64]], values.ravel("F"))


def test_what_was_read_is_written_again(tmp_path):
    coding = Coding(byte_order="big", marker_bytes=8)
    (tmp_path / "grid").write_bytes(grid_bytes(coding, True))
    p3dgrid.write_grid(tmp_path / "again", p3dgrid.read_grid(tmp_path / "grid"))
    assert (tmp_path / "again").read_bytes() == grid_bytes(coding, True)
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    flow = p3dgrid.read_solution(tmp_path / "flow")
    p3dgrid.write_solution(tmp_path / "flow again", flow)
    assert (tmp_path / "flow again").read_bytes() == solution_bytes(coding)
    p3dgrid.write_solution(tmp_path / "little", flow, byte_order="little", marker_bytes=4)
    assert (tmp_path / "little").read_bytes() == solution_bytes(Coding())


@pytest.mark.parametrize("coding", CODINGS, ids=str)
def test_open_files_are_written_again(tmp_path, coding):
    grid, flow = grid_bytes(coding, True), solution_bytes(coding)
    (tmp_path / "grid").write_bytes(grid)
    (tmp_path / "flow").write_bytes(flow)
    form = {} if coding.format == "formatted" else coding.members()
    opened = p3dgrid.open_grid(tmp_path / "grid", **form, iblank=True)
    p3dgrid.write_grid(tmp_path / "grid again", opened)
    p3dgrid.write_grid(tmp_path / "grid read", opened.read())
    opened = p3dgrid.open_solution(tmp_path / "flow", **form, layout=2)
    p3dgrid.write_solution(tmp_path / "flow again", opened)
    p3dgrid.write_solution(tmp_path / "flow read", opened.read())
    for name, original in (("grid", grid), ("flow", flow)):
        again = (tmp_path / f"{name} again").read_bytes()
        assert again == (tmp_path / f"{name} read").read_bytes()
        assert again == original or coding.format == "formatted"


def test_blocks_of_open_files_are_written(tmp_path):
    coding = Coding()
    (tmp_path / "grid").write_bytes(grid_bytes(coding, True))
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    p3dgrid.write_grid(tmp_path / "one", p3dgrid.open(tmp_path / "grid")[1])
    p3dgrid.write_grid(tmp_path / "again", list(p3dgrid.open(tmp_path / "grid")))
    one = p3dgrid.read_grid(tmp_path / "one", iblank=True)
    assert one.extents == [EXTENTS[1]]
    numpy.testing.assert_array_equal(one[0].y, grid_arrays(coding)[1][1])
    assert (tmp_path / "again").read_bytes() == grid_bytes(coding, True)
    flow = p3dgrid.open(tmp_path / "flow")
    p3dgrid.write_solution(tmp_path / "one flow", flow[1])
    one = p3dgrid.read_solution(tmp_path / "one flow")
    assert one.extents == [EXTENTS[1]] and one[0].parameters == flow[1].parameters
    numpy.testing.assert_array_equal(one[0][5], flow_arrays(coding)[1][4])
    p3dgrid.write_solution(tmp_path / "flow again", list(flow))
    assert (tmp_path / "flow again").read_bytes() == solution_bytes(coding)


def test_open_files_are_not_copied_before_they_are_written(tmp_path, monkeypatch):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), True))
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    grid, flow = p3dgrid.open(tmp_path / "grid"), p3dgrid.open(tmp_path / "flow")
    monkeypatch.delattr(p3dgrid.GridFile, "read_block")
    monkeypatch.delattr(p3dgrid.SolutionFile, "read_block")
    monkeypatch.delattr(p3dgrid.GridFile, "read")
    monkeypatch.delattr(p3dgrid.SolutionFile, "read")
    p3dgrid.write_grid(tmp_path / "grid", grid)  # over itself
    p3dgrid.write_solution(tmp_path / "flow", flow)
    assert (tmp_path / "grid").read_bytes() == grid_bytes(Coding(), True)
    assert (tmp_path / "flow").read_bytes() == solution_bytes(Coding())


def test_open_files_with_interrupted_arrays_are_written(tmp_path):
    (tmp_path / "grid").write_bytes(split(grid_bytes(Coding(), True), "<", 40))
    (tmp_path / "flow").write_bytes(split(solution_bytes(Coding()), "<", 40))
    p3dgrid.write_grid(tmp_path / "grid again", p3dgrid.open_grid(tmp_path / "grid"))
    p3dgrid.write_solution(tmp_path / "flow again", p3dgrid.open_solution(tmp_path / "flow"))
    assert (tmp_path / "grid again").read_bytes() == grid_bytes(Coding(), True)
    assert (tmp_path / "flow again").read_bytes() == solution_bytes(Coding())


def test_flags_and_triplets_of_an_open_file_are_written(tmp_path):
    arrays = flow_arrays(Coding())[0]
    block = p3dgrid.SolutionBlock(arrays, triplets=arrays[:3])
    form = p3dgrid.RestartForm(layout=101, multiblock=False)
    p3dgrid.write_solution(tmp_path / "flow", p3dgrid.Solution([block], form, flags=[7, 8, 999]))
    opened = p3dgrid.open_solution(tmp_path / "flow", layout=101)
    assert opened.flags == [7, 8, 999]
    p3dgrid.write_solution(tmp_path / "again", opened)
    assert (tmp_path / "again").read_bytes() == (tmp_path / "flow").read_bytes()


def test_the_header_of_an_open_file_is_written(tmp_path):
    solution = p3dgrid.Solution(flow_arrays(Coding()), header={"step_count": 12, "step_size": 0.25})
    p3dgrid.write_solution(tmp_path / "flow", solution, layout=1)
    p3dgrid.write_solution(tmp_path / "again", p3dgrid.open_solution(tmp_path / "flow", layout=1))
    assert (tmp_path / "again").read_bytes() == (tmp_path / "flow").read_bytes()


def test_flow_parameters_are_written_by_name(tmp_path):
    block = p3dgrid.SolutionBlock([numpy.ones((2, 2, 2))] * 5,
                                  {"time": 4, "alpha": 2, "mach": 1})
    p3dgrid.write_solution(tmp_path / "flow", [block])
    read = p3dgrid.read_solution(tmp_path / "flow")
    assert read[0].parameters == {"mach": 1, "alpha": 2, "reynolds": 0, "time": 4}


def test_unknown_flow_parameters_are_refused(tmp_path):
    block = p3dgrid.SolutionBlock([numpy.ones((2, 2, 2))] * 5, {"mahc": 1})
    message = "^no flow parameter is called 'mahc'; there are mach, alpha, reynolds, time$"
    with pytest.raises(p3dgrid.Error, match=message) as caught:
        p3dgrid.write_solution(tmp_path / "flow", [block])
    assert caught.value.kind == "argument" and os.listdir(tmp_path) == []


def test_more_parameters_than_names_are_refused():
    assert list(p3dgrid.SolutionBlock([], [1, 2, 3, 4]).parameters.values()) == [1, 2, 3, 4]
    with pytest.raises(p3dgrid.Error, match="^5 flow parameters without names; ") as caught:
        p3dgrid.SolutionBlock([], [1, 2, 3, 4, 5])
    assert caught.value.kind == "argument"


def test_further_parameters_of_overflow_are_left_out(tmp_path):
    coding = Coding(precision="double")
    values = numpy.arange(1.0, 20.0)  # of 3 species, and one without a name
    content = coding.record(numpy.array([1])) + coding.record(numpy.array([2, 2, 2, 5, 3]))
    content += coding.record(values) + coding.record(numpy.ones(40))
    (tmp_path / "overflow").write_bytes(content)
    flow = p3dgrid.read_solution(tmp_path / "overflow", layout="overflow")
    assert list(flow[0].parameters.values()) == values.tolist()
    assert "parameter 18" in flow[0].parameters and "DTVREF" in flow[0].parameters
    p3dgrid.write_solution(tmp_path / "flow", flow, layout=2)
    read = p3dgrid.read_solution(tmp_path / "flow")
    assert list(read[0].parameters.values()) == [1, 2, 3, 4]


def test_header_values_are_written(tmp_path):
    coding = Coding("binary", "double")
    flow = flow_arrays(coding)
    extents = [numpy.array(block[0].shape) for block in flow]
    p3dgrid.write_solution(tmp_path / "flow", p3dgrid.Solution(
        flow, header={"step_count": 12, "step_size": 0.25}), layout=1, format="binary")
    expected = coding.record(numpy.array([12]), numpy.array([0.25]), numpy.array([2]))
    expected += b"".join(coding.record(block) for block in extents)
    expected += b"".join(coding.record(*block) for block in flow)
    assert (tmp_path / "flow").read_bytes() == expected


def test_compressed_output(tmp_path):
    p3dgrid.write_grid(tmp_path / "grid.gz", [block[:3] for block in grid_arrays(Coding())],
                       precision="single")
    content = (tmp_path / "grid.gz").read_bytes()
    assert gzip.decompress(content) == grid_bytes(Coding(), False)


WRONG = {
    "shape": ([(numpy.ones((2, 2, 2)), numpy.ones((2, 2, 2)), numpy.ones((2, 2, 1)))], {},
              "z: found 2x2x1 points, expected 2x2x2"),
    "dimensions": ([(numpy.ones(8),) * 3], {}, "x: found an array of 1 dimensions"),
    "complex": ([(numpy.ones((2, 2, 2), complex),) * 3], {}, "x: found values of type complex128"),
    "real blanking": ([(numpy.ones((2, 2, 2)),) * 4], {}, "iblank: found values of type float64"),
    "large blanking": ([(numpy.ones((2, 2, 2)),) * 3 + (numpy.full((2, 2, 2), 2**31),)], {},
                       "iblank: found values from 2147483648"),
    "large unsigned blanking": (
        [(numpy.ones((2, 2, 2)),) * 3 + (numpy.full((2, 2, 2), 2**31, "u4"),)], {},
        "iblank: found values from 2147483648"),
    "z in a plane": ([(numpy.ones((2, 2, 1)),) * 3], {"dimensions": 2}, "z other than 0"),
    "several blocks": ([(numpy.ones((2, 2, 2)),) * 3] * 2, {"multiblock": False}, "2 blocks"),
    "no blocks": ([], {}, "0 blocks"),
}


@pytest.mark.parametrize("blocks, form, message", WRONG.values(), ids=WRONG)
def test_invalid_arguments_leave_the_file_unchanged(tmp_path, blocks, form, message):
    path = tmp_path / "grid"
    path.write_bytes(b"as it was")
    with pytest.raises(p3dgrid.Error, match=message) as caught:
        p3dgrid.write_grid(path, blocks, **form)
    assert caught.value.kind == "argument"
    assert os.listdir(tmp_path) == ["grid"] and path.read_bytes() == b"as it was"


def test_a_missing_variable_is_refused(tmp_path):
    ones = numpy.ones((2, 2, 2))
    with pytest.raises(p3dgrid.Error, match="flow: found 0 values of variable 4, expected 8"):
        p3dgrid.write_solution(tmp_path / "flow", [{1: ones, 2: ones, 3: ones, 5: ones}])
    assert os.listdir(tmp_path) == []


def test_unknown_members_and_values_are_refused(tmp_path):
    with pytest.raises(TypeError, match="members of a form are format, .*; found colour"):
        p3dgrid.write_grid(tmp_path / "grid", grid_arrays(Coding()), colour="red")
    with pytest.raises(ValueError, match="precision: found 'half', expected 'single', 'double'"):
        p3dgrid.write_grid(tmp_path / "grid", grid_arrays(Coding()), precision="half")


def test_failures_of_the_system_leave_nothing(tmp_path):
    with pytest.raises(p3dgrid.Error, match="nowhere/grid: cannot be written") as caught:
        p3dgrid.write_grid(tmp_path / "nowhere" / "grid", grid_arrays(Coding()))
    assert caught.value.kind == "system"
    with pytest.raises(p3dgrid.Error, match="/dev/full") as caught:
        p3dgrid.write_grid("/dev/full", grid_arrays(Coding()))
    assert caught.value.kind == "system"


def test_permissions_and_links_stay(tmp_path):
    path, link = tmp_path / "grid", tmp_path / "link"
    path.write_bytes(b"")
    path.chmod(0o640)
    link.symlink_to("grid")
    p3dgrid.write_grid(link, grid_arrays(Coding()))
    assert link.is_symlink() and stat.S_IMODE(path.stat().st_mode) == 0o640
    assert path.stat().st_size > 0
    p3dgrid.write_grid(tmp_path / "new", grid_arrays(Coding()))
    mask = os.umask(0)
    os.umask(mask)
    assert stat.S_IMODE((tmp_path / "new").stat().st_mode) == 0o666 & ~mask
