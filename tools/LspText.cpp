#include "tools/LspText.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace korvo::tools {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

bool begins(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

// Of the character that a byte begins; characters beyond the basic plane take two.
int unitsOf(char c) {
  if (!begins(c)) return 0;
  return static_cast<unsigned char>(c) >= 0xF0 ? 2 : 1;
}

bool endsClientLine(const std::string& bytes, std::size_t i) {
  const bool isCrLf = bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n';
  return bytes[i] == '\n' || (bytes[i] == '\r' && !isCrLf);
}

bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

}  // namespace

LspText::LspText(std::string utf8) : bytes_(std::move(utf8)), clientLines_{0}, checkerLines_{0} {
  if (bytes_.starts_with(kUtf8Mark)) checkerLines_[0] = kUtf8Mark.size();
  for (std::size_t i = 0; i < bytes_.size(); ++i) {
    if (endsClientLine(bytes_, i)) clientLines_.push_back(i + 1);
    if (bytes_[i] == '\n') checkerLines_.push_back(i + 1);
  }
}

LspPosition LspText::positionOf(std::size_t offset) const {
  const std::size_t end = std::min(offset, bytes_.size());
  const auto next = std::upper_bound(clientLines_.begin(), clientLines_.end(), end);
  LspPosition position{static_cast<int>(next - clientLines_.begin()) - 1, 0};
  for (std::size_t i = *(next - 1); i < end; ++i) position.character += unitsOf(bytes_[i]);
  return position;
}

std::size_t LspText::offsetOf(LspPosition position) const {
  const auto line = static_cast<std::size_t>(std::max(position.line, 0));
  if (line >= clientLines_.size()) return bytes_.size();
  std::size_t i = clientLines_[line];
  int left = std::max(position.character, 0);
  // Inside a character is in front of it.
  while (i < bytes_.size() && !isLineEnd(bytes_[i]) && left >= unitsOf(bytes_[i])) {
    left -= unitsOf(bytes_[i++]);
  }
  return i;
}

std::size_t LspText::beginOf(int line) const {
  const auto index = static_cast<std::size_t>(std::max(line, 1) - 1);
  return checkerLines_[std::min(index, checkerLines_.size() - 1)];
}

std::size_t LspText::offsetOf(int line, int column) const {
  std::size_t i = beginOf(line);
  for (int left = column - 1; left > 0 && i < bytes_.size() && bytes_[i] != '\n'; --left) {
    do {
      ++i;
    } while (i < bytes_.size() && !begins(bytes_[i]));
  }
  return i;
}

std::size_t LspText::endOf(int line) const {
  const std::size_t begin = beginOf(line);
  std::size_t end = std::min(bytes_.find('\n', begin), bytes_.size());
  if (end > begin && bytes_[end - 1] == '\r') --end;
  return end;
}

}  // namespace korvo::tools
