#pragma once

#include <array>
#include <limits>
#include <vector>

#include "kinematics/KMachine.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"
#include "toolkit/Export.h"

namespace korvo {

inline constexpr int kMostAxes = 12;  ///< Positions have at most so many values.

/// A position as plain numbers, in value order: mm or degrees. Those beyond the machine's axes are
/// 0.
using Values = std::array<double, kMostAxes>;

/// One motion between part and tool.
struct Joint {
  enum class Motion {
    turn,   ///< About the line through `point` along `direction`, by a value in degrees.
    slide,  ///< Along `direction`, by a value in mm.
    shift,  ///< Along `direction` by `length`, always: the extension of a drill gun.
  };

  Motion motion = Motion::shift;
  int place = -1;          ///< In value order; -1: no value moves it.
  zgeo::UVec3d direction;  ///< At the zero position; for a slide not always of length 1.
  zgeo::UVec3d point;      ///< At the zero position; of a turn.
  double length = 0.0;     ///< mm; of a shift.
  double min = -std::numeric_limits<double>::infinity();
  double max = std::numeric_limits<double>::infinity();
  bool isLocked = false;
};

/// Where a tool is and which way it points, as `KMachine::getTool` gives it.
struct ToolPose {
  zgeo::UVec3d point;      ///< mm, without the tool length.
  zgeo::UVec3d direction;  ///< Of length 1, from tip to spindle.
};

/// What moves one tool of a machine against its part, and nothing else of it: the joints from the
/// part to the tool, root first, in the machine frame at the zero position. What computes with a
/// machine's geometry starts from here.
struct KORVO_TOOLKIT_API JointChain {
  std::vector<Joint> joints;
  zgeo::UVec3d toolPoint;      ///< At the zero position.
  zgeo::UVec3d toolDirection;  ///< Of length 1, or null.
  double toolLength = 0.0;     ///< mm from the tool point back to the tip.
  int axisCount = 0;           ///< Of the machine: values in a position.
  bool hasTool = false;

  /// The chain of a tool; of the current one for 0 and below. Without such a tool it is empty.
  static JointChain of(const zkin::KMachine& machine, int tool = 0);

  /// Motion of the tool's body from its place at the zero position to its place at `values`.
  ///
  /// @source  As `KMachine::getMatrix`, by the same steps: the results are the same bit by bit.
  /// @cost    One walk; no allocation.
  zgeo::UMatrix motion(const Values& values) const;

  /// `KMachine::getTool`, bit by bit.
  ToolPose pose(const Values& values) const;

  /// The tip of the tool: the tool point, the tool length back against the direction.
  zgeo::UVec3d tipOf(const ToolPose& pose) const {
    return pose.point - pose.direction * toolLength;
  }

  /// Whether one value moves two joints.
  bool isCoupled() const;
};

}  // namespace korvo
