#include <limits>

#include <gtest/gtest.h>

#include "tests/adapter/External.h"
#include "tests/support/TraceCapture.h"

namespace korvo::test {
namespace {

using zkin::NMachine;

TEST(AdapterPositions, HaveTheMachinesRegisters) {
  const Adapter adapter(headHead());
  EXPECT_EQ(valuesOf(adapter.newMachinePosition()), std::vector<double>(5, 0.0));
  EXPECT_EQ(valuesOf(adapter.newMachinePosition(position({1, 2, 3, 4, 5}))),
            (std::vector<double>{1, 2, 3, 4, 5}));
}

TEST(AdapterPositions, OnTheHeapAreReleasedOnce) {
  const Adapter adapter(headHead());
  MachinePosition* p = adapter.newMachinePositionP();
  EXPECT_EQ(valuesOf(*p), std::vector<double>(5, 0.0));
  NMachine::_release(p);
  EXPECT_EQ(p, nullptr);
  NMachine::_release(p);

  std::vector<MachinePosition*> list{adapter.newMachinePositionP(), nullptr,
                                     adapter.newMachinePositionP(position({9, 8}))};
  EXPECT_EQ(valuesOf(*list[2]), (std::vector<double>{9, 8})) << "assigned: the size comes along";
  NMachine::_release(list);
  EXPECT_TRUE(list.empty());
}

TEST(AdapterPositions, GiveAndTakeValuesInRegisterOrder) {
  const Adapter adapter(headHead());
  const std::vector<double> values{1, -2, 3, 40, 50};
  EXPECT_EQ(valuesOf(adapter.axisValues(values)), values);
  EXPECT_EQ(adapter.axisValues(position({1, -2, 3, 40, 50})), values);
}

TEST(AdapterPositions, MissingValuesAreZeroAndFurtherOnesAreLeftOut) {
  const Adapter adapter(headHead());
  EXPECT_EQ(valuesOf(adapter.axisValues(std::vector<double>{1, 2})),
            (std::vector<double>{1, 2, 0, 0, 0}));
  EXPECT_EQ(valuesOf(adapter.axisValues(std::vector<double>(9, 7.0))), std::vector<double>(5, 7.0));
  EXPECT_EQ(adapter.axisValues(position({6})), (std::vector<double>{6, 0, 0, 0, 0}));
}

TEST(AdapterPositions, WithoutAMachineAreEmpty) {
  const Adapter adapter(nullptr);
  EXPECT_EQ(adapter.newMachinePosition().Size(), 0);
  EXPECT_EQ(adapter.axisValues(std::vector<double>{1, 2}).Size(), 0);
  EXPECT_TRUE(adapter.axisValues(position({1, 2})).empty());
  MachinePosition* p = adapter.newMachinePositionP();
  EXPECT_EQ(p->Size(), 0);
  NMachine::_release(p);
}

// --- equality

TEST(AdapterEquality, NeedsTheSameSize) {
  EXPECT_FALSE(NMachine::_equals(position({0, 0}), position({0, 0, 0}), 1e9));
  EXPECT_TRUE(NMachine::_equals(position({}), position({}), 0.0));
}

TEST(AdapterEquality, ADifferenceOfTheToleranceIsOne) {
  EXPECT_FALSE(NMachine::_equals(position({0, 1}), position({0, 1.25}), 0.25));
  EXPECT_TRUE(NMachine::_equals(position({0, 1}), position({0, 1.25}), 0.2500001));
  EXPECT_FALSE(NMachine::_equals(position({3}), position({3}), 0.0));
  EXPECT_FALSE(NMachine::_equals(position({1, 5}), position({-1, 5}), 1.0));
}

TEST(AdapterEquality, NothingEqualsNotANumber) {
  const MachinePosition p = position({std::numeric_limits<double>::quiet_NaN()});
  EXPECT_FALSE(NMachine::_equals(p, p, 1.0));
}

// --- dumps

using AdapterDump = TracedTest;

TEST_F(AdapterDump, WritesOneLine) {
  const Adapter adapter(headHead());
  adapter.dumpValues(position({1, -2.5, 1000, 0, 0.0004}), L"here", false);
  EXPECT_TRUE(
      trace.claim(L"NMP<5> (here) [     +1.000 |     -2.500 |  +1000.000 |     +0.000 |"
                  L"     +0.000 ]"));
}

TEST_F(AdapterDump, MayLeaveTheLineOpen) {
  const Adapter adapter(headHead());
  adapter.dumpValues(position({1}), L"a", true);
  EXPECT_TRUE(trace.lines().empty());
  zgeo::UTools::_trace(L"!");
  EXPECT_TRUE(
      trace.claim(L"NMP<1> (a) [     +1.000 |     +0.000 |     +0.000 |     +0.000 |"
                  L"     +0.000 ]!"))
      << "the size is the position's, the values are the machine's registers";
}

TEST_F(AdapterDump, WithoutAMachineHasNoValues) {
  Adapter(nullptr).dumpValues(position({1, 2}), L"none", false);
  EXPECT_TRUE(trace.claim(L"NMP<2> (none) [  ]"));
}

}  // namespace
}  // namespace korvo::test
