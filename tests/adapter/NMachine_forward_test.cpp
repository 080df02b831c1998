#include <limits>

#include <gtest/gtest.h>

#include "tests/adapter/External.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Kinematic;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::NMachine;

const MachinePosition kLying = position({1, 2, 3, 90, 90});  // the fork's tool points along x

TEST(Matrix43Conversion, HasAxesAndOriginAsColumns) {
  const UMatrix m =
      NMachine::_fromMatrix43(Matrix43({1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}));
  UMatrix expected;
  expected.set(1, 4, 7, 10, 2, 5, 8, 11, 3, 6, 9, 12, 0, 0, 0, 1);
  EXPECT_EQ(m, expected);
}

TEST(ToolFrame, IsTheExternalLibrarys) {
  const Adapter adapter(headHead());
  const UMatrix m = adapter.getMatrix(kLying);
  UMatrix expected;  // U = y, V = z, W = x
  expected.set(0, 0, 1, 1, 1, 0, 0, 2, 0, 1, 0, 3, 0, 0, 0, 1);
  EXPECT_THAT(m, Near(expected, 1e-14));
  EXPECT_EQ(adapter.getMatrix_H2T(kLying), m);
}

TEST(ToolFrame, OfTheTipLiesTheLengthBack) {
  Adapter adapter(headHead());
  adapter.setTHELength(50);
  EXPECT_THAT(adapter.getMatrix_TP2U(kLying).getOrigin(), Near(UVec3d(-49, 2, 3), 1e-13));
  EXPECT_EQ(adapter.getMatrix(kLying).getOrigin(), adapter.getMatrix_H2T(kLying).getOrigin());
  EXPECT_THAT(adapter.getMatrix(kLying).getOrigin(), Near(UVec3d(1, 2, 3), 1e-13));
  EXPECT_THAT(adapter.getMatrix(kLying, HeadIndex(), TableIndex(), 7).getOrigin(),
              Near(UVec3d(-6, 2, 3), 1e-13));
}

TEST(ToolFrame, DoesNotDependOnTheUniversalFrame) {
  Adapter adapter(headHead());
  const UMatrix before = adapter.getMatrix_TP2U(kLying);
  adapter.setUNI2MAC(UMatrix::_translation({100, 0, 0}));
  EXPECT_EQ(adapter.getMatrix_TP2U(kLying), before);
}

TEST(ToolFrame, WithoutAMachineIsAllZero) {
  const Adapter adapter(nullptr);
  EXPECT_EQ(adapter.getMatrix(kLying), UMatrix::_zero());
  EXPECT_EQ(adapter.getMatrix_H2T(kLying), UMatrix::_zero());
  EXPECT_EQ(adapter.getMatrix_TP2U(kLying), UMatrix::_zero());
  EXPECT_EQ(adapter.getMatrix(kLying, HeadIndex(), TableIndex(), 5), UMatrix::_zero());
}

TEST(ToolFrame, OfAFailedComputationIsTheIdentity) {
  const Adapter adapter(headHead());
  EXPECT_EQ(adapter.getMatrix(position({1, 2})), UMatrix());
  EXPECT_EQ(adapter.getMatrix(kLying, HeadIndex(1), TableIndex(), 0), UMatrix());
}

// --- tool point

TEST(ToolPoint, IsOriginAndAxisOfTheToolFrame) {
  Adapter adapter(headHead());
  adapter.setTHELength(50);  // no part of it
  UVec3d pos, dir;
  EXPECT_TRUE(adapter.getTool(kLying, pos, dir));
  EXPECT_THAT(pos, Near(UVec3d(1, 2, 3), 1e-14));
  EXPECT_THAT(dir, Near(UVec3d(1, 0, 0), 1e-15));
}

TEST(ToolPoint, HeadAndTableGivenAreNotLookedAt) {
  Machine machine = headHead();
  machine.EditKinematic().AddHead(L"GUN", Matrix43::Translation({0, 0, 500}));
  const Adapter adapter(machine);
  for (const int index : {0, 1, 7, -1}) {
    UVec3d pos, dir;
    EXPECT_TRUE(adapter.getTool(kLying, pos, dir, HeadIndex(index), TableIndex(index)));
    EXPECT_THAT(pos, Near(UVec3d(1, 2, 3), 1e-14));
    EXPECT_THAT(dir, Near(UVec3d(1, 0, 0), 1e-15));
  }
}

TEST(ToolPoint, WithoutAMachineIsZeroAndTrue) {
  UVec3d pos(1, 1, 1), dir(2, 2, 2);
  EXPECT_TRUE(Adapter(nullptr).getTool(kLying, pos, dir));
  EXPECT_EQ(pos, UVec3d());
  EXPECT_EQ(dir, UVec3d());
}

// --- translation

TEST(AdapterTranslation, IsAnIncrementOfTheLinearRegisters) {
  Adapter adapter(headHead());
  adapter.setTHELength(50);
  const MachinePosition increment = adapter.axisTranslation(kLying, {10, 20, 30});
  const std::vector<double> values = valuesOf(increment);
  ASSERT_EQ(values.size(), 5u);
  EXPECT_NEAR(values[0], 10, 1e-11);
  EXPECT_NEAR(values[1], 20, 1e-11);
  EXPECT_NEAR(values[2], 30, 1e-11);
  EXPECT_EQ(values[3], 0.0);
  EXPECT_EQ(values[4], 0.0);
}

TEST(AdapterTranslation, TurnsWithTheTable) {
  // The table has turned by 90 degrees about z: its x is the machine's y.
  const Adapter adapter(tableTable());
  const MachinePosition increment = adapter.axisTranslation(position({5, 6, 7, 0, 90}), {10, 0, 0});
  EXPECT_NEAR(increment[Register(0)], 0, 1e-12);
  EXPECT_NEAR(increment[Register(1)], 10, 1e-12);
  EXPECT_NEAR(increment[Register(2)], 0, 1e-12);
}

TEST(AdapterTranslation, UsesTheFirstThreeLinearRegisters) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  ASSERT_TRUE(k.LinkEntity(EntityId(1), k.AddAxis(linear(L"W", 5, {0, 0, 1}))));
  const MachinePosition increment =
      Adapter(machine).axisTranslation(position({0, 0, 0, 0, 0, 40}), {0, 0, 9});
  EXPECT_NEAR(increment[Register(2)], 9, 1e-12);
  EXPECT_EQ(increment[Register(5)], 0.0);
}

TEST(AdapterTranslation, OfDependentAxesIsZero) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  EntityId last = k.AddAxis(linear(L"X", 0, {1, 0, 0}));
  last = k.AddAxis(linear(L"U", 1, {1, 0, 0}), last);
  last = k.AddAxis(linear(L"Z", 2, {0, 0, 1}), last);
  k.AddHead(L"H", Matrix43(), last);
  k.AddTable(L"T");
  EXPECT_EQ(valuesOf(Adapter(machine).axisTranslation(position({1, 2, 3}), {1, 0, 0})),
            std::vector<double>(3, 0.0));
}

TEST(AdapterTranslation, ByNotANumberIsZero) {
  // The first point is reached, the second is nowhere.
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(valuesOf(Adapter(headHead()).axisTranslation(kLying, {0, nan, 0})),
            std::vector<double>(5, 0.0));
}

TEST(AdapterTranslation, OfTwoLinearAxesIsZero) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  const EntityId x = k.AddAxis(linear(L"X", 0, {1, 0, 0}));
  k.AddHead(L"H", Matrix43(), k.AddAxis(linear(L"Y", 1, {0, 1, 0}), x));
  k.AddTable(L"T");
  EXPECT_EQ(valuesOf(Adapter(machine).axisTranslation(position({1, 2}), {1, 0, 0})),
            std::vector<double>(2, 0.0));
}

TEST(AdapterTranslation, WithoutAMachineIsEmpty) {
  EXPECT_EQ(Adapter(nullptr).axisTranslation(position({1}), {1, 0, 0}).Size(), 0);
}

}  // namespace
}  // namespace korvo::test
