#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvo {

/// Rows of numbers in cells as wide as each number may differ: whoever is within that of a row in
/// every number lies in its cell or in one beside it.
class Neighbours {
 public:
  /// Of `rows` with as many numbers as `widths` has. Of infinite width are those that do not count.
  void sort(const std::vector<double>& rows, const std::vector<double>& widths);

  /// Calls `take` with the number of every row that may be so near to `row`.
  template <typename Take>
  void forEachNear(const double* row, Take take) const {
    const std::int64_t a = cellOf(0, row), b = cellOf(1, row), c = cellOf(2, row);
    for (std::int64_t i = a - 1; i <= a + 1; ++i) {
      for (std::int64_t j = b - 1; j <= b + 1; ++j) {
        auto next = from(key(i, j, c - 1));
        for (; next != sorted_.end() && next->key <= key(i, j, c + 1); ++next) take(next->row);
      }
    }
  }

 private:
  struct Entry {
    std::int64_t key = 0;
    std::uint32_t row = 0;

    bool operator<(const Entry& o) const { return key != o.key ? key < o.key : row < o.row; }
  };

  /// One number of a row; without one all rows lie in one cell.
  struct Cells {
    std::size_t column = 0;
    double low = 0.0;
    double width = 0.0;
    double count = 0.0;
  };

  void choose(const std::vector<double>& rows, const std::vector<double>& widths);
  std::int64_t cellOf(std::size_t i, const double* row) const;
  std::vector<Entry>::const_iterator from(std::int64_t key) const;

  static std::int64_t key(std::int64_t i, std::int64_t j, std::int64_t k) {
    constexpr std::int64_t kMostCells = 1 << 20;
    return ((i + 2) * kMostCells + j + 2) * kMostCells + k + 2;
  }

  std::array<Cells, 3> cells_;  ///< Those with the most cells.
  std::vector<Entry> sorted_;
};

}  // namespace korvo
