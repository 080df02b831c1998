#pragma once

#include <string>
#include <vector>

#include "toolkit/Machine.h"

namespace korvo::tools {

/// Which axes of a position are outside their limits. Forward answers do not depend on limits; the
/// reader of an answer wants to know all the same.
class Travel {
 public:
  explicit Travel(const Machine& machine);

  /// Bit i is set when the value at place i is outside; the limits themselves are inside.
  unsigned outside(const double* values) const;

  /// The names that belong to the bits, in value order.
  std::vector<std::string> namesOf(unsigned outside) const;

 private:
  struct Limit {
    int place;
    double min, max;
  };
  std::vector<Limit> limits_;
  std::vector<std::string> names_;
};

/// The names of the axes outside their limits at one position, in value order.
std::vector<std::string> outsideLimits(const Machine& machine, const Position& position);

}  // namespace korvo::tools
