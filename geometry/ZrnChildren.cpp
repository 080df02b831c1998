#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "geometry/ZrnReading.h"

// What belongs to an entity: its trimming curves, patches and attributes.
namespace zkin {
namespace zrn {
namespace {

/// One list of children: what it takes and what it reports.
struct ChildList {
  bool (*takes)(ZRN_KIND kind);
  const char* (*notRead)(ZRN_KIND kind);
  const char* noMemory;
  const char* fgetposError;
  const char* fsetposError;
};

const char* curveNotRead(ZRN_KIND kind) {
  switch (kind) {
    case ZRN_KIND_POLYNOMIAL_CURVE:
      return "GetTrimmingCurves:: could not read Polynomial Curve";
    case ZRN_KIND_TRIM_POLYNOMIAL_CURVE:
      return "GetTrimmingCurves:: could not read Trimmed Polynomial Curve";
    case ZRN_KIND_NURBS_CURVE:
      return "GetTrimmingCurves:: could not read Nurbs Curve";
    case ZRN_KIND_CIRCULAR_ARC_CURVE:
      return "GetTrimmingCurves:: could not read Arc Curve";
    default:  // both polylines
      return "GetTrimmingCurves:: could not read Polyline";
  }
}

const char* patchNotRead(ZRN_KIND) { return "GetPatchSurface:: could not read Patch"; }

bool isPatch(ZRN_KIND kind) { return kind == ZRN_KIND_POLYNOMIAL_SURFACE; }

constexpr ChildList kTrimmingCurves{
    ZRN_IsCurve, curveNotRead, "GetTrimmingCurves::could not allocate memory error\n",
    "GetTrimmingCurves::fgetpos error\n", "GetTrimmingCurves::fsetpos error\n"};
constexpr ChildList kPatches{
    isPatch, patchNotRead, "GetPatchSurfaces::could not allocate memory error\n",
    "GetPatchSurfaces::fgetpos error\n", "GetPatchSurfaces::fsetpos error\n"};

/// Reads the child whose header is the present line and appends it.
bool readChild(Reading& in, const ChildList& list, const Header& header, CGeomFileNodeList& out,
               bool& positionError) {
  std::unique_ptr<CGeomFileNode> child(new (std::nothrow) CGeomFileNode);
  if (!child) {
    in.report(list.noMemory);
    return false;
  }
  setHeader(child->entity, header);
  const ZRN_KIND kind = child->entity.GetKind();
  if (!readDatas(in, child->entity, kind)) {
    in.report(list.notRead(kind));
    positionError |= skipToNextEntity(in, true) == Skip::positionError;
    return false;
  }
  out.push_back(std::move(child));
  return true;
}

bool readChildren(Reading& in, const ChildList& list, CGeomFileNodeList& out, bool& positionError) {
  for (;;) {
    if (in.isCancelled() || !in.remember(list.fgetposError) || !in.nextLine()) return false;
    const std::optional<Header> header = headerOf(in.line());
    if (!header) return in.isAtEnd();
    if (!list.takes(ZRN_KindOf(header->a, header->b, header->code))) {
      return in.giveBack(list.fsetposError);
    }
    if (!readChild(in, list, *header, out, positionError)) return false;
  }
}

bool isAttribute(std::string_view line) {
  const std::optional<Header> header = headerOf(line);
  return header && ZRN_KindOf(header->a, header->b, header->code) == ZRN_KIND_ATTRIBUTE;
}

}  // namespace

bool readTrimmingCurves(Reading& in, CGeomFileNode& node, bool& positionError) {
  return readChildren(in, kTrimmingCurves, node.trimmingCurves, positionError);
}

bool readPatchSurfaces(Reading& in, CGeomFileNode& node, bool& positionError) {
  return readChildren(in, kPatches, node.patches, positionError);
}

bool readAttributes(Reading& in, CGeomFileEntity& entity) {
  if (!in.remember("GetAttributes::fgetpos error\n")) return false;
  // At the end there is nothing to give back, and the stream's end-of-file mark stays.
  if (!in.nextLine()) return true;
  if (!isAttribute(in.line())) return in.giveBack("GetAttributes::fsetpos error\n");
  CGeomFilePrivateAttribute block;
  const ZRN_Callbacks& to = in.callbacks();
  if (!block.ReadDatas(in.stream(), to.cancel, to.progress, to.message)) return false;
  entity.attributes = std::move(block.lines);
  return true;
}

}  // namespace zrn

bool GetTrimmingCurves(std::FILE* stream, CGeomFileNode& node, const ZRN_Callbacks& callbacks) {
  zrn::Reading in(stream, callbacks);
  bool positionError = false;
  return zrn::readTrimmingCurves(in, node, positionError);
}

bool GetPatchSurfaces(std::FILE* stream, CGeomFileNode& node, const ZRN_Callbacks& callbacks) {
  zrn::Reading in(stream, callbacks);
  bool positionError = false;
  return zrn::readPatchSurfaces(in, node, positionError);
}

bool GetAttributes(std::FILE* stream, CGeomFileEntity& entity, const ZRN_Callbacks& callbacks) {
  zrn::Reading in(stream, callbacks);
  return zrn::readAttributes(in, entity);
}

}  // namespace zkin
