"""Detection of forms and of damage."""

from __future__ import annotations

import os
from typing import Any, Optional

from . import _p3dgrid
from ._errors import Error
from ._forms import Detection, detection_of
from ._paths import Path, readable, renamed
from ._solution import extents_of


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


def check(path: Path, grid: Any = None, **form: Any) -> list[Error]:
    """Looks for damage in a file and returns what is wrong with it, without raising it: nothing for
    a sound file. An ambiguous file, and one that cannot be opened, is raised.

    grid  of a restart file: its Grid, extents, or the path of a grid file, which is checked too;
          each block whose extents differ is returned
    form  known members of the form
    """
    with readable(path) as name:
        if grid is None and not form:
            found = _p3dgrid.check(name)
        elif grid is None and "layout" not in form and "sections" not in form:
            found = _p3dgrid.check_grid(name, form)
        elif isinstance(grid, (str, bytes, os.PathLike)):
            with readable(grid) as of_grid:
                found = [renamed(error, of_grid, grid)
                         for error in _p3dgrid.check_pair(of_grid, name, form)]
        else:
            found = _p3dgrid.check_solution(name, form, extents_of(grid))
        return [renamed(error, name, path) for error in found]
