// Arms at positions where joints lose their effect, exactly and nearly: straight wrist, wrist
// centre over the first axis, stretched or folded elbow. Every branch of a target a little away is
// there. KORVO_REPORT=1 prints the table, KORVO_PROOF=full tries ten million with those of
// Solver_singular_test.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <numbers>
#include <optional>
#include <string>
#include <vector>

#include "tests/solve/ArmSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;

constexpr double kDegree = std::numbers::pi / 180.0;

/// With the elbow folded the wrist is over the first axis, too, to this share of its way from the
/// first line.
constexpr double kTwoFolds = 1e-2;

/// Degrees that rounding leaves open there: its fourth root, where it is the root at one fold.
constexpr double kOpenAtTwoFolds = 0.5;

enum class Place { wrist, overAxis, elbow };
const char* const kPlaceNames[] = {"straight wrist, or at its edge", "wrist over the first axis",
                                   "stretched or folded elbow"};

struct Row {
  long targets = 0, solutions = 0, families = 0, compared = 0, lost = 0, wrong = 0;
  double pointMm = 0.0, directionRad = 0.0;
  std::string first;
};

/// a + b cos x + c sin x through three values.
struct Wave {
  double a = 0.0, b = 0.0, c = 0.0;

  template <typename Measured>
  static Wave of(Measured measured) {
    const double at0 = measured(0.0), at90 = measured(90.0), at180 = measured(180.0);
    const double a = (at0 + at180) / 2;
    return {a, (at0 - at180) / 2, at90 - a};
  }
  double top() const { return std::atan2(c, b) / kDegree; }
  double height() const { return std::hypot(b, c); }
};

/// A position at a singular one or next to it, and one further along the same way.
struct Pair {
  Values near{};
  Values beside{};
  double by = 0.0;  ///< How far the near one is from the singular one: rad, over the axis mm.
};

double turnApart(double a, double b) { return std::abs(std::remainder(a - b, 360.0)); }

class ArmPlace {
 public:
  ArmPlace(Place place, Dice& dice, Row& row)
      : place_(place),
        dice_(dice),
        row_(row),
        arm_(sphericalArm(dice, wishesOf(place, dice))),
        machine_(arm_.load()),
        solver_(Machine(*machine_)),
        position_(positionOf(*machine_)) {}

  void ask() {
    const auto pair = place_ == Place::wrist      ? atWrist()
                      : place_ == Place::overAxis ? overAxis()
                                                  : atElbow();
    if (!pair) return;
    by_ = pair->by;
    Values start{};
    for (std::size_t i = 0; i < 6; ++i) start[i] = dice_.between(-180, 180);
    const FrameTarget target = frameAt(*machine_, pair->near);
    ++row_.targets;
    solver_.solve(target, start, here_, Limits::ignored);
    solver_.solve(frameAt(*machine_, pair->beside), start, aside_, Limits::ignored);
    row_.solutions += static_cast<long>(here_.size());
    for (const Solution& s : here_) verify(s, target);
    const double twoFolds = isAtTwoFolds(pair->near) ? kOpenAtTwoFolds : 0.0;
    if (!isCovered(pair->near,
                   twoFolds + tolerance(0.0, wristAt(pair->near), shoulderAt(pair->near))))
      fault(row_.lost, "the position that made it");
    for (const Solution& s : aside_) expectBranch(s, *pair);
  }

 private:
  static ArmWishes wishesOf(Place place, Dice& dice) {
    ArmWishes wishes;
    wishes.isCoaxial = dice.oneIn(2);
    wishes.isUsual = place == Place::elbow || dice.oneIn(3);
    wishes.isPlanar = place == Place::overAxis;
    if (place == Place::overAxis) wishes.isUsual = true;
    return wishes;
  }

  Values anyPosition() {
    Values values{};
    for (std::size_t i = 0; i < 6; ++i) values[i] = dice_.between(-180, 180);
    return values;
  }

  void put(const Values& values) {
    for (int i = 0; i < 6; ++i) (*position_)[i] = values[static_cast<std::size_t>(i)];
  }

  UVec3d centreAt(const Values& values) {
    put(values);
    return machine_->getMatrix(*position_, SphericalArm::jointOf(*machine_, 2)) * arm_.centre;
  }

  /// Line of a joint at a position: direction of length 1, a point.
  std::pair<UVec3d, UVec3d> lineAt(const Values& values, int joint) {
    put(values);
    UVec3d direction, point;
    machine_->getElemAxis(*position_, joint + 1, direction, point);
    return {direction.normalised(), point};
  }

  double anySmall(double least, double most) {
    if (dice_.oneIn(8)) return 0.0;
    const double by = std::pow(10.0, dice_.between(least, most));
    return dice_.oneIn(2) ? by : -by;
  }

  Pair aside(const Values& values, std::size_t joint, double by, double further) {
    Pair pair{values, values, std::abs(by)};
    pair.near[joint] += by / kDegree;
    pair.beside[joint] += by < 0 ? -further : further;
    return pair;
  }

  /// The angle between the fourth and the last axis is at an extreme: straight where it is 0.
  std::optional<Pair> atWrist() {
    Values values = anyPosition();
    const Wave wave = Wave::of([&](double degrees) {
      Values bent = values;
      bent[4] = degrees;
      const UVec3d fourth = lineAt(bent, 3).first;
      return fourth * lineAt(bent, 5).first;
    });
    const bool isLow = dice_.oneIn(2);
    values[4] = wave.top() + (isLow ? 180 : 0);
    const double cosine = std::abs(wave.a + (isLow ? -1 : 1) * wave.height());
    fromStraight_ = std::acos(std::min(cosine, 1.0));
    return aside(values, 4, anySmall(-15, -3), 1.0);
  }

  /// Where the way from the first line to the centre, seen along the second, has no length.
  std::optional<Pair> overAxis() {
    Values values = anyPosition();
    const auto [first, onFirst] = lineAt(values, 0);
    const UVec3d across = (first ^ lineAt(values, 1).first).normalised();
    const UVec3d foot = onFirst;
    const Wave wave = Wave::of([&](double degrees) {
      Values bent = values;
      bent[1] = degrees;
      return (centreAt(bent) - foot) * across;
    });
    const double share = -wave.a / wave.height();
    if (!(std::abs(share) < 0.9)) return {};
    values[1] = wave.top() + std::acos(share) / kDegree * (dice_.oneIn(2) ? 1 : -1);
    const double rate = wave.height() * std::sqrt(1 - share * share);  // mm for each radian
    if (rate < 100) return {};
    Pair pair = aside(values, 1, anySmall(-12, 0) / rate, 10.0 / rate / kDegree);
    pair.by *= rate;
    return pair;
  }

  /// Lines 2 and 3 are parallel: the squared distance of the centre from the second is a wave.
  std::optional<Pair> atElbow() {
    Values values = anyPosition();
    const auto [second, onSecond] = lineAt(values, 1);
    const UVec3d direction = second, point = onSecond;
    const Wave wave = Wave::of([&](double degrees) {
      Values bent = values;
      bent[2] = degrees;
      return ((centreAt(bent) - point) ^ direction).norm2();
    });
    const bool isFolded = dice_.oneIn(2);
    values[2] = wave.top() + (isFolded ? 180 : 0);
    const double distance = std::sqrt(std::max(0.0, wave.a + (isFolded ? -1 : 1) * wave.height()));
    if (distance < 100) return {};  // folded onto the second line: it has no effect either
    // The nearer the centre is to the second line, the more that one turns for the same bend.
    return aside(values, 2, anySmall(-15, -3), 1.5 * std::clamp(distance / 800, 0.1, 1.0));
  }

  // --- what has to be there

  /// Degrees that rounding leaves open next to the singular place, more where the wrist turns what
  /// is left of it into more, and `beside` for targets there. An elbow that misses its fold by
  /// 1e-12 of the size is flat (1.4e-6 rad, and ten times that where the second line is near).
  double tolerance(double beside, double wrist, double shoulder) const {
    const double root = 1e-3, over = 1e-11 / std::max(by_, 1e-30) / kDegree;
    double open = place_ == Place::elbow ? root : over;
    if (place_ != Place::wrist) open /= std::max(wrist, 1e-6);
    if (place_ == Place::wrist) open /= std::max(shoulder, 1e-9);
    return 1e-5 + beside + std::min(open, 360.0);
  }

  /// What the first three joints move the wrist centre by spans: 0 at a fold of theirs.
  double shoulderAt(const Values& values) {
    UVec3d way[3];
    for (std::size_t i = 0; i < 3; ++i) {
      Values more = values, less = values;
      more[i] += 1e-3, less[i] -= 1e-3;
      way[i] = (centreAt(more) - centreAt(less)).normalised();
    }
    return std::abs(way[0] * (way[1] ^ way[2]));
  }

  /// What the three last axes span: 0 where the wrist is straight or at its edge.
  double wristAt(const Values& values) {
    return std::abs(lineAt(values, 3).first * (lineAt(values, 4).first ^ lineAt(values, 5).first));
  }

  /// Whether a solution here has the same values, those of free joints and what follows them aside.
  bool isCovered(const Values& values, double degrees) const {
    return std::any_of(here_.begin(), here_.end(), [&](const Solution& s) {
      for (const std::size_t i : {0u, 1u, 2u, 3u, 4u, 5u}) {
        if (!isLoose(s, i) && turnApart(s.values[i], values[i]) > allowedOf(i, degrees))
          return false;
      }
      return true;
    });
  }

  /// Where rounding leaves an angle open only the joints that follow it are.
  double allowedOf(std::size_t joint, double degrees) const {
    const bool isOpen = place_ == Place::wrist      ? joint == 3 || joint == 5
                        : place_ == Place::overAxis ? joint == 0 || joint > 2
                                                    : true;
    return isOpen ? degrees : std::min(degrees, degrees_ + 1e-3);
  }

  static bool isLoose(const Solution& s, std::size_t joint) {
    for (const int place : s.freePlaces) {
      if (place == 3 && (joint == 3 || joint == 5)) return true;
      if (place >= 0 && place < 3 && (joint == static_cast<std::size_t>(place) || joint > 2)) {
        return true;
      }
    }
    return false;
  }

  /// A branch beside goes over into one here. Those that are next to another singular place, where
  /// a little way changes much, do not tell.
  void expectBranch(const Solution& beside, const Pair& pair) {
    const double near = place_ == Place::wrist ? 1e-3 : 15.0;  // a wrist turns about its centre
    const bool isMade = turnApart(beside.values[0], pair.beside[0]) < std::min(near, 1.0) &&
                        turnApart(beside.values[1], pair.beside[1]) < near &&
                        turnApart(beside.values[2], pair.beside[2]) < near;
    const double wrist = wristAt(beside.values);
    const bool isWristClear = wrist > 0.35 && (place_ != Place::elbow || wristAt(pair.near) > 0.35);
    const bool isElbowClear = beside.singular.elbowRad > 0.35;
    const bool isShoulderClear = std::abs(beside.singular.shoulderMm) > 60;
    if (place_ == Place::wrist && !isMade && !isWristClear) return;
    if (place_ == Place::overAxis && !(isWristClear && isElbowClear)) return;
    if (place_ == Place::elbow && !(isMade && isWristClear && isShoulderClear)) return;
    ++row_.compared;
    // A degree of the wrist, 10 mm or 1.5 degrees of the elbow, over the sines left clear above. An
    // edge next to the straight wrist is met across it.
    const bool isAcross = place_ == Place::wrist && fromStraight_ > 1e-6 && fromStraight_ < 0.4;
    degrees_ = place_ == Place::wrist ? (isAcross ? 181 : 12) : 40;
    if (!isCovered(beside.values, tolerance(degrees_, wrist, 1.0)))
      fault(row_.lost, "a branch beside");
    degrees_ = 0.0;
  }

  bool isAtTwoFolds(const Values& values) {
    const auto [first, onFirst] = lineAt(values, 0);
    const UVec3d across = (first ^ lineAt(values, 1).first).normalised();
    const UVec3d way = centreAt(values) - onFirst;
    return place_ == Place::elbow && std::abs(way * across) < kTwoFolds * way.norm();
  }

  void verify(const Solution& s, const FrameTarget& target) {
    row_.families += s.isFamily();
    const Residual miss = missOf(*machine_, s.values, target);
    const double size = sizeOf(*machine_, s.values, {target.frame.getOrigin(), {0, 0, 1}}) / 1000;
    row_.pointMm = std::max(row_.pointMm, miss.pointMm / size);
    row_.directionRad = std::max(row_.directionRad, miss.directionRad);
    if (miss.pointMm > 1e-9 * size) fault(row_.wrong, "point missed");
    if (miss.directionRad > 1e-10) fault(row_.wrong, "direction missed");
    if (s.isFamily() && by_ > 1e-9) fault(row_.wrong, "no family");
  }

  void fault(long& count, const std::string& what) {
    ++count;
    if (!row_.first.empty()) return;
    char place[40];
    std::snprintf(place, sizeof place, ": by %.3g\n", by_);
    row_.first = what + place + arm_.text;
  }

  Place place_;
  Dice& dice_;
  Row& row_;
  SphericalArm arm_;
  std::unique_ptr<KMachine> machine_;
  Solver solver_;
  Position position_;
  double by_ = 0.0;
  double degrees_ = 0.0;
  double fromStraight_ = 0.0;
  std::vector<Solution> here_, aside_;
};

const char* const kTableHead =
    "| singular arms | targets | solutions | families | branches compared | lost | wrong |"
    " largest miss, mm per m | largest miss, rad |\n"
    "|---|---|---|---|---|---|---|---|---|\n";

std::string toText(const std::string& name, const Row& r) {
  char text[200];
  std::snprintf(text, sizeof text, "| %s | %ld | %ld | %ld | %ld | %ld | %ld | %.1e | %.1e |\n",
                name.c_str(), r.targets, r.solutions, r.families, r.compared, r.lost, r.wrong,
                r.pointMm, r.directionRad);
  return text;
}

class SolverArmAtSingularPlaces : public testing::TestWithParam<Place> {
 protected:
  static void TearDownTestSuite() {
    if (isReportWanted()) std::cout << kTableHead << table_;
    table_.clear();
  }

  static inline std::string table_;
};

TEST_P(SolverArmAtSingularPlaces, LosesNoBranch) {
  constexpr int kTargets = 50;  // each arm
  Row row;
  const int arms = proofCount(2500, 2000000) / kTargets;
  for (int i = 0; i < arms; ++i) {
    Dice dice(static_cast<unsigned>(i));
    ArmPlace place(GetParam(), dice, row);
    for (int k = 0; k < kTargets; ++k) place.ask();
  }
  const std::string name = kPlaceNames[static_cast<int>(GetParam())];
  table_ += toText(name, row);
  EXPECT_EQ(row.lost + row.wrong, 0) << toText(name, row) << row.first;
  EXPECT_GT(row.compared, row.targets / 2);
}

std::string placeName(const testing::TestParamInfo<Place>& place) {
  constexpr const char* names[] = {"Wrist", "OverTheFirstAxis", "Elbow"};
  return names[static_cast<int>(place.param)];
}

INSTANTIATE_TEST_SUITE_P(Arms, SolverArmAtSingularPlaces,
                         testing::Values(Place::wrist, Place::overAxis, Place::elbow), placeName);

}  // namespace
}  // namespace korvo::test
