#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"

namespace zkin {

/// What a definition file says, before the machine is finalised.
struct Definition {
  std::vector<KMachineElem> elements;  ///< Linked, tools and geometry elements numbered.
  std::vector<KMachineValue<12>> rotationPoints;
  std::vector<std::pair<int, int>> collisions;  ///< In file order, as written.
  std::optional<int> strategy;                  ///< The last one given.
  std::optional<int> modeRTCP;                  ///< The last one given.
  int tools = 0;                                ///< Tools and guns.
};

/// What the reader must know beside the file.
struct ReadContext {
  int version = 0;
  int axisNum = 0;      ///< Of the machine before this load: the shortest rotation point counts it.
  std::wstring folder;  ///< Of the definition file, for "$ZRN_MACHINE_DEF".
};

/// Reads a machine definition file: clean lines, keyword by keyword, in file order.
///
/// @errors  Lines that say nothing known are ignored. A rotation-point line with an operand that is
///          no number never ends. std::bad_alloc when memory is out.
/// @cost    Linear in the file, but for look-ups by name and index among the elements read.
Definition readDefinition(std::FILE* file, const ReadContext& context);

/// The folder of a path: up to its last "\" or "/", "." when it has none.
std::wstring folderOf(const std::wstring& path);

}  // namespace zkin
