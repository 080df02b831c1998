#include "platform/zgeo/UTri.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <memory>

#include "platform/os/Files.h"
#include "platform/zgeo/Stl.h"

namespace zgeo {
namespace {

/// The beginning of a file, enough to tell its form.
class Head {
 public:
  explicit Head(std::FILE* file) : size_(std::fread(bytes_.get(), 1, kSize, file)) {}
  std::string_view bytes() const { return {bytes_.get(), size_}; }

 private:
  static constexpr std::size_t kSize = 1 << 16;
  std::unique_ptr<char[]> bytes_ = std::make_unique_for_overwrite<char[]>(kSize);
  std::size_t size_;
};

/// What a binary file says and has.
struct Binary {
  std::uint32_t count = 0;  ///< Of records, as its header says.
  std::uint64_t whole = 0;  ///< How many are there whole.
  bool isExact = false;     ///< The file is as long as its count says.

  std::uint64_t readable() const { return std::min<std::uint64_t>(count, whole); }
};

Binary binaryOf(std::string_view head, std::uint64_t size) {
  Binary binary;
  if (std::min<std::uint64_t>(head.size(), size) < stl::kRecordsAt) return binary;
  std::memcpy(&binary.count, head.data() + stl::kHeaderSize, sizeof binary.count);
  binary.whole = (size - stl::kRecordsAt) / stl::kRecordSize;
  binary.isExact = size == stl::kRecordsAt + stl::kRecordSize * std::uint64_t{binary.count};
  return binary;
}

bool isAt(std::FILE* file, long place) { return std::fseek(file, place, SEEK_SET) == 0; }

int resultOf(bool isRead, bool isAnnounced, const std::vector<UTri>& out) {
  if (!isRead) return UTri::STL_READ_ERROR;
  return isAnnounced && out.empty() ? UTri::STL_NO_TRIANGLE : UTri::STL_LOADED;
}

int loadText(std::FILE* file, std::uint64_t size, std::vector<UTri>& out) {
  bool hasFacet = false;
  const bool isRead = isAt(file, 0) && stl::readText(file, size, out, hasFacet);
  return resultOf(isRead, hasFacet, out);
}

int loadBinary(std::FILE* file, const Binary& binary, std::vector<UTri>& out) {
  const bool isRead = isAt(file, stl::kRecordsAt) && stl::readBinary(file, binary.readable(), out);
  return resultOf(isRead, binary.count > 0, out);
}

int load(std::FILE* file, std::vector<UTri>& out) {
  const std::int64_t size = korvo::os::sizeOf(file);
  const Head head(file);
  if (size < 0 || std::ferror(file) != 0) return UTri::STL_READ_ERROR;
  const auto fileSize = static_cast<std::uint64_t>(size);
  const Binary binary = binaryOf(head.bytes(), fileSize);
  if (binary.isExact) return loadBinary(file, binary, out);
  if (stl::isText(head.bytes())) return loadText(file, fileSize, out);
  // Another kind of text would make triangles out of its letters.
  const bool isOther = head.bytes().size() < stl::kRecordsAt || stl::isPlain(head.bytes());
  return isOther ? UTri::STL_NO_STL : loadBinary(file, binary, out);
}

}  // namespace

int UTri::_loadSTL(const std::wstring& path, std::vector<UTri>& out) {
  int result = STL_NO_MEMORY;
  out.clear();
  try {
    const korvo::os::File file = korvo::os::openRead(path);
    result = file ? load(file.get(), out) : STL_NO_FILE;
  } catch (const std::exception&) {  // std::bad_alloc: nothing else can be thrown here
    result = STL_NO_MEMORY;
  }
  if (result != STL_LOADED) out.clear();
  return result;
}

void UTri::_applyMatrix(const UMatrix& m, std::vector<UTri>& triangles) {
  const UMatrix own = m;  // a copy of its own: no corner that is written can be part of it
  for (UTri& triangle : triangles) {
    for (UVec3d& corner : triangle.p) corner = own * corner;
  }
}

}  // namespace zgeo
