"""Files that are open: their values are mapped or read on access."""

from __future__ import annotations

import os
from collections.abc import Iterator, Mapping
from dataclasses import dataclass
from typing import Any, Generic, Optional, TypeVar, Union

import numpy

from . import _p3dgrid
from ._arrays import Array
from ._errors import Error, refuse
from ._forms import Extents, GridForm, RestartForm, as_extents
from ._grid import Block, Grid, read_grid
from ._parts import BlockNumbers, Indices, Part, part_of, parts_of
from ._paths import Path, is_compressed, readable
from ._solution import (Key, Solution, SolutionBlock, block_of, extents_of, holds, names_in,
                        number_of, parameters_of, read_solution)

_AXES = {"x": 1, "y": 2, "z": 3}
_CODES = {"integer4": "i4", "real4": "f4", "real8": "f8"}


@dataclass(frozen=True)
class StoredArray:
    """The place of an array in its file.

    content  "coordinate", "iblank", "parameters", "variable" or "triplets"
    number   from 1: of the coordinate, the variable, the value of the triplets or the first flow
             parameter
    kind     "integer4", "real4" or "real8"
    count    number of values
    ranges   their bytes in file order: offset and number of bytes. The markers of sub-records
             divide an array into several, possibly in the middle of a value.
    """

    content: str
    number: int
    kind: str
    count: int
    ranges: tuple[tuple[int, int], ...]

    def dtype(self, byte_order: str) -> numpy.dtype[Any]:
        """The type of its values in a file of this byte order, "little" or "big"."""
        return numpy.dtype((">" if byte_order == "big" else "<") + _CODES[self.kind])

    def bytes_of(self, first: int, last: int) -> list[tuple[int, int]]:
        """The byte ranges of the values from `first`, counted from 0, to the one before `last`."""
        size = numpy.dtype(_CODES[self.kind]).itemsize
        begin, end, before = first * size, last * size, 0
        found = []
        for offset, length in self.ranges:
            low, high = max(begin - before, 0), min(end - before, length)
            if low < high:
                found.append((offset + low, high - low))
            before += length
        return found


def _read_exactly(file: int, target: Array, offset: int, path: bytes) -> None:
    while target.size > 0:
        count = os.preadv(file, [target.data], offset)
        if count == 0:
            shown = os.fsdecode(path)
            raise refuse(shown, f"ends at byte {offset}, within an array", "damaged")
        target, offset = target[count:], offset + count


@dataclass(frozen=True)
class Place:
    """All data that is needed to read an array; small, so that it can be sent to workers."""

    path: bytes
    stored: StoredArray
    dtype: numpy.dtype[Any]
    extents: Extents

    def mapped(self) -> Array:
        """A view of the file."""
        if len(self.stored.ranges) > 1:
            shown = os.fsdecode(self.path)
            first = sum(self.stored.ranges[0])
            raise refuse(shown, f"record markers interrupt the array at byte {first}; read() "
                         "copies it, and dask() copies it in pieces", "unsupported")
        if self.stored.count == 0:
            return numpy.empty(self.extents, self.dtype, order="F")
        return numpy.memmap(self.path, self.dtype, "r", self.stored.ranges[0][0], self.extents,
                            order="F")

    def planes(self, first: int, last: int) -> Array:
        """A copy of the k planes from `first` to the one before `last`, in native byte order."""
        i, j, _ = self.extents
        values = numpy.empty(i * j * (last - first), self.dtype)
        target = values.view(numpy.uint8)
        file = os.open(self.path, os.O_RDONLY | os.O_CLOEXEC)
        try:
            for offset, length in self.stored.bytes_of(i * j * first, i * j * last):
                _read_exactly(file, target[:length], offset, self.path)
                target = target[length:]
        finally:
            os.close(file)
        if not self.dtype.isnative:
            values = values.byteswap(True).view(self.dtype.newbyteorder())
        return values.reshape((i, j, last - first), order="F")


def _zeros(extents: Extents, dtype: Any) -> Array:
    """Values that a file of two dimensions leaves out."""
    return numpy.broadcast_to(numpy.zeros((), dtype), extents)


BlockInMemory = TypeVar("BlockInMemory", Block, SolutionBlock)


class StoredFile(Generic[BlockInMemory]):
    """The common base of grid and solution files."""

    def __init__(self, path: Path, form: Any, read: Mapping[str, Any]) -> None:
        self.path = os.path.abspath(os.fsencode(path))
        self.form = form
        self.reason: str = read["reason"]
        self.extents = as_extents(read["extents"])
        self.compressed = is_compressed(path)
        self._index = None if self.compressed else read["index"]
        self._last: Optional[tuple[int, BlockInMemory]] = None

    @property
    def index(self) -> list[list[StoredArray]]:
        """The byte ranges of the arrays of each block; an error for text and compressed files."""
        if self._index is None:
            what = "compressed files have" if self.compressed else "text has"
            raise refuse(os.fsdecode(self.path), f"{what} no index", "unsupported")
        return [[StoredArray(*array) for array in block] for block in self._index]

    @property
    def is_mapped(self) -> bool:
        """Whether arrays are views of the file. Those of text and compressed files are read."""
        return self._index is not None

    def __getstate__(self) -> dict[str, Any]:
        return {**self.__dict__, "_last": None}

    def __len__(self) -> int:
        return len(self.extents)

    def __repr__(self) -> str:
        return f"<{type(self).__name__} {os.fsdecode(self.path)}: {len(self)} blocks, {self.form}>"

    def place(self, block: int, content: str, number: int) -> Optional[Place]:
        assert self._index is not None
        for array in self._index[block]:
            if array[0] == content and array[1] == number:
                stored = StoredArray(*array)
                dtype = stored.dtype(self.form.byte_order)
                return Place(self.path, stored, dtype, self.extents[block])
        return None

    def block(self, number: int) -> BlockInMemory:
        """A block in memory. The last one of text is cached, because its arrays are
        accessed one by one, and each access would read the file from its beginning."""
        if self._last is not None and self._last[0] == number:
            return self._last[1]
        block = self.read_block(number)
        if not self.is_mapped:
            self._last = (number, block)
        return block

    def read_block(self, number: int, part: Optional[Part] = None) -> BlockInMemory:
        """Reads a block, or a part of it, into memory."""
        raise NotImplementedError

    def is_viewable(self, block: int) -> bool:
        """Whether each array of the block is one piece of the file."""
        return self._index is not None and all(
            len(StoredArray(*array).ranges) <= 1 for array in self._index[block])

    def real(self) -> numpy.dtype[Any]:
        """The type of reals in the file; that of memory for text."""
        if self.form.precision is None:
            return numpy.dtype("f8")
        order = ">" if self.form.byte_order == "big" else "<"
        return numpy.dtype(order + ("f8" if self.form.precision == "double" else "f4"))


class GridFile(StoredFile[Block]):
    """A grid file of which only the header has been read: a sequence of blocks.

    path     absolute, as bytes
    form     of the file
    reason   what shows that this is its form
    extents  points of each block in the three directions
    """

    form: GridForm

    def __getitem__(self, number: int) -> GridFileBlock:
        """A block, counted from 0."""
        return GridFileBlock(self, range(len(self))[number])

    def __iter__(self) -> Iterator[GridFileBlock]:
        return (self[number] for number in range(len(self)))

    def read(self) -> Grid:
        """The grid in memory."""
        return read_grid(self.path, **self.form.members())

    def extract(self, blocks: BlockNumbers = None, i: Indices = None, j: Indices = None,
                k: Indices = None, uneven: bool = False) -> Grid:
        """Reads some blocks, or a range of points of each; see `Grid.extract`."""
        parts = parts_of(self.extents, blocks, (i, j, k), uneven)
        return Grid([self.read_block(number, part) for number, part in parts], self.form)

    def _views(self) -> Grid:
        """The grid with views of the file where there can be some."""
        return Grid(self, self.form, self.reason) if self.is_mapped else self.read()

    def dask(self, chunk_bytes: int = 1 << 26) -> Any:
        """The same with lazy arrays of dask, chunked by k planes of at most `chunk_bytes`, or one.
        Text and compressed files have one chunk for each block."""
        from ._lazy import lazy_grid
        return lazy_grid(self, chunk_bytes)

    def read_block(self, number: int, part: Optional[Part] = None) -> Block:
        with readable(self.path) as name:
            return Block(*_p3dgrid.read_grid_block(name, self.form.members(), number, part))


class GridFileBlock:
    """One block of a grid file. Its arrays are read-only views of the file, in its byte order and
    precision, without a copy; those of text are read on access."""

    def __init__(self, file: GridFile, number: int) -> None:
        self.file = file
        self.number = number

    @property
    def extents(self) -> Extents:
        """Points in the three directions."""
        return self.file.extents[self.number]

    @property
    def x(self) -> Array:
        return self._coordinate("x")

    @property
    def y(self) -> Array:
        return self._coordinate("y")

    @property
    def z(self) -> Array:
        return self._coordinate("z")

    @property
    def iblank(self) -> Optional[Array]:
        """Blanking values; None for a grid without."""
        if not self.file.form.iblank:
            return None
        if not self.file.is_mapped:
            return self.read().iblank
        place = self.file.place(self.number, "iblank", 1)
        return None if place is None else place.mapped()

    def read(self) -> Block:
        """The block in memory."""
        return self.file.block(self.number)

    def extract(self, i: Indices = None, j: Indices = None, k: Indices = None,
                uneven: bool = False) -> Block:
        """Reads a range of points; see `Block.extract`."""
        part = part_of(self.extents, (i, j, k), uneven)
        return self.file.read_block(self.number, part)

    def _views(self) -> Block:
        if not self.file.is_viewable(self.number):
            return self.read()
        return Block(self.x, self.y, self.z, self.iblank)

    def _coordinate(self, name: str) -> Array:
        if not self.file.is_mapped:
            coordinate: Array = getattr(self.read(), name)
            return coordinate
        place = self.file.place(self.number, "coordinate", _AXES[name])
        return _zeros(self.extents, self.file.real()) if place is None else place.mapped()

    def __repr__(self) -> str:
        return f"<GridFileBlock {self.number} of {self.file}>"


class SolutionFile(StoredFile[SolutionBlock]):
    """A solution file of which only the header has been read: a sequence of blocks.

    path     absolute, as bytes
    form     of the file
    reason   what shows that this is its form
    extents  points of each block in the three directions
    header   values of its header by name
    flags    layout 101: the flags after the block
    """

    form: RestartForm

    def __init__(self, path: Path, form: Any, read: Mapping[str, Any],
                 grid: Optional[list[Extents]]) -> None:
        super().__init__(path, form, read)
        self.header: dict[str, float] = read["header"]
        self.flags: list[int] = read["flags"]
        self.has_triplets: bool = read["triplets"]
        self.grid = grid

    @property
    def names(self) -> tuple[str, ...]:
        """The names that the layout has for its first variables."""
        return names_in(self.form.layout)

    def __getitem__(self, number: int) -> SolutionFileBlock:
        """A block, counted from 0."""
        return SolutionFileBlock(self, range(len(self))[number])

    def __iter__(self) -> Iterator[SolutionFileBlock]:
        return (self[number] for number in range(len(self)))

    def read(self) -> Solution:
        """The solution in memory."""
        return read_solution(self.path, self.grid, **self.form.members())

    def extract(self, blocks: BlockNumbers = None, i: Indices = None, j: Indices = None,
                k: Indices = None, uneven: bool = False) -> Solution:
        """Reads some blocks, or a range of points of each; see `Grid.extract`."""
        parts = parts_of(self.extents, blocks, (i, j, k), uneven)
        taken = [self.read_block(number, part) for number, part in parts]
        return Solution(taken, self.form, self.header, self.flags)

    def _views(self) -> Solution:
        """The solution with views of the file where there can be some."""
        if not self.is_mapped:
            return self.read()
        return Solution(self, self.form, self.header, self.flags, self.reason)

    def dask(self, chunk_bytes: int = 1 << 26) -> Any:
        """The same with lazy arrays of dask, chunked by k planes of at most `chunk_bytes`, or one.
        Text and compressed files have one chunk for each block."""
        from ._lazy import lazy_solution
        return lazy_solution(self, chunk_bytes)

    def read_block(self, number: int, part: Optional[Part] = None) -> SolutionBlock:
        with readable(self.path) as name:
            read = _p3dgrid.read_solution_block(name, self.form.members(), self.grid, number, part)
        return block_of(read, self.form.layout)


class SolutionFileBlock:
    """One block of a solution file: variables by number, from 1, or by name, as in
    `block["rho"]`. They are read-only views of the file, in its byte order and precision, without a
    copy; those of text are read on access."""

    def __init__(self, file: SolutionFile, number: int) -> None:
        self.file = file
        self.number = number

    @property
    def extents(self) -> Extents:
        """Points in the three directions."""
        return self.file.extents[self.number]

    @property
    def numbers(self) -> list[int]:
        """The numbers of its variables."""
        if not self.file.is_mapped:
            return list(self.read().variables)
        held = [array.number for array in self.file.index[self.number]
                if array.content == "variable"]
        absent = 4 if self.file.form.dimensions == 2 and self.file.names else 0
        return sorted(held + [absent] if absent else held)

    @property
    def parameters(self) -> dict[str, float]:
        """The flow parameters by name: mach, alpha, reynolds, time and others."""
        with readable(self.file.path) as name:
            return parameters_of(_p3dgrid.read_parameters(
                name, self.file.form.members(), self.file.grid, self.number))

    @property
    def triplets(self) -> list[Array]:
        """Layouts 100 and 101: three arrays; else none."""
        if not self.file.has_triplets:
            return []
        if not self.file.is_mapped:
            return self.read().triplets
        places = [self.file.place(self.number, "triplets", n) for n in (1, 2, 3)]
        return [place.mapped() for place in places if place is not None]

    def __getitem__(self, key: Key) -> Array:
        number = number_of(key, self.file.names)
        if not self.file.is_mapped:
            return self.read()[number]
        place = self.file.place(self.number, "variable", number)
        if place is not None:
            return place.mapped()
        if number not in self.numbers:
            raise KeyError(f"block {self.number} holds no variable {number}")
        return _zeros(self.extents, self.file.real())

    def __contains__(self, key: Key) -> bool:
        return holds(key, self.file.names, self.numbers)

    def __iter__(self) -> Iterator[Array]:
        return (self[number] for number in self.numbers)

    def __len__(self) -> int:
        return len(self.numbers)

    def read(self) -> SolutionBlock:
        """The block in memory."""
        return self.file.block(self.number)

    def extract(self, i: Indices = None, j: Indices = None, k: Indices = None,
                uneven: bool = False) -> SolutionBlock:
        """Reads a range of points; see `Block.extract`."""
        part = part_of(self.extents, (i, j, k), uneven)
        return self.file.read_block(self.number, part)

    def _views(self) -> SolutionBlock:
        if not self.file.is_viewable(self.number):
            return self.read()
        variables = {number: self[number] for number in self.numbers}
        return SolutionBlock(variables, self.parameters, self.triplets, self.file.names)

    def __repr__(self) -> str:
        return f"<SolutionFileBlock {self.number} of {self.file}>"


def open_grid(path: Path, **form: Any) -> GridFile:
    """Opens a grid file; see `open`."""
    with readable(path) as name:
        read = _p3dgrid.open_grid(name, form)
    return GridFile(path, GridForm(**read["form"]), read)


def open_solution(path: Path, grid: Any = None, **form: Any) -> SolutionFile:
    """Opens a solution file; see `open`."""
    extents = extents_of(grid)
    with readable(path) as name:
        read = _p3dgrid.open_solution(name, form, extents)
    return SolutionFile(path, RestartForm(**read["form"]), read, extents)


def open(path: Path, grid: Any = None, **form: Any) -> Union[GridFile, SolutionFile]:
    """Opens a grid or solution file. Nothing but its header stays in memory, and of unformatted and
    binary files nothing but headers and record markers is read. Values are mapped, or read from
    text, on access. The objects are small and can be pickled.

    grid  of a solution: its Grid, the path of one, or extents
    form  known members of the form, as in `GridForm` or `RestartForm`
    """
    if grid is not None or "layout" in form or "sections" in form:
        return open_solution(path, grid, **form)
    if "iblank" in form:
        return open_grid(path, **form)
    try:
        return open_grid(path, **form)
    except Error as error:
        if error.kind != "wrong_kind":
            raise
    return open_solution(path, **form)
