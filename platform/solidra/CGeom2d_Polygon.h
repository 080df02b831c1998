#pragma once

#include "platform/solidra/CGeom2d_Curve.h"

/// A polyline in the parameter plane.
class SOLIDRA_API CGeom2d_Polygon : public CGeom2d_Curve {
 public:
  /// Copies the first `count` of the `size` points at `points`.
  ///
  /// @errors  Fewer than two points, more than `size`, null or one that is not finite make a
  /// refused
  ///          curve. Equal neighbours are allowed.
  CGeom2d_Polygon(int count, const CGeom2d_XY* points, int size);
  ~CGeom2d_Polygon() override;

  int ExtractC2Curves(CStd_Array1<CGeom2d_Curve*>& pieces, double angle) const override;

 private:
  explicit CGeom2d_Polygon(std::shared_ptr<const solidra::Curve> data);
};
