// A host that uses the classes of the interface directly, as a plain C++ program outside this tree.
#include <cmath>
#include <iostream>
#include <string>

#include "kinematics/KMachine.h"
#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"
#include "platform/zgeo/UVec3d.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  zkin::KMachine machine;
  machine.setDataFilePNE(std::string(argv[1]) + "/mill-3axis.def", 2);
  if (machine.readDataFile() != 0 || machine.getAxisNum() != 3) {
    std::cerr << "the three-axis mill did not load\n";
    return 1;
  }
  machine.setCurrentTool(1);

  zkin::KMachineValueBase* position = machine.newMachineValue();
  zgeo::UVec3d home, moved, direction;
  bool found = machine.getTool(*position, home, direction, 1);
  machine.setAxisVal(*position, 1, 10.0);
  found = machine.getTool(*position, moved, direction, 1) && found;
  zkin::KMachineValueBase::_release(position);

  // One linear axis moved by 10 mm carries the tool by 10 mm.
  if (!found || std::abs(home.distanceTo(moved) - 10.0) > 1e-9) {
    std::cerr << "the tool is not where one axis put it\n";
    return 1;
  }
  std::cout << "loaded " << machine.getElemNumber() << " elements\n";
}
