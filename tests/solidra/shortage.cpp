// Memory that runs out at any one allocation of the library: a face without a mesh, no exception,
// nothing kept. OpenCASCADE is let off two things: allocations by its own allocator do not fail
// here, and where one of its constructors fails between two blocks, it forgets the first.
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "tests/solidra/Faces.h"

namespace {

// The allocation that fails, counted from when it is set; 0: none.
long failing = 0;
long live = 0;

void* countedOrNull(std::size_t size) noexcept {
  if (failing > 0 && --failing == 0) return nullptr;
  ++live;
  return std::malloc(size == 0 ? 1 : size);
}

void* counted(std::size_t size) {
  if (void* const p = countedOrNull(size)) return p;
  throw std::bad_alloc();
}

void uncounted(void* p) noexcept {
  if (p) --live;
  std::free(p);
}

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) { return counted(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return counted(size); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return countedOrNull(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return countedOrNull(size);
}
[[gnu::noinline]] void operator delete(void* p) noexcept { uncounted(p); }
[[gnu::noinline]] void operator delete[](void* p) noexcept { uncounted(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { uncounted(p); }
[[gnu::noinline]] void operator delete[](void* p, std::size_t) noexcept { uncounted(p); }
[[gnu::noinline]] void operator delete(void* p, const std::nothrow_t&) noexcept { uncounted(p); }

// For the sanitizer; its name is its own. Frames of the module hold OpenCASCADE's inline
// constructors.
extern "C" const char* __lsan_default_suppressions();   // NOLINT
extern "C" const char* __lsan_default_suppressions() {  // NOLINT
  return "leak:libTK\nleak:solidra_triangulate\n";
}

namespace korvo::test {
namespace {

/// Runs `work` again and again, each time with another allocation failing, until none of them is
/// reached any more: all of the first hundred, then more and more rarely. How often it ran.
template <class Work>
int failEach(Work work) {
  int runs = 0;
  for (long at = 1;; at += 1 + at / 100) {
    failing = at;
    EXPECT_NO_THROW(work());
    const bool isReached = failing == 0;
    failing = 0;
    if (!isReached) return runs;
    ++runs;
  }
}

std::unique_ptr<CTopo_Face> untrimmed() { return face(cylinder(50, 80, 1)); }

std::unique_ptr<CTopo_Face> withHoles() {
  std::vector<CurvePtr> curves;
  curves.push_back(rectangle(.1, .1, .9, .9));
  for (const double u : {.3, .5, .7}) curves.push_back(circle(u, .5, .08, .08));
  return face(cylinder(50, 80, 1), std::move(curves));
}

struct Row {
  const char* name;
  std::unique_ptr<CTopo_Face> (*make)();
  bool isByTheMesher;
};

class SolidraShortage : public testing::TestWithParam<Row> {};

TEST_P(SolidraShortage, LeavesAFaceWithoutAMeshAndWithoutALeak) {
  const auto f = GetParam().make();
  const bool isMeshed = f->ValidateMesh(0.05, 0.05);  // what is made once is made now
  f->Regen(0, 0.001);
  const long before = live;
  const int runs = failEach([&] {
    f->ValidateMesh(0.05, 0.05);
    const bool hasFailed = failing == 0;
    const bool has = f->HasMesh();
    f->Regen(0, 0.001);
    EXPECT_TRUE(GetParam().isByTheMesher || live == before);
    EXPECT_TRUE(has == isMeshed || hasFailed);
  });
  EXPECT_GT(runs, isMeshed ? 10 : -1);
}

INSTANTIATE_TEST_SUITE_P(Faces, SolidraShortage,
                         testing::Values(Row{"ByTheMesher", untrimmed, true},
                                         Row{"WithHoles", withHoles, false}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(SolidraShortageOf, WhatIsReadLeavesAnEmptyArray) {
  const auto f = untrimmed();
  const bool isMeshed = f->ValidateMesh(0.05, 0.05);
  failEach([&] {
    CStd_Array1<CMesh_Vertex> vertices;
    CStd_Array1<CMesh_Index> triangles;
    const int points = f->GetMeshVertex(vertices);
    const int count = f->GetVTriangles(triangles);
    EXPECT_EQ(points, vertices.GetCount());
    EXPECT_EQ(count, triangles.GetCount());
    EXPECT_TRUE(!isMeshed || failing == 0 || count > 0);
  });
}

TEST(SolidraShortageOf, DataLeavesRefusedSurfacesAndCurves) {
  const Patch p = cylinder(50, 80, 1);
  const auto arrayOf = [](const std::vector<double>& v) {
    return CStd_Array1<double>(v.data(), static_cast<int>(v.size()));
  };
  auto ku = arrayOf(p.knotsU);
  auto kv = arrayOf(p.knotsV);
  auto weights = arrayOf(p.weights);
  CStd_Array1<CGeom_XYZ> poles(p.poles.data(), static_cast<int>(p.poles.size()));
  const std::vector<CGeom2d_XY> points = {{0, 0}, {1, 0}, {1, 1}};
  const CStd_Array1<CGeom2d_XY> poles2(points.data(), 3);
  const CStd_Array1<double> none;
  EXPECT_GT(failEach([&] {
              const CGeom_SNurbs surface(p.countU, p.orderU, false, false, ku, p.countV, p.orderV,
                                         false, false, kv, poles, weights, 0, 1, 0, 1);
              EXPECT_TRUE(surface.IsValid() || failing == 0);
              const CGeom2d_Polygon polygon(3, points.data(), 3);
              EXPECT_TRUE(polygon.IsValid() || failing == 0);
              const CGeom2d_CNurbs curve(3, 3, false, false, poles2, ku, none);
              EXPECT_TRUE(curve.IsValid() || failing == 0);
            }),
            5);
}

}  // namespace
}  // namespace korvo::test
