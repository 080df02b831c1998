#pragma once

#include <compare>
#include <cstdint>

namespace Ombra::Kin {

/// A number of one kind: registers, entities, heads and tables cannot be taken for one another.
template <typename Tag>
struct Index {
  std::int32_t value = 0;

  constexpr Index() = default;
  constexpr explicit Index(std::int32_t v) : value(v) {}
  constexpr auto operator<=>(const Index&) const = default;
};

using Register = Index<struct RegisterTag>;  ///< A place in a position, from 0.
using EntityId = Index<struct EntityTag>;    ///< The number of an entity, from 1; 0: none.
using HeadIndex = Index<struct HeadTag>;     ///< From 0, in the order of the heads.
using TableIndex = Index<struct TableTag>;   ///< From 0, in the order of the tables.

inline constexpr Register kNoRegister{-1};  ///< Of what no position moves.

}  // namespace Ombra::Kin
