#pragma once

#include <string>

#include "platform/zgeo/UVec3d.h"

namespace korvo {

/// A number for people, six digits, the same in every locale.
std::string words(double value);

/// "(x, y, z)".
std::string words(const zgeo::UVec3d& v);

/// "a, b, c": appends `word` to a list.
void appendWord(std::string& list, const std::string& word);

}  // namespace korvo
