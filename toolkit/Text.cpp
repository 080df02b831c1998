#include "toolkit/Text.h"

#include <algorithm>

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

// --- bytes of a file, one a character

bool isHighByte(wchar_t c) { return c >= 0x80 && c <= 0xFF; }

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Upper case by the table of Latin-1 takes bit 5 from the bytes that lead three and four bytes, and
// leaves those that follow: then too many do for what leads them.
std::string withLeadsAsWritten(std::string bytes) {
  for (std::size_t i = 0; i < bytes.size();) {
    const auto lead = static_cast<unsigned char>(bytes[i]);
    const auto end = std::find_if_not(bytes.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                                      bytes.end(), continues);
    const auto next = static_cast<std::size_t>(end - bytes.begin());
    const std::size_t wanted = lead >= 0xC0 && lead <= 0xCF   ? 3
                               : lead >= 0xD0 && lead <= 0xD4 ? 4
                                                              : 0;
    if (wanted == next - i) bytes[i] = static_cast<char>(lead | 0x20);
    i = next;
  }
  return bytes;
}

// All of them above 127: as UTF-8 they are more than characters.
std::string utf8OfHighBytes(const std::string& bytes) {
  const std::wstring read = toWide(withLeadsAsWritten(bytes));
  return toUtf8(read.size() < bytes.size() ? read : toWide(bytes));
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

std::string shownText(std::wstring_view text) {
  std::string out;
  while (!text.empty()) {
    const bool isHigh = isHighByte(text.front());
    const auto end = std::find_if(text.begin(), text.end(),
                                  [isHigh](wchar_t c) { return isHighByte(c) != isHigh; });
    const std::wstring_view run(text.begin(), end);
    out += isHigh ? utf8OfHighBytes(std::string(run.begin(), run.end())) : toUtf8(run);
    text.remove_prefix(run.size());
  }
  return out;
}

std::string shownText(std::string_view bytes) {
  std::wstring text;
  for (const char c : bytes) text += static_cast<unsigned char>(c);
  return shownText(text);
}

std::wstring toWide(const std::string& text) { return zgeo::UTools::_toWS(text.c_str(), 0); }

}  // namespace korvo
