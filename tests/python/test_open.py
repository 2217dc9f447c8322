"""open: the index, mapped arrays, text, memory."""

import gzip
import os
import pickle
import subprocess
import sys

import numpy
import pytest

import p3dgrid
from support import (CODINGS, PARAMETERS, Coding, flow_arrays, grid_arrays, grid_bytes,
                     solution_bytes, split)

BINARY = [coding for coding in CODINGS if coding.format != "formatted"]


def values_at(path, stored, byte_order):
    """An array as plain pread reads its ranges."""
    file = os.open(path, os.O_RDONLY)
    content = b"".join(os.pread(file, count, offset) for offset, count in stored.ranges)
    os.close(file)
    values = numpy.frombuffer(content, stored.dtype(byte_order))
    assert len(values) == stored.count
    return values


@pytest.mark.parametrize("coding, parts", [
    *((coding, False) for coding in BINARY),
    *((coding, True) for coding in BINARY  # only markers of four bytes divide records
      if coding.format == "unformatted" and coding.marker_bytes == 4)], ids=str)
def test_every_range_of_a_grid(tmp_path, coding, parts):
    path = tmp_path / "grid"
    content = grid_bytes(coding, True)
    if parts:
        content = split(content, coding.sign, 50)
    path.write_bytes(content)
    file = p3dgrid.open(path, dimensions=coding.dimensions, iblank=True)
    for block, arrays in zip(file.index, grid_arrays(coding), strict=True):
        places = [(array.content, array.number) for array in block]
        axes = range(1, coding.dimensions + 1)
        assert places == [*(("coordinate", axis) for axis in axes), ("iblank", 1)]
        for stored, expected in zip(block, (*arrays[:coding.dimensions], arrays[3])):
            values = values_at(path, stored, coding.byte_order)
            numpy.testing.assert_array_equal(values, expected.ravel("F"))
            assert len(stored.ranges) == 1 or parts
        assert any(len(array.ranges) > 1 for array in block) == parts


@pytest.mark.parametrize("coding", BINARY, ids=str)
def test_every_range_of_a_solution(tmp_path, coding):
    path = tmp_path / "flow"
    path.write_bytes(solution_bytes(coding))
    file = p3dgrid.open(path, dimensions=coding.dimensions, layout=2)
    for block, arrays, parameters in zip(file.index, flow_arrays(coding), PARAMETERS, strict=True):
        assert [array.content for array in block][:2] == ["parameters", "variable"]
        for stored in block:
            expected = (numpy.array(parameters) if stored.content == "parameters"
                        else arrays[stored.number - 1].ravel("F"))
            values = values_at(path, stored, coding.byte_order)
            numpy.testing.assert_array_equal(values, expected)


@pytest.mark.parametrize("coding", BINARY, ids=str)
def test_arrays_are_views_of_the_file(tmp_path, coding):
    (tmp_path / "grid").write_bytes(grid_bytes(coding, True))
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    grid = p3dgrid.open(tmp_path / "grid", dimensions=coding.dimensions)
    flow = p3dgrid.open(tmp_path / "flow", dimensions=coding.dimensions)
    assert isinstance(grid, p3dgrid.GridFile) and isinstance(flow, p3dgrid.SolutionFile)
    for block, expected in zip(grid, grid_arrays(coding), strict=True):
        for array, values in zip((block.x, block.y, block.z, block.iblank), expected):
            numpy.testing.assert_array_equal(array, values)
            assert array.flags.f_contiguous or coding.dimensions == 2
            assert not array.flags.writeable
        assert isinstance(block.x, numpy.memmap) and block.x.dtype == coding.real
        assert isinstance(block.iblank, numpy.memmap) and block.iblank.dtype == coding.integer
    for block, expected, parameters in zip(flow, flow_arrays(coding), PARAMETERS, strict=True):
        assert block.numbers == [1, 2, 3, 4, 5]
        for array, values in zip(block, expected, strict=True):
            numpy.testing.assert_array_equal(array, values)
        assert isinstance(block["e"], numpy.memmap) and block["e"].dtype == coding.real
        assert tuple(block.parameters.values()) == parameters


def test_a_view_sees_what_is_written_later(tmp_path):
    path = tmp_path / "grid"
    path.write_bytes(grid_bytes(Coding(), False))
    file = p3dgrid.open(path)
    view, place = file[1].y, file.index[1][1]
    with open(path, "r+b") as changed:
        changed.seek(place.ranges[0][0])
        changed.write(numpy.float32(-7).tobytes())
    assert view[0, 0, 0] == -7


def test_interrupted_arrays_are_read_in_pieces(tmp_path):
    coding = Coding(precision="double", byte_order="big")
    (tmp_path / "grid").write_bytes(split(grid_bytes(coding, False), ">", 50))
    file = p3dgrid.open(tmp_path / "grid")
    with pytest.raises(p3dgrid.Error, match="record markers interrupt the array") as caught:
        file[0].x
    assert caught.value.kind == "unsupported"
    numpy.testing.assert_array_equal(file[0].read().x, grid_arrays(coding)[0][0])
    place = file.place(0, "coordinate", 2)
    for first, last in ((0, 1), (1, 2), (0, 2)):
        found = place.planes(first, last)
        numpy.testing.assert_array_equal(found, grid_arrays(coding)[0][1][:, :, first:last])
    # Of the ranges from byte 0 on, each value has its 8 bytes once.
    stored = p3dgrid.StoredArray("variable", 1, "real8", 4, ((100, 12), (200, 20)))
    assert stored.bytes_of(0, 4) == [(100, 12), (200, 20)]
    assert stored.bytes_of(1, 2) == [(108, 4), (200, 4)]
    assert stored.bytes_of(2, 3) == [(204, 8)]
    assert stored.bytes_of(0, 1) == [(100, 8)] and stored.bytes_of(2, 2) == []


@pytest.mark.parametrize("name, pack", [("text", lambda content: content),
                                        ("packed", gzip.compress)])
def test_text_and_compressed_files_are_read_when_asked_for(tmp_path, name, pack):
    coding = Coding("formatted") if name == "text" else Coding()
    (tmp_path / "grid").write_bytes(pack(grid_bytes(coding, True)))
    (tmp_path / "flow").write_bytes(pack(solution_bytes(coding)))
    grid = p3dgrid.open_grid(tmp_path / "grid", iblank=True)
    flow = p3dgrid.open(tmp_path / "flow")
    for block, expected in zip(grid, grid_arrays(coding), strict=True):
        for array, values in zip((block.x, block.y, block.z, block.iblank), expected):
            numpy.testing.assert_array_equal(array, values)
    numpy.testing.assert_array_equal(flow[1]["rhou"], flow_arrays(coding)[1][1])
    assert flow[1].parameters["mach"] == PARAMETERS[1][0]
    with pytest.raises(p3dgrid.Error, match="no index"):
        grid.index


def test_the_last_block_of_text_is_kept(tmp_path, monkeypatch):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding("formatted"), True))
    file = p3dgrid.open_grid(tmp_path / "grid", iblank=True)
    size = len(pickle.dumps(file))
    read, block_numbers = p3dgrid.GridFile.read_block, []
    monkeypatch.setattr(p3dgrid.GridFile, "read_block", lambda self, number: (
        block_numbers.append(number) or read(self, number)))
    for number in (0, 1, 0):
        for array, values in zip((file[number].x, file[number].y), grid_arrays(Coding())[number]):
            numpy.testing.assert_array_equal(array, values)
    assert block_numbers == [0, 1, 0]
    assert len(pickle.dumps(file)) == size


def test_handles_are_small_and_can_be_pickled(tmp_path):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), True))
    (tmp_path / "text").write_bytes(grid_bytes(Coding("formatted"), True))
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    for name, form in (("grid", {}), ("text", {"iblank": True}), ("flow", {})):
        file = p3dgrid.open(tmp_path / name, **form)
        first = file[0].y if name != "flow" else file[0]["rho"]
        packed = pickle.dumps(file)
        assert len(packed) < 2000
        copy = pickle.loads(packed)
        assert copy.form == file.form and copy.extents == file.extents
        again = copy[0].y if name != "flow" else copy[0]["rho"]
        numpy.testing.assert_array_equal(again, first)


def test_open_reports_what_read_reports(tmp_path):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), False)[:-40])
    with pytest.raises(p3dgrid.Error) as read:
        p3dgrid.read_grid(tmp_path / "grid")
    with pytest.raises(p3dgrid.Error) as opened:
        p3dgrid.open(tmp_path / "grid")
    assert str(opened.value) == str(read.value)


def test_a_file_that_is_not_what_was_stated(tmp_path):
    (tmp_path / "grid").write_bytes(grid_bytes(Coding("binary"), True))
    with pytest.raises(p3dgrid.Error, match="is not grid, binary") as caught:
        p3dgrid.open(tmp_path / "grid", format="binary", precision="single", byte_order="little",
                     multiblock=True, iblank=False)
    assert caught.value.kind == "mismatch"


MEMORY = """
import resource, sys, p3dgrid
path, begin = sys.argv[1], int(open("/proc/self/statm").read().split()[1])
file = p3dgrid.open(path)
assert file[0].x.shape[2] == int(sys.argv[2])
assert file[0].x[5, 5, -1] == 0
print((int(open("/proc/self/statm").read().split()[1]) - begin) * resource.getpagesize())
"""


def test_memory_does_not_depend_on_the_size_of_the_file(tmp_path):
    taken = []
    for planes in (16, 1 << 14):  # 12 MB and 12.9 GB
        head = Coding("binary").record(numpy.array([1]), numpy.array([256, 256, planes]))
        with open(tmp_path / "grid", "wb") as file:
            file.write(head)
            file.truncate(len(head) + 3 * 4 * 256 * 256 * planes)
        done = subprocess.run([sys.executable, "-c", MEMORY, tmp_path / "grid", str(planes)],
                              capture_output=True, text=True, check=True)
        taken.append(int(done.stdout))
    assert max(taken) < 8 << 20
    assert abs(taken[1] - taken[0]) < 1 << 20


@pytest.mark.parametrize("coding", CODINGS, ids=str)
def test_which_variables_a_block_holds(tmp_path, coding):
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    form = {} if coding.format == "formatted" else coding.members()
    opened = p3dgrid.open_solution(tmp_path / "flow", **form, layout=2)
    for block in (opened[1], opened[1].read()):
        assert [key for key in (0, 1, 4, 5, 6) if key in block] == [1, 4, 5]
        assert "rho" in block and "e" in block and "pressure" not in block


def test_a_name_of_a_variable_that_is_missing():
    block = p3dgrid.SolutionBlock({1: numpy.ones((2, 2, 2))})
    assert "rho" in block and "e" not in block
