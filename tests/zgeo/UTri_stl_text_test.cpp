#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

#include "tests/support/CommaLocale.h"
#include "tests/support/StlReference.h"
#include "tests/zgeo/StlFiles.h"

namespace zgeo {
namespace {

using korvo::test::StlReference;
using test::facet;
using test::kA;
using test::kB;
using test::kC;
using test::load;
using test::Loaded;
using test::solid;

Loaded loaded(std::vector<UTri> triangles) { return {UTri::STL_LOADED, std::move(triangles)}; }

std::string replaced(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size()) {
    text.replace(at, what.size(), by);
  }
  return text;
}

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

const std::string kThree = solid(facet(kA) + facet(kB) + facet(kC));

// --- Layouts, all of the same three triangles

struct Layout {
  const char* name;
  std::string text;
};

std::ostream& operator<<(std::ostream& out, const Layout& layout) { return out << layout.name; }

class StlLayout : public testing::TestWithParam<Layout> {};

TEST_P(StlLayout, GivesTheThreeTriangles) {
  EXPECT_EQ(load(GetParam().text), loaded({kA, kB, kC}));
}

INSTANTIATE_TEST_SUITE_P(
    Text, StlLayout,
    testing::Values(
        Layout{"Usual", kThree},  //
        Layout{"WindowsLineEnds", replaced(kThree, "\n", "\r\n")},
        Layout{"OldLineEnds", replaced(kThree, "\n", "\r")},
        Layout{"OneLine", replaced(kThree, "\n", " ")},
        Layout{"Tabs", replaced(replaced(kThree, " ", "\t\t"), "\n", "\n\t")},
        Layout{"VerticalTabsAndFormFeeds", replaced(replaced(kThree, " ", "\v"), "\n", "\f")},
        Layout{"AWordALine", replaced(kThree, " ", "\n")},
        Layout{"WideBlanks", replaced(kThree, " ", std::string(500, ' '))},
        Layout{"BlankLines", replaced(kThree, "\n", "\n\n \n")}, Layout{"UpperCase", upper(kThree)},
        Layout{"MixedCase", replaced(replaced(kThree, "vertex", "VerTEX"), "endfacet", "EndFacet")},
        Layout{"CaseThatChanges", solid(facet(kA) + upper(facet(kB)) + facet(kC))},
        Layout{"Utf8Mark", "\xEF\xBB\xBF" + kThree},
        Layout{"Utf8MarkAndLines", "\xEF\xBB\xBF\r\n\n" + kThree},
        Layout{"WhiteSpaceBefore", " \n\t\r\n" + kThree},
        Layout{"NoLineEndAtTheEnd", kThree.substr(0, kThree.size() - 1)},
        Layout{"WhiteSpaceAtTheEnd", kThree + std::string(1000, '\n')},
        Layout{"EndOfFileMark", kThree + "\x1A"},
        Layout{"NulsAtTheEnd", kThree + std::string(5, '\0')},
        Layout{"NoEndsolid", kThree.substr(0, kThree.find("endsolid"))},
        Layout{"EndsWithEndfacet", kThree.substr(0, kThree.find("\nendsolid"))},
        Layout{"NoName", "solid\n" + facet(kA) + facet(kB) + facet(kC) + "endsolid\n"},
        Layout{"LongName", "solid " + std::string(5000, 'n') + "\n" + facet(kA) + facet(kB) +
                               facet(kC) + "endsolid"},
        Layout{"NameOfWords",
               replaced(kThree, "part", "facet normal 1 vertex 1 2 3 endfacet outer endloop")},
        Layout{"NameThatIsFacet", replaced(kThree, "part", "facet")},
        Layout{"NameThatIsSolid", replaced(kThree, "part", "solid")},
        Layout{"NameBeyondAscii", replaced(kThree, "part", "t\xEAte \xE6\xA9\x9F")},
        Layout{"SeveralSolids", solid(facet(kA)) + solid("") + solid(facet(kB) + facet(kC))},
        Layout{"SolidsWithoutEnd",
               "solid a\n" + facet(kA) + "solid b\n" + facet(kB) + "solid c\n" + facet(kC)},
        Layout{"FacetsBehindEndsolid", solid(facet(kA)) + facet(kB) + facet(kC)},
        Layout{"CommentsBetweenFacets", solid(facet(kA) + "# a comment\n" + facet(kB) + facet(kC))},
        Layout{"NormalsThatAreNone", replaced(kThree, "0 0 1", "nan -nan -1.#IND00")},
        Layout{"NormalsWithCommas", replaced(kThree, "0 0 1", "0,5 0,5 0,70")},
        Layout{"NormalsLeftOut", replaced(kThree, "normal 0 0 1", "")},
        Layout{"NormalsOfTwoNumbers", replaced(kThree, "0 0 1", "0 1")},
        Layout{"NormalsOfWords", replaced(kThree, "0 0 1", "somewhere up there")},
        Layout{"AnInnerFacetStartsAnew", solid("facet normal 0 0 1 outer loop vertex 1 2 3\n" +
                                               facet(kA) + facet(kB) + facet(kC))}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(StlText, OfNoFacetsIsLoaded) {
  for (const char* text : {"solid\nendsolid", "solid x\nendsolid x\n", "SOLID ENDSOLID",
                           "solid facet\nendsolid facet", "solid a endsolid a solid b endsolid"}) {
    EXPECT_EQ(load(text), loaded({})) << text;
  }
}

TEST(StlText, ControlByteInItsNameIsStillText) {
  for (std::size_t place = 75; place < 90; ++place) {  // a binary file has its count at 80 to 83
    std::string name(100, 'n');
    name[place] = '\x01';
    EXPECT_EQ(load("solid " + name + "\n" + facet(kA) + "endsolid"), loaded({kA})) << place;
  }
}

TEST(StlText, KeepsTheDigitsOfDoubles) {
  const UTri t({0.1, 1.0 / 3, 1e-300}, {2e300, 123456.789012345, -5e-324}, {-0.0, 1e22, 1e23});
  const Loaded result = load(solid(facet(t)));
  EXPECT_EQ(result, loaded({t}));
  EXPECT_TRUE(std::signbit(result.triangles[0].p[2].x));
}

// --- Numbers

struct Number {
  std::string text;
  double value;
};

std::ostream& operator<<(std::ostream& out, const Number& number) { return out << number.text; }

class StlNumber : public testing::TestWithParam<Number> {};

/// The number at one of nine places, in the first facet of a file and in one laid out as the first.
TEST_P(StlNumber, IsReadAtEveryPlace) {
  for (int place = 0; place < 9; ++place) {
    UTri expected({11, 12, 13}, {14, 15, 16}, {17, 18, 19});
    (&expected.p[place / 3].x)[place % 3] = GetParam().value;
    const std::string text = replaced(facet({{11, 12, 13}, {14, 15, 16}, {17, 18, 19}}),
                                      std::to_string(11 + place), GetParam().text);
    EXPECT_EQ(load(solid(text + facet(kA) + text + text)),
              loaded({expected, kA, expected, expected}));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Form, StlNumber,
    testing::Values(
        Number{"1", 1}, Number{"+1", 1}, Number{"-1", -1}, Number{"1.", 1}, Number{".5", 0.5},
        Number{"-.5", -0.5}, Number{"+.5e1", 5}, Number{"00012", 12}, Number{"1e3", 1000},
        Number{"1E3", 1000}, Number{"1e+03", 1000}, Number{"-1.5E-003", -0.0015},
        Number{"1.e2", 100}, Number{"1e0000000002", 100}, Number{"1e", 1}, Number{"1e+", 1},
        Number{"1E-", 1}, Number{"0x10", 16}, Number{"0X1.8P1", 3}, Number{"-0x.8", -0.5},
        Number{"0x1p", 1}, Number{"0x.", 0}, Number{"1e-400", 0}, Number{"0e999", 0},
        Number{"4.9e-324", 5e-324}, Number{"2.2250738585072011e-308", 0x0.fffffffffffffp-1022},
        Number{"1.7976931348623157e308", 0x1.fffffffffffffp1023},
        Number{"9007199254740993", 9007199254740992.0},  // halfway: to the even one
        Number{"9007199254740993.00000000000000000000000000000000000001", 9007199254740994.0},
        Number{"123456789012345678901234567890", 0x1.8ee90ff6c373ep+96},
        Number{"0." + std::string(300, '0') + "1e301", 1}, Number{std::string(400, '0') + "7", 7},
        Number{"1" + std::string(300, '0') + "e-300", 1}, Number{"12345678", 12345678},
        Number{"1234567.8", 1234567.8}, Number{"0.12345678", 0.12345678},
        Number{"12345678.12345678", 12345678.12345678},
        Number{"0.1234567812345678", 0.1234567812345678}, Number{"8.5e22", 8.5e22},
        Number{"8.5e-22", 8.5e-22}, Number{"1e22", 1e22}, Number{"1e23", 1e23},
        Number{"3.000000e+00", 3}, Number{"-9.999999e-39", -9.999999e-39}));

TEST(StlText, ReadsPointsUnderACommaLocale) {
  const std::string before = facet(kA);  // written while the point is one
  const korvo::test::CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  EXPECT_EQ(load("solid facet normal 0 0 1 outer loop vertex 0.5 1.25 -2.75 vertex 3.5 4 5 vertex "
                 "1e-1 0.12345678901234567890123 8 endloop endfacet endsolid"),
            loaded({UTri({0.5, 1.25, -2.75}, {3.5, 4, 5}, {0.1, 0.12345678901234568, 8})}));
  EXPECT_EQ(load(solid(before + "facet normal 0 0 1 outer loop vertex 0,5 1 2 vertex 1 2 3 "
                                "vertex 4 5 6 endloop endfacet ")),
            loaded({kA}));
}

// --- Blocks

TEST(StlText, GivesEveryFacetWhereverABlockEnds) {
  const std::string facets = facet(kA) + upper(facet(kB)) + facet(kC);
  constexpr std::size_t kBlock = 1 << 18;
  for (std::size_t before = kBlock - 420; before < kBlock + 4; ++before) {
    const std::string text = "solid facet\n" + std::string(before, ' ') + facets;
    EXPECT_EQ(load(text), loaded({kA, kB, kC})) << before;
  }
}

TEST(StlText, DropsOnlyTheFacetThatHasAWordLongerThanABlock) {
  for (const std::size_t length : {262143u, 262144u, 262145u, 600000u}) {
    const std::string number = "0." + std::string(length, '0') + "1";
    const std::string text =
        facet(kA) + replaced(facet(kB), "-2.25", number) + facet(kC) + std::string(length, 'x');
    EXPECT_EQ(load(solid(text + "facet " + facet(kA) + text)), loaded({kA, kC, kA, kA, kC}))
        << length;
  }
}

TEST(StlText, ALongWordIsNoKeywordByItsEnd) {
  for (const std::size_t length : {262130u, 262144u, 262160u, 524288u}) {
    EXPECT_EQ(load("solid facet normal " + facet(kA) + std::string(length, 'x') + facet(kB)),
              loaded({kA}))
        << length;
  }
}

// --- Laws

/// Writes triangles with a layout that changes at random, or that stays for some facets.
class Writer {
 public:
  explicit Writer(unsigned seed) : random_(seed) {}

  std::string write(const std::vector<UTri>& triangles) {
    std::string text = word("solid") + "a" + space();
    for (const UTri& t : triangles) {
      if (any(4) == 0) layout_ = static_cast<unsigned>(random_());
      text += facet(t);
      if (any(50) == 0) text += word("endsolid") + space() + word("solid") + "b" + space();
    }
    return text + word("endsolid");
  }

  double coordinate() {
    const double digits = static_cast<double>(any(2'000'000)) - 1e6;
    switch (any(4)) {
      case 0:
        return digits;
      case 1:
        return digits * 1e-4;
      case 2:
        return digits * std::pow(10.0, static_cast<double>(any(600)) - 300);
      default:
        return std::bit_cast<double>(0x4000000000000000u | (std::uint64_t{random_()} << 29) |
                                     random_());
    }
  }

 private:
  std::uint32_t any(std::uint32_t below) { return static_cast<std::uint32_t>(random_()) % below; }

  /// White space and case of a facet come from generators that start anew for each facet of a run.
  std::string facet(const UTri& t) {
    std::minstd_rand layout(layout_);
    const auto put = [&](std::string lower) {
      for (char& c : lower) {
        if (layout() % 8 == 0) c = static_cast<char>(c & ~0x20);
      }
      const char spaces[] = " \n\t\r\v\f  ";
      const auto count = 1 + layout() % 6;
      for (unsigned long i = 0; i < count; ++i) lower += spaces[layout() % 8];
      return lower;
    };
    std::string text =
        put("facet") + put("normal") + kNormals[any(4)] + put("") + put("outer") + put("loop");
    for (const UVec3d& p : t.p) {
      text += put("vertex");
      for (const double x : {p.x, p.y, p.z}) text += test::number(x) + put("");
    }
    return text + put("endloop") + put("endfacet");
  }
  std::string word(const std::string& lower) {
    return any(2) ? lower + space() : upper(lower) + " ";
  }
  std::string space() { return any(2) ? "\n" : " \r\n  "; }

  static constexpr const char* kNormals[] = {"0 0 1", "-1.5e-01 0.25 1E0", "nan nan nan", "1 2"};

  std::mt19937 random_;
  unsigned layout_ = 1;
};

std::vector<UTri> anyTriangles(Writer& writer, std::size_t count) {
  std::vector<UTri> triangles(count);
  for (UTri& t : triangles) {
    for (UVec3d& p : t.p) p.set(writer.coordinate(), writer.coordinate(), writer.coordinate());
  }
  return triangles;
}

RC_GTEST_PROP(StlTextLaws, WhatIsWrittenIsLoaded, ()) {
  Writer writer(*rc::gen::arbitrary<unsigned>());
  const std::vector<UTri> triangles = anyTriangles(writer, *rc::gen::inRange(0, 100));
  RC_ASSERT(load(writer.write(triangles)) == loaded(triangles));
}

/// Rounded to float; out of its range, to a number that is none.
UTri asFloats(UTri t) {
  for (UVec3d& p : t.p) {
    for (double* x : {&p.x, &p.y, &p.z}) {
      *x = std::fabs(*x) < 1e38 ? static_cast<double>(static_cast<float>(*x)) : 1e38f;
    }
  }
  return t;
}

TEST(StlTextLaws, AMillionLinesComeBackAsTheyWereWritten) {
  Writer writer(20);
  std::vector<UTri> triangles = anyTriangles(writer, 150'000);  // seven lines each
  EXPECT_EQ(load(writer.write(triangles)), loaded(triangles));
  std::ranges::transform(triangles, triangles.begin(), asFloats);
  EXPECT_EQ(load(test::binary(triangles)), loaded(triangles));
}

/// Files of facets that were damaged here and there give the facets that are whole, the same as a
/// reader of words and sscanf finds.
RC_GTEST_PROP(StlTextLaws, DamagedFilesGiveWhatTheReferenceReads, ()) {
  constexpr const char* kPieces[] = {"facet", "normal", "outer",    "loop",     "vertex", "endloop",
                                     "e",     ",",      "endfacet", "endsolid", " ",      "\n",
                                     "1",     ".",      "-",        "nan",      "0x",     "x"};
  const auto pieces = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 18));
  std::mt19937 random(*rc::gen::arbitrary<unsigned>());
  std::string text = facet(kA) + facet(kB) + facet(kC);
  text += text + text;
  for (const int piece : pieces) {
    const std::size_t at = random() % text.size();
    const bool replaces = random() % 2 == 0;
    text.replace(at, replaces ? random() % 8 : 0, kPieces[piece]);
  }
  text = "solid facet\n" + text;
  const StlReference reference(text);
  RC_ASSERT(load(text).triangles == reference.triangles());
}

}  // namespace
}  // namespace zgeo
