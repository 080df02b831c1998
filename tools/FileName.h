#pragma once

#include <string>

namespace korvo::tools {

/// What a file's name ends in, in small letters: ".stl" of "a.STL"; empty without a point.
std::string suffixOf(const std::string& file);

}  // namespace korvo::tools
