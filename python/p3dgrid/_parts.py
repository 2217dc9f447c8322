"""Parts of grids and solutions: blocks, and ranges of indices."""

from __future__ import annotations

import operator
from collections.abc import Iterable
from typing import Any, NamedTuple, Optional, Union

import numpy

from . import _p3dgrid
from ._arrays import Array
from ._errors import Error, refuse
from ._forms import Extents

Indices = Union[str, int, slice, None]
BlockNumbers = Union[str, int, slice, Iterable[int], None]


class Steps(NamedTuple):
    """Indices in one direction: `first`, `first + step` and so on up to `last`, counted from 0."""

    first: int
    last: int
    step: int


Part = tuple[Steps, Steps, Steps]  # in i, j and k


def points_of(array: Array, part: Part) -> Array:
    """A copy of the points of a part, in Fortran order."""
    return numpy.array(array[tuple(slice(first, last + 1, step) for first, last, step in part)],
                       order="F")


def part_of(extents: Extents, ranges: Iterable[Indices], uneven: bool, place: str = "") -> Part:
    """The part of a block that ranges of its indices describe.

    place  begins the message of an error
    """
    i, j, k = (_steps(f"{place}{direction}={given!r}", given, extent, uneven)
               for direction, given, extent in zip("ijk", ranges, extents))
    return i, j, k


def parts_of(extents: list[Extents], blocks: BlockNumbers, ranges: Iterable[Indices],
             uneven: bool) -> list[tuple[int, Part]]:
    """The selected blocks, counted from 0, with the part of each."""
    ranges = list(ranges)
    return [(number, part_of(extents[number], ranges, uneven, f"blocks[{number}]: "))
            for number in _numbers(blocks, len(extents))]


def _steps(what: str, given: Indices, extent: int, uneven: bool) -> Steps:
    if given is None:
        return Steps(0, extent - 1, 1)
    try:
        first, last, step = _asked(what, given, extent)
    except TypeError:
        raise refuse("", f"{what}: expected a text, a number or a slice") from None
    if not 0 <= first < extent or not 0 <= last < extent:
        raise refuse("", f"{what} is not within the {extent} points of the block")
    if last < first:
        raise refuse("", f"{what} selects no points")
    reached = last - (last - first) % step
    if reached != last and not uneven:
        raise refuse("", f"{what} misses its last point: steps of {step} reach index {reached}, "
                     f"counted from 0, and it is {last}; uneven=True leaves it out")
    return Steps(first, reached, min(step, extent))  # the library's integers have 32 bits


def _asked(what: str, given: Any, extent: int) -> Steps:
    """Indices counted from 0, which may be outside of the block."""
    if isinstance(given, str):
        known = _p3dgrid.indices_in(given, extent)
        if known is None:
            raise refuse("", f"{what} is no index range such as '5', 'last', '1:33' or '1:last:2', "
                         "counted from 1")
        return Steps(*known)
    if isinstance(given, slice):
        step = 1 if given.step is None else operator.index(given.step)
        if step < 1:
            raise refuse("", f"{what}: found a step of {step}, expected at least 1")
        first = 0 if given.start is None else _from_start(given.start, extent)
        stop = extent if given.stop is None else _from_start(given.stop, extent)
        if stop == first and 0 <= first <= extent:
            raise refuse("", f"{what} selects no points")
        return Steps(first, stop - 1, step)
    index = _from_start(given, extent)
    return Steps(index, index, 1)


def _from_start(index: Any, count: int) -> int:
    """Python counts negative indices from the end."""
    number = operator.index(index)
    return number + count if number < 0 else number


def _numbers(given: Any, count: int) -> list[int]:
    if given is None:
        return list(range(count))
    what = f"blocks={given!r}"
    if isinstance(given, slice):
        return list(range(count)[given])
    if isinstance(given, str):
        ranges = _p3dgrid.numbers_in(given)
        if ranges is None:
            raise refuse("", f"{what} is no list of blocks such as '1,3-5', counted from 1")
        if any(last > count for _, last in ranges):
            raise _too_few(what, count)
        numbers = [number for first, last in ranges for number in range(first - 1, last)]
    else:
        try:
            listed = given if isinstance(given, Iterable) else [given]
            numbers = [_from_start(number, count) for number in listed]
        except TypeError:
            raise refuse("", f"{what}: expected a text, numbers or a slice") from None
    if not all(0 <= number < count for number in numbers):
        raise _too_few(what, count)
    return numbers


def _too_few(what: str, count: int) -> Error:
    blocks = f"{count} block" if count == 1 else f"{count} blocks"
    return refuse("", f"{what}: there are only {blocks}")
