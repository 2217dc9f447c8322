"""The example files of docs/formats.md, packed record by record without the library."""

import struct

GRID_BLOCKS = ((2, 2, 1), (1, 1, 2))
LITTLE = "<"
CODES = {"unformatted": 0, "formatted": 1, "binary": 2}


def length_of(rows):
    return sum(len(content) for content, _ in rows)


def marker(length):
    return struct.pack(LITTLE + "i", length)


class Field:
    """Values of one kind: `i` integer, `r` real of the file's precision, `d` double. `key` is the
    name under which the library returns them, None if it does not."""

    def __init__(self, label, kind, values, key=None):
        self.label, self.kind, self.values, self.key = label, kind, list(values), key


def kept(name, kind, values):
    """A field that has the same name on the page and in the library."""
    return Field(name, kind, values, name)


class Example:
    """A file: its form, its records, and the arguments to read and write it."""

    def __init__(self, name, encoding, reals, records, variant, blocks, count=True, sections="",
                 flags="999", limit=None):
        self.name, self.encoding, self.reals, self.records = name, encoding, reals, records
        shape = ",".join("x".join(map(str, extents)) for extents in blocks)
        form = [str(CODES[encoding]), str(reals), str(variant), str(int(count))]
        self.kind = "restart" if sections else "grid"
        self.to_read = form + ([shape, sections] if sections else [])
        self.to_write = form + ([shape, sections, flags] if sections else [shape])
        self.limit = limit  # longest sub-record, in bytes
        self.writable = not limit and not (sections and variant == 0)

    def code(self, field):
        return {"i": "i", "d": "d", "r": "d" if self.reals == 8 else "f"}[field.kind]

    def rows(self):
        """Lines of the page: bytes and their description."""
        for record in self.records:
            rows = [row for field in record for row in self.rows_of(field)]
            if self.encoding == "unformatted":
                yield from self.framed(rows)
            else:
                yield from rows

    def framed(self, rows):
        pieces = [[]]
        for row in rows:
            if self.limit and length_of(pieces[-1] + [row]) > self.limit:
                pieces.append([])
            pieces[-1].append(row)
        for number, piece in enumerate(pieces, 1):
            length = length_of(piece)
            goes_on, has_begun = number < len(pieces), number > 1
            more = ", and more" if goes_on else ""
            yield marker(-length if goes_on else length), f"marker: {length} bytes follow{more}"
            yield from piece
            yield marker(-length if has_begun else length), "marker"

    def rows_of(self, field):
        """At most 16 bytes per line."""
        code = self.code(field)
        at_a_time = 16 // struct.calcsize(code)
        for first in range(0, len(field.values), at_a_time):
            values = field.values[first:first + at_a_time]
            numbers = " ".join(f"{value:.10g}" for value in values)
            label = f"{field.label}: " if first == 0 else " " * (len(field.label) + 2)
            yield struct.pack(f"{LITTLE}{len(values)}{code}", *values), label + numbers

    def content(self):
        return b"".join(content for content, _ in self.rows())

    def expected(self):
        return {field.key: [float(value) for value in field.values]
                for record in self.records for field in record if field.key}


def grid_records(blocks, count, blanking):
    if count:
        yield [kept("blocks", "i", [len(blocks)])]
    yield [kept(f"extents of block {b}", "i", block) for b, block in enumerate(blocks, 1)]
    for b, (ni, nj, nk) in enumerate(blocks, 1):
        points = [(i, j, k) for k in range(nk) for j in range(nj) for i in range(ni)]
        record = [kept(f"x of block {b}", "r", [i + 2 * (b - 1) for i, j, k in points]),
                  kept(f"y of block {b}", "r", [0.5 * j for i, j, k in points]),
                  kept(f"z of block {b}", "r", [k + 0.25 for i, j, k in points])]
        if blanking:
            record.append(kept(f"blanking of block {b}", "i",
                               [0 if (i, j) == (1, 1) else 1 for i, j, k in points]))
        yield record


def planar(records):
    """The records of a file of two dimensions: without k extents, z and variable 4."""
    for record in records:
        fields = []
        for field in record:
            if field.label.startswith("extents"):
                field = Field(field.label, "i", field.values[:2])
            if not field.label.startswith(("z of", "variable 4")):
                fields.append(field)
        yield fields


def numbering(blocks):
    """Block number and the numbers of its points, for each block."""
    first = 1
    for b, (ni, nj, nk) in enumerate(blocks, 1):
        points = ni * nj * nk
        yield b, range(first, first + points)
        first += points


def variables(block, points, first, last):
    return [kept(f"variable {v} of block {block}", "r", [10 * v + p for p in points])
            for v in range(first, last + 1)]


def triplets(block, points):
    """Not compared, since whole reads do not return them from every file."""
    return [Field(f"value {c} of block {block}", "r", [-(10 * c + p) for p in points])
            for c in (1, 2, 3)]


STEPS = [kept("steps", "i", [400]), kept("step size", "r", [0.25])]


def layout_0():
    blocks = [(2, 1, 1)]
    (b, points), = numbering(blocks)
    yield [kept("version", "i", [3]), kept("equation set", "i", [1])]
    yield [Field("blocks", "i", [1]), kept("variables", "i", [2]),
           kept("time integration", "i", [2]), kept("switch ibeta", "i", [0]), *STEPS]
    yield [kept("sub-grid-scale model", "i", [1]),
           kept("flow parameters", "d", [1e6, 0.5, 2, 0, 1.4, 7, 0.72, 0.9])]
    yield [Field("extents of block 1", "i", blocks[0])]
    yield variables(b, points, 1, 2)
    yield [Field("variables 1 and 2, one time level older", "r", [9, 9, 9, 9])]


def layout_1(blocks):
    yield [*STEPS, Field("blocks", "i", [len(blocks)])]
    for b, extents in enumerate(blocks, 1):
        yield [Field(f"extents of block {b}", "i", extents)]
    for b, points in numbering(blocks):
        yield variables(b, points, 1, 2)
        yield variables(b, points, 3, 3)


def layout_2(blocks):
    yield [Field("blocks", "i", [len(blocks)])]
    yield [Field(f"extents of block {b}", "i", extents) for b, extents in enumerate(blocks, 1)]
    for b, points in numbering(blocks):
        yield [kept(f"parameters of block {b}", "r", [0.5, 2, 1e6, 0.25 * b])]
        yield variables(b, points, 1, 5)


def layout_3(blocks):
    yield [Field("blocks", "i", [len(blocks)])]
    yield [field for b, extents in enumerate(blocks, 1)
           for field in (Field(f"extents of block {b}", "i", extents),
                         kept(f"functions of block {b}", "i", [2]))]
    for b, points in numbering(blocks):
        yield variables(b, points, 1, 2)


def layout_100(blocks):
    yield [*STEPS, Field("blocks", "i", [len(blocks)])]
    for b, points in numbering(blocks):
        yield triplets(b, points) + variables(b, points, 1, 5)
        yield variables(b, points, 6, 6)


def layout_101(extents):
    (b, points), = numbering([extents])
    yield [Field("extents", "i", extents), *STEPS]
    yield triplets(b, points) + variables(b, points, 1, 5)
    yield [Field("flag: variables 6 to 8 follow", "i", [41])]
    yield variables(b, points, 6, 8)
    yield [Field("flag: the end", "i", [999])]


def layout_102(extents):
    (b, points), = numbering([extents])
    yield variables(b, points, 1, 2)
    yield variables(b, points, 3, 3)


ONE = [(2, 1, 1)]
PLANE = [(2, 2, 1)]
EXAMPLES = [
    Example("grid.p3d", "unformatted", 4, list(grid_records(GRID_BLOCKS, True, False)), 0,
            GRID_BLOCKS),
    Example("split.p3d", "unformatted", 4, list(grid_records(ONE, False, False)), 0, ONE,
            count=False, limit=16),
    Example("plain.bin", "binary", 8, list(grid_records(ONE, False, True)), 1, ONE, count=False),
    Example("layout-0.rst", "unformatted", 8, list(layout_0()), 0, ONE, sections="1-2"),
    Example("layout-1.rst", "unformatted", 4, list(layout_1(GRID_BLOCKS)), 1, GRID_BLOCKS,
            sections="1-2,3-3"),
    Example("layout-2.q", "unformatted", 4, list(layout_2(GRID_BLOCKS)), 2, GRID_BLOCKS,
            sections="1-5"),
    Example("layout-3.f", "binary", 4, list(layout_3(GRID_BLOCKS)), 3, GRID_BLOCKS,
            sections="1-2"),
    Example("layout-100.rst", "binary", 8, list(layout_100(ONE)), 100, ONE, sections="1-5,6-6"),
    Example("layout-101.rst", "unformatted", 4, list(layout_101(ONE[0])), 101, ONE,
            sections="1-5", flags="41,999"),
    Example("layout-102.rst", "binary", 8, list(layout_102(ONE[0])), 102, ONE,
            sections="1-2,3-3"),
    # The tests take the names for those of files of two dimensions.
    Example("plane.p3d", "unformatted", 4, list(planar(grid_records(PLANE, True, False))), 0,
            PLANE),
    Example("plane.q", "binary", 8, list(planar(layout_2(PLANE))), 2, PLANE, sections="1-5"),
]

# The library writes their text, so only the values are given here.
TEXTS = [
    Example("grid.txt", "formatted", 4, list(grid_records(GRID_BLOCKS, True, True)), 1,
            GRID_BLOCKS),
    Example("layout-2.txt", "formatted", 4, list(layout_2(GRID_BLOCKS)), 2, GRID_BLOCKS,
            sections="1-5"),
]


def text_rows(content):
    """The lines of a text file as rows of at most 16 bytes, each with its text."""
    for line in content.splitlines(keepends=True):
        for first in range(0, len(line), 16):
            part = line[first:first + 16]
            yield part, '"' + part.decode().replace("\n", "\\n") + '"'


def hex_block(rows):
    """Rows as shown on the page."""
    return "".join(f"{content.hex(' '):47} | {label}".rstrip() + "\n" for content, label in rows)


def bytes_of(block):
    """The bytes shown in a block of the page."""
    return b"".join(bytes.fromhex(line.split("|")[0]) for line in block.splitlines())
