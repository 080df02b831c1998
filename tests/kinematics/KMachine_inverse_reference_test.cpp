// Published positions of a trunnion, both ways to each tool.
#include <algorithm>
#include <iostream>

#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;

struct Row {
  UVec3d point, direction;
  Numbers positions[2];  ///< X Y Z A C
};

// Table A (about X) carrying C (about Z), C through (10, -20), A through (10, -35): the xyzac-trt
// geometry of LinuxCNC (docs/src/motion/5-axis-kinematics.adoc) with x-rot-point 10, y-rot-point
// -20, z-rot-point 5, y-offset 30, z-offset -40. From its inverse A = +-acos(kz),
// C = atan2(+-kx, -+ky), printed to 5e-10.
const Row kRows[] = {
    {{25, 40, 60},
     {1, 1, 1},
     {{41.819805153, 39.628045328, 87.644443190, 54.735610317, 135},
      {-21.819805153, -54.269061479, 38.654648334, -54.735610317, -45}}},
    {{25, 40, 60}, {0, -1, 0}, {{25, 105, -65, 90, 0}, {-5, -85, -125, -90, -180}}},
    {{25, 40, 60},
     {-0.3, 0.2, 0.9},
     {{-48.243520604, -1.828745754, 72.078702472, 21.831868968, -123.690067526},
      {68.243520604, -33.868001544, 49.765649332, -21.831868968, 56.309932474}}},
    {{-10, 5, 0},
     {0.0001, 0, 1},
     {{35, 0.003500050, 0.000999825, 0.005729578, 90},
      {-15, -40.003499750, -0.005000175, -0.005729578, -90}}},
    {{0, 0, 0},
     {0.6, 0, -0.8},
     {{30, 47, -51, 143.130102354, 90}, {-10, 21, -87, -143.130102354, -90}}},
};

// Next to the singular direction (row 4) C takes 1e4 times the rounding of the direction: 1e-12.
constexpr double kPrinted = 5.1e-10;

class TrunnionInverse : public InverseTest {
 protected:
  TrunnionInverse()
      : machine(table("rotation=A,4,x,0,0,0,10,-35\nrotation=C,6,z,0,0,10,-20,0\n")) {}

  KMachine machine;
};

double largestDifference(const Numbers& a, const Numbers& b) {
  double largest = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) largest = std::max(largest, std::abs(a[i] - b[i]));
  return largest;
}

TEST_F(TrunnionInverse, EachPublishedPositionIsSolvedFromNearIt) {
  double largest = 0.0;
  for (const Row& row : kRows) {
    for (const Numbers& published : row.positions) {
      Numbers start = published;
      const double away[] = {7, -5, 300, 0.5, -0.25};
      for (std::size_t i = 0; i < 5; ++i) start[i] += away[i];
      for (const int strategy : {0, 1, 2}) {
        machine.setStrategy(strategy);
        // Next to the singular direction C hardly matters for the turn of A: strategy 2 may go
        // the other way from here.
        if (strategy == 2 && row.direction.x == 0.0001) continue;
        const Solved s = solve(machine, start, row.point, row.direction);
        EXPECT_EQ(s.code, 0);
        EXPECT_THAT(s.v, AllNear(published, kPrinted)) << "strategy " << strategy;
        largest = std::max(largest, largestDifference(s.v, published));
      }
    }
  }
  RecordProperty("largest_difference", std::to_string(largest));
  std::cout << "trunnion AC, inverse rows: largest difference " << largest << "\n";
}

/// `v` with its rotary values moved by full turns to the nearest ones of `to`.
Numbers turnedNear(Numbers v, const Numbers& to) {
  for (const std::size_t i : {3, 4}) v[i] += 360 * std::round((to[i] - v[i]) / 360);
  return v;
}

TEST_F(TrunnionInverse, TheListHasBothPublishedWaysAndNoOther) {
  for (const Row& row : kRows) {
    Entries entries;
    EXPECT_EQ(machine.getPossibleConfigs(row.direction, row.point, entries.list, 1), 0);
    int found[2] = {};
    for (const Numbers& v : entries.numbers()) {
      const bool isFirst = largestDifference(turnedNear(v, row.positions[0]), row.positions[0]) <
                           largestDifference(turnedNear(v, row.positions[1]), row.positions[1]);
      const Numbers& published = row.positions[isFirst ? 0 : 1];
      EXPECT_THAT(turnedNear(v, published), AllNear(published, kPrinted));
      ++found[isFirst ? 0 : 1];
    }
    EXPECT_GT(found[0], 0);
    EXPECT_GT(found[1], 0);
  }
}

// At the singular direction itself C is free: it stays.
TEST_F(TrunnionInverse, TheSingularDirectionKeepsC) {
  const Solved s = solve(machine, {0, 0, 0, 30, 77}, UVec3d(25, 40, 60), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code, 0);
  EXPECT_NEAR(s.v[3], 0, 1e-12);
  EXPECT_EQ(s.v[4], 77);
  EXPECT_THAT(tipAt(machine, s.v).point, Near(UVec3d(25, 40, 60), 1e-10));
}

}  // namespace
}  // namespace korvo::test
