// What holds for every rule of the checker: its examples show it, both languages say it.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <set>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

using korvo::Language;
using korvo::RulePage;
using korvo::test::TempDir;

namespace {

// --- the geometry files beside m.def that examples may name

std::string littleEndian(std::uint32_t word) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(word >> 8 * i & 0xFF);
  return bytes;
}

// A binary STL of one right-angled triangle with legs of `size` mm.
std::string stlOf(float size) {
  const float numbers[] = {0, 0, 1, 0, 0, 0, size, 0, 0, 0, size, 0};
  std::string bytes = std::string(80, ' ') + littleEndian(1);
  for (const float number : numbers) bytes += littleEndian(std::bit_cast<std::uint32_t>(number));
  return bytes + std::string(2, '\0');
}

// head.stl     a body of 400 mm
// metres.stl   a body of 0.4 mm
// empty.stl    no byte
// damaged.stl  head.stl without its last bytes
// table.zrn    a NURBS surface of 2 x 2 poles
// curves.zrn   a polyline alone
void writeBodies(const TempDir& folder) {
  folder.write("head.stl", stlOf(400));
  folder.write("metres.stl", stlOf(0.4f));
  folder.write("empty.stl", "");
  folder.write("damaged.stl", stlOf(400).substr(0, 120));
  folder.write("table.zrn",
               "2 2 9\n0 0 0 1\n9 0 0 1\n0 9 0 1\n9 9 0 1\n1 1\n0 0\n0 1\n0 1\n"
               "4\n0\n0\n1\n1\n4\n0\n0\n1\n1\n");
  folder.write("curves.zrn", "2 2 1\n0 0 0\n9 0 0\n");
}

std::size_t countOf(const RulePage& page, const std::string& lines) {
  const TempDir folder;
  writeBodies(folder);
  const korvo::CheckResult result = korvo::check(folder.write("m.def", lines), page.format);
  return static_cast<std::size_t>(
      std::count_if(result.diagnostics.begin(), result.diagnostics.end(),
                    [&](const korvo::Diagnostic& d) { return d.code == page.code; }));
}

std::set<std::string> placesOf(const std::string& text) {
  std::set<std::string> places;
  for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at + 1)) {
    places.insert(text.substr(at, 3));
  }
  return places;
}

class EveryRule : public testing::TestWithParam<RulePage> {};

TEST_P(EveryRule, FindsItsWrongExampleAndNothingInItsRightOne) {
  const RulePage& page = GetParam();
  if (page.wrong.empty()) {
    // No lines show these: there is no file, or nobody knows how to write one.
    EXPECT_TRUE(page.code == "file-unreadable" || page.code == "not-loaded") << page.code;
    return;
  }
  EXPECT_GE(countOf(page, page.wrong), 1u);
  EXPECT_EQ(countOf(page, page.right), 0u);
}

TEST_P(EveryRule, SaysTheSameInBothLanguages) {
  const RulePage& english = GetParam();
  const std::vector<RulePage> pages = korvo::rulePages(Language::french);
  const auto french = std::find_if(pages.begin(), pages.end(),
                                   [&](const RulePage& p) { return p.code == english.code; });
  ASSERT_NE(french, pages.end());
  EXPECT_EQ(placesOf(english.sentence), placesOf(french->sentence));
  EXPECT_EQ(placesOf(english.suggestion), placesOf(french->suggestion));
  EXPECT_EQ(english.suggestion.empty(), french->suggestion.empty());
  EXPECT_NE(english.sentence, french->sentence);
  EXPECT_NE(english.meaning, french->meaning);
  EXPECT_GE(english.meaning.size(), 40u);
  EXPECT_GE(french->meaning.size(), 40u);
}

INSTANTIATE_TEST_SUITE_P(CheckRules, EveryRule, testing::ValuesIn(korvo::rulePages()),
                         [](const auto& row) {
                           std::string name = row.param.code;
                           std::replace(name.begin(), name.end(), '-', '_');
                           return name;
                         });

TEST(CheckRules, HaveCodesOfTheirOwn) {
  std::set<std::string> codes;
  for (const RulePage& page : korvo::rulePages()) {
    EXPECT_TRUE(codes.insert(page.code).second) << page.code;
  }
}

}  // namespace
