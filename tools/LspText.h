#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <vector>

namespace korvo::tools {

/// A place in a document as language clients count: from 0, in units of UTF-16, lines ended by LF,
/// CR LF or CR.
struct LspPosition {
  int line = 0;
  int character = 0;

  auto operator<=>(const LspPosition&) const = default;
};

/// A document that an editor holds. Its places are counted in three ways: by clients as above, by
/// the checker in characters from 1 of lines ended by LF, and here in bytes from 0.
class LspText {
 public:
  explicit LspText(std::string utf8);

  const std::string& bytes() const { return bytes_; }

  /// Of a byte; the text's end for what lies beyond.
  LspPosition positionOf(std::size_t offset) const;

  /// And back; of what lies beyond a line its end, of what lies beyond the last line the text's.
  std::size_t offsetOf(LspPosition position) const;

  /// Of a character that the checker names, at most the line's end. `line` and `column` from 1.
  std::size_t offsetOf(int line, int column) const;

  /// Of the end of a line that the checker names, before CR LF.
  std::size_t endOf(int line) const;

 private:
  std::size_t beginOf(int line) const;

  std::string bytes_;
  std::vector<std::size_t> clientLines_;   ///< Where the clients' lines begin.
  std::vector<std::size_t> checkerLines_;  ///< Where the checker's lines begin.
};

}  // namespace korvo::tools
