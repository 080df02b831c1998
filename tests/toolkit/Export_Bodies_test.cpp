#include "toolkit/export/Bodies.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>

#include "adapter/machineFromDefinition.h"
#include "tests/adapter/External.h"
#include "tests/support/TempFile.h"
#include "tests/toolkit/ExportBodies.h"
#include "toolkit/Machine.h"

using korvo::Body;
using korvo::test::boxBody;
using korvo::test::boxTriangles;
using korvo::test::stlBytes;
using korvo::test::TempDir;
using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A trunnion with bodies on the table side and on the head side, and one file named twice.
constexpr const char* kTrunnion = R"(frame=z,$ZRN_MACHINE_DEF/bed.stl,90,110,140
rotation=A,x,0,0,0,0,50,$ZRN_MACHINE_DEF/box.stl
rotation=C,z,0,0,0,0,0,$ZRN_MACHINE_DEF/table.stl,10,20,300
part=x,y,0,0,0
lien=BATI
axis=X,x,$ZRN_MACHINE_DEF/missing.stl
axis=Y,y,$ZRN_MACHINE_DEF/box.stl,1,2,3
axis=Z,z,$ZRN_MACHINE_DEF/box.step
tool=z,0,0,150,$ZRN_MACHINE_DEF/tool.stl,-1,5,5
)";

class BodiesOf : public testing::Test {
 protected:
  BodiesOf() {
    folder_.write("bed.stl", stlBytes(boxTriangles({-300, -200, -100}, {300, 200, -50})));
    folder_.write("box.stl", stlBytes(boxTriangles({0.1, 0.2, 0.3}, {70, 80, 90})));
    folder_.write("table.stl", stlBytes(boxTriangles({-100, -100, -40}, {100, 100, 0})));
    folder_.write("box.step", "ISO-10303-21;\n");
    folder_.write("tool.stl", stlBytes(boxTriangles({-5, -5, 150}, {5, 5, 250})));
    machine = korvo::load(folder_.write("m.def", kTrunnion)).machine;
  }
  const TempDir folder_;
  std::optional<korvo::Machine> machine;
};

std::vector<UTri> placed(const std::vector<Body>& bodies) {
  std::vector<UTri> all;
  for (Body body : bodies) {
    UTri::_applyMatrix(body.motion, body.triangles);
    all.insert(all.end(), body.triangles.begin(), body.triangles.end());
  }
  return all;
}

TEST_F(BodiesOf, AreThoseOfTheElementsWhoseFilesHaveTriangles) {
  ASSERT_TRUE(machine);
  const std::vector<Body> bodies = bodiesOf(**machine, machine->position());
  std::vector<std::string> names;
  std::vector<int> ranks;
  for (const Body& body : bodies) {
    names.push_back(body.name), ranks.push_back(body.rank);
    EXPECT_EQ(body.triangles.size(), 12u);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"BATI", "A", "C", "Y", "tool 1"}));
  EXPECT_EQ(ranks, (std::vector<int>{0, 1, 2, 5, 7}));
}

TEST_F(BodiesOf, HaveTheElementsColourOrOneOfOurs) {
  ASSERT_TRUE(machine);
  const std::vector<Body> bodies = bodiesOf(**machine, machine->position());
  ASSERT_EQ(bodies.size(), 5u);
  EXPECT_EQ(bodies[0].rgb, (std::array{90, 110, 140}));
  EXPECT_EQ(bodies[1].rgb, (std::array{200, 200, 200}));  // what a line without colour means
  EXPECT_EQ(bodies[3].rgb, (std::array{1, 2, 3}));
  for (const std::size_t i : {2u, 4u}) {  // 300 and -1 are none
    for (const int c : bodies[i].rgb) EXPECT_TRUE(c >= 0 && c <= 255) << c;
  }
  EXPECT_NE(bodies[2].rgb, bodies[4].rgb);
}

TEST_F(BodiesOf, StandInTheirOwnFrameAndCarryTheirMotion) {
  ASSERT_TRUE(machine);
  const korvo::Position at = machine->position({{"X", 10.0}, {"A", 30.0}, {"C", 45.0}});
  for (const Body& body : bodiesOf(**machine, at)) {
    EXPECT_EQ(body.motion, (*machine)->getMatrix(at, (*machine)->getElemByRank(body.rank)));
  }
  const std::vector<Body> bodies = bodiesOf(**machine, at);
  EXPECT_EQ(bodies[2].triangles, boxTriangles({-100, -100, -40}, {100, 100, 0}));
}

TEST_F(BodiesOf, EmptyFilesGiveNone) {
  folder_.write("bed.stl", "");
  ASSERT_TRUE(machine);
  EXPECT_EQ(bodiesOf(**machine, machine->position()).front().name, "A");
}

// What rides on the frame moves by the axes between, what lies under it by those of the table: X
// carries Y and the tool, A carries C.
TEST_F(BodiesOf, StandOnTheFrameThatDoesNotMove) {
  ASSERT_TRUE(machine);
  const korvo::Position at = machine->position({{"X", 10.0}, {"A", 90.0}});
  std::vector<Body> bodies = bodiesOf(**machine, at);
  EXPECT_NE(bodies[0].motion, UMatrix());
  standOnFrame(**machine, at, bodies);
  const UVec3d p(1, 2, 3);
  EXPECT_LT((bodies[0].motion * p).distanceTo(p), 1e-12);
  EXPECT_LT((bodies[3].motion * p).distanceTo({11, 2, 3}), 1e-12);
  // A's direction is that of the tool about the part, so the table turns by -90 about the line
  // through (0, 0, 50) along X: (y, z - 50) comes to (z - 50, -y).
  EXPECT_LT((bodies[2].motion * p).distanceTo({1, 3 - 50, 50 - 2}), 1e-12);
}

RC_GTEST_FIXTURE_PROP(BodiesOf, PlacedInOrderAreWhatTheLibraryGivesBitByBit, ()) {
  korvo::Position at = machine->position();
  for (int i = 0; i < at.size(); ++i) at[i] = *rc::gen::inRange(-3600, 3600) / 10.0;
  const std::vector<UTri> found = placed(bodiesOf(**machine, at));
  std::vector<UTri> wanted;
  (*machine)->getTrianglesU(at, wanted);
  RC_ASSERT(found.size() == wanted.size());
  RC_ASSERT(std::memcmp(found.data(), wanted.data(), found.size() * sizeof(UTri)) == 0);
}

// --- of the external library's machine

class ExternalBodiesOf : public BodiesOf {
 protected:
  std::vector<Body> bodiesAt(const korvo::Position& at) const {
    return korvo::bodiesOf(**machine, adapter_, adapter_.axisValues((*machine)->axisValues(at)));
  }
  std::vector<UTri> trianglesOfTheAdapter(const korvo::Position& at) const {
    std::vector<UTri> triangles;
    adapter_.getTrianglesU(adapter_.axisValues((*machine)->axisValues(at)), triangles);
    return triangles;
  }

 private:
  const korvo::test::Adapter adapter_{
      *zkin::machineFromDefinition(**machine, zkin::Bodies::fromGeometryFiles)};
};

TEST_F(ExternalBodiesOf, AreThoseOfTheLibrary) {
  const std::vector<Body> found = bodiesAt(machine->position());
  const std::vector<Body> wanted = bodiesOf(**machine, machine->position());
  ASSERT_EQ(found.size(), 5u);
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(found[i].rank, wanted[i].rank);
    EXPECT_EQ(found[i].name, wanted[i].name);
    EXPECT_EQ(found[i].rgb, wanted[i].rgb);
    EXPECT_EQ(found[i].triangles, wanted[i].triangles) << "nothing has moved at zero";
  }
}

// The tool turns by A = 90 about the line through (0, 0, 50) along X, seen from the part, and so
// does the bed below it: (y, z - 50) comes to (50 - z, y). C and what hangs on it stand still.
TEST_F(ExternalBodiesOf, StandInTheFrameOfTheTable) {
  const std::vector<Body> bodies = bodiesAt(machine->position({{"X", 10.0}, {"A", 90.0}}));
  ASSERT_EQ(bodies.size(), 5u);
  const UVec3d p(1, 2, 3);
  EXPECT_LT((bodies[0].motion * p).distanceTo({1, 50 - 3, 2 + 50}), 1e-12);
  EXPECT_LT((bodies[2].motion * p).distanceTo(p), 1e-12);
  EXPECT_LT((bodies[3].motion * p).distanceTo({11, 50 - 3, 2 + 50}), 1e-12);
}

double largestDifference(const std::vector<UTri>& a, const std::vector<UTri>& b) {
  double largest = a.size() == b.size() ? 0.0 : std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    for (int k = 0; k < 3; ++k) largest = std::max(largest, a[i].p[k].distanceTo(b[i].p[k]));
  }
  return largest;
}

RC_GTEST_FIXTURE_PROP(ExternalBodiesOf, PlacedInOrderAreWhatBothModelsGive, ()) {
  korvo::Position at = machine->position();
  for (int i = 0; i < at.size(); ++i) at[i] = *rc::gen::inRange(-3600, 3600) / 10.0;
  const std::vector<UTri> found = placed(bodiesAt(at));
  std::vector<UTri> ofTheLibrary;
  (*machine)->getTrianglesU(at, ofTheLibrary);
  RC_ASSERT(found.size() == 60u);
  RC_ASSERT(largestDifference(found, ofTheLibrary) < 1e-9);
  RC_ASSERT(largestDifference(found, trianglesOfTheAdapter(at)) < 1e-9);
}

TEST_F(BodiesOf, NoExternalMachineAreNone) {
  ASSERT_TRUE(machine);
  EXPECT_TRUE(korvo::bodiesOf(**machine, korvo::test::Adapter(nullptr), {}).empty());
}

// Turned by 90 degrees about Z, (x, y) comes to (-y, x).
TEST(BodyExtent, IsThatOfThePlacedBody) {
  const UMatrix motion =
      UMatrix::_translation({1000, 0, 5}) * UMatrix::_rotation({0, 0, 1}, std::acos(0.0));
  const korvo::Extent e = extentOf(boxBody("b", {}, {1, 2, 3}, {10, 20, 30}, motion));
  EXPECT_EQ(e.triangles, 12u);
  EXPECT_NEAR(e.box.min.x, 980, 1e-9);
  EXPECT_NEAR(e.box.max.x, 998, 1e-9);
  EXPECT_NEAR(e.box.min.y, 1, 1e-9);
  EXPECT_NEAR(e.box.max.y, 10, 1e-9);
  EXPECT_NEAR(e.box.min.z, 8, 1e-9);
  EXPECT_NEAR(e.box.max.z, 35, 1e-9);
}

TEST(BodyExtent, LeavesOutWhatFitsIntoNoFile) {
  Body body{0, "b", {}, {}, {{{0, 0, 0}, {1, 0, 0}, {0, 2, 0}}}};
  const double inf = std::numeric_limits<double>::infinity();
  for (const double bad : {kNan, inf, -inf, 1e39}) {
    body.triangles.push_back({{0, 0, 0}, {bad, 0, 0}, {0, 9, 0}});
    body.triangles.push_back({{0, 0, 0}, {9, 0, 0}, {0, 9, bad}});
  }
  const korvo::Extent e = extentOf(body);
  EXPECT_EQ(e.triangles, 1u);
  EXPECT_EQ(e.box.min, UVec3d());
  EXPECT_EQ(e.box.max, UVec3d(1, 2, 0));
}

TEST(BodyExtent, OfNothingIsEmptyAndAddsNothing) {
  const korvo::Extent none = korvo::extentOf(Body{});
  EXPECT_TRUE(none.box.isEmpty());
  EXPECT_EQ(none.triangles, 0u);
  const korvo::Box one{{1, 2, 3}, {4, 5, 6}};
  EXPECT_EQ(unite(none.box, one).min, one.min);
  EXPECT_EQ(unite(one, none.box).max, one.max);
  EXPECT_FALSE(one.isEmpty());
}

}  // namespace
