#pragma once

#include <algorithm>
#include <string>

#include "tests/faults/Readers.h"

namespace korvo::test {

/// Faces give no triangles here, where their mesher is left out.
inline bool isWithoutContent(const ReaderRow& row) { return row.name == "ZrnTriangles"; }

/// Whether what was `found` after a failure is what may be left.
inline bool isLeft(Left left, const Content& found, const Content& before, const Content& whole) {
  switch (left) {
    case Left::asBefore:
      return found == before;
    case Left::nothing:
      return found.empty();
    case Left::beginning:
      return found.size() <= whole.size() &&
             (found.empty() || std::equal(found.begin(), found.end() - 1, whole.begin()));
    case Left::others:
      return found == whole || (found.size() + kBodyTriangles == whole.size() &&
                                isLeft(Left::some, found, before, whole));
    case Left::some:
      return std::ranges::all_of(
          found, [&](const std::string& s) { return std::ranges::count(whole, s) > 0; });
    case Left::all:
      return found == whole;
    case Left::usable:
      return true;
  }
  return false;
}

}  // namespace korvo::test
