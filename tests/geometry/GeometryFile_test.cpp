// The file of one body: which reader its name selects, and that nothing comes of what does not
// load.

#include "geometry/GeometryFile.h"

#include <limits>

#include <gtest/gtest.h>

#include "tests/geometry/ZrnFaces.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/TempFile.h"
#include "tests/support/TraceCapture.h"

namespace {

using namespace korvo::test;  // NOLINT: the helpers of this folder
using zgeo::UTri;
using zkin::loadGeometryFile;

const UTri kFacet({0, 0, 0}, {1, 0, 0}, {0, 1, 0.5});
const std::string kStl =
    "solid one\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 .5\n"
    "endloop\nendfacet\nendsolid one\n";
const std::string kZrn = rectangle(100, 80).text() + uvRectangle(.1, .1, .9, .9);

Triangles loaded(const std::wstring& path) {
  Triangles triangles(5);
  loadGeometryFile(path, triangles);
  return triangles;
}

class BodyFile : public TracedTest {
 protected:
  std::wstring write(const std::string& name, const std::string& bytes) const {
    return folder.write(name, bytes).wstring();
  }
  std::wstring at(const std::wstring& name) const { return folder.path().wstring() + L"/" + name; }

  TempDir folder;
};

TEST_F(BodyFile, HasThePathThatItsFolderSpells) {
  const std::filesystem::path file = folder.write("K\xC3\xB6rper/Body.STL", kStl);
  for (const wchar_t* asked :
       {L"Körper/Body.STL", L"K\xC3\xB6rper/Body.STL", L"Körper\\body.stl"}) {
    EXPECT_EQ(zkin::geometryFilePath(at(asked)), file.string());
  }
  EXPECT_EQ(zkin::geometryFilePath(at(L"Körper")), "") << "a folder";
  EXPECT_EQ(zkin::geometryFilePath(at(L"none.stl")), "");
  EXPECT_EQ(zkin::geometryFilePath(L""), "");
}

// --- the extension

struct Named {
  const char* name;
  const wchar_t* asked;  ///< Below the folder.
  const char* file;      ///< What is there.
  bool isRead;
};

class BodyFileName : public BodyFile, public testing::WithParamInterface<Named> {};

TEST_P(BodyFileName, SelectsTheReaderOfStl) {
  write(GetParam().file, kStl);
  EXPECT_EQ(loaded(at(GetParam().asked)), GetParam().isRead ? Triangles{kFacet} : Triangles());
}

const Named kNames[] = {
    {"LowerCase", L"part.stl", "part.stl", true},
    {"UpperCase", L"PART.STL", "PART.STL", true},
    {"MixedCase", L"part.StL", "part.StL", true},
    {"UpperCaseAskedOfLowerCase", L"PART.STL", "part.stl", true},
    {"LastDotCounts", L"part.zrn.stl", "part.zrn.stl", true},
    {"LastDotCountsAgainst", L"part.stl.bak", "part.stl.bak", false},
    {"NoExtension", L"part", "part", false},
    {"DotAtTheEnd", L"part.", "part.", false},
    {"TwoDotsAtTheEnd", L"part.stl.", "part.stl.", false},
    {"OnlyTheExtension", L".stl", ".stl", false},
    {"TwoDotsInFront", L"..stl", "..stl", true},
    {"HiddenFile", L".part.stl", ".part.stl", true},
    {"AnotherExtension", L"part.step", "part.step", false},
    {"LongerExtension", L"part.stlx", "part.stlx", false},
    {"ShorterExtension", L"part.st", "part.st", false},
    {"BlankBehind", L"part.stl ", "part.stl ", false},
    {"DotInTheFolder", L"a.stl/part", "a.stl/part", false},
    {"DotInTheFolderAndName", L"a.b/part.stl", "a.b/part.stl", true},
    {"DotInTheFolderBeforeABackslash", L"a.stl\\part", "a.stl/part", false},
    {"Backslash", L"a.b\\part.stl", "a.b/part.stl", true},
    {"HiddenFileInAFolder", L"a/.stl", "a/.stl", false},
    {"SlashAtTheEnd", L"part.stl/", "part.stl", false},
    {"SlashAtTheEndOfAFolder", L"x.stl/", "x.stl/part.stl", false},
    {"Drive", L"C:part.stl", "C:part.stl", false},
    {"SmallDrive", L"a:part.stl", "a:part.stl", false},
    {"Stream", L"part.stl:x", "part.stl:x", true},
    {"StreamWithAnExtension", L"part.x:y.stl", "part.x:y.stl", false},
    {"StreamInAFolder", L"a:b/part.stl", "a:b/part.stl", true},
    {"ColonFirst", L":part.stl", ":part.stl", false},
};

INSTANTIATE_TEST_SUITE_P(Names, BodyFileName, testing::ValuesIn(kNames),
                         korvo::test::rowName<Named>);

TEST_F(BodyFile, FoldersThatAreOnlyDotsHaveNoExtension) {
  for (const wchar_t* name : {L"", L".", L"..", L"./", L"../"})
    EXPECT_TRUE(loaded(at(name)).empty());
}

TEST_F(BodyFile, ZrnIsReadInAnyCase) {
  for (const char* name : {"a.zrn", "b.Zrn", "C.ZRN"}) {
    const std::wstring path = write(name, kZrn);
    EXPECT_EQ(loaded(path), trianglesOf(kZrn, 0.01));
    EXPECT_EQ(loaded(path).empty(), !kHasMesher);
  }
}

TEST_F(BodyFile, ZrnIsMeshedWithinAHundredth) {
  const std::string ball = sphere(20, -60, 60, 2, 4).text();
  const Triangles triangles = loaded(write("ball.zrn", ball));
  EXPECT_EQ(triangles.empty(), !kHasMesher);
  EXPECT_LE(largest(triangles, [](const zgeo::UVec3d& p) { return p.norm() - 20; }), .01001);
  EXPECT_EQ(triangles, trianglesOf(ball, .01));
}

TEST_F(BodyFile, ExtensionDecidesNotTheContent) {
  EXPECT_TRUE(loaded(write("part.stl", kZrn)).empty());
  EXPECT_TRUE(loaded(write("part.zrn", kStl)).empty());
}

// --- files that give nothing

TEST_F(BodyFile, NoNameGivesNothing) { EXPECT_TRUE(loaded(L"").empty()); }

TEST_F(BodyFile, MissingFileGivesNothing) {
  EXPECT_TRUE(loaded(at(L"none.stl")).empty());
  EXPECT_TRUE(loaded(at(L"none.zrn")).empty());
}

TEST_F(BodyFile, FolderGivesNothing) {
  write("x.stl/inside", kStl);
  write("x.zrn/inside", kZrn);
  EXPECT_TRUE(loaded(at(L"x.stl")).empty());
  EXPECT_TRUE(loaded(at(L"x.zrn")).empty());
}

TEST_F(BodyFile, StlThatFailsLeavesNothing) {
  for (const char* bytes :
       {"", "solid\n", "x", "solid\nfacet normal 0 0 1\nouter loop\nvertex 0 0\n",
        "solid\nfacet\nouter loop\nvertex 0 0 nan\nvertex 0 0 1\nvertex 1 0 0\n"
        "endloop\nendfacet\nendsolid\n"})
    EXPECT_TRUE(loaded(write("part.stl", bytes)).empty()) << bytes;
}

TEST_F(BodyFile, ZrnWithoutFacesLeavesNothing) {
  EXPECT_TRUE(loaded(write("part.zrn", "")).empty());                 // does not load
  EXPECT_TRUE(loaded(write("part.zrn", "2 2 10\n0 0 1\n")).empty());  // a planar surface
}

// --- names

struct Spelling {
  const char* onDisk;
  const wchar_t* asked;
};

TEST_F(BodyFile, NamesBeyondAsciiOpen) {
  const Spelling spellings[] = {
      {"K\xC3\xB6rper/Fr\xC3\xA4skopf", L"K\u00F6rper/Fr\u00E4skopf"},
      {"\xE6\xA9\x9F\xE6\xA2\xB0", L"\u6A5F\u68B0"},
      {"\xF0\x9F\x94\xA7", L"\U0001F527"},
      // A definition file is read one byte a character, so a name from it holds the bytes.
      {"Fr\xE4ser", L"Fr\u00E4ser"},
      {"W\xC3\xA9", L"W\u00C3\u00A9"}};
  for (const auto& [onDisk, asked] : spellings) {
    folder.write(std::string(onDisk) + ".stl", kStl);
    folder.write(std::string(onDisk) + ".zrn", kZrn);
    EXPECT_EQ(loaded(at(std::wstring(asked) + L".stl")), Triangles{kFacet}) << onDisk;
    EXPECT_EQ(loaded(at(std::wstring(asked) + L".zrn")), trianglesOf(kZrn, 0.01)) << onDisk;
  }
}

// No best fit: a character that no name can hold is not replaced by one that a file has.
TEST_F(BodyFile, NamesThatDoNotConvertOpenNothing) {
  for (const char* name : {"a?.zrn", "a.zrn", "a_.zrn", "a\xEF\xBF\xBD.zrn"}) {
    folder.write(name, kZrn);
  }
  for (const wchar_t odd :
       {wchar_t(0xD800), wchar_t(0xDFFF), std::numeric_limits<wchar_t>::max()}) {
    EXPECT_TRUE(loaded(at(std::wstring(L"a") + odd + L".zrn")).empty());
  }
  EXPECT_EQ(loaded(at(L"a?.zrn")).empty(), !kHasMesher);
}

TEST_F(BodyFile, NameWithANulOpensNothing) {
  write("a.stl", kStl);
  EXPECT_TRUE(loaded(at(std::wstring(L"a.stl") + L'\0' + L".stl")).empty());
}

TEST_F(BodyFile, NumbersAreReadInTheCLocale) {
  const Triangles expected = trianglesOf(kZrn, 0.01);
  const CommaLocale locale;
  ASSERT_TRUE(locale.isSet());
  EXPECT_EQ(loaded(write("part.zrn", kZrn)), expected);
  EXPECT_EQ(loaded(write("part.stl", kStl)), Triangles{kFacet});
}

TEST_F(BodyFile, FileThatChangedIsReadAnew) {
  EXPECT_EQ(loaded(write("part.stl", kStl)), Triangles{kFacet});
  EXPECT_TRUE(loaded(write("part.stl", "gone")).empty());
}

}  // namespace
