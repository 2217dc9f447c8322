"""detect and check."""

import gzip

import pytest

import p3dgrid
from support import CODINGS, Coding, extents_in, grid_bytes, solution_bytes


@pytest.mark.parametrize("coding", CODINGS, ids=str)
def test_sound_files_have_no_findings(tmp_path, coding):
    (tmp_path / "grid").write_bytes(grid_bytes(coding, False))
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    stated = {"dimensions": coding.dimensions}
    assert p3dgrid.check(tmp_path / "grid", iblank=False, **stated) == []
    assert p3dgrid.check(tmp_path / "flow", layout=2, **stated) == []
    assert p3dgrid.check(tmp_path / "flow", extents_in(coding), **stated) == []


def test_detect_finds_the_form(tmp_path):
    coding = Coding("binary", "double", "big")
    (tmp_path / "grid").write_bytes(grid_bytes(coding, False))
    found = p3dgrid.detect(tmp_path / "grid")
    assert found.form == p3dgrid.GridForm(**coding.members())
    assert found.size == (tmp_path / "grid").stat().st_size
    assert found.reason == f"its {found.size} bytes are what its extents require"
    reading = found.fitting[0]
    assert reading.is_grid and reading.agreement == "whole" and reading.checked
    assert reading.extents == extents_in(coding)
    assert reading.description == ("grid, binary, big-endian, double precision, multi-block, "
                                   "without blanking")


def test_detect_of_a_kind(tmp_path):
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    assert p3dgrid.detect(tmp_path / "flow", "grid").form is None
    assert p3dgrid.detect(tmp_path / "flow", "restart").form.layout == 2
    assert p3dgrid.detect(tmp_path / "flow", precision="double", layout=2).fitting == []
    with pytest.raises(ValueError, match="kind"):
        p3dgrid.detect(tmp_path / "flow", "picture")


def test_damage_is_found(tmp_path):
    path = tmp_path / "grid"
    content = bytearray(grid_bytes(Coding(), False))
    path.write_bytes(content + b"more")
    (finding,) = p3dgrid.check(path)
    assert isinstance(finding, p3dgrid.Error)
    assert finding.file == str(path) and finding.kind in ("damaged", "mismatch")
    assert str(finding).startswith(f"{path}: ")
    path.write_bytes(content[:-30])
    (finding,) = p3dgrid.check(path)
    assert finding.kind == "damaged"
    content[-1] ^= 1  # the last marker
    path.write_bytes(content)
    (finding,) = p3dgrid.check(path, multiblock=True)
    assert "marker" in str(finding)


def test_every_block_that_differs_from_the_grid_is_found(tmp_path):
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    found = p3dgrid.check(tmp_path / "flow", [(4, 3, 1), (2, 4, 1)])
    assert [finding.kind for finding in found] == ["mismatch"] * 2
    assert "4x3x2" in str(found[0]) and "2x5x1" in str(found[1])
    assert p3dgrid.check(tmp_path / "flow", extents_in(Coding())) == []


@pytest.mark.parametrize("pack", [bytes, gzip.compress])
def test_a_pair_is_checked_with_its_grid(tmp_path, pack):
    (tmp_path / "grid").write_bytes(pack(grid_bytes(Coding(), False)))
    (tmp_path / "flow").write_bytes(pack(solution_bytes(Coding())))
    assert p3dgrid.check(tmp_path / "flow", tmp_path / "grid") == []
    (finding,) = p3dgrid.check(tmp_path / "flow", tmp_path / "grid", layout=1)
    assert finding.file == str(tmp_path / "flow")
    (tmp_path / "grid").write_bytes(pack(grid_bytes(Coding(), False)[:-30]))
    (tmp_path / "flow").write_bytes(pack(solution_bytes(Coding())[:-30]))
    found = p3dgrid.check(tmp_path / "flow", tmp_path / "grid")
    assert [finding.file for finding in found] == [str(tmp_path / "grid"), str(tmp_path / "flow")]
    for finding in found:
        assert str(finding).startswith(finding.file + ": ")
        assert str(finding).count("/p3dgrid-") == 0


def test_what_cannot_be_checked_is_raised(tmp_path):
    with pytest.raises(p3dgrid.Error, match="No such file"):
        p3dgrid.check(tmp_path / "none")
