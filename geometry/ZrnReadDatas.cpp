#include <array>

#include "geometry/ZrnReading.h"

// The data of one entity, provided that it is of the kind asked for.
namespace zkin {
namespace zrn {
namespace {

/// By kind, for those whose data are read.
constexpr std::array<const char*, ZRN_KIND_ATTRIBUTE + 1> kInconsistent = {
    "",
    "GetPolyLineCurveDatas:: type inconsistent with datas",
    "GetUVPolyLineCurveDatas :: type inconsistent with datas",
    "GetPolynomialCurveDatas:: type inconsistent with datas",
    "GetPolynomialSurfaceDatas:: type inconsistent with datas",
    "GetTrimmedPolynomialCurveDatas:: type inconsistent with datas",
    "GetMultipatchSurfaceDatas:: type inconsistent with datas",
    "GetNurbsCurveDatas:: type inconsistent with datas",
    "GetNurbsSurfaceDatas:: type inconsistent with datas",
    "GetPlanarSurfaceDatas:: type inconsistent with datas",
    "GetCircularArcCurveDatas:: type inconsistent with datas",
    "GetScaleDatas:: type inconsistent with datas",
    "GetAttributesDatas:: type inconsistent with datas",
};

}  // namespace

bool readDatas(Reading& in, CGeomFileEntity& entity, ZRN_KIND expected) {
  if (entity.GetKind() != expected) {
    in.report(kInconsistent[expected]);
    return false;
  }
  const ZRN_Callbacks& to = in.callbacks();
  return entity.GetGeom()->ReadDatas(in.stream(), to.cancel, to.progress, to.message);
}

}  // namespace zrn

namespace {

bool readFrom(std::FILE* stream, CGeomFileEntity& entity, ZRN_KIND expected,
              const ZRN_Callbacks& callbacks) {
  zrn::Reading in(stream, callbacks);
  return zrn::readDatas(in, entity, expected);
}

}  // namespace

bool GetPolyLineCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                           const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_POLYLINE_CURVE, callbacks);
}

bool GetUVPolyLineCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                             const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_POLYLINE_UV_CURVE, callbacks);
}

bool GetPolynomialCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                             const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_POLYNOMIAL_CURVE, callbacks);
}

bool GetPolynomialSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                               const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_POLYNOMIAL_SURFACE, callbacks);
}

bool GetTrimmedPolynomialCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                    const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_TRIM_POLYNOMIAL_CURVE, callbacks);
}

bool GetMultipatchSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                               const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_MULTIPATCH_SURFACE, callbacks);
}

bool GetNurbsCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                        const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_NURBS_CURVE, callbacks);
}

bool GetNurbsSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                          const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_NURBS_SURFACE, callbacks);
}

bool GetPlanarSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                           const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_PLANAR_SURFACE, callbacks);
}

bool GetCircularArcCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                              const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_CIRCULAR_ARC_CURVE, callbacks);
}

bool GetScaleDatas(std::FILE* stream, CGeomFileEntity& entity, const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_SCALING, callbacks);
}

bool GetAttributesDatas(std::FILE* stream, CGeomFileEntity& entity,
                        const ZRN_Callbacks& callbacks) {
  return readFrom(stream, entity, ZRN_KIND_ATTRIBUTE, callbacks);
}

}  // namespace zkin
