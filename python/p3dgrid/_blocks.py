"""Sequences of blocks."""

from __future__ import annotations

from collections.abc import Iterator
from typing import Generic, Protocol, TypeVar

from ._forms import Extents


class HasExtents(Protocol):
    """A block."""

    @property
    def extents(self) -> Extents:
        """Points in the three directions."""


BlockT = TypeVar("BlockT", bound=HasExtents)


class Blocks(Generic[BlockT]):
    """The blocks of a grid or of a solution, in file order."""

    blocks: list[BlockT]

    @property
    def extents(self) -> list[Extents]:
        """Points of each block in the three directions."""
        return [block.extents for block in self.blocks]

    def __len__(self) -> int:
        return len(self.blocks)

    def __iter__(self) -> Iterator[BlockT]:
        return iter(self.blocks)

    def __getitem__(self, number: int) -> BlockT:
        """A block, counted from 0."""
        return self.blocks[number]
