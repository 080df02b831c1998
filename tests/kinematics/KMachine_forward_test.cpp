#include "kinematics/KMachine.h"

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"
#include "tests/support/TraceCapture.h"

namespace {

using korvo::test::isSameBits;
using korvo::test::loadMachine;
using korvo::test::Near;
using korvo::test::TraceCapture;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;

constexpr double kExact = 1e-12;  // a sine or cosine of a quarter turn, times a length below 1000

using Machine = std::unique_ptr<KMachine>;

template <int N>
KMachineValue<N> at(const double (&values)[N]) {
  KMachineValue<N> v;
  v.set(values);
  return v;
}

const std::string kPart = "bati\npart=x,y\nlien=BATI\n";
const std::string kXyz = "axis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n";
const std::string kTool = "tool=z,0,0,100\n";

/// Three linear axes and a tool at (0, 0, 100).
Machine mill() { return loadMachine(kPart + kXyz + kTool, 1); }

/// A table C about the line x = 100 parallel to Z; X, Y, Z and the tool on the other side.
Machine rotaryTable() {
  return loadMachine("bati\nrotation=C,6,z,0,0,100,0,0\npart=x,y\nlien=BATI\n" + kXyz + kTool, 1);
}

/// X, Y, Z, then C about the Z line and B about the Y line, then a tool 50 below them.
Machine forkHead() {
  return loadMachine(
      kPart + kXyz + "rotation=B,5,y,0,0,0,0,0\nrotation=C,6,z,0,0,0,0,0\ntool=z,0,0,-50\n", 1);
}

/// X and a tool (1), on the same slide a drill gun (2) along Y, and on the gun a tool (3).
Machine gunOnSlide() {
  return loadMachine(
      kPart + "axis=X,1,x\naxis=Z,3,z\ntool=z,0,0,0\nlien=Z\ngun=y,0,10,0\ntool=z,0,20,0\n", 1);
}

/// The same without the third tool.
Machine toolAndGun() {
  return loadMachine(kPart + "axis=X,1,x\naxis=Z,3,z\ntool=z,0,0,0\nlien=Z\ngun=y,0,10,0\n", 1);
}

UMatrix quarterTurnAboutZ(double x, double y) {
  UMatrix m;  // p' = c + Rz(90)(p - c)
  m.set(0, -1, 0, x + y, 1, 0, 0, y - x, 0, 0, 1, 0, 0, 0, 0, 1);
  return m;
}

UVec3d toolPoint(const KMachine& machine, const zkin::KMachineValueBase& v, int tool = 1) {
  UVec3d pos, dir;
  EXPECT_TRUE(machine.getTool(v, pos, dir, tool));
  return pos;
}

UVec3d toolDirection(const KMachine& machine, const zkin::KMachineValueBase& v, int tool = 1) {
  UVec3d pos, dir;
  EXPECT_TRUE(machine.getTool(v, pos, dir, tool));
  return dir;
}

// --- motion matrix

TEST(KMachineForward, LinearAxesMoveTheToolPoint) {
  const Machine m = mill();
  const auto v = at({10.0, 20.0, 30.0});
  EXPECT_EQ(toolPoint(*m, v), UVec3d(10, 20, 130));
  EXPECT_EQ(toolDirection(*m, v), UVec3d(0, 0, 1));
}

TEST(KMachineForward, RotaryAxisTurnsCounterClockwiseSeenAgainstIt) {
  const Machine m = loadMachine(kPart + "rotation=C,1,z,0,0,0,0,0\ntool=z,100,0,0\n", 1);
  EXPECT_THAT(toolPoint(*m, at({90.0})), Near(UVec3d(0, 100, 0), kExact));
  EXPECT_THAT(toolPoint(*m, at({-90.0})), Near(UVec3d(0, -100, 0), kExact));
}

TEST(KMachineForward, AxisPointingDownTurnsTheOtherWay) {
  const Machine m = loadMachine(kPart + "rotation=C,1,-z,0,0,0,0,0\ntool=z,100,0,0\n", 1);
  EXPECT_THAT(toolPoint(*m, at({90.0})), Near(UVec3d(0, -100, 0), kExact));
}

TEST(KMachineForward, RotaryAxisTurnsAboutItsLineNotTheOrigin) {
  const Machine m = loadMachine(kPart + "rotation=C,1,z,0,0,10,20,0\ntool=z,110,20,5\n", 1);
  EXPECT_THAT(m->getMatrix(at({90.0}), 1), Near(quarterTurnAboutZ(10, 20), kExact));
  EXPECT_THAT(toolPoint(*m, at({90.0})), Near(UVec3d(10, 120, 5), kExact));
}

TEST(KMachineForward, LinearAxisOnRotaryTableMovesAlongTurnedDirection) {
  const Machine m = rotaryTable();
  // C = 90 about x = 100 takes (0, 0, 100) to (100, -100, 100); X then runs along +Y.
  EXPECT_THAT(toolPoint(*m, at({30.0, 0.0, 0.0, 90.0})), Near(UVec3d(100, -70, 100), kExact));
}

TEST(KMachineForward, SecondRotaryAxisTurnsAboutItsMovedLine) {
  const Machine m = forkHead();
  // C first turns the tool (on its line: no change), then B lays it along -X.
  const auto v = at({1.0, 2.0, 3.0, 90.0, 90.0});
  EXPECT_THAT(toolPoint(*m, v), Near(UVec3d(-49, 2, 3), kExact));
  EXPECT_THAT(toolDirection(*m, v), Near(UVec3d(1, 0, 0), kExact));
  UVec3d dir, point;
  ASSERT_TRUE(m->getElemAxis(v, 6, dir, point));
  EXPECT_THAT(dir, Near(UVec3d(1, 0, 0), kExact));
}

TEST(KMachineForward, FrameWithoutAxesBeforeItStays) {
  EXPECT_EQ(mill()->getMatrix(at({10.0, 20.0, 30.0}), 0), UMatrix());
}

TEST(KMachineForward, FrameBehindTableAxesMovesWithThem) {
  const Machine m = rotaryTable();
  EXPECT_THAT(m->getMatrix(at({10.0, 20.0, 30.0, 90.0}), 0),
              Near(quarterTurnAboutZ(100, 0), kExact));
}

TEST(KMachineForward, InvertedTargetLeavesOutItsOwnMotion) {
  const Machine m = rotaryTable();
  const KMachineElem* const c = m->getElemByName(L"C");
  ASSERT_TRUE(c->isInverted());
  EXPECT_EQ(m->getMatrix(at({10.0, 20.0, 30.0, 90.0}), c), UMatrix());
}

TEST(KMachineForward, InvertedTargetMovesWithTheAxesBetweenItAndThePart) {
  const Machine m = loadMachine(
      "bati\naxis=Y,2,y\nrotation=C,6,z,0,0,0,0,0\npart=x,y\n"
      "lien=BATI\naxis=X,1,x\naxis=Z,3,z\n" +
          kTool,
      1);
  EXPECT_THAT(m->getMatrix(at({1.0, 2.0, 3.0, 90.0}), 2), Near(quarterTurnAboutZ(0, 0), kExact));
}

TEST(KMachineForward, InvertedAxisTurnsWhatHangsOnItInItsDeclaredSense) {
  const Machine m = rotaryTable();
  EXPECT_THAT(toolPoint(*m, at({0.0, 0.0, 0.0, 90.0})), Near(UVec3d(100, -100, 100), kExact));
}

TEST(KMachineForward, NothingAndUnknownIndexGiveIdentity) {
  const Machine m = mill();
  const auto v = at({10.0, 20.0, 30.0});
  EXPECT_EQ(m->getMatrix(v, nullptr), UMatrix());
  EXPECT_EQ(m->getMatrix(v, 99), UMatrix());
  EXPECT_EQ(m->getMatrix(v, -500), UMatrix());
}

TEST(KMachineForward, DrillGunSlidesByItsLengthAlongItsMovedAxis) {
  const Machine m = gunOnSlide();
  ASSERT_TRUE(m->setTHELength(7, 2));
  EXPECT_EQ(m->getMatrix(at({100.0, 0.0}), -102), UMatrix::_translation({100, 7, 0}));
}

TEST(KMachineForward, ExtendedGunCarriesWhatHangsOnIt) {
  const Machine m = gunOnSlide();
  ASSERT_TRUE(m->setTHELength(7, 2));
  EXPECT_EQ(m->getMatrix(at({100.0, 0.0}), -103), UMatrix::_translation({100, 7, 0}));
  EXPECT_EQ(m->getMatrix(at({100.0, 0.0}), -101), UMatrix::_translation({100, 0, 0}));
}

TEST(KMachineForward, GunThatCarriesAnotherToolHasItsPointMovedAlongItsAxis) {
  // Deliberate: points become frame origins. The gun's line meets that of tool 3 at y = 20.
  EXPECT_THAT(toolPoint(*gunOnSlide(), at({0.0, 0.0}), 2), Near(UVec3d(0, 20, 0), kExact));
}

TEST(KMachineForward, PartToolAndGeometryMoveNothing) {
  const Machine m = loadMachine(kPart + "axis=X,1,x\ngeom=cover.stl\naxis=Z,3,z\n" + kTool, 1);
  ASSERT_TRUE(m->setTHELength(55, 1));
  const auto v = at({10.0, 30.0});
  EXPECT_EQ(m->getMatrix(v, -1), UMatrix());
  EXPECT_EQ(m->getMatrix(v, -201), UMatrix::_translation({10, 0, 0}));
  EXPECT_EQ(m->getMatrix(v, -101), UMatrix::_translation({10, 0, 30}));
}

TEST(KMachineForward, LinearAxisMovesByItsDirectionAsItStands) {
  const Machine m = mill();
  m->getElemByIndex(1)->setElemAxis({0, 2, 0});  // not of unit length: the host's choice
  EXPECT_EQ(toolPoint(*m, at({10.0, 0.0, 0.0})), UVec3d(0, 20, 100));
}

TEST(KMachineForward, AxisWithoutAPlaceInThePositionStays) {
  // A version-2 file knows no W: the axis gets the frame's index and no value.
  const Machine m = loadMachine(
      "bati=0,0,1\npart=x,y\nlien=BATI\naxis=X,x\naxis=Y,y\n"
      "axis=Z,z\ntool=z,0,0,0\nlien=Z\naxis=W,z\n",
      2);
  const KMachineElem* const w = m->getElemByName(L"W");
  ASSERT_NE(w, nullptr);
  EXPECT_EQ(m->getMatrix(at({1.0, 2.0, 3.0}), w), UMatrix::_translation({1, 2, 3}));
}

TEST(KMachineForward, AxisAddedInAGapOfTheNumbersMovesByTheFirstValue) {
  KMachine m;
  m.setBatiToPart({KMachineElem(L"bati", 1), KMachineElem(L"part=x,y", 1)});
  m.addBatiToTool({KMachineElem(L"axis=X,1,x", 1), KMachineElem(L"axis=Z,3,z", 1),
                   KMachineElem(L"tool=z,0,0,100", 1)});
  ASSERT_EQ(m.finalise(), 0);
  m.addElem(KMachineElem(L"axis=Y,2,y", 1))->setPrevIndex(1);
  m.addElem(KMachineElem(L"axis=W,4,y", 1))->setPrevIndex(1);  // beyond the numbers: stays
  const auto v = at({10.0, 30.0});
  EXPECT_EQ(m.getMatrix(v, 2), UMatrix::_translation({10, 10, 0}));
  EXPECT_EQ(m.getMatrix(v, 4), UMatrix::_translation({10, 0, 0}));
}

TEST(KMachineForward, MachineThatIsNotFinalisedStays) {
  KMachine m;
  KMachineElem* const x = m.addElem(KMachineElem(L"axis=X,1,x", 1));
  EXPECT_EQ(m.getMatrix(at({5.0}), x), UMatrix());
}

TEST(KMachineForward, MachineBuiltInMemoryAnswersLikeOneFromAFile) {
  KMachine m;
  m.setBatiToPart({KMachineElem(L"bati", 1), KMachineElem(L"rotation=C,6,z,0,0,100,0,0", 1),
                   KMachineElem(L"part=x,y", 1)});
  m.addBatiToTool({KMachineElem(L"axis=X,1,x", 1), KMachineElem(L"axis=Y,2,y", 1),
                   KMachineElem(L"axis=Z,3,z", 1), KMachineElem(L"tool=z,0,0,100", 1)});
  ASSERT_EQ(m.finalise(), 0);
  EXPECT_THAT(toolPoint(m, at({30.0, 0.0, 0.0, 90.0})), Near(UVec3d(100, -70, 100), kExact));
}

TEST(KMachineForward, ChainLongerThanAnyRealOneAnswersTheSame) {
  std::string bodies;
  for (int i = 0; i < 200; ++i) bodies += "geom=cover.stl\n";
  const Machine m =
      loadMachine(kPart + "axis=X,1,x\n" + bodies + "axis=Y,2,y\naxis=Z,3,z\n" + kTool, 1);
  EXPECT_EQ(toolPoint(*m, at({10.0, 20.0, 30.0})), UVec3d(10, 20, 130));
}

TEST(KMachineForward, ShortPositionRepeatsItsLastValue) {
  EXPECT_EQ(toolPoint(*mill(), at({10.0, 20.0})), UVec3d(10, 20, 120));
}

TEST(KMachineForward, LongPositionHasItsSurplusIgnored) {
  EXPECT_EQ(toolPoint(*mill(), at({10.0, 20.0, 30.0, 40.0})), UVec3d(10, 20, 130));
}

TEST(KMachineForward, ValueThatIsNoNumberGoesThrough) {
  const Machine m = mill();
  const auto v = at({std::numeric_limits<double>::quiet_NaN(), 20.0, 30.0});
  EXPECT_TRUE(std::isnan(toolPoint(*m, v).x));
}

// --- a published machine

/// Trunnion table A carrying C: w = Rz(c)@(10,-20) * Rx(a)@(10,-35) * (X,Y,Z). Rows: X Y Z A C,
/// point, direction; the closed form of LinuxCNC's xyzac-trt kinematics, worked independently.
struct TrunnionRow {
  const char* name;
  double v[5];
  UVec3d point, direction;
};

class TrunnionForward : public testing::TestWithParam<TrunnionRow> {};

TEST_P(TrunnionForward, PutsTheToolWhereTheClosedFormDoes) {
  const Machine m = loadMachine(
      "bati\nrotation=A,4,x,0,0,0,10,-35\nrotation=C,5,z,0,0,10,-20,0\n"
      "part=x,y\nlien=BATI\n" +
          kXyz + "tool=z,0,0,0\n",
      1);
  const auto v = at(GetParam().v);
  EXPECT_THAT(toolPoint(*m, v), Near(GetParam().point, 1e-9));
  EXPECT_THAT(toolDirection(*m, v), Near(GetParam().direction, 1e-12));
}

INSTANTIATE_TEST_SUITE_P(
    Published, TrunnionForward,
    testing::Values(TrunnionRow{"Zero", {0, 0, 0, 0, 0}, {0, 0, 0}, {0, 0, 1}},
                    TrunnionRow{"C90", {100, 50, -30, 0, 90}, {-60, 70, -30}, {0, 0, 1}},
                    TrunnionRow{"A90", {100, 50, -30, 90, 0}, {100, 5, 5}, {0, -1, 0}},
                    TrunnionRow{"BothTilted",
                                {100, 50, -30, -35, 120},
                                {-91.840680135, 25.125304364, -53.847297233},
                                {-0.496731764892, -0.286788218176, 0.819152044289}},
                    TrunnionRow{"CBeyondHalfTurn",
                                {-75, 12.5, 200, 60, -200},
                                {148.792304478, 112.805348535, 84.665063509},
                                {0.296198132726, 0.813797681349, 0.5}},
                    TrunnionRow{"OverTheTop",
                                {1, 2, 3, -110, 359},
                                {2.195891640, 48.591127968, -40.479224480},
                                {0.016399897544, 0.939549501048, -0.342020143326}}),
    [](const auto& row) { return row.param.name; });

// --- all elements at once

TEST(KMachineForward, AllMatricesComeByRankWhateverTheListHeldBefore) {
  const Machine m = mill();
  const auto v = at({10.0, 20.0, 30.0});
  std::vector<UMatrix> all(99, UMatrix::_zero());
  m->getMatrices(v, all);
  ASSERT_EQ(all.size(), 6u);
  EXPECT_EQ(all[0], UMatrix());                            // frame
  EXPECT_EQ(all[1], UMatrix());                            // part
  EXPECT_EQ(all[2], UMatrix::_translation({10, 0, 0}));    // X
  EXPECT_EQ(all[5], UMatrix::_translation({10, 20, 30}));  // tool
}

TEST(KMachineForward, EmptyMachineHasNoMatrices) {
  std::vector<UMatrix> all(3);
  KMachine().getMatrices(at({1.0}), all);
  EXPECT_TRUE(all.empty());
}

TEST(KMachineForward, AllMatricesOfElementsThatShareAnIndexAreTheSingleOnes) {
  // Links to the index 1 lead to the first X; the second X hangs on it and moves by the same value.
  const Machine m = loadMachine(kPart + "axis=X,1,x\naxis=X,1,y\naxis=Z,3,z\n" + kTool, 1);
  const auto v = at({10.0, 30.0});
  std::vector<UMatrix> all;
  m->getMatrices(v, all);
  for (int rank = 0; rank < m->getElemNumber(); ++rank) {
    EXPECT_TRUE(isSameBits(all[rank], m->getMatrix(v, m->getElemByRank(rank)))) << rank;
  }
}

// --- tool frames

TEST(KMachineForward, ToolFrameHasItsOriginAtTheMovedToolPoint) {
  const Machine m = rotaryTable();
  UMatrix expected = quarterTurnAboutZ(0, 0);
  expected.setOrigin({100, -70, 100});
  EXPECT_THAT(m->getMatrix_H2T(at({30.0, 0.0, 0.0, 90.0})), Near(expected, kExact));
}

TEST(KMachineForward, MatrixWithoutElementIsTheToolFrame) {
  const Machine m = rotaryTable();
  const auto v = at({30.0, 1.0, 2.0, 33.0});
  EXPECT_TRUE(isSameBits(m->getMatrix(v), m->getMatrix_H2T(v)));
}

TEST(KMachineForward, Matrix1IsTheMotionOfTheCurrentTool) {
  const Machine m = gunOnSlide();
  m->setCurrentTool(3);
  const auto v = at({30.0, 1.0});
  EXPECT_TRUE(isSameBits(m->getMatrix1(v), m->getMatrix(v, -103)));
}

TEST(KMachineForward, ToolFramesFollowTheCurrentTool) {
  const Machine m = toolAndGun();
  EXPECT_EQ(m->getMatrix_H2T(at({30.0, 1.0})), UMatrix::_translation({30, 0, 1}));
  m->setCurrentTool(2);
  EXPECT_EQ(m->getMatrix_H2T(at({30.0, 1.0})), UMatrix::_translation({30, 10, 1}));
}

TEST(KMachineForward, TipLiesTheToolLengthBackFromTheToolPoint) {
  const Machine m = forkHead();
  ASSERT_TRUE(m->setTHELength(80, 1));
  // At B = 90 the tool point is at (-50, 0, 0) and the tool direction +X.
  EXPECT_THAT(m->getMatrix_TP2U(at({0.0, 0.0, 0.0, 90.0, 0.0})).getOrigin(),
              Near(UVec3d(-130, 0, 0), kExact));
}

TEST(KMachineForward, TipUsesTheUnitToolDirection) {
  const Machine m = mill();
  ASSERT_TRUE(m->setTHELength(80, 1));
  m->getElemByIndex(-101)->setElemAxis({0, 0, 5});
  EXPECT_EQ(m->getMatrix_TP2U(at({0.0, 0.0, 0.0})).getOrigin(), UVec3d(0, 0, 20));
  EXPECT_EQ(toolDirection(*m, at({0.0, 0.0, 0.0})), UVec3d(0, 0, 1));
}

TEST(KMachineForward, TipFrameIsInTheUniversalFrame) {
  const Machine m = mill();
  ASSERT_TRUE(m->setTHELength(40, 1));
  m->setUNI2MAC(quarterTurnAboutZ(0, 0));  // so machine to universal turns back by 90
  const UMatrix tip = m->getMatrix_TP2U(at({10.0, 20.0, 30.0}));
  EXPECT_THAT(tip.getOrigin(), Near(UVec3d(20, -10, 90), kExact));
  UVec3d x(1, 0, 0);
  tip.applyDir(x);
  EXPECT_THAT(x, Near(UVec3d(0, -1, 0), kExact));
}

TEST(KMachineForward, TipFrameOfAGunCountsItsLengthTwice) {
  // Deliberate: the gun slides forward by its length and the tip lies the length back.
  const Machine m = toolAndGun();
  m->setCurrentTool(2);
  ASSERT_TRUE(m->setTHELength(7, 2));
  EXPECT_EQ(m->getMatrix_H2T(at({30.0, 1.0})).getOrigin(), UVec3d(30, 17, 1));
  EXPECT_EQ(m->getMatrix_TP2U(at({30.0, 1.0})).getOrigin(), UVec3d(30, 10, 1));
}

TEST(KMachineForward, WithoutAToolTheFramesAreThoseOfTheMachine) {
  KMachine m;
  const auto v = at({1.0});
  EXPECT_EQ(m.getMatrix1(v), UMatrix());
  EXPECT_EQ(m.getMatrix_H2T(v), UMatrix());
  EXPECT_EQ(m.getMatrix(v), UMatrix());
  m.setUNI2MAC(UMatrix::_translation({5, 6, 7}));
  EXPECT_EQ(m.getMatrix_TP2U(v), UMatrix::_translation({-5, -6, -7}));
}

// --- tool point and axis lines

TEST(KMachineForward, ToolLengthDoesNotMoveTheToolPoint) {
  const Machine m = mill();
  ASSERT_TRUE(m->setTHELength(80, 1));
  EXPECT_EQ(toolPoint(*m, at({1.0, 2.0, 3.0})), UVec3d(1, 2, 103));
}

TEST(KMachineForward, ToolNumberBelowOneIsTheCurrentTool) {
  const Machine m = gunOnSlide();
  m->setCurrentTool(3);
  for (const int tool : {0, -1, -100}) {
    EXPECT_EQ(toolPoint(*m, at({5.0, 0.0}), tool), UVec3d(5, 20, 0)) << tool;
  }
}

TEST(KMachineForward, NoToolIsCurrentUntilTheHostSetsOne) {
  KMachine fresh;
  fresh.setBatiToPart({KMachineElem(L"bati", 1), KMachineElem(L"part=x,y", 1)});
  fresh.addBatiToTool({KMachineElem(L"axis=X,1,x", 1), KMachineElem(L"tool=z,0,0,9", 1)});
  ASSERT_EQ(fresh.finalise(), 0);
  UVec3d pos, dir;
  EXPECT_FALSE(fresh.getTool(at({1.0}), pos, dir, 0));
  EXPECT_EQ(fresh.getMatrix_H2T(at({1.0})), UMatrix());
  fresh.setCurrentTool(1);
  EXPECT_TRUE(fresh.getTool(at({1.0}), pos, dir, 0));
  EXPECT_EQ(pos, UVec3d(1, 0, 9));
}

TEST(KMachineForward, ToolWithoutElementIsRefusedAndOutputsStay) {
  UVec3d pos(1, 2, 3), dir(4, 5, 6);
  EXPECT_FALSE(mill()->getTool(at({10.0, 20.0, 30.0}), pos, dir, 2));
  EXPECT_EQ(pos, UVec3d(1, 2, 3));
  EXPECT_EQ(dir, UVec3d(4, 5, 6));
}

TEST(KMachineForward, AxisLineOfAnUnknownElementIsRefusedAndOutputsStay) {
  UVec3d dir(4, 5, 6), point(1, 2, 3);
  EXPECT_FALSE(mill()->getElemAxis(at({10.0, 20.0, 30.0}), 9, dir, point));
  EXPECT_FALSE(mill()->getElemAxis(at({10.0, 20.0, 30.0}), 9, dir));
  EXPECT_EQ(dir, UVec3d(4, 5, 6));
  EXPECT_EQ(point, UVec3d(1, 2, 3));
}

TEST(KMachineForward, AxisLineMovesWithItsElement) {
  const Machine m = rotaryTable();
  UVec3d dir, point, dirAlone;
  ASSERT_TRUE(m->getElemAxis(at({30.0, 0.0, 0.0, 90.0}), -101, dir, point));
  EXPECT_THAT(point, Near(UVec3d(100, -70, 100), kExact));
  ASSERT_TRUE(m->getElemAxis(at({30.0, 0.0, 0.0, 90.0}), 2, dir, point));
  EXPECT_THAT(dir, Near(UVec3d(-1, 0, 0), kExact));  // Y after a quarter turn
  ASSERT_TRUE(m->getElemAxis(at({30.0, 0.0, 0.0, 90.0}), 2, dirAlone));
  EXPECT_EQ(dirAlone, dir);
}

TEST(KMachineForward, AxisDirectionComesAtItsOwnLength) {
  const Machine m = loadMachine("bati=0,0,2\npart=x,y\nlien=BATI\naxis=X,x\n" + kTool, 2);
  UVec3d dir;
  ASSERT_TRUE(m->getElemAxis(at({3.0}), 0, dir));
  EXPECT_EQ(dir, UVec3d(0, 0, 2));
}

// --- frames and tool lengths kept by the machine

TEST(KMachineForward, SettingTheUniversalFrameSetsBothDirections) {
  KMachine m;
  EXPECT_EQ(m.getUNI2MAC(), UMatrix());
  EXPECT_EQ(m.getMAC2UNI(), UMatrix());
  m.setUNI2MAC(quarterTurnAboutZ(10, 20));
  EXPECT_EQ(m.getUNI2MAC(), quarterTurnAboutZ(10, 20));
  UMatrix back;  // p' = c + Rz(-90)(p - c)
  back.set(0, 1, 0, -10, -1, 0, 0, 30, 0, 0, 1, 0, 0, 0, 0, 1);
  EXPECT_THAT(m.getMAC2UNI(), Near(back, kExact));
}

TEST(KMachineForward, TheInverseFrameCanBeHandedBackIn) {
  KMachine m;
  m.setUNI2MAC(UMatrix::_translation({1, 2, 3}));
  m.setUNI2MAC(m.getMAC2UNI());
  EXPECT_EQ(m.getUNI2MAC(), UMatrix::_translation({-1, -2, -3}));
  EXPECT_EQ(m.getMAC2UNI(), UMatrix::_translation({1, 2, 3}));
}

TEST(KMachineForward, UniversalFrameLeavesMachineAnswersAlone) {
  const Machine m = mill();
  m->setUNI2MAC(UMatrix::_translation({100, 100, 100}));
  EXPECT_EQ(toolPoint(*m, at({1.0, 2.0, 3.0})), UVec3d(1, 2, 103));
}

TEST(KMachineForward, ToolLengthIsZeroUntilSetAndKeptByTool) {
  const Machine m = gunOnSlide();
  EXPECT_EQ(m->getTHELength(1), 0.0);
  EXPECT_TRUE(m->setTHELength(12.5, 2));
  EXPECT_TRUE(m->setTHELength(3.5, 0));  // the current tool: 1
  EXPECT_EQ(m->getTHELength(1), 3.5);
  EXPECT_EQ(m->getTHELength(2), 12.5);
  EXPECT_EQ(m->getTHELength(-7), 3.5);
}

TEST(KMachineForward, ToolLengthOfAMissingToolIsMinusOne) {
  const Machine m = mill();
  EXPECT_EQ(m->getTHELength(2), -1.0);
  EXPECT_FALSE(m->setTHELength(5, 2));
  EXPECT_EQ(KMachine().getTHELength(0), -1.0);
  EXPECT_FALSE(KMachine().setTHELength(5, 0));
}

TEST(KMachineForward, LegacyOffsetIsZeroWithoutTheVersion2Correction) {
  EXPECT_EQ(mill()->getLegacyOffset(), UVec3d());
}

// --- values by axis number

TEST(KMachineForward, AxisNumbersWithGapsReadTheirPlaces) {
  const Machine m = loadMachine(kPart + kXyz + "rotation=B,5,y,0,0,0,0,0\n" + kTool, 1);
  auto v = at({10.0, 20.0, 30.0, 40.0});
  EXPECT_EQ(m->getAxisVal(v, 3), 30.0);
  EXPECT_EQ(m->getAxisVal(v, 5), 40.0);
  m->setAxisVal(v, 5, 45.0);
  EXPECT_EQ(v[3], 45.0);
  const auto& constant = v;
  EXPECT_EQ(m->getAxisVal(constant, 5), 45.0);
}

TEST(KMachineForward, AxisNumberThatNoAxisHasReadsTheFirstValue) {
  const Machine m = loadMachine(kPart + kXyz + "rotation=B,5,y,0,0,0,0,0\n" + kTool, 1);
  const auto v = at({10.0, 20.0, 30.0, 40.0});
  for (const int number : {-1, 0, 4, 6, 1000}) EXPECT_EQ(m->getAxisVal(v, number), 10.0) << number;
}

TEST(KMachineForward, PositionsComeAsPlainNumbersAndBack) {
  const Machine m = mill();
  EXPECT_EQ(m->axisValues(at({1.0, 2.0, 3.0, 4.0})), (std::vector<double>{1, 2, 3}));
  const auto v = korvo::test::positionOf(*m, {7, 8, 9});
  ASSERT_NE(v, nullptr);
  EXPECT_EQ(v->size(), 3);
  EXPECT_EQ((*v)[2], 9.0);
}

TEST(KMachineForward, MissingNumbersOfAPositionAreZero) {
  const Machine m = mill();
  const auto v = korvo::test::positionOf(*m, {7});
  ASSERT_NE(v, nullptr);
  EXPECT_EQ((*v)[0], 7.0);
  EXPECT_EQ((*v)[1], 0.0);
  EXPECT_EQ((*v)[2], 0.0);
}

// --- current Denavit-Hartenberg values

TEST(KMachineForward, UpdateDHmAddsRadiansToRotaryAndMillimetresToLinearAxes) {
  const Machine m = forkHead();
  m->updateDHm(at({10.0, 20.0, 30.0, 90.0, 180.0}), 1);
  const KMachineElem* const y = m->getElemByIndex(2);
  const KMachineElem* const b = m->getElemByIndex(5);
  EXPECT_EQ(y->getDHmCur().d, y->getDHmRef().d + 20.0);
  EXPECT_EQ(y->getDHmCur().theta, y->getDHmRef().theta);
  EXPECT_EQ(b->getDHmCur().theta, b->getDHmRef().theta + 90.0 * 0.017453292519943295);
  EXPECT_EQ(b->getDHmCur().d, b->getDHmRef().d);
  EXPECT_NEAR(m->getElemByIndex(6)->getUMVValue(m->getElemByIndex(6)->getDHmValue(true)), 180.0,
              1e-12);
}

TEST(KMachineForward, UpdateDHmStartsFromTheZeroPositionEachTime) {
  const Machine m = mill();
  m->updateDHm(at({10.0, 20.0, 30.0}), 1);
  m->updateDHm(at({1.0, 2.0, 3.0}), 1);
  EXPECT_EQ(m->getElemByIndex(1)->getDHmCur().d, m->getElemByIndex(1)->getDHmRef().d + 1.0);
}

TEST(KMachineForward, UpdateDHmTouchesOnlyTheChainOfItsTool) {
  const Machine m =
      loadMachine(kPart + "axis=X,1,x\ntool=z,0,0,0\nlien=X\naxis=Z,3,z\ntool=z,0,0,50\n", 1);
  m->updateDHm(at({10.0, 30.0}), 1);
  EXPECT_EQ(m->getElemByIndex(1)->getDHmCur().d, m->getElemByIndex(1)->getDHmRef().d + 10.0);
  EXPECT_EQ(m->getElemByIndex(3)->getDHmCur().d, m->getElemByIndex(3)->getDHmRef().d);
  m->updateDHm(at({10.0, 30.0}), 2);
  EXPECT_EQ(m->getElemByIndex(3)->getDHmCur().d, m->getElemByIndex(3)->getDHmRef().d + 30.0);
}

TEST(KMachineForward, UpdateDHmLeavesToolsAndGunsAsTheyAre) {
  const Machine m = gunOnSlide();
  const KMachineElem* const gun = m->getElemByIndex(-102);
  const auto before = gun->getDHmCur();
  m->updateDHm(at({10.0, 30.0}), 3);
  EXPECT_EQ(gun->getDHmCur().d, before.d);
  EXPECT_EQ(gun->getDHmCur().theta, before.theta);
}

TEST(KMachineForward, UpdateDHmLeavesAxesWithoutNumberAsTheyAre) {
  KMachineElem frame(L"bati", 1);
  frame.setElemIndex(42);  // so that the index 0 is the axis' own
  KMachine m;
  m.setBatiToPart({frame, KMachineElem(L"part=x,y", 1)});
  m.addBatiToTool({KMachineElem(L"axis=X,1,x", 1), KMachineElem(L"axis=W,z", 1),
                   KMachineElem(L"tool=z,0,0,100", 1)});
  ASSERT_EQ(m.finalise(), 0);
  ASSERT_EQ(m.getToolChain(true, 1).size(), 4u);
  KMachineElem* const w = m.getElemByIndex(0);
  w->setDHmValue(5.0);
  m.updateDHm(at({10.0}), 1);
  EXPECT_EQ(w->getDHmCur().d, 5.0);
  EXPECT_EQ(m.getElemByIndex(1)->getDHmCur().d, m.getElemByIndex(1)->getDHmRef().d + 10.0);
}

TEST(KMachineForward, UpdateDHmOfAToolNumberBelowOneTakesTheCurrentTool) {
  const Machine m = mill();
  m->updateDHm(at({10.0, 20.0, 30.0}), 0);
  EXPECT_EQ(m->getElemByIndex(3)->getDHmCur().d, m->getElemByIndex(3)->getDHmRef().d + 30.0);
}

TEST(KMachineForward, UpdateDHmOfAMissingToolChangesNothing) {
  const Machine m = mill();
  m->updateDHm(at({10.0, 20.0, 30.0}), 7);
  EXPECT_EQ(m->getElemByIndex(1)->getDHmCur().d, m->getElemByIndex(1)->getDHmRef().d);
}

TEST(KMachineForward, HookedElementsGetNothingFromUpdateDHm) {
  const Machine m =
      loadMachine(kPart + "axis=X,1,x\ntool=z,0,0,0\nlien=BATI\naxis=Y,2,y\nboucle=X,1,2,3\n", 1);
  const KMachineElem* const y = m->getElemByIndex(2);
  ASSERT_EQ(y->getHookIndex(), 1);
  m->updateDHm(at({10.0, 20.0}), 1);
  EXPECT_EQ(y->getDHmCur().d, y->getDHmRef().d);
}

TEST(KMachineForward, MotionMatrixDoesNotDependOnTheCurrentDHmValues) {
  const Machine m = forkHead();
  const auto v = at({10.0, 20.0, 30.0, 40.0, 50.0});
  const UMatrix before = m->getMatrix(v, -101);
  m->updateDHm(at({1.0, 2.0, 3.0, 4.0, 5.0}), 1);
  EXPECT_TRUE(isSameBits(before, m->getMatrix(v, -101)));
}

TEST(KMachineForward, QueriesTraceNothing) {
  const Machine m = gunOnSlide();
  const auto v = at({10.0, 20.0});
  const TraceCapture trace;
  UVec3d a, b;
  std::vector<UMatrix> all;
  m->getMatrices(v, all);
  m->getMatrix(v);
  m->getMatrix(v, 1);
  m->getMatrix(v, 99);
  m->getMatrix(v, nullptr);
  m->getMatrix1(v);
  m->getMatrix_H2T(v);
  m->getMatrix_TP2U(v);
  EXPECT_TRUE(m->getTool(v, a, b, 1));
  EXPECT_FALSE(m->getTool(v, a, b, 9));
  EXPECT_TRUE(m->getElemAxis(v, 1, a, b));
  EXPECT_TRUE(m->getElemAxis(v, 1, a));
  EXPECT_FALSE(m->getElemAxis(v, 9, a, b));
  EXPECT_TRUE(m->setTHELength(7, 2));
  EXPECT_FALSE(m->setTHELength(7, 9));
  m->getTHELength(2);
  m->getTHELength(9);
  m->setUNI2MAC(UMatrix());
  m->updateDHm(v, 3);
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace
