#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/text/PlainDecimal.h"

namespace zgeo::stl {

inline bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

/// How the facets of an ASCII file are laid out: the words and white space between the numbers of
/// one of them. Programs write all facets alike, so one comparison takes the place of several
/// words.
///
/// The texts are only ever learnt from a facet that was read word by word; so what equals them is
/// made of the same words. What does not, or has numbers that are not plain, is read word by word
/// again: this is a short way to the same answer.
class Layout {
 public:
  /// The texts of a facet, in their order, each from the end of the number before it: to the end of
  /// the word for the opening ("facet normal") and the closing, with one character of the white
  /// space behind the word for the corners. The normal stands between the first two.
  enum Text { kOpening, kVertex1, kVertex2, kVertex3, kClosing, kTexts };

  /// Remembers one of the texts. One that is too long is never met again.
  void learn(Text text, const char* begin, const char* end) {
    Known& known = known_[text];
    known.length = static_cast<std::size_t>(end - begin);
    if (known.length <= sizeof known.bytes) std::memcpy(known.bytes, begin, known.length);
  }

  /// Reads a facet that is laid out so at `at`: its end, or null when it is not.
  const char* take(const char* at, const char* end, double (&x)[9]) const {
    at = skip(kOpening, at, end);
    for (int i = 0; i < 3 && at != nullptr; ++i) at = skipNumber(at, end);
    double* to = x;
    for (const Text text : {kVertex1, kVertex2, kVertex3}) {
      at = skip(text, at, end);
      for (int i = 0; i < 3 && at != nullptr; ++i) at = takeNumber(at, end, *to++);
    }
    at = skip(kClosing, at, end);
    return at != nullptr && at != end && isSpace(*at) ? at : nullptr;
  }

 private:
  struct Known {
    char bytes[96];
    std::size_t length = std::numeric_limits<std::size_t>::max();  // not learnt
  };

  const char* skip(Text text, const char* at, const char* end) const {
    const Known& known = known_[text];
    if (at == nullptr || known.length > sizeof known.bytes) return nullptr;
    if (static_cast<std::size_t>(end - at) < known.length) return nullptr;
    return std::memcmp(at, known.bytes, known.length) == 0 ? at + known.length : nullptr;
  }

  static const char* skipSpace(const char* at, const char* end) {
    while (at != end && isSpace(*at)) ++at;
    return at;
  }
  /// Passes over a number of the normal, as over any word that begins like one: no word that means
  /// something does.
  static const char* skipNumber(const char* at, const char* end) {
    at = skipSpace(at, end);
    if (at == end || *at < '+' || *at > '9') return nullptr;
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    for (; end - at >= 8; at += 8) {
      std::uint64_t eight;
      std::memcpy(&eight, at, sizeof eight);
      const std::uint64_t upToBlank = (eight - kOnes * (' ' + 1)) & ~eight & kOnes * 0x80;
      if (upToBlank != 0) return at + std::countr_zero(upToBlank) / 8;
    }
    return nullptr;
  }
  static const char* takeNumber(const char* at, const char* end, double& value) {
    at = korvo::text::takePlainDecimal(skipSpace(at, end), end, value);
    return at != nullptr && isSpace(*at) ? at : nullptr;
  }

  Known known_[kTexts];
};

}  // namespace zgeo::stl
