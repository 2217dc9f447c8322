"""p3dgrid extract: the points that it writes."""

import gzip
import itertools

from parts_support import PARAMETERS, PartsTest, numbered, picked
from restart_support import RestartForm
from support import NATIVE, Form, grid_bytes, main


class Extract(PartsTest):
    def test_everything_is_the_same_file(self):
        out = self.succeed("extract", "grid", "out", "--restart", "flow", "out.q")
        self.assertEqual(self.path("out").read_bytes(), self.path("grid").read_bytes())
        self.assertEqual(self.path("out.q").read_bytes(), self.path("flow").read_bytes())
        self.assertEqual(out, "out: 2 blocks, 78 points, grid, unformatted, little-endian, double "
                              "precision, multi-block, with blanking\n"
                              "out.q: 2 blocks, 78 points, 5 variables, layout 2, unformatted, "
                              "little-endian, double precision, multi-block\n".replace("grid, ", ""))

    def test_coarse_level(self):
        self.succeed("extract", "grid", "out", "--i", "1:last:2", "--k", "1:last:2",
                     "--restart", "flow", "out.q")
        coarse = [picked(self.blocks[0], [(0, 2, 4), range(4), (0, 2)]),
                  picked(self.blocks[1], [range(0, 9, 2), range(2), (0,)])]
        self.assert_grid("out", coarse)
        self.assert_flow("out.q", coarse)

    def test_ranges_and_single_indices(self):
        for option, text, places in (
                ("--i", "2:4", [(1, 2, 3), range(4), range(3)]),
                ("--i", "5", [(4,), range(4), range(3)]),
                ("--j", "last", [range(5), (3,), range(3)]),
                ("--j", "2:last:2", [range(5), (1, 3), range(3)]),
                ("--k", "2:2", [range(5), range(4), (1,)]),
                ("--k", "1:3:2", [range(5), range(4), (0, 2)])):
            with self.subTest(option=option, text=text):
                self.succeed("extract", "--quiet", "grid", "out", "--blocks", "1", option, text,
                             "--restart", "flow", "out.q")
                expected = [picked(self.blocks[0], places)]
                self.assert_grid("out", expected)
                self.assert_flow("out.q", expected)

    def test_blocks_in_any_order(self):
        self.succeed("extract", "grid", "out", "--blocks", "2,1-2", "--restart", "flow", "out.q")
        one, two = self.blocks
        self.assert_grid("out", [two, one, two])
        self.assert_flow("out.q", [two, one, two], [PARAMETERS[n] for n in (1, 0, 1)])

    def test_every_form(self):
        expected = [picked(self.blocks[0], [(0, 2, 4), (3,), range(3)])]
        for encoding, order in itertools.product(("unformatted", "binary", "formatted"),
                                                 ("little", "big")):
            form = Form(encoding, double=True, iblank=True, order=order)
            with self.subTest(form=form):
                self.write("in", grid_bytes(form, self.blocks))
                self.succeed("extract", "--quiet", "in", "out", "--blocks", "1", "--i", "1:last:2",
                             "--j", "last", *form.options("grid"), "--to-format", "unformatted",
                             "--to-precision", "double", "--to-byte-order", "little")
                self.assert_grid("out", expected)

    def test_two_dimensions(self):
        plane = [numbered((5, 3, 1))]
        plane[0].xyz[2][:] = [0] * 15
        self.write("in", grid_bytes(Form(double=True), plane))
        self.succeed("convert", "--quiet", "in", "flat", "--to-dimensions", "2")
        self.succeed("extract", "--quiet", "flat", "part", "--i", "1:5:4", "--j", "2:3")
        self.succeed("convert", "--quiet", "part", "out", "--to-dimensions", "3")
        self.assert_grid("out", [picked(plane[0], [(0, 4), (1, 2), (0,)])], Form(double=True))

    def test_forms_of_both_outputs(self):
        self.succeed("extract", "--quiet", "grid", "out", "--blocks", "2", "--to-format", "binary",
                     "--to-multiblock", "no", "--to-layout", "3", "--restart", "flow", "out.q")
        self.assert_grid("out", [self.blocks[1]],
                         Form("binary", double=True, multiblock=False, iblank=True))
        self.assert_flow("out.q", [self.blocks[1]], form=RestartForm(3, "binary", True, False))

    def test_compressed_files(self):
        for name in ("grid", "flow"):
            self.write(name + ".gz", gzip.compress(self.path(name).read_bytes()))
        self.succeed("extract", "grid.gz", "out.gz", "--restart", "flow.gz", "out.q.gz")
        for name, source in (("out.gz", "grid"), ("out.q.gz", "flow")):
            self.assertEqual(gzip.decompress(self.path(name).read_bytes()),
                             self.path(source).read_bytes())

    def test_uneven_steps_are_refused_or_noted(self):
        self.fail_with(2, "extract", "grid", "out", "--j", "1:last:2",
                       says="grid: block 1 has 4 points in j, and steps of 2 from 1 miss the last "
                            "of them, 4; --uneven leaves it out")
        result = self.run_tool("extract", "grid", "out", "--j", "1:last:2", "--uneven")
        self.assertEqual(result.stderr_text,
                         "p3dgrid: note: out leaves out the last points of blocks whose extents "
                         "are no multiple of the step plus one: 1,2\n")
        self.assert_grid("out", [picked(self.blocks[0], [range(5), (0, 2), range(3)]),
                                 picked(self.blocks[1], [range(9), (0,), (0,)])])

    def test_what_is_not_there(self):
        for arguments, says in (
                (("--i", "1:6"), "grid: block 1 has 5 points in i, and there is none of index 6"),
                (("--j", "3"), "block 2 has 2 points in j, and there is none of index 3"),
                (("--k", "4:last"), "block 1 has 3 points in k, and there is none of index 4"),
                (("--blocks", "1-3"), "grid: holds 2 blocks, and there is no block 3"),
                (("--to-multiblock", "no"), "out: not written: grid holds 2 blocks, and a file"),
                (("--i", "0"), "'0' is no index range"), (("--i", "3:2"), "no index range"),
                (("--i", "1:2:0"), "no index range"), (("--blocks", "2-1"), "no list of blocks"),
                (("--blocks", ""), "no list of blocks"), (("--blocks", "1,"), "no list of blocks"),
                (("--restart", "flow", "out"), "out: cannot be both the grid and its solution"),
                (("--restart", "flow", "out.vts"), "--restart: 'out.vts' ends in .vts"),
                (("--restart", "flow", "flow"), "flow: is the file to be read")):
            with self.subTest(arguments=arguments):
                self.fail_with(2, "extract", "grid", "out", *arguments, says=says)
                self.assertFalse(self.path("out").exists())
        self.assert_no_leftovers()

    def test_damaged_input_writes_nothing(self):
        for name, arguments in (("grid", ("bad", "out", "--restart", "flow", "out.q")),
                                ("flow", ("grid", "out", "--restart", "bad", "out.q"))):
            with self.subTest(name=name):
                self.write("bad", self.path(name).read_bytes()[:-20])
                self.fail_with(1, "extract", *arguments, says=("bad: ", "record "))
                self.assertFalse(self.path("out").exists())
                self.assertFalse(self.path("out.q").exists())
        self.assert_no_leftovers()

    def test_a_form_that_is_not_the_files(self):
        self.write("grid", grid_bytes(Form("binary", double=True, iblank=True), self.blocks))
        self.fail_with(1, "extract", "grid", "out", *Form("binary", double=True).options("grid"),
                       "--grid-byte-order", NATIVE, "--grid-dimensions", "3",
                       says="grid: is not binary")
        self.assertFalse(self.path("out").exists())

    def test_solution_of_another_grid(self):
        self.write("other", grid_bytes(self.form, self.blocks[:1]))
        self.fail_with(1, "extract", "other", "out", "--restart", "flow", "out.q",
                       says="flow: does not belong to other")
        self.fail_with(1, "extract", "flow", "out", says="flow: is a restart (flow-solution) file")


if __name__ == "__main__":
    main()
