#include "platform/zgeo/UAlgo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

#include "tests/zgeo/Generators.h"

namespace zgeo {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr UVec3d kUntouched(-7, -77, -777);

struct Row {
  const char* name;
  UVec3d zA, pA, zB, pB;
  int result;
  UVec3d normal, footA, footB;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

/// A row whose outputs stay as they were.
Row refused(const char* name, const UVec3d& zA, const UVec3d& pA, const UVec3d& zB,
            const UVec3d& pB, int result) {
  return {name, zA, pA, zB, pB, result, kUntouched, kUntouched, kUntouched};
}

class CommonOrtho : public testing::TestWithParam<Row> {};

TEST_P(CommonOrtho, GivesCodeNormalAndFeet) {
  const Row& row = GetParam();
  UVec3d normal = kUntouched;
  UVec3d footA = kUntouched;
  UVec3d footB = kUntouched;
  EXPECT_EQ(UAlgo::_commonOrtho(row.zA, row.pA, row.zB, row.pB, normal, footA, footB), row.result);
  EXPECT_LT(test::difference(normal, row.normal), 1e-15);
  EXPECT_LT(test::difference(footA, row.footA), 1e-12);
  EXPECT_LT(test::difference(footB, row.footB), 1e-12);
}

// zA, pA, zB, pB, result, normal, foot on A, foot on B.
INSTANTIATE_TEST_SUITE_P(OneCommonPerpendicular, CommonOrtho,
                         testing::Values(Row{"NormalIsZACrossZB",
                                             {0, 0, 1},
                                             {0, 0, 7},
                                             {1, 0, 0},
                                             {5, 3, 2},
                                             0,
                                             {0, 1, 0},
                                             {0, 0, 2},
                                             {0, 3, 2}},
                                         Row{"EvenWhenThatPointsFromBToA",
                                             {0, 0, 1},
                                             {0, 0, 7},
                                             {1, 0, 0},
                                             {5, -3, 2},
                                             0,
                                             {0, 1, 0},
                                             {0, 0, 2},
                                             {0, -3, 2}},
                                         Row{"MeetingLinesHaveANormalToo",
                                             {0, 0, 1},
                                             {10, 20, 0},
                                             {1, 0, 0},
                                             {-5, 20, 30},
                                             0,
                                             {0, 1, 0},
                                             {10, 20, 30},
                                             {10, 20, 30}},
                                         Row{"DirectionsOfAnyLength",
                                             {0, 0, 9},
                                             {0, 0, 7},
                                             {0.1, 0, 0},
                                             {5, 3, 2},
                                             0,
                                             {0, 1, 0},
                                             {0, 0, 2},
                                             {0, 3, 2}}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(Parallel, CommonOrtho,
                         testing::Values(Row{"NormalFromAToB",
                                             {0, 0, 1},
                                             {0, 0, 7},
                                             {0, 0, 1},
                                             {3, 4, 2},
                                             -1,
                                             {0.6, 0.8, 0},
                                             {0, 0, 2},
                                             {3, 4, 7}},
                                         Row{"AntiParallel",
                                             {0, 0, 1},
                                             {0, 0, 7},
                                             {0, 0, -2},
                                             {3, 4, 2},
                                             -1,
                                             {0.6, 0.8, 0},
                                             {0, 0, 2},
                                             {3, 4, 7}},
                                         Row{"ExactlyTheCoincidenceLimitApart",
                                             {0, 0, 1},
                                             {0, 0, 7},
                                             {0, 0, 1},
                                             {1e-5, 0, 2},
                                             -1,
                                             {1, 0, 0},
                                             {0, 0, 2},
                                             {1e-5, 0, 7}}),
                         rowName);

INSTANTIATE_TEST_SUITE_P(
    OutputsUntouched, CommonOrtho,
    testing::Values(refused("SameLine", {0, 0, 1}, {1, 2, 7}, {0, 0, 1}, {1, 2, -900}, -2),
                    refused("SameLineReversed", {0, 0, 1}, {1, 2, 7}, {0, 0, -1}, {1, 2, -900}, -2),
                    refused("CloserThanTheCoincidenceLimit", {0, 0, 1}, {0, 0, 7}, {0, 0, 1},
                            {std::nextafter(1e-5, 0.0), 0, 2}, -2),
                    refused("NullDirectionA", {0, 0, 0}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}, -3),
                    refused("NullDirectionB", {0, 0, 1}, {0, 0, 7}, {0, 0, 0}, {5, 3, 2}, -3),
                    refused("NaNDirection", {0, kNaN, 1}, {0, 0, 7}, {1, 0, 0}, {5, 3, 2}, -3),
                    refused("NaNPoint", {0, 0, 1}, {0, 0, 7}, {1, 0, 0}, {5, 3, kNaN}, -3)),
    rowName);

int codeAt(double crossSq) {
  UVec3d normal, footA, footB;
  return UAlgo::_commonOrtho({0, 0, 1}, {}, {std::sqrt(crossSq), 0, std::sqrt(1 - crossSq)},
                             {0, 10, 0}, normal, footA, footB);
}

TEST(CommonOrthoThreshold, ParallelBelowSquaredCrossOf1e5th) {
  EXPECT_EQ(codeAt(0.99999999e-5), -1);
  EXPECT_EQ(codeAt(1.00000001e-5), 0);
}

TEST(CommonOrthoAliasing, OutputsMayBeTheInputs) {
  UVec3d pA(0, 0, 7);
  UVec3d pB(5, 3, 2);
  UVec3d zA(0, 0, 1);
  EXPECT_EQ(UAlgo::_commonOrtho(zA, pA, {1, 0, 0}, pB, zA, pA, pB), 0);
  EXPECT_EQ(zA, UVec3d(0, 1, 0));
  EXPECT_EQ(pA, UVec3d(0, 0, 2));
  EXPECT_EQ(pB, UVec3d(0, 3, 2));
}

}  // namespace
}  // namespace zgeo
