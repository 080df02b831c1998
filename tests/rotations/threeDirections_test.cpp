#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <ostream>
#include <string>

#include "tests/rotations/Turning.h"

namespace korvo::rotations {
namespace {

using namespace test;

struct Row {
  const char* name;
  Vec3 d, a1, a2, a3;
  Vec3 xyz;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

class ThreeDirectionsSum : public testing::TestWithParam<Row> {};

TEST_P(ThreeDirectionsSum, HasTheDisplacementsWorkedByHand) {
  const Row& row = GetParam();
  const auto xyz = threeDirections(row.d, row.a1, row.a2, row.a3);
  ASSERT_TRUE(xyz.has_value());
  for (int i = 0; i < 3; ++i) EXPECT_DOUBLE_EQ((*xyz)[i], row.xyz[i]) << i;
}

INSTANTIATE_TEST_SUITE_P(
    Worked, ThreeDirectionsSum,
    testing::Values(Row{"OwnAxes", {1, 2, 3}, kX, kY, kZ, {1, 2, 3}},
                    Row{"OtherOrder", {1, 2, 3}, kZ, kX, kY, {3, 1, 2}},
                    Row{"LeftHanded", {1, 2, 3}, kY, kX, kZ, {2, 1, 3}},
                    Row{"ReversedAxis", {1, 2, 3}, kX, {0, -1, 0}, kZ, {1, -2, 3}},
                    Row{"DisplacementsAreInLengthsOfTheDirections",
                        {1, 2, 3},
                        {2, 0, 0},
                        {0, 4, 0},
                        {0, 0, 0.5},
                        {0.5, 0.5, 6}},
                    Row{"SlantedBed", {10, 20, 30}, kX, {0, 1, 1}, kZ, {10, 20, 10}},
                    Row{"Nothing", {0, 0, 0}, kX, {0, 1, 1}, kZ, {0, 0, 0}},
                    Row{"HugeAndTinyDirections",
                        {1, 2, 3},
                        {1e200, 0, 0},
                        {0, 1e-200, 0},
                        {0, 0, 1},
                        {1e-200, 2e200, 3}},
                    Row{"VolumeBeyondTheRange",
                        {1, 2, 3},
                        {1e200, 0, 0},
                        {0, 1e200, 0},
                        {0, 0, 1e200},
                        {1e-200, 2e-200, 3e-200}},
                    Row{"VolumeBelowTheRange",
                        {1, 2, 3},
                        {1e-200, 0, 0},
                        {0, 1e-200, 0},
                        {0, 0, 1e-200},
                        {1e200, 2e200, 3e200}}),
    rowName);

struct Refusal {
  const char* name;
  Vec3 d, a1, a2, a3;
};

std::string refusalName(const testing::TestParamInfo<Refusal>& info) { return info.param.name; }

class ThreeDirectionsRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(ThreeDirectionsRefusal, GivesNone) {
  const Refusal& row = GetParam();
  EXPECT_FALSE(threeDirections(row.d, row.a1, row.a2, row.a3).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    Dependent, ThreeDirectionsRefusal,
    testing::Values(Refusal{"TwoEqual", {1, 2, 3}, kX, kX, kZ},
                    Refusal{"TwoOpposite", {1, 2, 3}, kX, kZ, {-2, 0, 0}},
                    Refusal{"InOnePlane", {1, 2, 3}, kX, kY, {1, 1, 0}},
                    Refusal{"EvenWhenTheSumLiesInTheirPlane", {1, 1, 0}, kX, kY, {1, 1, 0}},
                    Refusal{"NullFirst", {1, 2, 3}, {}, kY, kZ},
                    Refusal{"NullSecond", {1, 2, 3}, kX, {}, kZ},
                    Refusal{"NullThird", {1, 2, 3}, kX, kY, {}}),
    refusalName);

INSTANTIATE_TEST_SUITE_P(
    NotFinite, ThreeDirectionsRefusal,
    testing::Values(Refusal{"NaNSum", {1, kNaN, 3}, kX, kY, kZ},
                    Refusal{"InfiniteSum", {1, 2, kInf}, kX, kY, kZ},
                    Refusal{"NaNFirst", {1, 2, 3}, {1, kNaN, 0}, kY, kZ},
                    Refusal{"NaNSecond", {1, 2, 3}, kX, {0, 1, kNaN}, kZ},
                    Refusal{"InfiniteThird", {1, 2, 3}, kX, kY, {0, 0, kInf}},
                    Refusal{"DisplacementBeyondTheRange", {1e10, 0, 0}, {1e-300, 0, 0}, kY, kZ}),
    refusalName);

/// Directions X, Y and one that rises above their plane by the sine `rise`.
bool solves(double rise, double scale1, double scale3) {
  const double run = std::sqrt(1 - rise * rise);
  return threeDirections({1, 2, 3}, {scale1, 0, 0}, kY, {scale3 * run, 0, scale3 * rise})
      .has_value();
}

TEST(ThreeDirectionsThreshold, VolumeOf1e10thOfTheLengthsIsDependent) {
  EXPECT_FALSE(solves(0.999999e-10, 1, 1));
  EXPECT_TRUE(solves(1.000001e-10, 1, 1));
  EXPECT_FALSE(solves(-0.999999e-10, 1, 1));
  EXPECT_TRUE(solves(-1.000001e-10, 1, 1));
}

TEST(ThreeDirectionsThreshold, ExactlyAtTheLimitIsDependent) {
  // The lengths are 1 to the last bit, the volume is the third component.
  EXPECT_FALSE(threeDirections({1, 2, 3}, kX, kY, {1, 0, 1e-10}).has_value());
  EXPECT_TRUE(threeDirections({1, 2, 3}, kX, kY, {1, 0, std::nextafter(1e-10, 1)}).has_value());
}

TEST(ThreeDirectionsThreshold, IsOfTheDirectionsNotOfTheirLengths) {
  for (const double scale : {1e-100, 1e-3, 1e3, 1e100}) {
    EXPECT_FALSE(solves(0.999999e-10, scale, 1)) << scale;
    EXPECT_TRUE(solves(1.000001e-10, scale, 1)) << scale;
    EXPECT_FALSE(solves(0.999999e-10, 1, scale)) << scale;
    EXPECT_TRUE(solves(1.000001e-10, 1, scale)) << scale;
  }
}

TEST(ThreeDirectionsThreshold, OfDiagonalDirectionsToo) {
  // Each of length sqrt(2); the volume of (1,1,0), (1,-1,0), (1,1,h) is 2h, that is h/sqrt(2) of
  // the lengths' product 2*sqrt(2).
  const double h = 1e-10 * std::sqrt(2.0);
  EXPECT_FALSE(threeDirections({1, 2, 3}, {1, 1, 0}, {1, -1, 0}, {1, 1, 0.999 * h}).has_value());
  EXPECT_TRUE(threeDirections({1, 2, 3}, {1, 1, 0}, {1, -1, 0}, {1, 1, 1.001 * h}).has_value());
}

// --- Laws

/// Whether nothing is missing of d but rounding of the largest of the terms.
bool addsUp(const Vec3& d, const std::array<Vec3, 3>& a, const Vec3& xyz) {
  Long3 rest = {d[0], d[1], d[2]};
  double longest = length(d);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) rest[j] -= static_cast<long double>(xyz[i]) * a[i][j];
    longest = std::max(longest, std::fabs(xyz[i]) * length(a[i]));
  }
  return distanceL(rest, {}) <= 2e-15L * longest;
}

RC_GTEST_PROP(ThreeDirectionsLaws, DisplacementsAddUp, ()) {
  const std::array<Vec3, 3> a = {*direction(), *direction(), *direction()};
  const Vec3 d = *point();
  const auto xyz = threeDirections(d, a[0], a[1], a[2]);
  RC_PRE(xyz.has_value());
  RC_ASSERT(addsUp(d, a, *xyz));
}

RC_GTEST_PROP(ThreeDirectionsLaws, DisplacementsAddUpForNearlyDependentDirections, ()) {
  const Vec3 a1 = unit(*direction());
  const Vec3 a2 = unit(*direction());
  const Vec3 across = cross(a1, a2);
  RC_PRE(length(across) > 1e-3);
  const double rise = *rc::gen::element(1e-8, 1e-7, 1e-5, 1e-3);
  const Vec3 a3 = plus(plus(a1, scaled(a2, *number(1))), scaled(unit(across), rise));
  const Vec3 d = plus(scaled(a1, *number(1000)), scaled(a2, *number(1000)));
  RC_PRE(length(d) > 1.0);
  const auto xyz = threeDirections(d, a1, a2, a3);
  RC_PRE(xyz.has_value());
  RC_ASSERT(addsUp(d, {a1, a2, a3}, *xyz));
}

// Two directions a degree apart and a third 1e-8 out of their plane: a volume of some 1e-10, with
// which a step brings back six digits.
TEST(ThreeDirections, AddUpWhereOneStepIsNotEnough) {
  const std::array<Vec3, 3> a = {
      Vec3{-0.48767181947142779, -0.68338271170456277, 0.54329022247482561},
      Vec3{-0.50425876511153866, -0.66848317436967397, 0.54667480588813522},
      Vec3{-0.96083007875334114, -1.310636724105871, 1.0562484708206934}};
  const Vec3 d = {730.19283683007222, 995.69328965001523, -802.57299514965325};
  const auto xyz = threeDirections(d, a[0], a[1], a[2]);
  ASSERT_TRUE(xyz.has_value());
  EXPECT_TRUE(addsUp(d, a, *xyz));
}

RC_GTEST_PROP(ThreeDirectionsLaws, FindsTheDisplacementsThatMadeTheSum, ()) {
  const std::array<Vec3, 3> a = {unit(*direction()), unit(*direction()), unit(*direction())};
  const double volume = std::fabs(dot(a[0], cross(a[1], a[2])));
  RC_PRE(volume > 1e-3);
  const Vec3 wanted = *point();
  Vec3 d{};
  for (int i = 0; i < 3; ++i) d = plus(d, scaled(a[i], wanted[i]));
  const auto xyz = threeDirections(d, a[0], a[1], a[2]);
  RC_ASSERT(xyz.has_value());
  RC_ASSERT(largestDifference(*xyz, wanted) < 1e-12 / volume);
}

}  // namespace
}  // namespace korvo::rotations
