// Axis numbering, kinematic class, Denavit-Hartenberg records.

#include <algorithm>
#include <atomic>
#include <iterator>
#include <map>
#include <new>
#include <utility>

#include "kinematics/ChainAnalysis.h"
#include "kinematics/ChainWalk.h"
#include "kinematics/DenavitHartenberg.h"
#include "kinematics/KMachine.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {

// Deliberate: one record for the process, overwritten by every lookup that finds one.
// Test: Records.ToolWithoutRecordGivesTheLastOneFound.
KMachine::_sUKine KMachine::_NOKine = {-1, -1, 0, 0, 0};

namespace {

using Type = KMachineElem::KME_TYPE;

std::ptrdiff_t countOf(const std::vector<KMachineElem>& elements, Type type) {
  return std::count_if(elements.begin(), elements.end(),
                       [type](const KMachineElem& e) { return e.getElemType() == type; });
}

void traceElements(const std::vector<KMachineElem>& elements) {
  if (!UTools::_isTracing()) return elements.empty() ? void() : UTools::_traceTF();
  for (std::size_t k = 0; k < elements.size(); ++k) {
    elements[k].dump(UTools::_formatted(L"e[%d]", static_cast<int>(k)).c_str());
  }
}

// Relaxed atomic stores: threads that look up at once mix records but never race.
void store(KMachine::_sUKine& to, const KMachine::_sUKine& from) {
  const auto put = [](int& target, int value) {
    std::atomic_ref<int>(target).store(value, std::memory_order_relaxed);
  };
  put(to.toolIndex, from.toolIndex);
  put(to.rotuleIndex, from.rotuleIndex);
  put(to.kinematicClass, from.kinematicClass);
  put(to.armType, from.armType);
  put(to.wristType, from.wristType);
}

KMachine::_sUKine load(KMachine::_sUKine& from) {
  const auto get = [](int& source) {
    return std::atomic_ref<int>(source).load(std::memory_order_relaxed);
  };
  return {get(from.toolIndex), get(from.rotuleIndex), get(from.kinematicClass), get(from.armType),
          get(from.wristType)};
}

const KMachineElem* before(const std::vector<KMachineElem>& elements, const KMachineElem* e) {
  return KMachine::_getElemByIndex(elements, e->getPrevIndex());
}

bool isRotary(const KMachineElem& e) { return e.getElemType() == KMachineElem::KMET_TYPE_AROT; }

// The tool point's offset from the head's rotary axes, less the part side's rotary points.
// Deliberate: the last point of the head, not a sum (test:
// LegacyOffset.RotaryAxisBehindAToolIsTheFirstSumNotASum); the first other element is passed over,
// be it what it may (LegacyOffset.OfAGunIsZeroAndItsCarrierIsNotPassedOver); and the walk ends at
// the root, beyond the frame (LegacyOffset.WalksBeyondTheFrameAndPassesOneElementOver).
UVec3d legacyOffsetOf(const std::vector<KMachineElem>& elements, const KMachineElem* e) {
  UVec3d offset;
  for (; e && (e->getElemType() == KMachineElem::KMET_TYPE_TOOL || isRotary(*e));
       e = before(elements, e)) {
    offset = e->getElemPivot();
  }
  if (e) e = before(elements, e);
  for (; e; e = before(elements, e)) {
    if (isRotary(*e) || e->getElemType() == KMachineElem::KMET_TYPE_PART) {
      offset -= e->getElemPivot();
    }
  }
  return offset;
}

void shiftLimits(KMachineElem* axis, double by) {
  if (!axis) return;
  if (axis->hasMax()) axis->setMax(axis->getMax() - by, true);
  if (axis->hasMin()) axis->setMin(axis->getMin() - by, true);
}

}  // namespace

// Deliberate: of an incomplete machine the tools are set up all the same (test:
// Finalise.IncompleteMachineStillGetsToolRecords), and the axis table of a run before stays
// (AxisTable.StaysAfterAnIncompleteFinaliseThoughNoAxisIsCounted). A position is made only for what
// it traces when there is none of this size (Finalise.EmptyMachineIsIncomplete).
int KMachine::finalise() try {
  traceElements(elements_);
  axisNum_ = 0;
  axisValueIndex_.clear();
  const bool complete = isComplete();
  if (complete) {
    numberAxes();
    applyLegacyOffset();
  }
  KMachineValueBase* probe = newMachineValue();
  KMachineValueBase::_release(probe);
  initTools();
  return complete ? 0 : -1;
} catch (const std::bad_alloc&) {
  return -1;
}

bool KMachine::isComplete() const {
  const auto frames = countOf(elements_, KMachineElem::KMET_TYPE_BATI);
  return frames == 1 && countOf(elements_, KMachineElem::KMET_TYPE_TOOL) > 0 &&
         countOf(elements_, KMachineElem::KMET_TYPE_PART) == frames;
}

// Axis numbers may have gaps; places in a position are dense and follow the axis numbers.
void KMachine::numberAxes() {
  std::map<int, int> carriers;  // axis number to the rank of the first element that has it
  for (int r = 0; r < getElemNumber(); ++r) {
    if (elements_[r].getElemIndex() > 0) carriers.emplace(elements_[r].getElemIndex(), r);
  }
  axisElems_.clear();
  axisValueIndex_.assign(carriers.empty() ? 0 : carriers.rbegin()->first, -1);
  for (const auto& [axisNumber, rank] : carriers) {
    axisValueIndex_[axisNumber - 1] = axisNum_++;
    axisElems_.push_back(rank);
  }
  for (KMachineElem& e : elements_) {
    if (e.getElemIndex() > 0) e.setValueIndex(axisValueIndex_[e.getElemIndex() - 1]);
  }
}

// Deliberate: needs a current tool, which no first load has (test:
// LegacyOffset.NeedsACurrentToolWhichNoFirstLoadHas); and a direct finalise shifts the limits
// again, by the frame origins (LegacyOffset.DirectFinaliseShiftsAgainByTheMovedPoints).
void KMachine::applyLegacyOffset() {
  const KMachineElem* tool = getElemByIndex(KMachineElem::_getToolIndex(currentTool_));
  if (version_ != 2 || !tool || !getElemByIndex(KMachineElem::KMET_PART)) return;
  legacyOffset_ = legacyOffsetOf(elements_, tool);
  shiftLimits(getElemByIndex(1), legacyOffset_.x);
  shiftLimits(getElemByIndex(2), legacyOffset_.y);
  shiftLimits(getElemByIndex(3), legacyOffset_.z);
}

// Deliberate: as many tools as there are TOOL elements, guns not counted although they are
// numbered with them (test: Records.FinaliseCoversAsManyNumbersAsThereAreTools); and every run
// adds records, by the rule of addKine (Records.FinaliseMayReplaceTheSharedRecordInsteadOfStoring).
void KMachine::initTools() {
  const int tools = static_cast<int>(countOf(elements_, KMachineElem::KMET_TYPE_TOOL));
  learnChains(tools);
  for (int t = 1; t <= tools; ++t) addKine(t, initDHm(t));
}

void KMachine::learnChains(int tools) {
  toolChains_.clear();
  links_.clear();
  links_.reserve(elements_.size());
  for (const KMachineElem& e : elements_) links_.push_back(e.link_);
  for (int t = 1; t <= tools; ++t) {
    const ChainWalk chain(elements_, toolElem(t));
    std::vector<int>& ranks = toolChains_.emplace_back();
    ranks.reserve(chain.size());
    for (const KMachineElem* e : chain) {
      ranks.push_back(static_cast<int>(std::distance(std::as_const(elements_).data(), e)));
    }
  }
}

// Deliberate: elements that several tools share keep the record of the last one set up (test:
// LoadingTest.LastToolOwnsTheSharedElements), and the point of a gun that carries another tool
// moves along its axis (LoadingTest.GunInAToolsChainMovesAlongItsLine).
KMachine::_sUKine KMachine::initDHm(int tool) {
  const Chain chain = getToolChain(true, tool);
  const std::vector<DhFrame> frames = dhFrames(chain);
  for (std::size_t k = 0; k < chain.size(); ++k) {
    KMachineElem* e = const_cast<KMachineElem*>(chain[k]);  // an element of this machine
    e->setDHmRef(frames[k].parameters);
    e->setDHmValue(frames[k].parameters);
    e->setElemPivot(frames[k].origin);
  }
  return analysis(tool);
}

KMachine::_sUKine KMachine::analysis(int tool) const {
  UVec3d unused;
  const Chain chain = getToolChain(false, tool);
  return classify(chain, getToolIndex(tool), hasRotule(unused, tool),
                  chain.empty() ? nullptr : chain.back());
}

int KMachine::hasRotule(UVec3d& centre, int tool) const {
  const KMachineElem* first = ballJointOf(getToolChain(true, tool));
  // Deliberate: never the joint's centre. Test: Wrist.IsFoundWhereThreeAxesMeet.
  if (first) centre.set(0, 0, 0);
  return first ? first->getElemIndex() : 0;
}

void KMachine::addKine(int tool, const _sUKine& k) {
  _sUKine& found = getKine(tool);
  // Deliberate: compares an element index with a tool number, so records of tools are appended.
  // Tests: Records.LaterRecordOfAToolWins and .StoringUnderAnIndexReachesOnlyTheSharedRecord.
  if (std::atomic_ref<int>(found.toolIndex).load(std::memory_order_relaxed) == tool) {
    store(found, k);
  } else {
    kines_.push_back(k);
  }
}

KMachine::_sUKine& KMachine::getKine(int tool) const {
  recordOf(tool);
  return _NOKine;
}

// The record itself: what `getKine` returns may be overwritten by other threads' lookups at once.
KMachine::_sUKine KMachine::recordOf(int tool) const {
  const int wanted = getToolIndex(tool);
  const auto found = std::find_if(kines_.rbegin(), kines_.rend(), [wanted](const _sUKine& kine) {
    return kine.toolIndex == wanted;
  });
  if (found == kines_.rend()) return load(_NOKine);
  store(_NOKine, *found);
  return *found;
}

}  // namespace zkin
