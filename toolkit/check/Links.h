#pragma once

#include <string>
#include <vector>

#include "kinematics/KMachineElem.h"
#include "toolkit/check/Document.h"

namespace korvo::checking {

/// A name by which a line means an element, and what the library finds for it there.
struct Reference {
  const SourceLine* line = nullptr;
  int operand = 0;       ///< Of the line; a link's name is its whole operand part.
  int element = -1;      ///< Rank of the element found among those above; -1: none.
  int above = 0;         ///< How many elements stand above the line.
  int tools = 0;         ///< How many of them are tools and guns.
  std::wstring key;      ///< The name that is looked up, in lower case.
  std::wstring written;  ///< The name as it stands in the line.
};

/// The elements of a definition file, linked and numbered as the library does it while it reads.
struct LinkedElements {
  std::vector<zkin::KMachineElem> elements;
  std::vector<int> lines;  ///< lines[i] declares elements[i].

  /// The part line at which turning the links around never ends; 0 when there is none.
  int endlessPartLine = 0;

  std::vector<const SourceLine*> declarations;  ///< The same lines; they are the document's.
  std::vector<Reference> references;  ///< Of links, loops, limits and collision pairs, in order.
};

/// Links the elements of `document`, read as format `version`. Ends on every input. The result
/// points into `document`.
LinkedElements linkElements(const Document& document, int version);

/// The operand part of a line, commas included.
std::wstring operandText(const SourceLine& line);

}  // namespace korvo::checking
