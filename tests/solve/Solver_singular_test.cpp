// Directions at which two rotary axes lose a degree of freedom, exactly and nearly: no branch is
// lost there. KORVO_REPORT=1 prints the table, KORVO_PROOF=full tries ten million targets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/Dice.h"

namespace korvo::test {
namespace {

using std::numbers::pi;
using zgeo::UVec3d;

constexpr double kDegree = pi / 180.0;

// What the closed forms state (platform/rotations/Solvers.h); at the value itself rounding decides.
constexpr double kOnAxis = 1e-13;
constexpr double kReach = 1e-9;

UVec3d anyDirection(Dice& dice) {
  while (true) {
    const UVec3d v(dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1));
    if (v.norm() > 0.1 && v.norm() < 1) return v.normalised();
  }
}

UVec3d squareTo(const UVec3d& v, double azimuth = 0.0) {
  const UVec3d aside = std::abs(v.x) < 0.5 ? UVec3d(1, 0, 0) : UVec3d(0, 1, 0);
  const UVec3d x = (v ^ aside).normalised();
  return x * std::cos(azimuth) + (v ^ x) * std::sin(azimuth);
}

/// At `angle` from a direction of length 1.
UVec3d besides(const UVec3d& v, double angle, double azimuth) {
  return v * std::cos(angle) + squareTo(v, azimuth) * std::sin(angle);
}

/// `v` turned about an axis of length 1.
UVec3d turned(const UVec3d& v, const UVec3d& axis, double angle) {
  return v * std::cos(angle) + (axis ^ v) * std::sin(angle) +
         axis * ((axis * v) * (1 - std::cos(angle)));
}

// --- machines

/// How the two axes and the tool lie.
enum class Pair {
  square,         ///< Fork and trunnion: the tool comes onto the first axis, both ways.
  nutating,       ///< 45 degrees: onto the axis one way, an edge of the reach the other.
  skewOntoAxis,   ///< Any angle, the tool comes onto the first axis.
  skew,           ///< Any angles: two edges.
  narrow,         ///< Almost parallel axes.
  almostOntoAxis  ///< The tool misses the first axis by 1e-10 to 1e-3 rad.
};
constexpr int kPairs = 6;
const char* const kPairNames[kPairs] = {"square",
                                        "nutating",
                                        "skew, onto the axis",
                                        "skew, two edges",
                                        "almost parallel axes",
                                        "almost onto the axis"};

struct Directions {
  UVec3d axis1, axis2, tool;
};

Directions directionsOf(Pair pair, Dice& dice) {
  const UVec3d z(0, 0, 1);
  const UVec3d any = anyDirection(dice);
  const auto beyond = [&](const UVec3d& axis2) {
    return turned(any, axis2, dice.between(-pi, pi));
  };
  switch (pair) {
    case Pair::square:
      return {z, {0, 1, 0}, dice.oneIn(2) ? z : turned(z, {0, 1, 0}, dice.between(-pi, pi))};
    case Pair::nutating:
      return {z, {0, 1, 1}, dice.oneIn(2) ? z : UVec3d(0, 1, 0)};
    case Pair::skewOntoAxis: {
      const UVec3d axis2 = besides(any, dice.between(0.3, 2.8), dice.between(0, 6));
      return {any, axis2, beyond(axis2) * (dice.oneIn(2) ? 1.0 : -1.0)};
    }
    case Pair::narrow: {
      const UVec3d axis2 = besides(any, dice.oneIn(2) ? 0.02 : 0.002, dice.between(0, 6));
      return {any, axis2, beyond(axis2)};
    }
    case Pair::almostOntoAxis: {
      const UVec3d axis2 = besides(any, dice.between(0.3, 1.4), dice.between(0, 6));
      const double by = std::pow(10.0, dice.between(-10, -3));
      return {any, axis2,
              turned(besides(axis2, radiansBetween(any, axis2) + by, dice.between(0, 6)), axis2,
                     dice.between(-pi, pi))};
    }
    default:
      return {any, besides(any, dice.between(0.3, 2.8), dice.between(0, 6)), anyDirection(dice)};
  }
}

UVec3d anyPoint(Dice& dice, double reach = 400) {
  return {dice.between(-reach, reach), dice.between(-reach, reach), dice.between(-reach, reach)};
}

/// Both axes on the head, both under the part or one each.
MachineLines linesOf(const Directions& d, Dice& dice, double limit) {
  const AxisLine first = rotary("C", 6, d.axis1, anyPoint(dice), -limit, limit);
  const AxisLine second = rotary("B", 5, d.axis2, anyPoint(dice), -limit, limit);
  MachineLines lines{{}, linearXyz(), d.tool, anyPoint(dice)};
  const int layout = dice.below(3);
  if (layout == 0) lines.head = linearXyz() + std::vector{first, second};
  if (layout == 1) lines.part = {second, first};
  if (layout == 2) lines.part = {first}, lines.head = linearXyz() + std::vector{second};
  return lines;
}

constexpr std::size_t kSecond = 3, kFirst = 4;  // places: X, Y, Z, B, C

// --- targets next to an edge of the reach

/// An edge of the angles from the first axis that the tool reaches.
struct Edge {
  double angle = 0.0;
  double inwards = 1.0;  ///< To larger angles or to smaller ones.
  double width = 0.0;    ///< Of the reach.
  bool isOnAxis = false;
};

std::vector<Edge> edgesOf(const Directions& d) {
  const double w = radiansBetween(d.axis1, d.axis2);
  const double f = radiansBetween(d.axis2, d.tool);
  const double low = std::abs(w - f);
  const double high = std::min(w + f, 2 * pi - w - f);
  return {{low, 1.0, high - low, low < 1e-14}, {high, -1.0, high - low, high > pi - 1e-14}};
}

struct Row {
  long targets = 0, solutions = 0, families = 0;
  long lost = 0, wrong = 0;
  double pointMm = 0.0, directionRad = 0.0;
  std::string first;
};

/// What may come out at an edge: rounding decides between one and two where a limit is met.
struct Expected {
  int least = 0;
  int most = 2;
  bool mayBeFamily = false;
  bool mustBeFamily = false;
};

/// `inside` is how far the target is inside the edge, rad.
Expected expectedAt(const Edge& edge, double inside) {
  Expected expected;
  if (inside < -1.5 * kReach) return {0, 0, false, false};
  expected.least = inside < -0.5 * kReach ? 0 : 1;
  const double fromAxis = edge.angle < pi / 2 ? edge.angle + inside : pi - edge.angle + inside;
  expected.mayBeFamily = std::abs(fromAxis) < 3 * kOnAxis;
  expected.mustBeFamily = std::abs(fromAxis) < 0.3 * kOnAxis;
  if (!expected.mayBeFamily && inside > 1e-11) expected.least = 2;
  if (expected.mustBeFamily || inside < -1e-14) expected.most = 1;
  return expected;
}

double turnApart(double a, double b) { return std::abs(std::remainder(a - b, 360.0)) * kDegree; }

/// Of the rotary angles (rad); an angle that is free in one of them does not count.
double apart(const Solution& a, const Solution& b) {
  double largest = 0.0;
  for (const std::size_t i : {kFirst, kSecond}) {
    const int place = static_cast<int>(i);
    if (a.freePlaces[0] == place || b.freePlaces[0] == place) continue;
    largest = std::max(largest, turnApart(a.values[i], b.values[i]));
  }
  return largest;
}

class NextToEdges {
 public:
  NextToEdges(const Directions& d, Dice& dice, Row& row)
      : directions_(d),
        dice_(dice),
        row_(row),
        lines_(linesOf(d, dice, kLimit)),
        kmachine_(lines_.load()),
        solver_(Machine(*kmachine_)) {}

  void ask(const Edge& edge) {
    const double away =
        std::min(1e-2, edge.width / 20) *
        std::min(1.0, std::sin(radiansBetween(directions_.axis1, directions_.axis2)));
    double inside = std::pow(10.0, dice_.between(-15, std::log10(away / 5)));
    if (dice_.oneIn(8)) inside = 0.0;
    const double toAxis = std::min(edge.angle, pi - edge.angle);
    if (!edge.isOnAxis && dice_.oneIn(3)) inside = -std::min(inside, 0.9 * toAxis);
    const double azimuth = dice_.between(-pi, pi);
    ask(edge, inside, away, azimuth);
  }

 private:
  static constexpr double kLimit = 250.0;

  Target targetAt(const Edge& edge, double inside, double azimuth) {
    return {tip_, besides(directions_.axis1, edge.angle + edge.inwards * inside, azimuth)};
  }

  void ask(const Edge& edge, double inside, double away, double azimuth) {
    tip_ = anyPoint(dice_, 900);
    start_ = {};
    for (std::size_t i = 0; i < 5; ++i) start_[i] = dice_.between(-200, 200);
    const Target target = targetAt(edge, inside, azimuth);
    ++row_.targets;
    isOutside_ = inside < 0;
    edge_ = edge.angle, inside_ = inside;
    solver_.solve(target, start_, here_, Limits::ignored);
    solver_.solve(targetAt(edge, away, azimuth), start_, aside_, Limits::ignored);
    row_.solutions += static_cast<long>(here_.size());
    for (const Solution& s : here_) verify(s, target);
    expectCount(expectedAt(edge, inside));
    if (aside_.size() != 2) fault(row_.lost, "not two branches beside");
    if (!here_.empty() && aside_.size() == 2) expectBranches(edge);
    expectTurns(target);
  }

  void fault(long& count, const std::string& what) {
    ++count;
    if (!row_.first.empty()) return;
    char place[80];
    std::snprintf(place, sizeof place, ": edge %.17g, inside by %.3g\n", edge_, inside_);
    row_.first = what + place + lines_.text();
  }

  void verify(const Solution& s, const Target& target) {
    row_.families += s.isFamily();
    const Target reached = tipAt(*kmachine_, s.values);
    const double size = sizeOf(*kmachine_, s.values, target) / 1000;
    const double pointMm = reached.tip.distanceTo(target.tip);
    const double rad = radiansBetween(reached.direction, target.direction);
    row_.pointMm = std::max(row_.pointMm, pointMm / size);
    if (pointMm > 1e-9 * size) fault(row_.wrong, "point missed");
    // Outside the reach, by no more than is allowed, nothing is nearer than the edge.
    if (rad > std::max(1e-10, isOutside_ ? 1.0001 * kReach : 0.0))
      fault(row_.wrong, "direction missed");
    row_.directionRad = std::max(row_.directionRad, isOutside_ ? 0.0 : rad);
  }

  void expectCount(const Expected& expected) {
    const int count = static_cast<int>(here_.size());
    const bool isFamily = count > 0 && here_[0].isFamily();
    if (count < expected.least && !(isFamily && expected.mayBeFamily)) fault(row_.lost, "too few");
    if (count > expected.most) fault(row_.wrong, "too many");
    if (isFamily && !expected.mayBeFamily) fault(row_.wrong, "no family");
    if (expected.mustBeFamily && count > 0 && !isFamily) fault(row_.wrong, "a family");
    if (isFamily && here_[0].freePlaces != std::array<int, 2>{kFirst, -1}) {
      fault(row_.wrong, "the first axis is free");
    }
  }

  /// The branches beside go over into those here: onto the axis their angles change by no more than
  /// the way over the sines of the axes' angle, at an edge they meet in the middle.
  void expectBranches(const Edge& edge) {
    const double between = apart(aside_[0], aside_[1]);
    const double allowed = edge.isOnAxis ? 0.1 : 0.8 * between + 1e-6;
    for (const Solution& beside : aside_) {
      if (std::none_of(here_.begin(), here_.end(),
                       [&](const Solution& s) { return apart(s, beside) <= allowed; })) {
        fault(row_.lost, "branch beside has none here");
      }
    }
  }

  /// With limits: every branch with all its turns, as many as fit.
  void expectTurns(const Target& target) {
    solver_.solve(target, start_, kept_);
    std::size_t expected = 0;
    for (const Solution& s : here_) {
      const int first = turnsInside(s.values[kFirst]);
      expected +=
          static_cast<std::size_t>(turnsInside(s.values[kSecond]) * (s.isFamily() ? 1 : first));
    }
    if (kept_.size() < expected) fault(row_.lost, "turns");
    if (kept_.size() > expected) fault(row_.wrong, "turns");
  }

  static int turnsInside(double degrees) {
    const double first = std::ceil((-kLimit - degrees) / 360);
    return static_cast<int>(std::floor((kLimit - degrees) / 360) - first) + 1;
  }

  Directions directions_;
  Dice& dice_;
  Row& row_;
  MachineLines lines_;
  std::unique_ptr<zkin::KMachine> kmachine_;
  Solver solver_;
  UVec3d tip_;
  Values start_{};
  bool isOutside_ = false;
  double edge_ = 0.0, inside_ = 0.0;
  std::vector<Solution> here_, aside_, kept_;
};

// --- a tool or axes that leave a turn without effect, exactly and almost

/// What lies along what.
enum class Along { tool, axes };

/// Both branches are there when rounding leaves the angles a meaning: an angle is as sure as
/// rounding over the sine that is missing.
class AlmostAlong {
 public:
  AlmostAlong(Along along, double by, Dice& dice, Row& row) : by_(by), dice_(dice), row_(row) {
    Directions d{anyDirection(dice), anyDirection(dice), anyDirection(dice)};
    const double sense = dice.oneIn(2) ? 1.0 : -1.0;
    if (along == Along::tool) d.tool = besides(d.axis2, by, dice.between(-pi, pi)) * sense;
    if (along == Along::axes) d.axis2 = besides(d.axis1, by, dice.between(-pi, pi)) * sense;
    free_ = kSecond;
    lines_ = linesOf(d, dice, 250);
    kmachine_ = lines_.load();
    const double w = radiansBetween(d.axis1, d.axis2), f = radiansBetween(d.axis2, d.tool);
    low_ = std::abs(w - f), high_ = std::min(w + f, 2 * pi - w - f), axis1_ = d.axis1;
  }

  void ask() {
    const Solver solver{Machine(*kmachine_)};
    Solution made;
    for (std::size_t i = 0; i < 5; ++i) made.values[i] = dice_.between(-200, 200);
    const Target target = tipAt(*kmachine_, made.values);
    ++row_.targets;
    Values start{};
    solver.solve(target, start, here_, Limits::ignored);
    row_.solutions += static_cast<long>(here_.size());
    for (const Solution& s : here_) verify(s, target);
    const bool isFamily = !here_.empty() && here_[0].isFamily();
    if (here_.empty()) return fault(row_.lost, "nothing");
    if (isFamily && by_ > 3 * kOnAxis) fault(row_.wrong, "no family");
    if (!isFamily && by_ < 0.3 * kOnAxis) fault(row_.wrong, "a family");
    if (isFamily && here_[0].freePlaces[0] != static_cast<int>(free_)) {
      fault(row_.wrong, "the second axis is free");
    }
    if (here_.size() > (isFamily ? 1u : 2u)) fault(row_.wrong, "too many");
    if (!isFamily && by_ > 1e-11) expectBoth(made, target);
  }

 private:
  void expectBoth(const Solution& made, const Target& target) {
    const double t = radiansBetween(axis1_, target.direction);
    const double inside = std::min(t - low_, high_ - t);
    if (inside < 1e-3 * (high_ - low_)) return;  // where both meet
    if (here_.size() != 2) fault(row_.lost, "two branches");
    const double allowed = 1e-6 + 1e-11 / by_;
    if (std::none_of(here_.begin(), here_.end(),
                     [&](const Solution& s) { return apart(s, made) <= allowed; })) {
      fault(row_.lost, "the one that made the target");
    }
  }

  void verify(const Solution& s, const Target& target) {
    row_.families += s.isFamily();
    const Target reached = tipAt(*kmachine_, s.values);
    const double size = sizeOf(*kmachine_, s.values, target) / 1000;
    const double pointMm = reached.tip.distanceTo(target.tip);
    const double rad = radiansBetween(reached.direction, target.direction);
    row_.pointMm = std::max(row_.pointMm, pointMm / size);
    row_.directionRad = std::max(row_.directionRad, rad);
    if (pointMm > 1e-9 * size) fault(row_.wrong, "point missed");
    if (rad > 1e-10) fault(row_.wrong, "direction missed");
  }

  void fault(long& count, const std::string& what) {
    ++count;
    if (!row_.first.empty()) return;
    char place[40];
    std::snprintf(place, sizeof place, ": by %.3g\n", by_);
    row_.first = what + place + lines_.text();
  }

  double by_;
  Dice& dice_;
  Row& row_;
  std::size_t free_ = 0;
  MachineLines lines_;
  std::unique_ptr<zkin::KMachine> kmachine_;
  UVec3d axis1_;
  double low_ = 0.0, high_ = 0.0;
  std::vector<Solution> here_;
};

// --- tests

const char* const kTableHead =
    "| singular directions | targets | solutions | families | lost | wrong |"
    " largest miss, mm per m | largest miss, rad |\n|---|---|---|---|---|---|---|---|\n";

std::string toText(const std::string& name, const Row& r) {
  char text[200];
  std::snprintf(text, sizeof text, "| %s | %ld | %ld | %ld | %ld | %ld | %.1e | %.1e |\n",
                name.c_str(), r.targets, r.solutions, r.families, r.lost, r.wrong, r.pointMm,
                r.directionRad);
  return text;
}

class SolverAtSingularDirections : public testing::Test {
 protected:
  static void TearDownTestSuite() {
    if (isReportWanted()) std::cout << kTableHead << table_;
    table_.clear();
  }

  static void report(const std::string& name, const Row& row) {
    table_ += toText(name, row);
    EXPECT_EQ(row.lost + row.wrong, 0) << toText(name, row) << row.first;
    EXPECT_GT(row.families, 0) << name;
  }

  static inline std::string table_;
};

class SolverNextToEdges : public SolverAtSingularDirections,
                          public testing::WithParamInterface<int> {};

TEST_P(SolverNextToEdges, NoBranchIsLost) {
  constexpr int kTargets = 50;  // each machine
  const auto pair = static_cast<Pair>(GetParam());
  const int machines = proofCount(18000, 4200000) / kPairs / kTargets;
  Row row;
  for (int i = 0; i < machines; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const Directions d = directionsOf(pair, dice);
    const Directions unit{d.axis1.normalised(), d.axis2.normalised(), d.tool.normalised()};
    NextToEdges machine(unit, dice, row);
    for (const Edge& edge : edgesOf(unit)) {
      for (int k = 0; k < kTargets / 2; ++k) machine.ask(edge);
    }
  }
  table_ += toText(kPairNames[GetParam()], row);
  EXPECT_EQ(row.lost + row.wrong, 0) << toText(kPairNames[GetParam()], row) << row.first;
}

std::string pairName(const testing::TestParamInfo<int>& pair) {
  constexpr const char* names[kPairs] = {"Square", "Nutating", "SkewOntoAxis",
                                         "Skew",   "Narrow",   "Almost"};
  return names[pair.param];
}

INSTANTIATE_TEST_SUITE_P(Axes, SolverNextToEdges, testing::Range(0, kPairs), pairName);

void askAlmostAlong(Along along, Row& row) {
  constexpr int kTargets = 10;  // each machine
  const int count = proofCount(1000, 200000) / kTargets;
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const double by = i % 8 == 0 ? 0.0 : std::pow(10.0, dice.between(-15, -3));
    AlmostAlong machine(along, by, dice, row);
    for (int k = 0; k < kTargets; ++k) machine.ask();
  }
}

TEST_F(SolverAtSingularDirections, ToolAlongTheSecondAxisLosesNoBranch) {
  Row row;
  askAlmostAlong(Along::tool, row);
  report("tool along the second axis", row);
}

TEST_F(SolverAtSingularDirections, AxesAlongEachOtherLoseNoBranch) {
  Row row;
  askAlmostAlong(Along::axes, row);
  report("axes along each other", row);
}

}  // namespace
}  // namespace korvo::test
