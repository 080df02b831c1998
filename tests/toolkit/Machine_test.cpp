#include "toolkit/Machine.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

#include <stdexcept>
#include <utility>

#include "tests/support/MachineGenerator.h"
#include "tests/support/TempFile.h"

using korvo::Format;
using korvo::Loaded;
using korvo::test::TempDir;

namespace {

Loaded loadFile(const std::string& text, Format format = Format::automatic) {
  const TempDir folder;
  return korvo::load(folder.write("m.def", text), format);
}

constexpr const char* kMill =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool=z,0,0,100\n";

TEST(Load, GivesAMachineWithToolOneSet) {
  Loaded loaded = loadFile(kMill);
  ASSERT_TRUE(loaded);
  for (const korvo::Diagnostic& d : loaded.reasons) EXPECT_EQ(d.severity, korvo::Severity::note);
  EXPECT_EQ((*loaded.machine)->getCurrentTool(), 1);
  EXPECT_EQ((*loaded.machine)->getAxisNum(), 3);
}

TEST(Load, PositionsByNameMoveTheTool) {
  const Loaded loaded = loadFile(kMill);
  ASSERT_TRUE(loaded);
  const korvo::Position p = loaded.machine->position({{"X", 10.0}, {"Z", -5.0}});
  zgeo::UVec3d nose, direction;
  ASSERT_TRUE((*loaded.machine)->getTool(p, nose, direction, 0));
  EXPECT_EQ(nose, zgeo::UVec3d(10, 0, 95));
  EXPECT_THROW(loaded.machine->position({{"Q", 1.0}}), std::out_of_range);
}

TEST(Load, RefusesWithEveryReason) {
  const Loaded loaded = loadFile("frame\nframe\nrotationpoint=x\n", Format::version1);
  EXPECT_FALSE(loaded);
  const auto lineOf = [&](const std::string& code) {
    const auto at = std::find_if(loaded.reasons.begin(), loaded.reasons.end(),
                                 [&](const korvo::Diagnostic& d) { return d.code == code; });
    return at == loaded.reasons.end() ? -1 : at->line;
  };
  EXPECT_EQ(lineOf("rotation-point-number"), 3);
  EXPECT_EQ(lineOf("axis-count"), 0);
  EXPECT_EQ(lineOf("one-frame"), 2);
  EXPECT_EQ(lineOf("one-part"), 0);
  EXPECT_EQ(lineOf("some-tool"), 0);
  EXPECT_TRUE(std::is_sorted(loaded.reasons.begin(), loaded.reasons.end(),
                             [](const auto& a, const auto& b) { return a.line < b.line; }));
}

TEST(Load, MissingFileIsAReason) {
  const Loaded loaded = korvo::load("/nonexistent/m.def");
  EXPECT_FALSE(loaded);
  ASSERT_EQ(loaded.reasons.size(), 1u);
  EXPECT_EQ(loaded.reasons[0].code, "file-unreadable");
}

TEST(Load, ReadsNamesThatAreNotAscii) {
  const TempDir folder;
  EXPECT_TRUE(korvo::load(folder.write("fr\xC3\xA4se.def", kMill)));
  EXPECT_TRUE(korvo::load(folder.write("t\xEAte.def", kMill)));  // Latin-1 bytes, no UTF-8
}

TEST(Machine, CopiesShareNothing) {
  const Loaded loaded = loadFile(kMill);
  ASSERT_TRUE(loaded);
  korvo::Machine copy = *loaded.machine;
  copy->setTHELength(50.0, 1);
  EXPECT_EQ((*loaded.machine)->getTHELength(1), 0.0);
  EXPECT_NE(copy->getElemByRank(0), (*loaded.machine)->getElemByRank(0));
  EXPECT_EQ(copy.axisNames().all(), (std::vector<std::string>{"X", "Y", "Z"}));
}

// --- which format version

struct FormatRow {
  const char* label;
  const char* axisLines;
  int version;
};

class FormatTable : public testing::TestWithParam<FormatRow> {};

TEST_P(FormatTable, IsToldFromTheAxisLines) {
  const FormatRow& row = GetParam();
  EXPECT_EQ(loadFile(row.axisLines).format.version, row.version);
}

INSTANTIATE_TEST_SUITE_P(
    Load, FormatTable,
    testing::Values(
        FormatRow{"NumberAfterTheName", "axis=X,1,x\naxis=Y,2,y\n", 1},
        FormatRow{"NamesAlone", "axis=X,x\naxis=Y,y\n", 2},
        FormatRow{"PrefixedNames", "translation=AXE_X,+x\nrotation=AXE_B,y,1,1,0,0,100\n", 2},
        FormatRow{"FreeNames", "axis=U,1,x\naxis=V,2,y\n", 1},
        FormatRow{"FreeNamesWithoutNumbers", "axis=U,x\naxis=V,y\n", 1},
        FormatRow{"DirectionInNumbers", "axis=X,1,0,0\naxis=Y,0,1,0\n", 2},
        FormatRow{"NumberAndDirectionInNumbers", "axis=X,1,1,0,0\naxis=Y,2,0,1,0\n", 1},
        FormatRow{"RotaryDirectionInNumbers", "rotation=B,0,1,0,0,0,0,0,100\n", 2},
        FormatRow{"RotaryNumberAndDirectionInNumbers", "rotation=B,5,0,1,0,0,0,0,0,100\n", 1},
        FormatRow{"LinearAxisOfARotaryName", "axis=A,x\n", 1},
        FormatRow{"GeometryFilesDoNotDisturb", "axis=X,x,x.stl,1,2,3\naxis=Y,2,y,y.stl\naxis=Z,z\n",
                  2},
        FormatRow{"NoAxisLines", "frame\n", 1}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Load, SaysWhichFormatItTookAndWhy) {
  const Loaded guessed = loadFile(kMill);
  EXPECT_EQ(guessed.format.version, 2);
  EXPECT_EQ(guessed.format.reason, "3 of 3 axis lines name X, Y, Z, A, B or C without a number");
  const Loaded asked =
      loadFile("frame\npart\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n", Format::version1);
  ASSERT_TRUE(asked);
  EXPECT_EQ(asked.format.version, 1);
  EXPECT_EQ(asked.format.reason, "as asked");
  EXPECT_EQ((*asked.machine)->getVersion(), 1);
}

RC_GTEST_PROP(LoadLaws, EveryMachineThatFinalisesIsAccepted, ()) {
  const auto generated = *korvo::test::anyMachine();
  const Loaded loaded = loadFile(generated.text, static_cast<Format>(generated.version));
  RC_ASSERT(static_cast<bool>(loaded));
  RC_ASSERT(loaded.machine->axisNames().size() == (*loaded.machine)->getAxisNum());
}

}  // namespace
