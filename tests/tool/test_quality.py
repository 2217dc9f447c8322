"""p3dgrid quality: the measures of grids whose values are known."""

import json
import math
import os
import pathlib

from support import Block, Form, ToolTest, grid_bytes, main

try:
    import jsonschema
except ImportError:
    jsonschema = None

SCHEMA = pathlib.Path(os.environ.get("P3DGRID_SOURCE", "")) / "docs/quality-json.schema.json"


def box(extents, place=lambda i, j, k: (i, j, k), iblank=None):
    ni, nj, nk = extents
    points = [place(i, j, k) for k in range(nk) for j in range(nj) for i in range(ni)]
    return Block(extents, *zip(*points), iblank)


def placed(block, point, xyz):
    """The block with one point elsewhere; indices from 0."""
    i, j, k = point
    at = i + block.extents[0] * (j + block.extents[1] * k)
    columns = [list(values) for values in block.xyz]
    for values, value in zip(columns, xyz):
        values[at] = value
    return Block(block.extents, *columns, block.iblank)


class Quality(ToolTest):
    form = Form(double=True)

    def report(self, *blocks, options=(), form=None):
        self.write("grid", grid_bytes(form or self.form, blocks))
        report = json.loads(self.succeed("quality", "grid", "--json", *options))
        if jsonschema is not None:
            jsonschema.Draft202012Validator(json.loads(SCHEMA.read_text())).validate(report)
        return report

    def of_block(self, block, **how):
        return self.report(block, **how)["blocks"][0]

    def test_the_schema_is_checked_here(self):
        if jsonschema is None:
            self.skipTest("without python3-jsonschema reports are not compared with their schema")
        schema = json.loads(SCHEMA.read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        report = self.report(box((3, 3, 3)), box((3, 3, 3), lambda i, j, k: (i + 2, j, k)))
        (connection,) = report["connections"]
        for change in ({"schema": 2}, {"file": 1}, {"totals": {}}, {"blocks": [{}]},
                       {"blocks": [{**report["blocks"][0], "handedness": "none"}]},
                       {"connections": [{**connection, "first": [0, 1, 1]}]},
                       {"connections": [{**connection, "faces": []}]}):
            with self.assertRaises(jsonschema.ValidationError):
                jsonschema.Draft202012Validator(schema).validate({**report, **change})

    def test_totals(self):
        report = self.report(
            box((3, 4, 5)), placed(box((4, 3, 3)), (2, 2, 2), (-9, 2, 2)),
            box((3, 2, 2), lambda i, j, k: (-min(i, 1), j, k)),
            placed(box((3, 3, 3), lambda i, j, k: (-i, j, k)), (0, 0, 0), (math.nan, 1, 1)))
        self.assertEqual(report["totals"], {
            "cells": 24 + 12 + 2 + 7, "invalid_points": 1, "negative_volumes": 1,
            "zero_volumes": 1, "zero_edges": 4, "left_handed_blocks": 2})

    def test_cubes(self):
        for form in (Form(), Form(double=True), Form("formatted"), Form("binary", double=True)):
            found = self.of_block(box((3, 4, 5)), form=form)
            self.assertEqual(found, {
                "extents": [3, 4, 5], "cells": 24, "invalid_points": 0, "handedness": "right",
                "negative_volumes": {"count": 0, "first": None},
                "zero_volumes": {"count": 0, "first": None},
                "zero_edges": {"count": 0, "first": None},
                "stretching": {"value": 1, "place": [2, 1, 1]},
                "skewness": {"value": 0, "place": [1, 1, 1]}})

    def test_short_edges_are_not_of_length_0(self):
        tiny = 2.0 ** -70
        found = self.of_block(box((3, 4, 5), lambda i, j, k: (tiny * i, tiny * j, tiny * k)))
        self.assertEqual(found, self.of_block(box((3, 4, 5))))

    def test_left_handed(self):
        self.assertEqual(self.of_block(box((3, 3, 3), lambda i, j, k: (-i, j, k)))["handedness"],
                         "left")
        self.assertEqual(self.of_block(box((3, 3, 3), lambda i, j, k: (j, i, k)))["handedness"],
                         "left")

    def test_volumes_with_the_wrong_sign(self):
        bad = placed(box((4, 3, 3)), (2, 2, 2), (-9, 2, 2))
        found = self.of_block(bad)
        self.assertEqual(found["handedness"], "right")
        self.assertEqual(found["negative_volumes"], {"count": 1, "first": [2, 2, 2]})
        mirrored = Block(bad.extents, [-x for x in bad.xyz[0]], *bad.xyz[1:])
        self.assertEqual(self.of_block(mirrored)["handedness"], "left")
        self.assertEqual(self.of_block(mirrored)["negative_volumes"],
                         {"count": 1, "first": [2, 2, 2]})

    def test_edges_and_volumes_of_zero(self):
        wedge = box((2, 3, 2), lambda i, j, k: (i, j, 0 if j == 0 else k))
        found = self.of_block(wedge)
        self.assertEqual(found["zero_edges"], {"count": 2, "first": [1, 1, 1]})
        self.assertEqual(found["zero_volumes"]["count"], 0)
        found = self.of_block(box((3, 2, 2), lambda i, j, k: (min(i, 1), j, k)))
        self.assertEqual(found["zero_edges"], {"count": 4, "first": [2, 1, 1]})
        self.assertEqual(found["zero_volumes"], {"count": 1, "first": [2, 1, 1]})
        self.assertIsNone(found["stretching"])  # no ratio to an edge of length 0

    def test_stretching(self):
        x = (0, 1, 3, 3.25, 4.25)
        found = self.of_block(box((5, 2, 2), lambda i, j, k: (x[i], j, k)))
        self.assertEqual(found["stretching"], {"value": 8, "place": [3, 1, 1]})
        self.assertIsNone(self.of_block(box((2, 2, 2)))["stretching"])

    def test_skewness(self):
        """Parallelograms with a corner of 45 degrees."""
        for shear in (lambda i, j, k: (i + j, j, k), lambda i, j, k: (i + k, j, k),
                      lambda i, j, k: (i, j + k, k)):
            found = self.of_block(box((2, 3, 2), shear))
            self.assertAlmostEqual(found["skewness"]["value"], 0.5, places=12)
        found = self.of_block(placed(box((3, 3, 1)), (2, 2, 0), (2 + math.tan(math.pi / 6), 2, 0)))
        self.assertAlmostEqual(found["skewness"]["value"], 1 / 3, places=12)
        self.assertEqual(found["skewness"]["place"], [2, 2, 1])

    def test_long_lines(self):
        """The worst places at any point of a line, also where it is measured in pieces."""
        for ni in (2, 3, 79, 80, 81, 161, 163):
            for at in {0, 1, ni // 2 - 1, ni // 2, ni - 2, ni - 1} & set(range(ni)):
                with self.subTest(ni=ni, at=at):
                    def moved(y, sign=1, at=at, ni=ni):
                        """The block with the last point of lines `at` in another place."""
                        return self.of_block(placed(
                            box((ni, 3, 3), lambda i, j, k: (sign * i, j, k)), (at, 2, 2),
                            (sign * at, y, 2)))

                    found = moved(4)
                    self.assertEqual(found["cells"], 4 * (ni - 1))
                    self.assertEqual(found["stretching"], {"value": 3, "place": [at + 1, 2, 3]})
                    self.assertEqual(moved(1)["zero_edges"],
                                     {"count": 1, "first": [at + 1, 2, 3]})
                    for sign, handedness in ((1, "right"), (-1, "left")):
                        found = moved(-3, sign)
                        self.assertEqual(found["handedness"], handedness)
                        self.assertEqual(found["negative_volumes"],
                                         {"count": 1 if at in (0, ni - 1) else 2,
                                          "first": [max(at, 1), 2, 2]})

    def test_plane_blocks(self):
        self.assertEqual(self.of_block(box((3, 4, 1)))["handedness"], "right")
        found = self.of_block(placed(box((3, 4, 1), lambda i, j, k: (i, -j, 2)), (1, 1, 0),
                                     (9, -1, 2)))
        self.assertEqual((found["handedness"], found["cells"]), ("left", 6))
        self.assertGreater(found["negative_volumes"]["count"], 0)
        curved = self.of_block(box((3, 4, 1), lambda i, j, k: (i, j, i * i)))
        self.assertEqual((curved["handedness"], curved["cells"]), (None, 6))
        # Seen along z, some cells of a ring are right-handed, some left-handed.
        ring = self.of_block(box((7, 3, 1), lambda i, j, k: (
            math.cos(math.radians(50 * i)), j, math.sin(math.radians(50 * i)))))
        self.assertEqual((ring["handedness"], ring["cells"]), (None, 12))
        for kind in ("negative_volumes", "zero_volumes"):
            self.assertEqual(ring[kind], {"count": 0, "first": None})
        wall = self.of_block(box((1, 4, 3)))
        self.assertEqual((wall["handedness"], wall["cells"]), (None, 6))
        line = self.of_block(box((4, 1, 1)))
        self.assertEqual((line["cells"], line["skewness"]), (0, None))
        empty = self.of_block(Block((0, 1, 1), [], [], []), options=self.form.options("grid"))
        self.assertEqual(empty["cells"], 0)

    def test_two_dimensions(self):
        self.write("grid3", grid_bytes(self.form, [box((3, 4, 1)), box(
            (3, 4, 1), lambda i, j, k: (i + 2, j, k))]))
        self.succeed("convert", "grid3", "flat", "--to-dimensions", "2")
        report = json.loads(self.succeed("quality", "flat", "--json"))
        self.assertEqual(report["blocks"][0]["handedness"], "right")
        self.assertEqual(report["connections"], [
            {"faces": [{"block": 1, "face": "i=last"}, {"block": 2, "face": "i=1"}],
             "whole": True, "points": 4, "first": [3, 1, 1], "last": [3, 4, 1]}])

    def test_blanked_and_invalid_points_are_left_out(self):
        hole = [0 if p == 13 else 1 for p in range(27)]
        block = placed(box((3, 3, 3), iblank=hole), (1, 1, 1), (99, 99, 99))
        found = self.of_block(block, form=Form(double=True, iblank=True))
        self.assertEqual((found["cells"], found["invalid_points"]), (0, 0))
        self.assertEqual(found["skewness"]["value"], 0)
        found = self.of_block(placed(box((3, 3, 3)), (0, 0, 0), (math.nan, 0, 0)))
        self.assertEqual((found["cells"], found["invalid_points"]), (7, 1))
        found = self.of_block(placed(box((3, 3, 3), iblank=hole), (1, 1, 1), (math.nan, 0, 0)),
                              form=Form(double=True, iblank=True))
        self.assertEqual((found["cells"], found["invalid_points"]), (0, 0))

    def test_edges_at_blanked_points_are_left_out(self):
        for ni, at in ((4, 0), (4, 1), (4, 2), (4, 3)):
            used = [int(p % ni != at) for p in range(2 * ni)]
            block = box((ni, 2, 1), lambda i, j, k, at=at: (i + 99 * (i == at), j, k), used)
            found = self.of_block(block, form=Form(double=True, iblank=True))
            worst = {"value": 1, "place": [3 if at == 0 else 2, 1, 1]}
            self.assertEqual(found["stretching"], worst if at in (0, 3) else None)
            # Both points of a blanked line are in the same place.
            flat = box((ni, 2, 1), lambda i, j, k, at=at: (i, j * (i != at), k), used)
            self.assertEqual(self.of_block(flat, form=Form(double=True, iblank=True))["zero_edges"],
                             {"count": 0, "first": None})

    def connections(self, *blocks, tolerance=None):
        report = self.report(*blocks, options=("--tolerance", tolerance) if tolerance else ())
        return [(*(face["block"] for face in found["faces"]),
                 *(face["face"] for face in found["faces"]), found["whole"], found["points"])
                for found in report["connections"]]

    def test_blocks_face_to_face(self):
        one = box((3, 4, 5))
        self.assertEqual(self.connections(one, box((4, 4, 5), lambda i, j, k: (i + 2, j, k))),
                         [(1, 2, "i=last", "i=1", True, 20)])
        turned = box((5, 4, 2), lambda i, j, k: (-k, 3 - j, i))
        self.assertEqual(self.connections(one, turned), [(1, 2, "i=1", "k=1", True, 20)])
        self.assertEqual(self.connections(one, box((3, 4, 5), lambda i, j, k: (i + 9, j, k))), [])

    def test_edges_in_common_are_no_connection(self):
        self.assertEqual(self.connections(
            box((3, 3, 3)), box((3, 3, 3), lambda i, j, k: (i + 2, j + 2, k))), [])

    def test_edges_on_opposite_sides_are_no_connection(self):
        """Two halves of a ring: their inner faces have both ends in common."""
        halves = [box((5, 2, 3), lambda i, j, k, turn=turn: (
            (j + 1) * round(math.cos((i / 4 + turn) * math.pi), 9),
            (j + 1) * round(math.sin((i / 4 + turn) * math.pi), 9), k)) for turn in (0, 1)]
        self.assertEqual(self.connections(*halves), [(1, 2, "i=1", "i=last", True, 6),
                                                     (1, 2, "i=last", "i=1", True, 6)])

    def test_parts_of_faces(self):
        small = box((2, 2, 3), lambda i, j, k: (i + 2, j + 1, k))
        report = self.report(box((3, 4, 5)), small)
        self.assertEqual(report["connections"], [
            {"faces": [{"block": 1, "face": "i=last"}, {"block": 2, "face": "i=1"}],
             "whole": False, "points": 6, "first": [3, 2, 1], "last": [3, 3, 3]}])
        self.assertEqual(self.connections(small, box((3, 4, 5))),
                         [(1, 2, "i=1", "i=last", False, 6)])

    def test_block_that_meets_itself(self):
        ring = box((9, 3, 2), lambda i, j, k: ((j + 1) * math.cos(i % 8 * math.pi / 4),
                                               (j + 1) * math.sin(i % 8 * math.pi / 4), k))
        self.assertEqual(self.connections(ring), [(1, 1, "i=1", "i=last", True, 6)])

    def test_tolerance(self):
        one = box((3, 4, 5))
        other = box((3, 4, 5), lambda i, j, k: (i + 2.001, j - 0.0009, k + 0.0009))
        self.assertEqual(self.connections(one, other), [])
        self.assertEqual(self.connections(one, other, tolerance="0.0009"), [])
        self.assertEqual(self.connections(one, other, tolerance="0.0011"),
                         [(1, 2, "i=last", "i=1", True, 20)])

    def test_text(self):
        self.write("grid", grid_bytes(self.form, [
            placed(box((4, 3, 3)), (2, 2, 2), (-9, 2, 2)),
            box((2, 3, 3), lambda i, j, k: (i + 3, 2 - j, k))]))
        self.assertEqual(self.succeed("quality", "grid").splitlines(), [
            "grid: first or worst places are (i,j,k), counted from 1",
            "  block  cells  handed   negative  zero volume  zero edges     stretching"
            "        skewness",
            "      1     12   right  1 (2,2,2)            0           0  11.05 (3,2,3)"
            "  0.9423 (2,2,3)",
            "      2      4    left          0            0           0      1 (1,2,1)"
            "       0 (1,1,1)",
            "total: 16 cells, 1 of negative volume; 0 edges of length 0; 1 left-handed block",
            "block 1 i=last and block 2 i=1 coincide"])

    def test_damage(self):
        self.write("grid", grid_bytes(self.form, [box((3, 3, 3))])[:-9])
        self.fail_with(1, "quality", "grid", says="grid: is cut short")
        self.fail_with(2, "quality", "grid", "--tolerance", "-1", says="--tolerance")


if __name__ == "__main__":
    main()
