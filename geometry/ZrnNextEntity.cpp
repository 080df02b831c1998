#include <optional>

#include "geometry/ZrnReading.h"

// One top-level entity with everything that belongs to it.
namespace zkin {
namespace zrn {
namespace {

/// Kinds that may stand at top level: what is reported when one does not fit.
const char* notRead(ZRN_KIND kind) {
  switch (kind) {
    case ZRN_KIND_POLYLINE_CURVE:
      return "GetNextEntity:: could not read Polyline";
    case ZRN_KIND_POLYNOMIAL_CURVE:
      return "GetNextEntity:: could not read Polynomial Curve";
    case ZRN_KIND_TRIM_POLYNOMIAL_CURVE:
      return "GetNextEntity:: could not read Trimmed Polynomial Curve";
    case ZRN_KIND_MULTIPATCH_SURFACE:
      return "GetNextEntity:: could not read Multipatch surface";
    case ZRN_KIND_NURBS_CURVE:
      return "GetNextEntity:: could not read Nurbs Curve";
    case ZRN_KIND_NURBS_SURFACE:
      return "GetNextEntity:: could not read Nurbs surface";
    case ZRN_KIND_PLANAR_SURFACE:
      return "GetNextEntity:: could not read Planar surface";
    case ZRN_KIND_CIRCULAR_ARC_CURVE:
      return "GetNextEntity:: could not read Arc Curve";
    default:
      return "GetNextEntity:: could not read Scale";
  }
}

/// Passes over an entity whose lines are not read, up to the next header. Always false: there is
/// no node.
bool pass(Reading& in, bool withSubEntities, bool& positionError) {
  positionError |= skipToNextEntity(in, withSubEntities) == Skip::positionError;
  return false;
}

bool fail(Reading& in, ZRN_KIND kind, bool withSubEntities, bool& positionError) {
  in.report(notRead(kind));
  return pass(in, withSubEntities, positionError);
}

bool readCurve(Reading& in, CGeomFileEntity& entity, bool& positionError) {
  const ZRN_KIND kind = entity.GetKind();
  if (in.isCancelled() || !readDatas(in, entity, kind)) return fail(in, kind, false, positionError);
  readAttributes(in, entity);
  return true;
}

/// A surface is there once its own lines are: what breaks off behind them costs only itself.
bool readSurface(Reading& in, CGeomFileNode& node, long long number, bool& positionError) {
  const ZRN_KIND kind = node.entity.GetKind();
  if (!readDatas(in, node.entity, kind)) return fail(in, kind, true, positionError);
  node.entity.surfaceNumber = number;
  if (kind == ZRN_KIND_MULTIPATCH_SURFACE) readPatchSurfaces(in, node, positionError);
  readTrimmingCurves(in, node, positionError);
  readAttributes(in, node.entity);
  return true;
}

bool readScaling(Reading& in, CGeomFileEntity& entity, bool& positionError) {
  const ZRN_KIND kind = entity.GetKind();
  return readDatas(in, entity, kind) || fail(in, kind, false, positionError);
}

/// Reads what follows the header of the node's entity.
bool readByKind(Reading& in, CGeomFileNode& node, long long& surfaceCounter, bool& positionError) {
  switch (node.entity.GetKind()) {
    case ZRN_KIND_UNKNOWN:
      return true;
    case ZRN_KIND_POLYLINE_CURVE:
    case ZRN_KIND_POLYNOMIAL_CURVE:
    case ZRN_KIND_TRIM_POLYNOMIAL_CURVE:
    case ZRN_KIND_NURBS_CURVE:
    case ZRN_KIND_CIRCULAR_ARC_CURVE:
      return readCurve(in, node.entity, positionError);
    case ZRN_KIND_MULTIPATCH_SURFACE:
    case ZRN_KIND_NURBS_SURFACE:
    case ZRN_KIND_PLANAR_SURFACE:
      return readSurface(in, node, ++surfaceCounter, positionError);
    case ZRN_KIND_SCALING:
      return readScaling(in, node.entity, positionError);
    // These belong to something in front of them, and nothing is there.
    case ZRN_KIND_POLYLINE_UV_CURVE:
    case ZRN_KIND_POLYNOMIAL_SURFACE:
    case ZRN_KIND_ATTRIBUTE:
      return pass(in, false, positionError);
    default:  // Deliberate: surfaces that are not read use up a number. Test: ZrnBadFile,
              // UnreadOneUsesUpANumber
      ++surfaceCounter;
      return pass(in, false, positionError);
  }
}

}  // namespace

void setHeader(CGeomFileEntity& entity, const Header& header) {
  entity.SetHeader(header.a, header.b, header.code);
  entity.value = header.value;
  entity.name = header.name;
}

bool readNextEntity(Reading& in, CGeomFileNode& node, long long& surfaceCounter,
                    bool& positionError) {
  if (in.isCancelled() || !in.nextLine()) return false;
  const std::optional<Header> header = headerOf(in.line());
  if (!header) return false;
  setHeader(node.entity, *header);
  return readByKind(in, node, surfaceCounter, positionError);
}

}  // namespace zrn

bool GetNextEntity(std::FILE* stream, CGeomFileNode& node, long long& surfaceCounter,
                   const ZRN_Callbacks& callbacks) {
  zrn::Reading in(stream, callbacks);
  bool positionError = false;
  return zrn::readNextEntity(in, node, surfaceCounter, positionError);
}

}  // namespace zkin
