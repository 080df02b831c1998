#include "platform/os/Names.h"

#include <algorithm>
#include <cstdint>

namespace korvo::os {
namespace {

constexpr std::uint32_t kLastCharacter = 0x10FFFF;

bool isSurrogate(std::uint32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

/// Smallest character that needs a sequence of that many bytes: shorter forms are required.
constexpr std::uint32_t kSmallestOfLength[] = {0, 0, 0x80, 0x800, 0x10000};

/// How many bytes a sequence has that is led by this byte; 0 for a byte that leads none.
std::size_t sequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC0) return 0;
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return lead < 0xF8 ? 4 : 0;
}

void appendUtf8(std::string& out, std::uint32_t c) {
  const auto put = [&out](std::uint32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

/// The character that begins `text`, cut off from it; nothing when that is not valid UTF-8.
std::optional<std::uint32_t> takeUtf8(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  const std::size_t length = sequenceLength(lead);
  if (length == 0 || length > text.size()) return std::nullopt;
  std::uint32_t c = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  for (const char byte : text.substr(1, length - 1)) {
    if ((byte & 0xC0) != 0x80) return std::nullopt;
    c = c << 6 | (byte & 0x3Fu);
  }
  if (c < kSmallestOfLength[length] || isSurrogate(c) || c > kLastCharacter) return std::nullopt;
  text.remove_prefix(length);
  return c;
}

std::optional<std::wstring> charactersOfUtf8(std::string_view name) {
  std::wstring characters;
  while (!name.empty()) {
    const std::optional<std::uint32_t> c = takeUtf8(name);
    if (!c) return std::nullopt;
    characters.push_back(static_cast<wchar_t>(*c));
  }
  return characters;
}

}  // namespace

wchar_t lowered(wchar_t c) {
  const bool isAscii = c >= L'A' && c <= L'Z';
  const bool isLatin1 = c >= L'\xC0' && c <= L'\xDE' && c != L'\xD7';  // D7 is the times sign
  return isAscii || isLatin1 ? static_cast<wchar_t>(c | 0x20) : c;
}

std::optional<std::string> utf8Of(std::wstring_view name) {
  std::string bytes;
  for (const wchar_t wide : name) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): a wide character, and the bits are what counts
    const auto c = static_cast<std::uint32_t>(wide);
    if (c == 0 || isSurrogate(c) || c > kLastCharacter) return std::nullopt;
    appendUtf8(bytes, c);
  }
  return bytes;
}

std::optional<std::string> bytesOf(std::wstring_view name) {
  std::string bytes;
  for (const wchar_t c : name) {
    if (c <= 0 || c > 0xFF) return std::nullopt;
    bytes.push_back(static_cast<char>(c));
  }
  return bytes;
}

std::wstring charactersOf(std::string_view name) {
  if (auto characters = charactersOfUtf8(name)) return *std::move(characters);
  std::wstring characters;
  for (const char byte : name) characters.push_back(static_cast<unsigned char>(byte));
  return characters;
}

bool isSameIgnoringCase(std::string_view a, std::string_view b) {
  return std::ranges::equal(charactersOf(a), charactersOf(b), {}, lowered, lowered);
}

}  // namespace korvo::os
