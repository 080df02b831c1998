#pragma once

#include "platform/solidra/CGeom_XYZ.h"
#include "platform/solidra/Export.h"

/// A box parallel to the axes, in mm.
class SOLIDRA_API CGeom_Bound {
 public:
  /// The box that holds the origin alone. Start a sum with Empty() instead.
  CGeom_Bound() = default;

  /// The box between two corners: `low` must not exceed `high`.
  CGeom_Bound(const CGeom_XYZ& low, const CGeom_XYZ& high) : low_(low), high_(high) {}

  /// The box that holds nothing: adding it changes no box, adding to it copies the other.
  static CGeom_Bound Empty();

  bool IsEmpty() const;

  /// Grows to hold `other` too.
  void Add(const CGeom_Bound& other);

  /// Grows to hold a point.
  void Add(const CGeom_XYZ& point);

  /// Length of the diagonal; 0 for an empty box.
  double GetDiag() const;

  /// The corners; low exceeds high for an empty box.
  const CGeom_XYZ& GetLow() const { return low_; }
  const CGeom_XYZ& GetHigh() const { return high_; }

 private:
  CGeom_XYZ low_;
  CGeom_XYZ high_;
};
