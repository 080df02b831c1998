#include "platform/zgeo/UVec2d.h"

#include <gtest/gtest.h>

#include "tests/support/TraceCapture.h"

namespace {

using zgeo::UVec2d;

TEST(UVec2d, IsNullAtTheStartAndComparesExactly) {
  EXPECT_EQ(UVec2d(), UVec2d(0, 0));
  EXPECT_FALSE(UVec2d(1, 2) == UVec2d(1, 2.0000000001));
}

TEST(UVec2d, SumDifferenceAndScaling) {
  EXPECT_EQ(UVec2d(1, 2) + UVec2d(10, 20), UVec2d(11, 22));
  EXPECT_EQ(UVec2d(1, 2) - UVec2d(10, 20), UVec2d(-9, -18));
  EXPECT_EQ(UVec2d(1, -2) * 3, UVec2d(3, -6));
}

TEST(UVec2d, DotAndCrossProduct) {
  EXPECT_EQ(UVec2d(1, 2) * UVec2d(3, 4), 11);
  EXPECT_EQ(UVec2d(1, 2) ^ UVec2d(3, 4), -2);
  EXPECT_EQ(UVec2d(1, 0) ^ UVec2d(0, 1), 1);
}

TEST(UVec2d, LengthsAndDistances) {
  EXPECT_EQ(UVec2d(3, 4).norm2(), 25);
  EXPECT_EQ(UVec2d(3, 4).norm(), 5);
  EXPECT_EQ(UVec2d(1, 1).distance2To(UVec2d(4, 5)), 25);
  EXPECT_EQ(UVec2d(1, 1).distanceTo(UVec2d(4, 5)), 5);
}

TEST(UVec2d, NormalisesToLengthOneAndKeepsANullVector) {
  EXPECT_EQ(UVec2d(0, -7).normalised(), UVec2d(0, -1));
  EXPECT_NEAR(UVec2d(1e300, 1e300).normalised().norm(), 1, 1e-15);
  UVec2d null;
  null.normalise();
  EXPECT_EQ(null, UVec2d());
}

class UVec2dDump : public korvo::test::TracedTest {};

TEST_F(UVec2dDump, WritesLabelAndThreeDecimals) {
  UVec2d(1, -2.5004).dump(L" point", false);
  EXPECT_TRUE(trace.claim(L" point(1.000, -2.500)"));
}

TEST_F(UVec2dDump, LeavesTheLineOpenWhenAskedTo) {
  UVec2d(1, 2).dump(L"a", true);
  EXPECT_TRUE(trace.lines().empty());
  UVec2d(4, 5).dump(L" b", false);
  EXPECT_TRUE(trace.claim(L"a(1.000, 2.000) b(4.000, 5.000)"));
}

TEST_F(UVec2dDump, LabelIsTextNotAFormatAndMayBeMissing) {
  UVec2d(1, 2).dump(L"100%d %s ", false);
  EXPECT_TRUE(trace.claim(L"100%d %s (1.000, 2.000)"));
  UVec2d(1, 2).dump(nullptr, false);
  EXPECT_TRUE(trace.claim(L"(1.000, 2.000)"));
}

}  // namespace
