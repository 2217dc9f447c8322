"""Lazy arrays of dask. Chunks are read, not mapped, so that they count as memory of a worker only
while it processes them."""

from __future__ import annotations

import os
from typing import Any, Optional

import dask.array
import numpy
from dask.base import tokenize

from ._arrays import Array
from ._files import GridFile, Place, SolutionFile, StoredFile
from ._forms import Extents
from ._solution import Key, number_of


def _planes(place: Place, first: int, last: int) -> Array:
    return place.planes(first, last)


def _whole(file: StoredFile[Any], block: int, key: Any) -> Array:
    read = file.read_block(block)
    array: Array = getattr(read, key) if isinstance(key, str) else read[key]
    return array


def _lazy(name: str, tasks: list[Any], chunks: Any, dtype: Any) -> Any:
    graph = {(name, 0, 0, number): task for number, task in enumerate(tasks)}
    return dask.array.Array(graph, name, chunks, dtype)


def _from_place(place: Place, chunk_bytes: int) -> Any:
    """Chunks are the tasks of one array."""
    i, j, k = place.extents
    dtype = place.dtype.newbyteorder("=")
    if place.stored.count == 0:
        return dask.array.zeros(place.extents, dtype=dtype)
    step = max(1, chunk_bytes // (i * j * dtype.itemsize))
    ends = [(first, min(first + step, k)) for first in range(0, k, step)]
    status = os.stat(place.path)
    name = "p3dgrid-" + tokenize(place, status.st_mtime_ns, status.st_size, step)
    tasks = [(_planes, place, first, last) for first, last in ends]
    return _lazy(name, tasks, ((i,), (j,), tuple(b - a for a, b in ends)), dtype)


def _of(file: StoredFile[Any], block: int, content: str, number: int, key: Any, dtype: Any,
        chunk_bytes: int) -> Any:
    extents = file.extents[block]
    if not file.is_mapped:
        status = os.stat(file.path)
        name = "p3dgrid-" + tokenize(file.path, status.st_mtime_ns, status.st_size, block, key)
        return _lazy(name, [(_whole, file, block, key)], tuple((n,) for n in extents), dtype)
    place = file.place(block, content, number)
    if place is None:
        return dask.array.zeros(extents, dtype=dtype)
    return _from_place(place, chunk_bytes)


class LazyBlock:
    """A block of a grid with arrays of dask: x, y, z and iblank or None."""

    def __init__(self, file: GridFile, number: int, chunk_bytes: int) -> None:
        self.extents: Extents = file.extents[number]
        reals = file.real().newbyteorder("=")
        self.x, self.y, self.z = (
            _of(file, number, "coordinate", axis, name, reals, chunk_bytes)
            for axis, name in enumerate("xyz", 1))
        self.iblank: Optional[Any] = None
        if file.form.iblank:
            self.iblank = _of(file, number, "iblank", 1, "iblank", numpy.dtype("i4"), chunk_bytes)


class LazySolutionBlock:
    """A block of a solution with arrays of dask: variables by number or name."""

    def __init__(self, file: SolutionFile, number: int, chunk_bytes: int) -> None:
        self.extents: Extents = file.extents[number]
        self._names = file.names
        self._file, self._number, self._chunk_bytes = file, number, chunk_bytes

    def __getitem__(self, key: Key) -> Any:
        number = number_of(key, self._names)
        file = self._file
        if file.is_mapped and number not in file[self._number].numbers:
            raise KeyError(f"block {self._number} holds no variable {number}")
        return _of(file, self._number, "variable", number, number,
                   file.real().newbyteorder("="), self._chunk_bytes)


def lazy_grid(file: GridFile, chunk_bytes: int) -> list[LazyBlock]:
    return [LazyBlock(file, number, chunk_bytes) for number in range(len(file))]


def lazy_solution(file: SolutionFile, chunk_bytes: int) -> list[LazySolutionBlock]:
    return [LazySolutionBlock(file, number, chunk_bytes) for number in range(len(file))]
