"""The exception of this package."""

from __future__ import annotations

from typing import Any

from ._forms import Reading, reading_of


class Error(Exception):
    """A file cannot be read or written, or does not have the expected form.

    The text is one line with the file, the place and the reason. For programs the same is in:

    kind      "system", "damaged", "unknown", "ambiguous", "wrong_kind", "mismatch", "unsupported"
              or "argument"
    file      path
    reason    text; empty if `found` and `expected` tell it
    record    record that was read, from 1; 0 if none was
    line      line of a text file, from 1; 0 if unknown
    offset    byte of the file, from 0
    found     what the file holds there
    expected  what it should hold
    readings  the possible forms of an ambiguous file, or those that agree furthest
    """

    def __init__(self, text: str, *, kind: str = "argument", file: str = "", reason: str = "",
                 record: int = 0, line: int = 0, offset: int = 0, found: str = "",
                 expected: str = "", readings: Any = ()) -> None:
        super().__init__(text)
        self.kind = kind
        self.file = file
        self.reason = reason
        self.record = record
        self.line = line
        self.offset = offset
        self.found = found
        self.expected = expected
        self.readings = [reading if isinstance(reading, Reading) else reading_of(reading)
                         for reading in readings]

    def __reduce__(self) -> Any:
        return _restored, (str(self), self.__dict__)


def _restored(text: str, members: dict[str, Any]) -> Error:
    return Error(text, **members)


def refuse(file: str, reason: str, kind: str = "argument") -> Error:
    """The error for arguments that have no meaning."""
    return Error(f"{file}: {reason}" if file else reason, kind=kind, file=file, reason=reason)
