#include "toolkit/Position.h"

#include <stdexcept>
#include <utility>

#include "kinematics/KMachineElem.h"
#include "tests/support/LoadText.h"

using korvo::AxisNames;
using korvo::Position;
using korvo::PositionList;

namespace {

constexpr const char* kMill =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\naxis=Y,y\ntool=z,0,0,0\n";

zkin::KMachine mill() { return korvo::test::loadText(kMill, 2); }

TEST(Position, StartsAtZeroWithTheDimensionOfItsMachine) {
  const Position p(mill());
  ASSERT_EQ(p.size(), 2);
  EXPECT_EQ(p[0], 0.0);
  EXPECT_EQ(p[1], 0.0);
}

TEST(Position, ReadsAndWritesByAxisName) {
  Position p(mill());
  p["Y"] = 7.5;
  EXPECT_EQ(p[1], 7.5);
  EXPECT_EQ(std::as_const(p)["y"], 7.5);
  EXPECT_EQ(p["AXE_Y"], 7.5);
}

TEST(Position, RefusesUnknownAxisNames) {
  Position p(mill());
  EXPECT_THROW(p["Q"] = 1.0, std::out_of_range);
  EXPECT_THROW(std::as_const(p)[""], std::out_of_range);
}

TEST(Position, PrefixIsPartOfTheNameInVersion1) {
  const auto machine = korvo::test::loadText("axis=AXE_Q,1,x\nframe\npart\ntool=z,0,0,0\n", 1);
  const AxisNames names(machine);
  EXPECT_EQ(names.find("axe_q"), 0);
  EXPECT_EQ(names.find("Q"), -1);
}

TEST(Position, NamesAreThoseOfTheFileWhateverItsBytes) {
  for (const char* name : {"L\xC3\xA4nge", "L\xE4nge"}) {
    const std::string text = "axis=" + std::string(name) + ",1,x\nframe\npart\ntool=z,0,0,0\n";
    const AxisNames names(korvo::test::loadText(text, 1));
    EXPECT_EQ(names[0], "Länge");
    EXPECT_EQ(names.find("Länge"), 0);
    EXPECT_EQ(names.find("LÄNGE"), 0);
    EXPECT_EQ(names.find("L\xE4nge"), 0);
    EXPECT_EQ(names.find("Lange"), -1);
  }
}

TEST(Position, CopiesAreIndependentAndEqual) {
  Position a(mill());
  a["X"] = 3.0;
  Position b = a;
  EXPECT_TRUE(a == b);
  b["X"] = 4.0;
  EXPECT_EQ(a["X"], 3.0);
  EXPECT_FALSE(a == b);
}

TEST(Position, AssignmentTakesTheDimensionAlong) {
  Position a(mill());
  const Position b(korvo::test::loadText(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool=z,0,0,0\n", 2));
  a = b;
  EXPECT_EQ(a.size(), 3);
  EXPECT_EQ(a.names().find("Z"), 2);
  a = *&a;
  EXPECT_EQ(a.size(), 3);
}

TEST(Position, MovesWithoutCopying) {
  Position a(mill());
  const double* const storage = (*a).get();
  const Position b = std::move(a);
  EXPECT_EQ((*b).get(), storage);
}

TEST(Position, StandsWhereTheLibraryTakesAValue) {
  const zkin::KMachine machine = mill();
  Position p(machine);
  p["X"] = 12.0;
  zgeo::UVec3d point, direction;
  ASSERT_TRUE(machine.getTool(p, point, direction, 1));
  EXPECT_EQ(point, zgeo::UVec3d(12, 0, 0));
}

TEST(Position, MachineWithoutAxesHasNone) {
  EXPECT_THROW(Position{zkin::KMachine()}, std::length_error);
}

TEST(PositionList, OwnsWhatTheLibraryAppends) {
  const zkin::KMachine machine = mill();
  PositionList list;
  EXPECT_TRUE(list.empty());
  list.raw().push_back(machine.newMachineValue());
  list.raw().push_back(machine.newMachineValue());
  (*list.raw()[1])[0] = 5.0;
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[1][0], 5.0);
  PositionList moved = std::move(list);
  EXPECT_EQ(moved.size(), 2u);
  moved.clear();
  EXPECT_TRUE(moved.empty());
}

}  // namespace
