#include <gtest/gtest.h>

#include <clocale>
#include <cwchar>
#include <functional>
#include <string>

#include "platform/zgeo/UTools.h"
#include "tests/support/CommaLocale.h"

namespace zgeo {
namespace {

// --- What formats give

struct Row {
  const char* name;
  std::wstring result;
  std::wstring expected;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }
std::string rowName(const testing::TestParamInfo<Row>& info) { return info.param.name; }

class Formatted : public testing::TestWithParam<Row> {};

TEST_P(Formatted, GivesThisText) { EXPECT_EQ(GetParam().result, GetParam().expected); }

template <typename... Arguments>
Row row(const char* name, const std::wstring& expected, const wchar_t* format,
        Arguments... arguments) {
  return {name, UTools::_formatted(format, arguments...), expected};
}

INSTANTIATE_TEST_SUITE_P(WideText, Formatted,
                         testing::Values(row("LowerS", L"<abc>", L"<%s>", L"abc"),
                                         row("UpperS", L"<abc>", L"<%S>", L"abc"),
                                         row("LongS", L"<abc>", L"<%ls>", L"abc"),
                                         row("NarrowText", L"<abc>", L"<%hs>", "abc"),
                                         row("BeyondAscii", L"\u00E9 \u20AC \U0001F600",
                                             L"%s \u20AC %S", L"\u00E9", L"\U0001F600"),
                                         row("WidthLeft", L"<ab   >", L"<%-5s>", L"ab"),
                                         row("WidthRight", L"<   ab>", L"<%5S>", L"ab"),
                                         row("Precision", L"<abc>", L"<%.3s>", L"abcdef"),
                                         row("WidthFromArgument", L"<  ab>", L"<%*s>", 4, L"ab"),
                                         row("SignOfPercent", L"100% s %d", L"100%% s %%d"),
                                         row("PercentBeforeText", L"%abc", L"%%%s", L"abc"),
                                         row("TextOfTheArgumentIsNoFormat", L"%d%s", L"%s",
                                             L"%d%s")),
                         rowName);

INSTANTIATE_TEST_SUITE_P(
    Numbers, Formatted,
    testing::Values(row("Integer", L"KMV<3> (p) [ ", L"KMV<%d> (%s) [ ", 3, L"p"),
                    row("SignedFixed", L"   +10.000", L"%+10.3lf", 10.0),
                    row("SignedFixedLeft", L"-2.500    ", L"%+-10.3lf", -2.5),
                    row("WithoutLength", L"0.125", L"%.3f", 0.125),
                    row("Hexadecimal", L"ff", L"%x", 255u),
                    row("Long", L"9000000000", L"%lld", 9000000000LL),
                    row("Character", L"<A>", L"<%c>", 'A'),
                    row("MixedOrder", L"1 a 2.5 b", L"%d %s %.1lf %S", 1, L"a", 2.5, L"b")),
    rowName);

INSTANTIATE_TEST_SUITE_P(Edges, Formatted,
                         testing::Values(row("EmptyFormat", L"", L""),
                                         row("PlainText", L"axis", L"axis"),
                                         row("NullFormat", L"", nullptr),
                                         row("UnfinishedConversion", L"", L"abc%"),
                                         row("UnfinishedWidth", L"", L"abc%5"),
                                         row("NarrowTextThatIsNotAscii", L"", L"%hs", "\xE9")),
                         rowName);

TEST(FormattedLength, IsNotLimitedToAnyBuffer) {
  for (const std::size_t size : {254u, 255u, 256u, 257u, 511u, 512u, 513u, 100000u}) {
    const std::wstring text(size, L'x');
    EXPECT_EQ(UTools::_formatted(L"%s", text.c_str()), text);
    EXPECT_EQ(UTools::_formatted(L"%d %s|%d", 12, text.c_str(), 34), L"12 " + text + L"|34");
  }
}

TEST(FormattedLength, AbsurdWidthGivesNothing) {
  EXPECT_EQ(UTools::_formatted(L"%20000000d", 1), L"");
}

// --- The host's locale

#if !defined(_WIN32)

/// What the host itself prints for 1234.5 on this thread.
std::wstring hostNumber() {
  wchar_t buffer[32];
  std::swprintf(buffer, 32, L"%.1lf", 1234.5);
  return buffer;
}

TEST(FormattedLocale, ProcessWithDecimalCommaStillGetsAPoint) {
  const korvo::test::CommaLocale comma;
  ASSERT_TRUE(comma.isSet());
  ASSERT_EQ(hostNumber(), L"1234,5");
  EXPECT_EQ(UTools::_formatted(L"%.1lf %s", 1234.5, L"x"), L"1234.5 x");
}

TEST(FormattedLocale, ProcessKeepsItsLocale) {
  const korvo::test::CommaLocale comma;
  ASSERT_TRUE(comma.isSet());
  UTools::_formatted(L"%.1lf", 1234.5);
  UTools::_formatted(L"%hs", "\xE9");  // A failed one too.
  EXPECT_EQ(hostNumber(), L"1234,5");
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "korvo_comma");
}

TEST(FormattedLocale, ThreadWithItsOwnLocaleGetsAPointAndKeepsIt) {
  const korvo::test::CommaLocale comma;
  ASSERT_TRUE(comma.isSet());
  const locale_t own = duplocale(LC_GLOBAL_LOCALE);
  ASSERT_NE(own, locale_t{});
  const locale_t former = uselocale(own);
  const std::wstring text = UTools::_formatted(L"%.1lf", 1234.5);
  const locale_t afterwards = uselocale(former);
  freelocale(own);
  EXPECT_EQ(text, L"1234.5");
  EXPECT_EQ(afterwards, own);
}

TEST(FormattedLocale, GroupingIsThatOfTheCLocale) {
  const korvo::test::CommaLocale comma;
  ASSERT_TRUE(comma.isSet());
  EXPECT_EQ(UTools::_formatted(L"%'d", 1234567), L"1234567");
}

#endif

}  // namespace
}  // namespace zgeo
