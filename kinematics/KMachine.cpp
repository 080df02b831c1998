// Construction, copies, positions, dumps.

#include "kinematics/KMachine.h"

#include "platform/zgeo/UTools.h"

using zgeo::UTools;

namespace zkin {

KMachine::KMachine() = default;

KMachine::KMachine(const wchar_t* path, int version)
    : dataFilePNE_(path ? path : L""), version_(version) {}

KMachine::~KMachine() = default;

KMachine::KMachine(const KMachine& o) = default;
KMachine& KMachine::operator=(const KMachine& o) = default;

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

// Place of an axis number in a position.
// Deliberate: -1, which positions clamp to their first value, for numbers that no axis has.
// Test: Machine.AxisNumbersOfNoAxisMeanTheFirstValue.
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
  if (!UTools::_isTracing()) return UTools::_traceTF();  // an open line ends here all the same
  UTools::_trace(L"--- --- zkin::KMachine <%s> %s", dataFilePNE_.c_str(), label);
  for (int r = 0; r < getElemNumber(); ++r) {
    if (r > 0) UTools::_trace(L"    |");
    elements_[r].dump(UTools::_formatted(L"%d", r).c_str());
  }
  UTools::_trace(L"--- ---");
}

void KMachine::dump(const KMachineValueBase& v, bool keepLine) const {
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
