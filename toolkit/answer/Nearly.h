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
};

/// What comes nearest to targets that nothing reaches.
class Nearly {
 public:
  Nearly(const Machine& machine, const SolverOptions& options, const Solver& solver)
      : machine_(machine), options_(options), solver_(solver) {}

  /// Of all branches, turns, members of families and places of spare linear axes the candidate that
  /// misses the direction by the least, of equal ones the tip, and of those that miss neither the
  /// one with the least excess; the first of equal ones. Nothing where no branch points the tool
  /// so.
  std::optional<Candidate> best(const Target& target, const Values& from);

 private:
  using Best = std::optional<Candidate>;

  void tryBranches(const Solver& solver, const Target& target, const Values& from, Best& best,
                   std::vector<Solution>* families = nullptr);
  void tryFamily(const Target& target, const Values& from, const Solution& family, Best& best);
  const Solver& lockedAt(int place);

  const Machine& machine_;
  const SolverOptions& options_;
  const Solver& solver_;
  std::map<int, Solver> locked_;  // by place of the locked axis
  std::vector<Solution> approaches_;
};

/// Where the axes stand while two of them turn the tool: at the start, the free ones inside their
/// limits, the others where the options say; once for every one of their samples.
std::vector<Values> standings(const JointChain& chain, const SolverOptions& options,
                              const Values& from);

/// By how much (mm or degrees) a value is outside: negative below the minimum, positive above the
/// maximum.
double outsideBy(const Joint& joint, double value);

}  // namespace korvo
