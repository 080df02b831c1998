#pragma once

#include <optional>
#include <vector>

#include "toolkit/Language.h"
#include "toolkit/Sentence.h"
#include "toolkit/answer/Answer.h"
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
  struct Pointing;

  Answer noTarget(const Text& text, const Position& from) const;
  Answer standing(const Target& target, const Position& from) const;
  Answer unserved(const Target& target, const Position& from) const;
  std::optional<Answer> locked(const Target& target, const Position& from) const;
  Machine unlocked(const std::vector<int>& places) const;
  std::optional<Solution> nearestUnlocked(const std::vector<int>& places, const Target& target,
                                          const Values& from) const;
  bool isArmLocked() const;
  Answer withoutLocks(const Target& target, const Position& from) const;
  std::optional<Answer> held(const Target& target, const Position& from) const;
  Answer wanting(const Target& target, const Position& from, const Solution& solution,
                 const std::vector<int>& places, Reason reason) const;
  bool isFreed(const Joint& joint, Joint::Motion motion) const;
  Pointing pointing(const Target& target, const Values& at) const;
  Pointing nearestPointing(const Target& target, const Values& from) const;
  Answer beside(const Target& target, const Position& from);
  Answer judged(const Candidate& candidate, const Position& from) const;
  void explainPoint(const zgeo::UVec3d& tip, Answer& answer) const;
  void explainOutside(Answer& answer) const;

  Machine machine_;
  SolverOptions options_;
  Language language_;
  Solver solver_;
  Nearly nearly_;
  std::vector<int> held_;  // places of axes that stay at the start
};

}  // namespace korvo
