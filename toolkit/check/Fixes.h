#pragma once

#include <string>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/check/Diagnostic.h"

namespace korvo {

/// The `bytes` of a definition file with the fixes that `diagnostics` bring. Every other byte
/// stays: marks, line ends, and what the reader ignores of a line.
///
/// Left out: a fix that overlaps one before it in the file, or inserts where that one begins; one
/// that is outside its line; one that would end a line; and one whose text the line cannot hold
/// (characters that Latin-1 lacks, in a line of Latin-1). So the number of lines stays too, and the
/// fixes that are left apply to the result of another check.
/// @cost  Linear in the file, and n log n in the fixes.
KORVO_TOOLKIT_API std::string applyFixes(const std::string& bytes,
                                         const std::vector<Diagnostic>& diagnostics);

}  // namespace korvo
