#include <gtest/gtest.h>

#include <algorithm>

#include "tests/zgeo/StlFiles.h"

namespace zgeo {
namespace {

using test::binary;
using test::bytesOf;
using test::facet;
using test::kA;
using test::kB;
using test::load;
using test::Loaded;
using test::solid;

struct Row {
  std::string name;
  std::string bytes;
};

std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }

const auto rowName = [](const auto& row) { return row.param.name; };

// --- Files of neither form

class StlRefuses : public testing::TestWithParam<Row> {};

TEST_P(StlRefuses, WithACodeAndAnEmptyList) {
  EXPECT_EQ(load(GetParam().bytes), (Loaded{UTri::STL_NO_STL, {}}));
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

INSTANTIATE_TEST_SUITE_P(
    Neither, StlRefuses,
    testing::Values(
        Row{"Empty", ""}, Row{"OneByte", "s"}, Row{"OneNul", std::string(1, '\0')},
        Row{"WhiteSpace", " \r\n\t"}, Row{"MuchWhiteSpace", std::string(100000, '\n')},
        Row{"MarkAlone", "\xEF\xBB\xBF"}, Row{"SolidAlone", "solid"},
        Row{"SolidAndName", "solid part\n"},
        Row{"SolidAndLongName", "solid " + std::string(500, 'x')},
        Row{"HeaderCutShort", std::string(83, '\0')},
        Row{"SolidHeaderCutShort", "solid" + std::string(78, '\0')},
        Row{"FacetsWithoutSolid", facet(kA) + facet(kB)},
        Row{"SolidsForSolid", "solids part\n" + facet(kA) + "endsolid"},
        Row{"SolidGlued", "solidpart\n" + facet(kA) + "endsolid"},
        Row{"SolidNotFirst", "a solid part\n" + facet(kA) + "endsolid"},
        Row{"SolidBehindAComment", "# made by hand\n" + solid(facet(kA))},
        Row{"SolidQuoted", "\"solid\" part\n" + facet(kA)},
        Row{"TwoMarks", "\xEF\xBB\xBF\xEF\xBB\xBF" + solid(facet(kA))},
        Row{"CutMark", "\xBB\xBF" + solid(facet(kA))},
        Row{"FacetsForFacet",
            "solid x\nfacets normal 0 0 1\nend solid and more of it to be long\n" +
                std::string(100, ' ')},
        Row{"EndsolidAlone", "endsolid part\n" + std::string(100, ' ')},
        Row{"Xml", "<?xml version=\"1.0\"?>" + repeated("<vertex><x>1</x></vertex>\n", 20)},
        Row{"Html", "<!DOCTYPE html>\n<html>" + repeated("<p>solid facet endsolid</p>\n", 20)},
        Row{"Json", "{\"solid\": [" + repeated("{\"vertex\": [1, 2, 3]},\n", 20)},
        Row{"Obj", repeated("v 1 2 3\nf 1 2 3\n", 20)},
        Row{"Off", "OFF\n3 1 0\n" + repeated("1 2 3\n", 40)},
        Row{"Step", "ISO-10303-21;\nHEADER;\n" + repeated("#1=POINT(1.,2.,3.);\n", 20)},
        Row{"Csv", repeated("1,2,3,4,5,6,7,8,9\r\n", 20)},
        Row{"PlainLatin1", repeated("une pi\xE8"
                                    "ce solide \xE0 facettes\n",
                                    20)},
        Row{"Utf8Prose", repeated("\xE6\xA9\x9F\xE6\xA2\xB0 solid facet ", 20)}),
    rowName);

// --- Files that announce triangles and have none that can be read

class StlFindsNone : public testing::TestWithParam<Row> {};

TEST_P(StlFindsNone, AndSaysSo) {
  EXPECT_EQ(load(GetParam().bytes), (Loaded{UTri::STL_NO_TRIANGLE, {}}));
}

INSTANTIATE_TEST_SUITE_P(Binary, StlFindsNone,
                         testing::Values(Row{"CountOfOneAndNoRecord", binary({}, 1)},
                                         Row{"LargestCountAndNoRecord", binary({}, 0xFFFFFFFF)},
                                         Row{"SolidHeaderAndNoRecord", binary({}, 3, "solid part")},
                                         Row{"OneByteOfARecord", binary({}, 1) + "x"},
                                         Row{"RecordShortOfAByte", binary({kA}).substr(0, 133)},
                                         Row{"AllNan", binary({}, 2) + std::string(100, '\xFF')},
                                         Row{"AllInfinite", binary({}, 1) + std::string(12, '\0') +
                                                                repeated(bytesOf(0x7F800000u), 9) +
                                                                "ab"}),
                         rowName);

/// A facet with one fault in a file of its own: nothing can be read.
std::string lone(const std::string& text) { return "solid part\n" + text + "\nendsolid part\n"; }

/// A facet whose first coordinate is that text.
std::string withNumber(const std::string& text) {
  return "facet normal 0 0 1\nouter loop\nvertex " + text +
         " 2 3\nvertex 4 5 6\nvertex 7 8 9\nendloop\nendfacet\n";
}

const std::string kHead = "facet normal 0 0 1 outer loop ";
const std::string kCorners = "vertex 1 2 3 vertex 4 5 6 vertex 7 8 9 ";
const std::string kTail = "endloop endfacet ";

const Row kFaults[] = {
    // numbers
    {"CommaForPoint", withNumber("10,5")},
    {"CommaBehind", withNumber("10,")},
    {"CommaInFront", withNumber(",5")},
    {"Thousands", withNumber("1,000.0")},
    {"Apostrophe", withNumber("1'000")},
    {"Underscore", withNumber("1_000")},
    {"TwoPoints", withNumber("1.2.3")},
    {"PointsTogether", withNumber("1..2")},
    {"TwoSigns", withNumber("--1")},
    {"PlusMinus", withNumber("+-1")},
    {"SignBehind", withNumber("1-")},
    {"SignAlone", withNumber("-")},
    {"PointAlone", withNumber(".")},
    {"SignAndPoint", withNumber("-.")},
    {"ExponentAlone", withNumber("e5")},
    {"ExponentOfPoint", withNumber("1e2.5")},
    {"ExponentTwice", withNumber("1e2e3")},
    {"ExponentOfTwoSigns", withNumber("1e+-3")},
    {"FortranExponent", withNumber("1d5")},
    {"FloatSuffix", withNumber("1.5f")},
    {"Unit", withNumber("10mm")},
    {"Percent", withNumber("10%")},
    {"HexWithoutDigits", withNumber("0x")},
    {"HexDigitTooLarge", withNumber("0x1g")},
    {"HexWithDecimalExponent", withNumber("0x1p1.5")},
    {"Word", withNumber("one")},
    {"Quoted", withNumber("\"1\"")},
    {"InParentheses", withNumber("(1)")},
    {"Semicolon", withNumber("1;")},
    {"FullWidthDigit", withNumber("\xEF\xBC\x91")},
    {"MinusOfTypesetters", withNumber("\xE2\x88\x92"
                                      "1")},
    {"Latin1", withNumber("1\xA0")},
    {"NulBehind", withNumber(std::string("1\0", 2))},
    {"NulInside", withNumber(std::string("1\0"
                                         "0",
                                         3))},
    {"ControlInside", withNumber("1\x01"
                                 "0")},
    {"Nan", withNumber("nan")},
    {"NanUpper", withNumber("-NaN")},
    {"NanWithText", withNumber("nan(1)")},
    {"NanOfMicrosoft", withNumber("-1.#IND")},
    {"Infinity", withNumber("inf")},
    {"MinusInfinity", withNumber("-Infinity")},
    {"InfinityCut", withNumber("infi")},
    {"TooLarge", withNumber("1e309")},
    {"TooLargeExponent", withNumber("1e99999999999999999999")},
    {"TooLargeDigits", withNumber(std::string(400, '9'))},
    {"TooLargeHex", withNumber("0x1p1024")},
    {"VeryLongNonsense", withNumber(std::string(300000, '7'))},
    // corners
    {"NumberMissing", kHead + "vertex 1 2 vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"LastNumberMissing", kHead + "vertex 1 2 3 vertex 4 5 6 vertex 7 8 " + kTail},
    {"NumbersMissing", kHead + "vertex vertex vertex " + kTail},
    {"NumberTooMany", kHead + "vertex 1 2 3 4 vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"NumberTooManyAtTheEnd", kHead + kCorners + "10 " + kTail},
    {"NoCorner", kHead + kTail},
    {"OneCorner", kHead + "vertex 1 2 3 " + kTail},
    {"TwoCorners", kHead + "vertex 1 2 3 vertex 4 5 6 " + kTail},
    {"FourCorners", kHead + kCorners + "vertex 1 1 1 " + kTail},
    {"SixCorners", kHead + kCorners + kCorners + kTail},
    {"CornersWithoutWord", kHead + "1 2 3 4 5 6 7 8 9 " + kTail},
    {"VertexGluedToItsNumber", kHead + "vertex1 2 3 vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"VertexMisspelt", kHead + "vertec 1 2 3 vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"VertexCutShort", kHead + "verte 1 2 3 vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"VerticesForVertex", kHead + "vertexes 1 2 3 vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"WordBetweenCorners", kHead + "vertex 1 2 3 and vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"CommentBehindACorner", kHead + "vertex 1 2 3 # vertex 4 5 6 vertex 7 8 9 " + kTail},
    // words around them
    {"OuterMissing", "facet normal 0 0 1 loop " + kCorners + kTail},
    {"LoopMissing", "facet normal 0 0 1 outer " + kCorners + kTail},
    {"OuterLoopGlued", "facet normal 0 0 1 outerloop " + kCorners + kTail},
    {"OuterTwice", "facet normal 0 0 1 outer outer loop " + kCorners + kTail},
    {"FacetMissing", "normal 0 0 1 facets normal outer loop " + kCorners + kTail + "facet normal"},
    {"EndloopMissing", kHead + kCorners + "endfacet "},
    {"EndfacetMissing", kHead + kCorners + "endloop "},
    {"EndfacetFirst", kHead + kCorners + "endfacet endloop "},
    {"EndOfFacetInTwoWords", kHead + kCorners + "endloop end facet "},
    {"EndOfLoopInTwoWords", kHead + kCorners + "end loop endfacet "},
    {"EndfacetTooLong", kHead + kCorners + "endloop endfacets "},
    {"EndsolidInside", kHead + "vertex 1 2 3 endsolid vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"SolidInside", kHead + "vertex 1 2 3 solid vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"LoopInside", kHead + "vertex 1 2 3 outer loop vertex 4 5 6 vertex 7 8 9 " + kTail},
    {"FacetClosedBeforeItsLoop", "facet normal 0 0 1 endfacet outer loop " + kCorners + kTail},
    {"NormalThatEndsItsFacet", "facet normal endfacet 0 1 outer loop " + kCorners + kTail},
    {"NormalThatEndsItsSolid", "facet normal 0 0 endsolid outer loop " + kCorners + kTail},
    {"SolidClosedBeforeItsLoop", "facet normal 0 0 1 endsolid outer loop " + kCorners + kTail},
};

Row loneFault(const Row& fault) { return {fault.name, lone(fault.bytes)}; }

std::vector<Row> loneFaults() {
  std::vector<Row> rows;
  for (const Row& fault : kFaults) rows.push_back(loneFault(fault));
  return rows;
}

INSTANTIATE_TEST_SUITE_P(Text, StlFindsNone, testing::ValuesIn(loneFaults()), rowName);

// --- The same faults among facets that are whole: none of these is lost or shifted

class StlPassesOver : public testing::TestWithParam<Row> {};

/// Among facets in lines and among facets in one line: one of them is the fault's own layout, which
/// the reader knows by then.
TEST_P(StlPassesOver, TheFacetWithTheFault) {
  const std::string inLines = facet(kA) + facet(kB);
  std::string inOneLine = inLines;
  std::ranges::replace(inOneLine, '\n', ' ');
  for (const std::string& whole : {inLines, inOneLine}) {
    EXPECT_EQ(load(solid(whole + GetParam().bytes + whole)),
              (Loaded{UTri::STL_LOADED, {kA, kB, kA, kB}}));
  }
}

INSTANTIATE_TEST_SUITE_P(Text, StlPassesOver, testing::ValuesIn(kFaults), rowName);

TEST(StlText, CutAnywhereGivesTheFacetsBeforeTheCut) {
  const std::string text = solid(facet(kA) + facet(kB));
  const std::size_t first = text.find("endfacet") + 8, second = text.rfind("endfacet") + 8;
  for (std::size_t size = first; size < text.size(); ++size) {
    const std::vector<UTri> expected = size < second ? std::vector{kA} : std::vector{kA, kB};
    EXPECT_EQ(load(text.substr(0, size)), (Loaded{UTri::STL_LOADED, expected})) << size;
  }
  for (std::size_t size = text.find("normal") + 6; size < first; ++size) {
    EXPECT_EQ(load(text.substr(0, size)), (Loaded{UTri::STL_NO_TRIANGLE, {}})) << size;
  }
}

}  // namespace
}  // namespace zgeo
