#include "tools/starts.h"

namespace korvo::tools {
namespace {

constexpr std::string_view kMill3Axis = R"(# Three-axis milling machine. Format version 2.
#
# How to read this file: one element a line; each hangs on the one before. Everything from "#" on is
# a comment, and every blank disappears (in names too). Lengths are mm, angles degrees.
# Pick an origin and keep it for all points; here it is the centre of the table top.

# The machine frame: every machine has exactly one.
frame = z

# The part stands on the frame. Directions of its X and Y, then its place (which is not used).
part = x, y, 0, 0, 0

# Back to the frame, then on to the tool: from here on the elements carry the spindle.
# Directions are those of the TOOL'S motion relative to the part. When +X moves the table to the
# left, the tool moves to the right over the part: write +x.
lien = BATI
axis = X, +x
axis = Y, +y
axis = Z, +z

# The tool: its direction from the tip to the spindle, then the spindle nose when all axes are 0.
tool = z, 0, 0, 150

# Travel, as on the data sheet: axis, minimum, maximum. After the line of the axis.
limits = X, -400, 400
limits = Y, -250, 250
limits = Z, 0, 450

# Which bodies must not touch.
collisions = tool, PIECE
)";

constexpr std::string_view kTableAc =
    R"(# Five-axis machine with a trunnion table: C turns the part on the cradle A. Format version 2.
#
# Origin: the centre of the table top at A = C = 0; then the C axis is the line x = y = 0.

frame = z

# From the frame to the part: first the axis that the frame carries, last the one under the part.
# rotation = name, direction, two integers that are skipped, a point on the axis.
# The direction is the sense in which the TOOL turns about the part: the table itself turns the
# other way. Take +x and +z when the control follows ISO 841; "korvo info" says it in words.
# Replace the point of A by the measured centre of rotation (here 50 mm above the table top).
rotation = A, +x, 0, 0, 0, 0, 50
rotation = C, +z, 0, 0, 0, 0, 0
part = x, y, 0, 0, 0

lien = BATI
axis = X, +x
axis = Y, +y
axis = Z, +z
# The spindle nose over the origin when all axes are 0.
tool = z, 0, 0, 150

limits = X, -300, 300
limits = Y, -250, 250
limits = Z, -50, 450
limits = A, -120, 30
# An axis without a limits line turns without end.

collisions = tool, A, C, PIECE
)";

constexpr std::string_view kTableBc =
    R"(# Five-axis machine with a tilting table: C turns the part on the cradle B. Format version 2.
#
# Origin: the centre of the table top at B = C = 0; then the C axis is the line x = y = 0.

frame = z

# From the frame to the part: first the axis that the frame carries, last the one under the part.
# rotation = name, direction, two integers that are skipped, a point on the axis.
# The direction is the sense in which the TOOL turns about the part: the table itself turns the
# other way. Take +y and +z when the control follows ISO 841; "korvo info" says it in words.
# Replace the point of B by the measured centre of rotation.
rotation = B, +y, 0, 0, 0, 0, -30
rotation = C, +z, 0, 0, 0, 0, 0
part = x, y, 0, 0, 0

lien = BATI
axis = X, +x
axis = Y, +y
axis = Z, +z
# The spindle nose over the origin when all axes are 0.
tool = z, 0, 0, 150

limits = X, -350, 350
limits = Y, -300, 300
limits = Z, -50, 450
limits = B, -30, 110
# An axis without a limits line turns without end.

collisions = tool, B, C, PIECE
)";

constexpr std::string_view kHeadCb =
    R"(# Five-axis machine with a fork head: C carries B carries the spindle. Format version 2.
#
# Origin: the spindle nose when all axes are 0 (spindle upright).

frame = z
part = x, y, 0, 0, 0

lien = BATI
axis = X, +x
axis = Y, +y
axis = Z, +z
# rotation = name, direction, two integers that are skipped, a point on the axis.
# First the axis nearer the frame. The head turns the tool itself: +z and +y are the sense of
# ISO 841.
rotation = C, +z, 0, 0, 0, 0, 0
# The B axis lies above the nose by the pivot length of the data sheet (here 210 mm).
rotation = B, +y, 0, 0, 0, 0, 210
tool = z, 0, 0, 0

limits = X, 0, 4000
limits = Y, 0, 2000
limits = Z, -1000, 0
limits = B, -110, 110
limits = C, -360, 360

collisions = tool, B, C, PIECE
)";

constexpr std::string_view kHeadTable =
    R"(# Five-axis machine: B tilts the head, C turns the table. Format version 2.
#
# Origin: the centre of the table top.

frame = z

# Under the part: the rotary table. Its direction is the sense in which the TOOL turns about the
# part; the table itself turns the other way.
# rotation = name, direction, two integers that are skipped, a point on the axis.
rotation = C, +z, 0, 0, 0, 0, 0
part = x, y, 0, 0, 0

# In the head: three linear axes and the tilting spindle.
lien = BATI
axis = X, +x
axis = Y, +y
axis = Z, +z
# The B axis lies above the nose (z = 400) by the pivot length of the data sheet (here 200 mm).
rotation = B, +y, 0, 0, 0, 0, 600
tool = z, 0, 0, 400

limits = X, -500, 500
limits = Y, -450, 450
limits = Z, -350, 300
limits = B, -100, 100

collisions = tool, B, C, PIECE
)";

constexpr std::string_view kArm =
    R"(# Six-joint arm with a spherical wrist. Format version 1: axis names are free, and the second
# operand of every axis line is the axis number.
#
# Origin: on the axis of J1, at the height of the base. Joint angles are 0 with the upper arm
# upright and the forearm level along X.
#
# What the arm solver asks for: J1 upright on the Z axis, with only frame and part before it; J1, J2,
# J3 with the three lowest numbers; J2 square to J1, J3 parallel to J2, J4 square to J3; the axes of
# J4, J5 and J6 meeting in one point; the tool line on the axis of J6.

frame
part = x, y, 0, 0, 0

lien = BATI
# rotation = name, number, direction, two integers that are skipped, a point on the axis.
# J1: the column. J2: the shoulder, 150 mm in front of J1 and 450 mm above the base.
rotation = J1, 1, +z, 0, 0, 0, 0, 0
rotation = J2, 2, +y, 0, 0, 150, 0, 450
# J3: the elbow, an upper arm of 700 mm above the shoulder.
rotation = J3, 3, +y, 0, 0, 150, 0, 1150
# J4: the forearm's own axis, 115 mm above the elbow. J5: the wrist, 795 mm in front of the elbow.
rotation = J4, 4, +x, 0, 0, 150, 0, 1265
rotation = J5, 5, +y, 0, 0, 945, 0, 1265
rotation = J6, 6, +x, 0, 0, 945, 0, 1265
# The flange, 85 mm in front of the wrist, looks along +X: from the tip back to the flange is -x.
tool = -x, 1030, 0, 1265

limits = J1, -180, 180
limits = J2, -95, 155
limits = J3, -180, 75
limits = J4, -400, 400
limits = J5, -120, 120
limits = J6, -400, 400

collisions = tool, BATI, PIECE, J1, J2
)";

constexpr Start kStarts[] = {
    {"mill-3axis", "three-axis milling machine", 2, kMill3Axis},
    {"table-ac", "five axes, trunnion table A with C", 2, kTableAc},
    {"table-bc", "five axes, tilting table B with C", 2, kTableBc},
    {"head-cb", "five axes, fork head C with B", 2, kHeadCb},
    {"head-table", "five axes, tilting head B and rotary table C", 2, kHeadTable},
    {"arm", "six-joint arm with a spherical wrist", 1, kArm},
};

}  // namespace

std::span<const Start> starts() { return kStarts; }

}  // namespace korvo::tools
