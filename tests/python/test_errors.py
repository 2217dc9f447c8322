"""Failures: file, place, found, expected."""

import pickle

import numpy
import pytest

import p3dgrid
from support import Coding, grid_bytes, solution_bytes

# A block of one point with or without a count, in the precision that fits.
AMBIGUOUS = numpy.array([1, 1, 1, 1], "<i4").tobytes() + numpy.zeros(3, "<f8").tobytes()


def error_of(call, *arguments, **more):
    with pytest.raises(p3dgrid.Error) as caught:
        call(*arguments, **more)
    return caught.value


def test_a_file_that_does_not_exist(tmp_path):
    error = error_of(p3dgrid.read_grid, tmp_path / "none")
    assert error.kind == "system"
    assert error.file == str(tmp_path / "none")
    assert str(error).endswith("No such file or directory")


def test_a_value_that_is_no_number(tmp_path):
    path = tmp_path / "grid"
    path.write_text("1\n2 1 1\n1.5 2.5\n1 oops\n0 0\n")
    error = error_of(p3dgrid.read_grid, path, format="formatted", multiblock=True, iblank=False)
    assert (error.kind, error.file) == ("damaged", str(path))
    assert error.line == 4
    assert "oops" in error.found and error.expected
    assert str(error) == f"{path}: line 4: found {error.found}, expected {error.expected}"


def test_a_file_that_ends_too_early(tmp_path):
    path = tmp_path / "grid"
    content = grid_bytes(Coding("binary"), False)
    path.write_bytes(content[:-8])
    error = error_of(p3dgrid.read_grid, path, format="binary", precision="single",
                     byte_order="little", multiblock=True, iblank=False)
    assert error.kind == "damaged"
    assert error.record > 0 and error.offset > 0 and error.found and error.expected
    assert f"record {error.record}, byte {error.offset}: found {error.found}" in str(error)


def test_an_ambiguous_file_can_be_read_in_one_of_its_forms(tmp_path):
    path = tmp_path / "grid"
    path.write_bytes(AMBIGUOUS)
    error = error_of(p3dgrid.read_grid, path)
    assert error.kind == "ambiguous" and len(error.readings) > 1
    for reading in error.readings:
        assert p3dgrid.read_grid(path, **reading.form.members()).form == reading.form


def test_the_other_kind(tmp_path):
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    (tmp_path / "grid").write_bytes(grid_bytes(Coding(), False))
    error = error_of(p3dgrid.read_grid, tmp_path / "flow")
    assert error.kind == "wrong_kind"
    assert isinstance(error.readings[0].form, p3dgrid.RestartForm)
    assert error_of(p3dgrid.read_solution, tmp_path / "grid").kind == "wrong_kind"


def test_a_solution_of_another_grid(tmp_path):
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    error = error_of(p3dgrid.read_solution, tmp_path / "flow", [(4, 3, 2), (2, 4, 1)])
    assert error.kind == "mismatch"
    assert "its block 2 is 2x5x1, the grid's 2x4x1" in str(error)


def test_a_header_that_no_file_can_hold_takes_no_memory(tmp_path):
    coding = Coding("binary")
    head = coding.record(numpy.array([1]), numpy.array([2000, 2000, 2000]))
    (tmp_path / "grid").write_bytes(head + bytes(1000))
    error = error_of(p3dgrid.read_grid, tmp_path / "grid", format="binary", precision="single",
                     byte_order="little", multiblock=True, iblank=False)
    assert error.kind == "damaged"


def test_errors_can_be_pickled(tmp_path):
    path = tmp_path / "grid"
    path.write_bytes(AMBIGUOUS)
    error = error_of(p3dgrid.read_grid, path)
    copy = pickle.loads(pickle.dumps(error))
    assert str(copy) == str(error) and copy.__dict__ == error.__dict__
