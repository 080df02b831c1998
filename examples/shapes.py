"""Closed bodies from outlines, written as STL and as geometry text (.zrn). Standard library only.

An outline is a loop of segments in a plane, with the material on its left: ("line", p, q) or
("arc", centre, radius, from, to) with angles in radians. A body is a list of prisms and turned parts,
each closed in itself. Lengths are mm.
"""

import math
import struct

Z_AXES = ((1, 0, 0), (0, 1, 0), (0, 0, 1))  # outlines in XY, raised along Z
X_AXES = ((0, 1, 0), (0, 0, 1), (1, 0, 0))  # outlines in YZ, raised along X
Y_AXES = ((0, 0, 1), (1, 0, 0), (0, 1, 0))  # outlines in ZX, raised along Y
DOWN_AXES = ((1, 0, 0), (0, -1, 0), (0, 0, -1))


# --- segments and outlines


def point_on(segment, t):
    if segment[0] == "line":
        (_, p, q) = segment
        return (p[0] + (q[0] - p[0]) * t, p[1] + (q[1] - p[1]) * t)
    (_, c, r, a, b) = segment
    angle = a + (b - a) * t
    return (c[0] + r * math.cos(angle), c[1] + r * math.sin(angle))


def outward_of(segment, t):
    """The unit normal on the right of the direction of travel."""
    if segment[0] == "line":
        (_, p, q) = segment
        length = math.dist(p, q)
        return ((q[1] - p[1]) / length, (p[0] - q[0]) / length)
    (_, _, _, a, b) = segment
    angle = a + (b - a) * t
    side = 1 if b > a else -1
    return (side * math.cos(angle), side * math.sin(angle))


def reversed_outline(outline):
    def turned(s):
        return ("line", s[2], s[1]) if s[0] == "line" else ("arc", s[1], s[2], s[4], s[3])
    return [turned(s) for s in reversed(outline)]


def circle(x, y, radius):
    return [("arc", (x, y), radius, 0.0, 2 * math.pi)]


def corner_arc(before, at, after, radius):
    """The arc that rounds the corner `at`, counter-clockwise for a left turn."""
    u = ((at[0] - before[0]) / math.dist(before, at), (at[1] - before[1]) / math.dist(before, at))
    v = ((after[0] - at[0]) / math.dist(after, at), (after[1] - at[1]) / math.dist(after, at))
    turn = math.atan2(u[0] * v[1] - u[1] * v[0], u[0] * v[0] + u[1] * v[1])
    back = radius * math.tan(abs(turn) / 2)
    side = 1 if turn > 0 else -1
    start = (at[0] - back * u[0], at[1] - back * u[1])
    centre = (start[0] - side * radius * u[1], start[1] + side * radius * u[0])
    angle = math.atan2(start[1] - centre[1], start[0] - centre[0])
    return ("arc", centre, radius, angle, angle + turn)


def joined_up(pieces):
    """Arcs and points in order, with lines between them where they do not touch."""
    segments = []
    for piece in pieces:
        start = point_on(piece, 0) if piece[0] == "arc" else piece[1]
        if segments:
            end = point_on(segments[-1], 1)
            if math.dist(end, start) > 1e-6:
                segments.append(("line", end, start))
        if piece[0] == "arc":
            segments.append(piece)
        elif not segments:
            segments.append(("line", start, start))  # no line yet, but where it begins
    return [s for s in segments if s[0] == "arc" or math.dist(s[1], s[2]) > 1e-6]


def path(points, radius=0.0):
    """An open line through (x, y) or (x, y, radius of the corner)."""
    pieces = []
    for i, p in enumerate(points):
        r = p[2] if len(p) > 2 else radius
        if 0 < i < len(points) - 1 and r > 0:
            pieces.append(corner_arc(points[i - 1][:2], p[:2], points[i + 1][:2], r))
        else:
            pieces.append(("point", p[:2]))
    return joined_up(pieces)


def polygon(points, radius=0.0):
    """A closed outline through (x, y) or (x, y, radius of the corner), counter-clockwise."""
    pieces = []
    for i, p in enumerate(points):
        r = p[2] if len(p) > 2 else radius
        after = points[(i + 1) % len(points)][:2]
        pieces.append(corner_arc(points[i - 1][:2], p[:2], after, r) if r > 0 else ("point", p[:2]))
    return joined_up(pieces + [("point", point_on(pieces[0], 0) if pieces[0][0] == "arc"
                                else pieces[0][1])])


def box_outline(x0, x1, y0, y1, radius=0.0):
    return polygon([(x0, y0), (x1, y0), (x1, y1), (x0, y1)], radius)


def slot(p, q, radius):
    """The outline of a slot with round ends at p and q."""
    angle = math.atan2(q[1] - p[1], q[0] - p[0])
    half = math.pi / 2
    return joined_up([("arc", p, radius, angle + half, angle + 3 * half),
                      ("arc", q, radius, angle - half, angle + half),
                      ("point", (p[0] - radius * math.sin(angle), p[1] + radius * math.cos(angle)))])


def bolt_circle(x, y, pitch_radius, count, radius, first=0.0):
    """Holes on a circle."""
    angles = [first + 2 * math.pi * k / count for k in range(count)]
    return [circle(x + pitch_radius * math.cos(a), y + pitch_radius * math.sin(a), radius)
            for a in angles]


def belt(c1, r1, c2, r2):
    """The outline of a belt around two circles: the plate of an arm's link."""
    angle = math.atan2(c2[1] - c1[1], c2[0] - c1[0])
    open_by = math.acos((r1 - r2) / math.dist(c1, c2))
    a, b = angle - open_by, angle + open_by
    arcs = [("arc", c2, r2, a, b), ("arc", c1, r1, b, a + 2 * math.pi)]
    return joined_up(arcs + [("point", point_on(arcs[0], 0))])


def hood(centre, radius, a, b, corner):
    """The outline from foot a to foot b, counter-clockwise, and from there around a circle back to a
    on its tangents: a bearing stand, the cheek of a fork. `corner` rounds the feet."""
    def tangent_angle(p, side):
        angle = math.atan2(p[1] - centre[1], p[0] - centre[0])
        return angle + side * math.acos(radius / math.dist(p, centre))

    start, end = tangent_angle(b, 1), tangent_angle(a, -1)
    end += 2 * math.pi * math.ceil((start - end) / (2 * math.pi))
    arc = ("arc", centre, radius, start, end)
    pieces = [("point", a), ("point", b)] if corner == 0 else [
        corner_arc(point_on(arc, 1), a, b, corner), corner_arc(a, b, point_on(arc, 0), corner)]
    first = point_on(pieces[0], 0) if corner else a
    return joined_up(pieces + [arc, ("point", first)])


def steps_of(segment, sag):
    """Into how many chords an arc is cut, so that none is further than `sag` from it."""
    if segment[0] == "line":
        return 1
    (_, _, r, a, b) = segment
    largest = min(2 * math.acos(max(0.0, 1 - sag / r)), math.pi / 6)
    n = max(1, math.ceil(abs(b - a) / largest - 1e-9))
    return 4 * math.ceil(n / 4) if abs(b - a) > 6.28 else n  # a circle reaches its whole width


def sampled(outline, sag):
    """(point, outward normal) around a loop."""
    samples = []
    for segment in outline:
        n = steps_of(segment, sag)
        samples += [(point_on(segment, k / n), outward_of(segment, k / n)) for k in range(n)]
    return samples


# --- the solids


def can_be_inset(outline, inset):
    """Whether the outline is smooth and keeps its arcs when it shrinks by `inset`."""
    smooth = all(math.dist(outward_of(outline[k - 1], 1), outward_of(s, 0)) < 1e-6
                 for k, s in enumerate(outline))
    return smooth and all(s[0] == "line" or s[4] < s[3] or s[2] > inset for s in outline)


def area_of(outline):
    points = [p for p, _ in sampled(outline, 0.5)]
    return sum(p[0] * q[1] - p[1] * q[0] for p, q in zip(points, points[1:] + points[:1])) / 2


class Solid:
    """What prisms and turned parts share: a place. Local (u, v, w) is origin + u*e1 + v*e2 + w*e3."""

    def __init__(self, axes, origin):
        self.axes, self.origin = axes, origin

    def at(self, u, v, w):
        e1, e2, e3 = self.axes
        return tuple(self.origin[i] + u * e1[i] + v * e2[i] + w * e3[i] for i in range(3))


class Prism(Solid):
    """An outline raised from w0 to w1. `holes` go through, `pockets` are (outline, depth) from the
    top. Of a smooth outline the outer edges can be rounded, or flattened with `is_flat`."""

    def __init__(self, axes, outline, w0, w1, holes=(), pockets=(), round_top=0.0, round_bottom=0.0,
                 is_flat=False, origin=(0, 0, 0)):
        super().__init__(axes, origin)
        self.outline, self.w0, self.w1 = outline, w0, w1
        self.holes, self.pockets = list(holes), list(pockets)
        self.round_top, self.round_bottom, self.is_flat = round_top, round_bottom, is_flat
        if min(area_of(o) for o in [outline, *holes, *(p for p, _ in pockets)]) <= 0:
            raise ValueError("outlines, also those of holes, run counter-clockwise")
        if max(round_top, round_bottom) > 0 and not can_be_inset(outline, max(round_top, round_bottom)):
            raise ValueError("edges are rounded by less than the corners of a smooth outline only")

    def side(self):
        """The wall from below as segments (distance inwards, height)."""
        t, b, half = self.round_top, self.round_bottom, math.pi / 2
        segments = [("line", (0, self.w0 + b), (0, self.w1 - t))]
        if b > 0:
            arc = ("arc", (b, self.w0 + b), b, 3 * half, math.pi)
            segments.insert(0, self.edge(arc))
        if t > 0:
            segments.append(self.edge(("arc", (t, self.w1 - t), t, math.pi, half)))
        return segments

    def edge(self, arc):
        return ("line", point_on(arc, 0), point_on(arc, 1)) if self.is_flat else arc

    def walls(self):
        """(loop with the material on its left, side) of every wall."""
        walls = [(self.outline, self.side())]
        walls += [(reversed_outline(h), [("line", (0, self.w0), (0, self.w1))]) for h in self.holes]
        walls += [(reversed_outline(p), [("line", (0, self.w1 - d), (0, self.w1))])
                  for p, d in self.pockets]
        return walls

    def caps(self):
        """(outline, inset, holes, height, +1 up or -1 down) of every flat face."""
        pockets = [p for p, _ in self.pockets]
        caps = [(self.outline, self.round_top, self.holes + pockets, self.w1, 1),
                (self.outline, self.round_bottom, self.holes, self.w0, -1)]
        return caps + [(p, 0.0, [], self.w1 - d, 1) for p, d in self.pockets]


class Turned(Solid):
    """A line (radius, height) turned about the local third axis, the material on its left: upwards
    from the axis and back to it, or closed in itself for a ring."""

    def __init__(self, axes, line, origin=(0, 0, 0)):
        super().__init__(axes, origin)
        self.line = line

    def walls(self):
        """As those of a prism about a circle of radius 0, heights and radii as they stand."""
        return [s for s in self.line if s[0] == "arc" or abs(s[1][1] - s[2][1]) > 1e-9]

    def caps(self):
        """(outer radius, inner radius, height, sense) of every flat face across the axis."""
        flats = [s for s in self.line if s[0] == "line" and abs(s[1][1] - s[2][1]) <= 1e-9]
        return [(max(s[1][0], s[2][0]), min(s[1][0], s[2][0]), s[1][1], 1 if s[2][0] < s[1][0] else -1)
                for s in flats]


def bar(axes, x, y, radius, w0, w1, chamfer=0.0, origin=(0, 0, 0)):
    """A round bar with chamfered ends along the local third axis through (x, y)."""
    c = chamfer
    line = path([(0, w0), (radius - c, w0), (radius, w0 + c), (radius, w1 - c), (radius - c, w1),
                 (0, w1)]) if c else path([(0, w0), (radius, w0), (radius, w1), (0, w1)])
    e1, e2, _ = axes
    place = tuple(origin[i] + x * e1[i] + y * e2[i] for i in range(3))
    return Turned(axes, line, place)


def box(x0, x1, y0, y1, z0, z1, radius=0.0, **kind):
    """An upright box with rounded upright edges."""
    return Prism(Z_AXES, box_outline(x0, x1, y0, y1, radius), z0, z1, **kind)


# --- flat regions as triangles


def cross(o, a, b):
    return (a[0] - o[0]) * (b[1] - o[1]) - (a[1] - o[1]) * (b[0] - o[0])


def is_inside(p, a, b, c):
    return cross(a, b, p) >= 0 and cross(b, c, p) >= 0 and cross(c, a, p) >= 0


def opens_to(ring, i, p):
    """Whether p lies on the inner side of the corner i: of equal points the right one is taken."""
    a, b, c = ring[i - 1], ring[i], ring[(i + 1) % len(ring)]
    if cross(a, b, c) >= 0:
        return cross(a, b, p) > 0 and cross(b, c, p) > 0
    return cross(a, b, p) > 0 or cross(b, c, p) > 0


def bridged(ring, holes):
    """One ring around a region with holes: each hole is joined by a cut to the nearest corner."""
    for hole in sorted(holes, key=lambda h: -max(p[0] for p in h)):
        k = max(range(len(hole)), key=lambda n: hole[n])
        start = hole[k]
        near = sorted(range(len(ring)), key=lambda n: math.dist(ring[n], start))
        i = next(n for n in near if opens_to(ring, n, start)
                 and not any(crosses(ring[n], start, loop) for loop in [ring, *holes]))
        ring = ring[:i + 1] + hole[k:] + hole[:k + 1] + ring[i:]
    return ring


def crosses(a, p, loop):
    """Whether an edge of the loop that ends in neither stands between a and p."""
    for k, c in enumerate(loop):
        d = loop[(k + 1) % len(loop)]
        if p in (c, d) or a in (c, d):
            continue
        if cross(a, p, c) * cross(a, p, d) <= 0 and cross(c, d, a) * cross(c, d, p) <= 0:
            return True
    return False


def triangulated(outer, holes):
    """Triangles of a region: `outer` counter-clockwise, `holes` clockwise. Ears are cut off, going
    around, so that no corner becomes that of a long fan."""
    ring = bridged(outer, holes) if holes else list(outer)
    triangles, i = [], 0
    while len(ring) > 3:
        i = next_ear(ring, i)
        triangles.append((ring[i - 1], ring[i], ring[(i + 1) % len(ring)]))
        del ring[i]
    return triangles + [tuple(ring)]


def next_ear(ring, start):
    reflex = [p for k, p in enumerate(ring)
              if cross(ring[k - 1], p, ring[(k + 1) % len(ring)]) <= 0]
    for k in range(len(ring)):
        i = (start + k) % len(ring)
        if is_ear(ring, i, reflex):
            return i
    raise ValueError("a flat region that cannot be cut into triangles")


def is_ear(ring, i, reflex):
    a, b, c = ring[i - 1], ring[i], ring[(i + 1) % len(ring)]
    if cross(a, b, c) <= 1e-9:
        return False
    return not any(p not in (a, b, c) and is_inside(p, a, b, c) for p in reflex)


# --- STL


def wall_triangles(solid, loop, side, sag):
    rows = [[(p[0] - i * n[0], p[1] - i * n[1], w) for p, n in sampled(loop, sag)]
            for i, w in sampled_line(side, sag)]
    return grid_triangles(solid, rows)


def sampled_line(line, sag):
    """Points along an open line of segments."""
    points = []
    for segment in line:
        n = steps_of(segment, sag)
        points += [point_on(segment, k / n) for k in range(n)]
    return points + [point_on(line[-1], 1)]


def grid_triangles(solid, rows):
    triangles = []
    for low, high in zip(rows, rows[1:]):
        for k in range(len(low)):
            n = (k + 1) % len(low)
            a, b, c, d = (solid.at(*p) for p in (low[k], low[n], high[n], high[k]))
            triangles += [(a, b, c), (a, c, d)]
    return triangles


def cap_triangles(solid, cap, sag):
    outline, inset, holes, w, sense = cap
    outer = [(p[0] - inset * n[0], p[1] - inset * n[1]) for p, n in sampled(outline, sag)]
    inner = [[p for p, _ in sampled(reversed_outline(h), sag)] for h in holes]
    flat = triangulated(outer, inner)
    return [tuple(solid.at(p[0], p[1], w) for p in t[::sense]) for t in flat]


def turned_triangles(solid, sag):
    widest = max(p[0] for s in solid.line for p in (point_on(s, 0), point_on(s, 0.5)))
    around = [a for _, a in sampled(circle(0, 0, 1), sag / widest)]
    triangles = []
    for segment in solid.line:
        line = sampled_line([segment], sag)
        rows = [[(r * a[0], r * a[1], w) for a in around] for r, w in line]
        triangles += grid_triangles(solid, rows)
    return [t for t in triangles if len({rounded(p) for p in t}) == 3]


def rounded(p):
    """Coordinates as they are written: to 0.1 micrometres, so that the last digits of a platform's
    sines do not show."""
    return tuple(round(x, 4) + 0.0 for x in p)


def triangles_of(solids, sag):
    triangles = []
    for solid in solids:
        if isinstance(solid, Turned):
            triangles += turned_triangles(solid, sag)
        else:
            for loop, side in solid.walls():
                triangles += wall_triangles(solid, loop, side, sag)
            for cap in solid.caps():
                triangles += cap_triangles(solid, cap, sag)
    return [tuple(rounded(p) for p in t) for t in triangles]


def normal_of(t):
    u = [t[1][i] - t[0][i] for i in range(3)]
    v = [t[2][i] - t[0][i] for i in range(3)]
    n = (u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0])
    length = math.hypot(*n)
    return tuple(round(x / length, 6) + 0.0 for x in n) if length else (0.0, 0.0, 0.0)


def binary_stl(solids, title, sag):
    triangles = triangles_of(solids, sag)
    parts = [title.encode("ascii").ljust(80), struct.pack("<I", len(triangles))]
    for t in triangles:
        parts.append(struct.pack("<12fH", *normal_of(t), *t[0], *t[1], *t[2], 0))
    return b"".join(parts)


def ascii_stl(solids, title, sag):
    lines = ["solid " + title]
    for t in triangles_of(solids, sag):
        lines += ["facet normal " + numbers(normal_of(t)), " outer loop"]
        lines += ["  vertex " + numbers(p) for p in t]
        lines += [" endloop", "endfacet"]
    return ("\n".join(lines + ["endsolid " + title]) + "\n").encode("ascii")


def numbers(values):
    return " ".join(f"{round(x, 9) + 0.0:.10g}" for x in values)


# --- geometry text: a NURBS surface for each wall and flat face


def spline_of(segment):
    """Poles (x, y), weights, degree and knots of a segment, exact for arcs."""
    if segment[0] == "line":
        return [segment[1], segment[2]], [1.0, 1.0], 1, [0.0, 0.0, 1.0, 1.0]
    (_, c, r, a, b) = segment
    spans = max(1, math.ceil(abs(b - a) / (math.pi / 2) - 1e-9))
    half = (b - a) / spans / 2
    poles, weights = [], []
    for k in range(2 * spans + 1):
        angle, is_between = a + k * half, k % 2 == 1
        out = r / math.cos(half) if is_between else r
        poles.append((c[0] + out * math.cos(angle), c[1] + out * math.sin(angle)))
        weights.append(math.cos(half) if is_between else 1.0)
    knots = [0.0] + [float(k) for k in range(spans + 1) for _ in (0, 1)] + [float(spans)]
    return poles, weights, 2, knots


def spline_entity(name, u, v, poles, weights):
    """A NURBS surface; `u` and `v` are (pole count, degree, knots), U runs fastest."""
    is_rational = any(w != 1.0 for w in weights)
    flag = "1 1" if is_rational else "0 0"
    lines = [f"{u[0]} {v[0]} 9 0 {name}"]
    lines += [numbers(p) + " " + numbers([w]) for p, w in zip(poles, weights)]
    lines += [f"{u[1]} {v[1]}", flag]
    lines += [numbers([knots[0], knots[-1]]) for _, _, knots in (u, v)]
    for _, _, knots in (u, v):
        lines += [str(len(knots))] + [numbers([k]) for k in knots]
    return lines


def trim_lines(segment, swapped):
    """A trimming curve: straight ones as UV polylines, arcs as NURBS curves, whose two coordinates
    the format has the other way round."""
    def uv(p):
        return (p[1], p[0]) if swapped else p
    if segment[0] == "line":
        return ["2 1 2", numbers(uv(segment[1])), numbers(uv(segment[2]))]
    poles, weights, degree, knots = spline_of(segment)
    lines = [f"{len(poles)} 1 9"]
    lines += [numbers((uv(p)[1], uv(p)[0], w)) for p, w in zip(poles, weights)]
    lines += [f"{degree} 0", "0 0", numbers([knots[0], knots[-1]]), "0 0", str(len(knots))]
    return lines + [numbers([k]) for k in knots] + ["0"]


def inset_segment(segment, inset):
    if segment[0] == "line":
        n = outward_of(segment, 0)
        p, q = (tuple(p[i] - inset * n[i] for i in (0, 1)) for p in segment[1:])
        return ("line", p, q)
    (_, c, r, a, b) = segment
    return ("arc", c, r - inset if b > a else r + inset, a, b)


def flat_entity(name, solid, loops, w, sense):
    """A plane over the box of the loops, trimmed by them. Facing down, U and V are exchanged."""
    points = [p for loop in loops for p, _ in sampled(loop, 0.5)]
    low = [min(p[i] for p in points) - 1 for i in (0, 1)]
    high = [max(p[i] for p in points) + 1 for i in (0, 1)]
    swapped = sense < 0
    corners = [(low[0], low[1]), (high[0], low[1]), (low[0], high[1]), (high[0], high[1])]
    if swapped:
        corners[1], corners[2] = corners[2], corners[1]
    a, b = (1, 0) if swapped else (0, 1)
    u, v = ((2, 1, [low[i], low[i], high[i], high[i]]) for i in (a, b))
    lines = spline_entity(name, u, v, [solid.at(p[0], p[1], w) for p in corners], [1.0] * 4)
    for loop in loops:
        for segment in loop:
            lines += trim_lines(segment, swapped)
    return lines


def wall_entity(name, solid, segment, side):
    """A wall: the side (distance inwards, height) carried along one segment of a loop."""
    rows, row_weights, degree, knots = spline_of(side)
    first = spline_of(segment)
    poles, weights = [], []
    for (inset, w), row_weight in zip(rows, row_weights):
        flat, flat_weights, _, _ = spline_of(inset_segment(segment, inset))
        poles += [solid.at(p[0], p[1], w) for p in flat]
        weights += [row_weight * x for x in flat_weights]
    u = (len(first[0]), first[2], first[3])
    return spline_entity(name, u, (len(rows), degree, knots), poles, weights)


def prism_entities(name, solid):
    lines = []
    for loop, side in solid.walls():
        for segment in loop:
            for part in side:
                lines += wall_entity(name, solid, segment, part)
    for outline, inset, holes, w, sense in solid.caps():
        lines += flat_entity(name, solid, [[inset_segment(s, inset) for s in outline]] + holes, w,
                             sense)
    return lines


def turned_entities(name, solid):
    lines = []
    for part in solid.walls():
        rows, row_weights, degree, knots = spline_of(part)
        poles, weights = [], []
        for (r, w), row_weight in zip(rows, row_weights):
            # Radius 0 keeps its row of poles: the surface closes in a point on the axis.
            flat, flat_weights, _, around = spline_of(circle(0, 0, r)[0])
            poles += [solid.at(p[0], p[1], w) for p in flat]
            weights += [row_weight * x for x in flat_weights]
        lines += spline_entity(name, (9, 2, around), (len(rows), degree, knots), poles, weights)
    for outer, inner, w, sense in solid.caps():
        loops = [circle(0, 0, outer)] + ([circle(0, 0, inner)] if inner > 0 else [])
        lines += flat_entity(name, solid, loops, w, sense)
    return lines


def geometry_text(solids, title):
    lines = []
    for solid in solids:
        entities = turned_entities if isinstance(solid, Turned) else prism_entities
        lines += entities(title, solid)
    return ("\n".join(lines) + "\n").encode("ascii")
