#include <limits>
#include <type_traits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "platform/ombra/Angle.h"
#include "platform/ombra/EntityMesh.h"
#include "platform/ombra/RotariesSolution.h"
#include "tests/ombra/Machines.h"

namespace korvo::test {
namespace {

using Ombra::Mesh;
using Ombra::Kin::EntityMesh;
using Ombra::Kin::kNoRegister;

// --- indices

static_assert(!std::is_convertible_v<int, Register>);
static_assert(std::is_constructible_v<Register, int>);
static_assert(!std::is_convertible_v<HeadIndex, TableIndex>);
static_assert(!std::is_convertible_v<Register, EntityId>);
static_assert(sizeof(HeadIndex) == 4 && sizeof(TableIndex) == 4);

TEST(OmbraIndices, StartAtZeroAndCompareByNumber) {
  EXPECT_EQ(HeadIndex(), HeadIndex(0));
  EXPECT_LT(Register(1), Register(2));
  EXPECT_NE(kNoRegister, Register());
}

TEST(OmbraAngle, IsNothingAtFirst) {
  EXPECT_EQ(Ombra::Angle().radians, 0.0);
  EXPECT_EQ(Ombra::Angle(1.5).radians, 1.5);
  EXPECT_EQ(Ombra::Kin::RotariesSolution().count, 0);
}

// --- placements

TEST(OmbraMatrix, IsTheIdentityAtFirst) {
  const Matrix43 m;
  EXPECT_EQ(m.GetU(), Vector3D(1, 0, 0));
  EXPECT_EQ(m.GetV(), Vector3D(0, 1, 0));
  EXPECT_EQ(m.GetW(), Vector3D(0, 0, 1));
  EXPECT_EQ(m.GetTrans(), Vector3D(0, 0, 0));
}

TEST(OmbraMatrix, PlacesPointsByItsAxesAndItsTranslation) {
  Matrix43 m;
  m.SetU({0, 1, 0});
  m.SetV({0, 0, 1});
  m.SetW({1, 0, 0});
  m.SetTrans({10, 20, 30});
  EXPECT_EQ(m.Apply({1, 2, 3}), Vector3D(13, 21, 32));
  EXPECT_EQ(m.ApplyDir({1, 2, 3}), Vector3D(3, 1, 2));
}

TEST(OmbraMatrix, TurnsCounterClockwiseAboutALine) {
  const Matrix43 m = Matrix43::Rotation({0, 0, 7}, {1, 0, 5}, 90.0);
  EXPECT_THAT(m.Apply({2, 0, 0}), NearPoint(Vector3D(1, 1, 0), 1e-15));
  EXPECT_THAT(m.Apply({1, 0, 9}), NearPoint(Vector3D(1, 0, 9), 1e-15));
}

TEST(OmbraMatrix, TurnsNothingAboutANullDirection) {
  EXPECT_EQ(Matrix43::Rotation({}, {1, 2, 3}, 50.0), Matrix43());
}

TEST(OmbraMatrix, ProductAppliesTheRightOneFirst) {
  const Matrix43 turn = Matrix43::Rotation({0, 0, 1}, {}, 90.0);
  const Matrix43 slide = Matrix43::Translation({10, 0, 0});
  EXPECT_THAT((turn * slide).Apply({1, 0, 0}), NearPoint(Vector3D(0, 11, 0), 1e-14));
  EXPECT_THAT((slide * turn).Apply({1, 0, 0}), NearPoint(Vector3D(10, 1, 0), 1e-14));
}

RC_GTEST_PROP(OmbraMatrixLaws, InverseTakesEveryPointBack,
              (const std::array<int, 3>& dir, const std::array<int, 3>& at, int degrees)) {
  const auto small = [](int n) { return n % 1000; };
  const Vector3D pivot(small(at[0]), small(at[1]), small(at[2]));
  const Matrix43 m = Matrix43::Rotation(Vector3D(small(dir[0]), small(dir[1]), small(dir[2])),
                                        pivot, small(degrees)) *
                     Matrix43::Translation({1, -2, 3});
  const Vector3D back = m.Inverse().Apply(m.Apply({5, 6, 7})) - Vector3D(5, 6, 7);
  RC_ASSERT(std::sqrt(back * back) < 1e-10);
}

TEST(OmbraMatrix, InverseOfAScaledOneScalesBack) {
  const Matrix43 m({2, 0, 0}, {0, 4, 0}, {0, 0, 8}, {1, 1, 1});
  EXPECT_EQ(m.Inverse().Apply({3, 5, 9}), Vector3D(1, 1, 1));
}

// --- positions

TEST(OmbraPosition, HasNoRegisterAtFirstAndZerosWhenAllocated) {
  MachinePosition p;
  EXPECT_EQ(p.Size(), 0);
  p.Alloc(Register(2));
  p[Register(1)] = 7;
  p.Alloc(3);
  EXPECT_EQ(p.Size(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(p[Register(i)], 0.0);
  p.Alloc(-4);
  EXPECT_EQ(p.Size(), 0);
}

TEST(OmbraPosition, AssignmentTakesTheSizeToo) {
  MachinePosition p = position({1, 2, 3});
  const MachinePosition other = position({4, 5});
  p = other;
  EXPECT_EQ(p.Size(), 2);
  EXPECT_EQ(p[Register(1)], 5.0);
}

TEST(OmbraPosition, RegistersThatAreNotThereAreZeroAndTakeNothing) {
  MachinePosition p = position({1, 2});
  p[Register(2)] = 9;
  p[Register(-1)] = 9;
  const MachinePosition& read = p;
  EXPECT_EQ(read[Register(2)], 0.0);
  EXPECT_EQ(read[Register(-1)], 0.0);
  EXPECT_EQ(p[Register(2)], 0.0);
  EXPECT_EQ(p.Size(), 2);
}

static_assert(std::has_virtual_destructor_v<MachinePosition>);
static_assert(std::has_virtual_destructor_v<Machine>);

// --- meshes

TEST(OmbraMesh, ShowsItsArraysInFull) {
  EntityMesh meshes;
  EXPECT_EQ(meshes.AddMesh({3}, {0, 1, 2}, {0, 0, 0, 1, 1, 0, 0, 1, 0, 1, 0, 1}), 0);
  const Mesh* const mesh = meshes.GetMesh(0);
  ASSERT_NE(mesh, nullptr);
  EXPECT_EQ(mesh->polygonCount, 1u);
  EXPECT_EQ(mesh->vertexCounts[0], 3u);
  EXPECT_EQ(mesh->indexCount, 3u);
  EXPECT_EQ(mesh->indices[2], 2u);
  EXPECT_EQ(mesh->pointCount, 3u);
  EXPECT_EQ(mesh->points[4], 1.0);
}

TEST(OmbraMesh, PointsThatAreNotWholeAreNotSeen) {
  EntityMesh meshes;
  meshes.AddMesh({}, {}, {0, 0, 0, 1, 5});
  EXPECT_EQ(meshes.GetMesh(0)->pointCount, 1u);
}

TEST(OmbraMesh, RemovedOnesLeaveTheirNumber) {
  EntityMesh meshes;
  meshes.AddMesh({}, {}, {});
  meshes.AddMesh({}, {7}, {});
  EXPECT_TRUE(meshes.RemoveMesh(0));
  EXPECT_FALSE(meshes.RemoveMesh(0));
  EXPECT_FALSE(meshes.RemoveMesh(2));
  EXPECT_FALSE(meshes.RemoveMesh(-1));
  EXPECT_EQ(meshes.GetMeshNb(), 2);
  EXPECT_EQ(meshes.GetMesh(0), nullptr);
  EXPECT_EQ(meshes.GetMesh(1)->indices[0], 7u);
}

TEST(OmbraMesh, CopiesHaveArraysOfTheirOwn) {
  EntityMesh copy;
  {
    EntityMesh meshes;
    meshes.AddMesh({2}, {0, 0}, {1, 2, 3, 4});
    copy.AddMesh({9}, {}, {});
    copy = meshes;
    EXPECT_NE(copy.GetMesh(0)->points, meshes.GetMesh(0)->points);
  }
  EXPECT_EQ(copy.GetMeshNb(), 1);
  EXPECT_EQ(copy.GetMesh(0)->points[2], 3.0);
  EXPECT_EQ(copy.GetMesh(0)->vertexCounts[0], 2u);
}

}  // namespace
}  // namespace korvo::test
