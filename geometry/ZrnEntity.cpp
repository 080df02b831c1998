#include <algorithm>
#include <iterator>
#include <memory>

#include "geometry/ZrnFile.h"

// Which header selects which class.
namespace zkin {
namespace {

using Geom = std::unique_ptr<CGeomFilePrivateGeom>;

struct KindRow {
  long long code;
  bool (*fits)(long long a, long long b);
  ZRN_KIND kind;
  Geom (*make)(long long a, long long b);
};

bool always(long long, long long) { return true; }
bool isOneByOne(long long a, long long b) { return a == 1 && b == 1; }
bool isTwoByTwo(long long a, long long b) { return a == 2 && b == 2; }
bool isCurve(long long a, long long b) { return a >= 2 && b == 1; }
bool isSurface(long long a, long long b) { return a >= 2 && b >= 2; }
bool isTrimPolynomial(long long a, long long b) { return a >= 2 && b == 0; }
bool areNotZero(long long a, long long b) { return a != 0 && b != 0; }
bool isPolylineByB(long long a, long long) { return a == 2; }
bool isPolylineByA(long long a, long long) { return a != 0; }
bool isPolylineUV(long long, long long b) { return b == 1; }

template <class Class>
Geom makeByA(long long a, long long) {
  return std::make_unique<Class>(a);
}
template <class Class>
Geom makeByB(long long, long long b) {
  return std::make_unique<Class>(b);
}
template <class Class>
Geom makeByBoth(long long a, long long b) {
  return std::make_unique<Class>(a, b);
}
template <class Class>
Geom makePlain(long long, long long) {
  return std::make_unique<Class>();
}

/// Deliberate: codes 1 and 22 are the same curve with the count in different fields. Test:
/// ZrnEntity.ObjectKeepsTheCountsOfItsHeader.
constexpr KindRow kKinds[] = {
    {1, isPolylineByB, ZRN_KIND_POLYLINE_CURVE, makeByB<CGeomFilePrivatePolylineCurve>},
    {22, isPolylineByA, ZRN_KIND_POLYLINE_CURVE, makeByA<CGeomFilePrivatePolylineCurve>},
    {2, isPolylineUV, ZRN_KIND_POLYLINE_UV_CURVE, makeByA<CGeomFilePrivatePolylineUVCurve>},
    {4, isCurve, ZRN_KIND_POLYNOMIAL_CURVE, makeByA<CGeomFilePrivatePolynomialcurve>},
    {4, isSurface, ZRN_KIND_POLYNOMIAL_SURFACE, makeByBoth<CGeomFilePrivatePolynomialSurface>},
    {5, isTrimPolynomial, ZRN_KIND_TRIM_POLYNOMIAL_CURVE,
     makeByA<CGeomFilePrivateTrimPolynomialcurve>},
    {8, areNotZero, ZRN_KIND_MULTIPATCH_SURFACE, makeByBoth<CGeomFilePrivateMultipatchSurface>},
    {9, isCurve, ZRN_KIND_NURBS_CURVE, makeByA<CGeomFilePrivateNurbsCurve>},
    {9, isSurface, ZRN_KIND_NURBS_SURFACE, makeByBoth<CGeomFilePrivateNurbsSurface>},
    {10, isSurface, ZRN_KIND_PLANAR_SURFACE, makePlain<CGeomFilePrivatePlanarSurface>},
    {14, isOneByOne, ZRN_KIND_CIRCULAR_ARC_CURVE, makePlain<CGeomFilePrivateCircularArcCurve>},
    {100, isTwoByTwo, ZRN_KIND_SCALING, makePlain<CGeomFilePrivateScaling>},
    {210, isTwoByTwo, ZRN_KIND_ATTRIBUTE, makePlain<CGeomFilePrivateAttribute>},
    {11, always, ZRN_KIND_REVOLUTION_SURFACE, makePlain<CGeomFilePrivateRevolutionSurface>},
    {17, always, ZRN_KIND_RULED_SURFACE, makePlain<CGeomFilePrivateRuledSurface>},
    {18, always, ZRN_KIND_CYLINDER_SURFACE, makePlain<CGeomFilePrivateCylinderSurface>},
    {20, always, ZRN_KIND_PARAMETRIC_SPLINE_SURFACE,
     makePlain<CGeomFilePrivateParametricSplineSurface>},
    {110, always, ZRN_KIND_OFFSET_SURFACE, makePlain<CGeomFilePrivateOffsetSurface>},
};

/// Null for an unknown kind.
const KindRow* rowOf(long long a, long long b, long long code) {
  const auto* const row = std::ranges::find_if(
      kKinds, [=](const KindRow& r) { return r.code == code && r.fits(a, b); });
  return row == std::end(kKinds) ? nullptr : row;
}

}  // namespace

ZRN_KIND ZRN_KindOf(long long a, long long b, long long code) {
  const KindRow* const row = rowOf(a, b, code);
  return row == nullptr ? ZRN_KIND_UNKNOWN : row->kind;
}

bool ZRN_IsCurve(ZRN_KIND kind) {
  switch (kind) {
    case ZRN_KIND_POLYLINE_CURVE:
    case ZRN_KIND_POLYLINE_UV_CURVE:
    case ZRN_KIND_POLYNOMIAL_CURVE:
    case ZRN_KIND_TRIM_POLYNOMIAL_CURVE:
    case ZRN_KIND_NURBS_CURVE:
    case ZRN_KIND_CIRCULAR_ARC_CURVE:
      return true;
    default:
      return false;
  }
}

bool ZRN_IsSurface(ZRN_KIND kind) {
  return kind == ZRN_KIND_POLYNOMIAL_SURFACE || kind == ZRN_KIND_MULTIPATCH_SURFACE ||
         kind == ZRN_KIND_NURBS_SURFACE || kind == ZRN_KIND_PLANAR_SURFACE;
}

bool ZRN_IsSubEntity(ZRN_KIND kind) {
  return ZRN_IsCurve(kind) || kind == ZRN_KIND_POLYNOMIAL_SURFACE || kind == ZRN_KIND_ATTRIBUTE;
}

void CGeomFileEntity::SetHeader(long long headerA, long long headerB, long long headerCode) {
  if (headerA == a_ && headerB == b_ && headerCode == code_) return;
  const KindRow* const row = rowOf(headerA, headerB, headerCode);
  geom_.reset();
  kind_ = ZRN_KIND_UNKNOWN;
  a_ = headerA;
  b_ = headerB;
  code_ = headerCode;
  if (row == nullptr) return;
  geom_ = row->make(headerA, headerB);
  kind_ = row->kind;
}

}  // namespace zkin
