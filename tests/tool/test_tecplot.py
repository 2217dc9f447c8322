"""p3dgrid tecplot: its lines compared with expected lines."""

import math
import re

from restart_support import (RestartForm, Solution, encodings, restart_bytes, sample_solution)
from support import ONE_BLOCK, TWO_BLOCKS, Block, Form, ToolTest, main, single

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]
VARIABLES = ' VARIABLES = "X", "Y", "Z", "U", "V", "W", "P", "RHO"'


def primitive(density, *more, gamma=1.4):
    """Velocities, pressure and density of one point."""
    *momentum, energy = more
    velocity = [component / density for component in momentum]
    square = sum(component * component for component in velocity)
    return [*velocity, (gamma - 1) * (energy - 0.5 * density * square), density]


def expected_lines(solution, blanking=None, stored=False, rounded=True):
    """Titles as text, points as lists of numbers.

    `rounded` if the solution is in single precision, as the grid is."""
    lines = [VARIABLES + (',"IBLANK"' if blanking else "")]
    for b, block in enumerate(TWO_BLOCKS):
        i, j, k = block.extents
        lines.append(f'ZONE T="ZONE-{b + 1:06}" I={i:04} J={j:04} K={k:04}')
        flow = [map(single, values) if rounded else values for values in solution.flow[b]]
        points = [list(point) for point in zip(*(map(single, values) for values in block.xyz),
                                               *flow)]
        if not stored:
            points = [point[:3] + primitive(*point[3:]) for point in points]
        lines += [point + [blanking[b][n]] if blanking else point
                  for n, point in enumerate(points)]
    return lines


class Tecplot(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("grid")
        self.write("in", restart_bytes(RestartForm(), sample_solution(TWO)))

    def assert_holds(self, expected):
        lines = self.path("out").read_text().splitlines()
        self.assertEqual(len(lines), len(expected))
        for line, wanted in zip(lines, expected):
            if isinstance(wanted, str):
                self.assertEqual(line, wanted)
                continue
            found = list(map(float, line.split()))
            self.assertEqual(found[:3] + found[8:], wanted[:3] + wanted[8:])
            for value, other in zip(found, wanted):
                self.assertTrue(math.isclose(value, other, rel_tol=1e-14), (found, wanted))
        self.assert_no_leftovers()

    def export(self, *arguments):
        """Writes the Tecplot file; returns what the notes say."""
        result = self.run_tool("tecplot", "grid", "in", "out", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        return result.stderr_text

    def flow_columns(self, conserved, *arguments):
        """The five columns of the only point of a solution."""
        self.write_grid("grid", blocks=[Block((1, 1, 1), [0], [0], [0])])
        solution = Solution([(1, 1, 1)], [[[value] for value in conserved]])
        self.write("in", restart_bytes(RestartForm(double=True), solution))
        self.export(*arguments)
        return self.path("out").read_text().split("\n")[2].split()[3:]

    def refuse(self, status, *arguments, says):
        self.write("out", b"before")
        self.fail_with(status, "tecplot", *arguments, says=says)
        self.assertEqual(self.path("out").read_bytes(), b"before")
        self.assert_no_leftovers()

    def test_every_source(self):
        solution = sample_solution(TWO)
        for layout in (1, 2, 3):
            for encoding, double in encodings():
                form = RestartForm(layout, encoding, double)
                with self.subTest(form=form):
                    self.write("in", restart_bytes(form, solution))
                    rounded = form.holds_singles
                    note = self.export(*form.options())
                    self.assert_holds(expected_lines(solution, stored=layout != 2,
                                                     rounded=rounded))
                    self.assertIn("pressure" if layout == 2 else
                                  "the five variables of in in the order of the file", note)
                    note = self.export(*form.options(), "--as-stored")
                    self.assert_holds(expected_lines(solution, stored=True, rounded=rounded))
                    self.assertIn("in the order of the file", note)

    def test_velocities_pressure_and_density(self):
        conserved = (2, 4, -6, 1, 50)  # their kinetic energy is 13.25
        columns = self.flow_columns(conserved, "--gamma", "1.5")
        self.assertEqual(list(map(float, columns)), [2, -3, 0.5, 18.375, 2])
        columns = self.flow_columns(conserved)
        self.assertEqual(list(map(float, columns)), [2, -3, 0.5, (1.4 - 1) * 36.75, 2])
        columns = self.flow_columns(conserved, "--as-stored")
        self.assertEqual(list(map(float, columns)), list(conserved))
        # All digits of double precision.
        columns = self.flow_columns((3, 1, 2, 0, 5))
        self.assertEqual(list(map(float, columns))[:3], [1 / 3, 2 / 3, 0])

    def test_densities_that_are_none(self):
        """Infinite and NaN results are written as they are."""
        columns = self.flow_columns((-2, 4, 6, 0, 20))
        self.assertEqual(list(map(float, columns)), [-2, -3, 0, (1.4 - 1) * 33, -2])
        nan, inf = float("nan"), float("inf")
        for conserved, expected in (((0, 0, 1, -1, 7), (nan, inf, -inf, nan, 0)),
                                    ((nan, 1, 1, 1, 1), (nan, nan, nan, nan, nan)),
                                    ((1, 2, 3, 4, nan), (2, 3, 4, nan, 1)),
                                    ((inf, 1, 1, 1, 1), (0, 0, 0, nan, inf))):
            with self.subTest(conserved=conserved):
                columns = self.flow_columns(conserved)
                found = [float(re.sub(r"\(.*\)", "", word)) for word in columns]
                self.assertEqual(list(map(str, found)), [str(float(e)) for e in expected])

    def test_every_run_says_what_the_columns_are(self):
        for arguments, says in ((("--gamma", "1.25"), ("velocities", "pressure (gamma 1.25)",
                                                       "density", "--as-stored")),
                                ((), ("gamma 1.4",)),
                                (("--as-stored",), ("density, momentum in x, y and z, and energy",
                                                    "in the order of the file"))):
            note = self.export(*arguments)
            self.assertRegex(note, r"\Ap3dgrid: note: out: [^\n]*\n\Z")
            for text in ("U, V, W, P and RHO", *says):
                self.assertIn(text, note)
            self.assertEqual(self.export(*arguments, "--quiet"), "")

    def test_wrong_usage(self):
        for arguments in (("--gamma", "0.9"), ("--gamma", "x"), ("--gamma", "nan"),
                          ("--gamma", "1.3", "--as-stored")):
            self.refuse(2, "grid", "in", "out", *arguments, says=("--gamma", "--help"))

    def test_blanking(self):
        solution = sample_solution(TWO)
        self.succeed("tecplot", "grid", "in", "out", "--iblank")
        self.assert_holds(expected_lines(solution, [[1] * 8, [1] * 3]))
        self.write_grid("grid", Form(iblank=True))
        self.succeed("tecplot", "grid", "in", "out", "--iblank", "--grid-iblank", "yes")
        self.assert_holds(expected_lines(solution, [block.iblank for block in TWO_BLOCKS]))
        self.succeed("tecplot", "grid", "in", "out", "--grid-iblank", "yes")
        self.assert_holds(expected_lines(solution))

    def test_other_than_five_variables(self):
        for count in (3, 6):
            self.write("in", restart_bytes(RestartForm(3), sample_solution(TWO, count)))
            self.refuse(2, "grid", "in", "out", "--layout", "3",
                        says=("five variables", f"in holds {count} variables"))

    def test_block_with_fewer_variables(self):
        solution = sample_solution(TWO)
        solution.flow[1].pop()
        self.write("in", restart_bytes(RestartForm(3), solution))
        self.refuse(2, "grid", "in", "out", "--layout", "3",
                    says="in: block 2 holds no variable 5")

    def test_mismatch_and_damage(self):
        self.write_grid("other", blocks=ONE_BLOCK)
        self.refuse(1, "other", "in", "out", says="in: does not belong to other")
        self.write("in", self.path("in").read_bytes()[:-9])
        self.refuse(1, "grid", "in", "out", says="in: ")

    def test_extents_beyond_four_digits(self):
        values = [0.5] * 10_000
        self.write_grid("grid", blocks=[Block((10_000, 1, 1), values, values, values)])
        self.write("in", restart_bytes(RestartForm(), sample_solution([(10_000, 1, 1)])))
        self.refuse(2, "grid", "in", "out", says=("four digits", "10000"))

    def test_own_input(self):
        for name in ("grid", "in"):
            self.fail_with(2, "tecplot", "grid", "in", name, says="the file to be read")


if __name__ == "__main__":
    main()
