#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/kinematics/KMachine_reference.h"

// Six-joint arms against published parameters, published poses, and the parameters' own formula
// evaluated here. An arm's definition text is written from its axis lines at the zero position;
// the tool direction runs from the tip back to the flange, against the end frame's Z.

namespace korvo::test::reference {
namespace {

using Joints = std::vector<double>;

const std::vector<std::pair<double, double>> kSixTurns(6, {-180.0, 180.0});

/// A published pose: joints in degrees, end point and rotation rows as printed.
struct PoseRow {
  const char* name;
  Joints joints;
  UVec3d point;
  double rotation[9];
};

Pose poseOf(const PoseRow& row, double scale) {
  Pose r = shift(row.point.x * scale, row.point.y * scale, row.point.z * scale);
  for (int i = 0; i < 9; ++i) r.m[i / 3][i % 3] = row.rotation[i];
  return r;
}

// --- PUMA 560: the example file against the standard Denavit-Hartenberg formula
//     T = prod Rz(q) Trans(0, 0, d) Trans(a, 0, 0) Rx(alpha), parameters of robotics-toolbox-python
//     (P. Corke, MIT licence), in mm and degrees.

Pose puma(const Joints& q) {
  constexpr double parameters[6][3] = {{671.83, 0, 90}, {0, 431.8, 0}, {150.05, 20.3, -90},
                                       {431.8, 0, 90},  {0, 0, -90},   {0, 0, 0}};
  Pose t;
  for (std::size_t i = 0; i < 6; ++i) {
    const auto& [d, a, alpha] = parameters[i];
    t = t * rz(q[i]) * shift(a, 0, d) * rx(alpha);
  }
  return t;
}

std::unique_ptr<KMachine> loadExample(const std::string& name) {
  return load(std::filesystem::path(KORVO_MACHINES) / (name + ".def"), 1);
}

class Puma560 : public testing::Test {
 protected:
  std::unique_ptr<KMachine> machine = loadExample("arm-puma560");
  const Pose zero = puma(Joints(6, 0.0));
};

// Poses qz, qr, qs, qn of the same toolbox: metres to 7 decimals, so 5e-5 mm and 5e-8.
TEST_F(Puma560, PublishedPosesToHalfTheirLastDigit) {
  const PoseRow rows[] = {
      {"qz", {0, 0, 0, 0, 0, 0}, {0.4521, -0.15005, 1.10363}, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
      {"qr", {0, 90, -90, 0, 0, 0}, {0.0203, -0.15005, 1.53543}, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
      {"qs", {0, 0, -90, 0, 0, 0}, {0.8636, -0.15005, 0.65153}, {0, 0, 1, 0, 1, 0, -1, 0, 0}},
      {"qn",
       {0, 45, 180, 0, 45, 0},
       {0.5963031, -0.15005, 0.6574757},
       {0, 0, 1, 0, 1, 0, -1, 0, 0}},
  };
  LargestError error("PUMA 560, poses");
  for (const PoseRow& row : rows) {
    compareArm(error, *machine, row.joints, zero, poseOf(row, 1000), 5.01e-5, 5.01e-8);
  }
}

// A general pose, computed from the same parameters and printed to 9 decimals of a metre.
const PoseRow kGeneral = {"general",
                          {20, 35, -60, 40, 50, -70},
                          {0.572468450, 0.048681601, 1.302264857},
                          {0.959763657, 0.270304702, -0.076086070, -0.266335307, 0.790376152,
                           -0.551698325, -0.088990036, 0.549764409, 0.830565992}};

TEST_F(Puma560, GeneralPoseToHalfItsLastDigit) {
  LargestError error("PUMA 560, general pose");
  compareArm(error, *machine, kGeneral.joints, zero, poseOf(kGeneral, 1000), 5.01e-7, 5.01e-10);
}

// All eight inverse solutions of two poses, read forward. Angles are printed to 5e-7 degrees
// (8.8e-9 rad), so six of them move a point at most 1.2 m from their axes by 6.4e-5 mm.
TEST_F(Puma560, AllEightInverseSolutionsLeadToTheirPose) {
  const Joints normal[] = {{0, 45, 180, 0, 45, 0},
                           {0, 45, 180, 180, -45, 180},
                           {0, -47.757927, 5.383273, 180, 47.625346, 180},
                           {0, -47.757927, 5.383273, 0, -47.625346, 0},
                           {151.751379, -132.242073, 180, 38.632611, 49.296731, 152.471211},
                           {151.751379, -132.242073, 180, -141.367389, -49.296731, -27.528789},
                           {151.751379, 135, 5.383273, 145.104967, 55.826119, 21.394220},
                           {151.751379, 135, 5.383273, -34.895033, -55.826119, -158.605780}};
  const Joints general[] = {{20, 62.323728, -114.616727, 31.100866, 72.413501, -51.989235},
                            {20, 62.323728, -114.616727, -148.899134, -72.413501, 128.010765},
                            {20, 35, -60, 40, 50, -70},
                            {20, 35, -60, -140, -50, 110},
                            {169.721255, 145, -114.616727, -125.694298, 43.245667, -51.670023},
                            {169.721255, 145, -114.616727, 54.305702, -43.245667, 128.329977},
                            {169.721255, 117.676272, -60, -141.086777, 62.352511, -26.810052},
                            {169.721255, 117.676272, -60, 38.913223, -62.352511, 153.189948}};
  constexpr double point = 6 * 8.8e-9 * 1200;
  LargestError error("PUMA 560, inverse solutions");
  for (const Joints& q : normal) {
    compareArm(error, *machine, q, zero, puma(normal[0]), point, 6 * 8.8e-9);
  }
  for (const Joints& q : general) {
    compareArm(error, *machine, q, zero, puma(kGeneral.joints), point, 6 * 8.8e-9);
  }
}

TEST_F(Puma560, EqualsItsFormulaAtRandomPositions) {
  RandomValues random;
  LargestError error("PUMA 560, formula");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const Joints q = random(kSixTurns);
    compareArm(error, *machine, q, zero, puma(q), kPointMm, kDirection);
  }
}

// --- Modified Denavit-Hartenberg arms: T = prod Rx(alpha) Trans(a, 0, 0) Rz(q) Trans(0, 0, d)
//     (J. J. Craig, Introduction to Robotics). Parameters: Mitsubishi RV-6SDL, and the PUMA of
//     LinuxCNC's genserkins (docs "DH parameters"), both in mm and degrees; the rows were computed
//     from them independently, printed to 6 decimals of a mm and 9 of a rotation.

struct MdhLink {
  double alpha, a, d;
};

struct MdhArm {
  const char* name;
  MdhLink links[6];
  PoseRow rows[4];
};

void PrintTo(const MdhArm& row, std::ostream* out) { *out << row.name; }

Pose mdh(const MdhArm& arm, const Joints& q) {
  Pose t;
  for (std::size_t i = 0; i < 6; ++i) {
    const MdhLink& link = arm.links[i];
    t = t * rx(link.alpha) * shift(link.a, 0, 0) * rz(q[i]) * shift(0, 0, link.d);
  }
  return t;
}

/// The axis line of joint i is the Z axis of its frame.
std::string mdhText(const MdhArm& arm) {
  std::vector<Line> lines;
  Pose t;
  for (const MdhLink& link : arm.links) {
    t = t * rx(link.alpha) * shift(link.a, 0, link.d);
    lines.push_back({t.column(3), t.column(2)});
  }
  const ToolPlace tool = armTool(t);
  return armText(lines, {tool.point, tool.direction});
}

const MdhArm kMdhArms[] = {
    {"RV_6SDL",
     {{0, 0, 350}, {-90, 85, 0}, {0, 380, 0}, {-90, 100, 425}, {90, 0, 0}, {-90, 0, 85}},
     {{"zero", {0, 0, 0, 0, 0, 0}, {565, 0, -160}, {1, 0, 0, 0, -1, 0, 0, 0, -1}},
      {"square", {0, -90, 90, 0, 90, 0}, {100, 0, 305}, {0, 0, -1, 0, -1, 0, -1, 0, 0}},
      {"first",
       {30, -60, 45, 20, -35, 80},
       {479.337824, 257.491364, 239.055149},
       {0.294763495, -0.613565271, 0.732565451, -0.954573883, -0.224067799, 0.196423834,
        0.043625485, -0.757186423, -0.651740391}},
      {"second",
       {-110, 20, -75, 150, 60, -170},
       {-279.716401, -876.128274, 86.021509},
       {0.228296550, -0.966207167, 0.119684570, 0.347085927, -0.034083280, -0.937213791,
        0.909621924, 0.255503505, 0.327575815}}}},
    {"PUMA_genserkins",
     {{0, 0, 0}, {-90, 0, 0}, {0, 300, 70}, {-90, 50, 400}, {90, 0, 0}, {-90, 0, 0}},
     {{"zero", {0, 0, 0, 0, 0, 0}, {350, 70, -400}, {1, 0, 0, 0, -1, 0, 0, 0, -1}},
      {"square", {0, -90, 90, 0, 90, 0}, {50, 70, -100}, {0, 0, -1, 0, -1, 0, -1, 0, 0}},
      {"first",
       {30, -60, 45, 20, -35, 80},
       {226.387173, 211.533733, -113.621757},
       {0.294763495, -0.613565271, 0.732565451, -0.954573883, -0.224067799, 0.196423834,
        0.043625485, -0.757186423, -0.651740391}},
      {"second",
       {-110, 20, -75, 150, 60, -170},
       {-152.514993, -623.697806, -291.079015},
       {0.228296550, -0.966207167, 0.119684570, 0.347085927, -0.034083280, -0.937213791,
        0.909621924, 0.255503505, 0.327575815}}}},
};

class MdhArms : public testing::TestWithParam<MdhArm> {};

TEST_P(MdhArms, PublishedPosesToHalfTheirLastDigit) {
  const auto machine = fromText(mdhText(GetParam()), 1);
  const Pose zero = mdh(GetParam(), Joints(6, 0.0));
  LargestError error(std::string(GetParam().name) + ", poses");
  for (const PoseRow& row : GetParam().rows) {
    compareArm(error, *machine, row.joints, zero, poseOf(row, 1), 5.01e-7, 5.01e-10);
  }
}

TEST_P(MdhArms, EqualTheirFormulaAtRandomPositions) {
  const auto machine = fromText(mdhText(GetParam()), 1);
  const Pose zero = mdh(GetParam(), Joints(6, 0.0));
  RandomValues random;
  LargestError error(std::string(GetParam().name) + ", formula");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const Joints q = random(kSixTurns);
    compareArm(error, *machine, q, zero, mdh(GetParam(), q), kPointMm, kDirection);
  }
}

INSTANTIATE_TEST_SUITE_P(Arms, MdhArms, testing::ValuesIn(kMdhArms),
                         [](const auto& arm) { return std::string(arm.param.name); });

// --- Ortho-parallel arms with a spherical wrist, in the parametrisation of M. Brandstoetter,
//     A. Angerer, M. Hofbaur, "An analytical solution of the inverse kinematics problem of
//     industrial serial manipulators with an ortho-parallel basis and a spherical wrist" (2014);
//     parameters as published for these arms, here in mm. With q = sign * joint - offset:
//     T = Rz(q1) Trans(a1,0,c1) Ry(q2) Trans(0,b,c2) Ry(q3) Trans(a2,0,0) Rz(q4) Trans(0,0,c3)
//         Ry(q5) Rz(q6) Trans(0,0,c4)

struct OrthoArm {
  const char* name;
  double a1, a2, b, c1, c2, c3, c4;
  double offsets[6];
  double signs[6];
};

void PrintTo(const OrthoArm& row, std::ostream* out) { *out << row.name; }

const OrthoArm kOrthoArms[] = {
    {"IRB_2400_10", 100, -135, 0, 615, 705, 755, 85, {0, 0, -90, 0, 0, 0}, {1, 1, 1, 1, 1, 1}},
    {"KR_6_R700_sixx", 25, -35, 0, 400, 315, 365, 80, {0, -90, 0, 0, 0, 0}, {-1, 1, 1, -1, 1, -1}},
    {"IRB_2600_12_165", 150, -115, 0, 445, 700, 795, 85, {0, 0, -90, 0, 0, 0}, {1, 1, 1, 1, 1, 1}},
    {"IRB_4600_60_205", 175, -175, 0, 495, 900, 960, 135, {0, 0, -90, 0, 0, 0}, {1, 1, 1, 1, 1, 1}},
};

/// The joint's turn and the shift behind it.
struct Step {
  Pose (*turn)(double);
  Pose shift;
};

std::vector<Step> steps(const OrthoArm& arm) {
  return {{rz, shift(arm.a1, 0, arm.c1)},
          {ry, shift(0, arm.b, arm.c2)},
          {ry, shift(arm.a2, 0, 0)},
          {rz, shift(0, 0, arm.c3)},
          {ry, Pose()},
          {rz, shift(0, 0, arm.c4)}};
}

Pose ortho(const OrthoArm& arm, const Joints& joints) {
  Pose t;
  const auto path = steps(arm);
  for (std::size_t i = 0; i < 6; ++i) {
    t = t * path[i].turn(arm.signs[i] * joints[i] - arm.offsets[i]) * path[i].shift;
  }
  return t;
}

/// Each joint turns about the Z or Y axis of the frame that it finds at the zero position.
std::string orthoText(const OrthoArm& arm) {
  std::vector<Line> lines;
  Pose t;
  const auto path = steps(arm);
  for (std::size_t i = 0; i < 6; ++i) {
    const UVec3d axis = t.column(path[i].turn == rz ? 2 : 1);
    lines.push_back({t.column(3), axis * arm.signs[i]});
    t = t * path[i].turn(-arm.offsets[i]) * path[i].shift;
  }
  const ToolPlace tool = armTool(t);
  return armText(lines, {tool.point, tool.direction});
}

class OrthoParallelArms : public testing::TestWithParam<OrthoArm> {};

TEST_P(OrthoParallelArms, EqualTheirFormulaAtRandomPositions) {
  const auto machine = fromText(orthoText(GetParam()), 1);
  const Pose zero = ortho(GetParam(), Joints(6, 0.0));
  RandomValues random;
  LargestError error(std::string(GetParam().name) + ", formula");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const Joints q = random(kSixTurns);
    compareArm(error, *machine, q, zero, ortho(GetParam(), q), kPointMm, kDirection);
  }
}

TEST_P(OrthoParallelArms, AreArmsWithAWristOnTheToolLine) {
  const auto machine = fromText(orthoText(GetParam()), 1);
  const KMachine::_sUKine kine = machine->getKine(1);
  EXPECT_EQ(kine.kinematicClass, 5);
  EXPECT_EQ(kine.armType, 1);
  EXPECT_EQ(kine.rotuleIndex, 4);
  EXPECT_EQ(kine.wristType, 2);
}

INSTANTIATE_TEST_SUITE_P(Arms, OrthoParallelArms, testing::ValuesIn(kOrthoArms),
                         [](const auto& arm) { return std::string(arm.param.name); });

TEST(OrthoParallelExample, Irb2400FileEqualsTheFormula) {
  const auto machine = loadExample("arm-irb2400");
  const OrthoArm& arm = kOrthoArms[0];
  const Pose zero = ortho(arm, Joints(6, 0.0));
  RandomValues random;
  LargestError error("arm-irb2400, formula");
  for (int i = 0; i < kFormulaPositions; ++i) {
    const Joints q = random(kSixTurns);
    compareArm(error, *machine, q, zero, ortho(arm, q), kPointMm, kDirection);
  }
}

TEST(OrthoParallelExample, RailCarriesTheWholeArm) {
  const auto machine = loadExample("arm-irb2400-rail");
  const OrthoArm& arm = kOrthoArms[0];
  const Pose zero = ortho(arm, Joints(6, 0.0));
  RandomValues random;
  LargestError error("arm-irb2400-rail, formula");
  for (int i = 0; i < kFormulaPositions; ++i) {
    Joints q = random(kSixTurns);
    const Pose onFoot = ortho(arm, q);
    q.push_back(random(0, 4000));
    compareArm(error, *machine, q, zero, shift(0, q[6], 0) * onFoot, kPointMm, kDirection);
  }
}

}  // namespace
}  // namespace korvo::test::reference
