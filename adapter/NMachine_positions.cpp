// Positions: made, released, compared, dumped.

#include <algorithm>
#include <cmath>
#include <new>

#include "adapter/NMachine.h"
#include "adapter/PositionTrace.h"
#include "adapter/memory.h"
#include "platform/zgeo/UTools.h"

using Ombra::Kin::MachinePosition;
using Ombra::Kin::Register;
using zgeo::UTools;

namespace zkin {

MachinePosition NMachine::newMachinePosition() const {
  MachinePosition p;
  p.Alloc(registerNb());
  return p;
}

MachinePosition NMachine::newMachinePosition(const MachinePosition& p) const {
  MachinePosition copy = newMachinePosition();
  copy = p;
  return copy;
}

MachinePosition* NMachine::newMachinePositionP() const try {
  return new MachinePosition(newMachinePosition());
} catch (const std::bad_alloc&) {
  return nullptr;
}

MachinePosition* NMachine::newMachinePositionP(const MachinePosition& p) const try {
  return new MachinePosition(newMachinePosition(p));
} catch (const std::bad_alloc&) {
  return nullptr;
}

void NMachine::_release(MachinePosition*& p) {
  delete p;
  p = nullptr;
}

void NMachine::_release(std::vector<MachinePosition*>& v) {
  for (MachinePosition*& p : v) _release(p);
  v.clear();
}

std::vector<double> NMachine::axisValues(const MachinePosition& p) const {
  std::vector<double> values(registerNb().value);
  for (int i = 0; i < std::ssize(values); ++i) values[i] = p[Register(i)];
  return values;
}

MachinePosition NMachine::axisValues(const std::vector<double>& v) const {
  const int count = registerNb().value;
  MachinePosition p;
  p.Alloc(count);
  for (int i = 0; i < count && i < std::ssize(v); ++i) p[Register(i)] = v[i];
  return p;
}

bool NMachine::_equals(const MachinePosition& a, const MachinePosition& b, double tol) {
  if (a.Size() != b.Size()) return false;
  for (int i = a.Size() - 1; i >= 0; --i) {
    if (!(std::fabs(a[Register(i)] - b[Register(i)]) < tol)) return false;
  }
  return true;
}

void tracePosition(int size, const wchar_t* label, const MachinePosition& p, int count) {
  UTools::_traceTS(L"NMP<%d> (%s) [ ", size, label);
  for (int i = 0; i < count; ++i) {
    if (i > 0) UTools::_traceTS(L" | ");
    UTools::_traceTS(L"%+10.3lf", p[Register(i)]);
  }
  UTools::_traceTS(L" ]");
}

void NMachine::dumpValues(const MachinePosition& p, const wchar_t* const label,
                          bool keepLine) const {
  hadMemory([&] { tracePosition(p.Size(), label, p, registerNb().value); });
  if (!keepLine) UTools::_traceTF();
}

}  // namespace zkin
