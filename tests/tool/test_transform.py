"""p3dgrid transform: coordinates and the order of the points."""

from parts_support import PartsTest, flow_of, numbered, picked
from restart_support import RestartForm, restart_bytes
from support import Block, Form, grid_bytes, main, single


def moved(block, change):
    """The block with other coordinates: `change(x, y, z)`."""
    points = [change(*point) for point in zip(*block.xyz)]
    return Block(block.extents, *zip(*points), block.iblank)


def reversed_in(block, axes):
    ranges = [range(n) for n in block.extents]
    return picked(block, [ranges[a][::-1] if a in axes else ranges[a] for a in range(3)])


def swapped(block, one, other):
    """The block with two directions exchanged."""
    extents = list(block.extents)
    extents[one], extents[other] = extents[other], extents[one]
    points = []
    for k in range(extents[2]):
        for j in range(extents[1]):
            for i in range(extents[0]):
                old = [i, j, k]
                old[one], old[other] = old[other], old[one]
                points.append(old[0] + block.extents[0] * (old[1] + block.extents[1] * old[2]))
    return Block(tuple(extents), *([values[p] for p in points] for values in block.xyz),
                 [block.iblank[p] for p in points])


class Transform(PartsTest):
    def transform(self, *arguments, notes=()):
        result = self.run_tool("transform", "grid", "out", *arguments)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        self.assertEqual(result.stderr_text.splitlines(),
                         [f"p3dgrid: note: {note}" for note in notes])

    def test_scale_then_translate(self):
        self.transform("--scale", "0.5", "--translate", "1", "-2", "1e3", "--restart", "flow",
                       "out.q")
        self.assert_grid("out", [moved(block, lambda x, y, z: (0.5 * x + 1, 0.5 * y - 2,
                                                               0.5 * z + 1000))
                                 for block in self.blocks])
        self.assert_flow("out.q", self.blocks)

    def test_in_single_precision(self):
        self.write("grid", grid_bytes(Form(), self.blocks))
        self.transform("--scale", "0.1")
        self.assert_grid("out", [moved(Block(block.extents, *block.xyz),
                                       lambda *point: tuple(single(0.1 * c) for c in point))
                                 for block in self.blocks], Form())

    def test_reverse_and_swap(self):
        lost = ("out: right-handed blocks become left-handed, and the reverse; one more direction "
                "in --reverse keeps their handedness",)
        for arguments, change, notes in (
                (("--reverse", "j"), lambda block: reversed_in(block, [1]), lost),
                (("--reverse", "ik"), lambda block: reversed_in(block, [0, 2]), ()),
                (("--swap", "ij"), lambda block: swapped(block, 0, 1), lost),
                (("--swap", "ik"), lambda block: swapped(block, 0, 2), lost),
                (("--swap", "jk", "--reverse", "k"),
                 lambda block: reversed_in(swapped(block, 1, 2), [2]), ()),
                (("--reverse", "k", "--swap", "jk"),
                 lambda block: reversed_in(swapped(block, 1, 2), [2]), ())):
            with self.subTest(arguments=arguments):
                self.transform(*arguments, "--restart", "flow", "out.q", notes=notes)
                expected = [change(block) for block in self.blocks]
                self.assert_grid("out", expected)
                self.assert_flow("out.q", expected)

    def test_twice_is_the_identity(self):
        for arguments in (("--mirror", "y=0"), ("--reverse", "ijk"), ("--swap", "ik")):
            with self.subTest(arguments=arguments):
                self.succeed("transform", "grid", "once", *arguments, "--restart", "flow", "once.q")
                self.succeed("transform", "once", "out", *arguments, "--restart", "once.q", "out.q")
                self.assertEqual(self.path("out").read_bytes(), self.path("grid").read_bytes())
                self.assertEqual(self.path("out.q").read_bytes(), self.path("flow").read_bytes())

    def test_mirror_keeps_handedness_and_negates_momentum(self):
        self.transform("--mirror", "y=2", "--restart", "flow", "out.q",
                       notes=["out: i is reversed, which keeps the handedness of mirrored blocks"])
        expected = [reversed_in(moved(block, lambda x, y, z: (x, 4 - y, z)), [0])
                    for block in self.blocks]
        self.assert_grid("out", expected)
        flow = flow_of(expected)
        for block in flow.flow:
            block[2] = [-value for value in block[2]]
        self.assertEqual(self.path("out.q").read_bytes(), restart_bytes(self.restart_form, flow))

    def test_mirror_of_blocks_of_one_point_in_i(self):
        blocks = [numbered((2, 2, 3)), numbered((1, 4, 2))]
        self.write("grid", grid_bytes(self.form, blocks))
        self.transform("--mirror", "x=0", notes=[
            "out: i is reversed, which keeps the handedness of mirrored blocks: 1",
            "out: j is reversed, which keeps the handedness of mirrored blocks: 2"])
        mirrored = [moved(block, lambda x, y, z: (-float(x), y, z)) for block in blocks]
        self.assert_grid("out", [reversed_in(mirrored[0], [0]), reversed_in(mirrored[1], [1])])

    def test_functions_are_not_mirrored(self):
        form = RestartForm(3, double=True)
        self.write("flow", restart_bytes(form, flow_of(self.blocks, 3)))
        self.transform("--mirror", "z=0", "--restart", "flow", "out.q", notes=[
            "out: i is reversed, which keeps the handedness of mirrored blocks",
            "out.q: variables of layout 3 are not mirrored; vectors among them keep their signs"])
        turned = [reversed_in(block, [0]) for block in self.blocks]
        self.assertEqual(self.path("out.q").read_bytes(), restart_bytes(form, flow_of(turned, 3)))

    def test_two_dimensions(self):
        plane = [Block((4, 3, 1), range(12), range(12, 24), [0] * 12)]
        self.write("in", grid_bytes(Form(double=True), plane))
        self.succeed("convert", "in", "grid", "--to-dimensions", "2")
        self.succeed("transform", "grid", "flat", "--mirror", "x=0", "--swap", "ij")
        self.succeed("convert", "flat", "out", "--to-dimensions", "3")
        mirrored = reversed_in(moved(plane[0], lambda x, y, z: (-float(x), y, z)), [0])
        self.assert_grid("out", [swapped(mirrored, 0, 1)], Form(double=True))
        self.fail_with(2, "transform", "grid", "out", "--translate", "0", "0", "1",
                       says="out: not written: ")
        self.fail_with(2, "--quiet", "transform", "grid", "out", "--swap", "ik",
                       says="out: not written: ")

    def test_wrong_values(self):
        for arguments in (("--scale", "0"), ("--scale", "-1"), ("--scale", "nan"),
                          ("--scale", "x"), ("--translate", "1", "2", "x"), ("--mirror", "y"),
                          ("--mirror", "w=0"), ("--mirror", "y=inf"), ("--mirror", "y="),
                          ("--swap", "ii"), ("--reverse", "x"), ("--reverse", "ii")):
            with self.subTest(arguments=arguments):
                self.fail_with(2, "transform", "grid", "out", *arguments, says=arguments[0])
        self.write("bad", self.path("grid").read_bytes()[:-9])
        self.fail_with(1, "transform", "bad", "out", says="bad: is cut short")
        self.assert_no_leftovers()


if __name__ == "__main__":
    main()
