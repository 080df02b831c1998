#pragma once

#include <map>
#include <optional>
#include <vector>

#include "toolkit/Language.h"
#include "toolkit/Sentence.h"
#include "toolkit/answer/Answer.h"
#include "toolkit/answer/AxisTravel.h"
#include "toolkit/answer/Cones.h"
#include "toolkit/answer/Nearly.h"

namespace korvo {

/// Why targets have no position by a machine's solver: see Reach for what is said when.
class WhyNot {
 public:
  WhyNot(const Machine& machine, const SolverOptions& options, Language language);

  /// Ask only where the solver has no position. Should a candidate prove to reach the target inside
  /// the limits, it is the answer.
  Answer explain(const Target& target, const Position& from);

 private:
  using Places = std::vector<int>;

  Answer noTarget(const Text& text, const Position& from) const;
  Answer standing(const Target& target, const Position& from) const;
  Answer unserved(const Target& target, const Position& from) const;
  AxisTravel::Found travelled(const Places& places, const Target& target, const Values& from);
  Answer movedTo(const AxisTravel::Found& found, const Position& from) const;
  Values heldStart(const Position& from) const;
  bool isArmBound() const;
  Answer withoutLocks(const Target& target, const Position& from) const;
  void explainLocked(const Target& target, const Position& from, Answer& answer);
  void explainHeld(const Target& target, const Position& from, Answer& answer);
  std::optional<Solution> nearestFor(int place, const Machine& machine,
                                     const SolverOptions& options, const Target& target,
                                     const Values& from);
  void want(const Solution& solution, const Values& from, const Places& places, Reason reason,
            Answer& answer, const std::vector<AxisWanted>& moved = {}) const;
  Pointing nearestPointing(const Target& target, const Values& from) const;
  Answer beside(const Target& target, const Position& from);
  Answer judged(const Candidate& candidate, const Position& from) const;
  void explainPoint(const zgeo::UVec3d& tip, Answer& answer) const;
  void takeOutside(Answer& answer) const;

  Machine machine_;
  SolverOptions options_;
  Language language_;
  Solver solver_;
  Nearly nearly_;
  Places locked_;  // by the machine
  Places placed_;  // by the options
  Places spare_;   // of axes that stay at the start while they can
  std::map<int, AxisTravel> travels_;
};

}  // namespace korvo
