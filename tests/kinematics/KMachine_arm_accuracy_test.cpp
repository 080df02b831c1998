#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/kinematics/KMachine_arm.h"

// How well the arm solver solves: random targets in reach, from random starts, and what it misses.
// A second, plain geometry of the arm says beforehand what it has to come to: the plane of the arm
// from the two lines at its lateral distance from the first axis, then the triangle of upper arm
// and forearm. Shares and errors are printed and recorded beside the result.

namespace korvo::test::arm {
namespace {

/// An arm as the triangle that it is: numbers of its own, not those of the library.
struct Triangle {
  double radius;    ///< Of the shoulder, from the first axis.
  double height;    ///< Of the shoulder.
  double lateral;   ///< Of the wrist from the plane through the first axis, to the left.
  double upperArm;  ///< Shoulder to elbow.
  double forearm;   ///< Elbow to wrist.

  double longest() const { return upperArm + forearm; }
  double shortest() const { return std::abs(upperArm - forearm); }

  /// A point `rho` out and `z` up in the plane of the arm, the first axis turned.
  UVec3d at(double theta, double rho, double z) const {
    return {rho * std::cos(theta) - lateral * std::sin(theta),
            rho * std::sin(theta) + lateral * std::cos(theta), z};
  }

  /// The distance of the wrist centre from the shoulder with the first axis at its solution nearer
  /// to `start` (degrees); nothing where both are within 1e-6 degrees of equally near, or where
  /// there is no such plane.
  std::optional<double> reachFrom(double start, const UVec3d& p) const {
    const double q = p.x * p.x + p.y * p.y - lateral * lateral;
    if (q < 1e-9) return {};
    double reach[2], away[2];
    for (int i = 0; i < 2; ++i) {
      const double rho = i ? -std::sqrt(q) : std::sqrt(q);
      const double theta = std::atan2(p.y, p.x) - std::atan2(lateral, rho);
      away[i] = std::abs(std::remainder(theta / kDegree - start, 360));
      reach[i] = std::hypot(rho - radius, p.z - height);
    }
    if (std::abs(away[0] - away[1]) < 1e-6) return {};
    return reach[away[0] < away[1] ? 0 : 1];
  }

  bool holds(double reach) const { return shortest() < reach && reach < longest(); }
  bool isOnEdge(double reach) const {
    return std::min(std::abs(reach - shortest()), std::abs(reach - longest())) < 1e-6;
  }
};

struct SampledArm {
  const char* name;
  Arm (*make)(double offset);
  Triangle triangle;
  double stretched;  ///< The third joint's value, in degrees, with the elbow straight.
};

void PrintTo(const SampledArm& row, std::ostream* out) { *out << row.name; }

// PUMA: forearm 20.3 out and 431.8 up. Ortho-parallel: 755 out, 135 up, elbow square at zero; its
// joints turn down. Reversed: 60 out and 500 up, joints turn down.
const SampledArm kArms[] = {
    {"Puma560",
     pumaArm,
     {0, 671.83, -150.05, 431.8, std::hypot(20.3, 431.8)},
     -std::atan2(431.8, 20.3) / kDegree},
    {"OrthoParallel",
     orthoParallelArm,
     {100, 615, 0, 705, std::hypot(755, 135)},
     -std::atan2(755, 135) / kDegree},
    {"ReversedAxes",
     reversedArm,
     {120, 400, 80, 560, std::hypot(60, 500)},
     std::atan2(500, 60) / kDegree},
};

/// One row of the table: what was tried, what came of it.
struct Row {
  int tried = 0, solved = 0, outOfReach = 0;
  double point = 0, direction = 0;

  void print(const char* arm, const char* targets) const {
    char text[200];
    std::snprintf(text, sizeof text,
                  "%-14s %-26s tried %6d, solved %6d (%7.3f %%), largest error %.1e mm, %.1e rad",
                  arm, targets, tried, solved, 100.0 * solved / tried, point, direction);
    std::cout << text << "\n";
    testing::Test::RecordProperty("accuracy", text);
  }
};

constexpr double kSolvedMm = 1e-4;  // see kRandomMm

// A joint angle is the arc cosine of a quotient with a few roundings, e = 4 * 1.1e-16: near a
// straight or folded arm it is off by up to sqrt(2 e) = 3e-8 rad, which moves a wrist 1.5 m away by
// 4.5e-5 mm. The wrist is turned afterwards, by what the arm really is: its error is a few
// roundings.
constexpr double kRandomMm = 4.5e-5;
constexpr double kRandomRad = 1e-11;

class ArmAccuracy : public testing::TestWithParam<SampledArm> {
 protected:
  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
  double angle() { return uniform(-180, 180); }
  /// 10 to a random power, either sign.
  double tiny(double low, double high) {
    return (uniform(-1, 1) < 0 ? -1 : 1) * std::pow(10, uniform(low, high));
  }
  UVec3d direction() {
    const double z = uniform(-1, 1), phi = angle() * kDegree, r = std::sqrt(1 - z * z);
    return {r * std::cos(phi), r * std::sin(phi), z};
  }

  void randomise(zkin::KMachineValueBase& v) {
    for (int i = 0; i < 6; ++i) v[i] = angle();
  }

  /// Solves from `start` and adds to the row; whether the target was reached.
  bool solveInto(Row& row, const UVec3d& pos, const UVec3d& dir) {
    EXPECT_EQ(machine->getConfigPlus(*start, pos, dir, *out), 0);
    machine->getTool(*out, point, reached, 1);
    const double pointError = (point - pos).norm(), angleError = angleBetween(reached, dir);
    row.direction = std::max(row.direction, angleError);
    ++row.tried;
    if (!(pointError < kSolvedMm)) return false;
    row.point = std::max(row.point, pointError);
    ++row.solved;
    return true;
  }

  const Triangle& triangle = GetParam().triangle;
  std::unique_ptr<KMachine> machine = GetParam().make(0).load();
  const Position start = positionOf(*machine), at = positionOf(*machine),
                 out = positionOf(*machine);
  UVec3d point, reached;
  std::mt19937_64 random{20240229};
};

// The targets are where the arm stands at random positions. All are solved but those whose nearer
// solution of the first joint puts the shoulder too far from the target, or too near: the solver
// takes the nearer one unseen.
TEST_P(ArmAccuracy, RandomTargets) {
  Row row;
  for (int i = 0; i < 60000; ++i) {
    randomise(*at), randomise(*start);
    UVec3d pos, dir;
    machine->getTool(*at, pos, dir, 1);
    const auto reach = triangle.reachFrom((*start)[0], pos);
    const bool isSolved = solveInto(row, pos, dir);
    if (!reach || triangle.isOnEdge(*reach)) continue;
    row.outOfReach += !triangle.holds(*reach);
    EXPECT_EQ(isSolved, triangle.holds(*reach)) << pos << " from J1 " << (*start)[0];
  }
  row.print(GetParam().name, "random positions");
  EXPECT_NEAR(row.solved, row.tried - row.outOfReach, 3);  // the undecided ones
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
  // A shoulder on the first axis is equally far from both sides.
  if (triangle.radius == 0) {
    EXPECT_EQ(row.outOfReach, 0);
  }
}

// The same from starts that look towards the target: the first joint within a quarter turn.
TEST_P(ArmAccuracy, RandomTargetsBeforeTheArm) {
  Row row;
  for (int i = 0; i < 20000; ++i) {
    randomise(*at), randomise(*start);
    UVec3d pos, dir;
    machine->getTool(*at, pos, dir, 1);
    (*start)[0] = (*at)[0];
    solveInto(row, pos, dir);
  }
  row.print(GetParam().name, "first joint as at target");
  EXPECT_EQ(row.solved, row.tried);
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
}

// A straight wrist: one of its turns is free.
TEST_P(ArmAccuracy, StraightWrist) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*at), randomise(*start);
    (*at)[4] = i % 2 ? 0.0 : tiny(-15, -1);
    (*start)[0] = (*at)[0];
    if (i % 3 == 0) (*start)[4] = 0.0;
    UVec3d pos, dir;
    machine->getTool(*at, pos, dir, 1);
    solveInto(row, pos, dir);
  }
  row.print(GetParam().name, "straight wrist");
  EXPECT_EQ(row.solved, row.tried);
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
}

// Elbow near straight, 1e-5 degrees and more: the circles still cross for certain.
TEST_P(ArmAccuracy, ElbowNearStraight) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*at), randomise(*start);
    (*at)[2] = GetParam().stretched + tiny(-5, 0);
    (*start)[0] = (*at)[0];
    UVec3d pos, dir;
    machine->getTool(*at, pos, dir, 1);
    solveInto(row, pos, dir);
  }
  row.print(GetParam().name, "elbow near straight");
  EXPECT_EQ(row.solved, row.tried);
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
}

// Elbow straight to the last digit: rounding decides whether the circles meet. Where they do not,
// the second and third joints stay; that is the class of targets in reach that the formulas miss.
TEST_P(ArmAccuracy, ElbowStraight) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*at), randomise(*start);
    (*at)[2] = GetParam().stretched;
    (*start)[0] = (*at)[0];
    UVec3d pos, dir;
    machine->getTool(*at, pos, dir, 1);
    if (solveInto(row, pos, dir)) continue;
    EXPECT_EQ((*out)[1], (*start)[1]);
    EXPECT_EQ((*out)[2], (*start)[2]);
  }
  row.print(GetParam().name, "elbow straight");
  EXPECT_GE(row.solved, row.tried / 10);
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
}

// The wrist near the first axis, or with a lateral offset near the circle that it cannot enter: the
// two solutions of the first joint come together. 1e-4 mm off they are still told apart.
TEST_P(ArmAccuracy, WristNearTheFirstAxis) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*start);
    const double w = uniform(0.6, 0.9) * triangle.longest();
    const UVec3d pos = triangle.at(angle() * kDegree, tiny(-4, 0), triangle.height + w);
    solveInto(row, pos, direction());
  }
  row.print(GetParam().name, "wrist near first axis");
  EXPECT_EQ(row.solved, row.tried);
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
}

// On it to the last digit. Without a lateral offset any turn of the first joint will do, and it
// stays. With one, rounding decides whether there is a solution: where the discriminant, 1e-11 of
// mm^2 or so, comes out below zero the first joint stays, and the point is missed by that.
TEST_P(ArmAccuracy, WristOverTheFirstAxis) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*start);
    const double w = uniform(0.6, 0.9) * triangle.longest();
    const UVec3d pos = triangle.at(angle() * kDegree, 0, triangle.height + w);
    if (!solveInto(row, pos, direction())) {
      EXPECT_EQ((*out)[0], (*start)[0]);
    }
  }
  row.print(GetParam().name, "wrist over first axis");
  if (triangle.lateral == 0) {
    EXPECT_EQ(row.solved, row.tried);
  }
  EXPECT_LE(row.direction, kRandomRad);
}

// The same from a first joint that stands right: it makes no difference whether it stays.
TEST_P(ArmAccuracy, WristOverTheFirstAxisThatStandsRight) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*start);
    const double w = uniform(0.6, 0.9) * triangle.longest();
    const UVec3d pos = triangle.at((*start)[0] * kDegree, 0, triangle.height + w);
    solveInto(row, pos, direction());
  }
  row.print(GetParam().name, "the same, standing right");
  EXPECT_EQ(row.solved, row.tried);
  EXPECT_LE(row.point, kRandomMm);
  EXPECT_LE(row.direction, kRandomRad);
}

// Beyond the longest reach: the first joint turns to the nearer side, the next two stay as they
// are, and the direction is reached.
TEST_P(ArmAccuracy, OutOfReachLeavesTheElbow) {
  Row row;
  for (int i = 0; i < 5000; ++i) {
    randomise(*start);
    const double r = uniform(1.01, 3) * (triangle.longest() + triangle.radius);
    const double elevation = uniform(-1.4, 1.4), theta = angle();
    const UVec3d pos = triangle.at(theta * kDegree, r * std::cos(elevation),
                                   triangle.height + r * std::sin(elevation));
    EXPECT_FALSE(solveInto(row, pos, direction()));
    EXPECT_EQ((*out)[1], (*start)[1]);
    EXPECT_EQ((*out)[2], (*start)[2]);
    EXPECT_LE(std::abs((*out)[0] - (*start)[0]), 180 + 1e-9);
  }
  row.print(GetParam().name, "out of reach");
  EXPECT_EQ(row.solved, 0);
  EXPECT_LE(row.direction, kRandomRad);
}

// With a flange: the wrist centre is wanted at the target plus the offset along the machine's Z. If
// that is in reach the point is missed by the offset times (z - n), else the elbow stays.
TEST_P(ArmAccuracy, FlangeOffsetMissesByItsPrediction) {
  constexpr double kOffset = 85;
  machine = GetParam().make(kOffset).load();
  Row row;
  int outside = 0;
  double largest = 0;
  for (int i = 0; i < 10000; ++i) {
    randomise(*at), randomise(*start);
    UVec3d pos, n;
    machine->getTool(*at, pos, n, 1);
    const UVec3d centre = pos + kUp * kOffset;
    const auto reach = triangle.reachFrom((*start)[0], centre);
    if (!reach || triangle.isOnEdge(*reach)) continue;
    solveInto(row, pos, n);
    const UVec3d predicted = pos + (kUp - n) * kOffset;
    if (triangle.holds(*reach)) {
      largest = std::max(largest, (point - predicted).norm());
      EXPECT_LE((point - predicted).norm(), kRandomMm) << pos << n;
    } else {
      ++outside;
      EXPECT_EQ((*out)[1], (*start)[1]);
      EXPECT_EQ((*out)[2], (*start)[2]);
    }
  }
  char text[200];
  std::snprintf(text, sizeof text,
                "%-14s flange 85 mm: tried %d, wrist wanted out of reach %d, largest difference "
                "from the predicted miss %.1e mm, direction %.1e rad",
                GetParam().name, row.tried, outside, largest, row.direction);
  std::cout << text << "\n";
  RecordProperty("accuracy", text);
  EXPECT_GT(row.tried, 8500);  // the others are wanted inside the lateral offset
  EXPECT_LT(outside, row.tried / 2);
  EXPECT_LE(row.direction, kRandomRad);
}

INSTANTIATE_TEST_SUITE_P(Arms, ArmAccuracy, testing::ValuesIn(kArms),
                         [](const auto& arm) { return std::string(arm.param.name); });

// --- Published poses of the PUMA 560 (robotics-toolbox-python, P. Corke, MIT licence), joints in
//     degrees; all inverse solutions of two of them were computed independently.

using Joints = std::vector<double>;

/// Standard Denavit-Hartenberg, in mm.
reference::Pose puma(const Joints& q) {
  constexpr double parameters[6][3] = {{671.83, 0, 90}, {0, 431.8, 0}, {150.05, 20.3, -90},
                                       {431.8, 0, 90},  {0, 0, -90},   {0, 0, 0}};
  reference::Pose t;
  for (std::size_t i = 0; i < 6; ++i) {
    const auto& [d, a, alpha] = parameters[i];
    t = t * reference::rz(q[i]) * reference::shift(a, 0, d) * reference::rx(alpha);
  }
  return t;
}

// Joints are printed to 5e-7 degrees; the wrist angles take the errors of the others over sin(J5).
constexpr double kPrintedDegrees = 1e-5;

class PumaInverse : public testing::TestWithParam<Joints> {};

TEST_P(PumaInverse, FindsThePublishedSolutionFromBesideIt) {
  const Joints& q = GetParam();
  const auto machine = pumaArm().load();
  const reference::Pose pose = puma(q);
  Joints start = q;
  for (double& joint : start) joint += 3;
  const Solved solved = solve(*machine, start, pose.column(3), pose.column(2) * -1);
  EXPECT_EQ(solved.code, 0);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_NEAR(std::remainder(solved.values[i] - q[i], 360), 0, kPrintedDegrees) << "J" << i + 1;
  }
  EXPECT_EQ(solved.values[5], start[5]);  // turns about the tool: not asked for
}

INSTANTIATE_TEST_SUITE_P(
    AllOfTheNormalPose, PumaInverse,
    testing::Values(Joints{0, 45, 180, 0, 45, 0}, Joints{0, 45, 180, 180, -45, 180},
                    Joints{0, -47.757927, 5.383273, 180, 47.625346, 180},
                    Joints{0, -47.757927, 5.383273, 0, -47.625346, 0},
                    Joints{151.751379, -132.242073, 180, 38.632611, 49.296731, 152.471211},
                    Joints{151.751379, -132.242073, 180, -141.367389, -49.296731, -27.528789},
                    Joints{151.751379, 135, 5.383273, 145.104967, 55.826119, 21.394220},
                    Joints{151.751379, 135, 5.383273, -34.895033, -55.826119, -158.605780}));

INSTANTIATE_TEST_SUITE_P(
    AllOfAGeneralPose, PumaInverse,
    testing::Values(Joints{20, 62.323728, -114.616727, 31.100866, 72.413501, -51.989235},
                    Joints{20, 62.323728, -114.616727, -148.899134, -72.413501, 128.010765},
                    Joints{20, 35, -60, 40, 50, -70}, Joints{20, 35, -60, -140, -50, 110},
                    Joints{169.721255, 145, -114.616727, -125.694298, 43.245667, -51.670023},
                    Joints{169.721255, 145, -114.616727, 54.305702, -43.245667, 128.329977},
                    Joints{169.721255, 117.676272, -60, -141.086777, 62.352511, -26.810052},
                    Joints{169.721255, 117.676272, -60, 38.913223, -62.352511, 153.189948}));

/// Wrist centre (mm) and end direction as published; the tool looks from the tip back.
struct Published {
  const char* name;
  UVec3d centre;
  UVec3d end;
  bool isInReachWithFlange;
};

// Metres to 7 and 9 decimals. With the flange the wrist is wanted 56.25 (z - n) from where it is:
// upwards, for qr, qs (863.8 from the shoulder already, of 864.08 in all) and the general pose
// (839, to 915) beyond reach.
const Published kPublished[] = {
    {"qz", {452.1, -150.05, 1103.63}, {0, 0, 1}, true},
    {"qr", {20.3, -150.05, 1535.43}, {0, 0, 1}, false},
    {"qs", {863.6, -150.05, 651.53}, {1, 0, 0}, false},
    {"qn", {596.3031, -150.05, 657.4757}, {1, 0, 0}, true},
    {"general",
     {572.468450, 48.681601, 1302.264857},
     {-0.07608607, -0.551698325, 0.830565992},
     false},
};

TEST(PumaPoses, AreReachedWithTheToolPointInTheWristCentre) {
  const auto machine = pumaArm().load();
  for (const Published& row : kPublished) {
    const Solved solved = solve(*machine, {5, 40, -95, 5, 10, 0}, row.centre, row.end * -1);
    const Miss miss = missOf(*machine, solved, row.centre, row.end * -1);
    EXPECT_LE(miss.point.norm(), kRandomMm) << row.name;
    EXPECT_LE(miss.direction, 1e-9) << row.name;
  }
}

TEST(PumaPoses, AreMissedByTheirPredictionWithAFlange) {
  constexpr double kFlange = 56.25;
  const auto machine = pumaArm(kFlange).load();
  for (const Published& row : kPublished) {
    const UVec3d n = row.end * -1;
    const UVec3d pos = row.centre - n.normalised() * kFlange;
    const Solved solved = solve(*machine, {5, 40, -95, 5, 10, 0}, pos, n);
    const Miss miss = missOf(*machine, solved, pos, n);
    EXPECT_LE(miss.direction, 1e-9) << row.name;
    if (row.isInReachWithFlange) {
      EXPECT_THAT(miss.point, Near((kUp - n.normalised()) * kFlange, kRandomMm)) << row.name;
    } else {
      EXPECT_EQ(solved.values[1], 40) << row.name;
      EXPECT_EQ(solved.values[2], -95) << row.name;
    }
  }
}

// The flange does no harm where the tool looks up.
TEST(PumaPoses, AreReachedWithAFlangeWhereTheToolLooksUp) {
  const auto machine = pumaArm(56.25).load();
  for (const Published& row : kPublished) {
    const UVec3d pos = row.centre - kUp * 56.25;
    const Solved solved = solve(*machine, {5, 40, -95, 5, 10, 0}, pos, kUp);
    EXPECT_LE(missOf(*machine, solved, pos, kUp).point.norm(), kRandomMm) << row.name;
  }
}

}  // namespace
}  // namespace korvo::test::arm
