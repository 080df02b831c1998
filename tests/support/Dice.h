#pragma once

#include <random>

namespace korvo::test {

/// Uniform numbers, the same on every platform.
class Dice {
 public:
  explicit Dice(unsigned seed) : random_(seed) {}
  double between(double low, double high) {
    return low + (high - low) * (static_cast<double>(random_()) / 4294967296.0);
  }
  /// 0 to n - 1.
  int below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
  bool oneIn(int n) { return below(n) == 0; }

 private:
  std::mt19937 random_;
};

}  // namespace korvo::test
