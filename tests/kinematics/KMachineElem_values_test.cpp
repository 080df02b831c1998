// Axis variables, user values and the transition matrix of an element.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

#include "kinematics/KMachineElem.h"
#include "tests/kinematics/SampleElem.h"
#include "tests/support/TraceCapture.h"

using korvo::test::expectDHm;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachineElem;
using DHm = zkin::KMachineElem::_sUDHm;

namespace {

constexpr double kPi = std::numbers::pi;

/// An element of the type with reference (0.1, 0.2, 0.3, 0.4) and current (0.5, 0.6, 0.7, 0.8).
KMachineElem elemOf(int type) {
  KMachineElem e = korvo::test::sampleElem();
  e.setElemType(static_cast<KMachineElem::KME_TYPE>(type));
  return e;
}

// --- types without a variable

class KMachineElemWithoutVariable : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Type, KMachineElemWithoutVariable, testing::Values(0, 1, 2, 3, 6, 7, 8),
                         [](const auto& row) { return "Type" + std::to_string(row.param); });

TEST_P(KMachineElemWithoutVariable, GettersGiveZero) {
  const KMachineElem e = elemOf(GetParam());
  EXPECT_EQ(e.getDHmValue(true), 0.0);
  EXPECT_EQ(e.getDHmValue(false), 0.0);
  EXPECT_EQ(e.getUMVValue(12.0), 0.0);
  EXPECT_EQ(e.getUMVValue(DHm{1, 2, 3, 4}), 0.0);
}

TEST_P(KMachineElemWithoutVariable, SettersDoNothing) {
  const KMachineElem e = elemOf(GetParam());
  e.setDHmValue(9.0);
  e.setUMVValue(90.0);
  expectDHm(e.getDHmCur(), 0.5, 0.6, 0.7, 0.8);
  expectDHm(e.getDHmRef(), 0.1, 0.2, 0.3, 0.4);
}

TEST_P(KMachineElemWithoutVariable, WholeRecordIsSetAllTheSame) {
  const KMachineElem e = elemOf(GetParam());
  e.setDHmValue(DHm{1, 2, 3, 4});
  expectDHm(e.getDHmCur(), 1, 2, 3, 4);
}

// --- rotary and linear axes

TEST(KMachineElemVariable, OfARotaryAxisIsTheta) {
  const KMachineElem e = elemOf(5);
  EXPECT_EQ(e.getDHmValue(true), 0.7);
  EXPECT_EQ(e.getDHmValue(false), 0.3);
  e.setDHmValue(9.0);
  expectDHm(e.getDHmCur(), 0.5, 0.6, 9.0, 0.8);
  expectDHm(e.getDHmRef(), 0.1, 0.2, 0.3, 0.4);
}

TEST(KMachineElemVariable, OfALinearAxisIsD) {
  const KMachineElem e = elemOf(4);
  EXPECT_EQ(e.getDHmValue(true), 0.8);
  EXPECT_EQ(e.getDHmValue(false), 0.4);
  e.setDHmValue(9.0);
  expectDHm(e.getDHmCur(), 0.5, 0.6, 0.7, 9.0);
  expectDHm(e.getDHmRef(), 0.1, 0.2, 0.3, 0.4);
}

TEST(KMachineElemVariable, WholeRecordReplacesTheCurrentOne) {
  for (const int type : {4, 5}) {
    const KMachineElem e = elemOf(type);
    e.setDHmValue(DHm{1, 2, 3, 4});
    expectDHm(e.getDHmCur(), 1, 2, 3, 4);
    expectDHm(e.getDHmRef(), 0.1, 0.2, 0.3, 0.4);
  }
}

/// Only the current parameters change through const operations.
template <class Elem>
concept SetsReference = requires(Elem& e) { e.setDHmRef(DHm{}); };
static_assert(SetsReference<KMachineElem>);
static_assert(!SetsReference<const KMachineElem>);

TEST(KMachineElemUserValue, OfARotaryAxisIsDegreesFromTheReference) {
  KMachineElem e = elemOf(5);
  e.setDHmRef({0, 0, 0.5, 0});
  e.setDHmValue(0.5 + kPi / 2);
  EXPECT_DOUBLE_EQ(e.getUMVValue(e.getDHmValue(true)), 90.0);
  e.setDHmValue(0.0);
  e.setUMVValue(90.0);
  EXPECT_DOUBLE_EQ(e.getDHmCur().theta, 0.5 + kPi / 2);
  EXPECT_EQ(e.getDHmRef().theta, 0.5);
}

TEST(KMachineElemUserValue, OfARotaryAxisUsesTheStatedFactors) {
  const KMachineElem e = elemOf(5);
  EXPECT_EQ(e.getUMVValue(2.0), (2.0 - 0.3) * 57.29577951308232);
  e.setUMVValue(33.0);
  EXPECT_EQ(e.getDHmCur().theta, 33.0 * 0.017453292519943295 + 0.3);
  expectDHm({e.getDHmCur().alpha, e.getDHmCur().a, 0, e.getDHmCur().d}, 0.5, 0.6, 0, 0.8);
}

TEST(KMachineElemUserValue, OfARecordTakesTheVariableOfTheType) {
  const DHm h{10, 20, 30, 40};
  EXPECT_EQ(elemOf(5).getUMVValue(h), (30 - 0.3) * 57.29577951308232);
  EXPECT_EQ(elemOf(4).getUMVValue(h), 40 - 0.4);
}

TEST(KMachineElemUserValue, OfALinearAxisIsMillimetresFromTheReference) {
  KMachineElem e = elemOf(4);
  e.setDHmRef({0, 0, 0, 100});
  EXPECT_EQ(e.getUMVValue(250.0), 150.0);
  e.setUMVValue(-30.0);
  expectDHm(e.getDHmCur(), 0.5, 0.6, 0.7, 70.0);
}

TEST(KMachineElemUserValue, AnglesAreNotWrapped) {
  KMachineElem e = elemOf(5);
  e.setDHmRef({0, 0, 0, 0});
  EXPECT_DOUBLE_EQ(e.getUMVValue(4 * kPi), 720.0);
  EXPECT_DOUBLE_EQ(e.getUMVValue(-3 * kPi), -540.0);
  e.setUMVValue(720.0);
  EXPECT_DOUBLE_EQ(e.getDHmCur().theta, 4 * kPi);
}

RC_GTEST_PROP(KMachineElemUserValue, ComesBackAfterSetting, ()) {
  KMachineElem e = elemOf(*rc::gen::element(4, 5));
  const double reference = *rc::gen::inRange(-1000, 1000) / 100.0;
  const double user = *rc::gen::inRange(-100000, 100000) / 100.0;
  e.setDHmRef({0, 0, reference, reference});
  e.setUMVValue(user);
  // Two roundings of sums below 1020 and two of the factors: a few 1e-13.
  RC_ASSERT(std::abs(e.getUMVValue(e.getDHmValue(true)) - user) < 1e-11);
  RC_ASSERT(e.getUMVValue(e.getDHmCur()) == e.getUMVValue(e.getDHmValue(true)));
}

// --- transition matrix

void expectMatrix(const UMatrix& m, const double (&rows)[4][4], double tolerance) {
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      EXPECT_NEAR(m(row, column), rows[row][column], tolerance) << row << ", " << column;
    }
  }
}

constexpr double kRoundOff = 1e-14;  // of entries up to 10: a few units in the last place
const double h3 = std::sqrt(3.0) / 2;

struct TransitionRow {
  const char* name;
  DHm h;
  double rows[4][4];
};

class KMachineElemTransition : public testing::TestWithParam<TransitionRow> {};
INSTANTIATE_TEST_SUITE_P(
    Worked, KMachineElemTransition,
    testing::Values(TransitionRow{"Zero",
                                  {0, 0, 0, 0},
                                  {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}},
                    TransitionRow{"OffsetsOnly",
                                  {0, 3, 0, -7},
                                  {{1, 0, 0, 3}, {0, 1, 0, 0}, {0, 0, 1, -7}, {0, 0, 0, 1}}},
                    TransitionRow{"QuarterTwist",
                                  {kPi / 2, 0, 0, 4},
                                  {{1, 0, 0, 0}, {0, 0, -1, -4}, {0, 1, 0, 0}, {0, 0, 0, 1}}},
                    TransitionRow{"QuarterTurn",
                                  {0, 0, kPi / 2, 4},
                                  {{0, -1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 4}, {0, 0, 0, 1}}},
                    // ca = 0, sa = 1, ct = 0, st = 1
                    TransitionRow{"QuarterTwistAndTurn",
                                  {kPi / 2, 10, kPi / 2, 5},
                                  {{0, -1, 0, 10}, {0, 0, -1, -5}, {1, 0, 0, 0}, {0, 0, 0, 1}}},
                    // ca = 1/2, sa = h3, ct = h3, st = 1/2
                    TransitionRow{"SixtyAndThirtyDegrees",
                                  {kPi / 3, -3, kPi / 6, 2},
                                  {{h3, -0.5, 0, -3},
                                   {0.25, h3 / 2, -h3, -2 * h3},
                                   {h3 / 2, 0.75, 0.5, 1},
                                   {0, 0, 0, 1}}},
                    // ca = h3, sa = -1/2, ct = -1/2, st = h3
                    TransitionRow{"NegativeTwistAndWideTurn",
                                  {-kPi / 6, 1, 2 * kPi / 3, 4},
                                  {{-0.5, -h3, 0, 1},
                                   {0.75, -h3 / 2, 0.5, 2},
                                   {-h3 / 2, 0.25, h3, 4 * h3},
                                   {0, 0, 0, 1}}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemTransition, HasTheRowsOfTheModifiedConvention) {
  expectMatrix(KMachineElem::_transitionMatrix(GetParam().h), GetParam().rows, kRoundOff);
}

TEST(KMachineElemTransitionMatrix, OfZerosIsExactlyTheIdentity) {
  EXPECT_TRUE(KMachineElem::_transitionMatrix({0, 0, 0, 0}) == UMatrix());
}

TEST(KMachineElemTransitionMatrix, CarriesAPointToThePreviousFrame) {
  const UVec3d p = KMachineElem::_transitionMatrix({0, 100, kPi / 2, 0}) * UVec3d(1, 0, 0);
  EXPECT_NEAR(p.x, 100, kRoundOff);
  EXPECT_NEAR(p.y, 1, kRoundOff);
  EXPECT_NEAR(p.z, 0, kRoundOff);
}

RC_GTEST_PROP(KMachineElemTransitionMatrix, IsTwistOffsetTurnOffset, ()) {
  const auto number = [] { return *rc::gen::inRange(-700, 700) / 100.0; };
  const DHm h{number(), number(), number(), number()};
  const UMatrix product =
      UMatrix::_rotation({1, 0, 0}, h.alpha) * UMatrix::_translation({h.a, 0, 0}) *
      UMatrix::_rotation({0, 0, 1}, h.theta) * UMatrix::_translation({0, 0, h.d});
  const UMatrix matrix = KMachineElem::_transitionMatrix(h);
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 4; ++column) {
      RC_ASSERT(std::abs(matrix(row, column) - product(row, column)) < 1e-13);
    }
  }
}

}  // namespace
