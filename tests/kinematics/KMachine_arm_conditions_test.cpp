#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/kinematics/KMachine_arm.h"

// What an arm must look like for the arm solver: one machine for each condition that it breaks, and
// what comes out then. The direction is always reached and the answer is always 0; the point is
// missed, where that can be worked out by a known amount.

namespace korvo::test::arm {
namespace {

constexpr double kPointMm = 1e-7;
constexpr double kDirection = 1e-9;

/// Targets near the start position, so that it decides the branch.
const std::vector<double> kStart = {25, 28, 75, 10, 20, 30};

Miss missFrom(const KMachine& machine, const std::vector<double>& start, const UVec3d& pos,
              const UVec3d& dir) {
  const Solved solved = solve(machine, start, pos, dir);
  EXPECT_EQ(solved.code, 0);
  const Miss miss = missOf(machine, solved, pos, dir);
  EXPECT_LE(miss.direction, kDirection) << dir;
  return miss;
}

// --- Layout of the first joints: the point is missed, all else being in reach

struct Broken {
  const char* name;
  std::string text;
  std::size_t axes;
};

void PrintTo(const Broken& row, std::ostream* out) { *out << row.name; }

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string squareWith(const std::function<void(Arm&)>& change) {
  Arm arm = squareArm();
  change(arm);
  return arm.text();
}

/// Joint i gets the axis number `numbers[i]`.
std::string numbered(const std::vector<int>& axisNumbers) {
  std::string text = squareArm().text();
  for (std::size_t i = 0; i < axisNumbers.size(); ++i) {
    const std::string joint = "J" + std::to_string(i + 1) + ",";
    text = replaced(text, joint + std::to_string(i + 1), joint + std::to_string(axisNumbers[i]));
  }
  return text;
}

std::string withRail(const std::string& direction) {
  return replaced(squareArm().text(), "rotation=J1", "axis=RAIL,7," + direction + "\nrotation=J1");
}

class BrokenLayout : public testing::TestWithParam<Broken> {};

TEST_P(BrokenLayout, ReachesTheDirectionAndMissesThePoint) {
  const auto machine = fromText(GetParam().text, 1);
  ASSERT_EQ(machine->getKine(1).kinematicClass, 5);
  std::vector<double> near = {20, 30, 70, 5, 10, 15, 25}, start = {22, 28, 72, 7, 12, 17, 27};
  near.resize(GetParam().axes), start.resize(GetParam().axes);
  const ToolPlace reachable = toolAt(*machine, near);
  for (const UVec3d& dir : manyDirections()) {
    EXPECT_GT(missFrom(*machine, start, reachable.point, dir).point.norm(), 0.1) << dir;
  }
}

INSTANTIATE_TEST_SUITE_P(
    SquareArm, BrokenLayout,
    testing::Values(
        Broken{"FirstAxisDownward", squareWith([](Arm& a) { a.joints[0].direction = {0, 0, -1}; }),
               6},
        Broken{"FirstAxisBesideTheZLine",
               squareWith([](Arm& a) { a.joints[0].point = {30, 40, 0}; }), 6},
        Broken{"FirstAxisLying", squareWith([](Arm& a) {
                 for (Line& line : a.joints) {
                   line = {reference::rx(90).at(line.point), reference::rx(90).at(line.direction)};
                 }
                 a.tool = {reference::rx(90).at(a.tool.point),
                           reference::rx(90).at(a.tool.direction)};
               }),
               6},
        Broken{"RailAlongX", withRail("x"), 7}, Broken{"RailAlongY", withRail("y"), 7},
        Broken{"RailUpwards", withRail("z"), 7},
        Broken{"FirstAndSecondNumberExchanged", numbered({2, 1, 3, 4, 5, 6}), 6},
        Broken{"SecondAndThirdNumberExchanged", numbered({1, 3, 2, 4, 5, 6}), 6},
        Broken{"WristNumberedFirst", numbered({4, 5, 6, 1, 2, 3}), 6},
        Broken{"AnotherAxisNumberedFirst",
               replaced(numbered({2, 3, 4, 5, 6, 7}), "rotation=J1",
                        "axis=DOOR,1,x\nlien=BATI\nrotation=J1"),
               7},
        Broken{"SecondNotSquareToTheFirst",
               squareWith([](Arm& a) { a.joints[1].direction = {0, -1, 0.01}; }), 6},
        Broken{"ThirdNotParallelToTheSecond",
               squareWith([](Arm& a) { a.joints[2].direction = {0.01, -1, 0}; }), 6},
        Broken{"FourthNotSquareToTheThird",
               squareWith([](Arm& a) { a.joints[3] = {{630, -150, 540}, {0, 0.1, 1}}; }), 6}),
    [](const auto& row) { return std::string(row.param.name); });

// The same targets are reached by the arm as it should be: it is the layout that misses them.
TEST(ArmConditions, TheUnbrokenArmReachesThem) {
  const auto machine = squareArm().load();
  const ToolPlace reachable = toolAt(*machine, {20, 30, 70, 5, 10, 15});
  for (const UVec3d& dir : manyDirections()) {
    const Miss miss = missFrom(*machine, {22, 28, 72, 7, 12, 17}, reachable.point, dir);
    EXPECT_LE(miss.point.norm(), kPointMm);
  }
}

// A rail is missed at every place of the arm on it, and never moved.
TEST(ArmConditions, ARailIsNeverMoved) {
  const auto machine = fromText(withRail("y"), 1);
  const UVec3d pos = toolAt(*machine, {20, 20, 20, 0, 0, 0, 500}).point;
  for (const double rail : {-300.0, 0.0, 500.0}) {
    const Solved solved = solve(*machine, {22, 22, 22, 0, 0, 0, rail}, pos, {1, 1, 1});
    EXPECT_EQ(solved.values[6], rail);
    EXPECT_GT(missOf(*machine, solved, pos, {1, 1, 1}).point.norm(), 1);
  }
}

// J3 against J2 with a forearm offset. To the square target the solver finds J2 = 16.26 and J3 =
// 36.87 as for parallel axes, mirrored onto itself. The elbow is at 400 (cos, sin)(16.26) = (384,
// 112); the forearm, at 53.13 when straight, now turns back: 53.13 + 16.26 - 36.87 = 32.52. Wanted
// was (300, 400).
TEST(ArmConditions, ThirdAgainstSecondWithForearmOffsetMissesByTheMirroredForearm) {
  const auto machine = fromText(squareWith([](Arm& a) { a.joints[2].direction = {0, 1, 0}; }), 1);
  const double forearm = 32.520409416624 * kDegree;
  const double u = 384 + 300 * std::cos(forearm) - 300, w = 112 + 300 * std::sin(forearm) - 400;
  const Miss miss = missFrom(*machine, {36, 16, 37, 0, 0, 0}, {370, 90, 700}, {0, 0, 1});
  EXPECT_NEAR(miss.point.norm(), std::hypot(u, w), 1e-6);
  EXPECT_NEAR(miss.point.z, w, 1e-6);
}

// Without an upper arm the circles have one centre: no crossing, or none that is a number.
TEST(ArmConditions, WithoutAnUpperArmTheFirstJointAndTheWristAreAllThatMoves) {
  const auto machine =
      fromText(squareWith([](Arm& a) { a.joints[2].point = a.joints[1].point; }), 1);
  const Solved solved = solve(*machine, {10, 20, 30, 40, 50, 60}, {370, 90, 700}, {1, 1, 1});
  EXPECT_EQ(solved.code, 0);
  EXPECT_NEAR(solved.values[0], 36.869897645844, 1e-9);
  EXPECT_EQ(solved.values[1], 20);
  EXPECT_EQ(solved.values[2], 30);
}

// --- The wrist and the tool on it

// The axes of the wrist miss each other by 20 mm: no ball joint, so the part is taken for the wrist
// and the whole arm's way is added to the point.
TEST(ArmConditions, WristAxesThatDoNotMeetMissThePoint) {
  Arm arm = squareArm(56);
  for (std::size_t i : {4u, 5u}) arm.joints[i].point.x += 20;
  arm.tool.point.x += 20;
  const auto machine = arm.load();
  ASSERT_EQ(machine->getKine(1).rotuleIndex, -1);
  const ToolPlace at = toolAt(*machine, {20, 30, 70, 0, 0, 0});
  for (const UVec3d& dir : manyDirections()) {
    EXPECT_GT(missFrom(*machine, kStart, at.point, dir).point.norm(), 1) << dir;
  }
}

// The tool line runs beside the last joint: the way from the point to the wrist centre, 10 mm, is
// added in the coordinates of the tool instead of the machine. So the wrist centre ends 10 mm from
// the target, in the same direction of the machine whatever the tool's, and the point is missed.
TEST(ArmConditions, ToolBesideTheLastJointIsMissed) {
  Arm arm = squareArm();
  arm.tool.point.x += 10;
  const auto machine = arm.load();
  const UVec3d pos = {400, 100, 600};
  UVec3d first;
  int missed = 0;
  for (const UVec3d& dir : manyDirections()) {
    const Solved solved = solve(*machine, kStart, pos, dir);
    const UVec3d centre = carried(*machine, solved.values, 4, {630, -150, 540}) - pos;
    if (first == UVec3d()) first = centre;
    EXPECT_NEAR(centre.norm(), 10, 1e-6);
    EXPECT_THAT(centre, Near(first, 1e-6));
    missed += missFrom(*machine, kStart, pos, dir).point.norm() > 0.5;
  }
  EXPECT_GT(missed, 20);
}

TEST(ArmConditions, ToolAcrossTheLastJointIsMissed) {
  Arm arm = squareArm(56);
  arm.tool.direction = UVec3d(1, 0, -1).normalised();
  const auto machine = arm.load();
  const ToolPlace at = toolAt(*machine, {20, 30, 70, 20, 40, 10});
  EXPECT_GT(missFrom(*machine, kStart, at.point, at.direction).point.norm(), 1);
}

// --- A tool point away from the wrist centre

struct OffsetArm {
  const char* name;
  Arm arm;
  double offset;  ///< From the tool point to the wrist centre, along the tool direction.
};

void PrintTo(const OffsetArm& row, std::ostream* out) { *out << row.name; }

Arm toolUpward(double offset) {
  Arm arm = squareArm(offset);
  arm.tool.direction = {0, 0, 1};
  return arm;
}

class OffsetTools : public testing::TestWithParam<OffsetArm> {};

// The offset is added to the target along the machine's Z instead of along the wanted direction n,
// so the wrist centre stands `offset` (z - n) from where it should, and the tool point too.
TEST_P(OffsetTools, MissByTheOffsetTimesNMinusZ) {
  const auto machine = GetParam().arm.load();
  const UVec3d pos = {400, 100, 600};
  for (const UVec3d& n : manyDirections()) {
    const Miss miss = missFrom(*machine, kStart, pos, n);
    EXPECT_THAT(miss.point, Near((kUp - n) * GetParam().offset, kPointMm)) << n;
    EXPECT_NEAR(miss.point.norm(), std::abs(GetParam().offset) * (n - kUp).norm(), kPointMm);
  }
}

INSTANTIATE_TEST_SUITE_P(Arms, OffsetTools,
                         testing::Values(OffsetArm{"Square", squareArm(56), 56},
                                         OffsetArm{"SquareOffsetBelow", squareArm(-30), -30},
                                         OffsetArm{"SquareToolUpward", toolUpward(56), -56},
                                         OffsetArm{"Puma560", pumaArm(56.25), 56.25},
                                         OffsetArm{"OrthoParallel", orthoParallelArm(85), 85},
                                         OffsetArm{"ReversedAxes", reversedArm(100), 100}),
                         [](const auto& row) { return std::string(row.param.name); });

/// Where the tip stands against the target: the tool point, a tool length back.
UVec3d tipMiss(const KMachine& machine, double length, const std::vector<double>& start,
               const UVec3d& pos, const UVec3d& dir) {
  machine.setTHELength(length, 1);
  const Miss miss = missFrom(machine, start, pos, dir);
  return miss.point - dir.normalised() * length;
}

// J4 with the sense of the tool at the start: the tool length goes where it should, for n = z.
TEST(ArmConditions, ToolLengthIsRightFromAStraightWristOfTheToolsSense) {
  const auto machine = reversedArm(56).load();
  const UVec3d pos = {400, 100, 600};
  EXPECT_THAT(tipMiss(*machine, 40, {25, 28, 75, 10, 0, 30}, pos, kUp), Near(UVec3d(), kPointMm));
}

// J4 against the tool: the length is taken off instead of added, so twice of it is missing.
TEST(ArmConditions, ToolLengthIsTakenOffWhereTheFourthJointPointsAgainstTheTool) {
  const auto machine = squareArm(56).load();
  const UVec3d pos = {400, 100, 600};
  EXPECT_THAT(tipMiss(*machine, 40, {25, 28, 75, 10, 0, 30}, pos, kUp), Near(kUp * -80, kPointMm));
}

// The length is turned by the wrist of the start: bent by b, it ends 2 L sin(b / 2) off.
TEST(ArmConditions, ToolLengthIsTurnedByTheWristOfTheStart) {
  const auto machine = reversedArm(56).load();
  const UVec3d pos = {400, 100, 600};
  for (const double bend : {-60.0, 30.0, 90.0}) {
    const UVec3d miss = tipMiss(*machine, 40, {25, 28, 75, 10, bend, 30}, pos, kUp);
    EXPECT_NEAR(miss.norm(), 80 * std::abs(std::sin(bend / 2 * kDegree)), 1e-6) << bend;
  }
}

// Length and offset together, any direction: with z4 the direction of J4 in the frame of the tool
// at the start, the wrist centre is put on pos + offset z + L z4.
TEST(ArmConditions, ToolLengthAndOffsetAddInTheFrameOfTheTool) {
  const auto machine = squareArm(56).load();
  const UVec3d pos = {400, 100, 600};
  const std::vector<double> start = {25, 28, 75, 10, 40, 30};
  machine->updateDHm(*positionOf(*machine, start), 1);
  zgeo::UMatrix wrist;
  for (const int element : {5, 6, -101}) {
    const KMachineElem* e = machine->getElemByIndex(element);
    wrist = wrist * KMachineElem::_transitionMatrix(e->getDHmCur());
  }
  UVec3d z4 = kUp;
  wrist.inverse().applyDir(z4);
  EXPECT_NEAR(z4.z, -std::cos(40 * kDegree), 1e-12);  // J5 bends them apart, J4 against the tool
  for (const UVec3d& n : manyDirections()) {
    const UVec3d miss = tipMiss(*machine, 40, start, pos, n);
    EXPECT_THAT(miss, Near(kUp * 56 + z4 * 40 - n * (56 + 40), kPointMm)) << n;
  }
}

// Two tools: the last joint keeps the offset of the last tool, 100. With the first, of 56, the
// point is missed by the difference, for n = z.
TEST(ArmConditions, TheWristOfTheLastToolCountsForAllTools) {
  const auto machine = fromText(squareArm(56).text() + "lien=J6\ntool=-z,630,-150,640\n", 1);
  ASSERT_EQ(machine->getToolNumber(), 2);
  const UVec3d pos = {400, 100, 600};
  EXPECT_THAT(missFrom(*machine, kStart, pos, kUp).point, Near(kUp * 44, kPointMm));

  machine->setCurrentTool(2);
  const Solved solved = solve(*machine, kStart, pos, kUp);
  EXPECT_THAT(toolAt(*machine, solved.values, 2).point, Near(pos, kPointMm));
}

// --- Turns of the joints

// No lateral offset and the wrist wanted in the plane y = 0: the first joint goes to 0, whatever
// its start and whichever side the target is on.
TEST(ArmConditions, InThePlaneOfZeroTheFirstJointLooksForward) {
  const auto machine = orthoParallelArm().load();
  for (const double start : {0.0, 100.0, 179.0, -170.0, 720.0}) {
    for (const double x : {1200.0, 600.0, -600.0, -1200.0}) {
      const Solved solved = solve(*machine, {start, 0, 0, 0, 0, 0}, {x, 0, 700}, {1, 2, 3});
      EXPECT_NEAR(solved.values[0], 0, 1e-12) << start << ", x " << x;
      const Miss miss = missOf(*machine, solved, {x, 0, 700}, {1, 2, 3});
      EXPECT_LE(miss.point.norm(), kPointMm) << start << ", x " << x;
    }
  }
}

// Looking forward the shoulder, at radius 100, stands further from what is behind: out of reach
// there although it could be reached looking back. Reach 705 + 766.97 = 1471.97.
TEST(ArmConditions, InThePlaneOfZeroTheFarthestBehindIsMissed) {
  const auto machine = orthoParallelArm().load();
  const std::vector<double> start = {175, 10, 10, 0, 0, 0};
  EXPECT_LE(missFrom(*machine, start, {1400, 0, 615}, {1, 2, 3}).point.norm(), kPointMm);
  EXPECT_LE(missFrom(*machine, start, {-1371, 0, 615}, {1, 2, 3}).point.norm(), kPointMm);
  EXPECT_GT(missFrom(*machine, start, {-1400, 0, 615}, {1, 2, 3}).point.norm(), 1);
  // A hundredth of a millimetre beside the plane it looks back and reaches.
  EXPECT_LE(missFrom(*machine, start, {-1400, 0.01, 615}, {1, 2, 3}).point.norm(), kPointMm);
}

// With a lateral offset the same happens on the line of that offset: of its two solutions, a half
// turn from zero and 2 atan(300 / 2x), only the second is known there. With the wrist 400 up and
// 350 out, looking back from -400 reaches it; at 680 out, level, it would have to reach 730 of 700.
TEST(ArmConditions, OnTheLineOfTheLateralOffsetAHalfTurnIsNeverTaken) {
  const auto machine = squareArm().load();
  const std::vector<double> start = {179, 10, 10, 0, 0, 0};
  const Solved near = solve(*machine, start, {-350, 150, 700}, {1, 2, 3});
  EXPECT_NEAR(near.values[0], -46.397181027296, 1e-9);
  EXPECT_LE(missOf(*machine, near, {-350, 150, 700}, {1, 2, 3}).point.norm(), kPointMm);
  EXPECT_GT(missFrom(*machine, start, {-680, 150, 300}, {1, 2, 3}).point.norm(), 1);
  // A hundredth of a millimetre beside the line both are known, and the nearer one reaches.
  EXPECT_LE(missFrom(*machine, start, {-680, 150.01, 300}, {1, 2, 3}).point.norm(), kPointMm);
}

// Straight over the first axis any turn of it will do: it stays.
TEST(ArmConditions, OverTheFirstAxisTheFirstJointStays) {
  const auto machine = orthoParallelArm().load();
  for (const double start : {0.0, 100.0, -170.0, 720.0}) {
    const Solved solved = solve(*machine, {start, -30, 10, 0, 20, 0}, {0, 0, 1800}, {1, 2, 3});
    EXPECT_EQ(solved.values[0], start);
    EXPECT_LE(missOf(*machine, solved, {0, 0, 1800}, {1, 2, 3}).point.norm(), kPointMm);
  }
}

// The branch of the first joint is the nearer one, even where only the other brings the shoulder
// near enough.
TEST(ArmConditions, TheNearerBranchOfTheFirstJointIsTakenEvenOutOfReach) {
  const auto machine = orthoParallelArm().load();
  const UVec3d pos = {0, 1400, 615};
  const Miss forward = missFrom(*machine, {80, 10, 10, 0, 0, 0}, pos, {1, 2, 3});
  EXPECT_LE(forward.point.norm(), kPointMm);
  const Solved back = solve(*machine, {-80, 10, 10, 0, 0, 0}, pos, {1, 2, 3});
  EXPECT_NEAR(back.values[0], -90, 1e-9);
  EXPECT_EQ(back.values[1], 10);
  EXPECT_EQ(back.values[2], 10);
}

}  // namespace
}  // namespace korvo::test::arm
