#include "tools/PathPlot.h"

#include <algorithm>
#include <cmath>

namespace korvo::tools {

PathPlot::PathPlot(std::size_t targets)
    : targets_(targets), columns_(std::clamp<std::size_t>(targets, 1, kMostColumns)) {}

double PathPlot::shareOf(double target) const {
  return targets_ < 2 ? 0.0 : std::clamp(target / static_cast<double>(targets_ - 1), 0.0, 1.0);
}

void PathPlot::take(const PathPosition& position) {
  const double at = static_cast<double>(position.target) + position.way - 1.0;
  const double place = std::round(shareOf(at) * static_cast<double>(columns_.size() - 1));
  Column& column = columns_[static_cast<std::size_t>(place)];
  if (column.isEmpty) column.isAfterBreak = position.isAfterBreak;
  for (std::size_t i = 0; i < column.axes.size(); ++i) {
    const auto value = static_cast<float>(position.values[i]);
    Span& span = column.axes[i];
    if (column.isEmpty) span = {value, value, value, value};
    span.least = std::min(span.least, value);
    span.most = std::max(span.most, value);
    span.last = value;
  }
  column.isEmpty = false;
}

}  // namespace korvo::tools
