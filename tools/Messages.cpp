#include "tools/Messages.h"

#include <algorithm>
#include <iostream>
#include <numeric>

namespace korvo::tools {
namespace {

constexpr std::size_t kLongest = 40;

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

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
  std::size_t shown = std::min(text.size(), kLongest);
  while (shown > 0 && shown < text.size() && continuesCharacter(text[shown])) --shown;
  std::string out = "'";
  for (const char c : text.substr(0, shown)) appendSpelled(out, c);
  return out + (shown < text.size() ? "...'" : "'");
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text.empty() ? "none" : text;
}

void say(std::string_view message) { std::cerr << printable(message) << '\n'; }

// Row by row of the table of distances between their beginnings.
int letterDistance(std::string_view a, std::string_view b) {
  std::vector<int> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 0; i < a.size(); ++i) {
    int diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const int changed = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace korvo::tools
