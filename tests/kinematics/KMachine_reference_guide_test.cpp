#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/kinematics/KMachine_reference.h"

// docs/machine-definition.md against the library: its examples load, its worked numbers are right,
// its traps are as it says.

namespace korvo::test::reference {
namespace {

struct Block {
  int version;
  std::string text;
};

/// The examples of the guide: fenced as def-1 or def-2, by the version to load them with.
std::vector<Block> guideExamples() {
  std::vector<Block> blocks;
  bool inside = false;
  std::ifstream guide(std::string(KORVO_SOURCE_DIR) + "/docs/machine-definition.md");
  for (std::string line; std::getline(guide, line);) {
    if (inside && line == "```") {
      inside = false;
    } else if (inside) {
      blocks.back().text += line + "\n";
    } else if (line == "```def-1" || line == "```def-2") {
      blocks.push_back({line.back() - '0', ""});
      inside = true;
    }
  }
  return blocks;
}

std::unique_ptr<KMachine> loadExample(std::size_t number) {
  const auto blocks = guideExamples();
  return fromText(blocks.at(number).text, blocks.at(number).version);
}

TEST(DefinitionGuide, EveryExampleLoadsInItsVersion) {
  const auto blocks = guideExamples();
  ASSERT_EQ(blocks.size(), 7u);
  for (const Block& block : blocks) EXPECT_GE(fromText(block.text, block.version)->getAxisNum(), 3);
}

struct Worked {
  const char* name;
  std::size_t example;
  std::vector<double> position;
  ToolPlace place;
};

void PrintTo(const Worked& row, std::ostream* out) { *out << row.name; }

class GuideNumbers : public testing::TestWithParam<Worked> {};

TEST_P(GuideNumbers, AreWhereTheToolIs) {
  const auto machine = loadExample(GetParam().example);
  LargestError error(GetParam().name);
  error.compare(toolAt(*machine, GetParam().position), GetParam().place, kPointMm, kDirection, "");
}

INSTANTIATE_TEST_SUITE_P(
    Guide, GuideNumbers,
    testing::Values(
        Worked{"ThreeAxisMill", 0, {10, 20, 30}, {{10, 20, 140}, {0, 0, 1}}},
        Worked{"TrunnionTableTurned", 1, {100, 0, 0, 0, 90}, {{0, 100, 120}, {0, 0, 1}}},
        // (0, 0.5, 60) from the cradle's axis turns to (0, -60, 0.5); then that axis is added.
        Worked{"TrunnionCradleUp", 1, {0, 0, 0, 90, 0}, {{0, -60.5, 60.5}, {0, -1, 0}}},
        Worked{"FrenchTrunnion", 2, {100, 0, 0, 0, 90}, {{0, 100, 120}, {0, 0, 1}}},
        Worked{"ForkHead", 3, {0, 0, 0, 90, 0}, {{-215, 0, 215}, {1, 0, 0}}},
        Worked{"ArmAtZero", 5, {0, 0, 0, 0, 0, 0}, {{940, 0, 1455}, {-1, 0, 0}}},
        // The rotary centres of the data sheet: on them the gauge point stays where it is.
        Worked{
            "CentreOfC", 6, {-325.4, -210.25, -100, 0, 77}, {{-325.4, -210.25, -100}, {0, 0, 1}}},
        Worked{"CentreOfA", 6, {50, -210.75, -402.3, 90, 0}, {{50, -210.75, -402.3}, {0, -1, 0}}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(GuideTraps, RotationPointBehindOneOrNoSkippedIntegerIsLost) {
  for (const wchar_t* line :
       {L"rotation=B,+y,0,0,100", L"rotation=B,+y,0.5,0,100", L"rotation=B,+y,1,0,0,100"}) {
    EXPECT_EQ(zkin::KMachineElem(line, 2).getElemPivot(), UVec3d()) << line;
  }
  EXPECT_EQ(zkin::KMachineElem(L"rotation=B,+y,0,0,100", 2).getGeomFile(), L"100");
  EXPECT_EQ(zkin::KMachineElem(L"rotation=B,+y,0,0,0,0,100", 2).getElemPivot(), UVec3d(0, 0, 100));
}

struct AxisLine {
  const wchar_t* line;
  int version;
  int index;
  UVec3d direction;
  const wchar_t* file;
};

TEST(GuideTraps, AxisLinesOfTheOtherVersionLoseNumberOrDirection) {
  const AxisLine rows[] = {
      {L"axis=X,1,+x", 1, 1, {1, 0, 0}, L""},   {L"axis=X,1,0,0", 1, 1, {}, L"0"},
      {L"axis=X,+x", 1, 0, {1, 0, 0}, L""},     {L"axis=X,1,+x", 2, 1, {}, L"1"},
      {L"axis=axe_x,+x", 2, 1, {1, 0, 0}, L""}, {L"axis=W,+z", 2, 0, {0, 0, 1}, L""},
      {L"rotation=X,+x", 2, 0, {1, 0, 0}, L""},
  };
  for (const AxisLine& row : rows) {
    const zkin::KMachineElem element(row.line, row.version);
    EXPECT_EQ(element.getElemIndex(), row.index) << row.line;
    EXPECT_EQ(element.getElemAxis(), row.direction) << row.line;
    EXPECT_EQ(element.getGeomFile(), row.file) << row.line;
  }
}

TEST(GuideTraps, NumbersInFrontOfAFileNameAreTakenForTheMissingVector) {
  const zkin::KMachineElem part(L"part=x,y,3d-table.stl,200,200,200", 2);
  EXPECT_EQ(part.getGeomFile(), L"200");
  EXPECT_EQ(zkin::KMachineElem(L"frame=z", 1).getGeomFile(), L"z");
  EXPECT_EQ(zkin::KMachineElem(L"frame=z", 2).getGeomFile(), L"");
}

/// Limits of the axis X after the line, as "min max" with "-" for an end that is not set.
std::string limitsOfX(const std::string& line, int version, const std::string& axis) {
  const std::string number = version == 1 ? ",1" : "";
  const auto machine = fromText("frame\npart=x,y,0,0,0\nlien=BATI\naxis=" + axis + number +
                                    ",+x\ntool=z,0,0,0\n" + line + "\n",
                                version);
  const auto* x = machine->getAxisElem(1);
  return (x->hasMin() ? std::to_string(std::lround(x->getMin())) : "-") + " " +
         (x->hasMax() ? std::to_string(std::lround(x->getMax())) : "-");
}

TEST(GuideTraps, LimitsFindTheirAxisByTheStatedNamesOnly) {
  EXPECT_EQ(limitsOfX("limits=X,-100,250", 2, "AXE_X"), "-100 250");
  EXPECT_EQ(limitsOfX("limits=AXE_X,-100,250", 2, "X"), "-100 250");
  EXPECT_EQ(limitsOfX("limits=axe_x,-100,250", 2, "X"), "- -");
  EXPECT_EQ(limitsOfX("limits=AXE_X,-100,250", 1, "X"), "-100 250");
  EXPECT_EQ(limitsOfX("limits=AXE_X,-100,250", 1, "AXE_X"), "- -");
  EXPECT_EQ(limitsOfX("limits=X,,250", 2, "X"), "- -");
  EXPECT_EQ(limitsOfX("coursemaximum=X,250", 2, "X"), "- 250");
}

TEST(GuideTraps, BlanksDisappearFromFileNames) {
  const auto machine = fromText(
      "frame = z , my body.stl\npart = x, y, 0, 0, 0\nlien = BATI\naxis = X, +x\ntool = z, 0, 0, "
      "0\n",
      2);
  const KMachine& constMachine = *machine;
  EXPECT_EQ(constMachine.getElemByIndex(0)->getGeomFile(), L"mybody.stl");
}

std::vector<int> collisionPartnersOfFrame(const std::string& word) {
  const auto machine = fromText(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,+x\ntool=z,0,0,0\nlien=X\ntool=z,0,0,9\n"
      "collisions=BATI," +
          word + "\n",
      1);
  std::vector<int> partners;
  machine->getElemCollCheck(0, partners);
  return partners;
}

TEST(GuideTraps, OutilIsANameAndToolAWordForAll) {
  EXPECT_EQ(collisionPartnersOfFrame("outil"), std::vector<int>({-101}));
  EXPECT_EQ(collisionPartnersOfFrame("tool"), std::vector<int>({-101, -102}));
}

TEST(GuideTraps, ElementAfterAToolHangsOnTheTool) {
  const auto machine =
      fromText("frame=z\npart=x,y,0,0,0\nlien=BATI\naxis=X,+x\ntool=z,0,0,0\ngun=z,0,-96,-12\n", 2);
  const KMachine& constMachine = *machine;
  EXPECT_EQ(constMachine.getElemByIndex(-102)->getPrevIndex(), -101);
}

}  // namespace
}  // namespace korvo::test::reference
