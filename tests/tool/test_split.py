"""p3dgrid split: one file per block, or one for each side of an index plane."""

from parts_support import PARAMETERS, PartsTest, numbered, picked
from support import grid_bytes, main


class Split(PartsTest):
    def test_a_file_for_each_block(self):
        out = self.succeed("split", "grid", "out.p3d", "--restart", "flow", "out.q")
        self.assertEqual([line.split(", ")[0] for line in out.splitlines()],
                         ["out-1.p3d: 1 block", "out-1.q: 1 block",
                          "out-2.p3d: 1 block", "out-2.q: 1 block"])
        for n, block in enumerate(self.blocks):
            self.assert_grid(f"out-{n + 1}.p3d", [block])
            self.assert_flow(f"out-{n + 1}.q", [block], [PARAMETERS[n]])
        self.assertEqual(sorted(path.name for path in self.folder.glob("out*")),
                         ["out-1.p3d", "out-1.q", "out-2.p3d", "out-2.q"])

    def test_merge_of_the_files_is_the_same_file(self):
        self.succeed("split", "grid", "part", "--restart", "flow", "part.q")
        self.succeed("merge", "part-1", "part-2", "out", "--restart", "part-1.q", "part-2.q",
                     "out.q", "--quiet")
        self.assertEqual(self.path("out").read_bytes(), self.path("grid").read_bytes())
        self.assertEqual(self.path("out.q").read_bytes(), self.path("flow").read_bytes())

    def test_both_sides_of_a_plane(self):
        self.succeed("split", "grid", "out", "--at", "i=3", "--restart", "flow", "out.q")
        for n, ranges in enumerate((((0, 3), (0, 3)), ((2, 5), (2, 9)))):
            sides = [picked(block, [range(*ends), range(block.extents[1]), range(block.extents[2])])
                     for block, ends in zip(self.blocks, ranges)]
            self.assert_grid(f"out-{n + 1}", sides)
            self.assert_flow(f"out-{n + 1}.q", sides)

    def test_blocks_that_end_before_the_plane(self):
        result = self.run_tool("split", "grid", "out", "--at", "i=6")
        self.assertEqual(result.stderr_text,
                         "p3dgrid: note: grid: blocks without points beyond i=6 are whole in the "
                         "first file: 1\n")
        second = self.blocks[1]
        self.assert_grid("out-1", [self.blocks[0], picked(second, [range(6), range(2), (0,)])])
        self.assert_grid("out-2", [picked(second, [range(5, 9), range(2), (0,)])])

    def test_many_blocks(self):
        blocks = [numbered((2, 1, 1), base=10 * n) for n in range(110)]
        self.write("many", grid_bytes(self.form, blocks))
        self.succeed("split", "--quiet", "many", "out.x.gz")
        self.succeed("convert", "out-007.x.gz", "out-7")
        self.assert_grid("out-7", [blocks[6]])
        self.assertTrue(self.path("out-110.x.gz").exists())

    def test_more_blocks_than_temporary_files(self):
        self.write("many", grid_bytes(self.form, [numbered((2, 1, 1))] * (2**14 + 1)))
        self.fail_with(2, "split", "many", "out", says="too many temporary files")
        self.assert_no_leftovers()

    def test_what_cannot_be_split(self):
        for status, arguments, says in (
                (2, ("--at", "j=4"), "grid: no block has points on both sides of j=4"),
                (2, ("--at", "i=1"), "'i=1' is no plane inside a block"),
                (2, ("--at", "i=last"), "no plane"), (2, ("--at", "i=2:3"), "no plane"),
                (2, ("--at", "x=2"), "no plane"), (2, ("--at", ""), "no plane"),
                (1, ("--restart", "bad", "out.q"), "bad: ")):
            with self.subTest(arguments=arguments):
                self.write("bad", self.path("flow").read_bytes()[:-9])
                self.fail_with(status, "split", "grid", "out", *arguments, says=says)
                self.assertEqual(list(self.folder.glob("out*")), [])
        self.write("bad", self.path("grid").read_bytes()[:-9])
        self.fail_with(1, "split", "bad", "out", says="bad: is cut short")
        self.assertEqual(list(self.folder.glob("out*")), [])
        self.write_grid("out-2")
        self.succeed("split", "grid", "out")
        self.assert_grid("out-2", self.blocks[1:])
        self.path("out-1").unlink()
        self.path("out-1").mkdir()
        before = self.path("out-2").read_bytes()
        self.fail_with(2, "split", "grid", "out", "--to-format", "binary",
                       says="out-1: is a folder")
        self.assertEqual(self.path("out-2").read_bytes(), before)
        self.assert_no_leftovers()


if __name__ == "__main__":
    main()
