// A whole STL file. What loads is finite, fits the file, and of a text it is what a reader of words
// and sscanf finds; what does not load leaves an empty list.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/zgeo/UTri.h"
#include "tests/support/MemoryFile.h"
#include "tests/support/StlReference.h"

namespace {

using zgeo::UTri;
using zgeo::UVec3d;

void require(bool holds) {
  if (!holds) std::abort();
}

bool isFinite(const UTri& t) {
  bool finite = true;
  for (const UVec3d& p : t.p)
    finite &= std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
  return finite;
}

/// Whether nothing in it can be taken for a binary file's count.
bool isText(const std::string& bytes) {
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < '\t' || (byte > '\r' && byte < ' ') || byte == 0xFF) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const korvo::test::MemoryFile file(data, size);
  const std::string path = file.path();
  std::vector<UTri> triangles(3);
  const int code = UTri::_loadSTL(std::wstring(path.begin(), path.end()), triangles);
  require(code <= UTri::STL_LOADED && code >= UTri::STL_NO_MEMORY);
  require(code == UTri::STL_LOADED || triangles.empty());
  require(triangles.size() * 50 <= size);
  for (const UTri& t : triangles) require(isFinite(t));

  const std::string bytes(reinterpret_cast<const char*>(data), size);
  if (isText(bytes) && code != UTri::STL_NO_STL) {
    require(triangles == korvo::test::StlReference(bytes).triangles());
  }
  zgeo::UMatrix mirror;
  mirror(0, 0) = -1;
  const std::vector<UTri> before = triangles;
  UTri::_applyMatrix(mirror, triangles);
  UTri::_applyMatrix(mirror, triangles);
  require(triangles == before);
  return 0;
}
