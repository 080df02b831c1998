#pragma once

#include "platform/solidra/CGeom2d_Curve.h"

/// A NURBS curve in the parameter plane, over its whole knot range; never periodic.
class SOLIDRA_API CGeom2d_CNurbs : public CGeom2d_Curve {
 public:
  /// Copies and checks everything.
  ///
  /// @param count   Poles, at least the order.
  /// @param order   Degree + 1, from 2 to 26.
  /// @param periodic,closed  Must be false. A curve may nevertheless end where it starts.
  /// @param poles   At least count finite points, not weighted; the rest unused.
  /// @param knots   Flat: at least count + order finite values that do not decrease, the rest
  /// unused;
  ///                no interior knot more than degree times, the range not empty.
  /// @param weights At least count positive ones, none above 1e6 times another; or none: all are 1.
  /// @errors  Anything else makes a refused curve. Nothing is thrown.
  CGeom2d_CNurbs(int count, int order, bool periodic, bool closed,
                 const CStd_Array1<CGeom2d_XY>& poles, const CStd_Array1<double>& knots,
                 const CStd_Array1<double>& weights);
  ~CGeom2d_CNurbs() override;

  int ExtractC2Curves(CStd_Array1<CGeom2d_Curve*>& pieces, double angle) const override;

 private:
  explicit CGeom2d_CNurbs(std::shared_ptr<const solidra::Curve> data);
};
