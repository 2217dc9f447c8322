"""Detection of forms and of damage."""

from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, Optional

from . import _p3dgrid
from ._errors import Error
from ._forms import Detection, detection_of
from ._paths import Path, readable
from ._solution import extents_of


@dataclass(frozen=True)
class Finding:
    """Something that is wrong with a file."""

    file: str  # path
    text: str  # what is wrong, as part of a sentence
    kind: str = "damaged"  # as in `Error`
    record: int = 0  # from 1; 0 if unknown
    line: int = 0  # of a text file, from 1; 0 if unknown
    offset: int = 0  # byte of the file, from 0
    found: str = ""  # what the file holds there
    expected: str = ""  # what it should hold

    def __str__(self) -> str:
        return f"{self.file}: {self.text}"


def detect(path: Path, kind: Optional[str] = None, grid: Any = None, **form: Any) -> Detection:
    """Finds out what a file is, without reading its values into memory.

    kind  "grid" or "restart"; None for a file of unknown kind
    grid  of a restart file: its Grid, the path of one, or extents, for layouts without extents
    form  known members of the form
    """
    if kind not in (None, "grid", "restart"):
        raise ValueError(f'kind: found {kind!r}, expected "grid", "restart" or None')
    if kind is None and (form or grid is not None):
        kind = "grid" if "iblank" in form and grid is None else "restart"
    with readable(path) as name:
        return detection_of(_p3dgrid.detect(name, kind or "any", form, extents_of(grid)))


def check(path: Path, grid: Any = None, **form: Any) -> list[Finding]:
    """Looks for damage in a file and returns what is wrong with it: nothing for a sound one.

    An ambiguous file, and one that cannot be opened, is an `Error`.

    grid  of a restart file: its Grid, the path of one, or extents, with which it is compared
    form  known members of the form
    """
    restart = grid is not None or "layout" in form or "sections" in form
    with readable(path) as name:
        try:
            if not restart and "iblank" not in form:
                found = detection_of(_p3dgrid.detect(name, "any", {}, None)).form
                restart = found is not None and "layout" in found.members()
            return _findings(name, os.fsdecode(path), restart, form, extents_of(grid))
        except Error as error:
            if error.kind in ("system", "ambiguous", "argument"):
                raise
            shown = os.fsdecode(path)
            text = str(error).replace(os.fsdecode(name), shown, 1)
            return [Finding(shown, text.removeprefix(shown + ": "), error.kind, error.record,
                            error.line, error.offset, error.found, error.expected)]


def _findings(name: bytes, shown: str, restart: bool, form: dict[str, Any],
              extents: Any) -> list[Finding]:
    if restart:
        read = _p3dgrid.solution_summary(name, form, extents)
    else:
        read = _p3dgrid.grid_summary(name, form)
    difference = read["difference"]
    if not read["checked"] or read["agreement"] == "so_far":
        difference = _p3dgrid.compare(name, "restart" if restart else "grid", read["form"],
                                      read["extents"], read.get("triplets", False))
    elif read["agreement"] in ("whole", "padded"):
        difference = None
    return [Finding(shown, difference)] if difference else []
