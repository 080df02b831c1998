#include <gtest/gtest.h>

#include "platform/ombra/EntityMesh.h"
#include "tests/adapter/External.h"
#include "tests/support/TraceCapture.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Entity;
using Ombra::Kin::EntityMesh;
using Ombra::Kin::EntityType;
using Ombra::Kin::Kinematic;
using zgeo::UTri;
using zgeo::UVec3d;
using zkin::NMachine;

/// Points (0, 0, 0), (1, 0, 0), (2, 0, 0) ... one above the other in y as well: (i, i * i, 0).
std::vector<double> points(int count) {
  std::vector<double> values;
  for (int i = 0; i < count; ++i) values.insert(values.end(), {double(i), double(i) * i, 0.0, 1.0});
  return values;
}

UVec3d point(int i) { return {double(i), double(i) * i, 0.0}; }

UTri tri(int a, int b, int c) { return {point(a), point(b), point(c)}; }

class EntityTriangles : public TracedTest {
 protected:
  EntityTriangles() { entity_ = machine_.EditKinematic().AddTable(L"BED"); }

  /// The triangles of an entity with these meshes.
  int of(const EntityMesh& mesh) {
    Entity& e = *machine_.EditKinematic().EditEntity(entity_);
    e.SetEntityMesh(mesh);
    return NMachine::_ombraEntityGeom(&e, tris);
  }

  std::vector<UTri> tris{tri(1, 2, 3)};

 private:
  Machine machine_;
  EntityId entity_;
};

TEST_F(EntityTriangles, TakeTheFirstThreeCorners) {
  EntityMesh mesh;
  mesh.AddMesh({4, 4}, {0, 1, 2, 3, 4, 5, 6, 7}, points(8));
  EXPECT_EQ(of(mesh), 0);
  EXPECT_EQ(tris, (std::vector<UTri>{tri(0, 1, 2), tri(4, 5, 6)}));
  EXPECT_GE(tris.capacity(), 24u);
  EXPECT_TRUE(
      trace.claim(L"entity <BED> mesh OK 1 meshes\tmesh[00] numPts=8, iNVerts=2, iIverts=8"));
}

TEST_F(EntityTriangles, OfTwoCornersKeepTheThirdOfThePolygonBefore) {
  EntityMesh mesh;
  mesh.AddMesh({3, 2, 5, 0}, {1, 2, 3, 4, 5, 6, 7, 8, 9, 0}, points(10));
  EXPECT_EQ(of(mesh), 0);
  EXPECT_EQ(tris, (std::vector<UTri>{tri(1, 2, 3), tri(4, 5, 3), tri(6, 7, 8), tri(6, 7, 8)}));
  trace.claimAll(L"entity <BED>");
}

TEST_F(EntityTriangles, OfTwoCornersAtFirstEndAtZero) {
  EntityMesh mesh;
  mesh.AddMesh({2}, {1, 2}, points(3));
  of(mesh);
  EXPECT_EQ(tris, (std::vector<UTri>{UTri(point(1), point(2), {})}));
  trace.claimAll(L"entity <BED>");
}

TEST_F(EntityTriangles, CornersAreKeptFromMeshToMesh) {
  EntityMesh mesh;
  mesh.AddMesh({3}, {1, 2, 3}, points(4));
  mesh.AddMesh({}, {}, {});
  mesh.AddMesh({1}, {4}, points(5));
  mesh.RemoveMesh(1);
  of(mesh);
  EXPECT_EQ(tris, (std::vector<UTri>{tri(1, 2, 3), tri(4, 2, 3)}));
  EXPECT_TRUE(
      trace.claim(L"entity <BED> mesh OK 3 meshes"
                  L"\tmesh[00] numPts=4, iNVerts=1, iIverts=3"
                  L"\tmesh[02] numPts=5, iNVerts=1, iIverts=1"))
      << "one that was removed says nothing";
}

TEST_F(EntityTriangles, EndAtACornerThatNamesNoPoint) {
  EntityMesh mesh;
  mesh.AddMesh({3, 3, 3}, {0, 1, 2, 3, 4, 99, 0, 1, 2}, points(5));
  mesh.AddMesh({3}, {2, 1, 0}, points(3));
  of(mesh);
  EXPECT_EQ(tris, (std::vector<UTri>{tri(0, 1, 2), tri(2, 1, 0)}));
  trace.claimAll(L"entity <BED>");
}

TEST_F(EntityTriangles, EndWhereTheCornersEnd) {
  EntityMesh mesh;
  mesh.AddMesh({3, 4000000000u, 3}, {0, 1, 2, 0, 1}, points(3));
  of(mesh);
  EXPECT_EQ(tris, (std::vector<UTri>{tri(0, 1, 2)}));
  trace.claimAll(L"entity <BED>");
}

TEST_F(EntityTriangles, AnIgnoredCornerMayNameNoPoint) {
  EntityMesh mesh;
  mesh.AddMesh({4, 3}, {0, 1, 2, 77, 2, 1, 0}, points(3));
  of(mesh);
  EXPECT_EQ(tris, (std::vector<UTri>{tri(0, 1, 2), tri(2, 1, 0)}));
  trace.claimAll(L"entity <BED>");
}

TEST_F(EntityTriangles, OfNoMeshesAreNone) {
  EXPECT_EQ(of(EntityMesh()), 0);
  EXPECT_TRUE(tris.empty());
  EXPECT_TRUE(trace.claim(L"entity <BED> mesh OK 0 meshes"));
}

TEST_F(EntityTriangles, WithoutEntityOrMeshAreNone) {
  EXPECT_EQ(NMachine::_ombraEntityGeom(nullptr, tris), -1);
  EXPECT_TRUE(tris.empty());
  EXPECT_TRUE(trace.claim(L"entity <NO_ENTITY> mesh NO_MESH"));

  const Machine machine = headHead();
  tris = {tri(1, 2, 3)};
  EXPECT_EQ(NMachine::_ombraEntityGeom(machine.GetKinematic().GetEntity(EntityId(4)), tris), -1);
  EXPECT_TRUE(tris.empty());
  EXPECT_TRUE(trace.claim(L"entity <C> mesh NO_MESH"));
}

TEST(EntityTypes, HaveNames) {
  EXPECT_EQ(NMachine::_typeName(Ombra::Kin::Axis), L"Axis");
  EXPECT_EQ(NMachine::_typeName(Ombra::Kin::Head), L"Head");
  EXPECT_EQ(NMachine::_typeName(Ombra::Kin::Table), L"Table");
  EXPECT_EQ(NMachine::_typeName(static_cast<EntityType>(3)), L"<UNRECOGNISED>");
}

// --- the whole machine

EntityMesh oneTriangle(const UTri& t) {
  std::vector<double> values;
  for (const UVec3d& p : t.p) values.insert(values.end(), {p.x, p.y, p.z, 1.0});
  EntityMesh mesh;
  mesh.AddMesh({3}, {0, 1, 2}, values);
  return mesh;
}

const UTri kBody({0, 0, 0}, {10, 0, 0}, {0, 10, 0});

/// The trunnion with a body on C and on the head, none on the table.
Machine bodied() {
  Machine machine = tableTable();
  machine.EditKinematic().EditEntity(EntityId(4))->SetEntityMesh(oneTriangle(kBody));
  machine.EditKinematic().EditEntity(EntityId(6))->SetEntityMesh(oneTriangle(kBody));
  return machine;
}

class MachineTriangles : public TracedTest {
 protected:
  std::vector<UTri> at(const Adapter& adapter, const MachinePosition& p) {
    std::vector<UTri> tris{kBody};
    adapter.getTrianglesU(p, tris);
    return tris;
  }
};

MATCHER_P(NearTriangle, expected, "is the expected triangle") {
  double largest = 0;
  for (int i = 0; i < 3; ++i) largest = std::max(largest, difference(arg.p[i], expected.p[i]));
  *result_listener << "off by " << largest;
  return largest < 1e-12;
}

TEST_F(MachineTriangles, StandInTheFrameOfTheTable) {
  const Adapter adapter(bodied());
  const std::vector<UTri> tris = at(adapter, position({100, 0, 0, 0, 90}));
  ASSERT_EQ(tris.size(), 2u);
  // The head is at (100, 0, 0); seen from the table, which has turned by 90 degrees, it goes back.
  EXPECT_THAT(tris[0], NearTriangle(UTri({0, -100, 0}, {0, -110, 0}, {10, -100, 0})));
  EXPECT_THAT(tris[1], NearTriangle(kBody)) << "C moves with the table";
  for (const wchar_t* entity : {L"X", L"Y", L"Z", L"A", L"TABLE"}) {
    EXPECT_TRUE(trace.claim(std::wstring(L"entity <") + entity + L"> mesh NO_MESH"));
  }
  for (const wchar_t* entity : {L"HEAD", L"C"}) {
    EXPECT_TRUE(trace.claim(std::wstring(L"entity <") + entity +
                            L"> mesh OK 1 meshes\tmesh[00] numPts=3, iNVerts=1, iIverts=3"));
  }
}

TEST_F(MachineTriangles, StandInTheTablesOwnFrameAtItsZeroPlacement) {
  Machine machine = bodied();
  machine.EditKinematic()
      .EditEntity(EntityId(7))
      ->SetZeroPlacement(Matrix43::Translation({0, 0, 50}));
  const std::vector<UTri> tris = at(Adapter(machine), position({0, 0, 0, 0, 0}));
  ASSERT_EQ(tris.size(), 2u);
  EXPECT_THAT(tris[0], NearTriangle(UTri({0, 0, -50}, {10, 0, -50}, {0, 10, -50})));
  trace.claimAll(L"entity ");
}

TEST_F(MachineTriangles, StandInTheBaseFrameWithoutATable) {
  Adapter adapter(nullptr);
  const Machine machine = bodied();
  adapter.set(&machine, HeadIndex(0), TableIndex(5));
  const std::vector<UTri> tris = at(adapter, position({100, 0, 0, 0, 90}));
  ASSERT_EQ(tris.size(), 2u);
  EXPECT_THAT(tris[0], NearTriangle(UTri({100, 0, 0}, {110, 0, 0}, {100, 10, 0})));
  EXPECT_THAT(tris[1], NearTriangle(UTri({0, 0, 0}, {0, 10, 0}, {-10, 0, 0})));
  trace.claimAll(L"entity ");
}

TEST_F(MachineTriangles, GapsAmongTheEntitiesAreSkipped) {
  Machine machine = bodied();
  ASSERT_TRUE(machine.EditKinematic().RemoveEntity(EntityId(4)));
  EXPECT_EQ(at(Adapter(machine), position({0, 0, 0, 0, 0})), (std::vector<UTri>{kBody}));
  EXPECT_EQ(trace.claimAll(L"entity "), 6);
}

TEST_F(MachineTriangles, WhereNothingCanBePlacedStandAsTheirMeshesAreWritten) {
  Machine machine = bodied();
  for (const int entity : {4, 6, 7}) {
    machine.EditKinematic()
        .EditEntity(EntityId(entity))
        ->SetZeroPlacement(Matrix43::Translation({0, 0, 50}));
  }
  EXPECT_EQ(at(Adapter(machine), position({1, 2})), (std::vector<UTri>{kBody, kBody}));
  trace.claimAll(L"entity ");
}

TEST_F(MachineTriangles, WithoutAMachineAreNoneAndSaidNothing) {
  EXPECT_TRUE(at(Adapter(nullptr), position({})).empty());
}

}  // namespace
}  // namespace korvo::test
