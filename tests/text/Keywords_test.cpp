#include "platform/text/Keywords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

namespace korvo::text {
namespace {

// --- Words, as the reader of the definition file must know them

struct WordRow {
  const wchar_t* word;
  Keyword keyword;
};

std::string narrow(std::wstring_view text) {
  std::string result;
  for (wchar_t c : text) result.push_back(static_cast<char>(c));
  return result;
}

std::ostream& operator<<(std::ostream& out, const WordRow& row) { return out << narrow(row.word); }

const auto rowName = [](const auto& info) { return narrow(info.param.word); };

constexpr WordRow kWords[] = {{L"lien", Keyword::link},
                              {L"boucle", Keyword::loop},
                              {L"loop", Keyword::loop},
                              {L"bati", Keyword::frame},
                              {L"frame", Keyword::frame},
                              {L"piece", Keyword::part},
                              {L"table", Keyword::part},
                              {L"part", Keyword::part},
                              {L"outil", Keyword::tool},
                              {L"tool", Keyword::tool},
                              {L"geom", Keyword::geometry},
                              {L"geometry", Keyword::geometry},
                              {L"axe", Keyword::linearAxis},
                              {L"axis", Keyword::linearAxis},
                              {L"translation", Keyword::linearAxis},
                              {L"canon", Keyword::drillGun},
                              {L"gun", Keyword::drillGun},
                              {L"drillgun", Keyword::drillGun},
                              {L"rotation", Keyword::rotaryAxis},
                              {L"strategie", Keyword::strategy},
                              {L"strategy", Keyword::strategy},
                              {L"mode", Keyword::mode},
                              {L"courseminimum", Keyword::minimum},
                              {L"coursemaximum", Keyword::maximum},
                              {L"limites", Keyword::limits},
                              {L"limits", Keyword::limits},
                              {L"pointderotation", Keyword::rotationPoint},
                              {L"rotationpoint", Keyword::rotationPoint},
                              {L"collision", Keyword::collision},
                              {L"collisions", Keyword::collision}};

class Keywords : public testing::TestWithParam<WordRow> {};

TEST_P(Keywords, AreKnownInLowerCase) { EXPECT_EQ(keywordOf(GetParam().word), GetParam().keyword); }

TEST_P(Keywords, AreKnownInUpperAndMixedCase) {
  std::wstring upper = GetParam().word;
  for (wchar_t& c : upper) c = static_cast<wchar_t>(c - L'a' + L'A');
  EXPECT_EQ(keywordOf(upper), GetParam().keyword);
  std::wstring mixed = GetParam().word;
  mixed.front() = upper.front();
  EXPECT_EQ(keywordOf(mixed), GetParam().keyword);
}

TEST_P(Keywords, AreNotKnownByAPartOfThem) {
  const std::wstring word = GetParam().word;
  EXPECT_EQ(keywordOf(word + L'x'), Keyword::none);
  EXPECT_EQ(keywordOf(L'x' + word), Keyword::none);
  const Keyword shorter = keywordOf(word.substr(0, word.size() - 1));
  EXPECT_EQ(shorter, word == L"collisions" ? Keyword::collision : Keyword::none);
}

TEST_P(Keywords, BelongToADialect) {
  const auto isOurs = [](const KeywordRow& row) { return row.word == GetParam().word; };
  const auto row = std::ranges::find_if(keywordTable(), isOurs);
  ASSERT_NE(row, keywordTable().end());
  EXPECT_TRUE(row->french || row->english);
}

INSTANTIATE_TEST_SUITE_P(Word, Keywords, testing::ValuesIn(kWords), rowName);

TEST(KeywordTable, HoldsTheseWordsInThisOrder) {
  std::vector<std::wstring> expected;
  std::vector<std::wstring> words;
  for (const WordRow& row : kWords) expected.emplace_back(row.word);
  for (const KeywordRow& row : keywordTable()) words.emplace_back(row.word);
  EXPECT_EQ(words, expected);
}

TEST(KeywordTable, HasEveryKeywordInBothDialects) {
  std::map<Keyword, std::pair<bool, bool>> has;
  for (const KeywordRow& row : keywordTable()) {
    has[row.keyword].first |= row.french;
    has[row.keyword].second |= row.english;
  }
  EXPECT_EQ(has.size(), 16u);
  for (const auto& [keyword, dialects] : has) {
    EXPECT_TRUE(dialects.first) << static_cast<int>(keyword);
    EXPECT_TRUE(dialects.second) << static_cast<int>(keyword);
  }
}

TEST(KeywordOf, OtherWordsAreNone) {
  // The last two differ from "axis" and "mode" by a dotless i and an accent.
  for (const wchar_t* word :
       {L"", L"spindle", L" bati", L"bati ", L"ba ti", L"*", L"=", L"ax\x131s", L"mod\xE9"})
    EXPECT_EQ(keywordOf(word), Keyword::none);
}

TEST(KeywordOf, OnlyLettersFoldTheirCase) {
  // "[" and "{" differ by the same bit as a capital and a small letter; so do "M" and a CR.
  EXPECT_EQ(keywordOf(L"\rode"), Keyword::none);
  EXPECT_EQ(keywordOf(std::wstring_view(L"mode\0", 5)), Keyword::none);
}

TEST(ElementKeywords, AreTheSevenThatDeclareElements) {
  const std::vector<Keyword> elements = {Keyword::frame,     Keyword::part,       Keyword::tool,
                                         Keyword::geometry,  Keyword::linearAxis, Keyword::drillGun,
                                         Keyword::rotaryAxis};
  const std::vector<Keyword> others = {Keyword::none,     Keyword::link,   Keyword::loop,
                                       Keyword::strategy, Keyword::mode,   Keyword::minimum,
                                       Keyword::maximum,  Keyword::limits, Keyword::rotationPoint,
                                       Keyword::collision};
  for (Keyword keyword : elements) EXPECT_TRUE(isElementKeyword(keyword));
  for (Keyword keyword : others) EXPECT_FALSE(isElementKeyword(keyword));
}

}  // namespace
}  // namespace korvo::text
