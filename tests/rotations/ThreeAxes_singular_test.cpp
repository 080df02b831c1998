#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <string>

#include "platform/rotations/ThreeAxes.h"
#include "tests/rotations/TurningPoints.h"

namespace korvo::rotations {
namespace {

using namespace test;

constexpr double kResidual = 1e-12;  ///< Of the size.

const char* distanceName(double distance) {
  const std::pair<double, const char*> names[] = {
      {0.0, "Exactly"},  {1e-15, "1e15th"}, {1e-13, "1e13th"}, {1e-12, "1e12th"},
      {1e-11, "1e11th"}, {1e-9, "1e9th"},   {1e-8, "1e8th"},   {1e-7, "1e7th"},
      {1e-6, "1e6th"},   {1e-5, "1e5th"},   {1e-4, "1e4th"},   {1e-3, "1e3rd"}};
  for (const auto& [value, name] : names) {
    if (value == distance) return name;
  }
  return "Other";
}

std::string onlyDistance(const testing::TestParamInfo<double>& info) {
  return distanceName(info.param);
}

Arm usual(Dice& d) {
  Arm arm = usualArm(d.between(-100, 200), d.between(-150, 150), d.between(100, 500),
                     d.between(100, 500), d.between(-100, 100));
  arm = placed(arm, d.direction(), d.angle(), d.point(500));
  if (d.coin()) arm.l3.direction = scaled(arm.l3.direction, -3.0);
  return arm;
}

Arm skew(Dice& d) { return {d.point(500), d.line(500), d.line(500), d.line(500)}; }

Arm nearlyUsual(Dice& d) {
  Arm arm = usual(d);
  arm.l3.direction = tilted(arm.l3.direction, 1e-3, d);
  return arm;
}

using MakeArm = Arm (*)(Dice&);
constexpr MakeArm kArms[] = {usual, skew, nearlyUsual};

/// A point `off` a line, somewhere along it.
Vec3 beside(const Line& line, double off, Dice& d) {
  const Vec3 k = unit(line.direction);
  const Vec3 on = plus(line.point, scaled(k, d.between(-500, 500)));
  return plus(on, scaled(unit(cross(k, d.direction())), off));
}

Vec3 turnedBack(const Line& line, const Vec3& p, double angle) {
  return rounded(turnedAbout(line, longOf(p), -angle));
}

void expectNoneWrong(const Arm& arm, const ThreeAnglesList& found, const Vec3& to) {
  for (const ThreeAngles& t : found) {
    for (const double choice : {0.0, 1.0, -2.5}) {
      EXPECT_LE(arm.miss(t, to, choice), kResidual * arm.size()) << testing::PrintToString(t);
    }
  }
}

std::string listed(const ThreeAnglesList& found) {
  std::string text = std::to_string(found.count);
  for (const ThreeAngles& t : found) text += " " + testing::PrintToString(t);
  return text;
}

void expectFound(const Arm& arm, const ThreeAnglesList& found, const ThreeAngles& made,
                 const Vec3& to, double tolerance) {
  EXPECT_TRUE(has(found, made.a1, made.a2, made.a3, tolerance))
      << testing::PrintToString(made) << " is not in " << listed(found);
  expectNoneWrong(arm, found, to);
}

/// The third angle that stretches the elbow of parallel lines 2 and 3.
double stretchedAngle(const Arm& arm) {
  const Vec3 k = unit(arm.l2.direction);
  const auto across = [&](const Vec3& v) { return minus(v, scaled(k, dot(v, k))); };
  const Vec3 upper = across(minus(arm.l3.point, arm.l2.point));
  const Vec3 fore = across(minus(arm.from, arm.l3.point));
  const double bend = std::atan2(dot(k, cross(upper, fore)), dot(upper, fore));
  return dot(arm.l2.direction, arm.l3.direction) < 0 ? bend : -bend;
}

constexpr int kEach = 200;
const auto kDistances =
    testing::Values(0.0, 1e-15, 1e-13, 1e-12, 1e-11, 1e-9, 1e-7, 1e-6, 1e-5, 1e-4, 1e-3);

class NextToTheLine : public testing::TestWithParam<double> {
 protected:
  /// Of an angle: what the rounding of a point so far from the line makes of it at a fold, the
  /// square root.
  double tolerance() const { return 1e-6 + 3 * std::sqrt(4e-16 / std::max(GetParam(), 1e-13)); }

  /// About a line that is no further than this nothing is sure of the angle.
  double unlessClose(double angle) const { return GetParam() < 0.5e-10 ? kFreeAngle : angle; }
};

TEST_P(NextToTheLine, TargetsAroundTheFirstAreReached) {
  Dice dice(3);
  for (const MakeArm make : kArms) {
    for (int i = 0; i < kEach; ++i) {
      Arm arm = make(dice);
      const ThreeAngles made{dice.angle(), dice.angle(), dice.angle()};
      const Vec3 seen = beside(arm.l1, GetParam() * 500, dice);
      arm.from = turnedBack(arm.l3, turnedBack(arm.l2, seen, made.a2), made.a3);
      const Vec3 to = rounded(turnedAbout(arm.l1, longOf(seen), made.a1));
      expectFound(arm, arm.to(to), {unlessClose(made.a1), made.a2, made.a3}, to, tolerance());
    }
  }
}

TEST_P(NextToTheLine, FromAroundTheThirdReaches) {
  Dice dice(4);
  for (const MakeArm make : kArms) {
    for (int i = 0; i < kEach; ++i) {
      Arm arm = make(dice);
      arm.from = beside(arm.l3, GetParam() * 500, dice);
      const ThreeAngles made{dice.angle(), dice.angle(), dice.angle()};
      const Vec3 to = arm.at(made.a1, made.a2, made.a3);
      expectFound(arm, arm.to(to), {made.a1, made.a2, unlessClose(made.a3)}, to, tolerance());
    }
  }
}

TEST_P(NextToTheLine, PointsAroundTheSecondAreReached) {
  Dice dice(5);
  const double open = 4 * tolerance();  // the third angle is at a fold of its own there
  for (const MakeArm make : kArms) {
    for (int i = 0; i < kEach; ++i) {
      Arm arm = make(dice);
      const ThreeAngles made{dice.angle(), dice.angle(), dice.angle()};
      arm.from = turnedBack(arm.l3, beside(arm.l2, GetParam() * 500, dice), made.a3);
      const Vec3 to = arm.at(made.a1, made.a2, made.a3);
      expectFound(arm, arm.to(to), {made.a1, unlessClose(made.a2), made.a3}, to, open);
    }
  }
}

TEST_P(NextToTheLine, PointsAroundTheSecondAreReachedWhereItMeetsTheFirst) {
  // The shoulder's sides are one there, and the elbow of equal links is folded.
  Dice dice(15);
  for (int i = 0; i < kEach; ++i) {
    Arm arm = placed(usualArm(0, 0, 300, 300), dice.direction(), dice.angle(), dice.point(500));
    arm.from = turnedBack(arm.l3, beside(arm.l2, GetParam() * 500, dice), dice.angle());
    const Vec3 to = arm.at(dice.angle(), dice.angle(), stretchedAngle(arm) + kPi);
    const ThreeAnglesList found = arm.to(to);
    EXPECT_GE(found.count, 1);
    expectNoneWrong(arm, found, to);
  }
}

INSTANTIATE_TEST_SUITE_P(ThreeAxes, NextToTheLine, kDistances, onlyDistance);

TEST(FreeAngle, IsTheFirstOnTheFirstLineAndTheOthersHoldForAll) {
  const Arm arm = usualArm(0, 0, 300, 400);
  const Vec3 to = {0, 0, 400 + 500};  // 3, 4, 5
  const ThreeAnglesList found = arm.to(to);
  ASSERT_EQ(found.count, 2);
  for (const ThreeAngles& t : found) {
    EXPECT_EQ(t.a1, kFreeAngle);
    EXPECT_NEAR(std::fabs(t.a3), kPi / 2, 1e-14);
  }
  expectNoneWrong(arm, found, to);
}

TEST(FreeAngle, IsTheSecondOnTheSecondLine) {
  const Arm arm = usualArm(70, 0, 300, 300);
  const Vec3 to = {0, 70, 400};
  const ThreeAnglesList found = arm.to(to);
  // Either side of the shoulder; from behind the point is 140 mm off line 2.
  ASSERT_EQ(found.count, 3);
  int free = 0;
  for (const ThreeAngles& t : found) {
    if (t.a2 != kFreeAngle) continue;
    ++free;
    EXPECT_NEAR(t.a1, kPi / 2, 1e-14);
    EXPECT_NEAR(angleBetween(t.a3, kPi), 0, 1e-14);
  }
  EXPECT_EQ(free, 1);
  expectNoneWrong(arm, found, to);
}

TEST(FreeAngle, IsTheThirdWithThePointOnTheThirdLine) {
  Arm arm = usualArm(0, 0, 300, 400);
  arm.from = {0, 0, 700};
  const ThreeAnglesList found = arm.to({300, 0, 400});
  ASSERT_EQ(found.count, 2);
  for (const ThreeAngles& t : found) EXPECT_EQ(t.a3, kFreeAngle);
  EXPECT_TRUE(has(found, 0, kPi / 2, 0, 1e-14));
  EXPECT_TRUE(has(found, kPi, -kPi / 2, 0, 1e-14));
  expectNoneWrong(arm, found, {300, 0, 400});
}

TEST(FreeAngle, BeginsAtTheTolerance) {
  const Arm arm = usualArm(0, 0, 300, 300);
  const double size = arm.size();
  EXPECT_EQ(arm.to({0.9e-13 * size, 0, 800}).solutions[0].a1, kFreeAngle);
  EXPECT_EQ(arm.to({1.1e-13 * size, 0, 800}).count, 4);
}

// --- Folds

class NextToTheFold : public testing::TestWithParam<double> {};

TEST_P(NextToTheFold, BothElbowsAreFound) {
  Dice dice(6);
  const double bend = GetParam();
  for (int i = 0; i < kEach; ++i) {
    const Arm arm = usual(dice);
    for (const double flat : {stretchedAngle(arm), stretchedAngle(arm) + kPi}) {
      const double a1 = dice.angle(), a2 = dice.angle();
      const Vec3 to = arm.at(a1, a2, flat + bend);
      const ThreeAnglesList found = arm.to(to);
      expectFound(arm, found, {a1, a2, flat + bend}, to, std::max(1e-5, bend / 4));
      if (bend < 2e-7) continue;
      int mirrored = 0;
      for (const ThreeAngles& t : found) {
        mirrored += isSame(t.a3, flat - bend, bend / 4) && isSame(t.a1, a1, 1e-3);
      }
      EXPECT_GE(mirrored, 1) << bend;
    }
  }
}

class StretchedNextToTheShouldersFold : public testing::TestWithParam<double> {};

// What rounding makes of the point may leave one side of the shoulder out of reach, while the elbow
// bends on the other.
TEST_P(StretchedNextToTheShouldersFold, IsReachedOnTheSideThatMadeIt) {
  Dice dice(16);
  const double aside = GetParam();
  for (int i = 0; i < 20 * kEach; ++i) {
    const double lateral = dice.between(80, 300) * (dice.coin() ? 1 : -1);
    const Arm arm = usualArm(dice.between(-100, 200), lateral, dice.between(200, 500),
                             dice.between(200, 500), dice.between(-100, 100));
    const double a1 = dice.angle(), a3 = stretchedAngle(arm);
    // The point's way along X, from line 1: c + b cos a2 + s sin a2.
    const double at0 = arm.at(0, 0, a3)[0], at90 = arm.at(0, kPi / 2, a3)[0];
    const double at180 = arm.at(0, kPi, a3)[0];
    const double c = (at0 + at180) / 2, b = (at0 - at180) / 2, s = at90 - c;
    const double wanted = dice.coin() ? aside : -aside;
    const double a2 = std::atan2(s, b) + std::acos((wanted - c) / std::hypot(b, s));
    const Vec3 to = arm.at(a1, a2, a3);
    const ThreeAnglesList found = arm.to(to);
    const double sides = aside / std::fabs(lateral);  // they are twice that apart
    EXPECT_TRUE(std::any_of(found.begin(), found.end(),
                            [&](const ThreeAngles& t) {
                              return isSame(t.a1, a1, sides / 2) && isSame(t.a2, a2, 2e-2) &&
                                     isSame(t.a3, a3, 2e-2);
                            }))
        << i << ": " << listed(found);
    expectNoneWrong(arm, found, to);
  }
}

INSTANTIATE_TEST_SUITE_P(ThreeAxes, StretchedNextToTheShouldersFold,
                         testing::Values(1.0, 0.1, 1e-2, 1e-3, 1e-4));

/// Of lines anywhere: 0 where the speeds of the point by the three turns are in one plane. Seen
/// before the second turn, which is undone on the first line.
double volumeAt(const Arm& arm, double a2, double a3) {
  const auto speed = [](const Line& l, const Vec3& p) {
    return cross(unit(l.direction), minus(p, l.point));
  };
  const Vec3 x = rounded(turnedAbout(arm.l3, longOf(arm.from), a3));
  const Line l1 = {rounded(turnedL(unitL(arm.l1.direction), unitL(arm.l2.direction), -a2)),
                   turnedBack(arm.l2, arm.l1.point, a2)};
  return dot(speed(l1, x), cross(speed(arm.l2, x), speed(arm.l3, x)));
}

TEST_P(NextToTheFold, BothRootsAreFoundForLinesAnywhere) {
  const double apart = GetParam();
  Dice dice(8);
  int tried = 0;
  for (int i = 0; i < 20 * kEach && tried < kEach; ++i) {
    const Arm arm = i % 2 ? skew(dice) : nearlyUsual(dice);
    const double a1 = dice.angle(), a2 = dice.angle();
    double low = dice.angle(), high = low + 0.3;
    const bool isUp = volumeAt(arm, a2, low) < 0;
    if ((volumeAt(arm, a2, high) < 0) == isUp) continue;
    for (int k = 0; k < 60; ++k) {
      const double mid = 0.5 * (low + high);
      ((volumeAt(arm, a2, mid) < 0) == isUp ? low : high) = mid;
    }
    ++tried;
    // Off the fold by a3 alone, which crosses it: two triples about so far from each other.
    const Vec3 to = arm.at(a1, a2, low + apart);
    const ThreeAnglesList found = arm.to(to);
    expectFound(arm, found, {a1, a2, low + apart}, to, std::max(1e-5, apart / 10));
    if (apart >= 1e-4) {
      EXPECT_EQ(found.count % 2, 0);
    }
  }
  EXPECT_EQ(tried, kEach);
}

INSTANTIATE_TEST_SUITE_P(ThreeAxes, NextToTheFold,
                         testing::Values(0.0, 1e-15, 1e-12, 1e-9, 1e-8, 1e-7, 1e-6, 1e-5, 1e-4,
                                         1e-3),
                         onlyDistance);

struct Edge {
  const char* name;
  Vec3 at;       ///< On the edge of what links of 300 and 200 mm reach, 400 up, and
  Vec3 outward;  ///< the direction in which it is left.
};

class AtTheElbowsEdge : public testing::TestWithParam<Edge> {
 protected:
  const Arm arm_ = usualArm(0, 0, 300, 200);

  ThreeAnglesList beyond(double share) const {
    return arm_.to(plus(GetParam().at, scaled(GetParam().outward, share * arm_.size())));
  }
};

TEST_P(AtTheElbowsEdge, WithinTheReachTheElbowIsFlat) {
  for (const double share : {0.0, 1e-15, 1e-14, 1e-13, 0.9e-12}) {
    const ThreeAnglesList found = beyond(share);
    EXPECT_EQ(found.count, 2) << share;
    for (const ThreeAngles& t : found) {
      EXPECT_EQ(t.elbowRad, 0.0);
      EXPECT_EQ(t.elbow, 1);
    }
  }
}

TEST_P(AtTheElbowsEdge, BeyondTheReachIsNone) {
  for (const double share : {1.1e-12, 1e-9, 1e-6, 1e-3}) {
    const ThreeAnglesList found = beyond(share);
    EXPECT_EQ(found.count, 0) << share;
    EXPECT_NEAR(found.missMm, share * arm_.size(), 1e-3 * share * arm_.size() + 1e-12);
  }
}

TEST_P(AtTheElbowsEdge, InsideAreFour) {
  for (const double share : {1e-12, 1e-9, 1e-6, 1e-3}) {
    const ThreeAnglesList found = beyond(-share);
    EXPECT_EQ(found.count, 4) << share;
  }
}

INSTANTIATE_TEST_SUITE_P(ThreeAxes, AtTheElbowsEdge,
                         testing::Values(Edge{"Stretched", {300, 400, 400}, {0.6, 0.8, 0}},
                                         Edge{
                                             "StretchedAslant", {240, 320, 700}, {0.48, 0.64, 0.6}},
                                         Edge{"Folded", {60, 80, 400}, {-0.6, -0.8, 0}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ShoulderEdge, SidesBecomeOneWhereTheOffsetIsAllThatIsLeft) {
  const Arm arm = usualArm(0, 50, 300, 200);
  const double size = arm.size();
  for (const double share : {0.0, 1e-15, 1e-13, 0.9e-12}) {
    const ThreeAnglesList found = arm.to({50 - share * size, 0, 700});
    EXPECT_EQ(found.count, 2) << share;
    for (const ThreeAngles& t : found) EXPECT_EQ(t.shoulderMm, 0.0);
  }
  EXPECT_EQ(arm.to({50 - 1.1e-12 * size, 0, 700}).count, 0);
  for (const double share : {1e-12, 1e-9, 1e-6, 1e-3}) {
    EXPECT_EQ(arm.to({50 + share * size, 0, 700}).count, 4) << share;
  }
}

TEST(SameTriple, WithinTheToleranceOfBothFoldsIsOne) {
  // Bent by 0.4e-7, both elbows are one triple; by 0.6e-7 they are two.
  const Arm arm = usualArm(0, 0, 300, 200);
  EXPECT_EQ(arm.to(arm.at(1, 0.5, 0.4e-7)).count, 2);
  EXPECT_EQ(arm.to(arm.at(1, 0.5, 0.8e-7)).count, 4);
}

// --- Curves of solutions

void expectFamily(const Arm& arm, const Vec3& to) {
  const ThreeAnglesList found = arm.to(to);
  EXPECT_GE(found.count, 1);
  EXPECT_TRUE(found.isFamily);
  expectNoneWrong(arm, found, to);
}

TEST(Family, OfThreeParallelLines) {
  Dice dice(9);
  for (int i = 0; i < kEach; ++i) {
    const Vec3 k = dice.direction();
    const Arm arm{
        dice.point(500), {k, dice.point(500)}, {k, dice.point(500)}, {k, dice.point(500)}};
    expectFamily(arm, arm.at(dice.angle(), dice.angle(), dice.angle()));
  }
}

TEST(Family, OfLinesThroughOnePoint) {
  Dice dice(10);
  for (int i = 0; i < kEach; ++i) {
    const Vec3 p = dice.point(500);
    const Arm arm{
        dice.point(500), {dice.direction(), p}, {dice.direction(), p}, {dice.direction(), p}};
    expectFamily(arm, arm.at(dice.angle(), dice.angle(), dice.angle()));
  }
}

TEST(Family, OfTwoLinesThatAreOne) {
  Dice dice(11);
  for (int i = 0; i < kEach; ++i) {
    Arm arm = skew(dice);
    arm.l2 = dice.coin() ? arm.l1 : arm.l3;
    expectFamily(arm, arm.at(dice.angle(), dice.angle(), dice.angle()));
  }
}

TEST(Family, OfTheThirdLineTurnedOntoTheFirst) {
  // The second turn brings line 3 onto line 1, with the point as high: only a1 + a3 counts.
  Dice dice(12);
  for (int i = 0; i < kEach; ++i) {
    Arm arm = skew(dice);
    const double a2 = dice.angle();
    arm.l3 = {rounded(turnedL(unitL(arm.l1.direction), unitL(arm.l2.direction), -a2)),
              turnedBack(arm.l2, arm.l1.point, a2)};
    expectFamily(arm, arm.at(dice.angle(), a2, dice.angle()));
  }
}

TEST(Family, IsNotWhereTheSolutionsArePoints) {
  Dice dice(13);
  for (const MakeArm make : kArms) {
    for (int i = 0; i < kEach; ++i) {
      const Arm arm = make(dice);
      EXPECT_FALSE(arm.to(arm.at(dice.angle(), dice.angle(), dice.angle())).isFamily);
    }
  }
}

}  // namespace
}  // namespace korvo::rotations
