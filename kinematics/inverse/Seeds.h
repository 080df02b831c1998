#pragma once

#include <cstddef>
#include <vector>

#include "kinematics/ChainWalk.h"
#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"

namespace zkin {

/// The start positions from which every turn and branch of a chain's rotary axes is reached: for
/// each axis up to nine angles within one turn either way and within its limits, all combinations,
/// the first axis of the chain varying fastest. Made one at a time: six free joints have 9^6.
class Seeds {
 public:
  /// @param chain  Rotary axes without a place in positions are left out.
  Seeds(const MachineView& machine, const ChainWalk& chain);

  /// Writes the angles (degrees) of the next seed to the places of their axes; the rest is left.
  /// False when all were given: there is one without rotary axes, none when the limits of an axis
  /// leave no angle.
  bool next(KMachineValueBase& v);

  /// Start angles of one axis, in the order in which they are tried.
  static std::vector<double> _anglesOf(const KMachineElem& axis);

 private:
  struct Axis {
    int place;
    std::vector<double> angles;
    std::size_t at = 0;
  };

  bool advance();

  std::vector<Axis> axes_;
  bool hasNext_ = true;
};

}  // namespace zkin
