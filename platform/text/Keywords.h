#pragma once

#include <span>
#include <string_view>

/// The keywords of the machine definition file, in one table.
namespace korvo::text {

/// What a keyword of the definition file does.
enum class Keyword {
  none,           ///< Not a keyword: the line is ignored.
  link,           ///< lien
  loop,           ///< boucle, loop
  frame,          ///< bati, frame
  part,           ///< piece, table, part
  tool,           ///< outil, tool
  geometry,       ///< geom, geometry
  linearAxis,     ///< axe, axis, translation
  drillGun,       ///< canon, gun, drillgun
  rotaryAxis,     ///< rotation
  strategy,       ///< strategie, strategy
  mode,           ///< mode
  minimum,        ///< courseminimum
  maximum,        ///< coursemaximum
  limits,         ///< limites, limits
  rotationPoint,  ///< pointderotation, rotationpoint
  collision,      ///< collision, collisions
};

/// One spelling of a keyword, in lower case. The reader takes the words of both dialects in one
/// file; a keyword with one spelling only ("lien", "mode") belongs to both.
struct KeywordRow {
  std::wstring_view word;
  Keyword keyword;
  bool french;   ///< A word of the French dialect.
  bool english;  ///< A word of the English dialect ("table", "collision", "rotation" are both).
};

/// All spellings, in the order in which the reader tests them.
std::span<const KeywordRow> keywordTable();

/// The keyword that `word` spells, ignoring the case of ASCII letters; `none` for other words.
Keyword keywordOf(std::wstring_view word);

/// Whether a keyword declares an element (frame to rotaryAxis).
bool isElementKeyword(Keyword keyword);

}  // namespace korvo::text
