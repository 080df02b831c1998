"""The command line as its user meets it: arguments in, text and exit codes out.

Every JSON answer is validated against the schema that is installed for it.
"""
import json
import math
import os
import pty
import subprocess
import tempfile
import tty
import unittest

import jsonschema
import user_locale  # fails where it is not there

KORVO = os.environ["KORVO"]
SCHEMAS = os.environ["KORVO_SCHEMAS"]
# Without a mesher the faces of .zrn files give no triangles.
HAS_FACES = os.environ["KORVO_SOLIDRA"] != "none"
ANSWERED, NO, USAGE, REFUSED = 0, 1, 2, 3

# A trunnion: C under the part on the cradle A, whose axis lies 50 mm above the table.
TABLE_AC = """\
frame=z
rotation=A,x,0,0,0,0,50
rotation=C,z,0,0,0,0,0
part=x,y,0,0,0
lien=BATI
axis=X,x
axis=Y,y
axis=Z,z
tool=z,0,0,150
limits=A,-120,30
collisions=tool,A
"""
# A tool and a gun beside it on one head, version 1.
TWO_TOOLS = """\
frame
part=x,y,0,0,0
lien=BATI
axis=U,1,x,nowhere.stl
axis=V,2,y
axis=W,3,z
tool=z,0,0,100
lien=W
gun=z,40,0,80
"""


def validate(answer):
    name = answer["schema"].replace("/", ".")
    with open(os.path.join(SCHEMAS, name + ".json"), encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft7Validator.check_schema(schema)
    jsonschema.validate(answer, schema)


class CommandLine(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.machine = self.write("ac.def", TABLE_AC)

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(text if isinstance(text, bytes) else text.encode())
        return path

    def run_korvo(self, *arguments, stdin=None, env=None):
        return subprocess.run([KORVO, *arguments], capture_output=True, text=True, input=stdin,
                              timeout=120, check=False, env=env)

    def answer(self, *arguments):
        run = self.run_korvo(*arguments)
        self.assertEqual(run.returncode, ANSWERED, run.stderr)
        return run.stdout

    def json(self, *arguments):
        answer = json.loads(self.answer(*arguments, "--json"))
        validate(answer)
        self.assertEqual(answer["units"], {"length": "mm", "angle": "degree"})
        return answer

    def assert_fails(self, code, message, *arguments):
        run = self.run_korvo(*arguments)
        self.assertEqual(run.returncode, code, run.stderr)
        self.assertIn(message, run.stderr)
        self.assertEqual(run.stdout, "")

    def assert_near(self, found, wanted, delta=1e-9):
        self.assertEqual(len(found), len(wanted))
        for a, b in zip(found, wanted):
            self.assertAlmostEqual(a, b, delta=delta)


class Info(CommandLine):
    def test_answers_for_every_example(self):
        examples = os.path.join(os.path.dirname(SCHEMAS), "..", "examples", "machines")
        names = [n[:-4] for n in os.listdir(examples) if n.endswith(".def")]
        self.assertGreaterEqual(len(names), 10)
        for name in names:
            with self.subTest(name):
                self.assertEqual(self.json("info", name)["tree"][0]["type"], "part")
                run = self.run_korvo("info", name)
                self.assertIn("Chains", run.stdout)
                self.assertEqual(run.stderr, "")  # not even a warning

    def test_says_what_machine_it_is(self):
        info = self.json("info", self.machine)
        self.assertEqual([n["name"] for n in info["tree"]],
                         ["PIECE", "C", "A", "BATI", "X", "Y", "Z", "tool 1"])
        self.assertEqual([a["name"] for a in info["axes"]], ["X", "Y", "Z", "A", "C"])
        a = info["axes"][3]
        self.assertEqual((a["min"], a["max"], a["number"]), (-120, 30, 4))
        self.assertEqual(a["sense"]["bodyTurns"], "clockwise")
        self.assertTrue(a["sense"]["iso841"])
        self.assertIsNone(info["axes"][4]["max"])
        self.assertEqual(info["tools"][0]["kinematicClass"], 3)
        self.assertEqual(info["collisionPairs"],
                         [{"a": "tool 1", "b": "A", "indexA": -101, "indexB": 4}])
        self.assertEqual(info["machine"]["format"], 2)

    def test_text_has_every_chapter(self):
        text = self.answer("info", self.machine)
        for part in ("Settings  format 2 (5 of 5 axis lines", "Chains\n  PIECE  part",
                     "at +90 the table turns clockwise seen from +Z",
                     "three linear axes and two rotary axes (all under the part)",
                     "Denavit-Hartenberg", "tool 1 (-101) - A (4)", "Geometry files: none"):
            self.assertIn(part, text)

    def test_all_of_the_text_is_french(self):
        text = self.answer("info", self.machine, "--lang", "fr")
        for part in ("Réglages  format 2 ; outil 1", "Chaînes\n  PIECE  pièce", "côté pièce",
                     "Axes, par indice de valeur (directions : ", "linéaire  numéro 1, ",
                     "limites -120 à 30 degrés", "sans limites", "un point de son axe (0, 0, 50)",
                     "à +90 la table tourne dans le sens des aiguilles d'une montre",
                     "trois axes linéaires et deux axes rotatifs (tous sous la pièce)",
                     "deux axes rotatifs : C et A orientent l'outil", "Outils (points ",
                     "Paires de collision\n", "Fichiers de géométrie : aucun"):
            self.assertIn(part, text)
        info = self.json("info", self.machine, "--lang", "fr")
        self.assertIn("deux axes rotatifs", info["solver"]["text"])
        self.assertEqual(info["solver"]["unserved"], None)
        self.assertEqual(info["tree"][0]["type"], "part")

    def test_names_geometry_files_found_and_not_found(self):
        self.write("a.stl", "solid\nendsolid\n")
        machine = self.write("g.def", TWO_TOOLS + "geom=$ZRN_MACHINE_DEF/a.stl\n")
        text = self.answer("info", machine)
        self.assertIn("U  nowhere.stl  NOT FOUND", text)
        self.assertIn("a.stl  found", text)
        self.assertEqual([f["found"] for f in self.json("info", machine)["geometryFiles"]],
                         [False, True])

    def test_tool_option_describes_that_tool_alone(self):
        machine = self.write("t.def", TWO_TOOLS)
        self.assertEqual([t["type"] for t in self.json("info", machine)["tools"]], ["tool", "gun"])
        tools = self.json("info", machine, "--tool", "2")["tools"]
        self.assertEqual([t["number"] for t in tools], [2])

    def test_says_travel_and_points_plainly(self):
        text = self.answer("info", self.machine)
        self.assertIn("direction (1, 0, 0), a point on its line (0, 0, 50), limits -120 to 30", text)
        self.assertIn("X     linear  number 1, direction (1, 0, 0), without limits\n", text)
        half = self.write("half.def", TABLE_AC + "courseminimum=X,-1e-9\n")
        self.assertIn("limits -1e-09 to none mm", self.answer("info", half))

    # Rx(alpha) Trans(a,0,0) Rz(theta) Trans(0,0,d), row by row from the base.
    def frame_after(self, base, rows):
        for row in rows:
            alpha, theta = math.radians(row["alpha"]), math.radians(row["theta"])
            ca, sa, ct, st = math.cos(alpha), math.sin(alpha), math.cos(theta), math.sin(theta)
            step = [[ct, -st, 0, row["a"]], [ca * st, ca * ct, -sa, -sa * row["d"]],
                    [sa * st, sa * ct, ca, ca * row["d"]], [0, 0, 0, 1]]
            base = [[sum(base[i][k] * step[k][j] for k in range(4)) for j in range(4)]
                    for i in range(4)]
        return base

    # The gantry's tool stands at its file's gauge point (0, 0, 0) along Z; its X axis along X.
    def test_denavit_hartenberg_table_and_base_give_the_lines(self):
        info = self.json("info", "gantry-w")
        tool = info["tools"][0]
        rows = tool["denavitHartenberg"]
        place = self.frame_after(tool["denavitHartenbergBase"], rows)
        self.assert_near([r[2] for r in place[:3]], tool["direction"], 1e-7)
        self.assert_near([r[3] for r in place[:3]], [0, 0, 0], 1e-4)
        for axis in info["axes"]:
            count = [r["name"] for r in rows].index(axis["name"]) + 1
            place = self.frame_after(tool["denavitHartenbergBase"], rows[:count])
            self.assert_near([r[2] for r in place[:3]], axis["direction"], 1e-7)
        text = self.answer("info", "gantry-w")
        self.assertIn("base of the table in the machine frame", text)

    def test_a_chain_with_an_axis_without_direction_has_no_base(self):
        machine = self.write("n.def", TWO_TOOLS.replace("V,2,y", "V,2"))
        self.assertIsNone(self.json("info", machine)["tools"][0]["denavitHartenbergBase"])

    def test_numbers_that_are_not_finite_are_refused_by_name(self):
        for name, text, found in (
                ("limit", TWO_TOOLS + "limits=V,nan,5\n", "axis V ("),
                ("end", TWO_TOOLS + "limits=V,0,inf\n", "axis V ("),
                ("direction", TWO_TOOLS.replace("V,2,y", "V,2,0,nan,0"), "axis V, tool 1, tool 2"),
                ("point", TWO_TOOLS.replace("tool=z,0,0,100", "tool=z,0,inf,100"), "tool 1")):
            with self.subTest(name):
                machine = self.write(name + ".def", text)
                for arguments in ([], ["--json"]):
                    run = self.run_korvo("info", machine, "--no-check", *arguments)
                    self.assertEqual((run.returncode, run.stdout), (REFUSED, ""))
                    self.assertIn(f"{machine}: expected finite numbers, found others at {found}",
                                  run.stderr)

    def test_options_show(self):
        machine = self.write("t.def", TWO_TOOLS)
        info = self.json("info", machine, "--tool-length", "25", "--frame", "10,0,0", "--lock",
                         "V", "--strategy", "2", "--format", "1")
        self.assertEqual(info["tools"][0]["nose"], [-10, 0, 100])
        self.assertEqual(info["tools"][0]["tip"], [-10, 0, 75])
        self.assertEqual([a["locked"] for a in info["axes"]], [False, True, False])
        self.assertEqual(info["settings"], {"tool": 1, "toolLength": 25, "strategy": 2,
                                            "partZero": [10, 0, 0, 0, 0, 0], "locked": ["V"]})
        self.assertEqual(info["machine"]["formatReason"], "as asked")


class Forward(CommandLine):
    # C = 90 turns the tool by +90 about Z, A = 90 before it (nearer the part first: C, then A):
    # the point (X, Y, Z + 150) is turned about the A axis (z = 50), then about Z.
    def expected(self, x, y, z, a, c):
        a, c = math.radians(a), math.radians(c)
        px, py, pz = x, y, z + 150 - 50
        py, pz = py * math.cos(a) - pz * math.sin(a), py * math.sin(a) + pz * math.cos(a) + 50
        point = [px * math.cos(c) - py * math.sin(c), px * math.sin(c) + py * math.cos(c), pz]
        return point, [math.sin(c) * math.sin(a), -math.cos(c) * math.sin(a), math.cos(a)]

    def test_nose_and_direction_follow_the_axes(self):
        nose, direction = self.expected(10, 20, -30, 25, 70)
        answer = self.json("forward", self.machine, "--at", "X=10,Y=20,Z=-30,A=25,C=70")
        self.assert_near(answer["nose"], nose)
        self.assert_near(answer["tip"], nose)
        self.assert_near(answer["direction"], direction, 1e-12)

    def test_all_values_in_order_are_the_same_position(self):
        self.assertEqual(self.json("forward", self.machine, "--at", "10,20,-30,25,70"),
                         self.json("forward", self.machine, "--at", "X=10,Y=20,Z=-30,A=25,C=70"))

    def test_unnamed_axes_are_zero(self):
        answer = self.json("forward", self.machine, "--at", "c=90")
        self.assertEqual([v["value"] for v in answer["position"]], [0, 0, 0, 0, 90])
        self.assertEqual(self.json("forward", self.machine)["nose"], [0, 0, 150])

    def test_prefixed_names_are_understood(self):
        answer = self.json("forward", self.machine, "--at", "AXE_X=4")
        self.assertEqual(answer["nose"], [4, 0, 150])

    def test_tip_lies_the_tool_length_back(self):
        answer = self.json("forward", self.machine, "--at", "X=10", "--tool-length", "60")
        self.assertEqual(answer["nose"], [10, 0, 150])
        self.assertEqual(answer["tip"], [10, 0, 90])
        self.assertEqual([r[3] for r in answer["tipFrame"]], [10, 0, 90, 1])

    # Part zero turned by 90 about Z: the machine's +X is its -Y.
    def test_frame_gives_points_in_part_zero(self):
        answer = self.json("forward", self.machine, "--at", "X=10", "--frame", "1,2,3,0,0,90")
        self.assert_near(answer["nose"], [-2, -9, 147])
        self.assert_near(answer["direction"], [0, 0, 1])

    # First about X by 90 (Y to Z), then about Z by 90 (X to Y): part zero's X, Y, Z axes lie along
    # the machine's Y, Z, X.
    def test_frame_turns_about_x_then_y_then_z(self):
        answer = self.json("forward", self.machine, "--at", "X=1,Y=2,Z=3", "--frame",
                           "0,0,0,90,0,90")
        self.assert_near(answer["nose"], [2, 153, 1])

    def test_elements_gives_all_motion_matrices(self):
        answer = self.json("forward", self.machine, "--at", "X=10,C=90", "--elements")
        elements = {e["name"]: e["motion"] for e in answer["elements"]}
        self.assertEqual(len(elements), 8)
        self.assert_near([r[3] for r in elements["X"]], [0, 10, 0, 1])
        self.assert_near(elements["PIECE"][0], [1, 0, 0, 0])
        text = self.answer("forward", self.machine, "--elements")
        self.assertIn("Motion of each element", text)

    def test_text_reads_as_numbers_of_a_person(self):
        text = self.answer("forward", self.machine, "--at", "X=10,C=90", "--tool-length", "50")
        self.assertIn("Position   X=10 Y=0 Z=0 A=0 C=90", text)
        self.assertIn("Nose       0  10  150", text)
        self.assertIn("Tip        0  10  100", text)
        self.assertIn("tool 1, length 50 mm", text)

    def test_second_tool(self):
        machine = self.write("t.def", TWO_TOOLS)
        answer = self.json("forward", machine, "--tool", "2", "--at", "U=1")
        self.assertEqual(answer["nose"], [41, 0, 80])

    def test_bad_positions_are_usage_errors(self):
        for at, message in (("Q=1", "'Q'"), ("X=1,x=2", "'x' again"), ("X=one", "'one'"),
                            ("X=", "''"), ("X=1e999", "'1e999'"), ("X=nan", "'nan'"),
                            ("X=1 2", "'1 2'"), ("X=1,5,C=2", "'5'"), ("X=1,,C=2", "''"),
                            ("1,2", "expected 5 values (X, Y, Z, A, C) in --at, found 2"),
                            ("Q=1", "expected axes among X, Y, Z, A, C in --at"),
                            ("X=1e", "'1e'"), ("X=1e+", "'1e+'"), ("X=0x10", "'0x10'"),
                            ("X=0x1p3", "'0x1p3'"), ("X=\x1b[2J", r"'\x1b[2J'"),
                            ("1,2,3,4,x", "'x'"), ("", "expected 5 values")):
            with self.subTest(at):
                self.assert_fails(USAGE, message, "forward", self.machine, "--at", at)

    def test_blanks_around_names_and_values_are_taken(self):
        self.assertEqual(self.json("forward", self.machine, "--at", " X = 4 ,\tC= 90"),
                         self.json("forward", self.machine, "--at", "X=4,C=90"))

    def test_small_values_are_echoed_whole(self):
        text = self.answer("forward", self.machine, "--at", "X=1e-9", "--tool-length", "1e-7")
        self.assertIn("Position   X=1e-09 Y=0", text)
        self.assertIn("length 1e-07 mm", text)

    # A lock binds the solvers; forward answers where the axis stands.
    def test_a_locked_axis_may_stand_anywhere(self):
        answer = self.json("forward", self.machine, "--lock", "Z", "--at", "Z=-500")
        self.assertEqual(answer["settings"]["locked"], ["Z"])
        self.assertEqual(answer["nose"], [0, 0, -350])

    def test_axes_outside_their_limits_are_named(self):
        for value, outside in ((-120, []), (30, []), (30.001, ["A"]), (-120.001, ["A"])):
            answer = self.json("forward", self.machine, "--at", f"A={value},C=1e6")
            self.assertEqual(answer["outsideLimits"], outside)
        self.assertIn("\nOutside limits: A\n",
                      self.answer("forward", self.machine, "--at", "A=31"))
        self.assertNotIn("Outside", self.answer("forward", self.machine, "--at", "A=30"))
        text = self.answer("forward", "gantry-w", "--at", "X=-1,W=1")
        self.assertIn("\nOutside limits: X, W\n", text)

    def test_a_point_beyond_all_numbers_is_a_no(self):
        self.assert_fails(NO, "within the range of numbers", "forward", self.machine, "--at",
                          "X=1.7e308,Y=1.7e308,C=45")

    def test_numbers_do_not_follow_the_locale(self):
        env = dict(os.environ, LC_ALL="de_DE.UTF-8", LANG="de_DE.UTF-8")
        run = self.run_korvo("forward", self.machine, "--at", "X=1.5", env=env)
        self.assertIn("Nose       1.5  0  150", run.stdout)


class Rows(CommandLine):
    def rows(self, table, *options, code=ANSWERED):
        path = self.write("rows.csv", table)
        run = self.run_korvo("forward", self.machine, "--positions", path, *options)
        self.assertEqual(run.returncode, code, run.stderr)
        self.stderr = run.stderr
        self.path = path
        return run.stdout.splitlines()

    def test_one_row_out_for_each_row_in(self):
        rows = self.rows("X,C\n10,0\n10,90\n")
        self.assertEqual(rows[0], "line,status,nose_x,nose_y,nose_z,tip_x,tip_y,tip_z,i,j,k,"
                         "outside_limits")
        self.assertEqual(rows[1], "2,ok,10,0,150,10,0,150,0,0,1,")
        fields = rows[2].split(",")
        self.assertEqual(fields[:2], ["3", "ok"])
        self.assert_near([float(f) for f in fields[2:5]], [0, 10, 150])
        self.assertEqual(self.stderr, "")

    def test_header_names_axes_in_any_order_and_case(self):
        self.assertEqual(self.rows('"z" , AXE_x\n5,1\n')[1].split(",")[2:5], ["1", "0", "155"])

    def test_semicolons_separate_as_well(self):
        rows = self.rows("Y;X\r\n2;1\r\n")
        self.assertEqual(rows[1], "2;ok;1;2;150;1;2;150;0;0;1;")

    def test_values_may_stand_between_quotes(self):
        rows = self.rows('"X","C"\n"1", " 90 "\n2,"0"\n')
        self.assert_near([float(f) for f in rows[1].split(",")[2:5]], [0, 1, 150])
        self.assertTrue(rows[2].startswith("3,ok,2,0,150,"))

    def test_axes_outside_their_limits_are_named(self):
        rows = self.rows("A,C\n30,0\n30.5,1e6\n")
        self.assertEqual([r.split(",")[-1] for r in rows[1:]], ["", "A"])
        row = json.loads(self.rows("A\n-121\n", "--json")[0])
        validate(row)
        self.assertEqual(row["outsideLimits"], ["A"])
        machine = self.write("g.def", TWO_TOOLS + "limits=U,0,1\nlimits=W,0,1\n")
        path = self.write("g.csv", "U,V,W\n2,2,2\n")
        run = self.run_korvo("forward", machine, "--positions", path)
        self.assertTrue(run.stdout.endswith(",U W\n"))

    def test_utf8_mark_and_missing_last_line_feed(self):
        self.assertEqual(len(self.rows(b"\xef\xbb\xbfX\n1\n2")), 3)

    def test_empty_lines_are_no_rows(self):
        rows = self.rows("X\n\n1\n \n2\n\n")
        self.assertEqual([r.split(",")[0] for r in rows[1:]], ["3", "5"])

    def test_bad_rows_are_reported_and_the_run_goes_on(self):
        bad = {"1": "expected 2 values, found 1", "1,2,3": "expected 2 values, found 3",
               "a,1": "expected a finite decimal number, found 'a'", "1,": "found nothing",
               ",1": "found nothing", "1e999,1": "found '1e999'", "inf,1": "found 'inf'",
               "1x,1": "found '1x'", "1 2,1": "found '1 2'", '"1 2",2': "found '\"1 2\"'",
               "1e,2": "found '1e'", "1e+,2": "found '1e+'", "0x10,2": "found '0x10'",
               "\x1b[2J,2": r"found '\x1b[2J'", "1\r2,2": r"found '1\r2'"}
        table = "X,C\n" + "".join(row + "\n" for row in bad) + "7,0\n"
        rows = self.rows(table, code=NO)
        for i, message in enumerate(bad.values()):
            self.assertEqual(rows[i + 1], f"{i + 2},bad,,,,,,,,,,")
            said = self.stderr.splitlines()[i]
            self.assertTrue(said.startswith(f"{self.path}:{i + 2}: "), said)
            self.assertIn(message, said)
        self.assertTrue(rows[-1].startswith(f"{len(bad) + 2},ok,7,0,150,"))

    def test_a_decimal_comma_is_refused(self):
        rows = self.rows("X;C\n1,5;2\n1.5;2\n", code=NO)
        self.assertIn(f"{self.path}:2: expected a number with a decimal point, found a decimal "
                      "comma in '1,5'", self.stderr)
        self.assertTrue(rows[2].startswith("3;ok;"))
        self.rows("X,C\n1,5,2\n", code=NO)
        self.assertIn("no decimal commas", self.stderr)

    def test_strict_stops_at_the_first_bad_row(self):
        rows = self.rows("X\n1\nx\n3\n", "--strict", code=REFUSED)
        self.assertEqual([r.split(",")[1] for r in rows[1:]], ["ok", "bad"])
        self.assertEqual(len(self.rows("X\n1\n2\n", "--strict")), 3)

    def test_a_locked_axis_may_stand_anywhere(self):
        rows = self.rows("X,C\n1,0\n1,5\n", "--lock", "C")
        self.assertEqual([r.split(",")[1] for r in rows[1:]], ["ok", "ok"])

    def test_messages_come_in_the_order_of_lines(self):
        far = "1.7e308,1.7e308,45\n"
        self.rows("X,Y,C\n" + far + "x,1,1\n" + far + "1,1\n", code=NO)
        lines = [line.split(":")[-2] for line in self.stderr.splitlines()]
        self.assertEqual(lines, ["2", "3", "4", "5"])
        rows = self.rows("X,Y,C\n1,1,1\n" + far + "x,1,1\n", "--strict", code=REFUSED)
        self.assertEqual([r.split(",")[1] for r in rows[1:]], ["ok", "not-finite"])
        self.assertEqual(len(self.stderr.splitlines()), 1)

    def test_many_bad_rows_are_counted_not_listed(self):
        rows = self.rows("X\n" + "x\n" * 3000, code=NO)
        self.assertEqual(len(rows), 3001)
        said = self.stderr.splitlines()
        self.assertEqual(len(said), 21)
        self.assertEqual(said[-1], f"{self.path}: 2980 more rows without an answer")

    def test_points_beyond_all_numbers_have_a_status(self):
        rows = self.rows("X,Y,C\n1.7e308,1.7e308,45\n1,1,1\n", code=NO)
        self.assertEqual(rows[1], "2,not-finite,,,,,,,,,,")
        self.assertIn(":2: expected a tool point within the range", self.stderr)
        self.assertIn(",ok,", rows[2])

    def test_headers_that_name_no_axes_are_refused(self):
        for header, found in (("X,Q", "'Q'"), ("X,x", "'x' again"), ("", "''"), ("X,", "''"),
                              ("1,2", "'1' (is there no header?)"), ("X\rY", r"'X\rY'")):
            with self.subTest(header):
                path = self.write("h.csv", header + "\n1,2\n")
                self.assert_fails(REFUSED, f"{path}:1: expected a header of axis names (X, Y, Z, "
                                  f"A, C), each once, found {found}", "forward", self.machine, "--positions", path)
        path = self.write("empty.csv", "")
        self.assert_fails(REFUSED, f"{path}:1: expected a header", "forward", self.machine,
                          "--positions", path)

    def test_lines_that_are_too_long_are_bad_rows(self):
        rows = self.rows("X\n" + "1" * 3000000 + "\n5\n", code=NO)
        self.assertEqual([r.split(",")[1] for r in rows[1:]], ["bad", "ok"])
        self.assertIn(":2: expected a line of up to 65536 bytes, found a longer one", self.stderr)

    def test_rows_across_blocks_all_arrive(self):
        count = 120000
        rows = self.rows("X,Y\n" + "".join(f"{i},-0.25\n" for i in range(count)))
        self.assertEqual(len(rows), count + 1)
        for i in (0, 65535, 99999, count - 1):
            self.assertEqual(rows[i + 1], f"{i + 2},ok,{i},-0.25,150,{i},-0.25,150,0,0,1,")

    def test_json_lines_are_valid_one_by_one(self):
        rows = [json.loads(r) for r in self.rows("X\n1\nx\n", "--json", code=NO)]
        for row in rows:
            validate(row)
        self.assertEqual(rows[0]["nose"], [1, 0, 150])
        self.assertEqual(rows[1], {"schema": "korvo.forward.row/1", "line": 3, "status": "bad",
                                   "units": {"length": "mm", "angle": "degree"}})

    def test_json_lines_can_hold_the_elements(self):
        row = json.loads(self.rows("C\n90\n", "--json", "--elements")[0])
        validate(row)
        self.assertEqual(len(row["elements"]), 8)

    def test_standard_input_is_a_table_too(self):
        run = self.run_korvo("forward", self.machine, "--positions", "-", stdin="X\n3\nx\n")
        self.assertEqual(run.returncode, NO)
        self.assertIn("2,ok,3,0,150", run.stdout)
        self.assertIn("standard input:3: expected a finite decimal number, found 'x'", run.stderr)

    def test_stats_say_how_fast(self):
        self.rows("X\n1\n2\n", "--stats")
        self.assertIn("korvo: format 2 (", self.stderr)
        self.assertRegex(self.stderr, r"2 positions answered; query loop \S+ s, \d+ positions/s")

    def test_unreadable_tables_are_refused(self):
        for path, found in ((os.path.join(self.folder, "none.csv"), "none"),
                            (self.folder, "a folder")):
            self.assert_fails(REFUSED, f"{path}: expected a readable table, found {found}",
                              "forward", self.machine, "--positions", path)

    def test_a_table_that_fails_to_be_read_is_refused(self):
        self.assert_fails(REFUSED, "/proc/self/mem: expected a readable table, found an error "
                          "while reading", "forward", self.machine, "--positions", "/proc/self/mem")

    # What was written to a terminal comes, and then an error, for the terminal is gone.
    def test_nor_is_the_beginning_of_one_taken_for_the_table(self):
        ours, theirs = pty.openpty()
        tty.setraw(theirs)
        os.write(theirs, b"X\n1\n2\n")
        os.close(theirs)
        run = subprocess.run([KORVO, "forward", self.machine, "--positions", "-"], stdin=ours,
                             capture_output=True, text=True, timeout=120, check=False)
        os.close(ours)
        self.assertEqual(run.returncode, REFUSED)
        self.assertIn("standard input: expected a readable table, found an error while reading",
                      run.stderr)


class Options(CommandLine):
    def test_values_that_are_none_are_usage_errors(self):
        for option, value, message in (
                ("--format", "3", "expected auto, 1 or 2 after --format, found '3'"),
                ("--tool", "0", "expected a tool number from 1 up after --tool, found '0'"),
                ("--tool", "1.5", "found '1.5'"), ("--tool", "x", "found 'x'"),
                ("--tool", "2", "expected a tool from 1 to 1 after --tool, found 2"),
                ("--tool-length", "long", "expected a length in mm from 0 up after --tool-length"),
                ("--tool-length", "-1", "found '-1'"), ("--tool-length", "inf", "found 'inf'"),
                ("--frame", "1,2", "expected x,y,z or x,y,z,a,b,c"),
                ("--frame", "1,2,3,4", "found '1,2,3,4'"), ("--frame", "1,2,z", "found '1,2,z'"),
                ("--lock", "Q", "expected axes among X, Y, Z, A, C after --lock, found 'Q'"),
                ("--lock", "X,", "expected axis names (A,B) after --lock"),
                ("--strategy", "1.5", "expected a whole number after --strategy, found '1.5'"),
                ("--trace", "", "expected a file or - after --trace, found ''"),
                ("--strategy", "best", "found 'best'")):
            for verb in ("info", "forward"):
                with self.subTest(verb + option + value):
                    self.assert_fails(USAGE, message, verb, self.machine, option, value)

    def test_options_that_do_not_go_together(self):
        table = self.write("t.csv", "X\n1\n")
        for arguments, message in (
                (["--at", "X=1", "--positions", table], "expected --at or --positions, found both"),
                (["--positions", ""], "expected a file or - after --positions, found ''"),
                (["--strict"], "expected --strict with --positions"),
                (["--stats"], "expected --stats with --positions"),
                (["--positions", table, "--elements"], "expected --json for --elements")):
            self.assert_fails(USAGE, message, "forward", self.machine, *arguments)

    def test_wrong_verbs_and_options_are_usage_errors(self):
        for arguments in ([], ["turn"], ["info"], ["forward"], ["info", "a", "b"],
                          ["info", self.machine, "--at", "X=1"], ["info", self.machine, "--nothing"],
                          ["forward", self.machine, "--tool"], ["turn", "--help"],
                          ["info", self.machine, "--lock", "X", "Y"], ["help", "turn"],
                          ["info", self.machine, "--json=no"]):
            with self.subTest(arguments):
                run = self.run_korvo(*arguments)
                self.assertEqual(run.returncode, USAGE)
                self.assertTrue(run.stderr.startswith("korvo: "), run.stderr)
                self.assertEqual(run.stdout, "")

    def test_wrong_verbs_get_a_hint(self):
        for arguments, hint in (
                (["inof", "x"], "found 'inof' (did you mean 'info'?)"),
                (["foward"], "(did you mean 'forward'?)"), (["grinder"], "found 'grinder'\n"),
                (["--json", "info", "x"], "found '--json' before 'info'; write 'korvo info ...'"),
                (["x.def", "forward"], "found 'x.def' before 'forward'"), ([], "found nothing")):
            self.assert_fails(USAGE, "korvo: expected a verb (info, forward, inverse, path, limits, "
                              "interpolate, translate, mesh, geometry, new, check, lsp) first",
                              *arguments)
            self.assert_fails(USAGE, hint, *arguments)

    def test_help_and_version_answer(self):
        self.assertRegex(self.answer("--version"), r"^\d+\.\d+\.\d+\n$")
        self.assertEqual(self.answer("help"), self.answer("--help"))
        self.assertEqual(self.answer("help", "forward"), self.answer("forward", "--help"))
        text = self.answer("forward", "--help")
        for option in ("--at", "--elements", "--positions", "--strict", "--format", "--tool",
                       "--tool-length", "--frame", "--trace", "--json"):
            self.assertIn(option, text)

    def test_trace_goes_to_a_file_or_to_standard_error(self):
        trace = os.path.join(self.folder, "trace.txt")
        self.answer("info", self.machine, "--trace", trace)
        with open(trace, encoding="utf-8") as file:
            text = file.read()
        self.assertIn("e[0]_BATI,  BATI (i:   0, p:   4)", text)
        run = self.run_korvo("forward", self.machine, "--json", "--trace", "-")
        self.assertIn("e[0]_BATI", run.stderr)
        validate(json.loads(run.stdout))
        nowhere = os.path.join(self.folder, "no", "trace.txt")
        self.assert_fails(REFUSED, f"{nowhere}: expected a file to write the trace to", "info",
                          self.machine, "--trace", nowhere)

    def test_trace_never_writes_over_what_is_read(self):
        table = self.write("t.csv", "X\n1\n")
        link = os.path.join(self.folder, "link")
        os.link(self.machine, link)
        for trace in (self.machine, table, link, os.path.join(self.folder, ".", "ac.def")):
            self.assert_fails(USAGE, "expected a file of its own after --trace", "forward",
                              self.machine, "--positions", table, "--trace", trace)
        with open(self.machine, encoding="utf-8") as file:
            self.assertEqual(file.read(), TABLE_AC)
        with open(table, encoding="utf-8") as file:
            self.assertEqual(file.read(), "X\n1\n")

    def test_trace_is_not_made_when_nothing_can_be_read(self):
        trace = os.path.join(self.folder, "trace.txt")
        bad = self.write("bad.def", "hello\n")
        none = os.path.join(self.folder, "none")
        for arguments in (["info", none], ["info", bad], ["info", "no-such-machine"],
                          ["forward", self.machine, "--positions", none]):
            self.assertEqual(self.run_korvo(*arguments, "--trace", trace).returncode, REFUSED)
            self.assertFalse(os.path.exists(trace))

    def test_a_trace_that_does_not_fit_is_an_error(self):
        table = self.write("t.csv", "X\n1\n")
        for arguments in (["info"], ["forward"], ["forward", "--positions", table]):
            run = self.run_korvo(*arguments, self.machine, "--trace", "/dev/full")
            self.assertEqual(run.returncode, REFUSED)
            self.assertIn("/dev/full: expected room for the whole trace", run.stderr)

    def test_locks_take_one_value_a_use(self):
        for locks in (["--lock", "A, C"], ["--lock", "A", "--lock", "C"]):
            settings = self.json("info", *locks, self.machine)["settings"]
            self.assertEqual(settings["locked"], ["A", "C"])

    def test_any_strategy_that_a_file_may_give_is_taken(self):
        machine = self.write("s.def", TABLE_AC + "strategy=7\n")
        self.assertEqual(self.json("info", machine)["settings"]["strategy"], 7)
        for strategy in (-1, 0, 7):
            settings = self.json("info", self.machine, "--strategy", str(strategy))["settings"]
            self.assertEqual(settings["strategy"], strategy)

    def test_a_gun_slides_back_by_its_length(self):
        machine = self.write("t.def", TWO_TOOLS)
        answer = self.json("forward", machine, "--tool", "2", "--tool-length", "15")
        self.assertEqual((answer["nose"], answer["tip"]), ([40, 0, 95], [40, 0, 80]))

    # The nearest point of the first tool's line (x = y = 0) to the second's (y = 20, z = 5) is
    # (0, 0, 5): there the load puts the first tool's point when the second one hangs on it.
    def test_a_tool_on_a_tool_moves_the_first_one_as_the_guide_says(self):
        text = ("frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
                "tool=z,0,0,0\n{}tool=x,40,20,5\n")
        linked = self.write("linked.def", text.format("lien=Z\n"))
        hanging = self.write("hanging.def", text.format(""))
        self.assertEqual(self.json("forward", linked)["nose"], [0, 0, 0])
        self.assert_near(self.json("forward", hanging)["nose"], [0, 0, 5])

    def test_strategy_replaces_that_of_the_file(self):
        machine = self.write("s.def", TABLE_AC + "strategy=1\n")
        self.assertEqual(self.json("forward", machine)["settings"]["strategy"], 1)
        self.assertEqual(self.json("forward", machine, "--strategy", "2")["settings"]["strategy"],
                         2)


class Settings(CommandLine):
    """The options that set a machine up are taken by every verb that asks one. Each changes the
    answer, or the help leaves it out and a warning says that it does not."""

    VALUES = {"--tool": "2", "--tool-length": "5", "--frame": "10,20,30,0,0,90", "--lock": "X",
              "--strategy": "1"}
    FACET = ("solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
             "endloop\nendfacet\nendsolid\n")

    def setUp(self):
        super().setUp()
        self.write("t.stl", self.FACET)
        self.machine = self.write("gun.def", TABLE_AC.replace(
            "150\n", "150\nlien=Z\ngun=z,40,0,80,$ZRN_MACHINE_DEF/t.stl\n"))
        mesh = [self.machine, "-o", os.path.join(self.folder, "a.stl")]
        inverse = [self.machine, "--point", "0,0,200", "--dir", "-0.2,0.3,1", "--from",
                   "C=150,A=-25", "--engine", "library"]
        moves = [self.machine, "--from", "A=0", "--to", "A=20,C=30", "--steps", "2"]
        self.verbs = {
            "info": ([self.machine], ("--strategy",)),
            "forward": ([self.machine], ("--lock", "--strategy")),
            "inverse": (inverse, ()),
            "limits": ([self.machine], tuple(self.VALUES)),
            "interpolate": (moves, ("--strategy",)),
            "translate": ([self.machine, "--at", "A=20", "--by", "1,2,3"], ()),
            "mesh": (mesh, ("--lock", "--strategy"))}
        # A gun's length alone moves a body. A shift turns an arm's wrist alone, which nearly
        # straight has two ways of it.
        self.others = {
            ("mesh", "--tool"): [*mesh, "--tool-length", "5"],
            ("mesh", "--tool-length"): [*mesh, "--tool", "2"],
            ("translate", "--strategy"): ["arm-irb2400", "--at", "J1=10,J2=20,J3=-30,J5=0.5",
                                          "--by", "0,10,-20"]}

    def run_verb(self, *arguments):
        """The answer without the settings that it repeats, and what was said beside it."""
        run = self.run_korvo(*arguments, "--json")
        self.assertIn(run.returncode, (ANSWERED, NO), run.stderr)
        answer = json.loads(run.stdout)
        validate(answer)
        del answer["settings"]
        return answer, run.stderr

    def test_each_changes_the_answer_or_says_that_it_does_not(self):
        for verb, (question, idle) in self.verbs.items():
            for option, value in self.VALUES.items():
                with self.subTest(f"{verb} {option}"):
                    arguments = self.others.get((verb, option), question)
                    plain, _ = self.run_verb(verb, *arguments)
                    answer, said = self.run_verb(verb, *arguments, option, value)
                    warning = f"korvo: warning: {option} plays no part in '{verb}'\n"
                    self.assertEqual(answer == plain, option in idle)
                    self.assertEqual(said.count(warning), int(option in idle), said)

    def test_the_help_has_those_that_change_the_answer(self):
        for verb, (_, idle) in self.verbs.items():
            text = self.answer(verb, "--help")
            for option in self.VALUES:
                self.assertEqual(f"  {option} " in text, option not in idle, (verb, option))

    def test_idle_ones_are_checked_all_the_same(self):
        self.assert_fails(USAGE, "expected axes among", "limits", self.machine, "--lock", "Q")
        self.assert_fails(USAGE, "expected a whole number after --strategy", "forward",
                          self.machine, "--strategy", "best")


class NewMachine(CommandLine):
    STARTS = ["mill-3axis", "table-ac", "table-bc", "head-cb", "head-table", "arm"]

    def test_lists_the_starts(self):
        lines = self.answer("new").splitlines()
        names = [line.split()[0] for line in lines]
        self.assertEqual(names[:len(self.STARTS)], self.STARTS)
        self.assertEqual([s["name"] for s in self.json("new")["starts"]], names)
        self.assertEqual(len(names), len(set(names)))

    @staticmethod
    def examples():
        """(name, text) of the examples that no start hides."""
        folder = os.path.join(os.path.dirname(SCHEMAS), "..", "examples", "machines")
        for name in sorted(n[:-4] for n in os.listdir(folder) if n.endswith(".def")):
            if name not in NewMachine.STARTS:
                with open(os.path.join(folder, name + ".def"), encoding="utf-8") as file:
                    yield name, file.read()

    def test_every_example_is_offered_as_it_stands_but_for_its_bodies(self):
        for name, text in self.examples():
            offered = self.answer("new", name)
            start = self.json("new", name)["starts"][0]
            self.assertEqual((start["text"], start["format"]),
                             (offered, self.json("info", name)["machine"]["format"]))
            self.assertEqual("# " + start["summary"], text.splitlines()[0])
            self.assertEqual(offered.splitlines()[0], text.splitlines()[0])
            if "$ZRN_MACHINE_DEF/geometry/" not in text:
                self.assertEqual(offered, text)

    # A copy lies where the example's files are not: it names none of them, says so, and is the
    # same machine.
    def test_a_copy_of_an_example_with_bodies_leaves_them_out(self):
        with_bodies = [name for name, text in self.examples()
                      if "$ZRN_MACHINE_DEF/geometry/" in text]
        self.assertIn("head-cb-fork", with_bodies)
        for name in with_bodies:
            offered = self.answer("new", name)
            self.assertIn("\n# Left out of this copy: the files of the example's bodies.\n", offered)
            self.assertNotIn("ZRN_MACHINE_DEF", offered)
            self.assertNotIn("geom", offered)
            copy = self.write(name + "-copy.def", offered)
            self.assertNotIn("geometry", self.answer("check", copy))
            at = ",".join("%s=7" % axis["name"] for axis in self.json("info", name)["axes"])
            self.assertEqual(self.json("forward", copy, "--at", at)["nose"],
                             self.json("forward", name, "--at", at)["nose"])

    def test_a_body_goes_with_its_comment_and_nothing_else(self):
        lines = self.answer("new", "head-cb-fork").splitlines()
        self.assertIn("frame", lines)
        self.assertIn("axis=X,1,+x", lines)
        self.assertIn("part=x,y,0,0,0", lines)
        at = lines.index("tool=z,0,0,0")
        self.assertEqual(lines[at + 1:at + 3], ["", "# The part stands on the frame."])

    def test_every_start_is_a_machine(self):
        classes = {"mill-3axis": 1, "table-ac": 3, "table-bc": 3, "head-cb": 3, "head-table": 3,
                   "arm": 5}
        for name in self.STARTS:
            with self.subTest(name):
                text = self.answer("new", name)
                self.assertTrue(text.startswith("# "))
                info = self.json("info", self.write(name + ".def", text))
                self.assertEqual(info["tools"][0]["kinematicClass"], classes[name])
                start = self.json("new", name)["starts"][0]
                self.assertEqual((start["text"], start["format"]),
                                 (text, info["machine"]["format"]))

    def test_rotary_axes_of_the_starts_follow_iso_841(self):
        for name in self.STARTS:
            info = self.json("info", self.write(name + ".def", self.answer("new", name)))
            for axis in info["axes"]:
                if axis["type"] == "rotary":
                    self.assertTrue(axis["sense"]["iso841"], (name, axis["name"]))

    def test_the_arm_has_the_shape_that_the_solver_asks_for(self):
        tool = self.json("info", self.write("a.def", self.answer("new", "arm")))["tools"][0]
        self.assertEqual((tool["armType"], tool["wristType"]), (1, 2))

    def test_unknown_starts_are_usage_errors(self):
        for name in ("lathe", "", "table-ac.def", "README"):
            self.assert_fails(USAGE, "expected one of mill-3axis, table-ac", "new", name)

    def test_options_about_machines_are_refused(self):
        for option in ("--format", "--tool", "--tool-length", "--frame", "--lock", "--strategy",
                       "--trace"):
            self.assert_fails(USAGE, "does not apply to 'new'", "new", "arm", option, "1")


class Refusals(CommandLine):
    def test_files_that_never_end_are_refused_with_their_line(self):
        point = self.write("p.def", TABLE_AC + "rotationpoint=1,,3\n")
        ring = self.write("r.def", "frame\naxis=X,1,x\npart\naxis=Y,2,y\npart\ntool=z,0,0,0\n")
        for verb in ("info", "forward"):
            self.assert_fails(REFUSED, f"{point}:12:17: error: expected a number in each of the first 12 "
                              "operands of a rotation point, found '' as operand 2", verb, point)
            self.assert_fails(REFUSED, f"{ring}:4: error: expected chains of elements that end, found a "
                              "ring", verb, ring)

    def test_machines_that_are_not_found_name_the_examples(self):
        self.assert_fails(REFUSED, "no-such-machine: expected a definition file or an example (",
                          "info", "no-such-machine")
        path = os.path.join(self.folder, "none.def")
        self.assert_fails(REFUSED, f"{path}: error: expected a readable file", "info", path)

    def test_what_is_no_machine_is_refused(self):
        nothing = ": error: expected the lines of a machine, found none among 0 lines"
        nul = ":1:1: error: expected text of one byte a character, found a NUL character"
        frame = ": error: expected one frame line, found none"
        for name, text, found in (("empty", "", nothing), ("binary", bytes(range(256)) * 40, nul),
                                  ("nul", b"\0" * 99, nul), ("text", "hello\n", frame),
                                  ("long", "x" * 10000000, frame)):
            with self.subTest(name):
                path = self.write(name, text)
                self.assert_fails(REFUSED, path + found, "info", path)

    def test_many_findings_are_counted(self):
        path = self.write("many.def", TWO_TOOLS + "hello\n" * 50)
        run = self.run_korvo("info", path)
        self.assertEqual(run.returncode, ANSWERED)
        self.assertEqual(len(run.stderr.splitlines()), 21)
        self.assertIn("korvo: and 30 more\n", run.stderr)
        self.assert_fails(REFUSED, f"{self.folder}: error: expected a readable file, found a folder",
                          "info", self.folder)
        self.assert_fails(REFUSED, "/dev/null: error: expected a readable file, found a pipe or a device",
                          "info", "/dev/null")
        self.assert_fails(USAGE, "found ''", "info", "")
        self.assert_fails(USAGE, "no machine is read from standard input", "info", "-")

    def test_examples_go_by_their_bare_names(self):
        for name in ("README.md", "README", "table-ac.def"):
            self.assert_fails(REFUSED, f"{name}: expected a definition file or an example (",
                              "info", name)

    def test_a_file_wins_over_the_example_of_its_name(self):
        self.write("table-bc", TABLE_AC)
        run = subprocess.run([KORVO, "info", "table-bc"], capture_output=True, text=True,
                             timeout=60, check=False, cwd=self.folder)
        self.assertIn("A  rotary", run.stdout)
        self.assertEqual(run.stderr, "korvo: taking the file table-bc, not the example of that "
                         "name\n")

    def test_suspicious_files_are_answered_with_warnings(self):
        machine = self.write("w.def", TWO_TOOLS + "lien=BATI\naxis=S,4\naxis=T\n")
        for verb in ("info", "forward"):
            run = self.run_korvo(verb, machine)
            self.assertEqual(run.returncode, ANSWERED)
            self.assertEqual(run.stderr.splitlines(), [
                f"{machine}:11: warning: expected a direction for every axis, found none for 'S' "
                "[axis-direction]",
                f"{machine}:12:6: warning: expected an axis number from 1 up behind the name, found "
                "'T' without one, which never moves [axis-place]"])

    def test_bytes_that_move_the_cursor_are_spelled_out(self):
        run = self.run_korvo("info", "a\x1b[2J\rb")
        self.assertIn(r"a\x1b[2J\rb: expected", run.stderr)
        self.assertNotIn("\x1b", run.stderr)

    def test_the_wrong_format_is_refused(self):
        machine = self.write("u.def", TWO_TOOLS)
        self.assert_fails(REFUSED, "expected axis lines of format 2, as asked for, found those of "
                          "format 1", "info", machine, "--format", "2")
        hint = "korvo: read as format 2, but the axis lines look like 1: try --format 1"
        self.assert_fails(REFUSED, hint, "info", machine, "--format", "2")
        xyz = self.write("x.def", "frame\npart\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n")
        run = self.run_korvo("info", xyz, "--format", "2")
        self.assertEqual(run.returncode, ANSWERED)
        self.assertIn(hint, run.stderr)

    def test_axis_numbers_that_fill_the_memory_are_refused(self):
        machine = self.write("n.def", TWO_TOOLS.replace("V,2", "V,2000000000"))
        self.assert_fails(REFUSED, f"{machine}:5:8: error: expected axis numbers up to 10000, found "
                          "2000000000", "info", machine)

    def test_an_output_that_is_full_is_said(self):
        for arguments in (["info", self.machine], ["--help"], ["--version"], ["info", "--help"]):
            with self.subTest(arguments), open("/dev/full", "w", encoding="utf-8") as full:
                run = subprocess.run([KORVO, *arguments], stdout=full, stderr=subprocess.PIPE,
                                     text=True, timeout=60, check=False)
                self.assertEqual(run.returncode, REFUSED)
                self.assertIn("expected to write the answer", run.stderr)


class Hints(CommandLine):
    def test_blanks_in_a_list_are_told_of_in_order(self):
        self.assert_fails(USAGE, "korvo: found what belongs to no option: 20, 150 1 (a list has no "
                          "blanks behind its commas, or stands in quotes)\n", "inverse",
                          self.machine, "--point", "10,", "20,", "150", "--dir", "0,", "1")
        self.assert_fails(USAGE, "korvo: found what belongs to no option: 5\n", "info",
                          self.machine, "5")

    def test_an_example_named_nearly_is_told(self):
        for name in ("TABLE-AC", "table-ac.def", "tabel-ac"):
            self.assert_fails(REFUSED, "found no such file (did you mean 'table-ac'?)", "info",
                              name)
        run = self.run_korvo("info", "lathe-of-mine")
        self.assertTrue(run.stderr.endswith("found no such file\n"), run.stderr)

    # Columns stand one below the other.
    def test_matrices_are_aligned(self):
        text = self.answer("forward", self.machine, "--at", "X=-1000.5,A=30,C=45")
        rows = text.split("Tip frame (part-zero frame)\n")[1].splitlines()[:3]
        self.assertEqual({len(row) for row in rows}, {len(rows[0])})


class Terminal(CommandLine):
    """The progress bar shows on a terminal only."""

    def error_output(self, path, on_terminal):
        if not on_terminal:
            return self.run_korvo("forward", self.machine, "--positions", path).stderr
        ours, theirs = pty.openpty()
        with open(os.devnull, "wb") as null:
            child = subprocess.Popen([KORVO, "forward", self.machine, "--positions", path],
                                     stdout=null, stderr=theirs)
        os.close(theirs)
        seen = b""
        while True:
            try:
                piece = os.read(ours, 65536)
            except OSError:
                break
            if not piece:
                break
            seen += piece
        os.close(ours)
        self.assertEqual(child.wait(timeout=120), ANSWERED)
        return seen.decode()

    def test_progress_on_a_terminal_only(self):
        table = self.write("many.csv", "X,A,C\n" + "1.5,-20.25,100.5\n" * 300000)
        self.assertRegex(self.error_output(table, True), r"\[#*\.*\] +\d+ %")
        self.assertNotIn("%", self.error_output(table, False))


if __name__ == "__main__":
    unittest.main()
