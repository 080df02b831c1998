#pragma once

#include <map>
#include <optional>
#include <vector>

#include "toolkit/Machine.h"
#include "toolkit/solve/Solver.h"

namespace korvo {

/// A position that is none for its limits or its tip; of an arm maybe for its direction.
struct Candidate {
  Solution solution;
  double missedRad = 0.0;  ///< The direction from the target's; 0 where it is reached.
  double missedMm = 0.0;   ///< The tip from the target's; 0 where it is carried there.
  double excess = 0.0;     ///< Of the axes outside their limits: mm and degrees, summed.

  bool isReached() const { return !(missedRad > 0) && !(missedMm > 0) && !(excess > 0); }
};

/// Whether `a` misses by less: the direction, then the tip, then the limits.
bool isBetter(const Candidate& a, const Candidate& b);

/// Of all branches the candidate that misses by the least, as Nearly says it.
std::optional<Candidate> nearestBranch(const Solver& solver, const Target& target,
                                       const Values& from);

/// What comes nearest to targets that nothing reaches.
class Nearly {
 public:
  Nearly(const Machine& machine, const SolverOptions& options, const Solver& solver);

  /// Of all branches, turns, members of families and places of spare linear axes (at their limits,
  /// where the least excess has them) the candidate that misses the direction by the least, of
  /// equal ones the tip, and of those that miss neither the one with the least excess; the first of
  /// equal ones. Nothing where no branch points the tool so.
  ///
  /// @cost  A solve for each branch; some two hundred where the target leaves a rotary axis free,
  ///        their square where it leaves two.
  std::optional<Candidate> best(const Target& target, const Values& from);

 private:
  using Best = std::optional<Candidate>;

  void tryBranches(const Solver& solver, const Target& target, const Values& from, Best& best,
                   std::vector<Solution>* families = nullptr);
  void tryAll(const std::vector<int>& locked, const Target& target, const Values& from, Best& best);
  void tryFamily(std::vector<int> locked, const Target& target, const Values& from,
                 const Solution& family, Best& best);
  void tryAtLimits(const Target& target, const Values& from, std::vector<int> locked,
                   std::size_t next, Best& best);
  const Solver& lockedAt(const std::vector<int>& places);

  const Machine& machine_;
  const SolverOptions& options_;
  const Solver& solver_;
  std::map<std::vector<int>, Solver> locked_;  // by places of the locked axes
  std::vector<const Joint*> slides_;           // free
  std::vector<Solution> approaches_;
};

/// Where the axes stand while two of them turn the tool: at the start, the free ones inside their
/// limits, those of `placed` where the options say; once for every one of their samples.
std::vector<Values> standings(const JointChain& chain, const SolverOptions& options,
                              const std::vector<int>& placed, const Values& from);

/// By how much (mm or degrees) a value is outside: negative below the minimum, positive above the
/// maximum.
double outsideBy(const Joint& joint, double value);

}  // namespace korvo
