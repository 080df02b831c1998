// All bodies of a machine, placed.

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "geometry/GeometryFile.h"
#include "kinematics/KMachine.h"
#include "tests/geometry/ZrnFaces.h"
#include "tests/support/LoadText.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"

namespace {

using namespace korvo::test;  // NOLINT: the helpers of this folder
using zgeo::UTri;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;

/// One triangle as an STL file, at x from the origin.
std::string facet(double x) {
  const std::string at = textOf(x);
  return "solid\nfacet normal 0 0 1\nouter loop\nvertex " + at + " 0 0\nvertex " + at +
         " 1 0\nvertex " + at + " 0 1\nendloop\nendfacet\nendsolid\n";
}

UTri facetAt(double x) { return {{x, 0, 0}, {x, 1, 0}, {x, 0, 1}}; }

/// A mill whose table moves in X and Y on the part's side, and whose head moves in Z.
const char* const kMill =
    "frame=z\naxis=Y,y\naxis=X,x\npart=x,y,0,0,0\nlien=BATI\naxis=Z,z\ntool=z,0,0,100\n";

/// A trunnion: on the part's side the cradle A about the line y = 0, z = 50 and on it the table C.
const char* const kTrunnion =
    "frame=z\nrotation=A,x,0,0,0,0,50\nrotation=C,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
    "axis=X,x\naxis=Y,y\naxis=Z,z\ntool=z,0,0,100\n";

template <int N>
KMachineValue<N> at(const double (&values)[N]) {
  KMachineValue<N> v;
  v.set(values);
  return v;
}

Triangles bodiesOf(const KMachine& machine, const zkin::KMachineValueBase& v) {
  Triangles triangles(7);
  machine.getTrianglesU(v, triangles);
  return triangles;
}

class MachineTriangles : public LoadingTest {
 protected:
  void give(KMachine& machine, const wchar_t* element, const std::string& file,
            const std::string& bytes) {
    KMachineElem* const e = machine.getElemByName(element);
    ASSERT_NE(e, nullptr);
    e->setGeomFile(folder.write(file, bytes).wstring());
  }

  static void expectTriangles(const Triangles& found, const Triangles& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i)
      for (int k = 0; k < 3; ++k)
        EXPECT_LE(difference(found[i].p[k], expected[i].p[k]), 1e-12 * 200) << i << " " << k;
  }

  TempDir folder;
};

TEST_F(MachineTriangles, MachineWithoutElementsEmptiesTheList) {
  EXPECT_TRUE(bodiesOf(KMachine(), KMachineValue<3>()).empty());
}

TEST_F(MachineTriangles, MachineWithoutFilesEmptiesTheList) {
  EXPECT_TRUE(bodiesOf(load(kMill, 2), KMachineValue<3>()).empty());
}

TEST_F(MachineTriangles, AtZeroBodiesStandWhereTheirFilesSay) {
  KMachine machine = load(kTrunnion, 2);
  give(machine, L"A", "a.stl", facet(1));
  give(machine, L"Z", "z.stl", facet(2));
  expectTriangles(bodiesOf(machine, KMachineValue<5>()), {facetAt(1), facetAt(2)});
}

// The head's body slides with the head. Seen from the part, the frame, the saddle (Y) and the head
// go where the tool goes; the table (X) carries the part and stands still.
TEST_F(MachineTriangles, LinearAxesCarryTheBodiesBehindThem) {
  KMachine machine = load(kMill, 2);
  give(machine, L"BATI", "frame.stl", facet(1));
  give(machine, L"Y", "saddle.stl", facet(2));
  give(machine, L"X", "table.stl", facet(3));
  give(machine, L"PIECE", "part.stl", facet(4));
  give(machine, L"Z", "head.stl", facet(5));
  give(machine, L"OUTIL", "tool.stl", facet(6));
  const auto shifted = [](double x, const UVec3d& by) {
    UTri t = facetAt(x);
    for (UVec3d& p : t.p) p += by;
    return t;
  };
  expectTriangles(bodiesOf(machine, at({10.0, 20.0, 30.0})),
                  {shifted(1, {10, 20, 0}), shifted(2, {10, 0, 0}), facetAt(3), facetAt(4),
                   shifted(5, {10, 20, 30}), shifted(6, {10, 20, 30})});
}

// A quarter of C turns everything but the table about the part; the cradle's own quarter turns what
// it hangs on, the frame, but not the cradle.
TEST_F(MachineTriangles, OwnMotionOfATableAxisIsNotItsBodys) {
  KMachine machine = load(kTrunnion, 2);
  give(machine, L"BATI", "frame.stl", facet(1));
  give(machine, L"A", "cradle.stl", facet(2));
  give(machine, L"C", "table.stl", facet(3));
  give(machine, L"Z", "head.stl", facet(4));
  const auto byC = [](const UVec3d& p) { return UVec3d(-p.y, p.x, p.z); };
  const auto byA = [](const UVec3d& p) { return UVec3d(p.x, -(p.z - 50), p.y + 50); };
  Triangles expected{facetAt(1), facetAt(2), facetAt(3), facetAt(4)};
  for (UVec3d& p : expected[0].p) p = byC(byA(p));
  for (UVec3d& p : expected[1].p) p = byC(p);
  for (UVec3d& p : expected[3].p) p = byC(byA(p + UVec3d(1, 2, 3)));
  expectTriangles(bodiesOf(machine, at({1.0, 2.0, 3.0, 90.0, 90.0})), expected);
}

TEST_F(MachineTriangles, TwoElementsOfOneFileHaveABodyEach) {
  KMachine machine = load(kMill, 2);
  give(machine, L"BATI", "same.stl", facet(1));
  give(machine, L"Z", "same.stl", facet(1));
  UTri head = facetAt(1);
  for (UVec3d& p : head.p) p.z += 30;
  expectTriangles(bodiesOf(machine, at({0.0, 0.0, 30.0})), {facetAt(1), head});
}

/// So many triangles as a binary STL file; the last corner of each has its number as its x.
std::string binary(std::uint32_t count) {
  std::string bytes(84, '\0');
  std::memcpy(bytes.data() + 80, &count, sizeof count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const float x[12] = {0, 0, 1, 0, 0, 0, 0, 1, 0, static_cast<float>(i), 0, 0};
    bytes.append(reinterpret_cast<const char*>(x), sizeof x).append(2, '\0');
  }
  return bytes;
}

// A list that grew with each body would have room for 2000, 4000 and 8000 at last.
TEST_F(MachineTriangles, RoomIsMadeForAllBodiesOfBinaryFilesAtOnce) {
  KMachine machine = load(kMill, 2);
  for (const wchar_t* element : {L"BATI", L"Y", L"X", L"PIECE", L"Z"})
    give(machine, element, "a.stl", binary(1000));
  Triangles triangles;
  machine.getTrianglesU(at({0.0, 0.0, 30.0}), triangles);
  ASSERT_EQ(triangles.size(), 5000u);
  EXPECT_LE(triangles.capacity(), 5010u);  // headers count as a triangle or two
  EXPECT_EQ(triangles[999].p[2], UVec3d(999, 0, 0));
  EXPECT_EQ(triangles[4000].p[2], UVec3d(0, 0, 30));
}

TEST_F(MachineTriangles, BothKindsOfFilesAreBodies) {
  KMachine machine = load(kMill, 2);
  const std::string zrn = rectangle(100, 80).text();
  give(machine, L"BATI", "part.Zrn", zrn);
  give(machine, L"Z", "PART.STL", facet(1));
  Triangles expected = trianglesOf(zrn, 0.01);
  EXPECT_EQ(expected.empty(), !kHasMesher);
  expected.push_back(facetAt(1));
  EXPECT_EQ(bodiesOf(machine, KMachineValue<3>()), expected);
}

TEST_F(MachineTriangles, FilesThatGiveNothingLeaveTheOthers) {
  KMachine machine = load(kMill, 2);
  give(machine, L"BATI", "frame.step", facet(1));
  give(machine, L"Y", "broken.stl", "solid\nfacet\n");
  give(machine, L"X", "broken.zrn", "");
  machine.getElemByName(L"PIECE")->setGeomFile(L"/no/such/file.stl");
  give(machine, L"Z", "good.stl", facet(9));
  EXPECT_EQ(bodiesOf(machine, KMachineValue<3>()), Triangles{facetAt(9)});
}

TEST_F(MachineTriangles, ScaleOfAFileIsNotApplied) {
  KMachine machine = load(kMill, 2);
  give(machine, L"BATI", "a.zrn", rectangle(100, 80).text());
  const Triangles plain = bodiesOf(machine, KMachineValue<3>());
  give(machine, L"BATI", "a.zrn", rectangle(100, 80).text() + "2 2 100\n2\n");
  EXPECT_EQ(plain.empty(), !kHasMesher);
  EXPECT_EQ(bodiesOf(machine, KMachineValue<3>()), plain);
}

TEST_F(MachineTriangles, ChangedFileShowsAtTheNextCall) {
  KMachine machine = load(kMill, 2);
  give(machine, L"Z", "head.stl", facet(1));
  EXPECT_EQ(bodiesOf(machine, KMachineValue<3>()), Triangles{facetAt(1)});
  give(machine, L"Z", "head.stl", facet(2));
  EXPECT_EQ(bodiesOf(machine, KMachineValue<3>()), Triangles{facetAt(2)});
}

TEST_F(MachineTriangles, FileBesideTheDefinitionIsABody) {
  folder.write("head.stl", facet(1));
  std::string text = kMill;
  text.replace(text.find("axis=Z,z"), 8, "axis=Z,z,$ZRN_MACHINE_DEF/head.stl");
  KMachine machine;
  machine.setDataFilePNE(folder.write("m.def", text).wstring(), 2);
  EXPECT_EQ(machine.readDataFile(), 0);
  claimFinalise(machine);
  trace.claimAll(L"\t(actual geom. file OK");
  EXPECT_EQ(bodiesOf(machine, KMachineValue<3>()), Triangles{facetAt(1)});
}

// Whatever the machine, its bodies are those of its elements in order of addition, moved by their
// motion matrices, bit by bit.
RC_GTEST_PROP(MachineTrianglesLaws, BodiesStandWhereTheMotionMatricesSay, ()) {
  const TempDir folder;
  TraceCapture trace;
  Choices choices(*rc::gen::arbitrary<unsigned>());
  const MachineText text = machineText(choices);
  KMachine machine = loadText(text.text, text.version);
  trace.claimAll(L"");
  KMachineValue<12> v;
  for (int i = 0; i < v.size(); ++i) v[i] = *rc::gen::inRange(-3600, 3600) / 10.0;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const std::string name = std::to_string(rank) + (rank % 2 ? ".stl" : ".zrn");
    const std::string bytes = rank % 2 ? facet(rank) : rectangle(10 + rank, 5).text();
    if (*rc::gen::arbitrary<bool>())
      machine.getElemByRank(rank)->setGeomFile(folder.write(name, bytes).wstring());
  }
  Triangles expected;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const KMachineElem* const e = machine.getElemByRank(rank);
    Triangles body;
    zkin::loadGeometryFile(e->getGeomFile(), body);
    const zgeo::UMatrix m = machine.getMatrix(v, e);
    for (const UTri& t : body) expected.emplace_back(m * t.p[0], m * t.p[1], m * t.p[2]);
  }
  RC_ASSERT(bodiesOf(machine, v) == expected);
}

}  // namespace
