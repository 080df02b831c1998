#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/path/Toolpath.h"

namespace korvo {

/// How badly a path fits: breaks between targets, targets without a position, places where the tool
/// stands.
struct PathFit {
  std::size_t breaks = 0;
  std::size_t unreached = 0;
  std::size_t standing = 0;

  bool isFitting() const { return breaks + unreached + standing == 0; }

  /// Fewer breaks of both kinds, then fewer places to stand.
  bool operator<(const PathFit& o) const {
    const std::size_t own = breaks + unreached, other = o.breaks + o.unreached;
    return own != other ? own < other : standing < o.standing;
  }
};

KORVO_TOOLKIT_API PathFit fitOf(const ToolpathReport& report);

/// One thing that could be changed so that a path fits better.
struct PathAdvice {
  enum class Kind {
    part,   ///< The part is moved.
    start,  ///< The axis at `place`, which targets leave where the start has it, stands at `value`.
    side,   ///< Begin where this path does, and not where the start is nearest.
    limit,  ///< The axis at `place` goes further.
  };

  Kind kind = Kind::part;
  zgeo::UVec3d shift;  ///< part: mm, along the axes of the machine frame at the zero position.
  int place = -1;
  double value = 0.0;         ///< start: mm or degrees.
  std::optional<double> min;  ///< limit: that it would have to have, where it has to change,
  std::optional<double> max;  ///< mm or degrees.
  double more = 0.0;          ///< limit: by how much in all.
  Values begin{};             ///< side: the first position.

  PathFit before;  ///< Without it: as the path is; of `side` nearest-first.
  PathFit after;   ///< With it: counted by a run over all targets.
};

/// "part", "start", "side", "limit".
KORVO_TOOLKIT_API const char* toString(PathAdvice::Kind kind);

/// What to change so that a path fits, or fits better: each was tried by a run over all targets
/// with that change alone, and left less of breaks and targets without a position. Those that leave
/// least come first; none of a path that was stopped.
///
/// Part: of three free linear axes that carry the tool the shift is computed. At given rotary
/// angles a shift of the part shifts every linear axis in proportion, so every target and limit
/// gives one half space; taken is the shortest shift along one axis of the machine, else the
/// shortest, that lies in all of them with half a millimetre to spare, or with as little as leaves
/// any. Of other machines shifts along the machine's axes by 25 to 800 mm are tried on some of the
/// targets, and the shortest that reaches them all.
///
/// Start: axes that are locked, or held by the options, and those beyond what a target determines
/// (a rail, a fourth linear axis, a third rotary one): nine places from limit to limit, and those
/// at which the reasons of the report say that targets would be reached.
///
/// Limit: with one axis' limits taken away, or far away, the path shows where that axis goes, the
/// old limits exceeded as little as can be; the limits that hold this are the ones tried.
///
/// Side: where the path begins elsewhere than nearest-first would, which breaks later on. This is
/// looked for of paths without a break, too.
///
/// @param report  Of a run with these options over these targets.
/// @param watch   As for a run; called all the time. When it says stop, what is known is given.
/// @cost    Of a path without breaks at most one pass nearest-first; else at most two runs for each
///          axis with limits, and some.
KORVO_TOOLKIT_API std::vector<PathAdvice> advise(const Machine& machine,
                                                 const ToolpathOptions& options,
                                                 std::span<const PathTarget> targets,
                                                 const ToolpathReport& report,
                                                 const ToolpathWatch& watch = {});

}  // namespace korvo
