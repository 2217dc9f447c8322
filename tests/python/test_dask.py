"""Lazy arrays of dask: chunks, and files larger than the memory of the workers."""

import numpy
import pytest

import p3dgrid
from support import CODINGS, Coding, flow_arrays, grid_arrays, grid_bytes, solution_bytes, split

pytest.importorskip("dask.array")


@pytest.mark.parametrize("coding", CODINGS, ids=str)
def test_chunks_hold_the_values(tmp_path, coding):
    (tmp_path / "grid").write_bytes(grid_bytes(coding, True))
    (tmp_path / "flow").write_bytes(solution_bytes(coding))
    stated = {"dimensions": coding.dimensions}
    grid = p3dgrid.open(tmp_path / "grid", iblank=True, **stated).dask(chunk_bytes=1)
    flow = p3dgrid.open(tmp_path / "flow", layout=2, **stated).dask(chunk_bytes=1)
    for block, expected in zip(grid, grid_arrays(coding), strict=True):
        for array, values in zip((block.x, block.y, block.z, block.iblank), expected):
            assert array.shape == values.shape and array.dtype.isnative
            numpy.testing.assert_array_equal(array.compute(scheduler="sync"), values)
        if coding.format != "formatted":
            assert block.x.chunks[2] == (1,) * block.x.shape[2]
    for block, expected in zip(flow, flow_arrays(coding), strict=True):
        for name, values in zip(p3dgrid.SolutionBlock([]).names, expected, strict=True):
            numpy.testing.assert_array_equal(block[name].compute(scheduler="sync"), values)


def test_chunks_of_interrupted_arrays(tmp_path):
    coding = Coding(precision="double", byte_order="big")
    (tmp_path / "grid").write_bytes(split(grid_bytes(coding, False), ">", 50))
    for block, expected in zip(p3dgrid.open(tmp_path / "grid").dask(1), grid_arrays(coding)):
        numpy.testing.assert_array_equal(block.y.compute(scheduler="sync"), expected[1])


MIB = 1 << 20
SHAPE = (512, 512, 512)  # a coordinate of singles has 512 MiB, a solution of five variables 2.5 GiB
PLANE = SHAPE[0] * SHAPE[1] * 4


def sparse_solution(path, value):
    """A binary solution of zeros but for one energy."""
    coding = Coding("binary")
    head = coding.record(numpy.array([1])) + coding.record(numpy.array(SHAPE))
    head += coding.record(numpy.array([0.75, 0.0, 1e6, 0.0]))
    with open(path, "wb") as file:
        file.write(head)
        file.truncate(len(head) + 5 * SHAPE[2] * PLANE)
        file.seek(len(head) + 4 * SHAPE[2] * PLANE + 300 * PLANE)
        file.write(numpy.float32(value).tobytes())
    return p3dgrid.open(path, layout=2, format="binary", precision="single", byte_order="little",
                        multiblock=True, sections=((1, 5),))


def test_files_larger_than_the_memory_of_the_workers(tmp_path):
    distributed = pytest.importorskip("distributed")
    array = pytest.importorskip("dask.array")
    first, second = (sparse_solution(tmp_path / str(value), value) for value in (-3, 5))
    assert (tmp_path / "5").stat().st_size > 2 << 30
    settings = {"n_workers": 2, "threads_per_worker": 1, "memory_limit": 512 * MIB,
                "processes": True, "dashboard_address": None, "local_directory": tmp_path}
    with distributed.LocalCluster(**settings) as cluster, distributed.Client(cluster) as client:
        a, b = (file.dask(16 * MIB)[0] for file in (first, second))
        least = array.stack([a[number].min() for number in range(1, 6)]).min()
        most = array.stack([b[number].max() for number in range(1, 6)]).max()
        difference = b["e"] - a["e"]
        norm = array.sqrt((difference.astype("f8") ** 2).sum())
        found = client.compute([least, most, norm, difference[0, 0, 300]], sync=True)
        peaks = client.run(lambda: __import__("resource").getrusage(0).ru_maxrss * 1024)
    assert found == [-3, 5, 8, 8]
    assert len(peaks) == 2 and max(peaks.values()) < 512 * MIB
