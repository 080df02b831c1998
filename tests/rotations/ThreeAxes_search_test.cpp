#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "platform/rotations/ThreeAxes.h"
#include "tests/rotations/TurningPoints.h"
#include "tests/support/Draws.h"

/// How many triples there are, counted in another way: along the first angle, with the third one
/// from the height along line 2, the distance from it changes its sign at every triple.
namespace korvo::rotations {
namespace {

using namespace test;
using korvo::test::drawsOf;

/// Height along a line and squared distance from it.
struct Seen {
  double height;
  double square;

  Seen(const Line& line, const Vec3& p) {
    const Vec3 v = minus(p, line.point);
    height = dot(v, unit(line.direction));
    square = dot(v, v) - height * height;
  }
};

class Count {
 public:
  Count(const Arm& arm, const Vec3& to, int steps) : arm_(arm), to_(to), steps_(steps) {
    // The height of the point turned about line 3: mean + wave cos(a3 - phase).
    const double h0 = seenX(0).height, h1 = seenX(kPi / 2).height, h2 = seenX(kPi).height;
    mean_ = 0.5 * (h0 + h2);
    wave_ = std::hypot(h0 - mean_, h1 - mean_);
    phase_ = std::atan2(h1 - mean_, h0 - mean_);
  }

  int solutions() const {
    int count = 0;
    for (int i = 0; i < steps_; ++i) count += changesBetween(at(i), at(i + 1));
    return count;
  }

 private:
  double at(int i) const { return 2 * kPi * i / steps_ - kPi + 0.0123; }
  Seen seenX(double a3) const { return {arm_.l2, point(arm_.l3, arm_.from, a3)}; }
  Seen seenY(double a1) const { return {arm_.l2, point(arm_.l1, to_, -a1)}; }

  static Vec3 point(const Line& line, const Vec3& p, double angle) {
    const Vec3 k = unit(line.direction), v = minus(p, line.point);
    const Vec3 along = scaled(k, dot(k, v)), across = minus(v, along);
    return plus(line.point, plus(along, plus(scaled(across, std::cos(angle)),
                                             scaled(cross(k, across), std::sin(angle)))));
  }

  double cosine(double a1) const { return (seenY(a1).height - mean_) / wave_; }
  bool isInside(double a1) const { return std::fabs(cosine(a1)) <= 1; }

  double difference(double a1, int side) const {
    const double a3 = phase_ + side * std::acos(std::clamp(cosine(a1), -1.0, 1.0));
    return seenX(a3).square - seenY(a1).square;
  }

  /// The last place inside on the way from an inner to an outer one.
  double border(double in, double out) const {
    for (int i = 0; i < 60; ++i) {
      const double mid = 0.5 * (in + out);
      (isInside(mid) ? in : out) = mid;
    }
    return in;
  }

  int changesBetween(double a, double b) const {
    const bool inA = isInside(a), inB = isInside(b);
    if (!inA && !inB) return 0;
    const double low = inA ? a : border(b, a), high = inB ? b : border(a, b);
    int count = 0;
    for (const int side : {1, -1}) {
      count += (difference(low, side) < 0) != (difference(high, side) < 0);
    }
    return count;
  }

  Arm arm_;
  Vec3 to_;
  int steps_;
  double mean_, wave_, phase_;
};

struct Tally {
  int compared = 0;
  int different = 0;
  int unsure = 0;
  int byCount[5]{};
};

constexpr int kSteps = 2000;
constexpr int kFineSteps = 7001;
constexpr int kVeryFineSteps = 100003;

/// Two signs that change between two steps are none for the search.
bool hasPairWithin(const ThreeAnglesList& found, double apart) {
  for (int i = 0; i < found.count; ++i) {
    for (int j = 0; j < i; ++j) {
      if (isSame(found.solutions[i].a1, found.solutions[j].a1, apart)) return true;
    }
  }
  return false;
}

template <class MakeArm>
Tally tally(int arms, unsigned seed, const MakeArm& make) {
  Dice dice(seed);
  Tally t;
  for (int i = 0; i < drawsOf(arms); ++i) {
    const Arm arm = make(dice);
    const Vec3 to = arm.at(dice.angle(), dice.angle(), dice.angle());
    const ThreeAnglesList found = arm.to(to);
    int counted = Count(arm, to, kSteps).solutions();
    if (counted != Count(arm, to, kFineSteps).solutions() || counted != found.count) {
      counted = Count(arm, to, kVeryFineSteps).solutions();
    }
    if (hasPairWithin(found, 4 * kPi / kVeryFineSteps)) {
      ++t.unsure;
      continue;
    }
    ++t.compared;
    ++t.byCount[found.count];
    t.different += found.count != counted;
  }
  return t;
}

TEST(ThreeAxesSearch, FindsAsManyForLinesAnywhere) {
  const Tally t = tally(
      400, 21, [](Dice& d) { return Arm{d.point(500), d.line(500), d.line(500), d.line(500)}; });
  EXPECT_EQ(t.different, 0);
  EXPECT_LT(t.unsure, 10);
  EXPECT_GT(t.byCount[2], drawsOf(50));
  EXPECT_GT(t.byCount[4], drawsOf(20));
}

TEST(ThreeAxesSearch, FindsAsManyForLinesThatMeetOrAreParallel) {
  const Tally t = tally(200, 22, [](Dice& d) {
    const Vec3 k = d.direction(), p = d.point(500);
    const Line first{k, p};
    const Line second = d.coin() ? Line{k, d.point(500)} : Line{d.direction(), p};
    return Arm{d.point(500), first, second, d.line(500)};
  });
  EXPECT_EQ(t.different, 0);
  EXPECT_LT(t.unsure, 10);
}

TEST(ThreeAxesSearch, FindsAsManyForArmsOutOfTrue) {
  for (const double tilt : {0.3, 0.1, 0.02}) {
    const Tally t = tally(100, 23, [tilt](Dice& d) {
      Arm arm = usualArm(d.between(-100, 200), d.between(-150, 150), d.between(100, 500),
                         d.between(100, 500), d.between(-100, 100));
      arm.l3.direction = tilted(arm.l3.direction, tilt, d);
      arm.l2.direction = tilted(arm.l2.direction, tilt, d);
      return arm;
    });
    EXPECT_EQ(t.different, 0) << tilt;
    EXPECT_LT(t.unsure, 10) << tilt;
  }
}

// --- Parallel lines 2 and 3: the height decides on a1 alone, then every a3 is tried.

int usualCount(const Arm& arm, const Vec3& to, int steps) {
  const auto seen = [&](const Line& line, const Vec3& p, double angle) {
    return Seen(arm.l2, rounded(turnedAbout(line, longOf(p), angle)));
  };
  const double height = Seen(arm.l2, arm.from).height;
  const auto off = [&](double a1) { return seen(arm.l1, to, -a1).height - height; };
  int count = 0;
  for (int i = 0; i < steps; ++i) {
    double low = 2 * kPi * i / steps + 0.01, high = 2 * kPi * (i + 1) / steps + 0.01;
    const bool rises = off(low) < 0;
    if ((off(high) < 0) == rises) continue;
    for (int k = 0; k < 50; ++k)
      ((off(0.5 * (low + high)) < 0) == rises ? low : high) = 0.5 * (low + high);
    const double square = seen(arm.l1, to, -low).square;
    for (int j = 0; j < steps; ++j) {
      const auto over = [&](int s) {
        return seen(arm.l3, arm.from, 2 * kPi * s / steps + 0.01).square > square;
      };
      count += over(j) != over(j + 1);
    }
  }
  return count;
}

TEST(ThreeAxesSearch, FindsAsManyForUsualArms) {
  Dice d(24);
  int unsure = 0;
  for (int i = 0; i < drawsOf(200); ++i) {
    Arm arm = usualArm(d.between(-100, 200), d.between(-150, 150), d.between(100, 500),
                       d.between(100, 500), d.between(-100, 100));
    if (d.coin()) arm.l2.direction = arm.l3.direction = tilted(arm.l2.direction, 0.5, d);
    const Vec3 to = arm.at(d.angle(), d.angle(), d.angle());
    const int coarse = usualCount(arm, to, 300), fine = usualCount(arm, to, 701);
    EXPECT_GE(arm.to(to).count, 1);  // the position that made the point
    if (coarse != fine || fine == 0) {
      ++unsure;
      continue;
    }
    EXPECT_EQ(arm.to(to).count, fine);
  }
  EXPECT_LT(unsure, 20);
}

}  // namespace
}  // namespace korvo::rotations
