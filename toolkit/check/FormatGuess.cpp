#include "toolkit/check/FormatGuess.h"

#include <algorithm>
#include <string_view>

#include "kinematics/KMachineElem.h"
#include "platform/zgeo/UTools.h"
#include "toolkit/check/Operands.h"

using zgeo::UTools;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

using Tokens = std::vector<std::wstring>;

bool isAxisLine(const SourceLine& line) {
  return line.keyword == text::Keyword::linearAxis || line.keyword == text::Keyword::rotaryAxis;
}

Tokens operandsOf(const SourceLine& line) {
  Tokens tokens;
  for (const text::Token& operand : line.statement.operands) tokens.push_back(operand.text);
  return tokens;
}

bool hasVersion2Name(const SourceLine& line) {
  const Tokens tokens = operandsOf(line);
  if (tokens.empty()) return false;
  const std::wstring name = UTools::_removeFrom(UTools::_up(tokens[0]), L"AXE_");
  const std::wstring_view names = line.keyword == text::Keyword::linearAxis ? L"XYZ" : L"ABC";
  return name.size() == 1 && names.find(name[0]) != std::wstring_view::npos;
}

bool hasDirection(const Tokens& tokens, const Step& step) {
  int pos = step.first;
  zgeo::UVec3d v;
  return KMachineElem::_readVector(tokens, pos, v) && v.norm2() > 0.0;
}

// A number where the file name would be means that an operand was taken for another.
bool isRead(const SourceLine& line, int version) {
  const Tokens tokens = operandsOf(line);
  const std::vector<Step> steps = stepsOf(line, version);
  const Step* const point = stepOf(steps, Role::point);  // of rotary axes
  const Step* const file = stepOf(steps, Role::file);
  if (!hasDirection(tokens, *stepOf(steps, Role::direction))) return false;
  if (point && point->count == 0) return false;
  int pos = file->first;
  double value = 0.0;
  return !KMachineElem::_readValue(tokens, pos, value);
}

bool speaksFor1(const SourceLine& line) {
  int pos = 1, number = 0;
  return KMachineElem::_readValue(operandsOf(line), pos, number) && number >= 1 && isRead(line, 1);
}

bool speaksFor2(const SourceLine& line) { return hasVersion2Name(line) && isRead(line, 2); }

std::string of(std::ptrdiff_t some, std::size_t all) {
  return std::to_string(some) + " of " + std::to_string(all) + " axis lines ";
}

FormatChoice guess(const std::vector<SourceLine>& axes) {
  if (axes.empty()) return {1, "no axis lines"};
  const auto ones = std::count_if(axes.begin(), axes.end(), speaksFor1);
  const auto twos = std::count_if(axes.begin(), axes.end(), speaksFor2);
  if (ones > twos) return {1, of(ones, axes.size()) + "give an axis number after the name"};
  if (twos > ones) return {2, of(twos, axes.size()) + "name X, Y, Z, A, B or C without a number"};
  if (std::all_of(axes.begin(), axes.end(), hasVersion2Name)) {
    return {2, "all axes are named X, Y, Z, A, B or C"};
  }
  return {1, "not all axes are named X, Y, Z, A, B or C"};
}

}  // namespace

FormatChoice chooseFormat(const Document& document, Format asked) {
  if (asked != Format::automatic) return {static_cast<int>(asked), "as asked"};
  std::vector<SourceLine> axes;
  std::copy_if(document.lines.begin(), document.lines.end(), std::back_inserter(axes), isAxisLine);
  return guess(axes);
}

}  // namespace korvo::checking
