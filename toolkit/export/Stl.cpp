#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

#include "toolkit/export/Placed.h"
#include "toolkit/export/WholeFile.h"
#include "toolkit/export/Write.h"

using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo {
namespace {

static_assert(std::endian::native == std::endian::little, "the file's numbers are little-endian");

constexpr std::size_t kRecord = 50;     // 12 floats and two bytes that mean nothing
constexpr std::size_t kAtOnce = 16384;  // triangles written in one go

// Not "solid": some readers take that for the text form.
std::string headerOf(std::uint32_t count) {
  std::string header = "Binary STL, mm, written by korvo";
  header.resize(80, ' ');
  return header.append(reinterpret_cast<const char*>(&count), sizeof count);
}

std::uint32_t countOf(std::span<const Body> bodies) {
  std::size_t count = 0;
  for (const Body& body : bodies) {
    exporting::forEachPlaced(body, [&count](const UTri&) { ++count; });
  }
  if (count > std::numeric_limits<std::uint32_t>::max()) {
    throw std::length_error("expected fewer than 2^32 triangles for an STL file");
  }
  return static_cast<std::uint32_t>(count);
}

float* put(float* at, const UVec3d& p) {
  *at++ = static_cast<float>(p.x);
  *at++ = static_cast<float>(p.y);
  *at++ = static_cast<float>(p.z);
  return at;
}

void append(std::string& bytes, const UTri& t) {
  std::array<float, 12> numbers;
  float* at = put(numbers.data(), exporting::normalOf(t));
  for (const UVec3d& p : t.p) at = put(at, p);
  bytes.append(reinterpret_cast<const char*>(numbers.data()), sizeof numbers);
  bytes.append(2, '\0');
}

}  // namespace

void writeStl(const std::filesystem::path& path, std::span<const Body> bodies) {
  WholeFile file(path);
  std::string bytes = headerOf(countOf(bodies));
  bytes.reserve(kRecord * kAtOnce + kRecord);
  for (const Body& body : bodies) {
    exporting::forEachPlaced(body, [&](const UTri& t) {
      append(bytes, t);
      if (bytes.size() < kRecord * kAtOnce) return;
      file.write(bytes);
      bytes.clear();
    });
  }
  file.write(bytes);
  file.commit();
}

}  // namespace korvo
