"""Arrays that are given to be written."""

from __future__ import annotations

from collections.abc import Iterable
from typing import Any

import numpy

from ._errors import Error

Array = numpy.ndarray[Any, numpy.dtype[Any]]


def _text(shape: tuple[int, ...]) -> str:
    return "x".join(map(str, shape))


def _invalid(what: str, found: str, expected: str) -> Error:
    text = f"{what}: found {found}, expected {expected}"
    return Error(text, kind="argument", found=found, expected=expected)


def as_reals(what: str, values: Any) -> Array:
    """Real numbers at the points of a block: an array of three dimensions. One of two dimensions is
    a block with a single k plane."""
    array = numpy.asarray(values)
    if array.dtype.kind not in "fiub":
        raise _invalid(what, f"values of type {array.dtype}", "real numbers")
    if array.ndim == 2:
        array = array[:, :, numpy.newaxis]
    if array.ndim != 3:
        raise _invalid(what, f"an array of {array.ndim} dimensions", "one of two or three")
    return array


def as_blanking(what: str, values: Any) -> Array:
    """Blanking values: integers of 32 bits, whatever their type is."""
    array = as_reals(what, values)
    if array.dtype.kind == "f":
        raise _invalid(what, f"values of type {array.dtype}", "integers")
    limits = numpy.iinfo(numpy.int32)
    if array.size > 0 and array.dtype.itemsize >= 4 and array.dtype != numpy.int32:
        least, most = int(array.min()), int(array.max())
        if least < limits.min or most > limits.max:
            raise _invalid(what, f"values from {least} to {most}", "integers of 32 bits")
    return array


def require_shape(what: str, array: Array, shape: tuple[int, ...]) -> None:
    if array.shape != shape:
        raise _invalid(what, f"{_text(array.shape)} points", _text(shape))


def precision_of(arrays: Iterable[Array]) -> str:
    """The precision that holds all values: single if none needs double."""
    single = all(array.dtype.kind == "f" and array.dtype.itemsize <= 4 for array in arrays)
    return "single" if single else "double"
