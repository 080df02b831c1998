#include "platform/text/Keywords.h"

#include <algorithm>

namespace korvo::text {
namespace {

// A keyword with one spelling only serves the files of both dialects.
constexpr KeywordRow kRows[] = {
    {L"lien", Keyword::link, true, true},
    {L"boucle", Keyword::loop, true, false},
    {L"loop", Keyword::loop, false, true},
    {L"bati", Keyword::frame, true, false},
    {L"frame", Keyword::frame, false, true},
    {L"piece", Keyword::part, true, false},
    {L"table", Keyword::part, true, true},
    {L"part", Keyword::part, false, true},
    {L"outil", Keyword::tool, true, false},
    {L"tool", Keyword::tool, false, true},
    {L"geom", Keyword::geometry, true, true},
    {L"geometry", Keyword::geometry, false, true},
    {L"axe", Keyword::linearAxis, true, false},
    {L"axis", Keyword::linearAxis, false, true},
    {L"translation", Keyword::linearAxis, true, true},
    {L"canon", Keyword::drillGun, true, false},
    {L"gun", Keyword::drillGun, false, true},
    {L"drillgun", Keyword::drillGun, false, true},
    {L"rotation", Keyword::rotaryAxis, true, true},
    {L"strategie", Keyword::strategy, true, false},
    {L"strategy", Keyword::strategy, false, true},
    {L"mode", Keyword::mode, true, true},
    {L"courseminimum", Keyword::minimum, true, true},
    {L"coursemaximum", Keyword::maximum, true, true},
    {L"limites", Keyword::limits, true, false},
    {L"limits", Keyword::limits, false, true},
    {L"pointderotation", Keyword::rotationPoint, true, false},
    {L"rotationpoint", Keyword::rotationPoint, false, true},
    {L"collision", Keyword::collision, true, true},
    {L"collisions", Keyword::collision, true, true},
};

wchar_t lowered(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c | 0x20) : c; }

bool spells(std::wstring_view word, std::wstring_view lower) {
  return std::ranges::equal(word, lower, {}, lowered);
}

}  // namespace

std::span<const KeywordRow> keywordTable() { return kRows; }

Keyword keywordOf(std::wstring_view word) {
  for (const KeywordRow& row : kRows)
    if (spells(word, row.word)) return row.keyword;
  return Keyword::none;
}

bool isElementKeyword(Keyword keyword) {
  switch (keyword) {
    case Keyword::frame:
    case Keyword::part:
    case Keyword::tool:
    case Keyword::geometry:
    case Keyword::linearAxis:
    case Keyword::drillGun:
    case Keyword::rotaryAxis:
      return true;
    default:
      return false;
  }
}

}  // namespace korvo::text
