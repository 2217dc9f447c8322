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
    assert found.reason == f"its {found.size} bytes are what its extents ask for"
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
    assert finding.file == str(path) and finding.kind == "damaged" and finding.text
    assert str(finding) == f"{path}: {finding.text}"
    path.write_bytes(content[:-30])
    (finding,) = p3dgrid.check(path)
    assert finding.text
    content[-1] ^= 1  # the last marker
    path.write_bytes(content)
    (finding,) = p3dgrid.check(path)
    assert "marker" in finding.text


def test_a_solution_of_another_grid(tmp_path):
    (tmp_path / "flow").write_bytes(solution_bytes(Coding()))
    (finding,) = p3dgrid.check(tmp_path / "flow", [(4, 3, 2), (2, 4, 1)])
    assert "2x5x1" in finding.text or "block 2" in finding.text


def test_compressed_files_are_checked(tmp_path):
    (tmp_path / "grid").write_bytes(gzip.compress(grid_bytes(Coding(), False)))
    assert p3dgrid.check(tmp_path / "grid") == []
    (tmp_path / "grid").write_bytes(gzip.compress(grid_bytes(Coding(), False)[:-30]))
    (finding,) = p3dgrid.check(tmp_path / "grid")
    assert finding.file == str(tmp_path / "grid") and "tmp/p3dgrid-" not in finding.text


def test_what_cannot_be_checked_is_an_error(tmp_path):
    with pytest.raises(p3dgrid.Error, match="No such file"):
        p3dgrid.check(tmp_path / "none")
