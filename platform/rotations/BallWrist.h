#pragma once

#include <array>

#include "platform/rotations/Pair.h"
#include "platform/rotations/Solvers.h"

/// Turns about three lines through one point that make a rotation: an arm's last three joints.
namespace korvo::rotations {

using PairVec3 = std::array<Pair, 3>;

/// First a3 about direction3, then a2 about direction2, then a1 about direction1, on two machines.
struct WristAngles {
  Pair a1, a2, a3;
};

/// Rotations that are far enough from all singular ones for the shortest way, two at once. For
/// others there is `twoAxes`, which gives the same angles on the same grid.
class BallWrist {
 public:
  struct Solutions {
    WristAngles left;       ///< With direction3 on the side of direction1 x direction2.
    WristAngles right;      ///< On the other.
    PairMask isRightFirst;  ///< The order of `twoAxes`: the smaller a1 and a2 first.
    PairMask isReached;
    PairMask isRegular;  ///< Else the angles and isReached say nothing.
    Pair tilt;           ///< From direction1 to direction3 as the rotation has turned it.
  };

  BallWrist() = default;
  /// Directions of length 1.
  BallWrist(const Vec3& direction1, const Vec3& direction2, const Vec3& direction3);

  /// Whether some rotation is regular.
  bool isRegular() const { return isRegular_; }

  /// @param to    direction3 as the rotation turns it.
  /// @param back  direction1 as the inverse of the rotation turns it.
  /// @source  `twoAxes`, by the same triangle on the sphere, whose third corner is the last turn:
  ///          the inverse of the rotation turns direction1 by -a3 and -a2.
  /// @cost    Six arc tangents for both.
  Solutions solve(const PairVec3& to, const PairVec3& back) const;

 private:
  struct Frame {
    Vec3 axis, normal, across;  ///< across = normal x axis
  };

  bool isRegular_ = false;
  Frame first_, last_;
  double azimuth_ = 0.0;  ///< Of direction3 about direction2, from direction1 (steps).
  double sumSine_ = 0.0, sumCosine_ = 0.0;  ///< Of half the sum of the angles between directions.
  double differenceSine_ = 0.0, differenceCosine_ = 0.0;
};

}  // namespace korvo::rotations
