// Names and contents of geometry files.

#include <algorithm>
#include <bit>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <filesystem>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

using korvo::Diagnostic;
using korvo::test::TempDir;

namespace {

std::string littleEndian(std::uint32_t word) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(word >> 8 * i & 0xFF);
  return bytes;
}

// A binary STL of `count` equal triangles with legs of `size` mm.
std::string stlOf(float size, std::uint32_t count = 1, const std::string& head = "") {
  const float numbers[] = {0, 0, 1, 0, 0, 0, size, 0, 0, 0, size, 0};
  std::string bytes = head + std::string(80 - head.size(), ' ') + littleEndian(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    for (const float number : numbers) bytes += littleEndian(std::bit_cast<std::uint32_t>(number));
    bytes += std::string(2, '\0');
  }
  return bytes;
}

constexpr const char* kTextStl =
    "solid body\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 9 0 0\nvertex 0 9 0\n"
    "endloop\nendfacet\nendsolid\n";

// A square of 2 x 2 poles: their places and weights, degrees, flags, intervals, two lists of knots.
constexpr const char* kSquare =
    "2 2 9 0.0 name\n0 0 0 1\n9 0 0 1\n0 9 0 1\n9 9 0 1\n1 1\n0 0\n0 1\n0 1\n"
    "4\n0\n0\n1\n1\n4\n0\n0\n1\n1\n";

std::string capitals(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string replaced(std::string text, std::string_view what, std::string_view by) {
  return text.replace(text.find(what), what.size(), by);
}

std::vector<Diagnostic> geometryOf(const std::filesystem::path& file) {
  std::vector<Diagnostic> found;
  for (const Diagnostic& d : korvo::check(file, korvo::Format::version1).diagnostics) {
    if (d.code.starts_with("geometry-")) found.push_back(d);
  }
  return found;
}

std::string codes(const std::vector<Diagnostic>& found) {
  std::string text;
  for (const Diagnostic& d : found) text += (text.empty() ? "" : " ") + d.code;
  return text;
}

// --- names

struct NameRow {
  const char* label;
  const char* name;
  const char* codes;
  const char* suggestion = "";  // of the first finding
  const char* mended = "";      // the name when its fix is applied
};

class GeometryName : public testing::TestWithParam<NameRow> {};

std::string mended(const Diagnostic& d) {
  std::string line = d.source;
  if (!d.fix) return "";
  line.replace(static_cast<std::size_t>(d.fix->column - 1), static_cast<std::size_t>(d.fix->length),
               d.fix->text);
  return line.substr(std::string("geom=").size());
}

TEST_P(GeometryName, IsLookedForAsTheLibraryDoes) {
  const NameRow& row = GetParam();
  const TempDir folder;
  folder.write("head.stl", stlOf(400));
  folder.write("bodies/table.stl", stlOf(400));
  folder.write("row-1.stl", stlOf(400));
  folder.write("two.stl", stlOf(400));
  folder.write("TWO.stl", stlOf(400));
  folder.write("plain", "");
  const std::string lines = "geom=" + std::string(row.name) + "\n";
  const auto found = geometryOf(folder.write("m.def", lines));
  EXPECT_EQ(codes(found), row.codes);
  if (found.empty()) return;
  EXPECT_EQ(found[0].line, 1);
  EXPECT_EQ(found[0].column, 6);
  if (*row.suggestion) {
    EXPECT_EQ(found[0].suggestion, row.suggestion);
  }
  EXPECT_EQ(mended(found[0]), row.mended);
}

INSTANTIATE_TEST_SUITE_P(
    CheckGeometry, GeometryName,
    testing::Values(
        NameRow{"Found", "$ZRN_MACHINE_DEF/head.stl", ""},
        NameRow{"FoundInAFolder", "$ZRN_MACHINE_DEF/bodies/table.stl", ""},
        NameRow{"FoundThroughTheParent", "$ZRN_MACHINE_DEF/bodies/../head.stl", ""},
        NameRow{"Missing", "$ZRN_MACHINE_DEF/spindle.stl", "geometry-missing",
                "put the file there, or leave its name out"},
        NameRow{"MissingFolder", "$ZRN_MACHINE_DEF/nowhere/head.stl", "geometry-missing"},
        NameRow{"AFolderIsNoFile", "$ZRN_MACHINE_DEF/bodies/.stl", "geometry-kind"},
        NameRow{"OneLetterSwapped", "$ZRN_MACHINE_DEF/haed.stl", "geometry-misspelt",
                "did you mean 'head.stl'?"},
        NameRow{"InItsFolder", "$ZRN_MACHINE_DEF/bodies/tabel.stl", "geometry-misspelt",
                "did you mean 'table.stl'?"},
        NameRow{"AnotherNumberOfARow", "$ZRN_MACHINE_DEF/row-2.stl", "geometry-missing"},
        NameRow{"Beside", "head.stl", "geometry-beside", "write '$ZRN_MACHINE_DEF/head.stl'",
                "$ZRN_MACHINE_DEF/head.stl"},
        NameRow{"BesideInAFolder", "bodies/table.stl", "geometry-beside",
                "write '$ZRN_MACHINE_DEF/bodies/table.stl'", "$ZRN_MACHINE_DEF/bodies/table.stl"},
        NameRow{"OtherLetters", "$ZRN_MACHINE_DEF/HEAD.stl", "geometry-case",
                "write '$ZRN_MACHINE_DEF/head.stl'", "$ZRN_MACHINE_DEF/head.stl"},
        NameRow{"OtherLettersInTheFolder", "$ZRN_MACHINE_DEF\\Bodies\\table.stl", "geometry-case",
                "write '$ZRN_MACHINE_DEF/bodies/table.stl'", "$ZRN_MACHINE_DEF/bodies/table.stl"},
        NameRow{"TwoFit", "$ZRN_MACHINE_DEF/Two.stl", "geometry-misspelt"},
        NameRow{"Backslash", "$ZRN_MACHINE_DEF\\head.stl", "geometry-backslash",
                "write '$ZRN_MACHINE_DEF/head.stl'", "$ZRN_MACHINE_DEF/head.stl"},
        NameRow{"AbsoluteOfWindows", "C:\\bodies\\head.stl", "geometry-absolute",
                "put the file beside this one and write '$ZRN_MACHINE_DEF/head.stl'"},
        NameRow{"Absolute", "/nonexistent/head.stl", "geometry-absolute"},
        NameRow{"Step", "$ZRN_MACHINE_DEF/head.step", "geometry-kind"},
        NameRow{"NoExtension", "$ZRN_MACHINE_DEF/plain", "geometry-kind"},
        NameRow{"OnlyAnExtension", "$ZRN_MACHINE_DEF/.stl", "geometry-kind"},
        NameRow{"StreamOfAFile", "$ZRN_MACHINE_DEF/head:a.stl", "geometry-kind"},
        NameRow{"WordInSmallLetters", "$zrn_machine_def/head.stl", "geometry-variable", "",
                "$ZRN_MACHINE_DEF/head.stl"},
        NameRow{"WordInBraces", "${ZRN_MACHINE_DEF}/head.stl", "geometry-variable", "",
                "$ZRN_MACHINE_DEF/head.stl"},
        NameRow{"WordOfWindows", "%ZRN_MACHINE_DEF%/head.stl", "geometry-variable", "",
                "$ZRN_MACHINE_DEF/head.stl"},
        NameRow{"AnotherVariable", "$HOME/head.stl", "geometry-variable"},
        NameRow{"ANumberIsNoFile", "12", ""}, NameRow{"ADirectionIsNoFile", "z", ""}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(CheckGeometry, TellsAFileOnceHoweverManyNameIt) {
  const TempDir folder;
  const std::string lines = "geom=$ZRN_MACHINE_DEF/a.stl\ngeom=$ZRN_MACHINE_DEF/a.stl\n";
  EXPECT_EQ(codes(geometryOf(folder.write("m.def", lines))), "geometry-missing");
}

TEST(CheckGeometry, OffersNoFileThatAnotherLineNames) {
  const TempDir folder;
  folder.write("head.stl", stlOf(400));
  const std::string lines = "geom=$ZRN_MACHINE_DEF/head.stl\ngeom=$ZRN_MACHINE_DEF/heat.stl\n";
  EXPECT_EQ(codes(geometryOf(folder.write("m.def", lines))), "geometry-missing");
}

TEST(CheckGeometry, PointsAtTheNameBehindOtherOperands) {
  const TempDir folder;
  const std::string lines = "axis = X, 1, +x, $ZRN_MACHINE_DEF/a.stl, 10, 20, 30\n";
  const auto found = geometryOf(folder.write("m.def", lines));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].column, 18);
  EXPECT_EQ(found[0].length, 22);
}

TEST(CheckGeometry, LooksBesideTheFileThatAnEditorHolds) {
  const TempDir folder;
  folder.write("head.stl", stlOf(400));
  const auto result = korvo::checkText("geom=$ZRN_MACHINE_DEF/head.stl\n", folder.path() / "m.def",
                                       korvo::Format::version1);
  for (const Diagnostic& d : result.diagnostics) EXPECT_FALSE(d.code.starts_with("geometry-"));
}

// --- contents

struct BodyRow {
  const char* label;
  const char* name;
  std::string bytes;
  const char* codes;
};

class GeometryBody : public testing::TestWithParam<BodyRow> {};

TEST_P(GeometryBody, IsLookedAt) {
  const BodyRow& row = GetParam();
  const TempDir folder;
  folder.write(row.name, row.bytes);
  const std::string lines = "geom=$ZRN_MACHINE_DEF/" + std::string(row.name) + "\ntool=z,0,0,250\n";
  EXPECT_EQ(codes(geometryOf(folder.write("m.def", lines))), row.codes);
}

// The size of a binary STL is 84 + 50 n: 134 with one triangle, 184 with two.
INSTANTIATE_TEST_SUITE_P(
    CheckGeometry, GeometryBody,
    testing::Values(
        BodyRow{"Binary", "a.stl", stlOf(400), ""}, BodyRow{"Text", "a.stl", kTextStl, ""},
        BodyRow{"TextInCapitals", "a.stl", capitals(kTextStl), ""},
        BodyRow{"TextOfTwoSolids", "a.stl", std::string(kTextStl) + kTextStl, ""},
        BodyRow{"TextCutOff", "a.stl", std::string(kTextStl).substr(0, 90), "geometry-damaged"},
        BodyRow{"TextCutBetweenFacets", "a.stl", replaced(kTextStl, "endsolid", ""),
                "geometry-damaged"},
        BodyRow{"TextCutInItsSecondSolid", "a.stl", kTextStl + replaced(kTextStl, "endsolid", ""),
                "geometry-damaged"},
        BodyRow{"TextWithADecimalComma", "a.stl", replaced(kTextStl, "9 0 0", "9,5 0 0"),
                "geometry-damaged"},
        BodyRow{"BinaryWithACornerThatIsNoNumber", "a.stl", stlOf(HUGE_VALF), "geometry-damaged"},
        BodyRow{"BinaryThatBeginsWithSolid", "a.stl", stlOf(400, 2, "solid body"), ""},
        BodyRow{"BinaryWithATail", "a.stl", stlOf(400) + "tail", ""},
        BodyRow{"Empty", "a.stl", "", "geometry-empty"},
        BodyRow{"EmptyZrn", "a.zrn", "", "geometry-empty"},
        BodyRow{"CutOff", "a.stl", stlOf(400, 2).substr(0, 183), "geometry-damaged"},
        BodyRow{"CutInTheHead", "a.stl", stlOf(400).substr(0, 60), "geometry-damaged"},
        BodyRow{"Zeros", "a.stl", std::string(1000, '\0'), "geometry-damaged"},
        BodyRow{"AnotherText", "a.stl", "ISO-10303-21;\nHEADER;\n" + std::string(200, 'x'),
                "geometry-damaged"},
        BodyRow{"BinaryWithoutTriangles", "a.stl", stlOf(400, 0), "geometry-no-triangles"},
        BodyRow{"TextWithoutFacets", "a.stl", "solid a\nendsolid a\n", "geometry-no-triangles"},
        BodyRow{"Metres", "a.stl", stlOf(0.4f), "geometry-metres"},
        BodyRow{"MetresInManyTriangles", "a.stl", stlOf(4.9f, 1000), "geometry-metres"},
        BodyRow{"SmallBody", "a.stl", stlOf(5.0f), ""},
        BodyRow{"Nurbs", "a.zrn", std::string("0 1 100\n") + kSquare, ""},
        BodyRow{"NurbsCutOff", "a.zrn", kSquare + std::string(kSquare).substr(0, 60),
                "geometry-damaged"},
        BodyRow{"NurbsWithASpoiltPole", "a.zrn", replaced(kSquare, "9 0 0 1", "9 x 0 1"),
                "geometry-damaged"},
        BodyRow{"CurvesAlone", "a.zrn", "2 2 1\n0 0 0\n9 0 0\n4 1 9\n0 0 0 1\n",
                "geometry-no-triangles"},
        BodyRow{"Planes", "a.zrn", "2 2 10\n0 0 1\n", "geometry-no-triangles"},
        BodyRow{"BinaryZrn", "a.zrn", std::string("2 2 9\n\0\0", 8), "geometry-damaged"}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(CheckGeometry, SmallBodiesOfToolsAndOfSmallMachinesAreLeft) {
  const TempDir folder;
  folder.write("a.stl", stlOf(0.4f));
  const auto found = [&](const std::string& lines) {
    return codes(geometryOf(folder.write("m.def", lines)));
  };
  EXPECT_EQ(found("tool=z,0,0,250,$ZRN_MACHINE_DEF/a.stl\n"), "");
  EXPECT_EQ(found("geom=$ZRN_MACHINE_DEF/a.stl\ntool=z,0,0,25\n"), "");
  EXPECT_EQ(found("axis=X,1,x,$ZRN_MACHINE_DEF/a.stl\nlimits=X,0,600\n"), "geometry-metres");
}

TEST(CheckGeometry, SaysHowLargeABodyIs) {
  const TempDir folder;
  folder.write("a.stl", stlOf(0.5f));
  const auto found =
      geometryOf(folder.write("m.def", "geom=$ZRN_MACHINE_DEF/a.stl\ntool=z,0,0,250\n"));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].text,
            "expected a body in millimetres, found that '$ZRN_MACHINE_DEF/a.stl' is 0.5 mm large "
            "on a machine of 250 mm");
}

}  // namespace
