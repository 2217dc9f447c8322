"""`p3dgrid extract` with steps writes the bytes that Fortran writes from strided array sections.

Usage: extract_coarse.py P3DGRID COARSE_PEER
"""

import itertools
import pathlib
import subprocess
import sys
import tempfile

STEPS = ("--i", "1:last:2", "--j", "1:last:3", "--k", "1:last:2")


def main():
    command, peer = sys.argv[1:]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([peer, folder], check=True)
        for form, precision in itertools.product(("unformatted", "binary"), ("single", "double")):
            kind = f"{form}-{precision}"
            subprocess.run([command, "extract", "--quiet", folder / f"whole-{kind}", folder / "out",
                            *STEPS], check=True)
            expected = (folder / f"coarse-{kind}").read_bytes()
            if (folder / "out").read_bytes() != expected:
                sys.exit(f"{kind}: differs from what Fortran writes")
            print(f"{kind}: {len(expected)} bytes as Fortran writes them")


if __name__ == "__main__":
    main()
