#include <rapidcheck/gtest.h>

#include "platform/zgeo/UTri.h"
#include "tests/zgeo/Generators.h"

namespace zgeo {
namespace {

using test::anyMatrix;
using test::anyVector;
using test::number;

UTri anyTriangle() { return {anyVector(1000), anyVector(1000), anyVector(1000)}; }

TEST(ApplyMatrix, TurnsAndMovesEveryCorner) {
  UMatrix m;  // a quarter turn about Z, x to y, then 10, 20, 30 further
  m.set(0, -1, 0, 10, 1, 0, 0, 20, 0, 0, 1, 30, 0, 0, 0, 1);
  std::vector<UTri> list{UTri({1, 0, 0}, {0, 1, 0}, {0, 0, 1}), UTri({2, 3, 4}, {}, {-5, 6, -7})};
  UTri::_applyMatrix(m, list);
  EXPECT_EQ(list, (std::vector<UTri>{UTri({10, 21, 30}, {9, 20, 30}, {10, 20, 31}),
                                     UTri({7, 22, 34}, {10, 20, 30}, {4, 15, 23})}));
}

TEST(ApplyMatrix, LeavesAnEmptyListEmpty) {
  std::vector<UTri> list;
  UTri::_applyMatrix(UMatrix(), list);
  EXPECT_TRUE(list.empty());
}

TEST(ApplyMatrix, TheIdentityChangesNothing) {
  std::vector<UTri> list{UTri({1e-300, -2, 3e300}, {4, 5, 6}, {0.1, 0.2, 0.3})};
  const std::vector<UTri> before = list;
  UTri::_applyMatrix(UMatrix(), list);
  EXPECT_EQ(list, before);
}

TEST(ApplyMatrix, KeepsTheOrderOfCornersInAMirror) {
  UMatrix m;
  m(0, 0) = -1;
  std::vector<UTri> list{UTri({1, 2, 3}, {4, 5, 6}, {7, 8, 9})};
  UTri::_applyMatrix(m, list);
  EXPECT_EQ(list[0], UTri({-1, 2, 3}, {-4, 5, 6}, {-7, 8, 9}));
}

/// Row by row: the sum of three products and the fourth column.
RC_GTEST_PROP(ApplyMatrixLaws, IsTheAffineSumOfEachRow, ()) {
  const UMatrix m = anyMatrix();
  const UTri before = anyTriangle();
  std::vector<UTri> list(3, before);
  UTri::_applyMatrix(m, list);
  for (const UTri& after : list) {
    for (int i = 0; i < 3; ++i) {
      const UVec3d p = before.p[i];
      const auto row = [&](int r) {
        return m(r, 0) * p.x + m(r, 1) * p.y + m(r, 2) * p.z + m(r, 3);
      };
      RC_ASSERT(test::difference(after.p[i], UVec3d(row(0), row(1), row(2))) < 1e-9);
    }
  }
}

}  // namespace
}  // namespace zgeo
