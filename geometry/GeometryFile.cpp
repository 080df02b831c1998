#include "geometry/GeometryFile.h"

#include <cstdint>
#include <new>
#include <optional>
#include <string_view>

#include "geometry/ExpectedTriangles.h"
#include "geometry/ZrnTriangles.h"
#include "platform/os/Files.h"

using zgeo::UTri;

namespace zkin {
namespace {

/// Largest distance of triangles from a curved face, in mm. Bodies are looked at and checked for
/// collisions: a hundredth is below what either notices.
constexpr double kMeshTolerance = 0.01;

/// From the dot on; empty when there is none.
std::wstring_view extensionOf(std::wstring_view path) {
  std::wstring_view name = path.substr(path.find_last_of(L"\\/") + 1);
  name = name.substr(0, name.find(L':'));
  const std::size_t dot = name.rfind(L'.');
  const bool hasNone = dot == std::wstring_view::npos || dot == 0 || name == L"..";
  return hasNone ? std::wstring_view() : name.substr(dot);
}

bool isExtension(const std::wstring& extension, const wchar_t* wanted) {
  return korvo::os::_wcsicmp(extension.c_str(), wanted) == 0;
}

/// By the narrow path of the file that the wide one opens: nothing in a name is ever replaced.
void loadZrn(const std::wstring& path, std::vector<UTri>& triangles) {
  const std::optional<std::string> narrow = korvo::os::resolve(path);
  if (narrow) ZRN_FileToTriangles(narrow->c_str(), kMeshTolerance, triangles);
}

}  // namespace

std::size_t expectedTriangles(const std::wstring& path) try {
  constexpr std::size_t kBinaryTriangle = 50;  // bytes of one
  if (!isExtension(std::wstring(extensionOf(path)), L".stl")) return 0;
  const korvo::os::File file = korvo::os::openRead(path);
  const std::int64_t size = file ? korvo::os::sizeOf(file.get()) : 0;
  return size > 0 ? static_cast<std::size_t>(size) / kBinaryTriangle : 0;
} catch (const std::bad_alloc&) {
  return 0;
}

// Whether the file can be read is found by opening it: a look before would say nothing of later.
void loadGeometryFile(const std::wstring& path, std::vector<UTri>& triangles) try {
  triangles.clear();
  const std::wstring extension(extensionOf(path));
  if (isExtension(extension, L".stl")) {
    UTri::_loadSTL(path, triangles);  // leaves nothing of a file that fails
  } else if (isExtension(extension, L".zrn")) {
    loadZrn(path, triangles);
  }
} catch (const std::bad_alloc&) {
  triangles.clear();
}

std::string geometryFilePath(const std::wstring& path) try {
  return korvo::os::resolve(path).value_or(std::string());
} catch (const std::bad_alloc&) {
  return {};
}

}  // namespace zkin
