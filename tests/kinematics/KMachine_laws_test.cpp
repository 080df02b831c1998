// What holds for every machine at every position.
#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "kinematics/KMachine.h"
#include "kinematics/tolerances.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/MachineWriter.h"
#include "tests/support/Matchers.h"

namespace {

using korvo::test::anyMachine;
using korvo::test::anyPosition;
using korvo::test::difference;
using korvo::test::isNear;
using korvo::test::isSameBits;
using korvo::test::loadMachine;
using korvo::test::MachineText;
using korvo::test::Position;
using korvo::test::positionOf;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

/// Matrices computed in two ways (mm). Axes almost parallel put points of lines up to 1e5 mm out;
/// a turn about such a line rounds at 1e-11 mm a step, and a chain has ten.
constexpr double kMatrixRoundOff = 1e-8;

/// Points and directions written and read again (mm).
constexpr double kReread = 1e-9;

using Chain = std::vector<const KMachineElem*>;

std::vector<const KMachineElem*> elementsOf(const KMachine& machine) {
  std::vector<const KMachineElem*> out;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    out.push_back(machine.getElemByRank(rank));
  }
  return out;
}

bool isGun(const KMachineElem* e) { return e->getElemType() == KMachineElem::KMET_TYPE_DGUN; }

/// Gives every gun a length, so that it slides.
void extendGuns(const KMachine& machine) {
  for (const KMachineElem* e : elementsOf(machine)) {
    if (isGun(e)) e->setTHELength(12.5);
  }
}

/// The element's own motion about its line at the zero position.
UMatrix ownMotion(const KMachine& machine, const KMachineElem& e, const KMachineValueBase& v) {
  const UVec3d dir = e.getElemAxis();
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_ALIN:
      return UMatrix::_translation(dir * v[e.getValueIndex()]);
    case KMachineElem::KMET_TYPE_AROT:
      return UMatrix::_rotation(dir, e.getElemPivot(), v[e.getValueIndex()] * zkin::kDegToRad);
    case KMachineElem::KMET_TYPE_DGUN:
      return UMatrix::_translation(dir * machine.getTHELength(-100 - e.getElemIndex()));
    default:
      return UMatrix();
  }
}

/// Directions closer than what still is one perpendicular, but not the same.
bool isAlmostParallel(const UVec3d& a, const UVec3d& b, double limit) {
  const double crossSq = (a.normalised() ^ b.normalised()).norm2();
  return 1e-20 < crossSq && crossSq < limit;
}

/// Whether two neighbours of the chain, the world's Z line included, are almost parallel.
bool hasAlmostParallel(const Chain& chain, double limit) {
  UVec3d before(0, 0, 1);
  for (const KMachineElem* e : chain) {
    const UVec3d dir =
        e->getElemType() == KMachineElem::KMET_TYPE_PART ? UVec3d(0, 0, 1) : e->getElemAxis();
    if (isAlmostParallel(before, dir, limit)) return true;
    before = dir;
  }
  return false;
}

bool hasAlmostParallel(const KMachine& machine, double limit) {
  for (int tool = 1; tool <= machine.getToolNumber(); ++tool) {
    if (hasAlmostParallel(machine.getToolChain(true, tool), limit)) return true;
  }
  return false;
}

// --- motion matrices

RC_GTEST_PROP(MotionMatrixLaws, L1_FrameWithoutAxesBeforeItStays, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  const Chain chain = machine->getChain(0);
  RC_PRE(std::none_of(chain.begin(), chain.end(),
                      [](const KMachineElem* e) { return e->getElemIndex() > 0; }));
  RC_ASSERT(machine->getMatrix(*v, 0) == UMatrix());
}

RC_GTEST_PROP(MotionMatrixLaws, L2_NothingMovesAtZeroWithoutExtendedGuns, ()) {
  const auto machine = loadMachine(*anyMachine());
  extendGuns(*machine);
  const Position zero = positionOf(*machine);
  for (const KMachineElem* e : elementsOf(*machine)) {
    const Chain chain = machine->getChain(e);
    if (std::any_of(chain.begin(), chain.end(), isGun)) continue;
    RC_ASSERT(isNear(machine->getMatrix(*zero, e), UMatrix(), kMatrixRoundOff));
  }
}

RC_GTEST_PROP(MotionMatrixLaws, L3_AxesOutsideTheChainHaveNoEffect, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  for (const KMachineElem* e : elementsOf(*machine)) {
    const UMatrix before = machine->getMatrix(*v, e);
    const Chain chain = machine->getChain(e);
    const Position changed = positionOf(*machine, machine->axisValues(*v));
    for (const KMachineElem* other : elementsOf(*machine)) {
      if (std::find(chain.begin(), chain.end(), other) != chain.end()) continue;
      if (other->getValueIndex() >= 0) (*changed)[other->getValueIndex()] += 17.0;
    }
    RC_ASSERT(isSameBits(before, machine->getMatrix(*changed, e)));
  }
}

RC_GTEST_PROP(MotionMatrixLaws, L4_AnElementAddsItsOwnMotionToItsPredecessors, ()) {
  const auto machine = loadMachine(*anyMachine());
  extendGuns(*machine);
  const Position v = positionOf(*machine, *anyPosition(*machine));
  for (const KMachineElem* e : elementsOf(*machine)) {
    const KMachineElem* const p = machine->getPrevElem(e);
    if (p == nullptr || e->isInverted() || p->isInverted()) continue;
    const UMatrix expected = machine->getMatrix(*v, p) * ownMotion(*machine, *e, *v);
    RC_ASSERT(isNear(machine->getMatrix(*v, e), expected, kMatrixRoundOff));
  }
}

RC_GTEST_PROP(MotionMatrixLaws, L5_ValueOfAnInvertedElementDoesNotMoveIt, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  for (const KMachineElem* e : elementsOf(*machine)) {
    if (!e->isInverted() || e->getValueIndex() < 0) continue;
    const UMatrix before = machine->getMatrix(*v, e);
    const Position changed = positionOf(*machine, machine->axisValues(*v));
    (*changed)[e->getValueIndex()] += 17.0;
    RC_ASSERT(isSameBits(before, machine->getMatrix(*changed, e)));
  }
}

RC_GTEST_PROP(MotionMatrixLaws, L6_FullTurnChangesNothing, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  const Position turned = positionOf(*machine, machine->axisValues(*v));
  for (const KMachineElem* e : elementsOf(*machine)) {
    if (e->getElemType() == KMachineElem::KMET_TYPE_AROT) (*turned)[e->getValueIndex()] += 360.0;
  }
  for (const KMachineElem* e : elementsOf(*machine)) {
    RC_ASSERT(isNear(machine->getMatrix(*v, e), machine->getMatrix(*turned, e), kMatrixRoundOff));
  }
}

/// The second method: each motion about its line at zero, multiplied root first.
RC_GTEST_PROP(MotionMatrixLaws, EqualsTheDirectProductOfTheMotionsOfTheChain, ()) {
  const auto machine = loadMachine(*anyMachine());
  extendGuns(*machine);
  const Position v = positionOf(*machine, *anyPosition(*machine));
  for (const KMachineElem* e : elementsOf(*machine)) {
    UMatrix product;
    for (const KMachineElem* c : machine->getChain(e)) {
      if (c != e || !e->isInverted()) product = product * ownMotion(*machine, *c, *v);
    }
    RC_ASSERT(isNear(machine->getMatrix(*v, e), product, kMatrixRoundOff));
  }
}

RC_GTEST_PROP(MotionMatrixLaws, RigidAndRightHanded, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  for (const KMachineElem* e : elementsOf(*machine)) {
    const UMatrix m = machine->getMatrix(*v, e);
    UVec3d x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    m.applyDir(x), m.applyDir(y), m.applyDir(z);
    RC_ASSERT(isNear(x ^ y, z, 1e-12));
    RC_ASSERT(std::abs(x.norm() - 1) < 1e-12 && std::abs(y.norm() - 1) < 1e-12);
    RC_ASSERT(m(3, 0) == 0 && m(3, 1) == 0 && m(3, 2) == 0 && m(3, 3) == 1);
  }
}

RC_GTEST_PROP(MotionMatrixLaws, AllMatricesAtOnceAreTheSingleOnesBitByBit, ()) {
  const auto machine = loadMachine(*anyMachine());
  extendGuns(*machine);
  const Position v = positionOf(*machine, *anyPosition(*machine));
  std::vector<UMatrix> all;
  machine->getMatrices(*v, all);
  RC_ASSERT(static_cast<int>(all.size()) == machine->getElemNumber());
  for (int rank = 0; rank < machine->getElemNumber(); ++rank) {
    const UMatrix single = machine->getMatrix(*v, machine->getElemByRank(rank));
    RC_ASSERT(isSameBits(all[static_cast<std::size_t>(rank)], single));
  }
}

RC_GTEST_PROP(MotionMatrixLaws, ToolPointAndDirectionAreItsElementsMovedByItsMatrix, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  for (int tool = 1; tool <= machine->getToolNumber(); ++tool) {
    const KMachineElem* const e = machine->getElemByIndex(machine->getToolIndex(tool));
    const UMatrix m = machine->getMatrix(*v, e);
    UVec3d pos, dir, wanted = e->getElemAxis().normalised();
    RC_ASSERT(machine->getTool(*v, pos, dir, tool));
    m.applyDir(wanted);
    RC_ASSERT(isNear(pos, m * e->getElemPivot(), kMatrixRoundOff));
    RC_ASSERT(isNear(dir, wanted, 1e-12));
  }
}

// --- Denavit-Hartenberg frames against axis lines

/// Frames of a chain from its current Denavit-Hartenberg values.
std::vector<UMatrix> framesOf(const Chain& chain) {
  std::vector<UMatrix> frames;
  UMatrix frame;
  for (const KMachineElem* e : chain) {
    frame = frame * KMachineElem::_transitionMatrix(e->getDHmCur());
    frames.push_back(frame);
  }
  return frames;
}

UVec3d zOf(const UMatrix& m) { return {m(0, 2), m(1, 2), m(2, 2)}; }

/// Length of the chain (mm): what an error of an angle is multiplied by.
double reachOf(const Chain& chain) {
  double reach = 1.0;
  for (const KMachineElem* e : chain) {
    reach += std::abs(e->getDHmCur().a) + std::abs(e->getDHmCur().d);
  }
  return reach;
}

/// Angles come from arc sines: 2e-8 rad is what one close to a right angle loses.
double angleError(const Chain& chain) { return 4e-8 * static_cast<double>(chain.size()); }

/// A horizontal vector as the frames have it and as the geometry has it: which way the base is
/// turned. The best is the one that tells the angle most sharply.
struct Heading {
  UVec3d frame, real;
  double sharpness = 0.0;

  void offer(const UVec3d& inFrame, const UVec3d& inGeometry, double lever) {
    const double s = std::hypot(inFrame.x, inFrame.y) / lever;
    if (s > sharpness) frame = inFrame, real = inGeometry, sharpness = s;
  }
  double angle() const { return std::atan2(real.y, real.x) - std::atan2(frame.y, frame.x); }
};

/// The constant transform between the product of the matrices and the geometry, and the error (rad)
/// of what is compared through it.
struct Base {
  UMatrix transform;
  double error;
};

/// The transform keeps the world's Z line: the product starts from the world's X axis instead of
/// the true first common normal, and below a first axis that points down it has the wrong height.
Base baseOf(const Chain& chain, const std::vector<UMatrix>& framesAtZero) {
  Heading heading;
  for (std::size_t i = 1; i < chain.size(); ++i) {
    heading.offer(zOf(framesAtZero[i]), chain[i]->getElemAxis().normalised(), 1.0);
    heading.offer(framesAtZero[i].getOrigin(), chain[i]->getElemPivot(), reachOf(chain));
  }
  const bool upright = heading.sharpness < 1e-9;  // all lines on the Z line: any turn will do
  const double height = chain[1]->getElemPivot().z - framesAtZero[1].getOrigin().z;
  return {UMatrix::_translation({0, 0, height}) *
              UMatrix::_rotation({0, 0, 1}, upright ? 0.0 : heading.angle()),
          angleError(chain) * (upright ? 1.0 : 1.0 + 1.0 / heading.sharpness)};
}

RC_GTEST_PROP(DenavitHartenbergLaws, FramesLieOnTheAxisLinesThatTheMotionMatricesPlace, ()) {
  const auto machine = loadMachine(*anyMachine());
  const int tool = machine->getToolNumber();  // shared elements hold the last tool's values
  const Chain chain = machine->getToolChain(true, tool);
  RC_PRE(!hasAlmostParallel(chain, zkin::kParallelCrossSq));  // those are taken as parallel
  machine->updateDHm(*positionOf(*machine), tool);
  const Base base = baseOf(chain, framesOf(chain));

  const Position v = positionOf(*machine, *anyPosition(*machine));
  machine->updateDHm(*v, tool);
  const std::vector<UMatrix> frames = framesOf(chain);
  for (std::size_t i = 1; i < chain.size(); ++i) {  // the first is the part, on the world's Z line
    UVec3d dir, point;
    RC_ASSERT(machine->getElemAxis(*v, chain[i]->getElemIndex(), dir, point));
    UVec3d z = zOf(frames[i]);
    base.transform.applyDir(z);
    RC_ASSERT(isNear(z, dir.normalised(), base.error));
    const UVec3d origin = base.transform * frames[i].getOrigin();
    RC_ASSERT(korvo::test::distanceToLine(origin, point, z) <
              base.error * (reachOf(chain) + point.norm()));
  }
}

RC_GTEST_PROP(DenavitHartenbergLaws, OriginOfTheLastToolsFrameIsItsPoint, ()) {
  const auto machine = loadMachine(*anyMachine());
  const int tool = machine->getToolNumber();
  const Chain chain = machine->getToolChain(true, tool);
  RC_PRE(!hasAlmostParallel(chain, zkin::kParallelCrossSq));
  machine->updateDHm(*positionOf(*machine), tool);
  const Base base = baseOf(chain, framesOf(chain));

  const Position v = positionOf(*machine, *anyPosition(*machine));
  machine->updateDHm(*v, tool);
  UVec3d pos, dir;
  RC_ASSERT(machine->getTool(*v, pos, dir, tool));
  RC_ASSERT(isNear(base.transform * framesOf(chain).back().getOrigin(), pos,
                   base.error * reachOf(chain)));
}

// --- writing and reading again

/// Why two elements differ, or nothing.
std::string unlikeness(const KMachineElem& a, const KMachineElem& b, double tolerance) {
  int rgbA[3], rgbB[3];
  a.getGeomRGB(rgbA);
  b.getGeomRGB(rgbB);
  UVec3d hookA, hookB;
  if (a.getElemName() != b.getElemName()) return "name";
  if (a.getElemType() != b.getElemType()) return "type";
  if (a.getElemIndex() != b.getElemIndex()) return "index";
  if (a.getPrevIndex() != b.getPrevIndex()) return "predecessor";
  if (a.getValueIndex() != b.getValueIndex()) return "value index";
  if (a.getHook(hookA) != b.getHook(hookB)) return "hook";
  if (a.getGeomFile() != b.getGeomFile()) return "geometry file";
  if (!std::equal(rgbA, rgbA + 3, rgbB)) return "colour";
  if (a.isInverted() != b.isInverted()) return "sense";
  if (a.hasMin() != b.hasMin() || a.getMin() != b.getMin()) return "minimum";
  if (a.hasMax() != b.hasMax() || a.getMax() != b.getMax()) return "maximum";
  if (a.getTHELength() != b.getTHELength() || a.isLocked() != b.isLocked()) return "length, lock";
  if (!isNear(a.getElemAxis(), b.getElemAxis(), kReread)) return "axis";
  if (!isNear(a.getElemAxisX(), b.getElemAxisX(), kReread)) return "X axis";
  if (!isNear(hookA, hookB, kReread)) return "hook point";
  if (!isNear(a.getElemPivot(), b.getElemPivot(), tolerance)) return "point";
  return "";
}

bool isSameRecord(const KMachine::_sUKine& a, const KMachine::_sUKine& b) {
  return a.toolIndex == b.toolIndex && a.rotuleIndex == b.rotuleIndex &&
         a.kinematicClass == b.kinematicClass && a.armType == b.armType &&
         a.wristType == b.wristType;
}

RC_GTEST_PROP(DefinitionLaws, WritingAndReadingAgainGivesTheSameElements, ()) {
  const auto machine = loadMachine(*anyMachine());
  const auto again = loadMachine(korvo::test::definitionText(*machine), machine->getVersion());
  RC_ASSERT(again != nullptr);
  RC_ASSERT(again->getElemNumber() == machine->getElemNumber());
  // The foot of a perpendicular of lines almost parallel runs away with the last digit of either.
  const double tolerance = hasAlmostParallel(*machine, 1e-3) ? 1e-6 : kReread;
  for (int rank = 0; rank < machine->getElemNumber(); ++rank) {
    const KMachineElem* const e = machine->getElemByRank(rank);
    RC_ASSERT(unlikeness(*e, *again->getElemByRank(rank), tolerance) == "");
  }
}

RC_GTEST_PROP(DefinitionLaws, WritingAndReadingAgainGivesTheSameMachine, ()) {
  const auto machine = loadMachine(*anyMachine());
  const auto again = loadMachine(korvo::test::definitionText(*machine), machine->getVersion());
  RC_ASSERT(again != nullptr);
  RC_ASSERT(again->getAxisNum() == machine->getAxisNum());
  RC_ASSERT(again->getStrategy() == machine->getStrategy());
  RC_ASSERT(again->getMode_RTCP() == machine->getMode_RTCP());
  RC_ASSERT(again->getToolNumber() == machine->getToolNumber());
  for (int tool = 1; tool <= machine->getToolNumber(); ++tool) {
    const KMachine::_sUKine record = machine->getKine(tool);
    RC_ASSERT(isSameRecord(record, again->getKine(tool)));
  }
}

RC_GTEST_PROP(DefinitionLaws, ReadingTheSameTextTwiceGivesEqualElements, ()) {
  const MachineText text = *anyMachine();
  const auto first = loadMachine(text);
  const auto second = loadMachine(text);
  for (int rank = 0; rank < first->getElemNumber(); ++rank) {
    RC_ASSERT(*first->getElemByRank(rank) == *second->getElemByRank(rank));
  }
}

// --- copies

/// Everything a machine answers at a position, as numbers.
std::vector<double> answersOf(const KMachine& machine, const KMachineValueBase& v) {
  std::vector<double> out;
  const auto addVector = [&out](const UVec3d& p) { out.insert(out.end(), {p.x, p.y, p.z}); };
  std::vector<UMatrix> all;
  machine.getMatrices(v, all);
  all.push_back(machine.getMatrix_H2T(v));
  all.push_back(machine.getMatrix_TP2U(v));
  for (const UMatrix& m : all) {
    for (int i = 0; i < 16; ++i) out.push_back(m(i / 4, i % 4));
  }
  for (int tool = 1; tool <= machine.getToolNumber(); ++tool) {
    UVec3d pos, dir;
    machine.getTool(v, pos, dir, tool);
    addVector(pos), addVector(dir);
    machine.updateDHm(v, tool);
  }
  for (const KMachineElem* e : elementsOf(machine)) out.push_back(e->getDHmValue(true));
  for (int k = 1; k <= machine.getAxisNum(); ++k) {
    const KMachineElem* const axis = machine.getAxisElem(k);
    out.push_back(axis->getElemIndex());
    out.push_back(axis->getMin());
  }
  out.push_back(machine.getTHELength(0));
  out.push_back(static_cast<double>(machine.getCollCheck().size()));
  return out;
}

bool ownsItsAxes(const KMachine& machine) {
  const auto elements = elementsOf(machine);
  for (int k = 1; k <= machine.getAxisNum(); ++k) {
    const auto found = std::find(elements.begin(), elements.end(), machine.getAxisElem(k));
    if (found == elements.end()) return false;
  }
  return true;
}

/// A machine whose settings are all unlike their defaults.
std::unique_ptr<KMachine> settledMachine(const MachineText& text) {
  auto machine = loadMachine(text);
  machine->setCurrentTool(machine->getToolNumber());
  machine->setTHELength(42.5, 0);
  machine->setUNI2MAC(UMatrix::_rotation({1, 2, 3}, 0.5) * UMatrix::_translation({4, 5, 6}));
  return machine;
}

RC_GTEST_PROP(CopyLaws, CopyAnswersLikeItsSourceAfterTheSourceIsGone, ()) {
  auto source = settledMachine(*anyMachine());
  const Position v = positionOf(*source, *anyPosition(*source));
  const std::vector<double> expected = answersOf(*source, *v);
  const KMachine copy(*source);
  source.reset();
  RC_ASSERT(ownsItsAxes(copy));
  RC_ASSERT(answersOf(copy, *v) == expected);
}

RC_GTEST_PROP(CopyLaws, AssignedMachineAnswersLikeItsSourceAfterTheSourceIsGone, ()) {
  auto source = settledMachine(*anyMachine());
  auto target = settledMachine(*anyMachine());
  const Position v = positionOf(*source, *anyPosition(*source));
  const std::vector<double> expected = answersOf(*source, *v);
  *target = *source;
  source.reset();
  RC_ASSERT(ownsItsAxes(*target));
  RC_ASSERT(answersOf(*target, *v) == expected);
}

RC_GTEST_PROP(CopyLaws, MachineAssignedToItselfStaysAsItIs, ()) {
  auto machine = settledMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  const std::vector<double> expected = answersOf(*machine, *v);
  const KMachine& same = *machine;
  *machine = same;
  RC_ASSERT(ownsItsAxes(*machine));
  RC_ASSERT(answersOf(*machine, *v) == expected);
}

RC_GTEST_PROP(CopyLaws, ChangingACopyLeavesItsSourceAlone, ()) {
  const auto source = settledMachine(*anyMachine());
  const Position v = positionOf(*source, *anyPosition(*source));
  const std::vector<double> expected = answersOf(*source, *v);
  KMachine copy(*source);
  for (int rank = 0; rank < copy.getElemNumber(); ++rank) {
    copy.getElemByRank(rank)->setElemPivot({1, 2, 3});
    copy.getElemByRank(rank)->setMin(-7, true);
  }
  copy.setTHELength(1, 0);
  copy.clearCollCheck();
  RC_ASSERT(answersOf(*source, *v) == expected);
}

// --- the generator itself

TEST(MachineGenerator, GivesEveryTopologyInAllItsVersions) {
  int version2 = 0;
  for (int kind = 0; kind < korvo::test::kTopologies; ++kind) {
    for (unsigned seed = 0; seed < 50; ++seed) {
      korvo::test::Choices choices(seed);
      const MachineText text =
          korvo::test::machineText(choices, static_cast<korvo::test::Topology>(kind));
      const auto machine = loadMachine(text);
      ASSERT_NE(machine, nullptr) << text;
      version2 += text.version == 2 ? 1 : 0;
    }
  }
  EXPECT_GT(version2, 50);
}

TEST(MachineGenerator, GivesTheSameMachineForASeed) {
  korvo::test::Choices a(7u), b(7u), other(8u);
  const std::string text = korvo::test::machineText(a).text;
  EXPECT_EQ(text, korvo::test::machineText(b).text);
  EXPECT_NE(text, korvo::test::machineText(other).text);
}

}  // namespace
