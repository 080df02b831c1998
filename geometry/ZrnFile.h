#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "geometry/ZrnGeom.h"
#include "kinematics/Export.h"

/// The application's text format for geometry (.zrn): from an open file to a list of entities.
///
/// A file is a sequence of entities; each is a header line (`a b code`, then perhaps a value and a
/// name), its data lines, and for surfaces their patches and trimming curves. There is no count and
/// no end mark. Lines are what `fgets` gives into 256 bytes, so a longer line is several lines, and
/// a NUL hides the rest of its line. Numbers are what `scanf` of the C locale takes from the start
/// of a line, whatever the host's locale. Whatever does not fit is passed over up to the next
/// header.
namespace zkin {

/// The three callbacks; each may be absent.
struct ZRN_Callbacks {
  ZRN_CancelCallback cancel;
  ZRN_ProgressCallback progress;
  ZRN_MessageCallback message;
};

/// Kind that a header (a, b, code) selects; unknown for every combination outside the table.
KORVO_KINEMATICS_API ZRN_KIND ZRN_KindOf(long long a, long long b, long long code);

KORVO_KINEMATICS_API bool ZRN_IsCurve(ZRN_KIND kind);    ///< 1, 2, 3, 5, 7, 10.
KORVO_KINEMATICS_API bool ZRN_IsSurface(ZRN_KIND kind);  ///< 4, 6, 8, 9.
/// What is passed over together with an entity that failed: 1, 2, 3, 4, 5, 7, 10, 12.
KORVO_KINEMATICS_API bool ZRN_IsSubEntity(ZRN_KIND kind);

/// One entity: its header and its data.
class KORVO_KINEMATICS_API CGeomFileEntity {
 public:
  /// Sets the header. One that differs from the present one releases the object and makes a new,
  /// empty one of the class that the header selects; none for an unknown kind.
  void SetHeader(long long headerA, long long headerB, long long headerCode);

  ZRN_KIND GetKind() const { return kind_; }
  long long GetA() const { return a_; }
  long long GetB() const { return b_; }
  long long GetCode() const { return code_; }

  /// The data; null for an unknown kind. Belongs to the entity, valid until its header changes.
  /// Its class follows from the kind.
  CGeomFilePrivateGeom* GetGeom() { return geom_.get(); }
  const CGeomFilePrivateGeom* GetGeom() const { return geom_.get(); }

  double value = 0.0;  ///< The header's fourth field, kept and not interpreted.
  /// The header's line from the first place where its fifth field's text occurs, to the end of the
  /// line, its line feed included; empty when there is no fifth field.
  std::string name;
  CGeomFileLines attributes;  ///< Of the attribute block that follows the entity.
  /// Rank of a read surface (kinds 6, 8, 9) among all surface headers of the file, from 0; -1 for
  /// everything else.
  long long surfaceNumber = -1;

 private:
  ZRN_KIND kind_ = ZRN_KIND_UNKNOWN;
  long long a_ = 0;
  long long b_ = 0;
  long long code_ = 0;
  std::unique_ptr<CGeomFilePrivateGeom> geom_;
};

class CGeomFileNode;

/// Nodes in file order; the list owns them.
using CGeomFileNodeList = std::vector<std::unique_ptr<CGeomFileNode>>;

/// An entity with what belongs to it. Nodes nest two deep: children have no children.
class KORVO_KINEMATICS_API CGeomFileNode {
 public:
  CGeomFileEntity entity;
  CGeomFileNodeList trimmingCurves;  ///< Curves that bound a surface.
  CGeomFileNodeList patches;         ///< Polynomial surfaces of a multi-patch surface.
};

/// Reads a file: appends its surfaces and curves to `nodes`, in file order.
///
/// @param path   Narrow path of a regular file, taken as it is (UTF-8 on Windows).
/// @param nodes  What is in it stays, whatever the result: after a failure it also has the entities
///               read up to there.
/// @param scale  1, or the factor of the file's last scaling entity. Nothing is scaled by it.
/// @units   The file's own.
/// @return  0 when the end was reached or the caller cancelled, whatever was passed over on the
///          way. -1 when `path` is null, names no regular file that can be read, or an empty one. 1
///          when reading failed in the middle, a position could not be got or set while an entity
///          was passed over, or memory ran out.
/// @errors  Entities that do not fit are reported and passed over. "SkipToNextEntity::end of
/// file\n"
///          is no error: nearly every file that does not end in a curve or a surface gives it.
///          Throws what a callback throws (but a std::bad_alloc, which is memory that ran out),
///          nothing else.
/// @owner   The nodes belong to the caller.
/// @cost    The file is read once; memory below 64 times its size plus 1 MB, constant stack.
KORVO_KINEMATICS_API int ZRN_LoadFile(const char* path, CGeomFileNodeList& nodes, double& scale,
                                      const ZRN_CancelCallback& cancel = nullptr,
                                      const ZRN_ProgressCallback& progress = nullptr,
                                      const ZRN_MessageCallback& message = nullptr);

// --- the steps of a load, on a stream opened for reading bytes that can be positioned.
// They keep the stream's place right behind what they used, throw std::bad_alloc or what a callback
// throws only, and cost one pass over the lines they use.

/// Reads one top-level entity into `node`, a new one.
///
/// @param surfaceCounter  Number of the last surface header, -1 before the first; one more after
///                        each header of kinds 6, 8, 9 and 13 to 17.
/// @return  Whether the node is complete; true for an unknown entity too, whose lines are left. On
///          false the node is to be thrown away. A surface is complete even when its patches, trims
///          or attributes broke off.
KORVO_KINEMATICS_API bool GetNextEntity(std::FILE* stream, CGeomFileNode& node,
                                        long long& surfaceCounter, const ZRN_Callbacks& callbacks);

/// Appends the curves that follow to the node's trimming curves, up to the header of something
/// else, which is left in the stream.
/// @return  False when cancelled, when a curve does not fit (it and what belongs to it are passed
///          over), when a position or memory cannot be had, at the end of the file, and behind a
///          line that is no header; that line is used up. True there when the file ends with it.
KORVO_KINEMATICS_API bool GetTrimmingCurves(std::FILE* stream, CGeomFileNode& node,
                                            const ZRN_Callbacks& callbacks);

/// The same for polynomial surfaces and the node's patches.
KORVO_KINEMATICS_API bool GetPatchSurfaces(std::FILE* stream, CGeomFileNode& node,
                                           const ZRN_Callbacks& callbacks);

/// Reads the attribute block that follows, if one does, in place of the entity's attributes.
/// Anything but a header `2 2 210` is left in the stream.
/// @return  False only when a position could not be got or set.
KORVO_KINEMATICS_API bool GetAttributes(std::FILE* stream, CGeomFileEntity& entity,
                                        const ZRN_Callbacks& callbacks);

/// Passes over lines up to the next one that begins with three integers, which is left in the
/// stream. With `skipSubEntities` goes on while that is the header of a sub-entity.
///
/// @param errorFlag  Set when a position could not be got or set; never cleared.
/// @return  Whether the stream is at a header, or at its end behind passed sub-entities. False at
///          the end of the file otherwise, and on errors.
KORVO_KINEMATICS_API bool SkipToNextEntity(std::FILE* stream, bool& errorFlag, bool skipSubEntities,
                                           const ZRN_Callbacks& callbacks);

// --- the data of one entity: false, and a message, when its kind is another one; else `ReadDatas`.

/// Reads the data of an entity of kind 1.
KORVO_KINEMATICS_API bool GetPolyLineCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                const ZRN_Callbacks& callbacks);
/// Of kind 2.
KORVO_KINEMATICS_API bool GetUVPolyLineCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                  const ZRN_Callbacks& callbacks);
/// Of kind 3.
KORVO_KINEMATICS_API bool GetPolynomialCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                  const ZRN_Callbacks& callbacks);
/// Of kind 4.
KORVO_KINEMATICS_API bool GetPolynomialSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                    const ZRN_Callbacks& callbacks);
/// Of kind 5.
KORVO_KINEMATICS_API bool GetTrimmedPolynomialCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                         const ZRN_Callbacks& callbacks);
/// Of kind 6, without its patches and trimming curves.
KORVO_KINEMATICS_API bool GetMultipatchSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                    const ZRN_Callbacks& callbacks);
/// Of kind 7.
KORVO_KINEMATICS_API bool GetNurbsCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                             const ZRN_Callbacks& callbacks);
/// Of kind 8, without its trimming curves.
KORVO_KINEMATICS_API bool GetNurbsSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                                               const ZRN_Callbacks& callbacks);
/// Of kind 9, without its trimming curves.
KORVO_KINEMATICS_API bool GetPlanarSurfaceDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                const ZRN_Callbacks& callbacks);
/// Of kind 10.
KORVO_KINEMATICS_API bool GetCircularArcCurveDatas(std::FILE* stream, CGeomFileEntity& entity,
                                                   const ZRN_Callbacks& callbacks);
/// Of kind 11.
KORVO_KINEMATICS_API bool GetScaleDatas(std::FILE* stream, CGeomFileEntity& entity,
                                        const ZRN_Callbacks& callbacks);
/// Of kind 12.
KORVO_KINEMATICS_API bool GetAttributesDatas(std::FILE* stream, CGeomFileEntity& entity,
                                             const ZRN_Callbacks& callbacks);

}  // namespace zkin
