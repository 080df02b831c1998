// Regular targets of an arm are solved two branches at once, all others one by one. An arm with a
// locked axis between its last joint and the tool is always solved one by one: both give one list.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include "platform/zgeo/UMatrix.h"
#include "tests/solve/ArmSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;

/// The same arm with an axis behind its last joint, locked, that carries the tool nowhere.
std::unique_ptr<KMachine> withStillAxis(std::string text) {
  text.insert(text.find("tool="), "axis=STILL,12,+x\n");
  std::unique_ptr<KMachine> machine = loadMachine(text, 1);
  for (int i = 0; i < machine->getElemNumber(); ++i) {
    zkin::KMachineElem& e = *machine->getElemByRank(i);
    if (e.getValueIndex() == machine->getAxisNum() - 1) e.setLocked(true);
  }
  return machine;
}

/// Degrees of the fifth joint at which the last one's axis is nearest to the fourth's.
double straightWrist(const SphericalArm& arm) {
  const auto nearness = [&](double angle) {
    UVec3d last = arm.directions[5];
    UMatrix::_rotation(arm.directions[4], angle).applyDir(last);
    return arm.directions[3] * last;
  };
  const double half = std::numbers::pi / 2;
  const double middle = (nearness(0) + nearness(2 * half)) / 2;
  return std::atan2(nearness(half) - middle, nearness(0) - middle) / half * 90;
}

class TwoWays {
 public:
  TwoWays(Dice& dice, const ArmWishes& wishes)
      : dice_(dice),
        isUsual_(wishes.isUsual),
        arm_(sphericalArm(dice, wishes)),
        machine_(arm_.load()),
        inPairs_(Machine(*machine_)),
        oneByOne_(Machine(*withStillAxis(arm_.text))) {}

  /// Random, near a straight wrist or the edge of its reach, or with joints on a limit. Nearer than
  /// 1e-4 degrees rounding alone decides whether two branches there are one.
  FrameTarget anyTarget() {
    Values values = anyPosition();
    const int kind = dice_.below(3);
    isOnLimit_ = kind == 2;
    if (kind == 1) {
      const double off = std::pow(10.0, dice_.between(-4, 1.7)) * (dice_.oneIn(2) ? 1 : -1);
      values[4] = straightWrist(arm_) + off + (dice_.oneIn(2) ? 180 : 0);
    } else if (kind == 2) {
      for (const Joint& joint : inPairs_.chain().joints) {
        const double limit = dice_.oneIn(2) ? joint.min : joint.max;
        if (std::isfinite(limit) && dice_.oneIn(2)) {
          values[static_cast<std::size_t>(joint.place)] = limit;
        }
      }
    }
    return frameAt(*machine_, values);
  }

  void compare(const FrameTarget& target, const Values& from) {
    inPairs_.solve(target, from, ours_);
    oneByOne_.solve(target, from, theirs_);
    if (isOnLimit_ && !std::all_of(theirs_.begin(), theirs_.end(), isClear)) return;
    ASSERT_EQ(ours_.size(), theirs_.size()) << arm_.text;
    for (std::size_t i = 0; i < ours_.size(); ++i) {
      expectSame(ours_[i], theirs_[i]);
      const Residual residual = inPairs_.residual(ours_[i].values, target);
      EXPECT_EQ(ours_[i].residual.pointMm, residual.pointMm);
      EXPECT_EQ(ours_[i].residual.directionRad, residual.directionRad);
    }
  }

  Values anyPosition() {
    Values values{};
    for (const Joint& joint : inPairs_.chain().joints) {
      const double low = std::isfinite(joint.min) ? joint.min : -180;
      const double high = std::isfinite(joint.max) ? joint.max : 180;
      values[static_cast<std::size_t>(joint.place)] = dice_.between(low, high);
    }
    return values;
  }

  std::size_t found() const { return ours_.size(); }

 private:
  /// Some roundings of the values, in degrees: more next to a singular place, where an angle is no
  /// surer than what a fine residual leaves (1e-11 rad) over the distance, and what the first
  /// joints lose the wrist loses again. Roots of first joints in no usual arrangement have singular
  /// places of their own.
  double allowed(const Solution& s) const {
    const double arm = std::min(s.singular.elbowRad, s.singular.shoulderMm / 1000);
    return (isUsual_ ? 1e-9 : 1e-6) +
           6e-10 / std::max(s.singular.directionRad * std::min(arm, 1.0), 1e-15);
  }

  /// Elsewhere rounding decides whether a value is on its limit.
  static bool isClear(const Solution& s) {
    return s.singular.directionRad > 0.1 && s.singular.elbowRad > 0.1 && s.singular.shoulderMm > 50;
  }

  void expectSame(const Solution& a, const Solution& b) const {
    for (std::size_t i = 0; i < a.values.size(); ++i) {
      EXPECT_NEAR(a.values[i], b.values[i], allowed(a))
          << i << ", straight by " << a.singular.directionRad << " and " << a.singular.elbowRad
          << ", beside by " << a.singular.shoulderMm << "\n"
          << arm_.text;
    }
    EXPECT_EQ(a.branch, b.branch) << arm_.text;
    EXPECT_EQ(a.freePlaces, b.freePlaces);
    ASSERT_EQ(std::isfinite(a.margin), std::isfinite(b.margin));
    if (std::isfinite(a.margin)) {
      EXPECT_NEAR(a.margin, b.margin, allowed(a));
    }
    EXPECT_NEAR(a.singular.directionRad, b.singular.directionRad, allowed(a));
  }

  Dice& dice_;
  bool isUsual_;
  bool isOnLimit_ = false;
  SphericalArm arm_;
  std::unique_ptr<KMachine> machine_;
  Solver inPairs_;
  Solver oneByOne_;
  std::vector<Solution> ours_, theirs_;
};

TEST(SolverOfArms, GivesInPairsTheListThatItGivesOneByOne) {
  Dice dice(1);
  std::size_t solutions = 0;
  const int arms = proofCount(100, 2000);
  for (int i = 0; i < arms; ++i) {
    ArmWishes wishes;
    wishes.isUsual = !dice.oneIn(4);
    wishes.hasRail = dice.oneIn(4);
    wishes.hasTable = dice.oneIn(4);
    wishes.hasLimits = !dice.oneIn(4);
    TwoWays ways(dice, wishes);
    for (int k = 0; k < 200; ++k) {
      ways.compare(ways.anyTarget(), ways.anyPosition());
      solutions += ways.found();
      if (testing::Test::HasFailure()) return;
    }
  }
  EXPECT_GT(solutions, static_cast<std::size_t>(arms) * 400);
}

/// Whatever is solved two at a time: residuals to the bit, margins by their definition.
void expectTrue(const Solver& solver, const Target& target, const Solution& s) {
  const Residual residual = solver.residual(s.values, target);
  EXPECT_EQ(s.residual.pointMm, residual.pointMm);
  EXPECT_EQ(s.residual.directionRad, residual.directionRad);
  double margin = std::numeric_limits<double>::infinity();
  int place = -1;
  for (const Joint& joint : solver.chain().joints) {
    if (joint.place < 0) continue;
    const double value = s.values[static_cast<std::size_t>(joint.place)];
    const double here = std::min(value - joint.min, joint.max - value);
    if (here < margin) margin = here, place = joint.place;
  }
  EXPECT_EQ(s.margin, margin);
  EXPECT_EQ(s.marginPlace, place);
}

TEST(SolverOfMachines, VerifiesInPairsWhatItVerifiesOneByOne) {
  Dice dice(2);
  for (const auto& file : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (file.path().extension() != ".def") continue;
    const Loaded loaded = load(file.path());
    ASSERT_TRUE(loaded) << file.path();
    const Solver solver(*loaded.machine);
    std::size_t found = 0;
    for (int k = 0; k < 200; ++k) {
      Values values{};
      for (const Joint& joint : solver.chain().joints) {
        const bool isBounded = std::isfinite(joint.max - joint.min);
        if (joint.place < 0) continue;
        values[static_cast<std::size_t>(joint.place)] =
            isBounded ? dice.between(joint.min, joint.max) : dice.between(-400, 400);
      }
      const ToolPose pose = solver.chain().pose(values);
      const Target target{solver.chain().tipOf(pose), pose.direction};
      for (const Solution& s : solutionsOf(solver, target, values)) {
        expectTrue(solver, target, s);
        ++found;
      }
    }
    EXPECT_GE(found, 200u) << file.path();
  }
}

}  // namespace
}  // namespace korvo::test
