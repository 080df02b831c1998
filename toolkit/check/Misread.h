#pragma once

#include "toolkit/Format.h"
#include "toolkit/check/Document.h"

namespace korvo::checking {

/// Why operands are not read as their writer meant them.
enum class Misreading {
  none,
  semicolon,        ///< Operands with semicolons between them: for the readers they are one.
  quoted,           ///< An operand in quotes where a direction or a point is wanted.
  otherFormat,      ///< An axis line with a number in format 2, or without one in format 1.
  shortVector,      ///< One or two numbers where a direction or a point is wanted.
  tornVector,       ///< The same because of blanks where commas should be.
  unreadVector,     ///< An operand there that is neither word nor number nor file name.
  swallowedPoint,   ///< A rotary axis's point of which the readers skip the first two numbers.
  swallowedOrigin,  ///< The same when the point is 0,0,0: nothing is lost by it.
  frameDirection,   ///< In format 1 a frame has none: it is taken for a file name.
  decimalComma,     ///< More numbers than are read; decimal commas would explain it.
  operandAsFile,    ///< A number or a direction word where only a file name can be.
  colourParts,      ///< Not three integers behind the geometry file.
  left,             ///< Operands that nothing reads.
};

/// The first misreading of a line and where it is.
struct Misread {
  Misreading why = Misreading::none;
  int first = 0;   ///< Operand.
  int count = 0;   ///< How many of them.
  int wanted = 0;  ///< decimalComma: how many numbers are read.
  int pair = -1;   ///< decimalComma: the operand that most likely goes on behind its comma.
};

/// What is wrong first with the operands of a line, as far as it shows in their order and number.
/// What follows from it (a number left over becomes the file name, then the file name is left over)
/// is the same misreading: a line has one at most.
Misread misreadOf(const SourceLine& line, int version);

/// Whether the axis lines speak clearly for another format than the one taken.
bool isOfOtherFormat(const FormatChoice& taken, const FormatChoice& likely);

}  // namespace korvo::checking
