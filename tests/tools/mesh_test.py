"""`korvo mesh`."""
import json
import os
import struct
import subprocess

from command_line_test import HAS_FACES, REFUSED, TABLE_AC, TWO_TOOLS, USAGE, CommandLine

GLTF_TESTS = os.environ["KORVO_GLTF_TESTS"]  # validate.cjs
GLTF_MODULE = os.environ["KORVO_GLTF_MODULE"]  # where scripts/install-deps puts the validator

BED, TABLE, TOOL = "$ZRN_MACHINE_DEF/bed.stl", "$ZRN_MACHINE_DEF/t.STL", "$ZRN_MACHINE_DEF/tool.stl"
BODIES = (TABLE_AC.replace("frame=z", f"frame=z,{BED},90,110,140")
          .replace("C,z,0,0,0,0,0", f"C,z,0,0,0,0,0,{TABLE}")
          .replace("tool=z,0,0,150", f"tool=z,0,0,150,{TOOL},220,60,40"))


def box(low, high):
    """The twelve triangles of a box."""
    corners = [tuple((low, high)[i >> k & 1][k] for k in range(3)) for i in range(8)]
    faces = ((0, 4, 6, 2), (1, 3, 7, 5), (0, 1, 5, 4), (2, 6, 7, 3), (0, 2, 3, 1), (4, 5, 7, 6))
    return [tuple(corners[i] for i in t) for a, b, c, d in faces for t in ((a, b, c), (a, c, d))]


def stl(triangles):
    data = b"x" * 80 + struct.pack("<I", len(triangles))
    for t in triangles:
        data += struct.pack("<12fH", 0, 0, 0, *(x for p in t for x in p), 0)
    return data


class Mesh(CommandLine):
    def setUp(self):
        super().setUp()
        self.write("bed.stl", stl(box((-300, -200, -100), (300, 200, -50))))
        self.write("t.STL", stl(box((-100, -50, -40), (100, 50, 0))))
        self.write("tool.stl", stl(box((-5, -5, 150), (5, 5, 250))))
        self.machine = self.write("ac.def", BODIES)

    def path(self, name):
        return os.path.join(self.folder, name)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def mesh(self, name, *arguments):
        return self.json("mesh", self.machine, "-o", self.path(name), *arguments)

    def test_names_the_axes_outside_their_limits(self):
        self.write("limited.def", BODIES + "limits=X,-100,100\n")
        for at, outside in (("X=100", []), ("X=100.5", ["X"])):
            arguments = ["mesh", self.path("limited.def"), "-o", self.path("l.stl"), "--at", at]
            self.assertEqual(self.json(*arguments)["outsideLimits"], outside)
            self.assertEqual("Outside limits: X" in self.answer(*arguments), bool(outside))

    # X carries Y, Z and the tool, nothing else.
    def test_writes_the_placed_bodies_and_says_what_they_are(self):
        answer = self.mesh("a.stl", "--at", "X=10")
        self.assertEqual([(b["rank"], b["name"], b["rgb"], b["triangles"]) for b in answer["bodies"]],
                         [(0, "BATI", [90, 110, 140], 12), (2, "C", [200, 200, 200], 12),
                          (7, "tool 1", [220, 60, 40], 12)])
        self.assert_near(answer["bodies"][2]["box"]["min"], [5, -5, 150])
        self.assert_near(answer["bodies"][2]["box"]["max"], [15, 5, 250])
        self.assert_near(answer["box"]["min"], [-300, -200, -100])
        self.assert_near(answer["box"]["max"], [300, 200, 250])
        self.assertEqual((answer["triangles"], answer["leftOut"], answer["withoutBody"]), (36, 0, []))
        self.assertEqual(answer["output"], self.path("a.stl"))
        data = self.read("a.stl")
        self.assertEqual(len(data), 84 + 36 * 50)
        self.assertEqual(struct.unpack("<I", data[80:84]), (36,))
        corners = [struct.unpack("<9f", data[84 + 50 * i + 12:84 + 50 * i + 48]) for i in range(36)]
        self.assertEqual(max(x for c in corners[24:] for x in c[0::3]), 15)

    # A turns the tool by 90 degrees about the line z = 50 along X, seen from the part: what is above
    # A comes from (y, z) to (50 - z, 50 + y), and C with its table stays.
    def test_the_part_stands_still_and_table_axes_move_the_rest(self):
        boxes = [b["box"] for b in self.mesh("a.stl", "--at", "A=90")["bodies"]]
        for box, low, high in zip(boxes, ([-300, 100, -150], [-100, -50, -40], [-5, -200, 45]),
                                  ([300, 150, 250], [100, 50, 0], [5, -100, 55]), strict=True):
            self.assert_near(box["min"], low)
            self.assert_near(box["max"], high)

    # Part zero at (10, 20, 30), its X along the machine's Y: (x, y, z) is (y - 20, 10 - x, z - 30).
    def test_files_and_boxes_are_in_part_zero(self):
        frame = ("--frame", "10,20,30,0,0,90")
        for name in ("a.stl", "a.obj", "a.glb"):
            bed = self.mesh(name, *frame)["bodies"][0]["box"]
            self.assert_near(bed["min"], [-220, -290, -130])
            self.assert_near(bed["max"], [180, 310, -80])
        self.mesh("a.stl", *frame)
        data = self.read("a.stl")
        corners = [struct.unpack("<9f", data[84 + 50 * i + 12:84 + 50 * i + 48]) for i in range(12)]
        self.assertAlmostEqual(min(x for c in corners for x in c[1::3]), -290, delta=1e-4)
        self.assertAlmostEqual(max(x for c in corners for x in c[1::3]), 310, delta=1e-4)

    def test_part_zero_plays_no_part_in_a_picture(self):
        size = ("--size", "320x200", "--at", "A=-20")
        self.mesh("a.png", *size)
        self.mesh("b.png", *size, "--frame", "16,-32,64")
        self.assertEqual(self.read("a.png"), self.read("b.png"))

    def test_a_gun_slides_by_its_length(self):
        machine = self.write("gun.def", TWO_TOOLS.replace(",nowhere.stl", "")
                             .replace("gun=z,40,0,80", f"gun=z,40,0,80,{TOOL}"))
        for length, low in ((0, 150), (15, 165)):
            arguments = ["--tool", "2", "--tool-length", str(length), "--at", "W=7"]
            body = self.json("mesh", machine, "-o", self.path("a.stl"), *arguments)["bodies"][0]
            self.assert_near(body["box"]["min"], [-5, -5, low + 7])
            self.assert_near(body["box"]["max"], [5, 5, low + 107])

    def test_the_text_has_a_line_for_each_body_and_the_total(self):
        path = self.path("a.obj")
        text = self.answer("mesh", self.machine, "--at", "Z=-20", "-o", path)
        self.assertIn("\nPosition   X=0 Y=0 Z=-20 A=0 C=0\n", text)
        self.assertIn("\n  C  12 triangles, X -100 to 100, Y -50 to 50, Z -40 to 0\n", text)
        self.assertIn("\n  tool 1  12 triangles, X -5 to 5, Y -5 to 5, Z 130 to 230\n", text)
        self.assertIn("\nTotal      36 triangles, X -300 to 300, Y -200 to 200, Z -100 to 230\n", text)
        self.assertTrue(text.endswith(f"\nWritten    {path}\n"), text)

    def test_writes_each_kind_whatever_the_case_of_its_end(self):
        for name, beginning in (("a.STL", b"Binary STL"), ("b.obj", b"# mm"), ("c.Glb", b"glTF"),
                                ("d.png", b"\x89PNG\r\n\x1a\n")):
            self.mesh(name)
            self.assertTrue(self.read(name).startswith(beginning), name)
        self.assertIn(b"mtllib b.mtl\n", self.read("b.obj"))
        self.assertIn(b"newmtl tool_1\nKd 0.862745098 ", self.read("b.mtl"))

    def test_pictures_have_the_size_asked_for_and_show_where_axes_stand(self):
        sizes = ((), ("--size", "320x200"), ("--size", "320x200", "--at", "A=-20"),
                 ("--size", "320x200", "--at", "X=0"))
        pictures = []
        for arguments in sizes:
            self.mesh("a.png", *arguments)
            pictures.append(self.read("a.png"))
        size = [struct.unpack(">II", p[16:24]) for p in pictures]
        self.assertEqual(size, [(1200, 900), (320, 200), (320, 200), (320, 200)])
        self.assertNotEqual(pictures[1], pictures[2])
        self.assertEqual(pictures[1], pictures[3])

    def glb(self, name):
        data = self.read(name)
        length = struct.unpack("<I", data[12:16])[0]
        return json.loads(data[20:20 + length])

    def test_glb_passes_the_khronos_validator(self):
        self.mesh("zero.glb")
        self.mesh("turned.glb", "--at", "X=12.5,A=-33.3,C=200")
        names = [n["name"] for n in self.glb("turned.glb")["nodes"]]
        self.assertEqual(names, ["machine", "BATI", "C", "tool 1"])
        self.assert_valid("zero.glb", "turned.glb")

    def assert_valid(self, *names):
        run = subprocess.run(["node", os.path.join(GLTF_TESTS, "validate.cjs"), GLTF_MODULE,
                              *map(self.path, names)], capture_output=True, text=True, check=False)
        self.assertEqual(run.returncode, 0,
                         run.stdout + run.stderr + "Is it there? scripts/install-deps test")
        self.assertEqual(run.stdout.count("0 errors, 0 warnings"), len(names), run.stdout)

    # So that the silence of the test above says something.
    def test_the_validator_finds_what_is_wrong(self):
        self.mesh("a.glb")
        data = self.read("a.glb").replace(b'"max":[300.0', b'"max":[301.0')
        self.assertNotEqual(data, self.read("a.glb"))
        self.write("a.glb", data)
        with self.assertRaisesRegex(AssertionError, "ACCESSOR_MAX_MISMATCH"):
            self.assert_valid("a.glb")

    def test_curved_bodies_are_meshed(self):
        # A square 10 x 10 of degree 1 in both directions, without trimming curves.
        self.write("face.zrn", "2 2 9\n" + "0 0 0 1\n10 0 0 1\n0 10 0 1\n10 10 0 1\n" +
                   "1 1\n0 0\n0 1\n0 1\n4\n0\n0\n1\n1\n4\n0\n0\n1\n1\n")
        self.machine = self.write("z.def", BODIES + "geom=$ZRN_MACHINE_DEF/face.zrn\n")
        answer = self.mesh("a.glb")
        body = answer["bodies"][-1]
        self.assertEqual(body["name"], "GEOM" if HAS_FACES else "tool 1")
        self.assertEqual([(w["element"], w["found"]) for w in answer["withoutBody"]],
                         [] if HAS_FACES else [("GEOM", True)])
        if not HAS_FACES:
            return
        self.assertGreaterEqual(body["triangles"], 2)
        self.assert_near(body["box"]["min"], [0, 0, 0])
        self.assert_near(body["box"]["max"], [10, 10, 0])
        self.assert_valid("a.glb")

    def test_a_body_that_is_not_there_is_a_warning_said_once(self):
        self.machine = self.write("m.def", BODIES + "geom=$ZRN_MACHINE_DEF/nowhere-like-it.stl\n")
        run = self.run_korvo("mesh", self.machine, "-o", self.path("a.stl"))
        self.assertEqual(run.returncode, 0)
        self.assertEqual(run.stderr.count("nowhere-like-it.stl"), 1, run.stderr)
        self.assertIn("m.def: warning: expected a body of GEOM, found no readable file", run.stderr)
        answer = self.mesh("a.stl")
        self.assertEqual([(w["element"], w["found"]) for w in answer["withoutBody"]], [("GEOM", False)])

    # What the check says already is not said again; without the check it is.
    def test_what_the_check_has_said_is_not_said_again(self):
        self.write("empty.stl", "")
        machine = self.write("m.def", BODIES + "geom=$ZRN_MACHINE_DEF/empty.stl\n")
        for option, said in ((), "empty.stl"), (("--no-check",), "found no triangles in"):
            run = self.run_korvo("mesh", machine, "-o", self.path("a.stl"), *option)
            self.assertEqual(run.stderr.count("empty.stl"), 1, run.stderr)
            self.assertIn(said, run.stderr)

    def test_triangles_that_are_no_numbers_are_left_out_and_told(self):
        self.write("s.stl", b"solid\n" + b"".join(
            b"facet normal 0 0 0 outer loop vertex 0 0 0 vertex %s 0 0 vertex 0 1 0 endloop endfacet "
            % x for x in (b"1", b"1e200")) + b"endsolid\n")
        machine = self.write("s.def", TABLE_AC + "geom=$ZRN_MACHINE_DEF/s.stl\n")
        run = self.run_korvo("mesh", machine, "-o", self.path("a.stl"), "--json")
        self.assertIn("left out 1 triangle with a corner", run.stderr)
        self.assertEqual(json.loads(run.stdout)["leftOut"], 1)
        self.assertEqual(len(self.read("a.stl")), 84 + 50)

    def test_a_machine_without_bodies_is_refused_with_what_to_do(self):
        output = self.path("a.stl")
        plain = self.write("plain.def", TABLE_AC)
        self.assert_fails(REFUSED, "expected bodies, found none: no element names a geometry file. "
                          "Write one at the end of an element's line: geom=$ZRN_MACHINE_DEF/head.stl",
                          "mesh", plain, "-o", output)
        missing = self.write("missing.def", TABLE_AC + "geom=$ZRN_MACHINE_DEF/no-such.stl\n")
        self.assert_fails(REFUSED, "no geometry file that its elements name gives triangles",
                          "mesh", missing, "-o", output)
        self.assertFalse(os.path.exists(output))

    def test_what_is_no_question_is_a_usage_error(self):
        out = ["-o", self.path("a.png")]
        for arguments, message in (
                ([], "--output is required"),
                (["-o", "a.step"], "expected a file that ends in .stl, .glb, .obj or .png after -o, "
                                   "found 'a.step'"),
                (["-o", "stl"], "found 'stl'"), (["-o", ""], "found ''"),
                ([*out, "--at", "Q=1"], "in --at, found 'Q'"),
                (["-o", "a.stl", "--size", "10x10"], "expected --size with a .png file"),
                ([*out, "--size", "10"], "found '10'"), ([*out, "--size", "0x10"], "found '0x10'"),
                ([*out, "--size", "10x8193"], "from 1 to 8192"),
                ([*out, "--size", "10x10x10"], "expected WIDTHxHEIGHT")):
            self.assert_fails(USAGE, message, "mesh", self.machine, *arguments)

    def test_never_writes_over_what_is_read(self):
        before = self.read("bed.stl")
        self.assert_fails(USAGE, "expected a file of its own after -o", "mesh", self.machine, "-o",
                          self.path("bed.stl"))
        self.assertEqual(self.read("bed.stl"), before)
        machine = self.write("machine.obj", BODIES)
        self.assert_fails(USAGE, "which is read", "mesh", machine, "-o", machine)

    def test_what_cannot_be_written_is_refused_and_nothing_is_left(self):
        os.mkdir(self.path("folder.stl"))
        self.assert_fails(REFUSED, "folder.stl: expected a file, found something else of that name",
                          "mesh", self.machine, "-o", self.path("folder.stl"))
        self.assert_fails(REFUSED, "expected a folder to write it into, found none of that name",
                          "mesh", self.machine, "-o", self.path("no/such/a.stl"))
        self.assertEqual(sorted(os.listdir(self.folder)),
                         ["ac.def", "bed.stl", "folder.stl", "t.STL", "tool.stl"])

    def test_names_of_any_letters_are_written(self):
        name = "B\u00e4r \u673a.png"
        self.assertEqual(self.mesh(name, "--size", "20x20")["output"], self.path(name))
        self.assertTrue(self.read(name).startswith(b"\x89PNG"))
