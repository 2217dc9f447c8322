"""Reads a grid once with VTK's reader of PLOT3D files, and prints the time.

    vtk_peer.py unformatted|formatted|binary single|double FILE
"""

import sys
import time

from vtkmodules.vtkIOParallel import vtkMultiBlockPLOT3DReader


def reader_of(form, precision, path):
    """A reader that is given the whole layout and detects nothing."""
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
    # Peak memory would include the interpreter.
    print(f"seconds {seconds:.9f}\npeak 0\ncheck {points}")


main()
