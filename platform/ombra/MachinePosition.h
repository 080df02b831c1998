#pragma once

#include <algorithm>
#include <vector>

#include "platform/ombra/Export.h"
#include "platform/ombra/Indices.h"

namespace Ombra::Kin {

/// A position of a machine: one double for each register, mm or degrees.
class OMBRA_API MachinePosition {
 public:
  MachinePosition() = default;  ///< Of no register.
  MachinePosition(const MachinePosition&) = default;
  MachinePosition& operator=(const MachinePosition&) = default;  ///< Takes the size as well.
  virtual ~MachinePosition();

  /// Makes it a position of `count` registers, all 0; none for a count below 0.
  void Alloc(const Register& count) { Alloc(count.value); }
  void Alloc(int count) { values_.assign(std::max(count, 0), 0.0); }

  int Size() const { return static_cast<int>(values_.size()); }

  /// The value of a register. One that is not there reads as 0, and what is written to it is lost.
  double operator[](const Register& reg) const { return holds(reg) ? values_[reg.value] : 0.0; }
  double& operator[](const Register& reg) {
    return holds(reg) ? values_[reg.value] : (lost_ = 0.0);
  }

 private:
  bool holds(const Register& reg) const { return reg.value >= 0 && reg.value < Size(); }

  std::vector<double> values_;
  double lost_ = 0.0;
};

}  // namespace Ombra::Kin
