"""Builds restart files byte by byte, in every layout and encoding."""

import copy
import struct

from support import NATIVE, SIGNS, record, single

LAYOUTS = (1, 2, 3, 100, 101, 102)


class RestartForm:
    """The form of a restart file."""

    def __init__(self, layout=2, encoding="unformatted", double=False, multiblock=True,
                 order=NATIVE):
        self.order = order
        self.layout = layout
        self.encoding = encoding
        self.double = double
        self.multiblock = multiblock

    def options(self, target=False):
        """The options that state this form, for files read or written."""
        name = "to" if target else "restart"
        return [
            "--to-layout" if target else "--layout", str(self.layout),
            f"--{name}-format", self.encoding,
            f"--{name}-precision", "double" if self.double else "single",
            f"--{name}-multiblock", "yes" if self.multiblock else "no",
            # Only reals, which are valid in either byte order.
            *(("--restart-byte-order", self.order)
              if self.layout == 102 and self.encoding == "binary" and not target else ()),
        ]

    @property
    def records(self):
        return self.encoding != "formatted"

    @property
    def holds_singles(self):
        """Whether the reals are in single precision. Text has digits instead."""
        return self.records and not self.double

    def __repr__(self):
        return " ".join(self.options())


def encodings():
    """Encodings with the precisions that they distinguish."""
    return (("unformatted", False), ("unformatted", True), ("binary", False), ("binary", True),
            ("formatted", False))


class Solution:
    """A flow solution. `flow` holds for each block its variables, each a list of values."""

    def __init__(self, extents, flow, step=(0, 0.0), parameters=None, triplets=None,
                 sections=None, flags=(999,), extensions=()):
        self.extents = extents
        self.flow = flow
        self.step = step
        self.parameters = parameters or [(0, 0, 0, 0)] * len(extents)
        self.triplets = triplets or [[[0] * len(flow[0][0])] * 3 for _ in extents]
        self.sections = sections or [(1, len(flow[0]))]
        self.flags = flags
        self.extensions = extensions  # for each flag its variables (first, last), or None

    def variables(self, block, first, last):
        return [value for variable in self.flow[block][first - 1:last] for value in variable]


def sample_solution(extents, variables=5, **more):
    """Distinct values, none of them exact in single precision."""
    def values(block, number):
        points = extents[block][0] * extents[block][1] * extents[block][2]
        return [1000 * number + 100 * block + point + 0.1 for point in range(points)]

    more.setdefault("step", (17, 0.3))
    more.setdefault("parameters", [(0.7 + b, -1.1, 2.3e6, 4.9) for b in range(len(extents))])
    more.setdefault("triplets", [[values(b, -n) for n in (1, 2, 3)] for b in range(len(extents))])
    return Solution(extents, [[values(b, v) for v in range(1, variables + 1)]
                              for b in range(len(extents))], **more)


def header_records(form, solution):
    flat = [extent for block in solution.extents for extent in block]
    blocks = len(solution.extents)
    count, size = solution.step
    if form.layout in (1, 100):
        yield [("i", [count]), ("r", [size]), ("i", [blocks])]
    if form.layout == 1:
        yield from ([("i", list(block))] for block in solution.extents)
    if form.layout == 101:
        yield [("i", [*solution.extents[0], count]), ("r", [size])]
    if form.layout in (2, 3):
        if form.multiblock:
            yield [("i", [blocks])]
        if form.layout == 3:
            flat = [value for block, flow in zip(solution.extents, solution.flow)
                    for value in (*block, len(flow))]
        yield [("i", flat)]


def body_records(form, solution, leading):
    for b in range(len(solution.extents)):
        if form.layout == 2:
            yield [("r", list(solution.parameters[b]))]
        sections = solution.sections
        if leading:
            triplets = [value for component in solution.triplets[b] for value in component]
            yield [("r", triplets + solution.variables(b, 1, 5))]
            sections = sections[1:]
        for first, last in sections:
            yield [("r", solution.variables(b, first, last))]
    if form.layout == 101:
        for flag, extension in zip(solution.flags, [*solution.extensions, None]):
            yield [("i", [flag])]
            if extension:
                for b in range(len(solution.extents)):
                    yield [("r", solution.variables(b, *extension))]


def pack(records, form):
    """The records' bytes. Items are integers (i), reals of the file's precision (r) or doubles
    (d)."""
    if not form.records:
        return "".join(" ".join(repr(value) for _, values in items for value in values) + "\n"
                       for items in records).encode()
    parts = []
    for items in records:
        payload = b""
        for kind, values in items:
            code = {"i": "i", "d": "d", "r": "d" if form.double else "f"}[kind]
            payload += struct.pack(f"{SIGNS[form.order]}{len(values)}{code}", *values)
        parts.append(record(payload, form.encoding, form.order))
    return b"".join(parts)


def restart_records(form, solution, leading=None):
    if leading is None:
        leading = form.layout in (100, 101)
    return [*header_records(form, solution), *body_records(form, solution, leading)]


def restart_bytes(form, solution, leading=None):
    """The file in that form."""
    return pack(restart_records(form, solution, leading), form)


def talven_records(solution, version=3, equations=1, integration=0, parameters=range(1, 10),
                   older=None):
    """A file of layout 0; `parameters` are those of equation set 1, `older` is how many records of
    older levels a block has."""
    count, size = solution.step
    yield [("i", [version, equations])]
    yield [("i", [len(solution.extents), len(solution.flow[0]), integration, 6, count]),
           ("r", [size])]
    if equations == 1:
        switch, *values = parameters
        yield [("i", [switch]), ("d", [float(value) for value in values])]
    yield from ([("i", list(block))] for block in solution.extents)
    if older is None:
        older = {2: 1, 3: 2}.get(integration, 0)
    for b in range(len(solution.extents)):
        for first, last in solution.sections:
            yield [("r", solution.variables(b, first, last))]
        for _ in range(older):
            yield [("r", [-1.5] * len(solution.variables(b, *solution.sections[0])))]


def values_in(content):
    """The numbers of a text file."""
    return [float(word) for word in content.decode().replace(",", " ").split()]


def as_read(solution, form):
    """The solution that a program reads from a file of that form."""
    held = copy.deepcopy(solution)
    if not form.holds_singles:
        return held
    held.flow, held.triplets = ([[list(map(single, values)) for values in block]
                                 for block in arrays] for arrays in (held.flow, held.triplets))
    held.step = (held.step[0], single(held.step[1]))
    held.parameters = [tuple(map(single, block)) for block in held.parameters]
    return held


def shortest(value):
    """What a value becomes when it is written with the shortest digits of its precision. It has
    single precision if it can have it."""
    numbers = (float(f"{value:.{digits}g}") for digits in range(1, 10))
    return next((number for number in numbers if single(number) == value), value)


def numbers(records):
    """All values of the records in order."""
    return [value for items in records for _, values in items for value in values]


def expected_values(form, solution):
    """The numbers that a text file of that form holds, in order. Those of the header have all digits
    of double precision."""
    head = numbers(header_records(form, solution))
    body = numbers(restart_records(form, solution))[len(head):]
    return head + [shortest(value) for value in body]
