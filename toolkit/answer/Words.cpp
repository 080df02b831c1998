#include "toolkit/answer/Words.h"

#include <charconv>

namespace korvo {
namespace {

constexpr int kTyped = 9;  // digits: a turn to 1e-6 degrees, a metre to 1e-6 mm

}  // namespace

std::string words(double value, int digits) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value + 0.0,  // no "-0"
                                 std::chars_format::general, digits);
  return {text, end.ptr};
}

std::string words(const zgeo::UVec3d& v) {
  return "(" + words(v.x) + ", " + words(v.y) + ", " + words(v.z) + ")";
}

Words millimetres(double value) { return words(value, kTyped) + " mm"; }

Words degrees(double value) {
  const std::string number = words(value, kTyped);
  return {number + " degrees", number + " degrés"};
}

void appendWord(std::string& list, const std::string& word) {
  list += (list.empty() ? "" : ", ") + word;
}

void appendWord(Words& list, const Words& word) {
  appendWord(list.english, word.english);
  appendWord(list.french, word.french);
}

Words allOf(const std::vector<Words>& list) {
  Words all = "";
  for (std::size_t i = 0; i < list.size(); ++i) {
    const bool isLast = i > 0 && i + 1 == list.size();
    const Words joint = isLast ? Words(" and ", " et ") : i > 0 ? Words(", ") : Words("");
    all.english += joint.english + list[i].english;
    all.french += joint.french + list[i].french;
  }
  return all;
}

}  // namespace korvo
