"""What is said of the machine that figures come from."""

import json
import tempfile
import unittest
from pathlib import Path

import machine


class Facts(unittest.TestCase):
    def test_fields_of_system_files(self):
        self.assertEqual(machine.field_of("processor\t: 0\nmodel name\t: Some CPU 3\n", "model name"),
                         "Some CPU 3")
        self.assertEqual(machine.field_of('NAME=x\nPRETTY_NAME="Debian 12"\n', "PRETTY_NAME"), "Debian 12")
        self.assertEqual(machine.field_of("a=1\n", "b"), "")

    def test_flags_are_those_that_change_code_and_hold_no_path(self):
        command = ("/usr/bin/c++ -DKORVO_X=1 -I/home/somebody/src -O3 -DNDEBUG -fPIC -Wall "
                   "-std=c++20 -o a.o -c /home/somebody/src/a.cpp")
        self.assertEqual(machine.flags_in(command), "-O3 -DNDEBUG -fPIC -std=c++20")

    def test_flags_are_read_from_the_build(self):
        with tempfile.TemporaryDirectory() as folder:
            entries = [{"file": "/x/b.cpp", "command": "c++ -O0 -c b.cpp"},
                       {"file": "/x/a.cpp", "command": "c++ -O2 -c a.cpp"}]
            (Path(folder) / "compile_commands.json").write_text(json.dumps(entries))
            self.assertEqual(machine.flags_of(Path(folder), "x/a.cpp"), "-O2")

    def test_what_is_not_there_is_empty(self):
        self.assertEqual(machine.said_by("no-such-command-anywhere"), "")
        self.assertEqual(machine.read("/no/such/file"), "")
        self.assertEqual(machine.flags_of(Path("/no/such/folder")), "")


if __name__ == "__main__":
    unittest.main()
