#pragma once

#include <array>

#include "toolkit/solve/Core.h"

namespace korvo {

/// `add` for many: takes candidates and adds those that reach the target, in the order in which
/// they came. They are walked two by two, so the last one may still be missing until `flush`.
class Verifier {
 public:
  /// Where every candidate says how the joints in front of `first` place what they carry.
  explicit Verifier(const Query& query, int first = 0);

  void take(const Values& values, const Branch& branch, const SingularDistance& singular) {
    take(values, branch, singular, {-1, -1}, front_, 0);
  }

  /// Of `placed` the place `lane` counts; it stays until `flush`.
  void take(const Values& values, const Branch& branch, const SingularDistance& singular,
            const std::array<int, 2>& freePlaces, const PairPlaced& placed, int lane);

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
  std::size_t first_;
  int count_ = 0;
  std::array<Candidate, 2> candidates_;
};

}  // namespace korvo
