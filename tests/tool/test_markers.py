"""Record markers of 8 bytes, in every command that reads and writes files."""

import json
import struct

from restart_support import RestartForm, Solution, restart_bytes
from support import NATIVE, ONE_BLOCK, OTHER, SIGNS, TWO_BLOCKS, Form, ToolTest, grid_bytes, main

FLOW = Solution([(2, 2, 2)], [[[v + p / 8 for p in range(8)] for v in range(5)]],
                parameters=[(0.5, 1, 2, 3)])


def widened(content, order=NATIVE):
    """The unformatted file with markers of 8 bytes."""
    parts, at = [], 0
    while at < len(content):
        length, = struct.unpack_from(SIGNS[order] + "i", content, at)
        marker = struct.pack(SIGNS[order] + "q", length)
        parts.append(marker + content[at + 4:at + 4 + length] + marker)
        at += length + 8
    return b"".join(parts)


class Markers(ToolTest):
    def test_grids_stay_as_read(self):
        for double, iblank, order in ((False, False, NATIVE), (True, True, OTHER)):
            form = Form(double=double, iblank=iblank, order=order)
            narrow = grid_bytes(form, TWO_BLOCKS)
            self.write("grid", widened(narrow, order))
            for options in ([], ["--grid-format", "unformatted"], ["--grid-marker-bytes", "8"]):
                self.succeed("convert", "grid", "out", "--quiet", *options)
                self.assertEqual(self.path("out").read_bytes(), widened(narrow, order))
            self.succeed("convert", "grid", "out", "--quiet", "--to-marker-bytes", "4")
            self.assertEqual(self.path("out").read_bytes(), narrow)
            self.succeed("convert", "out", "again", "--quiet", "--to-marker-bytes", "8")
            self.assertEqual(self.path("again").read_bytes(), widened(narrow, order))

    def test_solutions_stay_as_read(self):
        self.write("grid", grid_bytes(Form(), ONE_BLOCK))
        for layout, more in ((2, ()), (1, ()), (102, ())):
            form = RestartForm(layout)
            narrow = restart_bytes(form, FLOW)
            self.write("flow", widened(narrow))
            self.succeed("restart", "grid", "flow", "out", "--quiet", *more)
            self.assertEqual(self.path("out").read_bytes(), widened(narrow))
            self.succeed("restart", "--stream", "grid", "flow", "out", "--quiet",
                         "--to-marker-bytes", "4")
            self.assertEqual(self.path("out").read_bytes(), narrow)

    def test_description(self):
        self.write("grid", widened(grid_bytes(Form(), TWO_BLOCKS)))
        self.assertIn(f"read as unformatted, 8-byte markers, {NATIVE}-endian, ",
                      self.succeed("info", "grid"))
        for option, value in (("--to-marker-bytes", 8), ("--to-marker-bytes", 4),
                              ("--to-format", None)):
            self.succeed("convert", "grid", "out", option, str(value or "binary"))
            form = json.loads(self.succeed("info", "out", "--json"))["form"]
            self.assertEqual(form["marker_bytes"], value)

    def test_wrong_size_stated(self):
        content = grid_bytes(Form(), ONE_BLOCK)
        for name, held, stated, right in (("wide", widened(content), "4", "8"),
                                          ("narrow", content, "8", "4")):
            self.write(name, held)
            self.fail_with(1, "info", name, "--grid-marker-bytes", stated,
                           says=f"it is that of a file read with --grid-marker-bytes {right}")
        # The default is taken if all else is stated.
        self.fail_with(1, "info", "wide", *Form().options("grid"), "--grid-byte-order", NATIVE,
                       says="it is that of a file read with --grid-marker-bytes 8")

    def test_damage(self):
        content = widened(grid_bytes(Form(), ONE_BLOCK))
        for cut, says in ((len(content) - 1, "the file ends at byte"),
                          (len(content) - 9, "the file ends at byte"), (45, "is cut short")):
            self.write("grid", content[:cut])
            self.fail_with(1, "check", "grid", says=says)
        self.write("grid", content[:-8] + struct.pack("=q", -96))
        self.fail_with(1, "check", "grid", says="says -96 where 96 is expected")


if __name__ == "__main__":
    main()
