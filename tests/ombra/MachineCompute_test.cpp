#include "platform/ombra/MachineCompute.h"

#include <array>
#include <functional>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/ombra/Machines.h"

namespace korvo::test {
namespace {

using Ombra::Angle;
using Ombra::Kin::Entity;
using Ombra::Kin::Kinematic;
using Ombra::Kin::MachineCompute;
using Ombra::Kin::MachineComputeErrorType;
using Ombra::Kin::RotariesSolution;
using Ombra::Kin::RotaryPair;

constexpr double kDegree = 180.0 / std::numbers::pi;

Matrix43 toolOf(const Machine& machine, const MachinePosition& p, const Vector3D& offset = {}) {
  Matrix43 m;
  MachineCompute compute(machine);
  EXPECT_TRUE(compute.ComputeMcsToToolTcs(p, HeadIndex(), TableIndex(), offset, &m));
  EXPECT_EQ(compute.GetLastError(), Ombra::Kin::NoError);
  return m;
}

Matrix43 placeOf(const Machine& machine, int entity, const MachinePosition& p) {
  Matrix43 m;
  EXPECT_TRUE(MachineCompute(machine).ComputePositionEntity(
      machine.GetKinematic().GetEntity(EntityId(entity)), p, &m));
  return m;
}

/// Degrees of the pairs, first and second one after the other.
std::vector<double> anglesOf(const Machine& machine, const MachinePosition& start,
                             const Vector3D& direction, int r1, int r2) {
  RotariesSolution solution;
  std::vector<double> degrees;
  if (MachineCompute(machine).ComputeToolIjkTcsToMcsAbc(start, HeadIndex(), TableIndex(), direction,
                                                        Register(r1), Register(r2), &solution)) {
    for (int i = 0; i < solution.count; ++i) {
      degrees.push_back(solution.pairs[i].first.radians * kDegree);
      degrees.push_back(solution.pairs[i].second.radians * kDegree);
    }
  }
  return degrees;
}

Vector3D travelOf(const Machine& machine, const MachinePosition& start, const Vector3D& point,
                  const Vector3D& offset = {}) {
  Vector3D values;
  EXPECT_TRUE(MachineCompute(machine).ComputeToolTcsToMcsXyz(start, HeadIndex(), TableIndex(),
                                                             point, Register(0), Register(1),
                                                             Register(2), offset, &values));
  return values;
}

testing::Matcher<std::vector<double>> AreDegrees(const std::vector<double>& expected) {
  return testing::Pointwise(testing::DoubleNear(1e-9), expected);
}

// --- tool frames

TEST(OmbraToolFrame, IsThatOfTheHeadWhereNothingMoves) {
  EXPECT_EQ(toolOf(headHead(), position({0, 0, 0, 0, 0})), Matrix43());
}

TEST(OmbraToolFrame, FollowsTheAxesThatCarryTheHead) {
  const Matrix43 m = toolOf(headHead(), position({10, 20, 30, 90, 90}));
  EXPECT_THAT(m.GetTrans(), NearPoint(Vector3D(10, 20, 30), 1e-14));
  EXPECT_THAT(m.GetU(), NearPoint(Vector3D(0, 1, 0), 1e-15)) << "x is turned by C alone";
  EXPECT_THAT(m.GetW(), NearPoint(Vector3D(1, 0, 0), 1e-15)) << "z by A to -y, then by C to x";
}

TEST(OmbraToolFrame, IsSeenFromTheTableThatTurns) {
  // The tool stands at (100, 0, 0). The table turns by 90 degrees about z: seen from it, the tool
  // goes the other way, to (0, -100, 0).
  const Matrix43 m = toolOf(tableTable(), position({100, 0, 0, 0, 90}));
  EXPECT_THAT(m.GetTrans(), NearPoint(Vector3D(0, -100, 0), 1e-13));
  // A alone carries the table's z to -y: the upright tool is seen along y, as is a point above it.
  const Matrix43 tilted = toolOf(tableTable(), position({0, 0, 50, 90, 0}));
  EXPECT_THAT(tilted.GetW(), NearPoint(Vector3D(0, 1, 0), 1e-15));
  EXPECT_THAT(tilted.GetTrans(), NearPoint(Vector3D(0, 50, 0), 1e-13));
}

TEST(OmbraToolFrame, OriginLiesTheOffsetBackInTheToolsOwnFrame) {
  const Matrix43 upright = toolOf(headHead(), position({1, 2, 3, 0, 0}), {0, 0, 50});
  EXPECT_THAT(upright.GetTrans(), NearPoint(Vector3D(1, 2, -47), 1e-14));
  const Matrix43 lying = toolOf(headHead(), position({1, 2, 3, 90, 90}), {4, 0, 50});
  EXPECT_THAT(lying.GetTrans(), NearPoint(Vector3D(1 - 50, 2 - 4, 3), 1e-13));
}

TEST(OmbraToolFrame, StartsFromTheHeadsToolFrame) {
  Machine machine = headHead();
  machine.EditKinematic()
      .EditEntity(EntityId(6))
      ->SetToolFrame({{0, 1, 0}, {0, 0, 1}, {1, 0, 0}, {0, 0, -100}});
  const Matrix43 m = toolOf(machine, position({0, 0, 0, 90, 0}));
  EXPECT_THAT(m.GetW(), NearPoint(Vector3D(0, 1, 0), 1e-15));
  EXPECT_THAT(m.GetTrans(), NearPoint(Vector3D(0, 0, -100), 1e-14));
}

TEST(OmbraToolFrame, IsGivenInTheTablesOwnFrame) {
  Machine machine = tableTable();
  // The table's frame stands at (10, 0, 0), its axes turned by 90 degrees about z.
  machine.EditKinematic()
      .EditEntity(EntityId(7))
      ->SetZeroPlacement({{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {10, 0, 0}});
  EXPECT_THAT(toolOf(machine, position({15, 0, 0, 0, 0})).GetTrans(),
              NearPoint(Vector3D(0, -5, 0), 1e-14));
}

TEST(OmbraToolFrame, WhatCarriesHeadAndTableHasNoEffect) {
  Machine machine = headHead();
  ASSERT_TRUE(machine.EditKinematic().LinkEntity(EntityId(7), EntityId(1)));
  EXPECT_EQ(toolOf(machine, position({99, 0, 0, 0, 0})), Matrix43());
}

TEST(OmbraToolFrame, LinearAxesTravelTheirDirectionForAValueOfOne) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  k.AddHead(L"H", Matrix43(), k.AddAxis(linear(L"X", 0, {0, 3, 4})));
  k.AddTable(L"T");
  EXPECT_EQ(toolOf(machine, position({10})).GetTrans(), Vector3D(0, 30, 40));
}

TEST(OmbraToolFrame, FixedAndRegisterlessAxesStay) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  const EntityId fixed = k.AddAxis({L"COVER", Ombra::Kin::Fixed, {1, 0, 0}, {}, Register(0)});
  const EntityId idle = k.AddAxis(linear(L"W", -1, {0, 0, 1}), fixed);
  k.AddHead(L"H", Matrix43(), idle);
  k.AddTable(L"T");
  EXPECT_EQ(toolOf(machine, position({10})), Matrix43());
}

TEST(OmbraToolFrame, APositionThatIsNotFinitePasses) {
  const Matrix43 m =
      toolOf(headHead(), position({std::numeric_limits<double>::quiet_NaN(), 0, 0, 0, 0}));
  EXPECT_TRUE(std::isnan(m.GetTrans().x));
}

TEST(OmbraToolFrame, TakesTheHeadAndTableThatAreNamed) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  k.AddHead(L"GUN", Matrix43::Translation({0, 0, 7}), EntityId(1));
  k.AddTable(L"PALLET", EntityId(3));
  Matrix43 m;
  MachineCompute compute(&machine);
  const MachinePosition p = position({1, 2, 3, 0, 0});
  ASSERT_TRUE(compute.ComputeMcsToToolTcs(p, HeadIndex(1), TableIndex(0), {}, &m));
  EXPECT_EQ(m.GetTrans(), Vector3D(1, 0, 7));
  ASSERT_TRUE(compute.ComputeMcsToToolTcs(p, HeadIndex(1), TableIndex(1), {}, &m));
  EXPECT_EQ(m.GetTrans(), Vector3D(0, -2, 4));
}

// --- placements

TEST(OmbraPlacement, IsInTheBaseFrameWithTheOwnMotion) {
  const MachinePosition p = position({5, 6, 7, 90, 90});
  EXPECT_THAT(placeOf(tableTable(), 6, p).Apply({0, 10, 0}), NearPoint(Vector3D(-10, 0, 0), 1e-13))
      << "C turns y to -x, A leaves that";
  EXPECT_THAT(placeOf(tableTable(), 5, p).Apply({0, 10, 0}), NearPoint(Vector3D(0, 0, 10), 1e-13));
  EXPECT_EQ(placeOf(tableTable(), 4, p).GetTrans(), Vector3D(5, 6, 7));
}

TEST(OmbraPlacement, EndsWithTheZeroPlacement) {
  Machine machine = headHead();
  machine.EditKinematic()
      .EditEntity(EntityId(4))
      ->SetZeroPlacement(Matrix43::Translation({100, 0, 0}));
  EXPECT_THAT(placeOf(machine, 4, position({1, 0, 0, 90, 0})).GetTrans(),
              NearPoint(Vector3D(1, 100, 0), 1e-13));
}

TEST(OmbraPlacement, TurnsAboutTheLineThroughThePivot) {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  k.AddAxis(rotary(L"C", 0, {0, 0, 1}, {10, 0, 0}));
  EXPECT_THAT(placeOf(machine, 1, position({180})).Apply({0, 0, 0}),
              NearPoint(Vector3D(20, 0, 0), 1e-13));
}

// --- rotary solutions

TEST(OmbraAngles, TwoWaysLeadToADirectionTheNearerFirst) {
  EXPECT_THAT(anglesOf(headHead(), position({0, 0, 0, 0, 0}), forkDirection(40, 30), 3, 4),
              AreDegrees({40, 30, -140, -30}));
  EXPECT_THAT(anglesOf(headHead(), position({0, 0, 0, -140, -30}), forkDirection(40, 30), 3, 4),
              AreDegrees({-140, -30, 40, 30}));
}

TEST(OmbraAngles, StandInTheOrderOfTheRegisters) {
  EXPECT_THAT(anglesOf(headHead(), position({0, 0, 0, 0, 0}), forkDirection(40, 30), 4, 3),
              AreDegrees({30, 40, -30, -140}));
}

TEST(OmbraAngles, AreWithinHalfATurnOfTheStart) {
  EXPECT_THAT(anglesOf(headHead(), position({0, 0, 0, 390, 350}), forkDirection(40, 30), 3, 4),
              AreDegrees({400, 390, 220, 330}));
}

TEST(OmbraAngles, TurnATableTheOtherWay) {
  // Seen from the table, A turns z back to (0, sin A, cos A) and C turns that back about z.
  const double a = radians(30), c = radians(40);
  const Vector3D wanted(std::sin(a) * std::sin(c), std::sin(a) * std::cos(c), std::cos(a));
  EXPECT_THAT(anglesOf(tableTable(), position({0, 0, 0, 0, 0}), wanted, 3, 4),
              AreDegrees({30, 40, -30, -140}));
}

TEST(OmbraAngles, TakeDirectionsOfAnyLengthInTheTablesFrame) {
  Machine machine = headHead();
  machine.EditKinematic()
      .EditEntity(EntityId(7))
      ->SetZeroPlacement(Matrix43::Rotation({0, 0, 1}, {}, 25));
  // Seen from a table turned by 25 degrees, C = 40 looks like C = 15.
  EXPECT_THAT(anglesOf(machine, position({0, 0, 0, 0, 0}), forkDirection(15, 30) * 700, 3, 4),
              AreDegrees({40, 30, -140, -30}));
}

TEST(OmbraAngles, AnAngleWithoutEffectIsTheStarts) {
  EXPECT_THAT(anglesOf(headHead(), position({0, 0, 0, 25, 10}), {0, 0, 1}, 3, 4),
              AreDegrees({25, 0}));
}

TEST(OmbraAngles, OneWhereBothWaysMeet) {
  // B about (0, 1, 1) carries z to y at 180 degrees, its furthest; C about z need not turn.
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  const EntityId c = k.AddAxis(rotary(L"C", 0, {0, 0, 1}));
  k.AddHead(L"H", Matrix43(), k.AddAxis(rotary(L"B", 1, {0, 1, 1}), c));
  k.AddTable(L"T");
  const std::vector<double> degrees = anglesOf(machine, position({0, 0}), {0, 1, 0}, 0, 1);
  ASSERT_EQ(degrees.size(), 2u);
  EXPECT_NEAR(degrees[0], 0, 1e-5) << "near the edge angles are as sure as the root of rounding";
  EXPECT_NEAR(std::abs(degrees[1]), 180, 1e-5);
}

TEST(OmbraAngles, OtherRotaryAxesStayAsInTheStart) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  const EntityId turntable = k.AddAxis(rotary(L"V", 5, {0, 0, 1}));
  ASSERT_TRUE(k.LinkEntity(EntityId(7), turntable));
  // The table has turned by 10 degrees: C = 40 looks like C = 30 to it.
  EXPECT_THAT(anglesOf(machine, position({0, 0, 0, 0, 0, 10}), forkDirection(30, 30), 3, 4),
              AreDegrees({40, 30, -140, -30}));
}

RC_GTEST_PROP(OmbraAnglesLaws, EverySolutionPointsTheToolAlongTheDirection, ()) {
  const auto degrees = rc::gen::inRange(-359, 360);
  const Machine machine = *rc::gen::element(headHead(), tableTable());
  MachinePosition start = position({1, 2, 3, 0, 0}), asked = start;
  for (const int r : {3, 4}) {
    start[Register(r)] = *degrees;
    asked[Register(r)] = *degrees;
  }
  const Vector3D wanted = toolOf(machine, asked).GetW();
  const std::vector<double> found = anglesOf(machine, start, wanted, 3, 4);
  RC_ASSERT(found.size() >= 2u);
  for (std::size_t i = 0; i < found.size(); i += 2) {
    MachinePosition p = start;
    p[Register(3)] = found[i];
    p[Register(4)] = found[i + 1];
    const Vector3D miss = toolOf(machine, p).GetW() - wanted;
    RC_ASSERT(std::sqrt(miss * miss) < 1e-11);
    RC_ASSERT(std::abs(found[i] - start[Register(3)]) <= 180 + 1e-9);
    RC_ASSERT(std::abs(found[i + 1] - start[Register(4)]) <= 180 + 1e-9);
  }
}

// --- linear solutions

TEST(OmbraTravel, PutsTheTipOnThePoint) {
  EXPECT_THAT(travelOf(headHead(), position({0, 0, 0, 0, 0}), {1, 2, 3}),
              NearPoint(Vector3D(1, 2, 3), 1e-12));
  EXPECT_THAT(travelOf(headHead(), position({0, 0, 0, 0, 0}), {1, 2, 3}, {0, 0, 50}),
              NearPoint(Vector3D(1, 2, 53), 1e-12));
  // A = 90 turns the tool to -y: the tool point lies 50 along -y from its tip.
  EXPECT_THAT(travelOf(headHead(), position({0, 0, 0, 0, 90}), {1, 2, 3}, {0, 0, 50}),
              NearPoint(Vector3D(1, -48, 3), 1e-12));
}

TEST(OmbraTravel, OwnValuesOfTheStartHaveNoEffect) {
  EXPECT_EQ(travelOf(headHead(), position({0, 0, 0, 20, 30}), {1, 2, 3}),
            travelOf(headHead(), position({70, 80, 90, 20, 30}), {1, 2, 3}));
}

TEST(OmbraTravel, OtherLinearAxesStayAsInTheStart) {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  ASSERT_TRUE(k.LinkEntity(EntityId(1), k.AddAxis(linear(L"W", 5, {0, 0, 1}))));
  EXPECT_THAT(travelOf(machine, position({0, 0, 0, 0, 0, 10}), {1, 2, 3}),
              NearPoint(Vector3D(1, 2, -7), 1e-12));
}

TEST(OmbraTravel, FollowsATurnedTable) {
  // The table has turned by 90 degrees: its point (1, 0, 0) stands at (0, 1, 0).
  EXPECT_THAT(travelOf(tableTable(), position({0, 0, 0, 0, 90}), {1, 0, 0}),
              NearPoint(Vector3D(0, 1, 0), 1e-12));
}

RC_GTEST_PROP(OmbraTravelLaws, TheTipIsWhereItWasAsked, ()) {
  const auto number = rc::gen::inRange(-500, 500);
  const Machine machine = *rc::gen::element(headHead(), tableTable());
  MachinePosition p = position({0, 0, 0, double(*number), double(*number)});
  const Vector3D point(*number, *number, *number), offset(0, 0, *number);
  const Vector3D values = travelOf(machine, p, point, offset);
  p[Register(0)] = values.x;
  p[Register(1)] = values.y;
  p[Register(2)] = values.z;
  const Vector3D miss = toolOf(machine, p, offset).GetTrans() - point;
  RC_ASSERT(std::sqrt(miss * miss) < 1e-10);
}

// --- errors

/// A computation that fails for one reason.
struct Failure {
  const char* name;
  MachineComputeErrorType error;
  std::function<bool(MachineCompute&, const Machine&)> compute;
};

/// headHead with V, parallel to X; B, parallel to C, below A; T, a turntable of its own.
Machine crowded() {
  Machine machine = headHead();
  Kinematic& k = machine.EditKinematic();
  const EntityId v = k.AddAxis(linear(L"V", 5, {2, 0, 0}));
  k.LinkEntity(EntityId(1), v);
  const EntityId b = k.AddAxis(rotary(L"B", 6, {0, 0, -2}), EntityId(3));
  k.LinkEntity(EntityId(4), b);
  k.AddAxis(rotary(L"T", 7, {0, 0, 1}));
  k.AddAxis(linear(L"U", 8, {0, 0, 1}));
  return machine;
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
const MachinePosition kZero = position({0, 0, 0, 0, 0, 0, 0, 0, 0});

// Where results go that nothing is written to: no computation gives these.
const Matrix43 kNoMatrix({1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12});
const RotariesSolution kNoTurns{7, {{{Angle(1), Angle(2)}, {Angle(3), Angle(4)}}}};
const Vector3D kNoTravel(4, 5, 6);

Matrix43 untouchedMatrix = kNoMatrix;
RotariesSolution untouchedTurns = kNoTurns;
Vector3D untouchedTravel = kNoTravel;

bool operator==(const RotariesSolution& a, const RotariesSolution& b) {
  const auto isSame = [](const RotaryPair& p, const RotaryPair& q) {
    return p.first == q.first && p.second == q.second;
  };
  return a.count == b.count && isSame(a.pairs[0], b.pairs[0]) && isSame(a.pairs[1], b.pairs[1]);
}

bool frame(MachineCompute& c, const MachinePosition& p, int h = 0, int t = 0,
           Matrix43* m = &untouchedMatrix) {
  return c.ComputeMcsToToolTcs(p, HeadIndex(h), TableIndex(t), {}, m);
}

bool turns(MachineCompute& c, const MachinePosition& p, const Vector3D& d, int r1, int r2,
           RotariesSolution* s = &untouchedTurns) {
  return c.ComputeToolIjkTcsToMcsAbc(p, HeadIndex(), TableIndex(), d, Register(r1), Register(r2),
                                     s);
}

bool travel(MachineCompute& c, const MachinePosition& p, const Vector3D& to, int x, int y, int z,
            const Vector3D& offset = {}, Vector3D* v = &untouchedTravel) {
  return c.ComputeToolTcsToMcsXyz(p, HeadIndex(), TableIndex(), to, Register(x), Register(y),
                                  Register(z), offset, v);
}

class OmbraFailure : public testing::TestWithParam<Failure> {
 protected:
  OmbraFailure() {
    untouchedMatrix = kNoMatrix;
    untouchedTurns = kNoTurns;
    untouchedTravel = kNoTravel;
  }
};

TEST_P(OmbraFailure, HasACodeOfItsOwnAndTouchesNothing) {
  const Machine machine = crowded();
  MachineCompute compute(machine);
  EXPECT_FALSE(GetParam().compute(compute, machine));
  EXPECT_EQ(compute.GetLastError(), GetParam().error);
  EXPECT_EQ(untouchedMatrix, kNoMatrix);
  EXPECT_TRUE(untouchedTurns == kNoTurns);
  EXPECT_EQ(untouchedTravel, kNoTravel);

  Matrix43 m;
  EXPECT_TRUE(compute.ComputeMcsToToolTcs(kZero, HeadIndex(), TableIndex(), {}, &m));
  EXPECT_EQ(compute.GetLastError(), Ombra::Kin::NoError) << "of the last computation alone";
}

const Vector3D kUp(0, 0, 1), kSide(0, -1, 0);

INSTANTIATE_TEST_SUITE_P(
    OmbraErrors, OmbraFailure,
    testing::Values(
        Failure{"FrameWithoutResult", Ombra::Kin::NoResult,
                [](auto& c, auto&) { return frame(c, kZero, 0, 0, nullptr); }},
        Failure{"FrameOfAnotherSize", Ombra::Kin::WrongPosition,
                [](auto& c, auto&) { return frame(c, position({0, 0})); }},
        Failure{"FrameOfNoHead", Ombra::Kin::UnknownHead,
                [](auto& c, auto&) { return frame(c, kZero, 1, 0); }},
        Failure{"FrameOfNoTable", Ombra::Kin::UnknownTable,
                [](auto& c, auto&) { return frame(c, kZero, 0, -1); }},
        Failure{"TurnsWithoutResult", Ombra::Kin::NoResult,
                [](auto& c, auto&) { return turns(c, kZero, kSide, 3, 4, nullptr); }},
        Failure{"TurnsOfAnUnknownRegister", Ombra::Kin::UnknownRegister,
                [](auto& c, auto&) { return turns(c, kZero, kSide, 3, 9); }},
        Failure{"TurnsOfNoRegister", Ombra::Kin::UnknownRegister,
                [](auto& c, auto&) { return turns(c, kZero, kSide, -1, 4); }},
        Failure{"TurnsOfALinearAxis", Ombra::Kin::AxisOfOtherKind,
                [](auto& c, auto&) { return turns(c, kZero, kSide, 0, 4); }},
        Failure{"TurnsOfAnAxisElsewhere", Ombra::Kin::AxisNotInChain,
                [](auto& c, auto&) { return turns(c, kZero, kSide, 7, 4); }},
        Failure{"TurnsOfOneAxisTwice", Ombra::Kin::SameRegisters,
                [](auto& c, auto&) { return turns(c, kZero, kSide, 4, 4); }},
        Failure{"TurnsOfParallelAxes", Ombra::Kin::ParallelAxes,
                [](auto& c, auto&) { return turns(c, kZero, kSide, 3, 6); }},
        Failure{"TurnsToNoDirection", Ombra::Kin::NullDirection,
                [](auto& c, auto&) { return turns(c, kZero, {}, 3, 4); }},
        Failure{"TurnsToNotANumber", Ombra::Kin::NotFinite,
                [](auto& c, auto&) { return turns(c, kZero, {kNan, 0, 0}, 3, 4); }},
        Failure{"TurnsFromNotANumber", Ombra::Kin::NotFinite,
                [](auto& c, auto&) {
                  MachinePosition p = kZero;
                  p[Register(0)] = kNan;
                  return turns(c, p, kSide, 3, 4);
                }},
        Failure{"TravelWithoutResult", Ombra::Kin::NoResult,
                [](auto& c, auto&) { return travel(c, kZero, kUp, 0, 1, 2, {}, nullptr); }},
        Failure{"TravelOfAnotherSize", Ombra::Kin::WrongPosition,
                [](auto& c, auto&) { return travel(c, MachinePosition(), kUp, 0, 1, 2); }},
        Failure{"TravelOfARotaryAxis", Ombra::Kin::AxisOfOtherKind,
                [](auto& c, auto&) { return travel(c, kZero, kUp, 0, 1, 3); }},
        Failure{"TravelOfAnAxisElsewhere", Ombra::Kin::AxisNotInChain,
                [](auto& c, auto&) { return travel(c, kZero, kUp, 0, 1, 8); }},
        Failure{"TravelOfOneAxisTwice", Ombra::Kin::SameRegisters,
                [](auto& c, auto&) { return travel(c, kZero, kUp, 0, 1, 1); }},
        Failure{"TravelOfDependentAxes", Ombra::Kin::DependentDirections,
                [](auto& c, auto&) { return travel(c, kZero, kUp, 0, 1, 5); }},
        Failure{"TravelToNotANumber", Ombra::Kin::NotFinite,
                [](auto& c, auto&) { return travel(c, kZero, {kNan, 0, 0}, 0, 1, 2); }},
        Failure{"TravelByNotANumber", Ombra::Kin::NotFinite,
                [](auto& c, auto&) { return travel(c, kZero, kUp, 0, 1, 2, {0, kNan, 0}); }},
        Failure{"PlacementOfNothing", Ombra::Kin::UnknownEntity,
                [](auto& c, auto&) {
                  return c.ComputePositionEntity(nullptr, kZero, &untouchedMatrix);
                }},
        Failure{"PlacementOfAnEntityElsewhere", Ombra::Kin::UnknownEntity,
                [](auto& c, auto&) {
                  static const Machine other = headHead();
                  return c.ComputePositionEntity(other.GetKinematic().GetEntity(EntityId(1)), kZero,
                                                 &untouchedMatrix);
                }},
        Failure{"PlacementOfAnotherSize", Ombra::Kin::WrongPosition,
                [](auto& c, auto& m) {
                  return c.ComputePositionEntity(m.GetKinematic().GetEntity(EntityId(1)),
                                                 position({0}), &untouchedMatrix);
                }},
        Failure{"PlacementWithoutResult", Ombra::Kin::NoResult,
                [](auto& c, auto& m) {
                  return c.ComputePositionEntity(m.GetKinematic().GetEntity(EntityId(1)), kZero,
                                                 nullptr);
                }}),
    [](const auto& row) { return row.param.name; });

TEST(OmbraErrors, ADirectionOutOfReachIsNotSolved) {
  Machine machine;  // C and B about (0, 1, 1): the tool comes no lower than level
  Kinematic& k = machine.EditKinematic();
  const EntityId c = k.AddAxis(rotary(L"C", 0, {0, 0, 1}));
  k.AddHead(L"H", Matrix43(), k.AddAxis(rotary(L"B", 1, {0, 1, 1}), c));
  k.AddTable(L"T");
  MachineCompute compute(machine);
  EXPECT_FALSE(turns(compute, position({0, 0}), {0, 0, -1}, 0, 1));
  EXPECT_EQ(compute.GetLastError(), Ombra::Kin::UnreachableDirection);
}

TEST(OmbraErrors, WithoutAMachineNothingIsComputed) {
  MachineCompute compute(nullptr);
  EXPECT_FALSE(frame(compute, MachinePosition()));
  EXPECT_EQ(compute.GetLastError(), Ombra::Kin::NoMachine);
  EXPECT_FALSE(compute.ComputePositionEntity(nullptr, MachinePosition(), &untouchedMatrix));
  EXPECT_EQ(compute.GetLastError(), Ombra::Kin::NoMachine);
}

}  // namespace
}  // namespace korvo::test
