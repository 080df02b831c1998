#pragma once

#include <span>

#include "geometry/ZrnFile.h"

namespace korvo::tools {

template <class Class>
const Class& dataOf(const zkin::CGeomFileEntity& entity) {
  return static_cast<const Class&>(*entity.GetGeom());
}

/// Calls `out.field(name, value)` for all data of an entity of kinds 1 to 10, in one order. A value
/// is a bool, a long long, a double, an interval, a point, or a span of doubles or of points.
template <class Out>
void giveFields(const zkin::CGeomFileEntity& entity, Out& out) {
  using namespace zkin;
  using Reals = std::span<const double>;
  using Points2 = std::span<const zgeo::UVec2d>;
  using Points = std::span<const zgeo::UVec3d>;
  switch (entity.GetKind()) {
    case ZRN_KIND_POLYLINE_CURVE:
      out.field("points", Points(dataOf<CGeomFilePrivatePolylineCurve>(entity).points));
      break;
    case ZRN_KIND_POLYLINE_UV_CURVE:
      out.field("points2", Points2(dataOf<CGeomFilePrivatePolylineUVCurve>(entity).points));
      break;
    case ZRN_KIND_POLYNOMIAL_CURVE:
      out.field("coeffs", Points(dataOf<CGeomFilePrivatePolynomialcurve>(entity).coefficients));
      break;
    case ZRN_KIND_POLYNOMIAL_SURFACE:
      out.field("coeffs", Points(dataOf<CGeomFilePrivatePolynomialSurface>(entity).coefficients));
      break;
    case ZRN_KIND_TRIM_POLYNOMIAL_CURVE: {
      const auto& curve = dataOf<CGeomFilePrivateTrimPolynomialcurve>(entity);
      out.field("interval", curve.interval);
      out.field("coeffs", Points(curve.coefficients));
      break;
    }
    case ZRN_KIND_MULTIPATCH_SURFACE: {
      const auto& surface = dataOf<CGeomFilePrivateMultipatchSurface>(entity);
      out.field("u", Reals(surface.u));
      out.field("v", Reals(surface.v));
      break;
    }
    case ZRN_KIND_NURBS_CURVE: {
      const auto& curve = dataOf<CGeomFilePrivateNurbsCurve>(entity);
      out.field("planar", curve.isPlanar);
      out.field("poles", Points(curve.poles));
      out.field("weights", Reals(curve.weights));
      out.field("degree", curve.degree);
      out.field("periodic", curve.isPeriodic);
      out.field("interval", curve.interval);
      out.field("knots", Reals(curve.knots));
      break;
    }
    case ZRN_KIND_NURBS_SURFACE: {
      const auto& surface = dataOf<CGeomFilePrivateNurbsSurface>(entity);
      out.field("poles", Points(surface.poles));
      out.field("weights", Reals(surface.weights));
      out.field("degree_u", surface.degreeU);
      out.field("degree_v", surface.degreeV);
      out.field("rational_u", surface.isRationalU);
      out.field("rational_v", surface.isRationalV);
      out.field("interval_u", surface.intervalU);
      out.field("interval_v", surface.intervalV);
      out.field("knots_u", Reals(surface.knotsU));
      out.field("knots_v", Reals(surface.knotsV));
      break;
    }
    case ZRN_KIND_PLANAR_SURFACE:
      out.field("plane", dataOf<CGeomFilePrivatePlanarSurface>(entity).plane);
      break;
    case ZRN_KIND_CIRCULAR_ARC_CURVE: {
      const auto& arc = dataOf<CGeomFilePrivateCircularArcCurve>(entity);
      out.field("range", arc.range);
      out.field("radius", arc.radius);
      out.field("centre", arc.centre);
      out.field("rows", Points(arc.rows));
      out.field("translation", arc.translation);
      break;
    }
    default:
      break;
  }
}

}  // namespace korvo::tools
