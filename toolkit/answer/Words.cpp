#include "toolkit/answer/Words.h"

#include <charconv>

namespace korvo {

std::string words(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value + 0.0,  // no "-0"
                                 std::chars_format::general, 6);
  return {text, end.ptr};
}

std::string words(const zgeo::UVec3d& v) {
  return "(" + words(v.x) + ", " + words(v.y) + ", " + words(v.z) + ")";
}

void appendWord(std::string& list, const std::string& word) {
  list += (list.empty() ? "" : ", ") + word;
}

}  // namespace korvo
