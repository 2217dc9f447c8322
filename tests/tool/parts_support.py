"""Grids with solutions whose values are the numbers of their points, and parts of them."""

from restart_support import RestartForm, Solution, restart_bytes
from support import Block, Form, ToolTest, grid_bytes

PARAMETERS = [(0.5, 1.5, 2e6, 3), (0.75, -1, 1e6, 4), (0.25, 0, 5e5, 8)]


def numbered(extents, base=0, iblank=True):
    """A block with point numbers as x."""
    points = range(extents[0] * extents[1] * extents[2])
    return Block(extents, [base + p for p in points], [base + p + 0.5 for p in points],
                 [-base - p for p in points], [p % 3 for p in points] if iblank else None)


def flow_of(blocks, variables=5):
    """Variable n at a point: 1000 n + x."""
    return Solution([block.extents for block in blocks],
                    [[[1000 * n + x for x in block.xyz[0]] for n in range(1, variables + 1)]
                     for block in blocks], parameters=PARAMETERS[:len(blocks)])


def picked(block, places):
    """The block with the points at these places, a list for each direction, k outermost."""
    ni, nj, _ = block.extents
    points = [i + ni * (j + nj * k) for k in places[2] for j in places[1] for i in places[0]]
    return Block(tuple(map(len, places)), *([values[p] for p in points] for values in block.xyz),
                 [block.iblank[p] for p in points])


class PartsTest(ToolTest):
    """A grid of two blocks with blanking in double precision, and its solution."""

    form = Form(double=True, iblank=True)
    restart_form = RestartForm(2, double=True)

    def setUp(self):
        super().setUp()
        self.blocks = [numbered((5, 4, 3)), numbered((9, 2, 1), base=100)]
        self.write("grid", grid_bytes(self.form, self.blocks))
        self.write("flow", restart_bytes(self.restart_form, flow_of(self.blocks)))

    def assert_grid(self, name, blocks, form=None):
        self.assertEqual(self.path(name).read_bytes(), grid_bytes(form or self.form, blocks), name)

    def assert_flow(self, name, blocks, parameters=None, form=None):
        solution = flow_of(blocks)
        if parameters:
            solution.parameters = parameters
        self.assertEqual(self.path(name).read_bytes(),
                         restart_bytes(form or self.restart_form, solution), name)
