"""`--engine external`: the machine made into one of the external library answers alike."""
import os

from command_line_test import HAS_FACES, SCHEMAS, USAGE
from inverse_test import Examples, Inverse, InverseCommandLine
from mesh_test import Mesh

AT = {**Examples.AT, "arm-irb2400-rail": "RAIL=500,J1=10,J2=20"}
# Two rotary axes and three linear ones are what its solvers put together.
SOLVED = ("table-ac", "table-bc", "head-table", "head-cb-fork", "head-nutating", "gantry-w")
EXTERNAL = ("--engine", "external")


class External(InverseCommandLine):
    POINT = Inverse.POINT  # the trunnion reaches it at (10, 20, 30, -45, 0)

    def both(self, verb, *arguments):
        return self.json(verb, *arguments), self.json(verb, *arguments, *EXTERNAL)

    def test_forward_says_the_same_for_every_example(self):
        folder = os.path.join(os.path.dirname(SCHEMAS), "..", "examples", "machines")
        self.assertEqual({n[:-4] for n in os.listdir(folder) if n.endswith(".def")}, set(AT))
        for name, at in AT.items():
            with self.subTest(name):
                arguments = ["--tool-length", "75", "--frame", "10,20,30,0,0,90"]
                ours, theirs = self.both("forward", name, *arguments, *(["--at", at] if at else []))
                for key in ("nose", "tip", "direction"):
                    self.assert_near(theirs[key], ours[key], 1e-9)
                self.assertEqual(theirs["position"], ours["position"])
                self.assertEqual(theirs["outsideLimits"], ours["outsideLimits"])

    def test_the_tool_frame_is_the_same_for_an_upright_tool(self):
        ours, theirs = self.both("forward", self.machine, "--at", "A=-30,C=40,X=5")
        for key in ("toolFrame", "tipFrame"):
            for row, wanted in zip(theirs[key], ours[key]):
                self.assert_near(row, wanted, 1e-9)

    def test_inverse_reaches_where_forward_says_the_tool_is(self):
        for name in SOLVED:
            with self.subTest(name):
                forward = self.json("forward", name, "--at", AT[name], "--tool-length", "60")
                point, direction = (",".join(repr(x) for x in forward[key])
                                    for key in ("tip", "direction"))
                target = ["--point", point, "--dir", direction, "--tool-length", "60"]
                nearest = self.json("inverse", name, *target, "--from", AT[name], *EXTERNAL)
                self.assert_near(nearest["positions"][0]["tip"], forward["tip"], 1e-6)
                every = self.json("inverse", name, *target, "--all", *EXTERNAL)
                self.assertGreaterEqual(every["total"], 1)
                self.assertEqual(every["total"], len(every["positions"]))
                distances = [p["distance"] for p in every["positions"]]
                self.assertEqual(distances, sorted(distances))
                for found in every["positions"]:
                    self.assertLess(found["residual"]["point"], 1e-6)

    def test_all_are_as_many_as_the_library_has(self):
        # Both rotary axes limited: the trunnion reaches the direction with A = -45 alone.
        with open(self.machine, encoding="utf-8") as file:
            limited = self.write("limited.def", file.read() + "limits=C,-360,360\n")
        ours, theirs = self.both("inverse", limited, "--point", self.POINT, "--dir", "0,1,1",
                                 "--all")
        self.assertEqual(theirs["total"], ours["total"])
        for a, b in zip(theirs["positions"], ours["positions"]):
            self.assert_near([v["value"] for v in a["position"]],
                             [v["value"] for v in b["position"]], 1e-6)

    def test_max_shows_the_nearest(self):
        answer = self.json("inverse", self.machine, "--point", self.POINT, "--dir", "0,1,1",
                           "--all", "--max", "1", *EXTERNAL)
        self.assertGreater(answer["total"], 1)
        self.assertEqual(len(answer["positions"]), 1)

    def test_what_it_does_not_find_is_said(self):
        answer = self.no("mill-3axis", "--point", "0,0,0", "--dir", "0,0,1", *EXTERNAL)
        self.assertIn("the external library finds none", answer["reason"]["text"])
        text = self.run_korvo("inverse", "mill-3axis", "--point", "0,0,0", "--dir", "0,0,1",
                              *EXTERNAL)
        self.assertIn("No position: the external library finds none", text.stdout)

    def test_a_locked_axis_that_would_move_is_no_answer(self):
        self.no(self.machine, "--point", self.POINT, "--dir", "0,1,1", "--lock", "C", *EXTERNAL)
        self.no(self.machine, "--point", self.POINT, "--dir", "0,1,1", "--lock", "X", "--all",
                *EXTERNAL)

    def test_engines_answer_as_without_the_option(self):
        for engine, *arguments in (
                ("library", "forward", self.machine, "--at", "A=-30"),
                ("solver", "inverse", self.machine, "--point", self.POINT, "--dir", "0,1,1")):
            self.assertEqual(self.answer(*arguments, "--engine", engine), self.answer(*arguments))
            self.assertRegex(self.answer(arguments[0], "--help"),
                             rf"--engine TEXT\s+What computes: {engine}, [^\[]*\[{engine}\]")

    def test_words_and_combinations_are_checked(self):
        for word in ("other", "definition", "Library", ""):
            for verb, words in (("forward", ""), ("inverse", "solver or ")):
                self.assert_fails(USAGE, f"expected {words}library or external after --engine, "
                                  f"found '{word}'", verb, self.machine, "--engine", word)
        self.assert_fails(USAGE, "--engine external with one position", "forward", self.machine,
                          "--elements", *EXTERNAL)
        self.assert_fails(USAGE, "--engine external with one position", "forward", self.machine,
                          "--positions", "-", *EXTERNAL)
        self.assert_fails(USAGE, "--engine external with one target", "inverse", self.machine,
                          "--targets", "-", *EXTERNAL)


class ExternalMesh(Mesh):
    """All that `mesh` does, by the other engine."""

    def run_korvo(self, *arguments, **more):
        engine = EXTERNAL if arguments[0] == "mesh" and "--engine" not in arguments else ()
        return super().run_korvo(*arguments, *engine, **more)

    def test_says_the_same_for_every_example_with_bodies(self):
        for name in ("table-ac", "mill-3axis", "head-cb-fork", "arm-irb2400", "arm-irb2400-rail"):
            with self.subTest(name):
                self.machine = name
                at = ("--at", AT[name])
                theirs = self.mesh("a.stl", *at)
                ours = self.mesh("b.stl", *at, "--engine", "library")
                self.assertGreater(len(ours["bodies"]), 5 if HAS_FACES else 3)
                for a, b in zip(theirs["bodies"], ours["bodies"], strict=True):
                    for end in ("min", "max"):
                        self.assert_near(a["box"].pop(end), b["box"].pop(end), 1e-9)
                    self.assertEqual(a, b)
                self.assertEqual(len(self.read("a.stl")), len(self.read("b.stl")))

    def test_words_are_checked(self):
        self.assert_fails(USAGE, "expected library or external after --engine, found 'own'",
                          "mesh", self.machine, "-o", self.path("a.stl"), "--engine", "own")
