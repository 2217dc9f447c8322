"""Reads a grid with VTK's reader of PLOT3D files, once, and prints what that took.

    vtk_peer.py unformatted|formatted|binary single|double FILE
"""

import sys
import time

from vtkmodules.vtkIOParallel import vtkMultiBlockPLOT3DReader


def reader_of(form, precision, path):
    """A reader that is told all of the layout and left nothing to guess."""
    reader = vtkMultiBlockPLOT3DReader()
    reader.SetXYZFileName(path)
    reader.SetAutoDetectFormat(False)
    reader.SetByteOrderToLittleEndian()
    reader.SetBinaryFile(form != "formatted")
    reader.SetHasByteCount(form == "unformatted")
    reader.SetDoublePrecision(precision == "double")
    reader.SetMultiGrid(True)
    reader.SetIBlanking(False)
    reader.SetTwoDimensionalGeometry(False)
    reader.SetForceRead(False)
    return reader


def main():
    reader = reader_of(*sys.argv[1:])
    start = time.perf_counter()
    reader.Update()
    seconds = time.perf_counter() - start
    output = reader.GetOutput()
    points = sum(output.GetBlock(b).GetNumberOfPoints() for b in range(output.GetNumberOfBlocks()))
    # Its peak memory is that of the interpreter too, and nobody asks for it.
    print(f"seconds {seconds:.9f}\npeak 0\ncheck {points}")


main()
