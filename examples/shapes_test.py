"""Shapes against closed forms: volumes, closed surfaces, outlines, the two file formats."""

import math
import struct
import unittest

from shapes import (Prism, Turned, X_AXES, Y_AXES, Z_AXES, area_of, ascii_stl, bar, belt, binary_stl,
                    bolt_circle, box_outline, circle, geometry_text, hood, path, polygon, slot,
                    triangles_of)

FINE = 0.005  # mm between arcs and chords


def volume(triangles):
    def six(a, b, c):
        return (a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0])
                + a[2] * (b[0] * c[1] - b[1] * c[0]))
    return sum(six(*t) for t in triangles) / 6


def open_edges(triangles):
    walks = {}
    for t in triangles:
        for k in range(3):
            a, b = t[k], t[(k + 1) % 3]
            walks[a, b] = walks.get((a, b), 0) + 1
            walks[b, a] = walks.get((b, a), 0) - 1
    return sum(1 for count in walks.values() if count)


class Outlines(unittest.TestCase):
    def test_area_of_rounded_boxes(self):
        self.assertAlmostEqual(area_of(box_outline(0, 40, 0, 30)), 1200)
        expected = 1200 - (4 - math.pi) * 10 * 10
        self.assertAlmostEqual(area_of(box_outline(0, 40, 0, 30, 10)), expected, delta=40)

    # The belt's straight sides touch both circles: with equal radii it is a box and two half discs.
    def test_slots_and_belts_of_equal_radii_are_the_same(self):
        expected = 100 * 40 + math.pi * 20 * 20
        for outline in (slot((0, 0), (100, 0), 20), belt((0, 0), 20, (100, 0), 20)):
            self.assertAlmostEqual(area_of(outline), expected, delta=0.02 * expected)

    # Feet at the width of the circle: the tangents are upright.
    def test_a_hood_over_its_own_width_is_a_box_and_half_a_disc(self):
        outline = hood((0, 50), 20, (-20, 0), (20, 0), 0)
        expected = 40 * 50 + math.pi * 20 * 20 / 2
        self.assertAlmostEqual(area_of(outline), expected, delta=0.01 * expected)


class Solids(unittest.TestCase):
    def assert_solid(self, solid, expected):
        triangles = triangles_of([solid], FINE)
        self.assertEqual(open_edges(triangles), 0)
        self.assertAlmostEqual(volume(triangles), expected, delta=0.002 * expected)

    def test_plate_with_holes(self):
        holes = bolt_circle(0, 0, 30, 6, 5)
        self.assert_solid(Prism(Z_AXES, circle(0, 0, 50), -3, 7, holes=holes),
                          math.pi * 10 * (50 * 50 - 6 * 5 * 5))

    def test_pockets_are_closed_below(self):
        pocket = (slot((-20, 0), (20, 0), 5), 4)
        self.assert_solid(Prism(X_AXES, box_outline(-50, 50, -20, 20), 0, 10, pockets=[pocket]),
                          100 * 40 * 10 - 4 * (40 * 10 + math.pi * 25))

    # Pappus: the corner that a rounding of radius r takes has the area (1 - pi/4) r^2 and its centre
    # 0.2234 r from the sides; around a circle it travels 2 pi (R - 0.2234 r).
    def test_rounded_edge_of_a_disc(self):
        r, centre = 6.0, (10 - 3 * math.pi) / (12 - 3 * math.pi)
        taken = (1 - math.pi / 4) * r * r * 2 * math.pi * (40 - centre * r)
        self.assert_solid(Prism(Y_AXES, circle(0, 0, 40), 0, 20, round_top=r),
                          math.pi * 40 * 40 * 20 - taken)

    def test_rounded_edges_of_a_box_keep_it_closed(self):
        solid = Prism(Z_AXES, box_outline(0, 90, 0, 60, 15), 0, 30, round_top=5, round_bottom=3)
        triangles = triangles_of([solid], FINE)
        self.assertEqual(open_edges(triangles), 0)
        whole = 30 * (90 * 60 - (4 - math.pi) * 15 * 15)
        self.assertLess(volume(triangles), whole)
        self.assertGreater(volume(triangles), 0.97 * whole)

    def test_chamfered_bar_is_a_cylinder_and_two_cut_cones(self):
        cones = 2 * math.pi * 2 / 3 * (10 * 10 + 10 * 8 + 8 * 8)
        self.assert_solid(bar(X_AXES, 5, 6, 10, 0, 50, 2), math.pi * 100 * 46 + cones)

    def test_turned_ball(self):
        half = ("arc", (0, 10), 10, -math.pi / 2, math.pi / 2)
        self.assert_solid(Turned(Z_AXES, [half]), 4 / 3 * math.pi * 1000)

    def test_turned_ring(self):
        ring = path([(20, 0), (30, 0), (30, 5), (20, 5), (20, 0)])
        self.assert_solid(Turned(Z_AXES, ring), math.pi * 5 * (900 - 400))

    def test_outlines_the_wrong_way_round_are_refused(self):
        with self.assertRaises(ValueError):
            Prism(Z_AXES, polygon([(0, 0), (0, 1), (1, 1), (1, 0)]), 0, 1)

    def test_sharp_or_tight_corners_are_not_rounded(self):
        for corner in (0, 4):
            with self.assertRaises(ValueError):
                Prism(Z_AXES, box_outline(0, 90, 0, 60, corner), 0, 30, round_top=5)


class Files(unittest.TestCase):
    CUBE = Prism(Z_AXES, box_outline(0, 1, 0, 1), 0, 1)

    def test_binary_stl_has_twelve_triangles_with_their_normals(self):
        data = binary_stl([self.CUBE], "cube", 0.1)
        self.assertEqual(len(data), 84 + 50 * 12)
        self.assertEqual(struct.unpack_from("<I", data, 80), (12,))
        normals = {struct.unpack_from("<3f", data, 84 + 50 * k) for k in range(12)}
        self.assertEqual(normals, {(1, 0, 0), (-1, 0, 0), (0, 1, 0), (0, -1, 0), (0, 0, 1),
                                   (0, 0, -1)})

    def test_ascii_stl_says_the_same(self):
        lines = ascii_stl([self.CUBE], "cube", 0.1).decode().splitlines()
        self.assertEqual((lines[0], lines[-1]), ("solid cube", "endsolid cube"))
        self.assertEqual(sum(line.startswith("facet normal ") for line in lines), 12)
        self.assertEqual(sum(line.startswith("  vertex ") for line in lines), 36)

    # Four walls without trims, two flat faces with four straight trims each.
    def test_geometry_text_of_a_cube(self):
        lines = geometry_text([self.CUBE], "cube").decode().splitlines()
        self.assertEqual(lines.count("2 2 9 0 cube"), 6)
        self.assertEqual(lines.count("2 1 2"), 8)

    # The pole (u, v) of a NURBS trim is written as v, u: of a circle about (30, 7) the first is
    # (35, 7).
    def test_coordinates_of_curved_trims_are_exchanged(self):
        lines = geometry_text([Prism(Z_AXES, circle(30, 7, 5), 0, 1)], "disc").decode().splitlines()
        self.assertEqual(lines[lines.index("9 1 9") + 1], "7 35 1")

    def test_twice_is_the_same(self):
        solids = [Prism(Z_AXES, circle(0, 0, 5), 0, 1), bar(X_AXES, 0, 0, 2, 0, 3)]
        self.assertEqual(binary_stl(solids, "a", 0.1), binary_stl(solids, "a", 0.1))
        self.assertEqual(geometry_text(solids, "a"), geometry_text(solids, "a"))


if __name__ == "__main__":
    unittest.main()
