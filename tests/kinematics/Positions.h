#pragma once

#include <memory>
#include <vector>

#include "kinematics/KMachineValue.h"

namespace korvo::test {

/// Reaches the factory that only the machines use.
struct Access : zkin::KMachineValueBase {
  using zkin::KMachineValueBase::_newMachineValue;
};

struct Release {
  void operator()(zkin::KMachineValueBase* p) const { zkin::KMachineValueBase::_release(p); }
};
using Position = std::unique_ptr<zkin::KMachineValueBase, Release>;

inline Position newPosition(int dim) { return Position(Access::_newMachineValue(dim)); }

inline Position newPosition(const std::vector<double>& values) {
  Position position = newPosition(static_cast<int>(values.size()));
  position->set(values.data());
  return position;
}

template <int N>
zkin::KMachineValue<N> valueOf(const double (&values)[N]) {
  zkin::KMachineValue<N> value;
  value.set(values);
  return value;
}

inline std::vector<double> valuesOf(const zkin::KMachineValueBase& v) {
  return {v.get(), v.get() + v.size()};
}

}  // namespace korvo::test
