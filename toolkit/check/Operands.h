#pragma once

#include <string_view>
#include <vector>

#include "platform/zgeo/UVec3d.h"
#include "toolkit/check/Document.h"

namespace korvo::checking {

/// What an operand of an element line is to the library.
enum class Role {
  name,        ///< Of an axis.
  number,      ///< Of an axis: an integer from 1 up. Format 1 only.
  direction,   ///< Of a frame (format 2), tool, gun or axis.
  xDirection,  ///< Of a part.
  yDirection,  ///< Of a part.
  position,    ///< Of a part: read and not used.
  skipped,     ///< An integer in front of the point of a rotary axis: read and not used.
  point,       ///< Of a tool, gun or rotary axis.
  file,        ///< Geometry file.
  colour,      ///< Red, green, blue.
  rest,        ///< Operands that nothing reads.
};

/// One reader's turn at the operands.
struct Step {
  Role role;
  int first;  ///< The operand where the reader looked.
  int count;  ///< How many operands it took; 0: what it wanted was not there.
};

/// The readers of an element line in their order, with what each of them took; `rest` comes last,
/// when something is left. Empty for lines that declare no element.
std::vector<Step> stepsOf(const SourceLine& line, int version);

/// The step of a role; null when the line has none. Of two steps of a role the first.
const Step* stepOf(const std::vector<Step>& steps, Role role);

/// The text of operand `i`, which must be there.
std::wstring_view operandOf(const SourceLine& line, int i);

/// The same as it stands in the file, blanks included.
std::string_view writtenOf(const SourceLine& line, int i);

/// The white space that is removed from lines, LF apart.
inline constexpr std::string_view kBlanks = " \t\r\v\f";
inline bool isBlank(char c) { return kBlanks.find(c) != std::string_view::npos; }

/// What the library reads where a direction or point begins; (0, 0, 0) when it reads nothing.
zgeo::UVec3d vectorAt(const SourceLine& line, const Step& step);

/// Whether the readers take a direction or a point from this step.
bool isVector(Role role);

/// Whether `text` is a number from its first to its last character.
bool isWholeNumber(std::wstring_view text);

/// Whether a reader gets a number from the beginning of `text`: of file names too ("2head.stl").
bool beginsAsNumber(std::wstring_view text);

/// x, +x, -x, y, ... in any case.
bool isDirectionWord(std::wstring_view text);

/// Whether `text` is no number and has what only file names have: an extension, a folder, a "$".
bool looksLikeFile(std::wstring_view text);

/// Whether `text` stands in quotes: they mean nothing to the library.
bool isQuoted(std::wstring_view text);

/// Whether all operands from `first` on are empty, as behind a comma at the end of a line.
bool isBlankFrom(const SourceLine& line, int first);

}  // namespace korvo::checking
