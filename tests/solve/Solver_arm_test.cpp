// Arms with a spherical wrist: the positions that made a frame are among the answers, and as many
// as an independent search counts. KORVO_REPORT=1 prints the table, KORVO_PROOF=full tries more.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "tests/solve/ArmSearch.h"
#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

struct Row {
  std::string name;
  int arms = 0, targets = 0, solutions = 0, counted = 0;
  int missing = 0, wrong = 0;
  double pointMm = 0.0, directionRad = 0.0;
  std::string first;

  void fault(int& count, const std::string& what, const std::string& text) {
    ++count;
    if (first.empty()) first = what + "\n" + text;
  }
};

const char* const kTableHead =
    "| arms | machines | targets | solutions found | targets counted | missing | wrong |"
    " largest miss, mm per m | largest miss, rad |\n|---|---|---|---|---|---|---|---|---|\n";

std::string toText(const Row& r) {
  char text[200];
  std::snprintf(text, sizeof text, "| %s | %d | %d | %d | %d | %d | %d | %.1e | %.1e |\n",
                r.name.c_str(), r.arms, r.targets, r.solutions, r.counted, r.missing, r.wrong,
                r.pointMm, r.directionRad);
  return text;
}

/// The joints and whatever else a generated arm has, anywhere.
Values anyPosition(const KMachine& machine, Dice& dice) {
  Values values{};
  for (int i = 0; i < machine.getAxisNum(); ++i) {
    const KMachineElem& axis = *machine.getAxisElem(i + 1);
    const double low = axis.hasMin() ? axis.getMin() : -180;
    const double high = axis.hasMax() ? axis.getMax() : 180;
    values[static_cast<std::size_t>(i)] = dice.between(low, high);
  }
  return values;
}

/// The same joints but for full turns.
bool isSameTurned(const Values& a, const Values& b, double degrees) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (std::abs(std::remainder(a[i] - b[i], 360.0)) > degrees) return false;
  }
  return true;
}

bool isSame(const Values& a, const Values& b, double degrees) {
  for (std::size_t i = 0; i < 6; ++i) {
    if (!(std::abs(a[i] - b[i]) <= degrees)) return false;
  }
  return true;
}

/// How many values are inside the limits that differ from `degrees` by full turns; of an axis
/// without limits those within one turn of the start.
int turnsInside(const KMachineElem& axis, double degrees, double start) {
  const bool isEndless = !axis.hasMin() || !axis.hasMax();
  const double low = isEndless ? start - 360 : axis.getMin();
  const double high = isEndless ? start + 360 : axis.getMax();
  return static_cast<int>(std::floor((high - degrees) / 360) - std::ceil((low - degrees) / 360)) +
         1;
}

class ArmAsked {
 public:
  ArmAsked(const SphericalArm& arm, Row& row)
      : arm_(arm), row_(row), machine_(arm.load()), solver_(Machine(*machine_)) {
    ++row.arms;
  }

  const KMachine& machine() const { return *machine_; }
  SolverKind kind() const { return solver_.kind(); }

  void askFrame(const Values& made, const Values& start, const ArmSearch* search) {
    ++row_.targets;
    const FrameTarget target = frameAt(*machine_, made);
    solver_.solve(target, start, out_, Limits::ignored);
    row_.solutions += static_cast<int>(out_.size());
    for (const Solution& s : out_) verify(s, missOf(*machine_, s.values, target), target);
    expectMade(made);
    if (search) expectCount(search->count(made));
    expectTurns(target, start);
  }

  /// For tools on the last joint's line the direction leaves that joint free.
  void askDirection(const Values& made, const Values& start) {
    ++row_.targets;
    const Target target = tipAt(*machine_, made);
    solver_.solve(target, start, out_, Limits::ignored);
    row_.solutions += static_cast<int>(out_.size());
    bool isMade = false;
    for (const Solution& s : out_) {
      const Target at = tipAt(*machine_, s.values);
      verify(s, {at.tip.distanceTo(target.tip), radiansBetween(at.direction, target.direction)},
             {});
      if (s.freePlaces[0] != 5) row_.fault(row_.wrong, "the last joint is free", arm_.text);
      Values sameLast = s.values;
      sameLast[5] = made[5];
      isMade = isMade || isSameTurned(sameLast, made, sureOf(made));
    }
    if (!isMade) row_.fault(row_.missing, "the position that made the direction", arm_.text);
  }

 private:
  void verify(const Solution& s, const Residual& miss, const FrameTarget& target) {
    double size = sizeOf(*machine_, s.values, {target.frame.getOrigin(), {0, 0, 1}}) / 1000;
    row_.pointMm = std::max(row_.pointMm, miss.pointMm / size);
    row_.directionRad = std::max(row_.directionRad, miss.directionRad);
    if (miss.pointMm > 1e-9 * size) row_.fault(row_.wrong, "point missed", arm_.text);
    if (miss.directionRad > 1e-10) row_.fault(row_.wrong, "direction missed", arm_.text);
  }

  UVec3d centreAt(const Values& values) const {
    return machine_->getMatrix(*positionOf(*machine_, {values.begin(), values.end()}),
                               SphericalArm::jointOf(*machine_, 2)) *
           arm_.centre;
  }

  UVec3d axisAt(const Values& values, int joint) const {
    UVec3d direction;
    machine_->getElemAxis(*positionOf(*machine_, {values.begin(), values.end()}), joint + 1,
                          direction);
    return direction;
  }

  /// How far a position is from the nearest singular one: what the last three axes span and what
  /// the first three move the wrist centre by, as shares of the most.
  double regularity(const Values& values) const {
    UVec3d way[3];
    for (std::size_t i = 0; i < 3; ++i) {
      Values more = values, less = values;
      more[i] += 1e-3, less[i] -= 1e-3;
      way[i] = centreAt(more) - centreAt(less);
    }
    const double size = way[0].norm() * way[1].norm() * way[2].norm();
    const double shoulder = std::abs(way[0] * (way[1] ^ way[2])) / std::max(size, 1e-12);
    const double wrist = std::abs(axisAt(values, 3) * (axisAt(values, 4) ^ axisAt(values, 5)));
    return shoulder * wrist;
  }

  /// Degrees: 1e-6, or what rounding makes of a position next to a singular one.
  double sureOf(const Values& values) const {
    return std::max(1e-6, 1e-9 / std::max(regularity(values), 1e-9));
  }

  void expectMade(const Values& made) {
    const double sure = sureOf(made);
    const auto isMade = [&](const Solution& s) { return isSameTurned(s.values, made, sure); };
    if (std::none_of(out_.begin(), out_.end(), isMade)) {
      row_.fault(row_.missing, "the position that made the frame", arm_.text);
    }
    for (const Solution& s : out_) {
      if (s.isFamily()) row_.fault(row_.wrong, "no family", arm_.text);
      const auto same = std::count_if(out_.begin(), out_.end(), [&](const Solution& o) {
        return isSameTurned(s.values, o.values, 1e-6);
      });
      if (same != 1) row_.fault(row_.wrong, "twice", arm_.text);
    }
  }

  void expectCount(const std::optional<int>& counted) {
    if (!counted) return;
    ++row_.counted;
    const int found = static_cast<int>(out_.size());
    const std::string both = std::to_string(found) + " of " + std::to_string(*counted);
    if (found < *counted) row_.fault(row_.missing, both, arm_.text);
    if (found > *counted) row_.fault(row_.wrong, both, arm_.text);
  }

  /// Inside the limits: of every position all turns that fit.
  void expectTurns(const FrameTarget& target, const Values& start) {
    std::vector<Solution> kept;
    solver_.solve(target, start, kept);
    std::size_t expected = 0;
    for (const Solution& s : out_) {
      std::size_t turns = 1;
      for (std::size_t i = 0; i < 6; ++i) {
        turns *= static_cast<std::size_t>(std::max(
            0,
            turnsInside(*machine_->getAxisElem(static_cast<int>(i) + 1), s.values[i], start[i])));
      }
      expected += turns;
    }
    if (kept.size() < expected) row_.fault(row_.missing, "turns", arm_.text);
    if (kept.size() > expected) row_.fault(row_.wrong, "turns", arm_.text);
    for (std::size_t i = 1; i < kept.size(); ++i) {
      if (isSame(kept[i - 1].values, kept[i].values, 1e-6)) {
        row_.fault(row_.wrong, "turn twice", arm_.text);
      }
    }
  }

  const SphericalArm& arm_;
  Row& row_;
  std::unique_ptr<KMachine> machine_;
  Solver solver_;
  std::vector<Solution> out_;
};

struct Make {
  const char* name;
  ArmWishes wishes;
};

class SolverArm : public testing::TestWithParam<Make> {
 protected:
  static void TearDownTestSuite() {
    if (isReportWanted()) std::cout << kTableHead << table_;
    table_.clear();
  }

  static void report(Row& row, const std::string& name) {
    row.name = name;
    table_ += toText(row);
    EXPECT_EQ(row.missing + row.wrong, 0) << toText(row) << row.first;
  }

  static inline std::string table_;
};

TEST_P(SolverArm, GivesThePositionThatMadeAFrameAndAsManyAsASearchCounts) {
  Row row;
  const int arms = std::max(3, proofCount(8, 400));
  for (int i = 0; i < arms; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const SphericalArm arm = sphericalArm(dice, GetParam().wishes);
    ArmAsked asked(arm, row);
    ASSERT_EQ(asked.kind(), SolverKind::arm) << arm.text;
    Values start = anyPosition(asked.machine(), dice);
    const ArmSearch search(asked.machine(), arm, start);
    for (int k = 0; k < 3; ++k) {
      Values made = anyPosition(asked.machine(), dice);
      std::copy(start.begin() + 6, start.end(), made.begin() + 6);
      asked.askFrame(made, start, &search);
    }
  }
  report(row, GetParam().name);
  EXPECT_GT(row.counted, row.targets / 4);  // the others are next to a fold
}

TEST_P(SolverArm, GivesThePositionThatMadeAFrameOrADirection) {
  Row row;
  const int arms = proofCount(100, 10000);
  for (int i = 0; i < arms; ++i) {
    Dice dice(static_cast<unsigned>(1000 + i));
    const SphericalArm arm = sphericalArm(dice, GetParam().wishes);
    ArmAsked asked(arm, row);
    for (int k = 0; k < 10; ++k) {
      const Values start = anyPosition(asked.machine(), dice);
      Values made = anyPosition(asked.machine(), dice);
      std::copy(start.begin() + 6, start.end(), made.begin() + 6);
      asked.askFrame(made, start, nullptr);
      if (GetParam().wishes.isCoaxial) asked.askDirection(made, start);
    }
  }
  report(row, std::string(GetParam().name) + ", without count");
}

INSTANTIATE_TEST_SUITE_P(
    Arms, SolverArm,
    testing::Values(Make{"Usual", {.isUsual = true, .isCoaxial = true}},
                    Make{"UsualWithLimits", {.isUsual = true, .hasLimits = true}}, Make{"Any", {}},
                    Make{"AnyCoaxial", {.isCoaxial = true}},
                    Make{"AnyWithLimits", {.hasLimits = true}}, Make{"OnARail", {.hasRail = true}},
                    Make{"WithATable", {.hasTable = true, .isCoaxial = true}},
                    Make{"OnARailWithATable",
                         {.hasRail = true, .hasTable = true, .hasLimits = true}}),
    [](const auto& make) { return std::string(make.param.name); });

}  // namespace
}  // namespace korvo::test
