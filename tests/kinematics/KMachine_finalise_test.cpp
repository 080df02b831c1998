// Finalisation: which machines are complete, how axes are numbered, the version-2 shift of limits,
// what is traced. Denavit-Hartenberg parameters are in KMachine_finalise_dh_test.cpp, classes and
// records in KMachine_finalise_class_test.cpp.

#include "tests/support/LoadText.h"

#include <utility>
#include <vector>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::LoadingTest;
using korvo::test::noPositionLine;
using korvo::test::TempDir;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;

namespace {

const wchar_t* const kUnrecognized = L"... ? Unrecognized stuff";

class Finalise : public LoadingTest {};

// --- complete and incomplete machines

TEST_F(Finalise, EmptyMachineIsIncomplete) {
  KMachine machine;
  EXPECT_EQ(machine.finalise(), -1);
  EXPECT_EQ(machine.getAxisNum(), 0);
  EXPECT_TRUE(trace.claim(noPositionLine(0)));
}

TEST_F(Finalise, MachineWithoutAxesIsCompleteButHasNoPosition) {
  const KMachine machine = load("frame\npart\nlien=BATI\ntool=z,0,0,5\n", 2);  // claims <0>
  EXPECT_EQ(result, 0);
  EXPECT_EQ(machine.getAxisNum(), 0);
  EXPECT_EQ(trace.claimAll(kUnrecognized), 2);
}

TEST_F(Finalise, IncompleteMachineStillGetsToolRecords) {
  const KMachine machine = load("frame\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool=z,0,0,50\n", 2);
  EXPECT_EQ(result, -1);
  EXPECT_EQ(machine.getAxisNum(), 0);
  EXPECT_EQ(machine.getKine(1).toolIndex, -101);
  EXPECT_EQ(machine.getKine(1).kinematicClass, 1);
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    EXPECT_EQ(machine.getElemByRank(rank)->getValueIndex(), -1);
  }
  EXPECT_EQ(machine.getAxisElem(1), nullptr);
}

TEST_F(Finalise, TracesElementsThenPositionThenTools) {
  korvo::test::loadText("frame\naxis=X,x\ntool=z,0,0,5\nlien=X\ntool=z,0,0,6\n", 2);
  const std::vector<std::wstring> expected = {
      L"e[0]_BATI,  BATI (i:   0, p: -10) <>",
      L"e[1]_LIN,      X (i:   1, p:   0) <>  dir: (   1.00 ;    0.00 ;    0.00)   min:    0.00 "
      L"unset ; max:    0.00 unset",
      L"e[2]_TOOL, OUTIL (i:-101, p:   1) <>  pos: (   0.00 ;    0.00 ;    5.00)",
      L"e[3]_TOOL, OUTIL (i:-102, p:   1) <>  pos: (   0.00 ;    0.00 ;    6.00)",
      noPositionLine(0),
      kUnrecognized,
      kUnrecognized,
      kUnrecognized,
      kUnrecognized};
  EXPECT_EQ(trace.lines(), expected);
  trace.claimAll();
}

// --- axis numbers

TEST_F(Finalise, GapsInAxisNumbersCloseInTheValueOrder) {
  const KMachine machine = load(
      "frame\npart\nlien=BATI\nrotation=B,5,y\naxis=Z,3,z\naxis=Y,2,y\naxis=X,1,x\ntool=z,0,0,5\n",
      1);
  ASSERT_EQ(result, 0);
  EXPECT_EQ(machine.getAxisNum(), 4);
  const std::pair<int, int> places[] = {{1, 0}, {2, 1}, {3, 2}, {5, 3}};
  for (const auto& [number, place] : places) {
    EXPECT_EQ(machine.getElemByIndex(number)->getValueIndex(), place);
    EXPECT_EQ(machine.getAxisElem(place + 1), machine.getElemByIndex(number));
  }
  EXPECT_EQ(machine.getAxisElem(5), nullptr);
  KMachineValue<4> value;
  machine.setAxisVal(value, 5, 9.0);
  EXPECT_EQ(value[3], 9.0);
  machine.setAxisVal(value, 4, 7.0);  // nobody's number: the first value
  EXPECT_EQ(value[0], 7.0);
  EXPECT_EQ(machine.getElemByIndex(0)->getValueIndex(), -1);
  EXPECT_EQ(machine.getElemByIndex(-1)->getValueIndex(), -1);
  EXPECT_EQ(machine.getElemByIndex(-101)->getValueIndex(), -1);
}

TEST_F(Finalise, LargeAxisNumbersAreNumbersLikeOthers) {
  const KMachine machine =
      load("frame\npart\nlien=BATI\naxis=U,5000,x\naxis=V,7,y\ntool=z,0,0,5\n", 1);
  EXPECT_EQ(machine.getAxisNum(), 2);
  EXPECT_EQ(machine.getElemByIndex(7)->getValueIndex(), 0);
  EXPECT_EQ(machine.getElemByIndex(5000)->getValueIndex(), 1);
  EXPECT_EQ(machine.getAxisElem(2), machine.getElemByIndex(5000));
  EXPECT_EQ(trace.claimAll(kUnrecognized), 2);
}

TEST_F(Finalise, AxesOfOneNumberShareAPlace) {
  const KMachine machine =
      load("frame\npart\nlien=BATI\naxis=U,1,x\naxis=V,1,y\naxis=W,3,z\ntool=z,0,0,5\n", 1);
  EXPECT_EQ(machine.getAxisNum(), 2);
  EXPECT_EQ(machine.getElemByRank(2)->getValueIndex(), 0);
  EXPECT_EQ(machine.getElemByRank(3)->getValueIndex(), 0);
  EXPECT_EQ(machine.getElemByRank(4)->getValueIndex(), 1);
  EXPECT_EQ(machine.getAxisElem(1), machine.getElemByRank(2));
  EXPECT_EQ(machine.getAxisElem(2), machine.getElemByRank(4));
  trace.claimAll(kUnrecognized);
}

TEST_F(Finalise, AxesWithoutNumberHaveNoPlaceAndDoNotMove) {
  const KMachine machine = load("frame\npart\nlien=BATI\naxis=X,x\naxis=W,z\ntool=z,0,0,5\n", 2);
  EXPECT_EQ(machine.getAxisNum(), 1);
  const KMachineElem* w = machine.getElemByName(L"W");
  EXPECT_EQ(w->getElemIndex(), 0);
  EXPECT_EQ(w->getValueIndex(), -1);
  EXPECT_EQ(machine.getAxisElem(1), machine.getElemByIndex(1));
  KMachineValue<1> value;
  value[0] = 5;
  EXPECT_EQ(machine.getMatrix(value, w), zgeo::UMatrix::_translation({5, 0, 0}));  // X alone
  trace.claimAll(kUnrecognized);
}

TEST_F(Finalise, EveryElementWithAPositiveIndexHasAPlace) {
  KMachineElem body(L"geom", 1);
  body.setElemIndex(4);
  KMachine machine;
  machine.setBatiToPart({KMachineElem(L"frame", 1), KMachineElem(L"part=x,y", 1)});
  machine.addBatiToTool({KMachineElem(L"axis=X,1,x", 1), body, KMachineElem(L"tool", 1)});
  EXPECT_EQ(machine.finalise(), 0);
  EXPECT_EQ(machine.getAxisNum(), 2);
  EXPECT_EQ(machine.getElemByIndex(4)->getValueIndex(), 1);
  EXPECT_EQ(machine.getAxisElem(2), machine.getElemByIndex(4));
  trace.claimAll(L"e[");
  EXPECT_EQ(trace.claimAll(kUnrecognized), 1);
}

TEST_F(Finalise, GunsHaveNoPlaceAndSayThatTheyAreAxes) {
  const KMachine machine = load("frame\npart\nlien=BATI\naxis=X,x\ngun=z,0,0,5\nlien=X\ntool\n", 2);
  const KMachineElem* gun = machine.getElemByIndex(-101);
  EXPECT_EQ(gun->getValueIndex(), -1);
  EXPECT_EQ(machine.getAxisNum(), 1);
  EXPECT_TRUE(gun->isAxis());
  EXPECT_TRUE(trace.claim(L"*** ERROR ***, elem<DRILL> said to be <DGun> but value index -1"));
  EXPECT_TRUE(machine.getElemByIndex(1)->isAxis());
  trace.claimAll(kUnrecognized);
}

TEST_F(Finalise, SecondRunNumbersTheSame) {
  KMachine machine = load("frame\naxis=X,x\npart\nlien=BATI\naxis=Z,z\ntool=z,0,0,5\n", 2);
  EXPECT_EQ(machine.finalise(), 0);
  trace.claimAll(L"e[");
  EXPECT_EQ(machine.getAxisNum(), 2);
  EXPECT_EQ(machine.getElemByIndex(3)->getValueIndex(), 1);
  EXPECT_EQ(machine.getAxisElem(2), machine.getElemByIndex(3));
  EXPECT_EQ(trace.claimAll(kUnrecognized), 3);
}

// --- the version-2 shift of limits

/// A head that turns about C (point 10 20 30), in front of it the slides Z and Y; on the table side
/// X and, nearer the part, the rotary axis A (point 5 6 7).
const char* const kHead =
    "frame\naxis=X,x\nrotation=A,x,1,1,5,6,7\npart\nlien=BATI\naxis=Y,y\naxis=Z,z\n"
    "rotation=C,z,1,1,10,20,30\ntool=z,10,20,-50\n"
    "limits=X,-100,100\ncoursemaximum=Y,200\ncourseminimum=Z,-300\nlimits=C,-90,90\n";

class LegacyOffset : public Finalise {
 protected:
  /// Loads with the current tool set, which only a second load can have.
  void loadTwice(const std::string& text, int version, int tool = 1) {
    machine.setDataFilePNE(folder.write("m.def", text).wstring(), version);
    firstResult = machine.readDataFile();
    afterFirst = machine.getLegacyOffset();
    machine.setCurrentTool(tool);
    machine.readDataFile();
    trace.claimAll(L"e[");
    trace.claimAll(kUnrecognized);
  }

  double min(int number) const { return machine.getElemByIndex(number)->getMin(); }
  double max(int number) const { return machine.getElemByIndex(number)->getMax(); }

  TempDir folder;
  KMachine machine;
  int firstResult = -99;
  UVec3d afterFirst{9, 9, 9};
};

TEST_F(LegacyOffset, NeedsACurrentToolWhichNoFirstLoadHas) {
  const KMachine first = load(kHead, 2);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(first.getLegacyOffset(), UVec3d());
  EXPECT_EQ(first.getElemByIndex(1)->getMax(), 100.0);
}

TEST_F(LegacyOffset, IsThePointOfTheHeadsLastRotaryAxisLessThoseOfTheTable) {
  loadTwice(kHead, 2);
  EXPECT_EQ(firstResult, 0);
  EXPECT_EQ(afterFirst, UVec3d());
  // From the tool: its point, then C's instead; Z is passed over; Y, frame, X count nothing; A and
  // the part (at zero) are taken off: (10, 20, 30) - (5, 6, 7).
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(5, 14, 23));
}

TEST_F(LegacyOffset, ShiftsOnlyLimitsThatAreSetOfTheFirstThreeAxes) {
  loadTwice(kHead, 2);
  EXPECT_EQ(min(1), -105.0);
  EXPECT_EQ(max(1), 95.0);
  EXPECT_EQ(max(2), 186.0);
  EXPECT_FALSE(machine.getElemByIndex(2)->hasMin());
  EXPECT_EQ(min(2), 0.0);
  EXPECT_EQ(min(3), -323.0);
  EXPECT_FALSE(machine.getElemByIndex(3)->hasMax());
  EXPECT_EQ(max(3), 0.0);
  EXPECT_EQ(min(6), -90.0);
  EXPECT_EQ(max(6), 90.0);
}

TEST_F(LegacyOffset, OtherVersionsHaveNone) {
  const std::string text =
      "frame\npart\nlien=BATI\naxis=X,1,x\nrotation=C,6,z,1,1,10,20,30\ntool=z,10,20,-50\n"
      "limits=X,-100,100\n";
  for (const int version : {1, 3}) {
    loadTwice(text, version);
    EXPECT_EQ(machine.getLegacyOffset(), UVec3d());
    EXPECT_EQ(max(1), 100.0);
  }
}

TEST_F(LegacyOffset, WithoutARotaryHeadIsTheToolsPoint) {
  loadTwice("frame\npart\nlien=BATI\naxis=Z,z\ntool=z,1,2,100\nlimits=Z,0,500\n", 2);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(1, 2, 100));
  EXPECT_EQ(min(3), -100.0);
  EXPECT_EQ(max(3), 400.0);
}

TEST_F(LegacyOffset, WalksBeyondTheFrameAndPassesOneElementOver) {
  // The element passed over is the rotary axis' carrier: here the frame itself.
  loadTwice(
      "frame\naxis=X,x\nrotation=A,x,1,1,5,6,7\npart\nlien=BATI\nrotation=C,z,1,1,10,20,30\n"
      "tool=z,0,0,0\n",
      2);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(5, 14, 23));
}

TEST_F(LegacyOffset, RotaryAxisBehindAToolIsTheFirstSumNotASum) {
  loadTwice(
      "frame\npart\nlien=BATI\naxis=X,x\nrotation=C,z,1,1,1,2,3\nrotation=B,y,1,1,40,50,60\n"
      "tool=z,7,8,9\n",
      2);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(1, 2, 3));  // C, the last met
}

TEST_F(LegacyOffset, IsTheCurrentToolsOwn) {
  const std::string text =
      "frame\npart\nlien=BATI\naxis=X,x\ntool=z,1,1,1\nlien=X\ntool=z,2,2,2\nlimits=X,0,10\n";
  loadTwice(text, 2, 2);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(2, 2, 2));
  EXPECT_EQ(max(1), 8.0);
}

TEST_F(LegacyOffset, OfAGunIsZeroAndItsCarrierIsNotPassedOver) {
  // A gun is neither a tool nor a rotary axis: it is itself the element passed over.
  loadTwice("frame\npart\nlien=BATI\nrotation=C,z,1,1,4,5,6\ngun=z,9,9,9\nlien=C\ntool=z,0,0,0\n",
            2, 1);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(-4, -5, -6));
}

TEST_F(LegacyOffset, StaysWhenTheNextFileIsIncomplete) {
  loadTwice(kHead, 2);
  machine.setDataFilePNE(folder.write("n.def", "frame\ntool\n").wstring(), 2);
  EXPECT_EQ(machine.readDataFile(), -1);
  claimFinalise(machine);
  trace.claimAll(kUnrecognized);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(5, 14, 23));
}

TEST_F(LegacyOffset, CopiesTakeItAlongWithVersionAndRotationPoints) {
  loadTwice(std::string(kHead) + "rotationpoint=1,2,3,4,5,6\n", 2);  // more numbers than axes
  const KMachine copy(machine);
  KMachine assigned;
  assigned = machine;
  for (const KMachine* m : {&copy, &std::as_const(assigned)}) {
    EXPECT_EQ(m->getVersion(), 2);
    EXPECT_EQ(m->getLegacyOffset(), UVec3d(5, 14, 23));
    ASSERT_NE(m->getRotationPoint(0), nullptr);
    EXPECT_EQ((*m->getRotationPoint(0))[5], 6.0);
    EXPECT_EQ(m->getRotationPoint(1), nullptr);
  }
}

/// Machines built in memory and finalised as version 2 with tool 1 current: parts and axes as no
/// file can give them.
class BuiltLegacyOffset : public Finalise {
 protected:
  void finaliseWith(const KMachineElem& partElem, std::vector<KMachineElem> axes) {
    axes.emplace_back(L"tool=z,10,20,30", 1);
    machine.setBatiToPart({KMachineElem(L"frame", 1), partElem});
    machine.addBatiToTool(axes);
    machine.setVersion(2);
    machine.setCurrentTool(1);
    EXPECT_EQ(machine.finalise(), 0);
    trace.claimAll(L"e[");
    trace.claimAll(kUnrecognized);
  }

  static KMachineElem x() {
    KMachineElem e(L"axis=X,1,x", 1);
    e.setMax(100, true);
    return e;
  }

  const KMachineElem part{L"part=x,y", 1};
  KMachine machine;
};

TEST_F(BuiltLegacyOffset, TakesOffThePointOfThePart) {
  KMachineElem moved = part;
  moved.setElemPivot({1, 2, 3});
  finaliseWith(moved, {x()});
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(9, 18, 27));
  EXPECT_EQ(machine.getElemByIndex(1)->getMax(), 91.0);
}

TEST_F(BuiltLegacyOffset, NeedsAPartOfItsOwnIndex) {
  KMachineElem renumbered = part;
  renumbered.setElemIndex(-7);
  finaliseWith(renumbered, {x()});
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d());
  EXPECT_EQ(machine.getElemByIndex(1)->getMax(), 100.0);
}

TEST_F(BuiltLegacyOffset, ShiftsTheFirstAxisOfANumber) {
  finaliseWith(part, {x(), x()});
  EXPECT_EQ(machine.getElemByRank(2)->getMax(), 90.0);
  EXPECT_EQ(machine.getElemByRank(3)->getMax(), 100.0);
}

TEST_F(LegacyOffset, DirectFinaliseShiftsAgainByTheMovedPoints) {
  loadTwice(
      "frame\npart\nlien=BATI\naxis=Z,z\nrotation=C,z,1,1,10,20,30\ntool=z,10,20,-50\n"
      "limits=Z,0,500\n",
      2);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(10, 20, 30));
  EXPECT_EQ(max(3), 470.0);
  // C and the tool share their line, so C's frame origin is the tool's point by now.
  EXPECT_EQ(machine.finalise(), 0);
  EXPECT_EQ(machine.getLegacyOffset(), UVec3d(10, 20, -50));
  EXPECT_EQ(min(3), -30.0 + 50.0);
  EXPECT_EQ(max(3), 470.0 + 50.0);
  trace.claimAll(L"e[");
  trace.claimAll(kUnrecognized);
}

}  // namespace
