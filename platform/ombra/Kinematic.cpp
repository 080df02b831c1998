#include "platform/ombra/Kinematic.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Ombra::Kin {

namespace {

bool isFinite(const Vector3D& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

}  // namespace

Kinematic::Kinematic(const Kinematic& o) : registerNb_(o.registerNb_) {
  for (const Entity* e : o.list_) {
    entities_.push_back(e ? std::make_unique<Entity>(*e) : nullptr);
    list_.push_back(entities_.back().get());
  }
}

Kinematic& Kinematic::operator=(const Kinematic& o) { return *this = Kinematic(o); }

// --- building

EntityId Kinematic::AddAxis(const AxisDefinition& axis, EntityId carrier) {
  const std::int32_t reg = axis.reg.value;
  if (!isFinite(axis.direction) || !isFinite(axis.pivot)) return EntityId(0);
  if (reg < kNoRegister.value || reg >= kMostRegisters) return EntityId(0);
  if (axis.reg != kNoRegister && GetEntity(axis.reg)) return EntityId(0);
  const EntityId added = add(Axis, axis, carrier);
  if (added != EntityId(0)) registerNb_ = std::max(registerNb_, Register(reg + 1));
  return added;
}

EntityId Kinematic::AddHead(const std::wstring& name, const Matrix43& toolFrame, EntityId carrier) {
  const EntityId added = add(Head, {name, Fixed, {}, {}, kNoRegister}, carrier);
  if (Entity* const head = EditEntity(added)) head->SetToolFrame(toolFrame);
  return added;
}

EntityId Kinematic::AddTable(const std::wstring& name, EntityId carrier) {
  return add(Table, {name, Fixed, {}, {}, kNoRegister}, carrier);
}

EntityId Kinematic::add(EntityType type, const AxisDefinition& definition, EntityId carrier) {
  if (!isCarrier(carrier)) return EntityId(0);
  const EntityId added(static_cast<std::int32_t>(list_.size()) + 1);
  const EntityLink link{carrier.value, added.value, definition.kind};
  std::unique_ptr<Entity> entity(new Entity(type, link, definition));
  list_.reserve(list_.size() + 1);  // first: both lists grow, or none where memory is short
  entities_.push_back(std::move(entity));
  list_.push_back(entities_.back().get());
  return added;
}

bool Kinematic::LinkEntity(EntityId entity, EntityId carrier) {
  Entity* const e = EditEntity(entity);
  if (!e || !isCarrier(carrier)) return false;
  if (carrier != EntityId(0)) {
    const auto chain = GetChain(*GetEntity(carrier));
    if (std::find(chain.begin(), chain.end(), e) != chain.end()) return false;
  }
  e->link_.carrier = carrier.value;
  return true;
}

bool Kinematic::RemoveEntity(EntityId entity) {
  if (!GetEntity(entity) || carriesOthers(entity)) return false;
  list_[entity.value - 1] = nullptr;
  entities_[entity.value - 1].reset();
  return true;
}

Entity* Kinematic::EditEntity(EntityId entity) { return const_cast<Entity*>(GetEntity(entity)); }

bool Kinematic::isCarrier(EntityId carrier) const {
  return carrier == EntityId(0) || GetEntity(carrier);
}

bool Kinematic::carriesOthers(EntityId entity) const {
  return std::any_of(list_.begin(), list_.end(), [entity](const Entity* e) {
    return e && e->GetEntityLink().carrier == entity.value;
  });
}

// --- lookups

const Entity* Kinematic::GetEntity(EntityId entity) const {
  const bool known = entity.value >= 1 && entity.value <= std::ssize(list_);
  return known ? list_[entity.value - 1] : nullptr;
}

const Entity* Kinematic::GetEntity(const Register& reg) const {
  if (reg.value < 0) return nullptr;
  const auto found = std::find_if(list_.begin(), list_.end(),
                                  [&reg](const Entity* e) { return e && e->GetRegister() == reg; });
  return found == list_.end() ? nullptr : *found;
}

const Entity* Kinematic::entityOfType(EntityType type, std::int32_t place) const {
  for (const Entity* e : list_) {
    if (e && e->GetEntityType() == type && place-- == 0) return e;
  }
  return nullptr;
}

const Entity* Kinematic::GetEntityHead(HeadIndex head) const {
  return entityOfType(Head, head.value);
}

const Entity* Kinematic::GetEntityTable(TableIndex table) const {
  return entityOfType(Table, table.value);
}

std::vector<const Entity*> Kinematic::GetChain(const Entity& entity) const {
  const auto carrierOf = [this](const Entity* e) {
    return GetEntity(EntityId(e->GetEntityLink().carrier));
  };
  std::size_t length = 0;
  for (const Entity* e = &entity; e; e = carrierOf(e)) ++length;
  std::vector<const Entity*> chain(length);
  for (const Entity* e = &entity; e; e = carrierOf(e)) chain[--length] = e;
  return chain;
}

}  // namespace Ombra::Kin
