#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include <kdl/frames.hpp>

#include "tests/rotations/Turning.h"

// What the closed form finds, against a search that knows nothing of it: a grid over both angles,
// each lowest place of it followed down. The turning is that of Orocos KDL.
namespace korvo::rotations {
namespace {

using namespace test;

KDL::Vector kdl(const Vec3& v) { return {v[0], v[1], v[2]}; }

double norm(const KDL::Vector& v) { return std::sqrt(dot(v, v)); }

/// Turned about any axis, by KDL's turn about Z in a frame whose Z is the axis.
KDL::Vector turned(const KDL::Vector& v, const KDL::Vector& axis, double angle) {
  const KDL::Vector z = axis / norm(axis);
  const KDL::Vector aside = std::fabs(z.x()) < 0.5 ? KDL::Vector(1, 0, 0) : KDL::Vector(0, 1, 0);
  const KDL::Vector across = z * aside;
  const KDL::Vector x = across / norm(across);
  const KDL::Rotation frame(x, z * x, z);
  return frame * (KDL::Rotation::RotZ(angle) * frame.Inverse(v));
}

struct Task {
  KDL::Vector from, to, axis1, axis2;

  double miss(double a1, double a2) const {
    return norm(turned(turned(from, axis2, a2), axis1, a1) - to);
  }
};

constexpr int kGrid = 180;
constexpr double kStep = 2 * kPi / kGrid;

/// Misses at all grid points: |R2 from - R1^-1 to|.
std::vector<double> misses(const Task& task) {
  std::vector<KDL::Vector> first, second;
  for (int i = 0; i < kGrid; ++i) {
    first.push_back(turned(task.to, task.axis1, -i * kStep));
    second.push_back(turned(task.from, task.axis2, i * kStep));
  }
  std::vector<double> result;
  for (const KDL::Vector& t : first) {
    for (const KDL::Vector& u : second) result.push_back(norm(t - u));
  }
  return result;
}

bool isLowest(const std::vector<double>& grid, int i, int j) {
  const auto at = [&](int a, int b) {
    return grid[((a + kGrid) % kGrid) * kGrid + (b + kGrid) % kGrid];
  };
  for (int a = -1; a <= 1; ++a) {
    for (int b = -1; b <= 1; ++b) {
      if (at(i + a, j + b) < at(i, j)) return false;
    }
  }
  return true;
}

/// Steps to the best neighbour until there is none, then with half the step.
TwoAngles followedDown(const Task& task, TwoAngles at) {
  double least = task.miss(at.a1, at.a2);
  for (double step = kStep; step > 1e-11;) {
    TwoAngles best = at;
    for (int k = 0; k < 8; ++k) {
      const double way = k * kPi / 4;
      const TwoAngles next{at.a1 + step * std::cos(way), at.a2 + step * std::sin(way)};
      const double miss = task.miss(next.a1, next.a2);
      if (miss < least) least = miss, best = next;
    }
    if (best == at) step /= 2;
    at = best;
  }
  return at;
}

double apart(const TwoAngles& a, const TwoAngles& b) {
  return std::max(angleBetween(a.a1, b.a1), angleBetween(a.a2, b.a2));
}

std::vector<TwoAngles> searched(const Task& task) {
  std::vector<TwoAngles> found;
  const std::vector<double> grid = misses(task);
  for (int i = 0; i < kGrid; ++i) {
    for (int j = 0; j < kGrid; ++j) {
      if (grid[i * kGrid + j] > 4 * kStep || !isLowest(grid, i, j)) continue;
      const TwoAngles pair = followedDown(task, {i * kStep, j * kStep});
      bool isNew = task.miss(pair.a1, pair.a2) < 1e-8;
      for (const TwoAngles& other : found) isNew = isNew && apart(other, pair) > 1e-4;
      if (isNew) found.push_back(pair);
    }
  }
  return found;
}

struct Kind {
  const char* name;
  Vec3 axis1, axis2;  ///< Null: at random.
  bool reachable;     ///< The target is one that the axes reach; else it may be any.
};

class TwoAxesSearch : public testing::TestWithParam<Kind> {
 protected:
  std::mt19937 random_{20261121};
  std::normal_distribution<double> normal_;

  Vec3 anyUnit() { return unit({normal_(random_), normal_(random_), normal_(random_)}); }
  Vec3 orAny(const Vec3& v) { return length(v) > 0 ? unit(v) : anyUnit(); }
};

TEST_P(TwoAxesSearch, FindsTheSamePairs) {
  int pairs = 0;
  for (int n = 0; n < 12; ++n) {
    Joint joint{anyUnit(), orAny(GetParam().axis1), orAny(GetParam().axis2)};
    const TwoAngles turn{3 * normal_(random_), 3 * normal_(random_)};
    const Vec3 to = GetParam().reachable ? rounded(joint.reached(turn)) : anyUnit();
    const Task task{kdl(joint.from), kdl(to), kdl(joint.axis1), kdl(joint.axis2)};
    const TwoAnglesList solved = joint.to(to);
    const std::vector<TwoAngles> found = searched(task);
    EXPECT_EQ(static_cast<std::size_t>(solved.count), found.size()) << n;
    for (const TwoAngles& pair : solved) {
      ++pairs;
      EXPECT_LT(task.miss(pair.a1, pair.a2), 1e-12) << n;
      double nearest = kInf;
      for (const TwoAngles& other : found) nearest = std::min(nearest, apart(pair, other));
      EXPECT_LT(nearest, 1e-5) << n;
    }
  }
  EXPECT_GT(pairs, 8);
}

INSTANTIATE_TEST_SUITE_P(
    Axes, TwoAxesSearch,
    testing::Values(Kind{"SquareReachable", kZ, kX, true}, Kind{"SquareAny", kX, kY, false},
                    Kind{"SlantedReachable", kZ, {0, 1, 1}, true},
                    Kind{"SlantedAny", kZ, {0, -1, 1}, false}, Kind{"SkewReachable", {}, {}, true},
                    Kind{"SkewAny", {}, {}, false}, Kind{"NarrowReachable", kZ, {0.3, 0, 1}, true}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace korvo::rotations
