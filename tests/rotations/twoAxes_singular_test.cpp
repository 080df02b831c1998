#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <string>
#include <tuple>

#include "tests/rotations/Turning.h"

namespace korvo::rotations {
namespace {

using namespace test;

constexpr double kResidual = 1e-12;

/// Every pair leads to the target, and no angle is out of (-pi, pi] but the free one.
void expectSolved(const Joint& joint, const Vec3& to, int count, double allowed = kResidual) {
  const TwoAnglesList found = joint.to(to);
  EXPECT_EQ(found.count, count);
  for (const TwoAngles& pair : found) {
    EXPECT_LE(joint.miss(pair, to), allowed) << testing::PrintToString(pair);
    for (const double a : {pair.a1, pair.a2}) {
      EXPECT_TRUE(a == kFreeAngle || (a > -kPi && a <= kPi)) << a;
    }
  }
}

// --- Next to the singular directions

const char* distanceName(double distance) {
  const std::pair<double, const char*> names[] = {
      {1e-15, "1e15th"}, {1e-12, "1e12th"}, {1e-9, "1e9th"}, {1e-6, "1e6th"}, {1e-3, "1e3rd"}};
  for (const auto& [value, name] : names) {
    if (value == distance) return name;
  }
  return "Other";
}

class NextToTheAxis : public testing::TestWithParam<double> {};

std::string onlyDistance(const testing::TestParamInfo<double>& info) {
  return distanceName(info.param);
}

const auto kDistances = testing::Values(1e-15, 1e-12, 1e-9, 1e-6, 1e-3);

/// One pair with an angle free on the axis, two beyond.
int countAt(double distance) { return distance < kOnAxis ? 1 : 2; }

TEST_P(NextToTheAxis, TargetAroundTheFirstAxisIsReached) {
  for (int i = 0; i < 16; ++i) {
    for (const double along : {1.0, -1.0}) {
      const Vec3 to = {GetParam() * std::cos(i * kPi / 8), GetParam() * std::sin(i * kPi / 8),
                       along};
      expectSolved({kZ, kZ, kX}, to, countAt(GetParam()));
      expectSolved({{0, 3, 4}, kZ, kX}, to, countAt(GetParam()));
      expectSolved({{0, 3, -4}, kZ, {-1, 0, 0}}, to, countAt(GetParam()));
    }
  }
}

TEST_P(NextToTheAxis, TargetAroundAFirstAxisInNoSpecialPlaceIsReached) {
  const Vec3 axis1 = unit({1, 2, 3});
  const Vec3 axis2 = unit({-2, 1, 1});
  const Vec3 from = unit(turned(axis1, axis2, 2.0));  // can be turned onto axis1
  for (int i = 0; i < 16; ++i) {
    const Vec3 to = turned(turned(axis1, axis2, GetParam()), axis1, i * kPi / 8);
    const TwoAnglesList found = Joint{from, axis1, axis2}.to(to);
    ASSERT_GE(found.count, 1);
    expectSolved({from, axis1, axis2}, to, found.count);
  }
}

TEST_P(NextToTheAxis, FromAroundTheSecondAxisReachesEveryTargetItCan) {
  for (int i = 0; i < 16; ++i) {
    for (const double along : {1.0, -1.0}) {
      const Vec3 from = {GetParam() * std::cos(i * kPi / 8), GetParam() * std::sin(i * kPi / 8),
                         along};
      const Joint joint{from, {1, 0, 1}, kZ};
      for (int j = 0; j < 8; ++j) {
        // Off the edge of the reach, where pairs may be one.
        const TwoAngles turn{0.3 + j * kPi / 4, 0.5 - i * kPi / 8};
        expectSolved(joint, rounded(joint.reached(turn)), countAt(GetParam()));
      }
    }
  }
}

TEST_P(NextToTheAxis, BothAtOnceAreReached) {
  // from next to axis2 and to next to axis1 meet only where the axes are next to parallel.
  const double d = GetParam();
  for (int i = 0; i < 16; ++i) {
    const Joint joint{offZ(d, i * kPi / 8), kZ, offZ(0.7 * d, 0.4)};
    const TwoAngles turn{1.0, 2.0 - 0.3 * i};
    const Vec3 to = rounded(joint.reached(turn));
    const TwoAnglesList found = joint.to(to);
    ASSERT_GE(found.count, 1) << i;
    expectSolved(joint, to, found.count);
  }
}

TEST_P(NextToTheAxis, NearlyParallelAxesInNoSpecialPlaceReachWhatTheyCan) {
  const Vec3 axis1 = unit({1, 2, 3});
  const Vec3 beside = plus(axis1, scaled(unit({-2, 1, 1}), GetParam()));
  for (int i = 0; i < 16; ++i) {
    for (const double sense : {1.0, -1.0}) {
      const Joint joint{unit({3, -1, 0.5 * i}), axis1, scaled(beside, sense)};
      const Vec3 to = rounded(joint.reached({0.7 * i, 2.0 - 0.3 * i}));
      const TwoAnglesList found = joint.to(to);
      ASSERT_GE(found.count, 1) << i;
      expectSolved(joint, to, found.count);
    }
  }
}

TEST_P(NextToTheAxis, NearlyParallelAxesReachWhatTheyCan) {
  const double d = GetParam();
  for (int i = 0; i < 16; ++i) {
    for (const double sense : {1.0, -1.0}) {
      const Vec3 axis2 = scaled(offZ(d, 0.4), sense);
      for (const double tilt : {1e-3, 0.5, 1.5, 3.0}) {
        const Joint joint{offZ(tilt, 1.0), kZ, axis2};
        const Vec3 to = rounded(joint.reached({0.7 * i, 2.0 - 0.3 * i}));
        const TwoAnglesList found = joint.to(to);
        ASSERT_GE(found.count, 1) << i;
        expectSolved(joint, to, found.count);
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(TwoAxes, NextToTheAxis, kDistances, onlyDistance);

TEST(TwoAxesThreshold, OnAnAxisWithin1e13th) {
  const double inside = 0.99e-13;
  const double outside = 1.01e-13;
  EXPECT_EQ(twoAxes({1, inside, 0}, {1, 1, 0}, kZ, kX).solutions[0].a2, kFreeAngle);
  EXPECT_EQ(twoAxes({1, outside, 0}, {1, 1, 0}, kZ, kX).count, 2);
  EXPECT_EQ(twoAxes({-1, inside, 0}, {1, 1, 0}, kZ, kX).solutions[0].a2, kFreeAngle);
  EXPECT_EQ(twoAxes({-1, outside, 0}, {1, 1, 0}, kZ, kX).count, 2);
  EXPECT_EQ(twoAxes(kZ, {inside, 0, 1}, kZ, kX).solutions[0].a1, kFreeAngle);
  EXPECT_EQ(twoAxes(kZ, {outside, 0, 1}, kZ, kX).count, 2);
  EXPECT_EQ(twoAxes(kZ, {inside, 0, -1}, kZ, kX).solutions[0].a1, kFreeAngle);
  EXPECT_EQ(twoAxes(kZ, {outside, 0, -1}, kZ, kX).count, 2);
  // Axes: beyond, the second angle may be anything that the reach allows.
  EXPECT_EQ(twoAxes(kX, kY, kZ, {0, inside, 1}).solutions[0].a2, kFreeAngle);
  EXPECT_NE(twoAxes(kX, kY, kZ, {0, outside, 1}).solutions[0].a2, kFreeAngle);
  EXPECT_EQ(twoAxes(kX, kY, kZ, {0, inside, -1}).solutions[0].a2, kFreeAngle);
  EXPECT_NE(twoAxes(kX, kY, kZ, {0, outside, -1}).solutions[0].a2, kFreeAngle);
}

TEST(TwoAxesThreshold, OnAxesThatAreParallelWithinTheReachBothAnglesAreFree) {
  const TwoAnglesList found = twoAxes({0, 0.5e-9, 1}, kZ, kZ, {0, 0.5e-9, 1});
  ASSERT_EQ(found.count, 1);
  EXPECT_EQ(found.solutions[0], (TwoAngles{kFreeAngle, kFreeAngle}));
}

TEST(TwoAxesThreshold, OnParallelAxesOneDirectionOnThemWithinTheReachFreesBoth) {
  const TwoAngles free{kFreeAngle, kFreeAngle};
  const TwoAnglesList from = twoAxes(kZ, {0, 0.5e-9, 1}, kZ, kZ);
  const TwoAnglesList to = twoAxes({0, 0.5e-9, 1}, kZ, kZ, kZ);
  ASSERT_EQ(from.count, 1);
  EXPECT_EQ(from.solutions[0], free);
  ASSERT_EQ(to.count, 1);
  EXPECT_EQ(to.solutions[0], free);
}

// --- The edges of the reach

/// The joint of axes w apart and `from` f off the second; its targets are between the angles
/// |w - f| and w + f (or what is left of a full turn) off the first axis.
struct Edge {
  const char* name;
  double w, f;
  double edge;     ///< Angle of the edge off the first axis.
  double outward;  ///< +1: beyond are larger angles.

  Joint joint() const { return flatJoint(w, f); }
};

const Edge kEdges[] = {{"Outer", 0.7, 0.5, 1.2, 1},
                       {"InnerFirstAxisOutside", 0.9, 0.4, 0.5, -1},
                       {"InnerFirstAxisInside", 0.4, 0.9, 0.5, -1},
                       {"RoundTheBack", 1.8, 2.2, 2 * kPi - 4.0, 1},
                       {"SlantedHead", kPi / 4, kPi / 4, kPi / 2, 1},
                       {"NarrowRing", 1e-3, 1.0, 1.001, 1},
                       {"SmallCone", 1.0, 1e-6, 1.000001, 1}};

using EdgeRow = std::tuple<Edge, double>;

class AtTheEdge : public testing::TestWithParam<EdgeRow> {
 protected:
  const Edge& edge() const { return std::get<0>(GetParam()); }

  /// `beyond` outside the edge, at an azimuth of no meaning.
  Vec3 target(double beyond) const { return offZ(edge().edge + edge().outward * beyond, 2.0); }
};

std::string edgeName(const testing::TestParamInfo<EdgeRow>& info) {
  return std::get<0>(info.param).name + std::string(distanceName(std::get<1>(info.param)));
}

TEST_P(AtTheEdge, InsideIsReached) {
  const double inside = std::min(std::get<1>(GetParam()), edge().f);
  // A 1e-15th inside, the branches are one up to rounding, or two that rounding tells apart.
  const TwoAnglesList found = edge().joint().to(target(-inside));
  if (inside > 1e-14) {
    EXPECT_EQ(found.count, 2);
  }
  ASSERT_GE(found.count, 1);
  expectSolved(edge().joint(), target(-inside), found.count);
}

TEST_P(AtTheEdge, OutsideWithinTheReachIsTheEdge) {
  const double outside = std::get<1>(GetParam());
  if (outside < 0.99e-9) {
    const TwoAnglesList found = edge().joint().to(target(outside));
    ASSERT_GE(found.count, 1);
    expectSolved(edge().joint(), target(outside), found.count, outside + kResidual);
  } else if (outside > 1.01e-9) {
    EXPECT_EQ(edge().joint().to(target(outside)).count, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(TwoAxes, AtTheEdge,
                         testing::Combine(testing::ValuesIn(kEdges), kDistances), edgeName);

class ReachLimit : public testing::TestWithParam<Edge> {};

TEST_P(ReachLimit, IsA1e9thBeyondTheEdge) {
  const Edge& e = GetParam();
  const auto at = [&](double beyond) { return offZ(e.edge + e.outward * beyond, 2.0); };
  expectSolved(e.joint(), at(0.99e-9), 1, 0.991e-9);
  expectSolved(e.joint(), at(1.01e-9), 0);
}

TEST_P(ReachLimit, BeyondTheEdgeTheNearestDirectionIsTaken) {
  const Edge& e = GetParam();
  const TwoAnglesList found = e.joint().to(offZ(e.edge + e.outward * 0.9e-9, 2.0));
  ASSERT_EQ(found.count, 1);
  // On the edge the second angle is none or half a turn, and the first the azimuth or opposite it.
  const bool half = e.outward < 0;
  EXPECT_EQ(found.solutions[0].a2, half ? kPi : 0.0);
  EXPECT_LE(e.joint().miss(found.solutions[0], offZ(e.edge, 2.0)), 4e-14);
}

INSTANTIATE_TEST_SUITE_P(TwoAxes, ReachLimit, testing::ValuesIn(kEdges),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(ReachLimit, OfAFreeSecondAngle) {
  EXPECT_EQ(twoAxes(kZ, {1, 0.99e-9, 0}, kY, kZ).count, 1);
  EXPECT_EQ(twoAxes(kZ, {1, 1.01e-9, 0}, kY, kZ).count, 0);
  EXPECT_EQ(twoAxes({1, 0.99e-9, 0}, kZ, kZ, kY).count, 1);
  EXPECT_EQ(twoAxes({1, 1.01e-9, 0}, kZ, kZ, kY).count, 0);
}

TEST(ReachLimit, OfParallelAxes) {
  for (const double sense : {1.0, -1.0}) {
    const Vec3 axis2{0, 0, sense};
    EXPECT_EQ(twoAxes(offZ(1.0, 0), offZ(1.0 + 0.99e-9, 3), kZ, axis2).count, 1);
    EXPECT_EQ(twoAxes(offZ(1.0, 0), offZ(1.0 + 1.01e-9, 3), kZ, axis2).count, 0);
    EXPECT_EQ(twoAxes(offZ(1.0, 0), offZ(1.0 - 0.99e-9, 3), kZ, axis2).count, 1);
    EXPECT_EQ(twoAxes(offZ(1.0, 0), offZ(1.0 - 1.01e-9, 3), kZ, axis2).count, 0);
  }
}

// --- Two solutions that are one

/// Axes square to each other, `from` 45 degrees beyond the second: next to the outer edge both
/// angles of the pairs differ by the same, and nowhere more for the distance to the edge, which is
/// all the same only 1.25e-15 where the pairs become one.
const Joint kBeyond = flatJoint(kPi / 2, kPi / 4);

/// The target whose pairs are `apart` from each other in both angles, the mean first angle not 0.
Vec3 targetOf(double apart, double mean) {
  return rounded(kBeyond.reached({mean - apart / 2, apart / 2}));
}

TEST(SameSolution, PairsCloserThan1e7thAreTheOneBetweenThem) {
  for (const double mean : {0.0, 0.4, 1.0, 2.0, -3.0}) {
    const Vec3 to = targetOf(0.7e-7, mean);
    expectSolved(kBeyond, to, 1);
    const TwoAngles pair = kBeyond.to(to).solutions[0];
    EXPECT_EQ(pair.a2, 0.0);
    EXPECT_NEAR(pair.a1, mean, 1e-13);
  }
}

TEST(SameSolution, PairsFurtherApartAreTwo) {
  for (const double mean : {0.0, 0.4, 1.0, 2.0, -3.0}) {
    const Vec3 to = targetOf(1.4e-7, mean);
    expectSolved(kBeyond, to, 2);
    const auto [first, second] = kBeyond.to(to).solutions;
    EXPECT_NEAR(angleBetween(first.a1, second.a1), 1.4e-7, 0.3e-7);
    EXPECT_NEAR(angleBetween(first.a2, second.a2), 1.4e-7, 0.3e-7);
  }
}

TEST(SameSolution, OneAngleThatDiffersIsEnoughForTwo) {
  // Next to the first axis the second angles are 2e-9 apart, the first ones half a turn; next to
  // the second axis the other way round.
  expectSolved({kZ, kZ, kX}, {1e-9, 0, 1}, 2);
  const Joint joint{{1e-9, 0, 1}, kX, kZ};
  expectSolved(joint, rounded(joint.reached({0.4, 1.0})), 2);
}

// --- Laws

struct Reached {
  Joint joint;
  TwoAngles turn;
  Vec3 to;
};

Reached reachedBy(const Joint& joint) {
  const TwoAngles turn{*angle(), *angle()};
  return {joint, turn, rounded(joint.reached(turn))};
}

void checkSolved(const Reached& r) {
  const TwoAnglesList found = r.joint.to(r.to);
  RC_ASSERT(found.count >= 1);
  for (const TwoAngles& pair : found) RC_ASSERT(r.joint.miss(pair, r.to) <= kResidual);
}

RC_GTEST_PROP(TwoAxesLaws, EveryPairLeadsToAReachableTarget, ()) {
  checkSolved(reachedBy({*direction(), *direction(), *direction()}));
}

/// `v` moved aside by a distance that is singular, next to it or not.
Vec3 movedAside(const Vec3& v, const rc::Gen<double>& distance) {
  const Vec3 aside = *direction();
  return plus(unit(v), scaled(aside, *distance));
}

rc::Gen<double> smallDistance() {
  return rc::gen::element(0.0, 1e-15, -1e-15, 1e-13, 1e-12, -1e-9, 1e-7, 1e-6, -1e-3);
}

RC_GTEST_PROP(TwoAxesLaws, EveryPairLeadsToAReachableTargetWithAxesNearlyParallel, ()) {
  const Vec3 axis1 = *direction();
  const Vec3 axis2 = movedAside(scaled(axis1, *rc::gen::element(1.0, -1.0)), smallDistance());
  checkSolved(reachedBy({*direction(), axis1, axis2}));
}

RC_GTEST_PROP(TwoAxesLaws, EveryPairLeadsToAReachableTargetFromNextToTheSecondAxis, ()) {
  const Vec3 axis2 = *direction();
  const Vec3 from = movedAside(scaled(axis2, *rc::gen::element(1.0, -1.0)), smallDistance());
  checkSolved(reachedBy({from, *direction(), axis2}));
}

RC_GTEST_PROP(TwoAxesLaws, EveryPairLeadsToAReachableTargetNextToTheFirstAxis, ()) {
  // `from` is turned out of the first axis by the inverse of a second turn.
  const Vec3 axis1 = *direction();
  const Vec3 axis2 = *direction();
  const double a2 = *angle();
  const Vec3 near = movedAside(scaled(axis1, *rc::gen::element(1.0, -1.0)), smallDistance());
  const Joint joint{turned(near, axis2, -a2), axis1, axis2};
  checkSolved({joint, {}, rounded(joint.reached({*angle(), a2}))});
}

RC_GTEST_PROP(TwoAxesLaws, EveryPairLeadsToAReachableTargetNextToTheEdge, ()) {
  // The second turn carries `from` into the plane of the axes, or next to it.
  const Vec3 axis1 = *direction();
  const Vec3 axis2 = *direction();
  const Vec3 inPlane = plus(scaled(unit(axis1), *number(1)), scaled(unit(axis2), *number(1)));
  RC_PRE(length(inPlane) > 1e-3);
  const double a2 = *angle();
  const Joint joint{turned(inPlane, axis2, -a2), axis1, axis2};
  checkSolved({joint, {}, rounded(joint.reached({*angle(), a2 + *smallDistance()}))});
}

RC_GTEST_PROP(TwoAxesLaws, LengthsOfTheDirectionsDoNotMatter, ()) {
  const Reached r = reachedBy({*direction(), *direction(), *direction()});
  const auto powerOfTwo = [] { return std::ldexp(1.0, *rc::gen::inRange(-660, 660)); };
  const TwoAnglesList other =
      twoAxes(scaled(r.joint.from, powerOfTwo()), scaled(r.to, powerOfTwo()),
              scaled(r.joint.axis1, powerOfTwo()), scaled(r.joint.axis2, powerOfTwo()));
  RC_ASSERT(other.count >= 1);
  for (const TwoAngles& pair : other) RC_ASSERT(r.joint.miss(pair, r.to) <= kResidual);
}

}  // namespace
}  // namespace korvo::rotations
