#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "platform/zgeo/UTools.h"

namespace zgeo {
namespace {

using Parts = std::vector<std::wstring>;

// --- _split

struct SplitRow {
  const char* name;
  std::wstring text;
  Parts kept;
  Parts dropped;
};

std::string splitName(const testing::TestParamInfo<SplitRow>& info) { return info.param.name; }

class Split : public testing::TestWithParam<SplitRow> {};

TEST_P(Split, KeepsEmptyPartsOrDropsThem) {
  EXPECT_EQ(UTools::_split(GetParam().text, L',', true), GetParam().kept);
  EXPECT_EQ(UTools::_split(GetParam().text, L',', false), GetParam().dropped);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Split,
    testing::Values(SplitRow{"Empty", L"", {L""}, {}},
                    SplitRow{"NoSeparator", L"abc", {L"abc"}, {L"abc"}},
                    SplitRow{"TwoParts", L"a,b", {L"a", L"b"}, {L"a", L"b"}},
                    SplitRow{"SeparatorAlone", L",", {L"", L""}, {}},
                    SplitRow{"AtBothEnds", L",a,", {L"", L"a", L""}, {L"a"}},
                    SplitRow{"Doubled", L"a,,b", {L"a", L"", L"b"}, {L"a", L"b"}},
                    SplitRow{"BlanksStay", L" a , b ", {L" a ", L" b "}, {L" a ", L" b "}},
                    SplitRow{"OtherSeparators", L"a=b;c", {L"a=b;c"}, {L"a=b;c"}}),
    splitName);

RC_GTEST_PROP(SplitLaws, PartsJoinedAreTheTextAndHoldNoSeparator, ()) {
  const auto text = *rc::gen::container<std::wstring>(rc::gen::elementOf(std::wstring(L"ab,")));
  const Parts parts = UTools::_split(text, L',', true);
  std::wstring joined;
  for (const std::wstring& part : parts) {
    RC_ASSERT(part.find(L',') == std::wstring::npos);
    joined += part + L',';
  }
  joined.pop_back();
  RC_ASSERT(joined == text);
  Parts withoutEmpty = parts;
  std::erase(withoutEmpty, L"");
  RC_ASSERT(UTools::_split(text, L',', false) == withoutEmpty);
}

// --- _simplified, _low, _up

struct TextRow {
  const char* name;
  std::wstring given;
  std::wstring expected;
};

std::string textName(const testing::TestParamInfo<TextRow>& info) { return info.param.name; }

class Simplified : public testing::TestWithParam<TextRow> {};

TEST_P(Simplified, TrimsAndMakesEveryRunOfWhiteSpaceOneBlank) {
  EXPECT_EQ(UTools::_simplified(GetParam().given, false, false), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Simplified,
    testing::Values(
        TextRow{"Empty", L"", L""}, TextRow{"BlanksOnly", L"   ", L""},
        TextRow{"Inner", L"a   b", L"a b"}, TextRow{"Ends", L"  a b  ", L"a b"},
        TextRow{"Tab", L"\ta\tb\t", L"a b"},
        TextRow{"LineEndOfWindows", L"axe = X, 1\r\n", L"axe = X, 1"},
        TextRow{"VerticalTab", L"\va\vb\v", L"a b"}, TextRow{"FormFeed", L"\fa\fb\f", L"a b"},
        TextRow{"CarriageReturn", L"\ra\rb\r", L"a b"}, TextRow{"LineFeed", L"\na\nb\n", L"a b"},
        TextRow{"MixedRun", L"a \t\r\n\v\f b", L"a b"}, TextRow{"CaseStays", L"aXe", L"aXe"},
        TextRow{"NoBreakSpaceIsText", L"\u00A0a\u00A0", L"\u00A0a\u00A0"}),
    textName);

TEST(SimplifiedCase, FoldsWhenAskedToAndLowerWins) {
  EXPECT_EQ(UTools::_simplified(L"  aXe  Z\u00C9 ", true, false), L"axe z\u00E9");
  EXPECT_EQ(UTools::_simplified(L"  aXe  z\u00E9 ", false, true), L"AXE Z\u00C9");
  EXPECT_EQ(UTools::_simplified(L"aXe", true, true), L"axe");
}

struct CaseRow {
  const char* name;
  std::wstring lower;
  std::wstring upper;
};

std::string caseName(const testing::TestParamInfo<CaseRow>& info) { return info.param.name; }

class Case : public testing::TestWithParam<CaseRow> {};

TEST_P(Case, FoldsBothWays) {
  EXPECT_EQ(UTools::_low(GetParam().upper), GetParam().lower);
  EXPECT_EQ(UTools::_up(GetParam().lower), GetParam().upper);
}

INSTANTIATE_TEST_SUITE_P(
    Letters, Case,
    testing::Values(CaseRow{"Empty", L"", L""},
                    CaseRow{"Ascii", L"abcdefghijklmnopqrstuvwxyz", L"ABCDEFGHIJKLMNOPQRSTUVWXYZ"},
                    CaseRow{"Latin1FirstHalf", L"\u00E0\u00E9\u00EF\u00F6",
                            L"\u00C0\u00C9\u00CF\u00D6"},
                    CaseRow{"Latin1SecondHalf", L"\u00F8\u00FC\u00FE", L"\u00D8\u00DC\u00DE"},
                    CaseRow{"Mixed", L"pi\u00E8ce_1", L"PI\u00C8CE_1"}),
    caseName);

class Caseless : public testing::TestWithParam<TextRow> {};

TEST_P(Caseless, StaysAsItIs) {
  EXPECT_EQ(UTools::_low(GetParam().given), GetParam().expected);
  EXPECT_EQ(UTools::_up(GetParam().given), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, Caseless,
                         testing::Values(TextRow{"AroundTheAsciiLetters", L"@[`{", L"@[`{"},
                                         TextRow{"Digits", L"0123456789", L"0123456789"},
                                         TextRow{"MultiplicationSign", L"\u00D7", L"\u00D7"},
                                         TextRow{"DivisionSign", L"\u00F7", L"\u00F7"},
                                         TextRow{"SharpS", L"\u00DF", L"\u00DF"},
                                         TextRow{"YWithDiaeresis", L"\u00FF", L"\u00FF"},
                                         TextRow{"MicroSign", L"\u00B5", L"\u00B5"},
                                         TextRow{"LettersOutsideLatin1",
                                                 L"\u0416\u0436\u03A9\u03C9",
                                                 L"\u0416\u0436\u03A9\u03C9"}),
                         textName);

// --- _removeFrom

struct RemoveRow {
  const char* name;
  std::wstring text;
  std::wstring part;
  std::wstring expected;
};

std::string removeName(const testing::TestParamInfo<RemoveRow>& info) { return info.param.name; }

class RemoveFrom : public testing::TestWithParam<RemoveRow> {};

TEST_P(RemoveFrom, TakesOutTheFirstOccurrence) {
  EXPECT_EQ(UTools::_removeFrom(GetParam().text, GetParam().part), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Texts, RemoveFrom,
                         testing::Values(RemoveRow{"AtTheFront", L"AXE_X", L"AXE_", L"X"},
                                         RemoveRow{"Inside", L"MY_AXE_X", L"AXE_", L"MY_X"},
                                         RemoveRow{"FirstOfTwo", L"a b c", L" ", L"ab c"},
                                         RemoveRow{"CaseMatters", L"axe_X", L"AXE_", L"axe_X"},
                                         RemoveRow{"NotThere", L"X", L"AXE_", L"X"},
                                         RemoveRow{"WholeText", L"AXE_", L"AXE_", L""},
                                         RemoveRow{"EmptyPart", L"X", L"", L"X"},
                                         RemoveRow{"EmptyText", L"", L"AXE_", L""}),
                         removeName);

// --- _toWS

struct BytesRow {
  const char* name;
  std::string bytes;
  std::wstring expected;
};

std::string bytesName(const testing::TestParamInfo<BytesRow>& info) { return info.param.name; }

class ToWide : public testing::TestWithParam<BytesRow> {};

TEST_P(ToWide, ReadsUtf8ElseLatin1) {
  const BytesRow& row = GetParam();
  EXPECT_EQ(UTools::_toWS(row.bytes.c_str(), 0), row.expected);
  EXPECT_EQ(UTools::_toWS(row.bytes.data(), static_cast<int>(row.bytes.size())), row.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Utf8, ToWide,
    testing::Values(BytesRow{"Empty", "", L""}, BytesRow{"Ascii", "axe_X 1.5", L"axe_X 1.5"},
                    BytesRow{"TwoBytes",
                             "pi\xC3\xA8"
                             "ce",
                             L"pi\u00E8ce"},
                    BytesRow{"TwoBytesLeast", "\xC2\x80", L"\u0080"},
                    BytesRow{"TwoBytesMost", "\xDF\xBF", L"\u07FF"},
                    BytesRow{"ThreeBytesLeast", "\xE0\xA0\x80", L"\u0800"},
                    BytesRow{"ThreeBytes", "5 \xE2\x82\xAC", L"5 \u20AC"},
                    BytesRow{"ThreeBytesMost", "\xEF\xBF\xBF", L"\uFFFF"},
                    BytesRow{"BeforeTheSurrogates", "\xED\x9F\xBF", L"\uD7FF"},
                    BytesRow{"FourBytesLeast", "\xF0\x90\x80\x80", L"\U00010000"},
                    BytesRow{"FourBytes", "\xF0\x9F\x98\x80!", L"\U0001F600!"},
                    BytesRow{"FourBytesMost", "\xF4\x8F\xBF\xBF", L"\U0010FFFF"}),
    bytesName);

// One fault per row: the whole text is then Latin-1, its valid parts too.
INSTANTIATE_TEST_SUITE_P(
    Latin1, ToWide,
    testing::Values(
        BytesRow{"LoneHighByte",
                 "pi\xE8"
                 "ce",
                 L"pi\u00E8ce"},
        BytesRow{"HighByteAtTheEnd", "caf\xE9", L"caf\u00E9"},
        BytesRow{"ValidPartBefore", "\xC3\xA8\xE8", L"\u00C3\u00A8\u00E8"},
        BytesRow{"ValidPartBeforeALeadThatIsNone", "\xC3\xA8\xF8", L"\u00C3\u00A8\u00F8"},
        BytesRow{"ValidPartBeforeAContinuation", "\xC3\xA8\x80", L"\u00C3\u00A8\u0080"},
        BytesRow{"LoneContinuation", "a\x80", L"a\u0080"},
        BytesRow{"CutTwoBytes", "\xC3", L"\u00C3"},
        BytesRow{"CutThreeBytes", "\xE2\x82", L"\u00E2\u0082"},
        BytesRow{"CutFourBytes", "\xF0\x9F\x98", L"\u00F0\u009F\u0098"},
        BytesRow{"LongSpellingInTwoBytes", "\xC1\xBF", L"\u00C1\u00BF"},
        BytesRow{"LongSpellingInThreeBytes", "\xE0\x9F\xBF", L"\u00E0\u009F\u00BF"},
        BytesRow{"LongSpellingInFourBytes", "\xF0\x8F\xBF\xBF", L"\u00F0\u008F\u00BF\u00BF"},
        BytesRow{"FirstSurrogate", "\xED\xA0\x80", L"\u00ED\u00A0\u0080"},
        BytesRow{"LastSurrogate", "\xED\xBF\xBF", L"\u00ED\u00BF\u00BF"},
        BytesRow{"BeyondTheLastCharacter", "\xF4\x90\x80\x80", L"\u00F4\u0090\u0080\u0080"},
        BytesRow{"LeadThatIsNone", "\xF8\x88\x80\x80\x80", L"\u00F8\u0088\u0080\u0080\u0080"}),
    bytesName);

TEST(ToWideLength, ReadsThatManyBytesAndNoMore) {
  EXPECT_EQ(UTools::_toWS("abcdef", 3), L"abc");
  EXPECT_EQ(UTools::_toWS("a\xC3\xA8", 2), L"a\u00C3");  // The cut character is no UTF-8.
}

TEST(ToWideLength, TakesANulAmongCountedBytes) {
  EXPECT_EQ(UTools::_toWS("a\0b", 3), std::wstring(L"a\0b", 3));
}

TEST(ToWideLength, ZeroOrLessReadsToTheNul) {
  EXPECT_EQ(UTools::_toWS("abc\0def", 0), L"abc");
  EXPECT_EQ(UTools::_toWS("abc\0def", -1), L"abc");
}

TEST(ToWideLength, NullGivesTheEmptyText) {
  EXPECT_EQ(UTools::_toWS(nullptr, 0), L"");
  EXPECT_EQ(UTools::_toWS(nullptr, 5), L"");
}

RC_GTEST_PROP(ToWideLaws, AnyBytesGiveATextNoLongerThanThey, ()) {
  const auto bytes = *rc::gen::container<std::string>(rc::gen::arbitrary<char>());
  RC_PRE(!bytes.empty());
  const auto text = UTools::_toWS(bytes.data(), static_cast<int>(bytes.size()));
  RC_ASSERT(!text.empty() && text.size() <= bytes.size());
}

}  // namespace
}  // namespace zgeo
