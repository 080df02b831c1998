#pragma once

#include <array>
#include <functional>
#include <limits>
#include <vector>

#include "toolkit/solve/Core.h"

namespace korvo {

/// One way of an arm's six joints (degrees, any turn) to stand for a place on a circle.
struct ArmWay {
  std::array<double, 6> degrees{};
  Branch branch;
  SingularDistance singular;
};

/// All ways at one place of the circle.
struct ArmWays {
  static constexpr double kUnknown = std::numeric_limits<double>::infinity();

  void add(const ArmWay& way) { list[at(count++)] = way; }

  int count = 0;
  std::array<ArmWay, 8> list;
  /// What the wrist lacks on each side of shoulder and elbow (rad), and what the first three joints
  /// lack on all (a share of the arm's size).
  std::array<double, 5> missing{kUnknown, kUnknown, kUnknown, kUnknown, kUnknown};
  /// How far each side is from leaving a joint free (rad, or a share of the arm's size).
  std::array<double, 4> clear{kUnknown, kUnknown, kUnknown, kUnknown};
  bool isSingular = false;  ///< There are ways that leave a joint free; the list is without them.
};

/// Where a joint may stand, and from where it starts.
struct ArmRange {
  double min = 0.0, max = 0.0;
  double start = 0.0;
  bool isEndless = false;  ///< No limits, and full turns do not count.
};

/// A target that an arm reaches along curves: every place of a circle (radians) has some ways.
struct ArmCircle {
  /// All of them, or those on the same side of shoulder and elbow as one, and of these neither what
  /// is missing nor how clear they are.
  std::function<ArmWays(double, const Branch*)> waysAt;
  std::array<ArmRange, 6> ranges;
  int free = 5;    ///< The joint whose nearness to its start decides.
  int steps = 72;  ///< Into how many the circle is cut at least; the first begins at 0.
};

/// A place on a curve.
struct ArmMember {
  ArmWay way;
  double away = std::numeric_limits<double>::infinity();        ///< Of the free joint.
  double othersAway = std::numeric_limits<double>::infinity();  ///< Of the others, added up.
};

struct ArmMembers {
  std::vector<ArmMember> list;  ///< By branch, then by joint.
  /// Places of the circle where some ways leave one joint more free.
  std::vector<double> singular;
};

/// Follows the ways round the circle. Their curves are cut where two of them meet and where a joint
/// comes to a limit; of every piece inside the limits there is the member whose free joint is
/// nearest to its start, and of those the one whose other joints are.
///
/// Of every joint the values and slopes at both ends of a step are known. Where these do not tell
/// that it only rises or only falls between them, or turns back once, the step is halved. So limits
/// are met that leave less than a step.
///
/// @cost  Some hundred places are asked for, at most some ten thousand: where rounding alone says
///        where a joint stands, so that ways jump everywhere, it is left at that. No allocation
///        once the thread has followed one.
void followCircle(const ArmCircle& circle, ArmMembers& out);

}  // namespace korvo
