"""p3dgrid info --json: the schema, the documented example, and the values."""

import json
import math
import os
import pathlib
import re

from restart_support import (RestartForm, pack, restart_bytes, sample_solution, shortest,
                             talven_records)
from support import (ONE_BLOCK, TWO_BLOCKS, Block, Form, ToolTest, all_forms, grid_bytes, main,
                     single)

try:
    import jsonschema
except ImportError:
    jsonschema = None

DOCS = pathlib.Path(os.environ.get("P3DGRID_SOURCE", "")) / "docs"
TWO = [block.extents for block in TWO_BLOCKS]


class InfoJson(ToolTest):
    def report(self, *arguments):
        report = json.loads(self.succeed("info", *arguments, "--json"))
        if jsonschema is not None:
            schema = json.loads((DOCS / "info-json.schema.json").read_text())
            jsonschema.Draft202012Validator(schema).validate(report)
        return report

    def test_the_schema_is_checked_here(self):
        if jsonschema is None:
            self.skipTest("without python3-jsonschema reports are not compared with their schema")
        schema = json.loads((DOCS / "info-json.schema.json").read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        for change in ({"schema": 2}, {"kind": "flow"}, {"blocks": [{}]}, {"points": "2"}):
            self.write_grid("grid", Form("formatted"))
            wrong = {**self.report("grid"), **change}
            with self.assertRaises(jsonschema.ValidationError):
                jsonschema.Draft202012Validator(schema).validate(wrong)

    def test_documented_example(self):
        text = (DOCS / "info-json.md").read_text()
        (content,) = re.findall(r"```text\n(.*?)```", text, re.DOTALL)
        (expected,) = re.findall(r"```json\n(.*?)```", text, re.DOTALL)
        (command,) = re.findall(r"`p3dgrid (info .* --json)` prints", text)
        self.write("line.txt", content.encode())
        report, expected = json.loads(self.succeed(*command.split())), json.loads(expected)
        expected["found"]["bytes_read"] = report["found"]["bytes_read"]
        self.assertEqual(report, expected)

    def test_grids(self):
        for form in all_forms():
            blocks = TWO_BLOCKS if form.multiblock else ONE_BLOCK
            self.write_grid("grid", form, blocks)
            report = self.report("grid", *form.options("grid"))
            self.assertEqual([tuple(block["extents"]) for block in report["blocks"]],
                             [block.extents for block in blocks])
            for c, variable in enumerate(report["variables"]):
                values = [v for block in blocks for v in block.xyz[c]]
                for end, found in ((min, variable["min"]), (max, variable["max"])):
                    value = end(values)
                    self.assertEqual(found["value"],
                                     shortest(single(value)) if form.holds_singles else value)
                    block = blocks[found["block"] - 1]
                    i, j, _ = block.extents
                    point = found["i"] - 1 + i * (found["j"] - 1 + j * (found["k"] - 1))
                    self.assertEqual(block.xyz[c][point], value)
            counts = [block.get("blanking") for block in report["blocks"]]
            expected = [{"0": 2, "1": 4, "negative": 1, "other": 1},
                        {"0": 1, "1": 2, "negative": 0, "other": 0}][:len(blocks)]
            self.assertEqual(counts, expected if form.iblank else [None] * len(blocks))

    def test_place_of_the_ends(self):
        points = range(3 * 4 * 5)
        x = [0.0] * 60
        x[2 + 3 * (1 + 4 * 3)] = -5.0
        x[0 + 3 * (3 + 4 * 4)] = 7.0
        self.write_grid("grid", Form(), [Block((1, 1, 1), [0], [0], [0]),
                                         Block((3, 4, 5), x, points, points)])
        variable = self.report("grid")["variables"][0]
        self.assertEqual(variable["min"], {"value": -5.0, "block": 2, "i": 3, "j": 2, "k": 4})
        self.assertEqual(variable["max"], {"value": 7.0, "block": 2, "i": 1, "j": 4, "k": 5})

    def test_values_that_are_not_finite(self):
        solution = sample_solution(TWO, parameters=[(math.nan, math.inf, -math.inf, 1)] * 2)
        solution.flow[0][0][1:4] = [math.nan, math.inf, -math.inf]
        solution.flow[0][1] = [math.nan] * 8
        solution.flow[1][1] = [math.nan] * 3
        self.write("flow", restart_bytes(RestartForm(), solution))
        report = self.report("flow")
        self.assertEqual(report["blocks"][0]["parameters"],
                         {"mach": "NaN", "alpha": "Infinity", "reynolds": "-Infinity", "time": 1.0})
        first, second = report["variables"][:2]
        self.assertEqual((first["nan"], first["infinite"]), (1, 2))
        self.assertEqual((second["min"], second["max"], second["nan"]), (None, None, 11))

    def test_restart_files(self):
        for layout in (1, 2, 3, 100, 101, 102):
            extents = TWO if layout not in (101, 102) else TWO[:1]
            self.write_grid("grid", blocks=TWO_BLOCKS[:len(extents)])
            form = RestartForm(layout, "formatted")
            self.write("flow", restart_bytes(form, sample_solution(extents)))
            report = self.report("flow", "--grid", "grid", *form.options())
            self.assertEqual(report["form"]["layout"], layout)
            self.assertEqual(report["variables"][0]["min"]["value"], 1000.1)
            self.assertEqual(report["header"],
                             {"step_count": 17, "step_size": 0.3} if layout in (1, 100, 101)
                             else {})
            labels = [variable["label"] for variable in report["variables"]]
            self.assertEqual(labels[5:], ["triplet 1", "triplet 2", "triplet 3"]
                             if layout in (100, 101) else [])

    def test_layout_0(self):
        form = RestartForm(0, double=True)
        self.write("flow", pack(talven_records(sample_solution(TWO)), form))
        header = self.report("flow")["header"]
        self.assertEqual(len(header), 16)
        self.assertEqual((header["file_version"], header["step_count"], header["turbulent_prandtl"]),
                         (3, 17, 9.0))

    def test_extents_that_are_not_known(self):
        self.write("flow", restart_bytes(RestartForm(100, double=True), sample_solution(TWO)))
        report = self.report("flow", "--layout", "100")
        self.assertEqual((report["block_count"], report["blocks"], report["points"],
                          report["variables"]), (2, [], None, None))

    def test_nothing_else_on_standard_output(self):
        self.write_grid("grid")
        self.write("cut", grid_bytes(Form(), TWO_BLOCKS)[:-4])
        self.write("flow", restart_bytes(RestartForm(), sample_solution([(2, 2, 2), (3, 1, 2)])))
        for arguments in (("cut",), ("missing",), ("flow", "--grid", "grid")):
            result = self.run_tool("info", *arguments, "--json")
            self.assertNotEqual(result.returncode, 0)
            self.assertEqual(result.stdout_text, "")

    def test_paths_that_are_no_utf_8(self):
        name = os.fsdecode(b"gr\xefd")
        (self.folder / name).write_bytes(grid_bytes(Form(), TWO_BLOCKS))
        self.assertEqual(self.report(name)["file"], "gr\ufffdd")


if __name__ == "__main__":
    main()
