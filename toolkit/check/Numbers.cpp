#include "toolkit/check/Numbers.h"

#include <algorithm>

#include "platform/text/Number.h"

using korvo::text::Keyword;

namespace korvo::checking {
namespace {

void addNumbers(std::vector<Numeric>& numbers, const SourceLine& line, int first, int count,
                bool isInteger, Role role = Role::rest) {
  const int end = std::min(first + count, static_cast<int>(line.statement.operands.size()));
  for (int i = first; i < end; ++i) {
    if (beginsAsNumber(line.statement.operands[static_cast<std::size_t>(i)].text))
      numbers.push_back({i, isInteger, role});
  }
}

std::vector<Numeric> settingNumbers(const SourceLine& line) {
  std::vector<Numeric> numbers;
  switch (line.keyword) {
    case Keyword::strategy:
    case Keyword::mode:
      addNumbers(numbers, line, 0, 1, true);
      break;
    case Keyword::minimum:
    case Keyword::maximum:
      addNumbers(numbers, line, 1, 1, false);
      break;
    case Keyword::limits:
      addNumbers(numbers, line, 1, 2, false);
      break;
    case Keyword::loop:
      addNumbers(numbers, line, 1, 3, false);
      break;
    case Keyword::rotationPoint:
      addNumbers(numbers, line, 0, 12, false);
      break;
    default:
      break;
  }
  return numbers;
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::vector<Numeric> numbersOf(const SourceLine& line, int version) {
  if (!text::isElementKeyword(line.keyword)) return settingNumbers(line);
  std::vector<Numeric> numbers;
  for (const Step& step : stepsOf(line, version)) {
    const bool isInteger = step.role == Role::number || step.role == Role::colour;
    const bool isNumeric = isInteger || (isVector(step.role) && step.count == 3);
    if (isNumeric) addNumbers(numbers, line, step.first, step.count, isInteger, step.role);
  }
  return numbers;
}

std::size_t usedOf(std::wstring_view text, bool isInteger) {
  double value = 0.0;
  const text::Scan scan = text::scanDouble(text, value);
  if (!isInteger) return scan.length;
  int integer = 0;
  const text::Scan used = text::scanInt(text, integer);
  return scan.length == text.size() && value == integer ? text.size() : used.length;
}

bool isGroupedNumber(std::string_view written) {
  if (written.starts_with('-') || written.starts_with('+')) written.remove_prefix(1);
  const std::size_t first = written.find_first_of(kBlanks);
  if (first == 0 || first > 3 || written.starts_with('0')) return false;
  for (std::size_t at = first; at < written.size(); at += 4) {
    const std::string_view group = written.substr(at + 1, 3);
    if (!isBlank(written[at]) || group.size() < 3) return false;
    if (!std::all_of(group.begin(), group.end(), isDigit)) return false;
    if (at + 4 < written.size() && written[at + 4] == '.') return true;
  }
  return true;
}

bool isTornNumber(std::string_view written) {
  for (std::size_t i = 1; i + 1 < written.size(); ++i) {
    if (!isBlank(written[i]) || isBlank(written[i + 1])) continue;
    const char before = written[written.find_last_not_of(kBlanks, i)], behind = written[i + 1];
    const bool isNext = isDigit(behind) || behind == '.' || behind == '-' || behind == '+';
    if (isNext && (isDigit(before) || before == '.')) return !isGroupedNumber(written);
  }
  return false;
}

}  // namespace korvo::checking
