#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <numbers>
#include <set>
#include <vector>

#include "geometry/GeometryFile.h"
#include "geometry/ZrnTriangles.h"
#include "tests/support/HasFaces.h"
#include "toolkit/Machine.h"
#include "toolkit/Text.h"

// The bodies of the example machines: they are there, closed, and stand where the machine says.

namespace korvo::test {
namespace {

using zgeo::UTri;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace fs = std::filesystem;
using Triangles = std::vector<UTri>;

const fs::path kGeometry = fs::path(KORVO_MACHINES) / "geometry";

Triangles trianglesOf(const std::wstring& file) {
  Triangles triangles;
  zkin::loadGeometryFile(file, triangles);
  return triangles;
}

double volumeOf(const Triangles& triangles) {
  double six = 0.0;
  for (const UTri& t : triangles) six += t.p[0] * (t.p[1] ^ t.p[2]);
  return six / 6;
}

// --- files

// Names below the folder of the bodies, as "table-ac/bed.stl".
std::vector<std::string> filesOf(const std::string& extension) {
  std::vector<std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(kGeometry)) {
    if (entry.path().extension() != extension) continue;
    files.push_back(entry.path().lexically_relative(kGeometry).generic_string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string fileName(const testing::TestParamInfo<std::string>& info) {
  std::string name = info.param.substr(0, info.param.find('.'));
  std::replace_if(name.begin(), name.end(), [](char c) { return c == '-' || c == '/'; }, '_');
  return name;
}

Triangles trianglesOfFile(const std::string& name) {
  return trianglesOf((kGeometry / name).wstring());
}

class ExampleStl : public testing::TestWithParam<std::string> {};

// Every edge is walked once each way for each pair of triangles that it joins.
TEST_P(ExampleStl, IsClosedWithItsOutsideOutwards) {
  using Corner = std::array<double, 3>;
  const auto cornerOf = [](const UVec3d& p) { return Corner{p.x, p.y, p.z}; };
  const Triangles triangles = trianglesOfFile(GetParam());
  ASSERT_FALSE(triangles.empty());
  std::map<std::pair<Corner, Corner>, int> walks;
  for (const UTri& t : triangles) {
    for (int i = 0; i < 3; ++i) {
      const Corner a = cornerOf(t.p[i]), b = cornerOf(t.p[(i + 1) % 3]);
      ++walks[{a, b}];
      --walks[{b, a}];
    }
  }
  for (const auto& [edge, count] : walks) ASSERT_EQ(count, 0) << edge.first[0];
  EXPECT_GT(volumeOf(triangles), 0.0);
}

TEST_P(ExampleStl, HasNoTriangleWithoutArea) {
  for (const UTri& t : trianglesOfFile(GetParam())) {
    EXPECT_GT(((t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0])).norm(), 1e-6);
  }
}

INSTANTIATE_TEST_SUITE_P(Files, ExampleStl, testing::ValuesIn(filesOf(".stl")), fileName);

// The order of corners says where the outside is only before large triangles are cut: one piece of
// four is listed the other way round.
class Uncut {
 public:
  Uncut() { zkin::ZRN_SetSubdivision(false); }
  ~Uncut() { zkin::ZRN_SetSubdivision(was_); }
  Uncut(const Uncut&) = delete;
  Uncut& operator=(const Uncut&) = delete;

 private:
  bool was_ = zkin::ZRN_GetSubdivision();
};

class ExampleZrn : public testing::TestWithParam<std::string> {};

#if defined(KORVO_SOLIDRA_none)

TEST_P(ExampleZrn, HasNoTrianglesWhereFacesHaveNoMesh) {
  EXPECT_TRUE(trianglesOfFile(GetParam()).empty());
}

#else

TEST_P(ExampleZrn, HasItsOutsideOutwards) {
  const Uncut uncut;
  EXPECT_GT(volumeOf(trianglesOfFile(GetParam())), 0.0);
}

#endif

INSTANTIATE_TEST_SUITE_P(Files, ExampleZrn, testing::ValuesIn(filesOf(".zrn")), fileName);

#if !defined(KORVO_SOLIDRA_none)

double volumeOfFile(const char* name) {
  const Uncut uncut;
  return volumeOf(trianglesOfFile(name));
}

// A disc of 45 x 6 mm with six blind holes of 3.5 x 4 mm.
TEST(ExampleVolume, PlateOfTheArmIsADiscLessItsHoles) {
  const double expected = std::numbers::pi * (45 * 45 * 6 - 6 * 3.5 * 3.5 * 4);
  EXPECT_NEAR(volumeOfFile("arm-irb2400/plate.zrn"), expected, 0.005 * expected);
}

// A plate of 152 x 152 x 16 mm with corners of 16 mm and four holes of 6 mm, under a star and a
// ring: twelve corners of radius 58 and 36, without their roundings at most 0.1 of the whole.
TEST(ExampleVolume, WorkpieceIsAPlateAStarAndARing) {
  const double pi = std::numbers::pi;
  const double plate = 16 * (152 * 152 - (4 - pi) * 16 * 16 - 4 * pi * 6 * 6);
  const double star = 18 * 12 * 0.5 * 58 * 36 * std::sin(pi / 6);
  const double ring = pi * (22 * 22 * 8 - 13 * 13 * 6);
  const double all = plate + star + ring;
  EXPECT_NEAR(volumeOfFile("table-ac/workpiece.zrn"), all, 0.1 * all);
}

#endif

TEST(ExampleGeometry, IsSmall) {
  std::uintmax_t bytes = 0;
  for (const char* kind : {".stl", ".zrn"}) {
    for (const std::string& file : filesOf(kind)) bytes += fs::file_size(kGeometry / file);
  }
  EXPECT_LT(bytes, 1'500'000U);
}

bool beginsWithSolid(const std::string& file) {
  std::string word(5, '\0');
  std::ifstream(kGeometry / file, std::ios::binary).read(word.data(), 5);
  return word == "solid";
}

TEST(ExampleGeometry, HasStlOfBothForms) {
  const std::vector<std::string> files = filesOf(".stl");
  const auto texts = std::count_if(files.begin(), files.end(), beginsWithSolid);
  EXPECT_GT(texts, 0);
  EXPECT_LT(texts, std::ssize(files));
}

// --- machines

struct Row {
  const char* machine;
  std::size_t bodies;
  double cutterLength = 0;  ///< How far the body on the tool reaches out of the nose.
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.machine; }

Machine machineOf(const std::string& name) {
  return *load(fs::path(KORVO_MACHINES) / (name + ".def")).machine;
}

std::vector<const KMachineElem*> withBodies(const Machine& machine) {
  std::vector<const KMachineElem*> elements;
  for (int rank = 0; rank < machine->getElemNumber(); ++rank) {
    const KMachineElem* e = machine->getElemByRank(rank);
    if (!e->getGeomFile().empty()) elements.push_back(e);
  }
  return elements;
}

// How far a body reaches along a direction.
double reachOf(const Triangles& triangles, const UVec3d& direction) {
  double reach = -1e300;
  for (const UTri& t : triangles) {
    for (const UVec3d& p : t.p) reach = std::max(reach, p * direction);
  }
  return reach;
}

struct Placed {
  Triangles triangles;

  Placed(const Machine& machine, const Position& position, const KMachineElem* element)
      : triangles(trianglesOf(element->getGeomFile())) {
    UTri::_applyMatrix(machine->getMatrix(position, element), triangles);
  }
};

// The middle of what reaches furthest: the end of a nose or cutter.
UVec3d tipOf(const Triangles& triangles, const UVec3d& direction) {
  constexpr double kEnd = 1e-3;
  const double reach = reachOf(triangles, direction);
  UVec3d low{1e300, 1e300, 1e300}, high{-1e300, -1e300, -1e300};
  for (const UTri& t : triangles) {
    for (const UVec3d& p : t.p) {
      if (p * direction < reach - kEnd) continue;
      low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
  }
  return (low + high) * 0.5;
}

class ExampleBodies : public testing::TestWithParam<Row> {
 protected:
  const Machine machine = machineOf(GetParam().machine);

  // Axes away from zero, each by another amount.
  Position elsewhere() const {
    Position position = machine.position();
    for (int k = 1; k <= machine->getAxisNum(); ++k) {
      position[k - 1] = 5.0 + 2.5 * k;
    }
    return position;
  }

  std::vector<Position> positions() const { return {machine.position(), elsewhere()}; }

  const KMachineElem* toolElement() const { return machine->getElemByIndex(-101); }

  const KMachineElem* cutter() const { return machine->getElemByName(L"GEOM"); }
};

TEST_P(ExampleBodies, AllNamedFilesHaveTriangles) {
  EXPECT_EQ(withBodies(machine).size(), GetParam().bodies);
  for (const KMachineElem* e : withBodies(machine)) {
    const std::wstring& file = e->getGeomFile();
    EXPECT_EQ(trianglesOf(file).empty(), !kHasFaces && file.ends_with(L".zrn")) << toUtf8(file);
  }
}

class ExampleNoses : public ExampleBodies {};

// The gauge point of the answers is the middle of the end of the tool's body.
TEST_P(ExampleNoses, EndInTheToolPoint) {
  for (const Position& position : positions()) {
    UVec3d nose, direction;
    ASSERT_TRUE(machine->getTool(position, nose, direction, 1));
    const Placed body(machine, position, toolElement());
    EXPECT_LT((tipOf(body.triangles, -direction) - nose).norm(), 0.02);
  }
}

class ExampleCutters : public ExampleBodies {};

// With the cutter's length set the tip of the answers is the tip of its body.
TEST_P(ExampleCutters, EndInTheTip) {
  ASSERT_TRUE(machine->setTHELength(GetParam().cutterLength, 1));
  for (const Position& position : positions()) {
    const zgeo::UMatrix tip = machine->getMatrix_TP2U(position);
    UVec3d nose, direction;
    ASSERT_TRUE(machine->getTool(position, nose, direction, 1));
    const Placed body(machine, position, cutter());
    EXPECT_LT((tipOf(body.triangles, -direction) - tip * UVec3d{0, 0, 0}).norm(), 0.001);
  }
}

// Boxes with a gap between them along some axis.
bool areApart(const Triangles& a, const Triangles& b) {
  for (const UVec3d& along : {UVec3d{1, 0, 0}, UVec3d{0, 1, 0}, UVec3d{0, 0, 1}}) {
    if (reachOf(a, along) < -reachOf(b, -along) || reachOf(b, along) < -reachOf(a, -along)) {
      return true;
    }
  }
  return false;
}

TEST_P(ExampleCutters, ClearsThePartWithAllAxesAtZero) {
  const Position zero = machine.position();
  const Placed part(machine, zero, machine->getElemByName(L"PIECE"));
  EXPECT_TRUE(areApart(Placed(machine, zero, cutter()).triangles, part.triangles));
  EXPECT_TRUE(areApart(Placed(machine, zero, toolElement()).triangles, part.triangles));
}

std::string machineName(const testing::TestParamInfo<Row>& info) {
  std::string name = info.param.machine;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

const Row kMills[] = {{"table-ac", 9, 70}, {"mill-3axis", 7, 50}, {"head-cb-fork", 9, 120}};
const Row kArms[] = {{"arm-irb2400", 9}, {"arm-irb2400-rail", 11}};

INSTANTIATE_TEST_SUITE_P(Mills, ExampleBodies, testing::ValuesIn(kMills), machineName);
INSTANTIATE_TEST_SUITE_P(Arms, ExampleBodies, testing::ValuesIn(kArms), machineName);
INSTANTIATE_TEST_SUITE_P(Mills, ExampleNoses, testing::ValuesIn(kMills), machineName);
#if !defined(KORVO_SOLIDRA_none)  // an arm's flange plate is a .zrn file
INSTANTIATE_TEST_SUITE_P(Arms, ExampleNoses, testing::ValuesIn(kArms), machineName);
#endif
INSTANTIATE_TEST_SUITE_P(Mills, ExampleCutters, testing::ValuesIn(kMills), machineName);

// Every file belongs to a machine, and no machine of the folder names one that is not there.
TEST(ExampleGeometry, EachFileIsNamedByAMachine) {
  std::set<fs::path> named;
  for (const auto& entry : fs::directory_iterator(KORVO_MACHINES)) {
    if (entry.path().extension() != ".def") continue;
    const Machine machine = machineOf(entry.path().stem().string());
    for (const KMachineElem* e : withBodies(machine)) {
      named.insert(fs::path(e->getGeomFile()).lexically_normal());
    }
  }
  for (const char* kind : {".stl", ".zrn"}) {
    for (const std::string& file : filesOf(kind)) {
      EXPECT_TRUE(named.contains((kGeometry / file).lexically_normal())) << file;
    }
  }
}

}  // namespace
}  // namespace korvo::test
