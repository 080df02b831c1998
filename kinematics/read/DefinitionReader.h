#pragma once

#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"
#include "kinematics/read/CollisionPairs.h"

namespace zkin {

/// What a definition file says, before the machine is finalised.
struct Definition {
  std::vector<KMachineElem> elements;  ///< Linked, tools and geometry elements numbered.
  std::vector<KMachineValue<12>> rotationPoints;
  IndexPairs collisions;        ///< Those given, then those of the file.
  std::optional<int> strategy;  ///< The last one given.
  std::optional<int> modeRTCP;  ///< The last one given.
  int tools = 0;                ///< Tools and guns.
};

/// What the reader must know beside the file.
struct ReadContext {
  int version = 0;
  int axisNum = 0;      ///< Of the machine before this load: the shortest rotation point counts it.
  std::wstring folder;  ///< Of the definition file, for "$ZRN_MACHINE_DEF".
  IndexPairs collisions;  ///< Of the machine before this load: they stay, and count as present.
};

/// Reads a machine definition file: clean lines, keyword by keyword, in file order.
///
/// @errors  Lines that say nothing known are ignored. A rotation-point line with an operand that is
///          no number never ends. A part line whose reversal would lead back to an earlier part for
///          ever is left after two turns of each element. std::bad_alloc when memory is out.
/// @cost    Linear in the file: names and indices are looked up in tables. Each part turns the
/// chain
///          behind it. A collision line visits every pair of a first-group index and a distinct
///          second-group one: up to (tools x elements), at one hash look-up each. Memory holds
///          distinct pairs only.
Definition readDefinition(std::FILE* file, const ReadContext& context);

/// The folder of a path: what stands before its last "\" or "/" (nothing in a root folder), "."
/// when it has none.
inline std::wstring folderOf(const std::wstring& path) {
  const std::size_t end = path.find_last_of(L"\\/");
  return end == std::wstring::npos ? L"." : path.substr(0, end);
}

}  // namespace zkin
