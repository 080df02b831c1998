#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "toolkit/path/Deviation.h"
#include "toolkit/path/Sides.h"

namespace korvo {

/// Adds positions between targets so that the tool stays on the way from one to the next: as few as
/// taking the longest step that is kept again and again leads to. Asked from many threads at once.
class Between {
 public:
  Between(const Machine& machine, const ToolpathOptions& options, const PathAxes& axes);

  struct Added {
    std::vector<PathPosition> positions;
    std::vector<PathStanding> standing;
  };

  /// Asked before every thousandth position or so; false gives up.
  using GoesOn = std::function<bool()>;

  /// Between two targets that follow each other, with the positions chosen for them. `index` is
  /// that of the second. False where it was given up: the way ends anywhere.
  bool add(const PathTarget& before, const PathTarget& target, std::size_t index,
           const PathPosition& from, const PathPosition& to, const GoesOn& goesOn,
           Added& out) const;

 private:
  struct Task;
  struct Step;

  bool fill(Task& task, const GoesOn& goesOn) const;
  Step longest(Task& task, const Values& from, double begin, double share) const;
  void stand(Task& task, bool isLast, Values& at, double& begin) const;
  std::optional<PathPosition> at(Task& task, double way) const;
  Values turned(const Values& values, const Values& line) const;

  Tolerance tolerance_;
  const PathAxes& axes_;
  Solver solver_;
};

}  // namespace korvo
