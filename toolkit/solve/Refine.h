#pragma once

#include "toolkit/solve/Core.h"

namespace korvo {

/// Whether a residual is what rounding leaves of a position that is exact: 1e-10 mm, 1e-11 rad.
bool isFine(const Residual& residual);

/// Moves the six joints of an arm to where the tool misses the target by less. Closed forms lose
/// digits where two folds of the arm meet: each is a root of what is left over, and that is the
/// rounding of the other. Joints that are locked stay, and so do the values where nothing nearer is
/// found.
///
/// @cost    A forward walk and a linear system of six rows for each of at most sixteen steps.
/// @source  Levenberg (1944) and Marquardt (1963): damped least squares.
void refine(const Query& query, Values& values, Residual& residual);

}  // namespace korvo
