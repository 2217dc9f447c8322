"""p3dgrid vtk: files, names and failures. tests/interop/vtk/read_vts.py compares the values."""

import os
import resource

from parts_support import PartsTest
from support import NATIVE, Block, Form, grid_bytes, main

HEAD = ('<?xml version="1.0"?>\n<VTKFile type="{}" version="1.0" byte_order="'
        + NATIVE.capitalize() + 'Endian" header_type="UInt64">\n')


class Vtk(PartsTest):
    def test_golden_bytes(self):
        """A block of 2x1x1 points, the second blanked."""
        self.write("grid", grid_bytes(Form(iblank=True), [Block((2, 1, 1), [1, 2], [3, 4], [5, 6],
                                                               [1, 0])]))
        out = self.succeed("vtk", "grid", "out.vtm")
        self.assertEqual(out, "out.vtm: 1 block, 2 points, in 1 file\n")
        self.assertEqual(self.path("out.vtm").read_text(), HEAD.format("vtkMultiBlockDataSet") +
                         '  <vtkMultiBlockDataSet>\n'
                         '    <DataSet index="0" name="block 1" file="out-1.vts"/>\n'
                         '  </vtkMultiBlockDataSet>\n</VTKFile>\n')
        if NATIVE != "little":
            self.skipTest("the bytes are those of a little-endian machine")
        xml, data = self.path("out-1.vts").read_bytes().split(b"\n_", 1)
        self.assertEqual(xml.decode(), HEAD.format("StructuredGrid") + (
            '  <StructuredGrid WholeExtent="0 1 0 0 0 0">\n'
            '    <Piece Extent="0 1 0 0 0 0">\n'
            '      <PointData>\n'
            '        <DataArray type="UInt8" Name="vtkGhostType" NumberOfComponents="1" '
            'format="appended" offset="0"/>\n'
            '      </PointData>\n'
            '      <Points>\n'
            '        <DataArray type="Float32" Name="Points" NumberOfComponents="3" '
            'format="appended" offset="10"/>\n'
            '      </Points>\n'
            '    </Piece>\n'
            '  </StructuredGrid>\n'
            '  <AppendedData encoding="raw">'))
        self.assertEqual(data, bytes.fromhex(
            "0200000000000000 00 02 1800000000000000"
            "0000803f 00004040 0000a040 00000040 00008040 0000c040") +
            b"\n  </AppendedData>\n</VTKFile>\n")

    def test_files_of_blocks_are_beside_the_list(self):
        (self.folder / "a & <b>").mkdir()
        self.succeed("vtk", "grid", "flow", 'a & <b>/"c".vtm')
        names = sorted(os.listdir(self.folder / "a & <b>"))
        self.assertEqual(names, ['"c"-1.vts', '"c"-2.vts', '"c".vtm'])
        self.assertIn('file="&quot;c&quot;-2.vts"', self.path('a & <b>/"c".vtm').read_text())

    def test_refusals(self):
        for status, arguments, says in (
                (2, ("grid", "out"), "out: the list of blocks, which comes last, must end in .vtm"),
                (2, ("grid", "out.vtm", "--layout", "2"), "--layout applies to a restart file"),
                (1, ("flow", "out.vtm"), "flow: is a restart (flow-solution) file"),
                (1, ("grid", "bad", "out.vtm"), "bad: "), (1, ("bad", "out.vtm"), "bad: ")):
            with self.subTest(arguments=arguments):
                name = "grid" if arguments[0] == "bad" else "flow"
                self.write("bad", self.path(name).read_bytes()[:-9])
                self.fail_with(status, "vtk", *arguments, says=says)
                self.assertEqual(list(self.folder.glob("out*")), [])
        self.assert_no_leftovers()

    def test_full_disk_leaves_nothing(self):
        def limit():
            resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))

        self.fail_with(2, "vtk", "grid", "out.vtm", preexec_fn=limit,
                       says="out-1.vts: not written: File too large")
        self.assertEqual(list(self.folder.glob("out*")), [])
        self.assert_no_leftovers()


if __name__ == "__main__":
    main()
