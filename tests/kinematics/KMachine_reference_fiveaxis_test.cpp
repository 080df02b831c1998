#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "tests/kinematics/KMachine_reference.h"

// Five-axis machines against the closed formulas of LinuxCNC's trunnion kinematics (docs
// "5-axis kinematics", xyzac-trt and xyzbc-trt; formulas only) with the conventional directions of
// ISO 841: a positive rotary value turns the tool counter-clockwise about the work. The rows were
// computed from these formulas and, independently, as products of exponentials; both agree to
// 1.7e-13 over 2000 random positions.

namespace korvo::test::reference {
namespace {

// Table C through (xr, yr) on cradle A through (yr + dy, zr + dz), for
// (xr, yr, zr, dy, dz) = (10, -20, 5, 30, -40).
constexpr const char* kTrunnionAC =
    "frame=z\n"
    "rotation=A,x,0,0,10,10,-35\n"
    "rotation=C,z,0,0,10,-20,5\n"
    "part=x,y,0,0,0\n"
    "lien=BATI\n"
    "axis=X,x\naxis=Y,y\naxis=Z,z\n"
    "tool=z,0,0,0\n";

/// w = Rz(c)@(10, -20) Rx(a)@(10, -35) (X, Y, Z), k = Rz(c) Rx(a) (0, 0, 1) written out.
ToolPlace trunnionAC(const std::vector<double>& v) {
  const Pose table = about(10, -20, 0, rz(v[4])) * about(0, 10, -35, rx(v[3]));
  const double a = v[3] * std::numbers::pi / 180.0;
  const double c = v[4] * std::numbers::pi / 180.0;
  return {table.at({v[0], v[1], v[2]}),
          {std::sin(c) * std::sin(a), -std::cos(c) * std::sin(a), std::cos(a)}};
}

struct Row {
  std::vector<double> position;
  UVec3d point;
  UVec3d direction;
};

class TrunnionACRows : public testing::Test {
 protected:
  std::unique_ptr<KMachine> machine = fromText(kTrunnionAC, 2);
};

TEST_F(TrunnionACRows, ForwardRowsToHalfTheirLastDigit) {
  const Row rows[] = {
      {{0, 0, 0, 0, 0}, {0, 0, 0}, {0, 0, 1}},
      {{100, 50, -30, 0, 90}, {-60, 70, -30}, {0, 0, 1}},
      {{100, 50, -30, 90, 0}, {100, 5, 5}, {0, -1, 0}},
      {{100, 50, -30, -35, 120},
       {-91.840680135, 25.125304364, -53.847297233},
       {-0.496731764892, -0.286788218176, 0.819152044289}},
      {{-75, 12.5, 200, 60, -200},
       {148.792304478, 112.805348535, 84.665063509},
       {0.296198132726, 0.813797681349, 0.5}},
      {{1, 2, 3, -110, 359},
       {2.195891640, 48.591127968, -40.479224480},
       {0.016399897544, 0.939549501048, -0.342020143326}},
  };
  LargestError error("trunnion AC, forward rows");
  for (const Row& row : rows) {
    const ToolPlace seen = toolAt(*machine, row.position);
    error.compare(seen, {row.point, row.direction}, 5.01e-10, 5.01e-13, rowText(row.position));
    error.compare(seen, trunnionAC(row.position), kPointMm, kDirection, rowText(row.position));
  }
}

// The inverse table read forward. Its machine positions are printed to 5e-10 mm and degrees: three
// lengths, and two angles (8.7e-12 rad each) at most 200 mm away from the point.
TEST_F(TrunnionACRows, InverseRowsLeadBackToTheirTool) {
  const Row rows[] = {
      {{41.819805153, 39.628045328, 87.644443190, 54.735610317, 135}, {25, 40, 60}, {1, 1, 1}},
      {{-21.819805153, -54.269061479, 38.654648334, -54.735610317, -45}, {25, 40, 60}, {1, 1, 1}},
      {{25, 105, -65, 90, 0}, {25, 40, 60}, {0, -1, 0}},
      {{-5, -85, -125, -90, -180}, {25, 40, 60}, {0, -1, 0}},
      {{-48.243520604, -1.828745754, 72.078702472, 21.831868968, -123.690067526},
       {25, 40, 60},
       {-0.3, 0.2, 0.9}},
      {{68.243520604, -33.868001544, 49.765649332, -21.831868968, 56.309932474},
       {25, 40, 60},
       {-0.3, 0.2, 0.9}},
      {{35, 0.003500050, 0.000999825, 0.005729578, 90}, {-10, 5, 0}, {0.0001, 0, 1}},
      {{-15, -40.003499750, -0.005000175, -0.005729578, -90}, {-10, 5, 0}, {0.0001, 0, 1}},
      {{30, 47, -51, 143.130102354, 90}, {0, 0, 0}, {0.6, 0, -0.8}},
      {{-10, 21, -87, -143.130102354, -90}, {0, 0, 0}, {0.6, 0, -0.8}},
  };
  const double point = 3 * 5e-10 + 2 * 8.7e-12 * 200;
  LargestError error("trunnion AC, inverse rows");
  for (const Row& row : rows) {
    const UVec3d k = row.direction / std::sqrt(row.direction * row.direction);
    error.compare(toolAt(*machine, row.position), {row.point, k}, point, 2 * 8.8e-12,
                  rowText(row.position));
  }
}

TEST_F(TrunnionACRows, EqualsTheFormulaAtRandomPositions) {
  RandomValues random;
  LargestError error("trunnion AC, formula");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const auto v = random({{-500, 500}, {-500, 500}, {-500, 500}, {-180, 180}, {-400, 400}});
    error.compare(toolAt(*machine, v), trunnionAC(v), kPointMm, kDirection, rowText(v));
  }
}

TEST_F(TrunnionACRows, ToolFrameTurnsAsTheTableDoes) {
  RandomValues random;
  LargestError error("trunnion AC, tool frame");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const auto v = random({{-500, 500}, {-500, 500}, {-500, 500}, {-180, 180}, {-400, 400}});
    const Pose frame = poseOf(machine->getMatrix_H2T(*Position(*machine, v)));
    error.compareRotation(frame, rz(v[4]) * rx(v[3]), kDirection, rowText(v));
    error.compare({frame.column(3), frame.column(2)}, trunnionAC(v), kPointMm, kDirection,
                  rowText(v));
  }
}

/// The position that puts tool 1 on `w` with A = a, C = 0, by the inverse of the formula above.
std::vector<double> atC0(const UVec3d& w, double a) {
  const UVec3d joints = about(0, 10, -35, rx(-a)).at(w);
  return {joints.x, joints.y, joints.z, a, 0};
}

/// Distance from the line y = 40, z = 60 of the tool point, t along a straight move of the axes.
double deviation(const KMachine& machine, const std::vector<double>& from,
                 const std::vector<double>& to, double t) {
  std::vector<double> v;
  for (std::size_t i = 0; i < from.size(); ++i) v.push_back((1 - t) * from[i] + t * to[i]);
  const UVec3d p = toolAt(machine, v).point;
  return std::hypot(p.y - 40, p.z - 60);
}

// How far the tool leaves the line from (25, 40, 60) to (45, 40, 60) when the axes move straight
// while A goes from 30 degrees to the row's angle, on the same machine; printed to 1e-6 mm. With
// 10,001 samples the largest one is within 1e-8 of its size of the true maximum.
TEST_F(TrunnionACRows, StraightMovesOfTheAxesLeaveTheLineByThePublishedAmount) {
  const std::array<double, 2> rows[] = {
      {31, 0.003793}, {35, 0.094820}, {45, 0.852300}, {60, 3.394616}, {90, 13.347125}};
  double largest = 0.0;
  for (const auto& [a2, published] : rows) {
    const auto from = atC0({25, 40, 60}, 30);
    const auto to = atC0({45, 40, 60}, a2);
    double most = 0.0;
    for (int i = 0; i <= 10000; ++i) {
      most = std::max(most, deviation(*machine, from, to, i / 10000.0));
    }
    EXPECT_NEAR(most, published, 5.1e-7) << "A to " << a2;
    largest = std::max(largest, std::abs(most - published));
  }
  RecordProperty("largest_error", std::to_string(largest));
  std::cout << "largest error, straight moves: " << largest << " mm\n";
}

// Table C on cradle B, no offsets: the joints that LinuxCNC issue 2435 expects for the work
// positions (1, 0, 2) of an XYZBC trunnion, read forward. Exact numbers.
TEST(TrunnionBCRows, ExpectedJointsOfTheTrackerLeadToTheirWorkPoint) {
  const auto machine = fromText(
      "frame=z\nrotation=B,y,0,0,0,0,0\nrotation=C,z,0,0,0,0,0\npart=x,y,0,0,0\n"
      "lien=BATI\naxis=X,x\naxis=Y,y\naxis=Z,z\ntool=z,0,0,0\n",
      2);
  const Row rows[] = {{{1, 0, 2, 0, 0}, {1, 0, 2}, {0, 0, 1}},
                      {{-2, 0, 1, 90, 0}, {1, 0, 2}, {1, 0, 0}},
                      {{0, -1, 2, 0, 90}, {1, 0, 2}, {0, 0, 1}}};
  LargestError error("trunnion BC, rows");
  for (const Row& row : rows) {
    error.compare(toolAt(*machine, row.position), {row.point, row.direction}, kPointMm, kDirection,
                  rowText(row.position));
  }
}

// The example machines against their own formulas, root leftmost: what turns under the part first.
// The arguments are in value order (X Y Z A B C and then further numbers).

struct Formula {
  const char* file;
  int version;
  std::vector<std::pair<double, double>> ranges;
  Pose (*motion)(const std::vector<double>& v);
  UVec3d zeroPoint;
};

void PrintTo(const Formula& row, std::ostream* out) { *out << row.file; }

Pose headTableMotion(const std::vector<double>& v) {
  return rz(v[4]) * shift(v[0], v[1], v[2]) * about(12.5, 0, 300, ry(v[3]));
}

/// A turn of `degrees` about (0, 1, 1): the line is turned onto Z about X, there and back.
Pose tilted(double degrees) { return rx(-45) * rz(degrees) * rx(45); }

const Formula kFormulas[] = {
    {"mill-3axis",
     2,
     {{-400, 400}, {-400, 400}, {0, 500}},
     [](const std::vector<double>& v) { return shift(v[0], v[1], v[2]); },
     {0, 0, 110}},
    {"table-ac",
     2,
     {{-400, 400}, {-400, 400}, {0, 500}, {-120, 120}, {-400, 400}},
     [](const std::vector<double>& v) {
       return rz(v[4]) * about(0, -0.5, 60, rx(v[3])) * shift(v[0], v[1], v[2]);
     },
     {0, 0, 120}},
    {"table-bc",
     2,
     {{-400, 400}, {-400, 400}, {0, 500}, {-120, 120}, {-400, 400}},
     [](const std::vector<double>& v) {
       return rz(v[4]) * about(25.4, 0, -70, ry(v[3])) * shift(v[0], v[1], v[2]);
     },
     {0, 0, 150}},
    {"head-cb-fork",
     1,
     {{0, 4000}, {0, 2500}, {-1000, 0}, {-110, 110}, {-360, 360}},
     [](const std::vector<double>& v) {
       return shift(v[0], v[1], v[2]) * rz(v[4]) * about(0.02, 0, 215, ry(v[3]));
     },
     {0, 0, 0}},
    {"head-table",
     2,
     {{-400, 400}, {-350, 350}, {-60, 500}, {-30, 110}, {-400, 400}},
     headTableMotion,
     {0, 0, 120}},
    {"head-nutating",
     1,
     {{-2000, 2000}, {-600, 600}, {0, 1500}, {-180, 180}, {-185, 185}},
     [](const std::vector<double>& v) {
       return shift(v[0], v[1], v[2]) * rz(v[4]) * about(0, 0, 260, tilted(v[3]));
     },
     {0, 0, 0}},
    {"mill-4axis",
     1,
     {{-280, 280}, {0, 560}, {-50, 510}, {-400, 400}},
     [](const std::vector<double>& v) { return ry(v[3]) * shift(v[0], v[1], v[2]); },
     {0, 80, 250}},
    {"gantry-w",
     1,
     {{0, 6000}, {-1600, 1600}, {-1250, 0}, {-100, 100}, {-200, 200}, {-1500, 0}},
     [](const std::vector<double>& v) {
       return shift(v[0], v[1], v[2] + v[5]) * rz(v[4]) * about(0, 0, 230, rx(v[3]));
     },
     {0, 0, 0}},
    {"drill-head",
     2,
     {{0, 3100}, {-1250, 1250}, {-180, 0}, {-360, 360}},
     [](const std::vector<double>& v) { return shift(v[0], v[1], v[2]) * rz(v[3]); },
     {0, 0, 0}},
};

class ExampleMachineFormula : public testing::TestWithParam<Formula> {};

TEST_P(ExampleMachineFormula, HoldsAtRandomPositions) {
  const Formula& row = GetParam();
  const auto file = std::filesystem::path(KORVO_MACHINES) / (std::string(row.file) + ".def");
  const auto machine = load(file, row.version);
  RandomValues random;
  LargestError error(row.file);
  for (int i = 0; i < kFormulaPositions; ++i) {
    const auto v = random(row.ranges);
    const Pose motion = row.motion(v);
    error.compare(toolAt(*machine, v), {motion.at(row.zeroPoint), motion.column(2)}, kPointMm,
                  kDirection, rowText(v));
    const Pose frame = poseOf(machine->getMatrix_H2T(*Position(*machine, v)));
    error.compareRotation(frame, motion, kDirection, rowText(v));
  }
}

std::string formulaName(const testing::TestParamInfo<Formula>& info) {
  std::string name = info.param.file;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Machines, ExampleMachineFormula, testing::ValuesIn(kFormulas),
                         formulaName);

// The two guns of the drill head turn with C about the spindle axis.
TEST(DrillHeadFormula, GunsTurnWithTheHeadAboutTheSpindle) {
  const auto machine = load(std::filesystem::path(KORVO_MACHINES) / "drill-head.def", 2);
  const Line guns[] = {{{0, -96, -12}, {0, 0, 1}}, {{140, 64, 38}, {-1, 0, 0}}};
  RandomValues random;
  LargestError error("drill-head, guns");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const auto v = random({{0, 3100}, {-1250, 1250}, {-180, 0}, {-360, 360}});
    for (int gun = 0; gun < 2; ++gun) {
      const Pose motion = shift(v[0], v[1], v[2]) * rz(v[3]);
      const UVec3d direction = rz(v[3]).at(guns[gun].direction);
      error.compare(toolAt(*machine, v, 2 + gun), {motion.at(guns[gun].point), direction}, kPointMm,
                    kDirection, rowText(v));
    }
  }
}

}  // namespace
}  // namespace korvo::test::reference
