"""Writes three toolpaths as CAM systems make them, for `korvo path` on three example machines.

    cavity.cl   a bell-shaped cavity, milled in one spiral, APT/CL text  (table-ac)
    blade.csv   both flanks of a twisted blade, to and fro around its leading edge  (head-cb-fork)
    seam.csv    the seam of a branch pipe on a main pipe, once around  (arm-irb2400)

Usage: make_toolpaths.py [FOLDER]. Writes into FOLDER, the current one without it. With --check it
says instead whether the seam.csv beside it is the one that it writes.
"""

import math
import sys
from pathlib import Path


def unit(v):
    length = math.sqrt(sum(x * x for x in v))
    return tuple(x / length for x in v)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def along(p, v, by):
    return tuple(x + by * y for x, y in zip(p, v))


# --- the cavity

CAVITY_RADIUS = 60.0  # mm, of its rim
CAVITY_DEPTH = 42.0
CAVITY_WIDTH = 30.0  # where the bell has fallen to 1/e
CAVITY_TOP = 95.0  # of the block above the table
CAVITY_PITCH = 0.56  # between two turns of the spiral
CAVITY_STEP = 1.0  # between two targets
BALL = 4.0  # radius of the cutter, whose tip is its lowest point


def cavity():
    """From the rim inwards, square to the surface: (tip, direction)."""
    angle, radius = 0.0, CAVITY_RADIUS
    while radius > 0.3:
        fall = CAVITY_DEPTH * math.exp(-((radius / CAVITY_WIDTH) ** 2))
        slope = 2 * radius / CAVITY_WIDTH**2 * fall
        normal = unit((-slope * math.cos(angle), -slope * math.sin(angle), 1.0))
        contact = (radius * math.cos(angle), radius * math.sin(angle), CAVITY_TOP - fall)
        yield contact, normal
        step = CAVITY_STEP / max(radius, CAVITY_STEP)
        angle += step
        radius -= CAVITY_PITCH * step / (2 * math.pi)


def write_cavity(path):
    lines = ["PARTNO BELL CAVITY", "$$ one spiral from the rim to the middle", "UNITS/MM",
             f"LOADTL/4 $$ ball, {2 * BALL:g} mm", "SPINDL/12000,CLW", "MULTAX/ON"]
    for number, (tip, direction) in enumerate(cavity()):
        if number == 0:
            above = along(tip, direction, 40.0)
            lines += ["RAPID", goto(above, direction), "FEDRAT/MMPM,300"]
        lines.append(goto(tip, direction))
        if number == 0:
            lines.append("FEDRAT/MMPM,1800")
    lines += ["RAPID", goto(along(tip, direction, 60.0), direction), "MULTAX/OFF", "SPINDL/OFF",
              "FINI"]
    path.write_bytes(("\n".join(lines) + "\n").encode("ascii"))


def goto(tip, direction):
    point = ",".join(f"{x:.4f}" for x in tip)
    vector = ",".join(f"{x:.7f}" for x in direction)
    return f"GOTO/{point},{vector}"


# --- the blade

BLADE_PLACE = (2000.0, 1250.0, -900.0)  # of its foot, in the machine
BLADE_HEIGHT = 220.0
BLADE_CHORD = 120.0
BLADE_PASSES = 64
BLADE_POINTS = 180  # of a pass
BLADE_LIFT = math.radians(40.0)  # the cutter leans up from the flank


def blade_point(way, height):
    """The skin of the blade: `way` from 0 (behind, one flank) by 0.5 (leading edge) to 1."""
    thickness = 9.0 * (1 - 0.5 * height)
    chord = BLADE_CHORD * (1 - 0.25 * height)
    twist = math.radians(-18 + 42 * height)
    angle = math.pi * (2 * way - 1) * 0.94  # the trailing edge stays clear
    x = -chord / 2 * math.cos(angle)
    y = thickness * math.sin(angle) * (1 + 0.35 * math.cos(angle)) + 9 * (1 - (2 * x / chord) ** 2)
    return (x * math.cos(twist) - y * math.sin(twist), x * math.sin(twist) + y * math.cos(twist),
            height * BLADE_HEIGHT)


def blade_target(way, height):
    tiny = 1e-5
    here = blade_point(way, height)
    forward = tuple((a - b) / (2 * tiny) for a, b in
                    zip(blade_point(way + tiny, height), blade_point(way - tiny, height)))
    upward = tuple((a - b) / (2 * tiny) for a, b in
                   zip(blade_point(way, height + tiny), blade_point(way, height - tiny)))
    outward = unit(cross(unit(upward), unit(forward)))
    lift = unit(upward)
    direction = unit(tuple(math.cos(BLADE_LIFT) * o + math.sin(BLADE_LIFT) * u
                           for o, u in zip(outward, lift)))
    return tuple(a + b for a, b in zip(here, BLADE_PLACE)), direction


def blade():
    """From the tip downwards, to and fro: (tip, direction, feed)."""
    for number in range(BLADE_PASSES):
        height = 1 - number / (BLADE_PASSES - 1) * 0.93
        shares = [2 * i / (BLADE_POINTS - 1) - 1 for i in range(BLADE_POINTS)]
        ways = [0.5 + 0.5 * s * (0.3 + 0.7 * s * s) for s in shares]  # closer at the leading edge
        for i, way in enumerate(ways if number % 2 == 0 else reversed(ways)):
            tip, direction = blade_target(way, height)
            yield tip, direction, 600 if i == 0 else 2400


# --- the seam

SEAM_MAIN = 110.0  # radius of the main pipe, which lies along Y
SEAM_BRANCH = 60.0  # radius of the branch, upright
SEAM_PLACE = (850.0, 0.0, 600.0)  # of the main pipe's axis below the branch
SEAM_LEAN = 0.5  # how much the torch points away from the branch
SEAM_POINTS = 720
SEAM_TURN = math.radians(-90.0)  # where it begins: on the side of the arm


def seam():
    """Once around the branch, the torch between both pipes: (tip, direction)."""
    for i in range(SEAM_POINTS + 1):
        angle = SEAM_TURN + 2 * math.pi * i / SEAM_POINTS
        out = (math.cos(angle), math.sin(angle), 0.0)
        x, y = SEAM_BRANCH * out[0], SEAM_BRANCH * out[1]
        z = math.sqrt(SEAM_MAIN**2 - x * x)
        main = unit((x, 0.0, z))
        direction = unit(tuple(a + SEAM_LEAN * b for a, b in zip(main, out)))
        yield tuple(a + b for a, b in zip((x, y, z), SEAM_PLACE)), direction, 480


def table(targets):
    lines = ["x,y,z,i,j,k,feed"]
    for tip, direction, feed in targets:
        cells = [f"{x:.4f}" for x in tip] + [f"{x:.7f}" for x in direction] + [f"{feed:g}"]
        lines.append(",".join(cells))
    return "\n".join(lines) + "\n"


def is_same(a, b):
    """But for a last digit, which may differ where the sine does."""
    rows = [[[float(x) for x in row.split(",")] for row in text.splitlines()[1:]] for text in (a, b)]
    return a.split("\n")[0] == b.split("\n")[0] and len(rows[0]) == len(rows[1]) and all(
        len(r) == len(s) and all(abs(x - y) < 2e-4 for x, y in zip(r, s)) for r, s in zip(*rows))


def main():
    if sys.argv[1:] == ["--check"]:
        beside = Path(__file__).with_name("seam.csv").read_text(encoding="ascii")
        return 0 if is_same(beside, table(seam())) else 1
    folder = Path(sys.argv[1] if len(sys.argv) > 1 else ".")
    folder.mkdir(parents=True, exist_ok=True)
    write_cavity(folder / "cavity.cl")
    for name, targets in (("blade.csv", blade()), ("seam.csv", seam())):
        (folder / name).write_bytes(table(targets).encode("ascii"))
    return 0


if __name__ == "__main__":
    sys.exit(main())
