"""Compressed files, and output files that appear complete or not at all."""

from __future__ import annotations

import contextlib
import gzip
import os
import shutil
import stat
import tempfile
from collections.abc import Iterator
from typing import Any, Union

from ._errors import Error

Path = Union[str, "os.PathLike[str]", bytes]

_GZIP = b"\x1f\x8b\x08"


def is_compressed(path: Path) -> bool:
    """Whether a regular file begins like one of gzip."""
    try:
        if not stat.S_ISREG(os.stat(path).st_mode):
            return False
        with open(path, "rb") as file:
            return file.read(len(_GZIP)) == _GZIP
    except OSError:
        return False  # the library reports it


@contextlib.contextmanager
def readable(path: Path) -> Iterator[bytes]:
    """The path of the file, or that of an unpacked copy while it is needed."""
    name = os.fsencode(path)
    if not is_compressed(name):
        yield name
        return
    with tempfile.NamedTemporaryFile(prefix="p3dgrid-") as copy:
        try:
            with gzip.open(name) as packed:
                shutil.copyfileobj(packed, copy, 1 << 20)
        except (OSError, EOFError) as error:
            file = os.fsdecode(name)
            reason = f"cannot be unpacked: {error}"
            raise Error(f"{file}: {reason}", kind="damaged", file=file, reason=reason) from error
        copy.flush()
        with _named(os.fsencode(copy.name), name):
            yield os.fsencode(copy.name)


@contextlib.contextmanager
def writable(path: Path) -> Iterator[bytes]:
    """A path to write to. What is written replaces the file when all has succeeded; the contents
    of a name that ends in .gz are compressed. Devices and pipes are written directly."""
    target = os.path.realpath(os.fsencode(path))
    if os.path.exists(target) and not os.path.isfile(target):
        yield target
        return
    shown = os.fsdecode(path)
    unfinished = os.path.join(os.path.dirname(target), b".p3dgrid-" + os.urandom(8).hex().encode())
    try:
        os.close(os.open(unfinished, os.O_CREAT | os.O_EXCL | os.O_WRONLY, 0o666))
    except OSError as error:
        reason = f"cannot be written in its folder: {error.strerror}"
        raise Error(f"{shown}: {reason}", kind="system", file=shown, reason=reason) from error
    try:
        with _named(unfinished, path):
            yield unfinished
        if target.endswith(b".gz"):
            _compress(unfinished)
        with contextlib.suppress(FileNotFoundError):
            os.chmod(unfinished, stat.S_IMODE(os.stat(target).st_mode))
        os.replace(unfinished, target)
    except BaseException:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(unfinished)
        raise


def _compress(path: bytes) -> None:
    """Replaces the contents of a file by the same compressed."""
    packed = path + b".gz"
    try:
        with open(path, "rb") as plain, open(packed, "xb") as file:
            with gzip.GzipFile("", "wb", 6, file, mtime=0) as stream:
                shutil.copyfileobj(plain, stream, 1 << 20)
        os.replace(packed, path)
    except BaseException:
        with contextlib.suppress(FileNotFoundError):
            os.unlink(packed)
        raise


def renamed(error: Error, copy: bytes, original: Path) -> Error:
    """An error of a copy, with the name of the original."""
    before, after = os.fsdecode(copy), os.fsdecode(original)
    if error.file != before or before == after:
        return error
    members: dict[str, Any] = {**error.__dict__, "file": after}
    return Error(str(error).replace(before, after, 1), **members)


@contextlib.contextmanager
def _named(copy: bytes, original: Path) -> Iterator[None]:
    """Errors of a copy name the original."""
    try:
        yield
    except Error as error:
        raise renamed(error, copy, original) from None
