"""p3dgrid info --index: the bytes in each range are those of the values."""

import gzip
import json
import os
import pathlib
import struct

from restart_support import RestartForm, restart_bytes, sample_solution
from support import (ONE_BLOCK, TWO_BLOCKS, Form, ToolTest, all_forms, grid_bytes, main, single)

try:
    import jsonschema
except ImportError:
    jsonschema = None

DOCS = pathlib.Path(os.environ.get("P3DGRID_SOURCE", "")) / "docs"
TWO = [block.extents for block in TWO_BLOCKS]


class Index(ToolTest):
    def index(self, *arguments):
        report = json.loads(self.succeed("info", *arguments, "--index"))
        if jsonschema is not None:
            schema = json.loads((DOCS / "info-json.schema.json").read_text())
            jsonschema.Draft202012Validator(schema).validate(report)
        self.assertIsNone(report["variables"])
        return report

    def values(self, name, report, array):
        """The values in the byte ranges of an array."""
        with open(self.folder / name, "rb") as file:
            data = b"".join(os.pread(file.fileno(), length, offset)
                            for offset, length in array["ranges"])
        sign = {"little": "<", "big": ">"}[report["form"]["byte_order"]]
        letter = {"real4": "f", "real8": "d", "integer4": "i"}[array["kind"]]
        return list(struct.unpack(f"{sign}{array['count']}{letter}", data))

    def test_grids(self):
        for form in all_forms():
            if form.encoding == "formatted":
                continue
            blocks = TWO_BLOCKS if form.multiblock else ONE_BLOCK
            self.write_grid("grid", form, blocks)
            report = self.index("grid", *form.options("grid"))
            self.assertEqual(report["points"], sum(len(block.xyz[0]) for block in blocks))
            for block, stored in zip(blocks, report["blocks"], strict=True):
                self.assertEqual(tuple(stored["extents"]), block.extents)
                self.assertEqual([array["content"] for array in stored["arrays"]],
                                 ["coordinate"] * 3 + ["iblank"] * form.iblank)
                xyz = [[single(v) if form.holds_singles else v for v in values]
                       for values in block.xyz]
                expected = [*xyz, block.iblank] if form.iblank else xyz
                self.assertEqual([self.values("grid", report, array) for array in stored["arrays"]],
                                 expected)

    def test_solutions(self):
        for layout in (1, 2, 3, 100, 101, 102):
            extents = TWO if layout not in (101, 102) else TWO[:1]
            solution = sample_solution(extents)
            self.write_grid("grid", blocks=TWO_BLOCKS[:len(extents)])
            form = RestartForm(layout, double=True)
            self.write("flow", restart_bytes(form, solution))
            report = self.index("flow", "--grid", "grid", *form.options())
            self.assertEqual(len(report["blocks"]), len(extents))
            for b, stored in enumerate(report["blocks"]):
                found = {}
                for array in stored["arrays"]:
                    found.setdefault(array["content"], []).append(
                        (array["number"], self.values("flow", report, array)))
                expected = {"variable": list(enumerate(solution.flow[b], 1))}
                if layout == 2:
                    expected["parameters"] = [(1, list(solution.parameters[b]))]
                if layout in (100, 101):
                    expected["triplets"] = list(enumerate(solution.triplets[b], 1))
                self.assertEqual(found, expected, layout)

    def test_the_same_with_json(self):
        self.write_grid("grid")
        self.assertEqual(self.succeed("info", "grid", "--json", "--index"),
                         self.succeed("info", "grid", "--index"))

    def test_extents_that_are_not_known(self):
        self.write("flow", restart_bytes(RestartForm(100, double=True), sample_solution(TWO)))
        self.fail_with(1, "info", "flow", "--layout", "100", "--index",
                       says="holds no extents; they come from its grid")

    def test_files_without_an_index(self):
        self.write_grid("text", Form("formatted"))
        self.fail_with(1, "info", "text", "--index",
                       says="text: is text, whose values have no fixed places")
        self.write("grid.gz", gzip.compress(grid_bytes(Form(), TWO_BLOCKS)))
        self.fail_with(2, "info", "grid.gz", "--index", says="grid.gz: is compressed")

    def test_a_damaged_file_has_none(self):
        self.write("cut", grid_bytes(Form(), TWO_BLOCKS)[:-4])
        result = self.run_tool("info", "cut", "--index")
        self.assertEqual((result.returncode, result.stdout_text), (1, ""))


if __name__ == "__main__":
    main()
