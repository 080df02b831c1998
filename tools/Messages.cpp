#include "tools/Messages.h"

#include <iostream>

namespace korvo::tools {
namespace {

constexpr std::size_t kLongest = 40;

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

void appendSpelled(std::string& out, char c) {
  constexpr const char* kHex = "0123456789abcdef";
  if (!isControl(c)) {
    out += c;
  } else if (c == '\r' || c == '\n' || c == '\t') {
    out += c == '\r' ? "\\r" : c == '\n' ? "\\n" : "\\t";
  } else {
    out += {'\\', 'x', kHex[(c >> 4) & 0xF], kHex[c & 0xF]};
  }
}

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  for (const char c : text) {
    if (c == '\n') {
      out += c;
    } else {
      appendSpelled(out, c);
    }
  }
  return out;
}

std::string inQuotes(std::string_view text) {
  std::string out = "'";
  for (const char c : text.substr(0, kLongest)) appendSpelled(out, c);
  return out + (text.size() > kLongest ? "...'" : "'");
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "none" : text;
}

void say(std::string_view message) { std::cerr << printable(message) << '\n'; }

}  // namespace korvo::tools
