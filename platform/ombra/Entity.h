#pragma once

#include <optional>
#include <string>

#include "platform/ombra/EntityMesh.h"
#include "platform/ombra/Export.h"
#include "platform/ombra/Indices.h"
#include "platform/ombra/Matrix43.h"
#include "platform/ombra/Vector3D.h"

namespace Ombra::Kin {

/// What an entity is. The numbers are part of the interface.
enum EntityType : int { Axis = 0, Head = 1, Table = 2 };

/// How an entity moves against what carries it. The numbers are part of the interface.
enum LinkKind : int {
  Linear = 0,  ///< Slides along its direction.
  Rotary = 1,  ///< Turns about its line.
  Fixed = 2,   ///< Stays: a head, a table, a body that rides along.
};

/// The link record of an entity.
struct EntityLink {
  int carrier = 0;   ///< Number of the entity that carries it; 0: the base.
  int entity = 0;    ///< Its own number.
  int kind = Fixed;  ///< A LinkKind.
};

/// What an axis is made of. Machine coordinates at the zero position.
struct AxisDefinition {
  std::wstring name;
  LinkKind kind = Fixed;
  Vector3D direction;          ///< Travel (mm) of a linear axis for a value of 1; a rotary axis
                               ///< turns about it, right-handed. A null direction moves nothing.
  Vector3D pivot;              ///< A point of a rotary axis' line, mm.
  Register reg = kNoRegister;  ///< Where positions have its value; without one it stays at 0.
};

/// A part of a machine: an axis with what it moves, a head that holds the tool, or a table that
/// holds the workpiece.
class OMBRA_API Entity {
 public:
  EntityType GetEntityType() const { return type_; }
  EntityLink GetEntityLink() const { return link_; }
  EntityId GetEntityId() const { return EntityId(link_.entity); }
  Register GetRegister() const { return axis_.reg; }  ///< kNoRegister for heads and tables.
  const Vector3D& GetDirection() const { return axis_.direction; }
  const Vector3D& GetPivot() const { return axis_.pivot; }

  const std::wstring& GetEntityName() const { return axis_.name; }
  void SetEntityName(const std::wstring& name) { axis_.name = name; }

  /// Whether the range of the axis applies, and the range: mm or degrees, a bound may be infinite.
  /// The computations do not look at it.
  bool GetCheckRangeAxis() const { return checkRange_; }
  double GetRangeMin() const { return rangeMin_; }
  double GetRangeMax() const { return rangeMax_; }
  void SetRange(double min, double max) { checkRange_ = true, rangeMin_ = min, rangeMax_ = max; }
  void ClearRange() { checkRange_ = false; }

  const EntityMesh* GetEntityMesh() const { return mesh_ ? &*mesh_ : nullptr; }  ///< Or null.
  void SetEntityMesh(const EntityMesh& mesh) { mesh_ = mesh; }
  void ClearEntityMesh() { mesh_.reset(); }

  /// Where the entity's own frame stands at the zero position; the identity at first, so that its
  /// meshes are in machine coordinates. The table's is the frame that programs are written in.
  const Matrix43& GetZeroPlacement() const { return zero_; }
  void SetZeroPlacement(const Matrix43& m) { zero_ = m; }

  /// Of a head: the tool frame in machine coordinates at the zero position. W points from the tool
  /// tip to the spindle.
  const Matrix43& GetToolFrame() const { return toolFrame_; }
  void SetToolFrame(const Matrix43& m) { toolFrame_ = m; }

 private:
  friend class Kinematic;
  Entity(EntityType type, const EntityLink& link, const AxisDefinition& axis)
      : type_(type), link_(link), axis_(axis) {}

  EntityType type_;
  EntityLink link_;
  AxisDefinition axis_;
  bool checkRange_ = false;
  double rangeMin_ = 0.0;
  double rangeMax_ = 0.0;
  std::optional<EntityMesh> mesh_;
  Matrix43 zero_;
  Matrix43 toolFrame_;
};

}  // namespace Ombra::Kin
