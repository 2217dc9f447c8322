"""What the package consists of: types, documentation, optional imports, symbols."""

import inspect
import os
import pathlib
import re
import subprocess
import sys

import pytest

import p3dgrid

SOURCE = pathlib.Path(os.environ["P3DGRID_SOURCE"]) / "python"


def test_types_of_the_package_and_of_its_users(tmp_path):
    pytest.importorskip("mypy")
    (tmp_path / "user.py").write_text(
        "import p3dgrid\n"
        "grid: p3dgrid.Grid = p3dgrid.read_grid('grid')\n"
        "shape: tuple[int, int, int] = grid[0].extents\n"
        "wrong: int = grid[0].x\n")
    environment = {**os.environ, "MYPYPATH": str(SOURCE)}
    done = subprocess.run([sys.executable, "-m", "mypy", "--config-file", SOURCE / "mypy.ini",
                           "--cache-dir", tmp_path / "cache", SOURCE / "p3dgrid",
                           tmp_path / "user.py"],
                          capture_output=True, text=True, env=environment)
    errors = re.findall(r"^(.*?):(\d+): error", done.stdout, re.MULTILINE)
    assert errors == [(str(tmp_path / "user.py"), "4")], done.stdout + done.stderr
    assert (pathlib.Path(p3dgrid.__file__).parent / "py.typed").exists()


def test_everything_public_is_documented():
    names = set(p3dgrid.__all__) - {"__version__"}
    assert len(names) > 15
    for name in names:
        thing = getattr(p3dgrid, name)
        assert inspect.getdoc(thing), name
        methods = vars(thing).items() if inspect.isclass(thing) else ()
        for method, value in methods:
            trivial = method.startswith("_") or method in "xyz" or not inspect.isroutine(value)
            assert trivial or inspect.getdoc(value), f"{name}.{method}"


def test_the_stub_names_the_functions_of_the_extension():
    from p3dgrid import _p3dgrid
    stub = (SOURCE / "p3dgrid" / "_p3dgrid.pyi").read_text()
    named = set(re.findall(r"^def (\w+)\(", stub, re.MULTILINE))
    assert named == {name for name in vars(_p3dgrid) if not name.startswith("_")}


def test_optional_packages_are_imported_when_they_are_needed():
    code = ("import sys, p3dgrid\n"
            "found = {'vtkmodules', 'matplotlib', 'dask'} & set(sys.modules)\n"
            "assert not found, found")
    subprocess.run([sys.executable, "-c", code], check=True)


def test_the_extension_needs_no_functions_of_a_host():
    from p3dgrid import _p3dgrid
    done = subprocess.run(["nm", "--dynamic", "--demangle", _p3dgrid.__file__],
                          capture_output=True, text=True, check=True)
    assert not re.search(r" U .*mod_", done.stdout)
    exported = re.findall(r" [TDBW] (.*)$", done.stdout, re.MULTILINE)
    assert exported == ["PyInit__p3dgrid"]
