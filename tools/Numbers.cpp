#include "tools/Numbers.h"

#include <charconv>
#include <cmath>

#include "platform/text/Number.h"

namespace korvo::tools {
namespace {

constexpr std::string_view kBlanks = " \t";

bool isBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

}  // namespace

std::size_t scanNumber(std::string_view text, double& value) {
  const text::Scan scan = text::scanDouble(text, value);
  if (!scan || !std::isfinite(value)) return 0;
  const std::string_view number = text.substr(0, scan.length);
  const char last = number.back();
  const bool endsWell = (last >= '0' && last <= '9') || last == '.';
  return endsWell && number.find_first_of("xX") == std::string_view::npos ? scan.length : 0;
}

std::optional<double> numberOf(std::string_view text) {
  double value = 0.0;
  const std::size_t length = scanNumber(text, value);
  if (!length || !isBlank(text.substr(length))) return {};
  return value;
}

std::optional<int> integerOf(std::string_view text) {
  const std::optional<double> value = numberOf(text);
  if (!value || *value != std::trunc(*value) || std::abs(*value) > 1e9) return {};
  return static_cast<int>(*value);
}

std::string_view trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::vector<std::string> split(std::string_view text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t begin = 0;;) {
    const std::size_t end = text.find(separator, begin);
    parts.emplace_back(text.substr(begin, end - begin));
    if (end == std::string_view::npos) return parts;
    begin = end + 1;
  }
}

void appendExact(std::string& out, double value) {
  char text[32];
  // Adding zero turns -0 into 0.
  out.append(text, std::to_chars(text, text + sizeof text, value + 0.0).ptr);
}

std::string exact(double value) {
  std::string out;
  appendExact(out, value);
  return out;
}

std::string plain(double value) {
  constexpr double kSmallest = 1e-6, kLargest = 1e15;  // beyond, zeros would bury the digits
  const double size = std::abs(value);
  if (size != 0 && !(size >= kSmallest && size < kLargest)) return exact(value);
  char text[48];
  return {text, std::to_chars(text, text + sizeof text, value + 0.0, std::chars_format::fixed).ptr};
}

std::string rounded(double value) {
  const double millionths = std::round(value * 1e6) / 1e6;
  return plain(std::isfinite(millionths) ? millionths : value);
}

}  // namespace korvo::tools
