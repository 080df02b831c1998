#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

#include "platform/os/Memory.h"
#include "platform/zgeo/Stl.h"

namespace zgeo::stl {
namespace {

static_assert(std::endian::native == std::endian::little, "records are read as they lie in memory");

/// As many records as stay in the processor's nearer caches between the read and the copy.
constexpr std::size_t kRecordsInBlock = 2048;

constexpr std::size_t kCorners = 12;  ///< Where the corners start in a record: behind its normal.

struct Corners {
  float x[9];
};

/// Whether all nine are finite. An exponent of ones, the mark of what is not, carries into the sign
/// bit when one is added to it.
bool isFinite(const Corners& corners) {
  std::uint32_t carried = 0;
  for (const float x : corners.x) {
    carried |= (std::bit_cast<std::uint32_t>(x) & 0x7FFFFFFFu) + 0x00800000u;
  }
  return (carried & 0x80000000u) == 0;
}

UTri widened(const float* x) {
  return {{x[0], x[1], x[2]}, {x[3], x[4], x[5]}, {x[6], x[7], x[8]}};
}

void append(const char* records, std::size_t count, std::vector<UTri>& out) {
  for (std::size_t i = 0; i < count; ++i) {
    Corners corners;
    std::memcpy(&corners, records + i * kRecordSize + kCorners, sizeof corners);
    if (isFinite(corners)) out.push_back(widened(corners.x));
  }
}

}  // namespace

bool readBinary(std::FILE* file, std::uint64_t count, std::vector<UTri>& out) {
  out.reserve(count);
  korvo::os::wishLargePages(out.data(), out.capacity() * sizeof(UTri));
  const auto block = std::make_unique_for_overwrite<char[]>(kRecordsInBlock * kRecordSize);
  while (count > 0) {
    const std::size_t wanted = std::min<std::uint64_t>(count, kRecordsInBlock);
    const std::size_t got = std::fread(block.get(), kRecordSize, wanted, file);
    append(block.get(), got, out);
    if (got < wanted) break;  // cut since its size was asked, or a failure
    count -= got;
  }
  return std::ferror(file) == 0;
}

}  // namespace zgeo::stl
