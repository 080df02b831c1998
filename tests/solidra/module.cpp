// What the first face that is meshed loads. With "with" as its argument the module is beside the
// library; with "without" it is not, and no face has a mesh.
#include <cstdio>
#include <fstream>
#include <string>

#include "tests/solidra/Faces.h"

namespace {

bool isLoaded(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);)
    if (line.find(library) != std::string::npos) return true;
  return false;
}

int wrong(const char* what) {
  std::printf("%s\n", what);
  return 1;
}

}  // namespace

int main(int, char** argv) {
  const bool isThere = argv[1] == std::string("with");
  if (isLoaded("libTK")) return wrong("OpenCASCADE is loaded before it is needed");
  for (int i = 0; i < 2; ++i)
    if (korvo::test::face(korvo::test::plane(10, 10))->ValidateMesh(0.1, 0.1) != isThere)
      return wrong(isThere ? "no mesh" : "a mesh");
  if (isLoaded("libTK") != isThere) return wrong("OpenCASCADE is not what made the mesh");
  return 0;
}
