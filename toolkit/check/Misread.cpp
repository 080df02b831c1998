#include "toolkit/check/Misread.h"

#include <algorithm>
#include <cmath>

#include "kinematics/KMachineElem.h"
#include "platform/text/Number.h"
#include "toolkit/check/Numbers.h"

namespace korvo::checking {
namespace {

using Steps = std::vector<Step>;

// Wider than what rounding to three decimals does to a direction of length 1.
constexpr double kUnitLength = 1e-3;

int sizeOf(const SourceLine& line) { return static_cast<int>(line.statement.operands.size()); }

template <class Is>
int runFrom(const SourceLine& line, int first, const Is& is) {
  int i = first;
  while (i < sizeOf(line) && is(operandOf(line, i))) ++i;
  return i - first;
}

bool isNumberLike(std::wstring_view text) { return beginsAsNumber(text) && !looksLikeFile(text); }

bool hasSemicolon(std::wstring_view text) { return text.find(L';') != std::wstring_view::npos; }

// --- vectors

// What stands where the reader of a vector took nothing.
Misread missedVector(const SourceLine& line, int first) {
  const int numbers = std::min(runFrom(line, first, isNumberLike), 3);
  const int next = first + numbers;
  const bool isEnd = isBlankFrom(line, next) || looksLikeFile(operandOf(line, next)) ||
                     (numbers > 0 && isDirectionWord(operandOf(line, next)));
  if (!isEnd && isQuoted(operandOf(line, next))) return {Misreading::quoted, next, 1};
  if (!isEnd) return {Misreading::unreadVector, next, 1};
  for (int i = first; i < next; ++i) {
    const std::string_view written = writtenOf(line, i);
    if (isTornNumber(written)) return {Misreading::tornVector, i, 1};
  }
  if (numbers > 0) return {Misreading::shortVector, first, numbers};
  return {};  // nothing, or the geometry file: the vector was left out
}

// A file name that begins with a digit passes for the last number of a vector.
Misread fileAsNumber(const SourceLine& line, const Step& step) {
  for (int i = 1; i < step.count; ++i) {
    if (looksLikeFile(operandOf(line, step.first + i))) {
      return {Misreading::shortVector, step.first, i};
    }
  }
  return {};
}

Misread vectorMisread(const SourceLine& line, const Step& step) {
  if (!isVector(step.role)) return {};
  if (step.count > 0) return fileAsNumber(line, step);
  // A frame may have its file at once, and its name may be any word.
  const bool isFrame = line.keyword == text::Keyword::frame;
  if (isFrame && runFrom(line, step.first, isNumberLike) == 0) return {};
  return missedVector(line, step.first);
}

bool isZero(std::wstring_view text) {
  double value = 1.0;
  text::scanDouble(text, value);
  return value == 0.0;
}

// A point of three numbers without the two integers in front: they are taken for these.
Misread pointMisread(const SourceLine& line, const Steps& steps) {
  const Step* const skipped = stepOf(steps, Role::skipped);
  const Step* const point = stepOf(steps, Role::point);
  if (!skipped || !point || point->count > 0) return {};
  if (runFrom(line, skipped->first, isNumberLike) != 3) return {};
  const bool isOrigin = runFrom(line, skipped->first, isZero) == 3;
  return {isOrigin ? Misreading::swallowedOrigin : Misreading::swallowedPoint, skipped->first, 3};
}

// --- numbers too many

bool isDigits(std::wstring_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

bool isInteger(std::wstring_view text) {
  if (text.starts_with(L'+') || text.starts_with(L'-')) text.remove_prefix(1);
  return isDigits(text);
}

bool isPositiveInteger(std::wstring_view text) { return isDigits(text) && !isZero(text); }

// Of the operands that may be behind a decimal comma the shortest one, the last of several. Zeros
// alone are written by nobody there.
int likeliestFraction(const SourceLine& line, int first, int count) {
  int best = -1;
  for (int i = first + 1; i < first + count; ++i) {
    if (!isPositiveInteger(operandOf(line, i))) continue;
    if (best < 0 || operandOf(line, i).size() <= operandOf(line, best).size()) best = i;
  }
  return best;
}

// Whether `count` numbers, of which `wanted` are read, are so many because of decimal commas: all
// are integers, and enough of them can go on behind the comma of the one before.
Misread decimalComma(const SourceLine& line, int first, int count, int wanted) {
  const int surplus = count - wanted;
  if (surplus < 1 || runFrom(line, first, isInteger) < count) return {};
  int fractions = 0;
  for (int i = first + count - 1; i > first; --i) {
    if (!isPositiveInteger(operandOf(line, i))) continue;
    ++fractions;
    --i;  // what stands before a fraction is not itself one
  }
  if (fractions < surplus) return {};
  const int pair = likeliestFraction(line, first, count);
  if (surplus == 1) return {Misreading::decimalComma, pair - 1, 2, wanted, pair};
  return {Misreading::decimalComma, first, count, wanted, pair};
}

// --- what stands behind the vectors

// The first operand that may be a number of a vector.
int vectorsBegin(const Steps& steps) {
  int first = 0;
  for (const Role role : {Role::name, Role::number}) {
    if (const Step* const step = stepOf(steps, role)) first = step->first + step->count;
  }
  return first;
}

Misread fileMisread(const SourceLine& line, const Steps& steps) {
  const Step* const file = stepOf(steps, Role::file);
  if (!file || file->count == 0) return {};
  const std::wstring_view name = operandOf(line, file->first);
  if (isDirectionWord(name)) return {Misreading::operandAsFile, file->first, 1};
  if (!isWholeNumber(name)) return {};
  int begin = file->first;
  while (begin > vectorsBegin(steps) && isWholeNumber(operandOf(line, begin - 1))) --begin;
  const int count = runFrom(line, begin, isWholeNumber);
  const Misread comma = decimalComma(line, begin, count, file->first - begin);
  if (comma.why != Misreading::none) return comma;
  return {Misreading::operandAsFile, file->first, 1};
}

bool isFrameDirection(const SourceLine& line, int version) {
  if (line.keyword != text::Keyword::frame || version == 2 || sizeOf(line) == 0) return false;
  return isDirectionWord(operandOf(line, 0)) || runFrom(line, 0, isWholeNumber) >= 3;
}

Misread frameMisread(const SourceLine& line, int version) {
  if (!isFrameDirection(line, version)) return {};
  return {Misreading::frameDirection, 0, isDirectionWord(operandOf(line, 0)) ? 1 : 3};
}

Misread restMisread(const SourceLine& line, const Steps& steps) {
  const Step* const rest = stepOf(steps, Role::rest);
  if (!rest || isBlankFrom(line, rest->first)) return {};
  const Step* const colour = stepOf(steps, Role::colour);
  const int read = colour ? colour->count : 0;
  const bool isColour =
      read > 0 || rest->count >= 3 || beginsAsNumber(operandOf(line, rest->first));
  if (read == 3 || !isColour) return {Misreading::left, rest->first, rest->count};
  return {Misreading::colourParts, rest->first - read, rest->count + read};
}

Misread elementMisread(const SourceLine& line, const Steps& steps, int version) {
  const Misread frame = frameMisread(line, version);
  if (frame.why != Misreading::none) return frame;
  const Misread point = pointMisread(line, steps);
  if (point.why != Misreading::none) return point;
  for (const Step& step : steps) {
    const Misread vector = vectorMisread(line, step);
    if (vector.why != Misreading::none) return vector;
  }
  const Misread file = fileMisread(line, steps);
  return file.why != Misreading::none ? file : restMisread(line, steps);
}

// --- the other format

bool isAxisLine(const SourceLine& line) {
  return line.keyword == text::Keyword::linearAxis || line.keyword == text::Keyword::rotaryAxis;
}

// Three numbers of another length may be an axis number and two others.
bool isUnit(const SourceLine& line, const Step& direction) {
  if (direction.count < 3) return direction.count > 0;
  double v[3] = {};
  for (int i = 0; i < 3; ++i) text::scanDouble(operandOf(line, direction.first + i), v[i]);
  return std::abs(std::hypot(v[0], v[1], v[2]) - 1.0) <= kUnitLength;
}

// Whether direction and point of an axis line are there when it is read in these steps.
bool readsWell(const SourceLine& line, const Steps& steps, int version) {
  const Step* const direction = stepOf(steps, Role::direction);
  const Step* const point = stepOf(steps, Role::point);
  return isUnit(line, *direction) && (!point || point->count > 0) &&
         elementMisread(line, steps, version).why == Misreading::none;
}

// Whether an axis line that is misread as `version` would be read well as the other one.
Misread otherFormat(const SourceLine& line, int version) {
  const int other = version == 2 ? 1 : 2;
  const Steps steps = stepsOf(line, other);
  if (!readsWell(line, steps, other)) return {};
  const Step* const direction = stepOf(steps, Role::direction);
  if (other == 2) return {Misreading::otherFormat, direction->first, direction->count};
  const Step* const number = stepOf(steps, Role::number);
  const bool isThere = number->count > 0 && isPositiveInteger(operandOf(line, number->first));
  return isThere ? Misread{Misreading::otherFormat, number->first, 1} : Misread{};
}

// --- lines that declare no element

Misread restFrom(const SourceLine& line, int first) {
  if (isBlankFrom(line, first)) return {};
  return {Misreading::left, first, sizeOf(line) - first};
}

Misread surplus(const SourceLine& line, int first, int wanted) {
  if (isBlankFrom(line, first + wanted)) return {};
  const int count = runFrom(line, first, isWholeNumber);
  const Misread comma = decimalComma(line, first, count, wanted);
  return comma.why != Misreading::none ? comma : restFrom(line, first + wanted);
}

Misread loopMisread(const SourceLine& line) {
  if (isBlankFrom(line, 1)) return {};
  if (isDirectionWord(operandOf(line, 1))) return restFrom(line, 2);
  if (runFrom(line, 1, beginsAsNumber) >= 3) return surplus(line, 1, 3);
  return missedVector(line, 1);
}

// Two limits with a blank alone between them are one operand.
Misread limitsMisread(const SourceLine& line) {
  if (sizeOf(line) != 2) return surplus(line, 1, 2);
  const std::string_view written = writtenOf(line, 1);
  const bool isTorn = isTornNumber(written) || isGroupedNumber(written);
  return isTorn ? Misread{Misreading::tornVector, 1, 1} : Misread{};
}

Misread settingMisread(const SourceLine& line) {
  switch (line.keyword) {
    case text::Keyword::strategy:
    case text::Keyword::mode:
      return restFrom(line, 1);
    case text::Keyword::minimum:
    case text::Keyword::maximum:
      return surplus(line, 1, 1);
    case text::Keyword::limits:
      return limitsMisread(line);
    case text::Keyword::rotationPoint:
      return surplus(line, 0, 12);
    case text::Keyword::loop:
      return loopMisread(line);
    default:
      return {};
  }
}

}  // namespace

Misread misreadOf(const SourceLine& line, int version) {
  if (line.keyword == text::Keyword::none) return {};
  const int whole = runFrom(line, 0, [](std::wstring_view text) { return !hasSemicolon(text); });
  if (whole < sizeOf(line)) return {Misreading::semicolon, whole, 1};
  if (!text::isElementKeyword(line.keyword)) return settingMisread(line);
  const Misread found = elementMisread(line, stepsOf(line, version), version);
  if (found.why == Misreading::none || !isAxisLine(line)) return found;
  const Misread other = otherFormat(line, version);
  return other.why != Misreading::none ? other : found;
}

bool isOfOtherFormat(const FormatChoice& taken, const FormatChoice& likely) {
  // Only a choice by count says "3 of 5 axis lines ..."; the others are taken for want of better.
  const bool isClear = likely.reason.find(" of ") != std::string::npos;
  return isClear && taken.version != likely.version;
}

}  // namespace korvo::checking
