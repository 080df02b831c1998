#include "toolkit/check/Characters.h"

#include <algorithm>

namespace korvo::checking {
namespace {

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Bytes of the character that starts with `c`; 0 when none starts so.
std::size_t sizeOf(char c) {
  const auto byte = static_cast<unsigned char>(c);
  if (byte < 0x80) return 1;
  if (byte >= 0xC2 && byte < 0xE0) return 2;
  if (byte >= 0xE0 && byte < 0xF0) return 3;
  return byte >= 0xF0 && byte < 0xF5 ? 4 : 0;
}

// Overlong forms and surrogates are none.
bool isWellFormed(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  const auto second = static_cast<unsigned char>(character.size() > 1 ? character[1] : 0);
  if (first == 0xE0 && second < 0xA0) return false;
  if (first == 0xED && second >= 0xA0) return false;
  if (first == 0xF0 && second < 0x90) return false;
  if (first == 0xF4 && second >= 0x90) return false;
  return std::all_of(character.begin() + 1, character.end(), continues);
}

bool isUtf8(std::string_view raw) {
  for (std::size_t i = 0; i < raw.size();) {
    const std::size_t size = sizeOf(raw[i]);
    if (size == 0 || i + size > raw.size() || !isWellFormed(raw.substr(i, size))) return false;
    i += size;
  }
  return true;
}

int charactersOf(std::string_view bytes) {
  return static_cast<int>(bytes.size() - static_cast<std::size_t>(
                                             std::count_if(bytes.begin(), bytes.end(), continues)));
}

// The rank of the byte with which a character begins.
std::size_t byteOf(std::string_view raw, int character) {
  std::size_t i = 0;
  for (; i < raw.size() && character > 0; --character)
    i += std::max<std::size_t>(sizeOf(raw[i]), 1);
  return i + static_cast<std::size_t>(std::max(character, 0));
}

}  // namespace

std::string utf8OfLine(std::string_view raw) {
  if (isUtf8(raw)) return std::string(raw);
  std::string out;
  for (const char c : raw) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) out += static_cast<char>(0xC0 | (byte >> 6));
    out += byte < 0x80 ? c : static_cast<char>(0x80 | (byte & 0x3F));
  }
  return out;
}

Stretch inCharacters(std::string_view raw, int column, int length) {
  if (column <= 0 || !isUtf8(raw)) return {column, length};
  const auto before = static_cast<std::size_t>(column - 1);
  const std::string_view head = raw.substr(0, before);
  const std::string_view part =
      raw.substr(head.size()).substr(0, static_cast<std::size_t>(std::max(length, 0)));
  const int beyond = static_cast<int>(before - head.size());
  return {charactersOf(head) + beyond + 1, charactersOf(part)};
}

Stretch inBytes(std::string_view raw, int column, int length) {
  if (column <= 0 || !isUtf8(raw)) return {column, length};
  const std::size_t begin = byteOf(raw, column - 1), end = byteOf(raw, column - 1 + length);
  return {static_cast<int>(begin) + 1, static_cast<int>(end - begin)};
}

}  // namespace korvo::checking
