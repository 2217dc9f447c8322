"""What the names of files say to the command."""

import os

from support import ToolTest, main

OTHERS = (".vts", ".vtk", ".cgns", ".plt", ".szplt", ".hdf5", ".h5", ".stl", ".su2", ".msh")


class StandardStreams(ToolTest):
    def test_dash_is_refused_and_makes_no_file(self):
        self.write_grid("in")
        for command in (("info", "-"), ("check", "-"), ("check", "in", "-"), ("convert", "-", "out"),
                        ("convert", "in", "-"), ("restart", "-", "in", "out"),
                        ("restart", "in", "-", "out"), ("restart", "in", "in", "-"),
                        ("tecplot", "in", "in", "-"), ("plot", "-", "out.png"),
                        ("plot", "in", "in", "-"), ("info", "in", "--grid", "-"), ("sample", "-")):
            with self.subTest(command=command):
                self.fail_with(2, *command, says=("'-' stands for standard input or output",
                                                  "'./-' is a file of that name"))
        self.assertEqual(os.listdir(self.folder), ["in"])

    def test_file_of_that_name(self):
        self.write_grid("in")
        self.succeed("convert", "in", "./-")
        self.assertEqual(self.path("-").read_bytes(), self.path("in").read_bytes())
        self.assertIn("no damage", self.succeed("check", "./-"))


class Endings(ToolTest):
    def test_those_of_other_formats_are_refused_before_anything_is_read(self):
        for ending in (*OTHERS, ".VTS", ".cgns.gz"):
            for command in (("convert", "missing"), ("restart", "missing", "missing"),
                            ("tecplot", "missing", "missing")):
                with self.subTest(ending=ending, command=command):
                    shown = ending.lower().removesuffix(".gz")
                    self.fail_with(2, *command, "out" + ending,
                                   says=("OUT: 'out" + ending, f"ends in {shown}, the ending of a "
                                         "format that is not written"))
        self.assertEqual(os.listdir(self.folder), [])

    def test_they_are_read(self):
        for ending in OTHERS:
            self.write_grid("in" + ending)
            self.assertIn("no damage", self.succeed("check", "in" + ending))

    def test_names_that_only_look_similar(self):
        self.write_grid("in")
        self.path("x.vts").mkdir()
        for name in ("x.vts/out", "vts", ".vts", "out.vts.p3d", "out.plot"):
            self.succeed("convert", "in", name)
            self.assertEqual(self.path(name).read_bytes(), self.path("in").read_bytes())

    def notes(self, *arguments):
        result = self.run_tool(*arguments)
        self.assertEqual(result.returncode, 0, result.stderr_text)
        return [line for line in result.stderr_text.splitlines() if "name promises" in line]

    def test_text_that_is_none_gets_a_note(self):
        self.succeed("sample", "case")
        commands = {"convert": ("convert", "case/grid.p3d"),
                    "restart": ("restart", "case/grid.p3d", "case/flow.q")}
        for command in commands.values():
            for name in ("out.txt", "out.TXT", "out.txt.gz"):
                for form, said in (("unformatted", True), ("binary", True), ("formatted", False)):
                    with self.subTest(command=command, name=name, form=form):
                        notes = self.notes(*command, name, "--to-format", form)
                        self.assertEqual(len(notes), said)
                        if said:
                            self.assertIn(f"p3dgrid: note: {name}: is ", notes[0])
                            self.assertIn(form, notes[0])
            self.assertEqual(self.notes(*command, "out.dat", "--to-format", "binary"), [])


if __name__ == "__main__":
    main()
