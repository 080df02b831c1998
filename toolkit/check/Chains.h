#pragma once

#include <vector>

#include "toolkit/check/Links.h"

namespace korvo::checking {

/// rank -> rank of the previous element, or -1: the first element that has the wanted index.
std::vector<int> previousRanks(const std::vector<zkin::KMachineElem>& elements);

/// The members of every ring of previous elements.
std::vector<std::vector<int>> rings(const std::vector<int>& previous);

/// Whether elements hang on each other.
bool hasRing(const LinkedElements& linked);

/// Whether an element stands on the way from a tool to the root.
std::vector<bool> onToolChains(const LinkedElements& linked);

/// What an element's way to its root leads past; the element itself does not count. A ring ends
/// the way.
struct Way {
  bool part = false;
  bool frame = false;
  bool tool = false;  ///< Or drill gun.
  bool axis = false;  ///< That moves.
};
std::vector<Way> waysToRoot(const LinkedElements& linked);

/// What is wrong first with the way from the part over the frame to the tools. Each is told by one
/// rule, and the others that it would make speak are silent.
enum class ChainFault {
  none,
  count,         ///< Not one frame, one part and some tool.
  ring,          ///< Elements hang on each other.
  number,        ///< An axis without a number, or with that of another: what follows hangs wrongly.
  link,          ///< A link to nothing.
  partOnTool,    ///< The part's line turned a tool around.
  toolOffPart,   ///< The part's side ends before the element on which a tool's side hangs.
  frameCutOff,   ///< The same, and only the frame is beyond.
  toolOffFrame,  ///< A tool hangs on the part's side, and axes between part and frame pass it by.
};
ChainFault chainFaultOf(const LinkedElements& linked);

/// Lines of the elements of a type.
std::vector<int> linesOf(const LinkedElements& linked, zkin::KMachineElem::KME_TYPE type);

/// Rank of the first element of a type; -1: none.
int rankOf(const LinkedElements& linked, zkin::KMachineElem::KME_TYPE type);

inline bool isAxis(const zkin::KMachineElem& e) {
  return e.getElemType() == zkin::KMachineElem::KMET_TYPE_ALIN ||
         e.getElemType() == zkin::KMachineElem::KMET_TYPE_AROT;
}

/// Whether an axis has a number, and so a place in positions.
inline bool isMovingAxis(const zkin::KMachineElem& e) {
  return isAxis(e) && zkin::KMachineElem::_isIndexAxis(e.getElemIndex());
}

}  // namespace korvo::checking
