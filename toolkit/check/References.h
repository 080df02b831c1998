#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "toolkit/check/Rule.h"

namespace korvo::checking {

/// Why a name finds no element.
enum class Lost {
  later,    ///< The element stands below the line.
  prefix,   ///< "AXE_" is removed, or is not, where the element's name wants the contrary.
  unknown,  ///< Nothing in the file has that name.
};

struct LostName {
  const Reference* reference;
  Lost why;
  int element;  ///< Rank of the one that stands below, or that the prefix hides; -1: unknown.
};

/// The names that find no element, among those in lines of some keywords. The words for all tools
/// in collision lines are no names. Left out are names whose absence is told already: that of an
/// element whose line is ignored, and that of a frame, part or tool where there is none.
std::vector<LostName> lostNames(const Source& source,
                                std::initializer_list<text::Keyword> keywords);

/// The first element of a name (in lower case) among those of the whole file, in file order.
class NamedElements {
 public:
  explicit NamedElements(const LinkedElements& linked);
  int rankOf(const std::wstring& key) const;  ///< -1: none.

 private:
  std::unordered_map<std::wstring, int> ranks_;
};

/// Findings for names that are lost for one reason, each with the name, and the line of the
/// element that stands below or that the prefix hides.
Findings findingsFor(const Source& source, std::initializer_list<text::Keyword> keywords, Lost why);

/// Whether a line has semicolons, most likely between its operands: that is told for the line, and
/// what its operands are nobody knows.
bool hasSemicolon(const SourceLine& line);

/// Where a reference stands.
Place placeOf(const Reference& reference);

/// Whether a word of a collision line means all tools and guns above it.
bool isToolWord(const std::wstring& word);

}  // namespace korvo::checking
