// The chain that the toolkit computes with, against the library's forward queries: bit by bit.
#include "toolkit/model/JointChain.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "kinematics/KMachine.h"
#include "tests/solve/Proof.h"
#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"
#include "tests/support/TempFile.h"
#include "toolkit/Machine.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

using test::isSameBits;
bool isSameBits(const UVec3d& a, const UVec3d& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

Values valuesOf(const zkin::KMachineValueBase& v) {
  Values values{};
  for (int i = 0; i < v.size(); ++i) values[static_cast<std::size_t>(i)] = v[i];
  return values;
}

/// Every tool at one position: what is not the same in every bit, or "".
std::string differenceOf(const KMachine& machine, const zkin::KMachineValueBase& v) {
  for (int tool = 0; tool <= machine.getToolNumber(); ++tool) {
    const JointChain chain = JointChain::of(machine, tool);
    const KMachineElem* const e = machine.getElemByIndex(machine.getToolIndex(tool));
    const std::string name = "tool " + std::to_string(tool);
    if (chain.hasTool != (e != nullptr)) return name + " is there or not";
    if (!e) continue;
    UVec3d point, direction;
    machine.getTool(v, point, direction, tool);
    const ToolPose pose = chain.pose(valuesOf(v));
    if (!isSameBits(pose.point, point)) return name + ": point";
    if (!isSameBits(pose.direction, direction)) return name + ": direction";
    if (!isSameBits(chain.motion(valuesOf(v)), machine.getMatrix(v, e))) return name + ": motion";
    if (!isSameBits(chain.tipOf(pose), point - direction * machine.getTHELength(tool))) {
      return name + ": tip";
    }
  }
  return "";
}

/// Lengths for tools and guns (a gun's is a motion), locks, which forward queries do not look at,
/// and the side of the part for a tool.
void vary(KMachine& machine, Dice& dice) {
  for (int tool = 1; tool <= machine.getToolNumber(); ++tool) {
    if (dice.oneIn(2)) machine.setTHELength(dice.between(-50, 300), tool);
  }
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    KMachineElem& e = *machine.getElemByRank(rank);
    if (dice.oneIn(4)) e.setLocked(true);
    if (e.isTool() && dice.oneIn(4)) e.invert();
  }
}

Position anyPosition(const KMachine& machine, Dice& dice, bool isEven) {
  std::vector<double> values;
  for (int i = 0; i < machine.getAxisNum(); ++i) {
    values.push_back(isEven ? 90.0 * (dice.below(9) - 4) : dice.between(-720, 720));
  }
  return positionOf(machine, values);
}

TEST(JointChain, IsTheLibrarysForwardOnGeneratedMachinesBitByBit) {
  const int count = proofCount(2000, 10000);
  for (int seed = 0; seed < count; ++seed) {
    Choices choices(static_cast<unsigned>(seed));
    const auto machine = loadMachine(machineText(choices));
    Dice dice(static_cast<unsigned>(seed));
    vary(*machine, dice);
    machine->setCurrentTool(1 + dice.below(machine->getToolNumber()));
    for (int i = 0; i < 20; ++i) {
      const Position v = anyPosition(*machine, dice, i < 5);
      ASSERT_EQ(differenceOf(*machine, *v), "") << "seed " << seed << ", position " << i;
    }
  }
}

TEST(JointChain, IsTheLibrarysForwardOnTheExamplesBitByBit) {
  int machines = 0;
  for (const auto& file : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (file.path().extension() != ".def") continue;
    Loaded loaded = load(file.path());
    ASSERT_TRUE(loaded) << file.path();
    Machine& machine = *loaded.machine;
    Dice dice(7);
    for (int i = 0; i < 200; ++i) {
      if (i == 100) vary(*machine, dice);
      const Position v = anyPosition(*machine, dice, i % 100 < 20);
      ASSERT_EQ(differenceOf(*machine, *v), "") << file.path() << ", position " << i;
    }
    ++machines;
  }
  EXPECT_GE(machines, 12);
}

/// One linear axis, one rotary axis and a tool that points along x.
KMachine smallMachine(int tool = 1) {
  const TempDir folder;
  KMachine machine;
  machine.setDataFilePNE(folder
                             .write("m.def",
                                    "frame\naxis=X,1,1,1,0\nlimits=X,-5,7\npart=x,y,0,0,0\n"
                                    "lien=BATI\nrotation=C,6,z,0,0,10,0,0\ncoursemaximum=C,90\n"
                                    "tool=3,0,4,20,0,0\n")
                             .wstring(),
                         1);
  machine.readDataFile();
  if (tool > 0) machine.setCurrentTool(tool);
  return machine;
}

TEST(JointChain, HasTheJointsFromPartToToolWithTheirLimits) {
  KMachine machine = smallMachine();
  machine.setTHELength(12.5, 1);
  const JointChain chain = JointChain::of(machine);
  ASSERT_EQ(chain.joints.size(), 2u);
  EXPECT_EQ(chain.axisCount, 2);
  EXPECT_EQ(chain.toolLength, 12.5);
  EXPECT_THAT(chain.toolDirection, Near(UVec3d(0.6, 0, 0.8), 1e-16));
  const Joint& x = chain.joints[0];
  EXPECT_EQ(x.motion, Joint::Motion::slide);
  EXPECT_EQ(x.place, 0);
  EXPECT_EQ(x.min, -5);
  EXPECT_EQ(x.max, 7);
  EXPECT_FALSE(x.isLocked);
  const Joint& c = chain.joints[1];
  EXPECT_EQ(c.motion, Joint::Motion::turn);
  EXPECT_EQ(c.place, 1);
  EXPECT_EQ(c.min, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(c.max, 90);
  EXPECT_EQ(c.point.x, 10);
}

TEST(JointChain, TellsLockedJoints) {
  KMachine machine = smallMachine();
  machine.getElemByName("C")->setLocked(true);
  const JointChain chain = JointChain::of(machine);
  EXPECT_FALSE(chain.joints[0].isLocked);
  EXPECT_TRUE(chain.joints[1].isLocked);
}

TEST(JointChain, OfNoToolIsEmpty) {
  const KMachine machine = smallMachine(0);  // loading makes no tool current
  for (const int tool : {0, -3, 2, 99}) {
    const JointChain chain = JointChain::of(machine, tool);
    EXPECT_FALSE(chain.hasTool) << tool;
    EXPECT_TRUE(chain.joints.empty()) << tool;
    EXPECT_EQ(chain.motion({1, 2}), UMatrix()) << tool;
  }
  EXPECT_FALSE(JointChain::of(KMachine()).hasTool);
}

TEST(JointChain, IsCoupledWhenOneValueMovesTwoJoints) {
  KMachine machine = smallMachine();
  EXPECT_FALSE(JointChain::of(machine).isCoupled());
  machine.getElemByName("C")->setValueIndex(0);
  EXPECT_TRUE(JointChain::of(machine).isCoupled());
}

TEST(JointChain, LeavesOutAnAxisWithoutAValue) {
  const TempDir folder;
  KMachine machine;
  machine.setDataFilePNE(folder
                             .write("m.def",
                                    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\n"
                                    "rotation=C,-50,z,0,0,10,0,0\ntool=z,20,0,0\n")
                             .wstring(),
                         1);
  machine.readDataFile();
  machine.setCurrentTool(1);
  const JointChain chain = JointChain::of(machine);
  ASSERT_EQ(chain.joints.size(), 1u);
  EXPECT_EQ(chain.joints[0].place, 0);
  EXPECT_EQ(differenceOf(machine, *positionOf(machine, {30})), "");
}

}  // namespace
}  // namespace korvo::test
