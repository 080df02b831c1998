#include "geometry/ZrnData.h"
#include "geometry/ZrnGeom.h"

// The curves: kinds 1, 2, 3, 5, 7 and 10.
namespace zkin {

using zrn::DataLines;
using zrn::release;

// --- polyline

CGeomFilePrivatePolylineCurve::CGeomFilePrivatePolylineCurve(long long count) : n(count) {
  CGeomFilePrivatePolylineCurve::Clear();
}

void CGeomFilePrivatePolylineCurve::Reset() { points.clear(); }

void CGeomFilePrivatePolylineCurve::Clear() { release(points); }

bool CGeomFilePrivatePolylineCurve::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                              const ZRN_ProgressCallback&,
                                              const ZRN_MessageCallback&) {
  Reset();
  return DataLines(stream).records(n, points);
}

// --- polyline in a parameter plane

CGeomFilePrivatePolylineUVCurve::CGeomFilePrivatePolylineUVCurve(long long count) : n(count) {
  CGeomFilePrivatePolylineUVCurve::Clear();
}

void CGeomFilePrivatePolylineUVCurve::Reset() { points.clear(); }

void CGeomFilePrivatePolylineUVCurve::Clear() { release(points); }

bool CGeomFilePrivatePolylineUVCurve::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                                const ZRN_ProgressCallback&,
                                                const ZRN_MessageCallback&) {
  Reset();
  return DataLines(stream).records(n, points);
}

// --- polynomial curve

CGeomFilePrivatePolynomialcurve::CGeomFilePrivatePolynomialcurve(long long count) : n(count) {
  CGeomFilePrivatePolynomialcurve::Clear();
}

void CGeomFilePrivatePolynomialcurve::Reset() { coefficients.clear(); }

void CGeomFilePrivatePolynomialcurve::Clear() { release(coefficients); }

bool CGeomFilePrivatePolynomialcurve::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                                const ZRN_ProgressCallback&,
                                                const ZRN_MessageCallback&) {
  Reset();
  return DataLines(stream).records(n, coefficients);
}

// --- trimmed polynomial curve

CGeomFilePrivateTrimPolynomialcurve::CGeomFilePrivateTrimPolynomialcurve(long long count)
    : n(count) {
  CGeomFilePrivateTrimPolynomialcurve::Clear();
}

void CGeomFilePrivateTrimPolynomialcurve::Reset() {
  interval = {};
  coefficients.clear();
}

void CGeomFilePrivateTrimPolynomialcurve::Clear() {
  CGeomFilePrivateTrimPolynomialcurve::Reset();
  release(coefficients);
}

// Deliberate: the interval's line is used up unread. Test:
// Curves/ZrnData.IsAsWritten/TrimPolynomialCurve.
bool CGeomFilePrivateTrimPolynomialcurve::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                                    const ZRN_ProgressCallback&,
                                                    const ZRN_MessageCallback&) {
  Reset();
  DataLines in(stream);
  return in.anything() && in.records(n, coefficients);
}

// --- NURBS curve

CGeomFilePrivateNurbsCurve::CGeomFilePrivateNurbsCurve(long long count) : n(count) {
  CGeomFilePrivateNurbsCurve::Clear();
}

void CGeomFilePrivateNurbsCurve::Reset() {
  isPlanar = false;
  poles.clear();
  weights.clear();
  degree = 0;
  isPeriodic = false;
  interval = {};
  knots.clear();
}

void CGeomFilePrivateNurbsCurve::Clear() {
  CGeomFilePrivateNurbsCurve::Reset();
  release(poles);
  release(weights);
  release(knots);
}

namespace {

/// A pole line of a NURBS curve: x, y, z, weight, or x, y, weight for a planar curve.
bool scanPole(const DataLines& in, bool isPlanar, zgeo::UVec3d& pole, double& weight) {
  pole.z = 0.0;
  return isPlanar ? in.again(pole.x, pole.y, weight) : in.again(pole.x, pole.y, pole.z, weight);
}

/// Deliberate: the first line decides for all: planar when it does not hold four reals. Test:
/// ZrnNurbsCurve.IsDecidedByItsFirstPole.
bool readPoles(DataLines& in, CGeomFilePrivateNurbsCurve& curve) {
  zgeo::UVec3d pole;
  double weight = 0.0;
  for (long long i = 0; i < curve.n; ++i) {
    if (!in.anything()) return false;
    if (i == 0) curve.isPlanar = !scanPole(in, false, pole, weight);
    if (!scanPole(in, curve.isPlanar, pole, weight)) return false;
    curve.poles.push_back(pole);
    curve.weights.push_back(weight);
  }
  return true;
}

}  // namespace

bool CGeomFilePrivateNurbsCurve::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                           const ZRN_ProgressCallback&,
                                           const ZRN_MessageCallback&) {
  Reset();
  DataLines in(stream);
  long long periodic = 0;
  long long ignored = 0;
  ZRN_INTERVAL ignoredInterval;
  const bool fits = readPoles(in, *this) && in.record(degree, ignored) &&
                    in.record(periodic, ignored) && in.record(interval.start, interval.end) &&
                    in.record(ignoredInterval.start, ignoredInterval.end) &&
                    in.countedReals(knots) && in.record(ignored);
  isPeriodic = periodic == 1;
  return fits;
}

// --- circular arc

CGeomFilePrivateCircularArcCurve::CGeomFilePrivateCircularArcCurve() {
  CGeomFilePrivateCircularArcCurve::Clear();
}

void CGeomFilePrivateCircularArcCurve::Reset() {
  range = {};
  radius = 0.0;
  centre = {};
  rows[0] = {1.0, 0.0, 0.0};
  rows[1] = {0.0, 1.0, 0.0};
  rows[2] = {0.0, 0.0, 1.0};
  translation = {};
}

void CGeomFilePrivateCircularArcCurve::Clear() { CGeomFilePrivateCircularArcCurve::Reset(); }

bool CGeomFilePrivateCircularArcCurve::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                                 const ZRN_ProgressCallback&,
                                                 const ZRN_MessageCallback&) {
  Reset();
  DataLines in(stream);
  return in.record(range.start, range.end) && in.record(radius) && in.record(centre) &&
         in.record(rows[0]) && in.record(rows[1]) && in.record(rows[2]) && in.record(translation);
}

}  // namespace zkin
