"""A shared library made of the library's objects exports what the public headers declare, what the
modules of Fortran call and nothing else. What mod_gridvars.hpp declares is exported too, for the
host's definitions to replace.

    test_exports.py NM LIBRARY INCLUDE FORTRAN...
"""

import pathlib
import re
import subprocess
import sys
import unittest

NM, LIBRARY, INCLUDE, *FORTRAN = sys.argv[1:]
STRONG = "BDRT"  # not of templates, inline functions and types
OURS = ("mod_p3dgrid::", "p3dgrid::", "mod_gridvars::")


def symbols(which):
    """Kind and C++ name, without parameters, of those in the dynamic symbol table."""
    listed = subprocess.run([NM, "--dynamic", "--demangle", which, LIBRARY], capture_output=True,
                            text=True, check=True).stdout
    for kind, name in re.findall(r"^[0-9a-f ]{16} (\w) (.*)$", listed, re.MULTILINE):
        yield kind, re.split(r"[(\[]", name)[0]


def code_of(header):
    return re.sub(r"//.*", "", header.read_text())


class Exports(unittest.TestCase):
    def setUp(self):
        headers = pathlib.Path(INCLUDE).rglob("*.hpp")
        self.declared = set(re.findall(r"\w+", "".join(map(code_of, headers))))
        self.exported = [(kind, name) for kind, name in symbols("--defined-only")
                         if not name.startswith("__")]  # those are the sanitizers'
        self.of_c = {name for _, name in self.exported if re.match("mod_p3dgrid_", name)}
        self.exported = [(kind, name) for kind, name in self.exported if name not in self.of_c]

    def test_only_public_names_are_exported(self):
        strong = [name for kind, name in self.exported if kind in STRONG]
        self.assertGreater(len(strong), 70)
        self.assertEqual([name for name in strong if not name.startswith(OURS) or
                          not self.declared.issuperset(name.split("::"))], [])

    def test_the_modules_of_fortran_call_what_has_c_linkage(self):
        modules = "".join(pathlib.Path(file).read_text() for file in FORTRAN)
        bound = set(re.findall(r"name='(mod_p3dgrid_\w+)'", modules))
        self.assertTrue(self.of_c <= bound, self.of_c - bound)
        if self.of_c:  # else it has been built without
            self.assertEqual(bound, self.of_c)

    def test_only_public_types_and_templates_are_exported(self):
        """The rest are instances of the standard library's templates, for public types."""
        weak = [name for kind, name in self.exported if kind not in STRONG]
        self.assertLess(len(weak), 80)
        parts = {part for name in weak for part in re.findall(r"\b(?:mod_)?p3dgrid::(\w+)", name)}
        self.assertTrue(parts)
        self.assertEqual(parts - self.declared, set())

    def test_operations_and_variables_are_exported(self):
        exported = {name for _, name in self.exported}
        reader = code_of(pathlib.Path(INCLUDE, "MOD_P3DReader.hpp"))
        names = re.findall(r"^(?:void |extern .* )(\w+)[(;]", reader, re.MULTILINE)
        self.assertGreater(len(names), 30)
        for name in names:
            self.assertIn(f"mod_p3dgrid::{name}", exported)

    def test_the_host_can_replace_its_part(self):
        contract = code_of(pathlib.Path(INCLUDE, "mod_gridvars.hpp"))
        names = re.findall(r"^(?:void |extern .* )(\w+)[(;]", contract, re.MULTILINE)
        self.assertEqual(len(names), 7)
        self.assertEqual({name for _, name in self.exported if name.startswith("mod_gridvars::")},
                         {f"mod_gridvars::{name}" for name in names})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
