#include <bit>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

#include "toolkit/export/Placed.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"

using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo {
namespace {

static_assert(std::endian::native == std::endian::little, "the file's numbers are little-endian");

// A triangle in the file: 12 floats, and two bytes that mean nothing.
struct Record {
  float numbers[12];
};
constexpr std::size_t kRecord = sizeof(Record) + 2;
constexpr std::size_t kAtOnce = 1024;  // triangles written in one go

// Not "solid": some readers take that for the text form.
std::string headerOf(std::size_t triangles) {
  const auto count = static_cast<std::uint32_t>(triangles);
  if (count != triangles) {
    throw std::length_error("expected fewer than 2^32 triangles for an STL file");
  }
  std::string header = "Binary STL, mm, written by korvo";
  header.resize(80, ' ');
  return header.append(reinterpret_cast<const char*>(&count), sizeof count);
}

float* put(float* at, const UVec3d& p) {
  *at++ = static_cast<float>(p.x);
  *at++ = static_cast<float>(p.y);
  *at++ = static_cast<float>(p.z);
  return at;
}

Record recordOf(const UTri& t) {
  Record record;
  float* at = put(record.numbers, exporting::normalOf(t));
  for (const UVec3d& p : t.p) at = put(at, p);
  return record;
}

// The records of the file, a thousand at once.
class Records {
 public:
  explicit Records(WholeFile& file) : file_(file), bytes_(kRecord * kAtOnce, '\0') {}

  void add(const UTri& t) {
    const Record record = recordOf(t);
    std::memcpy(bytes_.data() + kRecord * waiting_, &record, sizeof record);
    ++count_;
    if (++waiting_ == kAtOnce) flush();
  }

  void flush() {
    file_.write(std::string_view(bytes_).substr(0, kRecord * waiting_));
    waiting_ = 0;
  }

  std::size_t count() const { return count_; }

 private:
  WholeFile& file_;
  std::string bytes_;
  std::size_t waiting_ = 0;
  std::size_t count_ = 0;
};

}  // namespace

void writeStl(const std::filesystem::path& path, std::span<const Body> bodies) {
  WholeFile file(path);
  file.write(headerOf(0));
  Records records(file);
  for (const Body& body : bodies) {
    exporting::forEachPlaced(body, [&records](const UTri& t) { records.add(t); });
  }
  records.flush();
  file.overwriteStart(headerOf(records.count()));
  file.commit();
}

}  // namespace korvo
