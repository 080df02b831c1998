// What hosts do to the links of elements after the machine was finalised: queries about tools,
// whose chains are noted there, follow at once.
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "kinematics/KMachine.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"

namespace {

using korvo::test::anyMachine;
using korvo::test::anyPosition;
using korvo::test::isSameBits;
using korvo::test::loadMachine;
using korvo::test::Position;
using korvo::test::positionOf;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

using Machine = std::unique_ptr<KMachine>;

constexpr int kX = 1, kY = 2, kZ = 3;

/// Three linear axes, X carrying Y carrying Z, and a tool at (0, 0, 100).
Machine mill() {
  return loadMachine(
      "bati\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\ntool=z,0,0,100\n", 1);
}

/// Where both kinds of query put the tool of the mill at (10, 20, 30).
UVec3d toolPoint(const KMachine& machine) {
  const Position v = positionOf(machine, {10, 20, 30});
  UVec3d pos, dir;
  EXPECT_TRUE(machine.getTool(*v, pos, dir, 1));
  EXPECT_EQ(machine.getMatrix_H2T(*v).getOrigin(), pos);
  return pos;
}

TEST(ToolLinks, AreThoseOfTheFileAtFirst) { EXPECT_EQ(toolPoint(*mill()), UVec3d(10, 20, 130)); }

TEST(ToolLinks, FollowAnotherPredecessor) {
  const Machine m = mill();
  m->getElemByIndex(kZ)->setPrevIndex(kX);  // past Y
  EXPECT_EQ(toolPoint(*m), UVec3d(10, 0, 130));
  EXPECT_EQ(m->getToolChain(true, 1).size(), 4u);  // part, X, Z, tool
  m->getElemByIndex(kZ)->setPrevIndex(kY);
  EXPECT_EQ(toolPoint(*m), UVec3d(10, 20, 130));
}

// Y stands before Z, so it answers to the index that both have; its value is then the third.
TEST(ToolLinks, FollowAnotherIndexOfAnEarlierElement) {
  const Machine m = mill();
  m->getElemByIndex(kY)->setElemIndex(kZ);
  EXPECT_EQ(toolPoint(*m), UVec3d(10, 30, 100));
}

TEST(ToolLinks, FollowAToolThatLosesItsNumber) {
  const Machine m = mill();
  m->getElemByIndex(KMachineElem::_getToolIndex(1))->setElemIndex(KMachineElem::_getToolIndex(2));
  UVec3d pos, dir;
  EXPECT_FALSE(m->getTool(*positionOf(*m), pos, dir, 1));
  EXPECT_TRUE(m->getTool(*positionOf(*m, {10, 20, 30}), pos, dir, 2));
  EXPECT_EQ(pos, UVec3d(10, 20, 130));
}

// The root names a predecessor that no element is; a gun that comes later is it, and carries all.
TEST(ToolLinks, FollowAnElementAddedBehindTheRoot) {
  const Machine m = mill();
  KMachineElem gun;
  gun.setElemType(KMachineElem::KMET_TYPE_DGUN);
  gun.setElemAxis({0, 0, 1});
  gun.setTHELength(7);
  gun.setElemIndex(m->getToolChain(false, 1).front()->getPrevIndex());
  gun.setPrevIndex(77);  // no element's
  m->setVersion(0);
  ASSERT_NE(m->addElem(gun), nullptr);
  EXPECT_EQ(toolPoint(*m), UVec3d(10, 20, 137));
}

TEST(ToolLinks, OfACopyAreItsOwn) {
  const Machine m = mill();
  KMachine copy(*m);
  copy.getElemByIndex(kZ)->setPrevIndex(kX);
  EXPECT_EQ(toolPoint(copy), UVec3d(10, 0, 130));
  EXPECT_EQ(toolPoint(*m), UVec3d(10, 20, 130));
  *m = copy;
  copy.getElemByIndex(kZ)->setPrevIndex(kY);
  EXPECT_EQ(toolPoint(*m), UVec3d(10, 0, 130));
}

/// The tool's frame from its element's own motion, whose chain every query looks up.
UMatrix frameOf(const KMachine& machine, const KMachineValueBase& v, const KMachineElem& tool) {
  UMatrix frame = machine.getMatrix(v, &tool);
  frame.setOrigin(frame * tool.getElemPivot());
  return frame;
}

// Skipping an element, or giving it an index that nothing names, makes no circle of links.
RC_GTEST_PROP(ToolLinks, AnswerAsTheElementsOwnMotionDoes, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  const int changes = *rc::gen::inRange(0, 4);
  for (int i = 0; i < changes; ++i) {
    KMachineElem* e = machine->getElemByRank(*rc::gen::inRange(0, machine->getElemNumber()));
    const KMachineElem* previous = machine->getPrevElem(e);
    if (*rc::gen::arbitrary<bool>()) {
      if (previous) e->setPrevIndex(previous->getPrevIndex());
    } else if (!e->isTool()) {
      e->setElemIndex(50 + i);
    }
  }
  const KMachineElem* tool = machine->getElemByIndex(machine->getToolIndex(1));
  RC_ASSERT(isSameBits(machine->getMatrix_H2T(*v), frameOf(*machine, *v, *tool)));
}

}  // namespace
