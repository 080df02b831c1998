#include <iostream>

#include "toolkit/Machine.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const korvo::Loaded loaded = korvo::load(argv[1]);
  if (!loaded) {
    for (const auto& reason : loaded.reasons) std::cerr << korvo::toString(reason) << '\n';
    return 1;
  }
  const korvo::Machine& machine = *loaded.machine;
  korvo::Position position = machine.position({{"X", 10.0}, {"A", -30.0}});  // mm, degrees
  position["C"] = 90.0;

  zgeo::UVec3d nose, direction;  // of tool 1, which load has made the current one
  if (!machine->getTool(position, nose, direction, 1)) return 1;
  std::cout << "nose at " << nose.x << ' ' << nose.y << ' ' << nose.z << " mm, tool along "
            << direction.x << ' ' << direction.y << ' ' << direction.z << '\n';
}
