#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/awkward/Exact.h"
#include "tests/solve/Machines.h"
#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"

/// Machines, positions and targets of which the awkward ones are not the exception.
namespace korvo::test {

/// What is awkward about a draw, in words.
using Marks = std::set<std::string>;

namespace mark {
inline constexpr const char* almostParallel = "directions almost parallel or almost square";
inline constexpr const char* parallel = "rotary axes exactly parallel";
inline constexpr const char* onePoint = "axes that meet exactly";
inline constexpr const char* almostMeeting = "axes that almost meet";
inline constexpr const char* atOrigin = "a line through the origin";
inline constexpr const char* huge = "a point 1e6 mm away";
inline constexpr const char* tiny = "an offset of 1e-6 mm";
inline constexpr const char* noLength = "a tool of length 0";
inline constexpr const char* straightWrist = "a wrist straight or almost";
inline constexpr const char* straightElbow = "an elbow stretched or folded, or almost";
inline constexpr const char* overFirst = "the wrist over the first axis, or almost";
inline constexpr const char* onLimit = "a value on a limit";
inline constexpr const char* oneUlp = "a value one step of a double from a limit";
inline constexpr const char* equalLimits = "limits that are equal";
inline constexpr const char* crossedLimits = "a minimum above the maximum";
inline constexpr const char* farLimits = "limits far beyond a turn";
inline constexpr const char* turns = "half or whole turns";
inline constexpr const char* manyTurns = "thousands of turns";
inline constexpr const char* slight = "an angle of 1e-12 to 1e-4 degrees";
inline constexpr const char* nothing = "a value -0 or denormal";
inline constexpr const char* alongAxis = "a tool along a rotary axis";
inline constexpr const char* anyLength = "a direction that is not of length 1";
inline constexpr const char* notFinite = "a number that is not finite";
inline constexpr const char* nullDirection = "a direction of length 0";
}  // namespace mark

/// How often what was drawn.
class Tally {
 public:
  void add(const Marks& marks);
  int draws() const { return draws_; }
  /// Fails where one of them is in less than a tenth of the draws; KORVO_REPORT=1 prints them all.
  void expectCommon(std::initializer_list<const char*> marks) const;

 private:
  int draws_ = 0;
  std::map<std::string, int> counts_;
};

struct AwkwardMachine {
  MachineLines lines;
  std::vector<double> lengths;  ///< Of tool n at n - 1; of a gun it is its extension, too.
  bool isArm = false;
  double wristMiss = 0.0;  ///< Of an arm: how far (mm) its last line passes the wrist centre.
  Marks marks;

  std::unique_ptr<zkin::KMachine> load() const;  ///< With tool 1 current.
  int tools() const { return static_cast<int>(lengths.size()); }
  int axes() const { return static_cast<int>(lines.part.size() + lines.head.size()); }
  ExactPose pose(const std::vector<double>& values, int tool = 1) const;
  Exact tip(const std::vector<double>& values, int tool = 1) const;

  /// How far doubles may carry a point of the tool from there (mm).
  ///
  /// Every motion of a chain rounds some times, each time by half an epsilon of how far its line
  /// and the point are away; the line is given by the point of it that the loaded machine keeps.
  /// The angle in radians rounds by as much of itself and swings the point on its lever. A point
  /// kept beside its line takes the tool along twice as far: see `offLine`.
  double pointBound(const zkin::KMachine& machine, const std::vector<double>& values) const;
  /// The same of a direction (rad): the rounded angles.
  double directionBound(const std::vector<double>& values) const;
};

/// How far (mm) the point of a rotary axis that the loaded machine keeps is beside its line: two
/// neighbours within 1e-5 mm count as one line.
double offLine(const zkin::KMachine& machine, const AxisLine& line);

/// Kinds of limits that axes may have.
enum class LimitKinds {
  none,
  ordered,  ///< Some axes have some; where they are equal an axis stands still.
  any,      ///< And in some machines one has them the wrong way round.
};

/// One to five axes, in head, table or both, a fourth linear or a third rotary one, guns.
AwkwardMachine awkwardMill(Dice& dice, LimitKinds limits);
/// Six joints whose last three meet in one point, or almost; some on a rail.
AwkwardMachine awkwardArm(Dice& dice, LimitKinds limits);
AwkwardMachine awkwardMachine(Dice& dice, LimitKinds limits);

/// A value for each axis; `isInside`: inside the limits, where they leave a value.
std::vector<double> awkwardValues(const AwkwardMachine& machine, bool isInside, Dice& dice,
                                  Marks& marks);

/// 0 or up to 1e-3, most of them tiny; either sign.
double slightly(Dice& dice);
zgeo::UVec3d anyUnit(Dice& dice);

/// So many draws, times what RC_PARAMS gives more of every property; fewer where each step is
/// checked.
int drawCount(int usual);
int firstSeed();  ///< KORVO_SEED, to begin where something failed; else 0.

std::string textOf(const std::vector<double>& values);
std::string textOf(const zgeo::UVec3d& v);

/// Draws machines, each from a seed of its own, until one fails: its definition is printed.
class AwkwardTest : public testing::Test {
 protected:
  template <typename Draw, typename Law>
  void onMachines(int usual, Draw draw, Law law) {
    const int count = drawCount(usual);
    for (int seed = firstSeed(); seed < count; ++seed) {
      Dice dice(static_cast<unsigned>(seed));
      const AwkwardMachine machine = draw(dice);
      note.clear();
      law(machine, dice);
      if (HasFailure()) {
        FAIL() << "seed " << seed << note << "\nlengths " << textOf(machine.lengths) << "\n"
               << machine.lines.text();
      }
    }
  }

  Tally tally;
  std::string note;  ///< What else to print of a failing draw.
};

}  // namespace korvo::test
