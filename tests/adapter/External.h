#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "adapter/NMachine.h"
#include "platform/zgeo/UTri.h"
#include "tests/ombra/Machines.h"
#include "tests/support/Matchers.h"

namespace korvo::test {

/// An adapter that frees its copy of the machine at the end of the test, which hosts have to do.
class Adapter : public zkin::NMachine {
 public:
  using NMachine::axisAnalysis;
  using NMachine::set;

  explicit Adapter(const Machine* m, int head = 0, int table = 0)
      : NMachine(m, HeadIndex(head), TableIndex(table)) {}
  explicit Adapter(const Machine& m) : Adapter(&m) {}
  explicit Adapter(const NMachine& o) : NMachine(o) {}
  Adapter(const Adapter& o) : NMachine(o) {}
  Adapter& operator=(const Adapter&) = delete;
  ~Adapter() { reset(true); }

  /// Takes another machine after freeing the copy of the one before.
  void replace(const Machine* m) {
    delete machine();
    set(m, HeadIndex(), TableIndex());
  }
};

inline std::vector<double> valuesOf(const MachinePosition& p) {
  std::vector<double> values;
  for (int i = 0; i < p.Size(); ++i) values.push_back(p[Register(i)]);
  return values;
}

/// A list of positions that releases them.
class Positions {
 public:
  Positions() = default;
  Positions(const Positions&) = delete;
  Positions& operator=(const Positions&) = delete;
  ~Positions() { zkin::NMachine::_release(list); }

  std::vector<std::vector<double>> values() const {
    std::vector<std::vector<double>> all;
    for (const MachinePosition* p : list) all.push_back(valuesOf(*p));
    return all;
  }

  std::vector<MachinePosition*> list;
};

inline std::vector<int> numbersOf(const std::vector<Register>& registers) {
  std::vector<int> numbers;
  for (const Register& r : registers) numbers.push_back(r.value);
  return numbers;
}

inline zgeo::UVec3d toUVec3d(const Vector3D& v) { return {v.x, v.y, v.z}; }

}  // namespace korvo::test
