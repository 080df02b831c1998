#pragma once

#include <string>
#include <utility>
#include <vector>

#include "toolkit/Language.h"

namespace korvo {

/// A sentence of a table in both languages. {0}, {1}, ... stand for what was found.
struct Text {
  const char* english = "";
  const char* french = "";
};

/// What was found, in both languages: most often a name or a number, which needs no translation.
struct Words {
  Words(std::string same) : english(same), french(std::move(same)) {}
  Words(const char* same) : Words(std::string(same)) {}
  Words(int number) : Words(std::to_string(number)) {}
  Words(std::string inEnglish, std::string inFrench)
      : english(std::move(inEnglish)), french(std::move(inFrench)) {}

  const std::string& in(Language language) const {
    return language == Language::french ? french : english;
  }

  std::string english;
  std::string french;
};

/// `text` with {0}, {1}, ... replaced by `words`.
std::string filled(const Text& text, const std::vector<Words>& words, Language language);

/// The same in both languages: a part of another sentence.
Words filled(const Text& text, const std::vector<Words>& words);

}  // namespace korvo
