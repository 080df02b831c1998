#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/ombra/Entity.h"
#include "platform/ombra/Export.h"
#include "platform/ombra/Indices.h"
#include "platform/ombra/Matrix43.h"

namespace Ombra::Kin {

/// The entities of a machine and what carries what. Copies are deep.
///
/// Entities are numbered from 1 in the order of addition and keep their numbers: a removed one
/// leaves a gap. Each is carried by one other or by the base (0), never in a circle.
class OMBRA_API Kinematic {
 public:
  Kinematic() = default;
  Kinematic(const Kinematic& o);
  Kinematic& operator=(const Kinematic& o);
  Kinematic(Kinematic&&) = default;
  Kinematic& operator=(Kinematic&&) = default;
  ~Kinematic() = default;

  /// Registers are below this.
  static constexpr std::int32_t kMostRegisters = 1024;

  // --- building

  /// @return  The number of the new entity; EntityId(0), and nothing added, for a carrier that is
  ///          none and, of an axis, for a value that is not finite, a register below -1 or from
  ///          kMostRegisters on, and one that another axis has.
  EntityId AddAxis(const AxisDefinition& axis, EntityId carrier = EntityId(0));
  EntityId AddHead(const std::wstring& name, const Matrix43& toolFrame,
                   EntityId carrier = EntityId(0));
  EntityId AddTable(const std::wstring& name, EntityId carrier = EntityId(0));

  /// Hangs an entity on another one, or on the base. False, and nothing changed, when one of them
  /// is not there and when that would make a circle.
  bool LinkEntity(EntityId entity, EntityId carrier);

  /// Takes an entity away. False, and nothing changed, when it is not there or carries others.
  bool RemoveEntity(EntityId entity);

  Entity* EditEntity(EntityId entity);  ///< To set what can be set; or null.

  // --- lookups

  const Entity* GetEntity(EntityId entity) const;        ///< Null for a gap and beyond the ends.
  const Entity* GetEntity(const Register& reg) const;    ///< The axis with that register, or null.
  const Entity* GetEntityHead(HeadIndex head) const;     ///< Or null.
  const Entity* GetEntityTable(TableIndex table) const;  ///< Or null.

  /// Entity k + 1 at place k; null at a gap.
  const std::vector<Entity*>& GetListEntity() const { return list_; }

  /// One more than the largest register that an axis was given.
  Register GetRegisterNb() const { return registerNb_; }

  /// The entity's carriers, the one on the base first, and itself last.
  std::vector<const Entity*> GetChain(const Entity& entity) const;

 private:
  EntityId add(EntityType type, const AxisDefinition& definition, EntityId carrier);
  bool isCarrier(EntityId carrier) const;
  bool carriesOthers(EntityId entity) const;
  const Entity* entityOfType(EntityType type, std::int32_t place) const;

  std::vector<std::unique_ptr<Entity>> entities_;
  std::vector<Entity*> list_;
  Register registerNb_;
};

}  // namespace Ombra::Kin
