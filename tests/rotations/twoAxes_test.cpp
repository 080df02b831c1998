#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tests/rotations/Turning.h"

namespace korvo::rotations {
namespace {

using namespace test;

constexpr double kQuarter = kPi / 2;
constexpr double kEighth = kPi / 4;
const double kRootHalf = std::sqrt(0.5);

struct Row {
  const char* name;
  Joint joint;
  Vec3 to;
  std::vector<TwoAngles> pairs;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

class TwoAxesTurn : public testing::TestWithParam<Row> {};

TEST_P(TwoAxesTurn, HasThePairsOfTheDrawingInOrder) {
  const Row& row = GetParam();
  const TwoAnglesList found = row.joint.to(row.to);
  ASSERT_EQ(found.count, static_cast<int>(row.pairs.size()));
  for (int i = 0; i < found.count; ++i) {
    EXPECT_NEAR(found.solutions[i].a1, row.pairs[i].a1, 2e-14) << i;
    EXPECT_NEAR(found.solutions[i].a2, row.pairs[i].a2, 2e-14) << i;
  }
}

// The rotary table: R(Z, c) R(X, a) Z = (sin c sin a, -cos c sin a, cos a).
const Joint kTable{kZ, kZ, kX};
// The swivel head: R(Y, b) R(Z, c) Z, Z being the tool.
const Joint kSwivel{kZ, kY, kZ};
// The head with an axis at 45 degrees: it carries Z over to Y in half a turn.
const Joint kSlanted{kZ, kZ, {0, 1, 1}};

INSTANTIATE_TEST_SUITE_P(
    SquareAxes, TwoAxesTurn,
    testing::Values(
        Row{"TiltedTowardsMinusY", kTable, {0, -1, 1}, {{0, kEighth}, {kPi, -kEighth}}},
        Row{"TiltedTowardsY", kTable, {0, 1, 1}, {{0, -kEighth}, {kPi, kEighth}}},
        Row{"EqualSumsThePositiveSecondAngleFirst",
            kTable,
            {1, 0, 0},
            {{kQuarter, kQuarter}, {-kQuarter, -kQuarter}}},
        Row{"EqualSumsOnTheOtherSide",
            kTable,
            {-1, 0, 1},
            {{-kQuarter, kEighth}, {kQuarter, -kEighth}}},
        Row{"SmallerSumFirstThoughNegative",
            kTable,
            {1, 1, 0},
            {{-kEighth, -kQuarter}, {0.75 * kPi, kQuarter}}},
        Row{"BelowTheTable", kTable, {0, -1, -1}, {{0, 0.75 * kPi}, {kPi, -0.75 * kPi}}},
        Row{"FromAlongAThirdAxis",  // R(Z, c) R(X, a) Y = (-sin c cos a, cos c cos a, sin a)
            {kY, kZ, kX},
            {-1, 0, 1},
            {{kQuarter, kEighth}, {-kQuarter, 0.75 * kPi}}},
        Row{"LengthsDoNotMatter",
            {{0, 0, 1e200}, {0, 0, 1e-200}, {300, 0, 0}},
            {1e-180, 0, 0},
            {{kQuarter, kQuarter}, {-kQuarter, -kQuarter}}}),
    rowName);

// A quarter about (0,1,1)/sqrt(2) carries Z to (sqrt(1/2), 1/2, 1/2), a quarter back to its mirror
// image at x = 0. Either lies atan(sqrt(1/2)) from X or -X, seen along Z.
const double kBetween = kPi - 2 * std::atan(kRootHalf);

INSTANTIATE_TEST_SUITE_P(
    SlantedAxes, TwoAxesTurn,
    testing::Values(Row{"QuarterTurn",
                        kSlanted,
                        {kRootHalf, 0.5, 0.5},
                        {{0, kQuarter}, {-kBetween, -kQuarter}}},
                    Row{"QuarterTurnAndBack",
                        kSlanted,
                        {-kRootHalf, 0.5, 0.5},
                        {{0, -kQuarter}, {kBetween, kQuarter}}},
                    Row{"FarthestIsOnePair", kSlanted, {0, 1, 0}, {{0, kPi}}},
                    Row{"FarthestTurnedAside", kSlanted, {1, 0, 0}, {{-kQuarter, kPi}}},
                    Row{"BeyondTheFarthestIsNone", kSlanted, {0, 1, -1e-8}, {}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    AngleWithoutEffect, TwoAxesTurn,
    testing::Values(
        Row{"ToOnTheFirstAxis", kTable, kZ, {{kFreeAngle, 0}}},
        Row{"ToAgainstTheFirstAxis", kTable, {0, 0, -3}, {{kFreeAngle, kPi}}},
        Row{"ToOnTheFirstAxisFromElsewhere", {kY, kZ, kX}, kZ, {{kFreeAngle, kQuarter}}},
        Row{"ToAgainstTheFirstAxisFromElsewhere",
            {kY, kZ, kX},
            {0, 0, -1},
            {{kFreeAngle, -kQuarter}}},
        Row{"FromOnTheSecondAxis", kSwivel, {1, 0, 1}, {{kEighth, kFreeAngle}}},
        Row{"FromAgainstTheSecondAxis", {kZ, kY, {0, 0, -1}}, {1, 0, 1}, {{kEighth, kFreeAngle}}},
        Row{"FromOnTheSecondAxisOutOfReach", kSwivel, {1, 1e-8, 1}, {}},
        Row{"ToOnTheFirstAxisOutOfReach", {{0, 1e-8, 1}, kZ, kY}, kZ, {}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    ParallelAxes, TwoAxesTurn,
    testing::Values(
        Row{"AllOfTheTurnWithTheFirst", {kX, kZ, kZ}, kY, {{kQuarter, kFreeAngle}}},
        Row{"AntiParallel", {kX, kZ, {0, 0, -1}}, kY, {{kQuarter, kFreeAngle}}},
        Row{"FirstReversed", {kX, {0, 0, -1}, kZ}, kY, {{-kQuarter, kFreeAngle}}},
        Row{"OnACone", {{1, 0, 1}, kZ, kZ}, {0, 2, 2}, {{kQuarter, kFreeAngle}}},
        Row{"OnAConeAntiParallel",
            {{1, 0, -1}, kZ, {0, 0, -1}},
            {0, 2, -2},
            {{kQuarter, kFreeAngle}}},
        Row{"HalfTurn", {kX, kZ, kZ}, {-1, 0, 0}, {{kPi, kFreeAngle}}},
        Row{"OffTheConeIsNone", {{1, 0, 1}, kZ, kZ}, {1, 0, 1.00000001}, {}},
        Row{"OffTheConeAntiParallelIsNone", {{1, 0, 1}, kZ, {0, 0, -1}}, {1, 0, -1}, {}},
        Row{"BothDirectionsOnThem", {kZ, kZ, kZ}, {0, 0, 2}, {{kFreeAngle, kFreeAngle}}},
        Row{"BothAgainstThem", {{0, 0, -1}, kZ, kZ}, {0, 0, -1}, {{kFreeAngle, kFreeAngle}}},
        Row{"OppositeOnThemIsNone", {kZ, kZ, kZ}, {0, 0, -1}, {}},
        Row{"OnlyFromOnThemIsNone", {kZ, kZ, kZ}, kX, {}}),
    rowName);

// --- Refusals: one direction of the four spoiled

struct Spoiled {
  const char* name;
  Vec3 direction;
};

using SpoiledRow = std::tuple<Spoiled, int>;

std::string spoiledName(const testing::TestParamInfo<SpoiledRow>& info) {
  const char* places[] = {"From", "To", "Axis1", "Axis2"};
  return std::string(std::get<0>(info.param).name) + places[std::get<1>(info.param)];
}

class TwoAxesRefusal : public testing::TestWithParam<SpoiledRow> {};

TEST_P(TwoAxesRefusal, GivesNone) {
  std::array<Vec3, 4> directions = {kZ, Vec3{1, 1, 1}, kZ, kX};
  const auto solve = [&] {
    return twoAxes(directions[0], directions[1], directions[2], directions[3]).count;
  };
  ASSERT_EQ(solve(), 2);
  const auto& [spoiled, place] = GetParam();
  directions[place] = spoiled.direction;
  EXPECT_EQ(solve(), 0);
}

INSTANTIATE_TEST_SUITE_P(NoDirection, TwoAxesRefusal,
                         testing::Combine(testing::Values(Spoiled{"Null", {0, 0, 0}},
                                                          Spoiled{"NaN", {0, kNaN, 1}},
                                                          Spoiled{"Infinite", {kInf, 0, 0}}),
                                          testing::Range(0, 4)),
                         spoiledName);

// --- Order

TEST(TwoAxesOrder, SumsThatAgreeWithin1e9thAreEqual) {
  // To reach (1, e, 1) the table turns a quarter plus e with a positive, or e short of a quarter
  // back with a negative second angle: the sums differ by 2e.
  EXPECT_GT(kTable.to({1, 0.49e-9, 1}).solutions[0].a2, 0);
  EXPECT_LT(kTable.to({1, 0.51e-9, 1}).solutions[0].a2, 0);
  EXPECT_GT(kTable.to({-1, 0.49e-9, 1}).solutions[0].a2, 0);
  EXPECT_LT(kTable.to({-1, 0.51e-9, 1}).solutions[0].a2, 0);
}

/// The joint about Z and X and the target whose pairs are (mean1 + h1, mean2 + h2) and
/// (mean1 - h1, mean2 - h2): `from` is f off X, and turned by h2 to either side of the plane of the
/// axes it stands h1 to either side of it, seen along Z: tan(h1) = tan(f) sin(h2).
struct TwoSided {
  Joint joint;
  Vec3 to;
  double h1;
};

TwoSided twoSided(double f, double h2, double mean1, double mean2) {
  // Before any turn the arc from X towards Z is turned by -mean2 about X; h2 to both sides of it.
  const Vec3 from = turned({std::cos(f), 0, std::sin(f)}, kX, -mean2);
  const Vec3 between = turned({std::cos(f), 0, std::sin(f)}, kX, h2);
  const double h1 = std::fabs(std::atan2(between[1], between[0]));
  return {{from, kZ, kX}, turned(between, kZ, mean1 + h1), h1};
}

TEST(TwoAxesOrder, OfEqualSumsOnOneSideTheLargerSecondAngleIsFirst) {
  // Pairs (m + h1, 1.3) and (m - h1, 0.7): with h1 > 0.3 the sums agree for m = -0.3. The same on
  // the other side: (m + h1, -0.7) and (m - h1, -1.3) for m = 0.3.
  const double h2 = 0.3;
  for (const double side : {1.0, -1.0}) {
    const TwoSided task = twoSided(1.2, h2, -side * h2, side * 1.0);
    ASSERT_GT(task.h1, h2);
    const TwoAnglesList found = task.joint.to(task.to);
    ASSERT_EQ(found.count, 2);
    const auto& [first, second] = found.solutions;
    EXPECT_NEAR(std::fabs(first.a1) + std::fabs(first.a2),
                std::fabs(second.a1) + std::fabs(second.a2), 1e-12);
    EXPECT_NEAR(first.a2, side + h2, 1e-12);
    EXPECT_NEAR(second.a2, side - h2, 1e-12);
  }
}

RC_GTEST_PROP(TwoAxesOrder, SmallerSumIsFirst, ()) {
  const Joint joint{*direction(), *direction(), *direction()};
  const TwoAnglesList found = joint.to(*direction());
  RC_PRE(found.count == 2);
  const auto sum = [](const TwoAngles& p) { return std::fabs(p.a1) + std::fabs(p.a2); };
  const double difference = sum(found.solutions[1]) - sum(found.solutions[0]);
  RC_ASSERT(difference > -1.0001e-9);
  if (difference < 0.9999e-9) RC_ASSERT(found.solutions[0].a2 > found.solutions[1].a2);
}

// --- Ties in every bit

TEST(TwoAxesTies, MirroredTargetTurnsByTheSameAnglesTheOtherWay) {
  for (const Vec3& to : {Vec3{0.3, 0.7, 0.2}, {-0.3, 0.7, 0.9}, {0.11, 0.13, -0.17}}) {
    const TwoAnglesList there = kTable.to(to);
    const TwoAnglesList back = kTable.to({-to[0], to[1], to[2]});
    ASSERT_EQ(there.count, 2);
    ASSERT_EQ(back.count, 2);
    for (int i = 0; i < 2; ++i) {
      // The mirror at the plane of Y and Z turns the other way about Z and the same about X.
      EXPECT_EQ(back.solutions[i].a1, -there.solutions[i].a1);
      EXPECT_EQ(back.solutions[i].a2, there.solutions[i].a2);
    }
  }
}

TEST(TwoAxesTies, TargetInThePlaneOfTheAxesHasMirroredPairs) {
  for (const Vec3& to : {Vec3{0.3, 0, 0.7}, {0.3, 0, -0.7}, {-0.001, 0, 5}, {-1, 0, -3}}) {
    const TwoAnglesList found = kTable.to(to);
    ASSERT_EQ(found.count, 2);
    EXPECT_EQ(found.solutions[0].a1, -found.solutions[1].a1);
    EXPECT_EQ(found.solutions[0].a2, -found.solutions[1].a2);
  }
}

TEST(TwoAxesTies, OtherAxesSameAngles) {
  const double byX = twoAxes(kZ, {1, 0, 1}, kX, kY).solutions[0].a2;
  const double byY = twoAxes(kZ, {1, 0, 1}, kY, kZ).solutions[0].a1;
  EXPECT_EQ(byX, byY);
  const double tiltX = std::fabs(twoAxes(kZ, {1, 1, 1}, kZ, kX).solutions[0].a2);
  const double tiltY = std::fabs(twoAxes(kZ, {1, 1, 1}, kZ, kY).solutions[0].a2);
  EXPECT_EQ(tiltX, tiltY);
}

/// The same joint somewhere else on the machine: its directions carry the rounding of that turn.
Joint carried(const Joint& joint, const Vec3& axis, double angle) {
  return {turned(joint.from, axis, angle), turned(joint.axis1, axis, angle),
          turned(joint.axis2, axis, angle)};
}

RC_GTEST_PROP(TwoAxesTies, SecondAnglesOfATableAreOppositeWhereverItStands, ()) {
  // 45 degrees or more from the first axis, so that rounding stays below the grid.
  const Vec3 to = offZ(*rc::gen::element(0.8, 1.1, 1.9, 2.3), *angle());
  const Vec3 axis = *direction();
  const double turn = *angle();
  const TwoAnglesList found = carried(kTable, axis, turn).to(turned(to, axis, turn));
  RC_ASSERT(found.count == 2);
  RC_ASSERT(found.solutions[0].a2 == -found.solutions[1].a2);
}

RC_GTEST_PROP(TwoAxesTies, MirroredPairsAreMirroredWhereverTheTableStands, ()) {
  const Vec3 to = offZ(*rc::gen::element(0.8, 1.1, 1.9, 2.3), *rc::gen::element(0.0, kPi));
  const Vec3 axis = *direction();
  const double turn = *angle();
  const TwoAnglesList found = carried(kTable, axis, turn).to(turned(to, axis, turn));
  RC_ASSERT(found.count == 2);
  RC_ASSERT(found.solutions[0].a1 == -found.solutions[1].a1);
  RC_ASSERT(found.solutions[0].a2 == -found.solutions[1].a2);
  RC_ASSERT(found.solutions[0].a2 > 0);
}

TEST(TwoAxesGrid, HalfATurnIsPlusPiAndNoTurnPlusZeroWhateverRoundingSays) {
  for (const double noise : {1e-16, 0.0, -0.0, -1e-16}) {
    const TwoAnglesList found = kTable.to({noise, -1, 1});
    ASSERT_EQ(found.count, 2);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(found.solutions[0].a1), 0u) << noise;
    EXPECT_EQ(found.solutions[1].a1, kPi) << noise;
    EXPECT_EQ(kSlanted.to({noise, 1, 0}).solutions[0].a2, kPi) << noise;
    EXPECT_EQ(twoAxes(kX, {-1, noise, 0}, kZ, kZ).solutions[0].a1, kPi) << noise;
  }
}

TEST(TwoAxesGrid, WholeDegreesAreWhole) {
  for (int degrees = 1; degrees < 90; ++degrees) {
    const double a = degrees * kPi / 180;
    const TwoAnglesList found = kTable.to(offZ(a, degrees / 45.0));
    EXPECT_NEAR(std::fabs(found.solutions[0].a2) * (180 / kPi), degrees, 2e-14 * degrees);
  }
}

}  // namespace
}  // namespace korvo::rotations
