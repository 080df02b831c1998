#include "adapter/machineFromDefinition.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "adapter/convert.h"
#include "geometry/GeometryFile.h"
#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"
#include "platform/ombra/Entity.h"
#include "platform/ombra/EntityMesh.h"
#include "platform/ombra/Kinematic.h"
#include "platform/ombra/Matrix43.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UTri.h"
#include "platform/zgeo/UVec3d.h"

using Ombra::Matrix43;
using Ombra::Vector3D;
using Ombra::Kin::AxisDefinition;
using Ombra::Kin::Entity;
using Ombra::Kin::EntityId;
using Ombra::Kin::EntityMesh;
using Ombra::Kin::Kinematic;
using Ombra::Kin::Register;
using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;

namespace zkin {

namespace {

struct Release {
  void operator()(KMachineValueBase* v) const { KMachineValueBase::_release(v); }
};

/// A frame with W along a direction; the machine's own axes where W is Z, or is nothing.
Matrix43 frameAlong(const UVec3d& dir, const UVec3d& origin) {
  const UVec3d w = dir.normalised();
  if (w == UVec3d() || w == UVec3d(0, 0, 1)) return Matrix43::Translation(toOmbra(origin));
  const UVec3d side = std::fabs(w.x) < 0.5 ? UVec3d(1, 0, 0) : UVec3d(0, 1, 0);
  const UVec3d v = (w ^ side).normalised();
  return {toOmbra(v ^ w), toOmbra(v), toOmbra(w), toOmbra(origin)};
}

/// All triangles as one mesh, three points each.
EntityMesh meshOf(const std::vector<UTri>& triangles) {
  const auto count = static_cast<std::uint32_t>(triangles.size());
  std::vector<std::uint32_t> indices(std::size_t{3} * count);
  std::iota(indices.begin(), indices.end(), 0u);
  std::vector<double> points;
  for (const UTri& t : triangles) {
    for (const UVec3d& p : t.p) points.insert(points.end(), {p.x, p.y, p.z, 1.0});
  }
  EntityMesh mesh;
  mesh.AddMesh(std::vector<std::uint32_t>(count, 3), std::move(indices), std::move(points));
  return mesh;
}

/// Makes an entity of every element, in rank order, then hangs them on one another.
class Conversion {
 public:
  Conversion(const KMachine& from, const KMachineElem& frame, const KMachineValueBase& zero,
             Kinematic& to)
      : from_(from), frame_(&frame), zero_(zero), to_(to), rootPath_(from.getChain(&frame)) {}

  void run(Bodies bodies) {
    for (int rank = 0; rank < from_.getElemNumber(); ++rank) {
      const KMachineElem& e = *from_.getElemByRank(rank);
      const EntityId added = addEntity(e);
      if (bodies == Bodies::fromGeometryFiles) addBody(e, *to_.EditEntity(added));
    }
    for (int rank = 0; rank < from_.getElemNumber(); ++rank) {
      to_.LinkEntity(EntityId(rank + 1), carrierOf(*from_.getElemByRank(rank)));
    }
    if (!isTable(*rootPath_.front())) to_.AddTable(L"", tableCarrier());
  }

 private:
  bool isTable(const KMachineElem& e) const {
    return &e == rootPath_.front() && e.getElemType() == KMachineElem::KMET_TYPE_PART;
  }

  /// The place of an element between the root and the frame; the end for others.
  auto onRootPath(const KMachineElem& e) const {
    return std::find(rootPath_.begin(), rootPath_.end(), &e);
  }

  EntityId idOf(const KMachineElem& e) const {
    for (int rank = 0; rank < from_.getElemNumber(); ++rank) {
      if (from_.getElemByRank(rank) == &e) return EntityId(rank + 1);
    }
    return EntityId(0);
  }

  // The root's side of the frame is turned round: there the frame carries. What a definition hangs
  // on an element there has the motions from the root to that element, its own included, before it,
  // so it stands on what carries that element. What hangs on nothing has none of them: it stays
  // with the table.
  EntityId carrierOf(const KMachineElem& e) const {
    const KMachineElem* below = &e;
    if (onRootPath(e) == rootPath_.end()) {
      below = from_.getPrevElem(&e);
      if (!below) return tableCarrier();
      if (below == frame_ || onRootPath(*below) == rootPath_.end()) return idOf(*below);
    }
    const auto place = onRootPath(*below);
    return below == frame_ ? EntityId(0) : idOf(**(place + 1));
  }

  // Positions are seen from where the root is before its own motion, and a root that moves carries
  // that, turned round like the others.
  EntityId tableCarrier() const {
    const KMachineElem& root = *rootPath_.front();
    return isTable(root) ? carrierOf(root) : idOf(root);
  }

  EntityId addEntity(const KMachineElem& e) {
    const UMatrix placed = from_.getMatrix(zero_, &e);  // guns push what they carry
    UVec3d dir = e.getElemAxis();
    placed.applyDir(dir);
    const UVec3d point = placed * e.getElemPivot();
    if (isTable(e)) return to_.AddTable(e.getElemName(), EntityId(0));
    if (e.isTool()) return to_.AddHead(e.getElemName(), frameAlong(dir, point));
    return addAxis(e, onRootPath(e) == rootPath_.end() ? dir : -dir, point);
  }

  EntityId addAxis(const KMachineElem& e, const UVec3d& dir, const UVec3d& point) {
    AxisDefinition axis{e.getElemName(), Ombra::Kin::Fixed, toOmbra(dir), toOmbra(point), {}};
    axis.reg = registerOf(e);
    if (e.getElemType() == KMachineElem::KMET_TYPE_ALIN) axis.kind = Ombra::Kin::Linear;
    if (e.getElemType() == KMachineElem::KMET_TYPE_AROT) axis.kind = Ombra::Kin::Rotary;
    EntityId added = to_.AddAxis(axis);
    if (added == EntityId(0)) {  // a number that is none: it cannot move
      axis = {};
      axis.name = e.getElemName();
      added = to_.AddAxis(axis);
    }
    if (e.hasMin() || e.hasMax()) setRange(e, *to_.EditEntity(added));
    return added;
  }

  Register registerOf(const KMachineElem& e) const {
    const bool hasPlace = e.getValueIndex() >= 0 && KMachineElem::_isIndexAxis(e.getElemIndex());
    const Register reg(e.getValueIndex());
    return hasPlace && !to_.GetEntity(reg) ? reg : Ombra::Kin::kNoRegister;
  }

  static void setRange(const KMachineElem& e, Entity& axis) {
    constexpr double kInfinite = std::numeric_limits<double>::infinity();
    axis.SetRange(e.hasMin() ? e.getMin() : -kInfinite, e.hasMax() ? e.getMax() : kInfinite);
  }

  void addBody(const KMachineElem& e, Entity& entity) const {
    std::vector<UTri> triangles;
    loadGeometryFile(e.getGeomFile(), triangles);
    if (triangles.empty()) return;
    UTri::_applyMatrix(from_.getMatrix(zero_, &e), triangles);
    entity.SetEntityMesh(meshOf(triangles));
  }

  const KMachine& from_;
  const KMachineElem* const frame_;
  const KMachineValueBase& zero_;
  Kinematic& to_;
  const std::vector<const KMachineElem*> rootPath_;  ///< From the root to the frame.
};

}  // namespace

std::unique_ptr<Ombra::Kin::Machine> machineFromDefinition(const KMachine& machine,
                                                           Bodies bodies) try {
  const int axes = machine.getAxisNum();
  const KMachineElem* const frame = machine.getElemByIndex(KMachineElem::KMET_BATI);
  if (!frame || axes < 1 || axes > 12 || machine.getToolNumber() == 0) return nullptr;
  const std::unique_ptr<KMachineValueBase, Release> zero(machine.newMachineValue());
  if (!zero) return nullptr;
  auto made = std::make_unique<Ombra::Kin::Machine>(machine.getDataFilePNE());
  Conversion(machine, *frame, *zero, made->EditKinematic()).run(bodies);
  return made;
} catch (const std::bad_alloc&) {
  return nullptr;
}

}  // namespace zkin
