// Header and data lines: what stands in them, and that every line is taken apart as the C library's
// fgets and sscanf do it in the C locale.

#include "geometry/ZrnLines.h"

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <optional>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/CommaLocale.h"
#include "tests/support/InCLocale.h"
#include "tests/support/ZrnStream.h"

namespace zkin::zrn {
namespace {

using korvo::test::CommaLocale;
using korvo::test::Stream;
using korvo::test::streamOf;

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

constexpr long long kMost = std::numeric_limits<long long>::max();
constexpr long long kLeast = std::numeric_limits<long long>::min();
constexpr double kInf = std::numeric_limits<double>::infinity();

// --- headers worked by hand

struct HeaderRow {
  const char* name;
  std::string line;
  long long a, b, code;
  double value;
  std::string text;  ///< The entity's name.
};

std::ostream& operator<<(std::ostream& out, const HeaderRow& row) { return out << row.line; }

class ZrnHeader : public testing::TestWithParam<HeaderRow> {
 protected:
  static void expectFields() {
    const HeaderRow& row = GetParam();
    const std::optional<Header> header = headerOf(row.line);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->a, row.a);
    EXPECT_EQ(header->b, row.b);
    EXPECT_EQ(header->code, row.code);
    EXPECT_EQ(header->value, row.value);
    EXPECT_EQ(header->name, row.text);
    EXPECT_TRUE(isHeader(row.line));
  }
};

TEST_P(ZrnHeader, GivesItsFields) { expectFields(); }

TEST_P(ZrnHeader, GivesTheSameUnderADecimalComma) {
  const CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  expectFields();
}

INSTANTIATE_TEST_SUITE_P(
    Fields, ZrnHeader,
    testing::Values(HeaderRow{"Three", "2 4 1\n", 2, 4, 1, 0, ""},
                    HeaderRow{"ThreeAtTheFilesEnd", "2 4 1", 2, 4, 1, 0, ""},
                    HeaderRow{"ThreeAndBlanks", "2 4 1   \n", 2, 4, 1, 0, ""},
                    HeaderRow{"BlanksInFront", " \t 2  4\t1\n", 2, 4, 1, 0, ""},
                    HeaderRow{"Four", "2 4 1 0.125\n", 2, 4, 1, 0.125, ""},
                    HeaderRow{"FourAndBlanks", "2 4 1 0.125 \n", 2, 4, 1, 0.125, ""},
                    HeaderRow{"WordInsteadOfValue", "2 4 1 top\n", 2, 4, 1, 0, ""},
                    HeaderRow{"NumbersRunTogether", "2+4-1\n", 2, 4, -1, 0, ""},
                    HeaderRow{"RealCodeGoesOnInTheValue", "1 2 3.5\n", 1, 2, 3, 0.5, ""},
                    HeaderRow{"RealCodeAndName", "1 2 3.5 x\n", 1, 2, 3, 0.5, "x\n"},
                    HeaderRow{"DataLine", "10 5 2.5\n", 10, 5, 2, 0.5, ""},
                    HeaderRow{"SignsAndZeros", "+2 -4 007\n", 2, -4, 7, 0, ""},
                    HeaderRow{"TooLargeSaturates", "99999999999999999999 -99999999999999999999 1\n",
                              kMost, kLeast, 1, 0, ""},
                    HeaderRow{"LargestAsWritten", "9223372036854775807 -9223372036854775808 1\n",
                              kMost, kLeast, 1, 0, ""},
                    HeaderRow{"HexadecimalValue", "2 4 1 0x1p-3\n", 2, 4, 1, 0.125, ""},
                    HeaderRow{"HexadecimalCodeIsZero", "2 4 0x1\n", 2, 4, 0, 0, ""},
                    HeaderRow{"InfiniteValue", "2 4 1 -inf\n", 2, 4, 1, -kInf, ""},
                    HeaderRow{"CommaEndsTheValue", "2 4 1 1,5\n", 2, 4, 1, 1, ",5\n"},
                    HeaderRow{"CarriageReturnIsBlank", "2 4 1\r\n", 2, 4, 1, 0, ""},
                    HeaderRow{"VerticalTabAndFormFeedAreBlank", "2\v4\f1\n", 2, 4, 1, 0, ""}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    ZrnHeaderName, ZrnHeader,
    testing::Values(
        HeaderRow{"KeepsTheLineFeed", "2 4 1 7 top\n", 2, 4, 1, 7, "top\n"},
        HeaderRow{"KeepsBothLineEnds", "2 4 1 7 top\r\n", 2, 4, 1, 7, "top\r\n"},
        HeaderRow{"NoneAtTheFilesEnd", "2 4 1 7 top", 2, 4, 1, 7, "top"},
        HeaderRow{"KeepsBlanks", "2 4 1 7 top  of it \n", 2, 4, 1, 7, "top  of it \n"},
        HeaderRow{"StartsWhereItsTextOccursFirst", "2 4 1 0.125 1\n", 2, 4, 1, 0.125,
                  "1 0.125 1\n"},
        HeaderRow{"MayBeTheWholeLine", "2 4 1 7 2\n", 2, 4, 1, 7, "2 4 1 7 2\n"},
        HeaderRow{"DirectlyBehindTheValue", "2 4 1 7top\n", 2, 4, 1, 7, "top\n"},
        HeaderRow{"WordThatBeginsLikeInfinity", "2 4 1 info plate\n", 2, 4, 1, kInf, "o plate\n"},
        HeaderRow{"RowOfNumbers", "1 2 3 4 5 6\n", 1, 2, 3, 4, "5 6\n"},
        HeaderRow{"BytesAbove127", "2 4 1 7 caf\xe9\n", 2, 4, 1, 7, "caf\xe9\n"},
        HeaderRow{"NoBreakSpaceBelongsToTheWord", "2 4 1 7 \xa0 x\n", 2, 4, 1, 7, "\xa0 x\n"}),
    rowName);

struct NoHeaderRow {
  const char* name;
  std::string line;
};

std::ostream& operator<<(std::ostream& out, const NoHeaderRow& row) { return out << row.line; }

class ZrnNoHeader : public testing::TestWithParam<NoHeaderRow> {};

TEST_P(ZrnNoHeader, IsNone) {
  EXPECT_FALSE(headerOf(GetParam().line));
  EXPECT_FALSE(isHeader(GetParam().line));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, ZrnNoHeader,
    testing::Values(NoHeaderRow{"Empty", ""}, NoHeaderRow{"LineFeed", "\n"},
                    NoHeaderRow{"Blanks", "   \n"}, NoHeaderRow{"One", "2\n"},
                    NoHeaderRow{"Two", "2 4\n"}, NoHeaderRow{"RealSecond", "2 4.5 1\n"},
                    NoHeaderRow{"RealFirst", "2.0 4 1\n"}, NoHeaderRow{"Commas", "2,4,1\n"},
                    NoHeaderRow{"Word", "x 2 4 1\n"}, NoHeaderRow{"Comment", "# 2 4 1\n"},
                    NoHeaderRow{"SignAlone", "2 4 -\n"}, NoHeaderRow{"DoubleSign", "2 4 --1\n"},
                    NoHeaderRow{"Infinity", "inf 4 1\n"}, NoHeaderRow{"Hexadecimal", "0x2 4 1\n"},
                    NoHeaderRow{"Utf8Mark",
                                "\xef\xbb\xbf"
                                "2 4 1\n"},
                    NoHeaderRow{"NoBreakSpace",
                                "\xa0"
                                "2 4 1\n"}),
    rowName);

// --- reads

std::vector<std::string> linesOf(const std::string& bytes) {
  const Stream stream = streamOf(bytes);
  std::vector<std::string> lines;
  for (Line line; line.read(stream.get());) lines.emplace_back(line.text());
  return lines;
}

using Lines = std::vector<std::string>;

TEST(ZrnLine, NoneInAnEmptyFile) { EXPECT_EQ(linesOf(""), Lines{}); }
TEST(ZrnLine, KeepsItsLineFeed) { EXPECT_EQ(linesOf("a\nb\n"), (Lines{"a\n", "b\n"})); }
TEST(ZrnLine, TheLastNeedsNone) { EXPECT_EQ(linesOf("a\nb"), (Lines{"a\n", "b"})); }
TEST(ZrnLine, MayBeEmpty) { EXPECT_EQ(linesOf("\n\n"), (Lines{"\n", "\n"})); }
TEST(ZrnLine, CarriageReturnEndsNone) { EXPECT_EQ(linesOf("a\rb\r\n"), (Lines{"a\rb\r\n"})); }
TEST(ZrnLine, EndOfTextByteIsAnOrdinaryOne) {
  EXPECT_EQ(linesOf("a\x1a\nb"), (Lines{"a\x1a\n", "b"}));
}

TEST(ZrnLine, NulHidesTheRestOfItsLineOnly) {
  EXPECT_EQ(linesOf(std::string("ab\0cd\nef\n", 9)), (Lines{"ab", "ef\n"}));
  EXPECT_EQ(linesOf(std::string("\0\n\0", 3)), (Lines{"", ""}));
}

TEST(ZrnLine, Of254CharactersIsWhole) {
  const std::string text(254, 'x');
  EXPECT_EQ(linesOf(text + "\n"), (Lines{text + "\n"}));
}

TEST(ZrnLine, Of255CharactersLeavesItsLineFeed) {
  const std::string text(255, 'x');
  EXPECT_EQ(linesOf(text + "\n"), (Lines{text, "\n"}));
}

TEST(ZrnLine, LongerOnesAreSeveral) {
  const std::string text(255, 'x');
  EXPECT_EQ(linesOf(text + text + "yz\n"), (Lines{text, text, "yz\n"}));
}

TEST(ZrnLine, NulCountsAmongThe255Characters) {
  const std::string piece = std::string(1, '\0') + std::string(254, 'x');
  EXPECT_EQ(linesOf(piece + "y\n"), (Lines{"", "y\n"}));
}

// --- the C library as the judge

/// Fields of one kind of data line; nothing when one is missing. NaNs of one sign are equal.
using Record = std::optional<std::array<std::uint64_t, 4>>;

struct LineAnswer {
  bool isHeader = false;
  long long a = 0, b = 0, code = 0;
  std::uint64_t value = 0;
  std::string name;
  std::array<Record, 6> records;
  bool operator==(const LineAnswer&) const = default;
};

std::uint64_t bitsOf(double value) {
  if (std::isnan(value)) value = std::copysign(std::numeric_limits<double>::quiet_NaN(), value);
  return std::bit_cast<std::uint64_t>(value);
}

std::uint64_t bitsOf(long long value) { return std::bit_cast<std::uint64_t>(value); }

template <class T>
Record recordOf(bool scanned, const std::array<T, 4>& values) {
  if (!scanned) return std::nullopt;
  return std::array{bitsOf(values[0]), bitsOf(values[1]), bitsOf(values[2]), bitsOf(values[3])};
}

/// What `scan(fields...)` makes of the data lines that there are.
template <class Scan>
std::array<Record, 6> recordsOf(const Scan& scan) {
  std::array<Record, 6> records;
  std::array<long long, 4> i{};
  std::array<double, 4> d{};
  records[0] = recordOf(scan(i[0]), i);
  i = {};
  records[1] = recordOf(scan(i[0], i[1]), i);
  records[2] = recordOf(scan(d[0]), d);
  d = {};
  records[3] = recordOf(scan(d[0], d[1]), d);
  d = {};
  records[4] = recordOf(scan(d[0], d[1], d[2]), d);
  d = {};
  records[5] = recordOf(scan(d[0], d[1], d[2], d[3]), d);
  return records;
}

LineAnswer ours(std::string_view line) {
  LineAnswer answer;
  if (const std::optional<Header> h = headerOf(line)) {
    answer = {true, h->a, h->b, h->code, bitsOf(h->value), std::string(h->name), {}};
  }
  EXPECT_EQ(isHeader(line), answer.isHeader);
  answer.records = recordsOf([=](auto&... fields) { return scanFields(line, fields...); });
  return answer;
}

LineAnswer libraryHeader(const char* line) {
  long a = 0, b = 0, code = 0;
  double value = 0;
  char token[256] = "";
  if (std::sscanf(line, "%ld%ld%ld%lf%s", &a, &b, &code, &value, token) == 5) {
    const char* const name = token[0] == '\0' ? token : std::strstr(line, token);
    return {true, a, b, code, bitsOf(value), name, {}};
  }
  value = 0;
  if (std::sscanf(line, "%ld%ld%ld%lf", &a, &b, &code, &value) == 4) {
    return {true, a, b, code, bitsOf(value), "", {}};
  }
  if (std::sscanf(line, "%ld%ld%ld", &a, &b, &code) == 3) return {true, a, b, code, 0, "", {}};
  return {};
}

LineAnswer library(const char* line) {
  const korvo::test::InCLocale scope;
  LineAnswer answer = libraryHeader(line);
  std::array<long long, 4> i{};
  std::array<double, 4> d{};
  answer.records[0] = recordOf(std::sscanf(line, "%lld", i.data()) == 1, i);
  i = {};
  answer.records[1] = recordOf(std::sscanf(line, "%lld %lld", &i[0], &i[1]) == 2, i);
  answer.records[2] = recordOf(std::sscanf(line, "%lf", d.data()) == 1, d);
  d = {};
  answer.records[3] = recordOf(std::sscanf(line, "%lf %lf", &d[0], &d[1]) == 2, d);
  d = {};
  answer.records[4] = recordOf(std::sscanf(line, "%lf %lf %lf", &d[0], &d[1], &d[2]) == 3, d);
  d = {};
  answer.records[5] =
      recordOf(std::sscanf(line, "%lf %lf %lf %lf", &d[0], &d[1], &d[2], &d[3]) == 4, d);
  return answer;
}

/// Writes lines that are nearly right: numbers cut short, in odd notations, too large, run
/// together; NUL, CR and other bytes; lines of 255 characters and more.
class AwkwardLines {
 public:
  explicit AwkwardLines(std::uint64_t seed) : random_(seed) {}

  std::string next() {
    std::string line;
    for (int left = pick(8); left > 0; --left) line += field() + separator();
    if (isOneIn(200)) line.insert(static_cast<std::size_t>(pick(int(line.size()) + 1)), padding());
    return line + (isOneIn(20) ? "\r\n" : "\n");
  }

 private:
  int pick(int below) { return static_cast<int>(random_() % static_cast<unsigned>(below)); }
  bool isOneIn(int times) { return pick(times) == 0; }

  std::string field() {
    switch (pick(6)) {
      case 0:
      case 1:
      case 2:
        return std::to_string(pick(25) - 3);
      case 3:
        return digits();
      case 4:
        return printed();
      default:
        return kOdd[static_cast<std::size_t>(pick(int(kOdd.size())))];
    }
  }

  std::string digits() {
    std::string text = isOneIn(3) ? "-" : "";
    for (int left = 1 + pick(isOneIn(9) ? 40 : 6); left > 0; --left) text += char('0' + pick(10));
    if (isOneIn(2)) text.insert(static_cast<std::size_t>(pick(int(text.size()) + 1)), ".");
    if (isOneIn(4)) text += "e" + std::to_string(pick(700) - 350);
    return text;
  }

  std::string printed() {
    constexpr const char* kFormats[] = {"%.17g", "%a", "%.3f", "%g", "%E", "%A"};
    const korvo::test::InCLocale scope;
    char text[400];
    double value = std::bit_cast<double>(random_());
    if (isOneIn(2)) value = std::ldexp(value, -900);
    std::snprintf(text, sizeof text, kFormats[pick(6)], value);  // NOLINT
    return text;
  }

  std::string separator() {
    switch (pick(24)) {
      case 0:
        return "";
      case 1:
        return "\t";
      case 2:
        return " \r ";
      case 3:
        return "\v\f";
      case 4:
        return ",";
      case 5:
        return isOneIn(4) ? std::string(1, '\0') : " ";
      case 6:
        return isOneIn(4) ? "\xa0" : "  ";
      default:
        return " ";
    }
  }

  std::string padding() {
    return std::string(static_cast<std::size_t>(180 + pick(160)), " 0x"[pick(3)]);
  }

  static inline const std::vector<std::string> kOdd = {"inf",
                                                       "INFINITY",
                                                       "infi",
                                                       "infinit",
                                                       "-inf",
                                                       "nan",
                                                       "-NAN",
                                                       "nan(1)",
                                                       "nan(",
                                                       "na",
                                                       "in",
                                                       "0x",
                                                       "0X1P-2",
                                                       "0x.8",
                                                       "0x1.8p",
                                                       "0x.",
                                                       "0xg",
                                                       "0x1p99999",
                                                       "1e",
                                                       "1e+",
                                                       "1e-",
                                                       "1E5E5",
                                                       ".",
                                                       "-.",
                                                       "+.5",
                                                       "5.",
                                                       "--1",
                                                       "+-1",
                                                       "+",
                                                       "-",
                                                       "1d5",
                                                       "1.2.3",
                                                       "-0",
                                                       "1e400",
                                                       "1e-400",
                                                       "4.9e-324",
                                                       "2.5e-324",
                                                       "name",
                                                       "o",
                                                       "top side",
                                                       "#",
                                                       "<CAD_ATTR>",
                                                       "9223372036854775807",
                                                       "9223372036854775808",
                                                       "-9223372036854775808",
                                                       "-9223372036854775809",
                                                       "99999999999999999999999",
                                                       "1_000",
                                                       "1'000",
                                                       "\xe9",
                                                       "\xef\xbb\xbf",
                                                       "0b1",
                                                       "08",
                                                       "1f",
                                                       "1l"};

  std::mt19937_64 random_;
};

std::string awkwardFile(int lines, std::uint64_t seed) {
  AwkwardLines generator(seed);
  std::string file;
  for (int i = 0; i < lines; ++i) file += generator.next();
  return file;
}

#ifdef KORVO_SANITIZED  // a line takes many times as long, and a fuzz target reads as many
constexpr int kAwkwardLines = 100'000;
#else
constexpr int kAwkwardLines = 1'000'000;
#endif

TEST(ZrnScanning, AwkwardLinesAreTakenApartAsTheCLibraryDoes) {
  const std::string file = awkwardFile(kAwkwardLines, 5);
  const Stream our = streamOf(file);
  const Stream their = streamOf(file);
  Line line;
  char buffer[256];
  int count = 0, headers = 0, values = 0, names = 0, pieces = 0, quadruples = 0;
  while (std::fgets(buffer, sizeof buffer, their.get()) != nullptr) {
    ASSERT_TRUE(line.read(our.get()));
    ASSERT_EQ(line.text(), buffer);
    const LineAnswer expected = library(buffer);
    ASSERT_TRUE(ours(line.text()) == expected) << "line " << count << ": " << buffer;
    const auto ofTheLine = recordsOf([&](auto&... fields) { return line.scan(fields...); });
    ASSERT_TRUE(ofTheLine == expected.records) << "line " << count << ": " << buffer;
    ++count;
    headers += expected.isHeader;
    values += expected.value != 0;
    names += !expected.name.empty();
    pieces += std::strlen(buffer) == 255;
    quadruples += expected.records[5].has_value();
  }
  EXPECT_FALSE(line.read(our.get()));
  // That the lines are worth it: some of everything.
  EXPECT_GE(count, kAwkwardLines);
  EXPECT_GT(headers, kAwkwardLines / 10);
  EXPECT_GT(values, kAwkwardLines / 20);
  EXPECT_GT(names, kAwkwardLines / 40);
  EXPECT_GT(pieces, kAwkwardLines / 2500);
  EXPECT_GT(quadruples, kAwkwardLines / 10);
}

/// The first two reals of the last line.
std::optional<std::pair<double, double>> realsOfTheLast(const std::string& bytes) {
  const Stream stream = streamOf(bytes);
  Line line;
  while (line.read(stream.get())) {
  }
  double a = 0, b = 0;
  if (!line.scan(a, b)) return std::nullopt;
  return std::pair(a, b);
}

TEST(ZrnScanning, NothingOfAnEarlierLineGoesOnInALaterOne) {
  const std::string longer(40, '7');
  EXPECT_EQ(realsOfTheLast(longer + "\n1 2"), std::pair(1.0, 2.0));
  EXPECT_EQ(realsOfTheLast(longer + "\n1 2."), std::pair(1.0, 2.0));
  EXPECT_EQ(realsOfTheLast(longer + "\n1 2e1"), std::pair(1.0, 20.0));
  EXPECT_EQ(realsOfTheLast(longer + "\n1 "), std::nullopt);
  EXPECT_EQ(realsOfTheLast(longer + "\n1 -"), std::nullopt);
}

TEST(ZrnScanning, NumbersMayEndWhereALineIsFull) {
  const std::string padding(251, ' ');
  EXPECT_EQ(realsOfTheLast(padding + "1 23"), std::pair(1.0, 23.0));
  EXPECT_EQ(realsOfTheLast(padding + "1 -2"), std::pair(1.0, -2.0));
}

TEST(ZrnScanning, FieldsInFrontOfAMissingOneAreSet) {
  const Stream stream = streamOf("1.5 0x\n");
  Line line;
  ASSERT_TRUE(line.read(stream.get()));
  double a = 0, b = 7;
  EXPECT_FALSE(line.scan(a, b));
  EXPECT_EQ(a, 1.5);
  EXPECT_EQ(b, 7);
}

TEST(ZrnScanning, SaysTheSameUnderADecimalComma) {
  AwkwardLines generator(6);
  std::vector<std::string> lines;
  std::vector<LineAnswer> expected;
  for (int i = 0; i < 50'000; ++i) {
    lines.emplace_back(generator.next().substr(0, 255).c_str());  // up to its first NUL
    expected.push_back(library(lines.back().c_str()));
  }
  const CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  for (std::size_t i = 0; i < lines.size(); ++i) {
    ASSERT_TRUE(ours(lines[i]) == expected[i]) << lines[i];
  }
}

}  // namespace
}  // namespace zkin::zrn
