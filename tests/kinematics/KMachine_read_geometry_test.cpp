// Geometry files of a definition file: as written, or in the folder of the definition file.

#include "tests/support/LoadText.h"

#include <filesystem>

#include "kinematics/read/DefinitionReader.h"
#include "tests/kinematics/KMachine_describe.h"

using korvo::test::LoadingTest;
using korvo::test::TempDir;
using zkin::KMachine;

namespace {

/// Loads a file of one geometry element from a folder of its own.
class GeometryFile : public LoadingTest {
 protected:
  /// @return  The geometry file that the element has after loading.
  std::wstring loadGeometry(const std::string& name, const std::string& definition = "m.def") {
    machine.setDataFilePNE(folder.write(definition, "geom=" + name + "\n").wstring(), 2);
    EXPECT_EQ(machine.readDataFile(), -1);
    claimFinalise(machine);
    return machine.getElemByRank(0)->getGeomFile();
  }

  void expectFound(const std::wstring& file) {
    EXPECT_EQ(machine.getElemByRank(0)->getGeomFile(), file);
    EXPECT_TRUE(trace.claim(L"\t(actual geom. file OK " + file + L")"));
  }

  void expectNotFound(const std::wstring& file) {
    EXPECT_EQ(machine.getElemByRank(0)->getGeomFile(), file);
    EXPECT_TRUE(trace.claim(L"\t(geom. file not found " + file + L")"));
  }

  TempDir folder;
  KMachine machine;
};

TEST_F(GeometryFile, FoundAsWritten) {
  const std::filesystem::path file = folder.write("head.stl", "x");
  loadGeometry(file.string());
  expectFound(file.wstring());
}

TEST_F(GeometryFile, NotFoundKeepsTheTextAsWritten) {
  loadGeometry("/no/such/head.stl");
  expectNotFound(L"/no/such/head.stl");
}

TEST_F(GeometryFile, NoFileTracesNothing) {
  EXPECT_EQ(loadGeometry(""), L"");
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(GeometryFile, PlaceholderIsTheFolderOfTheDefinitionFile) {
  folder.write("head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEF/head.stl");
  expectFound(folder.path().wstring() + L"/head.stl");
}

TEST_F(GeometryFile, SeparatorBehindThePlaceholderIsKept) {
  folder.write("head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEF\\head.stl");
  expectFound(folder.path().wstring() + L"\\head.stl");
}

TEST_F(GeometryFile, FoldersBehindThePlaceholder) {
  folder.write("models/head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEF\\models\\head.stl");
  expectFound(folder.path().wstring() + L"\\models\\head.stl");
}

TEST_F(GeometryFile, EveryPlaceholderIsReplaced) {
  const std::string here = folder.path().string();
  folder.write("a" + here + "/head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEF/a$ZRN_MACHINE_DEF/head.stl");
  expectFound(folder.path().wstring() + L"/a" + folder.path().wstring() + L"/head.stl");
}

// A program gives the folder in characters; the name is bytes of a file.
TEST_F(GeometryFile, LettersBeyondAsciiInTheFolderAndInTheName) {
  folder.write("\xE6\xA9\x9F/t\xC3\xAAte.stl", "x");
  folder.write("\xE6\xA9\x9F/m.def", "geom=$ZRN_MACHINE_DEF/t\xC3\xAAte.stl\n");
  machine.setDataFilePNE(folder.path().wstring() + L"/\u6a5f/m.def", 2);
  EXPECT_EQ(machine.readDataFile(), -1);
  claimFinalise(machine);
  expectFound(folder.path().wstring() + L"/\u6a5f/t\xC3\xAAte.stl");
  EXPECT_TRUE(machine.getElemByRank(0)->isGeomFileReadable());
}

TEST_F(GeometryFile, NulEndsNoName) {
  const std::string file = folder.write("head.stl", "x").string();
  loadGeometry(file + std::string(1, '\0') + "tail");
  EXPECT_FALSE(machine.getElemByRank(0)->isGeomFileReadable());
  EXPECT_EQ(trace.claimAll(L"\t(geom. file not found " + folder.path().wstring()), 1);
}

TEST_F(GeometryFile, WithoutSeparatorNothingIsFound) {
  folder.write("head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEFhead.stl");
  expectNotFound(L"$ZRN_MACHINE_DEFhead.stl");
}

TEST_F(GeometryFile, PlaceholderWithMissingFileStaysAsWritten) {
  loadGeometry("$ZRN_MACHINE_DEF/gone.stl");
  expectNotFound(L"$ZRN_MACHINE_DEF/gone.stl");
}

TEST_F(GeometryFile, PlaceholderIsCaseSensitive) {
  folder.write("head.stl", "x");
  loadGeometry("$zrn_machine_def/head.stl");
  expectNotFound(L"$zrn_machine_def/head.stl");
}

TEST_F(GeometryFile, FileAsWrittenComesFirst) {
  const TempDir here;
  const std::filesystem::path old = std::filesystem::current_path();
  std::filesystem::current_path(here.path());
  here.write("$ZRN_MACHINE_DEF/head.stl", "as written");
  folder.write("head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEF/head.stl");
  std::filesystem::current_path(old);
  expectFound(L"$ZRN_MACHINE_DEF/head.stl");
}

TEST_F(GeometryFile, DollarInTheFolderMeansNothing) {
  folder.write("a$1$&b/head.stl", "x");
  loadGeometry("$ZRN_MACHINE_DEF/head.stl", "a$1$&b/m.def");
  expectFound(folder.path().wstring() + L"/a$1$&b/head.stl");
}

TEST_F(GeometryFile, BackslashEndsTheFolderToo) {
  folder.write("sub/head.stl", "x");
  folder.write("sub/m.def", "geom=$ZRN_MACHINE_DEF/head.stl\n");
  machine.setDataFilePNE(folder.path().wstring() + L"/sub\\m.def", 2);
  EXPECT_EQ(machine.readDataFile(), -1);
  claimFinalise(machine);
  expectFound(folder.path().wstring() + L"/sub/head.stl");
}

TEST_F(GeometryFile, DefinitionFileWithoutFolderLooksInTheCurrentOne) {
  folder.write("head.stl", "x");
  folder.write("m.def", "geom=$ZRN_MACHINE_DEF/head.stl\n");
  const std::filesystem::path old = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  machine.setDataFilePNE(std::wstring(L"m.def"), 2);
  EXPECT_EQ(machine.readDataFile(), -1);
  std::filesystem::current_path(old);
  claimFinalise(machine);
  expectFound(L"./head.stl");
}

TEST_F(GeometryFile, FolderIsNoGeometryFile) {
  folder.write("head.stl/inside", "x");
  loadGeometry("$ZRN_MACHINE_DEF/head.stl");
  expectNotFound(L"$ZRN_MACHINE_DEF/head.stl");
}

TEST_F(GeometryFile, NamesMatchIgnoringCase) {
  folder.write("Head.STL", "x");
  loadGeometry("$ZRN_MACHINE_DEF/head.stl");
  expectFound(folder.path().wstring() + L"/head.stl");
}

TEST_F(GeometryFile, SharpAndBlankAndEqualSignAreNotPartOfAName) {
  loadGeometry("my head.stl#1");
  expectNotFound(L"myhead.stl");
  loadGeometry("no-such-folder/no-such-file=b.stl");  // a name that no current folder has
  expectNotFound(L"no-such-folder/no-such-file");
}

TEST_F(GeometryFile, LongNameIsNoTrouble) {
  const std::string name(1198, '$');
  loadGeometry(name);
  expectNotFound(std::wstring(1198, L'$'));
}

TEST_F(GeometryFile, TraceFollowsTheOrderOfTheFile) {
  machine.setDataFilePNE(
      folder.write("m.def", "geom=a.stl\nframe=b.stl\ntool=z,0,0,0,c.stl\n").wstring(), 1);
  machine.readDataFile();
  const std::vector<std::wstring> expected = {L"\t(geom. file not found a.stl)",
                                              L"\t(geom. file not found b.stl)",
                                              L"\t(geom. file not found c.stl)"};
  const std::vector<std::wstring> all = trace.lines();
  ASSERT_GE(all.size(), 3u);
  EXPECT_EQ(std::vector<std::wstring>(all.begin(), all.begin() + 3), expected);
  trace.claimAll();
}

// --- the folder of a definition file

struct FolderRow {
  const char* name;
  const wchar_t* path;
  const wchar_t* folder;
};

std::ostream& operator<<(std::ostream& out, const FolderRow& row) { return out << row.name; }

class DefinitionFolder : public testing::TestWithParam<FolderRow> {};

TEST_P(DefinitionFolder, EndsBeforeTheLastSeparator) {
  EXPECT_EQ(zkin::folderOf(GetParam().path), GetParam().folder);
}

INSTANTIATE_TEST_SUITE_P(Machine, DefinitionFolder,
                         testing::Values(FolderRow{"Slash", L"/a/b/m.def", L"/a/b"},
                                         FolderRow{"Backslash", L"C:\\a\\m.def", L"C:\\a"},
                                         FolderRow{"SlashThenBackslash", L"/a/b\\m.def", L"/a/b"},
                                         FolderRow{"BackslashThenSlash", L"a\\b/m.def", L"a\\b"},
                                         FolderRow{"RootIsNothing", L"/m.def", L""},
                                         FolderRow{"RootWithBackslash", L"\\m.def", L""},
                                         FolderRow{"NoFolder", L"m.def", L"."},
                                         FolderRow{"Empty", L"", L"."},
                                         FolderRow{"SeparatorAtTheEnd", L"a/", L"a"},
                                         FolderRow{"TwoSeparators", L"a//m.def", L"a/"}),
                         [](const auto& row) { return std::string(row.param.name); });

// --- colours

struct ColourRow {
  const char* name;
  const char* operands;
  int rgb[3];
};

std::ostream& operator<<(std::ostream& out, const ColourRow& row) { return out << row.name; }

const auto rowName = [](const auto& row) { return std::string(row.param.name); };

class GeometryColour : public LoadingTest, public testing::WithParamInterface<ColourRow> {};

TEST_P(GeometryColour, IsReadFromThreeOperands) {
  const KMachine machine = load(std::string("geom=") + GetParam().operands + "\n", 2);
  int rgb[3] = {-1, -1, -1};
  std::as_const(*machine.getElemByRank(0)).getGeomRGB(rgb);
  EXPECT_THAT(rgb, testing::ElementsAreArray(GetParam().rgb));
  trace.claimAll(L"\t(geom. file not found");
}

INSTANTIATE_TEST_SUITE_P(
    Machine, GeometryColour,
    testing::Values(ColourRow{"Given", "a.stl,255,128,0", {255, 128, 0}},
                    ColourRow{"NotGiven", "a.stl", {200, 200, 200}},
                    ColourRow{"OneNumberIsTooFew", "a.stl,1", {200, 200, 200}},
                    ColourRow{"TwoNumbersAreTooFew", "a.stl,1,2", {200, 200, 200}},
                    ColourRow{"MoreNumbersAreIgnored", "a.stl,1,2,3,4", {1, 2, 3}},
                    ColourRow{"NotClampedToAByte", "a.stl,-1,300,70000", {-1, 300, 70000}},
                    ColourRow{"RealsAreCut", "a.stl,1.9,2.9,3.9", {1, 2, 3}},
                    // A component that does not scan is 0 and leaves its operand to the next one.
                    ColourRow{"UnreadableFirst", "a.stl,red,2,3", {0, 0, 0}},
                    ColourRow{"UnreadableSecond", "a.stl,1,green,3", {1, 0, 0}},
                    ColourRow{"UnreadableThird", "a.stl,1,2,blue", {1, 2, 0}},
                    ColourRow{"EmptyComponents", "a.stl,,,", {0, 0, 0}},
                    ColourRow{"NoFileNoColour", ",1,2,3", {0, 0, 0}}),
    rowName);

}  // namespace
