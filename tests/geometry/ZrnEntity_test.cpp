// Which header selects which kind and class, and what an entity and its object keep.

#include <cstddef>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>
#include <type_traits>
#include <typeinfo>

#include <gtest/gtest.h>

#include "geometry/ZrnFile.h"
#include "tests/support/ZrnStream.h"
#include "tests/support/ZrnText.h"

namespace zkin {
namespace {

using korvo::test::dataOf;
using korvo::test::streamOf;

constexpr long long kHuge = 9'223'372'036'854'775'807;

struct KindRow {
  const char* name;
  long long a, b, code;
  int kind;
};

std::ostream& operator<<(std::ostream& out, const KindRow& row) {
  return out << row.a << ' ' << row.b << ' ' << row.code;
}

/// The class of a kind; null for an unknown one.
const std::type_info* classOf(int kind) {
  static const std::type_info* const kClasses[] = {
      nullptr,
      &typeid(CGeomFilePrivatePolylineCurve),
      &typeid(CGeomFilePrivatePolylineUVCurve),
      &typeid(CGeomFilePrivatePolynomialcurve),
      &typeid(CGeomFilePrivatePolynomialSurface),
      &typeid(CGeomFilePrivateTrimPolynomialcurve),
      &typeid(CGeomFilePrivateMultipatchSurface),
      &typeid(CGeomFilePrivateNurbsCurve),
      &typeid(CGeomFilePrivateNurbsSurface),
      &typeid(CGeomFilePrivatePlanarSurface),
      &typeid(CGeomFilePrivateCircularArcCurve),
      &typeid(CGeomFilePrivateScaling),
      &typeid(CGeomFilePrivateAttribute),
      &typeid(CGeomFilePrivateRevolutionSurface),
      &typeid(CGeomFilePrivateRuledSurface),
      &typeid(CGeomFilePrivateCylinderSurface),
      &typeid(CGeomFilePrivateParametricSplineSurface),
      &typeid(CGeomFilePrivateOffsetSurface),
  };
  return kClasses[kind];
}

class ZrnKinds : public testing::TestWithParam<KindRow> {};

TEST_P(ZrnKinds, FollowFromTheHeader) {
  const KindRow& row = GetParam();
  EXPECT_EQ(ZRN_KindOf(row.a, row.b, row.code), row.kind);
}

TEST_P(ZrnKinds, HaveTheirClass) {
  const KindRow& row = GetParam();
  CGeomFileEntity entity;
  entity.SetHeader(row.a, row.b, row.code);
  EXPECT_EQ(entity.GetKind(), row.kind);
  EXPECT_EQ(entity.GetA(), row.a);
  EXPECT_EQ(entity.GetB(), row.b);
  EXPECT_EQ(entity.GetCode(), row.code);
  const std::type_info* const expected = classOf(row.kind);
  ASSERT_EQ(entity.GetGeom() != nullptr, expected != nullptr);
  if (expected != nullptr) {
    const CGeomFilePrivateGeom& geom = *entity.GetGeom();
    EXPECT_EQ(typeid(geom), *expected);
  }
}

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Known, ZrnKinds,
    testing::Values(
        KindRow{"Polyline", 2, 4, 1, 1}, KindRow{"PolylineWithoutPoints", 2, 0, 1, 1},
        KindRow{"PolylineNegative", 2, -7, 1, 1}, KindRow{"Polyline22", 4, 0, 22, 1},
        KindRow{"Polyline22Negative", -4, 9, 22, 1}, KindRow{"PolylineUV", 5, 1, 2, 2},
        KindRow{"PolylineUVEmpty", 0, 1, 2, 2}, KindRow{"PolylineUVNegative", -1, 1, 2, 2},
        KindRow{"PolynomialCurve", 2, 1, 4, 3}, KindRow{"PolynomialCurveHuge", kHuge, 1, 4, 3},
        KindRow{"PolynomialSurface", 2, 2, 4, 4}, KindRow{"PolynomialSurface3", 2, 3, 4, 4},
        KindRow{"TrimPolynomialCurve", 2, 0, 5, 5}, KindRow{"Multipatch", 1, 1, 8, 6},
        KindRow{"MultipatchNegative", -1, -1, 8, 6}, KindRow{"NurbsCurve", 2, 1, 9, 7},
        KindRow{"NurbsSurface", 2, 2, 9, 8}, KindRow{"NurbsSurfaceHuge", kHuge, kHuge, 9, 8},
        KindRow{"Planar", 2, 2, 10, 9}, KindRow{"PlanarLarger", 3, 7, 10, 9},
        KindRow{"Arc", 1, 1, 14, 10}, KindRow{"Scaling", 2, 2, 100, 11},
        KindRow{"Attribute", 2, 2, 210, 12}, KindRow{"Revolution", 0, 0, 11, 13},
        KindRow{"RevolutionNegative", -1, -9, 11, 13}, KindRow{"Ruled", 0, 0, 17, 14},
        KindRow{"Cylinder", 1, 2, 18, 15}, KindRow{"ParametricSpline", 3, 3, 20, 16},
        KindRow{"Offset", 0, 0, 110, 17}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Unknown, ZrnKinds,
    testing::Values(KindRow{"Polyline1", 1, 4, 1, 0}, KindRow{"Polyline3", 3, 4, 1, 0},
                    KindRow{"Polyline22Zero", 0, 4, 22, 0}, KindRow{"PolylineUV0", 5, 0, 2, 0},
                    KindRow{"PolylineUV2", 5, 2, 2, 0}, KindRow{"PolynomialCurve1", 1, 1, 4, 0},
                    KindRow{"Polynomial0", 2, 0, 4, 0}, KindRow{"PolynomialSurface1", 1, 2, 4, 0},
                    KindRow{"PolynomialNegative", 2, -2, 4, 0},
                    KindRow{"TrimPolynomial1", 1, 0, 5, 0}, KindRow{"TrimPolynomialB1", 2, 1, 5, 0},
                    KindRow{"Multipatch0A", 0, 1, 8, 0}, KindRow{"Multipatch0B", 1, 0, 8, 0},
                    KindRow{"NurbsCurve1", 1, 1, 9, 0}, KindRow{"Nurbs0", 2, 0, 9, 0},
                    KindRow{"NurbsSurface1", 1, 2, 9, 0}, KindRow{"Planar1A", 1, 2, 10, 0},
                    KindRow{"Planar1B", 2, 1, 10, 0}, KindRow{"Arc2A", 2, 1, 14, 0},
                    KindRow{"Arc2B", 1, 2, 14, 0}, KindRow{"Scaling3A", 3, 2, 100, 0},
                    KindRow{"Scaling1B", 2, 1, 100, 0}, KindRow{"AttributeB3", 2, 3, 210, 0},
                    KindRow{"AttributeA1", 1, 2, 210, 0}, KindRow{"Code0", 2, 2, 0, 0},
                    KindRow{"Code3", 1, 2, 3, 0}, KindRow{"Code6", 2, 2, 6, 0},
                    KindRow{"Code7", 2, 2, 7, 0}, KindRow{"CodeNegative", 2, 2, -1, 0},
                    KindRow{"Code211", 2, 2, 211, 0}, KindRow{"Code256Plus1", 2, 2, 257, 0},
                    KindRow{"CodeBeyond32Bits", 2, 2, 4'294'967'297, 0},
                    KindRow{"CodeHuge", 2, 2, kHuge, 0}),
    rowName);

TEST(ZrnKinds, EveryOtherCodeIsUnknown) {
  const std::string known = " 1 2 4 5 8 9 10 11 14 17 18 20 22 100 110 210 ";
  for (int code = -300; code <= 300; ++code) {
    if (known.find(' ' + std::to_string(code) + ' ') != std::string::npos) continue;
    for (int a = 0; a <= 3; ++a) {
      for (int b = 0; b <= 3; ++b) EXPECT_EQ(ZRN_KindOf(a, b, code), 0) << code;
    }
  }
}

TEST(ZrnKinds, FallIntoThreeGroups) {
  std::string curves, surfaces, subEntities;
  for (int kind = 0; kind <= 17; ++kind) {
    const auto k = static_cast<ZRN_KIND>(kind);
    if (ZRN_IsCurve(k)) curves += std::to_string(kind) + ' ';
    if (ZRN_IsSurface(k)) surfaces += std::to_string(kind) + ' ';
    if (ZRN_IsSubEntity(k)) subEntities += std::to_string(kind) + ' ';
  }
  EXPECT_EQ(curves, "1 2 3 5 7 10 ");
  EXPECT_EQ(surfaces, "4 6 8 9 ");
  EXPECT_EQ(subEntities, "1 2 3 4 5 7 10 12 ");
}

// --- the record

TEST(ZrnEntity, IsUnknownAndEmptyWhenNew) {
  const CGeomFileEntity entity;
  EXPECT_EQ(entity.GetKind(), ZRN_KIND_UNKNOWN);
  EXPECT_EQ(entity.GetGeom(), nullptr);
  EXPECT_EQ(entity.GetA(), 0);
  EXPECT_EQ(entity.GetB(), 0);
  EXPECT_EQ(entity.GetCode(), 0);
  EXPECT_EQ(entity.value, 0);
  EXPECT_EQ(entity.name, "");
  EXPECT_TRUE(entity.attributes.empty());
  EXPECT_EQ(entity.surfaceNumber, -1);
}

TEST(ZrnEntity, KeepsItsObjectUnderTheSameHeader) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 4, 1);
  const CGeomFilePrivateGeom* const object = entity.GetGeom();
  entity.SetHeader(2, 4, 1);
  EXPECT_EQ(entity.GetGeom(), object);
}

TEST(ZrnEntity, GetsAnEmptyObjectUnderAnotherHeader) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 1, 1);
  ASSERT_TRUE(entity.GetGeom()->ReadDatas(streamOf("1 2 3\n").get(), nullptr, nullptr, nullptr));
  entity.SetHeader(2, 2, 1);
  const auto& polyline = dataOf<CGeomFilePrivatePolylineCurve>(entity);
  EXPECT_EQ(polyline.n, 2);
  EXPECT_TRUE(polyline.points.empty());
}

TEST(ZrnEntity, LosesItsObjectUnderAnUnknownHeader) {
  CGeomFileEntity entity;
  entity.SetHeader(2, 4, 1);
  entity.SetHeader(2, 4, 3);
  EXPECT_EQ(entity.GetGeom(), nullptr);
  EXPECT_EQ(entity.GetKind(), ZRN_KIND_UNKNOWN);
}

TEST(ZrnEntity, ObjectKeepsTheCountsOfItsHeader) {
  CGeomFileEntity e;
  e.SetHeader(2, 7, 1);
  EXPECT_EQ(dataOf<CGeomFilePrivatePolylineCurve>(e).n, 7);
  e.SetHeader(8, 3, 22);
  EXPECT_EQ(dataOf<CGeomFilePrivatePolylineCurve>(e).n, 8);
  e.SetHeader(6, 1, 2);
  EXPECT_EQ(dataOf<CGeomFilePrivatePolylineUVCurve>(e).n, 6);
  e.SetHeader(5, 1, 4);
  EXPECT_EQ(dataOf<CGeomFilePrivatePolynomialcurve>(e).n, 5);
  e.SetHeader(5, 3, 4);
  EXPECT_EQ(dataOf<CGeomFilePrivatePolynomialSurface>(e).a, 5);
  EXPECT_EQ(dataOf<CGeomFilePrivatePolynomialSurface>(e).b, 3);
  e.SetHeader(9, 0, 5);
  EXPECT_EQ(dataOf<CGeomFilePrivateTrimPolynomialcurve>(e).n, 9);
  e.SetHeader(-2, 11, 8);
  EXPECT_EQ(dataOf<CGeomFilePrivateMultipatchSurface>(e).a, -2);
  EXPECT_EQ(dataOf<CGeomFilePrivateMultipatchSurface>(e).b, 11);
  e.SetHeader(12, 1, 9);
  EXPECT_EQ(dataOf<CGeomFilePrivateNurbsCurve>(e).n, 12);
  e.SetHeader(13, 14, 9);
  EXPECT_EQ(dataOf<CGeomFilePrivateNurbsSurface>(e).a, 13);
  EXPECT_EQ(dataOf<CGeomFilePrivateNurbsSurface>(e).b, 14);
}

TEST(ZrnLines, ShareOneBufferAndKeepTheirBounds) {
  CGeomFileLines lines;
  EXPECT_TRUE(lines.empty());
  for (const char* const line : {"one\n", "", "\n", "two"}) lines.append(line);
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "one\n");
  EXPECT_EQ(lines[1], "");
  EXPECT_EQ(lines[2], "\n");
  EXPECT_EQ(lines[3], "two");
  lines.reset();
  EXPECT_TRUE(lines.empty());
}

// --- the order of virtual operations, which hosts compiled against another build rely on.
// A pointer to a virtual member holds the distance of its place from the table's start.

#if !defined(_MSC_VER)

template <class Member>
std::size_t placeOf(Member member) {
  std::size_t distance = 0;
  std::memcpy(&distance, &member, sizeof distance);
  return (distance & ~std::size_t{1}) / sizeof(void*);
}

struct OneMore : CGeomFilePrivateUnreadSurface {
  virtual void added() {}
};

TEST(ZrnVirtualOperations, StandInTheirOrderBehindTheDestructor) {
  static_assert(std::has_virtual_destructor_v<CGeomFilePrivateGeom>);
  EXPECT_EQ(placeOf(&CGeomFilePrivateGeom::Reset), 2u);  // the destructor has two places
  EXPECT_EQ(placeOf(&CGeomFilePrivateGeom::Clear), 3u);
  EXPECT_EQ(placeOf(&CGeomFilePrivateGeom::GetGeom), 4u);
  EXPECT_EQ(placeOf(&CGeomFilePrivateGeom::GetConstGeom), 5u);
  EXPECT_EQ(placeOf(&CGeomFilePrivateGeom::ReadDatas), 6u);
  EXPECT_EQ(placeOf(&CGeomFilePrivateUnreadSurface::GetSurface), 7u);
  EXPECT_EQ(placeOf(&CGeomFilePrivateUnreadSurface::GetConstSurface), 8u);
  EXPECT_EQ(placeOf(&OneMore::added), 9u);
}

#endif

TEST(ZrnVirtualOperations, GiveTheObjectItself) {
  CGeomFileEntity entity;
  for (int kind = 1; kind <= 17; ++kind) {
    constexpr long long kHeaders[][3] = {
        {2, 1, 1},  {1, 1, 2},  {2, 1, 4},  {2, 2, 4},  {2, 0, 5},   {1, 1, 8},
        {2, 1, 9},  {2, 2, 9},  {2, 2, 10}, {1, 1, 14}, {2, 2, 100}, {2, 2, 210},
        {0, 0, 11}, {0, 0, 17}, {0, 0, 18}, {0, 0, 20}, {0, 0, 110}};
    const auto& h = kHeaders[kind - 1];
    entity.SetHeader(h[0], h[1], h[2]);
    ASSERT_EQ(entity.GetKind(), kind);
    CGeomFilePrivateGeom* const object = entity.GetGeom();
    EXPECT_EQ(object->GetGeom(), object);
    EXPECT_EQ(object->GetConstGeom(), object);
    auto* const unread = dynamic_cast<CGeomFilePrivateUnreadSurface*>(object);
    EXPECT_EQ(unread != nullptr, kind >= 13);
    if (unread == nullptr) continue;
    EXPECT_EQ(unread->GetSurface(), object);
    EXPECT_EQ(unread->GetConstSurface(), object);
  }
}

}  // namespace
}  // namespace zkin
