#include "toolkit/Text.h"

#include <cstdint>

#include "platform/zgeo/UTools.h"

namespace korvo {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDFFF; }

void append(std::string& out, char32_t c) {
  const auto put = [&out](char32_t byte) { out += static_cast<char>(byte); };
  if (c > 0x10FFFF || isSurrogate(c)) c = kReplacement;
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | (c >> 6));
  } else if (c < 0x10000) {
    put(0xE0 | (c >> 12));
    put(0x80 | ((c >> 6) & 0x3F));
  } else {
    put(0xF0 | (c >> 18));
    put(0x80 | ((c >> 12) & 0x3F));
    put(0x80 | ((c >> 6) & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

// Where wide characters have 16 bits, two of them may be one character.
bool isPair(std::wstring_view text, std::size_t i) {
  return sizeof(wchar_t) == 2 && i + 1 < text.size() && (text[i] & 0xFC00) == 0xD800 &&
         (text[i + 1] & 0xFC00) == 0xDC00;
}

}  // namespace

std::string toUtf8(std::wstring_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t c = static_cast<char32_t>(text[i]);
    if (isPair(text, i)) {
      c = 0x10000 + ((c & 0x3FF) << 10) + (static_cast<char32_t>(text[++i]) & 0x3FF);
    }
    append(out, c);
  }
  return out;
}

std::wstring toWide(const std::string& text) { return zgeo::UTools::_toWS(text.c_str(), 0); }

}  // namespace korvo
