"""p3dgrid merge: the blocks of several files in one."""

from random import Random

from parts_support import PARAMETERS, PartsTest, flow_of, numbered
from restart_support import RestartForm, restart_bytes
from support import Block, Form, grid_bytes, main


class Merge(PartsTest):
    def setUp(self):
        super().setUp()
        self.more = [numbered((2, 3, 4), base=300)]
        self.write("more", grid_bytes(self.form, self.more))
        self.write("more.q", restart_bytes(self.restart_form, flow_of(self.more)))

    def notes(self, *arguments):
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        return result.stderr_text.replace("p3dgrid: note: ", "").splitlines()

    def test_grids_and_solutions(self):
        notes = self.notes("merge", "grid", "more", "grid", "out", "--restart", "flow", "more.q",
                           "flow", "out.q")
        blocks = [*self.blocks, *self.more, *self.blocks]
        self.assert_grid("out", blocks)
        self.assert_flow("out.q", blocks, [PARAMETERS[n] for n in (0, 1, 0, 0, 1)])
        self.assertEqual(notes, [])

    def test_extract_after_merge_is_the_identity(self):
        self.succeed("merge", "grid", "more", "all", "--restart", "flow", "more.q", "all.q")
        for blocks, grid, flow in (("1-2", "grid", "flow"), ("3", "more", "more.q")):
            self.succeed("extract", "all", "part", "--blocks", blocks, "--restart", "all.q", "part.q")
            self.assertEqual(self.path("part").read_bytes(), self.path(grid).read_bytes())
            self.assertEqual(self.path("part.q").read_bytes(), self.path(flow).read_bytes())

    def test_random_grids_keep_their_blocks(self):
        """Each block is extracted from the merged file, in any form and after any other block."""
        random = Random(1)
        for case in range(25):
            form = Form(random.choice(("unformatted", "binary")), random.random() < 0.5,
                        iblank=random.random() < 0.5,
                        order=random.choice(("little", "big")))
            grids = [[numbered([random.randint(1, 4) for _ in range(3)], random.randint(-99, 99),
                               form.iblank) for _ in range(random.randint(1, 3))]
                     for _ in range(random.randint(2, 3))]
            names = [f"grid{n}" for n in range(len(grids))]
            for name, blocks in zip(names, grids):
                self.write(name, grid_bytes(form, blocks))
            with self.subTest(case=case):
                self.succeed("merge", "--quiet", *names, "all", *form.options("grid"))
                blocks = sum(grids, [])
                self.assert_grid("all", blocks, form)
                order = random.sample(range(len(blocks)), len(blocks))
                self.succeed("extract", "--quiet", "all", "part", *form.options("grid"),
                             "--blocks", ",".join(str(b + 1) for b in order))
                self.assert_grid("part", [blocks[b] for b in order], form)

    def test_differences_are_named(self):
        plain = [Block(block.extents, *block.xyz) for block in self.more]
        self.write("more", grid_bytes(Form("binary", iblank=False), plain))
        other = flow_of(self.more)
        other.parameters = [PARAMETERS[2]]
        self.write("more.q", restart_bytes(RestartForm(2), other))
        notes = self.notes("merge", "grid", "more", "out", "--restart", "flow", "more.q", "out.q")
        self.assertEqual(notes, [
            "more: precision single, in grid double; out has the higher",
            "more: blanking no, in grid yes; out holds 1 where there is none",
            "more.q: precision single, in flow double; out.q has the higher",
            "more.q: Mach number 0.25, in flow 0.5; out.q holds that of each block",
            "more.q: angle of attack 0, in flow 1.5; out.q holds that of each block",
            "more.q: Reynolds number 5e+05, in flow 2e+06; out.q holds that of each block",
            "more.q: time 8, in flow 3; out.q holds that of each block"])
        self.assert_grid("out", [*self.blocks, *plain])
        self.assert_flow("out.q", [*self.blocks, *self.more], [*PARAMETERS])

    def test_differences_that_are_stated_are_not_noted(self):
        plain = [Block(block.extents, *block.xyz) for block in self.more]
        self.write("more", grid_bytes(Form(), plain))
        self.write("more.q", restart_bytes(RestartForm(2), flow_of(self.more)))
        notes = self.notes("merge", "grid", "more", "out", "--restart", "flow", "more.q", "out.q",
                           "--to-precision", "double", "--to-iblank", "yes")
        self.assertEqual(notes, [])
        other = flow_of(self.more)
        other.parameters = [(0.75, *PARAMETERS[0][1:])]
        self.write("other.q", restart_bytes(RestartForm(2), other))
        self.assertEqual(self.notes("merge", "grid", "more", "other", "--restart", "flow",
                                    "other.q", "out.q", "--to-precision", "double", "--to-iblank",
                                    "yes"),
                         ["other.q: Mach number 0.75, in flow 0.5; out.q holds that of each block"])
        self.succeed("merge", "--quiet", "grid", "more", "out", "--restart", "flow", "more.q",
                     "out.q", "--to-precision", "double", "--to-iblank", "yes")
        self.assert_grid("out", [*self.blocks, *plain])
        self.assert_flow("out.q", [*self.blocks, *self.more], [PARAMETERS[n] for n in (0, 1, 0)])

    def test_grids_of_two_dimensions(self):
        plane = Block((3, 2, 1), range(6), range(6, 12), [0] * 6)
        self.write("solid", grid_bytes(Form(double=True), [plane]))
        self.succeed("convert", "solid", "plane", "--to-dimensions", "2")
        notes = self.notes("merge", "solid", "plane", "out")
        self.assertEqual(notes, ["plane: dimensions 2, in solid 3; out has those of the first file"])
        self.assert_grid("out", [plane, plane], Form(double=True))
        self.succeed("merge", "--quiet", "plane", "solid", "flat")
        self.succeed("convert", "flat", "out", "--to-dimensions", "3")
        self.assert_grid("out", [plane, plane], Form(double=True))
        self.fail_with(2, "--quiet", "merge", "plane", "more", "flat", says="flat: not written: ")
        self.write("solid", grid_bytes(Form(double=True), [numbered((3, 2, 1), iblank=False)]))
        self.fail_with(2, "--quiet", "merge", "plane", "solid", "flat",
                       says="flat: not written: two dimensions have no place for z other than 0; "
                            "--to-dimensions 3 has")

    def test_grids_without_a_block_count(self):
        form = Form(double=True, multiblock=False)
        one = [numbered((3, 2, 2), iblank=False)]
        self.write("one", grid_bytes(form, one))
        self.succeed("merge", "one", "one", "out")
        self.assert_grid("out", one + one, Form(double=True))

    def test_text_is_rounded_to_single_precision(self):
        one = [numbered((2, 3, 4), base=0.1, iblank=False)]
        self.write("single", grid_bytes(Form(), one))
        self.write("text", grid_bytes(Form("formatted"), one))
        notes = self.notes("merge", "single", "text", "out.txt")
        self.assertEqual(notes[1:], [
            "coordinates are rounded to about 7 digits; --to-precision double keeps more",
            "out.txt: is unformatted, little-endian, single precision, not the text that its name "
            "promises; --to-format text writes it"])
        self.assert_grid("out.txt", one + one, Form())

    def test_the_higher_precision_is_kept_in_either_order(self):
        plain = [Block(block.extents, *block.xyz) for block in self.more]
        self.write("more", grid_bytes(Form(), plain))
        self.succeed("merge", "--quiet", "more", "grid", "out")
        self.assert_grid("out", [*plain, *self.blocks])

    def test_header_values_of_the_first_file_stay(self):
        form = RestartForm(1, double=True)
        one, two = flow_of(self.blocks), flow_of(self.more)
        one.step, two.step = (10, 0.5), (20, 0.5)
        self.write("flow", restart_bytes(form, one))
        self.write("more.q", restart_bytes(form, two))
        notes = self.notes("merge", "grid", "more", "out", "--restart", "flow", "more.q", "out.q")
        self.assertEqual(notes, ["more.q: step count 20, in flow 10; out.q holds that of the first "
                                 "file"])
        both = flow_of([*self.blocks, *self.more])
        both.step = (10, 0.5)
        self.assertEqual(self.path("out.q").read_bytes(), restart_bytes(form, both))

    def test_functions(self):
        form = RestartForm(3, double=True)
        for name, blocks in (("flow", self.blocks), ("more.q", self.more)):
            self.write(name, restart_bytes(form, flow_of(blocks, 2)))
        self.succeed("merge", "grid", "more", "out", "--restart", "flow", "more.q", "out.q")
        self.assertEqual(self.path("out.q").read_bytes(),
                         restart_bytes(form, flow_of([*self.blocks, *self.more], 2)))

    def test_functions_of_different_number(self):
        form = RestartForm(3, double=True)
        self.write("flow", restart_bytes(form, flow_of(self.blocks, 2)))
        self.write("more.q", restart_bytes(form, flow_of(self.more, 3)))
        notes = self.notes("merge", "grid", "more", "out", "--restart", "flow", "more.q", "out.q")
        self.assertEqual(notes, ["more.q: variables 3, in flow 2; out.q holds those of each block"])
        both = flow_of([*self.blocks, *self.more], 2)
        both.sections = [(1, 3)]
        both.flow[2] = flow_of(self.more, 3).flow[0]
        self.assertEqual(self.path("out.q").read_bytes(), restart_bytes(form, both))

    def test_what_cannot_be_merged(self):
        self.write("other.q", restart_bytes(RestartForm(1), flow_of(self.more)))
        for status, arguments, says in (
                (1, ("grid", "more", "out", "--restart", "flow", "other.q", "out.q"),
                 "other.q: has layout 1, and flow layout 2; 'p3dgrid restart' converts one"),
                (1, ("grid", "more", "out", "--restart", "more.q", "flow", "out.q"),
                 "more.q: does not belong to grid"),
                (2, ("grid", "more", "out", "--restart", "flow", "out.q"),
                 "--restart names 1 solution and the file to write, and there are 2 grids"),
                (1, ("flow", "more", "out"),
                 "'p3dgrid merge GRID ... OUT --restart RESTART ... OUT' takes it"),
                (1, ("flow", "more", "out", "--restart", "more.q", "flow", "out.q"),
                 "'p3dgrid merge GRID ... OUT --restart flow ... OUT' takes it with its grid"),
                (1, ("grid", "more", "out", "--restart", "grid", "more.q", "out.q"),
                 "'p3dgrid merge grid ... OUT' without --restart takes grids alone"),
                (2, ("grid", "out"), "merge takes at least two grids"),
                (2, ("grid", "more", "out.vtk"), "'out.vtk' ends in .vtk"),
                (2, ("grid", "more", "grid"), "grid: is the file to be read"),
                (2, ("grid", "more", "out", "--to-multiblock", "no"), "there are 3 blocks")):
            with self.subTest(arguments=arguments):
                self.fail_with(status, "merge", *arguments, says=says)
                self.assertFalse(self.path("out").exists())
        self.write("more", self.path("more").read_bytes()[:-9])
        self.fail_with(1, "merge", "grid", "more", "out", says="more: is cut short")
        self.assertFalse(self.path("out").exists())
        self.assert_no_leftovers()


if __name__ == "__main__":
    main()
