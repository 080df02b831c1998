#pragma once

namespace zkin {

/// The angle (radians) moved by full turns to within half a turn of `reference`: a difference of
/// exactly half a turn stays. Unchanged when either is not finite.
double wrapNear(double angle, double reference);

}  // namespace zkin
