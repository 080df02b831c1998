#include "toolkit/Text.h"

#include <ostream>

namespace {

TEST(Text, WideTextBecomesUtf8) {
  EXPECT_EQ(korvo::toUtf8(L"axis \u00e9 \u20ac"), "axis \xC3\xA9 \xE2\x82\xAC");
}

TEST(Text, CharactersBeyondTheFirstPlaneTakeFourBytes) {
  EXPECT_EQ(korvo::toUtf8(L"\U0001F600"), "\xF0\x9F\x98\x80");
}

TEST(Text, WhatIsNoCharacterIsReplaced) {
  const wchar_t broken[] = {static_cast<wchar_t>(0xD800), 0};
  EXPECT_EQ(korvo::toUtf8(broken), "\xEF\xBF\xBD");
}

TEST(Text, Utf8ComesBack) {
  EXPECT_EQ(korvo::toWide("t\xC3\xAAte"), L"t\u00eate");
  EXPECT_EQ(korvo::toWide(""), L"");
}

TEST(Text, BytesThatAreNotUtf8AreLatin1) { EXPECT_EQ(korvo::toWide("t\xEAte"), L"t\u00eate"); }

// --- text of files, one byte a character

struct Shown {
  const char* name;
  std::wstring held;
  std::string shown;
};

std::ostream& operator<<(std::ostream& out, const Shown& row) { return out << row.shown; }

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

class ShownText : public testing::TestWithParam<Shown> {};

TEST_P(ShownText, IsAsItWasWritten) {
  EXPECT_EQ(korvo::shownText(GetParam().held), GetParam().shown);
}

INSTANTIATE_TEST_SUITE_P(
    Names, ShownText,
    testing::Values(Shown{"Empty", L"", ""}, Shown{"Ascii", L"AXE_X1", "AXE_X1"},
                    Shown{"Utf8OfTwoBytes", L"Gr\xC3\xB6\xC3\x9Fy", "Größy"},
                    Shown{"Utf8OfThreeBytes", L"\xE6\x97\xA5\xE6\x9C\xAC", "日本"},
                    Shown{"Utf8OfFourBytes", L"x\xF0\x9F\x98\x80y", "x😀y"},
                    Shown{"Latin1", L"gr\xF6\xDFy", "größy"},
                    Shown{"Latin1AtTheEnd", L"caf\xE9", "café"},
                    Shown{"Latin1BesideUtf8", L"\xE9/\xC3\xA9", "é/é"},
                    Shown{"CharactersOfAProgram", L"日本\U0001F600", "日本😀"},
                    Shown{"CharactersBesideBytes", L"日本/\xC3\xB6.stl", "日本/ö.stl"},
                    Shown{"CutOffUtf8IsLatin1", L"\xE6\x97", "æ\xC2\x97"},
                    Shown{"WhatIsNoCharacter", L"a\x110000", "a\xEF\xBF\xBD"}),
    rowName);

// In upper case byte by byte, as the library puts names of format 2: E6, F0 and E0 lose bit 5.
INSTANTIATE_TEST_SUITE_P(
    UpperCase, ShownText,
    testing::Values(Shown{"ThreeBytes", L"\xC6\x97\xA5\xC6\x9C\xAC", "日本"},
                    Shown{"FourBytes", L"X\xD0\x9F\x98\x80Y", "X😀Y"},
                    Shown{"ThreeBytesThatLeadWithTheLeast", L"\xC0\xB8\x81", "ก"},
                    Shown{"TwoBytesAsTheyWere", L"GR\xC3\xB6\xC3\x9FY", "GRößY"},
                    Shown{"Latin1", L"GR\xD6\xDFY", "GRÖßY"},
                    Shown{"Latin1OfTwoCapitals", L"\xC6\xD0", "ÆÐ"}),
    rowName);

TEST(ShownBytes, OfAPathAreReadNameByName) {
  EXPECT_EQ(korvo::shownText(std::string_view("Gr\xC3\xB6\xC3\x9Fy/caf\xE9.def")),
            "Größy/café.def");
}

}  // namespace
