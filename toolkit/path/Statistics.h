#pragma once

#include "toolkit/path/Axes.h"

namespace korvo {

/// Adds up what a report says of positions, as they come.
class Statistics {
 public:
  Statistics(const PathAxes& axes, const ToolpathOptions& options, ToolpathReport& report);

  void take(const PathPosition& position);

  /// A step between targets without a break.
  void takeStep(const PathPosition& from, const PathPosition& to);

 private:
  void takeSingular(const PathPosition& position);

  const PathAxes& axes_;
  const ToolpathOptions& options_;
  ToolpathReport& report_;
  Values last_{};
  bool hasLast_ = false;
};

/// Between two targets that follow each other: the break that the step is.
PathBreak breakBetween(const PathAxes& axes, const PathPosition& from, const PathPosition& to);

}  // namespace korvo
