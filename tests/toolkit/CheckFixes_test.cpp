#include "toolkit/check/Fixes.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

using korvo::applyFixes;
using korvo::Diagnostic;
using korvo::Fix;

namespace {

Diagnostic with(const Fix& fix) {
  Diagnostic d;
  d.fix = fix;
  return d;
}

std::vector<Diagnostic> all(const std::vector<Fix>& fixes) {
  std::vector<Diagnostic> diagnostics;
  for (const Fix& fix : fixes) diagnostics.push_back(with(fix));
  return diagnostics;
}

struct Row {
  const char* name;
  std::string before;
  std::vector<Fix> fixes;
  std::string after;
};

// Without it the fixes would be shown as bytes.
void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class Fixes : public testing::TestWithParam<Row> {};

TEST_P(Fixes, GiveTheBytes) {
  EXPECT_EQ(applyFixes(GetParam().before, all(GetParam().fixes)), GetParam().after);
}

std::string rowName(const testing::TestParamInfo<Row>& row) { return row.param.name; }

INSTANTIATE_TEST_SUITE_P(
    Applied, Fixes,
    testing::Values(
        Row{"NoneChangeNothing", "axis=X,1,x\n", {}, "axis=X,1,x\n"},
        Row{"NoFile", "", {{1, 1, 0, "x"}}, ""},
        Row{"AWord", "frame\naxs=X,1,x\n", {{2, 1, 3, "axis"}}, "frame\naxis=X,1,x\n"},
        Row{"AnInsertion", "axis X,1,x\n", {{1, 5, 0, "="}}, "axis= X,1,x\n"},
        Row{"ARemoval", "file='a.stl'\n", {{1, 6, 1, ""}, {1, 12, 1, ""}}, "file=a.stl\n"},
        Row{"BehindTheLastCharacter", "mode", {{1, 5, 0, "=1"}}, "mode=1"},
        Row{"InAnyOrder", "a,b\nc\n", {{2, 1, 1, "C"}, {1, 3, 1, "B"}, {1, 1, 1, "A"}}, "A,B\nC\n"},
        Row{"NextToEachOther", "abcd", {{1, 1, 2, "X"}, {1, 3, 2, "Y"}}, "XY"},
        Row{"TheLastLineWithoutAnEnd", "a\nb", {{2, 1, 1, "B"}}, "a\nB"},
        Row{"EmptyLinesCount", "\n\nb\n", {{3, 1, 1, "B"}}, "\n\nB\n"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    OtherBytesStay, Fixes,
    testing::Values(
        Row{"LineEnds", "a\r\nb\nc\r\n", {{1, 1, 1, "A"}, {3, 1, 1, "C"}}, "A\r\nb\nC\r\n"},
        Row{"TheMarkIsNoColumn",
            "\xEF\xBB\xBF"
            "frme\n",
            {{1, 1, 4, "frame"}},
            "\xEF\xBB\xBF"
            "frame\n"},
        Row{"TabsAreOneColumn", "\t a\n", {{1, 3, 1, "b"}}, "\t b\n"},
        Row{"Nul", std::string("a\0b\n", 4), {{1, 3, 1, "B"}}, std::string("a\0B\n", 4)},
        Row{"BehindTheLongestLine",
            "a" + std::string(1300, 'x') + "\nb",
            {{1, 1, 1, "A"}},
            "A" + std::string(1300, 'x') + "\nb"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Characters, Fixes,
    testing::Values(
        // Two bytes make one character of UTF-8, four bytes too.
        Row{"OfUtf8",
            "\xC3\xA9,\xF0\x9F\x94\xA7,b",
            {{1, 5, 1, "B"}},
            "\xC3\xA9,\xF0\x9F\x94\xA7,B"},
        Row{"OfUtf8AreReplacedWhole", "\xC3\xA9t\xC3\xA9", {{1, 3, 1, "e"}}, "\xC3\xA9te"},
        Row{"OfLatin1", "\xE9,b", {{1, 3, 1, "B"}}, "\xE9,B"},
        Row{"StayLatin1", "\xE9,b", {{1, 3, 1, "\xC3\xA8"}}, "\xE9,\xE8"},
        Row{"ThatLatin1LacksAreLeftOut", "\xE9,b", {{1, 3, 1, "\xE2\x82\xAC"}}, "\xE9,b"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    LeftOut, Fixes,
    testing::Values(
        Row{"OfTwoThatOverlapTheSecond", "abcd", {{1, 1, 3, "X"}, {1, 3, 2, "Y"}}, "Xd"},
        Row{"OneInsideAnother", "abcd", {{1, 1, 4, "X"}, {1, 2, 1, "Y"}}, "X"},
        Row{"TheSecondInsertionAtAPlace", "ab", {{1, 2, 0, "X"}, {1, 2, 0, "Y"}}, "aXb"},
        Row{"AnInsertionWhereOneBegins", "ab", {{1, 2, 1, "X"}, {1, 2, 0, "Y"}}, "aX"},
        Row{"NotTheOneBehindAnOverlap",
            "abcd",
            {{1, 1, 2, "X"}, {1, 2, 2, "Y"}, {1, 4, 1, "Z"}},
            "XcZ"},
        Row{"LineZero", "a\n", {{0, 1, 1, "X"}}, "a\n"},
        Row{"ALineBehindTheFile", "a\n", {{2, 1, 0, "X"}}, "a\n"},
        Row{"ColumnZero", "a\n", {{1, 0, 1, "X"}}, "a\n"},
        Row{"ANegativeLength", "a\n", {{1, 1, -1, "X"}}, "a\n"},
        Row{"BeyondTheLine", "ab\ncd\n", {{1, 2, 2, "X"}}, "ab\ncd\n"},
        Row{"BeyondTheReturn", "ab\r\ncd\n", {{1, 2, 2, "X"}}, "ab\r\ncd\n"},
        Row{"ALineFeed", "ab\n", {{1, 1, 1, "X\n"}}, "ab\n"},
        Row{"ACarriageReturn", "ab\n", {{1, 1, 1, "X\r"}}, "ab\n"},
        Row{"BehindTheLongestLine",
            std::string(1300, 'x'),
            {{1, 1204, 1, "X"}},
            std::string(1300, 'x')}),
    rowName);

Fix anyFix() {
  return {*rc::gen::inRange(-1, 6), *rc::gen::inRange(-1, 12), *rc::gen::inRange(-1, 6),
          *rc::gen::container<std::string>(rc::gen::element('a', '\n', '\xC3', '\xA9'))};
}

// Whatever the bytes and the fixes: lines stay lines.
RC_GTEST_PROP(FixLaws, KeepTheNumberOfLines, ()) {
  const auto bytes = *rc::gen::container<std::string>(
      rc::gen::element('a', ',', '\n', '\r', '\t', '\xC3', '\xA9', '\xEF', '\0'));
  std::vector<Fix> fixes;
  for (int n = *rc::gen::inRange(0, 6); n > 0; --n) fixes.push_back(anyFix());
  const std::string after = applyFixes(bytes, all(fixes));
  RC_ASSERT(std::count(after.begin(), after.end(), '\n') ==
            std::count(bytes.begin(), bytes.end(), '\n'));
}

// One fix inside its line changes that stretch and nothing else.
RC_GTEST_PROP(FixLaws, KeepWhatStandsAround, ()) {
  const auto text = rc::gen::container<std::string>(rc::gen::element('a', ',', '=', ' '));
  const std::string before = *text, gone = *text, behind = *text, come = *text;
  const Fix fix{2, static_cast<int>(before.size()) + 1, static_cast<int>(gone.size()), come};
  RC_PRE(!(before + gone + behind).empty());  // an empty last line is none
  RC_ASSERT(applyFixes("#\n" + before + gone + behind, all({fix})) ==
            "#\n" + before + come + behind);
}

}  // namespace
