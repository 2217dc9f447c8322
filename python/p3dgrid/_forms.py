"""Forms of files: what must be known to read them."""

from __future__ import annotations

from collections.abc import Iterable, Mapping
from dataclasses import dataclass, fields
from typing import Any, Optional, Union

Extents = tuple[int, int, int]
Section = tuple[int, int]


@dataclass(frozen=True)
class _Form:
    """Members that both kinds of files have. None stands for what a file of this form has not."""

    format: str = "unformatted"  # or "formatted" (text) or "binary"
    precision: Optional[str] = "single"  # or "double"
    byte_order: Optional[str] = "little"  # or "big"
    marker_bytes: Optional[int] = 4  # or 8, of unformatted files
    dimensions: int = 3  # or 2
    multiblock: Optional[bool] = True  # the file begins with its number of blocks

    def members(self) -> dict[str, Any]:
        """The members by name, as the functions that read and write take them."""
        return {field.name: getattr(self, field.name) for field in fields(self)}


@dataclass(frozen=True)
class GridForm(_Form):
    """The form of a grid file."""

    iblank: bool = False  # each block ends with its blanking values


@dataclass(frozen=True)
class RestartForm(_Form):
    """The form of a restart (flow-solution) file."""

    layout: Union[int, str] = 2  # 0, 1, 2, 3, 100, 101, 102 or "overflow"
    sections: Optional[tuple[Section, ...]] = None  # first and last variable of each record


Form = Union[GridForm, RestartForm]


def form_of(members: Mapping[str, Any]) -> Form:
    """The form that a dictionary of its members describes."""
    return RestartForm(**members) if "layout" in members else GridForm(**members)


@dataclass(frozen=True)
class Reading:
    """One interpretation of a file, and how far the file agrees with it."""

    form: Form
    extents: Optional[list[Extents]]  # of the blocks; None if unknown
    description: str  # "grid, binary, ..."
    agreement: str  # "whole", "padded", "longer", "remark", "so_far", "cut" or "other"
    difference: str  # as part of a sentence
    records: int  # that it expects
    checked: bool  # False if only the header could be compared
    triplets: Optional[bool]  # blocks begin with their triplets; None if that is unknown

    @property
    def is_grid(self) -> bool:
        """Whether the form is that of a grid."""
        return isinstance(self.form, GridForm)


def reading_of(members: Mapping[str, Any]) -> Reading:
    known: dict[str, Any] = {**members, "form": form_of(members["form"])}
    return Reading(**known)


@dataclass(frozen=True)
class Detection:
    """What a file can be."""

    fitting: list[Reading]  # readings that agree with the file; with several it is ambiguous
    nearest: list[Reading]  # if none fits: those that agree furthest
    reason: str  # if one fits: what shows that it is right
    foreign: str  # a form that cannot be read
    damage: str  # damage of the header
    beginning: str  # beginning of the file
    size: int  # bytes of the file
    bytes_read: int  # bytes read from it

    @property
    def form(self) -> Optional[Form]:
        """The form, if there is exactly one."""
        return self.fitting[0].form if len(self.fitting) == 1 else None


def detection_of(members: Mapping[str, Any]) -> Detection:
    lists: dict[str, Any] = {name: [reading_of(reading) for reading in members[name]]
                             for name in ("fitting", "nearest")}
    return Detection(**{**members, **lists})


def as_extents(extents: Iterable[Any]) -> list[Extents]:
    """A list of three numbers for each block."""
    return [(int(i), int(j), int(k)) for i, j, k in extents]
