#include "toolkit/check/MeantKeyword.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "toolkit/Text.h"
#include "toolkit/check/Closest.h"
#include "toolkit/check/Operands.h"

using korvo::text::Keyword;

namespace korvo::checking {
namespace {

struct Foreign {
  std::wstring_view word;
  std::wstring_view keyword;
};

// Words that say what a keyword says, and are none.
constexpr Foreign kForeign[] = {
    {L"link", L"lien"},
    {L"links", L"lien"},
    {L"liaison", L"lien"},
    {L"parent", L"lien"},
    {L"base", L"frame"},
    {L"bed", L"frame"},
    {L"socle", L"bati"},
    {L"workpiece", L"part"},
    {L"spindle", L"tool"},
    {L"broche", L"outil"},
    {L"gundrill", L"drillgun"},
    {L"linear", L"translation"},
    {L"lineaire", L"translation"},
    {L"linearaxis", L"translation"},
    {L"trans", L"translation"},
    {L"rot", L"rotation"},
    {L"rotary", L"rotation"},
    {L"rotaryaxis", L"rotation"},
    {L"rotatif", L"rotation"},
    {L"travel", L"limits"},
    {L"range", L"limits"},
    {L"stroke", L"limits"},
    {L"course", L"limites"},
    {L"courses", L"limites"},
    {L"butees", L"limites"},
    {L"min", L"courseminimum"},
    {L"minimum", L"courseminimum"},
    {L"max", L"coursemaximum"},
    {L"maximum", L"coursemaximum"},
    {L"body", L"geom"},
    {L"stl", L"geom"},
};

const std::vector<std::wstring>& keywords() {
  static const std::vector<std::wstring> words = [] {
    std::vector<std::wstring> all;
    for (const text::KeywordRow& row : text::keywordTable()) all.emplace_back(row.word);
    return all;
  }();
  return words;
}

// Whether the operands are those that a keyword can do something with.
bool suits(const SourceLine& line, Keyword keyword) {
  if (keyword == Keyword::frame || keyword == Keyword::part) return true;
  if (line.statement.operands.empty()) return line.text.find(L'=') != std::wstring::npos;
  const bool isSetting = keyword == Keyword::strategy || keyword == Keyword::mode;
  return !isSetting || isWholeNumber(line.statement.operands[0].text);
}

// Of a word of three letters one change leaves too little to be sure.
bool isSlip(const std::wstring& word, const std::wstring& meant) {
  const auto isNear = [&](const std::wstring& k) {
    return k.size() <= word.size() + 1 && word.size() <= k.size() + 1 && editDistance(word, k) == 1;
  };
  return word.size() > 3 && isNear(meant) &&
         std::count_if(keywords().begin(), keywords().end(), isNear) == 1;
}

std::optional<MeantKeyword> meantWord(const std::wstring& word) {
  if (text::keywordOf(word) != Keyword::none) return MeantKeyword{word, true};
  const auto* const foreign = std::find_if(std::begin(kForeign), std::end(kForeign),
                                           [&](const Foreign& row) { return word == row.word; });
  if (foreign != std::end(kForeign)) return MeantKeyword{std::wstring(foreign->keyword)};
  const std::optional<std::wstring> near = closest(word, keywords());
  if (!near) return std::nullopt;
  return MeantKeyword{*near, isSlip(word, *near)};
}

// The letter below an accent of French or German, as Latin-1 and Unicode number them.
wchar_t withoutAccent(wchar_t c) {
  constexpr std::wstring_view kLetters =
      L"aaaaaaaceeeeiiiidnooooo\xD7ouuuuy\xDE\xDF"
      L"aaaaaaaceeeeiiiidnooooo\xF7ouuuuy\xFEy";
  return c >= 0xC0 && c <= 0xFF ? kLetters[static_cast<std::size_t>(c - 0xC0)] : c;
}

}  // namespace

std::optional<MeantKeyword> meantKeyword(const SourceLine& line) {
  std::optional<MeantKeyword> meant = meantWord(plain(line.statement.keyword.text));
  if (meant && !suits(line, text::keywordOf(meant->word))) meant.reset();
  return meant;
}

std::wstring plain(std::wstring_view text) {
  std::wstring letters = toWide(shownText(text));
  for (wchar_t& c : letters) {
    c = c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : withoutAccent(c);
  }
  return letters;
}

}  // namespace korvo::checking
