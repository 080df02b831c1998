#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include "platform/rotations/Rotations.h"
#include "tests/rotations/Vectors.h"

namespace korvo::rotations {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Lines {
  Vec3 zA;
  Vec3 pA;
  Vec3 zB;
  Vec3 pB;
};

CommonNormal commonNormalOf(const Lines& l) { return commonNormal(l.zA, l.pA, l.zB, l.pB); }

// --- Worked by hand

struct Row {
  const char* name;
  Lines lines;
  LinePair kind;
  Vec3 normal;
  Vec3 footA;
  Vec3 footB;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

class CommonNormalWorked : public testing::TestWithParam<Row> {};

TEST_P(CommonNormalWorked, IsTheOneOfTheDrawing) {
  const Row& row = GetParam();
  const CommonNormal c = commonNormalOf(row.lines);
  EXPECT_EQ(c.kind, row.kind);
  EXPECT_LT(largestDifference(c.normal, row.normal), 1e-15);
  EXPECT_LT(largestDifference(c.footA, row.footA), 1e-12);
  EXPECT_LT(largestDifference(c.footB, row.footB), 1e-12);
}

const double kRootHalf = std::sqrt(0.5);

// Lines: zA, pA, zB, pB. Then kind, normal, foot on A, foot on B.
INSTANTIATE_TEST_SUITE_P(
    Skew, CommonNormalWorked,
    testing::Values(Row{"ZAndXAbove",
                        {{0, 0, 1}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}},
                        LinePair::skew,
                        {0, 1, 0},
                        {0, 0, 2},
                        {0, 3, 2}},
                    Row{"NormalFollowsZACrossZBNotTheSideOfB",
                        {{0, 0, 1}, {0, 0, 7}, {1, 0, 0}, {5, -3, 2}},
                        LinePair::skew,
                        {0, 1, 0},
                        {0, 0, 2},
                        {0, -3, 2}},
                    Row{"DirectionsOfAnyLength",
                        {{0, 0, 250}, {0, 0, 7}, {1e-3, 0, 0}, {5, 3, 2}},
                        LinePair::skew,
                        {0, 1, 0},
                        {0, 0, 2},
                        {0, 3, 2}},
                    Row{"DirectionsWhoseSquaresOverAndUnderflow",
                        {{0, 0, 1e200}, {0, 0, 7}, {1e-200, 0, 0}, {5, 3, 2}},
                        LinePair::skew,
                        {0, 1, 0},
                        {0, 0, 2},
                        {0, 3, 2}},
                    Row{"ReversedAReversesTheNormalAlone",
                        {{0, 0, -1}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}},
                        LinePair::skew,
                        {0, -1, 0},
                        {0, 0, 2},
                        {0, 3, 2}},
                    // In the plane z = 0, 45 degrees apart, B raised by 4: feet above (6, 0).
                    Row{"At45Degrees",
                        {{1, 0, 0}, {0, 0, 0}, {1, 1, 0}, {8, 2, 4}},
                        LinePair::skew,
                        {0, 0, 1},
                        {6, 0, 0},
                        {6, 0, 4}},
                    Row{"MeetingLinesHaveOneFootAndTheSameNormal",
                        {{0, 0, 1}, {10, 20, 0}, {1, 0, 0}, {-5, 20, 30}},
                        LinePair::skew,
                        {0, 1, 0},
                        {10, 20, 30},
                        {10, 20, 30}},
                    Row{"MeetingAtBothGivenPoints",
                        {{0, 1, 0}, {1, 2, 3}, {1, 0, 1}, {1, 2, 3}},
                        LinePair::skew,
                        {kRootHalf, 0, -kRootHalf},
                        {1, 2, 3},
                        {1, 2, 3}}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Parallel, CommonNormalWorked,
    testing::Values(Row{"NormalPointsFromAToB",
                        {{0, 0, 1}, {0, 0, 7}, {0, 0, 1}, {3, 4, 2}},
                        LinePair::parallel,
                        {0.6, 0.8, 0},
                        {0, 0, 2},
                        {3, 4, 7}},
                    Row{"AntiParallelTheSame",
                        {{0, 0, 1}, {0, 0, 7}, {0, 0, -1}, {3, 4, 2}},
                        LinePair::parallel,
                        {0.6, 0.8, 0},
                        {0, 0, 2},
                        {3, 4, 7}},
                    Row{"SwappedLinesReverseTheNormal",
                        {{0, 0, 1}, {3, 4, 2}, {0, 0, 1}, {0, 0, 7}},
                        LinePair::parallel,
                        {-0.6, -0.8, 0},
                        {3, 4, 7},
                        {0, 0, 2}},
                    Row{"LengthsDoNotMatter",
                        {{0, 0, 1e-200}, {0, 0, 7}, {0, 0, -1e200}, {3, 4, 2}},
                        LinePair::parallel,
                        {0.6, 0.8, 0},
                        {0, 0, 2},
                        {3, 4, 7}},
                    // Along (1,1,0) through the origin; (4,0,5) lies over (2,2,0), off by (2,-2,5).
                    Row{"Diagonal",
                        {{1, 1, 0}, {0, 0, 0}, {1, 1, 0}, {4, 0, 5}},
                        LinePair::parallel,
                        {2 / std::sqrt(33.0), -2 / std::sqrt(33.0), 5 / std::sqrt(33.0)},
                        {2, 2, 0},
                        {2, -2, 5}}),
    rowName);

// --- Where one kind ends and the next begins

/// B leans over A by the angle whose squared sine is `crossSq`, 10 mm beside it.
LinePair kindAt(double crossSq) {
  return commonNormal({0, 0, 1}, {0, 0, 0}, {std::sqrt(crossSq), 0, std::sqrt(1 - crossSq)},
                      {0, 10, 0})
      .kind;
}

TEST(CommonNormalThresholds, ParallelBelowSquaredCrossOf1e5th) {
  EXPECT_EQ(kindAt(0.99999999e-5), LinePair::parallel);
  EXPECT_EQ(kindAt(1.00000001e-5), LinePair::skew);
}

TEST(CommonNormalThresholds, ParallelThresholdHoldsForDirectionsOfAnyLength) {
  const double sine = std::sqrt(1.01e-5);
  const double cosine = std::sqrt(1 - 1.01e-5);
  for (const double size : {1e-250, 1e-3, 1.0, 1e3, 1e250}) {
    EXPECT_EQ(commonNormal({0, 0, 1}, {}, {size * sine, 0, size * cosine}, {0, 10, 0}).kind,
              LinePair::skew);
  }
}

TEST(CommonNormalThresholds, AntiParallelBelowTheSameSquaredCross) {
  const auto kind = [](double sineSq) {
    return commonNormal({0, 0, 1}, {}, {std::sqrt(sineSq), 0, -std::sqrt(1 - sineSq)}, {0, 10, 0})
        .kind;
  };
  EXPECT_EQ(kind(0.99999999e-5), LinePair::parallel);
  EXPECT_EQ(kind(1.00000001e-5), LinePair::skew);
}

LinePair kindApart(double distance, double sense) {
  return commonNormal({0, 0, 1}, {0, 0, 7}, {0, 0, sense}, {0, distance, -400}).kind;
}

TEST(CommonNormalThresholds, CoincidentStrictlyBelowOneHundredthOfAMicrometre) {
  for (const double sense : {1.0, -1.0}) {
    EXPECT_EQ(kindApart(0, sense), LinePair::coincident);
    EXPECT_EQ(kindApart(std::nextafter(1e-5, 0), sense), LinePair::coincident);
    EXPECT_EQ(kindApart(1e-5, sense), LinePair::parallel);
  }
}

TEST(CommonNormalThresholds, MeetingLinesAreNeverCoincidentUnlessParallel) {
  EXPECT_EQ(commonNormal({0, 0, 1}, {}, {0.004, 0, 1}, {}).kind, LinePair::skew);
  EXPECT_EQ(commonNormal({0, 0, 1}, {}, {0.003, 0, 1}, {}).kind, LinePair::coincident);
}

TEST(CommonNormalThresholds, OffsetOfNearlyParallelLinesIsTakenAtTheSecondPoint) {
  // B leaves A at the height 0 by 3 mm a metre: at the height 1000 it is another line.
  const CommonNormal c = commonNormal({0, 0, 1}, {}, {0.003, 0, 1}, {3, 0, 1000});
  EXPECT_EQ(c.kind, LinePair::parallel);
  EXPECT_EQ(c.normal, (Vec3{1, 0, 0}));
  EXPECT_EQ(c.footA, (Vec3{0, 0, 1000}));
}

// --- What has no answer

class CommonNormalUndefined : public testing::TestWithParam<Row> {};

TEST_P(CommonNormalUndefined, IsSaidToBe) {
  EXPECT_EQ(commonNormalOf(GetParam().lines).kind, LinePair::undefined);
}

Row undefined(const char* name, const Lines& lines) {
  return {name, lines, LinePair::undefined, {}, {}, {}};
}

INSTANTIATE_TEST_SUITE_P(
    Inputs, CommonNormalUndefined,
    testing::Values(undefined("NullA", {{0, 0, 0}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}}),
                    undefined("NullB", {{0, 0, 1}, {0, 0, 7}, {0, 0, 0}, {5, 3, 2}}),
                    undefined("BothNull", {{0, 0, 0}, {0, 0, 7}, {0, 0, 0}, {5, 3, 2}}),
                    undefined("NaNInZA", {{0, kNaN, 1}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}}),
                    undefined("NaNInPA", {{0, 0, 1}, {0, kNaN, 7}, {1, 0, 0}, {5, 3, 2}}),
                    undefined("NaNInZB", {{0, 0, 1}, {0, 0, 7}, {1, 0, kNaN}, {5, 3, 2}}),
                    undefined("NaNInPB", {{0, 0, 1}, {0, 0, 7}, {1, 0, 0}, {kNaN, 3, 2}}),
                    undefined("NaNInPBOfParallel", {{0, 0, 1}, {0, 0, 7}, {0, 0, 1}, {kNaN, 3, 2}}),
                    undefined("InfiniteZA", {{0, 0, kInf}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}}),
                    undefined("InfinitePA", {{0, 0, 1}, {kInf, 0, 7}, {1, 0, 0}, {5, 3, 2}}),
                    undefined("InfiniteZB", {{0, 0, 1}, {0, 0, 7}, {-kInf, 0, 0}, {5, 3, 2}}),
                    undefined("InfinitePB", {{0, 0, 1}, {0, 0, 7}, {1, 0, 0}, {5, 3, -kInf}}),
                    undefined("PointsFartherApartThanTheLargestNumber",
                              {{0, 0, 1}, {1e308, 0, 0}, {1, 0, 0}, {-1e308, -1e308, 2}}),
                    undefined("ParallelFartherApartThanTheLargestNumber",
                              {{0, 0, 1}, {0, 0, 1e308}, {0, 0, 1}, {3, 4, -1e308}})),
    rowName);

// --- Laws

Lines anyLines() {
  return {*test::direction(), *test::point(), *test::direction(), *test::point()};
}

Lines skewLines() {
  const Lines l = anyLines();
  const Vec3 u = cross(unit(l.zA), unit(l.zB));
  RC_PRE(dot(u, u) > 1e-2);
  return l;
}

RC_GTEST_PROP(CommonNormalLaws, FeetLieOnTheirLinesAndJoinThemSquarely, ()) {
  const Lines l = skewLines();
  const CommonNormal c = commonNormalOf(l);
  const Vec3 join = minus(c.footB, c.footA);
  RC_ASSERT(c.kind == LinePair::skew);
  RC_ASSERT(length(cross(minus(c.footA, l.pA), unit(l.zA))) < 1e-9);
  RC_ASSERT(length(cross(minus(c.footB, l.pB), unit(l.zB))) < 1e-9);
  RC_ASSERT(std::fabs(dot(join, unit(l.zA))) < 1e-9);
  RC_ASSERT(std::fabs(dot(join, unit(l.zB))) < 1e-9);
}

RC_GTEST_PROP(CommonNormalLaws, NormalIsTheUnitCrossProduct, ()) {
  const Lines l = skewLines();
  RC_ASSERT(largestDifference(commonNormalOf(l).normal, unit(cross(unit(l.zA), unit(l.zB)))) <
            1e-14);
}

double distanceToLine(const Vec3& p, const Vec3& unitDirection, const Vec3& linePoint) {
  const Vec3 w = minus(p, linePoint);
  return length(minus(w, scaled(unitDirection, dot(w, unitDirection))));
}

/// Where along A the distance to line B is least, by ternary search: it knows no closed form.
double nearestAlongA(const Lines& l) {
  const Vec3 uA = unit(l.zA);
  const Vec3 uB = unit(l.zB);
  const auto distance = [&](double s) {
    return distanceToLine(plus(l.pA, scaled(uA, s)), uB, l.pB);
  };
  double low = -1e6;
  double high = 1e6;
  for (int i = 0; i < 120; ++i) {
    const double left = low + (high - low) / 3;
    const double right = high - (high - low) / 3;
    (distance(left) < distance(right) ? high : low) =
        distance(left) < distance(right) ? right : left;
  }
  return (low + high) / 2;
}

RC_GTEST_PROP(CommonNormalLaws, FootOnAIsWhereASearchFindsTheLeastDistance, ()) {
  const Lines l = skewLines();
  const CommonNormal c = commonNormalOf(l);
  const Vec3 found = plus(l.pA, scaled(unit(l.zA), nearestAlongA(l)));
  // A search on values sees a minimum only to the root of the rounding: 1e-7 of some 1000 mm,
  // divided by the sine of the angle between the lines.
  RC_ASSERT(length(minus(found, c.footA)) < 1e-2);
  RC_ASSERT(length(minus(c.footB, c.footA)) < distanceToLine(found, unit(l.zB), l.pB) + 1e-9);
}

RC_GTEST_PROP(CommonNormalLaws, NoNearbyPairOfPointsIsCloser, ()) {
  const Lines l = skewLines();
  const CommonNormal c = commonNormalOf(l);
  const double least = length(minus(c.footB, c.footA));
  for (const double s : {-10.0, -0.1, 0.0, 0.1, 10.0}) {
    for (const double t : {-10.0, -0.1, 0.0, 0.1, 10.0}) {
      const Vec3 a = plus(c.footA, scaled(unit(l.zA), s));
      const Vec3 b = plus(c.footB, scaled(unit(l.zB), t));
      RC_ASSERT(length(minus(b, a)) > least - 1e-9);
    }
  }
}

RC_GTEST_PROP(CommonNormalLaws, SwappedLinesSwapTheFeetAndReverseTheNormal, ()) {
  const Lines l = skewLines();
  const CommonNormal there = commonNormalOf(l);
  const CommonNormal back = commonNormal(l.zB, l.pB, l.zA, l.pA);
  RC_ASSERT(largestDifference(back.normal, scaled(there.normal, -1)) < 1e-15);
  RC_ASSERT(largestDifference(back.footA, there.footB) < 1e-9);
  RC_ASSERT(largestDifference(back.footB, there.footA) < 1e-9);
}

RC_GTEST_PROP(CommonNormalLaws, PointsMayBeAnyOfTheirLines, ()) {
  const Lines l = skewLines();
  Lines moved = l;
  moved.pA = plus(l.pA, scaled(unit(l.zA), *test::number(500)));
  moved.pB = plus(l.pB, scaled(unit(l.zB), *test::number(500)));
  const CommonNormal before = commonNormalOf(l);
  const CommonNormal after = commonNormalOf(moved);
  RC_ASSERT(largestDifference(before.footA, after.footA) < 1e-8);
  RC_ASSERT(largestDifference(before.footB, after.footB) < 1e-8);
}

RC_GTEST_PROP(CommonNormalLaws, LinesBuiltFromTheirFeetGiveThemBack, ()) {
  const Vec3 zA = *test::direction();
  const Vec3 zB = *test::direction();
  const Vec3 u = cross(unit(zA), unit(zB));
  RC_PRE(dot(u, u) > 1e-2);
  const Vec3 footA = *test::point();
  const Vec3 footB = plus(footA, scaled(unit(u), *test::number(300)));
  const CommonNormal c = commonNormal(zA, plus(footA, scaled(zA, *test::number(300))), zB,
                                      plus(footB, scaled(zB, *test::number(300))));
  RC_ASSERT(largestDifference(c.footA, footA) < 1e-9);
  RC_ASSERT(largestDifference(c.footB, footB) < 1e-9);
}

RC_GTEST_PROP(CommonNormalLaws, ParallelLinesAreJoinedFromAToB, ()) {
  const Vec3 z = *test::direction();
  const Vec3 pA = *test::point();
  const Vec3 pB = *test::point();
  const double distance = distanceToLine(pB, unit(z), pA);
  RC_PRE(distance > 1e-3);
  const CommonNormal c = commonNormal(z, pA, scaled(z, *rc::gen::element(1.0, -1.0, 0.1)), pB);
  RC_ASSERT(c.kind == LinePair::parallel);
  RC_ASSERT(largestDifference(plus(c.footA, scaled(c.normal, distance)), pB) < 1e-9);
  RC_ASSERT(largestDifference(plus(pA, scaled(c.normal, distance)), c.footB) < 1e-9);
}

RC_GTEST_PROP(CommonNormalLaws, FeetOfTheFlattestPairKeepTheStatedDigits, ()) {
  // B crosses over A at (d, 0, h) leaning by e, just outside the parallel band; its point is given
  // a metre or so from there. The products e*s and h + s are rounded, which moves the true foot by
  // up to 1e-16 * 1000 / e = 3e-11; the stated bound is 1e-11 of the distance of the points.
  const double e = 0.0032;
  const double d = *test::number(500);
  const double h = *test::number(500);
  const double s = *test::number(1000);
  const CommonNormal c = commonNormal({0, 0, 1}, {0, 0, 0}, {0, e, 1}, {d, e * s, h + s});
  RC_ASSERT(c.kind == LinePair::skew);
  const double bound = 1e-11 * length({d, e * s, h + s}) + 2e-10;
  RC_ASSERT(largestDifference(c.footA, {0, 0, h}) < bound);
  RC_ASSERT(largestDifference(c.footB, {d, 0, h}) < bound);
}

}  // namespace
}  // namespace korvo::rotations
