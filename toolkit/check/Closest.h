#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvo::checking {

/// How many single changes turn `a` into `b`: a letter added, removed or replaced, or two
/// neighbours swapped. The case of ASCII letters does not count.
///
/// @cost  The product of both lengths.
int editDistance(std::wstring_view a, std::wstring_view b);

/// The word of `words` that `word` was most likely meant to be, for "did you mean": the nearest
/// one, the first of several as near.
///
/// Nothing when the nearest is further away than a third of the letters of `word`: of a word of
/// three letters one may be wrong, of a shorter one none. Words of more than 64 letters are no
/// slips of the pen, and nothing is looked for.
std::optional<std::wstring> closest(std::wstring_view word, std::span<const std::wstring> words);

}  // namespace korvo::checking
