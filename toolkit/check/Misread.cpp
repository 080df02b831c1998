#include "toolkit/check/Misread.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "kinematics/KMachineElem.h"
#include "platform/text/Number.h"
#include "toolkit/check/Commas.h"
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

bool isPositiveInteger(std::wstring_view text) { return isDigits(text) && !isZero(text); }

Misread decimalComma(const SourceLine& line, int first, int count, const std::vector<Slot>& slots) {
  std::optional<SplitNumbers> split = splitNumbers(line, first, count, slots);
  if (!split) return {};
  return {Misreading::decimalComma, split->first, split->count, static_cast<int>(slots.size()),
          std::move(split->mended)};
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

// What the numbers from operand `begin` up to the file are for.
std::vector<Slot> slotsFrom(const Steps& steps, int begin) {
  std::vector<Slot> slots;
  for (const Step& step : steps) {
    if (step.role == Role::file) break;
    if (step.first < begin) continue;
    const bool isDirection = isVector(step.role) && step.role != Role::point &&
                             step.role != Role::position && step.count == 3;
    const Slot other = step.role == Role::skipped ? Slot::integer : Slot::number;
    slots.insert(slots.end(), static_cast<std::size_t>(step.count),
                 isDirection ? Slot::direction : other);
  }
  return slots;
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
  Misread comma = decimalComma(line, begin, count, slotsFrom(steps, begin));
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

bool isNumberLost(const SourceLine& line, int first) {
  const text::Keyword k = line.keyword;
  const bool isLimits =
      k == text::Keyword::limits || k == text::Keyword::minimum || k == text::Keyword::maximum;
  return (isLimits || text::isElementKeyword(k)) && isNumberLike(operandOf(line, first));
}

Misread leftFrom(const SourceLine& line, int first) {
  const Misreading why = isNumberLost(line, first) ? Misreading::numbersLeft : Misreading::left;
  return {why, first, sizeOf(line) - first};
}

Misread restMisread(const SourceLine& line, const Steps& steps) {
  const Step* const rest = stepOf(steps, Role::rest);
  if (!rest || isBlankFrom(line, rest->first)) return {};
  const Step* const colour = stepOf(steps, Role::colour);
  const int read = colour ? colour->count : 0;
  const bool isColour =
      read > 0 || rest->count >= 3 || beginsAsNumber(operandOf(line, rest->first));
  if (read == 3 || !isColour) return leftFrom(line, rest->first);
  return {Misreading::colourParts, rest->first - read, rest->count + read};
}

Misread elementMisread(const SourceLine& line, const Steps& steps, int version) {
  Misread frame = frameMisread(line, version);
  if (frame.why != Misreading::none) return frame;
  Misread point = pointMisread(line, steps);
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

// A direction where format 1 wants the axis number.
Misread numberMisread(const SourceLine& line, const Steps& steps, int version) {
  if (version == 2 || !isAxisLine(line)) return {};
  const Step* const number = stepOf(steps, Role::number);
  const Step* const direction = stepOf(steps, Role::direction);
  if (number->count > 0 || direction->count == 0) return {};
  return {Misreading::otherFormat, direction->first, direction->count};
}

// --- lines that declare no element

Misread restFrom(const SourceLine& line, int first) {
  if (isBlankFrom(line, first)) return {};
  return leftFrom(line, first);
}

Misread surplus(const SourceLine& line, int first, int wanted, Slot slot = Slot::number) {
  if (isBlankFrom(line, first + wanted)) return {};
  const int count = runFrom(line, first, isWholeNumber);
  const std::vector<Slot> slots(static_cast<std::size_t>(wanted), slot);
  Misread comma = decimalComma(line, first, count, slots);
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
  if (sizeOf(line) != 2) return surplus(line, 1, 2, Slot::limit);
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
      return surplus(line, 1, 1, Slot::limit);
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
  if (isSplitByBlanks(line)) return {Misreading::blanks, 0, 1};
  if (!text::isElementKeyword(line.keyword)) return settingMisread(line);
  const Steps steps = stepsOf(line, version);
  Misread number = numberMisread(line, steps, version);
  if (number.why != Misreading::none) return number;
  Misread found = elementMisread(line, steps, version);
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
