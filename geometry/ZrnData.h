#pragma once

#include <cstdio>
#include <utility>
#include <vector>

#include "geometry/ZrnLines.h"
#include "platform/zgeo/UVec2d.h"
#include "platform/zgeo/UVec3d.h"

/// Records of the data lines, one a line.
namespace zkin::zrn {

/// Reads records from a stream. Counts come from headers and are believed by nobody: lists grow
/// with the lines that are there.
class DataLines {
 public:
  explicit DataLines(std::FILE* stream) : stream_(stream) {}

  /// The next line holds the fields at its start.
  template <class... Fields>
  bool record(Fields&... fields) {
    return line_.read(stream_) && line_.scan(fields...);
  }
  bool record(zgeo::UVec3d& p) { return record(p.x, p.y, p.z); }
  bool record(zgeo::UVec2d& p) { return record(p.x, p.y); }

  /// The next line is there, whatever it says.
  bool anything() { return line_.read(stream_); }

  /// Appends `count` records of one field or point each; a count below 1 reads no line.
  template <class Record>
  bool records(long long count, std::vector<Record>& out) {
    for (Record r; count > 0; --count) {
      if (!record(r)) return false;
      out.push_back(r);
    }
    return true;
  }

  /// A line with a count, then so many lines of one real.
  bool countedReals(std::vector<double>& out) {
    long long count = 0;
    return record(count) && records(count, out);
  }

  /// The fields of the line that was read last, from its start again.
  template <class... Fields>
  bool again(Fields&... fields) const {
    return line_.scan(fields...);
  }

 private:
  std::FILE* stream_;
  Line line_;
};

/// a x b for counts above 0; the largest number when it does not fit.
constexpr long long product(long long a, long long b) {
  constexpr long long kMost = 0x7fffffffffffffff;
  return a > kMost / b ? kMost : a * b;
}

/// Empties a list and gives its storage back.
template <class T>
void release(std::vector<T>& list) {
  list = std::vector<T>();
}

}  // namespace zkin::zrn
