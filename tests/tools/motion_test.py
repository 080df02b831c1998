"""`korvo limits`, `interpolate` and `translate`."""
import json
import math

from command_line_test import ANSWERED, NO, REFUSED, USAGE, CommandLine, validate


class Limits(CommandLine):
    def test_inside_is_a_yes_with_margins(self):
        answer = self.json("limits", self.machine, "--at", "A=-20,C=1e6")
        self.assertTrue(answer["inside"])
        self.assertEqual(answer["outsideLimits"], [])
        margins = {m["axis"]: (m["toMin"], m["toMax"]) for m in answer["margins"]}
        self.assertEqual(margins["A"], (100, 50))
        self.assertEqual(margins["C"], (None, None))

    def test_on_a_limit_is_inside_and_beyond_is_a_no(self):
        for value, code, side in (("-120", ANSWERED, "inside"), ("30", ANSWERED, "inside"),
                                  ("30.001", NO, "ABOVE"), ("-121", NO, "BELOW")):
            run = self.run_korvo("limits", self.machine, "--at", "A=" + value)
            self.assertEqual(run.returncode, code)
            self.assertIn(f"  {side}", run.stdout)
            self.assertEqual("Outside limits: A" in run.stdout, code == NO)
            run = self.run_korvo("limits", self.machine, "--at", "A=" + value, "--json")
            self.assertEqual(run.returncode, code)
            validate(json.loads(run.stdout))

    def test_tables_name_the_axes_outside_and_the_narrowest_margin(self):
        path = self.write("p.csv", "A,C\n-20,0\n31,0\nx,0\n")
        run = self.run_korvo("limits", self.machine, "--positions", path)
        self.assertEqual(run.returncode, NO)
        self.assertEqual(run.stdout.splitlines(), [
            "line,status,outside_limits,axis,margin", "2,ok,,A,50", "3,outside,A,A,-1", "4,bad,,,"])
        self.assertIn(f"{path}:3: outside limits: A", run.stderr)
        run = self.run_korvo("limits", self.machine, "--positions", path, "--json")
        rows = [json.loads(line) for line in run.stdout.splitlines()]
        for row in rows:
            validate(row)
        self.assertEqual([r["status"] for r in rows], ["ok", "outside", "bad"])
        run = self.run_korvo("limits", self.machine, "--positions", path, "--strict", "--stats")
        self.assertEqual((run.returncode, len(run.stdout.splitlines())), (REFUSED, 3))
        self.assertIn("1 of 2 positions answered", run.stderr)

    # Columns that `inverse --targets` writes are passed over, a stray one may be a misspelt axis.
    def test_columns_of_inverse_are_passed_over_and_others_refused(self):
        written = self.write("w.csv", "line,status,A,C,point_error,direction_error,outside_limits,"
                             "reason,by\n2,ok,-20,0,0,0,,,\n")
        self.assertIn("2,ok,,A,50", self.answer("limits", self.machine, "--positions", written))
        other = self.write("o.csv", "A,speed\n-20,100\n")
        for verb in ("limits", "forward"):
            self.assert_fails(REFUSED, "found 'speed'", verb, self.machine, "--positions", other)

    def test_what_is_no_question_is_a_usage_error(self):
        for arguments, message in (
                (["--at", "Q=1"], "in --at, found 'Q'"),
                (["--at", "A=1", "--positions", "x"], "expected --at or --positions, found both"),
                (["--positions", ""], "expected a file or - after --positions"),
                (["--strict"], "expected --strict with --positions"),
                (["--stats"], "expected --stats with --positions")):
            self.assert_fails(USAGE, message, "limits", self.machine, *arguments)


class Interpolate(CommandLine):
    # C turns from 350 to 10 the short way: by 370 in the library's numbers.
    def test_rotary_axes_turn_the_short_way(self):
        answer = self.json("interpolate", self.machine, "--from", "C=350", "--to", "C=10",
                           "--steps", "2", "--raw")
        self.assert_near([s["position"][4]["value"] for s in answer["steps"]], [350, 360, 370])
        self.assertTrue(answer["raw"])

    # The tip 50 outside the middle of the table on the arc of a quarter turn: half way it stands
    # 50 from the middle, the chord 50 cos 45.
    def test_raw_leaves_the_line_and_the_correction_brings_it_back(self):
        move = ("interpolate", self.machine, "--from", "X=50", "--to", "X=50,C=90", "--steps", "2")
        raw = self.json(*move, "--raw")
        self.assertAlmostEqual(raw["steps"][1]["deviation"], 50 - 50 * math.sqrt(0.5), delta=1e-9)
        self.assertEqual(raw["largestDeviation"], raw["steps"][1]["deviation"])
        corrected = self.json(*move)
        self.assertLess(corrected["largestDeviation"], 1e-9)
        self.assert_near(corrected["steps"][1]["tip"], [25, 25, 150])
        self.assertEqual([s["t"] for s in corrected["steps"]], [0, 0.5, 1])

    # Half a turn and more goes one turn less, and no further turn.
    def test_one_turn_at_most_is_taken_off(self):
        for to, end in ((180, 180), (181, -179), (540, 180), (900, 540), (-900, -540)):
            answer = self.json("interpolate", self.machine, "--from", "C=0", "--to", f"C={to}",
                               "--steps", "1", "--raw")
            self.assertEqual(answer["steps"][1]["position"][4]["value"], end)

    def test_the_text_says_what_was_done_to_the_tip(self):
        steps = ("--steps", "1")
        for arguments, said in (
                ((self.machine, "--from", "X=50", "--to", "C=90"),
                 "\nThe tip brought towards the straight line by one linear step\n"),
                ((self.machine, "--from", "X=50", "--to", "C=90", "--raw"),
                 "\nEvery axis for itself\n"),
                ((self.machine, "--from", "X=50", "--to", "C=90", "--lock", "X"),
                 "takes three free linear axes, and there are 2\n"),
                (("arm-puma560", "--from", "J1=0", "--to", "J1=9"),
                 "takes three free linear axes, and there are 0\n")):
            self.assertIn(said, self.answer("interpolate", *arguments, *steps))

    def test_locked_axes_go_their_way_too(self):
        answer = self.json("interpolate", self.machine, "--from", "C=0", "--to", "C=90", "--steps",
                           "1", "--lock", "C")
        self.assertEqual(answer["steps"][1]["position"][4]["value"], 90)
        text = self.answer("interpolate", "--help")
        self.assertIn("--lock keeps", text)

    # With X locked two linear axes are left, and no correction is made.
    def test_without_three_free_linear_axes_nothing_is_corrected(self):
        move = ("interpolate", self.machine, "--from", "X=50", "--to", "X=50,C=90", "--steps", "2")
        locked = self.json(*move, "--lock", "X")
        self.assertAlmostEqual(locked["largestDeviation"], 50 - 50 * math.sqrt(0.5), delta=1e-9)

    def test_positions_outside_their_limits_are_named(self):
        text = self.answer("interpolate", self.machine, "--from", "A=0", "--to", "A=40", "--steps",
                           "1")
        self.assertIn("outside limits: A\n", text)
        self.assertIn("Largest deviation ", text)

    def test_what_is_no_question_is_a_usage_error(self):
        ends = ["--from", "X=1", "--to", "X=2"]
        for arguments, message in (
                ([*ends, "--steps", "0"], "expected a number of steps from 1 to 1000000"),
                ([*ends, "--steps", "1.5"], "found '1.5'"),
                ([*ends, "--steps", "1000001"], "found '1000001'"),
                (["--from", "Q=1", "--to", "X=2", "--steps", "1"], "in --from, found 'Q'"),
                (["--from", "X=1", "--to", "Q=2", "--steps", "1"], "in --to, found 'Q'"),
                (ends, "--steps is required"), (["--to", "X=1", "--steps", "2"], "--from")):
            self.assert_fails(USAGE, message, "interpolate", self.machine, *arguments)


class Translate(CommandLine):
    # With the table at C = 90 the head's X lies along the part's Y.
    def test_gives_increments_and_the_position_reached(self):
        answer = self.json("translate", self.machine, "--at", "X=5,C=90", "--by", "0,10,0")
        self.assertEqual(answer["status"], "reached")
        self.assert_near([v["value"] for v in answer["increments"]], [10, 0, 0, 0, 0])
        self.assert_near([v["value"] for v in answer["reached"]["position"]], [15, 0, 0, 0, 90])
        self.assert_near(answer["reached"]["tip"], [0, 15, 150])

    # At A = -30 the shift lies in the plane of Y and Z.
    def test_a_locked_axis_that_need_not_move_is_no_matter(self):
        answer = self.json("translate", "table-ac", "--at", "A=-30", "--by", "0,0,5", "--lock", "X")
        x, y, z = (v["value"] for v in answer["increments"][:3])
        self.assertEqual(x, 0)
        self.assertAlmostEqual(math.hypot(y, z), 5, delta=1e-9)

    def test_shifts_are_given_in_part_zero(self):
        answer = self.json("translate", self.machine, "--by", "10,0,0", "--frame", "0,0,0,0,0,90")
        self.assert_near([v["value"] for v in answer["increments"]], [0, 10, 0, 0, 0])

    def test_a_mill_without_rotary_axes_moves_its_linear_axes(self):
        answer = self.json("translate", "mill-3axis", "--at", "Z=100", "--by", "1,2,3")
        self.assert_near([v["value"] for v in answer["increments"]], [1, 2, 3])
        self.assertTrue(answer["reached"]["linearOnly"])

    def test_what_cannot_be_shifted_is_a_no_with_the_reason(self):
        for arguments, code in ((["mill-3axis", "--at", "Z=500", "--by", "0,0,9"],
                                 "outside-limits"),
                                (["mill-3axis", "--lock", "X", "--at", "Z=100", "--by", "1,0,0"],
                                 "linear-axes")):
            run = self.run_korvo("translate", *arguments, "--json")
            self.assertEqual(run.returncode, NO)
            answer = json.loads(run.stdout)
            validate(answer)
            self.assertEqual(answer["reason"]["code"], code)
            self.assertIsNone(answer["increments"])
            run = self.run_korvo("translate", *arguments)
            self.assertIn("No position: ", run.stdout)

    def test_what_is_no_question_is_a_usage_error(self):
        for arguments, message in ((["--by", "1,2"], "expected dx,dy,dz (mm) after --by"),
                                   (["--by", "1,2,3", "--at", "Q=1"], "in --at, found 'Q'"),
                                   ([], "--by is required")):
            self.assert_fails(USAGE, message, "translate", self.machine, *arguments)
