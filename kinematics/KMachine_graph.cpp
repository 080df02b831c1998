// Lookups, building, chains, tools, collision pairs.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "kinematics/ChainWalk.h"
#include "kinematics/KMachine.h"
#include "platform/os/Files.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;

namespace zkin {

// --- lookups

const KMachineElem* KMachine::getElemByRank(int rank) const {
  return rank >= 0 && rank < getElemNumber() ? &elements_[rank] : nullptr;
}

KMachineElem* KMachine::getElemByRank(int rank) {
  return const_cast<KMachineElem*>(std::as_const(*this).getElemByRank(rank));
}

const KMachineElem* KMachine::_getElemByIndex(const std::vector<KMachineElem>& elements,
                                              int index) {
  return elementOf(elements, index);
}

const KMachineElem* KMachine::getElemByIndex(int index) const {
  return _getElemByIndex(elements_, index);
}

KMachineElem* KMachine::getElemByIndex(int index) {
  return const_cast<KMachineElem*>(_getElemByIndex(elements_, index));
}

const KMachineElem* KMachine::_getElemByName(const std::vector<KMachineElem>& elements,
                                             const wchar_t* name, int version) {
  if (!name) return nullptr;
  std::wstring wanted = UTools::_up(name);
  if (version == 2) wanted = UTools::_removeFrom(wanted, L"AXE_");
  for (const KMachineElem& e : elements) {
    if (korvo::os::_wcsicmp(e.getElemName().c_str(), wanted.c_str()) == 0) return &e;
  }
  return nullptr;
}

const KMachineElem* KMachine::getElemByName(const wchar_t* name) const {
  return _getElemByName(elements_, name, version_);
}

KMachineElem* KMachine::getElemByName(const wchar_t* name) {
  return const_cast<KMachineElem*>(_getElemByName(elements_, name, version_));
}

const KMachineElem* KMachine::getElemByName(const char* name) const {
  return name ? getElemByName(UTools::_toWS(name, 0).c_str()) : nullptr;
}

KMachineElem* KMachine::getElemByName(const char* name) {
  return const_cast<KMachineElem*>(std::as_const(*this).getElemByName(name));
}

int KMachine::getElemRank(const KMachineElem& e) const {
  const auto found = std::find(elements_.begin(), elements_.end(), e);
  return found == elements_.end() ? -1 : static_cast<int>(found - elements_.begin());
}

int KMachine::getElemRank(const KMachineElem* const e) const { return e ? getElemRank(*e) : -1; }

const KMachineElem* KMachine::getPrevElem(const KMachineElem* e) const {
  return e ? getElemByIndex(e->getPrevIndex()) : nullptr;
}

KMachineElem* KMachine::getPrevElem(const KMachineElem* e) {
  return const_cast<KMachineElem*>(std::as_const(*this).getPrevElem(e));
}

const KMachineElem* KMachine::getAxisElem(int k) const {
  return k >= 1 && k <= static_cast<int>(axisElems_.size()) ? &elements_[axisElems_[k - 1]]
                                                            : nullptr;
}

// --- building

KMachineElem* KMachine::addElem(const KMachineElem& e) {
  if (version_ != 0) return nullptr;
  elements_.push_back(e);
  return &elements_.back();
}

KMachineElem* KMachine::addElem(KMachineElem::KME_TYPE t) {
  KMachineElem e;
  e.setElemType(t);
  return addElem(e);
}

int KMachine::addBatiToTool(const std::vector<KMachineElem>& chain) {
  if (chain.empty() || elements_.empty() || version_ != 0 || !chain.back().isTool() ||
      elements_.front().getElemType() != KMachineElem::KMET_TYPE_BATI) {
    return -1;
  }
  const int toolIndex = KMachineElem::_getToolIndex(getToolNumber() + 1);
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): `chain` may be this machine's own
  const std::vector<KMachineElem> added = chain;
  int previous = elements_.front().getElemIndex();
  for (const KMachineElem& e : added) {
    addElem(e)->setPrevIndex(previous);
    previous = e.getElemIndex();
  }
  elements_.back().setElemIndex(toolIndex);
  return toolIndex;
}

int KMachine::setBatiToPart(const std::vector<KMachineElem>& chain) {
  if (chain.size() < 2 || !elements_.empty() ||
      chain.front().getElemType() != KMachineElem::KMET_TYPE_BATI ||
      chain.back().getElemType() != KMachineElem::KMET_TYPE_PART) {
    return -1;
  }
  elements_ = chain;
  axisElems_.clear();
  for (std::size_t i = 0; i + 1 < elements_.size(); ++i) {
    elements_[i].setPrevIndex(elements_[i + 1].getElemIndex());
    elements_[i].invert();
  }
  return elements_.front().getElemIndex();
}

// --- chains and tools

std::vector<const KMachineElem*> KMachine::getChain(const KMachineElem* e) const {
  const ChainWalk chain(elements_, e);
  return {chain.begin(), chain.end()};
}

std::vector<const KMachineElem*> KMachine::getChain(int index) const {
  return getChain(getElemByIndex(index));
}

std::vector<const KMachineElem*> KMachine::getToolChain(bool activeOnly, int tool) const {
  const ChainWalk walk = toolChain(tool);
  std::vector<const KMachineElem*> chain(walk.begin(), walk.end());
  if (activeOnly) std::erase_if(chain, [](const KMachineElem* e) { return !e->isActive(); });
  return chain;
}

// Looking up each predecessor among all elements is a third of a query for a short chain: what
// `finalise` found is taken as long as no element has another index or predecessor since.
ChainWalk KMachine::toolChain(int tool) const {
  const int number = KMachineElem::_getIndexTool(getToolIndex(tool));
  const std::size_t place = static_cast<std::size_t>(number) - 1;
  if (place < toolChains_.size() && hasLearntLinks()) return {elements_, toolChains_[place]};
  return {elements_, toolElem(tool)};
}

// By bits: index and predecessor in one comparison.
bool KMachine::hasLearntLinks() const {
  using Bits = std::uint64_t;
  return std::equal(elements_.begin(), elements_.end(), links_.begin(), links_.end(),
                    [](const KMachineElem& e, const KMachineElem::Link& link) {
                      return std::bit_cast<Bits>(e.link_) == std::bit_cast<Bits>(link);
                    });
}

const KMachineElem* KMachine::toolElem(int tool) const {
  return getElemByIndex(getToolIndex(tool));
}

int KMachine::_getToolsIndices(const std::vector<KMachineElem>& elements, std::vector<int>& out) {
  out.clear();
  for (const KMachineElem& e : elements) {
    if (e.isTool()) out.push_back(e.getElemIndex());
  }
  return static_cast<int>(out.size());
}

int KMachine::getTools(std::vector<int>& out) const { return _getToolsIndices(elements_, out); }

int KMachine::getToolNumber() const {
  return static_cast<int>(std::count_if(elements_.begin(), elements_.end(),
                                        [](const KMachineElem& e) { return e.isTool(); }));
}

int KMachine::getToolIndex(int n) const {
  return KMachineElem::_getToolIndex(n > 0 ? n : currentTool_);
}

// Deliberate: any number whose index an element has, so -100 makes the frame the current tool.
// Test: Machine.AnyElementWithAToolsIndexCanBeCurrent.
void KMachine::setCurrentTool(int n) {
  if (getElemByIndex(KMachineElem::_getToolIndex(n))) currentTool_ = n;
}

// --- collision pairs

namespace {

std::pair<int, int> ordered(const std::pair<int, int>& pair) {
  return std::minmax(pair.first, pair.second);
}

bool holds(const std::pair<int, int>& pair, int index) {
  return pair.first == index || pair.second == index;
}

}  // namespace

void KMachine::addElemCollCheck(int a, int b) { addElemCollCheck(std::pair(a, b)); }

void KMachine::addElemCollCheck(const std::pair<int, int>& pair) {
  const std::pair<int, int> wanted = ordered(pair);
  if (wanted.first == wanted.second) return;
  if (std::find(collCheck_.begin(), collCheck_.end(), wanted) == collCheck_.end()) {
    collCheck_.push_back(wanted);
  }
}

void KMachine::delElemCollCheck(int a, int b) { delElemCollCheck(std::pair(a, b)); }

void KMachine::delElemCollCheck(const std::pair<int, int>& pair) {
  if (pair.first != pair.second) std::erase(collCheck_, ordered(pair));
}

void KMachine::clearElemCollCheck(int index) {
  std::erase_if(collCheck_, [index](const auto& pair) { return holds(pair, index); });
}

void KMachine::clearCollCheck() { collCheck_.clear(); }

void KMachine::getElemCollCheck(int index, std::vector<int>& out) const {
  out.clear();
  if (!getElemByIndex(index)) return;
  for (const auto& [a, b] : collCheck_) {
    if (holds({a, b}, index)) out.push_back(a == index ? b : a);
  }
}

void KMachine::setElemCollCheck(int index, const std::vector<int>& partners) {
  clearElemCollCheck(index);
  for (const int partner : partners) addElemCollCheck(index, partner);
}

const KMachineValue<12>* KMachine::getRotationPoint(int i) const {
  return i >= 0 && i < static_cast<int>(rotationPoints_.size()) ? &rotationPoints_[i] : nullptr;
}

}  // namespace zkin
