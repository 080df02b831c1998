#pragma once

#include <memory>

#include "platform/solidra/CGeom2d_XY.h"
#include "platform/solidra/CStd_Array1.h"
#include "platform/solidra/Export.h"

namespace solidra {
struct Curve;
}

/// A curve in a surface's parameter plane.
class SOLIDRA_API CGeom2d_Curve {
 public:
  CGeom2d_Curve(const CGeom2d_Curve&) = delete;
  CGeom2d_Curve& operator=(const CGeom2d_Curve&) = delete;
  virtual ~CGeom2d_Curve();

  /// Whether the curve was made from data that is one. A refused curve bounds nothing.
  bool IsValid() const { return data_ != nullptr; }

  /// Flag bits, kept for their owner. They have no effect here.
  void SetFlags(int bits) { flags_ |= bits; }
  int GetFlags() const { return flags_; }

  /// Cuts the curve into pieces and puts a new curve for each, in order, behind those in `pieces`.
  ///
  /// A NURBS curve is cut at the knots at which its continuity is below C2, whatever the angle; a
  /// polygon at the corners that turn by more than `angle` degrees.
  ///
  /// @return  The number of pieces added; 0 for a refused curve or when memory is short.
  /// @owner   The pieces are the caller's. They share this curve's data and may outlive it.
  /// @cost    Linear in the knots or points; the data is not copied.
  virtual int ExtractC2Curves(CStd_Array1<CGeom2d_Curve*>& pieces, double angle) const = 0;

  /// For this library: the checked data, null for a refused curve.
  const solidra::Curve* Data() const noexcept { return data_.get(); }

 protected:
  CGeom2d_Curve() = default;
  std::shared_ptr<const solidra::Curve> data_;

 private:
  int flags_ = 0;
};
