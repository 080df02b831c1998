"""`korvo path`: whole toolpaths from CSV and APT/CL, positions, reports, advice, stopping."""
import csv
import html.parser
import io
import json
import math
import os
import pty
import re
import select
import shlex
import signal
import subprocess
import sys
import time

from command_line_test import (ANSWERED, KORVO, NO, REFUSED, SCHEMAS, USAGE, CommandLine,
                               validate)

STOPPED = 4
EXAMPLES = os.path.join(os.path.dirname(SCHEMAS), "..", "examples")

# A fork head, all through the tool point: tilted by t at the azimuth a is B=t, C=a, and B=-t,
# C=a+180. X, Y, Z are the tip.
FORK = """\
frame
part=x,y,0,0,0
lien=BATI
axis=X,1,x
axis=Y,2,y
axis=Z,3,z
rotation=C,6,z,0,0,0,0,0
rotation=B,5,y,0,0,0,0,0
tool=z,0,0,0
limits=X,-1000,1000
limits=Y,-1000,1000
limits=Z,-1000,1000
limits=C,-360,360
limits=B,-110,110
"""


def pointing(tilt, azimuth, tip=(0, 0, 0)):
    t, a = math.radians(tilt), math.radians(azimuth)
    return (*tip, math.sin(t) * math.cos(a), math.sin(t) * math.sin(a), math.cos(t))


def table(targets, head="x,y,z,i,j,k"):
    return head + "\n" + "".join(",".join(map(str, row)) + "\n" for row in targets)


def spiral(count, step=10):
    return [pointing(20, step * i) for i in range(count)]


class PathCommandLine(CommandLine):
    def setUp(self):
        super().setUp()
        self.machine = self.write("fork.def", FORK)

    def at(self, name):
        return os.path.join(self.folder, name)

    def run_path(self, targets, *options, code=None, machine=None, stdin=None):
        if not isinstance(targets, str):
            targets = self.write("targets.csv", table(targets))
        run = self.run_korvo("path", machine or self.machine, targets, *options, stdin=stdin)
        if code is not None:
            self.assertEqual(run.returncode, code, run.stderr)
        return run

    def report(self, targets, *options, code=None, machine=None):
        run = self.run_path(targets, *options, "--json", machine=machine)
        answer = json.loads(run.stdout)
        validate(answer)
        self.assertEqual(run.returncode, code if code is not None
                         else ANSWERED if answer["fits"] else NO, run.stderr)
        return answer

    def positions(self, targets, *options, machine=None):
        """The rows that -o writes, as dictionaries."""
        out = self.at("positions.csv")
        run = self.run_path(targets, *options, "-o", out, machine=machine)
        self.assertIn(run.returncode, (ANSWERED, NO), run.stderr)
        with open(out, encoding="utf-8", newline="") as file:
            text = file.read()
        self.assertNotIn("\r", text)
        return list(csv.DictReader(io.StringIO(text),
                                   delimiter=";" if ";" in text else ","))

    def values(self, row, axes="BC"):
        return [float(row[axis]) for axis in axes]


class Positions(PathCommandLine):
    def test_one_row_a_target_with_axis_values_by_name(self):
        rows = self.positions([pointing(20, 10, (1, 2, 3)), pointing(30, 40, (4, 5, 6))])
        self.assertEqual(list(rows[0]), ["target", "line", "added", "break", "feed", "X", "Y", "Z",
                                         "B", "C"])
        self.assertEqual([(r["target"], r["line"], r["added"], r["break"], r["feed"])
                          for r in rows], [("1", "2", "0", "0", ""), ("2", "3", "0", "0", "")])
        self.assert_near(self.values(rows[0], "XYZBC"), [1, 2, 3, 20, 10])
        self.assert_near(self.values(rows[1], "XYZBC"), [4, 5, 6, 30, 40])

    def test_forward_reads_them_back_and_finds_the_targets(self):
        targets = [pointing(15 + i, 20 * i, (i, -2 * i, 5)) for i in range(30)]
        self.positions(targets, "--tool-length", "40", "--frame", "10,20,30,5,6,7")
        run = self.run_korvo("forward", self.machine, "--positions", self.at("positions.csv"),
                             "--tool-length", "40", "--frame", "10,20,30,5,6,7")
        self.assertEqual(run.returncode, ANSWERED, run.stderr)
        found = list(csv.DictReader(io.StringIO(run.stdout)))
        self.assertEqual(len(found), len(targets))
        for row, target in zip(found, targets):
            self.assert_near([float(row[c]) for c in ("tip_x", "tip_y", "tip_z", "i", "j", "k")],
                             target, 1e-6)

    def test_breaks_and_feeds_are_marked(self):
        targets = [(*row, feed) for row, feed in zip(spiral(4, 60), ("500", "", "rapid", "0.25"))]
        path = self.write("feeds.csv", table(targets, "x,y,z,i,j,k,Feed"))
        rows = self.positions(path, "--step", "C=50,B=300", "--weight", "B=100")
        self.assertEqual([r["feed"] for r in rows], ["500", "", "rapid", "0.25"])
        self.assertEqual([r["break"] for r in rows], ["0", "1", "1", "1"])

    def test_semicolons_stay_semicolons(self):
        path = self.write("semi.csv", "tip_x;tip_y;tip_z;i;j;k;feed\n\n1;2;3;0;0;2e200;\"7\"\n")
        rows = self.positions(path)
        self.assertEqual((rows[0]["feed"], rows[0]["line"]), ("7", "3"))
        self.assert_near(self.values(rows[0], "XYZ"), [1, 2, 3])

    def test_targets_without_a_position_have_no_row(self):
        rows = self.positions([pointing(20, 0), pointing(20, 0, (5000, 0, 0)), pointing(20, 5)])
        self.assertEqual([(r["target"], r["break"]) for r in rows], [("1", "0"), ("3", "1")])

    def test_standard_input_is_read(self):
        run = self.run_path("-", "--json", stdin=table(spiral(3)), code=ANSWERED)
        self.assertEqual(json.loads(run.stdout)["input"]["file"], "standard input")

    def test_nothing_is_left_beside_the_file_and_its_permissions_stay(self):
        out = self.write("positions.csv", "old")
        os.chmod(out, 0o640)
        self.run_path(spiral(3), "-o", out, code=ANSWERED)
        self.assertEqual(os.stat(out).st_mode & 0o777, 0o640)
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["ac.def", "fork.def", "positions.csv", "targets.csv"])


class Apt(PathCommandLine):
    CL = """\
PARTNO SPIRAL
$$ a remark
UNITS/INCHES
LOADTL/1
RAPID
GOTO/0,0,1,0,0.5,0.5
FEDRAT/MMPM,600
GOTO/ 1 , 0 , 1
GOTO/1,1,$
 1,0.5,0,0.5
FINI
"""

    def test_gives_the_positions_of_the_same_table(self):
        apt = self.positions(self.write("a.cl", self.CL))
        rows = [(0, 0, 25.4, 0, 0.5, 0.5, "rapid"), (25.4, 0, 25.4, 0, 0.5, 0.5, 600),
                (25.4, 25.4, 25.4, 0.5, 0, 0.5, 600)]
        same = self.positions(self.write("a.csv", table(rows, "x,y,z,i,j,k,feed")))
        self.assertEqual([r["line"] for r in apt], ["6", "8", "9"])
        for a, b in zip(apt, same):
            a.pop("line"), b.pop("line")
        self.assertEqual(apt, same)

    def test_what_is_skipped_is_said(self):
        path = self.write("a.cl", self.CL)
        answer = self.report(path)
        self.assertEqual(answer["input"]["format"], "apt")
        self.assertEqual(answer["input"]["skipped"], {"FINI": 1, "LOADTL": 1, "PARTNO": 1})
        self.assertEqual(answer["input"]["notFollowed"], {})
        run = self.run_path(path)
        self.assertIn("3 targets, APT/CL; skipped: FINI 1, LOADTL 1, PARTNO 1\n", run.stdout)
        self.assertNotIn("Not followed", run.stdout)
        self.assertEqual(run.stderr, "")

    def test_labelled_and_numbered_moves_are_targets(self):
        path = self.write("a.cl", "GOTO/1,2,3\nN20 GOTO/4,5,6\nL1) GOTO/7,8,9\nP=GOTO/1,1,1\n")
        self.assertEqual([r["line"] for r in self.positions(path)], ["1", "2", "3", "4"])
        run = self.run_path(self.write("b.cl", "GOTO/1,2,3\nX GOTO/4,5,6\n"), code=REFUSED)
        self.assertIn("b.cl:2:3: expected GOTO at the start of a statement", run.stderr)

    def test_what_changes_the_path_and_is_not_followed_is_said(self):
        path = self.write("a.cl", "FINI\nTRANS/0,0,5\nGOTO/1,2,3\nCIRCLE/0,0,0,0,0,1,5\n"
                                  "CIRCLE/0,0,0,0,0,1,6\n")
        said = ("3 statements change where the tool goes and were not followed: CIRCLE 2, "
                "TRANS 1\n")
        out = self.at("page.html")
        run = self.run_path(path, "--report", out, code=ANSWERED)
        self.assertEqual(run.stderr, path + ": " + said)
        self.assertIn("\nNot followed    " + said, run.stdout)
        with open(out, encoding="utf-8") as file:
            self.assertIn("<b>Not followed</b>" + said.strip(), file.read())
        answer = self.report(path)["input"]
        self.assertEqual(answer["notFollowed"], {"CIRCLE": 2, "TRANS": 1})
        self.assertEqual(answer["skipped"], {"FINI": 1})
        self.assertIn("n'ont pas été suivies", self.run_path(path, "--lang", "fr").stderr)

    def test_the_format_is_told_by_content_whatever_the_name(self):
        for text, wanted in (("$$ x\nGOTO/1,2,3\n", "apt"), ("\n\nGOTO/1,2,3\n", "apt"),
                             ("RAPID\nGOTO/1,2,3\n", "apt"), ("x,y,z,i,j,k\n1,2,3,0,0,1\n", "csv"),
                             ("\nI;J;K;X;Y;Z\n0;0;1;1;2;3\n", "csv")):
            with self.subTest(text):
                self.assertEqual(self.report(self.write("t.txt", text))["input"]["format"], wanted)

    def test_input_says_what_it_is(self):
        path = self.write("odd.txt", "WORD,AND MORE\nGOTO/1,2,3\n")
        self.run_path(path, code=REFUSED)
        self.assertEqual(self.report(path, "--input", "apt")["input"]["skipped"], {"WORD": 1})
        run = self.run_path(self.write("a.cl", "GOTO/1,2,3\n"), "--input", "csv", code=REFUSED)
        self.assertIn("expected a header with tip_x", run.stderr)

    def test_what_is_neither_is_said_with_how_it_begins(self):
        for text, line, start in (("\n# made today\nx,y,z,i,j,k\n1,2,3,0,0,1\n", 2, "# made today"),
                                  ("x\ty\tz\ti\tj\tk\n1\t2\t3\t0\t0\t1\n", 1, r"x\ty\tz"),
                                  ("\x01\x02\n", 1, r"\x01\x02"), ("FINI\n", 1, "FINI")):
            with self.subTest(text):
                path = self.write("odd.txt", text)
                run = self.run_path(path, code=REFUSED)
                self.assertTrue(run.stderr.startswith(
                    f"{path}:{line}: expected targets, found none: neither a table with tip_x"),
                    run.stderr)
                self.assertIn("nor APT with GOTO/x,y,z; it begins with '" + start, run.stderr)
        run = self.run_path(self.write("odd.txt", "GOTO 1,2,3\n"), code=REFUSED)
        self.assertIn("odd.txt:1:6: expected GOTO/x,y,z", run.stderr)

    def test_what_cannot_be_read_is_said_with_line_and_column(self):
        path = self.write("bad.cl", "\n\n$$\nGOTO/1,2,3\nGOTO/1,2,$\nP3\n")
        run = self.run_path(path, "-o", self.at("out.csv"), code=REFUSED)
        self.assertEqual(run.stderr, path + ":6:1: expected GOTO/x,y,z or GOTO/x,y,z,i,j,k, found "
                         "'P3'\n")
        self.assertFalse(os.path.exists(self.at("out.csv")))
        self.assertIn("attendu", self.run_path(path, "--lang", "fr", code=REFUSED).stderr)


class Report(PathCommandLine):
    def test_says_that_it_fits_and_what_the_axes_do(self):
        answer = self.report([pointing(20, 0), pointing(20, 30, (3, 4, 0)), pointing(20, 40)])
        self.assertTrue(answer["fits"])
        self.assertEqual((answer["done"], answer["positions"], answer["added"]), (3, 3, 0))
        axes = {a["axis"]: a for a in answer["axes"]}
        self.assertEqual(list(axes), ["X", "Y", "Z", "B", "C"])
        self.assertAlmostEqual(axes["C"]["travel"], 40, delta=1e-9)
        self.assertAlmostEqual(axes["C"]["largestStep"]["by"], 30, delta=1e-9)
        self.assertEqual(axes["C"]["largestStep"]["target"], 2)
        self.assertEqual((axes["C"]["min"], axes["C"]["max"], axes["C"]["unit"]),
                         (-360, 360, "degree"))
        self.assertAlmostEqual(axes["X"]["travel"], 6, delta=1e-9)
        self.assertAlmostEqual(answer["cost"], 40 + 6 + 8, delta=1e-9)
        self.assertEqual(answer["nearestLimit"]["axis"], "B")
        self.assertAlmostEqual(answer["nearestLimit"]["margin"], 90, delta=1e-9)
        self.assertAlmostEqual(answer["singular"]["direction"], 20, delta=1e-6)
        self.assertIsNone(answer["nearestFirst"])

    def test_text_says_first_what_a_person_wants_to_know(self):
        text = self.run_path(spiral(3), code=ANSWERED).stdout
        for part in ("Fits            yes: no break\n", "Begins          X=0 Y=0 Z=0 B=20 C=0\n",
                     "Nearest limit   B, 90 degrees, target 1 (line 2)\n",
                     "Positions       3, of which added 0\n", "Cost            20\n"):
            self.assertIn(part, text)
        self.assertRegex(text, r"\n  C +20° +0° +20° +-360° +360° +10° +\d\n")

    def test_says_where_it_does_not_fit(self):
        targets = spiral(40) + [pointing(20, 0, (2000, 0, 0))] * 2
        run = self.run_path(targets, "--step", "C=5", "--weight", "B=100", code=NO)
        self.assertIn("Fits            NO: 39 breaks, 2 targets without a position\n", run.stdout)
        self.assertIn("  target 2 (line 3): C steps by 10 degrees\n", run.stdout)
        self.assertIn("  and 29 more\n", run.stdout)
        self.assertIn("  target 41 (line 42) and the 1 behind it: no position; of the first: "
                      "outside the limits: X above by 1000 mm\n", run.stdout)
        answer = self.report(targets, "--step", "C=5", "--weight", "B=100")
        self.assertEqual((answer["breaks"]["count"], answer["unreached"]["count"]), (39, 2))
        first = answer["breaks"]["first"][0]
        self.assertEqual((first["target"], first["line"], first["before"], first["kind"],
                          first["axis"]), (2, 3, 1, "step", "C"))
        run = answer["unreached"]["first"][0]
        self.assertEqual((run["target"], run["last"], run["reason"]["code"]),
                         (41, 42, "outside-limits"))

    def test_says_what_has_to_be_unwound_and_where_sides_change(self):
        answer = self.report(spiral(80), "--weight", "B=100")
        self.assertEqual([b["kind"] for b in answer["breaks"]["first"]], ["unwound"])
        self.assertIn("C has to be unwound by", answer["breaks"]["first"][0]["text"])
        narrow = self.write("narrow.def", FORK.replace("C,-360,360", "C,-170,170"))
        answer = self.report(spiral(25), machine=narrow)
        self.assertEqual([b["kind"] for b in answer["breaks"]["first"]], ["side-changed"])

    def test_says_why_of_one_target_alone(self):
        targets = [pointing(20, 0), pointing(20, 0, (1020, 0, 0)), pointing(20, 0)]
        self.assertIn("  target 2 (line 3): no position; outside the limits: X above by 20 mm\n",
                      self.run_path(targets, code=NO).stdout)

    # No turn is the shortest between them: B goes there, or C turns, while the tool stands.
    def test_says_that_the_tool_stands_between_opposite_directions(self):
        targets = [(0, 0, 300, 1, 0, 0), (0, 0, 300, -1, 0, 0)]
        steps = ["--step", "B=200", "--step", "C=400", "--tolerance", "0.01,0.1"]
        answer = self.report(targets, *steps, code=NO)
        self.assertEqual((answer["standing"]["count"], answer["added"]), (1, 0))
        standing = answer["standing"]["first"][0]
        self.assertIn(standing["axis"], ("B", "C"))
        self.assertAlmostEqual(standing["by"], 180, delta=1e-6)
        self.assertIn("the tool stands while", self.run_path(targets, *steps, code=NO).stdout)

    def test_says_that_an_axis_stays_at_the_start(self):
        rail = "arm-irb2400-rail"
        forward = self.json("forward", rail, "--at", "RAIL=500,J2=20,J3=-30,J5=40")
        targets = [tuple(forward["tip"]) + tuple(forward["direction"])] * 2
        answer = self.report(targets, "--from", "RAIL=4000", machine=rail, code=NO)
        run = answer["unreached"]["first"][0]
        self.assertEqual((run["target"], run["last"]), (1, 2))
        reason = run["reason"]
        self.assertEqual((reason["code"], reason["axes"]), ("held-axis", ["RAIL"]))
        wanted = reason["wanted"][0]
        self.assertEqual(wanted["axis"], "RAIL")
        self.assertAlmostEqual(reason["by"], 4000 - wanted["value"], delta=1e-6)
        self.assertIn("a path leaves RAIL where the start has it", reason["text"])
        # What it says holds.
        self.report(targets, "--from", f"RAIL={wanted['value']}", machine=rail, code=ANSWERED)

    def test_says_that_a_start_is_too_far_away(self):
        endless = self.write("endless.def", FORK.replace("limits=C,-360,360\n", ""))
        answer = self.report(spiral(3), "--from", "C=1e10", machine=endless, code=NO)
        self.assertEqual(answer["unreached"]["count"], 3)
        self.assertIn("1e9 degrees", answer["unreached"]["first"][0]["reason"]["text"])

    # Through the pole, the part on C and B to one side alone: C turns by 180 where the tool is
    # upright, and 100 mm off C the tip would leave its place if X and Y went straight meanwhile.
    def test_says_where_the_tool_has_to_stand(self):
        machine = self.write("side.def", """\
frame
rotation=C,6,z,0,0,0,0,0
part=x,y,0,0,0
lien=BATI
axis=X,1,x
axis=Y,2,y
axis=Z,3,z
rotation=B,5,y,0,0,0,0,0
tool=z,0,0,0
limits=C,-400,400
limits=B,0,110
""")
        targets = [pointing(5, 30, (100, 0, 0)), pointing(5, 210, (109, 0, 0))]
        options = ("--step", "C=360", "--tolerance", "0.01,0.1")
        answer = self.report(targets, *options, machine=machine, code=NO)
        self.assertEqual((answer["breaks"]["count"], answer["standing"]["count"]), (0, 1))
        first = answer["standing"]["first"][0]
        self.assertEqual((first["target"], first["axis"]), (2, "C"))
        self.assertAlmostEqual(first["way"], 0.5, delta=0.02)
        self.assertAlmostEqual(first["by"], 180, delta=1)
        text = self.run_path(targets, *options, machine=machine).stdout
        self.assertIn("NO: 1 place where the tool stands\n", text)
        self.assertRegex(text, r"on the way to target 2 \(line 3\), after (49|50) percent: the "
                               r"tool stands while C goes (179|180)[.\d]* degrees\n")
        self.assertTrue(self.report(targets, *options[:2], machine=machine)["fits"])

    def test_lists_are_cut_and_counted(self):
        answer = self.report(spiral(1300, 0.5), "--step", "C=0.1", "--weight", "B=1000",
                             "--no-advice")
        self.assertEqual(answer["breaks"]["count"], 1299)
        self.assertEqual(len(answer["breaks"]["first"]), 1000)

    def test_is_french_too(self):
        targets = spiral(3) + [pointing(20, 0, (1020, 0, 0))]
        text = self.run_path(targets, "--lang", "fr", code=NO).stdout
        for part in ("Passe           NON : 1 cible sans position\n", "Ce qui aide\n",
                     "Déplacer la pièce de X -20.5 mm", "pas de position ; hors des courses",
                     "Limite proche", "Coût"):
            self.assertIn(part, text)
        for word in ("target", "limit ", "break", " the "):
            self.assertNotIn(word, text.replace("targets.csv", ""))


class Advice(PathCommandLine):
    def advice(self, *arguments, **more):
        return {a["kind"]: a for a in self.report(*arguments, **more)["advice"]}

    def test_moves_the_part(self):
        targets = [pointing(20, 0), pointing(20, 10, (0, 0, 1020))]
        part = self.advice(targets)["part"]
        self.assert_near(part["shift"], [0, 0, -20.5])
        self.assertEqual(part["before"]["unreached"], 1)
        self.assertEqual(part["after"], {"breaks": 0, "unreached": 0, "standing": 0})
        self.assertIn("Move the part by Z -20.5 mm", part["text"])
        # What it says holds: the part zero so much lower.
        self.report(targets, "--frame", "0,0,-20.5", code=ANSWERED)

    def test_says_which_limit_is_too_narrow(self):
        narrow = self.write("narrow.def", FORK.replace("C,-360,360", "C,-170,170"))
        limit = self.advice(spiral(25), machine=narrow)["limit"]
        self.assertEqual((limit["axis"], limit["max"]), ("C", None))
        self.assertAlmostEqual(limit["min"], -180, delta=0.11)
        wider = self.write("wider.def", FORK.replace("C,-360,360", f"C,{limit['min']},170"))
        self.report(spiral(25), machine=wider, code=ANSWERED)

    def test_says_where_to_begin(self):
        targets = [pointing(20, -10), pointing(20, 10)]
        side = self.advice(targets, "--from", "B=20,C=350")["side"]
        begin = {v["axis"]: v["value"] for v in side["begin"]}
        self.assertAlmostEqual(begin["B"], -20, delta=1e-9)
        self.assertAlmostEqual(begin["C"], 170, delta=1e-9)
        self.assertEqual(side["before"]["breaks"], 1)
        start = ",".join(f"{axis}={value}" for axis, value in begin.items())
        self.assertEqual(self.advice(targets, "--from", start), {})

    def test_says_where_a_locked_axis_should_stand(self):
        targets = [pointing(20, 0, (0, 250, 0)), pointing(20, 5, (1, 250, 0))]
        start = self.advice(targets, "--lock", "Y")["start"]
        self.assertEqual((start["axis"], start["value"]), ("Y", 250))
        self.report(targets, "--lock", "Y", "--from", "Y=250", code=ANSWERED)

    def test_says_where_a_held_axis_without_limits_should_stand(self):
        endless = self.write("endless.def", FORK.replace("limits=C,-360,360\n", ""))
        targets = [pointing(20, 13), pointing(30, 13)]
        start = self.advice(targets, "--hold", "C=70", machine=endless)["start"]
        self.assertEqual(start["axis"], "C")
        self.assertAlmostEqual(start["value"], 13, delta=1e-9)
        self.assertIn("Start with C=13: then it fits", start["text"])
        self.report(targets, "--hold", "C=13", machine=endless, code=ANSWERED)

    def test_is_left_out_when_asked(self):
        targets = [pointing(20, 0, (1020, 0, 0))]
        self.assertNotEqual(self.report(targets)["advice"], [])
        self.assertEqual(self.report(targets, "--no-advice")["advice"], [])


class Options(PathCommandLine):
    """Every option does something."""

    def axis(self, answer, name):
        return next(a for a in answer["axes"] if a["axis"] == name)

    def test_from_picks_the_turn_and_counts_the_way(self):
        rows = self.positions(spiral(2), "--from", "C=-350,B=20")
        self.assert_near(self.values(rows[0]), [20, -360])
        self.assertAlmostEqual(self.report(spiral(2), "--from", "C=-350,B=20")["cost"], 20,
                               delta=1e-9)

    def test_weight_chooses_between_axes(self):
        # To the azimuth 100: C by 100, or B by 40 and C by 80 the other way.
        targets = [pointing(20, 0), pointing(20, 100)]
        step = ("--step", "C=200,B=200")
        self.assertAlmostEqual(self.axis(self.report(targets, *step), "C")["travel"], 100,
                               delta=1e-9)
        light = self.report(targets, *step, "--weight", "B=0.1", "--weight", "X=3,Y=4")
        self.assertAlmostEqual(self.axis(light, "C")["travel"], 80, delta=1e-9)
        self.assertAlmostEqual(light["cost"], 84, delta=1e-9)
        self.assertEqual([a["weight"] for a in light["axes"]], [3, 4, 1, 0.1, 1])

    def test_step_is_what_a_break_is(self):
        for step, breaks in (("C=9.9", 2), ("C=10.1", 0)):
            answer = self.report(spiral(3), "--step", step, "--weight", "B=100")
            self.assertEqual(answer["breaks"]["count"], breaks)

    def test_margins_keep_away_from_limits(self):
        # C = 350 is 10 from its limit; without a start -10 is as good.
        targets = [pointing(20, 350)]
        arguments = ("--from", "C=350,B=20")
        near = self.positions(targets, *arguments)
        self.assert_near(self.values(near[0]), [20, 350])
        # 100 wished: 90 short at 350.
        self.assertAlmostEqual(self.report(targets, *arguments, "--margin", "C=100")["cost"], 90,
                               delta=1e-9)
        far = self.positions(targets, *arguments, "--margin", "C=100", "--margin-cost", "C=10")
        self.assert_near(self.values(far[0]), [-20, 170])

    def test_tolerance_adds_positions(self):
        targets = [pointing(20, 0), pointing(20, 80)]
        self.assertEqual(self.report(targets)["added"], 0)
        coarse, fine = (self.report(targets, "--tolerance", t)["added"]
                        for t in ("0.1,2", "0.1,0.5"))
        self.assertGreater(coarse, 0)
        self.assertGreater(fine, coarse)
        rows = self.positions(targets, "--tolerance", "0.1,0.5")
        self.assertEqual([r["added"] for r in rows], ["0"] + ["1"] * fine + ["0"])
        self.assertEqual({r["target"] for r in rows[1:]}, {"2"})

    def test_lock_hold_and_sample_as_inverse_has_them(self):
        targets = [pointing(20, 30), pointing(25, 30)]
        self.assertEqual(self.report(targets, "--lock", "B")["unreached"]["count"], 2)
        at = self.positions(targets, "--hold", "C=30")
        self.assert_near(self.values(at[1]), [25, 30])
        self.assertEqual(self.report(targets, "--hold", "C=40")["unreached"]["count"], 2)
        rail = "arm-irb2400-rail"
        forward = self.json("forward", rail, "--at", "RAIL=1000,J2=20,J3=-30,J5=40")
        far = [tuple(forward["tip"]) + tuple(forward["direction"])] * 2
        self.assertEqual(self.report(far, "--from", "RAIL=0", "--hold", "RAIL=0",
                                     "--no-advice", machine=rail)["unreached"]["count"], 2)
        self.report(far, "--sample", "RAIL=9", machine=rail, code=ANSWERED)

    def test_places_are_tried_of_free_axes(self):
        # From C = 40 to 100 by upright targets, where C is free, in steps of at most 30.
        targets = [pointing(10, 40), *[pointing(0, 0)] * 3, pointing(10, 100)]
        fits = self.report(targets, "--step", "C=30", "--places", "12")
        self.assertTrue(fits["fits"])
        few = self.report(targets, "--step", "C=30", "--places", "1", "--no-advice")
        self.assertGreater(few["breaks"]["count"], 0)

    def test_singular_says_which_targets_count(self):
        targets = [pointing(3, 0), pointing(5, 0), pointing(20, 0)]
        for option, count in (([], 0), (["--singular", "4"], 1), (["--singular", "6,2"], 2)):
            answer = self.report(targets, *option)["singular"]
            self.assertEqual((answer["count"], answer["target"]), (count, 1))
        self.assertEqual(answer["mm"], 2)

    def test_compare_says_what_nearest_first_comes_to(self):
        targets = [pointing(20, -10), pointing(20, 10)]
        answer = self.report(targets, "--from", "B=20,C=350", "--compare")
        self.assertEqual(answer["nearestFirst"]["fit"]["breaks"], 1)
        self.assertAlmostEqual(answer["nearestFirst"]["cost"], 200, delta=1e-9)
        self.assertAlmostEqual(answer["cost"], 240, delta=1e-9)
        self.assertIn("Nearest-first   1 break; cost 200",
                      self.run_path(targets, "--from", "B=20,C=350", "--compare").stdout)

    def test_jobs_give_the_same_bit_by_bit(self):
        targets = self.write("many.csv", table(
            [pointing(20 + 15 * math.sin(i / 90), i / 3, (i / 50, 0, 0)) for i in range(9000)]))
        files, reports = set(), set()
        for jobs in ("1", "2", "5"):
            out = self.at("out.csv")
            run = self.run_path(targets, "--jobs", jobs, "--tolerance", "0.01,0.02", "-o", out,
                                "--json", "--no-advice")
            reports.add(run.stdout)
            with open(out, "rb") as file:
                files.add(file.read())
        self.assertEqual((len(files), len(reports)), (1, 1))


class Refusals(PathCommandLine):
    def test_bad_usage_says_what_was_wanted(self):
        path = self.write("targets.csv", table(spiral(2)))
        out = self.at("o.csv")
        for options, message in (
                (["--tolerance", "0.1"], "mm,degrees, both above 0"),
                (["--tolerance", "0.1,0"], "mm,degrees, both above 0"),
                (["--tolerance", "0.1,90"], "mm,degrees, both above 0"),
                (["--weight", "Q=1"], "axes among X, Y, Z, B, C after --weight"),
                (["--weight", "B=-1"], "a finite decimal number from 0 up in --weight"),
                (["--step", "C"], "AXIS=NUMBER after --step"),
                (["--margin", "C=x"], "in --margin"), (["--margin-cost", "C=x"], "--margin-cost"),
                (["--hold", "C=x"], "--hold"), (["--sample", "C=1"], "--sample"),
                (["--from", "Q=1"], "--from"), (["--jobs", "0"], "from 1 to 256 after --jobs"),
                (["--jobs", "2.5"], "--jobs"), (["--places", "0"], "after --places"),
                (["--singular", "-1"], "after --singular"),
                (["--singular", "1,2,3"], "after --singular"),
                (["--input", "xml"], "auto, csv or apt after --input"),
                (["--lang", "de"], "en or fr after --lang"), (["-o", ""], "a file after -o"),
                (["-o", "-"], "a file after -o"), (["--report", "-"], "a file after --report"),
                (["-o", path], "which is read"), (["--report", self.machine], "which is read"),
                (["-o", out, "--report", out], "two files")):
            with self.subTest(options):
                self.assert_fails(USAGE, message, "path", self.machine, path, *options)
        self.assert_fails(USAGE, "TARGETS", "path", self.machine)
        self.assertFalse(os.path.exists(out))

    def test_bad_tables_are_refused_with_file_and_line(self):
        for text, message in (
                ("", ": expected targets, found none"), ("x,y,z,i,j\n", "found no k"),
                ("x,y,z,i,j,k\n", "expected targets, found none"),
                ("x,y,z,i,j,k\n1,2,3,0,0\n", ":2: expected 6 values, found 5"),
                ("x,y,z,i,j,k\n1,2,3,0,0,1\n1,2,b,0,0,1\n", ":3: expected a finite decimal number"),
                ("x,y,z,i,j,k\n1,2,3,0,0,0\n", ":2: expected a direction, found i,j,k all 0"),
                ("x,y,z,i,j,k,feed\n1,2,3,0,0,1,-4\n", ":2: expected a feed from 0 up"),
                ("FINI\n", "expected targets, found none"),
                ("x,y,z,i,j,k\n" + "1" * 70000, "expected a line of up to 65536 bytes")):
            with self.subTest(text[:40]):
                path = self.write("bad.csv", text)
                run = self.run_path(path, "-o", self.at("o.csv"), code=REFUSED)
                self.assertIn(message, run.stderr)
                self.assertTrue(run.stderr.startswith(path), run.stderr)
                self.assertEqual(run.stdout, "")
                self.assertFalse(os.path.exists(self.at("o.csv")))

    def test_files_that_cannot_be_read_or_written(self):
        self.run_path(self.at("none.csv"), code=REFUSED)
        for option in ("-o", "--report"):
            run = self.run_path(spiral(2), option, self.at("no/such/file"), code=REFUSED)
            self.assertIn("expected a folder to write it into", run.stderr)

    # What /dev/stdout is, in a folder of our own.
    def test_links_to_open_streams_are_refused_and_stay(self):
        link = self.at("stream")
        os.symlink("/proc/self/fd/1", link)
        with open(self.at("plain"), "wb") as plain:
            for option in ("-o", "--report"):
                for stream in (subprocess.PIPE, plain):
                    with self.subTest((option, stream)):
                        run = subprocess.run(
                            [KORVO, "path", self.machine, self.write("t.csv", table(spiral(2))),
                             option, link], stdout=stream, stderr=subprocess.PIPE, text=True,
                            timeout=60, check=False)
                        self.assertEqual(run.returncode, REFUSED)
                        self.assertIn("stream: expected a file, found", run.stderr)
                        self.assertEqual(os.readlink(link), "/proc/self/fd/1")
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["ac.def", "fork.def", "plain", "stream", "t.csv"])

    def test_an_axis_given_twice_is_refused(self):
        for option in ("--weight", "--step", "--margin", "--margin-cost", "--hold", "--from"):
            self.assert_fails(USAGE, f"each axis once in {option}, found 'C' again", "path",
                              self.machine, self.write("t.csv", table(spiral(2))), option,
                              "C=5,C=9")
        run = self.run_path(spiral(2), "--weight", "C=1", "--weight", "C=2", code=USAGE)
        self.assertIn("each axis once in --weight", run.stderr)

    def test_what_cannot_be_meant_so_is_said(self):
        endless = self.write("endless.def", FORK.replace("limits=C,-360,360\n", ""))
        for options, said in (
                (["--hold", "B=200"], "--hold has B at 200, outside its limits (at most 110)"),
                (["--hold", "B=-111"], "--hold has B at -111, outside its limits (at least -110)"),
                (["--hold", "B=110"], ""),
                (["--from", "Z=9999"], "--from has Z at 9999, outside its limits (at most 1000)"),
                (["--margin", "C=5"], "--margin of C has no effect: it has no limits"),
                (["--margin", "B=5", "--margin-cost", "B=5"], ""),
                (["--margin-cost", "B=5"], "--margin-cost of B has no effect without --margin")):
            with self.subTest(options):
                run = self.run_path(spiral(2), *options, "--no-advice", machine=endless)
                self.assertEqual(run.stderr, f"korvo: {said}\n" if said else "")

    def test_strategy_plays_no_part_and_says_so(self):
        run = self.run_path(spiral(2), "--strategy", "2", code=ANSWERED)
        self.assertIn("--strategy plays no part in 'path'", run.stderr)


class Stopping(PathCommandLine):
    # Some tenths of a second; under sanitizers every target takes many times as long.
    COUNT = 60_000 if os.environ["KORVO_SANITIZE"] else 400_000

    def many(self):
        """The same three thousand targets again and again."""
        rows = [pointing(20 + 10 * math.sin(i * math.tau / 3000), 90 * math.sin(i * math.tau / 1500))
                for i in range(3000)]
        lines = table(rows).splitlines(keepends=True)
        text = "".join(lines[1:]) * (self.COUNT // 3000 + 1)
        return self.write("many.csv", lines[0] + "".join(text.splitlines(True)[:self.COUNT]))

    def wait_for(self, condition):
        end = time.monotonic() + 60
        while not condition():
            self.assertLess(time.monotonic(), end)
            time.sleep(0.001)

    def temporary(self):
        return [n for n in os.listdir(self.folder) if n.startswith(".out.csv.")]

    def stopped(self, path, number, *options):
        """What it writes when it is stopped; on a slow day it is at its end before."""
        for _ in range(5):
            child = subprocess.Popen(
                [KORVO, "path", self.machine, path, "-o", self.at("out.csv"), *options],
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            self.wait_for(lambda: self.temporary() or child.poll() is not None)
            child.send_signal(number)  # it may be stopped from the temporary file on
            output, errors = child.communicate(timeout=60)
            is_behind = '"adviceStopped": true' in output or "before all of it" in output
            if child.returncode != ANSWERED and not is_behind:
                break
        self.assertEqual(child.returncode, STOPPED, errors)
        self.assertEqual(self.temporary(), [])
        return output

    def positions_text(self, path):
        out = self.at("again.csv")
        self.run_path(path, "-o", out, code=ANSWERED)
        with open(out, encoding="utf-8") as file:
            return file.read()

    def test_keeps_what_is_done(self):
        path = self.many()
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                answer = json.loads(self.stopped(path, number, "--json"))
                validate(answer)
                self.assertTrue(answer["stopped"])
                self.assertFalse(answer["fits"])
                self.assertTrue(0 < answer["done"] < self.COUNT)
                with open(self.at("out.csv"), encoding="utf-8") as file:
                    kept = file.read()
                self.assertEqual(kept.count("\n"), answer["done"] + 1)
                # While it searches: the best path of the targets up to there; while it gives: as
                # much of the whole one.
                with open(path, encoding="utf-8") as file:
                    head = [next(file) for _ in range(answer["done"] + 1)]
                if self.positions_text(self.write("head.csv", "".join(head))) != kept:
                    self.assertTrue(self.positions_text(path).startswith(kept))

    def test_text_and_page_say_so(self):
        output = self.stopped(self.many(), signal.SIGINT, "--report", self.at("page.html"))
        self.assertRegex(output, rf"Fits +NO: stopped after \d+ targets of {self.COUNT}; until "
                                 r"there no break\n")
        with open(self.at("page.html"), encoding="utf-8") as file:
            self.assertIn("Stopped before its end", file.read())

    # It waits in writing its report, which nobody reads: the first signal is taken, the second one
    # ends it.
    def test_a_second_signal_ends_at_once(self):
        path = self.write("broken.csv", table(spiral(1300, 0.5)))
        child = subprocess.Popen(
            [KORVO, "path", self.machine, path, "--step", "C=0.1", "--weight", "B=1000",
             "--no-advice", "--json"], stdout=subprocess.PIPE)
        self.addCleanup(child.stdout.close)
        self.assertTrue(select.select([child.stdout], [], [], 60)[0])
        time.sleep(0.1)
        child.send_signal(signal.SIGINT)
        time.sleep(0.3)
        self.assertIsNone(child.poll())
        child.send_signal(signal.SIGINT)
        self.assertEqual(child.wait(timeout=60), -signal.SIGINT)

    # The first one comes as early as it can, while it searches; the second one before it is done.
    def test_a_second_signal_leaves_nothing_unfinished(self):
        path, out = self.many(), self.write("out.csv", "old")
        for _ in range(10):
            child = subprocess.Popen([KORVO, "path", self.machine, path, "-o", out, "--report",
                                      self.at("page.html")],
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            self.wait_for(lambda: self.temporary() or child.poll() is not None)
            child.send_signal(signal.SIGTERM)
            child.send_signal(signal.SIGINT)
            if child.wait(timeout=60) in (-signal.SIGINT, -signal.SIGTERM):
                break
        self.assertLess(child.returncode, 0)
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["ac.def", "fork.def", "many.csv", "out.csv"])
        with open(out, encoding="utf-8") as file:
            self.assertEqual(file.read(), "old")

    def test_what_helps_is_stopped_and_says_so(self):
        with open(self.many(), encoding="utf-8") as file:
            text = file.read()
        path = self.write("far.csv", text + "5000,0,0,0,0,1\n")
        out = self.at("out.csv")
        for options in ((), ("--json",)):
            child = subprocess.Popen([KORVO, "path", self.machine, path, "-o", out, *options],
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            self.wait_for(lambda: os.path.exists(out) or child.poll() is not None)
            child.send_signal(signal.SIGINT)  # the table is in its place, trials follow
            output, errors = child.communicate(timeout=60)
            self.assertEqual(child.returncode, STOPPED, errors)
            os.remove(out)
            if options:
                answer = json.loads(output)
                validate(answer)
                self.assertTrue(answer["adviceStopped"])
                self.assertFalse(answer["stopped"])
            else:
                self.assertIn("What helps\n", output)
                self.assertIn("  stopped by a signal before all of it was tried\n", output)
                self.assertIn("NO: 1 target without a position", output)

    def test_reading_standard_input_is_stopped(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            child = subprocess.Popen([KORVO, "path", self.machine, "-"], stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            child.stdin.write(table(spiral(3)))
            child.stdin.flush()
            time.sleep(0.5)
            child.send_signal(number)
            self.assertEqual(child.wait(timeout=30), STOPPED)
            output, errors = child.communicate()
            self.assertEqual((output, errors), ("", "standard input: stopped while it was read\n"))

    def test_progress_is_shown_on_a_terminal_only(self):
        path = self.many()
        ours, theirs = pty.openpty()
        child = subprocess.Popen([KORVO, "path", self.machine, path], stdout=subprocess.DEVNULL,
                                 stderr=theirs)
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
        self.assertRegex(seen.decode(), r"\[#*\.*\] +\d+ %")
        self.assertEqual(self.run_path(path).stderr, "")


class Tags(html.parser.HTMLParser):
    """Reads a page and fails on what is not closed in its order."""

    VOID = {"meta", "br", "line", "path"}

    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.open, self.faults, self.seen, self.text = [], [], [], ""

    def handle_starttag(self, tag, attributes):
        self.seen.append((tag, dict(attributes)))
        if tag not in self.VOID or (tag == "line" and not self.get_starttag_text().endswith("/>")):
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.seen.append((tag, dict(attributes)))

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            self.faults.append((tag, self.getpos()))

    def handle_data(self, data):
        self.text += data


class Page(PathCommandLine):
    def page(self, targets, *options, machine=None):
        out = self.at("page.html")
        self.run_path(targets, "--report", out, *options, machine=machine)
        with open(out, encoding="utf-8") as file:
            text = file.read()
        tags = Tags()
        tags.feed(text)
        self.assertEqual((tags.open, tags.faults), ([], []))
        return text, tags

    def test_has_a_plot_of_every_axis_with_limits_and_breaks(self):
        text, tags = self.page(spiral(80), "--weight", "B=100")
        self.assertEqual(re.findall(r'<section class="plot"><h3>(\w+) ', text),
                         ["X", "Y", "Z", "B", "C"])
        self.assertEqual(sum(tag == "svg" for tag, _ in tags.seen), 5)
        c = text[text.index("<h3>C "):]
        c = c[:c.index("</section>")]
        self.assertEqual(c.count('class="limit" x1'), 2)
        self.assertEqual(c.count('class="break"'), 1)
        self.assertIn("C has to be unwound by", c)
        curve = re.search(r'class="curve" d="([^"]+)"', c).group(1)
        self.assertEqual(curve.count("M"), 2)  # it begins again behind the break
        self.assertEqual(len(re.findall("[ML]", curve)), 80)
        self.assertIn("It does not fit", tags.text)
        self.assertIn("What helps", tags.text)

    def test_the_curve_is_drawn_to_scale(self):
        # C from -360 to 360 with 6 percent beside: 0 is in the middle, 360 at 0.06 / 1.12.
        text, _ = self.page(spiral(37), "--from", "C=0,B=20")
        c = text[text.index("<h3>C "):]
        points = re.findall(r"[ML]([\d.]+) ([\d.]+)",
                            re.search(r'class="curve" d="([^"]+)"', c).group(1))
        self.assertEqual(points[0], ("0.0", "50.00"))
        self.assertEqual(points[-1][0], "1000.0")
        self.assertAlmostEqual(float(points[-1][1]), 100 * 0.06 / 1.12, delta=0.006)

    def test_needs_nothing_from_elsewhere(self):
        text, tags = self.page(spiral(80))
        for word in ("http", "url(", "@import", "<script", "<link", "<img"):
            self.assertNotIn(word, text)
        for _, attributes in tags.seen:
            self.assertFalse({"src", "href", "srcset"} & set(attributes))
        self.assertIn("prefers-color-scheme:dark", text)
        self.assertIn('name="viewport"', text)

    def test_names_are_escaped(self):
        machine = self.write("x.def", FORK.replace("=C,", "=C<i>&,"))
        name = "a<b>&amp;\"'.csv"
        text, tags = self.page(self.write(name, table(spiral(80))), "--weight", "B=100",
                               machine=machine)
        self.assertNotIn("<i>", text)
        self.assertNotIn("<b>&amp;\"", text)
        self.assertIn("C<i>& ", tags.text)
        self.assertIn(name, tags.text)

    def test_stays_small_whatever_the_path(self):
        targets = [pointing(20 + 19 * math.sin(i), i * 7, (i % 977, 0, 0)) for i in range(40_000)]
        text, _ = self.page(self.write("wild.csv", table(targets)), "--step", "C=900,B=900",
                            "--no-advice")
        self.assertLess(len(text), 400_000)
        # Of every column of pixels the least and the most: X is seen from end to end, between
        # limits 2000 apart with 6 percent beside either.
        curve = re.search(r'class="curve" d="([^"]+)"', text).group(1)
        heights = [float(y) for _, y in re.findall(r"[ML]([\d.]+) ([\d.]+)", curve)]
        self.assertAlmostEqual(max(heights) - min(heights), 976 / 2240 * 100, delta=0.1)

    def test_one_target_is_a_page_too(self):
        _, tags = self.page([pointing(20, 0)])
        self.assertIn("It fits", tags.text)

    def test_without_a_position_there_is_no_plot(self):
        text, tags = self.page([pointing(20, 0, (5000, 0, 0))])
        self.assertNotIn("<svg", text)
        self.assertIn("X above by 4000 mm", tags.text)

    def test_is_french_too(self):
        text, tags = self.page(spiral(80), "--weight", "B=100", "--lang", "fr")
        self.assertIn('<html lang="fr">', text)
        for part in ("Il ne passe pas", "1 rupture", "doit être déroulé", "Ruptures", "course"):
            self.assertIn(part, tags.text)


class Toolpaths(CommandLine):
    """The three toolpaths of the examples, by the commands of their README."""

    def setUp(self):
        super().setUp()
        self.examples = os.path.join(EXAMPLES, "toolpaths")
        subprocess.run([sys.executable, "-B", os.path.join(self.examples, "make_toolpaths.py"),
                        self.folder], check=True, timeout=120)

    def test_fit_where_nearest_first_breaks(self):
        with open(os.path.join(self.examples, "README.md"), encoding="utf-8") as file:
            commands = re.findall(r"^korvo (path .*)$", file.read(), re.M)
        self.assertEqual(len(commands), 3)
        for command, targets in zip(commands, (20203, 11520, 721)):
            with self.subTest(command):
                run = subprocess.run([KORVO, *shlex.split(command), "--json", "--compare"],
                                     cwd=self.folder, capture_output=True, text=True, timeout=120,
                                     check=False)
                self.assertEqual(run.returncode, ANSWERED, run.stderr)
                answer = json.loads(run.stdout)
                validate(answer)
                self.assertEqual(answer["done"], targets)
                self.assertGreaterEqual(answer["nearestFirst"]["fit"]["breaks"], 1)
                self.assertLess(answer["cost"], answer["nearestFirst"]["cost"])
                for name in (answer["output"], answer["report"]):
                    self.assertGreater(os.path.getsize(os.path.join(self.folder, name)), 10_000)

    def test_need_what_the_readme_says_where_they_do_not_fit(self):
        run = self.run_korvo("path", "table-ac", os.path.join(self.folder, "cavity.cl"),
                             "--tool-length", "70", "--frame", "0,0,-30")
        self.assertEqual(run.returncode, NO)
        self.assertIn("Move the part by Z +7.5 mm (machine axes, all axes at 0): then it fits",
                      run.stdout)
        run = self.run_korvo("path", "arm-irb2400", os.path.join(self.folder, "seam.csv"),
                             "--tool-length", "280", "--frame", "100,0,-100")
        self.assertIn("9.5 degrees more than its limits: then it fits", run.stdout)
