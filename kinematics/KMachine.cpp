// Construction, copies, positions, dumps.

#include "kinematics/KMachine.h"

#include <new>

#include "kinematics/ChainWalk.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;

namespace zkin {

KMachine::KMachine() = default;

KMachine::KMachine(const wchar_t* path, int version)
    : dataFilePNE_(path ? path : L""), version_(version) {}

KMachine::~KMachine() = default;

KMachine::KMachine(const KMachine& o)
    : dataFilePNE_(o.dataFilePNE_),
      elements_(o.elements_),
      version_(o.version_),
      strategy_(o.strategy_),
      modeRTCP_(o.modeRTCP_),
      axisNum_(o.axisNum_),
      axisValueIndex_(o.axisValueIndex_),
      kines_(o.kines_),
      collCheck_(o.collCheck_),
      uni2mac_(o.uni2mac_),
      mac2uni_(o.mac2uni_),
      legacyOffset_(o.legacyOffset_),
      rotationPoints_(o.rotationPoints_),
      currentTool_(o.currentTool_) {
  repointAxisElems(o.axisElemRanks());
}

KMachine& KMachine::operator=(const KMachine& o) {
  if (this == &o) return *this;
  dataFilePNE_ = o.dataFilePNE_;
  elements_ = o.elements_;
  version_ = o.version_;
  strategy_ = o.strategy_;
  modeRTCP_ = o.modeRTCP_;
  axisNum_ = o.axisNum_;
  axisValueIndex_ = o.axisValueIndex_;
  kines_ = o.kines_;
  collCheck_ = o.collCheck_;
  uni2mac_ = o.uni2mac_;
  mac2uni_ = o.mac2uni_;
  legacyOffset_ = o.legacyOffset_;
  rotationPoints_ = o.rotationPoints_;
  currentTool_ = o.currentTool_;
  repointAxisElems(o.axisElemRanks());
  return *this;
}

// Every entry points into `elements_`, whose first address is taken as it is now.
std::vector<int> KMachine::axisElemRanks() const {
  std::vector<int> ranks;
  ranks.reserve(axisElems_.size());
  for (const KMachineElem* e : axisElems_) {
    ranks.push_back(static_cast<int>(e - elements_.data()));
  }
  return ranks;
}

void KMachine::repointAxisElems(const std::vector<int>& ranks) {
  axisElems_.clear();
  for (const int rank : ranks) axisElems_.push_back(&elements_[rank]);
}

// --- positions

KMachineValueBase* KMachine::newMachineValue() const {
  return KMachineValueBase::_newMachineValue(axisNum_);
}

KMachineValueBase* KMachine::newMachineValue(const KMachineValueBase& v) const {
  KMachineValueBase* value = newMachineValue();
  if (value) value->set(v);
  return value;
}

namespace {

// Place of an axis number in a position; -1, which positions clamp to their first value, for
// numbers outside the table.
int placeOf(const std::vector<int>& axisValueIndex, int axisNumber) {
  const bool known = axisNumber >= 1 && axisNumber <= static_cast<int>(axisValueIndex.size());
  return known ? axisValueIndex[axisNumber - 1] : -1;
}

}  // namespace

double KMachine::getAxisVal(const KMachineValueBase& v, int axisNumber) const {
  return v[placeOf(axisValueIndex_, axisNumber)];
}

double& KMachine::getAxisVal(KMachineValueBase& v, int axisNumber) const {
  return v[placeOf(axisValueIndex_, axisNumber)];
}

void KMachine::setAxisVal(KMachineValueBase& v, int axisNumber, double x) const {
  v[placeOf(axisValueIndex_, axisNumber)] = x;
}

std::vector<double> KMachine::axisValues(const KMachineValueBase& v) const {
  std::vector<double> values(axisNum_);
  for (int i = 0; i < axisNum_; ++i) values[i] = v[i];
  return values;
}

KMachineValueBase* KMachine::axisValues(const std::vector<double>& d) const {
  KMachineValueBase* value = newMachineValue();
  for (int i = 0; value && i < axisNum_; ++i) {
    (*value)[i] = i < static_cast<int>(d.size()) ? d[i] : 0.0;
  }
  return value;
}

// --- dumps

void KMachine::dump(const wchar_t* const label) const {
  if (!UTools::_isTracing()) return;
  UTools::_trace(L"--- --- zkin::KMachine <%s> %s", dataFilePNE_.c_str(), label);
  for (int r = 0; r < getElemNumber(); ++r) {
    if (r > 0) UTools::_trace(L"    |");
    elements_[r].dump(UTools::_formatted(L"%d", r).c_str());
  }
  UTools::_trace(L"--- ---");
}

void KMachine::dump(const KMachineValueBase& v, bool keepLine) const {
  if (!UTools::_isTracing()) return;
  UTools::_traceTS(L"%dx_[ ", axisNum_);
  for (int i = 0; i < axisNum_; ++i) {
    const KMachineElem* axis = getAxisElem(i + 1);
    if (i > 0) UTools::_traceTS(L" | ");
    UTools::_traceTS(L"%s%+-10.3lf", axis ? axis->getElemName().c_str() : L"", v[i]);
  }
  UTools::_traceTS(L" ]");
  if (!keepLine) UTools::_traceTF();
}

}  // namespace zkin
