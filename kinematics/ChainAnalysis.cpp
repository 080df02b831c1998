#include "kinematics/ChainAnalysis.h"

#include <cmath>

#include "kinematics/tolerances.h"
#include "platform/zgeo/UAlgo.h"
#include "platform/zgeo/UTools.h"

using zgeo::UAlgo;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {
namespace {

using Type = KMachineElem::KME_TYPE;
using Places = std::vector<std::size_t>;

bool isType(const KMachineElem* e, Type type) { return e->getElemType() == type; }
bool isLinear(const KMachineElem* e) { return isType(e, KMachineElem::KMET_TYPE_ALIN); }
bool isRotary(const KMachineElem* e) { return isType(e, KMachineElem::KMET_TYPE_AROT); }

template <typename Predicate>
Places placesOf(const Chain& chain, Predicate wanted) {
  Places places;
  for (std::size_t i = 0; i < chain.size(); ++i) {
    if (wanted(chain[i])) places.push_back(i);
  }
  return places;
}

// Of the directions as they stand; no number when one of them is none.
double crossSq(const KMachineElem* a, const KMachineElem* b) {
  return (a->getElemAxis() ^ b->getElemAxis()).norm2();
}

// Deliberate: an element without a direction counts as parallel here, so it keeps the axes beside
// it apart. Test: KinematicClass.FollowsTheChain/GeometryBetweenCountsTwice.
bool isParallelBetween(const Chain& chain, std::size_t first, std::size_t last) {
  for (std::size_t i = first + 1; i < last; ++i) {
    if (crossSq(chain[first], chain[i]) < kParallelCrossSq) return true;
  }
  return false;
}

// Linear axes in chain order; one that is not clearly of another direction than the linear axis
// before it counts only when a parallel element lies between them.
// Deliberate: only neighbours are compared, so X, Y and a second X are three.
// Test: KinematicClass.FollowsTheChain/ParallelButNotNeighbours.
std::size_t independentLinear(const Chain& chain) {
  const Places linear = placesOf(chain, isLinear);
  Places kept;
  for (const std::size_t place : linear) {
    const bool independent = kept.empty() ||
                             crossSq(chain[kept.back()], chain[place]) >= kParallelCrossSq ||
                             isParallelBetween(chain, kept.back(), place);
    if (independent) kept.push_back(place);
  }
  return kept.size();
}

// Shape of an arm by the two elements after its first rotary axis.
// Deliberate: the elements as they follow, bodies included.
// Test: KinematicClass.FollowsTheChain/GeometryBehindTheFirst.
int armTypeOf(const KMachineElem* second, const KMachineElem* third) {
  if (isLinear(second) && isLinear(third)) return 4;
  if (isLinear(second) && isRotary(third)) return 3;
  if (isRotary(second) && (isLinear(third) || isRotary(third))) return 1;
  return -1;
}

// Where the search for the wrist starts; sets the arm type.
// Deliberate: a ball joint before the arm's third element is passed by.
// Test: Wrist.IsFoundWhereThreeAxesMeet/BallJointAtTheFoot.
std::size_t analyseArm(const Chain& chain, const Places& rotary, KMachine::_sUKine& kine) {
  if (!rotary.empty() && rotary.front() + 2 < chain.size()) {
    const std::size_t q = rotary.front();
    kine.armType = armTypeOf(chain[q + 1], chain[q + 2]);
    return q + 2;
  }
  UTools::_trace(L"... ? Unrecognized stuff");
  return rotary.empty() ? chain.size() : rotary.front();
}

bool isFollower(const KMachineElem* e) {
  switch (e->getElemType()) {
    case KMachineElem::KMET_TYPE_NONE:
    case KMachineElem::KMET_TYPE_TOOL:
    case KMachineElem::KMET_TYPE_ALIN:
    case KMachineElem::KMET_TYPE_AROT:
    case KMachineElem::KMET_TYPE_DGUN:
      return true;
    default:
      return false;
  }
}

std::size_t nextFollower(const Chain& chain, std::size_t after) {
  std::size_t place = after + 1;
  while (place < chain.size() && !isFollower(chain[place])) ++place;
  return place;
}

bool sameLine(const KMachineElem& a, const KMachineElem& b) {
  UVec3d normal, footA, footB;
  return UAlgo::_commonOrtho(a.getElemAxis(), a.getElemPivot(), b.getElemAxis(), b.getElemPivot(),
                             normal, footA, footB) == -2;
}

void analyseWrist(const Chain& chain, std::size_t from, int ballJoint, const KMachineElem* tool,
                  KMachine::_sUKine& kine) {
  std::size_t place = from;
  while (place < chain.size() && chain[place]->getElemIndex() != ballJoint) ++place;
  if (place >= chain.size()) return;
  kine.rotuleIndex = ballJoint;
  const std::size_t first = nextFollower(chain, place);
  const std::size_t second = nextFollower(chain, first);
  if (second < chain.size() && tool) kine.wristType = sameLine(*tool, *chain[second]) ? 2 : 4;
}

bool isShort(double offset) { return std::abs(offset) < kBallJointOffset; }

bool isBallJoint(const KMachineElem* p, const KMachineElem* q, const KMachineElem* s) {
  return isRotary(p) && isRotary(q) && (s->isTool() || isRotary(s)) && isShort(s->getDHmRef().a) &&
         isShort(q->getDHmRef().a) && isShort(q->getDHmRef().d);
}

}  // namespace

KMachine::_sUKine classify(const Chain& chain, int toolIndex, int ballJoint,
                           const KMachineElem* tool) {
  const Places rotary = placesOf(chain, isRotary);
  KMachine::_sUKine kine;
  kine.toolIndex = toolIndex;
  if (independentLinear(chain) >= 3) {
    kine.kinematicClass = 1 + static_cast<int>(std::min<std::size_t>(rotary.size(), 3));
    kine.armType = 5;
    // Deliberate: the ball joint of such a machine is not recorded.
    // Test: Wrist.IsFoundWhereThreeAxesMeet/HeadOfAMillingMachine.
    return kine;
  }
  kine.kinematicClass = 5;
  kine.armType = kine.wristType = -1;
  const std::size_t from = analyseArm(chain, rotary, kine);
  if (ballJoint != 0) analyseWrist(chain, from, ballJoint, tool, kine);
  return kine;
}

const KMachineElem* ballJointOf(const Chain& chain) {
  for (std::size_t q = chain.size(); q >= 3; --q) {
    if (isBallJoint(chain[q - 3], chain[q - 2], chain[q - 1])) return chain[q - 3];
  }
  return nullptr;
}

}  // namespace zkin
