#include "toolkit/path/Neighbours.h"

#include <algorithm>
#include <cmath>

namespace korvo {
namespace {

constexpr double kMostCells = 1e5;  // of a column; what has more is not told apart by cells

}  // namespace

void Neighbours::sort(const std::vector<double>& rows, const std::vector<double>& widths) {
  choose(rows, widths);
  sorted_.clear();
  for (std::size_t r = 0; r * widths.size() < rows.size(); ++r) {
    const double* const row = &rows[r * widths.size()];
    sorted_.push_back(
        {key(cellOf(0, row), cellOf(1, row), cellOf(2, row)), static_cast<std::uint32_t>(r)});
  }
  std::sort(sorted_.begin(), sorted_.end());
}

void Neighbours::choose(const std::vector<double>& rows, const std::vector<double>& widths) {
  cells_ = {};
  for (std::size_t column = 0; column < widths.size(); ++column) {
    double low = rows[column], high = low;
    for (std::size_t i = column; i < rows.size(); i += widths.size()) {
      low = std::min(low, rows[i]);
      high = std::max(high, rows[i]);
    }
    const Cells cells{column, low, widths[column], (high - low) / widths[column]};
    const auto least =
        std::min_element(cells_.begin(), cells_.end(),
                         [](const Cells& a, const Cells& b) { return a.count < b.count; });
    if (cells.count > least->count && cells.count < kMostCells) *least = cells;
  }
}

std::int64_t Neighbours::cellOf(std::size_t i, const double* row) const {
  const Cells& cells = cells_[i];
  if (!(cells.count > 0)) return 0;
  const double cell = std::floor((row[cells.column] - cells.low) / cells.width);
  return static_cast<std::int64_t>(std::clamp(cell, -2.0, kMostCells + 2));
}

std::vector<Neighbours::Entry>::const_iterator Neighbours::from(std::int64_t key) const {
  return std::lower_bound(sorted_.begin(), sorted_.end(), Entry{key, 0});
}

}  // namespace korvo
