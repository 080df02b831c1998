#include "geometry/ZrnData.h"
#include "geometry/ZrnGeom.h"

// The surfaces: kinds 4, 6, 8 and 9, and 13 to 17, which are not read.
namespace zkin {

using zrn::DataLines;
using zrn::release;

// --- polynomial surface

CGeomFilePrivatePolynomialSurface::CGeomFilePrivatePolynomialSurface(long long countA,
                                                                     long long countB)
    : a(countA), b(countB) {
  CGeomFilePrivatePolynomialSurface::Clear();
}

void CGeomFilePrivatePolynomialSurface::Reset() { coefficients.clear(); }

void CGeomFilePrivatePolynomialSurface::Clear() { release(coefficients); }

bool CGeomFilePrivatePolynomialSurface::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                                  const ZRN_ProgressCallback&,
                                                  const ZRN_MessageCallback&) {
  Reset();
  return DataLines(stream).records(zrn::product(a, b), coefficients);
}

// --- multi-patch surface

CGeomFilePrivateMultipatchSurface::CGeomFilePrivateMultipatchSurface(long long countA,
                                                                     long long countB)
    : a(countA), b(countB) {
  CGeomFilePrivateMultipatchSurface::Clear();
}

void CGeomFilePrivateMultipatchSurface::Reset() {
  u.clear();
  v.clear();
}

void CGeomFilePrivateMultipatchSurface::Clear() {
  release(u);
  release(v);
}

bool CGeomFilePrivateMultipatchSurface::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                                  const ZRN_ProgressCallback&,
                                                  const ZRN_MessageCallback&) {
  Reset();
  DataLines in(stream);
  return in.countedReals(u) && in.countedReals(v);
}

// --- NURBS surface

CGeomFilePrivateNurbsSurface::CGeomFilePrivateNurbsSurface(long long countA, long long countB)
    : a(countA), b(countB) {
  CGeomFilePrivateNurbsSurface::Clear();
}

void CGeomFilePrivateNurbsSurface::Reset() {
  poles.clear();
  weights.clear();
  degreeU = degreeV = 0;
  isRationalU = isRationalV = false;
  intervalU = intervalV = {};
  knotsU.clear();
  knotsV.clear();
}

void CGeomFilePrivateNurbsSurface::Clear() {
  CGeomFilePrivateNurbsSurface::Reset();
  release(poles);
  release(weights);
  release(knotsU);
  release(knotsV);
}

namespace {

bool readPoles(DataLines& in, CGeomFilePrivateNurbsSurface& surface) {
  zgeo::UVec3d pole;
  double weight = 0.0;
  for (long long left = zrn::product(surface.a, surface.b); left > 0; --left) {
    if (!in.record(pole.x, pole.y, pole.z, weight)) return false;
    surface.poles.push_back(pole);
    surface.weights.push_back(weight);
  }
  return true;
}

}  // namespace

bool CGeomFilePrivateNurbsSurface::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                             const ZRN_ProgressCallback&,
                                             const ZRN_MessageCallback&) {
  Reset();
  DataLines in(stream);
  long long rationalU = 0;
  long long rationalV = 0;
  const bool fits = readPoles(in, *this) && in.record(degreeU, degreeV) &&
                    in.record(rationalU, rationalV) && in.record(intervalU.start, intervalU.end) &&
                    in.record(intervalV.start, intervalV.end) && in.countedReals(knotsU) &&
                    in.countedReals(knotsV);
  isRationalU = rationalU == 1;
  isRationalV = rationalV == 1;
  return fits;
}

// --- planar surface

CGeomFilePrivatePlanarSurface::CGeomFilePrivatePlanarSurface() {
  CGeomFilePrivatePlanarSurface::Clear();
}

void CGeomFilePrivatePlanarSurface::Reset() { plane = {}; }

void CGeomFilePrivatePlanarSurface::Clear() { CGeomFilePrivatePlanarSurface::Reset(); }

bool CGeomFilePrivatePlanarSurface::ReadDatas(std::FILE* stream, const ZRN_CancelCallback&,
                                              const ZRN_ProgressCallback&,
                                              const ZRN_MessageCallback&) {
  Reset();
  return DataLines(stream).record(plane);
}

// --- surfaces that are not read

void CGeomFilePrivateUnreadSurface::Reset() {}

void CGeomFilePrivateUnreadSurface::Clear() {}

bool CGeomFilePrivateUnreadSurface::ReadDatas(std::FILE*, const ZRN_CancelCallback&,
                                              const ZRN_ProgressCallback&,
                                              const ZRN_MessageCallback&) {
  return false;
}

CGeomFilePrivateGeom* CGeomFilePrivateUnreadSurface::GetSurface() { return this; }

const CGeomFilePrivateGeom* CGeomFilePrivateUnreadSurface::GetConstSurface() const { return this; }

}  // namespace zkin
