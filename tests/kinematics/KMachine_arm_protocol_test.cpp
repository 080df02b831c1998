#include <gtest/gtest.h>

#include <cwctype>
#include <string>
#include <vector>

#include "tests/kinematics/KMachine_arm.h"
#include "tests/support/InCLocale.h"
#include "tests/support/LoadText.h"
#include "tests/support/TraceCapture.h"

// The trace of one arm solve, line by line: it is what people read when they set up an arm. Numbers
// are worked here, by hand or from the plane triangle of shoulder, elbow and wrist, and compared to
// the digits printed.

namespace korvo::test::arm {
namespace {

using Lines = std::vector<std::wstring>;

/// A line with every decimal number replaced by "#" and its number of decimals, and the numbers.
struct Parsed {
  std::wstring words;
  std::vector<double> numbers;
  std::vector<std::size_t> decimals;
};

double numberOf(const std::wstring& text) {
  const korvo::test::InCLocale scope;
  return std::stod(text);
}

Parsed parse(const std::wstring& line) {
  Parsed parsed;
  for (std::size_t i = 0; i < line.size();) {
    std::size_t end = i + (line[i] == L'-');
    while (end < line.size() && std::iswdigit(line[end])) ++end;
    if (end == i || end >= line.size() || line[end] != L'.' || !std::iswdigit(line[end - 1])) {
      parsed.words += line[i++];
      continue;
    }
    const std::size_t point = end++;
    while (end < line.size() && std::iswdigit(line[end])) ++end;
    parsed.numbers.push_back(numberOf(line.substr(i, end - i)));
    parsed.decimals.push_back(end - point - 1);
    parsed.words += L"#" + std::to_wstring(parsed.decimals.back());
    i = end;
  }
  return parsed;
}

/// Same words, and numbers within one unit of the last digit printed (a rounding on the edge).
bool isSame(const std::wstring& a, const std::wstring& b) {
  const Parsed x = parse(a), y = parse(b);
  if (x.words != y.words) return false;
  for (std::size_t i = 0; i < x.numbers.size(); ++i) {
    const double unit = std::pow(10.0, -static_cast<double>(x.decimals[i]));
    if (!(std::abs(x.numbers[i] - y.numbers[i]) < 1.01 * unit)) return false;
  }
  return true;
}

void expectLines(const Lines& seen, const Lines& expected) {
  for (std::size_t i = 0; i < std::max(seen.size(), expected.size()); ++i) {
    const std::wstring s = i < seen.size() ? seen[i] : L"(no line)";
    const std::wstring e = i < expected.size() ? expected[i] : L"(no line)";
    EXPECT_TRUE(isSame(s, e)) << "line " << i << "\n  seen     \"" << narrow(s)
                              << "\"\n  expected \"" << narrow(e) << '"';
  }
}

Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

std::wstring xyz(const UVec3d& v) {
  return zgeo::UTools::_formatted(L"(%.3lf, %.3lf, %.3lf)", v.x, v.y, v.z);
}

/// "(radians | degrees)" of an angle in degrees.
std::wstring angle(double degrees) {
  return zgeo::UTools::_formatted(L"(%.2f | %.1f)", degrees * kDegree, degrees);
}

/// The lines up to the wrist centre, of an arm without tool length or offset: J5, J6 and the tool
/// meet in one point, so J5 (place 5) is the ball joint's first axis.
Lines toTheWristCentre(const std::vector<double>& start, const UVec3d& pos, const UVec3d& n) {
  std::wstring values;
  for (const double v : start) {
    values += (values.empty() ? L"" : L" | ") + zgeo::UTools::_formatted(L"%+10.3lf", v);
  }
  const std::wstring zero = L"(0.000, 0.000, 0.000)";
  return {L"KMV<6> (\n--solveConfig1) [ " + values + L" ] pos" + xyz(pos) + L" dir" + xyz(n),
          L"consigne (MAC) pos: " + xyz(pos) + L" dir: " + xyz(n) + L" -> oPosRotule : " +
              xyz(pos) + L" =UNI: " + xyz(pos),
          L"oToolCenter: " + zero + L" in ToolElem coords",
          L"  TC: " + zero + L" before [OUTIL] tra. (7)",
          L"  TC: " + zero + L" before [J6] tra. (6)",
          L" Alt: " + zero + L" after [J6] tra. (6)",
          L" Alt: " + zero + L" after [OUTIL] tra. (7)",
          L"oSpindle: " + xyz(pos) + L" defined by oPos+vSpindle",
          L"oO4j3: (180.000, 240.000, 0.000)",
          L"J1 was " + angle(start[0])};
}

Lines wereAndStart(double j1, double j2, double j3) {
  const auto check = [](double degrees) {
    return angle(degrees) + zgeo::UTools::_formatted(L" (%.2f)-check", degrees * kDegree);
  };
  return {L"J1 : " + angle(j1) + L" *CHECK*", L"J2 was " + check(j2), L"J3 was " + check(j3),
          L"oO4p: (180.000, 240.000, 0.000) = oO4j3 Z-translated by +R3"};
}

/// The wrist centre in the frames of the first joint, before and after its tilt, and of the second.
Lines wristInTheArm(const UVec3d& inJ1, double radR) {
  const UVec3d turned = {inJ1.x, inJ1.z, -inJ1.y};
  const UVec3d inJ2 = {turned.x - kShoulderRadius, turned.y, turned.z - kLateral};
  return {L"oORp: " + xyz(inJ1) + L" = oPosRotule L-transformed by T10(J1)",
          L"oORp: " + xyz(turned) + L" = oORp X-rotated by -A2",
          L"oORp: " + xyz(inJ2) + L" = oORp X-translated by -D2 & Z-translated by -R2",
          L"We shall intersect 2 circles:",
          L"C4 center(400.000, 0.000, 0.000) rad4=300.0",
          zgeo::UTools::_formatted(L"CR center(0.000, 0.000, 0.000) radR=%.1lf", radR)};
}

/// The elbow on one side of the line from the shoulder to the wrist at (u, w): side -1 is the
/// branch called up.
struct Elbow {
  double j2, j3;  // degrees
};

Elbow elbow(double u, double w, int side) {
  const double r = std::hypot(u, w);
  const double inner =
      std::acos((kUpperArm * kUpperArm + r * r - kForearm * kForearm) / (2 * kUpperArm * r));
  const double j2 = std::atan2(w, u) + side * inner;
  const double forearm = std::atan2(w - kUpperArm * std::sin(j2), u - kUpperArm * std::cos(j2));
  const double j3 = forearm - j2 - std::atan2(240, 180);
  const auto half = [](double a) { return std::remainder(a, 2 * std::numbers::pi) / kDegree; };
  return {half(j2), half(j3)};
}

/// The lines from the intersection on; `wrapped` is the winner's J2 after wrapping.
Lines bothElbows(double u, double w, bool isUp, double wrapped) {
  const double r = std::hypot(u, w);
  const double x = (160000 + r * r - 90000) / 800, h = std::sqrt(r * r - x * x);
  const Elbow up = elbow(u, w, -1), down = elbow(u, w, 1);
  const auto branch = [](const wchar_t* format, double turned, double degrees) {
    return zgeo::UTools::_formatted(format, std::cos(turned * kDegree),
                                    std::sin(turned * kDegree)) +
           angle(degrees);
  };
  const std::wstring chosen = L"J2 " + angle(wrapped) + L" J3 " + angle(isUp ? up.j3 : down.j3);
  return {zgeo::UTools::_formatted(L"   u : (%.1lf, %.1lf)", x, h),
          zgeo::UTools::_formatted(L"   d : (%.1lf, %.1lf)", x, -h),
          L"J2:",
          branch(L"   u : cs(-t2)=(%.3lf, %.3lf)-> J2u: ", -up.j2, up.j2),
          branch(L"   d : cs(-t2)=(%.3lf, %.3lf)-> J2d: ", -down.j2, down.j2),
          L"J3:",
          branch(L"   u : cs(+t3)=(%.3lf, %.3lf)-> J3u: ", up.j3, up.j3),
          branch(L"   d : cs(+t3)=(%.3lf, %.3lf)-> J3d: ", down.j3, down.j3),
          L"-> d : " + chosen,
          L"    i: J2 (0.00 | 0.0) J3 (0.00 | 0.0)",
          L"    f: " + chosen};
}

/// Loads before it listens: the dumps of loading are not the solver's.
class ArmProtocol : public testing::Test {
 protected:
  Lines traceOf(const KMachine& machine, const std::vector<double>& start, const UVec3d& pos,
                const UVec3d& dir) {
    TraceCapture trace;
    solved = solveArm(machine, start, pos, dir);
    const Lines lines = trace.lines();
    trace.claimAll();
    return lines;
  }

  std::unique_ptr<KMachine> square = squareArm().load();
  Solved solved;
};

// The hand-worked solve. Wrist wanted at radius 350 and height 700 of the arm turned to 36.87
// degrees (cos 0.8, sin 0.6): x = 0.8 * 350 + 0.6 * 150 = 370, y = 0.6 * 350 - 0.8 * 150 = 90.
// From the shoulder (300, 400): 500 away, so the elbow is square; X = 400, h = 300.
const UVec3d kSquareTarget = {370, 90, 700};

TEST_F(ArmProtocol, WholeSolveByHand) {
  const Lines lines = traceOf(*square, {10, 0, 0, 0, 0, 0}, kSquareTarget, {2, 0, 0});
  expectLines(
      lines,
      {L"KMV<6> (\n--solveConfig1) [    +10.000 |     +0.000 |     +0.000 |     +0.000 |     "
       L"+0.000 |     +0.000 ] pos(370.000, 90.000, 700.000) dir(1.000, 0.000, 0.000)",
       L"consigne (MAC) pos: (370.000, 90.000, 700.000) dir: (1.000, 0.000, 0.000) -> oPosRotule "
       L": (370.000, 90.000, 700.000) =UNI: (370.000, 90.000, 700.000)",
       L"oToolCenter: (0.000, 0.000, 0.000) in ToolElem coords",
       L"  TC: (0.000, 0.000, 0.000) before [OUTIL] tra. (7)",
       L"  TC: (0.000, 0.000, 0.000) before [J6] tra. (6)",
       L" Alt: (0.000, 0.000, 0.000) after [J6] tra. (6)",
       L" Alt: (0.000, 0.000, 0.000) after [OUTIL] tra. (7)",
       L"oSpindle: (370.000, 90.000, 700.000) defined by oPos+vSpindle",
       L"oO4j3: (180.000, 240.000, 0.000)",
       L"J1 was (0.17 | 10.0)",
       L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)",
       L"  b : (0.64 | 36.9)",
       L"J1 : (0.64 | 36.9) *CHECK*",
       L"J2 was (0.00 | 0.0) (0.00)-check",
       L"J3 was (0.00 | 0.0) (0.00)-check",
       L"oO4p: (180.000, 240.000, 0.000) = oO4j3 Z-translated by +R3",
       L"oORp: (350.000, -150.000, 400.000) = oPosRotule L-transformed by T10(J1)",
       L"oORp: (350.000, 400.000, 150.000) = oORp X-rotated by -A2",
       L"oORp: (300.000, 400.000, 0.000) = oORp X-translated by -D2 & Z-translated by -R2",
       L"We shall intersect 2 circles:",
       L"C4 center(400.000, 0.000, 0.000) rad4=300.0",
       L"CR center(0.000, 0.000, 0.000) radR=500.0",
       L"   u : (400.0, 300.0)",
       L"   d : (400.0, -300.0)",
       L"J2:",
       L"   u : cs(-t2)=(0.960, -0.280)-> J2u: (0.28 | 16.3)",
       L"   d : cs(-t2)=(0.000, -1.000)-> J2d: (1.57 | 90.0)",
       L"J3:",
       L"   u : cs(+t3)=(0.800, 0.600)-> J3u: (0.64 | 36.9)",
       L"   d : cs(+t3)=(-0.800, -0.600)-> J3d: (-2.50 | -143.1)",
       L"-> d : J2 (0.28 | 16.3) J3 (0.64 | 36.9)",
       L"    i: J2 (0.00 | 0.0) J3 (0.00 | 0.0)",
       L"    f: J2 (0.28 | 16.3) J3 (0.64 | 36.9)"});
  EXPECT_NEAR(solved.values[0], 36.869897645844, 1e-9);
  EXPECT_NEAR(solved.values[1], 16.260204708312, 1e-9);
  EXPECT_NEAR(solved.values[2], 36.869897645844, 1e-9);
}

// Every way through the first and the other two joints. `u` and `w`: the wrist seen from the
// shoulder, in the plane of the arm.
struct Way {
  const char* name;
  std::vector<double> start;
  UVec3d pos;
  Lines firstJoint;  ///< Between "J1 was" and "*CHECK*".
  double j1;
  double u, w;
  bool isUp;
  double j2;
};

void PrintTo(const Way& row, std::ostream* out) { *out << row.name; }

class ArmProtocolWay : public ArmProtocol, public testing::WithParamInterface<Way> {};

TEST_P(ArmProtocolWay, TracesTheWay) {
  const Way& way = GetParam();
  const Lines lines = traceOf(*square, way.start, way.pos, {0, 1, 0});
  const double radR = std::hypot(way.u, way.w);
  expectLines(lines, toTheWristCentre(way.start, way.pos, {0, 1, 0}) + way.firstJoint +
                         wereAndStart(way.j1, way.start[1], way.start[2]) +
                         wristInTheArm({way.u + kShoulderRadius, -kLateral, way.w}, radR) +
                         bothElbows(way.u, way.w, way.isUp, way.j2));
  const Elbow chosen = elbow(way.u, way.w, way.isUp ? -1 : 1);
  EXPECT_NEAR(solved.values[0], way.j1, 1e-4);
  EXPECT_NEAR(solved.values[1], way.j2, 1e-4);
  EXPECT_NEAR(solved.values[2], chosen.j3, 1e-4);
}

// The first joint: x = rho cos + 150 sin, y = rho sin - 150 cos, with rho = u + 50. Half angles:
// (r - x) / e and (-x - r) / e, with e = y - 150 and r = rho.
const Way kWays[] = {
    // 2 atan(-20 / -60) and 2 atan(-720 / -60); J2 16.26 or 90, from 0: up.
    {"SmallerTurnFirst",
     {10, 0, 0, 20, 30, 40},
     kSquareTarget,
     {L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (0.64 | 36.9)"},
     36.869898,
     300,
     400,
     true,
     16.260205},
    {"DownIsNearer",
     {10, 80, 0, 20, 30, 40},
     kSquareTarget,
     {L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (0.64 | 36.9)"},
     36.869898,
     300,
     400,
     false,
     90},
    // The other solution looks backwards: rho = -350, u = -400.
    {"SmallerTurnSecond",
     {170, 100, -30, 0, 0, 0},
     kSquareTarget,
     {L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (2.98 | 170.5)"},
     170.472717,
     -400,
     400,
     true,
     elbow(-400, 400, -1).j2},
    // Both are wrapped before they are compared: 36.87 becomes 396.87.
    {"ATurnAwayIsWrapped",
     {400, 380, 10, 0, 0, 0},
     kSquareTarget,
     {L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (6.93 | 396.9)"},
     396.869898,
     300,
     400,
     true,
     376.260205},
    {"ATurnAwayBelowIsWrapped",
     {-340, -280, 10, 0, 0, 0},
     kSquareTarget,
     {L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (-5.64 | -323.1)"},
     -323.130102,
     300,
     400,
     false,
     -270},
    // x = 0, y = -250: r = 200, e = -400; 2 atan(-1 / 2) and 2 atan(1 / 2) are equally far from 0.
    // The second: rho = -250 * 0.8 = -200.
    {"TieOfTheFirstJointTakesTheSecond",
     {0, 90, 0, 0, 0, 0},
     {0, -250, 900},
     {L"J1 : either (-0.93 | -53.1) or (0.93 | 53.1)", L"  b : (0.93 | 53.1)"},
     53.130102,
     -250,
     600,
     true,
     elbow(-250, 600, -1).j2},
    // Wrist level with the shoulder, 500 away: J2 -36.87 or 36.87, equally far from 0.
    // x = 0.8 * 550 + 90, y = 0.6 * 550 - 120; 2 atan(20 / 60), 2 atan(-1080 / 60).
    {"TieOfTheElbowTakesDown",
     {10, 0, 0, 0, 0, 0},
     {530, 210, 300},
     {L"J1 : either (0.64 | 36.9) or (-3.03 | -173.6)", L"  b : (0.64 | 36.9)"},
     36.869898,
     500,
     0,
     false,
     36.869898},
    // y = 150: one solution, 2 atan(300 / 700); cos 40/58, sin 42/58, so rho = 350.
    {"OnTheLineOfTheLateralOffset",
     {0, 0, 0, 0, 0, 0},
     {350, 150, 700},
     {L"J1 : (0.81 | 46.4)"},
     46.397181,
     300,
     400,
     true,
     16.260205},
    // Just inside the 1e-5 mm that count as on that line.
    {"NearTheLineOfTheLateralOffset",
     {0, 0, 0, 0, 0, 0},
     {350, 150 + 9e-6, 700},
     {L"J1 : (0.81 | 46.4)"},
     46.397181,
     300,
     400,
     true,
     16.260205},
    {"BesideTheLineOfTheLateralOffset",
     {0, 0, 0, 0, 0, 0},
     {350, 150 + 2e-5, 700},
     {L"J1 : either (0.81 | 46.4) or (-3.14 | -180.0)", L"  b : (0.81 | 46.4)"},
     46.397181,
     300,
     400,
     true,
     16.260205},
};

INSTANTIATE_TEST_SUITE_P(SquareArm, ArmProtocolWay, testing::ValuesIn(kWays),
                         [](const auto& row) { return std::string(row.param.name); });

Lines unreached(const std::vector<double>& start, const UVec3d& pos, const Lines& firstJoint,
                double j1, const UVec3d& inJ1, double radR) {
  return toTheWristCentre(start, pos, {1, 0, 0}) + firstJoint +
         wereAndStart(j1, start[1], start[2]) + wristInTheArm(inJ1, radR) +
         Lines{L"no intersection ?"};
}

// 2500 - 22500 < 0: the wrist is wanted inside the circle that the arm's side keeps free. From the
// shoulder (30 - 50, 2000, 0 - 40 - 150).
TEST_F(ArmProtocol, InsideTheLateralOffsetTheFirstJointStays) {
  const std::vector<double> start = {0, 15, -20, 0, 0, 0};
  const UVec3d pos = {30, 40, 2300};
  const Lines lines = traceOf(*square, start, pos, {1, 0, 0});
  expectLines(lines, unreached(start, pos, {}, 0, {30, 40, 2000}, 2009.104));
  EXPECT_EQ(solved.code, 0);
  EXPECT_EQ((std::vector(solved.values.begin(), solved.values.begin() + 3)),
            (std::vector<double>{0, 15, -20}));
}

TEST_F(ArmProtocol, OnTheLineAndOverTheFirstAxisTheFirstJointStays) {
  const std::vector<double> start = {0, 15, -20, 0, 0, 0};
  const UVec3d pos = {0, 150, 2300};
  const Lines lines = traceOf(*square, start, pos, {1, 0, 0});
  expectLines(lines, unreached(start, pos, {}, 0, {0, 150, 2000}, 2022.993));
}

TEST_F(ArmProtocol, OutOfReachOnlyTheFirstJointMoves) {
  const std::vector<double> start = {0, 15, -20, 5, 10, 15};
  const UVec3d pos = {370, 90, 2300};
  const Lines lines = traceOf(*square, start, pos, {1, 0, 0});
  expectLines(lines,
              unreached(start, pos,
                        {L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (0.64 | 36.9)"},
                        36.869898, {350, -150, 2000}, std::hypot(300, 2000)));
  EXPECT_NEAR(solved.values[0], 36.869897645844, 1e-9);
  EXPECT_EQ(solved.values[1], 15);
  EXPECT_EQ(solved.values[2], -20);
  EXPECT_NEAR(missOf(*square, solved, pos, {1, 0, 0}).direction, 0, 1e-9);
}

// Inside the smaller circle: |400 - 300| is not reached either. Shoulder at (50, -150), wrist 60
// above it.
TEST_F(ArmProtocol, TooNearIsOutOfReachToo) {
  const std::vector<double> start = {0, 15, -20, 0, 0, 0};
  const UVec3d pos = {50, -150, 360};  // r = 50, e = -300: 0 and 2 atan(-100 / -300)
  const Lines lines = traceOf(*square, start, pos, {1, 0, 0});
  expectLines(
      lines,
      unreached(start, pos, {L"J1 : either (0.00 | 0.0) or (0.64 | 36.9)", L"  b : (0.00 | 0.0)"},
                0, {50, -150, 60}, 60));
}

// J3 turning against J2: A(J3) is pi, J4 sits 240 on the other side of its frame, and J3 is
// mirrored once chosen: 180 - 143.13.
TEST_F(ArmProtocol, ThirdJointAgainstTheSecondIsMirrored) {
  Arm arm = squareArm();
  arm.joints[2].direction = {0, 1, 0};
  const auto machine = arm.load();
  const std::vector<double> start = {10, 0, 0, 0, 0, 0};
  const Lines lines = traceOf(*machine, start, kSquareTarget, {1, 0, 0});
  Lines expected = toTheWristCentre(start, kSquareTarget, {1, 0, 0}) +
                   Lines{L"J1 : either (0.64 | 36.9) or (2.98 | 170.5)", L"  b : (0.64 | 36.9)"} +
                   wereAndStart(36.869898, 0, 0) + wristInTheArm({350, -150, 400}, 500);
  expected[8] = L"oO4j3: (180.000, -240.000, 0.000)";
  expected[15] = L"oO4p: (180.000, -240.000, 0.000) = oO4j3 Z-translated by +R3";
  expectLines(lines,
              expected + Lines{L"   u : (400.0, 300.0)", L"   d : (400.0, -300.0)", L"J2:",
                               L"   u : cs(-t2)=(0.960, -0.280)-> J2u: (0.28 | 16.3)",
                               L"   d : cs(-t2)=(0.000, -1.000)-> J2d: (1.57 | 90.0)", L"J3:",
                               L"   u : cs(+t3)=(-0.800, 0.600)-> J3u: (2.50 | 143.1)",
                               L"   d : cs(+t3)=(0.800, -0.600)-> J3d: (-0.64 | -36.9)",
                               L"-> d : J2 (0.28 | 16.3) J3 (0.64 | 36.9)",
                               L"    i: J2 (0.00 | 0.0) J3 (0.00 | 0.0)",
                               L"    f: J2 (0.28 | 16.3) J3 (0.64 | 36.9)"});
}

// Tool point 56 above the wrist, tool length 40, tool pointing down at the start, J4 up. The point
// 40 along each frame's Z, seen from the tool's frame (Z down):
//   J6's Z is up: 40 below the tool point's own, so (0, 0, -40);
//   J5's Z is -y through the wrist, 56 behind the tool point: y by the sense of the tool's Y;
//   J4's Z is up from the wrist: 56 - 40.
// The universal frame's origin is at (10, 20, 30).
TEST_F(ArmProtocol, ToolLengthAndOffsetOnTheWayToTheWristCentre) {
  const auto machine = squareArm(56).load();
  machine->setTHELength(40, 1);
  machine->setUNI2MAC(zgeo::UMatrix::_translation({10, 20, 30}));
  const Lines lines = traceOf(*machine, {0, 0, 0, 0, 0, 0}, kSquareTarget, {0, 0, 3});
  const double sense = machine->getElemByIndex(6)->getDHmRef().alpha > 0 ? 1 : -1;
  ASSERT_GT(lines.size(), 10u);
  expectLines({lines.begin() + 1, lines.begin() + 10},
              {L"consigne (MAC) pos: (370.000, 90.000, 700.000) dir: (0.000, 0.000, 1.000) -> "
               L"oPosRotule : (370.000, 90.000, 740.000) =UNI: (360.000, 70.000, 710.000)",
               L"oToolCenter: (0.000, 0.000, 40.000) in ToolElem coords",
               L"  TC: (0.000, 0.000, -40.000) before [OUTIL] tra. (7)",
               L"  TC: " + xyz({0, -40 * sense, 56}) + L" before [J6] tra. (6)",
               L"  TC: (0.000, 0.000, 16.000) before [J5] tra. (5)",
               L" Alt: (0.000, 0.000, 0.000) after [J5] tra. (5)",
               L" Alt: (0.000, 0.000, 56.000) after [J6] tra. (6)",
               L" Alt: (0.000, 0.000, 56.000) after [OUTIL] tra. (7)",
               L"oSpindle: (370.000, 90.000, 716.000) defined by oPos+vSpindle"});
}

// The analysis never gives the third joint or the tool an offset along its axis, nor this arm a
// fourth joint that is not square to the third; a host that writes records of its own can. Twists
// and offsets are those of the current records. R(J3) = 35, A(J4) = -60 degrees, R(tool) = 7 along
// the tool, so the wrist is 7 behind the tool point:
//   joint 4 seen from joint 3: (180, 240 sin 60, 240 cos 60) = (180, 207.846, 120);
//   S = 150 + 35 + 120 = 305, so (400, 305) is on the line of the offset: 2 atan(610 / 800), cosine
//   0.26470, sine 0.96433; in J1 (400, -305, 400), in J2 (350, 400, 155);
//   rad4^2 = 180^2 + 207.846^2 + 155^2 = 99625, radR^2 = 306525;
//   X = (160000 + 306525 - 99625) / 800 = 458.625, h^2 = 306525 - X^2, h = 310.142;
//   J2: (400 h + 350 X, 350 h - 400 X) / 306525 and (-400 h + 350 X, -350 h - 400 X) / 306525;
//   J3: (207.846 h + 58.625 * 180, 180 h - 58.625 * 207.846) / 99625, and with -h.
TEST_F(ArmProtocol, RecordsOfTheHostAreTakenAsTheyAre) {
  const auto change = [&](int element, double alpha, double d) {
    const KMachineElem* e = square->getElemByIndex(element);
    auto record = e->getDHmCur();
    record.alpha = alpha, record.d = d;
    e->setDHmValue(record);
  };
  change(3, 0, 35);
  change(4, -60 * kDegree, 240);
  change(-101, square->getElemByIndex(-101)->getDHmCur().alpha, 7);
  const Lines lines = traceOf(*square, {0, 0, 0, 0, 0, 0}, {400, 305, 707}, {0, 0, 1});
  ASSERT_GT(lines.size(), 7u);
  EXPECT_TRUE(
      lines[1].ends_with(L" -> oPosRotule : (400.000, 305.000, 700.000) =UNI: (400.000, "
                         L"305.000, 700.000)"));
  expectLines({lines.begin() + 7, lines.end()},
              {L"oSpindle: (400.000, 305.000, 700.000) defined by oPos+vSpindle",
               L"oO4j3: (180.000, 207.846, 120.000)",
               L"J1 was (0.00 | 0.0)",
               L"J1 : (1.30 | 74.7)",
               L"J1 : (1.30 | 74.7) *CHECK*",
               L"J2 was (0.00 | 0.0) (0.00)-check",
               L"J3 was (0.00 | 0.0) (0.00)-check",
               L"oO4p: (180.000, 207.846, 155.000) = oO4j3 Z-translated by +R3",
               L"oORp: (400.000, -305.000, 400.000) = oPosRotule L-transformed by T10(J1)",
               L"oORp: (400.000, 400.000, 305.000) = oORp X-rotated by -A2",
               L"oORp: (350.000, 400.000, 155.000) = oORp X-translated by -D2 & Z-translated by "
               L"-R2",
               L"We shall intersect 2 circles:",
               L"C4 center(400.000, 0.000, 0.000) rad4=315.6",
               L"CR center(0.000, 0.000, 0.000) radR=553.6",
               L"   u : (458.6, 310.1)",
               L"   d : (458.6, -310.1)",
               L"J2:",
               L"   u : cs(-t2)=(0.928, -0.244)-> J2u: (0.38 | 21.8)",
               L"   d : cs(-t2)=(0.119, -0.953)-> J2d: (1.45 | 83.2)",
               L"J3:",
               L"   u : cs(+t3)=(0.753, 0.438)-> J3u: (0.72 | 41.1)",
               L"   d : cs(+t3)=(-0.541, -0.683)-> J3d: (-2.14 | -122.8)",
               L"-> d : J2 (0.38 | 21.8) J3 (0.72 | 41.1)",
               L"    i: J2 (0.00 | 0.0) J3 (0.00 | 0.0)",
               L"    f: J2 (0.38 | 21.8) J3 (0.72 | 41.1)"});
}

// Against the second, the third joint's offset counts the other way: S = 150 - 35, so (400, 115) is
// on the line of the offset, 2 atan(230 / 800).
TEST_F(ArmProtocol, OffsetOfAThirdJointAgainstTheSecondIsSubtracted) {
  Arm arm = squareArm();
  arm.joints[2].direction = {0, 1, 0};
  const auto machine = arm.load();
  const KMachineElem* third = machine->getElemByIndex(3);
  auto record = third->getDHmCur();
  record.d = 35;
  third->setDHmValue(record);
  const Lines lines = traceOf(*machine, {0, 0, 0, 0, 0, 0}, {400, 115, 700}, {0, 0, 1});
  ASSERT_GT(lines.size(), 14u);
  expectLines(
      {lines[10], lines[14]},
      {L"J1 : (0.56 | 32.1)", L"oO4p: (180.000, -240.000, -35.000) = oO4j3 Z-translated by +R3"});
}

// --- The ways past the arm: only the first line, and the wrist is turned all the same.

void expectOnlyTheWrist(const KMachine& machine, const Lines& lines, const Solved& solved,
                        const std::vector<double>& start, const UVec3d& dir) {
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].starts_with(L"KMV<6> (\n--solveConfig1) [ "));
  EXPECT_EQ(solved.code, 0);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(solved.values[i], start[i]);
  EXPECT_NEAR(missOf(machine, solved, {}, dir).direction, 0, 1e-9);
}

struct Skipped {
  const char* name;
  std::size_t joint;
  UVec3d direction;
};

void PrintTo(const Skipped& row, std::ostream* out) { *out << row.name; }

class ArmProtocolShape : public ArmProtocol, public testing::WithParamInterface<Skipped> {};

TEST_P(ArmProtocolShape, OtherShapesOnlyTurnTheWrist) {
  Arm arm = squareArm();
  arm.joints[GetParam().joint].direction = GetParam().direction;
  const auto machine = arm.load();
  const std::vector<double> start = {10, 20, 30, 40, 50, 60};
  const Lines lines = traceOf(*machine, start, kSquareTarget, {1, 0, 0});
  expectOnlyTheWrist(*machine, lines, solved, start, {1, 0, 0});
}

INSTANTIATE_TEST_SUITE_P(SquareArm, ArmProtocolShape,
                         testing::Values(Skipped{"SecondNotSquareToTheFirst", 1, {0, -1, 2e-5}},
                                         Skipped{"SecondParallelToTheFirst", 1, {0, 0, 1}},
                                         Skipped{"ThirdNotParallelToTheSecond", 2, {0, -1, 0.01}},
                                         Skipped{"ThirdSquareToTheSecond", 2, {0, 0, 1}}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(ArmProtocol, NearlySquareIsSquareEnough) {
  Arm arm = squareArm();
  arm.joints[1].direction = arm.joints[2].direction = {0, -1, 9e-6};
  const auto machine = arm.load();
  EXPECT_GT(traceOf(*machine, {0, 0, 0, 0, 0, 0}, kSquareTarget, {1, 0, 0}).size(), 30u);
}

TEST_F(ArmProtocol, WristThatIsNotInTheChainOnlyTurnsTheWrist) {
  square->addKine(1, {.toolIndex = -101, .rotuleIndex = 77, .kinematicClass = 5, .armType = 1});
  const std::vector<double> start = {10, 20, 30, 40, 50, 60};
  const Lines lines = traceOf(*square, start, kSquareTarget, {1, 0, 0});
  expectOnlyTheWrist(*square, lines, solved, start, {1, 0, 0});
}

// Without a ball joint the record says -1, which is the part's index: the part's place is taken for
// the wrist's, and all joints count as the wrist's.
TEST_F(ArmProtocol, WithoutABallJointThePartIsTakenForTheWrist) {
  Arm arm = squareArm(56);
  arm.joints[5].point.y += 20;
  arm.tool.point.y += 20;
  const auto machine = arm.load();
  ASSERT_EQ(machine->getKine(1).rotuleIndex, -1);
  machine->setTHELength(40, 1);
  const Lines lines = traceOf(*machine, {1, 2, 3, 4, 5, 6}, kSquareTarget, {1, 0, 0});
  ASSERT_GT(lines.size(), 18u);
  const auto chain = machine->getToolChain(true, 1);
  zgeo::UMatrix m, n;
  Lines back, forth;
  const auto place = [&](int k) {
    return L" [" + chain[static_cast<std::size_t>(k)]->getElemName() + L"] tra. (" +
           std::to_wstring(k) + L")";
  };
  // The joints were set anew at the end; their values of the start are what the lines show.
  machine->updateDHm(*positionOf(*machine, {1, 2, 3, 4, 5, 6}), 1);
  for (int k = 7; k >= 1; --k) {
    m = KMachineElem::_transitionMatrix(chain[static_cast<std::size_t>(k)]->getDHmCur()) * m;
    back.push_back(L"  TC: " + xyz(m.inverse() * UVec3d(0, 0, 40)) + L" before" + place(k));
  }
  for (int k = 1; k <= 7; ++k) {
    n = n * KMachineElem::_transitionMatrix(chain[static_cast<std::size_t>(k)]->getDHmCur());
    forth.push_back(L" Alt: " + xyz(n * UVec3d()) + L" after" + place(k));
  }
  const Lines spindle = {L"oSpindle: " + xyz(kSquareTarget + m.inverse() * UVec3d(0, 0, 40)) +
                         L" defined by oPos+vSpindle"};
  expectLines({lines.begin() + 3, lines.begin() + 18}, back + forth + spindle);
}

TEST_F(ArmProtocol, WithoutARotaryAxisNothingMoves) {
  const auto machine =
      fromText("frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\ntool=z,0,0,0\n", 1);
  ASSERT_EQ(machine->getKine(1).kinematicClass, 5);
  const Lines lines = traceOf(*machine, {7, 8}, {1, 2, 3}, {1, 0, 0});
  expectLines(lines, {L"KMV<2> (\n--solveConfig1) [     +7.000 |     +8.000 ] pos(1.000, 2.000, "
                      L"3.000) dir(1.000, 0.000, 0.000)"});
  EXPECT_EQ(solved.code, 0);
  EXPECT_EQ(solved.values, (std::vector<double>{7, 8}));
}

// --- What the solver refuses. What it traces then is nobody's business.

TEST_F(ArmProtocol, WithoutACurrentToolIsRefused) {
  const KMachine fresh = loadText(squareArm().text(), 1);
  ASSERT_EQ(fresh.getCurrentTool(), 0);
  traceOf(fresh, {1, 2, 3, 4, 5, 6}, kSquareTarget, {1, 0, 0});
  EXPECT_EQ(solved.code, -1);
  EXPECT_EQ(solved.values, (std::vector<double>{1, 2, 3, 4, 5, 6}));
}

TEST_F(ArmProtocol, FewerThanThreeElementsAfterTheFirstAxisAreRefused) {
  const std::string head =
      "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,z,0,0,0,0,0\n"
      "rotation=J2,2,-y,0,0,50,0,300\n";
  const auto two = fromText(head + "tool=x,600,0,300\n", 1);
  traceOf(*two, {1, 2}, {100, 200, 300}, {1, 0, 0});
  EXPECT_EQ(solved.code, -1);
  EXPECT_EQ(solved.values, (std::vector<double>{1, 2}));

  const auto three = fromText(head + "rotation=J3,3,-y,0,0,450,0,300\ntool=x,600,0,300\n", 1);
  traceOf(*three, {1, 2, 3}, {100, 200, 300}, {1, 0, 0});
  EXPECT_EQ(solved.code, 0);
}

}  // namespace
}  // namespace korvo::test::arm
