#pragma once

#include <span>

#include "toolkit/export/Placed.h"

namespace korvo::exporting {

// The isometric view: all three axes at the same angle to the picture, so that a mm along each is
// equally long in it.
constexpr double kSqrt2 = 1.4142135623730951;
constexpr double kSqrt3 = 1.7320508075688772;
constexpr double kSqrt6 = 2.449489742783178;
inline constexpr zgeo::UVec3d kRight{1 / kSqrt2, 1 / kSqrt2, 0};
inline constexpr zgeo::UVec3d kUp{-1 / kSqrt6, 1 / kSqrt6, 2 / kSqrt6};
inline constexpr zgeo::UVec3d kToViewer{1 / kSqrt3, -1 / kSqrt3, 1 / kSqrt3};

/// Machine frame to picture: x from the left and y from above in samples, z towards the viewer in
/// mm.
class View {
 public:
  /// Fits the bodies into a picture of that many samples, with some room around.
  View(std::span<const Body> bodies, int width, int height);

  zgeo::UVec3d operator()(const zgeo::UVec3d& p) const {
    return {left_ + scale_ * (p * kRight), top_ - scale_ * (p * kUp), p * kToViewer};
  }

 private:
  double scale_ = 1.0;  ///< Samples a mm.
  double left_ = 0.0;
  double top_ = 0.0;
};

}  // namespace korvo::exporting
