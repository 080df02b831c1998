#pragma once

#include <array>

#include "toolkit/solve/Core.h"

namespace korvo {

/// `add` for many: takes candidates and adds those that reach the target, in the order in which
/// they came. They are walked two by two, so the last one may still be missing until `flush`.
class Verifier {
 public:
  explicit Verifier(const Query& query);

  /// Of the candidate values, branch, singular distance and free places count.
  void take(const Solution& candidate) { take(candidate, front_, 0); }

  /// Where the joints in front of `first` are walked already: place `lane` of `placed`, which
  /// stays there until `flush`. One `first` for all.
  void take(const Solution& candidate, const PairPlaced& placed, int lane, std::size_t first = 0);

  void flush() {
    if (count_ > 0) verify();
  }

 private:
  struct Candidate {
    Solution solution;
    const PairPlaced* placed;
    int lane;
  };

  struct Residuals {
    Pair pointMm, directionRad;
  };

  void verify();
  Pair valueOf(const PairJoint& joint) const;
  bool walk(PairPlaced& placed) const;
  Residuals residualsAt(const PairPlaced& placed) const;
  Residuals residualsOfFrame(const PairPlaced& placed) const;
  void takeMargins();

  const Query& query_;
  PairPlaced front_;
  PairPlaced frame_;  ///< Of a frame target.
  std::size_t first_ = 0;
  int count_ = 0;
  std::array<Candidate, 2> candidates_;
};

}  // namespace korvo
