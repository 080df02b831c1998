#pragma once

#include <memory>

#include "platform/solidra/CGeom_Surf.h"
#include "platform/solidra/CGeom_XYZ.h"
#include "platform/solidra/CStd_Array1.h"

/// A NURBS surface, polynomial or rational, never periodic.
class SOLIDRA_API CGeom_SNurbs : public CGeom_Surf {
 public:
  /// Copies and checks everything; the arrays stay the caller's and are not changed.
  ///
  /// @param countU,countV  Poles in each direction, at least the order.
  /// @param orderU,orderV  Degree + 1, from 2 to 26.
  /// @param periodicU,closedU,periodicV,closedV  Must be false.
  /// @param knotsU,knotsV  Flat: exactly count + order finite values that do not decrease; no
  /// interior
  ///                knot more than degree times, the parameter range knots[degree] .. knots[count]
  ///                not empty.
  /// @param poles   countU * countV points in mm, u running fastest, not weighted; finite.
  /// @param weights As many, positive, finite, none above 1e6 times another; or none: all are 1.
  /// @param startU,endU,startV,endV  The part of the parameter range that is the surface's, ends in
  ///                either order, cut to the range. Where that leaves nothing or an end is not
  ///                finite, the whole range.
  /// @errors  Anything else makes a refused surface: IsValid() is false. Nothing is thrown.
  /// @cost    Linear in the poles and knots.
  CGeom_SNurbs(int countU, int orderU, bool periodicU, bool closedU, CStd_Array1<double>& knotsU,
               int countV, int orderV, bool periodicV, bool closedV, CStd_Array1<double>& knotsV,
               CStd_Array1<CGeom_XYZ>& poles, CStd_Array1<double>& weights, double startU,
               double endU, double startV, double endV);
  ~CGeom_SNurbs() override;

  const solidra::Surface* Data() const noexcept override;

 private:
  std::unique_ptr<const solidra::Surface> data_;
};
