"""Shows that includes.py finds each kind of forbidden include, in a small tree of its own."""

import tempfile
import unittest
from pathlib import Path

from includes import faults

TREE = {
    "cmake/KorvoInstall.cmake": "install(FILES kinematics/KMachine.h platform/zgeo/UVec3d.h\n"
    "  toolkit/load.h DESTINATION include)\n",
    "platform/text/Lines.h": "",
    "platform/zgeo/UVec3d.h": "#include <cmath>\n",
    "platform/os/Files.h": "",
    "platform/ombra/Machine.h": "",
    "kinematics/ChainWalk.h": "",
    "kinematics/KMachine.h": '#include "platform/zgeo/UVec3d.h"\n',
    "geometry/Mesh.h": "",
    "adapter/NMachine.h": "",
    "toolkit/load.h": '#include "kinematics/KMachine.h"\n',
    "toolkit/inner.h": '#include "platform/text/Lines.h"\n',
    "tools/main.cpp": '#include "toolkit/load.h"\n#include <CLI/CLI.hpp>\n',
    "examples/01_load.cpp": '#include "toolkit/load.h"\n',
}

# File, the line put into it, and a piece of the message.
FORBIDDEN = [
    ("platform/zgeo/UVec3d.h", '#include "kinematics/KMachine.h"', "must not include"),
    ("platform/text/Lines.h", '#include "platform/zgeo/UVec3d.h"', "must not include"),
    ("kinematics/KMachine.h", '#include "geometry/Mesh.h"', "must not include"),
    ("kinematics/KMachine.h", '#include "adapter/NMachine.h"', "must not include"),
    ("kinematics/KMachine.h", '#include "kinematics/ChainWalk.h"', "not installed"),
    ("kinematics/ChainWalk.h", '#include "toolkit/load.h"', "must not include"),
    ("geometry/Mesh.h", '#include "adapter/NMachine.h"', "must not include"),
    ("adapter/NMachine.h", '#include "geometry/Mesh.h"', "must not include"),
    ("platform/ombra/Machine.h", '#include "platform/zgeo/UVec3d.h"', "must not include"),
    ("toolkit/load.h", '#include "tools/main.h"', "does not exist"),
    ("toolkit/load.h", '#include "platform/text/Lines.h"', "not installed"),
    ("toolkit/load.cpp", '#include "kinematics/ChainWalk.h"', "must not include"),
    ("toolkit/load.cpp", '#include "platform/os/Files.h"', "must not include"),
    ("tools/main.cpp", '#include "kinematics/ChainWalk.h"', "must not include"),
    ("tools/main.cpp", '#include "toolkit/inner.h"', "must not include"),
    ("examples/01_load.cpp", '#include "kinematics/KMachine.h"', "must not include"),
    ("kinematics/KMachine.h", '#include "KMachineElem.h"', "not a path from the root"),
    ("kinematics/KMachine.h", '#include "kinematics/../geometry/Mesh.h"', "not a path"),
    ("kinematics/KMachine.h", "#include <platform/zgeo/UVec3d.h>", "write it in quotes"),
    ("kinematics/KMachine.h", '  #  include "geometry/Mesh.h"', "must not include"),
    ("platform/stray.h", "", "no folder of the architecture"),
]


class Includes(unittest.TestCase):
    def check(self, tree):
        with tempfile.TemporaryDirectory() as folder:
            for name, text in tree.items():
                path = Path(folder, name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text, encoding="utf-8")
            return faults(Path(folder))

    def test_a_tree_in_the_right_direction_has_no_faults(self):
        self.assertEqual(self.check(TREE), ([], len(TREE) - 1))

    def test_every_forbidden_include_is_one_fault_with_its_line(self):
        for name, line, message in FORBIDDEN:
            with self.subTest(file=name, line=line):
                text = TREE.get(name, "")
                found, _ = self.check({**TREE, name: text + line + "\n"})
                self.assertEqual(len(found), 1, found)
                where = f"{name}:{text.count(chr(10)) + 1}: " if line else f"{name}: "
                self.assertTrue(found[0].startswith(where), found[0])
                self.assertIn(message, found[0])


if __name__ == "__main__":
    unittest.main()
