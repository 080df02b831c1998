#pragma once

#include "platform/solidra/CGeom_Bound.h"
#include "platform/solidra/Export.h"

namespace solidra {
struct Surface;
}

/// A surface: a point in space for every (u, v) of a rectangle.
class SOLIDRA_API CGeom_Surf {
 public:
  CGeom_Surf() = default;
  CGeom_Surf(const CGeom_Surf&) = delete;
  CGeom_Surf& operator=(const CGeom_Surf&) = delete;
  virtual ~CGeom_Surf();

  /// Whether the surface was made from data that is one. A face on a refused one gets no mesh.
  bool IsValid() const { return Data() != nullptr; }

  /// The tight box of the surface over its whole rectangle, trimmed or not.
  ///
  /// @units   mm; its sides lie within 1e-6 of the box's diagonal of the surface, on the inside.
  /// @errors  False and `bound` untouched for a refused surface.
  /// @cost    Some evaluations for each pole; nothing is kept.
  bool Get3DBound(CGeom_Bound& bound) const;

  /// For this library: the checked data, null for a refused surface.
  virtual const solidra::Surface* Data() const noexcept = 0;
};
