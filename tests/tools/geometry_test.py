"""Geometry files as their user meets them: what is in a .zrn or STL file, as text and as JSON.

Files are written by hand in the tests, and so is what must be said of them. Every JSON answer is
validated against the schema that is installed for it.
"""
import json
import math
import os
import struct
import subprocess
import tempfile
import unittest

import jsonschema
import user_locale  # fails where it is not there

KORVO = os.environ["KORVO"]
SCHEMAS = os.environ["KORVO_SCHEMAS"]
# A library that is loaded first and lets no place in a file be set.
KORVO_FAULT = os.environ["KORVO_POSITION_FAULT"]
# Without a mesher the faces of .zrn files give no triangles.
HAS_FACES = os.environ["KORVO_SOLIDRA"] != "none"
ANSWERED, USAGE, REFUSED = 0, 2, 3

# Corner by corner: a square of side 10 in the plane z = 0, its parameters 0 to 1.
SQUARE = """\
2 2 9 0.5 plate top
0 0 0 1
10 0 0 1
0 10 0 1
10 10 0 1
1 1
0 0
0 1
0 1
4
0
0
1
1
4
0
0
1
1
"""
END_TEXT = "SkipToNextEntity::end of file\n"
CORNERS = [(x, y, z) for z in (0, 1) for y in (0, 1) for x in (0, 1)]
# Two triangles a side, seen from outside counter-clockwise.
CUBE = [(0, 2, 3), (0, 3, 1), (4, 5, 7), (4, 7, 6), (0, 1, 5), (0, 5, 4),
        (2, 6, 7), (2, 7, 3), (0, 4, 6), (0, 6, 2), (1, 3, 7), (1, 7, 5)]


def schema():
    with open(os.path.join(SCHEMAS, "korvo.geometry.1.json"), encoding="utf-8") as file:
        return json.load(file)


def cube(side):
    return [[[side * c for c in CORNERS[i]] for i in triangle] for triangle in CUBE]


def ascii_stl(triangles):
    lines = ["solid part"]
    for triangle in triangles:
        lines += ["facet normal 0 0 0", "outer loop"]
        lines += ["vertex " + " ".join(map(str, corner)) for corner in triangle]
        lines += ["endloop", "endfacet"]
    return "\n".join(lines + ["endsolid part", ""])


def binary_stl(triangles):
    records = [struct.pack("<12fH", 0, 0, 0, *sum(t, []), 0) for t in triangles]
    return b"\0" * 80 + struct.pack("<I", len(records)) + b"".join(records)


class GeometryCase(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.validator = jsonschema.Draft7Validator(schema())

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def path(self, name):
        return os.path.join(self.folder, name)

    def write(self, content, name="part.zrn"):
        with open(self.path(name), "wb") as file:
            file.write(content if isinstance(content, bytes) else content.encode())
        return self.path(name)

    def run_korvo(self, *arguments, preload=None):
        env = {**os.environ, "LD_PRELOAD": preload} if preload else None
        return subprocess.run([KORVO, "geometry", *arguments], capture_output=True, text=True,
                              timeout=120, check=False, env=env)

    def text(self, content, name="part.zrn"):
        run = self.run_korvo(self.write(content, name))
        self.assertEqual(run.returncode, ANSWERED, run.stderr)
        self.assertEqual(run.stderr, "")
        return run.stdout

    def raw(self, path, exit_code=ANSWERED):
        """The JSON as text, valid."""
        run = self.run_korvo(path, "--json")
        self.assertEqual(run.returncode, exit_code, run.stderr)
        self.validator.validate(json.loads(run.stdout))
        return run.stdout

    def json(self, content, name="part.zrn"):
        return json.loads(self.raw(self.write(content, name)))

    def nodes(self, content):
        return self.json(content)["nodes"]


class GeometrySchema(GeometryCase):
    def test_the_schema_is_one(self):
        jsonschema.Draft7Validator.check_schema(schema())

    def test_it_refuses_what_is_not_of_the_shape(self):
        answer = self.json(SQUARE)
        self.assertTrue(self.validator.is_valid(answer))
        node = answer["nodes"][0]
        for fault in ({**node, "more": 1}, {**node, "kind": 7}, {**node, "value": "1"},
                      {**node, "data": {**node["data"], "poles": [[1, 2]]}}):
            self.assertFalse(self.validator.is_valid({**answer, "nodes": [fault]}), fault)


class GeometryData(GeometryCase):
    """The data of every kind, one file each."""

    def data(self, content, kind):
        (node,) = self.nodes(content)
        self.assertEqual(node["kind"], kind)
        return node["data"]

    def test_1_a_polyline_of_either_code(self):
        points = {"points": [[1, 2, 3], [4, 5, 6.5], [-7, 8, 9e3]]}
        lines = "1 2 3\n4 5 6.5\n-7 8 9e3\n"
        self.assertEqual(self.data("2 3 1\n" + lines, 1), points)
        self.assertEqual(self.data("3 0 22\n" + lines, 1), points)

    def test_2_a_uv_polyline_belongs_to_a_surface(self):
        (node,) = self.nodes(SQUARE + "3 1 2\n0.1 0.2\n0.3 0.4\n0.5 0.6\n")
        (trim,) = node["trims"]
        self.assertEqual(trim["kind"], 2)
        self.assertEqual(trim["data"], {"points2": [[0.1, 0.2], [0.3, 0.4], [0.5, 0.6]]})

    def test_3_a_polynomial_curve(self):
        self.assertEqual(self.data("2 1 4\n1 2 3\n4 5 6\n", 3), {"coeffs": [[1, 2, 3], [4, 5, 6]]})

    def test_4_a_polynomial_surface_is_a_patch(self):
        (node,) = self.nodes("1 1 8\n0\n0\n2 2 4\n1.5 0 0\n2.5 0 0\n3.5 0 0\n4.5 0 0\n")
        (patch,) = node["patches"]
        self.assertEqual((patch["kind"], patch["a"], patch["b"], patch["code"]), (4, 2, 2, 4))
        self.assertEqual(patch["data"], {"coeffs": [[1.5, 0, 0], [2.5, 0, 0], [3.5, 0, 0],
                                                    [4.5, 0, 0]]})

    def test_5_a_trimmed_polynomial_curve_whose_interval_is_not_kept(self):
        self.assertEqual(self.data("2 0 5\n0.25 0.75\n1 2 3\n4 5 6\n", 5),
                         {"interval": [0, 0], "coeffs": [[1, 2, 3], [4, 5, 6]]})

    def test_6_a_multi_patch_surface(self):
        self.assertEqual(self.data("1 1 8\n3\n0.5\n1\n1.5\n2\n-1\n-2\n", 6),
                         {"u": [0.5, 1, 1.5], "v": [-1, -2]})

    def test_7_a_nurbs_curve_in_space(self):
        curve = "2 1 9\n1 2 3 0.5\n4 5 6 1\n1 0\n0 0\n0.25 0.75\n9 9\n4\n0\n0\n1\n1\n77\n"
        self.assertEqual(self.data(curve, 7), {
            "planar": False, "poles": [[1, 2, 3], [4, 5, 6]], "weights": [0.5, 1], "degree": 1,
            "periodic": False, "interval": [0.25, 0.75], "knots": [0, 0, 1, 1]})

    def test_7_a_planar_periodic_nurbs_curve(self):
        curve = "2 1 9\n1 2 0.5\n4 5 1 8\n3 7\n1 7\n0 1\n9 9\n1\n0.5\n77\n"
        self.assertEqual(self.data(curve, 7), {
            "planar": True, "poles": [[1, 2, 0], [4, 5, 0]], "weights": [0.5, 1], "degree": 3,
            "periodic": True, "interval": [0, 1], "knots": [0.5]})

    def test_8_a_nurbs_surface(self):
        surface = ("3 2 9\n" + "".join(f"{i} 1 2 {i}.5\n" for i in range(6)) +
                   "2 1\n0 1\n0.25 0.75\n-1 3\n6\n0\n0\n0\n1\n1\n1\n4\n-1\n-1\n3\n3\n")
        self.assertEqual(self.data(surface, 8), {
            "poles": [[i, 1, 2] for i in range(6)], "weights": [0.5, 1.5, 2.5, 3.5, 4.5, 5.5],
            "degree_u": 2, "degree_v": 1, "rational_u": False, "rational_v": True,
            "interval_u": [0.25, 0.75], "interval_v": [-1, 3],
            "knots_u": [0, 0, 0, 1, 1, 1], "knots_v": [-1, -1, 3, 3]})

    def test_9_a_planar_surface(self):
        self.assertEqual(self.data("2 2 10\n0.5 -2 1e-3\n", 9), {"plane": [0.5, -2, 0.001]})

    def test_10_a_circular_arc(self):
        arc = "1 1 14\n0 3.14\n2.5\n1 2 3\n0 1 0\n-1 0 0\n0 0 1\n7 8 9\n"
        self.assertEqual(self.data(arc, 10), {
            "range": [0, 3.14], "radius": 2.5, "centre": [1, 2, 3],
            "rows": [[0, 1, 0], [-1, 0, 0], [0, 0, 1]], "translation": [7, 8, 9]})

    def test_the_keys_stand_in_one_order(self):
        (node,) = self.nodes(SQUARE)
        self.assertEqual(list(node), ["kind", "a", "b", "code", "value", "name", "attributes",
                                      "surface", "data", "trims", "patches"])
        self.assertEqual(list(node["data"]), [
            "poles", "weights", "degree_u", "degree_v", "rational_u", "rational_v", "interval_u",
            "interval_v", "knots_u", "knots_v"])
        self.assertEqual(list(self.json(SQUARE)),
                         ["code", "scale", "messages", "nodes", "triangles"])


class GeometryEntities(GeometryCase):
    """Headers, children, attributes, scale, messages."""

    def test_header_value_and_name_to_the_end_of_the_line(self):
        (node,) = self.nodes(SQUARE)
        self.assertEqual((node["a"], node["b"], node["code"]), (2, 2, 9))
        self.assertEqual(node["value"], 0.5)
        self.assertEqual(node["name"], "plate top\n")

    def test_no_name_is_null_and_no_value_is_zero(self):
        (node,) = self.nodes("2 2 10\n0 0 1\n")
        self.assertIsNone(node["name"])
        self.assertEqual(node["value"], 0)

    def test_surfaces_are_numbered_and_unread_ones_count(self):
        revolution = "0 0 11\nnothing of it is read\n"
        nodes = self.nodes("2 1 1\n0 0 .5\n2 2 10\n0 0 1\n" + revolution + "2 2 10\n0 0 2\n")
        self.assertEqual([n["surface"] for n in nodes], [-1, 0, 2])

    def test_trims_of_every_kind_of_curve_in_order(self):
        trims = ("2 2 1\n.5 0 0\n.5 1 0\n" "2 1 2\n.5 0\n.5 1\n" "2 1 4\n.5 0 0\n.5 0 0\n"
                 "2 0 5\n0 1\n.5 0 0\n.5 0 0\n"
                 "2 1 9\n.5 0 1\n.5 1 1\n1 0\n0 0\n0 1\n0 0\n0\n0\n"
                 "1 1 14\n0 1\n1\n.5 0 0\n1 0 0\n0 1 0\n0 0 1\n0 0 0\n")
        (node,) = self.nodes("2 2 10\n0 0 1\n" + trims)
        self.assertEqual([t["kind"] for t in node["trims"]], [1, 2, 3, 5, 7, 10])
        self.assertEqual({t["surface"] for t in node["trims"]}, {-1})
        self.assertEqual(node["patches"], [])

    def test_patches_come_before_trims(self):
        (node,) = self.nodes("1 2 8\n0\n0\n" + 2 * "2 2 4\n.5 0 0\n.5 0 0\n.5 0 0\n.5 0 0\n" +
                             "2 1 2\n.5 0\n.5 1\n")
        self.assertEqual([p["kind"] for p in node["patches"]], [4, 4])
        self.assertEqual([t["kind"] for t in node["trims"]], [2])

    def test_attributes_of_an_entity_with_and_without_a_name(self):
        block = "2 2 210\n<CAD_ATTR> (INT) 3, (CHAR) a\n\tmore\r\n"
        for header, name in (("2 2 10 0 wall\n", "wall\n"), ("2 2 10\n", None)):
            (node,) = self.nodes(header + "0 0 1\n" + block)
            self.assertEqual(node["name"], name)
            self.assertEqual(node["attributes"], ["<CAD_ATTR> (INT) 3, (CHAR) a\n", "\tmore\r\n"])

    def test_the_last_scale_counts_and_nothing_is_scaled_by_it(self):
        plain = self.json(SQUARE)
        scaled = self.json(SQUARE + "2 2 100\n2.5\n2 2 100\n0.1\n")
        self.assertEqual(plain["scale"], 1)
        self.assertEqual(scaled["scale"], 0.1)
        self.assertEqual(scaled["triangles"], plain["triangles"])
        self.assertEqual(scaled["nodes"], plain["nodes"])

    def test_messages_are_those_of_the_reader(self):
        self.assertEqual(self.json(SQUARE)["messages"], [])
        self.assertEqual(self.json("2 2 100\n2\n")["messages"], [END_TEXT])
        self.assertEqual(self.json("2 2 10\nnone\n")["messages"],
                         ["GetNextEntity:: could not read Planar surface", END_TEXT, END_TEXT])

    def test_what_is_no_geometry_has_no_node_and_code_0(self):
        answer = self.json("This is a text.\nOf two lines.\n")
        self.assertEqual((answer["code"], answer["nodes"]), (0, []))
        self.assertEqual(answer["triangles"]["count"], 0)


class GeometryNumbers(GeometryCase):
    """Numbers and characters of the JSON."""

    def plane(self, line):
        raw = self.raw(self.write("2 2 10\n" + line + "\n"))
        return raw[raw.index('"plane": ') + 9:].split("}")[0]

    def test_doubles_have_17_digits(self):
        self.assertEqual(self.plane("0.1 -1e300 123456789.125"),
                         "[0.10000000000000001, -1.0000000000000001e+300, 123456789.125]")

    def test_every_bit_comes_back(self):
        values = [5e-324, 1.7976931348623157e308, 2 / 3, 1 + 2 ** -52, -math.pi, 2.0 ** 70]
        lines = "".join(f"{v!r} 0 0\n" for v in values)
        (node,) = self.nodes(f"2 {len(values)} 1\n{lines}")
        self.assertEqual([p[0] for p in node["data"]["points"]], values)

    def test_what_is_not_finite_is_a_text(self):
        self.assertEqual(self.plane("nan inf -inf"), '["nan", "inf", "-inf"]')
        self.assertEqual(self.plane("-nan 1e999 -1e999"), '["nan", "inf", "-inf"]')

    def test_zero_keeps_its_sign(self):
        self.assertEqual(self.plane("-0 0 -0.0"), "[-0.0, 0, -0.0]")

    def test_value_and_scale_may_be_infinite(self):
        answer = self.json("2 2 10 inf\n0 0 1\n2 2 100\n-inf\n")
        self.assertEqual(answer["nodes"][0]["value"], "inf")
        self.assertEqual(answer["scale"], "-inf")

    def test_large_counts_and_degrees_are_whole(self):
        surface = SQUARE.replace("1 1\n0 0\n", "2147483647 -3\n0 0\n")
        (node,) = self.nodes(surface)
        self.assertEqual((node["data"]["degree_u"], node["data"]["degree_v"]), (2147483647, -3))

    def test_bytes_above_127_are_latin_1(self):
        high = bytes(range(128, 256))
        (node,) = self.nodes(b"2 2 10 0 caf\xe9\n0 0 1\n2 2 210\n" + high + b"\nt\xc3\xaate\n")
        self.assertEqual(node["name"], "caf\u00e9\n")
        self.assertEqual(node["attributes"], [high.decode("latin-1") + "\n", "t\u00c3\u00aate\n"])

    def test_the_answer_is_ascii_and_control_characters_are_escaped(self):
        line = b'"\\/\x01\x1b\x7f\x9b\t\r\n'
        raw = self.raw(self.write(b"2 2 10\n0 0 1\n2 2 210\n" + line))
        self.assertTrue(all(c == "\n" or " " <= c <= "~" for c in raw))
        self.assertEqual(json.loads(raw)["nodes"][0]["attributes"], [line.decode("latin-1")])


NO_TRIANGLES = {"count": 0, "box": None, "area": 0, "volume": 0, "open_edges": 0}


class FaceTriangles:
    """Measures of the triangles of faces."""

    def test_a_square_face(self):
        triangles = self.json(SQUARE)["triangles"]
        self.assertGreaterEqual(triangles["count"], 2)
        self.assertEqual(triangles["box"], {"min": [0, 0, 0], "max": [10, 10, 0]})
        self.assertAlmostEqual(triangles["area"], 100, places=6)
        self.assertEqual(triangles["volume"], 0)
        self.assertGreaterEqual(triangles["open_edges"], 4)

    def test_a_face_without_trims_is_open_along_its_border_alone(self):
        # No edge is longer than a fifteenth of 10: at least 15 on each side.
        self.assertGreaterEqual(self.json(SQUARE)["triangles"]["open_edges"], 60)
        self.assertLess(self.json(SQUARE)["triangles"]["open_edges"], 200)

    def test_six_faces_enclose_a_box(self):
        # Sides of 10, 20 and 30, each one corner, then a step in u, a step in v.
        steps = {"x": (10, 0, 0), "y": (0, 20, 0), "z": (0, 0, 30), "-": (0, 0, 0)}
        sides = [("-", "y", "x"), ("z", "x", "y"), ("-", "x", "z"), ("y", "z", "x"),
                 ("-", "z", "y"), ("x", "y", "z")]
        file = ""
        for corner, u, v in sides:
            poles = [[steps[corner][k] + i * steps[u][k] + j * steps[v][k] for k in range(3)]
                     for j in (0, 1) for i in (0, 1)]
            file += "2 2 9\n" + "".join("%d %d %d 1\n" % tuple(p) for p in poles)
            file += SQUARE[SQUARE.index("1 1\n0 0"):]
        triangles = self.json(file)["triangles"]
        self.assertEqual(triangles["box"], {"min": [0, 0, 0], "max": [10, 20, 30]})
        self.assertAlmostEqual(triangles["area"], 2 * (200 + 300 + 600), places=3)
        self.assertAlmostEqual(triangles["volume"], 6000, places=2)


class NoFaceTriangles:
    """What is left of them without a mesher."""

    def test_a_square_face(self):
        answer = self.json(SQUARE)
        self.assertEqual((len(answer["nodes"]), answer["triangles"]), (1, NO_TRIANGLES))


class GeometryFaces(FaceTriangles if HAS_FACES else NoFaceTriangles, GeometryCase):
    """The triangles of .zrn files."""


class GeometryTriangles(GeometryCase):
    """Measures of the triangles, of both kinds of files."""

    def test_planar_surfaces_and_curves_give_none(self):
        self.assertEqual(self.json("2 2 10\n0 0 1\n")["triangles"], NO_TRIANGLES)

    def test_a_cube_of_either_form_of_stl(self):
        wanted = {"code": 0, "triangles": {
            "count": 12, "box": {"min": [0, 0, 0], "max": [3, 3, 3]}, "area": 54, "volume": 27,
            "open_edges": 0}}
        self.assertEqual(self.json(ascii_stl(cube(3)), "cube.stl"), wanted)
        self.assertEqual(self.json(binary_stl(cube(3)), "cube.stl"), wanted)

    def test_a_cube_without_one_triangle_has_three_open_edges(self):
        for missing in range(12):
            triangles = cube(2)
            del triangles[missing]
            answer = self.json(binary_stl(triangles), "cube.stl")["triangles"]
            self.assertEqual((answer["count"], answer["area"], answer["open_edges"]), (11, 22, 3))

    def test_an_empty_solid_is_answered(self):
        self.assertEqual(self.json("solid\nendsolid\n", "part.stl"), {
            "code": 0, "triangles": NO_TRIANGLES})

    def test_the_end_of_the_name_is_taken_in_any_case(self):
        self.assertEqual(self.json(binary_stl(cube(1)), "CUBE.STL")["triangles"]["volume"], 1)
        self.assertEqual(len(self.json(SQUARE, "part.Zrn")["nodes"]), 1)

    def test_names_that_are_no_ascii(self):
        self.assertEqual(self.json(binary_stl(cube(1)), "pi\u00e8ce.stl")["code"], 0)
        self.assertEqual(self.json(SQUARE, "pi\u00e8ce.zrn")["code"], 0)


class GeometryText(GeometryCase):
    """The answer for people."""

    def test_the_tree_of_a_file_with_everything(self):
        file = ("1 1 8 0.5 shell\n1\n0.25\n0\n2 2 4\n.5 0 0\n1.5 0 0\n-2.5 0 0\n3.5 0 0\n"
                "3 1 2\n.5 0\n.5 -1.25\n.5 nan\n2 2 210\n<CAD_ATTR> (INT) 3\n"
                "2 2 10\n0.1 -0 1e999\n2 2 100\n25.4\n")
        self.assertEqual(self.text(file), f"""\
File        {self.path("part.zrn")}
Code        0
Scale       25.4 (said, not applied)
Message     SkipToNextEntity::end of file\\n
Entities    2
  entity 0: multi-patch surface (kind 6)  a 1  b 1  code 8  value 0.5  surface 0  name 'shell\\n'
    u           1
      0:  0.25
    v           0
    attribute   '<CAD_ATTR> (INT) 3\\n'
    trim 0: UV polyline (kind 2)  a 3  b 1  code 2  value 0
      points2     3
        0:    0.5      0
        1:    0.5  -1.25
        2:    0.5    nan
    patch 0: polynomial surface (kind 4)  a 2  b 2  code 4  value 0
      coeffs      4
        0:   0.5     0     0
        1:   1.5     0     0
        2:  -2.5     0     0
        3:   3.5     0     0
  entity 1: planar surface (kind 9)  a 2  b 2  code 10  value 0  surface 1
    plane       0.1  -0  inf
Triangles   0
""")

    def test_words_of_the_other_kinds(self):
        arc = "1 1 14\n0 3.5\n2.5\n1 2 3\n0 1 0\n-1 0 0\n0 0 1\n7 8 9\n"
        curve = "2 1 9\n1 2 0.5\n4 5 1\n3 7\n1 7\n.5 1\n9 9\n1\n0.5\n77\n"
        tree = self.text(arc + curve)
        for line in ("  entity 0: circular arc (kind 10)  a 1  b 1  code 14  value 0",
                     "    range       0  3.5", "    radius      2.5", "    centre      1  2  3",
                     "      1:  -1   0   0", "    translation 7  8  9",
                     "  entity 1: NURBS curve (kind 7)  a 2  b 1  code 9  value 0",
                     "    planar      yes", "    degree      3", "    interval    0.5  1",
                     "      0:  0.5    1"):
            self.assertIn(line + "\n", tree)

    def test_every_number_of_a_long_list(self):
        knots = [i / 8 for i in range(1, 1005)]
        tree = self.text("2 1 9\n.5 0 0 1\n.5 0 0 1\n1 0\n0 0\n0 1\n0 0\n%d\n%s0\n" % (
            len(knots), "".join(f"{k}\n" for k in knots)))
        rows = tree[tree.index("knots"):tree.index("Triangles")].splitlines()
        self.assertEqual(rows[0].split(), ["knots", "1004"])
        self.assertEqual(rows[-1].split(), ["1000:", "125.125", "125.25", "125.375", "125.5"])
        read = [float(word) for row in rows[1:] for word in row.split(":")[1].split()]
        self.assertEqual(read, knots)

    def test_measures_of_an_stl(self):
        self.assertEqual(self.text(binary_stl(cube(2)), "cube.stl"), f"""\
File        {self.path("cube.stl")}
Code        0
Triangles   12
Box min     0  0  0
Box max     2  2  2
Area        24
Volume      8
Open edges  0
""")

    def test_the_volume_of_what_is_open_is_a_hint(self):
        self.assertIn("Volume      0 (a hint: it is open)\nOpen edges  3\n",
                      self.text(binary_stl(cube(2)[:1]), "one.stl"))

    def test_control_characters_are_spelled_out(self):
        tree = self.text(b"2 2 10 0 t\xeate\x1b[2J\x9b\n0 0 1\n")
        self.assertIn("name 't\u00eate\\x1b[2J\\x9b\\n'\n", tree)


def read_binary_stl(path):
    with open(path, "rb") as file:
        content = file.read()
    (count,) = struct.unpack_from("<I", content, 80)
    records = [struct.unpack_from("<12fH", content, 84 + 50 * i) for i in range(count)]
    assert len(content) == 84 + 50 * count
    return [[list(r[3:6]), list(r[6:9]), list(r[9:12])] for r in records]


class GeometryOutput(GeometryCase):
    """The triangles as a file."""

    def setUp(self):
        super().setUp()
        self.output = self.path("out.stl")

    def convert(self, content, name, *arguments, exit_code=ANSWERED):
        run = self.run_korvo(self.write(content, name), "-o", self.output, *arguments)
        self.assertEqual(run.returncode, exit_code, run.stderr)
        return run

    def test_an_ascii_stl_becomes_binary(self):
        run = self.convert(ascii_stl(cube(3)), "cube.stl")
        self.assertEqual(read_binary_stl(self.output), cube(3))
        self.assertTrue(run.stdout.endswith(f"Open edges  0\nWritten     {self.output}\n"))
        self.assertEqual(run.stderr, "")

    def test_the_faces_of_a_text_file(self):
        self.convert(SQUARE, "part.zrn", exit_code=ANSWERED if HAS_FACES else REFUSED)
        if not HAS_FACES:
            return
        wanted = self.json(SQUARE)["triangles"]
        self.assertEqual(json.loads(self.raw(self.output))["triangles"], wanted)
        self.assertGreater(wanted["count"], 0)

    def test_json_is_the_same_with_a_file_written(self):
        for content, name in ((SQUARE, "part.zrn"), (ascii_stl(cube(1)), "cube.stl"))[not HAS_FACES:]:
            run = self.convert(content, name, "--json")
            self.assertEqual(run.stdout, self.raw(self.path(name)))
            self.assertTrue(os.path.exists(self.output))

    def test_no_file_where_there_is_no_triangle(self):
        for content, name in (("2 2 10\n0 0 1\n", "plane.zrn"), ("", "empty.zrn"),
                              ("solid\nendsolid\n", "none.stl"), ("text", "text.stl")):
            plain = self.run_korvo(self.write(content, name), "--json").stdout
            run = self.convert(content, name, "--json", exit_code=REFUSED)
            self.assertEqual(run.stdout, plain)
            self.assertIn(": expected ", run.stderr)
            self.assertEqual(os.listdir(self.folder).count("out.stl"), 0, name)

    def test_a_file_that_is_there_stays_where_there_is_no_triangle(self):
        self.write("before", "out.stl")
        self.convert("2 2 10\n0 0 1\n", "plane.zrn", exit_code=REFUSED)
        with open(self.output, encoding="utf-8") as file:
            self.assertEqual(file.read(), "before")

    def test_triangles_too_large_for_the_format_are_left_out_and_said(self):
        large = [[[1e300, 0, 0], [0, 1e300, 0], [0, 0, 1]]]
        run = self.convert(ascii_stl(cube(1) + large), "cube.stl")
        self.assertEqual(read_binary_stl(self.output), cube(1))
        self.assertIn("warning: left out 1 ", run.stderr)
        os.remove(self.output)
        self.convert(ascii_stl(large), "large.stl", exit_code=REFUSED)
        self.assertFalse(os.path.exists(self.output))

    def test_where_no_file_can_be_written(self):
        path = self.write(ascii_stl(cube(1)), "cube.stl")
        run = self.run_korvo(path, "-o", self.path("no/such/folder/out.stl"))
        self.assertEqual((run.returncode, run.stdout), (REFUSED, ""))
        self.assertIn("out.stl: expected ", run.stderr)

    def test_names_of_the_output(self):
        path = self.write(ascii_stl(cube(1)), "cube.stl")
        os.symlink(path, self.path("link.stl"))
        for output, wanted in (("out.obj", ".stl"), ("out", ".stl"), ("", ".stl"),
                               (path, "of its own"), (self.path("link.stl"), "of its own")):
            run = self.run_korvo(path, "-o", output)
            self.assertEqual((run.returncode, run.stdout), (USAGE, ""), output)
            self.assertIn(wanted, run.stderr)


class GeometryRefusals(GeometryCase):
    """Exit codes, and that JSON of .zrn files is there whatever the result."""

    NONE = {"count": 0, "box": None, "area": 0, "volume": 0, "open_edges": 0}

    def refused(self, path):
        run = self.run_korvo(path)
        self.assertEqual(run.returncode, REFUSED)
        self.assertTrue(run.stderr.startswith(path + ": expected "), run.stderr)
        self.assertEqual(run.stderr.count("\n"), 1)
        return run

    def test_a_missing_or_empty_file_and_a_folder(self):
        os.mkdir(self.path("folder.zrn"))
        for path in (self.path("none.zrn"), self.write(""), self.path("folder.zrn")):
            self.assertEqual(json.loads(self.raw(path, REFUSED)), {
                "code": -1, "scale": 1, "messages": ["ZRN_LoadFile:: File is empty"], "nodes": [],
                "triangles": self.NONE})
            self.assertIn("(code -1)", self.refused(path).stderr)

    def test_a_file_that_breaks_off_says_what_there_was(self):
        path = self.write("text\n0 0 0\n")
        run = self.run_korvo(path, "--json", preload=KORVO_FAULT)
        self.assertEqual(run.returncode, REFUSED)
        self.assertIn("(code 1)", run.stderr)
        answer = json.loads(run.stdout)
        self.validator.validate(answer)
        self.assertEqual(answer, {
            "code": 1, "scale": 1, "messages": ["SkipToNextEntity::fsetpos error\n", END_TEXT],
            "nodes": [], "triangles": self.NONE})

    def test_an_stl_that_does_not_load_says_its_code(self):
        short = b"\0" * 80 + struct.pack("<I", 5) + b"\0" * 20
        for path, code in ((self.path("none.stl"), -1), (self.write("text\n", "a.stl"), -3),
                           (self.write("", "b.stl"), -3), (self.write(short, "c.stl"), -4)):
            self.assertEqual(json.loads(self.raw(path, REFUSED)),
                             {"code": code, "triangles": self.NONE})
            self.assertIn(f"(code {code})", self.refused(path).stderr)

    def test_files_of_other_names_are_refused_with_the_two(self):
        for name in ("part.step", "part", ".stl", "part.zrn.txt", "a.zrn."):
            run = self.run_korvo(self.write(SQUARE, name))
            self.assertEqual((run.returncode, run.stdout), (REFUSED, ""))
            self.assertIn("expected a file whose name ends in .zrn or .stl, found ", run.stderr)

    def test_wrong_command_lines(self):
        path = self.write(SQUARE)
        for arguments in ((), (path, path), (path, "--tool", "1"), (path, "--json=1")):
            run = self.run_korvo(*arguments)
            self.assertEqual((run.returncode, run.stdout), (USAGE, ""), arguments)
            self.assertNotEqual(run.stderr, "")

    def test_a_closed_output_is_said(self):
        with open("/dev/full", "w", encoding="utf-8") as full:
            run = subprocess.run([KORVO, "geometry", self.write(SQUARE)], stdout=full, text=True,
                                 stderr=subprocess.PIPE, check=False, timeout=120)
        self.assertEqual(run.returncode, REFUSED)
        self.assertIn("full output", run.stderr)


if __name__ == "__main__":
    unittest.main()
