// Long triangles are cut up: which pieces, in which order, and that cutting ends.

#include "geometry/ZrnSubdivide.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/geometry/ZrnFaces.h"

namespace {

using korvo::test::areaOf;
using korvo::test::longestEdgeOf;
using korvo::test::Triangles;
using zgeo::UTri;
using zgeo::UVec3d;
using zkin::zrn::kMostCuts;
using zkin::zrn::subdivide;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

Triangles piecesOf(const UTri& t, double longest) {
  Triangles pieces;
  subdivide(t, longest, pieces);
  return pieces;
}

/// What `p` turned by the normal `up` has on its left: twice its area, signed.
double turn(const UTri& t, const UVec3d& up) {
  return ((t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0])) * up;
}

const UVec3d kUp(0, 0, 1);

TEST(ZrnSubdivide, ShortEdgesStay) {
  const UTri t({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  EXPECT_EQ(piecesOf(t, 1.5), Triangles{t});
}

TEST(ZrnSubdivide, AnEdgeAsLongAsTheLimitStays) {
  const UTri t({0, 0, 0}, {3, 0, 0}, {0, 4, 0});  // the third is 5
  EXPECT_EQ(piecesOf(t, 5.0), Triangles{t});
  EXPECT_GT(piecesOf(t, std::nextafter(5.0, 0.0)).size(), 1u);
}

TEST(ZrnSubdivide, PiecesAreAppended) {
  const UTri t({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  Triangles pieces{t};
  subdivide(t, 10, pieces);
  EXPECT_EQ(pieces, (Triangles{t, t}));
}

// Sides 6, 4, 4 with the limit 5: the one long edge is cut at its middle.
const UVec3d kA(0, 0, 0), kB(6, 0, 0), kC(3, std::sqrt(7.0), 0), kM(3, 0, 0);

TEST(ZrnSubdivide, FirstEdgeLongGivesTwoPiecesInOrder) {
  EXPECT_EQ(piecesOf({kA, kB, kC}, 5), (Triangles{{kA, kM, kC}, {kC, kM, kB}}));
}

TEST(ZrnSubdivide, AnyOtherLongEdgeGivesTheSamePiecesTurnedRound) {
  EXPECT_EQ(piecesOf({kC, kA, kB}, 5), (Triangles{{kA, kM, kC}, {kC, kM, kB}}));
  EXPECT_EQ(piecesOf({kB, kC, kA}, 5), (Triangles{{kA, kM, kC}, {kC, kM, kB}}));
}

TEST(ZrnSubdivide, ThreeLongEdgesGiveFourPiecesWithTheMiddleOneReversed) {
  const UVec3d p0(0, 0, 0), p1(8, 0, 0), p2(0, 6, 0);
  const UVec3d m01(4, 0, 0), m02(0, 3, 0), m12(4, 3, 0);
  const Triangles pieces = piecesOf({p0, p1, p2}, 5.5);
  EXPECT_EQ(pieces, (Triangles{{m12, m01, m02}, {m01, m02, p0}, {m12, m01, p1}, {m02, m12, p2}}));
  EXPECT_LT(turn(pieces[0], kUp), 0);
  for (int i = 1; i < 4; ++i) EXPECT_GT(turn(pieces[i], kUp), 0) << i;
}

// Twice all three: the middle one's middle piece turns as the first triangle did.
TEST(ZrnSubdivide, PiecesAreCutAgainAtOnce) {
  const UVec3d p0(0, 0, 0), p1(16, 0, 0), p2(0, 12, 0);
  const Triangles pieces = piecesOf({p0, p1, p2}, 5.5);
  ASSERT_EQ(pieces.size(), 16u);
  const UVec3d m01(8, 0, 0), m02(0, 6, 0), m12(8, 6, 0);
  Triangles expected;
  for (const UTri& half :
       {UTri(m12, m01, m02), UTri(m01, m02, p0), UTri(m12, m01, p1), UTri(m02, m12, p2)})
    for (const UTri& quarter : piecesOf(half, 5.5)) expected.push_back(quarter);
  EXPECT_EQ(pieces, expected);
  EXPECT_GT(turn(pieces[0], kUp), 0);
  EXPECT_LT(turn(pieces[4], kUp), 0);
}

/// Whether the triangles have this one, from whichever corner on.
bool holds(const Triangles& triangles, const UTri& t) {
  const UTri turned[] = {t, {t.p[1], t.p[2], t.p[0]}, {t.p[2], t.p[0], t.p[1]}};
  for (const UTri& candidate : triangles)
    for (const UTri& same : turned)
      if (candidate == same) return true;
  return false;
}

struct TwoLong {
  const char* name;
  UTri triangle;
};

// The short edge is that from (0, 0) to (0, 2); the corner opposite is (10, 0), so the edge from
// (0, 2), sqrt(104), is the longer one. Of the quadrilateral (0,0) (5,0) (5,1) (0,2) the diagonals
// are sqrt(26) from (0, 0) and sqrt(29): the first is drawn.
class ZrnSubdivideTwoLong : public testing::TestWithParam<TwoLong> {};

TEST_P(ZrnSubdivideTwoLong, GiveThreePiecesAlongTheShorterDiagonal) {
  const UVec3d a(0, 0, 0), b(10, 0, 0), c(0, 2, 0), ab(5, 0, 0), bc(5, 1, 0);
  const Triangles pieces = piecesOf(GetParam().triangle, 8);
  EXPECT_EQ(pieces.size(), 3u);
  EXPECT_TRUE(holds(pieces, {ab, b, bc}));
  EXPECT_TRUE(holds(pieces, {a, ab, bc}));
  EXPECT_TRUE(holds(pieces, {a, bc, c}));
}

const UVec3d kLeft(0, 0, 0), kRight(10, 0, 0), kTop(0, 2, 0);
INSTANTIATE_TEST_SUITE_P(Corners, ZrnSubdivideTwoLong,
                         testing::Values(TwoLong{"ShortEdgeLast", {kLeft, kRight, kTop}},
                                         TwoLong{"ShortEdgeFirst", {kTop, kLeft, kRight}},
                                         TwoLong{"ShortEdgeBetween", {kRight, kTop, kLeft}}),
                         korvo::test::rowName<TwoLong>);

TEST(ZrnSubdivide, TheOtherDiagonalWhenThatIsShorter) {
  const UVec3d a(0, 0, 0), b(0, 10, 0), c(2, 0, 0), ab(0, 5, 0), bc(1, 5, 0);
  // Turned the other way than above: here the longer edge comes second.
  const Triangles pieces = piecesOf({c, b, a}, 8);
  EXPECT_EQ(pieces.size(), 3u);
  EXPECT_TRUE(holds(pieces, {bc, b, ab}));
  EXPECT_TRUE(holds(pieces, {c, bc, a}));
  EXPECT_TRUE(holds(pieces, {a, bc, ab}));
}

struct Limit {
  const char* name;
  double longest;
};

class ZrnSubdivideNoLimit : public testing::TestWithParam<Limit> {};

TEST_P(ZrnSubdivideNoLimit, CutsNothing) {
  const UTri t({0, 0, 0}, {1e6, 0, 0}, {0, 1e6, 0});
  EXPECT_EQ(piecesOf(t, GetParam().longest), Triangles{t});
}

INSTANTIATE_TEST_SUITE_P(Limits, ZrnSubdivideNoLimit,
                         testing::Values(Limit{"Zero", 0}, Limit{"MinusOne", -1.0},
                                         Limit{"NaN", kNan}, Limit{"Infinite", kInf},
                                         Limit{"MinusInfinite", -kInf}, Limit{"Huge", 1e308}),
                         korvo::test::rowName<Limit>);

struct Odd {
  const char* name;
  double value;
};

class ZrnSubdivideOddCorner : public testing::TestWithParam<Odd> {};

TEST_P(ZrnSubdivideOddCorner, StaysAsItIs) {
  for (int corner = 0; corner < 9; ++corner) {
    UTri t({0, 0, 0}, {100, 0, 0}, {0, 100, 0});
    double* const values[] = {&t.p[corner / 3].x, &t.p[corner / 3].y, &t.p[corner / 3].z};
    *values[corner % 3] = GetParam().value;
    const Triangles pieces = piecesOf(t, 1);
    ASSERT_EQ(pieces.size(), 1u) << corner;
    EXPECT_EQ(std::isnan(GetParam().value), !(pieces[0] == t)) << corner;
  }
}

INSTANTIATE_TEST_SUITE_P(Values, ZrnSubdivideOddCorner,
                         testing::Values(Odd{"NaN", kNan}, Odd{"Infinite", kInf},
                                         Odd{"MinusInfinite", -kInf}),
                         korvo::test::rowName<Odd>);

TEST(ZrnSubdivide, EndsWhereMiddlesAreNoNewPoints) {
  const double next = std::nextafter(1.0, 2.0);
  const UTri t({1, 1, 1}, {next, 1, 1}, {1, next, 1});
  EXPECT_LE(piecesOf(t, 1e-17).size(), std::size_t{1} << 2 * kMostCuts);
}

TEST(ZrnSubdivide, HugeCornersGiveFinitePieces) {
  const UTri t({-1.7e308, 0, 0}, {1.7e308, 0, 0}, {0, 1.7e308, 0});
  const Triangles pieces = piecesOf(t, 1e100);
  EXPECT_LE(pieces.size(), std::size_t{1} << 2 * kMostCuts);
  for (const UTri& piece : pieces)
    for (const UVec3d& p : piece.p) ASSERT_TRUE(std::isfinite(p.x + p.y + p.z));
}

// --- laws

rc::Gen<double> inBox() {
  return rc::gen::map(rc::gen::inRange(0, 1501), [](int i) { return i / 100.0; });
}

rc::Gen<UVec3d> corner() {
  return rc::gen::map(rc::gen::tuple(inBox(), inBox(), inBox()), [](const auto& c) {
    return UVec3d(std::get<0>(c), std::get<1>(c), std::get<2>(c));
  });
}

/// A triangle in the box whose longest side is 15, so that the limit is 1.
UTri drawn() { return {*corner(), *corner(), *corner()}; }

RC_GTEST_PROP(ZrnSubdivideLaws, NoEdgeOfAPieceIsLong, ()) {
  RC_ASSERT(longestEdgeOf(piecesOf(drawn(), 1.0)) <= 1.0);
}

RC_GTEST_PROP(ZrnSubdivideLaws, PiecesHaveTheAreaOfTheirTriangle, ()) {
  const UTri t = drawn();
  RC_ASSERT(std::abs(areaOf(piecesOf(t, 1.0)) - areaOf(t)) <= 1e-11 * (1 + areaOf(t)));
}

RC_GTEST_PROP(ZrnSubdivideLaws, EveryPointOfTheTriangleLiesOnAPiece, ()) {
  const UTri t = drawn();
  const double a = *rc::gen::inRange(0, 1001) / 1000.0;
  const double b = *rc::gen::inRange(0, 1001) / 1000.0 * (1 - a);
  const UVec3d p = t.p[0] * (1 - a - b) + t.p[1] * a + t.p[2] * b;
  RC_ASSERT(korvo::test::distanceTo(piecesOf(t, 1.0), p) <= 1e-12 * 26);
}

RC_GTEST_PROP(ZrnSubdivideLaws, CornersOfPiecesLieOnTheTriangle, ()) {
  const UTri t = drawn();
  for (const UTri& piece : piecesOf(t, 1.0))
    for (const UVec3d& p : piece.p) RC_ASSERT(korvo::test::distanceTo(t, p) <= 1e-12 * 26);
}

// A short edge has a short edge in every piece that is as long as the others: no piece is cut at
// all three, so none is turned over.
RC_GTEST_PROP(ZrnSubdivideLaws, NarrowTrianglesTurnAsTheirParent, ()) {
  const double x = *inBox() + 1.1;
  const UTri t({0, 0, 0}, {x, 0, 0}, {0, 0.5, 0});
  for (const UTri& piece : piecesOf(t, 1.0)) RC_ASSERT(turn(piece, kUp) > 0);
}

/// Any double, and often an odd one.
rc::Gen<double> hostile() {
  return rc::gen::weightedOneOf<double>(
      {{1, rc::gen::arbitrary<double>()},
       {1, rc::gen::element(kNan, kInf, -kInf, 1e308, -1e308, 5e-324, 0.0, 1.0, 1e-9)}});
}

RC_GTEST_PROP(ZrnSubdivideLaws, CuttingEndsWhateverComes, ()) {
  UTri t;
  for (UVec3d& p : t.p) p = {*hostile(), *hostile(), *hostile()};
  const Triangles pieces = piecesOf(t, *hostile());
  RC_ASSERT(!pieces.empty());
  RC_ASSERT(pieces.size() <= std::size_t{1} << 2 * kMostCuts);
}

}  // namespace
