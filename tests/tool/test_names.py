"""The names of variables: --names, and .nam files beside function files."""

import gzip
import json

from restart_support import RestartForm, restart_bytes, sample_solution
from support import TWO_BLOCKS, Block, Form, ToolTest, main

TWO = [block.extents for block in TWO_BLOCKS]
KNOWN = "rho (density), x-momentum, y-momentum, z-momentum, energy, u, v, w, p (pressure), mach"


class Names(ToolTest):
    def setUp(self):
        super().setUp()
        self.write_grid("grid")
        self.write("flow.f", restart_bytes(RestartForm(3), sample_solution(TWO, 2)))
        self.write("five.f", restart_bytes(RestartForm(3), sample_solution(TWO)))
        self.write("flow.q", restart_bytes(RestartForm(), sample_solution(TWO)))

    def shown(self, *arguments):
        """The names that info shows; None for variables without one."""
        variables = json.loads(self.succeed("info", "--json", *arguments))["variables"]
        return [variable["name"] for variable in variables]

    def test_stated(self):
        self.assertEqual(self.shown("flow.f"), [None, None])
        self.assertEqual(self.shown("flow.f", "--names", "swirl, heat flux"),
                         ["swirl", "heat flux"])
        self.assertEqual(self.shown("flow.q", "--names", "rho,u,v,w,p"),
                         ["rho", "u", "v", "w", "p"])
        self.assertIn("1  swirl  1000.1", self.succeed("info", "flow.f", "--names", "swirl,k"))

    def test_beside_a_function_file(self):
        self.write("flow.nam", b"swirl ; vorticity\r\n\n  k \n")
        self.assertEqual(self.shown("flow.f"), ["swirl", "k"])
        self.assertEqual(self.shown("flow.f", "--names", "a,b"), ["a", "b"])
        self.assertEqual(self.shown("flow.q")[0], "density")
        self.write("flow.f.gz", gzip.compress(self.path("flow.f").read_bytes()))
        self.assertEqual(self.shown("flow.f.gz"), ["swirl", "k"])

    def test_name_files_that_do_not_fit_are_noted(self):
        for content in (b"swirl\n", b"a\nb\nc\n", b"a\na\n", b"a\n\x01\n"):
            self.write("flow.nam", content)
            result = self.run_tool("info", "flow.f")
            self.assertEqual(result.returncode, 0)
            self.assertIn("note: flow.nam: not used, because it has no list of 2 different names, "
                          "one on a line", result.stderr_text)
            self.assertEqual(self.shown("flow.f"), [None, None])

    def test_name_files_are_small(self):
        self.write("flow.nam", b"swirl\nk" + b"\n" * (1 << 20))
        self.assertEqual(self.shown("flow.f"), [None, None])

    def test_vtk(self):
        self.succeed("vtk", "grid", "flow.f", "out.vtm", "--names", "a & <b>,c")
        text = self.path("out-1.vts").read_bytes()
        for name in (b'Name="a &amp; &lt;b>"', b'Name="c"'):
            self.assertIn(name, text)

    def test_plot(self):
        out = self.succeed("plot", "grid", "flow.f", "out.png", "--names", "swirl,k",
                           "--variable", "k")
        self.assertTrue(out.startswith("out.png: k, from 2000.1 to "), out)
        self.fail_with(2, "plot", "grid", "flow.f", "out.png", "--names", "swirl,k", "--variable",
                       "x", says="flow.f: 'x' is neither swirl, k nor the number of a variable")
        self.fail_with(2, "plot", "grid", "flow.q", "out.png", "--variable", "x",
                       says=f"flow.q: 'x' is neither {KNOWN} nor the number of a variable")
        # A stated name comes before one of a PLOT3D solution.
        out = self.succeed("plot", "grid", "flow.q", "out.png", "--names", "rho,u,v,w,p",
                           "--variable", "u")
        self.assertTrue(out.startswith("out.png: u, from 2000.1 to "), out)

    def test_tecplot_columns(self):
        self.succeed("tecplot", "grid", "flow.q", "old", "--as-stored", "--iblank", "--quiet")
        old = self.path("old").read_bytes().split(b"\n", 1)
        # Longer and shorter lines than that of the library.
        for names in ("rho,rhou,rhov,rhow,e", "a,b,c,d,e", ",".join(n * 99 for n in "abcde")):
            for source in ("flow.q", "five.f"):
                self.succeed("tecplot", "grid", source, "out", "--iblank", "--names", names)
                new = self.path("out").read_bytes().split(b"\n", 1)
                columns = ", ".join(f'"{name}"' for name in ["X", "Y", "Z", *names.split(",")])
                self.assertEqual(new[0].decode(), f' VARIABLES = {columns},"IBLANK"')
                self.assertEqual(new[1], old[1])
        self.write("five.nam", b"a\nb\nc\nd\ne\n")
        self.succeed("tecplot", "grid", "five.f", "out")
        self.assertIn(b'"Z", "a", "b", "c", "d", "e"\n', self.path("out").read_bytes())

    def test_wrong_usage(self):
        for names in ("", "a,", "a,a,b,c,d", 'a"b', "a\nb", "a\x7fb"):
            self.fail_with(2, "info", "flow.q", "--names", names,
                           says="is no list of different names such as rho,u,v,w,p")
        self.fail_with(2, "info", "flow.q", "--names", "a,b",
                       says="flow.q: holds 5 variables, and --names gives 2 names")
        self.fail_with(2, "info", "grid", "--names", "a,b", says="--names applies to a restart file")
        self.fail_with(2, "vtk", "grid", "out.vtm", "--names", "a", says="--names applies to")
        self.fail_with(2, "plot", "grid", "out.png", "--names", "a", says="--names applies to")


class ManyBlocks(ToolTest):
    def setUp(self):
        super().setUp()
        blocks = [TWO_BLOCKS[n % 2] for n in range(25)]
        self.write_grid("grid", Form(), blocks)
        solution = sample_solution([block.extents for block in blocks])
        solution.parameters = [(0.5, 1, 2, 3)] * 25
        self.write("flow", restart_bytes(RestartForm(), solution))

    def blocks(self, *arguments):
        """The blocks in each table of blocks."""
        lines = self.succeed("info", *arguments).splitlines()
        tables = "\n".join(lines).split("\n\n")[1:]
        return [[line.split()[0] for line in table.splitlines()[1:]] for table in tables
                if table.split()[0] == "block"]

    def test_summary(self):
        self.assertIn("holds   25 blocks, 140 points\n"
                      "fewest  3 points in block 2, 3x1x1\n"
                      "most    8 points in block 1, 2x2x2\n"
                      "blocks  --blocks all shows all of them, --blocks 1,3-5 some\n",
                      self.succeed("info", "grid"))
        self.assertEqual(self.blocks("grid"), [["all"], ["all"]])
        self.assertEqual(self.blocks("flow"), [["all"]])  # flow parameters, the same everywhere

    def test_list(self):
        some = ["3", "20", "21"]
        self.assertEqual(self.blocks("grid", "--blocks", "3,20-21"),
                         [some + ["all"], some + ["all"]])
        self.assertEqual(self.blocks("flow", "--blocks", "3,20-21"), [some, some])
        everything = [str(n + 1) for n in range(25)]
        self.assertEqual(self.blocks("flow", "--blocks", "all"), [everything, everything])
        self.fail_with(2, "info", "grid", "--blocks", "26",
                       says="grid: holds 25 blocks, and there is no block 26")
        self.fail_with(2, "info", "grid", "--blocks", "0", says="is no list of blocks")


class Series(ToolTest):
    def series(self, *arguments):
        return [line.split(None) for line in self.succeed("info", *arguments).splitlines()]

    def write_flow(self, name, time, scale=1):
        solution = sample_solution(TWO)
        solution.parameters = [(0.5, 1, 2, time)] * 2
        solution.flow[0][4] = [scale * value for value in solution.flow[0][4]]
        self.write(name, restart_bytes(RestartForm(double=True), solution))

    def test_one_line_a_file(self):
        self.write_flow("a.q", 0.25)
        self.write_flow("b.q", 0.5)
        self.write_flow("c.q", 0.5)
        self.write_flow("d.q", 0.75, scale=2)
        self.assertEqual(self.series("a.q", "b.q", "c.q", "d.q"),
                         [["file", "blocks", "points", "time", "changes"],
                          ["a.q", "2", "11", "0.25", "-"],
                          ["b.q", "2", "11", "0.5", "time"],
                          ["c.q", "2", "11", "0.5", "nothing"],
                          ["d.q", "2", "11", "0.75", "time,", "energy"]])

    def test_each_change_is_found(self):
        blocks = [Block(block.extents, *block.xyz, [1] * len(block.iblank)) for block in TWO_BLOCKS]
        form = Form(iblank=True)
        self.write_grid("a", form, blocks)
        self.write_grid("b", form)
        self.write_grid("c", blocks=blocks)
        self.assertEqual([" ".join(row[3:]) for row in self.series("a", "b", "c")[1:]],
                         ["-", "blanking", "form, blanking"])
        solution = sample_solution(TWO)
        self.write("a.q", restart_bytes(RestartForm(double=True), solution))
        solution.flow[0][4][3] = float("nan")
        self.write("b.q", restart_bytes(RestartForm(double=True), solution))
        solution.parameters = [(0.5, 1, 2, 3), (0.5, 1, 2, 3)]
        self.write("c.q", restart_bytes(RestartForm(double=True), solution))
        solution.parameters[1] = (0.5, 1, 2, 4)
        self.write("d.q", restart_bytes(RestartForm(double=True), solution))
        rows = self.series("a.q", "b.q", "c.q", "d.q")
        self.assertEqual([rows[2][-1], rows[4][-1]], ["energy", "time"])
        self.assertIn("3,4", rows[4])

    def test_compressed(self):
        self.write_flow("a.q", 0.25)
        self.write("b.q.gz", gzip.compress(self.path("a.q").read_bytes()))
        self.assertEqual(self.series("a.q", "b.q.gz")[2], ["b.q.gz", "2", "11", "nothing"])

    def test_grids_and_kinds(self):
        self.write_grid("a")
        self.write_grid("b", Form(double=True), TWO_BLOCKS[:1])
        self.write_flow("c", 1)
        rows = self.series("a", "b", "c")
        self.assertEqual(rows[2][:3], ["b", "1", "8"])
        self.assertEqual(" ".join(rows[2][3:]), "form, blocks, points, extents, x, y, z")
        self.assertEqual(rows[3], ["c", "2", "11", "kind"])

    def test_refusals(self):
        self.write_grid("a")
        self.fail_with(2, "info", "a", "a", "--json", says="--json and --index take one file")
        self.fail_with(2, "info", "a", "nowhere", says="nowhere: ")


if __name__ == "__main__":
    main()
