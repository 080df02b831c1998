"""`korvo inverse`: one target, all positions, tables of targets."""
import csv
import io
import json
import math
import os
import pty
import subprocess

from command_line_test import (ANSWERED, KORVO, NO, REFUSED, SCHEMAS, USAGE, CommandLine,
                               validate)

HALF = math.sqrt(0.5)

# The trunnion of the other tests (its cradle turns about the line z = 50) with travels.
LIMITS = "limits=X,-300,300\nlimits=Z,-100,400\n"

# Three joints for the shoulder, one for the elbow, three for the wrist.
SEVEN_JOINTS = "frame\npart=x,y,0,0,0\nlien=BATI\n" + "".join(
    f"rotation=J{k},{k},{d},0,0,0,0,{z}\n" for k, d, z in (
        (1, "+z", 0), (2, "+y", 340), (3, "+z", 340), (4, "-y", 740), (5, "+z", 740),
        (6, "+y", 1140), (7, "+z", 1140))) + "tool=-z,0,0,1266\n" + "".join(
            f"limits=J{k},-{170 if k % 2 else 120},{170 if k % 2 else 120}\n" for k in range(1, 8))


class InverseCommandLine(CommandLine):
    def setUp(self):
        super().setUp()
        with open(self.machine, encoding="utf-8") as file:
            self.machine = self.write("acl.def", file.read() + LIMITS)

    def no(self, *arguments):
        run = self.run_korvo("inverse", *arguments, "--json")
        self.assertEqual(run.returncode, NO, run.stderr)
        answer = json.loads(run.stdout)
        validate(answer)
        self.assertEqual(answer["positions"], [])
        self.assertNotEqual(answer["status"], "reached")
        return answer

    def values(self, found):
        return {v["axis"]: v["value"] for v in found["position"]}


class Inverse(InverseCommandLine):
    # With A = -45 the point (10, 20, 180), 20 and 130 beside the cradle's line, comes to
    # y = 20 cos A - 130 sin A, z = 50 + 20 sin A + 130 cos A.
    POINT = f"10,{150 * HALF},{50 + 110 * HALF}"

    def test_gives_the_position_with_residual_margins_and_singularity(self):
        answer = self.json("inverse", self.machine, "--point", self.POINT, "--dir", "0,2,2")
        self.assertEqual((answer["status"], answer["total"], answer["reason"]),
                         ("reached", None, None))
        found = answer["positions"][0]
        self.assert_near([v["value"] for v in found["position"]], [10, 20, 30, -45, 0])
        self.assert_near(found["direction"], [0, HALF, HALF])
        self.assert_near(answer["direction"], [0, HALF, HALF])
        self.assertLess(found["residual"]["point"], 1e-6)
        self.assertLess(found["residual"]["direction"], 1e-8)
        margins = {m["axis"]: (m["toMin"], m["toMax"]) for m in found["margins"]}
        self.assert_near(margins["X"], (310, 290))
        self.assertEqual(margins["C"], (None, None))
        self.assertEqual(found["singularity"]["axes"], ["C", "A"])
        self.assertAlmostEqual(found["singularity"]["angle"], 45, delta=1e-9)
        self.assertFalse(found["linearOnly"])
        self.assertEqual((found["solver"]["kind"], found["solver"]["freeAxes"]), ("two-rotary", []))
        self.assertIn(found["solver"]["branch"], ("+", "-"))
        self.assertAlmostEqual(found["solver"]["singular"]["direction"], 45, delta=1e-9)
        self.assertIsNone(found["solver"]["singular"]["elbow"])
        self.assertAlmostEqual(found["distance"], 10 + 20 + 30 + 45, delta=1e-9)

    def test_text_reads_as_numbers_of_a_person(self):
        text = self.answer("inverse", self.machine, "--point", self.POINT, "--dir", "0,1,1")
        for part in ("Position   X=10 Y=20 Z=30 A=-45 C=0\n", "Residual   point ",
                     "Singular   45 degrees from the nearest direction where C and A lose",
                     "  inside  X=10  310 to the minimum, 290 to the maximum (mm)\n",
                     "  inside  C=0  no limits\n"):
            self.assertIn(part, text)

    def test_forward_gives_the_target_back(self):
        found = self.json("inverse", self.machine, "--point", "-30,60,150", "--dir",
                          "0.3,-0.2,0.8", "--tool-length", "35", "--frame",
                          "5,6,7,10,20,30")["positions"][0]
        at = ",".join(f"{axis}={value!r}" for axis, value in self.values(found).items())
        forward = self.json("forward", self.machine, "--at", at, "--tool-length", "35", "--frame",
                            "5,6,7,10,20,30")
        self.assert_near(forward["tip"], [-30, 60, 150])
        length = math.sqrt(0.09 + 0.04 + 0.64)
        self.assert_near(forward["direction"], [0.3 / length, -0.2 / length, 0.8 / length])

    def test_from_picks_the_turn(self):
        found = self.json("inverse", self.machine, "--point", self.POINT, "--dir", "0,1,1",
                          "--from", "C=700,A=-30")["positions"][0]
        self.assertAlmostEqual(self.values(found)["C"], 720, delta=1e-9)

    def test_directions_that_no_axis_reaches_say_by_how_much(self):
        reason = self.no("mill-4axis", "--point", "0,100,300", "--dir", "0,1,0")["reason"]
        self.assertEqual((reason["code"], reason["unit"]), ("outside-cone", "degree"))
        self.assertAlmostEqual(reason["by"], 90, delta=1e-9)
        run = self.run_korvo("inverse", "mill-4axis", "--point", "0,100,300", "--dir", "0,1,0")
        self.assertEqual(run.returncode, NO)
        self.assertIn("No position: the direction lies 90 degrees beside the cone that the tool "
                      "describes about B\n", run.stdout)

    def test_axes_outside_their_limits_are_named_with_the_amount(self):
        answer = self.no("mill-3axis", "--point", "400,0,200", "--dir", "0,0,1")
        self.assertEqual(answer["status"], "outside-limits")
        self.assertEqual(answer["reason"]["outside"], [{"axis": "X", "by": 19}])
        self.assertEqual(answer["reason"]["text"], "outside the limits: X above by 19 mm")
        self.assertEqual(self.values(answer["best"])["X"], 400)

    # Upright C is free: turned by a quarter it would bring the point from X = 310 to Y; as little
    # as leads inside puts X on its limit.
    def test_a_free_axis_is_turned_where_that_leads_inside(self):
        arguments = ("inverse", self.machine, "--point", "310,0,200", "--dir", "0,0,1")
        found = self.json(*arguments)["positions"][0]
        values = self.values(found)
        beside = math.sqrt(310 * 310 - 300 * 300)
        self.assert_near([abs(values[axis]) for axis in "XYC"],
                         [300, beside, math.degrees(math.acos(300 / 310))])
        self.assertEqual(found["solver"]["freeAxes"], ["C"])
        self.assertIn("Family     C free: the member nearest to the start\n",
                      self.answer(*arguments))

    def test_a_mill_without_rotary_axes_is_answered_by_its_linear_axes(self):
        found = self.json("inverse", "mill-3axis", "--point", "1,2,200", "--dir",
                          "0,0,1")["positions"][0]
        self.assertTrue(found["linearOnly"])
        self.assertIsNone(found["singularity"])
        text = self.answer("inverse", "mill-3axis", "--point", "1,2,200", "--dir", "0,0,1")
        self.assertIn("by the linear axes alone: no rotary axis is free", text)
        reason = self.no("mill-3axis", "--point", "1,2,200", "--dir", "0,1,0")["reason"]
        self.assertEqual((reason["code"], reason["by"]), ("no-rotary-axis", 90))

    def test_arms_say_what_the_library_cannot_do(self):
        arguments = ("arm-irb2400-rail", "--point", "800,0,1200", "--dir", "0,0,1")
        reason = self.no(*arguments, "--engine", "library")["reason"]
        self.assertEqual(reason["code"], "missed")
        self.assertEqual(reason["conditions"][0], "an axis stands before J1, the first joint")
        reason = self.no(*arguments, "--engine", "library", "--lang", "fr")["reason"]
        self.assertEqual(reason["conditions"][0], "un axe précède J1, la première articulation")
        self.assertLess(self.json("inverse", *arguments)["positions"][0]["residual"]["point"], 1e-9)

    # Stretched, the wrist centre runs on a circle about the first axis.
    def test_arms_say_by_how_much_they_are_too_short(self):
        answer = self.no("arm-puma560", "--point", "2000,0,671.83", "--dir", "0,0,-1")
        reason = answer["reason"]
        reach = math.hypot(431.8 + math.hypot(20.3, 431.8), 150.05)
        self.assertEqual((reason["code"], reason["unit"]), ("out-of-reach", "mm"))
        self.assertAlmostEqual(reason["by"], 2000 - reach, delta=1e-6)
        self.assert_near(reason["nearestTip"], [reach, 0, 671.83], 1e-6)
        self.assert_near(answer["best"]["tip"], reason["nearestTip"], 1e-6)

    def test_arms_say_branch_elbow_and_shoulder(self):
        text = self.answer("inverse", "arm-puma560", "--point", "500,-150,900", "--dir",
                           "0.3,0.2,-1", "--all", "--max", "1")
        self.assertRegex(text, r"Branch     shoulder[+-] elbow[+-] wrist[+-]\n")
        self.assertRegex(text, r"Elbow      [0-9.]+ degrees from straight or folded\n")
        self.assertRegex(text, r"Shoulder   wrist centre [0-9.]+ mm from where its two sides meet")

    def test_reasons_speak_french(self):
        run = self.run_korvo("inverse", "mill-4axis", "--point", "0,100,300", "--dir", "0,1,0",
                             "--lang", "fr")
        self.assertEqual(run.returncode, NO)
        self.assertIn("Aucune position : la direction est à 90 degrés du cône que l'outil décrit "
                      "autour de B\n", run.stdout)
        self.assertIn("Proche     direction 0,0,1\n", run.stdout)
        self.assert_fails(USAGE, "expected en or fr after --lang, found 'de'", "inverse",
                          "mill-4axis", "--point", "0,1,0", "--dir", "0,1,0", "--lang", "de")

    def test_all_of_the_text_is_french(self):
        text = self.answer("inverse", self.machine, "--point", self.POINT, "--dir", "0,1,1",
                           "--lang", "fr")
        for part in ("Réglages   format 2 ; outil 1, longueur 0 mm ; zéro pièce 0,0,0,0,0,0 ; ",
                     "bloqués : aucun\n", "Cible      pointe 10  ", "Départ     X=0 Y=0",
                     "\nPointe     10  ", "Résidu     point ", "degrés\n",
                     "Singulier  à 45 degrés de la direction la plus proche où C et A perdent un "
                     "degré de liberté\n", "Marges\n",
                     "  dedans  X=10  310 jusqu'au minimum, 290 jusqu'au maximum (mm)\n",
                     "  dedans  C=0  sans limites\n"):
            self.assertIn(part, text)
        text = self.answer("inverse", "arm-puma560", "--point", "500,-150,900", "--dir",
                           "0.3,0.2,-1", "--all", "--max", "1", "--lang", "fr")
        for part in ("Trouvé     ", "Numéro 1, distance du départ ", "Branche    épaule", " coude",
                     " poignet", "Famille    J6 libre", "Coude      à ", "Épaule     centre du"):
            self.assertIn(part, text)

    # 1e-7 rad beside the only direction there is: what a program leaves that writes few digits.
    def test_what_misses_by_rounding_is_said_to(self):
        arguments = ("mill-3axis", "--point", "0,0,200", "--dir")
        run = self.run_korvo("inverse", *arguments, "0,1e-7,1")
        self.assertEqual(run.returncode, NO)
        self.assertIn("; that is rounding, --dir 0,0,1 is reached\n", run.stdout)
        reason = self.no(*arguments, "0,1e-7,1", "--lang", "fr")["reason"]
        self.assertTrue(reason["text"].endswith(" ; ce n'est qu'un arrondi, --dir 0,0,1 est "
                                                "atteinte"))
        self.assertAlmostEqual(reason["by"], math.degrees(1e-7), delta=1e-12)
        self.assertNotIn("rounding", self.run_korvo("inverse", *arguments, "0,1e-5,1").stdout)
        # X beyond its limit of 381: the direction is not all that misses
        self.assertNotIn("rounding", self.run_korvo("inverse", "mill-3axis", "--point",
                                                    "400,0,200", "--dir", "0,1e-7,1").stdout)

    def test_the_direction_that_rounding_missed_is_reached_as_it_is_said(self):
        arguments = ("mill-3axis", "--point", "10,20,200", "--frame", "0,0,0,31,17,5", "--dir")
        nearest = self.no(*arguments, "0,0,1")["reason"]["nearestDirection"]
        beside = ",".join(f"{x:.6f}" for x in nearest)
        text = self.run_korvo("inverse", *arguments, beside).stdout
        said = text.split("rounding, --dir ")[1].split(" is reached")[0]
        found = self.json("inverse", *arguments, said)["positions"][0]
        self.assertLess(found["residual"]["direction"], 1e-9)

    def test_numbers_for_people_have_no_exponent(self):
        text = self.answer("inverse", self.machine, "--point", self.POINT, "--dir", "0,1,1",
                           "--from", "C=36000000")
        self.assertIn(" C=36000000\n", text)
        answer = text.replace(self.machine, "")  # its folder's name is drawn, and may hold "3e4"
        self.assertNotRegex(answer, r"[0-9]e[+-]?[0-9]")

    def test_directions_of_any_length_are_taken(self):
        for direction in ("0,1e300,1e300", "0,1e-300,1e-300"):
            found = self.json("inverse", self.machine, "--point", self.POINT, "--dir",
                              direction)["positions"][0]
            self.assertAlmostEqual(self.values(found)["A"], -45, delta=1e-9)

    # Part zero is turned by 90 degrees about X: what is nearest is said in it.
    def test_what_is_nearest_is_in_part_zero(self):
        reason = self.no("mill-3axis", "--point", "0,0,0", "--dir", "0,0,1", "--frame",
                         "1,2,3,90,0,0")["reason"]
        self.assertEqual((reason["code"], reason["by"]), ("no-rotary-axis", 90))
        self.assert_near(reason["nearestDirection"], [0, 1, 0])

    def test_a_locked_axis_is_told_where_it_would_have_to_stand(self):
        reason = self.no("mill-3axis", "--lock", "X", "--from", "X=4", "--point", "14,0,200",
                         "--dir", "0,0,1")["reason"]
        self.assertEqual((reason["code"], reason["by"], reason["unit"]), ("locked-axis", 10, "mm"))
        self.assertEqual(reason["wanted"], [{"axis": "X", "value": 14}])
        self.assertEqual(reason["axes"], ["X"])

    def test_an_axis_that_a_target_leaves_free_is_held_or_sampled(self):
        arguments = ("inverse", "gantry-w", "--point", "100,50,-300", "--dir", "0,0,1")
        held = self.values(self.json(*arguments, "--hold", "W=-120")["positions"][0])
        self.assert_near([held["W"], held["Z"]], [-120, -180])
        # W from -1500 to 0 by 100: Z = -300 - W is inside its travel from -1250 to 0 at four
        sampled = self.json(*arguments, "--sample", "W=16", "--all", "--max", "100")["positions"]
        self.assert_near(sorted({self.values(found)["W"] for found in sampled}),
                         [-300, -200, -100, 0])
        for option, message in (
                (("--hold", "W"), "expected AXIS=NUMBER after --hold, found 'W'"),
                (("--hold", "Q=1"), "expected axes among X, Y, Z, A, C, W after --hold, found"),
                (("--hold", "W=x"), "expected a finite decimal number in --hold, found 'x'"),
                (("--sample", "W=1"), "expected a number from 2 to 10000 in --sample, found '1'"),
                (("--hold", "W=1", "--lock", "W"), "expected axes that are not locked after --hold"),
                (("--hold", "W=1", "--engine", "library"),
                 "expected --hold and --sample with --engine solver")):
            with self.subTest(option):
                self.assert_fails(USAGE, message, *arguments, *option)
        self.assert_fails(USAGE, "expected axes with both limits after --sample, found 'C'",
                          "inverse", self.machine, "--point", "0,0,200", "--dir", "0,0,1",
                          "--sample", "C=3")

    # A target of three linear and two rotary axes determines every one of them.
    def test_an_axis_that_a_target_determines_is_held_and_not_sampled(self):
        arguments = ("inverse", "table-ac", "--point", "10,20,150", "--dir", "0,1,2")
        self.assert_fails(USAGE, "expected axes that a target leaves free after --sample, found A",
                          *arguments, "--sample", "A=4")
        self.assert_fails(USAGE, "expected --hold or --sample of an axis, found both of 'W'",
                          "inverse", "gantry-w", "--point", "100,50,-300", "--dir", "0,0,1",
                          "--hold", "W=-200", "--sample", "W=3")
        reason = self.no("mill-3axis", "--hold", "X=12", "--point", "10,20,150", "--dir",
                         "0,0,1")["reason"]
        self.assertEqual((reason["code"], reason["by"], reason["unit"]), ("held-axis", 2, "mm"))
        self.assertEqual(reason["wanted"], [{"axis": "X", "value": 10}])

    # From the start the arm does not reach so far along the rail; a hair nearer to it neither.
    def test_a_rail_that_cannot_stay_is_said(self):
        arguments = ("inverse", "arm-irb2400-rail", "--point", "1000,2000,1400", "--dir", "-1,0,0")
        found = self.json(*arguments)["positions"][0]
        rail = self.values(found)["RAIL"]
        self.assertGreater(rail, 0)
        self.assertEqual(found["solver"]["moved"], [{"axis": "RAIL", "value": rail}])
        self.assertEqual(self.run_korvo(*arguments, "--hold", f"RAIL={rail + 1e-6}").returncode,
                         ANSWERED)
        self.assertEqual(self.run_korvo(*arguments, "--hold", f"RAIL={rail - 1e-3}").returncode, 1)
        self.assertIn(f"Moved      RAIL to {rail:.6f}"[:20], self.run_korvo(*arguments).stdout)

    def test_the_best_found_says_what_of_it_is_outside(self):
        run = self.run_korvo("inverse", "mill-4axis", "--point", "10,20,150", "--dir", "0,1,0")
        self.assertIn("Outside    ", run.stdout)

    def test_the_strategy_plays_no_part_in_the_solver_of_all(self):
        run = self.run_korvo("inverse", self.machine, "--point", "0,0,200", "--dir", "0,0,1",
                             "--strategy", "1")
        self.assertEqual(run.returncode, ANSWERED)
        self.assertIn("korvo: warning: --strategy plays no part in 'inverse' without --engine "
                      "library\n", run.stderr)

    def test_locked_axes_stay_at_the_start(self):
        answer = self.json("inverse", "gantry-w", "--lock", "W", "--from", "W=-50", "--point",
                           "100,0,-400", "--dir", "1,0,1")
        self.assertEqual(self.values(answer["positions"][0])["W"], -50)
        self.assertEqual(answer["settings"]["locked"], ["W"])

    # 20 degrees towards +X: C = 90 and A = -20, or C = -90 and A = 20; both turn C as much.
    def test_the_strategy_chooses_the_branch(self):
        turns = {}
        for strategy in ("1", "2"):
            found = self.json("inverse", self.machine, "--point", "0,0,200", "--dir",
                              "0.05,-0.3,1", "--from", "C=150,A=-25", "--strategy",
                              strategy, "--engine", "library")["positions"][0]
            turns[strategy] = self.values(found)
        self.assertLessEqual(abs(turns["1"]["C"] - 150), abs(turns["2"]["C"] - 150))
        self.assertLessEqual(abs(turns["2"]["A"] + 25), abs(turns["1"]["A"] + 25))

    def test_trace_shows_the_library_at_work(self):
        run = self.run_korvo("inverse", "arm-puma560", "--point", "452.1,-150.05,1103.63", "--dir",
                             "0,0,-1", "--trace", "-", "--engine", "library")
        self.assertEqual(run.returncode, ANSWERED)
        self.assertIn("--solveConfig1", run.stderr)

    def test_what_is_no_question_is_a_usage_error(self):
        one = ["--point", "0,0,0", "--dir", "0,0,1"]
        table = self.write("t.csv", "x,y,z,i,j,k\n0,0,150,0,0,1\n")
        for arguments, message in (
                ([], "expected --point x,y,z and --dir i,j,k, or --targets FILE, found neither"),
                (one[:2], "found no --dir"), (one[2:], "found no --point"),
                (["--point", "1,2", *one[2:]], "expected x,y,z (mm) after --point, found '1,2'"),
                (["--point", "1,2,x", *one[2:]], "found '1,2,x'"),
                ([*one[:2], "--dir", "0,0,0"], "expected i,j,k, not all 0, after --dir"),
                ([*one[:2], "--dir", "0,nan,0"], "found '0,nan,0'"),
                ([*one, "--from", "Q=1"], "expected axes among X, Y, Z, A, C in --from"),
                ([*one, "--max", "3"], "expected --max with --all, found it alone"),
                ([*one, "--all", "--max", "0"], "expected a number from 1 up after --max"),
                ([*one, "--strict"], "expected --strict with --targets"),
                ([*one, "--stats"], "expected --stats with --targets"),
                ([*one, "--targets", table], "expected --targets, or --point and --dir, found both"),
                (["--targets", ""], "expected a file or - after --targets")):
            with self.subTest(arguments):
                self.assert_fails(USAGE, message, "inverse", self.machine, *arguments)


    def test_an_arm_is_asked_its_own_zero_pose(self):
        answer = self.json("inverse", "arm-irb2400", "--point", "940,0,1455", "--dir", "-1,0,0")
        self.assert_near([v["value"] for v in answer["positions"][0]["position"]], [0] * 6, 1e-6)

    def test_arms_reach_with_a_tool_length(self):
        for name, point, direction in (("arm-irb2400", "855,100,1300", "0,0,1"),
                                       ("arm-puma560", "500,100,700", "1,0,-1")):
            found = self.json("inverse", name, "--point", point, "--dir", direction,
                              "--tool-length", "100")["positions"][0]
            self.assertLess(found["residual"]["point"], 1e-6)

    def test_a_lathe_is_told_what_its_linear_axes_miss(self):
        lathe = self.write("lathe.def", "frame\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\n"
                           "lien=BATI\naxis=Z,3,z\naxis=X,1,x\ntool=x,100,0,50\n")
        reason = self.no(lathe, "--point", "60,10,20", "--dir", "1,0,0")["reason"]
        self.assertEqual((reason["code"], reason["unit"]), ("linear-axes", "mm"))
        self.assertAlmostEqual(reason["by"], 10, delta=1e-9)
        self.assert_near(reason["nearestTip"], [60, 0, 20])
        reason = self.no(lathe, "--point", "60,10,20", "--dir", "1,0,0", "--engine",
                         "library")["reason"]
        self.assertEqual((reason["code"], reason["unit"]), ("no-solver", "mm"))
        self.assertIn("no solver for such a machine", reason["text"])

    def test_a_locked_linear_axis_need_not_move(self):
        found = self.json("inverse", "mill-3axis", "--point", "10,20,150", "--dir", "0,0,1",
                          "--lock", "X", "--from", "X=10")["positions"][0]
        self.assert_near([v["value"] for v in found["position"]], [10, 20, 40])


class All(InverseCommandLine):
    # C has no limits: its turns within one of the start; the library adds those about zero.
    def test_a_start_turns_away_is_answered_nearby(self):
        for engine, wanted in (("solver", [1080, 720]), ("library", [1080, 720, 360, 0, -360])):
            answer = self.json("inverse", self.machine, "--point", Inverse.POINT, "--dir", "0,1,1",
                               "--from", "C=1000", "--all", "--engine", engine)
            turns = [self.values(found)["C"] for found in answer["positions"]]
            self.assert_near(turns, wanted, 1e-6)

    # C = 0 and its turns; A = 45 is outside.
    def test_lists_all_positions_nearest_first(self):
        answer = self.json("inverse", self.machine, "--point", Inverse.POINT, "--dir", "0,1,1",
                           "--from", "C=350", "--all")
        self.assertEqual(answer["total"], 2)
        turns = [self.values(found)["C"] for found in answer["positions"]]
        self.assert_near(turns, [360, 0])
        distances = [found["distance"] for found in answer["positions"]]
        self.assert_near(distances, [10 + 20 + 30 + 45 + d for d in (10, 350)])

    # Two shoulders, elbows and wrists, each once where every joint has one turn.
    def test_lists_the_branches_of_an_arm(self):
        path = os.path.join(os.path.dirname(SCHEMAS), "..", "examples", "machines",
                            "arm-puma560.def")
        with open(path, encoding="utf-8") as file:
            lines = [line for line in file if not line.startswith("limits")]
        arm = self.write("arm.def", "".join(lines) +
                         "".join(f"limits=J{k},-180,180\n" for k in range(1, 7)))
        answer = self.json("inverse", arm, "--point", "500,-150,900", "--dir", "0.3,0.2,-1",
                           "--all")
        self.assertEqual(answer["total"], 8)
        branches = {found["solver"]["branch"] for found in answer["positions"]}
        self.assertEqual(branches, {f"shoulder{s} elbow{e} wrist{w}"
                                    for s in "+-" for e in "+-" for w in "+-"})
        for found in answer["positions"]:
            self.assertLess(found["residual"]["point"], 1e-9)
            self.assertEqual(found["solver"]["freeAxes"], ["J6"])

    # A is 75 from both its limits, Z 130 from its minimum.
    def test_a_list_says_the_least_margin_of_each(self):
        text = self.answer("inverse", self.machine, "--point", Inverse.POINT, "--dir", "0,1,1",
                           "--all")
        self.assertRegex(text, r"Margin     A 75 degrees to the m(in|ax)imum, the least\n")
        self.assertNotIn("Margins", text)

    def test_max_shortens_the_list_and_says_the_total(self):
        arguments = ("inverse", self.machine, "--point", Inverse.POINT, "--dir", "0,1,1", "--all",
                     "--max", "2")
        answer = self.json(*arguments)
        self.assertEqual((answer["total"], len(answer["positions"])), (3, 2))
        self.assertIn("Found      3 positions, the nearest 2 shown\n", self.answer(*arguments))

    def test_no_position_gives_the_reason_here_too(self):
        answer = self.no("mill-3axis", "--point", "0,0,2000", "--dir", "0,0,1", "--all")
        self.assertEqual((answer["total"], answer["reason"]["code"]), (0, "outside-limits"))

    def test_too_many_starts_are_refused_with_their_number(self):
        axes = "".join(f"rotation={n},{k + 4},{d}\n"
                       for k, (n, d) in enumerate(zip("ABCDEFG", "xyzxyzx")))
        machine = self.write("seven.def", "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\n"
                             f"axis=Y,2,y\naxis=Z,3,z\n{axes}tool=z,0,0,0\n")
        run = self.run_korvo("inverse", machine, "--point", "1,2,3", "--dir", "0,1,1", "--all",
                             "--json", "--engine", "library")
        self.assertEqual(run.returncode, ANSWERED)
        self.assertIn(f"expected up to 1000000 starts for the list of all positions, found {9**7}",
                      run.stderr)
        answer = json.loads(run.stdout)
        validate(answer)
        self.assertEqual(len(answer["positions"]), 1)


class Targets(InverseCommandLine):
    LIBRARY = "line,status,X,Y,Z,A,C,point_error,direction_error,outside_limits,reason,by"
    HEAD = LIBRARY + ",branch,free_axes,margin,margin_axis,singular"

    def rows(self, table, *options, code=ANSWERED):
        self.path = self.write("targets.csv", table)
        run = self.run_korvo("inverse", self.machine, "--targets", self.path, *options)
        self.assertEqual(run.returncode, code, run.stderr)
        self.stderr = run.stderr
        return run.stdout.splitlines()

    def test_one_row_out_for_each_row_in(self):
        rows = self.rows("x,y,z,i,j,k\n10,20,180,0,0,1\n")
        self.assertEqual(rows[0], self.HEAD)
        self.assertEqual(rows[1], "2,ok,10,20,30,0,0,0,0,,,,0,C,30,A,0")
        library = self.rows("x,y,z,i,j,k\n10,20,180,0,0,1\n", "--engine", "library")
        self.assertEqual(library, [self.LIBRARY, "2,ok,10,20,30,0,0,0,0,,,"])

    def test_rows_without_a_branch_name_none(self):
        table = self.write("t.csv", "x,y,z,i,j,k\n0,0,200,0,0,1\n")
        row = self.answer("inverse", "mill-3axis", "--targets", table).splitlines()[1]
        self.assertEqual(row.split(",")[11], "")

    # The tool 45 degrees from C, X 290 from its limit, A -45 75 from both its limits: Z is 130 from
    # its minimum.
    def test_rows_say_branch_margin_and_singular_distance(self):
        rows = self.rows(f"x,y,z,i,j,k\n{Inverse.POINT},0,1,1\n")
        cells = dict(zip(rows[0].split(","), rows[1].split(",")))
        self.assertIn(cells["branch"], ("+", "-"))
        self.assertEqual((cells["free_axes"], cells["margin_axis"]), ("", "A"))
        self.assertAlmostEqual(float(cells["margin"]), 75, delta=1e-9)
        self.assertAlmostEqual(float(cells["singular"]), 45, delta=1e-9)

    # With A to either side both branches, each with two turns of C at a start between them; at a
    # start right on one of them that one has a turn to either side.
    def test_all_gives_a_row_for_each_position(self):
        table = "x,y,z,i,j,k\n0,0,200,0,0.3,1\n0,0,x,0,0,1\n310,0,200,0,1,1\n0,0,210,0,0.3,1\n"
        rows = self.rows(table, "--all", "--from", "C=90", code=NO)
        cells = [r.split(",") for r in rows[1:]]
        self.assertEqual([c[0] for c in cells], ["2"] * 4 + ["3", "4"] + ["5"] * 5)
        self.assertEqual([c[1] for c in cells],
                         ["ok"] * 4 + ["bad", "outside-limits"] + ["ok"] * 5)
        self.assertEqual(len({c[12] for c in cells[:4]}), 2)
        short = self.rows(table, "--all", "--max", "1", "--from", "C=90", code=NO)
        self.assertEqual([r.split(",")[0] for r in short[1:]], ["2", "3", "4", "5"])
        lines = [json.loads(r) for r in self.rows(table, "--all", "--json", "--from", "C=90",
                                                  code=NO)]
        for line in lines:
            validate(line)
        self.assertEqual([line["line"] for line in lines], [int(c[0]) for c in cells])

    def test_forward_inverse_forward_gives_the_same_points(self):
        positions = "X,Y,Z,A,C\n" + "".join(
            f"{i % 7 - 3},{i % 5},{i % 11},{-5 - i % 60},{i * 3 % 300}\n" for i in range(500))
        table = self.write("positions.csv", positions)
        forward = self.answer("forward", self.machine, "--positions", table)
        inverse = "\n".join(self.rows(forward)) + "\n"
        back = self.write("back.csv", inverse)
        again = self.answer("forward", self.machine, "--positions", back)
        first, second = (list(csv.DictReader(io.StringIO(t))) for t in (forward, again))
        self.assertEqual(len(first), 500)
        for a, b in zip(first, second):
            for name in ("line", "status"):
                self.assertEqual(a[name], b[name])
            for name in ("tip_x", "tip_y", "tip_z", "i", "j", "k"):
                self.assertAlmostEqual(float(a[name]), float(b[name]), delta=1e-9)

    # A turn further row by row: each is solved from where the row before ended.
    def test_each_row_starts_where_the_one_before_ended(self):
        table = "tip_x;tip_y;tip_z;i;j;k\n"
        for heading in range(0, 1080, 30):
            h = math.radians(heading)
            table += f"0;0;200;{0.3 * math.cos(h)!r};{0.3 * math.sin(h)!r};1\n"
        rows = self.rows(table, "--from", "A=-15,C=-90")
        turns = [float(r.split(";")[6]) for r in rows[1:]]
        self.assert_near(turns, [heading - 90 for heading in range(0, 1080, 30)], 1e-8)

    def test_rows_without_a_position_say_why_and_the_run_goes_on(self):
        rows = self.rows("x,y,z,i,j,k\n310,0,200,0,1,1\n0,0,200,0,0,0\n0,0,x,0,0,1\n"
                         "0,0,200,0,0,1\n", code=NO)
        cells = [r.split(",") for r in rows[1:]]
        self.assertEqual([c[1] for c in cells], ["outside-limits", "bad", "bad", "ok"])
        self.assertEqual(cells[0][9:11], ["X", "outside-limits"])
        self.assertAlmostEqual(float(cells[0][11]), 10, delta=1e-9)
        self.assertEqual(rows[2], "3,bad" + "," * 15)
        self.assertEqual(rows[3], "4,bad" + "," * 15)
        said = self.stderr.splitlines()
        self.assertEqual(said[0], f"{self.path}:2: outside the limits: X above by 10 mm")
        self.assertIn(":3: expected i, j, k, not all 0, found 0, 0, 0", said[1])
        self.assertIn(":4: expected a finite decimal number, found 'x'", said[2])

    def test_strict_stops_at_the_first_row_without_a_position(self):
        rows = self.rows("x,y,z,i,j,k\n0,0,200,0,0,1\n310,0,200,0,1,1\n0,0,200,0,0,1\n",
                         "--strict", code=REFUSED)
        self.assertEqual([r.split(",")[1] for r in rows[1:]], ["ok", "outside-limits"])

    def test_json_lines_are_valid_one_by_one(self):
        rows = [json.loads(r) for r in self.rows(
            "x,y,z,i,j,k\n10,20,180,0,0,1\n310,0,200,0,1,1\nx,0,0,0,0,1\n", "--json", code=NO)]
        for row in rows:
            validate(row)
        self.assertEqual([v["value"] for v in rows[0]["position"]], [10, 20, 30, 0, 0])
        self.assertEqual(rows[1]["reason"]["outside"][0]["axis"], "X")
        self.assertEqual([r["status"] for r in rows], ["ok", "outside-limits", "bad"])

    def test_frame_and_tool_length_apply_to_every_row(self):
        rows = self.rows("x,y,z,i,j,k\n9,18,177,0,0,1\n", "--frame", "1,2,3", "--tool-length",
                         "20")
        self.assertEqual(rows[1].split(",")[2:7], ["10", "20", "50", "0", "0"])

    def test_headers_without_a_target_are_refused(self):
        for header, found in (("x,y,z,i,j", "no k"), ("X,Y,Z,i,j,J", "no k"), ("X,Y,Z,I,J,K,TIP_X", "'TIP_X' again"),
                              ("x,y,z,i,j,k,tip_x", "'tip_x' again"), ("1,2,3", "no tip_x")):
            path = self.write("h.csv", header + "\n")
            self.assert_fails(REFUSED, f"{path}:1: expected a header with tip_x, tip_y, tip_z (or "
                              f"x, y, z), i, j, k, each once, found {found}", "inverse",
                              self.machine, "--targets", path)

    def test_other_columns_are_passed_over(self):
        rows = self.rows('name,x,y,z,i,j,k,feed\n"a, b",10,20,180,0,0,1,F100\n,1,2,180,0,0,1,\n')
        self.assertEqual([r.split(",")[1] for r in rows[1:]], ["ok", "ok"])

    def test_columns_are_known_in_any_case(self):
        rows = self.rows("X,Y,Z,I,J,K\n10,20,180,0,0,1\n")
        self.assertEqual(rows[1].split(",")[2:7], ["10", "20", "30", "0", "0"])
        # beside a point with its own names X, Y, Z are those of the axes
        rows = self.rows("X,Y,Z,tip_x,tip_y,tip_z,I,J,K\n1,2,3,10,20,180,0,0,1\n")
        self.assertEqual(rows[1].split(",")[2:7], ["10", "20", "30", "0", "0"])

    def test_a_shortened_list_is_said(self):
        table = "x,y,z,i,j,k\n0,0,200,0,0.3,1\n0,0,210,0,0.3,1\n"
        self.rows(table, "--all", "--max", "1", "--from", "C=90")
        self.assertEqual(self.stderr.splitlines(), [
            f"{self.path}: targets with more than 1 positions, of which the nearest 1 are written "
            "(--max): 2"])
        self.rows(table, "--all", "--from", "C=90")
        self.assertEqual(self.stderr, "")

    def test_french_is_spoken_of_every_row(self):
        self.rows("x,y,z,i,j,k\n0,0,x,0,0,1\n0,0,,0,0,1\n0,0,1\n310,0,200,0,1,1\n" +
                  "0,0,2000,0,0,1\n" * 19, "--lang", "fr", "--stats", code=NO)
        said = self.stderr.splitlines()
        self.assertEqual(said[:4], [
            f"{self.path}:2: nombre décimal fini attendu, trouvé : 'x'",
            f"{self.path}:3: nombre attendu, trouvé : rien",
            f"{self.path}:4: 6 valeurs attendues, trouvé : 3",
            f"{self.path}:5: hors des courses : X dépasse de 10 mm son maximum"])
        self.assertEqual(said[20], f"{self.path} : encore 3 lignes sans réponse")
        self.assertRegex(said[-1], r"^cibles avec réponse : 0 sur 23 ; calcul \S+ s, 0 cibles/s ; "
                                   r"en tout \S+ s$")
        self.assert_fails(REFUSED, ":1: en-tête attendu avec tip_x", "inverse", self.machine,
                          "--targets", self.write("h.csv", "x,y\n"), "--lang", "fr")

    # A row takes a good part of a second: what is answered is seen while the rest is not yet.
    def test_slow_rows_are_written_as_they_come(self):
        arm = self.write("seven.def", SEVEN_JOINTS)
        table = self.write("slow.csv", "x,y,z,i,j,k\n" + "400,200,700,0,0,1\n" * 300)
        with subprocess.Popen([KORVO, "inverse", arm, "--targets", table, "--sample", "J1=2000"],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as child:
            seen = b""
            while seen.count(b"\n") < 2:
                seen += os.read(child.stdout.fileno(), 65536)
            self.assertIsNone(child.poll())
            child.kill()

    # The whole table is one block of the file: the bar counts the rows that were taken of it.
    def test_a_bar_shows_how_far_slow_rows_are(self):
        arm = self.write("seven.def", SEVEN_JOINTS)
        table = self.write("slow.csv", "x,y,z,i,j,k\n" + "400,200,700,0,0,1\n" * 300)
        ours, theirs = pty.openpty()
        with open(os.devnull, "wb") as null:
            child = subprocess.Popen([KORVO, "inverse", arm, "--targets", table, "--sample",
                                      "J1=2000"], stdout=null, stderr=theirs)
        os.close(theirs)
        seen = b""
        while b"%" not in seen:
            seen += os.read(ours, 65536)
        child.kill()
        child.wait()
        os.close(ours)
        self.assertRegex(seen.decode(), r"\[#*\.+\] +\d+ %")

    # Each far from the one before: the machine's own way from there leads outside the limits.
    def test_rows_of_the_library_are_looked_up_in_its_list(self):
        poses = "J1,J2,J3,J4,J5,J6\n" + "".join(
            f"{170 * s},{-20 * s},{20 - 30 * s},{150 * s},{60 * s},{-200 * s}\n"
            for s in (1, -1, 0.5, -0.9, 0.8, -0.4, 1, -0.7))
        targets = self.write("arm.csv", self.answer("forward", "arm-irb2400", "--positions",
                                                    self.write("poses.csv", poses)))
        rows = self.answer("inverse", "arm-irb2400", "--targets", targets, "--engine", "library")
        self.assertEqual([r.split(",")[1] for r in rows.splitlines()], ["status"] + ["ok"] * 8)

    def test_standard_input_is_a_table_too(self):
        run = self.run_korvo("inverse", self.machine, "--targets", "-",
                             stdin="x,y,z,i,j,k\n10,20,180,0,0,1\n")
        self.assertIn("2,ok,10,20,30,0,0,", run.stdout)

    def test_stats_say_how_fast(self):
        self.rows("x,y,z,i,j,k\n10,20,180,0,0,1\n", "--stats")
        self.assertRegex(self.stderr, r"1 of 1 targets answered; query loop \S+ s, \d+ targets/s")


class Examples(InverseCommandLine):
    """Every example machine answers what it can reach, by its own forward answer."""

    AT = {"mill-3axis": "Z=100", "mill-4axis": "B=30,Y=10", "table-ac": "A=-20,C=30,Z=50",
          "table-bc": "B=-20,C=30,Z=50", "head-table": "B=20,C=30", "head-cb-fork": "C=20,B=30",
          "head-nutating": "B=60,C=20,Z=300", "gantry-w": "X=100,C=20,A=30,Z=-300",
          "drill-head": "", "arm-puma560": "J1=10,J2=20,J3=-30,J4=10,J5=40",
          "arm-irb2400": "J1=10,J2=20,J3=-30,J4=10,J5=40",
          "arm-irb2400-rail": "RAIL=1000,J1=10,J2=20,J3=-30,J4=10,J5=40"}

    def test_reaches_where_forward_says_the_tool_is(self):
        folder = os.path.join(os.path.dirname(SCHEMAS), "..", "examples", "machines")
        names = {n[:-4] for n in os.listdir(folder) if n.endswith(".def")}
        self.assertEqual(names, set(self.AT))
        for name, at in self.AT.items():
            with self.subTest(name):
                forward = self.json("forward", name, *(["--at", at] if at else []))
                start = ["--from", at] if at else []
                point, direction = (",".join(repr(x) for x in forward[key])
                                    for key in ("tip", "direction"))
                answer = self.json("inverse", name, "--point", point, "--dir", direction, *start)
                found = answer["positions"][0]
                self.assertLess(found["residual"]["point"], 1e-6)
                self.assert_near(found["tip"], forward["tip"], 1e-6)
