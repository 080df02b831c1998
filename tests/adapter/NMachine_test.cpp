#include "adapter/NMachine.h"

#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/adapter/External.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Kinematic;
using zgeo::UMatrix;
using zkin::NMachine;

/// X, Y, Z and as many rotary axes, without table.
Machine machineOf(int linearAxes, int rotaryAxes) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  for (int i = 0; i < linearAxes; ++i) k.AddAxis(linear(L"L", i, {1, 0, 0}));
  for (int i = 0; i < rotaryAxes; ++i) k.AddAxis(rotary(L"R", linearAxes + i, {0, 0, 1}));
  return machine;
}

// --- construction and analysis

TEST(Construction, OfNoMachineIsEmpty) {
  Adapter adapter(nullptr, 2, 3);
  EXPECT_EQ(adapter.machine(), nullptr);
  EXPECT_EQ(adapter.headIndex(), HeadIndex(0));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(0));
  EXPECT_EQ(adapter.name(), L"<unnamed>");
  EXPECT_TRUE(adapter.rotations().empty());
  EXPECT_TRUE(adapter.translations().empty());
  EXPECT_EQ(adapter.getTHELength(), 0.0);
  EXPECT_EQ(adapter.getUNI2MAC(), UMatrix());
  EXPECT_EQ(adapter.getMAC2UNI(), UMatrix());
  EXPECT_TRUE(adapter.isLocked(0));
  EXPECT_EQ(adapter.axisAnalysis(), -3);
}

TEST(Construction, CopiesTheMachineAndSortsItsRegisters) {
  const Machine machine = headHead();
  const Adapter adapter(&machine, 4, 5);
  ASSERT_NE(adapter.machine(), nullptr);
  EXPECT_NE(adapter.machine(), &machine);
  EXPECT_EQ(adapter.machine()->GetMachineName(), L"fork");
  EXPECT_EQ(adapter.headIndex(), HeadIndex(4));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(5));
  EXPECT_EQ(adapter.name(), L"<unnamed>");
  EXPECT_EQ(numbersOf(adapter.translations()), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(numbersOf(adapter.rotations()), (std::vector<int>{3, 4}));
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(adapter.isLocked(i));
  EXPECT_TRUE(adapter.isLocked(5));
}

struct Counted {
  const char* name;
  int linearAxes, rotaryAxes, code;
};

class AxisAnalysis : public testing::TestWithParam<Counted> {};

TEST_P(AxisAnalysis, SaysWhatIsMissing) {
  Adapter adapter(machineOf(GetParam().linearAxes, GetParam().rotaryAxes));
  EXPECT_EQ(adapter.axisAnalysis(), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(Machines, AxisAnalysis,
                         testing::Values(Counted{"ThreeLinearTwoRotary", 3, 2, 0},
                                         Counted{"FourLinearThreeRotary", 4, 3, 0},
                                         Counted{"ThreeLinearOneRotary", 3, 1, -2},
                                         Counted{"ThreeLinear", 3, 0, -2},
                                         Counted{"TwoLinearTwoRotary", 2, 2, -3},
                                         Counted{"NoAxis", 0, 0, -3}),
                         [](const auto& row) { return row.param.name; });

TEST(AxisAnalysisOrder, IsThatOfTheRegisters) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  k.AddAxis(rotary(L"C", 4, {0, 0, 1}));
  k.AddAxis(linear(L"Z", 2, {0, 0, 1}));
  k.AddAxis(rotary(L"A", 0, {1, 0, 0}));
  k.AddAxis(linear(L"X", 1, {1, 0, 0}));
  Adapter adapter(machine);
  EXPECT_EQ(numbersOf(adapter.translations()), (std::vector<int>{1, 2}));
  EXPECT_EQ(numbersOf(adapter.rotations()), (std::vector<int>{0, 4}));
}

TEST(AxisAnalysisOrder, RegistersWithoutAnAxisAndOtherLinksAreSkipped) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  k.AddAxis({L"CLAMP", Ombra::Kin::Fixed, {}, {}, Register(5)});
  k.AddAxis(linear(L"W", 7, {0, 0, 1}));
  ASSERT_TRUE(k.RemoveEntity(k.AddAxis(rotary(L"V", 8, {0, 1, 0}))));
  Adapter adapter(machine);
  EXPECT_EQ(numbersOf(adapter.translations()), (std::vector<int>{0, 1, 2, 7}));
  EXPECT_EQ(numbersOf(adapter.rotations()), (std::vector<int>{3, 4}));
  EXPECT_EQ(adapter.axisAnalysis(), 0);
  EXPECT_FALSE(adapter.isLocked(8)) << "every register has a lock, with or without an axis";
  EXPECT_TRUE(adapter.isLocked(9));
}

// --- set and reset

TEST(Setting, AnotherMachineKeepsLengthAndFramesAndLosesNameAndLocks) {
  const Machine machine = headHead();
  Adapter adapter(machine);
  const UMatrix frame = UMatrix::_translation({1, 2, 3});
  adapter.name() = L"mine";
  adapter.setTHELength(70);
  adapter.setUNI2MAC(frame);
  adapter.lockAxis(3);
  const Machine* const before = adapter.machine();
  adapter.set(&machine, HeadIndex(1), TableIndex(2));
  EXPECT_NE(adapter.machine(), before);
  EXPECT_EQ(adapter.headIndex(), HeadIndex(1));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(2));
  EXPECT_EQ(adapter.name(), L"<unnamed>");
  EXPECT_EQ(adapter.getTHELength(), 70.0);
  EXPECT_EQ(adapter.getUNI2MAC(), frame);
  EXPECT_FALSE(adapter.isLocked(3));
  delete before;
}

TEST(Setting, NoMachineKeepsTheRegistersOfTheFormerOne) {
  const Machine machine = headHead();
  Adapter adapter(&machine, 1, 2);
  adapter.lockAxis(4);
  delete adapter.machine();
  adapter.set(nullptr, HeadIndex(3), TableIndex(3));
  EXPECT_EQ(adapter.machine(), nullptr);
  EXPECT_EQ(adapter.headIndex(), HeadIndex(1));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(2));
  EXPECT_EQ(numbersOf(adapter.rotations()), (std::vector<int>{3, 4}));
  EXPECT_TRUE(adapter.isLocked(4));
  EXPECT_FALSE(adapter.isLocked(3));
}

TEST(Setting, ToAnotherAdapterTakesAllButItsLocks) {
  const Machine machine = headHead();
  Adapter source(&machine, 1, 2);
  source.name() = L"source";
  source.setTHELength(55);
  source.setUNI2MAC(UMatrix::_translation({7, 0, 0}));
  source.lockAxis(2);
  Adapter adapter(machineOf(1, 0));
  adapter.lockAxis(0);
  delete adapter.machine();
  adapter.set(source);
  EXPECT_NE(adapter.machine(), source.machine());
  EXPECT_EQ(adapter.machine()->GetMachineName(), L"fork");
  EXPECT_EQ(adapter.headIndex(), HeadIndex(1));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(2));
  EXPECT_EQ(adapter.name(), L"source");
  EXPECT_EQ(adapter.getTHELength(), 55.0);
  EXPECT_EQ(adapter.getMAC2UNI().getOrigin(), zgeo::UVec3d(-7, 0, 0));
  EXPECT_EQ(numbersOf(adapter.rotations()), (std::vector<int>{3, 4}));
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(adapter.isLocked(i));
}

TEST(Setting, ToAnEmptyAdapterTakesNameLengthAndFramesAlone) {
  Adapter source(nullptr);
  source.name() = L"none";
  source.setTHELength(5);
  const Machine machine = headHead();
  Adapter adapter(&machine, 1, 2);
  delete adapter.machine();
  adapter.set(source);
  EXPECT_EQ(adapter.machine(), nullptr);
  EXPECT_EQ(adapter.headIndex(), HeadIndex(1));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(2));
  EXPECT_EQ(adapter.name(), L"none");
  EXPECT_EQ(adapter.getTHELength(), 5.0);
  EXPECT_EQ(adapter.rotations().size(), 2u);
}

TEST(Setting, ToItselfLosesTheMachineAndTheName) {
  Adapter adapter(headHead());
  adapter.name() = L"mine";
  adapter.setTHELength(12);
  const Machine* const lost = adapter.machine();
  adapter.set(std::as_const(adapter));
  EXPECT_EQ(adapter.machine(), nullptr);
  EXPECT_EQ(adapter.name(), L"<unnamed>");
  EXPECT_EQ(adapter.getTHELength(), 12.0);
  EXPECT_EQ(lost->GetMachineName(), L"fork") << "lost, not deleted";
  delete lost;
}

TEST(Setting, CopiedAdaptersHaveTheirOwnMachineAndNoLocks) {
  Adapter source(headHead());
  source.name() = L"source";
  source.lockAxis(0);
  const Adapter copy(source);
  EXPECT_NE(copy.machine(), source.machine());
  EXPECT_EQ(copy.name(), L"source");
  EXPECT_FALSE(copy.isLocked(0));
}

TEST(Reset, LeavesAllButMachineAndName) {
  const Machine machine = headHead();
  Adapter adapter(&machine, 1, 2);
  adapter.name() = L"mine";
  adapter.setTHELength(9);
  adapter.lockAxis(1);
  adapter.reset(true);
  EXPECT_EQ(adapter.machine(), nullptr);
  EXPECT_EQ(adapter.name(), L"<unnamed>");
  EXPECT_EQ(adapter.headIndex(), HeadIndex(1));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(2));
  EXPECT_EQ(adapter.getTHELength(), 9.0);
  EXPECT_EQ(adapter.translations().size(), 3u);
  EXPECT_TRUE(adapter.isLocked(1));
  adapter.name() = L"again";
  adapter.reset(true);
  EXPECT_EQ(adapter.name(), L"<unnamed>");
}

// --- ownership

// The copy that this test leaves is what every host leaves that does not ask for its deletion.
TEST(Ownership, OnlyResetTrueDeletesTheCopy) {
  const Machine machine = headHead();
  const Machine* first = nullptr;
  const Machine* second = nullptr;
  {
    NMachine adapter(&machine, HeadIndex(), TableIndex());
    first = adapter.machine();
    adapter.set(&machine, HeadIndex(), TableIndex());
    second = adapter.machine();
  }
  EXPECT_EQ(first->GetMachineName(), L"fork") << "set leaves it";
  EXPECT_EQ(second->GetMachineName(), L"fork") << "the destructor leaves it";
}

TEST(Ownership, AssignedAdaptersShareTheMachine) {
  const Machine machine = headHead();
  NMachine source(&machine, HeadIndex(1), TableIndex(2));
  source.name() = L"source";
  source.setTHELength(8);
  source.setUNI2MAC(UMatrix::_translation({1, 0, 0}));
  source.lockAxis(4);
  NMachine adapter(nullptr, HeadIndex(), TableIndex());
  adapter = source;
  EXPECT_EQ(adapter.machine(), source.machine());
  EXPECT_EQ(adapter.headIndex(), HeadIndex(1));
  EXPECT_EQ(adapter.tableIndex(), TableIndex(2));
  EXPECT_EQ(adapter.name(), L"source");
  EXPECT_EQ(adapter.getTHELength(), 8.0);
  EXPECT_EQ(adapter.getUNI2MAC(), source.getUNI2MAC());
  EXPECT_EQ(adapter.getMAC2UNI(), source.getMAC2UNI());
  EXPECT_EQ(numbersOf(adapter.rotations()), (std::vector<int>{3, 4}));
  EXPECT_EQ(numbersOf(adapter.translations()), (std::vector<int>{0, 1, 2}));
  EXPECT_TRUE(adapter.isLocked(4));
  EXPECT_FALSE(adapter.isLocked(3));
  source.reset(true);
  EXPECT_NE(adapter.machine(), nullptr) << "it points to nothing now";
}

static_assert(std::is_copy_assignable_v<NMachine>);

// --- accessors and locks

TEST(Frames, SettingOneSetsItsInverse) {
  Adapter adapter(nullptr);
  const UMatrix turned = UMatrix::_rotation({0, 0, 1}, {1, 2, 3}, 0.5);
  adapter.setUNI2MAC(turned);
  EXPECT_EQ(adapter.getUNI2MAC(), turned);
  EXPECT_EQ(adapter.getMAC2UNI(), turned.inverse());
}

TEST(Locks, AreSetAndClearedByRegister) {
  Adapter adapter(headHead());
  adapter.lockAxis(3);
  EXPECT_TRUE(adapter.isLocked(3));
  EXPECT_TRUE(adapter.isLocked(Register(3)));
  EXPECT_FALSE(adapter.isLocked(Register(2)));
  adapter.unlockAxis(3);
  EXPECT_FALSE(adapter.isLocked(3));
}

TEST(Locks, IndicesOfNoRegisterAreIgnoredAndReadAsLocked) {
  Adapter adapter(headHead());
  for (const int i : {-1, 5, 1000}) {
    adapter.lockAxis(i);
    adapter.unlockAxis(i);
    EXPECT_TRUE(adapter.isLocked(i));
    EXPECT_TRUE(adapter.isLocked(Register(i)));
  }
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(adapter.isLocked(i));
}

}  // namespace
}  // namespace korvo::test
