#pragma once

#include <optional>
#include <vector>

#include "toolkit/model/JointChain.h"

namespace korvo {

/// Where the part would have to stand so that three linear axes carry the tool inside their limits.
///
/// Moved by d (machine frame, at the zero position) with the rotary axes as they are, a target is
/// reached with the linear axes q + J^-1 d: the columns of J are their directions as the part sees
/// them. So limits of an axis bound n * d by what is left to them, n being its row of J^-1.
class PartShift {
 public:
  /// Nothing where not exactly three linear axes move.
  static std::optional<PartShift> of(const JointChain& chain);

  const std::vector<int>& places() const { return places_; }

  /// A position that reaches a target, whatever the limits of the linear axes.
  void take(const Values& values);

  /// The shortest along one axis of the machine, else the shortest; nothing when there is none.
  std::optional<zgeo::UVec3d> shortest() const;

 private:
  /// low <= n * shift <= high
  struct Slab {
    float n[3] = {};
    double low = 0.0;
    double high = 0.0;
  };
  struct Half;

  explicit PartShift(const JointChain& chain) : chain_(chain) {}

  std::optional<zgeo::UVec3d> shortest(double spare) const;
  std::optional<double> along(int axis, double spare) const;
  std::optional<zgeo::UVec3d> across(double spare) const;
  std::optional<Half> mostViolated(const zgeo::UVec3d& shift, double spare) const;

  JointChain chain_;
  std::vector<int> places_;
  std::vector<Slab> slabs_;
  bool isSolvable_ = true;
};

}  // namespace korvo
