#!/usr/bin/env python3
"""Writes the bodies of the example machines, examples/machines/geometry/; with --check it compares
the files there with what it would write. Each body is drawn where it stands with all axes at 0, in
the coordinates of its machine's definition file."""

import math
import pathlib
import sys

from shapes import (DOWN_AXES, Prism, Turned, X_AXES, Y_AXES, Z_AXES, ascii_stl, bar, belt,
                    binary_stl, bolt_circle, box, box_outline, circle, geometry_text, hood, path,
                    polygon, slot)

FOLDER = pathlib.Path(__file__).resolve().parent / "machines" / "geometry"
SAG = 0.4  # mm between an arc and its chords in STL files


def both(part):
    """A part and its mirror image: `part` takes -1 or 1."""
    return [solid for side in (-1, 1) for solid in part(side)]


def span(side, near, far):
    """The interval from `near` to `far` on one side of 0."""
    return (near, far) if side > 0 else (-far, -near)


def collar(y, z, radius, x0, x1, bolts, toward=1):
    """A flange about an axis along X with bolt heads sunk into its outer face."""
    holes = [(h, 5.0) for h in bolt_circle(0, 0, 0.84 * radius, bolts, 0.06 * radius)]
    axes = X_AXES if toward > 0 else ((0, -1, 0), (0, 0, 1), (-1, 0, 0))
    w0, w1 = (x0, x1) if toward > 0 else (-x1, -x0)
    return Prism(axes, circle(0, 0, radius), w0, w1, pockets=holes, origin=(0, y, z))


def t_slots(points, places, neck, wide, deep, bottom):
    """Adds T-slots at `places`, in descending order, to an outline that runs towards -y at z = 0."""
    for s in places:
        points += [(s + neck, 0), (s + neck, -deep), (s + wide, -deep), (s + wide, -bottom),
                   (s - wide, -bottom), (s - wide, -deep), (s - neck, -deep), (s - neck, 0)]
    return points


def end_mill(x, y, nose, tip, radius):
    """A collet chuck and an end mill below the spindle nose; the tip is the gauge length away."""
    return [Turned(Z_AXES, path([
        (0, tip), (radius - 1, tip), (radius, tip + 1), (radius, tip + 0.45 * (nose - tip)),
        (19, tip + 0.47 * (nose - tip)), (21, tip + 0.55 * (nose - tip)), (21, nose - 18),
        (31.5, nose - 18), (31.5, nose - 12), (27, nose - 10), (27, nose - 8), (31.5, nose - 6),
        (31.5, nose), (0, nose)]), (x, y, 0))]


def spindle_nose(x, y, face, top, radius):
    """The cone from the head's underside down to the gauge plane."""
    height = top - face
    return [Turned(Z_AXES, path([
        (0, face), (0.5 * radius, face), (0.55 * radius, face + 4), (0.62 * radius, face + 4),
        (0.62 * radius, face + 0.25 * height), (0.9 * radius, face + 0.7 * height),
        (radius, face + 0.75 * height), (radius, top), (0, top)]), (x, y, 0))]


# --- table-ac: trunnion A with table C at the front, column X, ram Y, head Z behind and above

A_Y, A_Z = -0.5, 60  # the axis of the cradle


def table_ac_bed():
    def feet(side):
        return [bar(Z_AXES, side * 460, y, 60, -660, -600, 10) for y in (-340, 230, 800)]

    def pedestal(side):
        x0, x1 = span(side, 300, 420)
        plate = hood((A_Y, A_Z), 115, (-210, -330), (210, -330), 0)
        return [Prism(X_AXES, plate, x0, x1, holes=[circle(A_Y, A_Z, 68)])]

    base = box_outline(-560, 560, -430, 900, 70)
    solids = [Prism(Z_AXES, base, -600, -420, round_bottom=25),
              Prism(Z_AXES, base, -420, -330, holes=[box_outline(-260, 260, -340, 330, 60)],
                    round_top=12),
              box(-560, 560, 400, 900, -330, -120, 50, round_top=12),
              collar(A_Y, A_Z, 95, 420, 442, 8), bar(X_AXES, A_Y, A_Z, 58, 442, 500, 8),
              collar(A_Y, A_Z, 112, -452, -420, 12, -1), bar(X_AXES, A_Y, A_Z, 90, -575, -452, 10)]
    solids += [box(-545, 545, y, y + 34, -120, -92) for y in (475, 800)]
    return solids + both(feet) + both(pedestal)


def table_ac_column():
    windows = [polygon([(560, -10), (770, -10), (770, 240), (560, 130)], 25),
               polygon([(560, 200), (770, 310), (770, 560), (560, 560)], 25)]
    side = polygon([(450, -60, 15), (890, -60, 15), (890, 60, 60), (850, 180, 60), (850, 640, 25),
                    (455, 640, 25)])

    def shoe(side_of_x):
        x0, x1 = span(side_of_x, 130, 235)
        return [box(x0, x1, y - 26, y + 60, -114, -60, 6) for y in (475, 800)]

    def rail(side_of_x):
        x0, x1 = span(side_of_x, 105, 139)
        return [box(x0, x1, 465, 850, 640, 664)]

    return [Prism(X_AXES, side, -205, 205, holes=windows), box(-240, 240, 446, 880, -75, -45, 20)
            ] + both(shoe) + both(rail)


def table_ac_ram():
    def shoe(side):
        x0, x1 = span(side, 85, 160)
        return [box(x0, x1, y, y + 110, 646, 690, 6) for y in (500, 700)]

    def rail(side):
        x0, x1 = span(side, 95, 125)
        return [box(x0, x1, 86, 110, 345, 1170)]

    beam = box_outline(685, 930, -165, 165, 35)
    front = box_outline(330, 1190, -185, 185, 45)
    web = polygon([(175, 560), (470, 685), (470, 690), (175, 690)])
    return [Prism(Y_AXES, beam, 170, 1010), Prism(Y_AXES, front, 108, 175, round_bottom=10),
            Prism(X_AXES, web, -110, -80), Prism(X_AXES, web, 80, 110),
            bar(Z_AXES, 0, 142, 60, 1190, 1330, 8), bar(Y_AXES, 810, 0, 62, 1010, 1130, 8)
            ] + both(shoe) + both(rail)


def table_ac_head():
    housing = polygon([(-92, -92, 88), (92, -92, 88), (104, 66, 12), (-104, 66, 12)])
    ports = bolt_circle(0, 0, 79, 8, 4.5, 0.3927)
    return [Prism(Z_AXES, housing, 215, 600, round_top=10, is_flat=True),
            Prism(Z_AXES, circle(0, 0, 88), 600, 618, pockets=[(p, 6.0) for p in ports]),
            bar(Z_AXES, 0, 0, 70, 618, 775, 10), bar(Z_AXES, 0, 0, 45, 775, 800, 4),
            box(-150, 150, 58, 92, 320, 730, 15)]


def table_ac_cradle():
    def arm(side):
        x0, x1 = span(side, 215, 264)
        plate = hood((A_Y, A_Z), 95, (-150, -145), (150, -145), 45)
        shaft = span(side, 264, 400)
        eyes = [circle(-72, -22, 22), circle(72, -22, 22)]
        return [Prism(X_AXES, plate, x0, x1, holes=eyes), bar(X_AXES, A_Y, A_Z, 60, *shaft),
                collar(A_Y, A_Z, 82, *span(side, 264, 278), 8, side)]

    floor = box_outline(-215, 215, -150, 150)
    drive = [(p, 4.0) for p in bolt_circle(0, 0, 112, 12, 6)]
    return [Prism(Z_AXES, floor, -145, -66, holes=[circle(0, 0, 60)]),
            Prism(DOWN_AXES, circle(0, 0, 128), 145, 165, pockets=drive),
            Prism(DOWN_AXES, circle(0, 0, 100), 165, 215, pockets=[(circle(0, 0, 30), 20.0)],
                  round_top=8, is_flat=True)] + both(arm)


def table_ac_table():
    slots = []
    for k in range(8):
        c, s = math.cos(math.pi * k / 4), math.sin(math.pi * k / 4)
        slots.append((slot((62 * c, 62 * s), (144 * c, 144 * s), 6), 18.0))
    rings = [(h, 8.0) for h in bolt_circle(0, 0, 105, 8, 5, math.pi / 8)]
    top = Prism(Z_AXES, circle(0, 0, 160), -42, 0, pockets=slots + rings + [(circle(0, 0, 25), 30.0)],
                round_top=3, is_flat=True)
    return [top, bar(Z_AXES, 0, 0, 122, -60, -42)]


def table_ac_workpiece():
    corners = [circle(x, y, 6) for x in (-60, 60) for y in (-60, 60)]
    star = []
    for k in range(6):
        for radius, step, round_by in ((58, 0, 9), (36, 0.5, 12)):
            a = 2 * math.pi * (k + step) / 6
            star.append((radius * math.cos(a), radius * math.sin(a), round_by))
    return [box(-76, 76, -76, 76, 0, 16, 16, holes=corners),
            Prism(Z_AXES, polygon(star), 16, 34),
            Prism(Z_AXES, circle(0, 0, 22), 34, 42, pockets=[(circle(0, 0, 13), 6.0)])]


# --- mill-3axis: bed and column, cross slide Y, table X, head Z


def mill_frame():
    bed = box_outline(-430, 430, -500, 860, 70)
    channels = [(slot((x, -420), (x, 380), 45), 70.0) for x in (-330, 330)]
    column = polygon([(440, -265), (850, -265, 10), (850, 760, 90), (760, 1250, 40), (440, 1250, 20)])
    windows = [polygon([(540, 0), (760, 0), (760, 300), (540, 200)], 30),
               polygon([(540, 300), (760, 400), (760, 760), (540, 760)], 30)]

    def feet(side):
        return [bar(Z_AXES, side * 340, y, 60, -780, -730, 8) for y in (-410, 180, 770)]

    def rails(side):
        return [box(*span(side, 165, 205), -440, 420, -265, -238),
                box(*span(side, 120, 155), 416, 442, 150, 1235)]

    return [Prism(Z_AXES, bed, -730, -265, pockets=channels, round_top=10),
            Prism(X_AXES, column, -235, 235, holes=windows),
            bar(Z_AXES, 0, 560, 75, 1250, 1400, 10)] + both(feet) + both(rails)


def mill_saddle():
    def parts(side):
        shoes = [box(*span(side, 150, 222), y, y + 90, -258, -225, 5) for y in (-180, 90)]
        rail = box(-440, 440, *span(side, 85, 117), -112, -86)
        return shoes + [rail]

    wing = polygon([(-440, -112), (-440, -150), (-240, -225, 30), (240, -225, 30), (440, -150),
                    (440, -112)])
    plate = Prism(((1, 0, 0), (0, 0, 1), (0, -1, 0)), wing, -150, 150)
    return [plate, box(-235, 235, -195, 195, -238, -150, 25),
            bar(Y_AXES, -190, 0, 48, -300, -195, 6)] + both(parts)


def mill_table():
    outline = [(-203, -62), (-150, -78), (150, -78), (203, -62), (203, 0)]
    outline = polygon(t_slots(outline, (125, 0, -125), 9, 16, 18, 32) + [(-203, 0)])

    def shoes(side):
        return [box(x, x + 80, *span(side, 76, 126), -106, -76, 5) for x in (-230, 150)]

    return [Prism(X_AXES, outline, -457, 457), bar(X_AXES, 0, -45, 30, 457, 540, 5)] + both(shoes)


def mill_vice():
    jaw = box_outline(-76, 76, -18, 18, 3)
    return [box(-76, 76, -150, 150, 0, 22, 10), Prism(Z_AXES, jaw, 22, 52, origin=(0, 68, 0)),
            Prism(Z_AXES, jaw, 22, 52, origin=(0, -68, 0)), bar(Y_AXES, 30, 0, 12, -190, -86, 2),
            box(-60, 60, -50, 50, 22, 56, pockets=[(slot((-30, 0), (30, 0), 16), 12.0)])]


def mill_head():
    casting = polygon([(-128, -128, 118), (128, -128, 118), (165, 345, 20), (-165, 345, 20)])
    return [Prism(Z_AXES, casting, 190, 620, round_top=10),
            box(-190, 190, 340, 418, 260, 760, 15), bar(Z_AXES, 0, 0, 105, 620, 640),
            bar(Z_AXES, 0, 0, 85, 640, 860, 10), bar(Z_AXES, 0, 200, 55, 620, 700, 8)]


# --- head-cb-fork: walls X, bridge, saddle Y, ram Z, fork C, spindle B


def fork_frame():
    plate = [(-250, -400), (2750, -400), (2750, 0)]
    places = [2500 - 250 * k for k in range(11)]
    plate = polygon(t_slots(plate, places, 14, 25, 30, 60) + [(-250, 0)])
    arches = [box_outline(-1500, -350, x, x + 900, 160)
              for x in (-800, 400, 1600, 2800, 4000)]
    wall = polygon([(-1800, -1150), (-1800, 5150), (150, 5150), (150, -1150)][::-1], 40)
    walls = [Prism(Y_AXES, wall, y, y + 380, holes=arches) for y in (-800, 2920)]
    rails = [box(-1120, 5120, y + 160, y + 230, 150, 190) for y in (-800, 2920)]
    return [Prism(X_AXES, plate, -300, 4300, origin=(0, 0, -1300))] + walls + rails


def fork_bridge():
    beam = polygon([(330, -880), (330, -330), (1050, -330), (1050, -760)][::-1], 40)
    carriages = [box(-950, 330, y, y + 380, 190, 330, 60) for y in (-800, 2920)]
    legs = [box(-860, -260, y + 20, y + 360, 330, 400, 40) for y in (-800, 2920)]
    rails = [box(-335, -300, -560, 3060, z, z + 60) for z in (420, 920)]
    return [Prism(Y_AXES, beam, -800, 3300)] + carriages + legs + rails


def fork_saddle():
    guide = box_outline(-300, 275, -275, 275, 60)
    return [box(-318, -240, -360, 360, 370, 1020, 30),
            Prism(Z_AXES, guide, 470, 960, holes=[box_outline(-192, 192, -192, 192, 30)])]


def fork_ram():
    return [box(-185, 185, -185, 185, 440, 2100, 30, round_top=20),
            box(-30, 30, 185, 205, 520, 2050), box(-30, 30, -205, -185, 520, 2050)]


def fork_yoke():
    def cheek(side):
        plate = hood((215, 0.02), 98, (402, -150), (402, 150), 0)
        cap = Prism(Y_AXES, circle(215, 0.02, 78), *span(side, 205, 222),
                    pockets=[(h, 4.0) for h in bolt_circle(215, 0.02, 64, 8, 5)] if side > 0 else [])
        return [Prism(Y_AXES, plate, *span(side, 132, 207)), cap]

    return [Prism(Z_AXES, circle(0, 0, 212), 400, 442, round_bottom=8, is_flat=True)] + both(cheek)


def fork_spindle():
    return [Turned(Z_AXES, path([(0, 68), (86, 68), (100, 90), (100, 325, 18), (70, 350), (0, 350)])),
            bar(Y_AXES, 215, 0.02, 58, -140, 140)]


def fork_block():
    pocket = [(box_outline(1550, 2450, 950, 1550, 120), 260.0)]
    return [box(1400, 2600, 800, 1700, -1300, -900, 40, pockets=pocket),
            box(1850, 2150, 1100, 1400, -1160, -980, 80, round_top=60)]


# --- arm-irb2400 and the same arm on its rail


def arm_base():
    anchors = [circle(x, y, 13) for x in (-215, 215) for y in (-215, 215)]
    return [box(-260, 260, -260, 260, 0, 32, 50, holes=anchors, round_top=6),
            Turned(Z_AXES, path([(0, 32), (225, 32), (205, 70, 30), (180, 220, 30), (190, 262),
                                 (0, 262)])),
            box(-330, -150, -90, 90, 32, 150, 20)]


def arm_shoulder():
    web = hood((615, 100), 132, (330, 250), (330, -190), 20)
    return [bar(Z_AXES, 0, 0, 200, 265, 340, 12), Prism(Y_AXES, web, -128, 38),
            bar(Y_AXES, 615, 100, 100, -150, -128), bar(Y_AXES, 615, 100, 82, -300, -150, 12)]


def arm_upper():
    link = belt((615, 100), 118, (1320, 100), 102)
    window = [slot((800, 100), (1140, 100), 48)]
    return [Prism(Y_AXES, link, 42, 118, holes=window, round_top=12, round_bottom=12, is_flat=True),
            bar(Y_AXES, 615, 100, 88, 118, 134, 4), bar(Y_AXES, 1320, 100, 78, 118, 134, 4)]


def arm_elbow():
    shell = belt((1320, 100), 108, (1455, 130), 98)
    return [Prism(Y_AXES, shell, -98, 38, round_bottom=12),
            bar(X_AXES, 0, 1455, 92, 100, 310, 6), bar(X_AXES, -42, 1470, 46, -160, 60, 8),
            bar(X_AXES, 42, 1470, 40, -120, 60, 8)]


def arm_forearm():
    def cheek(side):
        plate = hood((1455, 855), 54, (1410, 720), (1500, 720), 0)
        return [Prism(Y_AXES, plate, *span(side, 46, 72)),
                bar(Y_AXES, 1455, 855, 40, *span(side, 72, 80), 3)]

    tube = path([(0, 312), (88, 312), (88, 340), (74, 372, 30), (60, 700, 40), (72, 745), (0, 745)])
    return [Turned(X_AXES, tube, (0, 0, 1455))] + both(cheek)


def arm_wrist():
    return [bar(Y_AXES, 1455, 855, 44, -44, 44), bar(X_AXES, 0, 1455, 38, 850, 916, 3)]


def arm_flange():
    return [bar(X_AXES, 0, 1455, 40, 917, 934, 2)]


def arm_plate():
    bolts = [(h, 4.0) for h in bolt_circle(0, 0, 31.5, 6, 3.5)]
    return [Prism(X_AXES, circle(0, 0, 45), 934, 940, pockets=bolts, origin=(0, 0, 1455))]


def arm_gripper():
    def finger(side):
        y0, y1 = span(side, 26, 40)
        plate = polygon([(y0, 984), (y1, 984), (y1, 1030), (y1, 1085), (y0, 1085)])
        return [Prism(((0, 1, 0), (1, 0, 0), (0, 0, -1)), plate, -1470, -1440)]

    return [bar(X_AXES, 0, 1455, 36, 940, 958, 2), box(958, 985, -55, 55, 1430, 1480, 8)
            ] + both(finger)


def rail_track():
    rails = [box(x, x + 60, -700, 4700, -170, -110) for x in (-240, 180)]
    sleepers = [box(-340, 340, y - 60, y + 60, -420, -330, 15) for y in range(-600, 4601, 650)]
    return [box(-300, 300, -720, 4720, -330, -170, 20)] + rails + sleepers


def rail_carriage():
    return [box(-330, 330, -420, 420, -105, 0, 50, round_top=10),
            box(330, 430, -160, 160, -230, -30, 20)]


# --- files

TRUNNION = {
    "bed.stl": table_ac_bed, "column.zrn": table_ac_column, "ram.stl": table_ac_ram,
    "head.zrn": table_ac_head, "nose.stl": lambda: spindle_nose(0, 0, 120, 216, 80),
    "cutter.stl": lambda: end_mill(0, 0, 120, 50, 8), "cradle.zrn": table_ac_cradle,
    "table.zrn": table_ac_table, "workpiece.zrn": table_ac_workpiece}
MILL = {
    "frame.zrn": mill_frame, "saddle.stl": mill_saddle, "table.stl": mill_table,
    "vice.stl": mill_vice, "head.zrn": mill_head,
    "nose.stl": lambda: spindle_nose(0, 0, 110, 192, 84),
    "cutter.stl": lambda: end_mill(0, 0, 110, 60, 8)}
FORK = {
    "frame.stl": fork_frame, "bridge.stl": fork_bridge, "saddle.stl": fork_saddle,
    "ram.stl": fork_ram, "fork.zrn": fork_yoke, "spindle.stl": fork_spindle,
    "nose.stl": lambda: spindle_nose(0, 0, 0, 69, 80),
    "cutter.stl": lambda: end_mill(0, 0, 0, -120, 16), "block.stl": fork_block}
ARM = {
    "base.stl": arm_base, "shoulder.zrn": arm_shoulder, "upper-arm.zrn": arm_upper,
    "elbow.stl": arm_elbow, "forearm.stl": arm_forearm, "wrist.stl": arm_wrist,
    "flange.stl": arm_flange, "plate.zrn": arm_plate, "gripper.stl": arm_gripper,
    "rail.stl": rail_track, "carriage.stl": rail_carriage}
ASCII = {"mill-3axis/cutter.stl"}  # one STL as text, the others binary
MACHINES = {"table-ac": TRUNNION, "mill-3axis": MILL, "head-cb-fork": FORK, "arm-irb2400": ARM}


def files():
    """Every file: its path below the folder and its bytes."""
    for machine, bodies in MACHINES.items():
        for name, solids in bodies.items():
            title = machine + " " + name.split(".")[0]
            place = f"{machine}/{name}"
            if name.endswith(".zrn"):
                yield place, geometry_text(solids(), title)
            else:
                write = ascii_stl if place in ASCII else binary_stl
                yield place, write(solids(), title, SAG)


def check():
    expected = dict(files())
    found = {p.relative_to(FOLDER).as_posix(): p.read_bytes()
             for p in FOLDER.rglob("*") if p.is_file()}
    wrong = sorted(n for n in expected.keys() | found.keys() if expected.get(n) != found.get(n))
    for name in wrong:
        print(f"{name}: expected what examples/make_geometry.py writes, found another file or none")
    return 1 if wrong else 0


def main():
    if sys.argv[1:] == ["--check"]:
        return check()
    for name, data in files():
        path_of_file = FOLDER / name
        path_of_file.parent.mkdir(parents=True, exist_ok=True)
        path_of_file.write_bytes(data)
    return 0


if __name__ == "__main__":
    sys.exit(main())
