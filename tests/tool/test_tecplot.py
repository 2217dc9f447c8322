"""p3dgrid tecplot: its lines against lines put together here."""

from restart_support import RestartForm, encodings, restart_bytes, sample_solution
from support import ONE_BLOCK, TWO_BLOCKS, Block, Form, ToolTest, main, single

ONE = [block.extents for block in ONE_BLOCK]
TWO = [block.extents for block in TWO_BLOCKS]
VARIABLES = ' VARIABLES = "X", "Y", "Z", "U", "V", "W", "P", "RHO"'


def expected_lines(solution, blanking=None):
    """Titles as text, points as lists of numbers."""
    lines = [VARIABLES + (',"IBLANK"' if blanking else "")]
    for b, block in enumerate(TWO_BLOCKS):
        i, j, k = block.extents
        lines.append(f'ZONE T="ZONE-{b + 1:06}" I={i:04} J={j:04} K={k:04}')
        columns = [*block.xyz, *solution.flow[b]]
        points = [list(map(single, point)) for point in zip(*columns)]
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
            found = line if isinstance(wanted, str) else list(map(float, line.split()))
            self.assertEqual(found, wanted)
        self.assert_no_leftovers()

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
                    self.succeed("tecplot", "grid", "in", "out", *form.options())
                    self.assert_holds(expected_lines(solution))

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
