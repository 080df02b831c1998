// What the solver gives for targets of awkward machines, judged by a product of motions in long
// double: everything it gives is right, and the position that made the target is there.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/awkward/Awkward.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using Numbers = std::vector<double>;

Values valuesOf(const Numbers& numbers) {
  Values values{};
  std::copy(numbers.begin(), numbers.end(), values.begin());
  return values;
}

Numbers numbersOf(const AwkwardMachine& drawn, const Values& values) {
  return {values.begin(), values.begin() + drawn.axes()};
}

/// A target by its frame; of a mill only its direction and tip count.
struct Asked {
  Target target;
  FrameTarget frame;
  bool isFrame = false;
};

Asked askedAt(const AwkwardMachine& drawn, const Numbers& made, double directionLength) {
  const ExactPose pose = drawn.pose(made);
  Asked asked;
  asked.target.tip = rounded(drawn.tip(made));
  asked.target.direction = rounded(pose.direction * directionLength);
  for (int i = 0; i < 3; ++i) {
    for (int k = 0; k < 3; ++k) {
      asked.frame.frame(k, i) =
          static_cast<double>(pose.axes[static_cast<std::size_t>(i)][static_cast<std::size_t>(k)]);
    }
  }
  asked.frame.frame.setOrigin(asked.target.tip);
  return asked;
}

std::vector<Solution> solved(const Solver& solver, const Asked& asked, const Numbers& start) {
  std::vector<Solution> out;
  if (asked.isFrame) {
    solver.solve(asked.frame, valuesOf(start), out);
  } else {
    solver.solve(asked.target, valuesOf(start), out);
  }
  return out;
}

struct Miss {
  double mm, rad;
};

/// The angle of the turn between two frames.
double turnBetween(const std::array<Exact, 3>& a, const UMatrix& b) {
  long double most = 0;
  for (int i = 0; i < 3; ++i) {
    most =
        std::max(most, length(a[static_cast<std::size_t>(i)] - Exact{b(0, i), b(1, i), b(2, i)}));
  }
  return static_cast<double>(most);
}

Miss missAt(const AwkwardMachine& drawn, const Asked& asked, const Numbers& values) {
  const ExactPose pose = drawn.pose(values);
  const auto mm = static_cast<double>(length(drawn.tip(values) - exact(asked.target.tip)));
  const double rad =
      asked.isFrame
          ? turnBetween(pose.axes, asked.frame.frame)
          : static_cast<double>(angleBetween(pose.direction, exact(asked.target.direction)));
  return {mm, rad};
}

bool areAllFinite(const Numbers& values) {
  return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

class AwkwardSolver : public AwkwardTest {
 protected:
  void expectRight(const AwkwardMachine& drawn, const KMachine& machine, const Asked& asked,
                   const std::vector<Solution>& solutions) {
    for (const Solution& s : solutions) {
      const Numbers values = numbersOf(drawn, s.values);
      ASSERT_TRUE(areAllFinite(values)) << textOf(values);
      const Miss miss = missAt(drawn, asked, values);
      EXPECT_LE(miss.mm, kReachedMm + drawn.pointBound(machine, values)) << textOf(values);
      EXPECT_LE(miss.rad, 1.001 * kReachedRad + drawn.directionBound(values)) << textOf(values);
      double margin = kNoLimit;
      for (const auto& [axis, place] : chainOf(drawn.lines)) {
        margin = std::min({margin, values[place] - axis.min, axis.max - values[place]});
      }
      EXPECT_GE(margin, 0) << textOf(values);
      EXPECT_EQ(s.margin, margin);
      ++right;
    }
  }

  int right = 0, tried = 0, atLimits = 0;
};

/// Whether the straight way of all axes from a position keeps the direction (of an arm tip and
/// frame, too).
bool isWayKept(const AwkwardMachine& drawn, const Asked& asked, const Numbers& from,
               const Numbers& by) {
  for (const double share : {0.5, 0.2, 0.8, 0.1, 0.3, 0.4, 0.6, 0.7, 0.9, 1.0}) {
    Numbers between = from;
    for (std::size_t k = 0; k < from.size(); ++k) between[k] += by[k] * share;
    const Miss miss = missAt(drawn, asked, between);
    if (miss.rad > 10 * kReachedRad || (drawn.isArm && miss.mm > 10 * kReachedMm)) return false;
  }
  return true;
}

/// The same, where axes may go either way round: those whose turns do not count.
bool isWayKept(const AwkwardMachine& drawn, const Asked& asked, const Numbers& from, Numbers by,
               const std::vector<std::size_t>& turning, std::size_t next) {
  if (next == turning.size()) return isWayKept(drawn, asked, from, by);
  if (isWayKept(drawn, asked, from, by, turning, next + 1)) return true;
  double& way = by[turning[next]];
  if (std::abs(way) < 60) return false;
  way -= std::copysign(360, way);
  return isWayKept(drawn, asked, from, by, turning, next + 1);
}

/// Whether a solution is the position itself or of one family with it: some way of the rotary axes
/// from one to the other keeps the tool as it is. Where branches meet they lie as far apart as the
/// direction may miss allows, which is 1e-4 rad for 1e-8; every angle between is as good then.
bool isSameWay(const AwkwardMachine& drawn, const Asked& asked, const Numbers& made,
               const Solution& solution) {
  Numbers by(made.size());
  std::vector<std::size_t> turning;
  for (const auto& [axis, place] : chainOf(drawn.lines)) {
    if (!axis.isRotary) continue;
    by[place] = solution.values[place] - made[place];
    const bool isEndless = axis.min == -kNoLimit || axis.max == kNoLimit;
    if (!solution.isFamily() && !isEndless) continue;
    by[place] = std::remainder(by[place], 360);
    turning.push_back(place);
  }
  return isWayKept(drawn, asked, made, by, turning, 0);
}

bool isAmong(const AwkwardMachine& drawn, const Asked& asked, const Numbers& made,
             const std::vector<Solution>& solutions) {
  return std::any_of(solutions.begin(), solutions.end(),
                     [&](const Solution& s) { return isSameWay(drawn, asked, made, s); });
}

/// The same machine without a limit.
AwkwardMachine unlimited(AwkwardMachine drawn) {
  for (auto* side : {&drawn.lines.part, &drawn.lines.head}) {
    for (AxisLine& axis : *side) axis.min = -kNoLimit, axis.max = kNoLimit;
  }
  return drawn;
}

/// How much (mm) the linear axes of a position may stand otherwise in another turn of its rotary
/// ones: those round their angle by as much of it, and swing all that they carry. One put onto its
/// limit moves by 5e-11 degrees, 1e-12 rad, and where linear axes are not square to each other they
/// have to travel some times as far.
double linearRounding(const AwkwardMachine& drawn, const Numbers& values) {
  double size = drawn.lines.toolPoint.norm() + std::abs(drawn.lengths[0]);
  for (const PlacedAxis& axis : chainOf(drawn.lines)) {
    size += axis.line.isRotary ? axis.line.point.norm() : std::abs(values[axis.place]);
  }
  return 1e-9 + size * (1e-11 + 8 * drawn.directionBound(values));
}

/// Whether every value, a rotary one by whole turns, can stand inside the limits and farther from
/// them than what rounding is said to put onto one.
bool fits(const AwkwardMachine& drawn, const Numbers& values) {
  const double rounding = linearRounding(drawn, values);
  for (const auto& [axis, place] : chainOf(drawn.lines)) {
    const double value = values[place];
    const double away = axis.isRotary ? 1e-9 + 1e-15 * std::abs(value) : rounding;
    const double low = axis.min + away, high = axis.max - away;
    if (axis.isRotary && axis.min != -kNoLimit && axis.max != kNoLimit) {
      if (value + 360 * std::ceil((low - value) / 360) > high) return false;
    } else if (!axis.isRotary && !(low <= value && value <= high)) {
      return false;
    }
  }
  return true;
}

bool isSameButForTurns(const AwkwardMachine& drawn, const Solution& a, const Solution& b) {
  const double rounding = linearRounding(drawn, numbersOf(drawn, a.values)) +
                          linearRounding(drawn, numbersOf(drawn, b.values));
  for (const auto& [axis, place] : chainOf(drawn.lines)) {
    const double by = a.values[place] - b.values[place];
    const bool isSame = axis.isRotary ? std::abs(std::remainder(by, 360)) <=
                                            1e-9 + 1e-12 * std::abs(a.values[place])
                                      : std::abs(by) <= rounding;
    if (!isSame) return false;
  }
  return true;
}

std::string listOf(const AwkwardMachine& drawn, const std::vector<Solution>& solutions) {
  std::string text;
  for (const Solution& s : solutions) {
    text += textOf(numbersOf(drawn, s.values)) + " free " + std::to_string(s.freePlaces[0]) + " " +
            std::to_string(s.freePlaces[1]) + "\n";
  }
  return text;
}

int countOf(const AwkwardMachine& drawn, bool isRotary) {
  const auto chain = chainOf(drawn.lines);
  return static_cast<int>(std::count_if(chain.begin(), chain.end(), [isRotary](const auto& a) {
    return a.line.isRotary == isRotary;
  }));
}

const std::initializer_list<const char*> kCommon = {
    mark::almostParallel, mark::almostMeeting, mark::noLength, mark::turns,
    mark::manyTurns,      mark::slight,        mark::nothing,  mark::onLimit,
    mark::oneUlp,         mark::equalLimits,   mark::farLimits};

/// Lengths that a direction may have.
double directionLength(Dice& dice, Marks& marks) {
  constexpr double lengths[] = {1, 1, 1e-3, 1e6, 1e-150, 1e150};
  const double size = lengths[dice.below(6)];
  if (size != 1) marks.insert(mark::anyLength);
  return size;
}

/// What the target and the position that made it are, for the report of a failure.
std::string reportOf(const Asked& asked, const Numbers& made, const Numbers& start) {
  return "\nmade at" + textOf(made) + "\nstart" + textOf(start) + "\ntip" +
         textOf(asked.target.tip) + "\ndirection" + textOf(asked.target.direction);
}

/// How many rotary axes are along the tool at a position (0.01 rad): they turn it on itself.
int axesAlongTool(const AwkwardMachine& drawn, const Numbers& at) {
  const ExactPose pose = drawn.pose(at);
  int count = 0;
  for (const auto& [axis, place] : chainOf(drawn.lines)) {
    if (!axis.isRotary) continue;
    Numbers turned = at;
    turned[place] += 180;  // twice the angle
    count += angleBetween(pose.direction, drawn.pose(turned).direction) < 0.02;
  }
  return count;
}

class AwkwardMills : public AwkwardSolver {
 protected:
  /// `law(limited, unlimited, what each gives, target, made)` of machines that are served; false
  /// where it says nothing of this draw.
  template <typename Law>
  void onTargets(int machines, Law law) {
    onMachines(
        machines, [](Dice& dice) { return awkwardMill(dice, LimitKinds::ordered); },
        [&](const AwkwardMachine& drawn, Dice& dice) {
          const AwkwardMachine free = unlimited(drawn);
          const Solver solver{Machine(*drawn.load())}, freeSolver{Machine(*free.load())};
          for (int i = 0; i < 3 && !HasFailure(); ++i) {
            Marks marks = drawn.marks, others;
            const Numbers made = awkwardValues(drawn, true, dice, marks);
            Numbers start = awkwardValues(drawn, true, dice, others);
            // What is not solved for stays where the start has it.
            if (countOf(drawn, true) > 2 || countOf(drawn, false) > 3) start = made;
            const Asked target = askedAt(drawn, made, directionLength(dice, marks));
            if (axesAlongTool(drawn, made) > 0) marks.insert(mark::alongAxis);
            tally.add(marks);
            note = reportOf(target, made, start);
            if (solver.kind() == SolverKind::none) continue;
            tried += law(drawn, free, solved(solver, target, start),
                         solved(freeSolver, target, start), target, made);
          }
        });
    tally.expectCommon(kCommon);
    tally.expectCommon({mark::parallel, mark::onePoint, mark::atOrigin, mark::huge, mark::tiny,
                        mark::anyLength, mark::alongAxis});
    EXPECT_GT(tried, tally.draws() / 2);
  }
};

TEST_F(AwkwardMills, AreSolvedRightAndInsideTheLimits) {
  onTargets(1000, [this](const AwkwardMachine& drawn, const AwkwardMachine&,
                         const std::vector<Solution>& limited, const std::vector<Solution>&,
                         const Asked& target, const Numbers&) {
    expectRight(drawn, *drawn.load(), target, limited);
    return true;
  });
  EXPECT_GT(right, tried);
}

/// Whether two rotary axes are along the tool (0.01 rad), which leaves two angles free, and the
/// tool hundreds of metres from one of them: of that family no member is found, even without
/// limits.
bool isFarDoubleFamily(const AwkwardMachine& drawn, const Asked& asked, const Numbers& made) {
  const bool isFar = drawn.marks.contains(mark::huge) || asked.target.tip.norm() > 1e5;
  return isFar && axesAlongTool(drawn, made) > 1;
}

TEST_F(AwkwardMills, NeverLoseThePositionThatMadeTheTarget) {
  onTargets(1000,
            [](const AwkwardMachine&, const AwkwardMachine& free, const std::vector<Solution>&,
               const std::vector<Solution>& solutions, const Asked& target, const Numbers& made) {
              if (isFarDoubleFamily(free, target, made)) return false;
              EXPECT_TRUE(isAmong(free, target, made, solutions)) << listOf(free, solutions);
              return true;
            });
}

// What is solved onto a limit misses it by rounding, which poles nearby multiply without end: so
// with limits not the position that made the target is asked for, but what is solved without them.
TEST_F(AwkwardMills, LimitsOnlyChooseFromWhatThereIsWithoutThem) {
  onTargets(1000, [](const AwkwardMachine& drawn, const AwkwardMachine&,
                     const std::vector<Solution>& limited, const std::vector<Solution>& all,
                     const Asked&, const Numbers&) {
    // Others move for the limits, or are held where what is solved for turns nearly along them.
    if (countOf(drawn, false) > 3 || countOf(drawn, true) > 2) return false;
    for (const Solution& s : all) {
      if (s.isFamily() || !fits(drawn, numbersOf(drawn, s.values))) continue;
      EXPECT_TRUE(std::any_of(limited.begin(), limited.end(),
                              [&](const Solution& t) { return isSameButForTurns(drawn, s, t); }))
          << listOf(drawn, {s}) << "is not among\n"
          << listOf(drawn, limited);
    }
    for (const Solution& t : limited) {
      if (t.isFamily()) continue;
      EXPECT_TRUE(std::any_of(all.begin(), all.end(),
                              [&](const Solution& s) { return isSameButForTurns(drawn, s, t); }))
          << listOf(drawn, {t}) << "is not among\n"
          << listOf(drawn, all);
    }
    return true;
  });
}

/// How far the lines of a loaded machine are beside their author's, all together.
double besideLines(const AwkwardMachine& drawn, const KMachine& machine) {
  double sum = 0.0;
  for (const PlacedAxis& axis : chainOf(drawn.lines)) {
    if (axis.line.isRotary) sum += offLine(machine, axis.line);
  }
  return sum;
}

/// Every axis of a machine, its tool with it, changed in one way.
template <typename Change>
AwkwardMachine changed(AwkwardMachine drawn, Change change) {
  for (auto* side : {&drawn.lines.part, &drawn.lines.head}) {
    for (AxisLine& axis : *side) change(axis.direction, axis.point);
  }
  change(drawn.lines.toolDirection, drawn.lines.toolPoint);
  drawn.lines.moreTools.clear();
  drawn.lengths.resize(1);
  return drawn;
}

TEST_F(AwkwardMills, AreSolvedTheSameFourTimesAsLarge) {
  onTargets(300, [](const AwkwardMachine&, const AwkwardMachine& free, const std::vector<Solution>&,
                    const std::vector<Solution>&, const Asked& asked, const Numbers& made) {
    // Held linear axes would have to be scaled with the start.
    if (countOf(free, false) > 3 || countOf(free, true) > 2) return false;
    if (isFarDoubleFamily(free, asked, made)) return false;
    constexpr double kTimes = 4;  // a power of two changes no digit
    AwkwardMachine large = changed(free, [](UVec3d&, UVec3d& point) { point = point * kTimes; });
    large.lengths[0] *= kTimes;
    Asked target = asked;
    target.target.tip = target.target.tip * kTimes;
    const auto machine = large.load();
    // Lines within 1e-5 mm count as one: that length does not grow with the machine.
    if (besideLines(free, *free.load()) + besideLines(large, *machine) > 1e-10) return false;
    const Numbers zeros(made.size());  // far turns round otherwise
    const std::vector<Solution> found = solved(Solver(Machine(*machine)), target, zeros);
    for (Solution s : solved(Solver(Machine(*free.load())), asked, zeros)) {
      if (s.isFamily()) continue;
      for (const auto& [axis, place] : chainOf(free.lines)) {
        if (!axis.isRotary) s.values[place] *= kTimes;
      }
      EXPECT_TRUE(std::any_of(found.begin(), found.end(),
                              [&](const Solution& t) { return isSameButForTurns(large, s, t); }))
          << listOf(large, {s}) << "is not among\n"
          << listOf(large, found);
    }
    return true;
  });
}

TEST_F(AwkwardMills, AreSolvedTheSameInAnyPlace) {
  onTargets(300,
            [](const AwkwardMachine&, const AwkwardMachine& free, const std::vector<Solution>&,
               const std::vector<Solution>& solutions, const Asked& asked, const Numbers& made) {
              if (countOf(free, false) > 3 || countOf(free, true) > 2) return false;
              if (isFarDoubleFamily(free, asked, made)) return false;
              const Exact axis = unit({0.36L, -0.48L, 0.8L});
              const AwkwardMachine moved = changed(free, [&axis](UVec3d& direction, UVec3d& point) {
                direction = rounded(turned(exact(direction), axis, 123.4L));
                point = rounded(turned(exact(point), axis, 123.4L) + Exact{10, -250, 77});
              });
              const Asked target = askedAt(moved, made, 1);
              const std::vector<Solution> found =
                  solved(Solver(Machine(*moved.load())), target, Numbers(made.size()));
              for (const Solution& s : solutions) {
                EXPECT_TRUE(isAmong(moved, target, numbersOf(moved, s.values), found))
                    << listOf(moved, {s}) << "is not among\n"
                    << listOf(moved, found);
              }
              return true;
            });
}

class AwkwardArms : public AwkwardSolver {
 protected:
  template <typename Law>
  void onTargets(int machines, LimitKinds limits, bool areFrames, Law law) {
    onMachines(
        machines, [limits](Dice& dice) { return awkwardArm(dice, limits); },
        [&, areFrames](const AwkwardMachine& drawn, Dice& dice) {
          const auto machine = drawn.load();
          const Solver solver{Machine(*machine)};
          for (int i = 0; i < 3 && !HasFailure(); ++i) {
            Marks marks = drawn.marks, others;
            const Numbers made = awkwardValues(drawn, true, dice, marks);
            Numbers start = awkwardValues(drawn, true, dice, others);
            if (drawn.axes() > 6) start = made;  // the rail stays
            Asked target = askedAt(drawn, made, directionLength(dice, marks));
            target.isFrame = areFrames;
            tally.add(marks);
            note = reportOf(target, made, start);
            if (solver.kind() != SolverKind::arm) continue;
            tried += law(drawn, *machine, solved(solver, target, start), target, made);
          }
        });
    tally.expectCommon({mark::almostParallel, mark::almostMeeting, mark::noLength, mark::turns,
                        mark::manyTurns, mark::slight, mark::nothing, mark::straightElbow,
                        mark::straightWrist, mark::overFirst, mark::anyLength});
    EXPECT_GT(tried, tally.draws() / 2);
  }
};

TEST_F(AwkwardArms, AreSolvedRightAndInsideTheLimits) {
  onTargets(20, LimitKinds::ordered, false,
            [this](const AwkwardMachine& drawn, const KMachine& machine,
                   const std::vector<Solution>& solutions, const Asked& target, const Numbers&) {
              expectRight(drawn, machine, target, solutions);
              return true;
            });
  EXPECT_GT(right, tried);
}

bool isTurnNear(double a, double b, double degrees) {
  return std::abs(std::remainder(a - b, 360)) < degrees;
}

/// Where ways between members are curved: with the wrist over the first axis the first joint is
/// free, or not sure (1e-9 mm beside it, as an axis off by 1e-12 leaves it, rounding of 1e-12 mm is
/// a tenth of a degree), and the last three follow. The joints that carry the wrist tell the
/// branch, and where the first is sure how far the wrist bends.
bool isSameBranch(const Numbers& made, const Solution& s, bool isFirstSure) {
  return isTurnNear(s.values[1], made[1], 1e-2) && isTurnNear(s.values[2], made[2], 1e-2) &&
         (!isFirstSure ||
          (isTurnNear(s.values[0], made[0], 1e-2) && isTurnNear(s.values[4], made[4], 0.1)));
}

TEST_F(AwkwardArms, NeverLoseThePositionThatMadeTheFrame) {
  onTargets(
      300, LimitKinds::none, true,
      [this](const AwkwardMachine& drawn, const KMachine& machine,
             const std::vector<Solution>& solutions, const Asked& target, const Numbers& made) {
        expectRight(drawn, machine, target, solutions);
        // Over the first axis that joint is not sure, and so is whether a wrist as far bent
        // as it goes turns the tool there.
        if (drawn.marks.contains(mark::overFirst) && isTurnNear(2 * made[4], 0, 1e-3)) {
          return false;
        }
        // From a line beside the wrist centre a position is moved onto its target, which
        // folds of the arm may not allow.
        if (drawn.wristMiss + besideLines(drawn, machine) > 1e-10) return false;
        const bool isFirstSure = !drawn.marks.contains(mark::overFirst) ||
                                 !isTurnNear(made[1], 0, 1e-6) || !isTurnNear(made[2], 0, 1e-6);
        const auto isSame = [&](const Solution& t) {
          return isSameBranch(made, t, isFirstSure && t.freePlaces[0] != 0);
        };
        EXPECT_TRUE(std::any_of(solutions.begin(), solutions.end(), isSame) ||
                    isAmong(drawn, target, made, solutions))
            << listOf(drawn, solutions);
        return true;
      });
}

}  // namespace
}  // namespace korvo::test
