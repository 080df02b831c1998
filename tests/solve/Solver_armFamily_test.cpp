// Arms whose tool stands beside the last joint's line: a point and a direction leave the turn about
// the direction free, and the solutions are the pieces of curves that branches and limits cut.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/solve/ArmSearch.h"
#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

constexpr std::size_t kLast = 5;

// --- a torch: upper arm and forearm of 700 mm each, the tool tilted and beside the last line

struct TorchLimits {
  std::array<double, 2> j4{-200, 200}, j6{-400, 400};
};

MachineLines torchLines(const TorchLimits& limits, const UVec3d& tool, const UVec3d& tip) {
  MachineLines lines;
  const UVec3d x(1, 0, 0), y(0, 1, 0), z(0, 0, 1), wrist(800, 0, 1400);
  lines.head = {rotary("J1", 1, z, {}, -180, 180),
                rotary("J2", 2, y, {100, 0, 600}, -100, 110),
                rotary("J3", 3, y, {100, 0, 1300}, -100, 65),
                rotary("J4", 4, x, wrist, limits.j4[0], limits.j4[1]),
                rotary("J5", 5, y, wrist, -120, 120),
                rotary("J6", 6, x, wrist, limits.j6[0], limits.j6[1])};
  lines.toolDirection = tool;
  lines.toolPoint = tip;
  return lines;
}

std::unique_ptr<KMachine> torch(const TorchLimits& limits = {}) {
  return torchLines(limits, {-1, 0, -1}, {1000, 0, 1300}).load();
}

// Every joint but the last, which is free, has two turns within one of its start.
TEST(SolverArmFamily, WithoutLimitsGivesEveryTurnWithinOneOfTheStart) {
  MachineLines lines = torchLines({}, {-1, 0, -1}, {1000, 0, 1300});
  for (AxisLine& joint : lines.head) joint.min = -kNoLimit, joint.max = kNoLimit;
  Values start{};
  std::fill_n(start.begin(), 6, 11.0);
  const auto found = solutionsOf(Solver(lines.machine()), {{900, 100, 700}, {0, 0, 1}}, start);
  ASSERT_FALSE(found.empty());
  const auto turnedFrom = [&](const Solution& one) {
    return std::count_if(found.begin(), found.end(), [&](const Solution& other) {
      for (std::size_t k = 0; k < 6; ++k) {
        const double by = std::abs(other.values[k] - one.values[k]);
        if (by > 1e-6 && std::abs(by - 360) > 1e-6) return false;
      }
      return other.branch == one.branch;
    });
  };
  for (const Solution& s : found) {
    for (std::size_t k = 0; k < 6; ++k) EXPECT_LE(std::abs(s.values[k] - start[k]), 360);
    EXPECT_EQ(s.freePlaces[0], static_cast<int>(kLast));
    EXPECT_EQ(turnedFrom(s), 32);
  }
}

// Numbers so large that the turns between them cannot be counted, and squares that overflow.
TEST(SolverArmFamily, ComesToAnEndFarFromEverything) {
  MachineLines lines = torchLines({}, {-1, 0, -1}, {1000, 0, 1300});
  for (AxisLine& joint : lines.head) joint.min = -kNoLimit, joint.max = kNoLimit;
  const Solver solver(lines.machine());
  Values start{};
  start.fill(1e30);
  for (const Solution& s : solutionsOf(solver, {{900, 100, 700}, {0, 0, 1}}, start)) {
    EXPECT_TRUE(s.residual.isReached());
  }
  EXPECT_TRUE(solutionsOf(solver, {{-1.5e173, 1.4e306, 1.4e306}, {0, 0, 1}}, {}).empty());
}

/// Next to the stretched elbow: what the tool may be turned by is less than a degree or two.
TEST(SolverArmFamily, MeetsATargetThatFewTurnsOfTheToolReach) {
  const auto machine = torch();
  const Solver solver{Machine(*machine)};
  const Target target{{754.352597, -517.44885, 1971.09132}, {0.08237, -0.181133, -0.980003}};
  const auto found = solutionsOf(solver, target, {});
  ASSERT_FALSE(found.empty());
  for (const Solution& s : found) {
    EXPECT_EQ(s.freePlaces[0], 5);
    EXPECT_LT(tipAt(*machine, s.values).tip.distanceTo(target.tip), 1e-9);
  }
}

TEST(SolverArmFamily, KeepsALockedLastJointWhereItStands) {
  const auto machine = torch();
  for (const double last : {0.0, 43.0, -250.0}) {
    const Values made{20, 15, -20, 35, 40, last};
    const Target target = tipAt(*machine, made);
    machine->getElemByIndex(6)->setLocked(true);
    const auto found = solutionsOf(Solver(Machine(*machine)), target, made);
    machine->getElemByIndex(6)->setLocked(false);
    bool isMade = false;
    for (const Solution& s : found) {
      EXPECT_EQ(s.values[kLast], last);
      EXPECT_LT(tipAt(*machine, s.values).tip.distanceTo(target.tip), 1e-9);
      double apart = 0.0;
      for (std::size_t i = 0; i < 6; ++i) {
        apart = std::max(apart, std::abs(s.values[i] - made[i]));
      }
      isMade = isMade || apart < 1e-8;
    }
    EXPECT_TRUE(isMade) << last;
  }
}

TEST(SolverArmFamily, CountsAToolBesideTheLineByLessThanIsReachedAsOnIt) {
  const Values start{10, 20, -15, 30, 40, 50};
  std::vector<std::size_t> counts;
  for (const double aside : {0.0, 1e-7}) {
    const auto machine = torchLines({}, {-1, 0, 0}, {1000, 0, 1400 + aside}).load();
    const Target target = tipAt(*machine, {5, 10, -10, 20, 50, 0});
    const auto found = solutionsOf(Solver(Machine(*machine)), target, start);
    counts.push_back(found.size());
    for (const Solution& s : found) {
      EXPECT_NEAR(s.values[kLast], 50, 1e-6);
      EXPECT_LT(tipAt(*machine, s.values).tip.distanceTo(target.tip), 1e-9);
    }
  }
  EXPECT_GT(counts[0], 0u);
  EXPECT_EQ(counts[1], counts[0]);
}

// The arm as drawn: wrist straight, tool in its plane. A turn of the tool leaves that place at
// once.
TEST(SolverArmFamily, StaysWhereItStandsWithTheWristStraight) {
  const auto machine = torch();
  const Target target = tipAt(*machine, Values{});
  const auto found = solutionsOf(Solver(Machine(*machine)), target, {});
  EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const Solution& s) {
    return std::all_of(s.values.begin(), s.values.end(),
                       [](double v) { return std::abs(v) < 1e-9; });
  }));
}

// The axis of the wrist's fifth joint has three turns inside its limits.
TEST(SolverArmFamily, GivesEveryTurnOfTheFifthJointOfAStraightWrist) {
  MachineLines lines = torchLines({}, {-1, 0, 0}, {1000, 0, 1400});
  lines.head[4].min = -400, lines.head[4].max = 400;
  const auto machine = lines.load();
  const auto found = solutionsOf(Solver(Machine(*machine)), tipAt(*machine, Values{}), {});
  std::vector<double> fifth;
  for (const Solution& s : found) {
    if (s.branch.shoulder == 0 || std::abs(s.values[0]) > 1) continue;
    if (std::abs(s.values[1]) < 1e-6) fifth.push_back(s.values[4]);
  }
  ASSERT_EQ(fifth.size(), 3u);
  for (std::size_t k = 0; k < 3; ++k) EXPECT_NEAR(fifth[k], -360.0 + 360.0 * double(k), 1e-9);
}

// The wrist over the first axis: as that one turns, the fourth joint passes its narrow limits
// between two whole degrees of it.
TEST(SolverArmFamily, FollowsTheFirstJointUnderTheWrist) {
  for (const double low : {10.4, 10.5, 11.5, 11.6}) {
    MachineLines lines = torchLines({{low, low + 0.05}, {-400, 400}}, {-1, 0, 0}, {800, 0, 1400});
    lines.head[2].min = -180, lines.head[2].max = 180;
    const auto machine = lines.load();
    const Target target{{0, 0, 1500}, {0.3, 0.2, 1}};
    for (const double start : {0.0, 100.0}) {
      const Values from{start, 0, 0, low, 0, 0};
      const auto found = solutionsOf(Solver(Machine(*machine)), target, from);
      for (const Solution& s : found) {
        EXPECT_GE(s.values[3], low);
        EXPECT_LE(s.values[3], low + 0.05);
        EXPECT_LT(tipAt(*machine, s.values).tip.distanceTo(target.tip), 1e-9);
      }
      EXPECT_FALSE(found.empty()) << low;
    }
  }
}

// --- any arm

// Found by fuzzing. The wrist is over the first axis, which is locked at 9e26 degrees: the nearest
// of the turns that the circle of solutions gives is one step of a double, 1e11 degrees, beside it.
TEST(SolverArmFamily, ALockedJointStandsAtItsStartToTheLastBit) {
  const auto machine = loadMachine(
      "frame\npart=y,-x,0,0,0\nlien=BATI\nrotation=J1,1,z,0,0,0,0,100\nrotation=J2,2,y\n"
      "rotation=J3,3,0,1,0.002,0,0,100,100,0\nrotation=J4,4,x\nrotation=J5,5,y\n"
      "rotation=J6,6,x\ntool=z\n",
      1);
  machine->getElemByIndex(1)->setLocked(true);
  const Solver solver{Machine(*machine)};
  int count = 0;
  for (const Values& made :
       {Values{-70, 0, 1.6502663413575647e-07, 0, 1000000}, Values{20, 0, 30, 40, 50, 60}}) {
    UMatrix frame = solver.chain().motion(made);
    frame.setOrigin(solver.chain().tipOf(solver.chain().pose(made)));
    for (const double first : {made[0], made[0] - 3600, 9.1605284070142251e+26}) {
      std::vector<Solution> found;
      solver.solve(FrameTarget{frame}, {first, 0, 0, 5, 5, 5, 5}, found);
      for (const Solution& s : found) EXPECT_EQ(s.values[0], first);
      count += static_cast<int>(found.size());
    }
  }
  EXPECT_GT(count, 3);
}

enum class Kind { any, usual, limits, usualLimits, narrowLast, narrowFourth };

struct FamilyAsked {
  SphericalArm arm;
  std::unique_ptr<KMachine> machine;
  Values made{}, start{};
};

KMachineElem& axisOf(KMachine& machine, int joint) { return *machine.getElemByIndex(joint + 1); }

void limit(KMachineElem& axis, double low, double high) {
  axis.setMin(low, true);
  axis.setMax(high, true);
}

FamilyAsked familyOf(Kind kind, Dice& dice) {
  FamilyAsked asked;
  const bool isNarrow = kind == Kind::narrowLast || kind == Kind::narrowFourth;
  ArmWishes wishes;
  wishes.isUsual = kind == Kind::usual || kind == Kind::usualLimits || isNarrow;
  wishes.hasLimits = kind == Kind::limits || kind == Kind::usualLimits || isNarrow;
  asked.arm = sphericalArm(dice, wishes);
  asked.machine = asked.arm.load();
  for (int i = 0; i < 6; ++i) {
    KMachineElem& axis = axisOf(*asked.machine, i);
    if (!wishes.hasLimits) limit(axis, -200, 200);
    const auto any = [&] { return dice.between(axis.getMin(), axis.getMax()); };
    asked.made[static_cast<std::size_t>(i)] = any();
    asked.start[static_cast<std::size_t>(i)] = any();
  }
  const int narrow = kind == Kind::narrowLast ? 5 : 3;
  const double at = asked.made[static_cast<std::size_t>(narrow)];
  if (isNarrow) limit(axisOf(*asked.machine, narrow), at - dice.between(0, 5), at + 0.05);
  return asked;
}

/// Where the elbow is stretched to the last digit a family turns back, and is known to half of
/// them.
bool isStretched(const Solution& s) { return s.singular.elbowRad < 1e-6; }

bool isNear(const Values& a, const Values& b, double degrees) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (!(std::abs(a[i] - b[i]) <= degrees)) return false;
  }
  return true;
}

/// One position of the scan, and the curve that it is on.
struct Scanned {
  Solution solution;
  std::size_t curve;
};

/// How many pieces of curves there are, by frames for many turns of the tool whose solutions are
/// joined with those of the same branch at the turn before. Nothing where a joint turns too fast
/// between two.
class Scan {
 public:
  Scan(const FamilyAsked& asked, int count)
      : asked_(asked), solver_(Machine(*asked.machine)), count_(count) {}

  std::optional<std::size_t> pieces() {
    const FrameTarget made = frameAt(*asked_.machine, asked_.made);
    const UVec3d axis = tipAt(*asked_.machine, asked_.made).direction;
    std::vector<Scanned> first = at(made, axis, 0.5), before = first;
    for (int k = 1; k < count_; ++k) {
      std::vector<Scanned> here = at(made, axis, k + 0.5);
      connect(before, here);
      before = std::move(here);
    }
    connect(before, first);
    if (!isSure_) return {};
    std::size_t roots = 0;
    for (std::size_t i = 0; i < parents_.size(); ++i) roots += parents_[i] == i;
    return roots;
  }

  /// What is wrong with the members that a solver gives, or "": a piece that is long enough for the
  /// scan to be sure of it has none, or one has two. What is shorter the solver alone sees.
  std::string faultOf(const std::vector<Solution>& members) {
    constexpr std::size_t kLong = 10;  // places
    constexpr double kOn = 0.2;        // degrees
    constexpr double kAtFold = 15.0;   // what a piece may go on for behind its last place
    constexpr double kAtStraightWrist = 90.0;
    std::map<std::size_t, std::size_t> indices;
    std::vector<std::size_t> pieceOf, lengths;
    for (const Scanned& place : places_) {
      pieceOf.push_back(indices.try_emplace(root(place.curve), indices.size()).first->second);
      lengths.resize(indices.size());
      ++lengths[pieceOf.back()];
    }
    std::vector<int> seen(lengths.size()), on(lengths.size());
    for (const Solution& member : members) {
      std::vector<double> nearest(lengths.size(), kNoLimit);
      for (std::size_t k = 0; k < places_.size(); ++k) {
        const Solution& place = places_[k].solution;
        if (place.branch != member.branch) continue;
        double& least = nearest[pieceOf[k]];
        least = std::min(least, apartOf(place.values, member.values));
      }
      const bool isStraight = member.singular.directionRad < 1e-4;
      for (std::size_t k = 0; k < lengths.size(); ++k) {
        seen[k] += nearest[k] < (isStraight ? kAtStraightWrist : kAtFold);
        on[k] += nearest[k] < kOn;
      }
    }
    for (std::size_t k = 0; k < lengths.size(); ++k) {
      if (lengths[k] >= kLong && seen[k] == 0) return "a piece without a member";
      if (lengths[k] >= kLong && on[k] > 1) return "a piece with two members";
    }
    return "";
  }

 private:
  std::vector<Scanned> at(const FrameTarget& made, const UVec3d& axis, double step) {
    const UMatrix about = UMatrix::_rotation(axis, 2 * std::numbers::pi * step / count_);
    FrameTarget target{about * made.frame};
    target.frame.setOrigin(made.frame.getOrigin());
    std::vector<Solution> out;
    solver_.solve(target, asked_.start, out);
    std::vector<Scanned> scanned;
    for (const Solution& s : out) {
      scanned.push_back({s, parents_.size()});
      places_.push_back(scanned.back());
      parents_.push_back(parents_.size());
    }
    return scanned;
  }

  void connect(const std::vector<Scanned>& a, const std::vector<Scanned>& b) {
    for (const Scanned& one : a) {
      for (const Scanned& other : b) {
        if (one.solution.branch != other.solution.branch) continue;
        const double apart = apartOf(one.solution.values, other.solution.values);
        if (apart < 8.0) parents_[root(one.curve)] = root(other.curve);
        if (apart > 4.0 && apart < 30.0) isSure_ = false;
      }
    }
  }

  static double apartOf(const Values& a, const Values& b) {
    double apart = 0.0;
    for (std::size_t i = 0; i < 6; ++i) apart = std::max(apart, std::abs(a[i] - b[i]));
    return apart;
  }

  std::size_t root(std::size_t i) {
    while (parents_[i] != i) i = parents_[i] = parents_[parents_[i]];
    return i;
  }

  const FamilyAsked& asked_;
  Solver solver_;
  int count_;
  std::vector<Scanned> places_;
  std::vector<std::size_t> parents_;
  bool isSure_ = true;
};

/// Two ways that come and go between two turns of the tool are met by finer ones.
Solver finer(const KMachine& machine) {
  SolverOptions options;
  options.toolTurns = 1440;
  return Solver(Machine(machine), options);
}

class SolverArmFamilies : public testing::TestWithParam<Kind> {};

TEST_P(SolverArmFamilies, HoldThePositionThatMadeTheTarget) {
  const int arms = proofCount(150, 20000);
  int coarse = 0;
  for (int i = 0; i < arms; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const FamilyAsked asked = familyOf(GetParam(), dice);
    const Target target = tipAt(*asked.machine, asked.made);
    const auto isHeldBy = [&](const Solver& solver) {
      const auto found = solutionsOf(solver, target, asked.made);
      return std::any_of(found.begin(), found.end(), [&](const Solution& s) {
        return isNear(s.values, asked.made, isStretched(s) ? 1e-3 : 2e-6);
      });
    };
    if (isHeldBy(Solver{Machine(*asked.machine)})) continue;
    ++coarse;
    EXPECT_TRUE(isHeldBy(finer(*asked.machine))) << i << "\n" << asked.arm.text;
  }
  EXPECT_LE(coarse, arms / 5000);
  if (isReportWanted()) std::printf("%d targets, %d by finer turns alone\n", arms, coarse);
}

TEST_P(SolverArmFamilies, GiveTheMemberWhoseLastJointIsNearest) {
  const int arms = proofCount(150, 20000);
  int coarse = 0;
  for (int i = 0; i < arms; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const FamilyAsked asked = familyOf(GetParam(), dice);
    const Solver solver{Machine(*asked.machine)};
    const Target target = tipAt(*asked.machine, asked.made);
    const auto found = solutionsOf(solver, target, asked.start);
    for (std::size_t k = 0; k < found.size(); ++k) {
      const Solution& s = found[k];
      EXPECT_EQ(s.freePlaces[0], 5) << i;
      const Target reached = tipAt(*asked.machine, s.values);
      const double size = sizeOf(*asked.machine, s.values, target) / 1000;
      EXPECT_LE(reached.tip.distanceTo(target.tip), 1e-8 * size) << i;
      EXPECT_LE(radiansBetween(reached.direction, target.direction), 1e-10) << i;
      EXPECT_GE(s.margin, 0) << i;
      for (std::size_t l = 0; l < k; ++l) {
        EXPECT_FALSE(isNear(s.values, found[l].values, 1e-6)) << i;
      }
    }
    const double made = std::abs(asked.made[kLast] - asked.start[kLast]);
    const auto isAsNear = [&](const std::vector<Solution>& members) {
      return std::any_of(members.begin(), members.end(), [&](const Solution& s) {
        const double away = std::abs(s.values[kLast] - asked.start[kLast]);
        return away <= made + (isStretched(s) ? 1e-5 : 1e-6);
      });
    };
    if (isAsNear(found)) continue;
    ++coarse;
    EXPECT_TRUE(isAsNear(solutionsOf(finer(*asked.machine), target, asked.start))) << i;
  }
  EXPECT_LE(coarse, arms / 5000);
  if (isReportWanted()) std::printf("%d targets, %d by finer turns alone\n", arms, coarse);
}

TEST_P(SolverArmFamilies, HaveAMemberForEveryPieceThatAScanOfTheTurnSees) {
  const int arms = std::max(proofCount(25, 1000), 10);
  int counted = 0, coarse = 0;
  for (int i = 0; i < arms; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const FamilyAsked asked = familyOf(GetParam(), dice);
    Scan scan(asked, 3500);
    const auto pieces = scan.pieces();
    if (!pieces || pieces != Scan(asked, 2000).pieces()) continue;
    ++counted;
    const Target target = tipAt(*asked.machine, asked.made);
    const auto faultBy = [&](const Solver& solver) {
      return scan.faultOf(solutionsOf(solver, target, asked.start));
    };
    if (faultBy(Solver{Machine(*asked.machine)}).empty()) continue;
    ++coarse;
    EXPECT_EQ(faultBy(finer(*asked.machine)), "") << i;
  }
  EXPECT_GE(counted, std::max(arms / 8, 1));
  EXPECT_LE(coarse, arms / 100);
  if (isReportWanted()) std::printf("%d counted, %d by finer turns alone\n", counted, coarse);
}

// The wrist centre has ways behind the shoulder for a few degrees of turn alone, which end where
// those before it do.
TEST(SolverArmFamily, MeetsWaysThatComeAndGoBetweenTwoSteps) {
  Dice dice(100260);
  const FamilyAsked asked = familyOf(Kind::narrowLast, dice);
  const Solver solver{Machine(*asked.machine)};
  const auto found = solutionsOf(solver, tipAt(*asked.machine, asked.made), asked.made);
  EXPECT_TRUE(std::any_of(found.begin(), found.end(),
                          [&](const Solution& s) { return isNear(s.values, asked.made, 1e-6); }));
}

std::string kindName(const testing::TestParamInfo<Kind>& kind) {
  constexpr const char* names[] = {"Any",         "Usual",           "WithLimits",
                                   "UsualLimits", "LastJointNarrow", "FourthJointNarrow"};
  return names[static_cast<int>(kind.param)];
}

INSTANTIATE_TEST_SUITE_P(Arms, SolverArmFamilies,
                         testing::Values(Kind::any, Kind::usual, Kind::limits, Kind::usualLimits,
                                         Kind::narrowLast, Kind::narrowFourth),
                         kindName);

}  // namespace
}  // namespace korvo::test
