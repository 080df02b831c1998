#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Language.h"

/// What an editor shows about a definition file while somebody writes it. Offsets count bytes of
/// the UTF-8 text, from 0.
namespace korvo {

/// The keyword under a cursor, explained.
struct Hover {
  std::size_t begin = 0;  ///< Of the keyword.
  std::size_t end = 0;    ///< Behind it.
  std::string text;       ///< The operands that it wants, an empty line, what the line means.
};

/// Explains the keyword that the cursor at `offset` touches; nothing where there is none.
KORVO_TOOLKIT_API std::optional<Hover> hoverAt(const std::string& text, std::size_t offset,
                                               Language language = Language::english);

/// A word that may stand at the cursor.
struct Completion {
  std::string word;
  bool isKeyword = false;  ///< Else the name of an axis or element.
  std::string detail;      ///< Of a keyword its operands, of a name the line that declares it.
  std::string text;        ///< What a line with the keyword means; empty for names.
};

/// The words that may stand at a cursor, and from where to the cursor they replace the text.
struct Completions {
  std::size_t begin = 0;
  std::vector<Completion> words;
};

/// At the start of a line the keywords of both dialects; behind a keyword whose operand is a name,
/// the names that the lines above declare, since the library finds no others.
/// @cost  Linear in the text in front of the cursor.
KORVO_TOOLKIT_API Completions completionsAt(const std::string& text, std::size_t offset,
                                            Language language = Language::english);

}  // namespace korvo
