#include "platform/rotations/ThreeAxes.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "tests/rotations/TurningPoints.h"

namespace korvo::rotations {
namespace {

using namespace test;

constexpr double kDegree = kPi / 180;
constexpr double kResidual = 1e-12;  ///< Of the size.

/// Every triple leads to the target, no angle is out of (-pi, pi], and none stands twice.
void expectSolved(const Arm& arm, const Vec3& to, int count) {
  const ThreeAnglesList found = arm.to(to);
  EXPECT_EQ(found.count, count);
  EXPECT_EQ(found.reach, Reach::reached);
  for (const ThreeAngles& t : found) {
    EXPECT_LE(arm.miss(t, to), kResidual * arm.size()) << testing::PrintToString(t);
    for (const double a : {t.a1, t.a2, t.a3}) {
      EXPECT_TRUE(a == kFreeAngle || (a > -kPi && a <= kPi)) << a;
    }
  }
}

// --- By hand

TEST(ThreeAxes, TwoEqualLinksAtARightAngleReachFourWays) {
  // Links of 100 mm over line 1; the point 100 mm ahead and 100 mm up from line 2.
  const Arm arm = usualArm(0, 0, 100, 100);
  const Vec3 to = {100, 0, 500};
  expectSolved(arm, to, 4);
  const ThreeAnglesList found = arm.to(to);
  // Upright, then bent ahead; ahead, then bent up; the same behind with half a turn of the first.
  EXPECT_TRUE(has(found, 0, 0, kPi / 2, 1e-14));
  EXPECT_TRUE(has(found, 0, kPi / 2, -kPi / 2, 1e-14));
  EXPECT_TRUE(has(found, kPi, 0, -kPi / 2, 1e-14));
  EXPECT_TRUE(has(found, kPi, -kPi / 2, kPi / 2, 1e-14));
}

TEST(ThreeAxes, TheOrderIsShoulderThenElbow) {
  const ThreeAnglesList found = usualArm(50, 30, 300, 400, 35).to({250, 300, 500});
  ASSERT_EQ(found.count, 4);
  const int expected[4][2] = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(found.solutions[i].shoulder, expected[i][0]);
    EXPECT_EQ(found.solutions[i].elbow, expected[i][1]);
  }
}

TEST(ThreeAxes, TheElbowsSignIsThatOfItsBend) {
  // direction 2 is Y: positive turns bend the upright arm ahead, to +X.
  const ThreeAnglesList found = usualArm(0, 0, 100, 100).to({100, 0, 500});
  for (const ThreeAngles& t : found) EXPECT_EQ(t.elbow, t.a3 > 0 ? 1 : -1);
}

TEST(ThreeAxes, TheShouldersSignIsTheSideOfTheNormal) {
  // Z x Y is -X: the first root has the point behind line 1 before the first turn.
  for (const ThreeAngles& t : usualArm(0, 0, 100, 100).to({100, 0, 500})) {
    EXPECT_EQ(t.shoulder, std::cos(t.a1) > 0 ? -1 : 1);
    EXPECT_NEAR(t.shoulderMm, 100, 1e-11);
  }
}

TEST(ThreeAxes, ElbowsStandNextToWhereTheyFold) {
  for (const ThreeAngles& t : usualArm(0, 0, 100, 100).to({100, 0, 500})) {
    EXPECT_NEAR(t.elbowRad, kPi / 2, 1e-14);
  }
  // Links 3 and 4 bent by 30 degrees from stretched, and from folded.
  const Arm arm = usualArm(0, 0, 3, 4);
  for (const double bend : {30.0, 150.0}) {
    for (const ThreeAngles& t : arm.to(arm.at(1, 0.5, bend * kDegree))) {
      EXPECT_NEAR(t.elbowRad, 30 * kDegree, 1e-13);
    }
  }
}

TEST(ThreeAxes, TheDistanceFromTheFirstLineIsTold) {
  EXPECT_NEAR(usualArm(0, 0, 300, 400).to({30, 40, 700}).fromAxis1Mm, 50, 1e-12);
  const Arm skew{{0, 0, 9}, {{0, 0, 1}, {}}, {{0, 1, 0}, {1, 0, 4}}, {{0, 1, 1}, {1, 0, 7}}};
  EXPECT_NEAR(skew.to(skew.at(1, 2, 3)).fromAxis1Mm,
              std::hypot(skew.at(1, 2, 3)[0], skew.at(1, 2, 3)[1]), 1e-12);
}

TEST(ThreeAxes, AreTheSameWithAPreparedSolver) {
  const Arm arm = usualArm(50, 30, 300, 400, 35);
  const ThreeAxes solver = arm.solver();
  for (const Vec3& to : {Vec3{250, 300, 500}, Vec3{-250, 300, 700}, Vec3{100, 100, 100}}) {
    const ThreeAnglesList a = solver.solve(to), b = arm.to(to);
    ASSERT_EQ(a.count, b.count);
    for (int i = 0; i < a.count; ++i) {
      EXPECT_EQ(a.solutions[i].a1, b.solutions[i].a1);
      EXPECT_EQ(a.solutions[i].a2, b.solutions[i].a2);
      EXPECT_EQ(a.solutions[i].a3, b.solutions[i].a3);
    }
  }
}

// --- The PUMA 560 of Paul and Zhang, Computationally Simple Kinematics for Robot Manipulators with
// Spherical Wrists, 1986, with the dimensions, poses and solutions of robotics-toolbox-python,
// where they are in metres.

/// The wrist is 20.3 mm ahead of line 3, 150.05 mm beside it and 431.8 mm above.
const Arm kPuma{{431.8 + 20.3, -150.05, 671.83 + 431.8},
                {{0, 0, 1}, {0, 0, 0}},
                {{0, -1, 0}, {0, 0, 671.83}},
                {{0, -1, 0}, {431.8, 0, 671.83}}};

struct Pose {
  const char* name;
  double degrees[3];
  Vec3 wrist;
};

/// Denavit-Hartenberg: (d, a, alpha) = (671.83, 0, 90), (0, 431.8, 0), (150.05, 20.3, -90), then
/// 431.8 along the fourth axis, which at zero is upright.
Vec3 pumaWrist(const double (&q)[3]) {
  const double a = q[0] * kDegree, b = q[1] * kDegree, c = (q[1] + q[2]) * kDegree;
  const double out = 431.8 * std::cos(b) + 20.3 * std::cos(c) - 431.8 * std::sin(c);
  const double up = 671.83 + 431.8 * std::sin(b) + 20.3 * std::sin(c) + 431.8 * std::cos(c);
  return {out * std::cos(a) + 150.05 * std::sin(a), out * std::sin(a) - 150.05 * std::cos(a), up};
}

class Puma560 : public testing::TestWithParam<Pose> {};

TEST_P(Puma560, WristIsWhereItIsPublished) {
  const auto& [name, q, wrist] = GetParam();
  const Vec3 at = kPuma.at(q[0] * kDegree, q[1] * kDegree, q[2] * kDegree);
  EXPECT_LE(largestDifference(at, wrist), 1e-4);
  EXPECT_LE(largestDifference(at, pumaWrist(q)), 1e-11);
}

TEST_P(Puma560, WristIsReached) {
  const auto& [name, q, wrist] = GetParam();
  const ThreeAnglesList found = kPuma.to(pumaWrist(q));
  ASSERT_GE(found.count, 1);
  EXPECT_TRUE(has(found, q[0] * kDegree, q[1] * kDegree, q[2] * kDegree, 1e-7));
  for (const ThreeAngles& t : found) {
    EXPECT_LE(kPuma.miss(t, pumaWrist(q)), kResidual * kPuma.size());
  }
}

// Positions of the end, which is the wrist.
INSTANTIATE_TEST_SUITE_P(
    ThreeAxes, Puma560,
    testing::Values(Pose{"Zero", {0, 0, 0}, {452.1, -150.05, 1103.63}},
                    Pose{"Ready", {0, 90, -90}, {20.3, -150.05, 1535.43}},
                    Pose{"Stretched", {0, 0, -90}, {863.6, -150.05, 651.53}},
                    Pose{"Nominal", {0, 45, 180}, {596.3031, -150.05, 657.4757}},
                    Pose{"General", {20, 35, -60}, {572.46845, 48.681601, 1302.264857}}),
    [](const auto& row) { return std::string(row.param.name); });

void expectPublished(const double (&q)[3], const double (&all)[4][3]) {
  const ThreeAnglesList found = kPuma.to(pumaWrist(q));
  EXPECT_EQ(found.count, 4);
  for (const auto& s : all) {
    // Published to a millionth of a degree.
    EXPECT_TRUE(has(found, s[0] * kDegree, s[1] * kDegree, s[2] * kDegree, 2e-8)) << s[0];
  }
}

TEST(Puma560, NominalPoseHasItsFourPublishedArms) {
  expectPublished({0, 45, 180}, {{0, 45, 180},
                                 {0, -47.757927, 5.383273},
                                 {151.751379, -132.242073, 180},
                                 {151.751379, 135, 5.383273}});
}

TEST(Puma560, GeneralPoseHasItsFourPublishedArms) {
  expectPublished({20, 35, -60}, {{20, 62.323728, -114.616727},
                                  {20, 35, -60},
                                  {169.721255, 145, -114.616727},
                                  {169.721255, 117.676272, -60}});
}

// --- Shapes

struct Shape {
  const char* name;
  Arm (*make)(Dice&);
};

Arm anyUsual(Dice& d) {
  Arm arm = usualArm(d.between(-100, 200), d.between(-150, 150), d.between(100, 500),
                     d.between(100, 500), d.between(-100, 100));
  if (d.coin()) arm.l3.direction = scaled(arm.l3.direction, -3.0);
  if (d.coin()) arm.l2.point = plus(arm.l2.point, {0, 77, 0});
  return arm;
}

Arm anyPlaced(Dice& d) { return placed(anyUsual(d), d.direction(), d.angle(), d.point(3000)); }

/// Line 2 leans, line 3 with it.
Arm anyLeaning(Dice& d) {
  Arm arm = anyUsual(d);
  arm.l2.direction = tilted(arm.l2.direction, d.between(0, 1.4), d);
  arm.l3.direction = arm.l2.direction;
  return arm;
}

Arm anyScara(Dice& d) {
  const Vec3 up = d.direction();
  return {
      d.point(500), {up, d.point(500)}, {scaled(up, d.coin() ? 1 : -2), d.point(500)}, d.line(500)};
}

/// Lines 1 and 2 meet.
Arm anySphericalShoulder(Dice& d) {
  const Vec3 centre = d.point(500);
  return {d.point(500), {d.direction(), centre}, {d.direction(), centre}, d.line(500)};
}

Arm anySkew(Dice& d) { return {d.point(500), d.line(500), d.line(500), d.line(500)}; }

/// As machines are measured: nothing is quite parallel, nothing quite meets.
Arm nearlyUsual(double angle, Dice& d) {
  Arm arm = anyUsual(d);
  arm.l1.direction = tilted(arm.l1.direction, angle, d);
  arm.l3.direction = tilted(arm.l3.direction, angle, d);
  return arm;
}
Arm nearlyUsual02(Dice& d) { return nearlyUsual(0.02, d); }
Arm nearlyUsual002(Dice& d) { return nearlyUsual(0.002, d); }
Arm nearlyUsual1e6th(Dice& d) { return nearlyUsual(1e-6, d); }
Arm nearlyUsual1e10th(Dice& d) { return nearlyUsual(1e-10, d); }
Arm nearlyUsual1e12th(Dice& d) { return nearlyUsual(1e-12, d); }

Arm nearlyScara(Dice& d) {
  Arm arm = anyScara(d);
  arm.l2.direction = tilted(arm.l2.direction, 0.002, d);
  return arm;
}

Arm nearlySpherical(Dice& d) {
  Arm arm = anySphericalShoulder(d);
  arm.l2.point = plus(arm.l2.point, d.point(1e-3));
  return arm;
}

class Shapes : public testing::TestWithParam<Shape> {};

TEST_P(Shapes, TheTripleThatMadeThePointIsAmongTheAnswers) {
  Dice dice(7);
  int lost = 0, wrong = 0;
  double worst = 0;
  for (int i = 0; i < 10000; ++i) {
    const Arm arm = GetParam().make(dice);
    const double a1 = dice.angle(), a2 = dice.angle(), a3 = dice.angle();
    const Vec3 to = arm.at(a1, a2, a3);
    const ThreeAnglesList found = arm.to(to);
    lost += !has(found, a1, a2, a3, 1e-5);
    for (const ThreeAngles& t : found) {
      const double miss = arm.miss(t, to) / arm.size();
      worst = std::max(worst, miss);
      wrong += !(miss <= kResidual);
    }
  }
  EXPECT_EQ(lost, 0);
  EXPECT_EQ(wrong, 0) << worst;
}

TEST_P(Shapes, NumbersOfSolutionsAreEvenOffTheFolds) {
  Dice dice(11);
  int odd = 0;
  for (int i = 0; i < 2000; ++i) {
    const Arm arm = GetParam().make(dice);
    const ThreeAnglesList found = arm.to(arm.at(dice.angle(), dice.angle(), dice.angle()));
    odd += found.count % 2 != 0;
  }
  EXPECT_EQ(odd, 0);
}

INSTANTIATE_TEST_SUITE_P(ThreeAxes, Shapes,
                         testing::Values(Shape{"Usual", anyUsual}, Shape{"Placed", anyPlaced},
                                         Shape{"Leaning", anyLeaning},
                                         Shape{"FirstTwoParallel", anyScara},
                                         Shape{"FirstTwoMeet", anySphericalShoulder},
                                         Shape{"Skew", anySkew}, Shape{"Nearly02", nearlyUsual02},
                                         Shape{"Nearly002", nearlyUsual002},
                                         Shape{"Nearly1e6th", nearlyUsual1e6th},
                                         Shape{"Nearly1e10th", nearlyUsual1e10th},
                                         Shape{"Nearly1e12th", nearlyUsual1e12th},
                                         Shape{"FirstTwoNearlyParallel", nearlyScara},
                                         Shape{"FirstTwoNearlyMeet", nearlySpherical}),
                         [](const auto& row) { return std::string(row.param.name); });

// --- Laws

/// Lines that often meet, are parallel or square to each other.
Line anyLine() { return {*direction(), *point()}; }

RC_GTEST_PROP(ThreeAxesLaws, EveryTripleLeadsToAReachableTarget, ()) {
  const Arm arm{*point(), anyLine(), anyLine(), anyLine()};
  const Vec3 to = arm.at(*angle(), *angle(), *angle());
  const ThreeAnglesList found = arm.to(to);
  RC_ASSERT(found.count >= 1);
  for (const ThreeAngles& t : found) {
    RC_ASSERT(arm.miss(t, to) <= 1e-11 * arm.size());
    RC_ASSERT(arm.miss(t, to, 1.3) <= 1e-11 * arm.size());
  }
}

RC_GTEST_PROP(ThreeAxesLaws, LinksInTheReverseOrderTurnBack, ()) {
  // The chain from the point's side: the same number of triples, turned the other way.
  Dice dice(*rc::gen::arbitrary<unsigned>());
  const Arm arm = anySkew(dice);
  const Vec3 to = arm.at(dice.angle(), dice.angle(), dice.angle());
  const Arm reverse{to, arm.l3, arm.l2, arm.l1};
  const ThreeAnglesList there = arm.to(to), back = reverse.to(arm.from);
  RC_ASSERT(there.count == back.count);
  for (const ThreeAngles& t : there) RC_ASSERT(has(back, -t.a3, -t.a2, -t.a1, 1e-6));
}

RC_GTEST_PROP(ThreeAxesLaws, LengthsOfDirectionsAndPlacesOnTheLinesDoNotMatter, ()) {
  Dice dice(*rc::gen::arbitrary<unsigned>());
  const Arm arm = dice.coin() ? anyPlaced(dice) : anySkew(dice);
  Arm other = arm;
  for (Line* l : {&other.l1, &other.l2, &other.l3}) {
    l->point = plus(l->point, scaled(l->direction, dice.between(-500, 500)));
    l->direction = scaled(l->direction, dice.between(0.1, 10));
  }
  const Vec3 to = arm.at(dice.angle(), dice.angle(), dice.angle());
  const ThreeAnglesList a = arm.to(to), b = other.to(to);
  RC_ASSERT(a.count == b.count);
  for (const ThreeAngles& t : a) RC_ASSERT(has(b, t.a1, t.a2, t.a3, 1e-6));
}

// --- Out of reach

struct Miss {
  const char* name;
  Arm arm;
  Vec3 to;
  Reach reach;
  double mm;
};

class Unreachable : public testing::TestWithParam<Miss> {};

TEST_P(Unreachable, IsToldByHowMuch) {
  const Miss& m = GetParam();
  const ThreeAnglesList found = m.arm.to(m.to);
  EXPECT_EQ(found.count, 0);
  EXPECT_EQ(found.reach, m.reach);
  EXPECT_NEAR(found.missMm, m.mm, 1e-9);
}

TEST_P(Unreachable, TheNearestTripleMissesByThat) {
  const Miss& m = GetParam();
  const NearestAngles nearest = m.arm.solver().nearest(m.to);
  EXPECT_NEAR(nearest.missMm, m.mm, 1e-9);
  EXPECT_NEAR(m.arm.miss(nearest.angles, m.to), m.mm, 1e-9);
}

/// Links 3 and 2 from 400 mm up.
const Arm kLinks32 = usualArm(0, 0, 3, 2);
/// The same 10 mm ahead of line 1, and with the plane of the links 4 mm aside of it.
const Arm kAhead = usualArm(10, 0, 3, 2);
const Arm kAside = usualArm(0, 4, 300, 200);

INSTANTIATE_TEST_SUITE_P(
    ThreeAxes, Unreachable,
    testing::Values(
        Miss{"TooFarAhead", kLinks32, {7, 0, 400}, Reach::tooFar, 2},
        Miss{"TooFarUp", kLinks32, {0, 0, 407}, Reach::tooFar, 2},
        Miss{"TooFarAslant", kLinks32, {3, 4, 400 + 12}, Reach::tooFar, 8},  // 5, 12, 13
        Miss{"TooNear", kLinks32, {0.3, 0, 400.4}, Reach::tooNear, 0.5},
        // A ring of inner radius 10 - 5: the axis misses it by 5, a point 1 off it by 4.
        Miss{"InsideTheRing", kAhead, {1, 0, 400}, Reach::tooFar, 4},
        Miss{"BesideTheRing", kAhead, {13 + 5, 0, 406}, Reach::tooFar, 5},  // 8, 6, 10
        Miss{"TooNearInTheRing", kAhead, {10.25, 0, 400}, Reach::tooNear, 0.75},
        Miss{"TooCloseToAxis1", kAside, {1, 2, 600}, Reach::tooCloseToAxis1, 4 - std::sqrt(5.0)},
        Miss{"OnAxis1", kAside, {0, 0, 600}, Reach::tooCloseToAxis1, 4},
        // The stretched arm touches the sphere of 500 mm about its plane's ring of 4 mm: from (504,
        // 0) off, in the level of line 2, out to sqrt(500^2 + 4^2).
        Miss{"TooFarAside", kAside, {600, 0, 400}, Reach::tooFar, 600 - std::hypot(500.0, 4.0)}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Unreachable, OfLinesInNoUsualArrangementIsTheDistanceToTheNearestPoint) {
  // Three lines through one point: a sphere of 5.
  const Arm ball{{3, 4, 0}, {{0, 0, 1}, {}}, {{0, 1, 0}, {}}, {{1, 0, 0}, {}}};
  const ThreeAnglesList found = ball.to({0, 6, 8});
  EXPECT_EQ(found.count, 0);
  EXPECT_EQ(found.reach, Reach::outOfReach);
  EXPECT_NEAR(found.missMm, 5, 1e-12);
}

TEST(Unreachable, LevelArmMissesTheHeight) {
  // Lines 1 and 2 upright; the third slides along nothing.
  const Arm level{{500, 0, 0}, {{0, 0, 1}, {}}, {{0, 0, 1}, {200, 0, 0}}, {{0, 0, 1}, {400, 0, 0}}};
  EXPECT_NEAR(level.to({300, 100, 7}).missMm, 7, 1e-12);
  EXPECT_NEAR(level.to({500, 0, 7}).missMm, 7, 1e-12);
  EXPECT_NEAR(level.to({503, 0, 4}).missMm, 5, 1e-12);
}

TEST(Unreachable, WhatIsNoTaskHasNoAnswer) {
  const Arm arm = usualArm(50, 30, 300, 400, 35);
  const Vec3 to = {250, 300, 500};
  for (int i = 0; i < 9; ++i) {
    for (const double bad : {kNaN, kInf}) {
      Arm a = arm;
      Vec3 t = to;
      Vec3* places[] = {&a.from,         &t,          &a.l1.direction, &a.l2.direction,
                        &a.l3.direction, &a.l1.point, &a.l2.point,     &a.l3.point};
      (*places[i % 8])[i % 3] = bad;
      EXPECT_EQ(a.to(t).count, 0);
      EXPECT_EQ(a.to(t).reach, Reach::undefined);
    }
  }
  for (Line Arm::* line : {&Arm::l1, &Arm::l2, &Arm::l3}) {
    Arm a = arm;
    (a.*line).direction = {0, 0, 0};
    EXPECT_EQ(a.to(to).count, 0);
    EXPECT_EQ(a.to(to).reach, Reach::undefined);
  }
}

}  // namespace
}  // namespace korvo::rotations
