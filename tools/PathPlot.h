#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "toolkit/path/Toolpath.h"

namespace korvo::tools {

/// The values of all axes over a path, as many as a picture can show: of every column of pixels the
/// first, the least, the most and the last. A line through these four looks as the line through all
/// values would, however many there are.
class PathPlot {
 public:
  static constexpr std::size_t kMostColumns = 900;

  /// Of one axis in one column.
  struct Span {
    float first = 0.0F;
    float least = 0.0F;
    float most = 0.0F;
    float last = 0.0F;
  };
  struct Column {
    bool isEmpty = true;
    bool isAfterBreak = false;  ///< No line leads to it.
    std::array<Span, kMostAxes> axes;
  };

  explicit PathPlot(std::size_t targets);

  void take(const PathPosition& position);

  const std::vector<Column>& columns() const { return columns_; }

  /// Of a target, from 0 to 1 over the whole path.
  double shareOf(double target) const;

 private:
  std::size_t targets_;
  std::vector<Column> columns_;
};

}  // namespace korvo::tools
