#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "adapter/tolerances.h"
#include "platform/ombra/Entity.h"
#include "platform/ombra/Machine.h"
#include "platform/ombra/MachinePosition.h"

/// The axes of an external machine as the solvers walk them, their ranges and their starts.
namespace zkin {

/// The axes of one kind that have a register of the machine, in the order of its entities.
std::vector<const Ombra::Kin::Entity*> axesOf(const Ombra::Kin::Machine& machine,
                                              Ombra::Kin::LinkKind kind);

// --- whole turns: all but the last ones in one step, so that huge angles end, too; the last ones
// by comparing, so that rounding never stops a turn short of the bound

/// The first of v, v + 360, ... that is not below `low`.
inline double raised(double v, double low) {
  const double turns = std::floor((low - v) / kFullTurn) - 1;
  if (turns > 0) v += kFullTurn * turns;
  for (int i = 0; i < kLastTurns && v < low; ++i) v += kFullTurn;
  return v;
}

/// The first of v, v - 360, ... that is not above `high`.
inline double lowered(double v, double high) {
  const double turns = std::floor((v - high) / kFullTurn) - 1;
  if (turns > 0) v -= kFullTurn * turns;
  for (int i = 0; i < kLastTurns && v > high; ++i) v -= kFullTurn;
  return v;
}

/// A solved angle, less than a full turn from the start's. Deliberate: that is not the nearest
/// turn, 350 degrees away stays so (test: WholeTurns.BringNearTheStartWithinAFullTurn).
inline double nearStart(double v, double start) {
  return raised(lowered(v, start + kNearStart), start - kNearStart);
}

// --- ranges

/// Whether a value lies in the range of the axis, if that applies.
inline bool isInRange(const Ombra::Kin::Entity& axis, double v) {
  return !axis.GetCheckRangeAxis() ||
         (v >= axis.GetRangeMin() - kPositionEqual && v <= axis.GetRangeMax() + kPositionEqual);
}

/// Brings an angle into the range of the axis by whole turns; false when no turn does, or when it
/// is not finite. From below or from above first makes no difference: an angle outside comes to the
/// turn next to the bound that it passed, and the other bound can only refuse that.
inline bool fold(const Ombra::Kin::Entity& axis, double& v) {
  if (axis.GetCheckRangeAxis()) {
    v = lowered(raised(v, axis.GetRangeMin() - kPositionEqual),
                axis.GetRangeMax() + kPositionEqual);
  }
  return std::isfinite(v) && isInRange(axis, v);
}

// --- starts

/// Start angles of a rotary axis, within one turn either way and within its range, in the order in
/// which they are tried.
std::vector<double> startAngles(const Ombra::Kin::Entity& axis);

/// All combinations of the start angles of some axes, the first axis varying fastest. Made one at a
/// time: six free axes have 9^6.
class StartGrid {
 public:
  explicit StartGrid(const std::vector<const Ombra::Kin::Entity*>& axes);

  /// Writes the next combination to the registers of the axes; the rest is left. False when all
  /// were given: there is one without axes, none when a range leaves no angle.
  bool next(Ombra::Kin::MachinePosition& p);

 private:
  struct Wheel {
    Ombra::Kin::Register reg;
    std::vector<double> angles;
    std::size_t at = 0;
  };

  bool advance();

  std::vector<Wheel> wheels_;
  bool hasNext_ = true;
};

}  // namespace zkin
