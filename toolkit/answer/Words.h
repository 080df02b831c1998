#pragma once

#include <string>

#include "platform/zgeo/UVec3d.h"
#include "toolkit/Sentence.h"

namespace korvo {

/// A number for people, six digits without zeros at their end, the same in every locale.
std::string words(double value, int digits = 6);

/// "(x, y, z)".
std::string words(const zgeo::UVec3d& v);

/// The number with its unit in both languages, in nine digits: typed back in, it does what the
/// sentence says.
Words millimetres(double value);
Words degrees(double value);

/// "a, b, c": appends `word` to a list.
void appendWord(std::string& list, const std::string& word);
void appendWord(Words& list, const Words& word);

/// "a", "a and b", "a, b and c".
Words allOf(const std::vector<Words>& list);

}  // namespace korvo
