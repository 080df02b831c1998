#pragma once

#include <vector>

#include "kinematics/KMachineElem.h"
#include "toolkit/check/Document.h"

namespace korvo::checking {

/// The elements of a definition file, linked and numbered as the library does it while it reads.
struct LinkedElements {
  std::vector<zkin::KMachineElem> elements;
  std::vector<int> lines;  ///< lines[i] declares elements[i].

  /// The part line at which turning the links around never ends; 0 when there is none.
  int endlessPartLine = 0;
};

/// Links the elements of `document`, read as format `version`. Ends on every input.
LinkedElements linkElements(const Document& document, int version);

}  // namespace korvo::checking
