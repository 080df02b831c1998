#pragma once

#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "platform/zgeo/UTri.h"
#include "tests/support/InCLocale.h"

namespace korvo::test {

/// The facets of an ASCII STL text by the plainest means: a list of words, and the C library's
/// sscanf in the C locale. What the fast reader must find too, facet by facet.
class StlReference {
 public:
  explicit StlReference(const std::string& text) : words_(split(text)) {
    for (std::size_t i = 0; i < words_.size(); ++i) {
      if (words_[i] == "facet") readFacet(i + 1);
    }
  }
  const std::vector<zgeo::UTri>& triangles() const { return triangles_; }

 private:
  static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

  /// The words in lower case: numbers say the same in both.
  static std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> words;
    bool isInWord = false;
    for (const char c : text) {
      if (!isSpace(c) && !isInWord) words.emplace_back();
      isInWord = !isSpace(c);
      if (isInWord) words.back().push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c);
    }
    return words;
  }

  bool isWord(std::size_t i, const char* word) const {
    return i < words_.size() && words_[i] == word;
  }

  bool isNumber(std::size_t i, double& value) const {
    if (i >= words_.size()) return false;
    int length = 0;
    const InCLocale scope;
    return std::sscanf(words_[i].c_str(), "%lf%n", &value, &length) == 1 &&
           static_cast<std::size_t>(length) == words_[i].size() && std::isfinite(value);
  }

  /// Reads the facet whose word "facet" stands before `i`. Nothing of it is in the way of the next
  /// one, which is tried from its own word on.
  void readFacet(std::size_t i) {
    for (; !isWord(i, "outer"); ++i) {
      if (i >= words_.size() || isWord(i, "facet") || isWord(i, "endfacet") ||
          isWord(i, "endsolid")) {
        return;
      }
    }
    double x[9];
    if (!isWord(++i, "loop")) return;
    for (int k = 0; k < 9; ++k) {
      if (k % 3 == 0 && !isWord(++i, "vertex")) return;
      if (!isNumber(++i, x[k])) return;
    }
    if (!isWord(++i, "endloop") || !isWord(++i, "endfacet")) return;
    triangles_.push_back({{x[0], x[1], x[2]}, {x[3], x[4], x[5]}, {x[6], x[7], x[8]}});
  }

  std::vector<std::string> words_;
  std::vector<zgeo::UTri> triangles_;
};

}  // namespace korvo::test
