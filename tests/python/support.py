"""Files of grids and solutions as numpy packs them, without the library."""

import dataclasses
import itertools

import numpy


@dataclasses.dataclass(frozen=True)
class Coding:
    """How the numbers of a file are coded."""

    format: str = "unformatted"
    precision: str = "single"
    byte_order: str = "little"
    marker_bytes: int = 4
    dimensions: int = 3

    @property
    def sign(self):
        return ">" if self.byte_order == "big" else "<"

    @property
    def real(self):
        return numpy.dtype(self.sign + ("f8" if self.precision == "double" else "f4"))

    @property
    def integer(self):
        return numpy.dtype(self.sign + "i4")

    def members(self):
        """The members of its form that such files have."""
        given = dataclasses.asdict(self)
        if self.format != "unformatted":
            given["marker_bytes"] = None
        if self.format == "formatted":
            given["precision"] = given["byte_order"] = None
        return given

    def record(self, *parts):
        """The bytes of a record of arrays of integers and of reals."""
        if self.format == "formatted":
            words = (repr(value) for part in parts for value in numpy.ravel(part, "F").tolist())
            return (" ".join(words) + "\n").encode()
        payload = b"".join(self.bytes_of(part) for part in parts)
        if self.format == "binary":
            return payload
        marker = numpy.array(len(payload), f"{self.sign}i{self.marker_bytes}").tobytes()
        return marker + payload + marker

    def bytes_of(self, part):
        part = numpy.asarray(part)
        kind = self.integer if part.dtype.kind == "i" else self.real
        return part.astype(kind).tobytes("F")


CODINGS = [
    *(Coding("unformatted", *rest) for rest in itertools.product(
        ("single", "double"), ("little", "big"), (4, 8), (3, 2))),
    *(Coding("binary", precision, order, 4, dimensions) for precision, order, dimensions in
      itertools.product(("single", "double"), ("little", "big"), (3, 2))),
    Coding("formatted"), Coding("formatted", dimensions=2)]

# Of different lengths in every direction; the second has one k plane.
EXTENTS = [(4, 3, 2), (2, 5, 1)]


def extents_in(coding):
    return [extents if coding.dimensions == 3 else (*extents[:2], 1) for extents in EXTENTS]


def numbers(extents, first):
    """Distinct values that single precision holds, in an array with i fastest."""
    count = int(numpy.prod(extents))
    return (first + 0.25 * numpy.arange(count)).reshape(extents, order="F")


def grid_arrays(coding):
    """x, y, z and blanking values of each block."""
    arrays = []
    for block, extents in enumerate(extents_in(coding)):
        x, y, z = (numbers(extents, 100 * (3 * block + axis) + 1) for axis in range(3))
        if coding.dimensions == 2:
            z = numpy.zeros(extents)
        blanking = numpy.arange(x.size).reshape(extents, order="F") % 3 - 1
        arrays.append((x, y, z, blanking))
    return arrays


def grid_bytes(coding, iblank, arrays=None):
    arrays = arrays or grid_arrays(coding)
    axes = coding.dimensions
    content = coding.record(numpy.array([len(arrays)]))
    content += coding.record(numpy.array([n for block in arrays for n in block[0].shape[:axes]]))
    for block in arrays:
        content += coding.record(*block[:axes], *([block[3]] if iblank else []))
    return content


def flow_arrays(coding, variables=5):
    """The variables of each block."""
    result = []
    for block, extents in enumerate(extents_in(coding)):
        arrays = [numbers(extents, 1000 * (block + 1) + 100 * n) for n in range(variables)]
        if coding.dimensions == 2:
            arrays[3] = numpy.zeros(extents)
        result.append(arrays)
    return result


PARAMETERS = [(0.75, -1.5, 2e6, 4.25), (0.5, 0.0, 1e5, 8.0)]


def solution_bytes(coding, flow=None):
    flow = flow or flow_arrays(coding)
    axes = coding.dimensions
    held = [n for n in range(5) if axes == 3 or n != 3]
    content = coding.record(numpy.array([len(flow)]))
    content += coding.record(numpy.array([n for block in flow for n in block[0].shape[:axes]]))
    for parameters, block in zip(PARAMETERS, flow):
        content += coding.record(numpy.array(parameters))
        content += coding.record(*(block[n] for n in held))
    return content


def triplet_solution_bytes(coding, flow, triplets):
    """A solution of layout 100: step count 17, step size 0.5."""
    content = coding.record(numpy.array([17]), numpy.array([0.5]), numpy.array([len(flow)]))
    return content + b"".join(coding.record(*first, *second)
                              for first, second in zip(triplets, flow))


def split(content, sign, length):
    """The records of a file with markers of four bytes, divided into sub-records."""
    result = b""
    while content:
        size = int(numpy.frombuffer(content[:4], sign + "i4")[0])
        payload, content = content[4:4 + size], content[8 + size:]
        parts = [payload[n:n + length] for n in range(0, max(len(payload), 1), length)]
        for number, part in enumerate(parts):
            first, last = number == 0, number == len(parts) - 1
            head = numpy.array(len(part) if last else -len(part), sign + "i4").tobytes()
            tail = numpy.array(len(part) if first else -len(part), sign + "i4").tobytes()
            result += head + part + tail
    return result
