#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/text/Keywords.h"
#include "platform/text/Number.h"
#include "platform/zgeo/UVec3d.h"

namespace zkin {

class KMachineElem;

/// The operands of a line of the definition file, as pieces of the line.
using Operands = std::vector<std::wstring_view>;

/// Splits as `UTools::_split` does; `parts` keeps its storage.
void splitAt(std::wstring_view text, wchar_t separator, bool keepEmpty, Operands& parts);

/// Whether two words are the same ignoring case, as C strings: up to a NUL.
bool isWord(std::wstring_view text, const wchar_t* word);

/// A direction word: an optional sign and an axis letter.
bool readAxisWord(std::wstring_view text, zgeo::UVec3d& v);

/// The fields of an element from its keyword and operands; `e` is new. See
/// `KMachineElem::setFromLine`.
void readElement(KMachineElem& e, korvo::text::Keyword keyword, const Operands& operands,
                 int version);

// --- as the functions of KMachineElem of these names, on texts or pieces of a text

template <typename Tokens>
bool hasToken(const Tokens& tokens, int pos, int count = 1) {
  return pos >= 0 && pos <= static_cast<int>(tokens.size()) - count;
}

template <typename Tokens>
bool readValue(const Tokens& tokens, int& pos, int& value) {
  if (!hasToken(tokens, pos) || !korvo::text::scanInt(tokens[pos], value)) return false;
  ++pos;
  return true;
}

template <typename Tokens>
bool readValue(const Tokens& tokens, int& pos, double& value) {
  if (!hasToken(tokens, pos) || !korvo::text::scanDouble(tokens[pos], value)) return false;
  ++pos;
  return true;
}

template <typename Tokens>
bool readVector(const Tokens& tokens, int& pos, zgeo::UVec3d& v) {
  if (!hasToken(tokens, pos)) return false;
  if (readAxisWord(tokens[pos], v)) return ++pos, true;
  if (!hasToken(tokens, pos, 3)) return false;
  zgeo::UVec3d read;
  int next = pos;
  if (!readValue(tokens, next, read.x) || !readValue(tokens, next, read.y) ||
      !readValue(tokens, next, read.z)) {
    return false;
  }
  v = read;
  pos = next;
  return true;
}

template <typename Tokens>
bool readGeomFile(const Tokens& tokens, int& pos, std::wstring& file, int* const rgb) {
  if (!hasToken(tokens, pos)) return false;
  file = tokens[pos++];
  if (hasToken(tokens, pos, 3)) {
    // Deliberate: a component that does not scan leaves its token to the next one, like every
    // other operand.
    for (int i = 0; i < 3; ++i) readValue(tokens, pos, rgb[i]);
  } else {
    rgb[0] = rgb[1] = rgb[2] = 200;
  }
  return !file.empty();
}

}  // namespace zkin
