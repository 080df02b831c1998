#include "platform/text/PlainDecimal.h"

#include <rapidcheck/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <string>

#include "tests/support/InCLocale.h"

namespace korvo::text {
namespace {

/// What the library's sscanf says of the same text; so much as was taken must be all of its number.
void expectAsLibrary(const std::string& number) {
  const std::string text = number + " and some more";
  double ours = 77.25, theirs = 77.25;
  const char* end = takePlainDecimal(text.data(), text.data() + text.size(), ours);
  if (end == nullptr || *end != ' ') return;  // left to the scanner of all numbers
  int length = 0;
  const test::InCLocale scope;
  ASSERT_EQ(std::sscanf(text.c_str(), "%lf%n", &theirs, &length), 1) << text;
  EXPECT_EQ(end - text.data(), length) << text;
  EXPECT_EQ(std::bit_cast<std::uint64_t>(ours), std::bit_cast<std::uint64_t>(theirs)) << text;
}

/// Whether it is taken at all, up to the blank behind it.
bool isTaken(const std::string& number) {
  const std::string text = number + "         ";
  double value = 0;
  return takePlainDecimal(text.data(), text.data() + text.size(), value) ==
         text.data() + number.size();
}

TEST(PlainDecimal, TakesWhatProgramsWrite) {
  for (const char* number :
       {"0", "1", "-1", "0.5", "-0.5", ".5", "5.", "123.456789", "1e3", "1E-3", "-1.234567e+02",
        "1.000000e-014", "12345678", "12345678.12345678", "9007199254740992", "1e22", "-0.0"}) {
    EXPECT_TRUE(isTaken(number)) << number;
    expectAsLibrary(number);
  }
}

TEST(PlainDecimal, LeavesAllOthers) {
  for (const char* number : {"",
                             "+1",
                             "--1",
                             "- 1",
                             ".",
                             "-.",
                             "e5",
                             "1e",
                             "1e+",
                             "inf",
                             "nan",
                             "0x10",
                             "1e23",
                             "1e-23",
                             "1e0000001",
                             "9007199254740993",
                             "12345678901234567890",
                             "0.00000000000000000001",
                             "1,5",
                             "1.2.3",
                             "1e2e3",
                             "\xEF\xBC\x91"}) {
    EXPECT_FALSE(isTaken(number)) << number;
    expectAsLibrary(number);
  }
}

TEST(PlainDecimal, ReadsNothingBehindTheEnd) {
  const std::string text = "-12345678.12345678e+021234567";
  for (std::size_t size = 0; size <= text.size(); ++size) {
    const std::string cut = text.substr(0, size);  // its own allocation, which sanitizers watch
    const std::unique_ptr<char[]> bytes(new char[size]);
    cut.copy(bytes.get(), size);
    double value = 0;
    const char* const end = takePlainDecimal(bytes.get(), bytes.get() + size, value);
    EXPECT_TRUE(end == nullptr || end < bytes.get() + size) << size;
  }
}

TEST(PlainDecimal, AMillionNumbersSayWhatTheLibrarySays) {
  const test::InCLocale scope;
  std::mt19937_64 random(3);
  const char* const formats[] = {"%e", "%.9g", "%.17g", "%f", "%.3f", "%.12e", "%g", "%.0f"};
  for (int i = 0; i < 125'000; ++i) {
    const double digits = static_cast<double>(random() >> (random() % 64));
    const double value = (digits - 1e3) * std::pow(10.0, static_cast<double>(random() % 40) - 25);
    for (const char* format : formats) {
      char text[400];
      std::snprintf(text, sizeof text, format, value);
      expectAsLibrary(text);
    }
    ASSERT_FALSE(testing::Test::HasFailure());
  }
}

RC_GTEST_PROP(PlainDecimalLaws, AnyCharactersSayWhatTheLibrarySays, ()) {
  const auto character = rc::gen::elementOf(std::string("0123456789012345678901234567890..eE+--x"));
  expectAsLibrary(*rc::gen::container<std::string>(character));
  RC_ASSERT(!testing::Test::HasFailure());
}

}  // namespace
}  // namespace korvo::text
