"""The examples of docs/python.md run, one after another, on a real case."""

import os
import pathlib
import re
import shutil

import pytest

SOURCE = pathlib.Path(os.environ["P3DGRID_SOURCE"])
SAMPLES = pathlib.Path(os.environ.get("P3DGRID_SAMPLES") or "none")


@pytest.mark.skipif(not SAMPLES.is_dir(), reason="no samples")
def test_examples_run(tmp_path, monkeypatch, capsys):
    for package in ("dask.array", "matplotlib", "vtkmodules.vtkCommonDataModel"):
        pytest.importorskip(package)
    for end in ("xyz", "q"):
        shutil.copy(SAMPLES / "vtk_data" / f"multi-bin.{end}", tmp_path / f"wing.{end}")
    (tmp_path / "broken.txt").write_text("1\n2 1 1\n1 oops\n1 2\n1 2\n")
    monkeypatch.chdir(tmp_path)
    page = (SOURCE / "docs" / "python.md").read_text()
    names = {}
    examples = re.findall(r"^```python\n(.*?)^```$", page, re.MULTILINE | re.DOTALL)
    assert len(examples) > 4
    for example in examples:
        exec(example, names)
    printed = capsys.readouterr().out
    assert "[(8, 12, 12), (8, 12, 12)]" in printed
    assert "the markers of its 4 records are the lengths that its extents require" in printed
    assert "[(3, 2, 2), (3, 2, 2)] [(8, 1, 12), (8, 1, 12)]" in printed
    assert "broken.txt" in printed and "line 3" in printed
    assert (tmp_path / "density.png").exists() and (tmp_path / "mesh.png").exists()
