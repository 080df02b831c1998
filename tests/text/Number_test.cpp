#include "platform/text/Number.h"

#include <rapidcheck/gtest.h>

#include <bit>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <limits>
#include <ostream>
#include <random>

#include "tests/support/CommaLocale.h"
#include "tests/support/InCLocale.h"

// The oracle of most tests here is the C library itself: sscanf and swscanf in the C locale.
namespace korvo::text {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kUntouched = 77.25;

/// What a scan said, comparable: NaNs of one sign are equal, zeros of different signs are not.
struct Answer {
  std::size_t length = 0;
  std::uint64_t bits = 0;
  bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
  return out << answer.length << " characters, value " << std::bit_cast<double>(answer.bits);
}

std::uint64_t bitsOf(double value) {
  if (std::isnan(value)) value = std::copysign(std::numeric_limits<double>::quiet_NaN(), value);
  return std::bit_cast<std::uint64_t>(value);
}

Answer answerOf(bool scanned, int length, double value) {
  return {scanned ? static_cast<std::size_t>(length) : 0, bitsOf(value)};
}

std::wstring wide(std::string_view text) {
  std::wstring result;
  for (char c : text) result.push_back(static_cast<unsigned char>(c));
  return result;
}

Answer libraryNarrow(const std::string& text) {
  const test::InCLocale scope;
  double value = kUntouched;
  int length = 0;
  const bool scanned = std::sscanf(text.c_str(), "%lf%n", &value, &length) == 1;
  return answerOf(scanned, length, value);
}

Answer libraryWide(const std::string& text) {
  const test::InCLocale scope;
  double value = kUntouched;
  int length = 0;
  const bool scanned = std::swscanf(wide(text).c_str(), L"%lf%n", &value, &length) == 1;
  return answerOf(scanned, length, value);
}

template <class Text>
Answer ours(const Text& text) {
  double value = kUntouched;
  const Scan scan = scanDouble(text, value);
  return {scan.length, bitsOf(value)};
}

void expectAsLibrary(const std::string& text) {
  EXPECT_EQ(ours(std::string_view(text)), libraryNarrow(text)) << '"' << text << '"';
  EXPECT_EQ(ours(std::wstring_view(wide(text))), libraryWide(text)) << "wide \"" << text << '"';
}

std::string printed(const char* format, int precision, double value) {
  const test::InCLocale scope;
  std::string text(2000, '\0');
  text.resize(static_cast<std::size_t>(
      std::snprintf(text.data(), text.size(), format, precision, value)));  // NOLINT
  return text;
}

// --- What people write and what goes wrong, with the values worked here

struct RealRow {
  const char* name;
  std::string text;
  std::size_t length;
  double value;
};

std::ostream& operator<<(std::ostream& out, const RealRow& row) { return out << row.text; }

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

class ScanDouble : public testing::TestWithParam<RealRow> {};

TEST_P(ScanDouble, GivesLengthAndValue) {
  const RealRow& row = GetParam();
  const Answer expected{row.length, bitsOf(row.value)};
  EXPECT_EQ(ours(std::string_view(row.text)), expected);
  EXPECT_EQ(ours(std::wstring_view(wide(row.text))), expected);
}

TEST_P(ScanDouble, GivesWhatTheCLibraryGives) { expectAsLibrary(GetParam().text); }

INSTANTIATE_TEST_SUITE_P(
    Plain, ScanDouble,
    testing::Values(
        RealRow{"Integer", "12", 2, 12}, RealRow{"Negative", "-12.5", 5, -12.5},
        RealRow{"Plus", "+3", 2, 3}, RealRow{"NegativeZero", "-0", 2, -0.0},
        RealRow{"NoIntegerPart", ".5", 2, 0.5}, RealRow{"NoFraction", "5.", 2, 5},
        RealRow{"LettersBehind", "12abc", 2, 12}, RealRow{"Exponent", "1e3", 3, 1000},
        RealRow{"CapitalExponent", "1E3", 3, 1000}, RealRow{"ExponentWithPlus", "25e+1", 5, 250},
        RealRow{"NegativeExponent", "5e-1", 4, 0.5}, RealRow{"LeadingZeros", "00012", 5, 12},
        RealRow{"SecondPointStops", "1.5.2", 3, 1.5}, RealRow{"TwoPoints", "1..2", 2, 1},
        RealRow{"CommaStops", "1,5", 1, 1}, RealRow{"DigitGroupStops", "1'000", 1, 1},
        RealRow{"FortranExponentStops", "1d5", 1, 1},
        RealRow{"SecondExponentStops", "1e2e3", 3, 100},
        RealRow{"PointBehindExponentStops", "1e2.5", 3, 100}),
    rowName);

INSTANTIATE_TEST_SUITE_P(WhiteSpace, ScanDouble,
                         testing::Values(RealRow{"AllSixAreSkipped", " \t\n\v\f\r1", 7, 1},
                                         RealRow{"BehindIsLeft", "1 ", 1, 1},
                                         RealRow{"BetweenSignAndDigit", "- 1", 0, kUntouched},
                                         RealRow{"BehindExponentLetter", "1e 5", 2, 1},
                                         RealRow{"HardBlankIsNone",
                                                 "\xa0"
                                                 "1",
                                                 0, kUntouched},
                                         RealRow{"NextLineIsNone",
                                                 "\x85"
                                                 "1",
                                                 0, kUntouched}),
                         rowName);

// scanf gives back one character only, so what it took in hope is used.
INSTANTIATE_TEST_SUITE_P(
    UnfinishedExponent, ScanDouble,
    testing::Values(RealRow{"Letter", "1e", 2, 1}, RealRow{"LetterAndPlus", "1e+", 3, 1},
                    RealRow{"LetterAndMinus", "1e-x", 3, 1}, RealRow{"TwoSigns", "1e+-1", 3, 1},
                    RealRow{"OfZero", "0e", 2, 0}, RealRow{"BehindPoint", "5.e", 3, 5},
                    RealRow{"HexLetter", "0x1p", 4, 1}, RealRow{"HexLetterAndSign", "0x1p-", 5, 1}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    NoNumber, ScanDouble,
    testing::Values(RealRow{"Empty", "", 0, kUntouched}, RealRow{"Blanks", "  \t", 0, kUntouched},
                    RealRow{"Plus", "+", 0, kUntouched}, RealRow{"Minus", "-", 0, kUntouched},
                    RealRow{"TwoSigns", "+-1", 0, kUntouched}, RealRow{"Point", ".", 0, kUntouched},
                    RealRow{"SignAndPoint", "-.", 0, kUntouched},
                    RealRow{"PointAndExponent", ".e1", 0, kUntouched},
                    RealRow{"ExponentAlone", "e5", 0, kUntouched},
                    RealRow{"Comma", ",5", 0, kUntouched}, RealRow{"Word", "x", 0, kUntouched},
                    RealRow{"AboveAscii", "\xb2", 0, kUntouched}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Hexadecimal, ScanDouble,
    testing::Values(
        RealRow{"Integer", "0x1F", 4, 31}, RealRow{"Capital", "0X1P3", 5, 8},
        RealRow{"Fraction", "0x1.8p1", 7, 3}, RealRow{"FractionOnly", "0x.8", 4, 0.5},
        RealRow{"NegativeExponent", "-0x1p-2", 7, -0.25},
        RealRow{"LetterEIsADigit", "0x1e+5", 4, 30}, RealRow{"PrefixAlone", "0x", 0, kUntouched},
        RealRow{"PrefixAndLetter", "0xg", 0, kUntouched},
        RealRow{"PrefixAndExponent", "0xp1", 0, kUntouched},
        RealRow{"PrefixAndSign", "0x-1", 0, kUntouched},
        RealRow{"PrefixAndPointIsZero", "0x.", 3, 0},
        RealRow{"NoExponentWithoutDigit", "-0x.p1", 4, -0.0},
        RealRow{"TwoZerosAreDecimal", "00x1", 2, 0}, RealRow{"BinaryPrefixIsNone", "0b1", 1, 0},
        RealRow{"LastBitOfHalfway", "0x1.00000000000008p0", 20, 1},
        RealRow{"JustAboveHalfway", "0x1.0000000000000800000000000000001p0", 37, 1 + DBL_EPSILON},
        RealRow{"Largest", "0x1.fffffffffffffp1023", 22, DBL_MAX},
        RealRow{"Overflow", "0x1p1024", 8, kInf},
        RealRow{"RoundsToOverflow", "0x1.fffffffffffff8p1023", 23, kInf},
        RealRow{"Smallest", "0x1p-1074", 9, DBL_TRUE_MIN},
        RealRow{"HalfOfSmallestIsZero", "0x1p-1075", 9, 0},
        RealRow{"AboveHalfOfSmallest", "0x1.1p-1075", 11, DBL_TRUE_MIN},
        RealRow{"EndlessExponent", "0x1p99999999999999999999", 24, kInf},
        RealRow{"EndlessNegativeExponent", "-0x1p-99999999999999999999", 26, -0.0}),
    rowName);

INSTANTIATE_TEST_SUITE_P(Infinity, ScanDouble,
                         testing::Values(RealRow{"Short", "inf", 3, kInf},
                                         RealRow{"AnyCase", "-iNf", 4, -kInf},
                                         RealRow{"Long", "INFINITY", 8, kInf},
                                         RealRow{"LettersBehind", "infx", 3, kInf},
                                         RealRow{"LettersBehindLong", "infinityx", 8, kInf},
                                         RealRow{"TooShort", "in", 0, kUntouched},
                                         RealRow{"UnfinishedByOne", "infinit", 0, kUntouched},
                                         RealRow{"UnfinishedByMany", "infi", 0, kUntouched},
                                         RealRow{"OtherEnd", "infix", 0, kUntouched},
                                         RealRow{"BlankBetween", "inf inity", 3, kInf}),
                         rowName);

TEST(ScanNan, ReadsTheWordAndLeavesWhatFollows) {
  for (const char* text : {"nan", "NaN", "nan(1)", "nan(", "nanx", "+nan"}) {
    double value = kUntouched;
    const std::size_t word = text[0] == '+' ? 4 : 3;
    EXPECT_EQ(scanDouble(std::string_view(text), value).length, word) << text;
    EXPECT_TRUE(std::isnan(value)) << text;
    expectAsLibrary(text);
  }
}

TEST(ScanNan, KeepsTheSign) {
  double value = 0;
  ASSERT_EQ(scanDouble(L"-nan(1)", value).length, 4u);
  EXPECT_TRUE(std::isnan(value) && std::signbit(value));
  expectAsLibrary("-nan(1)");
}

TEST(ScanNan, RefusesAnUnfinishedWord) {
  double value = kUntouched;
  for (const char* text : {"n", "na", "nb", "n1"}) {
    EXPECT_FALSE(scanDouble(std::string_view(text), value)) << text;
    EXPECT_EQ(value, kUntouched);
    expectAsLibrary(text);
  }
}

INSTANTIATE_TEST_SUITE_P(
    OutOfRange, ScanDouble,
    testing::Values(
        RealRow{"Overflow", "1e400", 5, kInf}, RealRow{"NegativeOverflow", "-1e400", 6, -kInf},
        RealRow{"Underflow", "1e-400", 6, 0}, RealRow{"NegativeUnderflow", "-1e-400", 7, -0.0},
        RealRow{"Denormal", "1e-310", 6, 1e-310}, RealRow{"Smallest", "4.9e-324", 8, DBL_TRUE_MIN},
        RealRow{"BelowHalfOfSmallest", "2.4e-324", 8, 0},
        RealRow{"AboveHalfOfSmallest", "2.5e-324", 8, DBL_TRUE_MIN},
        RealRow{"EndlessExponent", "1e99999999999999999999", 22, kInf},
        RealRow{"EndlessNegativeExponent", "1e-99999999999999999999", 23, 0},
        RealRow{"ZeroWithEndlessExponent", "0e99999999999999999999", 22, 0}),
    rowName);

// --- Long numbers

std::string times(std::size_t count, std::string_view text) {
  std::string result;
  while (count-- > 0) result += text;
  return result;
}

INSTANTIATE_TEST_SUITE_P(
    Long, ScanDouble,
    testing::Values(
        RealRow{"ZerosInFront", times(100000, "0") + "1.5", 100003, 1.5},
        RealRow{"ZerosBehindThePoint", "0." + times(99999, "0") + "1e100000", 100009, 1},
        RealRow{"ZerosBeforeThePoint", "1" + times(100000, "0") + "e-100000", 100009, 1},
        RealRow{"ZerosAtTheEnd", "2.5" + times(100000, "0"), 100003, 2.5},
        RealRow{"ThirdsInFull", times(100000, "3") + "e-100000", 100008, 1.0 / 3},
        RealRow{"Overflow", times(100000, "9"), 100000, kInf},
        RealRow{"Underflow", "." + times(100000, "0") + "1", 100002, 0},
        RealRow{"LongExponent", "1e" + times(100000, "0") + "2", 100003, 100},
        RealRow{"HexZerosInFront", "0x" + times(100000, "0") + "Ap1", 100005, 20},
        RealRow{"HexZerosBehind", "0xA" + times(25000, "0") + "p-100000", 25011, 10},
        // Halfway between 1 and the next double, in full: 1 + 2^-53. Half to even gives 1.
        RealRow{"Halfway", "1.00000000000000011102230246251565404236316680908203125", 55, 1},
        RealRow{"AboveHalfwayFarBehind",
                "1.00000000000000011102230246251565404236316680908203125" + times(2000, "0") + "1",
                2056, 1 + DBL_EPSILON},
        RealRow{"BelowHalfwayFarBehind",
                "1.00000000000000011102230246251565404236316680908203124" + times(2000, "9"), 2055,
                1}),
    rowName);

// --- Texts without a NUL at their end, and with one inside

TEST(ScanDoubleText, StopsAtTheEndOfTheView) {
  const std::string text = "1.25e3";
  const std::size_t lengths[] = {1, 2, 3, 4, 5, 6};
  const double values[] = {1, 1, 1.2, 1.25, 1.25, 1250};
  for (std::size_t i = 0; i < 6; ++i) {
    double value = kUntouched;
    EXPECT_EQ(scanDouble(std::string_view(text).substr(0, lengths[i]), value).length, lengths[i]);
    EXPECT_EQ(value, values[i]);
  }
}

TEST(ScanDoubleText, AnEmptyViewOfNothingIsNoNumber) {
  double value = kUntouched;
  EXPECT_FALSE(scanDouble(std::string_view(), value));
  EXPECT_FALSE(scanDouble(std::wstring_view(), value));
  EXPECT_EQ(value, kUntouched);
}

TEST(ScanDoubleText, NulEndsTheText) {
  double value = kUntouched;
  EXPECT_EQ(scanDouble(std::string_view("12\0003", 4), value).length, 2u);
  EXPECT_EQ(value, 12);
  EXPECT_FALSE(scanDouble(std::string_view("\0001", 2), value));
}

TEST(ScanDoubleText, WideDigitsOfOtherScriptsBelongToNoNumber) {
  for (wchar_t c : {L'\x661', L'\xff11', L'\xb2', L'\x131', L'\x80', L'\x130'}) {
    double value = kUntouched;
    EXPECT_FALSE(scanDouble(std::wstring(1, c), value));
    EXPECT_EQ(scanDouble(L"4" + std::wstring(1, c), value).length, 1u);
    EXPECT_EQ(value, 4);
  }
}

// --- Against the C library

TEST(ScanDoubleAgainstLibrary, EveryShortTextOfAwkwardCharacters) {
  constexpr std::string_view kAlphabet = "+-.019eEpxXinfaN(, ";
  std::vector<std::string> texts{""};
  for (std::size_t from = 0, length = 1; length <= 4; ++length) {
    const std::size_t to = texts.size();
    for (; from < to; ++from)
      for (char c : kAlphabet) texts.push_back(texts[from] + c);
  }
  std::size_t differences = 0;
  for (const std::string& text : texts) {
    const bool same = ours(std::string_view(text)) == libraryNarrow(text) &&
                      ours(std::wstring_view(wide(text))) == libraryWide(text);
    if (!same && ++differences < 20) expectAsLibrary(text);
  }
  EXPECT_EQ(differences, 0u);
  EXPECT_EQ(texts.size(), 1u + 19 + 361 + 6859 + 130321);
}

TEST(ScanDoubleAgainstLibrary, PrefixesOfLongTextsWithEveryEnd) {
  for (const std::string whole :
       {"-infinity(", "+NaN(12)", " 0x1.8Fp+12", "-0X.0p-1", "\t12.50e-07", ".00e+12", "0000.e5",
        "1E0000000000000000000000000000000005"})
    for (std::size_t length = 0; length <= whole.size(); ++length)
      for (const char* end : {"", "x", "i", "n", "e", "p", ".", "+", "-", "0", "9", ",", " ", "("})
        expectAsLibrary(whole.substr(0, length) + end);
}

TEST(ScanDoubleAgainstLibrary, EveryCharacterInFrontAndBehind) {
  for (int c = 1; c < 256; ++c) {
    const char byte = static_cast<char>(c);
    expectAsLibrary(std::string(1, byte) + "1");
    expectAsLibrary("1" + std::string(1, byte) + "1");
    expectAsLibrary("0x1" + std::string(1, byte) + "1");
  }
}

/// Any double but NaN, with all exponents alike.
rc::Gen<double> anyDouble() {
  return rc::gen::map(rc::gen::arbitrary<std::uint64_t>(), [](std::uint64_t seed) {
    const double value = std::bit_cast<double>(seed * 0x9E3779B97F4A7C15u);
    return std::isnan(value) ? 0.0 : value;
  });
}

RC_GTEST_PROP(ScanDoubleLaws, ReadsBackWhatPrintfWrote, ()) {
  const double value = *anyDouble();
  const char* const format = *rc::gen::element("%.*g", "%.*e", "%.*E", "%.*a", "%.*A");
  const int precision = *rc::gen::inRange(17, 40);
  const std::string text = printed(format, precision, value);
  const Answer expected{text.size(), bitsOf(value)};
  RC_ASSERT(ours(std::string_view(text)) == expected);
  RC_ASSERT(ours(std::wstring_view(wide(text))) == expected);
}

RC_GTEST_PROP(ScanDoubleLaws, RoundsShortPrintsAsTheLibrary, ()) {
  const char* const format = *rc::gen::element("%.*g", "%.*e", "%.*f", "%.*a");
  const std::string text = printed(format, *rc::gen::inRange(0, 17), *anyDouble());
  RC_ASSERT(ours(std::string_view(text)) == libraryNarrow(text));
  RC_ASSERT(ours(std::wstring_view(wide(text))) == libraryWide(text));
}

RC_GTEST_PROP(ScanDoubleLaws, ReadsDecimalsOfWorkshopSizeAsTheLibrary, ()) {
  const auto thousandths = *rc::gen::inRange<long long>(-100000000000LL, 100000000000LL);
  const std::string text =
      printed("%.*f", *rc::gen::inRange(0, 10), static_cast<double>(thousandths) / 1000);
  RC_ASSERT(ours(std::string_view(text)) == libraryNarrow(text));
}

TEST(ScanDoubleAgainstLibrary, ThousandsOfDoublesInEveryFormat) {
  std::mt19937_64 random(1);
  std::uniform_int_distribution<int> precision(0, 30);
  for (int i = 0; i < 5000; ++i) {
    const double value = std::bit_cast<double>(random());
    for (const char* format : {"%.*e", "%.*g", "%.*f", "%.*a"}) {
      const std::string text = printed(format, precision(random), value);
      ASSERT_EQ(ours(std::string_view(text)), libraryNarrow(text)) << text;
      ASSERT_EQ(ours(std::wstring_view(wide(text))), libraryWide(text)) << text;
    }
  }
}

/// The number halfway from |value| to the next double, in full: with an 80-bit long double exact.
std::string halfwayAbove(double value) {
  static_assert(LDBL_MANT_DIG >= 64);
  const double next = std::nextafter(value, kInf);
  const long double middle = (static_cast<long double>(value) + next) / 2;
  const test::InCLocale scope;
  std::string text(3000, '\0');
  text.resize(
      static_cast<std::size_t>(std::snprintf(text.data(), text.size(), "%.1200Le", middle)));
  return text;
}

RC_GTEST_PROP(ScanDoubleLaws, DecidesHalfwayNumbersByTheirLastDigit, ()) {
  double value = std::fabs(*anyDouble());
  if (*rc::gen::inRange(0, 4) == 0) value = *rc::gen::inRange(1, 1000) * DBL_TRUE_MIN;
  RC_PRE(value < DBL_MAX);
  const std::string halfway = halfwayAbove(value);
  std::string above = halfway;
  above.insert(above.find('e'), "1");
  std::string below = halfway;
  std::size_t last = below.find_last_of("123456789", below.find('e') - 1);
  for (below[last++] -= 1; below[last] != 'e'; ++last) below[last] = '9';
  const double next = std::nextafter(value, kInf);
  const double even = (bitsOf(value) & 1) == 0 ? value : next;
  RC_ASSERT(ours(std::string_view(halfway)).bits == bitsOf(even));
  RC_ASSERT(ours(std::string_view(above)).bits == bitsOf(next));
  RC_ASSERT(ours(std::string_view(below)).bits == bitsOf(value));
  RC_ASSERT(libraryNarrow(below).bits == bitsOf(value));
}

RC_GTEST_PROP(ScanDoubleLaws, ReadsAnyDigitsAsTheLibrary, ()) {
  const bool hex = *rc::gen::arbitrary<bool>();
  const auto digit = hex ? rc::gen::element('0', '0', '1', '7', '8', '9', 'a', 'f', 'F')
                         : rc::gen::element('0', '0', '1', '4', '5', '6', '9', '9', '9');
  const auto digits = rc::gen::container<std::string>(digit);
  std::string text = *rc::gen::element(std::string(), std::string("-"), std::string("+"));
  if (hex) text += "0x";
  text += *digits + *rc::gen::element(".", "", "..") + *digits;
  if (*rc::gen::arbitrary<bool>())
    text += (hex ? "p" : "e") + std::to_string(*rc::gen::inRange(-1200, 1200));
  RC_ASSERT(ours(std::string_view(text)) == libraryNarrow(text));
  RC_ASSERT(ours(std::wstring_view(wide(text))) == libraryWide(text));
}

RC_GTEST_PROP(ScanDoubleLaws, ReadsAnySoupAsTheLibrary, ()) {
  const auto piece =
      rc::gen::element<std::string>("+", "-", ".", "0", "1", "9", "0x", "0X", "e", "E", "p", "inf",
                                    "inity", "nan", "(", " ", "5e3", "1e+", "x", "a", "f", "i", "n",
                                    "e-", "p+2", ",", "\t", "123456789012345678901234567890");
  std::string text;
  for (const std::string& part : *rc::gen::container<std::vector<std::string>>(piece)) text += part;
  RC_ASSERT(ours(std::string_view(text)) == libraryNarrow(text));
  RC_ASSERT(ours(std::wstring_view(wide(text))) == libraryWide(text));
}

// --- Integers

struct IntRow {
  const char* name;
  std::string text;
  std::size_t length;
  int value;
};

std::ostream& operator<<(std::ostream& out, const IntRow& row) { return out << row.text; }

class ScanInt : public testing::TestWithParam<IntRow> {};

TEST_P(ScanInt, GivesLengthAndValue) {
  const IntRow& row = GetParam();
  int value = 77;
  EXPECT_EQ(scanInt(std::string_view(row.text), value).length, row.length);
  EXPECT_EQ(value, row.value);
  int wideValue = 77;
  EXPECT_EQ(scanInt(wide(row.text), wideValue).length, row.length);
  EXPECT_EQ(wideValue, row.value);
}

/// True when narrow and wide scans give what the C library gives.
bool intAsLibrary(const std::string& text) {
  int expected = 77;
  int length = 0;
  if (std::sscanf(text.c_str(), "%d%n", &expected, &length) != 1) length = 0;
  int expectedWide = 77;
  int lengthWide = 0;
  if (std::swscanf(wide(text).c_str(), L"%d%n", &expectedWide, &lengthWide) != 1) lengthWide = 0;
  int narrow = 77;
  int wideValue = 77;
  return scanInt(std::string_view(text), narrow).length == static_cast<std::size_t>(length) &&
         scanInt(wide(text), wideValue).length == static_cast<std::size_t>(lengthWide) &&
         narrow == expected && wideValue == expectedWide;
}

bool longAsLibrary(const std::string& text) {
  long long expected = 77;
  int length = 0;
  if (std::sscanf(text.c_str(), "%lld%n", &expected, &length) != 1) length = 0;
  long long value = 77;
  return scanLong(text, value).length == static_cast<std::size_t>(length) && value == expected;
}

TEST_P(ScanInt, GivesWhatTheCLibraryGives) {
  EXPECT_TRUE(intAsLibrary(GetParam().text));
  EXPECT_TRUE(longAsLibrary(GetParam().text));
}

INSTANTIATE_TEST_SUITE_P(
    Table, ScanInt,
    testing::Values(IntRow{"Plain", "12", 2, 12}, IntRow{"Signs", "-12", 3, -12},
                    IntRow{"Plus", "+5", 2, 5}, IntRow{"WhiteSpaceInFront", "\r\n 7", 4, 7},
                    IntRow{"ZerosInFront", "0008", 4, 8}, IntRow{"FractionIsLeft", "0.5", 1, 0},
                    IntRow{"ExponentIsLeft", "1e3", 1, 1}, IntRow{"HexIsNotRead", "0x10", 1, 0},
                    IntRow{"LettersBehind", "12abc", 2, 12}, IntRow{"Empty", "", 0, 77},
                    IntRow{"SignAlone", "-", 0, 77}, IntRow{"TwoSigns", "--1", 0, 77},
                    IntRow{"BlankBehindSign", "+ 5", 0, 77}, IntRow{"Point", ".5", 0, 77},
                    IntRow{"Word", "x", 0, 77}, IntRow{"Infinity", "inf", 0, 77},
                    IntRow{"Largest", "2147483647", 10, INT_MAX},
                    IntRow{"Smallest", "-2147483648", 11, INT_MIN},
                    // 2^31 keeps its 32 bits, which are those of -2^31; 2^32 keeps none.
                    IntRow{"LargestAndOne", "2147483648", 10, INT_MIN},
                    IntRow{"BitsBeyond32AreLost", "4294967296", 10, 0},
                    // 99999999999 = 23 * 2^32 + 1215752191
                    IntRow{"LowBitsStay", "99999999999", 11, 1215752191},
                    // Saturated at 2^63 - 1 (low bits all set) and at -2^63 (low bits all clear).
                    IntRow{"Saturated", "9223372036854775808", 19, -1},
                    IntRow{"SaturatedBelow", "-9223372036854775809", 20, 0},
                    IntRow{"FarSaturated", times(1000, "9"), 1000, -1},
                    IntRow{"FarSaturatedBelow", "-" + times(1000, "9"), 1001, 0}),
    rowName);

TEST(ScanLong, SaturatesAt64Bits) {
  long long value = 0;
  EXPECT_EQ(scanLong("9223372036854775807", value).length, 19u);
  EXPECT_EQ(value, LLONG_MAX);
  EXPECT_TRUE(scanLong("9223372036854775808", value));
  EXPECT_EQ(value, LLONG_MAX);
  EXPECT_TRUE(scanLong("18446744073709551617", value));
  EXPECT_EQ(value, LLONG_MAX);
  EXPECT_TRUE(scanLong("-9223372036854775808", value));
  EXPECT_EQ(value, LLONG_MIN);
  EXPECT_TRUE(scanLong("-9223372036854775809", value));
  EXPECT_EQ(value, LLONG_MIN);
}

TEST(ScanLong, KeepsWhatDoesNotFit32Bits) {
  long long value = 0;
  EXPECT_EQ(scanLong(" -99999999999.5", value).length, 13u);
  EXPECT_EQ(value, -99999999999LL);
}

RC_GTEST_PROP(ScanIntLaws, ReadsAnySoupAsTheLibrary, ()) {
  const auto piece = rc::gen::element<std::string>("+", "-", "0", "9", "2147483648", " ", ".", "x",
                                                   "18446744073709551616", "1", "\n", "e");
  std::string text;
  for (const std::string& part : *rc::gen::container<std::vector<std::string>>(piece)) text += part;
  RC_ASSERT(intAsLibrary(text));
  RC_ASSERT(longAsLibrary(text));
}

RC_GTEST_PROP(ScanIntLaws, ReadsBackEveryInteger, (long long value)) {
  value = static_cast<long long>(static_cast<std::uint64_t>(value) * 0x9E3779B97F4A7C15u);
  long long back = 0;
  RC_ASSERT(scanLong(std::to_string(value), back).length == std::to_string(value).size());
  RC_ASSERT(back == value);
}

// --- Locales of the host

TEST(ScanInHostLocale, TheDecimalPointStaysAPoint) {
  const test::CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  double value = 0;
  EXPECT_EQ(scanDouble("1.5", value).length, 3u);
  EXPECT_EQ(value, 1.5);
  EXPECT_EQ(scanDouble(L"-2.25e1", value).length, 7u);
  EXPECT_EQ(value, -22.5);
  EXPECT_EQ(scanDouble("1,5", value).length, 1u);
  EXPECT_EQ(value, 1);
}

TEST(ScanInHostLocale, NumbersThatNeedTheLongWayStayTheSame) {
  const test::CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  double value = 0;
  EXPECT_EQ(scanDouble("3.14159265358979323846", value).length, 22u);
  EXPECT_EQ(value, 3.14159265358979323846);
  EXPECT_EQ(scanDouble("0x1.8p1", value).length, 7u);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(scanDouble("0." + times(1000, "3"), value).length, 1002u);
  EXPECT_EQ(value, 1.0 / 3);
}

TEST(ScanInHostLocale, ThousandsAreNotGrouped) {
  const test::CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  int value = 0;
  EXPECT_EQ(scanInt("1.234", value).length, 1u);
  EXPECT_EQ(value, 1);
}

TEST(ScanInHostLocale, WideSpacesAreNoWhiteSpace) {
  const std::string former = std::setlocale(LC_CTYPE, nullptr);
  ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
  EXPECT_NE(std::iswspace(0x2003), 0) << "the locale has no effect: this test would prove nothing";
  double value = kUntouched;
  EXPECT_FALSE(scanDouble(L"\x2003\x31", value));
  std::setlocale(LC_CTYPE, former.c_str());
}

TEST(ScanInHostLocale, LeavesTheLocaleOfTheHostAlone) {
  const test::CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  const std::string before = std::setlocale(LC_ALL, nullptr);
  double value = 0;
  scanDouble("0." + times(1000, "7"), value);
  EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

}  // namespace
}  // namespace korvo::text
