#include "platform/os/Names.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "platform/os/Files.h"

namespace korvo::os {
namespace {

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

// --- Case

TEST(NameCase, FoldsAsciiAndLatin1LettersOnly) {
  for (wchar_t c = 0; c < 0x600; ++c) {
    const bool isUpper =
        (c >= L'A' && c <= L'Z') || (c >= 0xC0 && c <= 0xDE && c != 0xD7 /* times sign */);
    EXPECT_EQ(lowered(c), isUpper ? c + 0x20 : c) << static_cast<int>(c);
  }
}

struct CompareRow {
  const char* name;
  const wchar_t* a;
  const wchar_t* b;
  int sign;
};

std::ostream& operator<<(std::ostream& out, const CompareRow& row) { return out << row.name; }

class WideCompare : public testing::TestWithParam<CompareRow> {};

int signOf(int value) { return (value > 0) - (value < 0); }

TEST_P(WideCompare, IgnoresCase) {
  const CompareRow& row = GetParam();
  EXPECT_EQ(signOf(_wcsicmp(row.a, row.b)), row.sign);
  EXPECT_EQ(signOf(_wcsicmp(row.b, row.a)), -row.sign);
}

INSTANTIATE_TEST_SUITE_P(
    Table, WideCompare,
    testing::Values(CompareRow{"Equal", L"axe_x", L"axe_x", 0},
                    CompareRow{"CaseDiffers", L"AXE_x", L"axe_X", 0},
                    CompareRow{"BothEmpty", L"", L"", 0}, CompareRow{"EmptyIsFirst", L"", L"a", -1},
                    CompareRow{"PrefixIsFirst", L"AXE", L"axe_x", -1},
                    CompareRow{"LastLetterDecides", L"AXE_X", L"axe_y", -1},
                    CompareRow{"AccentedLetters", L"TÊTE", L"tête", 0},
                    CompareRow{"TimesIsNotDivided", L"\xD7", L"\xF7", -1},
                    CompareRow{"SharpSIsNoY", L"\xDF", L"\xFF", -1},
                    // As lower case: "_" (5F) lies between the capital and the small letters.
                    CompareRow{"UnderscoreBeforeLetters", L"_", L"A", -1},
                    CompareRow{"LettersBeyondLatin1KeepTheirCase", L"\x0391", L"\x03B1", -1},
                    CompareRow{"NegativeCharactersAreLast", L"\xFFFFFFFF", L"a", 1}),
    rowName);

TEST(NarrowCompare, ReadsUtf8BeforeItFolds) {
  EXPECT_TRUE(isSameIgnoringCase("T\xC3\x8ATE.STL", "t\xC3\xAAte.stl"));
  EXPECT_FALSE(isSameIgnoringCase("t\xC3\xAAte", "tete"));
}

TEST(NarrowCompare, ReadsOtherBytesAsLatin1) {
  EXPECT_TRUE(isSameIgnoringCase("T\xCATE", "t\xEAte"));
  EXPECT_TRUE(isSameIgnoringCase("T\xCATE", "t\xC3\xAAte"));
}

TEST(NarrowCompare, NeedsEqualLength) {
  EXPECT_FALSE(isSameIgnoringCase("head", "head.stl"));
  EXPECT_FALSE(isSameIgnoringCase("head.stl", "head"));
}

// --- Encodings

struct Utf8Row {
  const char* name;
  std::wstring wide;
  std::string bytes;
};

std::ostream& operator<<(std::ostream& out, const Utf8Row& row) { return out << row.name; }

class Utf8 : public testing::TestWithParam<Utf8Row> {};

TEST_P(Utf8, ConvertsBothWays) {
  EXPECT_EQ(utf8Of(GetParam().wide), GetParam().bytes);
  EXPECT_EQ(charactersOf(GetParam().bytes), GetParam().wide);
}

// First and last character of each length; the bytes are those of RFC 3629.
INSTANTIATE_TEST_SUITE_P(Table, Utf8,
                         testing::Values(Utf8Row{"Empty", L"", ""},
                                         Utf8Row{"Ascii", L"a\x7F", "a\x7F"},
                                         Utf8Row{"FirstOfTwo", L"\x80", "\xC2\x80"},
                                         Utf8Row{"LastOfTwo", L"\x7FF", "\xDF\xBF"},
                                         Utf8Row{"FirstOfThree", L"\x800", "\xE0\xA0\x80"},
                                         Utf8Row{"BeforeSurrogates", L"\xD7FF", "\xED\x9F\xBF"},
                                         Utf8Row{"AfterSurrogates", L"\xE000", "\xEE\x80\x80"},
                                         Utf8Row{"LastOfThree", L"\xFFFF", "\xEF\xBF\xBF"},
                                         Utf8Row{"FirstOfFour", L"\x10000", "\xF0\x90\x80\x80"},
                                         Utf8Row{"LastOfFour", L"\x10FFFF", "\xF4\x8F\xBF\xBF"},
                                         Utf8Row{"Mixed", L"h\xE9\x20AC", "h\xC3\xA9\xE2\x82\xAC"}),
                         rowName);

TEST(Utf8Names, RefuseWhatIsNoCharacter) {
  EXPECT_FALSE(utf8Of(std::wstring(1, L'\0')));
  EXPECT_FALSE(utf8Of(std::wstring(1, wchar_t{0xD800})));
  EXPECT_FALSE(utf8Of(std::wstring(1, wchar_t{0xDFFF})));
  EXPECT_FALSE(utf8Of(std::wstring(1, wchar_t{0x110000})));
  EXPECT_FALSE(utf8Of(std::wstring(1, static_cast<wchar_t>(-1))));
}

class BadUtf8 : public testing::TestWithParam<Utf8Row> {};

TEST_P(BadUtf8, IsReadAsLatin1) { EXPECT_EQ(charactersOf(GetParam().bytes), GetParam().wide); }

INSTANTIATE_TEST_SUITE_P(
    Table, BadUtf8,
    testing::Values(Utf8Row{"LoneContinuation", L"a\x80", "a\x80"},
                    Utf8Row{"CutOff", L"\xC3", "\xC3"}, Utf8Row{"CutOffByOther", L"\xC3z", "\xC3z"},
                    Utf8Row{"TooLongForAscii", L"\xC1\xBF", "\xC1\xBF"},
                    Utf8Row{"TooLongForTwo", L"\xE0\x9F\xBF", "\xE0\x9F\xBF"},
                    Utf8Row{"TooLongForThree", L"\xF0\x8F\xBF\xBF", "\xF0\x8F\xBF\xBF"},
                    Utf8Row{"Surrogate", L"\xED\xA0\x80", "\xED\xA0\x80"},
                    Utf8Row{"AboveTheLast", L"\xF4\x90\x80\x80", "\xF4\x90\x80\x80"},
                    Utf8Row{"FiveBytes", L"\xF8\x88\x80\x80\x80", "\xF8\x88\x80\x80\x80"},
                    Utf8Row{"OneBadSpoilsAll", L"\xC3\xA9\xFF", "\xC3\xA9\xFF"}),
    rowName);

TEST(ByteNames, TakeWhatFitsOneByte) {
  EXPECT_EQ(bytesOf(L"a\xE9\xFF"), "a\xE9\xFF");
  EXPECT_FALSE(bytesOf(L"a\x100"));
  EXPECT_FALSE(bytesOf(std::wstring(1, L'\0')));
  EXPECT_FALSE(bytesOf(std::wstring(1, static_cast<wchar_t>(-1))));
}

RC_GTEST_PROP(NameLaws, Utf8OfCharactersComesBack, ()) {
  const auto character = rc::gen::map(rc::gen::inRange(1, 0x10FFFF - 0x800),
                                      [](int c) { return wchar_t{c < 0xD800 ? c : c + 0x800}; });
  const auto text = *rc::gen::container<std::wstring>(character);
  RC_ASSERT(charactersOf(utf8Of(text).value()) == text);
}

RC_GTEST_PROP(NameLaws, AnyBytesGiveCharacters, (const std::string& bytes)) {
  RC_ASSERT(charactersOf(bytes).size() <= bytes.size());
  RC_ASSERT(isSameIgnoringCase(bytes, bytes));
}

}  // namespace
}  // namespace korvo::os
