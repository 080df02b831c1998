// Denavit-Hartenberg parameters of tool chains, worked out by hand from the axis lines, and of
// published arms.
//
// Where two consecutive lines meet, their common normal may point either way (rounding decides), so
// the twist there may change its sign and both neighbouring angles turn by half: the comparison
// follows that freedom and leaves no other.

#include "tests/support/LoadText.h"

#include <cmath>
#include <locale>
#include <numbers>
#include <sstream>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::LoadingTest;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;
using DHm = KMachineElem::_sUDHm;

namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kHalf = std::numbers::pi / 2;

struct DhRow {
  DHm h;          ///< alpha, a, theta, d
  UVec3d origin;  ///< of the frame; the element's point after finalisation
};

struct ChainCase {
  const char* name;
  std::string text;         ///< version-1 definition
  std::vector<DhRow> rows;  ///< active chain, root first
};

std::ostream& operator<<(std::ostream& out, const ChainCase& row) { return out << row.name; }

bool isTwisted(const DHm& h) { return std::abs(std::sin(h.alpha)) > 1e-9; }

/// For each frame, -1 where the X axis that was found points against the expected one and may.
std::vector<int> sensesOfX(const std::vector<DhRow>& expected,
                           const std::vector<const KMachineElem*>& chain) {
  const std::size_t n = expected.size();
  std::vector<int> sense(n, 1);
  for (std::size_t k = 1; k < n; ++k) {
    const DHm& h = expected[k].h;
    if (h.a != 0.0) continue;  // the normal points from line to line
    if (isTwisted(h)) {
      sense[k - 1] = std::signbit(h.alpha) == std::signbit(chain[k]->getDHmRef().alpha) ? 1 : -1;
    } else if (k > 1) {
      sense[k - 1] = sense[k - 2];  // one line: the X axis of the frame below
    }
  }
  if (n > 1) sense[n - 1] = sense[n - 2];
  return sense;
}

void expectDh(const KMachine& machine, const std::vector<DhRow>& expected) {
  const std::vector<const KMachineElem*> chain = machine.getToolChain(true, 1);
  ASSERT_EQ(chain.size(), expected.size());
  const std::vector<int> sense = sensesOfX(expected, chain);
  for (std::size_t k = 0; k < chain.size(); ++k) {
    SCOPED_TRACE("frame " + std::to_string(k) + " " + korvo::test::narrow(chain[k]->getElemName()));
    const DHm& found = chain[k]->getDHmRef();
    const DHm& h = expected[k].h;
    EXPECT_NEAR(std::abs(found.alpha), std::abs(h.alpha), 3e-8);  // arcsine near 1: sqrt(epsilon)
    if (h.a != 0.0) {
      EXPECT_NEAR(found.alpha, h.alpha, 3e-8);
    }
    EXPECT_NEAR(found.a, h.a, 1e-9);
    EXPECT_NEAR(found.d, h.d, 1e-9);
    const double half = k > 0 && sense[k] != sense[k - 1] ? kPi : 0.0;
    EXPECT_NEAR(std::remainder(found.theta - h.theta - half, 2 * kPi), 0.0, 3e-8) << found.theta;
    EXPECT_NEAR(chain[k]->getElemPivot().distanceTo(expected[k].origin), 0.0, 1e-9)
        << korvo::test::words(chain[k]->getElemPivot());
  }
}

class DenavitHartenberg : public LoadingTest, public testing::WithParamInterface<ChainCase> {};

TEST_P(DenavitHartenberg, IsTheHandsOwn) {
  const KMachine machine = load(GetParam().text, 1);
  expectDh(machine, GetParam().rows);
  trace.claimAll(L"... ? Unrecognized stuff");
}

TEST_P(DenavitHartenberg, CurrentParametersStartAtTheReference) {
  const KMachine machine = load(GetParam().text, 1);
  for (const KMachineElem* e : machine.getToolChain(true, 1)) {
    const DHm &ref = e->getDHmRef(), &cur = e->getDHmCur();
    EXPECT_EQ(ref.alpha, cur.alpha);
    EXPECT_EQ(ref.a, cur.a);
    EXPECT_EQ(ref.theta, cur.theta);
    EXPECT_EQ(ref.d, cur.d);
  }
  trace.claimAll(L"... ? Unrecognized stuff");
}

TEST_P(DenavitHartenberg, OriginsLieOnTheAxisLines) {
  const KMachine machine = load(GetParam().text, 1);
  const KMachine once = load(GetParam().text, 1);
  trace.claimAll(L"... ? Unrecognized stuff");
  KMachine again = once;  // from the origins of the first run: the same lines, the same parameters
  again.initDHm(1);
  for (const KMachineElem* e : machine.getToolChain(true, 1)) {
    const KMachineElem* second = again.getElemByIndex(e->getElemIndex());
    const UVec3d off = (second->getElemPivot() - e->getElemPivot()) ^ e->getElemAxis();
    EXPECT_NEAR(off.norm(), 0.0, 1e-9) << korvo::test::narrow(e->getElemName());
  }
  trace.claimAll(L"... ? Unrecognized stuff");
}

const double kAToX = std::sqrt(10.0 * 10.0 + 35.0 * 35.0);

/// The table's A axis 35 below and 10 behind the spindle's zero point, its C axis at (10, -20).
const char* const kTableAc =
    "frame\nrotation=A,4,x,1,1,0,10,-35\nrotation=C,6,z,1,1,10,-20,5\npart=x,y\nlien=BATI\n"
    "axis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\ntool=z,0,0,0\n";

/// Cosine and sine of the angle between Z and (0.002, 0, 1), about 0.115 degrees: parallel to us.
const double kCos = 1.0 / std::sqrt(1.0 + 0.002 * 0.002), kSin = 0.002 * kCos;

/// Where the line through (1, 0, 1000) along (0.002, 0, 1) comes nearest to (100, 0, 1000).
const UVec3d kFoot(1.0 + 99.0 * kSin * kSin, 0.0, 1000.0 + 99.0 * kSin * kCos);

/// C behind B, offset by 20 along X; both carry the tool below.
const char* const kHeadCb =
    "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\nrotation=C,6,z,1,1,5,7,0\n"
    "rotation=B,5,y,1,1,25,0,150\ntool=z,25,7,0\n";

const auto rowName = [](const auto& row) { return std::string(row.param.name); };

INSTANTIATE_TEST_SUITE_P(
    Machine, DenavitHartenberg,
    testing::Values(
        // Lines: part Z, X, Y, Z through zero, the tool on Z's line 100 above. Tool and Z share a
        // line, so Z's origin is the tool's point; the others meet at zero. Normals: world Z x X =
        // Y, X x Y = Z, Y x Z = X; each X axis is a quarter turn about Z from the one before.
        ChainCase{
            "ThreeAxisMill",
            "frame\naxis=Y,2,y\naxis=X,1,x\npart=x,y\nlien=BATI\naxis=Z,3,z\ntool=z,0,0,100\n",
            {{{0, 0, 0, 0}, {0, 0, 0}},
             {{kHalf, 0, kHalf, 0}, {0, 0, 0}},
             {{kHalf, 0, kHalf, 0}, {0, 0, 0}},
             {{kHalf, 0, 0, 100}, {0, 0, 100}},
             {{0, 0, 0, 0}, {0, 0, 100}}}},
        // From the tool: Z shares its line; Y, X meet it at zero. A is parallel to X: normal from
        // (0, 10, -35) to zero. C crosses A: normal Y, 30 long, feet (10, -20, -35), (10, 10, -35),
        // the latter 10 ahead of A's origin (0, 10, -35). The world's Z is parallel to C: normal
        // (10, -20), feet at C's height -35. X axes: (10, -20, 0), Y, (0, -10, 35), Z, X, X, X.
        ChainCase{"TableAc",
                  kTableAc,
                  {{{0, 0, 0, -35}, {0, 0, -35}},
                   {{0, std::sqrt(500.0), std::atan2(1.0, -2.0), 0}, {10, -20, -35}},
                   {{kHalf, 30, std::atan2(35.0, -10.0), -10}, {0, 10, -35}},
                   {{0, kAToX, std::atan2(-10.0, 35.0), 0}, {0, 0, 0}},
                   {{kHalf, 0, kHalf, 0}, {0, 0, 0}},
                   {{kHalf, 0, 0, 0}, {0, 0, 0}},
                   {{0, 0, 0, 0}, {0, 0, 0}}}},
        // The tool's line meets B at (25, 7, 150). C to B: 20 along X at the height 150, twist -90
        // about it. Z to C: parallel, (5, 7) apart; Z's origin rises to C's, 150.
        ChainCase{"HeadCb",
                  kHeadCb,
                  {{{0, 0, 0, 0}, {0, 0, 0}},
                   {{kHalf, 0, kHalf, 0}, {0, 0, 0}},
                   {{kHalf, 0, kHalf, 0}, {0, 0, 0}},
                   {{kHalf, 0, std::atan2(7.0, 5.0), 150}, {0, 0, 150}},
                   {{0, std::sqrt(74.0), std::atan2(-7.0, 5.0), 0}, {5, 7, 150}},
                   {{-kHalf, 20, 0, 0}, {25, 7, 150}},
                   {{kHalf, 0, 0, -150}, {25, 7, 0}}}},
        // P up at x = 10, Q down at x = 50 with the tool on its line at z = -30.
        ChainCase{
            "AntiParallelAxes",
            "frame\npart=x,y\nlien=BATI\nrotation=P,1,z,1,1,10,0,0\nrotation=Q,2,-z,1,1,50,0,0\n"
            "tool=-z,50,0,-30\n",
            {{{0, 0, 0, -30}, {0, 0, -30}},
             {{0, 10, 0, 0}, {10, 0, -30}},
             {{kPi, 40, 0, 0}, {50, 0, -30}},
             {{0, 0, 0, 0}, {50, 0, -30}}}},
        // All three on the world's Z line: no normal at all, every frame takes the world's X.
        ChainCase{
            "CoincidentAxes",
            "frame\npart=x,y\nlien=BATI\nrotation=P,1,z,1,1,0,0,0\nrotation=Q,2,z,1,1,0,0,25\n"
            "tool=z,0,0,-30\n",
            {{{0, 0, 0, 0}, {0, 0, 0}},
             {{0, 0, 0, -30}, {0, 0, -30}},
             {{0, 0, 0, 0}, {0, 0, -30}},
             {{0, 0, 0, 0}, {0, 0, -30}}}},
        ChainCase{
            "CoincidentAntiParallelAxes",
            "frame\npart=x,y\nlien=BATI\nrotation=P,1,z,1,1,0,0,0\nrotation=Q,2,-z,1,1,0,0,25\n"
            "tool=-z,0,0,-30\n",
            {{{0, 0, 0, 0}, {0, 0, 0}},
             {{0, 0, 0, -30}, {0, 0, -30}},
             {{kPi, 0, 0, 0}, {0, 0, -30}},
             {{0, 0, 0, 0}, {0, 0, -30}}}},
        // C, W and Q share a line in the middle, all lines meet at zero. Normals: world Z x X = Y,
        // X x Z = -Y, which C and W take too, Z x Y = -X, a quarter turn back about Q.
        ChainCase{"CoincidentAxesBetweenOthers",
                  "frame\npart=x,y\nlien=BATI\naxis=X,1,x\nrotation=C,4,z,1,1,0,0,0\naxis=W,3,z\n"
                  "rotation=Q,5,z,1,1,0,0,0\naxis=Y,2,y\ntool=y,0,0,0\n",
                  {{{0, 0, 0, 0}, {}},
                   {{kHalf, 0, kPi, 0}, {}},
                   {{kHalf, 0, 0, 0}, {}},
                   {{0, 0, 0, 0}, {}},
                   {{0, 0, -kHalf, 0}, {}},
                   {{kHalf, 0, 0, 0}, {}},
                   {{0, 0, 0, 0}, {}}}},
        // Deliberate: against the world's Z the offset is the height itself, though the frame's own
        // Z points down.
        ChainCase{"FirstAxisAgainstTheWorld",
                  "frame\npart=x,y\nlien=BATI\nrotation=P,1,-z,1,1,0,0,40\ntool=-z,0,0,-30\n",
                  {{{0, 0, 0, 0}, {0, 0, 0}},
                   {{kPi, 0, 0, -30}, {0, 0, -30}},
                   {{0, 0, 0, 0}, {0, 0, -30}}}},
        // An unreadable direction: nothing is stored for either neighbour, and the point leaves its
        // place for zero. The world's X reaches every frame that has none.
        ChainCase{
            "AxisWithoutDirection",
            "frame\npart=x,y\nlien=BATI\nrotation=P,1,0,0,0,1,1,7,8,9\ntool=z,3,4,5\n",
            {{{0, 0, 0, 0}, {0, 0, 0}}, {{0, 0, 0, 0}, {0, 0, 0}}, {{0, 0, 0, 0}, {3, 4, 5}}}},
        // B along (0, 1, 1) through zero, the tool along Z at x = 40: normal X, twist +45 about it.
        // The world's Z x B points to -X: twist +45 about that, and X turns by half.
        ChainCase{"TiltedAxis",
                  "frame\npart=x,y\nlien=BATI\nrotation=B,5,0,1,1,1,1,0,0,0\ntool=z,40,0,20\n",
                  {{{0, 0, 0, 0}, {0, 0, 0}},
                   {{kHalf / 2, 0, kPi, 0}, {0, 0, 0}},
                   {{kHalf / 2, 40, 0, 20}, {40, 0, 20}}}},
        // The part's own direction, here along X, is no line of the chain.
        ChainCase{
            "PartOfAnotherDirection",
            "frame\npart=y,z\nlien=BATI\nrotation=C,6,z,1,1,3,4,0\ntool=z,3,4,5\n",
            {{{0, 0, 0, 5}, {0, 0, 5}}, {{0, 5, 0, 0}, {3, 4, 5}}, {{0, 0, 0, 0}, {3, 4, 5}}}},
        // Almost parallel lines count as parallel: their distance is the mean of that from (50, 0,
        // 1000) to the world's Z, 50, and that from zero to the tool's line, 50 cos - 1000 sin. The
        // offset runs along the tool from the foot on the world's line, (0, 0, 1000).
        ChainCase{"AlmostParallelToTheWorld",
                  "tool=0.002,0,1,50,0,1000\n",
                  {{{0, (50 + 50 * kCos - 1000 * kSin) / 2, 0, 50 * kSin}, {50, 0, 1000}}}},
        // P leans over the world's Z line and meets it in between: from the foot (0, 0, z) the
        // normal points to P's origin, along +X, though zero's foot on P lies at x = -1. It is
        // kept, so P's own normal, (1, 0, -0.002), is turned from it by no half turn.
        ChainCase{"NormalOfParallelLinesIsKept",
                  "frame\npart=x,y\nlien=BATI\nrotation=P,1,0.002,0,1,1,1,1,0,1000\n"
                  "tool=y,100,30,1000\n",
                  {{{0, 0, 0, kFoot.z}, {0, 0, kFoot.z}},
                   {{0, (kFoot.x + 1000 * kSin - kCos) / 2, std::asin(kSin), kFoot.x* kSin}, kFoot},
                   {{-kHalf, 99 * kCos, 0, 30}, {100, 30, 1000}}}},
        // No part: the chain begins with an axis of its own, measured from the world.
        ChainCase{"NoPart",
                  "frame\nrotation=C,6,z,1,1,3,4,0\ntool=z,3,4,5\n",
                  {{{0, 5, 0, 0}, {3, 4, 5}}, {{0, 0, 0, 0}, {3, 4, 5}}}},
        // A tool alone is one frame, measured from the world: parallel 5 beside it, or across it.
        ChainCase{"ToolAlone", "tool=z,3,4,5\n", {{{0, 5, 0, 0}, {3, 4, 5}}}},
        ChainCase{"ToolAloneAcross", "tool=x,3,4,5\n", {{{kHalf, 4, 0, 3}, {3, 4, 5}}}},
        ChainCase{"ToolAloneOnTheWorldsLine", "tool=z,0,0,5\n", {{{0, 0, 0, 5}, {0, 0, 5}}}},
        ChainCase{"ToolAloneAgainstTheWorld", "tool=-z,0,0,5\n", {{{kPi, 0, 0, 5}, {0, 0, 5}}}}),
    rowName);

// --- published arms, from their axis lines

struct PublishedArm {
  const char* name;
  DHm published[6];  ///< alpha, a, theta = 0, d: modified (Craig) parameters, mm
  double d[6];       ///< how the offsets come out along the parallel axes J2 and J3
  const char* tool;
};

std::ostream& operator<<(std::ostream& out, const PublishedArm& arm) { return out << arm.name; }

UMatrix modified(const DHm& h, double thetaRad) {
  return UMatrix::_rotation({1, 0, 0}, h.alpha) * UMatrix::_translation({h.a, 0, 0}) *
         UMatrix::_rotation({0, 0, 1}, thetaRad) * UMatrix::_translation({0, 0, h.d});
}

/// The definition file of the arm's zero position: the Z axes and origins of its published frames.
std::string fileOf(const PublishedArm& arm) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text.precision(17);
  text << "frame\npart=x,y\nlien=BATI\n";
  UMatrix frame;
  for (int k = 0; k < 6; ++k) {
    frame = frame * modified(arm.published[k], 0.0);
    UVec3d z(0, 0, 1);
    frame.applyDir(z);
    const UVec3d o = frame.getOrigin();
    text << "rotation=J" << k + 1 << ',' << k + 1 << ',' << z.x << ',' << z.y << ',' << z.z
         << ",1,1," << o.x << ',' << o.y << ',' << o.z << '\n';
  }
  text << "tool=" << arm.tool << '\n';
  return text.str();
}

class Published : public LoadingTest, public testing::WithParamInterface<PublishedArm> {};

TEST_P(Published, ParametersComeBackUpToTheSenseOfNormals) {
  const PublishedArm& arm = GetParam();
  const KMachine machine = load(fileOf(arm), 1);
  ASSERT_EQ(result, 0);
  const std::vector<const KMachineElem*> chain = machine.getToolChain(true, 1);
  ASSERT_EQ(chain.size(), 8u);
  double sum = 0.0, publishedSum = 0.0;
  for (int k = 0; k < 6; ++k) {
    SCOPED_TRACE(k + 1);
    const DHm& found = chain[k + 1]->getDHmRef();
    EXPECT_NEAR(std::abs(found.alpha), std::abs(arm.published[k].alpha), 3e-8);
    EXPECT_NEAR(found.a, arm.published[k].a, 1e-9);
    EXPECT_NEAR(found.d, arm.d[k], 1e-9);
    // Where the normal has a length its sense is given, and with it the twist's sign.
    if (arm.published[k].a > 0.0) {
      EXPECT_NEAR(found.alpha, arm.published[k].alpha, 3e-8);
    }
    EXPECT_NEAR(std::abs(std::sin(found.theta)), 0.0, 3e-8);
    sum += found.d, publishedSum += arm.published[k].d;
  }
  EXPECT_NEAR(sum, publishedSum, 1e-9);
}

TEST_P(Published, ToolStaysWithTheLastFrame) {
  const KMachine machine = load(fileOf(GetParam()), 1);
  const DHm& tool = machine.getElemByIndex(-101)->getDHmRef();
  EXPECT_EQ(tool.a, 0.0);
  EXPECT_EQ(tool.d, 0.0);
  EXPECT_NEAR(std::abs(tool.alpha), 0.0, 3e-8);
  EXPECT_EQ(machine.analysis(1).kinematicClass, 5);
  EXPECT_EQ(machine.analysis(1).armType, 1);
}

/// The chain's product at joint angles is the arm's own forward kinematics.
TEST_P(Published, ProductOfTheFramesReachesThePublishedPose) {
  const PublishedArm& arm = GetParam();
  const KMachine machine = load(fileOf(arm), 1);
  const double poses[][6] = {{0, 0, 0, 0, 0, 0},
                             {0, -90, 90, 0, 90, 0},
                             {30, -60, 45, 20, -35, 80},
                             {-110, 20, -75, 150, 60, -170}};
  for (const double* pose : poses) {
    KMachineValue<6> value;
    value.set(pose);
    machine.updateDHm(value, 1);
    UMatrix expected, found;
    for (int k = 0; k < 6; ++k) {
      expected = expected * modified(arm.published[k], pose[k] * kPi / 180);
    }
    for (const KMachineElem* e : machine.getToolChain(true, 1)) {
      found = found * KMachineElem::_transitionMatrix(e->getDHmCur());
    }
    EXPECT_NEAR(found.getOrigin().distanceTo(expected.getOrigin()), 0.0, 1e-4);
    for (int row = 0; row < 3; ++row) EXPECT_NEAR(found(row, 2), expected(row, 2), 1e-7);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Arm, Published,
    testing::Values(
        // PUMA type, mm (LinuxCNC genserkins example). J2 and J3 are parallel: the offset of 70 may
        // stand at either; here all of it comes out at J2.
        PublishedArm{"Puma",
                     {{0, 0, 0, 0},
                      {-kHalf, 0, 0, 0},
                      {0, 300, 0, 70},
                      {-kHalf, 50, 0, 400},
                      {kHalf, 0, 0, 0},
                      {-kHalf, 0, 0, 0}},
                     {0, 70, 0, 400, 0, 0},
                     "-z,350,70,-400"},
        // Mitsubishi RV-6SDL, mm (LinuxCNC, dh-parameters).
        PublishedArm{"Rv6Sdl",
                     {{0, 0, 0, 350},
                      {-kHalf, 85, 0, 0},
                      {0, 380, 0, 0},
                      {-kHalf, 100, 0, 425},
                      {kHalf, 0, 0, 0},
                      {-kHalf, 0, 0, 85}},
                     {350, 0, 0, 425, 0, 85},
                     "-z,565,0,-160"}),
    rowName);

// --- runs of the set-up

TEST_F(LoadingTest, SetUpOfAMissingToolChangesNothing) {
  KMachine machine = load(kTableAc, 1);
  const std::string before = korvo::test::describe(machine);
  machine.initDHm(9);
  machine.initDHm(0);
  EXPECT_EQ(korvo::test::describe(machine), before);
  EXPECT_EQ(trace.claimAll(L"... ? Unrecognized stuff"), 2);
}

// Shared elements keep the record of the tool that was set up last: the highest number.
TEST_F(LoadingTest, LastToolOwnsTheSharedElements) {
  const std::string two =
      "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Z,3,z\ntool=z,0,0,50\n"
      "lien=Z\ntool=z,0,0,70\n";
  KMachine machine = load(two, 1);
  EXPECT_EQ(machine.getElemByIndex(3)->getElemPivot(), UVec3d(0, 0, 70));
  EXPECT_NEAR(machine.getElemByIndex(3)->getDHmRef().d, 70.0, 1e-12);
  machine.initDHm(1);
  EXPECT_EQ(machine.getElemByIndex(3)->getElemPivot(), UVec3d(0, 0, 50));
  EXPECT_NEAR(machine.getElemByIndex(3)->getDHmRef().d, 50.0, 1e-12);
  trace.claimAll(L"... ? Unrecognized stuff");
}

// A gun in the middle of another tool's chain is moved along its line by that tool's set-up.
TEST_F(LoadingTest, GunInAToolsChainMovesAlongItsLine) {
  const KMachine machine = load(
      "frame\npart=x,y\nlien=BATI\naxis=X,1,x\ngun=z,3,4,50\n"
      "tool=z,3,4,-20\n",
      1);
  EXPECT_EQ(machine.getElemByIndex(-101)->getElemPivot(), UVec3d(3, 4, -20));
  KMachineValue<1> value;
  UVec3d point, direction;
  ASSERT_TRUE(machine.getTool(value, point, direction, 1));
  EXPECT_EQ(point, UVec3d(3, 4, -20));
  trace.claimAll(L"... ? Unrecognized stuff");
}

// The set-up starts from the points that the run before left.
TEST_F(LoadingTest, RepeatedSetUpGivesTheSameParameters) {
  KMachine machine = load(kHeadCb, 1);
  std::vector<DHm> first;
  for (const KMachineElem* e : machine.getToolChain(true, 1)) first.push_back(e->getDHmRef());
  machine.initDHm(1);
  const std::vector<const KMachineElem*> chain = machine.getToolChain(true, 1);
  for (std::size_t k = 0; k < chain.size(); ++k) {
    EXPECT_NEAR(chain[k]->getDHmRef().a, first[k].a, 1e-9);
    EXPECT_NEAR(chain[k]->getDHmRef().d, first[k].d, 1e-9);
  }
}

}  // namespace
