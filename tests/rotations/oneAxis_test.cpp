#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>

#include "tests/rotations/Turning.h"

namespace korvo::rotations {
namespace {

using namespace test;

struct Row {
  const char* name;
  Vec3 from, to, axis;
  double angle;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

class OneAxisTurn : public testing::TestWithParam<Row> {};

TEST_P(OneAxisTurn, IsTheOneOfTheDrawing) {
  const Row& row = GetParam();
  const auto angle = oneAxis(row.from, row.to, row.axis);
  ASSERT_TRUE(angle.has_value());
  EXPECT_NEAR(*angle, row.angle, 1e-14);
}

INSTANTIATE_TEST_SUITE_P(
    OntoTheTarget, OneAxisTurn,
    testing::Values(Row{"QuarterAboutZ", kX, kY, kZ, kPi / 2},
                    Row{"QuarterBackAboutZ", kY, kX, kZ, -kPi / 2},
                    Row{"QuarterAboutMinusZ", kX, kY, {0, 0, -1}, -kPi / 2},
                    Row{"QuarterAboutX", kY, kZ, kX, kPi / 2},
                    Row{"QuarterAboutY", kZ, kX, kY, kPi / 2},
                    Row{"ThreeEighths", kX, {-1, 1, 0}, kZ, 0.75 * kPi},
                    Row{"ThirdAboutTheDiagonal", kX, kY, {1, 1, 1}, 2 * kPi / 3},
                    Row{"OnAConeOfTheAxis", {1, 0, 5}, {0, 1, 5}, kZ, kPi / 2},
                    Row{"BelowTheAxis", {1, 0, -5}, {0, 1, -5}, kZ, kPi / 2},
                    Row{"HalfTurn", kX, {-1, 0, 0}, kZ, kPi},
                    Row{"HalfTurnAboutMinusZ", kX, {-1, 0, 0}, {0, 0, -1}, kPi},
                    Row{"NoTurn", {1, 2, 3}, {1, 2, 3}, kZ, 0},
                    Row{"LengthsDoNotMatter", {1e-200, 0, 0}, {0, 1e200, 0}, {0, 0, 7}, kPi / 2}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OutOfReachNearestOnTheCone, OneAxisTurn,
    testing::Values(Row{"TargetAboveTheCone", kX, {0, 1, 1}, kZ, kPi / 2},
                    Row{"TargetBelowTheCone", {1, 0, 1}, {1, 1, -9}, kZ, kPi / 4},
                    Row{"OnTheOtherSide", {1, 0, 1}, {-1, 0, 0}, kZ, kPi}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    EqualDirectionsOnTheAxis, OneAxisTurn,
    testing::Values(Row{"Along", kZ, {0, 0, 2}, kZ, 0},
                    Row{"Against", {0, 0, -3}, {0, 0, -1}, kZ, 0},
                    Row{"WithinRounding", {1e-15, 0, 1}, {0, -1e-15, 1}, kZ, 0}),
    rowName);

struct Refusal {
  const char* name;
  Vec3 from, to, axis;
};

std::string refusalName(const testing::TestParamInfo<Refusal>& info) { return info.param.name; }

class OneAxisRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(OneAxisRefusal, GivesNone) {
  const Refusal& row = GetParam();
  EXPECT_FALSE(oneAxis(row.from, row.to, row.axis).has_value());
}

INSTANTIATE_TEST_SUITE_P(OnTheAxis, OneAxisRefusal,
                         testing::Values(Refusal{"From", kZ, kX, kZ},
                                         Refusal{"FromAgainstTheAxis", {0, 0, -1}, kX, kZ},
                                         Refusal{"To", kX, kZ, kZ},
                                         Refusal{"ToAgainstTheAxis", kX, {0, 0, -2}, kZ},
                                         Refusal{"BothOpposite", kZ, {0, 0, -1}, kZ}),
                         refusalName);

INSTANTIATE_TEST_SUITE_P(NoDirection, OneAxisRefusal,
                         testing::Values(Refusal{"NullFrom", {}, kX, kZ},
                                         Refusal{"NullTo", kX, {}, kZ},
                                         Refusal{"NullAxis", kX, kY, {}},
                                         Refusal{"NaNFrom", {1, kNaN, 0}, kX, kZ},
                                         Refusal{"NaNTo", kX, {1, kNaN, 0}, kZ},
                                         Refusal{"NaNAxis", kX, kY, {0, 0, kNaN}},
                                         Refusal{"InfiniteFrom", {1, kInf, 0}, kX, kZ},
                                         Refusal{"InfiniteTo", kX, {1, -kInf, 0}, kZ},
                                         Refusal{"InfiniteAxis", kX, kY, {0, 0, kInf}}),
                         refusalName);

TEST(OneAxisThreshold, OnTheAxisWithin1e13th) {
  EXPECT_FALSE(oneAxis({0.99e-13, 0, 1}, kX, kZ).has_value());
  EXPECT_TRUE(oneAxis({1.01e-13, 0, 1}, kX, kZ).has_value());
  EXPECT_FALSE(oneAxis(kX, {0.99e-13, 0, -1}, kZ).has_value());
  EXPECT_TRUE(oneAxis(kX, {1.01e-13, 0, -1}, kZ).has_value());
}

TEST(OneAxisThreshold, EqualOnTheAxisWithin1e13th) {
  EXPECT_EQ(oneAxis(kZ, {0.99e-13, 0, 1}, kZ), 0.0);
  EXPECT_FALSE(oneAxis(kZ, {1.01e-13, 0, 1}, kZ).has_value());
}

TEST(OneAxisGrid, HalfATurnIsPlusPiWhateverRoundingSays) {
  for (const double side : {1e-16, 0.0, -0.0, -1e-16}) {
    EXPECT_EQ(oneAxis(kX, {-1, side, 0}, kZ), kPi) << side;
    EXPECT_EQ(oneAxis(kX, {-1, side, 0}, {0, 0, -1}), kPi) << side;
  }
}

TEST(OneAxisGrid, NoTurnIsPlusZeroWhateverRoundingSays) {
  for (const double side : {1e-16, 0.0, -0.0, -1e-16}) {
    const double angle = oneAxis(kX, {1, side, 0}, kZ).value();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(angle), 0u) << side;
  }
}

TEST(OneAxisGrid, IsABillionthOfAThousandthOfADegree) {
  const double step = kPi / 180e12;
  EXPECT_EQ(oneAxis(kX, {1, 0.49 * step, 0}, kZ), 0.0);
  EXPECT_DOUBLE_EQ(oneAxis(kX, {1, 0.51 * step, 0}, kZ).value(), step);
  EXPECT_DOUBLE_EQ(oneAxis(kX, {1, 1.49 * step, 0}, kZ).value(), step);
}

// --- Laws

struct Turn {
  Vec3 from, axis;
  double angle;
};

Turn anyTurn() {
  const Turn turn{*direction(), *direction(), *angle()};
  RC_PRE(length(cross(unit(turn.from), unit(turn.axis))) > 1e-9);
  return turn;
}

RC_GTEST_PROP(OneAxisLaws, FindsTheAngleThatMadeTheTarget, ()) {
  const Turn turn = anyTurn();
  const Vec3 to = turned(turn.from, turn.axis, turn.angle);
  const double found = oneAxis(turn.from, to, turn.axis).value();
  const double lever = length(cross(unit(turn.from), unit(turn.axis)));
  RC_ASSERT(angleBetween(found, turn.angle) < 1e-14 + 5e-16 / lever);
  RC_ASSERT(found > -kPi);
  RC_ASSERT(found <= kPi);
}

RC_GTEST_PROP(OneAxisLaws, NoAngleOfAFineGridComesNearer, ()) {
  const Vec3 from = *direction();
  const Vec3 to = *direction();
  const Vec3 axis = *direction();
  const auto found = oneAxis(from, to, axis);
  RC_PRE(found.has_value());
  const auto distance = [&](double a) {
    return distanceL(turnedL(unitL(from), unitL(axis), a), unitL(to));
  };
  const long double least = distance(*found);
  for (int i = 0; i < 720; ++i) RC_ASSERT(distance(i * kPi / 360) > least - 1e-14L);
}

RC_GTEST_PROP(OneAxisLaws, NextToTheAxisTheTargetIsReachedAllTheSame, ()) {
  const Vec3 axis = unit(*direction());
  const Vec3 across = unit(cross(axis, std::fabs(axis[0]) < 0.5 ? kX : kY));
  const double off = *rc::gen::element(1e-12, 1e-11, 1e-9, 1e-6, 1e-3);
  const Vec3 from = plus(scaled(axis, *rc::gen::element(1.0, -1.0)), scaled(across, off));
  const Vec3 to = turned(from, axis, *angle());
  const double found = oneAxis(from, to, axis).value();
  RC_ASSERT(distanceL(turnedL(unitL(from), unitL(axis), found), unitL(to)) < 1e-14L);
}

}  // namespace
}  // namespace korvo::rotations
