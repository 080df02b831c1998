#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/kinematics/KMachine_reference.h"

// Every machine of examples/machines, held against what its own comments say.

namespace korvo::test::reference {
namespace {

struct Example {
  std::string file;
  int version;
  std::string chain;    ///< Element names of tool 1's chain, root first.
  std::string values;   ///< Axis names in value order.
  std::string endless;  ///< Names of the axes without limits.
  int kinematicClass;
  int armType;
  int wristType;
  int strategy;
  std::vector<Line> tools;  ///< Point and direction of each tool and gun at the zero position.
};

void PrintTo(const Example& row, std::ostream* out) { *out << row.file; }

const UVec3d kUp{0, 0, 1};

const Example kExamples[] = {
    {"mill-3axis", 2, "PIECE X Y BATI Z OUTIL", "X Y Z", "", 1, 5, 0, 0, {{{0, 0, 110}, kUp}}},
    {"table-ac",
     2,
     "PIECE C A BATI X Y Z OUTIL",
     "X Y Z A C",
     "C",
     3,
     5,
     0,
     1,
     {{{0, 0, 120}, kUp}}},
    {"table-bc",
     2,
     "PIECE C B X BATI Y Z OUTIL",
     "X Y Z B C",
     "",
     3,
     5,
     0,
     0,
     {{{0, 0, 150}, kUp}}},
    {"head-cb-fork",
     1,
     "PIECE BATI X Y Z C B OUTIL",
     "X Y Z B C",
     "",
     3,
     5,
     0,
     2,
     {{{0, 0, 0}, kUp}}},
    {"head-table",
     2,
     "PIECE C Y BATI X Z B OUTIL",
     "X Y Z B C",
     "C",
     3,
     5,
     0,
     1,
     {{{0, 0, 120}, kUp}}},
    {"head-nutating",
     1,
     "PIECE X BATI Z Y C B OUTIL",
     "X Y Z B C",
     "",
     3,
     5,
     0,
     0,
     {{{0, 0, 0}, kUp}}},
    {"mill-4axis",
     1,
     "PIECE B Z BATI X Y OUTIL",
     "X Y Z B",
     "B",
     2,
     5,
     0,
     1,
     {{{0, 80, 250}, kUp}}},
    {"gantry-w",
     1,
     "PIECE X BATI W Y Z C A OUTIL",
     "X Y Z A C W",
     "",
     3,
     5,
     0,
     2,
     {{{0, 0, 0}, kUp}}},
    {"drill-head",
     2,
     "PIECE BATI X Y Z C OUTIL",
     "X Y Z C",
     "",
     2,
     5,
     0,
     0,
     {{{0, 0, 0}, kUp}, {{0, -96, -12}, kUp}, {{140, 64, 38}, {-1, 0, 0}}}},
    {"arm-puma560",
     1,
     "PIECE BATI J1 J2 J3 J4 J5 J6 OUTIL",
     "J1 J2 J3 J4 J5 J6",
     "",
     5,
     1,
     2,
     0,
     {{{452.1, -150.05, 1103.63}, {0, 0, -1}}}},
    {"arm-irb2400",
     1,
     "PIECE BATI J1 J2 J3 J4 J5 J6 OUTIL",
     "J1 J2 J3 J4 J5 J6",
     "",
     5,
     1,
     2,
     0,
     {{{940, 0, 1455}, {-1, 0, 0}}}},
    {"arm-irb2400-rail",
     1,
     "PIECE BATI RAIL J1 J2 J3 J4 J5 J6 OUTIL",
     "J1 J2 J3 J4 J5 J6 RAIL",
     "",
     5,
     1,
     2,
     0,
     {{{940, 0, 1455}, {-1, 0, 0}}}},
};

std::filesystem::path pathOf(const Example& example) {
  return std::filesystem::path(KORVO_MACHINES) / (example.file + ".def");
}

std::string narrow(const std::wstring& text) {
  std::string result;
  for (const wchar_t c : text) result += static_cast<char>(c);
  return result;
}

void append(std::string& list, const std::wstring& name) {
  list += (list.empty() ? "" : " ") + narrow(name);
}

class ExampleMachines : public testing::TestWithParam<Example> {
 protected:
  const Example& example = GetParam();
  std::unique_ptr<KMachine> machine = load(pathOf(GetParam()), GetParam().version);
};

TEST_P(ExampleMachines, ChainRunsFromThePartToTheTool) {
  std::string names;
  for (const auto* element : machine->getToolChain(false, 1)) append(names, element->getElemName());
  EXPECT_EQ(names, example.chain);
}

TEST_P(ExampleMachines, ValuesFollowTheAxisNumbers) {
  std::string names;
  for (int k = 1; k <= machine->getAxisNum(); ++k) {
    append(names, machine->getAxisElem(k)->getElemName());
  }
  EXPECT_EQ(names, example.values);
}

TEST_P(ExampleMachines, EveryAxisThatEndsHasBothLimits) {
  std::string endless;
  for (int k = 1; k <= machine->getAxisNum(); ++k) {
    const auto* axis = machine->getAxisElem(k);
    EXPECT_EQ(axis->hasMin(), axis->hasMax()) << k;
    if (!axis->hasMin()) {
      append(endless, axis->getElemName());
      continue;
    }
    EXPECT_LT(axis->getMin(), axis->getMax()) << k;
  }
  EXPECT_EQ(endless, example.endless);
}

TEST_P(ExampleMachines, ClassAndArmShapeAreThoseOfTheMachine) {
  for (int tool = 1; tool <= machine->getToolNumber(); ++tool) {
    const KMachine::_sUKine kine = machine->initDHm(tool);
    EXPECT_EQ(kine.toolIndex, -100 - tool);
    EXPECT_EQ(kine.kinematicClass, example.kinematicClass);
    EXPECT_EQ(kine.armType, example.armType);
    EXPECT_EQ(kine.wristType, example.wristType);
  }
  EXPECT_EQ(machine->getKine(1).kinematicClass, example.kinematicClass);
}

TEST_P(ExampleMachines, ToolsStandAtZeroWhereTheFileSays) {
  ASSERT_EQ(static_cast<std::size_t>(machine->getToolNumber()), example.tools.size());
  const std::vector<double> zero(static_cast<std::size_t>(machine->getAxisNum()), 0.0);
  for (std::size_t i = 0; i < example.tools.size(); ++i) {
    const ToolPlace place = toolAt(*machine, zero, static_cast<int>(i) + 1);
    EXPECT_EQ(place.point, example.tools[i].point);
    EXPECT_EQ(place.direction, example.tools[i].direction);
  }
}

TEST_P(ExampleMachines, StrategyAndCollisionPairsAreRead) {
  EXPECT_EQ(machine->getStrategy(), example.strategy);
  std::vector<int> partners;
  for (int tool = 1; tool <= machine->getToolNumber(); ++tool) {
    machine->getElemCollCheck(-100 - tool, partners);
    EXPECT_NE(std::find(partners.begin(), partners.end(), -1), partners.end())
        << "tool " << tool << " is checked against the part";
  }
}

/// Text of the file without comments and blanks, line by line.
std::vector<std::string> statements(const std::filesystem::path& file) {
  std::vector<std::string> lines;
  std::ifstream stream(file);
  for (std::string line; std::getline(stream, line);) {
    line = line.substr(0, line.find('#'));
    std::erase(line, ' ');
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

/// The operand behind the axis name, or nothing for lines that declare no axis.
std::string secondOperand(const std::string& line) {
  const std::string keyword = line.substr(0, line.find('='));
  const std::set<std::string> axes = {"axis", "axe", "translation", "rotation"};
  if (!axes.contains(keyword)) return {};
  const std::size_t start = line.find(',') + 1;
  return line.substr(start, line.find(',', start) - start);
}

// What tells a person, and the tools, which version to load a file with: version 1 has the axis
// number there, version 2 a direction.
TEST_P(ExampleMachines, AxisLinesTellTheVersion) {
  int axes = 0;
  for (const std::string& line : statements(pathOf(example))) {
    const std::string operand = secondOperand(line);
    if (operand.empty()) continue;
    ++axes;
    const bool isAxisNumber = operand.find_first_not_of("123456789") == std::string::npos;
    EXPECT_EQ(isAxisNumber, example.version == 1) << line;
  }
  EXPECT_EQ(axes, machine->getAxisNum());
}

// Everything in an example has an effect: no line is one that the reader passes over.
TEST_P(ExampleMachines, EveryLineBeginsWithAKeyword) {
  const std::set<std::string> keywords = {
      "lien",          "bati",          "frame",        "piece",       "part",     "outil",
      "tool",          "axe",           "axis",         "translation", "rotation", "gun",
      "drillgun",      "strategie",     "strategy",     "limites",     "limits",   "collisions",
      "courseminimum", "coursemaximum", "rotationpoint", "geom"};
  for (const std::string& line : statements(pathOf(example))) {
    EXPECT_TRUE(keywords.contains(line.substr(0, line.find('=')))) << line;
  }
}

std::string exampleName(const testing::TestParamInfo<Example>& info) {
  std::string name = info.param.file;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Machines, ExampleMachines, testing::ValuesIn(kExamples), exampleName);

TEST(ExampleMachineFolder, HoldsTheMachinesOfThisTestOnly) {
  std::set<std::string> listed, found;
  for (const Example& example : kExamples) listed.insert(example.file);
  for (const auto& entry : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (entry.path().extension() == ".def") found.insert(entry.path().stem().string());
  }
  EXPECT_EQ(found, listed);
}

TEST(ExampleMachineFolder, ForkHeadStoresItsRotationPoint) {
  const auto machine = load(pathOf(kExamples[3]), 1);
  const auto* point = machine->getRotationPoint(0);
  ASSERT_NE(point, nullptr);
  EXPECT_EQ((*point)[0], 2000.0);
  EXPECT_EQ((*point)[1], 1250.0);
  EXPECT_EQ(machine->getRotationPoint(1), nullptr);
}

TEST(ExampleMachineFolder, PalletBodyKeepsItsNameAndColour) {
  const auto machine = load(pathOf(kExamples[6]), 1);
  const KMachine& constMachine = *machine;
  const auto* table = constMachine.getElemByName(L"B");
  ASSERT_NE(table, nullptr);
  int r = 0, g = 0, b = 0;
  table->getGeomRGB(r, g, b);
  EXPECT_EQ(table->getGeomFile(), L"$ZRN_MACHINE_DEF/mill-4axis-pallet.stl");
  EXPECT_EQ(std::vector<int>({r, g, b}), std::vector<int>({150, 150, 160}));
}

}  // namespace
}  // namespace korvo::test::reference
