// Machines built in memory: adding elements, grafting tool chains, installing the part side,
// chains, and what becomes of the axis table when the elements move.

#include "tests/support/LoadText.h"

#include <utility>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::chainWords;
using korvo::test::describe;
using korvo::test::LoadingTest;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;

namespace {

KMachineElem elem(KMachineElem::KME_TYPE type, const wchar_t* name, int index,
                  const UVec3d& axis = {}, const UVec3d& point = {}) {
  KMachineElem e;
  e.setElemType(type);
  e.setElemName(name);
  e.setElemIndex(index);
  e.setElemAxis(axis);
  e.setElemPivot(point);
  return e;
}

const KMachineElem kFrame = elem(KMachineElem::KMET_TYPE_BATI, L"BATI", 0);
const KMachineElem kPart = elem(KMachineElem::KMET_TYPE_PART, L"PIECE", -1, {0, 0, 1});
const KMachineElem kX = elem(KMachineElem::KMET_TYPE_ALIN, L"X", 1, {1, 0, 0});
const KMachineElem kZ = elem(KMachineElem::KMET_TYPE_ALIN, L"Z", 3, {0, 0, 1});
const KMachineElem kC = elem(KMachineElem::KMET_TYPE_AROT, L"C", 6, {0, 0, 1});
const KMachineElem kTool = elem(KMachineElem::KMET_TYPE_TOOL, L"OUTIL", -2, {0, 0, 1});
const KMachineElem kGun = elem(KMachineElem::KMET_TYPE_DGUN, L"DRILL", -2, {0, 0, 1});

class Building : public LoadingTest {
 protected:
  /// Frame, table C, part; X, Z and a tool.
  void buildHead() {
    ASSERT_EQ(machine.setBatiToPart({kFrame, kC, kPart}), 0);
    ASSERT_EQ(machine.addBatiToTool({kX, kZ, kTool}), -101);
  }

  KMachine machine;
};

// --- adding

TEST_F(Building, AddingAppendsACopy) {
  KMachineElem* added = machine.addElem(kX);
  ASSERT_NE(added, nullptr);
  EXPECT_EQ(added, machine.getElemByRank(0));
  EXPECT_EQ(*added, kX);
  EXPECT_NE(added, &kX);
}

TEST_F(Building, AddingATypeGivesAnUnsetElementOfIt) {
  KMachineElem* added = machine.addElem(KMachineElem::KMET_TYPE_GEOM);
  ASSERT_NE(added, nullptr);
  KMachineElem expected;
  expected.setElemType(KMachineElem::KMET_TYPE_GEOM);
  EXPECT_EQ(*added, expected);
  EXPECT_EQ(machine.getElemNumber(), 1);
}

TEST_F(Building, AddingAnElementOfTheMachineItself) {
  machine.addElem(kX);
  for (int i = 0; i < 100; ++i) machine.addElem(*machine.getElemByRank(0));
  EXPECT_EQ(machine.getElemNumber(), 101);
  for (int rank = 0; rank < 101; ++rank) EXPECT_EQ(*machine.getElemByRank(rank), kX);
}

TEST_F(Building, MachinesOfAFileTakeNoElements) {
  for (const int version : {1, 2, -1}) {
    machine.setVersion(version);
    EXPECT_EQ(machine.addElem(kX), nullptr);
    EXPECT_EQ(machine.addElem(KMachineElem::KMET_TYPE_TOOL), nullptr);
    EXPECT_EQ(machine.getElemNumber(), 0);
  }
}

// --- grafting a tool chain

TEST_F(Building, ToolChainHangsOnTheFrame) {
  machine.addElem(kFrame);
  EXPECT_EQ(machine.addBatiToTool({kX, kZ, kTool}), -101);
  EXPECT_EQ(describe(machine),
            "BATI(0<-10); X(1<0) dir 1 0 0; Z(3<1) dir 0 0 1; OUTIL(-101<3) dir 0 0 1");
}

TEST_F(Building, FurtherToolsCountOn) {
  machine.addElem(kFrame);
  EXPECT_EQ(machine.addBatiToTool({kX, kTool}), -101);
  EXPECT_EQ(machine.addBatiToTool({kZ, kGun}), -102);
  EXPECT_EQ(machine.addBatiToTool({kTool}), -103);
  EXPECT_EQ(chainWords(machine.getToolChain(false, 2)), "BATI Z DRILL");
  EXPECT_EQ(chainWords(machine.getToolChain(true, 2)), "Z DRILL");
  EXPECT_EQ(chainWords(machine.getToolChain(false, 3)), "BATI OUTIL");
}

TEST_F(Building, ToolsInsideAToolChainCountForTheNextGraft) {
  machine.addElem(kFrame);
  EXPECT_EQ(machine.addBatiToTool({kGun, kTool}), -101);  // the gun in between keeps its index
  EXPECT_EQ(machine.getElemByRank(1)->getElemIndex(), -2);
  EXPECT_EQ(machine.getElemByRank(2)->getPrevIndex(), -2);
  EXPECT_EQ(machine.addBatiToTool({kTool}), -103);
}

TEST_F(Building, ToolChainHangsOnTheFramesOwnIndex) {
  machine.addElem(elem(KMachineElem::KMET_TYPE_BATI, L"BATI", 42));
  machine.addBatiToTool({kTool});
  EXPECT_EQ(machine.getElemByRank(1)->getPrevIndex(), 42);
}

TEST_F(Building, ToolChainOfTheMachinesOwnElements) {
  machine.addElem(kFrame);
  machine.addBatiToTool({kX, kTool});
  const std::vector<KMachineElem> again = {*machine.getElemByRank(1), *machine.getElemByRank(2)};
  EXPECT_EQ(machine.addBatiToTool(again), -102);
  EXPECT_EQ(machine.getElemByRank(3)->getPrevIndex(), 0);
}

TEST_F(Building, RefusedToolChainsAddNothing) {
  EXPECT_EQ(machine.addBatiToTool({kX, kTool}), -1);  // no element yet
  EXPECT_EQ(machine.getElemNumber(), 0);
  machine.addElem(kFrame);
  EXPECT_EQ(machine.addBatiToTool({}), -1);
  EXPECT_EQ(machine.addBatiToTool({kTool, kX}), -1);
  EXPECT_EQ(machine.addBatiToTool({kX}), -1);
  machine.setVersion(2);
  EXPECT_EQ(machine.addBatiToTool({kX, kTool}), -1);
  EXPECT_EQ(machine.getElemNumber(), 1);
}

TEST_F(Building, FirstElementMustBeTheFrame) {
  machine.addElem(kX);
  machine.addElem(kFrame);
  EXPECT_EQ(machine.addBatiToTool({kTool}), -1);
  EXPECT_EQ(machine.getElemNumber(), 2);
}

// --- installing the part side

TEST_F(Building, PartSideIsLinkedFromThePartBack) {
  EXPECT_EQ(machine.setBatiToPart({kFrame, kX, kC, kPart}), 0);
  EXPECT_EQ(describe(machine),
            "BATI(0<1) inv; X(1<6) inv dir 1 0 0; C(6<-1) inv dir 0 0 1; PIECE(-1<-10) dir 0 0 1");
  EXPECT_EQ(chainWords(machine.getChain(0)), "PIECE C X BATI");
}

TEST_F(Building, PartSideTogglesTheSense) {
  KMachineElem inverted = kX;
  inverted.invert();
  machine.setBatiToPart({kFrame, inverted, kPart});
  EXPECT_TRUE(machine.getElemByRank(0)->isInverted());
  EXPECT_FALSE(machine.getElemByRank(1)->isInverted());
  EXPECT_FALSE(machine.getElemByRank(2)->isInverted());
}

TEST_F(Building, PartSideAnswersTheFramesIndex) {
  EXPECT_EQ(machine.setBatiToPart({elem(KMachineElem::KMET_TYPE_BATI, L"BATI", 17), kPart}), 17);
}

TEST_F(Building, PartSideNeedsNoVersionZero) {
  machine.setVersion(2);
  EXPECT_EQ(machine.setBatiToPart({kFrame, kPart}), 0);
  EXPECT_EQ(machine.getElemNumber(), 2);
}

TEST_F(Building, RefusedPartSidesChangeNothing) {
  EXPECT_EQ(machine.setBatiToPart({}), -1);
  EXPECT_EQ(machine.setBatiToPart({kFrame}), -1);
  EXPECT_EQ(machine.setBatiToPart({kPart}), -1);
  EXPECT_EQ(machine.setBatiToPart({kX, kPart}), -1);
  EXPECT_EQ(machine.setBatiToPart({kFrame, kX}), -1);
  EXPECT_EQ(machine.setBatiToPart({kPart, kFrame}), -1);
  EXPECT_EQ(machine.getElemNumber(), 0);
  machine.addElem(kX);
  EXPECT_EQ(machine.setBatiToPart({kFrame, kPart}), -1);
  EXPECT_EQ(machine.getElemNumber(), 1);
}

TEST_F(Building, BothSidesMakeAWholeMachine) {
  buildHead();
  EXPECT_EQ(chainWords(machine.getToolChain(false, 1)), "PIECE C BATI X Z OUTIL");
  EXPECT_EQ(machine.finalise(), 0);
  trace.claimAll(L"e[");
  trace.claimAll(L"... ? Unrecognized stuff");
  EXPECT_EQ(machine.getAxisNum(), 3);
}

// --- chains

TEST_F(Building, ChainsRunFromTheRootToTheElement) {
  buildHead();
  const std::vector<const KMachineElem*> chain = machine.getChain(machine.getElemByIndex(3));
  ASSERT_EQ(chain.size(), 5u);
  EXPECT_EQ(chain.front(), machine.getElemByIndex(-1));
  EXPECT_EQ(chain.back(), machine.getElemByIndex(3));
  EXPECT_EQ(chainWords(chain), "PIECE C BATI X Z");
  EXPECT_EQ(machine.getChain(3), chain);
}

TEST_F(Building, ChainsOfNothingAreEmpty) {
  buildHead();
  EXPECT_TRUE(machine.getChain(nullptr).empty());
  EXPECT_TRUE(machine.getChain(99).empty());
  EXPECT_TRUE(machine.getToolChain(true, 2).empty());
  EXPECT_TRUE(machine.getToolChain(false, 2).empty());
}

TEST_F(Building, ChainOfTheRootIsTheRoot) {
  buildHead();
  EXPECT_EQ(chainWords(machine.getChain(-1)), "PIECE");
}

TEST_F(Building, ChainsPassThroughTheFirstElementOfAnIndex) {
  buildHead();
  KMachineElem second = kX;
  second.setElemName(L"second");
  machine.addElem(second);  // root of its own, index 1 again
  KMachineElem* last = machine.addElem(kC);
  last->setElemIndex(50), last->setPrevIndex(1);
  EXPECT_EQ(chainWords(machine.getChain(50)), "PIECE C BATI X C");
  EXPECT_EQ(chainWords(machine.getChain(machine.getElemByRank(6))), "second");
}

TEST_F(Building, ChainOfAnElementThatIsNotTheMachines) {
  buildHead();
  KMachineElem stranger = kX;
  stranger.setPrevIndex(6);
  const std::vector<const KMachineElem*> chain = machine.getChain(&stranger);
  EXPECT_EQ(chainWords(chain), "PIECE C X");
  EXPECT_EQ(chain.back(), &stranger);
}

TEST_F(Building, ActiveChainsLeaveOutFrameBodiesAndUnsetElements) {
  machine.addElem(kFrame);
  const KMachineElem body = elem(KMachineElem::KMET_TYPE_GEOM, L"GEOM", -201);
  const KMachineElem unset = elem(KMachineElem::KMET_TYPE_NONE, L"none", 30);
  machine.addBatiToTool({kX, body, unset, kGun, kZ, kTool});
  EXPECT_EQ(chainWords(machine.getToolChain(false, 1)), "BATI X GEOM none DRILL Z OUTIL");
  EXPECT_EQ(chainWords(machine.getToolChain(true, 1)), "X DRILL Z OUTIL");
}

TEST_F(Building, LongChainsAreWhole) {
  machine.addElem(kFrame);
  std::vector<KMachineElem> chain;
  for (int i = 1; i <= 500; ++i) chain.push_back(elem(KMachineElem::KMET_TYPE_ALIN, L"Q", i));
  chain.push_back(kTool);
  machine.addBatiToTool(chain);
  const std::vector<const KMachineElem*> found = machine.getToolChain(false, 1);
  ASSERT_EQ(found.size(), 502u);
  for (int i = 0; i < 502; ++i) EXPECT_EQ(found[i], machine.getElemByRank(i));
}

// --- the axis table stays with the machine

/// Every axis element of `machine` is one of its own elements, and the right one.
void expectOwnAxes(const KMachine& machine, const std::vector<int>& indices) {
  for (int k = 1; k <= static_cast<int>(indices.size()); ++k) {
    ASSERT_NE(machine.getAxisElem(k), nullptr);
    EXPECT_EQ(machine.getAxisElem(k), machine.getElemByIndex(indices[k - 1]));
  }
  EXPECT_EQ(machine.getAxisElem(static_cast<int>(indices.size()) + 1), nullptr);
}

class AxisTable : public Building {
 protected:
  void SetUp() override {
    buildHead();
    machine.finalise();
    trace.claimAll();
    expectOwnAxes(machine, {1, 3, 6});
  }
};

TEST_F(AxisTable, FollowsGrowth) {
  for (int i = 0; i < 1000; ++i) machine.addElem(KMachineElem::KMET_TYPE_GEOM);
  expectOwnAxes(machine, {1, 3, 6});
}

TEST_F(AxisTable, FollowsGrafts) {
  machine.addBatiToTool(std::vector<KMachineElem>(200, kTool));
  expectOwnAxes(machine, {1, 3, 6});
}

TEST_F(AxisTable, OfACopyIsTheCopys) {
  auto source = std::make_unique<KMachine>(machine);
  const KMachine copy(*source);
  KMachine assigned;
  assigned.addElem(kX);
  assigned = *source;
  source.reset();
  expectOwnAxes(copy, {1, 3, 6});
  expectOwnAxes(assigned, {1, 3, 6});
}

TEST_F(AxisTable, OfAnAssignmentToItself) {
  const KMachine& self = machine;
  machine = self;
  expectOwnAxes(machine, {1, 3, 6});
  EXPECT_EQ(machine.getElemNumber(), 6);
}

TEST_F(AxisTable, StaysAfterAnIncompleteFinaliseThoughNoAxisIsCounted) {
  machine.addElem(kFrame);  // two frames now
  EXPECT_EQ(machine.finalise(), -1);
  trace.claimAll();
  EXPECT_EQ(machine.getAxisNum(), 0);
  expectOwnAxes(machine, {1, 3, 6});
}

TEST_F(AxisTable, CopiesAnswerLikeTheirSource) {
  machine.setCurrentTool(1);
  machine.setStrategy(3);
  machine.setMode_RTCP(4);
  machine.addElemCollCheck(1, 3);
  machine.setUNI2MAC(zgeo::UMatrix::_translation({1, 2, 3}));
  machine.setTHELength(80.0, 1);
  machine.setDataFilePNE(std::wstring(L"m.def"), 0);
  const KMachine copy(machine);
  EXPECT_EQ(describe(copy), describe(machine));
  EXPECT_EQ(copy.getCurrentTool(), 1);
  EXPECT_EQ(copy.getStrategy(), 3);
  EXPECT_EQ(copy.getMode_RTCP(), 4);
  EXPECT_EQ(copy.getCollCheck(), machine.getCollCheck());
  EXPECT_EQ(copy.getUNI2MAC(), machine.getUNI2MAC());
  EXPECT_EQ(copy.getMAC2UNI(), machine.getMAC2UNI());
  EXPECT_EQ(copy.getTHELength(1), 80.0);
  EXPECT_EQ(copy.getDataFilePNE(), L"m.def");
  EXPECT_EQ(copy.getAxisNum(), 3);
  KMachineValue<3> value;
  value[0] = 1, value[1] = 2, value[2] = 30;
  EXPECT_EQ(copy.getMatrix_TP2U(value), machine.getMatrix_TP2U(value));
  machine.setTHELength(10.0, 1);
  EXPECT_EQ(copy.getTHELength(1), 80.0);
}

}  // namespace
