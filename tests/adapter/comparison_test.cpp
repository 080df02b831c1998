// Both models of one machine: loaded from its definition, and made of that for the external
// library. KORVO_REPORT=1 prints what was compared as a table.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <ostream>
#include <regex>

#include <gtest/gtest.h>

#include "tests/adapter/Comparison.h"
#include "tests/support/Draws.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/TempFile.h"
#include "tests/zgeo/StlFiles.h"

namespace korvo::test {
namespace {

using zgeo::UTri;
using zgeo::UVec3d;
using zkin::KMachine;

#ifdef KORVO_SANITIZED  // every computation takes many times as long, and numbers are no news there
constexpr int kPositions = 500;
constexpr int kTargets = 20;
#else
const int kPositions = drawsOf(10000);
const int kTargets = drawsOf(1000);
#endif
constexpr double kForward = 1e-9;

/// Where a machine of the comparison comes from.
struct Source {
  std::string name;
  std::string example;  ///< File below the examples, or
  Topology topology = Topology::mill;
  unsigned seed = 0;  ///< of the generator.
  bool limited = false;
};

std::ostream& operator<<(std::ostream& out, const Source& source) { return out << source.name; }

/// Axes that version 1 knows by their number have only a name in version 2.
int versionOf(const std::string& example) {
  std::ifstream file(std::filesystem::path(KORVO_MACHINES) / example);
  const std::string text((std::istreambuf_iterator<char>(file)), {});
  const std::regex numbered("(axis|axe|translation|rotation)=\\w+,\\d");
  return std::regex_search(text, numbered) ? 1 : 2;
}

std::unique_ptr<KMachine> load(const Source& source) {
  std::unique_ptr<KMachine> machine;
  if (source.example.empty()) {
    Choices choices(source.seed);
    machine = loadMachine(machineText(choices, source.topology));
  } else {
    machine = std::make_unique<KMachine>();
    const auto path = std::filesystem::path(KORVO_MACHINES) / source.example;
    machine->setDataFilePNE(path.wstring(), versionOf(source.example));
    machine->readDataFile();
    machine->setCurrentTool(1);
  }
  if (source.limited) limitRotaryAxes(*machine, source.seed);
  return machine;
}

bool hasTwoRotary(const std::unique_ptr<KMachine>& machine) {
  const BothModels models(std::make_unique<KMachine>(*machine));
  return models.rotaryAxes() == 2;
}

std::vector<Source> sources() {
  std::vector<Source> all;
  std::vector<std::string> examples;
  for (const auto& file : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (file.path().extension() == ".def") examples.push_back(file.path().filename().string());
  }
  std::sort(examples.begin(), examples.end());
  for (const std::string& example : examples) {
    const std::string name = example.substr(0, example.size() - 4);
    all.push_back({name, example});
    all.push_back({name + " limited", example, Topology::mill, 10, true});
    if (!hasTwoRotary(load(all.back()))) all.pop_back();
  }
  constexpr int kEach = 8;
  for (int topology = 0; topology < kTopologies; ++topology) {
    for (unsigned i = 0; i < kEach; ++i) {
      const auto t = static_cast<Topology>(topology);
      const unsigned seed = 100 * static_cast<unsigned>(topology) + i;
      const std::string name = std::string(nameOf(t)) + " " + std::to_string(i);
      all.push_back({name, "", t, seed});
      all.push_back({name + " limited", "", t, seed, true});
      if (!hasTwoRotary(load(all.back()))) all.pop_back();
    }
  }
  return all;
}

/// Prints the table at the end, when it is asked for.
class Report {
 public:
  void add(const Comparison& comparison) { table_ += toRow(comparison); }
  ~Report() {
    if (std::getenv("KORVO_REPORT")) std::cout << kTableHead << table_;
  }

 private:
  std::string table_;
};
Report report;

class SideBySide : public testing::TestWithParam<Source> {};

TEST_P(SideBySide, BothModelsGiveTheSame) {
  auto definition = load(GetParam());
  ASSERT_NE(definition, nullptr);
  const BothModels models(std::move(definition));
  Comparison c;
  c.name = GetParam().name;
  c.linear = models.linearAxes();
  c.rotary = models.rotaryAxes();
  Dice dice(GetParam().seed + 1);
  models.compareForward(dice, kPositions, c);
  EXPECT_LT(c.largest, kForward);

  if (c.rotary != 2 || c.linear < 3) {
    c.note = "forward only: not two rotary and three linear axes";
  } else if (c.linear > 3) {
    models.compareNearest(dice, kTargets, c);
    EXPECT_EQ(c.missed, 0);
    EXPECT_GT(c.solvedToo, 0);
    EXPECT_EQ(c.solved > 0, !models.areLastThreeDependent());
    c.note = "forward and nearest only: a fourth linear axis";
    if (c.solved == 0) c.note += "; the definition's model fails, by the last three that it tries";
  } else if (models.areRotaryParallel()) {
    c.note = "forward only: parallel rotary axes";
  } else {
    models.compareAngles(dice, kTargets, c);
    models.compareConfigs(dice, kTargets, c);
    models.compareNearest(dice, kTargets, c);
    EXPECT_EQ(c.missing, 0) << "solutions of the definition that the external machine has not";
    EXPECT_EQ(c.missed, 0);
    if (models.areLinearDependent()) {
      EXPECT_EQ(c.solutions, 0);
      c.note = "the linear axes span no space: the definition's model turns only what can slide";
    } else {
      // Targets that were reached once are reached again, each model by its own rule.
      EXPECT_GT(c.solutions, 0);
      EXPECT_GT(c.solved, 0);
      EXPECT_GT(c.solvedToo, 0);
      if (models.areRotaryLimited()) {
        EXPECT_EQ(c.more, 0);
      } else if (c.more > 0) {
        c.note = "an axis without limits: one branch for each start, against both";
      }
    }
  }
  report.add(c);
}

/// A pyramid without a floor, another one for every number.
std::vector<UTri> bodyOf(int number) {
  const UVec3d a(number, 0, 0), b(0, 10, 0), c(0, 0, 20.5 + number);
  return {UTri(a, b, c), UTri(b, a, -c), UTri(a, c, UVec3d(-5, -5, number))};
}

TEST_P(SideBySide, BothModelsHaveTheSameTriangles) {
  const TempDir folder;
  auto definition = load(GetParam());
  ASSERT_NE(definition, nullptr);
  for (int rank = 0; rank < definition->getElemNumber(); ++rank) {
    const std::vector<UTri> body = bodyOf(rank);
    const std::string bytes = zgeo::test::binary(body, static_cast<std::uint32_t>(body.size()));
    const auto file = folder.write("body" + std::to_string(rank) + ".stl", bytes);
    definition->getElemByRank(rank)->setGeomFile(file.wstring());
  }
  const BothModels models(std::move(definition), zkin::Bodies::fromGeometryFiles);
  Dice dice(GetParam().seed + 2);
  EXPECT_LT(models.compareTriangles(dice, 20), kForward);
}

INSTANTIATE_TEST_SUITE_P(Machines, SideBySide, testing::ValuesIn(sources()), [](const auto& row) {
  std::string name = row.param.name;
  for (char& c : name) c = std::isalnum(c) ? c : '_';
  return name;
});

}  // namespace
}  // namespace korvo::test
