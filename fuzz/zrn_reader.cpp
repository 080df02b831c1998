// A whole geometry file, read by the library and by the reference that is made of fgets and sscanf:
// both must say the same.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>

#include "geometry/ZrnFile.h"
#include "tests/support/MemoryFile.h"
#include "tests/support/ZrnReference.h"
#include "tests/support/ZrnText.h"

namespace {

using korvo::test::MemoryFile;
using korvo::test::ZrnAnswer;

void requireSame(const ZrnAnswer& ours, const ZrnAnswer& reference) {
  if (ours == reference) return;
  std::cerr << "library: " << ours << "reference: " << reference;
  std::abort();
}

/// Reading that is cancelled at its n-th question ends well, with no more nodes than the whole file
/// has.
void cancelAt(const char* path, int question, std::size_t most) {
  zkin::CGeomFileNodeList nodes;
  double scale = 0;
  const int code =
      zkin::ZRN_LoadFile(path, nodes, scale, [&question](unsigned char* flag) -> unsigned char {
        if (--question >= 0) return 0;
        *flag = 1;
        return 1;
      });
  if (code != 0 || nodes.size() > most) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(data, size);
  const std::string path = file.path();
  const ZrnAnswer ours = korvo::test::answerOf(path.c_str());
  requireSame(ours, korvo::test::ZrnReference::read(path.c_str()));
  if (size > 0) cancelAt(path.c_str(), data[size / 2] % 16, ours.nodes.size());
  return 0;
}
